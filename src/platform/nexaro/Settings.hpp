#pragma once

#include <chrono>
#include <string>

namespace lumoscad::nexaro {

/// The user of this process, as the system knows it; empty texts where it does not.
struct User {
  std::string name;
  std::string home;
};
[[nodiscard]] User CurrentUser();

/// The value of an environment variable, empty where it is not set.
[[nodiscard]] std::string Setting(const char* name);

/// `NEXARO_ATTESA`, the limit of every wait, in seconds (default 60). Raises a run-time error unless it is a positive
/// number of at most one day.
[[nodiscard]] std::chrono::milliseconds ReadTimeout();

} // namespace lumoscad::nexaro
