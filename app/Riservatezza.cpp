#include "Riservatezza.hpp"

#include <sys/prctl.h>
#include <sys/resource.h>

namespace lumoscad {

void VietaImmagineDiMemoria() noexcept {
  const rlimit niente{0, 0};
  ::setrlimit(RLIMIT_CORE, &niente);
#ifndef LUMOSCAD_SANITIZZATO
  // The limit counts for files alone: a crash handler that the system pipes the image to gets it all the same, unless
  // the process is closed. A leak check has to look into the process, and needs it open.
  ::prctl(PR_SET_DUMPABLE, 0);
#endif
}

} // namespace lumoscad
