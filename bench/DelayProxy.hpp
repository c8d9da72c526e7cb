#pragma once

#include "platform/base/Descriptor.hpp"

#include <atomic>
#include <chrono>
#include <list>
#include <thread>

namespace lumoscad::bench {

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

 private:
  void Accept();
  void Carry(int from, int to) const;

  int destination_;
  std::chrono::microseconds delay_;
  int port_ = 0;
  std::atomic<bool> finish_{false};
  base::Descriptor listening_;
  std::list<base::Descriptor> sockets_; ///< of every connection, both sides
  std::list<std::thread> carriers_;
  std::thread accepting_;
};

} // namespace lumoscad::bench
