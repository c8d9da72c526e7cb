#include "platform/ado/ResultReader.hpp"

#include "platform/ado/NumberText.hpp"
#include "platform/base/AsciiCase.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <functional>
#include <optional>
#include <utility>

namespace lumoscad::ado::detail {

namespace {

constexpr SQLULEN LongestBound = 4096;       ///< characters; longer columns are read piece by piece
constexpr std::size_t BlockBytes = 1U << 20; ///< all bound buffers together
constexpr std::size_t FirstRows = 16;        ///< rows of the first block: most results are no longer
constexpr std::size_t MostRows = 1024;       ///< rows of any further one
constexpr std::size_t FirstPiece = 8192;     ///< bytes asked first of a value read piece by piece
/// Types of long values: the standard's, and DB2's own LONGVARGRAPHIC, BLOB, CLOB, DBCLOB and XML, in this order (the
/// last four: https://www.ibm.com/docs/en/db2/11.5.x?topic=keywords-xmldefaultdescribemapping).
constexpr std::array<SQLSMALLINT, 8> LongTypes{
    SQL_LONGVARCHAR, SQL_WLONGVARCHAR, SQL_LONGVARBINARY, -97, -98, -99, -350, -370};
constexpr const char* ReadingFailed = "Lettura dalla base dati non riuscita.";

using Cells = std::vector<std::optional<std::string_view>>;

/// Bytes of a value of the type as text, at most; 0 where there is no useful bound.
std::size_t BufferBytes(SQLSMALLINT type, SQLULEN size) {
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
    return size == 0 || size > LongestBound ? 0 : static_cast<std::size_t>(size) * 4 + 1;
  default:
    return std::max<std::size_t>(64, std::min<SQLULEN>(size, LongestBound) + 8);
  }
}

bool HoldsTimestamps(SQLSMALLINT type) {
  return type == SQL_TYPE_TIMESTAMP || type == SQL_TIMESTAMP;
}

bool HoldsNumbers(SQLSMALLINT type) {
  constexpr SQLSMALLINT Decfloat = -360; // DB2's own
  constexpr std::array<SQLSMALLINT, 6> Types{SQL_DECIMAL, SQL_NUMERIC, SQL_FLOAT, SQL_REAL, SQL_DOUBLE, Decfloat};
  return std::find(Types.begin(), Types.end(), type) != Types.end();
}

/// Whether a column of this name is one to be read.
using Wanted = std::function<bool(const std::string&)>;

constexpr const char* DescribingFailed = "Descrizione del risultato non riuscita.";

/// What the server's own name of a column's type says. Numbers may be described as texts, and amounts of money as
/// numbers: a setting of PostgreSQL's driver (NumericAs) and its habit. It writes them all the same.
ValueKind KindByName(std::string_view typeName) {
  if (typeName == "money") {
    return ValueKind::Money;
  }
  if (typeName == "int2" || typeName == "int4" || typeName == "int8") {
    return ValueKind::Integer;
  }
  const bool number = typeName == "numeric" || typeName == "float4" || typeName == "float8";
  return number ? ValueKind::Number : ValueKind::AsItIs;
}

ValueKind KindOf(const Dialect& dialect, SQLSMALLINT type, std::string_view typeName) {
  if (HoldsTimestamps(type)) {
    return dialect.infiniteTimes ? ValueKind::InfiniteTimestamp : ValueKind::Timestamp;
  }
  const ValueKind named = dialect.namesNumbers ? KindByName(typeName) : ValueKind::AsItIs;
  if (named != ValueKind::AsItIs) {
    return named;
  }
  return dialect.typesHold && HoldsNumbers(type) ? ValueKind::Number : ValueKind::AsItIs;
}

std::string TextAttribute(const Statement& statement, SQLUSMALLINT column, SQLUSMALLINT attribute) {
  std::array<char, 512> text{};
  SQLSMALLINT length = 0;
  statement.Require(SQLColAttribute(statement.handle(), column, attribute, text.data(),
                                    static_cast<SQLSMALLINT>(text.size() - 1), &length, nullptr),
                    DescribingFailed);
  return text.data();
}

SQLLEN NumberAttribute(const Statement& statement, SQLUSMALLINT column, SQLUSMALLINT attribute) {
  SQLLEN number = 0;
  statement.Require(SQLColAttribute(statement.handle(), column, attribute, nullptr, 0, nullptr, &number),
                    DescribingFailed);
  return number;
}

/// For SQLDescribeCol, for the concise type and for the plain type name psqlodbc asks the server's catalogue, once a
/// table and connection; what stands here came with the rows. A column that is not `wanted` by its name is left at
/// that. Of a numeric column that is no table's own, a sum, psqlodbc looks for the longest value through all rows
/// whatever is asked of it, and twice for its type or size: of a number its name and that of its type are enough.
std::optional<ColumnInfo> DescribeByAttributes(const Statement& statement, SQLUSMALLINT place, const Wanted& wanted) {
  ColumnInfo column;
  column.name = TextAttribute(statement, place, SQL_DESC_NAME);
  if (!wanted(column.name)) {
    return std::nullopt;
  }
  column.number = place;
  const std::string typeName = TextAttribute(statement, place, SQL_DESC_LOCAL_TYPE_NAME);
  if (typeName == "numeric") {
    column.type = SQL_NUMERIC;
    column.kind = ValueKind::Number;
    column.buffer = BufferBytes(column.type, 0);
    return column;
  }
  if (KindByName(typeName) == ValueKind::Integer) {
    column.type = SQL_BIGINT;
    column.kind = ValueKind::Integer;
    column.buffer = sizeof(SQLBIGINT);
    return column;
  }
  column.type = static_cast<SQLSMALLINT>(NumberAttribute(statement, place, SQL_DESC_TYPE));
  if (column.type == SQL_DATETIME) {
    column.type = typeName.starts_with("timestamp") ? SQL_TYPE_TIMESTAMP : SQL_TYPE_DATE;
  }
  column.kind = KindOf(statement.session().dialect(), column.type, typeName);
  const SQLLEN size = NumberAttribute(statement, place, SQL_DESC_DISPLAY_SIZE);
  column.buffer = BufferBytes(column.type, size < 0 ? 0 : static_cast<SQLULEN>(size));
  return column;
}

std::optional<ColumnInfo> Describe(const Statement& statement, SQLUSMALLINT place, const Wanted& wanted) {
  std::array<SQLCHAR, 512> name{};
  SQLSMALLINT length = 0;
  SQLSMALLINT digits = 0;
  SQLSMALLINT nullable = 0;
  SQLULEN size = 0;
  ColumnInfo column;
  statement.Require(SQLDescribeCol(statement.handle(), place, name.data(), static_cast<SQLSMALLINT>(name.size()),
                                   &length, &column.type, &size, &digits, &nullable),
                    DescribingFailed);
  column.name = reinterpret_cast<const char*>(name.data());
  if (!wanted(column.name)) {
    return std::nullopt;
  }
  column.number = place;
  column.kind = KindOf(statement.session().dialect(), column.type, {});
  column.buffer = BufferBytes(column.type, size);
  return column;
}

/// Leaves the date alone of a timestamp at midnight: a due date may be declared either way.
std::string_view WithoutMidnight(std::string_view text) {
  constexpr std::size_t Date = 10;
  constexpr std::string_view Midnight = " 00:00:00";
  if (text.size() < Date + Midnight.size() || text.substr(Date, Midnight.size()) != Midnight) {
    return text;
  }
  const std::string_view rest = text.substr(Date + Midnight.size());
  const bool zero = rest.empty() || (rest.front() == '.' && rest.find_first_not_of('0', 1) == std::string_view::npos);
  return zero ? text.substr(0, Date) : text;
}

/// The same of a timestamp that may have no end. PostgreSQL's driver writes such a one as a certain time, which nobody
/// would enter; it must not be taken for a date.
std::string_view WithoutInfinity(std::string_view text) {
  if (text == "9999-12-31 23:59:59") {
    return "infinity";
  }
  return text == "9999-01-01 00:00:00 BC" ? "-infinity" : WithoutMidnight(text);
}

/// A value as this layer gives it; may rewrite the driver's text in its place.
std::string_view PlainText(ValueKind kind, char* text, std::size_t length) {
  switch (kind) {
  case ValueKind::Timestamp:
    return WithoutMidnight({text, length});
  case ValueKind::InfiniteTimestamp:
    return WithoutInfinity({text, length});
  case ValueKind::Number:
    return WithPoint(text, length);
  case ValueKind::Money:
    return WithoutCurrency(text, length);
  case ValueKind::AsItIs:
  case ValueKind::Integer:
    break;
  }
  return {text, length};
}

/// The buffers of a block of rows, bound column by column.
class Block {
 public:
  Block(const Statement& statement, const std::vector<ColumnInfo>& columns) : statement_(statement), columns_(columns) {
    for (const ColumnInfo& column : columns) {
      rowBytes_ += column.buffer + sizeof(SQLLEN);
    }
    most_ = std::clamp<std::size_t>(BlockBytes / std::max<std::size_t>(rowBytes_, 1), 1, MostRows);
    digits_.resize(columns.size());
    Resize(std::min(FirstRows, most_));
  }
  Block(const Block&) = delete;
  Block& operator=(const Block&) = delete;
  ~Block() {
    SQLSetStmtAttr(statement_.handle(), SQL_ATTR_ROWS_FETCHED_PTR, nullptr, 0);
    SQLSetStmtAttr(statement_.handle(), SQL_ATTR_ROW_STATUS_PTR, nullptr, 0);
    SQLSetStmtAttr(statement_.handle(), SQL_ATTR_ROW_ARRAY_SIZE, AsPointer(1), 0);
    SQLFreeStmt(statement_.handle(), SQL_UNBIND);
  }

  /// Fetches the next block; nothing at the end.
  [[nodiscard]] std::optional<std::size_t> Fetch() {
    if (rows_ < most_ && fetched_ == rows_) {
      Resize(most_);
    }
    fetched_ = 0;
    const SQLRETURN rc = statement_.WaitFor([this] { return SQLFetch(statement_.handle()); });
    if (rc == SQL_NO_DATA) {
      return std::nullopt;
    }
    statement_.Require(rc, ReadingFailed);
    for (std::size_t row = 0; row < fetched_; ++row) {
      if (status_[row] == SQL_ROW_ERROR) {
        statement_.Require(SQL_ERROR, ReadingFailed);
      }
    }
    return static_cast<std::size_t>(fetched_);
  }

  /// The cells of a fetched row; false when one of them did not fit.
  [[nodiscard]] bool Read(std::size_t row, Cells& cells) {
    for (std::size_t i = 0; i < columns_.size(); ++i) {
      const SQLLEN length = lengths_[i * rows_ + row];
      if (length == SQL_NULL_DATA) {
        cells[i].reset();
        continue;
      }
      if (columns_[i].kind == ValueKind::Integer) {
        cells[i] = Digits(i, row);
        continue;
      }
      // A value that fills its buffer to the last byte may have been cut by a driver that tells the cut length.
      if (length < 0 || static_cast<std::size_t>(length) + 1 >= columns_[i].buffer) {
        return false;
      }
      cells[i] = PlainText(columns_[i].kind, starts_[i] + row * columns_[i].buffer, static_cast<std::size_t>(length));
    }
    return true;
  }

 private:
  /// Has the next rows fetched into buffers for as many as `wanted`, or for fewer where the driver grants no more.
  void Resize(std::size_t wanted) {
    SetRows(wanted);
    most_ = rows_ < wanted ? rows_ : most_;
    Bind();
  }

  void SetRows(std::size_t wanted) {
    SQLHANDLE handle = statement_.handle();
    SQLSetStmtAttr(handle, SQL_ATTR_ROW_ARRAY_SIZE, AsPointer(wanted), 0);
    SQLULEN granted = 1;
    const SQLRETURN rc = SQLGetStmtAttr(handle, SQL_ATTR_ROW_ARRAY_SIZE, &granted, SQL_IS_UINTEGER, nullptr);
    rows_ = SQL_SUCCEEDED(rc) && granted > 0 ? static_cast<std::size_t>(granted) : 1;
    status_.assign(rows_, SQL_ROW_SUCCESS);
    SQLSetStmtAttr(handle, SQL_ATTR_ROW_STATUS_PTR, status_.data(), 0);
    statement_.Require(SQLSetStmtAttr(handle, SQL_ATTR_ROWS_FETCHED_PTR, &fetched_, 0), ReadingFailed);
  }

  void Bind() {
    buffer_ = std::make_unique_for_overwrite<char[]>(rowBytes_ * rows_ + columns_.size() * sizeof(SQLBIGINT));
    starts_.clear();
    lengths_.assign(columns_.size() * rows_, 0);
    char* start = buffer_.get();
    for (std::size_t i = 0; i < columns_.size(); ++i) {
      starts_.push_back(start);
      const SQLSMALLINT type = columns_[i].kind == ValueKind::Integer ? SQL_C_SBIGINT : SQL_C_CHAR;
      statement_.Require(SQLBindCol(statement_.handle(), columns_[i].number, type, start,
                                    static_cast<SQLLEN>(columns_[i].buffer), &lengths_[i * rows_]),
                         ReadingFailed);
      // The next column may be one of numbers, which the driver writes where such numbers may stand.
      start += (columns_[i].buffer * rows_ + sizeof(SQLBIGINT) - 1) / sizeof(SQLBIGINT) * sizeof(SQLBIGINT);
    }
  }

  /// The text of a number; it stands until the next row is read.
  [[nodiscard]] std::string_view Digits(std::size_t column, std::size_t row) {
    SQLBIGINT number = 0;
    std::memcpy(&number, starts_[column] + row * sizeof number, sizeof number);
    auto& text = digits_[column];
    const char* const end = std::to_chars(text.data(), text.data() + text.size(), number).ptr;
    return {text.data(), static_cast<std::size_t>(end - text.data())};
  }

  const Statement& statement_;
  const std::vector<ColumnInfo>& columns_;
  std::size_t rowBytes_ = 0;
  std::size_t most_ = 1;
  std::size_t rows_ = 1;
  std::unique_ptr<char[]> buffer_;
  std::vector<char*> starts_;
  std::vector<std::array<char, 24>> digits_; ///< of the numbers of the row just read, by column
  std::vector<SQLLEN> lengths_;
  std::vector<SQLUSMALLINT> status_;
  SQLULEN fetched_ = 0;
};

/// Reads one value of the current row piece by piece into `whole`; false for NULL.
bool ReadWhole(const Statement& statement, SQLUSMALLINT column, std::string& whole) {
  whole.resize(FirstPiece);
  std::size_t got = 0;
  for (;;) {
    const std::size_t room = whole.size() - got;
    SQLLEN length = 0;
    const SQLRETURN rc = statement.WaitFor([&] {
      return SQLGetData(statement.handle(), column, SQL_C_CHAR, whole.data() + got, static_cast<SQLLEN>(room), &length);
    });
    if (rc == SQL_NO_DATA) {
      break;
    }
    statement.Require(rc, ReadingFailed);
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

bool Comparable(const ColumnInfo& column, const Dialect& dialect) noexcept {
  return dialect.comparesLongTexts || std::find(LongTypes.begin(), LongTypes.end(), column.type) == LongTypes.end();
}

std::vector<ColumnInfo> DescribeColumns(const Statement& statement, SQLSMALLINT count,
                                        const std::vector<std::string>& wanted) {
  const auto describe = statement.session().dialect().namesNumbers ? DescribeByAttributes : Describe;
  std::vector<ColumnInfo> columns;
  const auto has = [&](const std::string& name) {
    return std::any_of(columns.begin(), columns.end(),
                       [&](const ColumnInfo& column) { return base::SameButForCase(column.name, name); });
  };
  const Wanted isWanted = [&](const std::string& name) {
    return wanted.empty() || (!has(name) && std::any_of(wanted.begin(), wanted.end(), [&](const std::string& each) {
             return base::SameButForCase(each, name);
           }));
  };
  for (SQLSMALLINT place = 1; place <= count && (wanted.empty() || columns.size() < wanted.size()); ++place) {
    if (auto column = describe(statement, static_cast<SQLUSMALLINT>(place), isWanted)) {
      columns.push_back(*std::move(column));
    }
  }
  return columns;
}

bool ReadBound(const Statement& statement, const std::vector<ColumnInfo>& columns, RowStore& rows) {
  Block block(statement, columns);
  Cells cells(columns.size());
  while (const auto fetched = block.Fetch()) {
    for (std::size_t row = 0; row < *fetched; ++row) {
      if (!block.Read(row, cells)) {
        return false;
      }
      rows.Append(cells);
    }
  }
  return true;
}

void ReadUnbound(const Statement& statement, const std::vector<ColumnInfo>& columns, RowStore& rows) {
  std::vector<std::string> values(columns.size());
  Cells cells(columns.size());
  for (;;) {
    const SQLRETURN rc = statement.WaitFor([&] { return SQLFetch(statement.handle()); });
    if (rc == SQL_NO_DATA) {
      return;
    }
    statement.Require(rc, ReadingFailed);
    for (std::size_t i = 0; i < columns.size(); ++i) {
      if (!ReadWhole(statement, columns[i].number, values[i])) {
        cells[i].reset();
      } else {
        cells[i] = PlainText(columns[i].kind, values[i].data(), values[i].size());
      }
    }
    rows.Append(cells);
  }
}

} // namespace lumoscad::ado::detail
