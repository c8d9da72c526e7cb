#pragma once

#include "support/MariaDbServer.hpp"
#include "support/PostgresServer.hpp"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad::test {

/// One database made for a test; it goes with the object.
class TestDatabase {
 public:
  TestDatabase() = default;
  TestDatabase(const TestDatabase&) = delete;
  TestDatabase& operator=(const TestDatabase&) = delete;
  virtual ~TestDatabase() = default;

  std::string source; ///< data source name
  std::string user;
  std::string password;
  std::string schema; ///< what may stand before a table's name

  [[nodiscard]] std::string ConnectionText() const { return test::ConnectionText(source, user, password); }
};

/// A database whose data source goes with it.
class DatabaseWithSource : public TestDatabase {
 public:
  ~DatabaseWithSource() override { OdbcConfiguration::Instance().RemoveSource(source); }
};

/// How a CHAR column's value comes back.
enum class FixedText {
  AsStored, ///< as it was written, whatever the length declared
  Padded,   ///< filled with blanks to the length declared
  Trimmed   ///< without any blank at its end
};

/// What the databases do differently, all within what the tables' owner may expect.
struct Quirks {
  FixedText fixedText = FixedText::Padded;
  bool lengthsInBytes = false;      ///< CHAR(6) has six bytes, not six letters
  bool blanksAtTheEndCount = false; ///< VARCHAR: 'A' and 'A ' are two values
  bool keepsScale = true;           ///< DECIMAL(15,2): "100.10", not "100.1"
  bool lowersNames = false;         ///< column names come back in lower case
  bool tableNamesByCase = false;    ///< a table is found by its name as it was created alone
  bool rollsBackTables = true;      ///< CREATE TABLE belongs to the transaction
  bool comparesLongTexts = true;    ///< "=" takes a column of long texts
  int missingTable = 0;             ///< the error numbers, by the driver's SQLSTATE
  int missingColumn = 0;
  int syntax = 0;
  int duplicateKey = 0;
  int tooLong = 0;          ///< 0: the column takes it
  const char* refused = ""; ///< what a server says of a wrong password
  const char* lost = "";    ///< pattern of what is said of a connection that it ended
};

/// A kind of database: creates databases and answers for what is different in them.
class DatabaseContext {
 public:
  DatabaseContext() = default;
  DatabaseContext(const DatabaseContext&) = delete;
  DatabaseContext& operator=(const DatabaseContext&) = delete;
  virtual ~DatabaseContext() = default;

  /// A new database after the statements of `script`.
  [[nodiscard]] virtual std::unique_ptr<TestDatabase> Create(const std::string& script) = 0;
  [[nodiscard]] virtual const Quirks& quirks() const noexcept = 0;
  /// How `text` comes back that was written into a CHAR column of `length` letters.
  [[nodiscard]] std::string TextFor(std::string text, std::size_t length) const;
  /// The type of a column that holds a text of any length.
  [[nodiscard]] virtual std::string LongText() const { return "TEXT"; }
  /// The text of an expression as a text of any length.
  [[nodiscard]] virtual std::string AsText(const std::string& expression) const {
    return "CAST(" + expression + " AS VARCHAR)";
  }
  [[nodiscard]] virtual std::string Joined(const std::string& left, const std::string& right) const {
    return left + " || " + right;
  }
  [[nodiscard]] virtual std::string DropIndex(const std::string& index, const std::string& /*table*/) const {
    return "DROP INDEX " + index;
  }
  /// The statements after which an UPDATE of a row of `table` that meets `condition` fails and says `message`; in
  /// the condition OLD is the row.
  [[nodiscard]] virtual std::vector<std::string> RefuseUpdate(const std::string& table, const std::string& condition,
                                                              const std::string& message) const = 0;
  /// The statements after which an UPDATE of a row of `table` that meets `condition` is dropped without a word; empty
  /// where the server has no such triggers.
  [[nodiscard]] virtual std::vector<std::string> DropUpdate(const std::string& /*table*/,
                                                            const std::string& /*condition*/) const {
    return {};
  }
  /// The statements that create an account that may read, and remove it; empty where accounts are not the server's.
  [[nodiscard]] virtual std::string CreateAccount(const std::string& /*name*/, const std::string& /*password*/) const {
    return {};
  }
  [[nodiscard]] virtual std::string DropAccount(const std::string& /*name*/) const { return {}; }
  /// Ends every connection to the database but the caller's, as a failure of the server would. Raises where there is
  /// no server.
  virtual void DropConnections(const TestDatabase& database) const;
};

/// The kinds of databases to test on: "sqlite", "postgres", "mariadb", and "db2" where the environment names one. With
/// LUMOSCAD_PROVA_PIU_SERVER the two servers alone, each of which then is several: a primary with its standby, a
/// cluster of three nodes.
[[nodiscard]] std::vector<const char*> DatabaseKinds();
/// Those of them that are servers: with accounts, and with a row that can be changed while another transaction reads
/// its table.
[[nodiscard]] std::vector<const char*> DatabaseServers();

/// The context of a kind; a server is started on its first use and ends with the process.
[[nodiscard]] DatabaseContext& databaseContext(std::string_view kind);

/// `text` with every `from` in it turned into `to`.
[[nodiscard]] std::string Replaced(std::string text, std::string_view from, std::string_view to);

/// The application's name of the PostgreSQL session that creates databases and stays open.
inline constexpr const char* OwnSession = "test_support";

/// The one PostgreSQL server of the process.
[[nodiscard]] PostgresServer& Postgres();
/// The one MariaDB server of the process.
[[nodiscard]] MariaDbServer& MariaDb();

} // namespace lumoscad::test
