#include "platform/nexaro/ssh/Session.hpp"

#include "platform/nexaro/File.hpp"
#include "platform/nexaro/LinkErrors.hpp"
#include "platform/nexaro/Texts.hpp"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <new>

namespace lumoscad::nexaro {

namespace {

/// How long one step of a login may take when the limit is over: the host reckons meanwhile.
constexpr std::chrono::milliseconds LookAtLogin{1000};

/// Bytes. While nothing is asked a host sends a few small messages at most: signs of life, new keys.
constexpr std::uint64_t MaxUnasked = std::uint64_t{256} * 1024;

void Set(ssh_session session, ssh_options_e option, const void* value, const char* name) {
  if (ssh_options_set(session, option, value) != SSH_OK) {
    throw LinkError("Preparazione del collegamento SSH: valore non ammesso per " + std::string(name) + ".");
  }
}

/// An address that could be taken for something else (a user, an option) is refused.
void CheckAddress(const std::string& host) {
  bool valid = !host.empty() && host.front() != '-' && host.size() <= 255;
  for (const char character : host) {
    const auto code = static_cast<unsigned char>(character);
    valid = valid && code > 0x20 && code < 0x7F &&
            std::string_view("@/\\\"'`,|*?!#$").find(character) == std::string_view::npos;
  }
  if (!valid) {
    throw LinkError("Indirizzo dell'host (-H) non ammesso: " + Quote(host) + ".");
  }
}

} // namespace

Session::Session(const SshSettings& settings, const std::string& host)
    : host_(host), timeout_(settings.timeout), openingDeadline_(NewDeadline()), session_(ssh_new()) {
  if (!session_) {
    throw std::bad_alloc();
  }
  CheckAddress(host);
  const bool no = false;
  // The settings of the link are the environment's alone: the files of the ssh program stay out of it.
  Set(Raw(), SSH_OPTIONS_PROCESS_CONFIG, &no, "la configurazione");
  Set(Raw(), SSH_OPTIONS_GLOBAL_KNOWNHOSTS, "/dev/null", "gli host noti");
  // The library would wait for a pipe. What is wrong with the file is said when the key is looked up in it.
  const auto knownHosts = OrdinaryFileError(settings.knownHosts) == 0 ? settings.knownHosts : "/dev/null";
  Set(Raw(), SSH_OPTIONS_KNOWNHOSTS, knownHosts.c_str(), "NEXARO_SSH_NOTI");
  Set(Raw(), SSH_OPTIONS_HOST, host.c_str(), "l'indirizzo dell'host (-H)");
  Set(Raw(), SSH_OPTIONS_PORT, &settings.port, "NEXARO_SSH_PORTA");
  Set(Raw(), SSH_OPTIONS_USER, settings.user.c_str(), "NEXARO_SSH_UTENTE");
  Open(OpenSocket(host, settings.port, openingDeadline_, timeout_, &lookUpNote_),
       "Collegamento all'host " + host + " (porta " + std::to_string(settings.port) + ")");
}

void Session::Open(base::Descriptor socket, const std::string& operation) {
  // The library keeps sixteen bits of the number that it is given.
  static constexpr socket_t HighestNumber = 0xFFFF;
  const socket_t number = socket.Number();
  if (number > HighestNumber) {
    throw SystemError(operation, EMFILE);
  }
  Set(Raw(), SSH_OPTIONS_FD, &number, "la connessione");
  LimitTimeout();
  static_cast<void>(socket.Release());
  const int outcome = ssh_connect(Raw());
  const auto detail = ForeignText(ssh_get_error(Raw()));
  // A descriptor that was handed over is closed by the library only where it takes it for its own. It does so here,
  // though it calls the number an error.
  const socket_t nobody = SSH_INVALID_SOCKET;
  static_cast<void>(ssh_options_set(Raw(), SSH_OPTIONS_FD, &nobody));
  oldError_ = ssh_get_error(Raw());
  if (outcome == SSH_OK) {
    return;
  }
  if (TimeLeft(openingDeadline_).count() == 0) {
    throw LinkError(operation + ": il servizio SSH non ha risposto entro " + Seconds(timeout_) +
                    ". Verificare che l'host sia in funzione." + lookUpNote_);
  }
  throw LinkError(operation + ": l'apertura del collegamento SSH non è riuscita (" + detail +
                  "). Verificare che a questa porta risponda un servizio SSH.");
}

Session::~Session() {
  if (event_) {
    ssh_event_remove_session(event_.get(), Raw());
  }
}

void Session::LimitTimeout() const {
  const auto left = TimeLeft(openingDeadline_);
  const auto limit = left.count() > 0 ? left : LookAtLogin;
  const long seconds = static_cast<long>(limit.count() / 1000);
  const long micro = static_cast<long>(limit.count() % 1000) * 1000;
  // Two zeros would mean the library's own default.
  Set(Raw(), SSH_OPTIONS_TIMEOUT, &seconds, "NEXARO_ATTESA");
  Set(Raw(), SSH_OPTIONS_TIMEOUT_USEC, &micro, "NEXARO_ATTESA");
}

Deadline Session::GreetingDeadline() const {
  static constexpr std::chrono::milliseconds GreetingTimeout{10000};
  return Clock::now() + std::min(timeout_, GreetingTimeout);
}

void Session::Activate() {
  ssh_set_blocking(Raw(), 0);
  ssh_set_counters(Raw(), &counted_, nullptr);
  event_.reset(ssh_event_new());
  if (!event_ || ssh_event_add_session(event_.get(), Raw()) != SSH_OK) {
    throw std::bad_alloc();
  }
}

bool Session::Alive() const {
  return !broken_ && ssh_is_connected(Raw()) != 0;
}

void Session::HandleEvents(Deadline deadline) {
  if (!HandleEventsUntil(deadline)) {
    throw ConnectionLost("nessuna risposta entro " + Seconds(timeout_));
  }
}

bool Session::HandleEventsUntil(Deadline deadline) {
  if (!Alive()) {
    throw ConnectionLost(LossReason());
  }
  const auto look = looks_.Next(deadline);
  if (!look) {
    return false;
  }
  const auto before = counted_.in_bytes;
  const int outcome = ssh_event_dopoll(event_.get(), *look);
  broken_ = outcome == SSH_ERROR;
  if (counted_.in_bytes != before) {
    heard_ = Clock::now();
  }
  return outcome != SSH_AGAIN || TimeLeft(deadline).count() > 0;
}

void Session::HandleEventsNow() {
  const auto before = counted_.in_bytes;
  while (Alive()) {
    const int outcome = ssh_event_dopoll(event_.get(), 0);
    broken_ = broken_ || outcome == SSH_ERROR;
    if (outcome != SSH_OK) {
      return;
    }
    if (counted_.in_bytes - before > MaxUnasked) {
      broken_ = true;
      throw ConnectionLost("l'host invia senza sosta dati che nessuno ha chiesto");
    }
  }
}

std::string Session::LossReason() const {
  const std::string detail = ssh_get_error(Raw());
  return "la connessione è caduta" +
         (detail.empty() || detail == oldError_ ? std::string() : " (" + ForeignText(detail) + ")");
}

void Session::Refused() const {
  if (!Alive()) {
    throw ConnectionLost(LossReason());
  }
  throw RequestRefused();
}

} // namespace lumoscad::nexaro
