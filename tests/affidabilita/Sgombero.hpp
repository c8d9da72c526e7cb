#pragma once

#include "Registro.hpp"
#include "Sistema.hpp"
#include "common/Nota.hpp"

#include <map>
#include <set>
#include <string>
#include <vector>

namespace lumoscad::test {

/// The administrator who works off the notes that terminals leave, by the real program and as the terminal's own user
/// of the database. What is written is taken down as commands of the terminal, which works at nothing meanwhile.
class Sgombero {
 public:
  Sgombero(Sistema& sistema, bool perUtente) : sistema_(sistema), perUtente_(perUtente) {}

  /// The notes of a terminal that know that the host has accepted; the others wait for the end.
  void Presto(const std::string& postazione);
  /// All notes of a terminal, when nothing works any more. `accettati` names the commands that the host has accepted
  /// without their terminal's knowing it.
  void Tutto(const std::string& postazione, const std::set<std::string>& accettati);

  /// What was written, or found to be written already: what the command had asked, at the time of the realignment.
  std::vector<Eseguito> riallinei;
  /// For each of these the command that had asked.
  std::map<std::string, std::string> diChi;
  /// The commands whose note was worked off.
  std::set<std::string> chiusi;
  /// Of these, those whose note knows that the host has accepted.
  std::set<std::string> certi;
  /// Notes that a person put aside, by the reason.
  std::map<std::string, std::size_t> archiviate;
  std::size_t riallineate = 0; ///< notes after whose realignment nothing is open
  std::size_t rimandate = 0;   ///< times that the database was away, and the note waited for a later time
  std::vector<std::string> errori;

 private:
  /// Works off one note; false where it is to be tried again.
  bool Chiudi(const std::string& postazione, const Nota& nota, const std::set<std::string>* accettati);
  bool Riallinea(const std::string& postazione, const Nota& nota, const Eseguito& comando);
  void Archivia(const std::string& postazione, const Nota& nota, const std::string& motivo);
  [[nodiscard]] bool Superata(const Nota& nota) const;
  [[nodiscard]] std::string Utente(const std::string& postazione) const { return perUtente_ ? postazione : ""; }

  Sistema& sistema_;
  bool perUtente_;
  std::map<std::string, Eseguito> delleNote_; ///< whose a note is, by terminal and name
};

} // namespace lumoscad::test
