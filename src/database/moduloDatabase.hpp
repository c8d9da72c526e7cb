#pragma once

#include "common/MsgAnnulla.hpp"
#include "platform/Errore.hpp"
#include "platform/ado/Ado.hpp"

#include <memory>
#include <string>
#include <string_view>

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

/// Closes an open connection; nothing happens for none or a closed one. Failures of the closing are ignored.
void ChiudiConnessione(ado::Connection* connection) noexcept;

/// The same for a result set.
void ChiudiRecordset(ado::Recordset& recordset) noexcept;

/// A command of plain SQL text on `connection`.
[[nodiscard]] ado::Command CreaComando(ado::Connection& connection, std::string_view sql,
                                       ado::CommandType commandType = ado::CommandType::Text);

/// "ERRORE: ", the failure's number, CR LF, and what it says.
[[nodiscard]] std::string TestoErrore(const ErroreRuntime& errore);

/// The same for the database's side of a change that the host has already accepted. After a failure of the database
/// it goes on with what became of the change on `connection` (none when it was not opened) and names `daControllare`,
/// what the person must look at; the text of a failure that the component found by itself stays as it is where nothing
/// of the change can have been kept.
[[nodiscard]] std::string TestoErroreDopoHost(const ErroreRuntime& errore, const ado::Connection* connection,
                                              std::string_view daControllare);

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

} // namespace lumoscad::moduloDatabase
