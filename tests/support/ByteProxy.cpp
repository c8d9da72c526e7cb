#include "support/ByteProxy.hpp"

#include "support/Loopback.hpp"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <stdexcept>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <system_error>
#include <utility>

namespace lumoscad::test {
namespace {

constexpr std::size_t Piece = 65536;
constexpr std::size_t ToServer = 0;
constexpr std::size_t ToClient = 1;

void Prepara(const base::Descriptor& socket) {
  const int yes = 1;
  ::setsockopt(socket.Number(), IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
  ::fcntl(socket.Number(), F_SETFL, ::fcntl(socket.Number(), F_GETFL) | O_NONBLOCK);
}

bool Postponed(int error) {
  return error == EAGAIN || error == EWOULDBLOCK || error == EINTR;
}

} // namespace

ByteProxy::ByteProxy(int destination, std::string host, int port)
    : destination_(destination), host_(std::move(host)), waker_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      listening_(Listen(port)) {
  if (!waker_.Opened() || !listening_.Opened()) {
    throw std::system_error(errno, std::generic_category(), "proxy");
  }
  port_ = PortOf(listening_);
  thread_ = std::thread([this] { Work(); });
}

ByteProxy::~ByteProxy() {
  OnThread([this] { finish_ = true; });
  thread_.join();
}

std::uint64_t ByteProxy::Passed(Direction direction) const {
  return passed_[static_cast<std::size_t>(direction)];
}

void ByteProxy::StrikeAfter(Direction direction, std::uint64_t howMany, Action action) {
  Fault fault;
  fault.action = action;
  fault.direction = direction;
  fault.howMany = howMany;
  Arm(fault);
}

void ByteProxy::StrikeAtSequence(std::string_view sequence, Moment moment, Action action, int whichTime) {
  Fault fault;
  fault.action = action;
  fault.sequence = sequence;
  fault.moment = moment;
  fault.times = whichTime;
  Arm(fault);
}

void ByteProxy::Strike(Action action) {
  StrikeAfter(Direction::ToServer, 0, action);
}

void ByteProxy::RefuseAfterStrike() {
  OnThread([this] { refuseAfter_ = true; });
}

void ByteProxy::Refuse(bool refuse) {
  bool listens = true;
  OnThread([this, refuse, &listens] {
    if (refuse) {
      listening_.Close();
    } else if (!listening_.Opened()) {
      listening_ = Listen(port_);
      listens = listening_.Opened();
    }
  });
  if (!listens) {
    throw std::runtime_error("the proxy's port has been taken");
  }
}

void ByteProxy::LeadTo(int destination) {
  destination_ = destination;
}

void ByteProxy::Restore() {
  OnThread([this] {
    fault_.reset();
    hold_ = false;
    refuseAfter_ = false;
    for (auto& relay : relays_) {
      relay.frozen = false;
      relay.replyForbidden = false;
    }
  });
}

bool ByteProxy::HasStruck(std::chrono::milliseconds limit) {
  std::unique_lock lock(key_);
  return changed_.wait_for(lock, limit, [this] { return hit_; });
}

void ByteProxy::OnThread(std::function<void()> work) {
  bool done = false;
  std::unique_lock lock(key_);
  jobs_.emplace_back([&done, work = std::move(work)] {
    work();
    done = true;
  });
  ::eventfd_write(waker_.Number(), 1);
  changed_.wait(lock, [&done] { return done; });
}

void ByteProxy::Arm(const Fault& fault) {
  OnThread([this, &fault] {
    fault_ = fault;
    hit_ = false;
    for (auto& relay : relays_) {
      relay.pipes[ToServer].tail.clear();
      relay.replyForbidden = false;
    }
    if (fault.direction && fault.howMany == 0) {
      Hit();
    }
  });
}

void ByteProxy::Work() {
  while (!finish_) {
    Wait();
    // What the server had sent before a request is carried before that request.
    for (const std::size_t direction : {ToClient, ToServer}) {
      for (auto& relay : relays_) {
        Move(relay, direction);
        if (toStrike_) {
          break;
        }
      }
      if (toStrike_) {
        break;
      }
    }
    {
      const std::lock_guard lock(key_);
      if (std::exchange(toStrike_, false)) {
        Hit();
      }
      DoJobs();
    }
    RemoveFinished();
  }
}

void ByteProxy::DoJobs() {
  for (const auto& work : std::exchange(jobs_, {})) {
    work();
  }
  changed_.notify_all();
}

void ByteProxy::Wait() {
  std::vector<pollfd> entries{{waker_.Number(), POLLIN, 0}, {listening_.Number(), POLLIN, 0}};
  if (!hold_) {
    for (const auto& relay : relays_) {
      for (const std::size_t direction : {ToServer, ToClient}) {
        if (relay.frozen) {
          continue;
        }
        const bool writes = !relay.pipes[direction].timeout.empty();
        const bool reads = relay.pipes[1 - direction].timeout.empty() && !relay.pipes[1 - direction].finished;
        const auto events = static_cast<short>((writes ? POLLOUT : 0) | (reads ? POLLIN : 0));
        // A negative number is passed over: a socket that has ended would wake the loop for ever.
        entries.push_back({events != 0 ? relay.sockets[direction].Number() : -1, events, 0});
      }
    }
  }
  ::poll(entries.data(), entries.size(), -1);
  eventfd_t isIgnored = 0;
  ::eventfd_read(waker_.Number(), &isIgnored);
  if ((entries[1].revents & POLLIN) != 0) {
    Accept();
  }
}

void ByteProxy::Accept() {
  base::Descriptor client(::accept4(listening_.Number(), nullptr, nullptr, SOCK_CLOEXEC));
  if (!client.Opened()) {
    return;
  }
  ++connections_;
  auto server = Attach(destination_, host_);
  if (!server.Opened()) {
    return;
  }
  Prepara(client);
  Prepara(server);
  relays_.emplace_back();
  relays_.back().sockets[ToServer] = std::move(server);
  relays_.back().sockets[ToClient] = std::move(client);
  ++open_;
}

void ByteProxy::Move(Relay& relay, std::size_t direction) {
  if (hold_ || relay.broken || relay.frozen) {
    return;
  }
  if (relay.pipes[direction].timeout.empty() && !relay.pipes[direction].finished) {
    Read(relay, direction);
  }
  if (!relay.broken) {
    Write(relay, direction);
  }
}

void ByteProxy::Read(Relay& relay, std::size_t direction) {
  std::array<char, Piece> data{};
  const auto got = ::recv(relay.sockets[1 - direction].Number(), data.data(), data.size(), 0);
  if (got < 0) {
    relay.broken = !Postponed(errno);
  } else if (got == 0) {
    relay.pipes[direction].finished = true;
  } else {
    const std::string_view piece(data.data(), static_cast<std::size_t>(got));
    const auto allowed = Allowed(relay, direction, piece);
    relay.pipes[direction].timeout = piece.substr(0, allowed);
    passed_[direction] += allowed;
  }
}

void ByteProxy::Write(Relay& relay, std::size_t direction) {
  auto& pipe = relay.pipes[direction];
  const int socket = relay.sockets[direction].Number();
  if (!pipe.timeout.empty()) {
    const auto written = ::send(socket, pipe.timeout.data(), pipe.timeout.size(), MSG_NOSIGNAL);
    if (written < 0) {
      relay.broken = !Postponed(errno);
      return;
    }
    pipe.timeout.erase(0, static_cast<std::size_t>(written));
  }
  if (pipe.timeout.empty() && pipe.finished && !pipe.closed) {
    ::shutdown(socket, SHUT_WR);
    pipe.closed = true;
  }
}

std::size_t ByteProxy::Allowed(Relay& relay, std::size_t direction, std::string_view piece) {
  if (direction == ToClient && relay.replyForbidden) {
    toStrike_ = true;
    return 0;
  }
  if (!fault_) {
    return piece.size();
  }
  if (!fault_->direction) {
    return direction == ToServer ? AllowedOfSequence(relay, piece) : piece.size();
  }
  if (static_cast<std::size_t>(*fault_->direction) != direction) {
    return piece.size();
  }
  const auto allowed = std::min<std::uint64_t>(piece.size(), fault_->howMany);
  fault_->howMany -= allowed;
  toStrike_ = fault_->howMany == 0;
  return static_cast<std::size_t>(allowed);
}

std::size_t ByteProxy::AllowedOfSequence(Relay& relay, std::string_view piece) {
  auto& tail = relay.pipes[ToServer].tail;
  const auto oldOnes = tail.size();
  const std::string text = tail + std::string(piece);
  for (auto place = text.find(fault_->sequence); place != std::string::npos && fault_->times > 0;
       place = text.find(fault_->sequence, place + 1)) {
    if (--fault_->times > 0) {
      continue;
    }
    if (fault_->moment == Moment::BeforeItPasses) {
      toStrike_ = true;
      return place > oldOnes ? place - oldOnes : 0;
    }
    relay.replyForbidden = true;
  }
  tail = text.substr(text.size() - std::min(text.size(), fault_->sequence.size() - 1));
  return piece.size();
}

void ByteProxy::Hit() {
  const auto action = fault_->action;
  fault_.reset();
  hit_ = true;
  if (std::exchange(refuseAfter_, false)) {
    listening_.Close();
  }
  for (auto& relay : relays_) {
    relay.replyForbidden = false;
  }
  if (action == Action::Hold) {
    hold_ = true;
    return;
  }
  if (action == Action::Freeze) {
    for (auto& relay : relays_) {
      relay.frozen = true;
    }
    return;
  }
  if (action == Action::Reset) {
    const linger immediately{1, 0};
    for (const auto& relay : relays_) {
      for (const auto& socket : relay.sockets) {
        ::setsockopt(socket.Number(), SOL_SOCKET, SO_LINGER, &immediately, sizeof immediately);
      }
    }
  }
  relays_.clear();
  open_ = 0;
}

void ByteProxy::RemoveFinished() {
  relays_.remove_if([this](const Relay& relay) {
    const bool finished = relay.broken || (relay.pipes[ToServer].closed && relay.pipes[ToClient].closed);
    open_ -= finished ? 1 : 0;
    return finished;
  });
}

} // namespace lumoscad::test
