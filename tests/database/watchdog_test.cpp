#include "platform/ado/Watchdog.hpp"
#include "support/Loopback.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <sys/socket.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

namespace lumoscad::ado::detail {
namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

constexpr milliseconds ShortLimit(150);
constexpr milliseconds Ample(3000);

/// A connection on loopback whose server never says a word.
class SilentServer {
 public:
  SilentServer() {
    EXPECT_TRUE(connection.Opened());
    ends = {"127.0.0.1", test::PortOf(listener), "127.0.0.1", test::PortOf(connection)};
  }
  SilentServer(const SilentServer&) = delete;
  SilentServer& operator=(const SilentServer&) = delete;
  ~SilentServer() = default;

  /// Reads as a driver does; how long that took, and what it gave.
  std::pair<milliseconds, ssize_t> Read() const {
    const auto begin = Clock::now();
    char byte = 0;
    const ssize_t got = recv(client, &byte, 1, 0);
    return {std::chrono::duration_cast<milliseconds>(Clock::now() - begin), got};
  }
  /// Whether the connection is still open: nothing to read, rather than the end.
  [[nodiscard]] bool StillOpen() const {
    char byte = 0;
    return recv(client, &byte, 1, MSG_DONTWAIT) < 0 && errno == EAGAIN;
  }

  const base::Descriptor listener = test::Listen();
  const base::Descriptor connection = test::Attach(test::PortOf(listener));
  const int client = connection.Number();
  Endpoints ends;
};

std::size_t Threads() {
  const std::filesystem::directory_iterator tasks("/proc/self/task");
  return static_cast<std::size_t>(std::distance(begin(tasks), end(tasks)));
}

/// Whether the thread's mask holds every signal that can be blocked.
bool BlocksEverySignal(const std::filesystem::path& status) {
  std::ifstream file(status);
  for (std::string line; std::getline(file, line);) {
    if (!line.starts_with("SigBlk:")) {
      continue;
    }
    const auto mask = std::stoull(line.substr(line.find('\t') + 1), nullptr, 16);
    for (int signal = 1; signal < 32; ++signal) {
      const bool blocked = (mask >> (signal - 1) & 1U) != 0;
      if (!blocked && signal != SIGKILL && signal != SIGSTOP) {
        return false;
      }
    }
    return true;
  }
  return false;
}

} // namespace

TEST(Watchdog, EndsAReadThatGetsNoAnswerWithinItsLimit) {
  const Sockets before = OpenSockets();
  const SilentServer server;
  const auto watchdog = Watchdog::Over(server.ends, before);
  ASSERT_NE(watchdog, nullptr);
  ASSERT_TRUE(watchdog->Enter(ShortLimit));
  EXPECT_FALSE(watchdog->Enter(Ample)) << "the outer call's limit holds";
  const auto [time, got] = server.Read();
  watchdog->Leave();
  EXPECT_EQ(got, 0);
  EXPECT_GE(time, ShortLimit);
  EXPECT_LT(time, Ample);
  EXPECT_TRUE(watchdog->Struck());
}

TEST(Watchdog, IsKnownToHaveStruckAtOnceWhenTheReadEnds) {
  std::atomic<int> unknown{0};
  std::vector<std::jthread> readers;
  for (int reader = 0; reader < 32; ++reader) {
    const Sockets before = OpenSockets();
    auto server = std::make_shared<SilentServer>();
    const std::shared_ptr<Watchdog> watchdog = Watchdog::Over(server->ends, before);
    ASSERT_NE(watchdog, nullptr);
    ASSERT_TRUE(watchdog->Enter(ShortLimit));
    readers.emplace_back([server, watchdog, &unknown] {
      server->Read();
      unknown += watchdog->Struck() ? 0 : 1;
      watchdog->Leave();
    });
  }
  readers.clear();
  EXPECT_EQ(unknown, 0);
}

TEST(Watchdog, LeavesAConnectionAloneBetweenCallsAndInCallsThatEndInTime) {
  const SilentServer server;
  const auto watchdog = Watchdog::Over(server.ends, {});
  ASSERT_NE(watchdog, nullptr);
  for (int call = 0; call < 4; ++call) {
    ASSERT_TRUE(watchdog->Enter(milliseconds(400)));
    std::this_thread::sleep_for(milliseconds(150));
    watchdog->Leave();
  }
  std::this_thread::sleep_for(milliseconds(500));
  EXPECT_TRUE(server.StillOpen());
  EXPECT_FALSE(watchdog->Struck());
}

TEST(Watchdog, TakesNoSocketThatIsNotCertainlyTheSessions) {
  const SilentServer server;
  Endpoints others = server.ends;
  others.clientPort = 1;
  EXPECT_EQ(Watchdog::Over(others, {}), nullptr) << "a session behind a proxy";
  others = server.ends;
  others.serverPort = 1;
  EXPECT_EQ(Watchdog::Over(others, {}), nullptr);
  others = server.ends;
  others.serverAddress = "127.0.0.2";
  EXPECT_EQ(Watchdog::Over(others, {}), nullptr);
  others = server.ends;
  others.clientAddress = "10.0.0.1";
  EXPECT_EQ(Watchdog::Over(others, {}), nullptr);
  EXPECT_EQ(Watchdog::Over(server.ends, OpenSockets()), nullptr) << "it was there before the session was opened";
  others = server.ends;
  others.serverAddress.clear();
  others.clientAddress = "localhost";
  EXPECT_NE(Watchdog::Over(others, {}), nullptr) << "a server that does not tell its address";
}

TEST(Watchdog, NeverTouchesAnotherSocketThatWasGivenTheSameDescriptor) {
  const SilentServer server;
  const SilentServer another;
  const auto watchdog = Watchdog::Over(server.ends, {});
  ASSERT_NE(watchdog, nullptr);
  ASSERT_TRUE(watchdog->Enter(ShortLimit));
  ASSERT_EQ(dup2(another.client, server.client), server.client);
  std::this_thread::sleep_for(milliseconds(500));
  watchdog->Leave();
  EXPECT_TRUE(another.StillOpen());
  EXPECT_FALSE(watchdog->Struck());
}

TEST(Watchdog, TakesNoSignalAndLeavesNoThread) {
  const std::size_t before = Threads();
  {
    const SilentServer server;
    const auto watchdog = Watchdog::Over(server.ends, {});
    ASSERT_NE(watchdog, nullptr);
    EXPECT_EQ(Threads(), before + 1);
    std::size_t blocking = 0;
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
      blocking += BlocksEverySignal(task.path() / "status") ? 1 : 0;
    }
    EXPECT_EQ(blocking, 1U);
  }
  EXPECT_EQ(Threads(), before);
}

TEST(Watchdog, LetsAForkedChildEndAndStaysWithItsParent) {
  const SilentServer server;
  auto watchdog = Watchdog::Over(server.ends, {});
  ASSERT_NE(watchdog, nullptr);
  ASSERT_TRUE(watchdog->Enter(ShortLimit));
  const pid_t child = fork();
  if (child == 0) {
    alarm(5);
    watchdog->Leave();
    watchdog.reset();
    _exit(7);
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 7) << "the child hung";
  EXPECT_EQ(server.Read().second, 0);
  watchdog->Leave();
  EXPECT_TRUE(watchdog->Struck());
}

} // namespace lumoscad::ado::detail
