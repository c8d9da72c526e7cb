#include "support/DatabaseContext.hpp"

#include "support/Db2Context.hpp"
#include "support/GaleraCluster.hpp"
#include "support/KeptConnection.hpp"
#include "support/OdbcSqlite.hpp"
#include "support/PostgresPair.hpp"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <stdexcept>

namespace lumoscad::test {

namespace {

constexpr int DriverFailure = -2147467259;
constexpr int BadStatement = -2147217900;
constexpr int NoSuchTable = -2147217865;
constexpr int Violated = -2147217873;
constexpr int OutOfRange = -2147217833;

class SqliteContext final : public DatabaseContext {
 public:
  std::unique_ptr<TestDatabase> Create(const std::string& script) override {
    // Many tests begin with the same rows, and a file is copied sooner than they are inserted.
    const auto made = made_.find(script);
    auto database = std::make_unique<File>(made == made_.end() ? script : std::string());
    if (made != made_.end()) {
      std::filesystem::copy_file(made->second, database->file.File());
    } else if (!script.empty()) {
      const auto copy = OdbcConfiguration::Instance().Directory() / ("made" + std::to_string(made_.size()) + ".sqlite");
      std::filesystem::copy_file(database->file.File(), copy);
      made_.emplace(script, copy);
    }
    database->source = database->file.Source();
    database->schema = "main";
    return database;
  }
  const Quirks& quirks() const noexcept override {
    static const Quirks All{.fixedText = FixedText::AsStored,
                            .blanksAtTheEndCount = true,
                            .keepsScale = false,
                            .missingTable = DriverFailure,
                            .missingColumn = DriverFailure,
                            .syntax = DriverFailure,
                            .duplicateKey = DriverFailure};
    return All;
  }
  std::vector<std::string> RefuseUpdate(const std::string& table, const std::string& condition,
                                        const std::string& message) const override {
    return {"CREATE TRIGGER FERMA BEFORE UPDATE ON " + table + " WHEN " + condition + " BEGIN SELECT RAISE(ABORT,'" +
            message + "'); END"};
  }
  std::vector<std::string> DropUpdate(const std::string& table, const std::string& condition) const override {
    return {"CREATE TRIGGER TACE BEFORE UPDATE ON " + table + " WHEN " + condition +
            " BEGIN SELECT RAISE(IGNORE); END"};
  }

 private:
  struct File final : TestDatabase {
    explicit File(const std::string& script) : file(script) {}
    OdbcSqlite file;
  };
  std::map<std::string, std::filesystem::path> made_; ///< a copy of the database after each script
};

bool SeveralServers() {
  return std::getenv("LUMOSCAD_PROVA_PIU_SERVER") != nullptr;
}

/// A schema of one database for every test, which is created in no time; the data source puts it in the search path,
/// as the host's data source does with the accounting schema.
class PostgresContext final : public DatabaseContext {
 public:
  std::unique_ptr<TestDatabase> Create(const std::string& script) override {
    if (first_.empty()) {
      Postgres().CreateDatabase("prove");
      first_ =
          Postgres().AddSource("prove", 0, {{"ConnSettings", std::string("SET application_name TO ") + OwnSession}});
    }
    auto database = std::make_unique<DatabaseWithSource>();
    database->schema = "base" + std::to_string(++schemas_);
    database->user = Postgres().User();
    database->password = Postgres().Password();
    RunScript(kept_.To(Postgres().ConnectionText(first_)),
              "CREATE SCHEMA " + database->schema + ";SET search_path TO " + database->schema + ";" + script);
    database->source = Postgres().AddSource("prove", 0, {{"ConnSettings", "SET search_path TO " + database->schema}});
    return database;
  }
  const Quirks& quirks() const noexcept override {
    static const Quirks All{.fixedText = FixedText::Padded,
                            .blanksAtTheEndCount = true,
                            .lowersNames = true,
                            .missingTable = DriverFailure,
                            .missingColumn = DriverFailure,
                            .syntax = DriverFailure,
                            .duplicateKey = Violated,
                            .tooLong = OutOfRange,
                            .refused = "password authentication failed",
                            .lost = "terminating connection"};
    return All;
  }
  std::vector<std::string> RefuseUpdate(const std::string& table, const std::string& condition,
                                        const std::string& message) const override {
    return {"CREATE FUNCTION FERMA() RETURNS TRIGGER LANGUAGE plpgsql AS 'BEGIN RAISE EXCEPTION ''" + message +
                "''; END'",
            "CREATE TRIGGER FERMA BEFORE UPDATE ON " + table + " FOR EACH ROW WHEN (" + condition +
                ") EXECUTE FUNCTION FERMA()"};
  }
  std::vector<std::string> DropUpdate(const std::string& table, const std::string& condition) const override {
    return {"CREATE FUNCTION TACE() RETURNS TRIGGER LANGUAGE plpgsql AS 'BEGIN RETURN NULL; END'",
            "CREATE TRIGGER TACE BEFORE UPDATE ON " + table + " FOR EACH ROW WHEN (" + condition +
                ") EXECUTE FUNCTION TACE()"};
  }
  std::string CreateAccount(const std::string& name, const std::string& password) const override {
    return "CREATE ROLE " + name + " LOGIN PASSWORD '" + password + "'";
  }
  std::string DropAccount(const std::string& name) const override { return "DROP ROLE " + name; }
  void DropConnections(const TestDatabase& database) const override { Postgres().DropConnections(database.source); }

 private:
  std::string first_; ///< the data source for creating schemas
  KeptConnection kept_;
  int schemas_ = 0;
};

class MariaDbContext final : public DatabaseContext {
 public:
  std::unique_ptr<TestDatabase> Create(const std::string& script) override {
    auto database = std::make_unique<DatabaseWithSource>();
    database->schema = "base" + std::to_string(++databases_);
    database->source = MariaDb().CreateDatabase(database->schema, script);
    database->user = MariaDb().User();
    database->password = MariaDb().Password();
    return database;
  }
  const Quirks& quirks() const noexcept override {
    static const Quirks All{.fixedText = FixedText::Trimmed,
                            .tableNamesByCase = true,
                            .rollsBackTables = false,
                            .missingTable = NoSuchTable,
                            .missingColumn = DriverFailure,
                            .syntax = BadStatement,
                            .duplicateKey = Violated,
                            .tooLong = OutOfRange,
                            .refused = "Access denied",
                            .lost = "Lost connection|was killed|gone away"};
    return All;
  }
  std::string LongText() const override { return "LONGTEXT"; }
  std::string AsText(const std::string& expression) const override { return "CAST(" + expression + " AS CHAR)"; }
  std::string Joined(const std::string& left, const std::string& right) const override {
    return "CONCAT(" + left + "," + right + ")";
  }
  std::string DropIndex(const std::string& index, const std::string& table) const override {
    return "DROP INDEX " + index + " ON " + table;
  }
  std::vector<std::string> RefuseUpdate(const std::string& table, const std::string& condition,
                                        const std::string& message) const override {
    return {"CREATE TRIGGER FERMA BEFORE UPDATE ON " + table + " FOR EACH ROW IF " + condition +
            " THEN SIGNAL SQLSTATE '45000' SET MESSAGE_TEXT='" + message + "'; END IF"};
  }
  std::string CreateAccount(const std::string& name, const std::string& password) const override {
    return "GRANT SELECT ON *.* TO " + name + "@'%' IDENTIFIED BY '" + password + "'";
  }
  std::string DropAccount(const std::string& name) const override { return "DROP USER " + name + "@'%'"; }
  void DropConnections(const TestDatabase& database) const override { MariaDb().DropConnections(database.source); }

 private:
  int databases_ = 0;
};

} // namespace

std::string DatabaseContext::TextFor(std::string text, std::size_t length) const {
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

void DatabaseContext::DropConnections(const TestDatabase& /*database*/) const {
  throw std::logic_error("no server whose connections could be dropped");
}

std::vector<const char*> DatabaseKinds() {
  if (SeveralServers()) {
    return {"postgres", "mariadb"};
  }
  std::vector<const char*> kinds{"sqlite", "postgres", "mariadb"};
  if (Db2Context::Named()) {
    kinds.push_back("db2");
  }
  return kinds;
}

std::vector<const char*> DatabaseServers() {
  std::vector<const char*> kinds = DatabaseKinds();
  kinds.erase(std::remove(kinds.begin(), kinds.end(), std::string_view("sqlite")), kinds.end());
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

std::string Replaced(std::string text, std::string_view from, std::string_view to) {
  for (auto at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
    text.replace(at, from.size(), to);
  }
  return text;
}

PostgresServer& Postgres() {
  static PostgresServer server(ServerDirectory("postgres"));
  if (SeveralServers()) {
    static const auto Standby = [] {
      auto standby = SynchronousStandbyOf(server, ServerDirectory("standby"));
      server.LeadTo(BothHosts, WrittenTo());
      return standby;
    }();
  }
  return server;
}

MariaDbServer& MariaDb() {
  if (SeveralServers()) {
    static GaleraCluster cluster(ServerDirectory("galera"));
    static MariaDbServer first(cluster);
    return first;
  }
  static MariaDbServer server(ServerDirectory("mariadb"));
  return server;
}

} // namespace lumoscad::test
