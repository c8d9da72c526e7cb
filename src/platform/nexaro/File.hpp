#pragma once

#include "platform/base/Descriptor.hpp"
#include "platform/nexaro/Termine.hpp"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <sys/types.h>

namespace lumoscad::nexaro {

// `operazione` begins the text of the run-time error that each of these raises.

/// A file under a private name beside `destinazione`, removed again unless it got its final name.
class FileProvvisorio {
 public:
  /// `modo` holds the permissions before the umask. What killed programs left in the directory is removed.
  FileProvvisorio(const std::string& destinazione, mode_t modo, const std::string& operazione);
  FileProvvisorio(const FileProvvisorio&) = delete;
  FileProvvisorio& operator=(const FileProvvisorio&) = delete;
  ~FileProvvisorio();

  void Scrivi(std::string_view dati, const std::string& operazione) const;

  /// Brings the file to the disk and renames it; what stands at `destinazione` is replaced, a symbolic link there is
  /// not followed.
  void Pubblica(const std::string& destinazione, const std::string& operazione);

 private:
  std::string nome_;
  base::Descriptor descrittore_;
  bool definitivo_ = false;
};

/// What stands before the last slash of an absolute path: the directory that the file is in.
[[nodiscard]] std::string ParentDirectory(std::string_view path);

/// 0 where an ordinary file stands at `percorso`, or a link to one; otherwise the error (`errno`) that says what is
/// wrong.
[[nodiscard]] int ErroreOrdinario(const std::string& percorso);

/// Opens an ordinary file for reading; anything else is refused without waiting for it.
[[nodiscard]] base::Descriptor ApriOrdinario(const std::string& percorso, const std::string& operazione);

/// Reads up to the size of `tampone`; 0 at the end of the file.
[[nodiscard]] std::size_t LeggiBlocco(const base::Descriptor& file, std::span<char> tampone,
                                      const std::string& operazione);

/// How much of a file is copied.
struct Misura {
  std::uint64_t massimo = std::numeric_limits<std::uint64_t>::max(); ///< in bytes
  bool tronca = false; ///< of a longer file the beginning is copied; otherwise it is refused
};

/// Copies the ordinary file `sorgente` to `destinazione`, which appears whole, as far as `misura` goes, or not at all.
/// `modo` holds the permissions before the umask. Where `attesa` is set, no more is read
/// once that time has passed; what had been read by then counts, if it was all.
void CopiaFile(const std::string& sorgente, const std::string& destinazione, mode_t modo, const std::string& operazione,
               const Misura& misura = {}, std::optional<std::chrono::milliseconds> attesa = std::nullopt);

} // namespace lumoscad::nexaro
