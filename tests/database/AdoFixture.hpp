#pragma once

#include "platform/RuntimeError.hpp"
#include "platform/ado/Ado.hpp"
#include "support/DatabaseContext.hpp"

#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace lumoscad::ado {

/// A table with columns of every kind in use, and its rows.
inline std::string Schema(const test::DatabaseContext& context) {
  return "CREATE TABLE EVENTI (CHIAVE INTEGER NOT NULL PRIMARY KEY, GRUPPO INTEGER NOT NULL, SOSPESA CHAR(1), "
         "CODICE CHAR(6), DESCRIZIONE VARCHAR(60), SCADENZA DATE, QUANDO TIMESTAMP, IMPORTO DECIMAL(15,2), NOTE " +
         context.LongText() +
         ");"
         "INSERT INTO EVENTI VALUES (1, 10, 'N', 'A1', 'Società àèìòù €', '2006-03-05', '2006-03-05 00:00:00', "
         "100.10, '');"
         "INSERT INTO EVENTI VALUES (2, 10, 'N', ' B2  ', '', NULL, '2006-03-05 14:07:00', -500, NULL);"
         "INSERT INTO EVENTI VALUES (3, 20, NULL, 'C3', NULL, '2006-12-31', NULL, NULL, 'nota; con ''apici''')";
}

/// A database of any kind with the schema above.
class Ado : public testing::TestWithParam<const char*> {
 protected:
  Ado() { Open(connection_); }

  [[nodiscard]] static test::DatabaseContext& Context() { return test::databaseContext(GetParam()); }
  [[nodiscard]] static const test::Quirks& quirks() { return Context().quirks(); }
  void Open(Connection& connection) const {
    connection.ConnectionString = database_->ConnectionText();
    connection.Open();
  }
  static Command command(Connection& connection, std::string text, std::vector<std::string> parameters = {}) {
    Command result;
    result.ActiveConnection = &connection;
    result.CommandText = std::move(text);
    result.Parameters = std::move(parameters);
    return result;
  }
  Recordset Query(std::string text, std::vector<std::string> parameters = {}) {
    return command(connection_, std::move(text), std::move(parameters)).Execute();
  }
  std::optional<std::string> Single(std::string text, std::vector<std::string> parameters = {}) {
    const Recordset rows = Query(std::move(text), std::move(parameters));
    EXPECT_EQ(rows.RecordCount(), 1U);
    const auto value = rows.ValueAt(0);
    return value ? std::optional<std::string>(*value) : std::nullopt;
  }
  static Recordset Editable(Connection& connection, const std::string& where, std::string columns = "CHIAVE,SOSPESA") {
    Command select = command(connection, "SELECT " + columns + " FROM EVENTI WHERE " + where + " ORDER BY CHIAVE");
    Recordset rows;
    rows.Open(select, CursorType::Dynamic, LockType::Optimistic, {.tableName = "EVENTI", .key = "CHIAVE"});
    return rows;
  }
  /// What `connection` says when it does not open; empty when it does.
  static std::string Refusal(Connection& connection) {
    try {
      connection.Open();
    } catch (const RuntimeError& error) {
      return error.Description();
    }
    return "";
  }
  static RuntimeError Failure(const std::function<void()>& action) {
    try {
      action();
    } catch (const RuntimeError& error) {
      return error;
    }
    ADD_FAILURE() << "nothing was raised";
    return {0, ""};
  }

  std::unique_ptr<test::TestDatabase> database_ = Context().Create(Schema(Context()));
  Connection connection_;
};

} // namespace lumoscad::ado
