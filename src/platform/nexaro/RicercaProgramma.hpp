#pragma once

#include <string>
#include <string_view>

namespace lumoscad::nexaro {

/// A link that can tell whether a program could be run, without running it.
class RicercaProgramma {
 public:
  RicercaProgramma() = default;
  RicercaProgramma(const RicercaProgramma&) = delete;
  RicercaProgramma& operator=(const RicercaProgramma&) = delete;
  virtual ~RicercaProgramma() = default;

  /// Where the program stands on the host. Raises a run-time error where it is missing or cannot be run.
  [[nodiscard]] virtual std::string CercaProgramma(std::string_view host, std::string_view programma) = 0;
};

} // namespace lumoscad::nexaro
