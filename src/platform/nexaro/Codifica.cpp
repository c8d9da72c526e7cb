#include "platform/nexaro/Codifica.hpp"

#include "platform/base/AsciiCase.hpp"
#include "platform/base/CharacterConverter.hpp"
#include "platform/base/Utf8.hpp"
#include "platform/nexaro/ErroriLink.hpp"
#include "platform/nexaro/Testi.hpp"

#include <cstdio>

namespace lumoscad::nexaro {

namespace {

constexpr std::string_view Sostituto = "\xEF\xBF\xBD";

std::string CodiceUnicode(char32_t codice) {
  std::array<char, 16> testo{};
  std::snprintf(testo.data(), testo.size(), "U+%04X", static_cast<unsigned>(codice));
  return testo.data();
}

/// The character of one byte, empty where the byte is none; nothing where it only begins one.
std::optional<std::string> CarattereDi(const base::CharacterConverter& convertitore, char byte) {
  std::string carattere;
  const auto esito = convertitore.Convert({&byte, 1}, carattere);
  if (esito != base::Conversion::Whole) {
    return esito == base::Conversion::Invalid ? std::optional<std::string>(std::string()) : std::nullopt;
  }
  const bool uno = !carattere.empty() && base::FirstCharacter(carattere).length == carattere.size();
  return uno ? std::optional<std::string>(carattere) : std::nullopt;
}

bool IsNomeUtf8(const std::string& nome) {
  return nome.empty() || base::SameButForCase(nome, "UTF-8") || base::SameButForCase(nome, "UTF8");
}

/// What iconv would read as a wish of another kind, or as the locale's encoding, is no name.
bool IsNomeAmmesso(const std::string& nome) {
  return nome.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789._:-") ==
         std::string::npos;
}

} // namespace

Codifica::Codifica(const std::string& nome) : nome_(IsNomeUtf8(nome) ? "UTF-8" : nome) {
  if (IsNomeUtf8(nome)) {
    return;
  }
  const base::CharacterConverter convertitore(nome);
  if (!IsNomeAmmesso(nome) || !convertitore.Known()) {
    throw ErroreLink("NEXARO_CODIFICA indica una codifica sconosciuta: vale «" + nome + "».");
  }
  for (unsigned byte = 0; byte < caratteri_.size(); ++byte) {
    const auto carattere = CarattereDi(convertitore, static_cast<char>(byte));
    const bool ascii = byte < 0x80U;
    if (!carattere || (ascii && *carattere != std::string(1, static_cast<char>(byte)))) {
      throw ErroreLink("NEXARO_CODIFICA deve indicare UTF-8 o una codifica di un byte per carattere che contenga "
                       "l'ASCII: vale «" +
                       nome + "».");
    }
    caratteri_.at(byte) = *carattere;
    if (!carattere->empty()) {
      codici_.emplace(base::FirstCharacter(*carattere).code, static_cast<char>(byte));
    }
  }
}

std::string Codifica::VersoHost(std::string_view testo, const std::string& cosa) const {
  if (IsUtf8()) {
    return std::string(testo);
  }
  std::string byte;
  byte.reserve(testo.size());
  while (!testo.empty()) {
    const auto carattere = base::FirstCharacter(testo);
    if (carattere.length == 0) {
      throw ErroreLink(cosa + " non è un testo UTF-8 valido e non può essere convertito nella codifica " + nome_ +
                       " dell'host.");
    }
    const auto voce = codici_.find(carattere.code);
    if (voce == codici_.end()) {
      throw ErroreLink(cosa + " contiene il carattere " + Cita(testo.substr(0, carattere.length)) + " (" +
                       CodiceUnicode(carattere.code) + "), che manca nella codifica " + nome_ + " dell'host.");
    }
    byte += voce->second;
    testo.remove_prefix(carattere.length);
  }
  return byte;
}

std::optional<std::string> Codifica::DallHost(std::string_view testo) const {
  if (IsUtf8()) {
    return std::string(testo);
  }
  std::string risultato;
  risultato.reserve(testo.size());
  for (const char byte : testo) {
    const auto& carattere = caratteri_.at(static_cast<unsigned char>(byte));
    if (carattere.empty()) {
      return std::nullopt;
    }
    risultato += carattere;
  }
  return risultato;
}

std::string Codifica::DallHostTollerante(std::string_view testo) const {
  std::string risultato;
  risultato.reserve(testo.size());
  while (!testo.empty()) {
    const auto utf8 = IsUtf8() ? base::FirstCharacter(testo) : base::Utf8Character{};
    const auto lunghezza = utf8.length == 0 ? std::size_t{1} : utf8.length;
    if (utf8.length > 0) {
      risultato += testo.substr(0, lunghezza);
    } else {
      const auto& carattere = caratteri_.at(static_cast<unsigned char>(testo.front()));
      risultato += carattere.empty() ? Sostituto : std::string_view(carattere);
    }
    testo.remove_prefix(lunghezza);
  }
  return risultato;
}

} // namespace lumoscad::nexaro
