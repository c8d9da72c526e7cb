#include "common/Messaggi.hpp"
#include "common/Testo.hpp"
#include "common/Utilities.hpp"
#include "platform/RuntimeError.hpp"
#include "platform/Services.hpp"
#include "platform/base/Utf8.hpp"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>
#include <vector>

namespace lumoscad::Utilities {
namespace {

constexpr std::string_view DataRifiutata = " ";

bool Bisestile(int anno) {
  return (anno % 4 == 0 && anno % 100 != 0) || anno % 400 == 0;
}

bool GiornoDelMese(int giorno, int mese, int anno) {
  static constexpr std::array<int, 12> Giorni = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  if (mese < 1 || mese > 12 || giorno < 1) {
    return false;
  }
  const int ultimo = mese == 2 && Bisestile(anno) ? 29 : Giorni[static_cast<std::size_t>(mese - 1)];
  return giorno <= ultimo;
}

bool DataReale(int giorno, int mese, int anno) {
  return anno >= 100 && anno <= 9999 && GiornoDelMese(giorno, mese, anno);
}

bool SoloCifre(std::string_view testo) {
  return !testo.empty() && std::all_of(testo.begin(), testo.end(), [](char c) { return c >= '0' && c <= '9'; });
}

/// A number of a typed date: one, two or four digits.
std::optional<int> NumeroDiData(std::string_view testo) {
  testo = SenzaSpaziAiLati(testo);
  if (!SoloCifre(testo) || testo.size() > 4 || testo.size() == 3) {
    return std::nullopt;
  }
  return Intero(testo);
}

int AnnoIntero(int anno) {
  if (anno > 99) {
    return anno;
  }
  return anno < 50 ? anno + 2000 : anno + 1900;
}

struct DataScritta {
  int giorno = 0;
  int mese = 0;
  int anno = 0;
  bool leggibile = false; ///< some order of the numbers is a real date
  bool reale = false;     ///< day/month/year is one
};

DataScritta LeggiData(std::string_view testo) {
  const auto pezzi = Dividi(testo, '/');
  if (pezzi.size() < 2 || pezzi.size() > 3) {
    return {};
  }
  const auto a = NumeroDiData(pezzi[0]);
  const auto b = NumeroDiData(pezzi[1]);
  const auto c = pezzi.size() == 3 ? NumeroDiData(pezzi[2]) : std::optional<int>(ActiveServices().localTime().year);
  if (!a || !b || !c) {
    return {};
  }
  DataScritta data{*a, *b, AnnoIntero(*c), false, false};
  data.reale = DataReale(*a, *b, data.anno);
  data.leggibile = data.reale || DataReale(*b, *a, data.anno) ||
                   (pezzi.size() == 3 && (DataReale(*c, *b, AnnoIntero(*a)) || DataReale(*b, *c, AnnoIntero(*a))));
  return data;
}

/// What the check makes of a text: the date as it is shown, or why it is none.
struct DataControllata {
  std::string data;
  std::string messaggio;
};

DataControllata Rifiutata(std::string messaggio) {
  return {{}, std::move(messaggio)};
}

DataControllata DataErrata(std::string_view testo) {
  return Rifiutata("Data errata: " + std::string(testo) + "\rScrivi la data nel formato: GGMMAA oppure GG/MM/AAAA");
}

/// The places where the characters of an UTF-8 text begin, and its end.
std::vector<std::size_t> InizioCaratteri(std::string_view testo) {
  std::vector<std::size_t> inizi;
  for (std::size_t i = 0; i < testo.size(); ++i) {
    if (base::BeginsCharacter(testo[i])) {
      inizi.push_back(i);
    }
  }
  inizi.push_back(testo.size());
  return inizi;
}

/// GGMMAA and GGMMAAAA with the missing "/"; any other text as it is.
std::string ConBarre(std::string_view testo) {
  // A wrong text is shown to the person: its letters with accents must not be cut in two.
  const auto inizi = InizioCaratteri(testo);
  if (testo.find('/') != std::string_view::npos || (inizi.size() != 7 && inizi.size() != 9)) {
    return std::string(testo);
  }
  std::string scritta(testo);
  scritta.insert(inizi[4], 1, '/').insert(inizi[2], 1, '/');
  return scritta;
}

/// The year as written after the second "/", moved into its century by the rule of the leap-year test; a text
/// without a year counts as year 0.
int AnnoPerBisestile(std::string_view testo) {
  const auto pezzi = Dividi(testo, '/');
  const int anno = pezzi.size() == 3 ? Intero(SenzaSpaziAiLati(pezzi[2])) : 0;
  return anno < 50 ? anno + 2000 : anno + 1900;
}

struct DataIso {
  std::string_view anno, mese, giorno;
};

DataIso PartiDi(std::string_view iso) {
  return {iso.substr(0, 4), iso.substr(5, 2), iso.substr(8, 2)};
}

/// The value of `quante` digits from `inizio` on, -1 where one of them is none.
int Valore(std::string_view testo, std::size_t inizio, std::size_t quante) {
  int valore = 0;
  for (std::size_t i = inizio; i < inizio + quante; ++i) {
    const int cifra = testo[i] - '0';
    if (cifra < 0 || cifra > 9) {
      return -1;
    }
    valore = valore * 10 + cifra;
  }
  return valore;
}

DataIso LeggiIso(std::string_view iso) {
  if (!DataDellaBaseDati(iso)) {
    throw RuntimeError(errors::TypeMismatch, "Data non valida nella base dati: " + std::string(iso));
  }
  return PartiDi(iso);
}

std::string Componi(std::string_view a, char separatore, std::string_view b, std::string_view c) {
  std::string testo(a.size() + b.size() + c.size() + 2, separatore);
  a.copy(testo.data(), a.size());
  b.copy(testo.data() + a.size() + 1, b.size());
  c.copy(testo.data() + testo.size() - c.size(), c.size());
  return testo;
}

/// Three parts of two, two and four characters, as nearly every date has; whatever stands in them.
bool DueDueQuattro(std::string_view testo) {
  return testo.size() == 10 && testo[2] == '/' && testo[5] == '/' && std::count(testo.begin(), testo.end(), '/') == 2;
}

DataControllata Controlla(std::string_view testo) {
  const std::string scritta = ConBarre(SenzaSpaziAiLati(testo));
  if (scritta.find('/') == std::string::npos) {
    return DataErrata(scritta);
  }
  const DataScritta data = LeggiData(scritta);
  if (!data.leggibile) {
    return DataErrata(scritta);
  }
  if (data.mese > 12) {
    return Rifiutata("Mese errato: " + scritta);
  }
  if (!Bisestile(AnnoPerBisestile(scritta)) && data.giorno >= 29 && data.mese == 2) {
    return Rifiutata("Data errata: " + scritta + "\rL'anno non è bisestile ");
  }
  if (!data.reale) {
    return DataErrata(scritta);
  }
  return {ConZeri(data.giorno, 2) + "/" + ConZeri(data.mese, 2) + "/" + ConZeri(data.anno, 4), {}};
}

} // namespace

std::string ControllaData(std::string_view testo) noexcept {
  try {
    if (testo.empty()) {
      return std::string(DataRifiutata);
    }
    const DataControllata controllata = Controlla(testo);
    if (controllata.messaggio.empty()) {
      return controllata.data;
    }
    MostraMessaggio(controllata.messaggio, "");
  } catch (...) {
    // Whatever went wrong, the person sees that the date was not taken.
  }
  return std::string(DataRifiutata);
}

std::string ControllaDataSenzaMessaggi(std::string_view testo) {
  return testo.empty() ? std::string() : Controlla(testo).data;
}

std::string DataPerHost(std::string_view testo) {
  if (testo.empty()) {
    return "00000000";
  }
  if (DueDueQuattro(testo)) {
    return {testo[6], testo[7], testo[8], testo[9], testo[3], testo[4], testo[0], testo[1]};
  }
  const auto prima = testo.find('/');
  const auto dopo = prima == std::string_view::npos ? prima : testo.find('/', prima + 1);
  if (dopo == std::string_view::npos) {
    throw RuntimeError(errors::SubscriptOutOfRange,
                       "Indice non incluso nell'intervallo: data \"" + std::string(testo) + "\"");
  }
  const std::string_view giorno = testo.substr(0, prima);
  const std::string_view mese = testo.substr(prima + 1, dopo - prima - 1);
  // What stands behind a third "/" has no meaning.
  const std::string_view anno = testo.substr(dopo + 1, testo.find('/', dopo + 1) - dopo - 1);
  std::string data(anno.size() == 2 ? "20" : "");
  for (const std::string_view pezzo : {anno, mese, giorno}) {
    const bool breve = pezzo.size() == 1 && pezzo.data() != anno.data();
    data.append(breve ? "0" : "").append(pezzo);
  }
  return data;
}

std::string DataIsoDaCompatta(std::string_view testo) {
  if (testo.size() != 8) {
    return {};
  }
  return Componi(testo.substr(0, 4), '-', testo.substr(4, 2), testo.substr(6, 2));
}

std::string DataIsoDaTesto(std::string_view testo) {
  const auto prima = testo.find('/');
  const auto dopo = prima == std::string_view::npos ? prima : testo.find('/', prima + 1);
  if (testo.size() != 10 || dopo == std::string_view::npos || testo.find('/', dopo + 1) != std::string_view::npos) {
    return {};
  }
  return Componi(testo.substr(dopo + 1), '-', testo.substr(prima + 1, dopo - prima - 1), testo.substr(0, prima));
}

std::string FineMese(std::string_view mese, std::string_view anno) {
  std::string_view ultimo = "31";
  if (mese == "04" || mese == "06" || mese == "09" || mese == "11") {
    ultimo = "30";
  } else if (mese == "02") {
    ultimo = LeggiData("29/02/" + std::string(anno)).reale ? "29" : "28";
  }
  return Componi(anno, '-', mese, ultimo);
}

bool DataDellaBaseDati(std::string_view iso) noexcept {
  const bool forma =
      iso.size() >= 10 && iso[4] == '-' && iso[7] == '-' && (iso.size() == 10 || iso[10] == ' ' || iso[10] == 'T');
  if (!forma || iso.ends_with("BC")) {
    return false;
  }
  const int anno = Valore(iso, 0, 4);
  return anno > 0 && GiornoDelMese(Valore(iso, 8, 2), Valore(iso, 5, 2), anno);
}

std::string FormattaData(std::string_view iso) {
  if (iso.empty()) {
    return {};
  }
  const DataIso data = LeggiIso(iso);
  return Componi(data.giorno, '/', data.mese, data.anno);
}

std::string FormattaDataBreve(std::string_view iso) {
  if (iso.empty()) {
    return {};
  }
  const DataIso data = LeggiIso(iso);
  return Componi(data.giorno, '/', data.mese, data.anno.substr(2));
}

std::string FormattaDataOrdine(std::string_view iso) {
  if (iso.empty()) {
    return {};
  }
  const DataIso data = LeggiIso(iso);
  return Componi(data.anno, '/', data.mese, data.giorno);
}

} // namespace lumoscad::Utilities
