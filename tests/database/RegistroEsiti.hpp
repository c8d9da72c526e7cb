#pragma once

#include <string>
#include <vector>

namespace lumoscad::test {

/// One run of a procedure with a fault: what its message said, and what the database held afterwards.
struct EsitoProvato {
  std::string base;
  std::string procedura;
  std::string punto;
  std::string dettoPrima; ///< what would have been said without looking for the outcome
  std::string detto;
  std::string tiene;
};

/// What the tests of the outcomes saw, as tables for the documentation: printed at the end of the program and written
/// to the file "esiti.md" in the build folder.
class RegistroEsiti {
 public:
  /// The one register of the process.
  static RegistroEsiti& Unico();

  void Annota(EsitoProvato esito);
  /// A fault other than a cut: database, fault, the message's first lines, what the database holds, seconds taken.
  void AnnotaGuasto(std::string base, std::string guasto, std::string messaggio, std::string tiene, double secondi);
  [[nodiscard]] std::string Tabelle() const;
  /// One line of figures, which begins with "esiti: ".
  [[nodiscard]] std::string Riassunto() const;

 private:
  struct Guasto {
    std::string base;
    std::string guasto;
    std::string messaggio;
    std::string tiene;
    double secondi = 0;
  };

  std::vector<EsitoProvato> esiti_;
  std::vector<Guasto> guasti_;
};

} // namespace lumoscad::test
