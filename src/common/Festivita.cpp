#include "common/Festivita.hpp"

#include <algorithm>
#include <array>

namespace lumoscad {
namespace {

struct FestivitaFissa {
  unsigned giorno = 0;
  unsigned mese = 0;
  std::string_view nome;
  int dalAnno = 0;
};

constexpr std::array<FestivitaFissa, 11> Fisse{{{1, 1, "Capodanno"},
                                                {6, 1, "Epifania"},
                                                {25, 4, "Anniversario della Liberazione"},
                                                {1, 5, "Festa del Lavoro"},
                                                {2, 6, "Festa della Repubblica"},
                                                {15, 8, "Assunzione di Maria"},
                                                {4, 10, "San Francesco d'Assisi", 2026},
                                                {1, 11, "Ognissanti"},
                                                {8, 12, "Immacolata Concezione"},
                                                {25, 12, "Natale"},
                                                {26, 12, "Santo Stefano"}}};

} // namespace

Giorno Pasqua(int anno) noexcept {
  // The anonymous Gregorian computus: the moon's age by the golden number and the century, then the Sunday after it.
  const int aureo = anno % 19;
  const int secolo = anno / 100;
  const int nelSecolo = anno % 100;
  const int correzione = (secolo - (secolo + 8) / 25 + 1) / 3;
  const int luna = (19 * aureo + secolo - secolo / 4 - correzione + 15) % 30;
  const int domenica = (32 + 2 * (secolo % 4) + 2 * (nelSecolo / 4) - luna - nelSecolo % 4) % 7;
  const int eccezione = (aureo + 11 * luna + 22 * domenica) / 451;
  const int numero = luna + domenica - 7 * eccezione + 114;
  return std::chrono::year_month_day{std::chrono::year(anno), std::chrono::month(static_cast<unsigned>(numero / 31)),
                                     std::chrono::day(static_cast<unsigned>(numero % 31 + 1))};
}

std::string_view Festivita(Giorno giorno) noexcept {
  const std::chrono::year_month_day data(giorno);
  const int anno = static_cast<int>(data.year());
  const auto fissa = std::find_if(Fisse.begin(), Fisse.end(), [&](const FestivitaFissa& f) {
    return std::chrono::day(f.giorno) == data.day() && std::chrono::month(f.mese) == data.month() && anno >= f.dalAnno;
  });
  // The only fixed days that Easter and its Monday may fall on are those of the Liberation.
  const bool liberazione = fissa != Fisse.end();
  const Giorno pasqua = Pasqua(anno);
  if (giorno == pasqua) {
    return liberazione ? "Pasqua e Anniversario della Liberazione" : "Pasqua";
  }
  if (giorno == pasqua + std::chrono::days(1)) {
    return liberazione ? "Lunedì dell'Angelo e Anniversario della Liberazione" : "Lunedì dell'Angelo";
  }
  return fissa != Fisse.end() ? fissa->nome : std::string_view();
}

bool FineSettimana(Giorno giorno) noexcept {
  const std::chrono::weekday quale(giorno);
  return quale == std::chrono::Saturday || quale == std::chrono::Sunday;
}

} // namespace lumoscad
