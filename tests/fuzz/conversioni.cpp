#include "Bersagli.hpp"

#include "common/Testo.hpp"
#include "common/Utilities.hpp"
#include "platform/RuntimeError.hpp"
#include "support/TestBench.hpp"

#include <algorithm>
#include <chrono>
#include <optional>

namespace lumoscad::fuzz {
namespace {

using namespace Utilities;

bool Cifre(std::string_view testo) {
  return !testo.empty() && testo.find_first_not_of("0123456789") == std::string_view::npos;
}

int Numero(std::string_view cifre) {
  int numero = 0;
  for (const char c : cifre) {
    numero = numero * 10 + (c - '0');
  }
  return numero;
}

bool GiornoReale(int giorno, int mese, int anno) {
  using namespace std::chrono;
  return year_month_day(year(anno), month(static_cast<unsigned>(mese)), day(static_cast<unsigned>(giorno))).ok();
}

/// A date as the screens show it: "dd/MM/yyyy", a day of the calendar.
bool DataMostrata(std::string_view testo) {
  return testo.size() == 10 && testo[2] == '/' && testo[5] == '/' && Cifre(testo.substr(0, 2)) &&
         Cifre(testo.substr(3, 2)) && Cifre(testo.substr(6)) &&
         GiornoReale(Numero(testo.substr(0, 2)), Numero(testo.substr(3, 2)), Numero(testo.substr(6)));
}

/// What becomes of GGMMAA and GGMMAAAA, worked out on the calendar; none for any other text.
std::optional<std::string> DataDiCifre(std::string_view testo) {
  if (!Cifre(testo) || (testo.size() != 6 && testo.size() != 8)) {
    return std::nullopt;
  }
  const int giorno = Numero(testo.substr(0, 2));
  const int mese = Numero(testo.substr(2, 2));
  const int scritto = Numero(testo.substr(4));
  // Two digits, also where four were written ("0006"): the century is added.
  const int anno = scritto > 99 ? scritto : scritto + (scritto < 50 ? 2000 : 1900);
  const int annoDellaRegola = scritto + (scritto < 50 ? 2000 : 1900);
  const bool bisestile = GiornoReale(29, 2, annoDellaRegola);
  const bool accettata = anno >= 100 && GiornoReale(giorno, mese, anno) && (bisestile || mese != 2 || giorno < 29);
  return accettata ? ConZeri(giorno, 2) + "/" + ConZeri(mese, 2) + "/" + ConZeri(anno, 4) : " ";
}

void ConvertiAndataERitorno(const std::string& data) {
  Esigi(DataMostrata(data), "la data accettata non è un giorno del calendario");
  const std::string compatta = DataPerHost(data);
  Esigi(compatta.size() == 8 && Cifre(compatta), "la data per l'host non ha otto cifre");
  const std::string iso = DataIsoDaTesto(data);
  Esigi(iso == DataIsoDaCompatta(compatta), "le due vie alla data ISO divergono");
  Esigi(FormattaData(iso) == data, "la data ISO non torna com'era");
  Esigi(FormattaDataBreve(iso) == data.substr(0, 6) + data.substr(8), "la data breve è un'altra");
  const std::string fine = FineMese(data.substr(3, 2), data.substr(6));
  Esigi(fine.substr(0, 8) == iso.substr(0, 8) && fine >= iso, "la fine del mese viene prima");
}

void Date(std::string_view testo) {
  test::ScriptedDesktop desktop;
  const ReplacedServices servizi({[&]() -> Desktop& { return desktop; },
                                  {},
                                  {},
                                  [] {
                                    return DateTime{2006, 3, 5};
                                  },
                                  {}});
  const std::string data = ControllaData(testo);
  Esigi(desktop.box.size() == (data == " " && !testo.empty() ? 1U : 0U), "un solo messaggio per ogni data rifiutata");
  if (const auto attesa = DataDiCifre(SenzaSpaziAiLati(testo))) {
    Esigi(data == *attesa, "la data di sole cifre è letta diversamente");
  }
  if (data != " ") {
    ConvertiAndataERitorno(data);
    const std::string ancora = ControllaData(data);
    Esigi(ancora == data || data.starts_with("29/02/"), "una data accettata è rifiutata la seconda volta");
  }
}

/// Runs a conversion that may refuse its text with one of two errors.
template <typename Conversione> std::optional<std::string> Tenta(Conversione conversione) {
  try {
    return conversione();
  } catch (const RuntimeError& errore) {
    Esigi(errore.Number() == errors::TypeMismatch || errore.Number() == errors::SubscriptOutOfRange,
          "numero d'errore sconosciuto");
    return std::nullopt;
  }
}

void Convertitori(std::string_view testo, std::string_view altro) {
  const auto perHost = Tenta([&] { return DataPerHost(testo); });
  Esigi(perHost.has_value() == (testo.empty() || std::count(testo.begin(), testo.end(), '/') >= 2),
        "la data per l'host vuole tre parti");
  Esigi(DataIsoDaCompatta(testo).size() == (testo.size() == 8 ? 10U : 0U), "la data ISO ha dieci caratteri o nessuno");
  Esigi(DataIsoDaTesto(testo).empty() || DataIsoDaTesto(testo).size() == 10, "la data ISO è di un'altra lunghezza");
  const std::string fine = FineMese(testo, altro);
  Esigi(fine.starts_with(std::string(altro) + "-" + std::string(testo) + "-"), "la fine del mese non è del mese");
  Esigi(fine.size() == testo.size() + altro.size() + 4, "il giorno di fine mese non ha due cifre");
  for (const auto converti : {FormattaData, FormattaDataBreve, FormattaDataOrdine}) {
    const auto mostrata = Tenta([&] { return converti(testo); });
    Esigi(!mostrata || mostrata->size() == (testo.empty() ? 0U : (converti == FormattaDataBreve ? 8U : 10U)),
          "una data mostrata è di un'altra lunghezza");
  }
}

/// "1.234,50" with an optional sign.
bool ImportoMostrato(std::string_view testo) {
  if (testo.starts_with('-')) {
    testo.remove_prefix(1);
  }
  const auto virgola = testo.find(',');
  if (virgola == std::string_view::npos || testo.size() != virgola + 3 || !Cifre(testo.substr(virgola + 1))) {
    return false;
  }
  const auto gruppi = Dividi(testo.substr(0, virgola), '.');
  for (std::size_t i = 0; i < gruppi.size(); ++i) {
    const bool lungo = i == 0 ? gruppi[i].size() <= 3 : gruppi[i].size() == 3;
    if (!Cifre(gruppi[i]) || !lungo) {
      return false;
    }
  }
  return gruppi.size() == 1 || gruppi.front().front() != '0';
}

/// The hundredths that a typed amount stands for; none where that is not told by a few digits.
std::optional<long long> CentesimiScritti(std::string_view testo, bool conDecimali) {
  std::string pulito;
  std::copy_if(testo.begin(), testo.end(), std::back_inserter(pulito),
               [](char c) { return static_cast<unsigned char>(c) > ' '; });
  const auto virgola =
      conDecimali ? pulito.find_first_of(pulito.find(',') == std::string::npos ? "." : ",") : std::string::npos;
  std::string intero = pulito.substr(0, virgola);
  std::erase(intero, '.');
  std::string decimali = virgola == std::string::npos ? "" : pulito.substr(virgola + 1);
  std::erase(decimali, '.');
  if (intero.size() > 12 || decimali.size() > 12 || (intero.empty() && decimali.empty())) {
    return std::nullopt;
  }
  decimali.resize(12, '0');
  long long centesimi = 0;
  for (const char c : intero + decimali.substr(0, 2)) {
    centesimi = centesimi * 10 + (c - '0');
  }
  return centesimi + (decimali[2] >= '5' ? 1 : 0);
}

long long CentesimiMostrati(std::string_view testo) {
  long long centesimi = 0;
  for (const char c : testo) {
    centesimi = c == '.' || c == ',' || c == '-' ? centesimi : centesimi * 10 + (c - '0');
  }
  return centesimi;
}

/// Allowed characters that make no number: no digit, two ",", or a "." before the first digit that is not the one
/// behind which the decimals begin.
bool NonNumero(std::string_view testo, bool conDecimali) {
  const auto cifra = testo.find_first_of("0123456789");
  if (!conDecimali || cifra == std::string_view::npos) {
    return cifra == std::string_view::npos;
  }
  const auto virgole = std::count(testo.begin(), testo.end(), ',');
  const auto punti = std::count(testo.begin(), testo.begin() + static_cast<std::ptrdiff_t>(cifra), '.');
  return virgole > 1 || punti > (virgole == 0 ? 1 : 0);
}

void Importi(std::string_view testo) {
  for (const bool conDecimali : {true, false}) {
    for (const bool conSegno : {true, false}) {
      std::string importo(testo);
      if (ControllaImporto(importo, conDecimali, conSegno)) {
        Esigi(importo == testo, "un importo rifiutato è cambiato");
        continue;
      }
      if (importo.empty() || (importo == testo && NonNumero(testo, conDecimali))) {
        continue;
      }
      Esigi(ImportoMostrato(importo) && importo.front() != '-', "l'importo non ha la forma d'un importo");
      const auto scritti = conSegno ? std::nullopt : CentesimiScritti(testo, conDecimali);
      Esigi(!scritti || CentesimiMostrati(importo) == *scritti, "l'importo mostrato è un altro");
      std::string ancora = importo;
      Esigi(!ControllaImporto(ancora, true, false) && ancora == importo, "l'importo mostrato non si rilegge");
    }
  }
  const auto mostrato = Tenta([&] { return FormattaImporto(testo); });
  Esigi(!mostrato || ImportoMostrato(*mostrato), "il numero della base dati non ha la forma d'un importo");
  std::string intero;
  std::string decimali;
  SeparaImporto(testo, intero, decimali);
  Esigi(testo.starts_with(intero) && decimali.size() != 1, "la parte intera non è l'inizio");
}

} // namespace

void Conversioni(Ingresso ingresso) {
  const std::string_view testo = Parte(Testo(ingresso), '\n', 0);
  Date(testo);
  Convertitori(testo, Parte(Testo(ingresso), '\n', 1));
  Importi(testo);
}

} // namespace lumoscad::fuzz
