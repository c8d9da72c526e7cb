#pragma once

#include "platform/RuntimeError.hpp"
#include "platform/ado/Ado.hpp"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// The connection to the accounting database, as every database procedure uses it.
namespace lumoscad::moduloDatabase {

/// The connection settings of a command line.
struct ParametriConnessione {
  std::string DataSource; ///< "-DB2SOURCE", the ODBC data source name
  std::string UserId;     ///< "-DB2USER"
  std::string Password;   ///< "-DB2PASS"
  std::string Schema;     ///< "-DB2SCHEMA"; where it is blank the password setting stands for it, on purpose
};

/// Reads the settings from a command line. Option names count in any case, values as written; the last
/// occurrence wins, and an option without a value is the empty text.
[[nodiscard]] ParametriConnessione LeggiParametriDB2(std::string_view command);

/// Opens a new connection. Raises the driver's failure.
[[nodiscard]] std::unique_ptr<ado::Connection> ApriConnessione(const ParametriConnessione& parametri);

/// The same for a look that changes nothing: a database that is a file is not created, and a statement may take
/// `durata` seconds whatever the environment says.
[[nodiscard]] std::unique_ptr<ado::Connection> ApriPerProva(const ParametriConnessione& parametri, int durata);

/// The same for finding out what became of a change: every wait ends at `termine`.
[[nodiscard]] std::unique_ptr<ado::Connection> ApriPerEsito(const ParametriConnessione& parametri,
                                                            std::chrono::steady_clock::time_point termine);

/// Closes an open connection; nothing happens for none or a closed one. Failures of the closing are ignored.
void ChiudiConnessione(ado::Connection* connection) noexcept;

/// The same for a result set.
void ChiudiRecordset(ado::Recordset& recordset) noexcept;

/// A command of plain SQL text on `connection`.
[[nodiscard]] ado::Command CreaComando(ado::Connection& connection, std::string_view sql,
                                       ado::CommandType commandType = ado::CommandType::Text);

/// "ERRORE: ", the failure's number, CR LF, what it says, and `istruzioni`; at the end the failure's note.
[[nodiscard]] std::string TestoErrore(const RuntimeError& errore, std::string_view istruzioni = {});

/// A transaction that is rolled back unless `Conferma` was reached.
class Transazione {
 public:
  explicit Transazione(ado::Connection& connection);
  Transazione(const Transazione&) = delete;
  Transazione& operator=(const Transazione&) = delete;
  ~Transazione();

  /// Commits. When the commit fails the transaction is over all the same: nothing is rolled back after it.
  void Conferma();

 private:
  ado::Connection* connection_;
};

/// Asks the rows of one change what the database holds of it: `Applied` where they hold what the transaction wrote,
/// `NotApplied` where they are as it found them, `Unknown` where neither can be told, and nothing where both would look
/// the same. Raises the driver's failure.
using Riscontro = std::function<std::optional<TransactionOutcome>(ado::Connection&)>;

/// The connection of a procedure that writes what the host has accepted. When it goes it takes down what the database
/// holds of the change (`stato().andamento`, and the running command's note), also after a failure for whose text there
/// was no memory.
class Lavoro {
 public:
  Lavoro();
  Lavoro(const Lavoro&) = delete;
  Lavoro& operator=(const Lavoro&) = delete;
  ~Lavoro();

  /// Opens the connection. Raises the driver's failure.
  ado::Connection& Apri(const ParametriConnessione& parametri);
  /// Keeps a way to ask for a change of the transaction that is open: one for every change that altered rows.
  void Annota(Riscontro riscontro) { riscontri_.push_back(std::move(riscontro)); }
  /// Has columns asked for right before COMMIT, `domanda` being a part of a SELECT that gives two; what is returned
  /// then holds the answer. Nothing is asked for an empty one, nor where nobody would ask for an outcome.
  [[nodiscard]] std::shared_ptr<const std::vector<std::string>> ChiediAllaConferma(std::string domanda);
  /// Commits. Where the answer is lost it finds out over a new connection what became of the transaction, and returns
  /// when that is kept; raises the failure otherwise, which then says what is known.
  void Conferma(Transazione& transazione);

 private:
  std::unique_ptr<ado::Connection> connection_;
  ParametriConnessione parametri_;
  std::vector<Riscontro> riscontri_;
  struct DomandaAllaConferma {
    std::string testo;
    std::shared_ptr<std::vector<std::string>> risposta;
  };
  void ChiediOra();
  std::vector<DomandaAllaConferma> domande_;
  std::optional<TransactionOutcome> esito_; ///< found out afterwards
};

} // namespace lumoscad::moduloDatabase
