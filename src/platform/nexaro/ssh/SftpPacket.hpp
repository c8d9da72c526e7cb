#pragma once

#include "platform/nexaro/ssh/Session.hpp"

#include <cstdint>
#include <string>
#include <string_view>

namespace lumoscad::nexaro {

/// The body of a packet of the file transfer protocol, version 3 (draft-ietf-secsh-filexfer-02): numbers are
/// big-endian, texts follow their length.
class SftpBody {
 public:
  SftpBody& U32(std::uint32_t value) { return Number(value, 4); }
  SftpBody& U64(std::uint64_t value) { return Number(value, 8); }
  SftpBody& Text(std::string_view text) {
    U32(static_cast<std::uint32_t>(text.size()));
    bytes_ += text;
    return *this;
  }
  [[nodiscard]] const std::string& Bytes() const { return bytes_; }

 private:
  SftpBody& Number(std::uint64_t value, unsigned width) {
    for (unsigned rest = width; rest > 0; --rest) {
      bytes_ += static_cast<char>((value >> (8U * (rest - 1))) & 0xFFU);
    }
    return *this;
  }

  std::string bytes_;
};

/// Reads the body of a packet. A packet that ends too early raises `ConnectionLost`: the stream makes no sense.
class SftpReader {
 public:
  explicit SftpReader(std::string_view byte) : bytes_(byte) {}

  [[nodiscard]] bool Finished() const { return bytes_.empty(); }
  std::uint32_t U32() { return static_cast<std::uint32_t>(Number(4)); }
  std::uint64_t U64() { return Number(8); }
  std::string_view Text() { return Take(U32()); }

 private:
  std::string_view Take(std::size_t length) {
    if (length > bytes_.size()) {
      throw ConnectionLost("il servizio SFTP dell'host ha dato una risposta non valida");
    }
    const auto taken = bytes_.substr(0, length);
    bytes_.remove_prefix(length);
    return taken;
  }
  std::uint64_t Number(std::size_t width) {
    std::uint64_t value = 0;
    for (const char byte : Take(width)) {
      value = (value << 8U) | static_cast<unsigned char>(byte);
    }
    return value;
  }

  std::string_view bytes_;
};

} // namespace lumoscad::nexaro
