#pragma once

#include "platform/base/Descriptor.hpp"
#include "platform/nexaro/Deadline.hpp"

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

namespace lumoscad::nexaro {

/// A connection to a key agent, for someone who would wait for its answers for ever: when the limit is over, the
/// connection is shut down, and whoever waits on it sees its end.
class Agent {
 public:
  /// Connects to the agent that listens at `socket`, at most until `deadline`. `Error` says whether it succeeded.
  Agent(const std::string& socket, Deadline deadline);
  Agent(const Agent&) = delete;
  Agent& operator=(const Agent&) = delete;
  ~Agent();

  /// 0 where the agent took the connection; ETIMEDOUT where it did not in time; EAGAIN where there is no thread that
  /// would end the wait; otherwise the `errno` of the failure.
  [[nodiscard]] int Error() const { return error_; }

  /// A descriptor of the connection, which is the caller's from now on; none, and `Error`, where the system has none
  /// to give. The limit holds as long as this object lives.
  [[nodiscard]] base::Descriptor Socket();

  /// Whether the limit was over before this object's end.
  [[nodiscard]] bool TimedOut();

 private:
  void Attach(const std::string& socket, Deadline deadline);
  void Supervise(Deadline deadline);

  int error_ = 0;
  base::Descriptor socket_;
  std::mutex key_; ///< guards the next two
  bool finished_ = false;
  bool timedOut_ = false;
  std::condition_variable changed_;
  std::thread thread_;
};

} // namespace lumoscad::nexaro
