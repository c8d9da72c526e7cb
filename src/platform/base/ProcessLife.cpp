#include "platform/base/ProcessLife.hpp"

#include <cerrno>
#include <charconv>
#include <csignal>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>
#include <unistd.h>

namespace lumoscad::base {
namespace {

std::time_t Now(clockid_t clock) {
  timespec now{};
  ::clock_gettime(clock, &now);
  return now.tv_sec;
}

/// When a process began, by the clock of the day; none where the system does not tell.
std::optional<std::time_t> BeginningOf(pid_t process) {
  std::ifstream file("/proc/" + std::to_string(process) + "/stat");
  std::string field;
  std::getline(file, field, '\0');
  // The second field, the program's name, may hold blanks and parentheses; the start is field 22, in ticks since boot.
  const auto afterName = field.rfind(") ");
  if (afterName == std::string::npos) {
    return std::nullopt;
  }
  std::string_view rest(field);
  rest.remove_prefix(afterName + 2);
  for (int number = 3; number < 22; ++number) {
    const auto space = rest.find(' ');
    if (space == std::string_view::npos) {
      return std::nullopt;
    }
    rest.remove_prefix(space + 1);
  }
  unsigned long long ticks = 0;
  const auto perSecond = ::sysconf(_SC_CLK_TCK);
  const auto parsed = std::from_chars(rest.data(), rest.data() + rest.size(), ticks);
  if (parsed.ec != std::errc() || perSecond <= 0) {
    return std::nullopt;
  }
  return Now(CLOCK_REALTIME) - Now(CLOCK_BOOTTIME) +
         static_cast<std::time_t>(ticks / static_cast<unsigned long long>(perSecond));
}

} // namespace

bool MayHaveWritten(pid_t process, std::time_t written) {
  constexpr std::time_t Roundings = 3;
  if (::kill(process, 0) != 0 && errno == ESRCH) {
    return false;
  }
  const auto begin = BeginningOf(process);
  return !begin || *begin <= written + Roundings;
}

} // namespace lumoscad::base
