#include "platform/nexaro/ssh/Agente.hpp"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <system_error>

namespace lumoscad::nexaro {

namespace {

/// How long the system is left alone between two attempts at an agent whose queue is full.
constexpr std::chrono::milliseconds Pausa{20};

/// While it lives, a thread that is made takes no signal of the calling program.
class SenzaSegnali {
 public:
  SenzaSegnali() {
    sigset_t tutti;
    ::sigfillset(&tutti);
    ::pthread_sigmask(SIG_SETMASK, &tutti, &precedenti_);
  }
  SenzaSegnali(const SenzaSegnali&) = delete;
  SenzaSegnali& operator=(const SenzaSegnali&) = delete;
  ~SenzaSegnali() { ::pthread_sigmask(SIG_SETMASK, &precedenti_, nullptr); }

 private:
  sigset_t precedenti_{};
};

} // namespace

Agente::Agente(const std::string& presa, Termine termine) {
  Collega(presa, termine);
  if (errore_ == 0) {
    const SenzaSegnali senzaSegnali;
    try {
      filo_ = std::thread([this, termine] { Sorveglia(termine); });
    } catch (const std::system_error&) {
      // Without the thread nobody would end the wait.
      errore_ = EAGAIN;
      presa_.Close();
    }
  }
}

Agente::~Agente() {
  {
    const std::lock_guard guardia(chiave_);
    finito_ = true;
  }
  cambiato_.notify_all();
  if (filo_.joinable()) {
    filo_.join();
  }
}

void Agente::Collega(const std::string& presa, Termine termine) {
  sockaddr_un indirizzo{};
  indirizzo.sun_family = AF_UNIX;
  if (presa.size() >= sizeof indirizzo.sun_path) {
    errore_ = ENAMETOOLONG;
    return;
  }
  presa.copy(indirizzo.sun_path, presa.size());
  const base::Descriptor nuova(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  // Keeps clear of the standard streams, which a calling program may have closed.
  presa_ = base::Descriptor(nuova.Opened() ? ::fcntl(nuova.Number(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1) : -1);
  if (!presa_.Opened()) {
    errore_ = errno;
    return;
  }
  // A local connection is made at once or refused; it is refused too while the agent's queue is full.
  while (::connect(presa_.Number(), reinterpret_cast<const sockaddr*>(&indirizzo), sizeof indirizzo) != 0) {
    errore_ = errno;
    if (errore_ == EAGAIN && TempoRestante(termine).count() == 0) {
      errore_ = ETIMEDOUT;
    }
    if (errore_ != EAGAIN && errore_ != EINTR) {
      return;
    }
    std::this_thread::sleep_for(Pausa);
  }
  errore_ = 0;
}

void Agente::Sorveglia(Termine termine) {
  std::unique_lock guardia(chiave_);
  const auto finito = [this] { return finito_; };
  // The look beyond the limit begins when the limit is seen to be over: the calling program may have been stopped.
  if (!cambiato_.wait_until(guardia, termine, finito) && !cambiato_.wait_for(guardia, SguardoOltre, finito)) {
    scaduto_ = true;
    ::shutdown(presa_.Number(), SHUT_RDWR);
  }
}

base::Descriptor Agente::Presa() {
  base::Descriptor copia(::fcntl(presa_.Number(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
  errore_ = copia.Opened() ? 0 : errno;
  return copia;
}

bool Agente::Scaduto() {
  const std::lock_guard guardia(chiave_);
  return scaduto_ || errore_ == ETIMEDOUT;
}

} // namespace lumoscad::nexaro
