#include "Codifica.hpp"

#include <algorithm>

namespace lumoscad::demo {
namespace {

constexpr unsigned FineAscii = 0x80;

/// The length of the character at the beginning of a text, 0 where it is no UTF-8.
std::size_t Lunghezza(std::string_view testo) {
  const auto byte = [&testo](std::size_t indice) { return static_cast<unsigned char>(testo[indice]); };
  const unsigned primo = byte(0);
  if (primo < FineAscii) {
    return 1;
  }
  const std::size_t lunghezza = primo >= 0xF0U ? 4 : primo >= 0xE0U ? 3 : 2;
  if (primo < 0xC2U || primo > 0xF4U || testo.size() < lunghezza) {
    return 0;
  }
  for (std::size_t indice = 1; indice < lunghezza; ++indice) {
    if ((byte(indice) & 0xC0U) != 0x80U) {
      return 0;
    }
  }
  const unsigned secondo = byte(1);
  const bool troppoLungo = (primo == 0xE0U && secondo < 0xA0U) || (primo == 0xF0U && secondo < 0x90U);
  const bool fuori = (primo == 0xEDU && secondo > 0x9FU) || (primo == 0xF4U && secondo > 0x8FU);
  return troppoLungo || fuori ? 0 : lunghezza;
}

bool Utf8(std::string_view testo) {
  while (!testo.empty()) {
    const auto lunghezza = Lunghezza(testo);
    if (lunghezza == 0) {
      return false;
    }
    testo.remove_prefix(lunghezza);
  }
  return true;
}

/// True for the bytes about which ISO-8859-1, ISO-8859-15 and Windows-1252 do not agree.
bool Dubbio(char carattere) {
  const auto byte = static_cast<unsigned char>(carattere);
  constexpr std::string_view Diversi = "\xA4\xA6\xA8\xB4\xB8\xBC\xBD\xBE";
  return (byte >= FineAscii && byte < 0xA0U) || Diversi.find(carattere) != std::string_view::npos;
}

} // namespace

std::string Codifica::Leggi(std::string_view ricevuti) {
  if (!unByte_ && Utf8(ricevuti)) {
    return std::string(ricevuti);
  }
  unByte_ = true;
  dubbia_ = dubbia_ || std::any_of(ricevuti.begin(), ricevuti.end(), Dubbio);
  std::string testo;
  for (const char carattere : ricevuti) {
    const auto byte = static_cast<unsigned char>(carattere);
    if (byte < FineAscii) {
      testo += carattere;
    } else {
      testo += static_cast<char>(0xC0U | (byte >> 6U));
      testo += static_cast<char>(0x80U | (byte & 0x3FU));
    }
  }
  return testo;
}

std::string Codifica::Scrivi(std::string_view testo) const {
  if (!unByte_) {
    return std::string(testo);
  }
  std::string byte;
  while (!testo.empty()) {
    const auto lunghezza = std::max<std::size_t>(Lunghezza(testo), 1);
    const auto primo = static_cast<unsigned char>(testo[0]);
    if (lunghezza == 1) {
      byte += testo[0];
    } else if (lunghezza == 2 && primo <= 0xC3U) {
      byte += static_cast<char>(((primo & 0x03U) << 6U) | (static_cast<unsigned char>(testo[1]) & 0x3FU));
    } else {
      byte += '?';
    }
    testo.remove_prefix(lunghezza);
  }
  return byte;
}

std::string Codifica::DichiarazioneXml() const {
  const std::string codifica = !unByte_ ? " encoding=\"UTF-8\"" : dubbia_ ? "" : " encoding=\"ISO-8859-1\"";
  return "<?xml version=\"1.0\"" + codifica + "?>\n";
}

} // namespace lumoscad::demo
