#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <sys/types.h>

namespace lumoscad {

/// Whether the name of a file, too, is on the disk when it was written: without that the file may be the old one again
/// after the machine has failed.
enum class Durable { Content, NameToo };

/// Replaces the private local file `path` (mode 0600) in one step: whoever reads it finds the old content or the new
/// one, whole, also after the machine has failed. `beside` is the name that the new one has until it is flushed, in the
/// same directory; an ordinary file of that name is removed first. Takes no memory unless it fails. Raises error 75
/// with an Italian text, 53 when the directory is not there.
void ReplaceLocalFile(const std::string& path, const std::string& beside, std::string_view content,
                      Durable durable = Durable::Content);

/// Puts a file at `mark` without room for a content: `path` under this name, or where that cannot be, an empty one. For
/// a disk that is full. Takes no memory. False where neither works.
bool MarkLocalFile(const std::string& path, const std::string& mark) noexcept;

/// A local file that this process holds by a lock (flock(2)), for as long as the object lives. The lock goes with the
/// process, however that ends, and a child forked meanwhile does not have it. Where the system has no such locks, none
/// is held.
class HeldFile {
 public:
  HeldFile() noexcept = default;
  HeldFile(HeldFile&& other) noexcept;
  HeldFile& operator=(HeldFile&& other) noexcept;
  HeldFile(const HeldFile&) = delete;
  HeldFile& operator=(const HeldFile&) = delete;
  ~HeldFile() { LetGo(); }

  /// Puts a new private file (mode 0600) at `path`, which is there as a whole or not at all, also after the machine has
  /// failed, and holds it from before anybody sees it. `beside` as above. Nothing where `path` is taken, by whatever it
  /// be. Raises as above.
  [[nodiscard]] static std::optional<HeldFile> Publish(const std::string& path, const std::string& beside,
                                                       std::string_view content);
  /// Holds the ordinary file `path`, which nobody writes. Nothing where another holder has it. Raises error 53 when it
  /// is not there, 75 otherwise.
  [[nodiscard]] static std::optional<HeldFile> Take(const std::string& path);

  /// Lets go of the file, which stays.
  void LetGo() noexcept;
  /// Whether this process holds it.
  [[nodiscard]] bool Held() const noexcept;
  /// Marks the file, which must be held and this user's, in its permissions, by the sticky bit, which means nothing for
  /// a file: for a disk that has no room for another name either. Takes no memory. Whether it could be marked tells
  /// `MarkedInPlace`.
  void MarkInPlace() const noexcept;

 private:
  explicit HeldFile(int number);
  static HeldFile Hold(int number);

  int number_ = -1;
  pid_t process_ = 0; ///< who took it
};

/// Whether the local file `path` was marked in its place.
[[nodiscard]] bool MarkedInPlace(const std::string& path) noexcept;

/// Whether somebody holds the local file `path`; not where it cannot be looked at.
[[nodiscard]] bool HeldBySomebody(const std::string& path) noexcept;

/// Whether another process of this machine may still be at work on the local file `path`, which was last written by the
/// process of this number: for a directory without locks, where nobody's holding can be seen. Where there are locks
/// they tell it, and this is false.
[[nodiscard]] bool WriterMayLive(const std::string& path, long process) noexcept;

/// Removes a local file. True when none is there any more.
bool RemoveLocalFile(const std::string& path) noexcept;

/// Whether a directory is on a file system that is kept in memory, and so ends with the machine's run.
[[nodiscard]] bool InMemory(const std::string& directory) noexcept;

/// The number of this process, which tells the names of its files from those of others.
[[nodiscard]] long ProcessNumber() noexcept;

} // namespace lumoscad
