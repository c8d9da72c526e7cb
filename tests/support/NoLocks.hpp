#pragma once

namespace lumoscad::test {

/// For the life of the object no file system has locks of whole files (flock(2)). The program's own flock stands in the
/// library's place.
class NoLocks {
 public:
  NoLocks();
  NoLocks(const NoLocks&) = delete;
  NoLocks& operator=(const NoLocks&) = delete;
  ~NoLocks();
};

} // namespace lumoscad::test
