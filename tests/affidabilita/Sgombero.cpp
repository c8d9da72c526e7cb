#include "Sgombero.hpp"

#include "Campi.hpp"

#include <algorithm>
#include <cstddef>
#include <ctime>
#include <functional>
#include <optional>

namespace lumoscad::test {
namespace {

constexpr const char* NonEseguita = "l'host non l'ha eseguita";
constexpr const char* SuperataDaAltra = "superata da una richiesta che l'host ha accettato dopo";
constexpr const char* CambiateDaAltri = "righe cambiate da altri";

Istante Quando(const DateTime& ora) {
  std::tm campi{};
  campi.tm_year = ora.year - 1900;
  campi.tm_mon = ora.month - 1;
  campi.tm_mday = ora.day;
  campi.tm_hour = ora.hour;
  campi.tm_min = ora.minute;
  campi.tm_sec = ora.second;
  campi.tm_isdst = -1;
  return static_cast<Istante>(std::mktime(&campi)) * 1'000'000'000;
}

bool Dice(const std::string& testo, const char* cosa) {
  return testo.find(cosa) != std::string::npos;
}

/// The command that left a note: its request, begun in the second that the note names. Of two in that second it is
/// rather the one that did not end well. Between the note and the program's start a terminal may have died, and the log
/// then has no request.
std::optional<Eseguito> ComandoDi(const Nota& nota, const std::vector<Eseguito>& comandi,
                                  const std::set<std::string>& chiusi) {
  constexpr Istante Secondo = 1'000'000'000;
  // The clock of seconds is moved on by the system's ticks, and lags behind the other on a busy machine.
  constexpr Istante Ritardo = 500'000'000;
  const Istante ora = Quando(nota.inizio);
  const auto quando = [&](const Eseguito& comando) {
    return comando.inizio < ora + Secondo + Ritardo && ora <= comando.fine && !chiusi.contains(comando.nome);
  };
  const auto suo = [&](const Eseguito& comando) { return comando.richiesta == nota.parametriHost; };
  const auto finitoMale = [](const Eseguito& comando) { return comando.morto || comando.risultato == "error"; };
  const std::vector<std::function<bool(const Eseguito&)>> segni{
      [&](const Eseguito& comando) { return suo(comando) && finitoMale(comando); }, suo,
      [](const Eseguito& comando) { return comando.richiesta.empty() && comando.morto; }};
  for (const auto& segno : segni) {
    const auto trovato = std::find_if(comandi.begin(), comandi.end(),
                                      [&](const Eseguito& comando) { return quando(comando) && segno(comando); });
    if (trovato != comandi.end()) {
      return *trovato;
    }
  }
  return std::nullopt;
}

/// An action that sets or clears a flag, and undoes one that came before.
bool PuoEssereSuperata(const std::vector<std::string>& richiesta) {
  return richiesta.size() > 3 && (richiesta[1].starts_with("SOSPESO") || richiesta[1].starts_with("PRESUNTO"));
}

bool StessoOggetto(const std::vector<std::string>& richiesta, const std::vector<std::string>& altra) {
  const std::size_t fine = richiesta[1].starts_with("PRESUNTO") ? 5 : 4;
  return altra.size() >= fine && richiesta.size() >= fine && altra[1].substr(0, 7) == richiesta[1].substr(0, 7) &&
         std::equal(richiesta.begin() + 2, richiesta.begin() + static_cast<std::ptrdiff_t>(fine), altra.begin() + 2);
}

} // namespace

void Sgombero::Presto(const std::string& postazione) {
  for (const Nota& nota : LeggiNote(sistema_.Locale(postazione))) {
    const bool accettata = nota.fase != FaseNota::Avviata && nota.fase != FaseNota::Rifiutata;
    if (!nota.archiviata && !nota.inCorso && nota.errore.empty() && accettata) {
      rimandate += Chiudi(postazione, nota, nullptr) ? 0U : 1U;
    }
  }
}

void Sgombero::Tutto(const std::string& postazione, const std::set<std::string>& accettati) {
  constexpr int Tentativi = 5;
  for (const Nota& nota : LeggiNote(sistema_.Locale(postazione))) {
    if (nota.archiviata) {
      continue;
    }
    bool chiusa = false;
    for (int volta = 0; !chiusa && volta < Tentativi; ++volta) {
      chiusa = Chiudi(postazione, nota, &accettati);
    }
    if (!chiusa) {
      errori.push_back("the note " + nota.nome + " of " + postazione + " cannot be worked off");
    }
  }
  const std::string resto = sistema_.Amministra(postazione, {"--in-sospeso", "-"}, Utente(postazione));
  if (!resto.starts_with("0\nNon c'è nulla in sospeso.\n")) {
    errori.push_back("something is left open at " + postazione + ": " + resto);
  }
}

bool Sgombero::Chiudi(const std::string& postazione, const Nota& nota, const std::set<std::string>* accettati) {
  const auto gia = delleNote_.find(postazione + nota.nome);
  const auto comando = gia != delleNote_.end() ? std::optional(gia->second)
                                               : ComandoDi(nota, LeggiRegistro(sistema_.Registro(postazione)), chiusi);
  if (!comando || !nota.errore.empty()) {
    errori.push_back("the note " + nota.nome + " is of no command: " + nota.errore);
    return true;
  }
  delleNote_.emplace(postazione + nota.nome, *comando);
  chiusi.insert(comando->nome);
  if (nota.fase == FaseNota::Avviata && !accettati->contains(comando->nome)) {
    Archivia(postazione, nota, NonEseguita);
    return true;
  }
  if (nota.fase != FaseNota::Avviata) {
    certi.insert(comando->nome);
  }
  if (Superata(nota)) {
    Archivia(postazione, nota, SuperataDaAltra);
    return true;
  }
  return Riallinea(postazione, nota, *comando);
}

bool Sgombero::Riallinea(const std::string& postazione, const Nota& nota, const Eseguito& comando) {
  Eseguito riallineo = comando;
  riallineo.nome = postazione + ".R" + std::to_string(riallinei.size() + 1);
  riallineo.inizio = riallineo.risposto = Adesso();
  riallineo.accettata = true;
  const std::string detto =
      sistema_.Amministra(postazione, {"--riallinea", nota.nome, "-"}, Utente(postazione),
                          {"PGOPTIONS=-c lumoscad.comando=" + riallineo.nome, "LUMOSCAD_ATTESA_SQL=5"}, "sì");
  riallineo.fine = Adesso();
  const bool cambiate = Dice(detto, "Le righe cambiate da altri restano come sono");
  riallineo.risultato = detto.starts_with("0\n") || cambiate ? "" : "error";
  riallineo.box = {detto};
  riallinei.push_back(riallineo);
  diChi[riallineo.nome] = comando.nome;
  if (detto.starts_with("0\n")) {
    ++riallineate;
    return true;
  }
  if (cambiate) {
    Archivia(postazione, nota, CambiateDaAltri);
  }
  return cambiate;
}

void Sgombero::Archivia(const std::string& postazione, const Nota& nota, const std::string& motivo) {
  const std::string detto = sistema_.Amministra(postazione, {"--archivia", nota.nome, motivo});
  if (!detto.starts_with("0\n")) {
    errori.push_back("the note " + nota.nome + " cannot be put aside: " + detto);
  }
  ++archiviate[motivo];
}

/// The host has accepted something later that says the opposite of the same item or document.
bool Sgombero::Superata(const Nota& nota) const {
  if (!PuoEssereSuperata(nota.parametriHost)) {
    return false;
  }
  std::string ultima = nota.parametriHost[1];
  for (const std::string& riga : LeggiRighe(sistema_.RegistroHost())) {
    const Testi campi = Separa(riga);
    if (campi[0] == "ACCETTATA") {
      const Testi richiesta(campi.begin() + 3, campi.end() - 1);
      if (richiesta.size() > 3 && StessoOggetto(nota.parametriHost, richiesta)) {
        ultima = richiesta[1];
      }
    }
  }
  return ultima != nota.parametriHost[1];
}

} // namespace lumoscad::test
