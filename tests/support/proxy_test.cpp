// The proxy breaks exactly where it is told to: the faults of the host and of the database are built on it.

#include "support/ByteProxy.hpp"
#include "support/Loopback.hpp"

#include <array>
#include <cerrno>
#include <gtest/gtest.h>
#include <string>
#include <sys/socket.h>
#include <thread>

namespace lumoscad::test {
namespace {

using namespace std::chrono_literals;
using Action = ByteProxy::Action;
using Moment = ByteProxy::Moment;
using Direction = ByteProxy::Direction;

void SendTo(const base::Descriptor& socket, const std::string& text) {
  ASSERT_EQ(::send(socket.Number(), text.data(), text.size(), MSG_NOSIGNAL), static_cast<ssize_t>(text.size()));
}

/// What arrives until `howMany` bytes are there or the connection ends; "!" stands for a reset, "?" for silence.
std::string Arrived(const base::Descriptor& socket, std::size_t howMany, std::chrono::milliseconds limit = 60s) {
  const timeval timeout{limit.count() / 1000, (limit.count() % 1000) * 1000};
  ::setsockopt(socket.Number(), SOL_SOCKET, SO_RCVTIMEO, &timeout, sizeof timeout);
  std::string text;
  std::array<char, 4096> data{};
  while (text.size() < howMany) {
    const auto got = ::recv(socket.Number(), data.data(), std::min(data.size(), howMany - text.size()), 0);
    if (got <= 0) {
      return got == 0 ? text : text + (errno == ECONNRESET ? "!" : "?");
    }
    text.append(data.data(), static_cast<std::size_t>(got));
  }
  return text;
}

class Proxy : public testing::Test {
 protected:
  void Open() {
    client = Attach(proxy.Port());
    ASSERT_TRUE(client.Opened());
    server = base::Descriptor(::accept(listening.Number(), nullptr, nullptr));
    ASSERT_TRUE(server.Opened());
  }

  base::Descriptor listening = Listen();
  ByteProxy proxy{PortOf(listening)};
  base::Descriptor client;
  base::Descriptor server;
};

TEST_F(Proxy, CarriesBothWaysAndCounts) {
  Open();
  SendTo(client, "domanda");
  EXPECT_EQ(Arrived(server, 7), "domanda");
  SendTo(server, "ecco");
  EXPECT_EQ(Arrived(client, 4), "ecco");
  EXPECT_EQ(proxy.Passed(Direction::ToServer), 7U);
  EXPECT_EQ(proxy.Passed(Direction::ToClient), 4U);
  EXPECT_EQ(proxy.Connections(), 1);
  EXPECT_EQ(proxy.Open(), 1);
}

TEST_F(Proxy, HandsTheEndOfOneSideOnWhileTheOtherStillSends) {
  Open();
  SendTo(client, "fine");
  ::shutdown(client.Number(), SHUT_WR);
  EXPECT_EQ(Arrived(server, 100), "fine");
  SendTo(server, "ancora");
  server.Close();
  EXPECT_EQ(Arrived(client, 100), "ancora");
}

TEST_F(Proxy, CarriesMoreThanTheSocketsHoldThoughNobodyReadsAtFirst) {
  Open();
  const std::string much(8U << 20U, 'x');
  std::thread sender([&] { SendTo(client, much); });
  EXPECT_EQ(Arrived(server, much.size()), much);
  sender.join();
  EXPECT_EQ(proxy.Passed(Direction::ToServer), much.size());
}

TEST_F(Proxy, ClosesBothSidesAfterTheBytesItWasGiven) {
  Open();
  proxy.StrikeAfter(Direction::ToServer, 5, Action::Close);
  SendTo(client, "domanda");
  EXPECT_EQ(Arrived(server, 100), "doman");
  EXPECT_EQ(Arrived(client, 100), "");
  EXPECT_TRUE(proxy.HasStruck(60s));
  EXPECT_EQ(proxy.Open(), 0);
  Open();
  SendTo(client, "domanda");
  EXPECT_EQ(Arrived(server, 7), "domanda");
}

TEST_F(Proxy, ResetsBothSides) {
  Open();
  SendTo(client, "a");
  EXPECT_EQ(Arrived(server, 1), "a");
  proxy.Strike(Action::Reset);
  EXPECT_EQ(Arrived(server, 100), "!");
  EXPECT_EQ(Arrived(client, 100), "!");
}

TEST_F(Proxy, FallsSilentAndCarriesOnWhenItIsRestored) {
  Open();
  proxy.StrikeAfter(Direction::ToClient, 2, Action::Hold);
  SendTo(server, "ecc");
  EXPECT_EQ(Arrived(client, 2), "ec");
  SendTo(server, "o");
  EXPECT_EQ(Arrived(client, 1, 200ms), "?");
  SendTo(client, "ehi");
  EXPECT_EQ(Arrived(server, 1, 200ms), "?");
  proxy.Restore();
  EXPECT_EQ(Arrived(server, 3), "ehi");
  EXPECT_EQ(Arrived(client, 1), "o");
}

TEST_F(Proxy, KeepsASequenceFromTheServer) {
  Open();
  proxy.StrikeAtSequence("COMMIT", Moment::BeforeItPasses, Action::Close);
  SendTo(client, "UPDATE; COMM");
  EXPECT_EQ(Arrived(server, 12), "UPDATE; COMM");
  EXPECT_FALSE(proxy.HasStruck());
  SendTo(client, "IT;");
  EXPECT_EQ(Arrived(server, 100), "");
  EXPECT_TRUE(proxy.HasStruck(60s));
}

TEST_F(Proxy, KeepsTheAnswerToASequenceFromTheClient) {
  Open();
  proxy.StrikeAtSequence("COMMIT", Moment::BeforeTheReply, Action::Reset, 2);
  SendTo(client, "COMMIT");
  EXPECT_EQ(Arrived(server, 6), "COMMIT");
  SendTo(server, "fatto");
  EXPECT_EQ(Arrived(client, 5), "fatto");
  SendTo(client, "COM");
  EXPECT_EQ(Arrived(server, 3), "COM");
  SendTo(client, "MIT");
  EXPECT_EQ(Arrived(server, 3), "MIT");
  EXPECT_FALSE(proxy.HasStruck());
  SendTo(server, "fatto");
  EXPECT_EQ(Arrived(client, 100), "!");
  EXPECT_TRUE(proxy.HasStruck(60s));
}

TEST_F(Proxy, RefusesNewConnectionsAndTakesThemAgain) {
  proxy.Refuse(true);
  EXPECT_FALSE(Attach(proxy.Port()).Opened());
  proxy.Refuse(false);
  Open();
  proxy.RefuseAfterStrike();
  proxy.Strike(Action::Close);
  EXPECT_FALSE(Attach(proxy.Port()).Opened());
  EXPECT_EQ(proxy.Connections(), 1);
}

} // namespace
} // namespace lumoscad::test
