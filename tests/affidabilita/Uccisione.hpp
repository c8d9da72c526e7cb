#pragma once

#include "Sistema.hpp"

#include <optional>
#include <string>
#include <vector>

namespace lumoscad::test {

/// A command to be killed.
struct Vittima {
  std::string nome;         ///< as a heading
  std::string comando;      ///< with the script of its screen behind a tab
  std::string preparazione; ///< what is changed in the database before it
};

/// What is found after a terminal was killed at one step of a command.
struct Osservazione {
  Testi passi;             ///< the names of the steps up to the death
  Testi sullHost;          ///< files left in the host's directory
  Testi inLocale;          ///< files left in the terminal's own directory
  bool accettata = false;  ///< the back end's log holds the request as accepted
  bool applicata = false;  ///< the database is as after the whole command
  bool intatta = false;    ///< the database is as before it
  std::string nota;        ///< what the terminal's note says: "none", its phase, or why it cannot be read
  std::string righe;       ///< what `--in-sospeso` says of the rows in the database: "none", or each state once
  bool chiusa = false;     ///< one command more, `--riallinea` or `--archivia`, and nothing is left open
  bool pari = false;       ///< ... and the database holds what the host has accepted, and nothing else
  std::string successivo;  ///< what the same command of another terminal came to, right after
  bool fermato = false;    ///< ... because the list is locked
  std::string ripetuto;    ///< what it came to once the administrator had removed what was left; empty: not needed
  bool allineati = false;  ///< in the end the database is as after the whole command
  bool senzaResti = false; ///< ... and the host's directory is empty
};

/// Kills a terminal at each step of a command, in a world that is put back before each time.
class Uccisione {
 public:
  Uccisione(Sistema& sistema, Vittima vittima);

  /// The names of the command's steps, from the run in which nobody was killed.
  [[nodiscard]] const Testi& Passi() const noexcept { return passi_; }
  /// What is left in the terminal's directory by the run in which nobody was killed.
  [[nodiscard]] const Testi& Resti() const noexcept { return resti_; }
  /// What is found after a death at step `passo`, from 1; nothing where the command came to its end before that step.
  [[nodiscard]] std::optional<Osservazione> A(long passo);

 private:
  void Ripristina();
  void RipristinaDati();
  /// Finishes what the dead terminal left open, as a person would who has looked at the host's log.
  void Chiudi(Osservazione& vista);
  [[nodiscard]] Testi Stato();
  /// Runs the command on the second terminal and says what it came to.
  [[nodiscard]] std::string Altro();
  void TogliResti() const;

  Sistema& sistema_;
  Vittima vittima_;
  Testi passi_;
  Testi resti_;
  Testi prima_;
  Testi dopo_;
};

} // namespace lumoscad::test
