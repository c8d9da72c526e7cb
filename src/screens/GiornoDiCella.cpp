#include "screens/GiornoDiCella.hpp"

#include <array>
#include <cstddef>

namespace lumoscad {
namespace {

/// A number of at most four digits up to the next "/", which the text then loses with it.
std::optional<int> Parte(std::string_view& testo, std::size_t& cifre) {
  int valore = 0;
  for (cifre = 0; !testo.empty() && testo.front() != '/'; ++cifre) {
    const int cifra = testo.front() - '0';
    if (cifra < 0 || cifra > 9 || cifre == 4) {
      return std::nullopt;
    }
    valore = valore * 10 + cifra;
    testo.remove_prefix(1);
  }
  return cifre > 0 ? std::optional(valore) : std::nullopt;
}

bool DelCalendario(int giorno, int mese, int anno) {
  static constexpr std::array<int, 12> Giorni = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  if (mese < 1 || mese > 12 || giorno < 1) {
    return false;
  }
  const bool bisestile = (anno % 4 == 0 && anno % 100 != 0) || anno % 400 == 0;
  return giorno <= (mese == 2 && bisestile ? 29 : Giorni[static_cast<std::size_t>(mese - 1)]);
}

} // namespace

std::optional<int> GiornoScritto(std::string_view testo, int anno) noexcept {
  std::array<int, 3> parti = {0, 0, anno};
  for (std::size_t i = 0; i < parti.size(); ++i) {
    std::size_t cifre = 0;
    const auto parte = Parte(testo, cifre);
    const bool delAnno = i == 2;
    if (!parte || (delAnno ? cifre != 2 && cifre != 4 : cifre > 2)) {
      return std::nullopt;
    }
    parti[i] = delAnno && cifre == 2 ? *parte + (*parte < 50 ? 2000 : 1900) : *parte;
    if (testo.empty()) {
      return i > 0 && DelCalendario(parti[0], parti[1], parti[2])
                 ? std::optional(parti[2] * 10000 + parti[1] * 100 + parti[0])
                 : std::nullopt;
    }
    testo.remove_prefix(1);
  }
  return std::nullopt;
}

std::optional<int> GiornoDiCella(std::string_view testo) noexcept {
  const bool forma = (testo.size() == 8 || testo.size() == 10) && testo[2] == '/' && testo[5] == '/';
  return forma ? GiornoScritto(testo, 0) : std::nullopt;
}

} // namespace lumoscad
