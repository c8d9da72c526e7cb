#include "DelayProxy.hpp"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <cerrno>
#include <deque>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <system_error>
#include <unistd.h>

namespace lumoscad::bench {
namespace {

using Clock = std::chrono::steady_clock;
constexpr int LookAtTheEnd = 50; ///< milliseconds

void Demand(bool succeeded, const char* what) {
  if (!succeeded) {
    throw std::system_error(errno, std::generic_category(), what);
  }
}

sockaddr_in Loopback(int port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

base::Descriptor Socket() {
  base::Descriptor made(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  Demand(made.Number() >= 0, "socket");
  return made;
}

void AtOnce(int socket) {
  const int yes = 1;
  ::setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
}

/// A piece, and when it has arrived; the empty one is the end.
struct Piece {
  Clock::time_point due;
  std::string bytes;
};

/// Milliseconds until the first piece is due, rounded up.
int Until(const std::deque<Piece>& pieces) {
  if (pieces.empty()) {
    return LookAtTheEnd;
  }
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(pieces.front().due - Clock::now());
  return static_cast<int>(std::clamp<long>(left.count(), 0, LookAtTheEnd));
}

bool Send(int to, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t sent = ::send(to, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent < 0 && errno != EINTR) {
      return false;
    }
    bytes.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(sent, 0)));
  }
  return true;
}

} // namespace

DelayProxy::DelayProxy(int destination, std::chrono::microseconds delay)
    : destination_(destination), delay_(delay), listening_(Socket()) {
  sockaddr_in address = Loopback(0);
  socklen_t size = sizeof address;
  auto* const generic = reinterpret_cast<sockaddr*>(&address);
  Demand(::bind(listening_.Number(), generic, size) == 0 && ::listen(listening_.Number(), 16) == 0 &&
             ::getsockname(listening_.Number(), generic, &size) == 0,
         "listen");
  port_ = ntohs(address.sin_port);
  accepting_ = std::thread([this] { Accept(); });
}

DelayProxy::~DelayProxy() {
  finish_ = true;
  accepting_.join();
  for (std::thread& carrier : carriers_) {
    carrier.join();
  }
}

void DelayProxy::Accept() {
  while (!finish_) {
    pollfd waited{listening_.Number(), POLLIN, 0};
    if (::poll(&waited, 1, LookAtTheEnd) <= 0) {
      continue;
    }
    const int client = sockets_.emplace_back(::accept4(listening_.Number(), nullptr, nullptr, SOCK_CLOEXEC)).Number();
    const int server = sockets_.emplace_back(Socket()).Number();
    const sockaddr_in address = Loopback(destination_);
    if (::connect(server, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
      ::shutdown(client, SHUT_RDWR);
      continue;
    }
    AtOnce(client);
    AtOnce(server);
    carriers_.emplace_back([this, client, server] { Carry(client, server); });
    carriers_.emplace_back([this, client, server] { Carry(server, client); });
  }
}

void DelayProxy::Carry(int from, int to) const {
  std::deque<Piece> pieces;
  std::array<char, 65536> buffer{};
  bool open = true;
  while (!finish_ && (open || !pieces.empty())) {
    pollfd waited{from, POLLIN, 0};
    ::poll(&waited, open ? 1 : 0, Until(pieces));
    if (open && waited.revents != 0) {
      const ssize_t got = ::recv(from, buffer.data(), buffer.size(), 0);
      open = got > 0;
      pieces.push_back(
          {Clock::now() + delay_, std::string(buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(got, 0)))});
    }
    while (!pieces.empty() && pieces.front().due <= Clock::now()) {
      if (pieces.front().bytes.empty() || !Send(to, pieces.front().bytes)) {
        ::shutdown(to, SHUT_WR);
      }
      pieces.pop_front();
    }
  }
}

} // namespace lumoscad::bench
