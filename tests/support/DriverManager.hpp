#pragma once

#include <dlfcn.h>
#include <stdexcept>

namespace lumoscad::test {

/// The driver manager's own function behind the one of that name with which a test program stands in for it.
template <typename Function> Function* RealFunction(const char* name) {
  auto* real = reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name)); // NOLINT: how the system hands out functions
  if (real == nullptr) {
    throw std::runtime_error(name);
  }
  return real;
}

} // namespace lumoscad::test
