#pragma once

#include <libssh/libssh.h>
#include <memory>

namespace lumoscad::nexaro {

struct ReleaseKey {
  void operator()(ssh_key key) const { ssh_key_free(key); }
};

/// A key of either end, which goes with the object.
using Key = std::unique_ptr<ssh_key_struct, ReleaseKey>;

} // namespace lumoscad::nexaro
