#pragma once

#include <string>

namespace lumoscad::ado::detail {

/// The process' character set (LC_CTYPE) around the opening of a connection. PostgreSQL's driver takes it anew from the
/// environment at every opening, and converts all texts by it; the calling program gets back what it had.
class CharacterSet {
 public:
  CharacterSet();
  CharacterSet(const CharacterSet&) = delete;
  CharacterSet& operator=(const CharacterSet&) = delete;
  ~CharacterSet();

  /// Raises when the driver named `driver`, now that it has opened a connection, spoils letters with accents: with a
  /// character set other than UTF-8, unless it is that of "C" or "POSIX".
  void RequireSuited(const std::string& driver) const;

 private:
  std::string before_;   ///< the name of the process' LC_CTYPE
  std::string unsuited_; ///< the same where it is unsuited, otherwise empty
};

} // namespace lumoscad::ado::detail
