#include "screens/DataScritta.hpp"

#include "common/Testo.hpp"
#include "common/Utilities.hpp"

#include <algorithm>

namespace lumoscad::dataScritta {
namespace {

constexpr std::string_view FineDelMese = "fm";
constexpr std::size_t CifreDiPiu = 3; ///< at most, behind a "+"

bool DiPiu(std::string_view testo) noexcept {
  return testo.size() >= 2 && testo.size() <= 1 + CifreDiPiu && testo.front() == '+' &&
         std::all_of(testo.begin() + 1, testo.end(), [](char c) { return c >= '0' && c <= '9'; });
}

/// A date in the layout of the screens or in one that the date check takes.
std::optional<Giorno> Leggi(std::string_view testo) {
  if (const auto giorno = LeggiGiorno(testo)) {
    return giorno;
  }
  return LeggiGiorno(Utilities::ControllaDataSenzaMessaggi(testo));
}

/// The day that short forms count from; none where the row's date cannot be read.
std::optional<Giorno> Base(std::string_view dataDellaRiga, const DateTime& oggi) {
  return MaggioreDiSpazio(dataDellaRiga) ? Leggi(dataDellaRiga) : GiornoDelMomento(oggi);
}

} // namespace

std::string Scrivi(Giorno giorno) {
  static constexpr Giorno Bisestile2000 = std::chrono::year(2000) / std::chrono::February / 29;
  // The date check takes this day with its year in two digits alone.
  return giorno == Bisestile2000 ? "29/02/00" : ScriviGiorno(giorno);
}

std::string Espandi(std::string_view testo, std::string_view dataDellaRiga, const DateTime& oggi) {
  const bool fineMese = testo == FineDelMese;
  if (fineMese || DiPiu(testo)) {
    if (const auto base = Base(dataDellaRiga, oggi)) {
      const Giorno giorno = fineMese ? UltimoDelMese(*base) : *base + std::chrono::days(Intero(testo));
      if (Scrivibile(giorno)) {
        return Scrivi(giorno);
      }
    }
  }
  return std::string(testo);
}

std::optional<Giorno> GiornoScritto(std::string_view testo, std::string_view dataDellaRiga, const DateTime& oggi) {
  return Leggi(Espandi(testo, dataDellaRiga, oggi));
}

Giorno GiornoDelCampo(std::string_view testo, std::string_view dataDellaRiga, const DateTime& oggi) {
  const auto scritto = GiornoScritto(testo, dataDellaRiga, oggi);
  return scritto ? *scritto : Base(dataDellaRiga, oggi).value_or(GiornoDelMomento(oggi));
}

std::string Sposta(std::string_view testo, std::string_view dataDellaRiga, const DateTime& oggi, Passo passo,
                   int quanti) {
  const Giorno da = GiornoDelCampo(testo, dataDellaRiga, oggi);
  const Giorno a = passo == Passo::Giorno ? da + std::chrono::days(quanti) : DopoMesi(da, quanti);
  return Scrivibile(a) ? Scrivi(a) : std::string(testo);
}

} // namespace lumoscad::dataScritta
