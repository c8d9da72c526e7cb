#include "platform/ado/ResultReader.hpp"

#include "platform/ado/NumberText.hpp"

#include <algorithm>
#include <array>
#include <optional>

namespace lumoscad::ado::detail {

namespace {

constexpr SQLULEN longestBound = 4096;       ///< characters; longer columns are read piece by piece
constexpr std::size_t blockBytes = 1U << 20; ///< all bound buffers together
constexpr std::size_t mostRows = 1024;       ///< rows of one block
constexpr std::size_t firstPiece = 8192;     ///< bytes asked first of a value read piece by piece
/// Types of long values: the standard's, and DB2's own LONGVARGRAPHIC, BLOB, CLOB, DBCLOB and XML, in this order (the
/// last four: https://www.ibm.com/docs/en/db2/11.5.x?topic=keywords-xmldefaultdescribemapping).
constexpr std::array<SQLSMALLINT, 8> longTypes{
    SQL_LONGVARCHAR, SQL_WLONGVARCHAR, SQL_LONGVARBINARY, -97, -98, -99, -350, -370};
constexpr const char* readingFailed = "Lettura dalla base dati non riuscita.";

using Cells = std::vector<std::optional<std::string_view>>;

/// Bytes of a value of the type as text, at most; 0 where there is no useful bound.
std::size_t bufferBytes(SQLSMALLINT type, SQLULEN size) {
  switch (type) {
  case SQL_LONGVARCHAR:
  case SQL_WLONGVARCHAR:
  case SQL_LONGVARBINARY:
    return 0;
  case SQL_CHAR:
  case SQL_VARCHAR:
  case SQL_WCHAR:
  case SQL_WVARCHAR:
  case SQL_BINARY:
  case SQL_VARBINARY:
    // Four bytes a character cover every UTF-8 text, and the two digits a byte of a binary.
    return size == 0 || size > longestBound ? 0 : static_cast<std::size_t>(size) * 4 + 1;
  default:
    return std::max<std::size_t>(64, std::min<SQLULEN>(size, longestBound) + 8);
  }
}

bool holdsTimestamps(SQLSMALLINT type) {
  return type == SQL_TYPE_TIMESTAMP || type == SQL_TIMESTAMP;
}

bool holdsNumbers(SQLSMALLINT type) {
  constexpr SQLSMALLINT decfloat = -360; // DB2's own
  constexpr std::array<SQLSMALLINT, 6> types{SQL_DECIMAL, SQL_NUMERIC, SQL_FLOAT, SQL_REAL, SQL_DOUBLE, decfloat};
  return std::find(types.begin(), types.end(), type) != types.end();
}

/// The name of the column's type in the server's own words; empty where it is not told.
std::string typeName(const Statement& statement, SQLUSMALLINT column) {
  std::array<char, 64> name{};
  SQLSMALLINT length = 0;
  const SQLRETURN rc = SQLColAttribute(statement.handle(), column, SQL_DESC_TYPE_NAME, name.data(),
                                       static_cast<SQLSMALLINT>(name.size() - 1), &length, nullptr);
  return SQL_SUCCEEDED(rc) ? std::string(name.data()) : std::string();
}

ValueKind kindOf(const Statement& statement, SQLUSMALLINT column, SQLSMALLINT type) {
  const Dialect& dialect = statement.session().dialect();
  if (holdsTimestamps(type)) {
    return dialect.infiniteTimes ? ValueKind::InfiniteTimestamp : ValueKind::Timestamp;
  }
  // Numbers may be described as texts, and amounts of money as numbers: a setting of PostgreSQL's driver (NumericAs)
  // and its habit. It writes them all the same.
  if (dialect.namesNumbers) {
    const std::string name = typeName(statement, column);
    if (name == "money") {
      return ValueKind::Money;
    }
    if (name == "numeric" || name == "float4" || name == "float8") {
      return ValueKind::Number;
    }
  }
  return dialect.typesHold && holdsNumbers(type) ? ValueKind::Number : ValueKind::AsItIs;
}

/// Leaves the date alone of a timestamp at midnight: a due date may be declared either way.
std::string_view withoutMidnight(std::string_view text) {
  constexpr std::size_t date = 10;
  constexpr std::string_view midnight = " 00:00:00";
  if (text.size() < date + midnight.size() || text.substr(date, midnight.size()) != midnight) {
    return text;
  }
  const std::string_view rest = text.substr(date + midnight.size());
  const bool zero = rest.empty() || (rest.front() == '.' && rest.find_first_not_of('0', 1) == std::string_view::npos);
  return zero ? text.substr(0, date) : text;
}

/// The same of a timestamp that may have no end. PostgreSQL's driver writes such a one as a certain time, which nobody
/// would enter; it must not be taken for a date.
std::string_view withoutInfinity(std::string_view text) {
  if (text == "9999-12-31 23:59:59") {
    return "infinity";
  }
  return text == "9999-01-01 00:00:00 BC" ? "-infinity" : withoutMidnight(text);
}

/// A value as this layer gives it; may rewrite the driver's text in its place.
std::string_view plainText(ValueKind kind, char* text, std::size_t length) {
  switch (kind) {
  case ValueKind::Timestamp:
    return withoutMidnight({text, length});
  case ValueKind::InfiniteTimestamp:
    return withoutInfinity({text, length});
  case ValueKind::Number:
    return withPoint(text, length);
  case ValueKind::Money:
    return withoutCurrency(text, length);
  case ValueKind::AsItIs:
    break;
  }
  return {text, length};
}

/// The buffers of a block of rows, bound column by column.
class Block {
 public:
  Block(const Statement& statement, const std::vector<ColumnInfo>& columns) : statement_(statement), columns_(columns) {
    std::size_t row = 0;
    for (const ColumnInfo& column : columns) {
      row += column.buffer + sizeof(SQLLEN);
    }
    rows_ = std::clamp<std::size_t>(blockBytes / std::max<std::size_t>(row, 1), 1, mostRows);
    setRows(rows_);
    bind(row);
  }
  Block(const Block&) = delete;
  Block& operator=(const Block&) = delete;
  ~Block() {
    SQLSetStmtAttr(statement_.handle(), SQL_ATTR_ROWS_FETCHED_PTR, nullptr, 0);
    SQLSetStmtAttr(statement_.handle(), SQL_ATTR_ROW_STATUS_PTR, nullptr, 0);
    SQLSetStmtAttr(statement_.handle(), SQL_ATTR_ROW_ARRAY_SIZE, asPointer(1), 0);
    SQLFreeStmt(statement_.handle(), SQL_UNBIND);
  }

  /// Fetches the next block; nothing at the end.
  [[nodiscard]] std::optional<std::size_t> fetch() {
    fetched_ = 0;
    const SQLRETURN rc = statement_.waitFor([this] { return SQLFetch(statement_.handle()); });
    if (rc == SQL_NO_DATA) {
      return std::nullopt;
    }
    statement_.require(rc, readingFailed);
    for (std::size_t row = 0; row < fetched_; ++row) {
      if (status_[row] == SQL_ROW_ERROR) {
        statement_.require(SQL_ERROR, readingFailed);
      }
    }
    return static_cast<std::size_t>(fetched_);
  }

  /// The cells of a fetched row; false when one of them did not fit.
  [[nodiscard]] bool read(std::size_t row, Cells& cells) const {
    for (std::size_t i = 0; i < columns_.size(); ++i) {
      const SQLLEN length = lengths_[i * rows_ + row];
      if (length == SQL_NULL_DATA) {
        cells[i].reset();
        continue;
      }
      // A value that fills its buffer to the last byte may have been cut by a driver that tells the cut length.
      if (length < 0 || static_cast<std::size_t>(length) + 1 >= columns_[i].buffer) {
        return false;
      }
      cells[i] = plainText(columns_[i].kind, starts_[i] + row * columns_[i].buffer, static_cast<std::size_t>(length));
    }
    return true;
  }

 private:
  void setRows(std::size_t wanted) {
    SQLHANDLE handle = statement_.handle();
    SQLSetStmtAttr(handle, SQL_ATTR_ROW_BIND_TYPE, asPointer(SQL_BIND_BY_COLUMN), 0);
    SQLSetStmtAttr(handle, SQL_ATTR_ROW_ARRAY_SIZE, asPointer(wanted), 0);
    SQLULEN granted = 1;
    const SQLRETURN rc = SQLGetStmtAttr(handle, SQL_ATTR_ROW_ARRAY_SIZE, &granted, SQL_IS_UINTEGER, nullptr);
    rows_ = SQL_SUCCEEDED(rc) && granted > 0 ? static_cast<std::size_t>(granted) : 1;
    status_.assign(rows_, SQL_ROW_SUCCESS);
    SQLSetStmtAttr(handle, SQL_ATTR_ROW_STATUS_PTR, status_.data(), 0);
    statement_.require(SQLSetStmtAttr(handle, SQL_ATTR_ROWS_FETCHED_PTR, &fetched_, 0), readingFailed);
  }

  void bind(std::size_t rowBytes) {
    buffer_ = std::make_unique_for_overwrite<char[]>(rowBytes * rows_);
    lengths_.assign(columns_.size() * rows_, 0);
    char* start = buffer_.get();
    for (std::size_t i = 0; i < columns_.size(); ++i) {
      starts_.push_back(start);
      statement_.require(SQLBindCol(statement_.handle(), static_cast<SQLUSMALLINT>(i + 1), SQL_C_CHAR, start,
                                    static_cast<SQLLEN>(columns_[i].buffer), &lengths_[i * rows_]),
                         readingFailed);
      start += columns_[i].buffer * rows_;
    }
  }

  const Statement& statement_;
  const std::vector<ColumnInfo>& columns_;
  std::size_t rows_ = 1;
  std::unique_ptr<char[]> buffer_;
  std::vector<char*> starts_;
  std::vector<SQLLEN> lengths_;
  std::vector<SQLUSMALLINT> status_;
  SQLULEN fetched_ = 0;
};

/// Reads one value of the current row piece by piece into `whole`; false for NULL.
bool readWhole(const Statement& statement, SQLUSMALLINT column, std::string& whole) {
  whole.resize(firstPiece);
  std::size_t got = 0;
  for (;;) {
    const std::size_t room = whole.size() - got;
    SQLLEN length = 0;
    const SQLRETURN rc = statement.waitFor([&] {
      return SQLGetData(statement.handle(), column, SQL_C_CHAR, whole.data() + got, static_cast<SQLLEN>(room), &length);
    });
    if (rc == SQL_NO_DATA) {
      break;
    }
    statement.require(rc, readingFailed);
    if (length == SQL_NULL_DATA) {
      return false;
    }
    if (length >= 0 && static_cast<std::size_t>(length) < room) {
      got += static_cast<std::size_t>(length);
      break;
    }
    got += room - 1;
    const std::size_t left = length == SQL_NO_TOTAL ? whole.size() : static_cast<std::size_t>(length) - (room - 1);
    whole.resize(got + left + 1);
  }
  whole.resize(got);
  return true;
}

} // namespace

bool comparable(const ColumnInfo& column, const Dialect& dialect) noexcept {
  return dialect.comparesLongTexts || std::find(longTypes.begin(), longTypes.end(), column.type) == longTypes.end();
}

std::vector<ColumnInfo> describeColumns(const Statement& statement, SQLSMALLINT count) {
  std::vector<ColumnInfo> columns(static_cast<std::size_t>(count));
  for (SQLSMALLINT i = 0; i < count; ++i) {
    std::array<SQLCHAR, 512> name{};
    SQLSMALLINT length = 0;
    SQLSMALLINT digits = 0;
    SQLSMALLINT nullable = 0;
    SQLULEN size = 0;
    ColumnInfo& column = columns[static_cast<std::size_t>(i)];
    statement.require(SQLDescribeCol(statement.handle(), static_cast<SQLUSMALLINT>(i + 1), name.data(),
                                     static_cast<SQLSMALLINT>(name.size()), &length, &column.type, &size, &digits,
                                     &nullable),
                      "Descrizione del risultato non riuscita.");
    column.name = reinterpret_cast<const char*>(name.data());
    column.kind = kindOf(statement, static_cast<SQLUSMALLINT>(i + 1), column.type);
    column.buffer = bufferBytes(column.type, size);
  }
  return columns;
}

bool readBound(const Statement& statement, const std::vector<ColumnInfo>& columns, RowStore& rows) {
  Block block(statement, columns);
  Cells cells(columns.size());
  while (const auto fetched = block.fetch()) {
    for (std::size_t row = 0; row < *fetched; ++row) {
      if (!block.read(row, cells)) {
        return false;
      }
      rows.append(cells);
    }
  }
  return true;
}

void readUnbound(const Statement& statement, const std::vector<ColumnInfo>& columns, RowStore& rows) {
  std::vector<std::string> values(columns.size());
  Cells cells(columns.size());
  for (;;) {
    const SQLRETURN rc = statement.waitFor([&] { return SQLFetch(statement.handle()); });
    if (rc == SQL_NO_DATA) {
      return;
    }
    statement.require(rc, readingFailed);
    for (std::size_t i = 0; i < columns.size(); ++i) {
      if (!readWhole(statement, static_cast<SQLUSMALLINT>(i + 1), values[i])) {
        cells[i].reset();
      } else {
        cells[i] = plainText(columns[i].kind, values[i].data(), values[i].size());
      }
    }
    rows.append(cells);
  }
}

} // namespace lumoscad::ado::detail
