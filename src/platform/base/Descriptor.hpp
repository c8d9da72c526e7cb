#pragma once

#include <unistd.h>
#include <utility>

namespace lumoscad::base {

/// Owns a file descriptor.
class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    if (this != &other) {
      Close();
      number_ = std::exchange(other.number_, -1);
    }
    return *this;
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() { Close(); }

  [[nodiscard]] int Number() const { return number_; }
  [[nodiscard]] bool Opened() const { return number_ >= 0; }

  /// Gives the descriptor up without closing it.
  [[nodiscard]] int Release() { return std::exchange(number_, -1); }

  /// Closes the descriptor; the result of close(2), 0 when it was not open. A full disk may show only here.
  int Close() { return Opened() ? ::close(std::exchange(number_, -1)) : 0; }

 private:
  int number_ = -1;
};

} // namespace lumoscad::base
