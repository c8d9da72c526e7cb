#pragma once

#include "Dimostrazione.hpp"
#include "common/Stato.hpp"
#include "platform/Services.hpp"
#include "support/TestBench.hpp"

#include <functional>
#include <gmock/gmock.h>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad::test {

/// The credits command on a demonstration, with the real host link and the real back end. The person is a script; the
/// clock stands at 5 March 2026, 14:07:09.
class Guasti : public testing::Test {
 protected:
  explicit Guasti(Trasporto trasporto = Trasporto::Cartella);

  /// Runs the command on the demonstration's database, or with other database options.
  std::string Esegui();
  std::string Esegui(const std::string& opzioniDatabase);

  /// What the person does in the next list window: "15/04/2026" for the second due date, "Banca dell'Aniene" for the
  /// fifth, then whatever `primaDiConfermare` does, then confirmation.
  void Conferma(const std::function<void()>& primaDiConfermare = nullptr);

  /// The command was refused by `box`, wrote nothing to the database, and left on the host what is named.
  void VerificaRifiuto(const std::string& risultato, const Righe& box, const Righe& rimasti);

  /// A failure of the request, as it is shown.
  static std::string ErroreRichiesta(const std::string& testo) { return "-2147220905\r\n" + testo; }
  /// A failure of the screen's loading or of the update, as it is shown.
  static std::string ErroreRegistrato(const std::string& testo) { return "-2147220954\r\nERRORE: " + testo; }

  /// The link that the component gets.
  virtual std::unique_ptr<nexaro::HostLink> CreaHost();

  Dimostrazione demo;
  Fotografia prima = demo.Stato(); ///< the database that a fault must leave behind
  ScriptedDesktop desktop;
  Righe istruzioni; ///< every statement text sent to a database
  /// Called with every statement text, before it is sent.
  std::function<void(std::string_view istruzione)> allaIstruzione;
  static constexpr std::string_view Richiesta = "T0120260305140709";

 private:
  nexaro::HostLink& Host();
  const nexaro::Environment& Ambiente();

  std::unique_ptr<nexaro::HostLink> host_;
  std::unique_ptr<nexaro::Environment> ambiente_;
  StatoSostituito stato_;
  ReplacedServices servizi_;
};

} // namespace lumoscad::test
