#include "platform/nexaro/Codifica.hpp"

#include "platform/nexaro/ErroriLink.hpp"
#include "platform/nexaro/Testi.hpp"

#include <cerrno>
#include <cstdio>
#include <iconv.h>
#include <strings.h>

namespace lumoscad::nexaro {

namespace {

constexpr std::string_view Sostituto = "\xEF\xBF\xBD";

/// One character of a UTF-8 text; `lunghezza` is 0 where the bytes are no character.
struct Carattere {
  char32_t codice = 0;
  std::size_t lunghezza = 0;
};

Carattere LeggiCarattere(std::string_view testo) {
  const auto byte = [&testo](std::size_t indice) { return static_cast<unsigned char>(testo[indice]); };
  const unsigned primo = byte(0);
  if (primo < 0x80U) {
    return {primo, 1};
  }
  const std::size_t lunghezza = primo >= 0xF0U ? 4 : primo >= 0xE0U ? 3 : 2;
  if (primo < 0xC2U || primo > 0xF4U || testo.size() < lunghezza) {
    return {};
  }
  char32_t codice = primo & (0x7FU >> lunghezza);
  for (std::size_t indice = 1; indice < lunghezza; ++indice) {
    if ((byte(indice) & 0xC0U) != 0x80U) {
      return {};
    }
    codice = (codice << 6U) | (byte(indice) & 0x3FU);
  }
  const bool troppoLungo = (lunghezza == 3 && codice < 0x800U) || (lunghezza == 4 && codice < 0x10000U);
  const bool surrogato = codice >= 0xD800U && codice <= 0xDFFFU;
  return troppoLungo || surrogato || codice > 0x10FFFFU ? Carattere{} : Carattere{codice, lunghezza};
}

std::string CodiceUnicode(char32_t codice) {
  std::array<char, 16> testo{};
  std::snprintf(testo.data(), testo.size(), "U+%04X", static_cast<unsigned>(codice));
  return testo.data();
}

class Convertitore {
 public:
  explicit Convertitore(const std::string& codifica) : descrittore_(iconv_open("UTF-8", codifica.c_str())) {}
  Convertitore(const Convertitore&) = delete;
  Convertitore& operator=(const Convertitore&) = delete;
  ~Convertitore() {
    if (Valido()) {
      iconv_close(descrittore_);
    }
  }

  [[nodiscard]] bool Valido() const {
    // The C interface reports failure with a pointer of all ones.
    return descrittore_ != reinterpret_cast<iconv_t>(-1); // NOLINT(performance-no-int-to-ptr)
  }

  /// The character of one byte, empty where the byte is none; nothing where it only begins one.
  [[nodiscard]] std::optional<std::string> Converti(char byte) const {
    std::array<char, 16> uscita{};
    char* sorgente = &byte;
    char* scritto = uscita.data();
    std::size_t restano = 1;
    std::size_t spazio = uscita.size();
    iconv(descrittore_, nullptr, nullptr, nullptr, nullptr);
    if (iconv(descrittore_, &sorgente, &restano, &scritto, &spazio) == static_cast<std::size_t>(-1)) {
      return errno == EILSEQ ? std::optional<std::string>(std::string()) : std::nullopt;
    }
    std::string carattere(uscita.data(), uscita.size() - spazio);
    const bool uno = !carattere.empty() && LeggiCarattere(carattere).lunghezza == carattere.size();
    return uno ? std::optional<std::string>(carattere) : std::nullopt;
  }

 private:
  iconv_t descrittore_;
};

bool IsNomeUtf8(const std::string& nome) {
  return nome.empty() || ::strcasecmp(nome.c_str(), "UTF-8") == 0 || ::strcasecmp(nome.c_str(), "UTF8") == 0;
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
  const Convertitore convertitore(nome);
  if (!IsNomeAmmesso(nome) || !convertitore.Valido()) {
    throw ErroreLink("NEXARO_CODIFICA indica una codifica sconosciuta: vale «" + nome + "».");
  }
  for (unsigned byte = 0; byte < caratteri_.size(); ++byte) {
    const auto carattere = convertitore.Converti(static_cast<char>(byte));
    const bool ascii = byte < 0x80U;
    if (!carattere || (ascii && *carattere != std::string(1, static_cast<char>(byte)))) {
      throw ErroreLink("NEXARO_CODIFICA deve indicare UTF-8 o una codifica di un byte per carattere che contenga "
                       "l'ASCII: vale «" +
                       nome + "».");
    }
    caratteri_.at(byte) = *carattere;
    if (!carattere->empty()) {
      codici_.emplace(LeggiCarattere(*carattere).codice, static_cast<char>(byte));
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
    const auto carattere = LeggiCarattere(testo);
    if (carattere.lunghezza == 0) {
      throw ErroreLink(cosa + " non è un testo UTF-8 valido e non può essere convertito nella codifica " + nome_ +
                       " dell'host.");
    }
    const auto voce = codici_.find(carattere.codice);
    if (voce == codici_.end()) {
      throw ErroreLink(cosa + " contiene il carattere " + Cita(testo.substr(0, carattere.lunghezza)) + " (" +
                       CodiceUnicode(carattere.codice) + "), che manca nella codifica " + nome_ + " dell'host.");
    }
    byte += voce->second;
    testo.remove_prefix(carattere.lunghezza);
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
    const auto utf8 = IsUtf8() ? LeggiCarattere(testo) : Carattere{0, 0};
    const auto lunghezza = utf8.lunghezza == 0 ? std::size_t{1} : utf8.lunghezza;
    if (utf8.lunghezza > 0) {
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
