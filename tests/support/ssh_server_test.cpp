// The server of the tests lets in whom it should, as the system's own client sees it.

#include "support/Loopback.hpp"
#include "support/Paths.hpp"
#include "support/SshServer.hpp"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <thread>

namespace lumoscad::test {
namespace {

namespace fs = std::filesystem;

struct Outcome {
  std::string output;
  int status = -1;
};

class TestServer : public testing::Test {
 protected:
  static void SetUpTestSuite() { ASSERT_TRUE(SshServer::Available()); }

  [[nodiscard]] Outcome Ssh(const std::string& command, const fs::path& key) const {
    return Run("ssh -p " + std::to_string(server.Port()) + Safety(key) + Place() + " '" + command + "' </dev/null");
  }
  [[nodiscard]] Outcome Sftp(const std::string& commands) const {
    return Run("printf '" + commands + "' | sftp -q -b - -P " + std::to_string(server.Port()) + Safety(server.Key()) +
               Place());
  }
  [[nodiscard]] std::string Place() const { return " " + server.User() + "@" + SshServer::Address(); }
  [[nodiscard]] std::string Safety(const fs::path& key) const {
    return " -F none -o BatchMode=yes -o IdentitiesOnly=yes -o IdentityAgent=none -o GlobalKnownHostsFile=none"
           " -o StrictHostKeyChecking=yes -o UserKnownHostsFile='" +
           server.KnownHosts().string() + "' -i '" + key.string() + "'";
  }
  static Outcome Run(const std::string& line) {
    std::FILE* pipe = ::popen((line + " 2>/dev/null").c_str(), "r");
    Outcome outcome;
    std::array<char, 256> piece{};
    while (const auto got = std::fread(piece.data(), 1, piece.size(), pipe)) {
      outcome.output.append(piece.data(), got);
    }
    outcome.status = ::pclose(pipe);
    return outcome;
  }

  /// The cases may run side by side.
  static fs::path Directory() {
    auto name = std::string(testing::UnitTest::GetInstance()->current_test_info()->name());
    std::replace(name.begin(), name.end(), '/', '_');
    return test::OutputPath("support/prove") / name;
  }

  SshServer server{Directory(), {"ed25519", {"A=uno due", "B=tre"}, "internal-sftp", {}}};
};

TEST_F(TestServer, RunsAProgramInItsEnvironmentForTheAcceptedKeyOnly) {
  EXPECT_EQ(Ssh("echo $A, $B", server.Key()).output, "uno due, tre\n");
  const auto stranger = Ssh("echo dentro", server.ForeignKey());
  EXPECT_NE(stranger.status, 0);
  EXPECT_EQ(stranger.output, "");
}

TEST_F(TestServer, ShowsAnotherKeyAfterAChange) {
  const auto before = server.Hash();
  EXPECT_TRUE(before.starts_with("SHA256:"));
  server.ChangeHostKey("ecdsa");
  EXPECT_NE(server.Hash(), before);
  EXPECT_NE(Ssh("true", server.Key()).status, 0);
  server.MakeKnown(server.Port());
  EXPECT_EQ(Ssh("echo dentro", server.Key()).output, "dentro\n");
}

TEST_F(TestServer, StopsAndStartsOnTheSamePort) {
  server.Stop();
  EXPECT_FALSE(Attach(server.Port()).Opened());
  server.Restart();
  EXPECT_EQ(Ssh("echo dentro", server.Key()).output, "dentro\n");
}

class ServerRoot : public TestServer {
 protected:
  ServerRoot() {
    fs::create_directories(root / "tmp");
    std::ofstream(locale) << std::string(200000, 'x');
    Configure("");
  }
  void Configure(const std::string& options) {
    server.Change({"ed25519",
                   {},
                   "'" + test::ProgramPath("sftp_radice").string() + "' " + options + " '" + root.string() + "'",
                   {}});
  }

  fs::path root = server.Directory() / "radice";
  fs::path locale = server.Directory() / "locale";
  std::string put = "put " + locale.string() + " /tmp/nome";
};

TEST_F(ServerRoot, IsTheRootOfTheHost) {
  EXPECT_EQ(Sftp(put + "\nrename /tmp/nome /tmp/altro\nput " + locale.string() + " /tmp/terzo\nrm /tmp/terzo").status,
            0);
  EXPECT_EQ(fs::file_size(root / "tmp/altro"), 200000U);
  EXPECT_FALSE(fs::exists(root / "tmp/nome") || fs::exists(root / "tmp/terzo"));
}

TEST_F(ServerRoot, IsFullWhereItIsTold) {
  Configure("-f 100000");
  EXPECT_NE(Sftp(put).status, 0);
  EXPECT_EQ(fs::file_size(root / "tmp/nome"), 100000U);
}

class StalledServerRoot : public ServerRoot, public testing::WithParamInterface<const char*> {};

TEST_P(StalledServerRoot, StandsStillBeforeOrAfterARequest) {
  std::ofstream(root / "tmp/nome") << "a";
  std::ofstream(server.Directory() / "ordine") << "rinomina " << GetParam();
  Configure("-o '" + server.Directory().string() + "'");
  std::thread client([this] { EXPECT_NE(Sftp("rename /tmp/nome /tmp/altro").status, 0); });
  while (!fs::exists(server.Directory() / "fermo")) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  server.CutSessions();
  client.join();
  EXPECT_EQ(fs::exists(root / "tmp/altro"), GetParam() == std::string("dopo"));
}

INSTANTIATE_TEST_SUITE_P(Moments, StalledServerRoot, testing::Values("prima", "dopo"));

} // namespace
} // namespace lumoscad::test
