#include "common/Giorni.hpp"

#include "common/Testo.hpp"

#include <algorithm>

namespace lumoscad {
namespace {

/// The number of `quante` digits from `inizio` on, -1 where one of them is none.
int Numero(std::string_view testo, std::size_t inizio, std::size_t quante) noexcept {
  int numero = 0;
  for (const char c : testo.substr(inizio, quante)) {
    if (c < '0' || c > '9') {
      return -1;
    }
    numero = numero * 10 + (c - '0');
  }
  return numero;
}

} // namespace

std::optional<Giorno> LeggiGiorno(std::string_view testo) noexcept {
  if (testo.size() != 10 || testo[2] != '/' || testo[5] != '/') {
    return std::nullopt;
  }
  const int giorno = Numero(testo, 0, 2);
  const int mese = Numero(testo, 3, 2);
  const int anno = Numero(testo, 6, 4);
  if (giorno < 1 || mese < 1 || anno < 1) {
    return std::nullopt;
  }
  const std::chrono::year_month_day data{std::chrono::year(anno), std::chrono::month(static_cast<unsigned>(mese)),
                                         std::chrono::day(static_cast<unsigned>(giorno))};
  return data.ok() ? std::optional<Giorno>(data) : std::nullopt;
}

std::string ScriviGiorno(Giorno giorno) {
  const std::chrono::year_month_day data(giorno);
  return ConZeri(static_cast<int>(static_cast<unsigned>(data.day())), 2) + "/" +
         ConZeri(static_cast<int>(static_cast<unsigned>(data.month())), 2) + "/" +
         ConZeri(static_cast<int>(data.year()), 4);
}

Giorno GiornoDelMomento(const DateTime& momento) noexcept {
  return std::chrono::year_month_day{std::chrono::year(momento.year),
                                     std::chrono::month(static_cast<unsigned>(momento.month)),
                                     std::chrono::day(static_cast<unsigned>(momento.day))};
}

Giorno UltimoDelMese(Giorno giorno) noexcept {
  const std::chrono::year_month_day data(giorno);
  return std::chrono::year_month_day_last(data.year(), std::chrono::month_day_last(data.month()));
}

Giorno DopoMesi(Giorno giorno, int mesi) noexcept {
  const std::chrono::year_month_day data(giorno);
  const std::chrono::year_month_day primo = data.year() / data.month() / 1 + std::chrono::months(mesi);
  const Giorno ultimo = UltimoDelMese(primo);
  if (giorno == UltimoDelMese(giorno)) {
    return ultimo;
  }
  return std::min(ultimo,
                  Giorno(primo) + (std::chrono::days(static_cast<unsigned>(data.day())) - std::chrono::days(1)));
}

bool Scrivibile(Giorno giorno) noexcept {
  const int anno = static_cast<int>(std::chrono::year_month_day(giorno).year());
  return anno >= 1 && anno <= 9999;
}

} // namespace lumoscad
