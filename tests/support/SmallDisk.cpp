#include "support/SmallDisk.hpp"

#include <cerrno>
#include <fcntl.h>
#include <fstream>
#include <sched.h>
#include <sys/mount.h>
#include <sys/statvfs.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace lumoscad::test {

namespace fs = std::filesystem;

namespace {

[[nodiscard]] std::string Why(const char* what) {
  return std::string(what) + ": " + std::generic_category().message(errno);
}

bool Write(const char* file, const std::string& text) {
  std::ofstream stream(file);
  stream << text << std::flush;
  return stream.good();
}

} // namespace

std::string SmallDisk::Separate() {
  const auto user = std::to_string(::geteuid());
  const auto group = std::to_string(::getegid());
  const bool root = ::geteuid() == 0;
  if (::unshare(root ? CLONE_NEWNS : CLONE_NEWUSER | CLONE_NEWNS) != 0) {
    return Why("unshare");
  }
  // Everybody stays who they were; without this they would be nobody.
  if (!root && !(Write("/proc/self/setgroups", "deny") && Write("/proc/self/uid_map", user + " " + user + " 1") &&
                 Write("/proc/self/gid_map", group + " " + group + " 1"))) {
    return Why("uid_map");
  }
  return ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 ? "" : Why("mount");
}

SmallDisk::SmallDisk(fs::path place, std::size_t bytes) : place_(std::move(place)) {
  const std::string options = "mode=0700,size=" + std::to_string(bytes);
  if (::mount("tmpfs", place_.c_str(), "tmpfs", MS_NODEV | MS_NOSUID, options.c_str()) != 0) {
    throw std::system_error(errno, std::generic_category(), "mount " + place_.string());
  }
}

SmallDisk::~SmallDisk() {
  // Whoever still has a file open there must not keep the directory.
  ::umount2(place_.c_str(), MNT_DETACH);
}

std::size_t SmallDisk::Free() const {
  struct statvfs state {};
  if (::statvfs(place_.c_str(), &state) != 0) {
    throw std::system_error(errno, std::generic_category(), place_.string());
  }
  return state.f_bavail * state.f_frsize;
}

void SmallDisk::Fill(std::size_t left) const {
  Clear();
  const std::size_t size = Free() - left;
  const int file = ::open(Filling().c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, S_IRUSR | S_IWUSR);
  const int error = file < 0 ? errno : size == 0 ? 0 : ::posix_fallocate(file, 0, static_cast<off_t>(size));
  ::close(file);
  if (error != 0) {
    throw std::system_error(error, std::generic_category(), Filling().string());
  }
}

void SmallDisk::LimitFiles(std::size_t left) const {
  struct statvfs state {};
  const bool known = ::statvfs(place_.c_str(), &state) == 0;
  const std::string options = "nr_inodes=" + std::to_string(state.f_files - state.f_ffree + left);
  if (!known || ::mount(nullptr, place_.c_str(), nullptr, MS_REMOUNT | MS_NODEV | MS_NOSUID, options.c_str()) != 0) {
    throw std::system_error(errno, std::generic_category(), "remount " + place_.string());
  }
}

void SmallDisk::Clear() const {
  fs::remove(Filling());
}

} // namespace lumoscad::test
