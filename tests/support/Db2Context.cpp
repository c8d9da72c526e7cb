#include "support/Db2Context.hpp"

#include "platform/ado/Ado.hpp"

#include <cstdlib>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace lumoscad::test {

namespace {

std::string Environment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? std::string() : std::string(value);
}

std::vector<std::string> Sources() {
  std::vector<std::string> found;
  std::istringstream list(Environment("LUMOSCAD_PROVA_DB2"));
  for (std::string source; std::getline(list, source, ',');) {
    if (!source.empty()) {
      found.push_back(source);
    }
  }
  return found;
}

std::vector<std::string> Column(ado::Connection& connection, const std::string& query) {
  ado::Command command;
  command.ActiveConnection = &connection;
  command.CommandText = query;
  std::vector<std::string> values;
  for (ado::Recordset rows = command.Execute(); !rows.Eof(); rows.MoveNext()) {
    values.emplace_back(rows.ValueAt(0).value_or(""));
  }
  return values;
}

/// Removes every table of the source's schema, with its triggers, and tells the schema's name.
std::string Emptied(const TestDatabase& database) {
  ado::Connection connection;
  connection.ConnectionString = database.ConnectionText();
  connection.Open();
  for (const std::string& table :
       Column(connection, "SELECT TABNAME FROM SYSCAT.TABLES WHERE TABSCHEMA=CURRENT SCHEMA AND TYPE='T'")) {
    connection.Execute("DROP TABLE \"" + table + '"');
  }
  const auto schema = Column(connection, "SELECT RTRIM(CURRENT SCHEMA) FROM SYSIBM.SYSDUMMY1");
  return schema.empty() ? std::string() : schema.front();
}

} // namespace

/// A source that goes back to the free ones at the end.
struct Db2Context::Borrowed final : TestDatabase {
  explicit Borrowed(Db2Context& owner) : context(owner) {
    if (context.free_.empty()) {
      throw std::runtime_error("LUMOSCAD_PROVA_DB2 names too few data sources");
    }
    source = context.free_.back();
    context.free_.pop_back();
  }
  Borrowed(const Borrowed&) = delete;
  Borrowed& operator=(const Borrowed&) = delete;
  ~Borrowed() override { context.free_.push_back(source); }

  Db2Context& context;
};

bool Db2Context::Named() {
  return !Sources().empty();
}

Db2Context::Db2Context()
    : free_(Sources()), user_(Environment("LUMOSCAD_PROVA_DB2_UTENTE")),
      password_(Environment("LUMOSCAD_PROVA_DB2_PASSWORD")) {}

std::unique_ptr<TestDatabase> Db2Context::Create(const std::string& script) {
  OdbcConfiguration::Instance();
  auto database = std::make_unique<Borrowed>(*this);
  database->user = user_;
  database->password = password_;
  database->schema = Emptied(*database);
  if (!script.empty()) {
    RunScript(database->ConnectionText(), Replaced(script, " TEXT", " " + LongText()));
  }
  return database;
}

const Quirks& Db2Context::quirks() const noexcept {
  static const Quirks All{.fixedText = FixedText::Padded,
                          .lengthsInBytes = true,
                          .comparesLongTexts = false,
                          .missingTable = -2147217865,
                          .missingColumn = -2147467259,
                          .syntax = -2147217900,
                          .duplicateKey = -2147217873,
                          .tooLong = -2147217833,
                          .refused = "SQL30082N",
                          .lost = "SQL1224N"};
  return All;
}

std::string Db2Context::AsText(const std::string& expression) const {
  return "CAST(" + expression + " AS " + LongText() + ")";
}

std::vector<std::string> Db2Context::RefuseUpdate(const std::string& table, const std::string& condition,
                                                  const std::string& message) const {
  return {"CREATE TRIGGER FERMA BEFORE UPDATE ON " + table + " REFERENCING OLD AS OLD FOR EACH ROW WHEN (" + condition +
          ") SIGNAL SQLSTATE '75000' SET MESSAGE_TEXT='" + message + "'"};
}

void Db2Context::DropConnections(const TestDatabase& database) const {
  ado::Connection connection;
  connection.ConnectionString = database.ConnectionText();
  connection.Open();
  for (const std::string& handle :
       Column(connection, "SELECT APPLICATION_HANDLE FROM TABLE(MON_GET_CONNECTION(NULL,-1)) WHERE APPLICATION_HANDLE<>"
                          "MON_GET_APPLICATION_HANDLE() AND SYSTEM_AUTH_ID=SESSION_USER")) {
    connection.Execute("CALL SYSPROC.ADMIN_CMD('FORCE APPLICATION (" + handle + ")')");
  }
}

} // namespace lumoscad::test
