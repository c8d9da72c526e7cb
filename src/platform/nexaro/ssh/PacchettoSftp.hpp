#pragma once

#include "platform/nexaro/ssh/Sessione.hpp"

#include <cstdint>
#include <string>
#include <string_view>

namespace lumoscad::nexaro {

/// The body of a packet of the file transfer protocol, version 3 (draft-ietf-secsh-filexfer-02): numbers are
/// big-endian, texts follow their length.
class CorpoSftp {
 public:
  CorpoSftp& U32(std::uint32_t valore) { return Numero(valore, 4); }
  CorpoSftp& U64(std::uint64_t valore) { return Numero(valore, 8); }
  CorpoSftp& Testo(std::string_view testo) {
    U32(static_cast<std::uint32_t>(testo.size()));
    byte_ += testo;
    return *this;
  }
  [[nodiscard]] const std::string& Byte() const { return byte_; }

 private:
  CorpoSftp& Numero(std::uint64_t valore, unsigned larghezza) {
    for (unsigned resto = larghezza; resto > 0; --resto) {
      byte_ += static_cast<char>((valore >> (8U * (resto - 1))) & 0xFFU);
    }
    return *this;
  }

  std::string byte_;
};

/// Reads the body of a packet. A packet that ends too early raises `ConnessionePersa`: the stream makes no sense.
class LettoreSftp {
 public:
  explicit LettoreSftp(std::string_view byte) : byte_(byte) {}

  [[nodiscard]] bool Finito() const { return byte_.empty(); }
  std::uint32_t U32() { return static_cast<std::uint32_t>(Numero(4)); }
  std::uint64_t U64() { return Numero(8); }
  std::string_view Testo() { return Prendi(U32()); }

 private:
  std::string_view Prendi(std::size_t lunghezza) {
    if (lunghezza > byte_.size()) {
      throw ConnessionePersa("il servizio SFTP dell'host ha dato una risposta non valida");
    }
    const auto preso = byte_.substr(0, lunghezza);
    byte_.remove_prefix(lunghezza);
    return preso;
  }
  std::uint64_t Numero(std::size_t larghezza) {
    std::uint64_t valore = 0;
    for (const char byte : Prendi(larghezza)) {
      valore = (valore << 8U) | static_cast<unsigned char>(byte);
    }
    return valore;
  }

  std::string_view byte_;
};

} // namespace lumoscad::nexaro
