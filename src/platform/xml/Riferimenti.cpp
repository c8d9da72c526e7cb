#include "platform/xml/Riferimenti.hpp"

#include <array>
#include <charconv>
#include <cstdint>

namespace lumoscad::xml {

namespace {

bool CarattereAmmesso(std::uint32_t codice) {
  return codice == 0x9 || codice == 0xA || codice == 0xD || (codice >= 0x20 && codice <= 0xD7FF) ||
         (codice >= 0xE000 && codice <= 0xFFFD) || (codice >= 0x10000 && codice <= 0x10FFFF);
}

/// `nome` is what stands between "&" and ";".
bool RiferimentoValido(std::string_view nome) {
  static constexpr std::array<std::string_view, 5> predefiniti{"amp", "lt", "gt", "quot", "apos"};
  for (const auto& predefinito : predefiniti) {
    if (nome == predefinito) {
      return true;
    }
  }
  if (!nome.starts_with('#')) {
    return false;
  }
  const bool esadecimale = nome.starts_with("#x");
  const auto cifre = nome.substr(esadecimale ? 2 : 1);
  std::uint32_t codice = 0;
  const auto* fine = cifre.data() + cifre.size();
  const auto [arrivo, errore] = std::from_chars(cifre.data(), fine, codice, esadecimale ? 16 : 10);
  return errore == std::errc() && arrivo == fine && CarattereAmmesso(codice);
}

struct Sezione {
  std::string_view inizio;
  std::string_view fine;
};

/// The parts of a document in which "&" stands for itself.
constexpr std::array<Sezione, 3> letterali{{{"<!--", "-->"}, {"<![CDATA[", "]]>"}, {"<?", "?>"}}};

/// Skips a literal section that begins at `posizione`; the position stays when none begins there.
std::size_t DopoSezione(std::string_view testo, std::size_t posizione) {
  for (const auto& sezione : letterali) {
    if (testo.substr(posizione).starts_with(sezione.inizio)) {
      const auto fine = testo.find(sezione.fine, posizione + sezione.inizio.size());
      return fine == std::string_view::npos ? testo.size() : fine + sezione.fine.size();
    }
  }
  return posizione;
}

bool SenzaControlli(std::string_view testo) {
  for (const char carattere : testo) {
    const auto codice = static_cast<unsigned char>(carattere);
    if (codice < 0x20 && codice != 0x9 && codice != 0xA && codice != 0xD) {
      return false;
    }
  }
  return true;
}

} // namespace

bool RiferimentiValidi(std::string_view testo) {
  static constexpr std::size_t LunghezzaMassima = 16;
  if (!SenzaControlli(testo)) {
    return false;
  }
  std::size_t posizione = 0;
  while ((posizione = testo.find_first_of("<&", posizione)) != std::string_view::npos) {
    if (testo[posizione] == '<') {
      const auto dopo = DopoSezione(testo, posizione);
      posizione = dopo == posizione ? posizione + 1 : dopo;
      continue;
    }
    const auto fine = testo.substr(posizione, LunghezzaMassima).find(';');
    if (fine == std::string_view::npos || !RiferimentoValido(testo.substr(posizione + 1, fine - 1))) {
      return false;
    }
    posizione += fine;
  }
  return true;
}

} // namespace lumoscad::xml
