#include "support/NoLocks.hpp"

#include <cerrno>
#include <sys/file.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace lumoscad::test {
namespace {

bool noLocks = false;

} // namespace

NoLocks::NoLocks() {
  noLocks = true;
}

NoLocks::~NoLocks() {
  noLocks = false;
}

} // namespace lumoscad::test

// NOLINTNEXTLINE(readability-inconsistent-declaration-parameter-name): the C library's names are reserved
extern "C" int flock(int descriptor, int operation) noexcept {
  if (lumoscad::test::noLocks) {
    errno = ENOLCK;
    return -1;
  }
  return static_cast<int>(::syscall(SYS_flock, descriptor, operation));
}
