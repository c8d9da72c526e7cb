#include "platform/nexaro/Workstation.hpp"

#include "platform/Hash.hpp"
#include "platform/nexaro/LinkErrors.hpp"
#include "platform/nexaro/Settings.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <fstream>
#include <unistd.h>

namespace lumoscad::nexaro {
namespace {

std::string MachineName() {
  std::array<char, 256> name{};
  if (::gethostname(name.data(), name.size() - 1) != 0) {
    throw SystemError("Lettura del nome della macchina", errno);
  }
  return name.data();
}

/// A desktop session has a number of its own (pam_systemd(8)); elsewhere the session of the terminal counts.
std::string LoginSession() {
  auto number = Setting("XDG_SESSION_ID");
  return number.empty() ? "s" + std::to_string(::getsid(0)) : number;
}

/// The first line of a file of the system, empty where there is none.
std::string FirstLine(const char* path) {
  std::ifstream file(path);
  std::string line;
  std::getline(file, line);
  return line;
}

/// As much of a text as a file name can hold everywhere.
std::string Readable(std::string text, std::size_t maximum) {
  text.resize(std::min(text.size(), maximum));
  std::replace_if(
      text.begin(), text.end(),
      [](char c) {
        return !((c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '.' || c == '_' ||
                 c == '-');
      },
      '_');
  return text;
}

std::string Hexadecimal(std::uint32_t value) {
  std::string digits(8, '0');
  for (auto digit = digits.rbegin(); digit != digits.rend(); ++digit, value >>= 4U) {
    *digit = "0123456789abcdef"[value & 0xFU];
  }
  return digits;
}

} // namespace

std::string DefaultWorkstation() {
  const auto machine = MachineName();
  const auto session = LoginSession();
  auto user = CurrentUser().name;
  const auto userNumber = std::to_string(::geteuid());
  if (user.empty()) {
    user = userNumber;
  }
  // Names repeat: of machines that were never given one, of users shortened to what a file name takes, of sessions
  // after a restart. What tells them apart is in the hash alone, since a machine's number is not for strangers.
  std::uint64_t fingerprint = Hash("lumoscad");
  for (const auto& part : {machine, FirstLine("/etc/machine-id"), FirstLine("/proc/sys/kernel/random/boot_id"),
                           userNumber, user, session}) {
    fingerprint = Hash("\n", Hash(part, fingerprint));
  }
  const auto folded = static_cast<std::uint32_t>(fingerprint ^ (fingerprint >> 32U));
  return Readable(machine, 40) + "-" + Readable(user, 32) + "-" + Readable(session, 10) + "-" + Hexadecimal(folded);
}

} // namespace lumoscad::nexaro
