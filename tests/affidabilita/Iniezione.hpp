#pragma once

#include "Sistema.hpp"

#include <string>

namespace lumoscad::test {

/// A command in which something is made to fail.
struct Bersaglio {
  std::string nome;         ///< as a heading
  std::string comando;      ///< with the script of its screen behind a tab
  std::string preparazione; ///< what is changed in the database before it
  bool conHost = true;      ///< the host is asked
};

/// What a run with one failure came to.
struct Prova {
  bool scattata = false;    ///< there was such a call, and it failed
  std::string chiamata;     ///< its name
  std::string morte;        ///< where the process died; empty where it did not
  bool accettata = false;   ///< the host's log holds the request as accepted
  bool intatta = false;     ///< the database is as before the command
  bool applicata = false;   ///< the database is as after the whole command
  std::size_t note = 0;     ///< notes that stay, of the command or of what it may have left half written
  std::string risultato;    ///< of the command
  std::string letto;        ///< what the person reads: boxes and standard error
  std::string seguito;      ///< what the writing test came to, run by the same process right after
  std::string scorrettezza; ///< what is untrue or missing in what the person reads; empty where all is well
};

/// Lets commands fail at one call after the other, in a world that is put back before each time.
class Iniezione {
 public:
  Iniezione(Sistema& sistema, Bersaglio bersaglio);

  /// How many calls of this kind the command makes.
  [[nodiscard]] long Chiamate(const std::string& genere);
  /// Lets the call number `numero` fail, from 1. Kinds as the injector's.
  [[nodiscard]] Prova A(const std::string& genere, long numero);

 private:
  void Ripristina();
  [[nodiscard]] Testi Stato();
  [[nodiscard]] Prova Esegui(const std::string& genere, long numero);

  Sistema& sistema_;
  Bersaglio bersaglio_;
  Testi prima_;
  Testi dopo_;
};

} // namespace lumoscad::test
