#include "platform/ado/Diagnostics.hpp"

#include "platform/ado/Advice.hpp"

#include <algorithm>
#include <array>

namespace lumoscad::ado::interno {

namespace {

struct StateNumber {
  std::string_view prefix; ///< a whole SQLSTATE, or its class
  int number;
};

constexpr std::array<StateNumber, 11> table{{
    {"28000", -2147217843},
    {"42000", -2147217900},
    {"37000", -2147217900},
    {"42S02", -2147217865},
    {"23", -2147217873},
    {"HYT00", -2147217871},
    {"22018", -2147217913},
    {"22001", -2147217833},
    {"22003", -2147217833},
    {"07001", -2147217904},
    {"07002", -2147217904},
}};

constexpr char folded(char c) noexcept {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

struct Record {
  std::string state;
  SQLINTEGER native = 0;
  std::string text;
};

bool readRecord(SQLSMALLINT kind, SQLHANDLE handle, SQLSMALLINT index, Record& record) {
  std::array<SQLCHAR, 6> state{};
  SQLSMALLINT length = 0;
  std::string text(1024, '\0');
  for (;;) {
    const auto capacity = static_cast<SQLSMALLINT>(text.size());
    const SQLRETURN rc = SQLGetDiagRec(kind, handle, index, state.data(), &record.native,
                                       reinterpret_cast<SQLCHAR*>(text.data()), capacity, &length);
    if (!SQL_SUCCEEDED(rc))
      return false;
    if (length < capacity || capacity >= 32000)
      break;
    text.assign(std::min<std::size_t>(static_cast<std::size_t>(length) + 1, 32000), '\0');
  }
  text.resize(std::min(text.find('\0'), text.size()));
  while (!text.empty() && (text.back() == '\n' || text.back() == '\r' || text.back() == ' '))
    text.pop_back();
  record.state = reinterpret_cast<const char*>(state.data());
  record.text = std::move(text);
  return true;
}

} // namespace

int numeroErrore(std::string_view sqlstate) noexcept {
  const auto found = std::find_if(table.begin(), table.end(),
                                  [&](const StateNumber& row) { return sqlstate.starts_with(row.prefix); });
  return found == table.end() ? errori::Driver : found->number;
}

std::string senzaPassword(std::string text, std::string_view password) {
  if (password.empty())
    return text;
  constexpr std::string_view blot = "***";
  const auto equal = [](char a, char b) { return folded(a) == folded(b); };
  std::string clean;
  auto from = text.cbegin();
  for (;;) {
    const auto at = std::search(from, text.cend(), password.begin(), password.end(), equal);
    clean.append(from, at);
    if (at == text.cend())
      return clean;
    clean += blot;
    from = at + static_cast<std::ptrdiff_t>(password.size());
  }
}

ErroreRuntime erroreOdbc(SQLSMALLINT kind, SQLHANDLE handle, std::string_view password, std::string_view context) {
  std::string description;
  int number = errori::Driver;
  std::string_view advice;
  Record record;
  for (SQLSMALLINT index = 1; index < 100 && readRecord(kind, handle, index, record); ++index) {
    if (index == 1)
      number = numeroErrore(record.state);
    else
      description += "; ";
    description += '[' + record.state + "] " + senzaPassword(record.text, password);
    if (advice.empty())
      advice = adviceFor(record.state, record.native, record.text);
  }
  if (description.empty())
    description = context;
  if (!advice.empty())
    description.append("\r\n").append(advice);
  return {number, std::move(description), "ODBC"};
}

} // namespace lumoscad::ado::interno
