#include "support/DatabaseContext.hpp"

#include "support/Db2Context.hpp"
#include "support/KeptConnection.hpp"
#include "support/OdbcSqlite.hpp"

#include <algorithm>
#include <stdexcept>

namespace lumoscad::test {

namespace {

constexpr int driverFailure = -2147467259;
constexpr int badStatement = -2147217900;
constexpr int noSuchTable = -2147217865;
constexpr int violated = -2147217873;
constexpr int outOfRange = -2147217833;

class SqliteContext final : public DatabaseContext {
 public:
  std::unique_ptr<TestDatabase> create(const std::string& script) override {
    auto database = std::make_unique<File>(script);
    database->source = database->file.source();
    database->schema = "main";
    return database;
  }
  const Quirks& quirks() const noexcept override {
    static const Quirks all{.fixedText = FixedText::AsStored,
                            .blanksAtTheEndCount = true,
                            .keepsScale = false,
                            .missingTable = driverFailure,
                            .missingColumn = driverFailure,
                            .syntax = driverFailure,
                            .duplicateKey = driverFailure};
    return all;
  }
  std::vector<std::string> refuseUpdate(const std::string& table, const std::string& condition,
                                        const std::string& message) const override {
    return {"CREATE TRIGGER FERMA BEFORE UPDATE ON " + table + " WHEN " + condition + " BEGIN SELECT RAISE(ABORT,'" +
            message + "'); END"};
  }
  std::vector<std::string> dropUpdate(const std::string& table, const std::string& condition) const override {
    return {"CREATE TRIGGER TACE BEFORE UPDATE ON " + table + " WHEN " + condition +
            " BEGIN SELECT RAISE(IGNORE); END"};
  }

 private:
  struct File final : TestDatabase {
    explicit File(const std::string& script) : file(script) {}
    OdbcSqlite file;
  };
};

/// A schema of one database for every test, which is created in no time; the data source puts it in the search path,
/// as the host's data source does with the accounting schema.
class PostgresContext final : public DatabaseContext {
 public:
  std::unique_ptr<TestDatabase> create(const std::string& script) override {
    if (first_.empty()) {
      postgres().createDatabase("prove");
      first_ =
          postgres().addSource("prove", 0, {{"ConnSettings", std::string("SET application_name TO ") + ownSession}});
    }
    auto database = std::make_unique<DatabaseWithSource>();
    database->schema = "base" + std::to_string(++schemas_);
    database->user = postgres().user();
    database->password = postgres().password();
    runScript(kept_.to(postgres().connectionText(first_)),
              "CREATE SCHEMA " + database->schema + ";SET search_path TO " + database->schema + ";" + script);
    database->source = postgres().addSource("prove", 0, {{"ConnSettings", "SET search_path TO " + database->schema}});
    return database;
  }
  const Quirks& quirks() const noexcept override {
    static const Quirks all{.fixedText = FixedText::Padded,
                            .blanksAtTheEndCount = true,
                            .lowersNames = true,
                            .missingTable = driverFailure,
                            .missingColumn = driverFailure,
                            .syntax = driverFailure,
                            .duplicateKey = violated,
                            .tooLong = outOfRange,
                            .refused = "password authentication failed",
                            .lost = "terminating connection"};
    return all;
  }
  std::vector<std::string> refuseUpdate(const std::string& table, const std::string& condition,
                                        const std::string& message) const override {
    return {"CREATE FUNCTION FERMA() RETURNS TRIGGER LANGUAGE plpgsql AS 'BEGIN RAISE EXCEPTION ''" + message +
                "''; END'",
            "CREATE TRIGGER FERMA BEFORE UPDATE ON " + table + " FOR EACH ROW WHEN (" + condition +
                ") EXECUTE FUNCTION FERMA()"};
  }
  std::vector<std::string> dropUpdate(const std::string& table, const std::string& condition) const override {
    return {"CREATE FUNCTION TACE() RETURNS TRIGGER LANGUAGE plpgsql AS 'BEGIN RETURN NULL; END'",
            "CREATE TRIGGER TACE BEFORE UPDATE ON " + table + " FOR EACH ROW WHEN (" + condition +
                ") EXECUTE FUNCTION TACE()"};
  }
  std::string createAccount(const std::string& name, const std::string& password) const override {
    return "CREATE ROLE " + name + " LOGIN PASSWORD '" + password + "'";
  }
  std::string dropAccount(const std::string& name) const override { return "DROP ROLE " + name; }
  void dropConnections(const TestDatabase& database) const override { postgres().dropConnections(database.source); }

 private:
  std::string first_; ///< the data source for creating schemas
  KeptConnection kept_;
  int schemas_ = 0;
};

class MariaDbContext final : public DatabaseContext {
 public:
  std::unique_ptr<TestDatabase> create(const std::string& script) override {
    auto database = std::make_unique<DatabaseWithSource>();
    database->schema = "base" + std::to_string(++databases_);
    database->source = mariaDb().createDatabase(database->schema, script);
    database->user = mariaDb().user();
    database->password = mariaDb().password();
    return database;
  }
  const Quirks& quirks() const noexcept override {
    static const Quirks all{.fixedText = FixedText::Trimmed,
                            .tableNamesByCase = true,
                            .rollsBackTables = false,
                            .missingTable = noSuchTable,
                            .missingColumn = driverFailure,
                            .syntax = badStatement,
                            .duplicateKey = violated,
                            .tooLong = outOfRange,
                            .refused = "Access denied",
                            .lost = "Lost connection|was killed|gone away"};
    return all;
  }
  std::string longText() const override { return "LONGTEXT"; }
  std::string asText(const std::string& expression) const override { return "CAST(" + expression + " AS CHAR)"; }
  std::string joined(const std::string& left, const std::string& right) const override {
    return "CONCAT(" + left + "," + right + ")";
  }
  std::string dropIndex(const std::string& index, const std::string& table) const override {
    return "DROP INDEX " + index + " ON " + table;
  }
  std::vector<std::string> refuseUpdate(const std::string& table, const std::string& condition,
                                        const std::string& message) const override {
    return {"CREATE TRIGGER FERMA BEFORE UPDATE ON " + table + " FOR EACH ROW IF " + condition +
            " THEN SIGNAL SQLSTATE '45000' SET MESSAGE_TEXT='" + message + "'; END IF"};
  }
  std::string createAccount(const std::string& name, const std::string& password) const override {
    return "GRANT SELECT ON *.* TO " + name + "@'%' IDENTIFIED BY '" + password + "'";
  }
  std::string dropAccount(const std::string& name) const override { return "DROP USER " + name + "@'%'"; }
  void dropConnections(const TestDatabase& database) const override { mariaDb().dropConnections(database.source); }

 private:
  int databases_ = 0;
};

} // namespace

std::string DatabaseContext::fixedText(std::string text, std::size_t length) const {
  const FixedText kind = quirks().fixedText;
  if (kind == FixedText::Trimmed) {
    text.erase(text.find_last_not_of(' ') + 1);
  }
  const auto follows = [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U; };
  const auto extra = quirks().lengthsInBytes ? 0 : std::count_if(text.begin(), text.end(), follows);
  const std::size_t bytes = length + static_cast<std::size_t>(extra);
  if (kind == FixedText::Padded && text.size() < bytes) {
    text.resize(bytes, ' ');
  }
  return text;
}

void DatabaseContext::dropConnections(const TestDatabase& /*database*/) const {
  throw std::logic_error("no server whose connections could be dropped");
}

std::vector<const char*> databaseKinds() {
  std::vector<const char*> kinds{"sqlite", "postgres", "mariadb"};
  if (Db2Context::named()) {
    kinds.push_back("db2");
  }
  return kinds;
}

std::vector<const char*> databaseServers() {
  std::vector<const char*> kinds = databaseKinds();
  kinds.erase(kinds.begin());
  return kinds;
}

DatabaseContext& databaseContext(std::string_view kind) {
  static SqliteContext sqlite;
  static PostgresContext postgres;
  static MariaDbContext mariaDb;
  if (kind == "sqlite") {
    return sqlite;
  }
  if (kind == "postgres") {
    return postgres;
  }
  if (kind == "mariadb") {
    return mariaDb;
  }
  static Db2Context db2;
  if (kind == "db2") {
    return db2;
  }
  throw std::invalid_argument("no such kind of database: " + std::string(kind));
}

std::string replaced(std::string text, std::string_view from, std::string_view to) {
  for (auto at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
    text.replace(at, from.size(), to);
  }
  return text;
}

PostgresServer& postgres() {
  static PostgresServer server(serverDirectory("postgres"));
  return server;
}

MariaDbServer& mariaDb() {
  static MariaDbServer server(serverDirectory("mariadb"));
  return server;
}

} // namespace lumoscad::test
