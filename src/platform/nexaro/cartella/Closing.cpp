#include "platform/nexaro/cartella/Closing.hpp"

#include <algorithm>
#include <cstddef>
#include <dirent.h>
#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace lumoscad::nexaro {

namespace {

using Kept = std::array<int, 5>;

/// False where the system has no such call, or does not let it be made.
bool CloseByRanges(const Kept& kept) {
  unsigned begin = 0;
  for (const int held : kept) {
    const auto number = static_cast<unsigned>(held);
    if (number > begin && ::close_range(begin, number - 1, 0) != 0) {
      return false;
    }
    begin = number + 1;
  }
  return ::close_range(begin, ~0U, 0) == 0;
}

void CloseOne(const Kept& kept, int number) {
  if (!std::binary_search(kept.begin(), kept.end(), number)) {
    ::close(number);
  }
}

/// The number that a name of the list stands for; negative for the directory's own names.
int NumberOf(const char* name) {
  int number = 0;
  for (; *name != '\0'; ++name) {
    if (*name < '0' || *name > '9') {
      return -1;
    }
    number = number * 10 + (*name - '0');
  }
  return number;
}

/// False where the process cannot see its own descriptors. opendir(3) would allocate, which a child of a process with
/// threads must not.
bool CloseByListing(const Kept& kept) {
  const int list = ::open("/proc/self/fd", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (list < 0) {
    return false;
  }
  alignas(dirent64) std::array<char, 4096> buffer;
  ssize_t count = 0;
  while ((count = ::getdents64(list, buffer.data(), buffer.size())) > 0) {
    for (std::size_t position = 0; position < static_cast<std::size_t>(count);) {
      const auto* entry = reinterpret_cast<const dirent64*>(buffer.data() + position);
      if (const int number = NumberOf(entry->d_name); number >= 0 && number != list) {
        CloseOne(kept, number);
      }
      position += entry->d_reclen;
    }
  }
  ::close(list);
  return count == 0;
}

void CloseOneByOne(const Kept& kept) {
  // Tried one by one up to a bound that takes a fraction of a second: a process may be allowed a thousand times as
  // many.
  static constexpr rlim_t Maximum = rlim_t{1} << 20U;
  rlimit limit{};
  const bool known = ::getrlimit(RLIMIT_NOFILE, &limit) == 0;
  const auto finish = static_cast<int>(known ? std::min(limit.rlim_max, Maximum) : Maximum);
  for (int number = 0; number < finish; ++number) {
    CloseOne(kept, number);
  }
}

} // namespace

void CloseAllBut(const Kept& kept) {
  if (!CloseByRanges(kept) && !CloseByListing(kept)) {
    CloseOneByOne(kept);
  }
}

} // namespace lumoscad::nexaro
