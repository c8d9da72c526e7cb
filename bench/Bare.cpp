#include "Bare.hpp"

#include "platform/ado/ConnectionText.hpp"

#include <algorithm>
#include <chrono>
#include <stdexcept>
#include <utility>

namespace lumoscad::bench {
namespace {

constexpr std::size_t BytesOfBlock = std::size_t{1} << 20;
constexpr std::size_t BytesOfNumber = 64;
constexpr std::size_t BytesOfCharacter = 4;

std::vector<std::size_t> SpacesOf(SQLHANDLE command) {
  SQLSMALLINT columns = 0;
  Demand(SQLNumResultCols(command, &columns));
  std::vector<std::size_t> spaces;
  for (SQLUSMALLINT column = 1; column <= columns; ++column) {
    SQLSMALLINT along = 0;
    SQLSMALLINT type = 0;
    SQLSMALLINT decimali = 0;
    SQLSMALLINT nullo = 0;
    SQLULEN characters = 0;
    Demand(SQLDescribeCol(command, column, nullptr, 0, &along, &type, &characters, &decimali, &nullo));
    const bool text = type == SQL_VARCHAR || type == SQL_WVARCHAR || type == SQL_CHAR || type == SQL_WCHAR;
    spaces.push_back(text ? static_cast<std::size_t>(characters) * BytesOfCharacter + 1 : BytesOfNumber);
  }
  return spaces;
}

} // namespace

void Demand(SQLRETURN outcome) {
  if (!SQL_SUCCEEDED(outcome)) {
    throw std::runtime_error("the bare program failed");
  }
}

BareConnection::BareConnection(const std::string& connectionText) {
  SQLSetEnvAttr(environment_.get(), SQL_ATTR_ODBC_VERSION, ado::detail::AsPointer(SQL_OV_ODBC3), 0);
  connection_ = ado::detail::Handle<SQL_HANDLE_DBC>(environment_.get());
  std::string text = ado::OdbcText(ado::ReadConnectionText(connectionText));
  Demand(SQLDriverConnect(connection_.get(), nullptr, reinterpret_cast<SQLCHAR*>(text.data()),
                          static_cast<SQLSMALLINT>(text.size()), nullptr, 0, nullptr, SQL_DRIVER_NOPROMPT));
}

void BareConnection::End() {
  if (std::exchange(open_, false)) {
    SQLDisconnect(connection_.get());
  }
}

BareCommand::BareCommand(const BareConnection& connection, std::string_view statement, std::vector<std::size_t> spaces,
                         std::size_t rows)
    : command_(connection.get()), rows_(rows), spaces_(std::move(spaces)) {
  std::string text(statement);
  Demand(SQLPrepare(command_.get(), reinterpret_cast<SQLCHAR*>(text.data()), static_cast<SQLINTEGER>(text.size())));
}

void BareCommand::Execute(std::vector<std::string>& parameters) {
  longOnes_.resize(parameters.size());
  for (std::size_t i = 0; i < parameters.size(); ++i) {
    longOnes_[i] = static_cast<SQLLEN>(parameters[i].size());
    Demand(SQLBindParameter(command_.get(), static_cast<SQLUSMALLINT>(i + 1), SQL_PARAM_INPUT, SQL_C_CHAR, SQL_VARCHAR,
                            std::max<SQLULEN>(parameters[i].size(), 1), 0, parameters[i].data(), longOnes_[i],
                            &longOnes_[i]));
  }
  Demand(SQLExecute(command_.get()));
}

double BareCommand::UntilLastRow(std::vector<std::string> parameters) {
  const auto begin = std::chrono::steady_clock::now();
  Execute(parameters);
  const std::chrono::duration<double, std::milli> time = std::chrono::steady_clock::now() - begin;
  Demand(SQLCloseCursor(command_.get()));
  return time.count();
}

std::size_t BareCommand::Run(std::vector<std::string> parameters, const std::function<void(std::size_t)>& line) {
  Execute(parameters);
  if (columns_.empty()) {
    Attach();
  }
  std::size_t howMany = 0;
  while (SQL_SUCCEEDED(SQLFetch(command_.get()))) {
    howMany += static_cast<std::size_t>(fetched_);
    for (std::size_t place = 0; line && place < static_cast<std::size_t>(fetched_); ++place) {
      line(place);
    }
  }
  Demand(SQLCloseCursor(command_.get()));
  return howMany;
}

void BareCommand::Attach() {
  if (spaces_.empty()) {
    spaces_ = SpacesOf(command_.get());
  }
  std::size_t wide = 0;
  for (const std::size_t space : spaces_) {
    wide += space + sizeof(SQLLEN);
  }
  const std::size_t lock = std::clamp<std::size_t>(BytesOfBlock / std::max<std::size_t>(wide, 1), 1, rows_);
  texts_ = std::make_unique_for_overwrite<char[]>(wide * lock);
  rows_ = lock;
  lengths_.resize(spaces_.size() * lock);
  Demand(SQLSetStmtAttr(command_.get(), SQL_ATTR_ROW_ARRAY_SIZE, ado::detail::AsPointer(lock), 0));
  Demand(SQLSetStmtAttr(command_.get(), SQL_ATTR_ROWS_FETCHED_PTR, &fetched_, 0));
  char* where = texts_.get();
  for (std::size_t i = 0; i < spaces_.size(); ++i) {
    Demand(SQLBindCol(command_.get(), static_cast<SQLUSMALLINT>(i + 1), SQL_C_CHAR, where,
                      static_cast<SQLLEN>(spaces_[i]), &lengths_[i * lock]));
    columns_.push_back(where);
    where += spaces_[i] * lock;
  }
}

std::string_view BareCommand::Text(std::size_t line, std::size_t column) const {
  const SQLLEN along = lengths_[column * rows_ + line];
  return along < 0 ? std::string_view()
                   : std::string_view(columns_[column] + line * spaces_[column], static_cast<std::size_t>(along));
}

} // namespace lumoscad::bench
