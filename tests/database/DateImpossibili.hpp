#pragma once

#include "BaseDati.hpp"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace lumoscad::test {

/// What a date column of a database of this kind can hold although it is no date, and how the driver gives it.
inline std::vector<std::pair<std::string, std::string>> DateImpossibili(std::string_view genere) {
  if (genere == "postgres") {
    return {{"infinity", "0000-00-00"}, {"-infinity", "0000-00-00"}, {"10000-01-02", "1000-00-00"}};
  }
  if (genere == "mariadb") {
    return {{"2007-02-00", "0000-00-00"}, {"2007-00-10", "0000-00-00"}};
  }
  if (genere == "sqlite") {
    return {{"infinity", "infinity"},     {"10000-01-02", "10000-01-02"}, {"2007-02-00", "2007-02-00"},
            {"2007-02-29", "2007-02-29"}, {"2007-13-01", "2007-13-01"},   {"0000-00-00", "0000-00-00"}};
  }
  return {};
}

/// Writes a date that is none into the event `chiave`.
inline void ScriviDataImpossibile(const BaseDati& base, std::string_view genere, const std::string& colonna,
                                  const std::string& valore, int chiave) {
  const ReplacedServices silenzio(Services{});
  ado::Connection connection;
  base.Apri(connection);
  if (genere == "mariadb") {
    connection.Execute("SET sql_mode=''");
  }
  connection.Execute("UPDATE EVENTOCONTABILE SET " + colonna + "='" + valore +
                     "' WHERE EVENTOCONTABILEKEY=" + std::to_string(chiave));
}

} // namespace lumoscad::test
