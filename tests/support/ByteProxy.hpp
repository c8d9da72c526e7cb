#pragma once

#include "platform/base/Descriptor.hpp"

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace lumoscad::test {

/// A TCP proxy on loopback that counts what it carries and breaks off, or falls silent, where it is told to. It works
/// on a thread of its own; every operation may be called at any time. One fault is armed at a time, and it strikes all
/// connections once; connections that are made later are carried again.
class ByteProxy {
 public:
  enum class Direction { ToServer, ToClient };
  enum class Action {
    Close, ///< both sides see an orderly end
    Reset, ///< both sides see a reset
    Hold,  ///< the connections stay open, but nothing passes any more, of later ones neither
    Freeze ///< the same of the connections that are open; later ones are carried
  };
  enum class Moment {
    BeforeItPasses, ///< the server never gets the whole sequence
    BeforeTheReply  ///< the server got the sequence; nothing that it sent afterwards reaches the client
  };

  /// Carries to the port `destination` of a loopback address, from its own port or any that is free; raises where that
  /// one is taken.
  explicit ByteProxy(int destination, std::string host = "127.0.0.1", int port = 0);
  ByteProxy(const ByteProxy&) = delete;
  ByteProxy& operator=(const ByteProxy&) = delete;
  ~ByteProxy();

  [[nodiscard]] int Port() const noexcept { return port_; }
  /// The bytes carried so far, of all connections.
  [[nodiscard]] std::uint64_t Passed(Direction direction) const;
  /// The connections accepted so far.
  [[nodiscard]] int Connections() const { return connections_; }
  /// The connections that are open on both sides now.
  [[nodiscard]] int Open() const { return open_; }

  /// Strikes when `howMany` more bytes have passed in a direction: not one more passes.
  void StrikeAfter(Direction direction, std::uint64_t howMany, Action action);
  /// Strikes when the client sends `sequence` for the `whichTime`-th time, counted from now.
  void StrikeAtSequence(std::string_view sequence, Moment moment, Action action, int whichTime = 1);
  /// Strikes now.
  void Strike(Action action);
  /// From the moment the armed fault strikes on, new connections are refused.
  void RefuseAfterStrike();
  /// Refuses new connections, or takes them again on the same port.
  void Refuse(bool refuse);
  /// From now on new connections are carried to another port of the same address.
  void LeadTo(int destination);
  /// Forgets the fault that is armed and carries again what was held back.
  void Restore();
  /// True once the armed fault has struck; waits for it.
  [[nodiscard]] bool HasStruck(std::chrono::milliseconds limit = std::chrono::milliseconds(0));

 private:
  /// One direction of a connection.
  struct Pipe {
    std::string timeout;   ///< read, but not written yet
    std::string tail;      ///< the last bytes that passed, fewer than the sequence has
    bool finished = false; ///< the sender has ended
    bool closed = false;   ///< the receiver was told
  };
  struct Relay {
    std::array<base::Descriptor, 2> sockets; ///< where each direction leads: the server, the client
    std::array<Pipe, 2> pipes;
    bool broken = false;
    bool frozen = false;
    bool replyForbidden = false; ///< the sequence has passed: the next byte of the server strikes
  };
  struct Fault {
    Action action = Action::Close;
    std::optional<Direction> direction; ///< counts the bytes of this direction; without it looks for the sequence
    std::uint64_t howMany = 0;
    std::string sequence;
    Moment moment = Moment::BeforeItPasses;
    int times = 1;
  };

  /// Runs `work` on the proxy's thread and returns when it is done.
  void OnThread(std::function<void()> work);
  void Arm(const Fault& fault);
  void Work();
  void DoJobs();
  void Wait();
  void Accept();
  void Move(Relay& relay, std::size_t direction);
  void Read(Relay& relay, std::size_t direction);
  static void Write(Relay& relay, std::size_t direction);
  [[nodiscard]] std::size_t Allowed(Relay& relay, std::size_t direction, std::string_view piece);
  [[nodiscard]] std::size_t AllowedOfSequence(Relay& relay, std::string_view piece);
  void Hit();
  void RemoveFinished();

  std::atomic<int> destination_;
  std::string host_;
  int port_ = 0;
  base::Descriptor waker_;
  std::array<std::atomic<std::uint64_t>, 2> passed_{};
  std::atomic<int> connections_{0};
  std::atomic<int> open_{0};

  std::mutex key_; ///< guards the next three
  std::condition_variable changed_;
  std::vector<std::function<void()>> jobs_;
  bool hit_ = false;

  // Only the proxy's thread touches what follows.
  base::Descriptor listening_;
  std::list<Relay> relays_;
  std::optional<Fault> fault_;
  bool toStrike_ = false;
  bool hold_ = false;
  bool refuseAfter_ = false;
  bool finish_ = false;
  std::thread thread_;
};

} // namespace lumoscad::test
