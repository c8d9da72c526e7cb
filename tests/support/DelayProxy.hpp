#pragma once

#include "platform/base/Descriptor.hpp"

#include <atomic>
#include <chrono>
#include <list>
#include <thread>

namespace lumoscad::test {

/// A TCP proxy on loopback that hands on what comes a while later, in each direction, as a long line does: nothing
/// waits for what was sent before it. Opening a connection is not delayed. It ends with the object.
class DelayProxy {
 public:
  /// Carries to the loopback port `destination`; `delay` is that of one direction, half of a round trip.
  DelayProxy(int destination, std::chrono::microseconds delay);
  DelayProxy(const DelayProxy&) = delete;
  DelayProxy& operator=(const DelayProxy&) = delete;
  ~DelayProxy();

  [[nodiscard]] int Port() const noexcept { return port_; }

  /// How often the client has heard an answer to what it sent after the answer before: the round trips that followed
  /// one another. Requests that are under way at once are one. It holds where a client that need not wait sends on
  /// within a round trip.
  [[nodiscard]] int Trips() const noexcept;

 private:
  enum class Direction { ToServer, ToClient };
  /// A connection. What is heard on a side has the number of the round trip that it belongs to.
  struct Line {
    base::Descriptor client;
    base::Descriptor server;
    std::atomic<int> heardByClient{0};
    std::atomic<int> heardByServer{0};
  };

  void Accept();
  void Carry(Line& line, Direction direction);
  void Note(Line& line, Direction direction, int trip);

  int destination_;
  std::chrono::microseconds delay_;
  int port_ = 0;
  std::atomic<bool> finish_{false};
  std::atomic<int> trips_{0}; ///< of all connections
  base::Descriptor listening_;
  std::list<Line> lines_;
  std::list<std::thread> carriers_;
  std::thread accepting_;
};

} // namespace lumoscad::test
