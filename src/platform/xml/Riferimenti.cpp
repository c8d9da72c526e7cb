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

/// Takes the first character off a UTF-8 text; a value that no document may hold where the bytes are none.
std::uint32_t PrimoCarattere(std::string_view& testo) {
  static constexpr std::uint32_t NonValido = 0;
  const auto byte = [&](std::size_t posto) { return static_cast<unsigned char>(testo[posto]); };
  const std::uint32_t primo = byte(0);
  if (primo < 0x80) {
    testo.remove_prefix(1);
    return primo;
  }
  const std::size_t lunghezza = primo >= 0xF0 ? 4 : (primo >= 0xE0 ? 3 : 2);
  static constexpr std::array<std::uint32_t, 5> minimi{0, 0, 0x80, 0x800, 0x10000};
  if (primo < 0xC0 || primo > 0xF7 || testo.size() < lunghezza) {
    return NonValido;
  }
  std::uint32_t codice = primo & (0x7FU >> lunghezza);
  for (std::size_t posto = 1; posto < lunghezza; ++posto) {
    if ((byte(posto) & 0xC0U) != 0x80U) {
      return NonValido;
    }
    codice = codice << 6U | (byte(posto) & 0x3FU);
  }
  testo.remove_prefix(lunghezza);
  return codice >= minimi[lunghezza] ? codice : NonValido;
}

/// The converter of encodings lets values pass that are no characters.
bool SoloCaratteriAmmessi(std::string_view testo) {
  while (!testo.empty()) {
    if (!CarattereAmmesso(PrimoCarattere(testo))) {
      return false;
    }
  }
  return true;
}

/// `posizione` stands on a "&" and moves past its reference; false where none is written there.
bool SaltaRiferimento(std::string_view testo, std::size_t& posizione) {
  static constexpr std::size_t LunghezzaMassima = 16;
  const auto fine = testo.substr(posizione, LunghezzaMassima).find(';');
  if (fine == std::string_view::npos || !RiferimentoValido(testo.substr(posizione + 1, fine - 1))) {
    return false;
  }
  posizione += fine + 1;
  return true;
}

/// `posizione` stands on the quote that opens a value and moves past the one that closes it. A "<" may not stand
/// between them: the parser lets it pass, and what follows it would be taken for a section here.
bool SaltaValore(std::string_view testo, std::size_t& posizione) {
  const std::string_view arresti = testo[posizione] == '"' ? "\"<&" : "'<&";
  ++posizione;
  while ((posizione = testo.find_first_of(arresti, posizione)) != std::string_view::npos) {
    if (testo[posizione] == '<') {
      return false;
    }
    if (testo[posizione] != '&') {
      ++posizione;
      return true;
    }
    if (!SaltaRiferimento(testo, posizione)) {
      return false;
    }
  }
  return false;
}

/// `posizione` stands on the "<" of a tag and moves past its ">".
bool SaltaEtichetta(std::string_view testo, std::size_t& posizione) {
  ++posizione;
  while ((posizione = testo.find_first_of("'\"<>&", posizione)) != std::string_view::npos) {
    if (testo[posizione] == '>') {
      ++posizione;
      return true;
    }
    if (testo[posizione] == '<' || testo[posizione] == '&' || !SaltaValore(testo, posizione)) {
      return false;
    }
  }
  return false;
}

} // namespace

bool RiferimentiValidi(std::string_view testo) {
  if (!SoloCaratteriAmmessi(testo)) {
    return false;
  }
  std::size_t posizione = 0;
  while ((posizione = testo.find_first_of("<&", posizione)) != std::string_view::npos) {
    const auto dopo = DopoSezione(testo, posizione);
    if (dopo != posizione) {
      posizione = dopo;
    } else if (!(testo[posizione] == '<' ? SaltaEtichetta(testo, posizione) : SaltaRiferimento(testo, posizione))) {
      return false;
    }
  }
  return true;
}

} // namespace lumoscad::xml
