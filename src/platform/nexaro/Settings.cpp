#include "platform/nexaro/Settings.hpp"

#include "platform/nexaro/LinkErrors.hpp"

#include <charconv>
#include <cstdlib>
#include <pwd.h>
#include <unistd.h>
#include <vector>

namespace lumoscad::nexaro {

User CurrentUser() {
  std::vector<char> buffer(16384);
  passwd entry{};
  passwd* found = nullptr;
  if (::getpwuid_r(::geteuid(), &entry, buffer.data(), buffer.size(), &found) != 0 || found == nullptr) {
    return {};
  }
  return {entry.pw_name, entry.pw_dir};
}

std::string Setting(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr ? value : "";
}

std::chrono::milliseconds ReadTimeout() {
  static constexpr double OneDay = 86400.0;
  const auto text = Setting("NEXARO_ATTESA");
  if (text.empty()) {
    return std::chrono::seconds(60);
  }
  double seconds = 0.0;
  const auto* finish = text.data() + text.size();
  const auto [arrival, error] = std::from_chars(text.data(), finish, seconds, std::chars_format::fixed);
  // Written so that "nan" fails as well.
  if (error != std::errc() || arrival != finish || !(seconds > 0.0 && seconds <= OneDay)) {
    throw LinkError("NEXARO_ATTESA deve essere un numero positivo di secondi, non oltre 86400: vale «" + text + "».");
  }
  return std::chrono::ceil<std::chrono::milliseconds>(std::chrono::duration<double>(seconds));
}

} // namespace lumoscad::nexaro
