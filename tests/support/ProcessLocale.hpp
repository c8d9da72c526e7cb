#pragma once

#include "support/Paths.hpp"

#include <clocale>
#include <cstdlib>
#include <stdexcept>
#include <string>

namespace lumoscad::test {

/// Puts one of the locales of the build folder in force for a scope, in one category or in all (LC_ALL).
class ProcessLocale {
 public:
  ProcessLocale(int category, const char* name) : category_(category), before_(std::setlocale(category, nullptr)) {
    setenv("LOCPATH", (BuildFolder() / "locali").c_str(), 1);
    if (std::setlocale(category, name) == nullptr) {
      throw std::runtime_error(std::string("no such locale: ") + name);
    }
  }
  ProcessLocale(const ProcessLocale&) = delete;
  ProcessLocale& operator=(const ProcessLocale&) = delete;
  ~ProcessLocale() { std::setlocale(category_, before_.c_str()); }

 private:
  int category_;
  std::string before_;
};

/// Puts an environment variable in place for a scope.
class EnvironmentSetting {
 public:
  EnvironmentSetting(const char* name, const char* value) : name_(name) {
    if (const char* const before = std::getenv(name); before != nullptr) {
      before_ = before;
      wasSet_ = true;
    }
    setenv(name, value, 1);
  }
  EnvironmentSetting(const EnvironmentSetting&) = delete;
  EnvironmentSetting& operator=(const EnvironmentSetting&) = delete;
  ~EnvironmentSetting() {
    if (wasSet_) {
      setenv(name_, before_.c_str(), 1);
    } else {
      unsetenv(name_);
    }
  }

 private:
  const char* name_;
  std::string before_;
  bool wasSet_ = false;
};

} // namespace lumoscad::test
