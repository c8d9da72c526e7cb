#pragma once

#include <array>
#include <atomic>

/// What a terminal, the library that makes its calls fail, and the test share: one page of a file.
namespace lumoscad::test {

struct PaginaIniezione {
  std::atomic<long> chiamate;    ///< calls counted so far
  std::atomic<long> scattate;    ///< calls made to fail
  std::array<char, 64> chiamata; ///< the name of the first of them
  std::array<char, 192> morte;   ///< where the process got a signal that kills, if it did
};

/// What the terminal says to the library, which need not be there.
enum class FaseIniezione {
  Comando, ///< a command begins: calls of input and output count from now on
  Accetta, ///< the host has said yes: allocations count from now on
  Fine     ///< the command is over: nothing counts any more
};

} // namespace lumoscad::test

extern "C" {
/// Begins or ends the counting.
void lumoscad_iniezione_fase(lumoscad::test::FaseIniezione fase) __attribute__((weak));
/// Stops the counting while more than 0 of these are open: what follows is the test's own.
void lumoscad_iniezione_sospendi(int passo) __attribute__((weak));
}

namespace lumoscad::test {

inline void Avvisa(FaseIniezione fase) {
  if (lumoscad_iniezione_fase != nullptr) {
    lumoscad_iniezione_fase(fase);
  }
}

/// Nothing counts and nothing fails while one of these is there.
class SenzaIniezioni {
 public:
  SenzaIniezioni() { Passo(1); }
  SenzaIniezioni(const SenzaIniezioni&) = delete;
  SenzaIniezioni& operator=(const SenzaIniezioni&) = delete;
  ~SenzaIniezioni() { Passo(-1); }

 private:
  static void Passo(int passo) {
    if (lumoscad_iniezione_sospendi != nullptr) {
      lumoscad_iniezione_sospendi(passo);
    }
  }
};

} // namespace lumoscad::test
