#pragma once

#include "platform/RuntimeError.hpp"
#include "platform/ado/Ado.hpp"

#include <optional>

namespace lumoscad::test {

/// A table of two rows that databases of several servers are tried with.
inline constexpr const char* Amounts = "CREATE TABLE IMPORTI (CHIAVE INTEGER PRIMARY KEY, IMPORTO INTEGER);"
                                       "INSERT INTO IMPORTI VALUES (1, 10), (2, 20)";
/// Adds 1 to the first amount.
inline constexpr const char* Change = "UPDATE IMPORTI SET IMPORTO=IMPORTO+1 WHERE CHIAVE=1";
inline constexpr const char* Amount = "SELECT IMPORTO FROM IMPORTI WHERE CHIAVE=1";

/// The failure of the connection's COMMIT; nothing where it was answered with success.
inline std::optional<RuntimeError> FailureOf(ado::Connection& connection) {
  try {
    connection.CommitTrans();
  } catch (const RuntimeError& error) {
    return error;
  }
  return std::nullopt;
}

} // namespace lumoscad::test
