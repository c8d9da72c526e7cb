#include "platform/nexaro/ssh/Socket.hpp"

#include "platform/nexaro/LinkErrors.hpp"
#include "platform/nexaro/Texts.hpp"
#include "platform/nexaro/ssh/AddressLookup.hpp"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>

namespace lumoscad::nexaro {

namespace {

/// A name service that has taken this share of the wait, or this long, is named where the rest was not enough.
constexpr int Share = 4;
constexpr std::chrono::milliseconds LongLookUp{5000};

std::string LookUpNote(std::chrono::milliseconds duration, std::chrono::milliseconds timeout) {
  if (duration < std::min(timeout / Share, LongLookUp)) {
    return {};
  }
  return " Di questo tempo " + Seconds(duration) +
         " sono andati nella ricerca dell'indirizzo: verificare anche il servizio dei nomi di questa macchina.";
}

/// Waits for the outcome of a connection under way: 0, or the `errno` of its failure.
int AwaitStatus(int number, Deadline deadline) {
  for (;;) {
    pollfd ready{number, POLLOUT, 0};
    const auto left = TimeLeft(deadline).count();
    const int outcome = ::poll(&ready, 1, static_cast<int>(std::min<long>(left, 60000)));
    if (outcome > 0) {
      int error = 0;
      socklen_t length = sizeof error;
      return ::getsockopt(number, SOL_SOCKET, SO_ERROR, &error, &length) == 0 ? error : errno;
    }
    if (outcome < 0 && errno != EINTR) {
      return errno;
    }
    if (TimeLeft(deadline).count() == 0) {
      return ETIMEDOUT;
    }
  }
}

int Attempt(const addrinfo& address, Deadline deadline, base::Descriptor& socket) {
  socket = base::Descriptor(
      ::socket(address.ai_family, address.ai_socktype | SOCK_CLOEXEC | SOCK_NONBLOCK, address.ai_protocol));
  if (socket.Opened() && socket.Number() <= STDERR_FILENO) {
    // Keeps clear of the standard streams, which a calling program may have closed.
    socket = base::Descriptor(::fcntl(socket.Number(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
  }
  if (!socket.Opened()) {
    return errno;
  }
  const int switchedOn = 1;
  ::setsockopt(socket.Number(), IPPROTO_TCP, TCP_NODELAY, &switchedOn, sizeof switchedOn);
  ::setsockopt(socket.Number(), SOL_SOCKET, SO_KEEPALIVE, &switchedOn, sizeof switchedOn);
  if (::connect(socket.Number(), address.ai_addr, address.ai_addrlen) == 0) {
    return 0;
  }
  return errno == EINPROGRESS || errno == EINTR ? AwaitStatus(socket.Number(), deadline) : errno;
}

RuntimeError SocketError(const std::string& operation, int code, std::chrono::milliseconds timeout,
                         const std::string& note) {
  switch (code) {
  case ECONNREFUSED:
    return LinkError(operation + ": connessione rifiutata. Verificare che sull'host sia attivo il servizio SSH e che " +
                     "la porta (NEXARO_SSH_PORTA) sia giusta.");
  case ETIMEDOUT:
    return LinkError(operation + ": nessuna risposta entro " + Seconds(timeout) +
                     ". Verificare che l'host sia acceso e raggiungibile." + note);
  case EHOSTUNREACH:
  case ENETUNREACH:
    return LinkError(operation + ": host non raggiungibile. Verificare la rete e l'indirizzo dell'host (-H).");
  default:
    return SystemError(operation, code);
  }
}

} // namespace

base::Descriptor OpenSocket(const std::string& host, unsigned port, Deadline deadline,
                            std::chrono::milliseconds timeout, std::string* lookUpNote) {
  const auto operation = "Collegamento all'host " + host + " (porta " + std::to_string(port) + ")";
  const auto begin = Clock::now();
  const auto addresses = FindAddresses(host, port, deadline, timeout, operation);
  const auto note = LookUpNote(std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin), timeout);
  if (lookUpNote != nullptr) {
    *lookUpNote = note;
  }
  long remaining = 0;
  for (const auto* address = addresses.get(); address != nullptr; address = address->ai_next) {
    ++remaining;
  }
  int code = 0;
  for (const auto* address = addresses.get(); address != nullptr; address = address->ai_next, --remaining) {
    // An address that stays silent leaves their share of the wait to the others.
    base::Descriptor socket;
    code = Attempt(*address, Clock::now() + TimeLeft(deadline) / remaining, socket);
    if (code == 0) {
      return socket;
    }
  }
  throw SocketError(operation, code, timeout, note);
}

} // namespace lumoscad::nexaro
