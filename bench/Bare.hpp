#pragma once

#include "platform/ado/Handles.hpp"

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad::bench {

/// Raises where a call of the bare program failed.
void Demand(SQLRETURN outcome);

/// A plain program's connection.
class BareConnection {
 public:
  /// `connectionText` is a connection text of the component; the driver gets the same settings.
  explicit BareConnection(const std::string& connectionText);
  BareConnection(const BareConnection&) = delete;
  BareConnection& operator=(const BareConnection&) = delete;
  ~BareConnection() { End(); }

  /// Ends the connection, on which no statement may be left.
  void End();
  [[nodiscard]] SQLHANDLE get() const noexcept { return connection_.get(); }

 private:
  ado::detail::Handle<SQL_HANDLE_ENV> environment_{SQLHANDLE{nullptr}};
  ado::detail::Handle<SQL_HANDLE_DBC> connection_;
  bool open_ = true;
};

/// A plain program's statement, prepared once and sent as often as one likes: columns bound as text in buffers like the
/// component's, four bytes a character.
class BareCommand {
 public:
  /// Reads up to `rows` rows at a time, fewer when they are wide. `spaces` are the bytes of a text of each column,
  /// where they are known from an earlier run: the driver is asked otherwise, and may ask the server.
  BareCommand(const BareConnection& connection, std::string_view statement, std::vector<std::size_t> spaces = {},
              std::size_t rows = 1024);
  BareCommand(const BareCommand&) = delete;
  BareCommand& operator=(const BareCommand&) = delete;
  ~BareCommand() = default;

  /// Sends it with these texts and reads every row; `line`, where it is given, is called with the place of each in its
  /// block. Returns how many rows there were.
  std::size_t Run(std::vector<std::string> parameters, const std::function<void(std::size_t)>& line = nullptr);
  /// Sends it and returns the milliseconds until the driver has every row; none is read.
  double UntilLastRow(std::vector<std::string> parameters);
  [[nodiscard]] const std::vector<std::size_t>& Spaces() const noexcept { return spaces_; }
  /// A text of the block just read; the empty text where it is null.
  [[nodiscard]] std::string_view Text(std::size_t line, std::size_t column) const;

 private:
  void Execute(std::vector<std::string>& parameters);
  void Attach();

  ado::detail::Handle<SQL_HANDLE_STMT> command_;
  std::size_t rows_;
  std::vector<std::size_t> spaces_; ///< bytes of a text of each column
  std::vector<char*> columns_;      ///< the first text of each column
  std::unique_ptr<char[]> texts_;
  std::vector<SQLLEN> lengths_;
  std::vector<SQLLEN> longOnes_; ///< of the parameters
  SQLULEN fetched_ = 0;
};

} // namespace lumoscad::bench
