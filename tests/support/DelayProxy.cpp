#include "support/DelayProxy.hpp"

#include "support/Loopback.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <ctime>
#include <deque>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <system_error>
#include <unistd.h>

namespace lumoscad::test {
namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::milliseconds LookAtTheEnd{50};

void AtOnce(int socket) {
  const int yes = 1;
  ::setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
}

/// A parcel, the round trip that it belongs to, and when it has arrived; the empty one is the end.
struct Parcel {
  Clock::time_point due;
  int trip;
  std::string bytes;
};

/// Waits for something to read, at most until the first parcel is due. With a negative `socket` for that alone.
bool Readable(int socket, const std::deque<Parcel>& parcels) {
  const auto left = parcels.empty() ? Clock::duration(LookAtTheEnd) : parcels.front().due - Clock::now();
  const auto wait = std::clamp<std::chrono::nanoseconds>(left, std::chrono::nanoseconds(0), LookAtTheEnd);
  const timespec limit{0, static_cast<long>(wait.count())};
  pollfd waited{socket, POLLIN, 0};
  return ::ppoll(&waited, 1, &limit, nullptr) > 0;
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
    : destination_(destination), delay_(delay), listening_(Listen()) {
  if (!listening_.Opened()) {
    throw std::system_error(errno, std::generic_category(), "delay proxy");
  }
  port_ = PortOf(listening_);
  accepting_ = std::thread([this] { Accept(); });
}

DelayProxy::~DelayProxy() {
  finish_ = true;
  accepting_.join();
  for (std::thread& carrier : carriers_) {
    carrier.join();
  }
}

int DelayProxy::Trips() const noexcept {
  return trips_;
}

void DelayProxy::Accept() {
  while (!finish_) {
    pollfd waited{listening_.Number(), POLLIN, 0};
    if (::poll(&waited, 1, static_cast<int>(LookAtTheEnd.count())) <= 0) {
      continue;
    }
    Line& line = lines_.emplace_back();
    line.client = base::Descriptor(::accept4(listening_.Number(), nullptr, nullptr, SOCK_CLOEXEC));
    line.server = Attach(destination_);
    if (!line.server.Opened()) {
      ::shutdown(line.client.Number(), SHUT_RDWR);
      continue;
    }
    AtOnce(line.client.Number());
    AtOnce(line.server.Number());
    carriers_.emplace_back([this, &line] { Carry(line, Direction::ToServer); });
    carriers_.emplace_back([this, &line] { Carry(line, Direction::ToClient); });
  }
}

void DelayProxy::Carry(Line& line, Direction direction) {
  const bool toServer = direction == Direction::ToServer;
  const int from = (toServer ? line.client : line.server).Number();
  const int to = (toServer ? line.server : line.client).Number();
  std::deque<Parcel> parcels;
  std::array<char, 65536> buffer{};
  bool open = true;
  while (!finish_ && (open || !parcels.empty())) {
    if (Readable(open ? from : -1, parcels)) {
      const ssize_t got = ::recv(from, buffer.data(), buffer.size(), 0);
      open = got > 0;
      parcels.push_back({Clock::now() + delay_, toServer ? line.heardByClient + 1 : line.heardByServer.load(),
                         std::string(buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(got, 0)))});
    }
    while (!parcels.empty() && parcels.front().due <= Clock::now()) {
      Note(line, direction, parcels.front().trip);
      if (parcels.front().bytes.empty() || !Send(to, parcels.front().bytes)) {
        ::shutdown(to, SHUT_WR);
      }
      parcels.pop_front();
    }
  }
}

/// Before it is handed on: whoever hears it may answer at once.
void DelayProxy::Note(Line& line, Direction direction, int trip) {
  std::atomic<int>& heard = direction == Direction::ToServer ? line.heardByServer : line.heardByClient;
  if (trip > heard) {
    trips_ += direction == Direction::ToClient ? trip - heard : 0;
    heard = trip;
  }
}

} // namespace lumoscad::test
