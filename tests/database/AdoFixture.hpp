#pragma once

#include "platform/Errore.hpp"
#include "platform/ado/Ado.hpp"
#include "support/OdbcSqlite.hpp"
#include "support/PostgresServer.hpp"

#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unistd.h>
#include <utility>
#include <vector>

namespace lumoscad::ado {

inline constexpr const char* schema =
    "CREATE TABLE EVENTI (CHIAVE INTEGER PRIMARY KEY, GRUPPO INTEGER NOT NULL, SOSPESA CHAR(1), CODICE CHAR(6), "
    "DESCRIZIONE VARCHAR(60), SCADENZA DATE, QUANDO TIMESTAMP, IMPORTO DECIMAL(15,2), NOTE TEXT);"
    "INSERT INTO EVENTI VALUES (1, 10, 'N', 'A1', 'Società àèìòù €', '2006-03-05', '2006-03-05 00:00:00', 100.10, '');"
    "INSERT INTO EVENTI VALUES (2, 10, 'N', ' B2  ', '', NULL, '2006-03-05 14:07:00', -500, NULL);"
    "INSERT INTO EVENTI VALUES (3, 20, NULL, 'C3', NULL, '2006-12-31', NULL, NULL, 'nota; con ''apici''')";

/// One server for the process, in a directory that every user may enter.
inline test::PostgresServer& postgres() {
  static test::PostgresServer server(std::filesystem::temp_directory_path() /
                                     ("lumoscad-ado-" + std::to_string(getpid())));
  return server;
}

/// A database of either kind with the schema above.
class Ado : public testing::TestWithParam<const char*> {
 protected:
  Ado() {
    if (onPostgres()) {
      test::OdbcConfiguration::instance();
      static int databases = 0;
      source_ = postgres().createDatabase("ado" + std::to_string(++databases), schema);
      text_ = postgres().connectionText(source_);
    } else {
      sqlite_ = std::make_unique<test::OdbcSqlite>(schema);
      source_ = sqlite_->source();
      text_ = sqlite_->connectionText();
    }
    open(connection_);
  }

  [[nodiscard]] static bool onPostgres() { return std::string_view(GetParam()) == "postgres"; }
  void open(Connection& connection) const {
    connection.ConnectionString = text_;
    connection.Open();
  }
  static Command command(Connection& connection, std::string text, std::vector<std::string> parameters = {}) {
    Command result;
    result.ActiveConnection = &connection;
    result.CommandText = std::move(text);
    result.Parameters = std::move(parameters);
    return result;
  }
  Recordset query(std::string text, std::vector<std::string> parameters = {}) {
    return command(connection_, std::move(text), std::move(parameters)).Execute();
  }
  std::optional<std::string> single(std::string text, std::vector<std::string> parameters = {}) {
    const Recordset rows = query(std::move(text), std::move(parameters));
    EXPECT_EQ(rows.RecordCount(), 1U);
    const auto value = rows.Valore(0);
    return value ? std::optional<std::string>(*value) : std::nullopt;
  }
  static Recordset editable(Connection& connection, const std::string& where, std::string columns = "CHIAVE,SOSPESA") {
    Command select = command(connection, "SELECT " + columns + " FROM EVENTI WHERE " + where + " ORDER BY CHIAVE");
    Recordset rows;
    rows.Open(select, CursorType::Dynamic, LockType::Optimistic, {.tabella = "EVENTI", .chiave = "CHIAVE"});
    return rows;
  }
  static ErroreRuntime failure(const std::function<void()>& action) {
    try {
      action();
    } catch (const ErroreRuntime& error) {
      return error;
    }
    ADD_FAILURE() << "nothing was raised";
    return {0, ""};
  }

  std::unique_ptr<test::OdbcSqlite> sqlite_;
  std::string source_;
  std::string text_;
  Connection connection_;
};

} // namespace lumoscad::ado
