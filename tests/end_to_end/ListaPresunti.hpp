#pragma once

#include "Dimostrazione.hpp"
#include "Schermo.hpp"

#include <gmock/gmock.h>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad::test {

/// The program on the presumed documents of one customer, played with keys, on each transport. By "Ordine" the list has
/// ten rows: BC216/26 twice (8 April EUR; 15 April, originally 8 April, GBP), BC217/26 (no date, no bank), OC214/26
/// three times (one date, one bank, three currencies), OC215/26 three times (one date; no bank, then two banks),
/// OC218/26.
class ListaPresunti : public testing::TestWithParam<Trasporto> {
 protected:
  static constexpr int Elencate = 10;

  /// `comando` is the command's beginning, `titolo` that of its window.
  ListaPresunti(std::string comando, std::string titolo);

  /// What the program is to change: `righe` rows, as `istruzioni` would. To be called before it starts; without it,
  /// nothing is to change.
  void Attendi(std::string_view istruzioni, std::size_t righe);
  /// Starts the program; it reads its command line on standard input.
  void Avvia();
  /// Starts a program that runs the command `volte` times.
  void AvviaSequenza(int volte);

  /// Waits for the list and puts it in the order of the documents, the first row selected, the tick column current.
  /// The lock stands on the host.
  void ApriLista();
  /// Makes row `riga` of the list current, from the first.
  void Vai(int riga);
  void Tasti(const std::vector<std::string>& tasti);
  void Digita(const std::string& testo);
  void Fotografa(const std::string& nome);
  /// Confirms, and closes the message that follows.
  void Conferma();

  /// The program ends with this status and these lines on standard output, and leaves these names on the host.
  void VerificaFine(int stato, const std::string& risultato, const Righe& rimasti = {});
  /// The back end was called once, with these parameters after the company and before the file's name, `vuoti` empty
  /// ones after it, and these bytes in the file; it answered `testo`. The lock stood beside the request.
  void VerificaRichiesta(const std::string& nome, std::size_t vuoti, const std::string& file, const std::string& testo);
  /// The database is what it was before the program, but for the changes it was to make.
  void VerificaBaseDati();
  /// The back end was never called, and nothing changed.
  void VerificaNullaFatto();

  /// What the back end logged, one list of fields a call.
  [[nodiscard]] std::vector<Righe> Chiamate() const;

  Dimostrazione demo;
  Schermo schermo;

 private:
  void Lancia(const std::string& programma, int volte);

  std::string comando_;
  std::string titolo_;
  Fotografia prima_ = demo.Stato();
  Fotografia attesa_ = prima_;
  std::unique_ptr<Figlio> programma_;
  std::string finestra_;
};

} // namespace lumoscad::test
