#include "Bersagli.hpp"

#include "RichiestaFile.hpp"
#include "common/Stato.hpp"
#include "common/Testo.hpp"
#include "host/RichiestaScadenze.hpp"
#include "host/Richieste.hpp"
#include "platform/RuntimeError.hpp"
#include "support/TestBench.hpp"

#include <algorithm>
#include <filesystem>
#include <functional>
#include <optional>

namespace lumoscad::fuzz {
namespace {

using Campi = std::vector<std::string>;

constexpr char FineCampo = '\x1F';
constexpr char FineRecord = '\x1E';
constexpr std::size_t MassimoRecord = 40;

/// The records of an input, each with `quanti` fields.
std::vector<Campi> Record(std::string_view testo, std::size_t quanti) {
  std::vector<Campi> record;
  for (const std::string& uno : Dividi(testo, FineRecord)) {
    Campi campi = Dividi(uno, FineCampo);
    campi.resize(quanti);
    record.push_back(std::move(campi));
    if (record.size() == MassimoRecord) {
      break;
    }
  }
  return record;
}

/// A date as the file must carry it, written by the rule and not by the component; none where it has no three parts.
std::optional<std::string> DataDelFile(const std::string& data, bool conZeri) {
  if (data == Nullo || data.empty()) {
    return conZeri || data.empty() ? "00000000" : "";
  }
  const Campi parti = Dividi(data, '/');
  if (parti.size() < 3) {
    return std::nullopt;
  }
  const auto due = [](const std::string& parte) { return parte.size() == 1 ? "0" + parte : parte; };
  return (parti[2].size() == 2 ? "20" + parti[2] : parti[2]) + due(parti[1]) + due(parti[0]);
}

/// The lines that the records must become; none where one of them cannot be sent.
std::optional<std::string> Atteso(const std::vector<Campi>& record,
                                  const std::function<bool(const Campi&, Campi&)>& riga) {
  std::string contenuto;
  for (const Campi& uno : record) {
    Campi campi;
    if (!riga(uno, campi)) {
      return std::nullopt;
    }
    for (std::size_t i = 0; i < campi.size(); ++i) {
      if (campi[i].find_first_of("\r\n") != std::string::npos) {
        return std::nullopt;
      }
      contenuto += (i == 0 ? "" : ",") + campi[i];
    }
    contenuto += "\r\n";
  }
  return contenuto;
}

bool ConDate(Campi& campi, std::initializer_list<std::pair<const std::string*, bool>> date) {
  for (const auto& [data, conZeri] : date) {
    const auto scritta = DataDelFile(*data, conZeri);
    if (!scritta) {
      return false;
    }
    campi.push_back(*scritta);
  }
  return true;
}

using Controllo = std::size_t (*)(std::string_view, const std::set<std::string>&);

/// What the host program says of a file: the number of its records, or none where it refuses.
std::optional<std::size_t> Riletto(const std::string& contenuto, Controllo controllo) {
  try {
    return controllo(contenuto, {"BLOCCATO"});
  } catch (const demo::Rifiuto& rifiuto) {
    Esigi(std::string_view(rifiuto.what()).starts_with("Riga "), "un rifiuto che non nomina la riga");
    return std::nullopt;
  }
}

bool Controlli(std::string_view testo) {
  return std::any_of(testo.begin(), testo.end(), [](char c) {
    const auto codice = static_cast<unsigned char>(c);
    return codice < 0x20 || codice == 0x7F;
  });
}

/// What was uploaded is what the records say, the program reads it back record by record, and no file is left.
void Confronta(const test::TestBench& banco, const std::optional<std::string>& atteso, std::size_t record,
               Controllo controllo) {
  const auto& inviati = banco.host.uploads;
  if (!atteso) {
    Esigi(inviati.empty() && banco.host.operazioni.empty(), "è partita una richiesta che non si può scrivere");
    return;
  }
  Esigi(inviati.size() == 1 && inviati.front() == *atteso, "il file non dice quello che dicono le variazioni");
  Esigi(banco.host.file.empty(), "resta un file sull'host");
  const auto letti = Riletto(*atteso, controllo);
  Esigi(!letti || *letti == record, "il programma ha letto un altro numero di righe");
  const bool conControlli = Controlli(std::string(*atteso).substr(0, atteso->find('\r')));
  Esigi(!letti || !conControlli, "il programma ha accettato un carattere di controllo");
}

void ControllaScrittura(const test::TestBench& banco, const std::function<std::string()>& scrivi,
                        const std::optional<std::string>& atteso) {
  try {
    Esigi(scrivi().empty() && atteso, "una richiesta riuscita che doveva fallire");
  } catch (const RuntimeError& errore) {
    Esigi(!atteso && errore.Number() == errors::TransferError, "una richiesta fallita che doveva riuscire");
    Esigi(errore.Text().starts_with("13 ") || errore.Text().starts_with("9 "), "un altro errore");
  }
  for (const auto& voce : std::filesystem::directory_iterator(banco.environment.CartellaLocale)) {
    Esigi(voce.path().filename().string().starts_with("sospeso-"), "il file locale non è stato tolto");
  }
  Esigi(banco.desktop.pointers.back() == Pointer::Standard, "il puntatore è rimasto una clessidra");
}

void Canalizzazione(std::string_view testo) {
  const auto record = Record(testo, 13);
  VariazioniCanalizzazione variazioni;
  for (const Campi& c : record) {
    VariazioneCanalizzazione v{"1",  "",   c[0], c[1], c[2],  c[3],  c[4], c[5],
                               c[6], c[7], c[8], c[9], c[10], false, false};
    v.isBancaChanged = c[11] == "B";
    v.isScadenzaChanged = c[12] == "S";
    variazioni.push_back(v);
  }
  const auto atteso = Atteso(record, [](const Campi& c, Campi& riga) {
    riga = {c[0], c[1], c[2], c[4], c[3]};
    Campi date;
    if (!ConDate(date, {{&c[7], false}, {&c[9], false}, {&c[10], false}})) {
      return false;
    }
    riga.insert(riga.end(), date.begin(), date.end());
    riga.insert(riga.end(), {c[5], c[11] == "B" ? c[6] : "", c[8]});
    return true;
  });
  const test::TestBench banco;
  ControllaScrittura(
      banco, [&] { return ScriviRichiestaCanalizzazione("h", "01", variazioni, "CREDITI"); }, atteso);
  Confronta(banco, atteso, record.size(), demo::ControllaCanalizzazione);
}

VariazioniConsegna Documenti(const std::vector<Campi>& record) {
  VariazioniConsegna variazioni;
  for (const Campi& c : record) {
    VariazioneConsegna v{"", 1, c[0], c[1], c[2], c[3], c[4], c[5], c[6], c[7], c[8], false, true};
    v.isBancaChanged = c[9] == "B";
    variazioni.push_back(v);
  }
  return variazioni;
}

void BancaPresunti(std::string_view testo) {
  const auto record = Record(testo, 10);
  const auto variazioni = Documenti(record);
  const auto atteso = Atteso(record, [](const Campi& c, Campi& riga) {
    riga = {c[0], "", c[2], c[3], c[1], "", "", "", c[4], c[9] == "B" ? c[5] : "", ""};
    return true;
  });
  const test::TestBench banco;
  ControllaScrittura(
      banco, [&] { return ScriviRichiestaBancaPresunti("h", "01", variazioni, "PRESUNTI"); }, atteso);
  Confronta(banco, atteso, record.size(), demo::ControllaBancaPresunti);
}

void Consegna(std::string_view testo) {
  const auto record = Record(testo, 10);
  const auto variazioni = Documenti(record);
  const auto atteso = Atteso(record, [](const Campi& c, Campi& riga) {
    riga = {c[0], c[1], c[3], c[2]};
    return ConDate(riga, {{&c[6], true}, {&c[7], true}, {&c[8], true}});
  });
  const test::TestBench banco;
  ControllaScrittura(
      banco, [&] { return ScriviRichiestaConsegna("h", "01", variazioni, "PRESUNTI"); }, atteso);
  Confronta(banco, atteso, record.size(), demo::ControllaConsegna);
}

void Scadenze(std::string_view testo) {
  constexpr std::size_t MassimoRighe = 32;
  const auto record = Record(testo, 5);
  std::vector<RigaScadenze> righe;
  std::vector<Campi> spediti;
  bool dateLeggibili = true;
  for (const Campi& c : record) {
    righe.push_back({c[0], c[1], c[2], c[3], c[4]});
    if (MaggioreDiSpazio(c[4])) {
      spediti.push_back(c);
      dateLeggibili = dateLeggibili && DataDelFile(c[2], false);
    }
  }
  auto atteso = Atteso(spediti, [](const Campi& c, Campi& riga) {
    riga = {c[0], c[1]};
    return ConDate(riga, {{&c[3], false}, {&c[4], false}});
  });
  // The dates of a row travel in eight digits, without a word for none.
  const auto nessuna = [](const Campi& c) { return c[2] == Nullo || c[3] == Nullo || c[4] == Nullo; };
  if (!dateLeggibili || spediti.size() > MassimoRighe || std::any_of(spediti.begin(), spediti.end(), nessuna)) {
    atteso.reset();
  }
  const test::TestBench banco;
  try {
    // The reply action finds no database.
    const std::string risultato = ScriviRichiestaScadenze(righe);
    Esigi(atteso && (risultato.empty() || risultato == "error"), "una richiesta riuscita che doveva fallire");
  } catch (const RuntimeError& errore) {
    Esigi(!atteso && (errore.Number() == errors::SubscriptOutOfRange || errore.Number() == errors::TypeMismatch),
          "una richiesta fallita che doveva riuscire");
  }
  if (atteso && spediti.empty()) {
    Esigi(banco.host.operazioni.empty(), "una richiesta senza righe è partita");
    return;
  }
  Confronta(banco, atteso, spediti.size(), demo::ControllaScadenze);
}

} // namespace

void Richiesta(Ingresso ingresso) {
  if (ingresso.empty()) {
    return;
  }
  TogliLeSorgenti();
  const std::string_view testo = Testo(ingresso.subspan(1));
  switch (ingresso.front() % 4) {
  case 0:
    return Canalizzazione(testo);
  case 1:
    return BancaPresunti(testo);
  case 2:
    return Consegna(testo);
  default:
    return Scadenze(testo);
  }
}

} // namespace lumoscad::fuzz
