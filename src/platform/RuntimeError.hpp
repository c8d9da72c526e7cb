#pragma once

#include <exception>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace lumoscad {

/// The numbers of the run-time errors that the component itself raises.
namespace errors {
inline constexpr int SubscriptOutOfRange = 9;     ///< subscript out of range
inline constexpr int TypeMismatch = 13;           ///< type mismatch
inline constexpr int FileNotFound = 53;           ///< file not found
inline constexpr int FileAccess = 75;             ///< path or file access error
inline constexpr int DuplicateKey = 457;          ///< key already in the collection
inline constexpr int OutOfMemory = 7;             ///< out of memory
inline constexpr int InternalError = 51;          ///< internal error
inline constexpr int Driver = -2147467259;        ///< a driver failure without a number of its own
inline constexpr int SearchFailed = -2147220990;  ///< a key look-up found no single row
inline constexpr int RecordedError = -2147220954; ///< an `Error` recorded by a screen or an update
inline constexpr int TransferError = -2147220905; ///< a reply or transfer error in a request writer
} // namespace errors

/// What became of a change: a transaction of the database, or what a program on the host was asked to do.
enum class TransactionOutcome {
  NotApplied, ///< nothing of it is kept; of a transaction also before the first and while one is open
  Applied,    ///< it is kept as a whole, and whoever keeps it said so
  Unknown     ///< it was asked for, and no answer to trust came back: all of it may be kept, or nothing. Or a database
              ///< driver connected anew in the middle, and a part may be kept
};

/// The one exception type of the component: number, description and source, as its callers show them.
class RuntimeError final : public std::exception {
 public:
  /// `description` is Italian text for the person; it may be empty where `source` says it all.
  RuntimeError(int number, std::string description, std::string source = "LumoScad")
      : number_(number), description_(std::move(description)), source_(std::move(source)) {}

  [[nodiscard]] int Number() const noexcept { return number_; }
  [[nodiscard]] const std::string& Description() const noexcept { return description_; }
  [[nodiscard]] const std::string& Source() const noexcept { return source_; }

  /// Sentences that explain the description to the person; they stand at the very end of every text that is made of it.
  [[nodiscard]] const std::string& Note() const noexcept { return note_; }
  /// The SQLSTATE of a failure that a database driver reported, else empty; and the server's own number, else 0.
  [[nodiscard]] const std::string& SqlState() const noexcept { return sqlState_; }
  [[nodiscard]] long NativeCode() const noexcept { return nativeCode_; }
  /// What became of the change that failed, where the place that raised this knows and says it.
  [[nodiscard]] std::optional<TransactionOutcome> Outcome() const noexcept { return outcome_; }

  RuntimeError&& WithNote(std::string note) && {
    note_ = std::move(note);
    return std::move(*this);
  }
  RuntimeError&& WithState(std::string_view sqlState, long nativeCode) && {
    sqlState_ = sqlState;
    nativeCode_ = nativeCode;
    return std::move(*this);
  }
  RuntimeError&& WithOutcome(std::optional<TransactionOutcome> outcome) && {
    outcome_ = outcome;
    return std::move(*this);
  }

  /// What a person reads: the description, or the source where there is no description.
  [[nodiscard]] const std::string& Text() const noexcept { return description_.empty() ? source_ : description_; }
  [[nodiscard]] const char* what() const noexcept override { return Text().c_str(); }

 private:
  int number_;
  std::string description_;
  std::string source_;
  std::string note_;
  std::string sqlState_;
  long nativeCode_ = 0;
  std::optional<TransactionOutcome> outcome_;
};

/// `text`, and on a line of its own `sentence`, where there is one.
[[nodiscard]] std::string WithSentence(std::string text, std::string_view sentence);

/// Turns the exception in flight into an `RuntimeError`; call it inside a catch block only.
/// Memory exhaustion becomes number 7, any other foreign exception number 51 with its text.
[[nodiscard]] RuntimeError CurrentError();

} // namespace lumoscad
