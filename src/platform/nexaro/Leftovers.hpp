#pragma once

#include <string>

namespace lumoscad::nexaro {

/// The name of a file that process `process` writes before it gets its final one; `number` tells its files apart.
[[nodiscard]] std::string TemporaryName(long process, unsigned number);

/// Removes from `directory` what a program of this user left there under such a name when it was killed. Whoever writes
/// such a file holds a lock (flock(2)) on it. A file is removed when nobody holds the lock, and the process that its
/// name tells is gone, or began after the file was last written and only has the other's number. What cannot be looked
/// at or removed stays.
void RemoveLeftovers(const std::string& directory) noexcept;

} // namespace lumoscad::nexaro
