#pragma once

#include "Contabilita.hpp"

#include <random>
#include <string>

namespace lumoscad::test {

/// Somebody at a terminal, who gives commands of every kind and fills their screens. The same seed gives the same
/// commands.
class Persona {
 public:
  Persona(const Misura& misura, unsigned seme) : misura_(misura), caso_(seme) {}

  /// The next command with the script of its screen behind a tab.
  [[nodiscard]] std::string Prossimo();

 private:
  int Fra(int minimo, int massimo);
  [[nodiscard]] std::string Scadenze(const std::string& lista);
  [[nodiscard]] std::string Presunti(bool consegna);
  [[nodiscard]] std::string Sospensione();
  [[nodiscard]] std::string Presunto();
  /// One to three changes, nearly always confirmed.
  [[nodiscard]] std::string Gesti(bool date, bool banche);

  Misura misura_;
  std::mt19937 caso_;
};

} // namespace lumoscad::test
