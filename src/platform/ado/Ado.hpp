#pragma once

#include "platform/RuntimeError.hpp"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad::ado {

enum class CursorLocation { Client = 3 };
enum class CursorType { Dynamic = 2 };
enum class LockType { Optimistic = 3 };
enum class CommandType { Text = 1 };
enum class State { Closed = 0, Open = 1 };

using lumoscad::TransactionOutcome;

class Command;
class Recordset;

/// By what a transaction can be asked for after its COMMIT was sent and no answer came. What a server does not tell, or
/// has none of, is empty.
struct TransactionMark {
  std::string session; ///< the server's number of the session
  std::string client;  ///< "address:port" of this process' socket, where it leads to the server itself
  std::string number;  ///< the transaction's own
  std::string server;  ///< what no other server has
  std::string life;    ///< what the same server no longer has once it was started again, or had crashed

  /// What is not empty of it, on one line.
  [[nodiscard]] std::string Text() const;
  /// The mark of such a line; an empty one of any other.
  [[nodiscard]] static TransactionMark FromText(std::string_view text);
};

/// One connection to a database through an ODBC driver. Closing or destroying it rolls back what was not
/// committed.
class Connection {
 public:
  Connection();
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  ~Connection();

  std::string ConnectionString; ///< see ConnectionText.hpp for its grammar
  lumoscad::ado::CursorLocation CursorLocation = CursorLocation::Client;
  /// Seconds that a statement may take, its wait for another terminal's locks included; unset, it is the setting
  /// `LUMOSCAD_ATTESA_SQL` of the environment, or else 60.
  std::optional<int> commandTimeout;
  /// A database that is a file is not created where there is none.
  bool existingOnly = false;
  /// When every wait for the server ends, the opening included, whatever the other limits say.
  std::optional<std::chrono::steady_clock::time_point> deadline;
  /// Told right before a COMMIT is sent, when nothing but its outcome is open any more. It must not throw.
  std::function<void(const TransactionMark&)> onCommit;

  /// Opens the connection by `ConnectionString`. No message of a failure holds the password.
  void Open();
  [[nodiscard]] lumoscad::ado::State State() const noexcept;
  void Close();
  void BeginTrans();
  /// Returns only when the changes are certainly applied; after a failure `Outcome` tells what is known of them, and
  /// the transaction is over.
  void CommitTrans();
  void RollbackTrans();
  [[nodiscard]] TransactionOutcome
  Outcome() const noexcept; ///< of the last transaction since the connection was opened
  /// The mark of the last transaction where its COMMIT was sent, its outcome is unknown, and the server is one that can
  /// be asked about it (Aftermath.hpp).
  [[nodiscard]] const std::optional<TransactionMark>& InDoubt() const noexcept;
  /// Executes one statement without parameters and without a result; returns the rows affected, or -1 where
  /// the driver does not tell.
  std::int64_t Execute(std::string_view sql);

  struct Impl;
  [[nodiscard]] Impl& impl() const { return *impl_; }

 private:
  std::unique_ptr<Impl> impl_;
};

/// A statement with "?" markers, bound by position as text. The prepared handle is kept while text and
/// connection stay the same, so that a look-up in a loop is prepared once.
class Command {
 public:
  Command();
  Command(const Command&) = delete;
  Command& operator=(const Command&) = delete;
  Command(Command&&) noexcept;
  Command& operator=(Command&&) noexcept;
  ~Command();

  Connection* ActiveConnection = nullptr;
  lumoscad::ado::CommandType CommandType = CommandType::Text;
  std::string CommandText;
  std::vector<std::string> Parameters; ///< one text a marker, in order
  /// The text is executed once and not prepared for it, where the database takes it so: round trips saved for a text
  /// that no other record of a list shares. In a failure the driver then has other words around the server's own. Not
  /// for numbers with decimals among the parameters: PostgreSQL's driver then takes a comma for the point in a locale
  /// that has one.
  bool sentOnce = false;
  /// The columns that the result set is to have, by name in any case; all where none is named. The statement's others
  /// are neither described nor read: for a query of many columns, one of which is needed.
  std::vector<std::string> wantedColumns;

  /// Executes the statement and reads its whole result, if it has one. `RecordsAffected`, when given, receives
  /// the rows a statement without result changed (0 also where the driver answers "no data").
  Recordset Execute(std::int64_t* RecordsAffected = nullptr);

  struct Impl;
  [[nodiscard]] Impl& impl() const { return *impl_; }

 private:
  std::unique_ptr<Impl> impl_;
};

/// The table and key column through which an editable result set writes back.
struct EditableTable {
  std::string tableName; ///< as it is to stand in the UPDATE, schema prefix included
  std::string key;       ///< key column; must be one of the result's columns
};

/// A client-side static result set: all rows are read when it is opened. Columns are found by name in any case.
/// Texts come as the driver gives them, never trimmed; decimals as text; dates as "YYYY-MM-DD".
class Recordset {
 public:
  /// One column of the current row.
  class Field {
   public:
    Field(Recordset& recordset, std::size_t position) : recordset_(&recordset), position_(position) {}
    /// The current value; nothing for NULL. The view lives until the result set closes or the field is set.
    [[nodiscard]] std::optional<std::string_view> Value() const;
    /// Sets the new value of an editable set's current row; sent by `Update`.
    void SetValue(std::optional<std::string_view> value);

   private:
    Recordset* recordset_;
    std::size_t position_;
  };

  Recordset();
  Recordset(const Recordset&) = delete;
  Recordset& operator=(const Recordset&) = delete;
  Recordset(Recordset&&) noexcept;
  Recordset& operator=(Recordset&&) noexcept;
  ~Recordset();

  /// Opens an editable set over `command`. Every driver in use turns a dynamic cursor into a static one, so the
  /// rows are those of the moment of opening; `Update` refuses a row that changed since.
  void Open(Command& command, CursorType cursorType, LockType lockType, EditableTable tableName);
  [[nodiscard]] lumoscad::ado::State State() const noexcept;
  [[nodiscard]] std::size_t RecordCount() const noexcept; ///< exact
  [[nodiscard]] bool Eof() const noexcept;
  void MoveNext();
  /// The column `columnName`, found in any case; error 3265 when the result has no such column.
  [[nodiscard]] Field Fields(std::string_view columnName);
  /// The place of a column, for reading many rows without a search by name.
  [[nodiscard]] std::size_t ColumnIndex(std::string_view columnName) const;
  [[nodiscard]] std::size_t ColumnCount() const noexcept;
  [[nodiscard]] const std::string& ColumnName(std::size_t position) const;
  /// Value of the current row in the column at `position`; nothing for NULL.
  [[nodiscard]] std::optional<std::string_view> ValueAt(std::size_t position) const;
  /// The values of the current row, one a column; nothing for NULL. For reading many rows.
  void ReadRow(std::vector<std::optional<std::string_view>>& values) const;
  /// Sends the changed fields of the current row: an UPDATE by key whose WHERE also carries the original values
  /// of the changed columns (not those of long columns where the server compares none). Where the driver counts no
  /// row, the change is done when exactly one row of the key holds every value set. Error -2147217864 otherwise.
  void Update();
  void Close();

  struct Impl;
  [[nodiscard]] Impl& impl() const { return *impl_; }

 private:
  friend class Command;
  std::unique_ptr<Impl> impl_;
};

/// The failure of a COMMIT whose outcome was unknown, once it is known that nothing of the change is kept.
[[nodiscard]] RuntimeError KnownNotApplied(const RuntimeError& doubt);

/// Raises error -2147217864 for a change that the database dropped without a word.
[[noreturn]] void RefuseDroppedChange();

} // namespace lumoscad::ado
