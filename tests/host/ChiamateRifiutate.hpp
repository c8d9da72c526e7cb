#pragma once

#include <cerrno>
#include <cstddef>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace lumoscad::test {

/// From now on the system refuses these two calls to this process, as an older kernel or a sandbox does.
inline void Rifiuta(long prima, long seconda, int codice) {
  sock_filter regole[] = {
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<unsigned>(prima), 1, 0),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<unsigned>(seconda), 0, 1),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | static_cast<unsigned>(codice)),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
  };
  sock_fprog programma{static_cast<unsigned short>(std::size(regole)), regole};
  if (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 || ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &programma) != 0) {
    throw std::runtime_error("seccomp");
  }
  if (::syscall(prima, ~0U, ~0U, 0U) != -1 || errno != codice) {
    throw std::runtime_error("the call is not refused");
  }
}

} // namespace lumoscad::test
