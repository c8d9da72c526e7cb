#pragma once

#include <unistd.h>
#include <utility>

namespace lumoscad::nexaro {

/// Owns a file descriptor.
class Descrittore {
 public:
  Descrittore() = default;
  explicit Descrittore(int numero) : numero_(numero) {}
  Descrittore(Descrittore&& altro) noexcept : numero_(std::exchange(altro.numero_, -1)) {}
  Descrittore& operator=(Descrittore&& altro) noexcept {
    if (this != &altro) {
      Chiudi();
      numero_ = std::exchange(altro.numero_, -1);
    }
    return *this;
  }
  Descrittore(const Descrittore&) = delete;
  Descrittore& operator=(const Descrittore&) = delete;
  ~Descrittore() { Chiudi(); }

  [[nodiscard]] int Numero() const { return numero_; }
  [[nodiscard]] bool Aperto() const { return numero_ >= 0; }

  /// Gives the descriptor up without closing it.
  [[nodiscard]] int Cedi() { return std::exchange(numero_, -1); }

  /// Closes the descriptor; the result of close(2), 0 when it was not open.
  int Chiudi() { return Aperto() ? ::close(std::exchange(numero_, -1)) : 0; }

 private:
  int numero_ = -1;
};

} // namespace lumoscad::nexaro
