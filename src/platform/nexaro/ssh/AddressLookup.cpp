#include "platform/nexaro/ssh/AddressLookup.hpp"

#include "platform/nexaro/LinkErrors.hpp"
#include "platform/nexaro/Texts.hpp"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <list>
#include <mutex>
#include <new>
#include <unistd.h>
#include <utility>

namespace lumoscad::nexaro {

namespace {

constexpr const char* NameRemedy =
    "Verificare la rete di questa macchina, o indicare l'host con il suo indirizzo numerico (-H).";

/// One look-up and all that its thread reads and writes.
struct LookUp {
  LookUp(std::string name, unsigned number) : host(std::move(name)), port(std::to_string(number)) {
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_NUMERICSERV;
    request.ar_name = host.c_str();
    request.ar_service = port.c_str();
    request.ar_request = &hints;
  }
  LookUp(const LookUp&) = delete;
  LookUp& operator=(const LookUp&) = delete;
  ~LookUp() { static_cast<void>(Release()); }

  [[nodiscard]] Addresses Release() { return {std::exchange(request.ar_result, nullptr), &::freeaddrinfo}; }

  std::string host;
  std::string port;
  addrinfo hints{};
  gaicb request{};
};

/// The look-ups that were given up while their threads were at work: what those still write to must outlive them. They
/// are never freed but by a later look-up that finds them ended, for at the program's end, or when the component is
/// unloaded, a thread may be at work yet.
class Abandoned {
 public:
  static Abandoned& All() {
    static auto* const All = new Abandoned; // NOLINT(cppcoreguidelines-owning-memory): see above
    return *All;
  }
  void Take(std::unique_ptr<LookUp> lookUp) {
    const std::lock_guard guard(key_);
    lookUps_.push_back(std::move(lookUp));
  }
  void RemoveFinished() {
    const std::lock_guard guard(key_);
    lookUps_.remove_if([](const auto& lookUp) { return ::gai_error(&lookUp->request) != EAI_INPROGRESS; });
  }

 private:
  std::mutex key_;
  std::list<std::unique_ptr<LookUp>> lookUps_;
};

/// Whether the threads that look names up can be relied on. They stay behind in the parent of a forked process, which
/// would go on counting on them.
bool OwnThreads() {
  static std::atomic<pid_t> owner{0};
  pid_t nobody = 0;
  const pid_t mine = ::getpid();
  return owner.compare_exchange_strong(nobody, mine) || nobody == mine;
}

/// Waits for the end of a look-up under way, or until `deadline`.
void Wait(const gaicb& request, Deadline deadline) {
  const gaicb* const requests[] = {&request};
  Looks looks;
  bool last = false;
  while (!last && ::gai_error(const_cast<gaicb*>(&request)) == EAI_INPROGRESS) {
    const auto look = looks.Next(deadline).value_or(0);
    last = TimeLeft(deadline).count() == 0;
    const timespec limit{look / 1000, (look % 1000) * 1'000'000L};
    ::gai_suspend(requests, 1, &limit);
  }
}

/// The outcome of the look-up: an EAI_... value, EAI_INPROGRESS where it was given up. Raises a run-time error where
/// the system could not begin it.
int SearchWithLimit(const std::string& host, unsigned port, Deadline deadline, const std::string& operation,
                    Addresses& found) {
  auto& abandoned = Abandoned::All();
  abandoned.RemoveFinished();
  auto lookUp = std::make_unique<LookUp>(host, port);
  gaicb* requests[] = {&lookUp->request};
  sigevent nobody{};
  nobody.sigev_notify = SIGEV_NONE;
  if (const int outcome = ::getaddrinfo_a(GAI_NOWAIT, requests, 1, &nobody); outcome != 0) {
    if (outcome == EAI_MEMORY) {
      return outcome;
    }
    // Only here the system lacks something of its own, a thread.
    throw SystemError(operation, EAGAIN);
  }
  Wait(lookUp->request, deadline);
  if (::gai_error(&lookUp->request) == EAI_INPROGRESS && ::gai_cancel(&lookUp->request) == EAI_CANCELED) {
    return EAI_INPROGRESS;
  }
  const int outcome = ::gai_error(&lookUp->request);
  if (outcome == EAI_INPROGRESS) {
    abandoned.Take(std::move(lookUp));
    return outcome;
  }
  found = lookUp->Release();
  return outcome;
}

/// Asks nobody for what is written in numbers; a name goes to the name service.
int Search(const std::string& host, unsigned port, Deadline deadline, const std::string& operation, Addresses& found) {
  LookUp lookUp(host, port);
  lookUp.hints.ai_flags |= AI_NUMERICHOST;
  int outcome = ::getaddrinfo(lookUp.host.c_str(), lookUp.port.c_str(), &lookUp.hints, &lookUp.request.ar_result);
  if (outcome == EAI_NONAME && OwnThreads()) {
    return SearchWithLimit(host, port, deadline, operation, found);
  }
  if (outcome == EAI_NONAME) {
    lookUp.hints.ai_flags = AI_NUMERICSERV;
    outcome = ::getaddrinfo(lookUp.host.c_str(), lookUp.port.c_str(), &lookUp.hints, &lookUp.request.ar_result);
  }
  found = lookUp.Release();
  return outcome;
}

} // namespace

RuntimeError LookUpError(int outcome, std::chrono::milliseconds timeout, const std::string& operation) {
  switch (outcome) {
  case EAI_INPROGRESS:
    return LinkError(operation + ": il servizio dei nomi di questa macchina non ha risposto entro " + Seconds(timeout) +
                     ". " + NameRemedy);
  case EAI_AGAIN:
  case EAI_FAIL:
    return LinkError(operation + ": il servizio dei nomi non risponde. Verificare la rete di questa macchina.");
  case EAI_SYSTEM:
    return LinkError(operation + ": il servizio dei nomi di questa macchina ha dato un errore. " + NameRemedy);
  default:
    return LinkError(operation + ": l'indirizzo non esiste. Verificare l'indirizzo dell'host (-H).");
  }
}

Addresses FindAddresses(const std::string& host, unsigned port, Deadline deadline, std::chrono::milliseconds timeout,
                        const std::string& operation) {
  Addresses found(nullptr, &::freeaddrinfo);
  const int outcome = Search(host, port, deadline, operation, found);
  if (outcome == EAI_MEMORY) {
    throw std::bad_alloc();
  }
  if (outcome != 0) {
    throw LookUpError(outcome, timeout, operation);
  }
  return found;
}

} // namespace lumoscad::nexaro
