#pragma once

#include "common/MsgAnnulla.hpp"
#include "common/Stato.hpp"
#include "common/Variazioni.hpp"
#include "database/db2Searches.hpp"
#include "database/moduloDatabase.hpp"
#include "platform/ado/Ado.hpp"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

namespace lumoscad::procedureLumoDB2 {

/// The database form of a record's date. A text that is neither "DD/MM/YYYY" nor a missing value must never reach
/// a statement, where some databases would store it: error 13.
[[nodiscard]] std::string DataIso(const std::string& data);

/// "colonna='date' ", or "colonna IS NULL " for a missing date.
[[nodiscard]] std::string UgualeData(std::string_view colonna, const std::string& data);

/// "colonna=key ", or "colonna IS NULL " for a missing key; serves any whole number, for whose being one the caller
/// answers.
[[nodiscard]] std::string UgualeChiave(std::string_view colonna, const std::string& chiave);

/// The key as the value of an assignment, with a blank behind it: NULL for a missing key.
[[nodiscard]] std::string ValoreChiave(const std::string& chiave);

/// A record's row as the person knows it from the screen.
[[nodiscard]] std::string Riga(const VariazioneCanalizzazione& variazione);
[[nodiscard]] std::string Riga(const VariazioneConsegna& variazione);

/// What a change is known again by: texts that no other change has in this order. A list of thousands keeps one of
/// each, so that they stand in one piece.
class Modifica {
 public:
  void Aggiungi(std::string_view testo) {
    testi_.append(std::to_string(testo.size())).append(1, ':').append(testo); // or two lists could read the same
  }
  bool operator==(const Modifica&) const = default;

  /// For a table of them.
  struct Dispersione {
    std::size_t operator()(const Modifica& modifica) const noexcept {
      return std::hash<std::string>()(modifica.testi_);
    }
  };

 private:
  std::string testi_;
};

/// One confirmation being written: the connection, and the statements of the current record for its error text.
class Aggiornamento {
 public:
  /// `lavoro` keeps the ways to ask for what is changed; none where nothing is.
  explicit Aggiornamento(ado::Connection& connection, moduloDatabase::Lavoro* lavoro = nullptr)
      : connection_(&connection), lavoro_(lavoro), conti_(connection) {}

  /// Forgets the statements of the record before.
  void NuovoRecord() { istruzioni_.clear(); }
  /// The statements sent for the current record, each after a line end.
  [[nodiscard]] const std::string& Istruzioni() const noexcept { return istruzioni_; }
  /// Sends a query with the values of its markers; reads the column `colonna` alone, or all where none is named.
  ado::Recordset Leggi(const std::string& istruzione, std::vector<std::string> valori, std::string colonna = {});
  /// Sends a change with the values of its markers; returns the rows that it changed, -1 where that is not told.
  std::int64_t Esegui(const std::string& istruzione, std::vector<std::string> valori);
  /// The same for a change without markers.
  std::int64_t Esegui(const std::string& istruzione);
  /// Sends a change whose condition holds the old values. Returns whether rows have changed by it: now, or by the same
  /// change earlier in this confirmation, which took the rows of both records.
  [[nodiscard]] bool Cambia(const std::string& istruzione, const std::vector<std::string>& valori);
  /// How many rows the last change altered; 1 where that is not told.
  [[nodiscard]] std::int64_t Alterate() const noexcept { return alterate_; }
  /// Keeps a way to ask for the rows that were just altered.
  void Annota(moduloDatabase::Riscontro riscontro) {
    if (lavoro_ != nullptr) {
      lavoro_->Annota(std::move(riscontro));
    }
  }
  /// Has two columns asked for right before COMMIT; what is returned then holds the answer, if there is one.
  [[nodiscard]] std::shared_ptr<const std::vector<std::string>> ChiediAllaConferma(std::string domanda) {
    return lavoro_ != nullptr ? lavoro_->ChiediAllaConferma(std::move(domanda))
                              : std::make_shared<const std::vector<std::string>>();
  }
  /// Keeps a change of this confirmation that was done.
  void SegnaFatta(Modifica modifica) { fatte_.insert(std::move(modifica)); }
  /// Whether that change was done.
  [[nodiscard]] bool Fatta(const Modifica& modifica) const { return fatte_.contains(modifica); }
  /// Asked for a change that matched no row: whether the events `daDove` (the tables, and a condition that leaves out
  /// the old values) are there and meet `nuovo`, every one of them. A record does not know its events by key, so one
  /// among them that holds another value may be the one that it meant.
  [[nodiscard]] bool GiaCosi(const std::string& daDove, std::vector<std::string> valori, const std::string& nuovo);
  /// How many rows `daDove` names, and how many of them meet `nuovo`.
  struct Conto {
    std::int64_t righe = 0;
    std::int64_t comeNuove = 0;
  };
  [[nodiscard]] Conto Conta(const std::string& daDove, std::vector<std::string> valori, const std::string& nuovo);
  /// Asked for a change that matched no row, where the events `dove` are those that it named by key, with their old
  /// values: error -2147217864 where they are there, as the database then dropped the change.
  void RifiutaScarto(const std::string& dove);
  /// The key of the account `codice`, empty for a missing code. Raises the look-up's failure.
  [[nodiscard]] std::string ChiaveBanca(const std::string& codice);
  /// The key of an account that must be there.
  [[nodiscard]] std::string ChiaveConto(const std::string& codice);

 private:
  ado::Connection* connection_;
  moduloDatabase::Lavoro* lavoro_;
  std::int64_t alterate_ = 0;
  db2Searches::RicercaConti conti_;
  std::string istruzioni_;
  std::unordered_set<Modifica, Modifica::Dispersione> fatte_;
};

/// The frame of the procedures that write a confirmed list: one connection, one transaction, `applica` once a record in
/// the list's order; it returns false for a record whose rows somebody else had changed, which are left so. Returns ""
/// with those rows in `msg.RigheRimaste`, or "error" with the failure and the statements of the record that failed in
/// `msg.Errore`. An empty list touches nothing.
template <typename Variazioni, typename Applica>
std::string ApplicaVariazioni(const Variazioni& variazioni, MsgAnnulla& msg, Applica applica) {
  if (variazioni.empty()) {
    return "";
  }
  std::string istruzioni;
  std::vector<std::string> rimaste;
  moduloDatabase::Lavoro lavoro;
  try {
    ado::Connection& connection = lavoro.Apri(moduloDatabase::LeggiParametriDB2(stato().ComandoCorrente));
    moduloDatabase::Transazione transazione(connection);
    Aggiornamento aggiornamento(connection, &lavoro);
    try {
      for (const auto& variazione : variazioni) {
        aggiornamento.NuovoRecord();
        if (!applica(aggiornamento, variazione)) {
          rimaste.push_back(Riga(variazione));
        }
      }
      lavoro.Conferma(transazione);
    } catch (...) {
      istruzioni = aggiornamento.Istruzioni();
      throw;
    }
    if (!rimaste.empty()) {
      stato().andamento.RigheRimaste();
      stato().notaInCorso.RigheRimaste(rimaste);
    }
    msg.righeRimaste = std::move(rimaste);
    return "";
  } catch (...) {
    msg.Errore = moduloDatabase::TestoErrore(CurrentError(), "\r\n" + istruzioni);
    return "error";
  }
}

} // namespace lumoscad::procedureLumoDB2
