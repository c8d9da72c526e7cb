#include "platform/nexaro/LinkErrors.hpp"

#include "platform/base/SystemError.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

namespace lumoscad::nexaro {

namespace {

struct Entry {
  int code;
  int number;
};

/// Those that have a number of their own.
constexpr auto Entries = std::to_array<Entry>({
    {ENOENT, errors::FileNotFound},
    {EACCES, PermissionError},
    {EPERM, PermissionError},
    {EROFS, errors::FileAccess},
    {ENOTDIR, errors::FileAccess},
    {EISDIR, errors::FileAccess},
    {EEXIST, errors::FileAccess},
    {ENOTEMPTY, errors::FileAccess},
    {ELOOP, errors::FileAccess},
    {ENAMETOOLONG, errors::FileAccess},
    {EINVAL, errors::FileAccess},
    {ETXTBSY, errors::FileAccess},
    {EBUSY, errors::FileAccess},
    {ENXIO, errors::FileAccess},
    {ENOMEM, errors::OutOfMemory},
});

} // namespace

RuntimeError SystemError(std::string_view operation, int code) {
  const auto entry =
      std::find_if(Entries.begin(), Entries.end(), [code](const Entry& mine) { return mine.code == code; });
  return {entry != Entries.end() ? entry->number : LinkFailure,
          std::string(operation) + ": " + base::SystemErrorText(code) + "."};
}

RuntimeError LinkError(std::string description) {
  return {LinkFailure, std::move(description)};
}

} // namespace lumoscad::nexaro
