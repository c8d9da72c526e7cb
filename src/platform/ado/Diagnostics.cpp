#include "platform/ado/Diagnostics.hpp"

#include "platform/ado/Advice.hpp"
#include "platform/base/AsciiCase.hpp"
#include "platform/base/Utf8.hpp"

#include <algorithm>
#include <array>

namespace lumoscad::ado::detail {

namespace {

struct StateNumber {
  std::string_view prefix; ///< a whole SQLSTATE, or its class
  int number;
};

constexpr std::array<StateNumber, 11> Table{{
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

/// `text` in lower case, accented letters of western languages included; no length changes.
std::string Folded(std::string_view text) {
  std::string lower(text);
  unsigned char before = 0;
  for (char& c : lower) {
    const auto code = static_cast<unsigned char>(c);
    const bool accented = before == 0xC3 && code >= 0x80 && code <= 0x9E;
    c = accented ? static_cast<char>(code + 0x20) : base::LowerCase(c);
    before = code;
  }
  return lower;
}

bool BeginsCharacter(std::string_view text, std::size_t at) {
  return at >= text.size() || base::BeginsCharacter(text[at]);
}

std::size_t Characters(std::string_view text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), base::BeginsCharacter));
}

/// How many bytes of `text` from `at` on, whole characters, are a piece of `secret`.
std::size_t PieceOf(std::string_view secret, std::string_view text, std::size_t at) {
  std::size_t longest = 0;
  for (std::size_t from = 0; from + longest < secret.size(); ++from) {
    std::size_t length = 0;
    while (from + length < secret.size() && at + length < text.size() && secret[from + length] == text[at + length]) {
      ++length;
    }
    longest = std::max(longest, length);
  }
  while (longest > 0 && !BeginsCharacter(text, at + longest)) {
    --longest;
  }
  return longest;
}

struct Record {
  std::string state;
  SQLINTEGER native = 0;
  std::string text;
};

bool ReadRecord(SQLSMALLINT kind, SQLHANDLE handle, SQLSMALLINT index, Record& record) {
  std::array<SQLCHAR, 6> state{};
  SQLSMALLINT length = 0;
  std::string text(1024, '\0');
  for (;;) {
    const auto capacity = static_cast<SQLSMALLINT>(text.size());
    const SQLRETURN rc = SQLGetDiagRec(kind, handle, index, state.data(), &record.native,
                                       reinterpret_cast<SQLCHAR*>(text.data()), capacity, &length);
    if (!SQL_SUCCEEDED(rc)) {
      return false;
    }
    if (length < capacity || capacity >= 32000) {
      break;
    }
    text.assign(std::min<std::size_t>(static_cast<std::size_t>(length) + 1, 32000), '\0');
  }
  text.resize(std::min(text.find('\0'), text.size()));
  while (!text.empty() && (text.back() == '\n' || text.back() == '\r' || text.back() == ' ')) {
    text.pop_back();
  }
  record.state = reinterpret_cast<const char*>(state.data());
  record.text = std::move(text);
  return true;
}

} // namespace

int ErrorNumber(std::string_view sqlstate) noexcept {
  const auto found = std::find_if(Table.begin(), Table.end(),
                                  [&](const StateNumber& row) { return sqlstate.starts_with(row.prefix); });
  return found == Table.end() ? errors::Driver : found->number;
}

bool WithoutAnswer(std::string_view sqlstate) noexcept {
  return sqlstate.starts_with("08") || sqlstate.starts_with("HYT") || sqlstate == "25S01" || sqlstate == "40003";
}

std::string WithoutPassword(std::string text, std::string_view password) {
  constexpr std::string_view Blot = "***";
  constexpr std::size_t TellingPiece = 4;
  const std::string secret = Folded(password);
  const std::string lower = Folded(text);
  const std::size_t enough = std::min(secret.size(), TellingPiece);
  if (secret.empty()) {
    return text;
  }
  std::string clean;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t length = BeginsCharacter(text, at) ? PieceOf(secret, lower, at) : 0;
    // A password of one letter is left: blotted, it would spoil every word and be told by the holes.
    if (length >= enough && Characters(std::string_view(text).substr(at, length)) > 1) {
      clean += Blot;
      at += length;
    } else {
      clean += text[at++];
    }
  }
  return clean;
}

RuntimeError OdbcError(SQLSMALLINT kind, SQLHANDLE handle, std::string_view password, std::string_view context,
                       bool dead) {
  std::string description;
  Record first;
  Advice advice = Advice::None;
  Record record;
  for (SQLSMALLINT index = 1; index < 100 && ReadRecord(kind, handle, index, record); ++index) {
    if (index == 1) {
      first = record;
    } else {
      description += "; ";
    }
    description += '[' + record.state + "] " + WithoutPassword(record.text, password);
    if (advice == Advice::None) {
      advice = AdviceFor(record.state, record.native, record.text);
    }
  }
  if (description.empty()) {
    description = context;
  }
  std::string note(Sentence(advice));
  // PostgreSQL's driver may report no more than that its own savepoint failed.
  if (dead && advice != Advice::ConnectionLost) {
    note += (note.empty() ? "" : "\r\n") + std::string(Sentence(Advice::ConnectionLost));
  }
  return RuntimeError(ErrorNumber(first.state), std::move(description), "ODBC")
      .WithNote(std::move(note))
      .WithState(first.state, first.native);
}

} // namespace lumoscad::ado::detail
