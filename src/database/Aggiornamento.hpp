#pragma once

#include "common/MsgAnnulla.hpp"
#include "common/Stato.hpp"
#include "common/Variazioni.hpp"
#include "database/moduloDatabase.hpp"
#include "platform/ado/Ado.hpp"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad::procedureLumoDB2 {

/// The database form of a record's date. A text that is neither "DD/MM/YYYY" nor a missing value must never reach
/// a statement, where some databases would store it: error 13.
[[nodiscard]] std::string DataIso(const std::string& data);

/// "colonna='date' ", or "colonna IS NULL " for a missing date.
[[nodiscard]] std::string UgualeData(const std::string& colonna, const std::string& data);

/// "colonna=key ", or "colonna IS NULL " for a missing key.
[[nodiscard]] std::string UgualeChiave(const std::string& colonna, const std::string& chiave);

/// The key as the value of an assignment, with a blank behind it: NULL for a missing key.
[[nodiscard]] std::string ValoreChiave(const std::string& chiave);

/// The list's rows as the person knows them from the screen, separated by "; ": the first eight, and how many more.
[[nodiscard]] std::string Righe(const VariazioniCanalizzazione& variazioni);
[[nodiscard]] std::string Righe(const VariazioniConsegna& variazioni);

/// One confirmation being written: the connection, and the statements of the current record for its error text.
class Aggiornamento {
 public:
  explicit Aggiornamento(ado::Connection& connection) : connection_(&connection) {}

  /// Forgets the statements of the record before.
  void NuovoRecord() { istruzioni_.clear(); }
  /// The statements sent for the current record, each after a line end.
  [[nodiscard]] const std::string& Istruzioni() const noexcept { return istruzioni_; }
  /// Sends a statement with the values of its markers.
  ado::Recordset Esegui(const std::string& istruzione, std::vector<std::string> valori);
  /// Sends a statement without markers and without a result.
  void Esegui(const std::string& istruzione);
  /// The key of the account `codice`, empty for a missing code. Raises the look-up's failure.
  [[nodiscard]] std::string ChiaveBanca(const std::string& codice);
  /// The key of an account that must be there.
  [[nodiscard]] std::string ChiaveConto(const std::string& codice);

 private:
  ado::Connection* connection_;
  std::string istruzioni_;
};

/// The frame of the procedures that write a confirmed list: one connection, one transaction, `applica` once a record in
/// the list's order. Returns "", or "error" with the failure and the statements of the record that failed in
/// `msg.Errore` when nothing was kept. An empty list touches nothing.
template <typename Variazioni, typename Applica>
std::string ApplicaVariazioni(const Variazioni& variazioni, MsgAnnulla& msg, Applica applica) {
  if (variazioni.empty()) {
    return "";
  }
  std::string istruzioni;
  std::unique_ptr<ado::Connection> connection;
  try {
    connection = moduloDatabase::ApriConnessione(moduloDatabase::LeggiParametriDB2(stato().ComandoCorrente));
    moduloDatabase::Transazione transazione(*connection);
    Aggiornamento aggiornamento(*connection);
    try {
      for (const auto& variazione : variazioni) {
        aggiornamento.NuovoRecord();
        applica(aggiornamento, variazione);
      }
      transazione.Conferma();
    } catch (...) {
      istruzioni = aggiornamento.Istruzioni();
      throw;
    }
    return "";
  } catch (...) {
    msg.Errore = moduloDatabase::TestoErroreDopoHost(ErroreCorrente(), connection.get(), Righe(variazioni)) + "\r\n" +
                 istruzioni;
    return "error";
  }
}

} // namespace lumoscad::procedureLumoDB2
