#pragma once

#include "platform/RuntimeError.hpp"
#include "platform/nexaro/ssh/Socket.hpp"

#include <chrono>
#include <cstddef>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <vector>

namespace lumoscad::test {

/// A loopback port whose queue of connections is full: the system leaves the next ones without an answer.
struct CodaPiena {
  CodaPiena() : presa(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in indirizzo{};
    indirizzo.sin_family = AF_INET;
    indirizzo.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t lunghezza = sizeof indirizzo;
    EXPECT_EQ(::bind(presa.Number(), reinterpret_cast<sockaddr*>(&indirizzo), lunghezza), 0);
    EXPECT_EQ(::listen(presa.Number(), 0), 0);
    EXPECT_EQ(::getsockname(presa.Number(), reinterpret_cast<sockaddr*>(&indirizzo), &lunghezza), 0);
    porta = ntohs(indirizzo.sin_port);
    constexpr std::chrono::milliseconds Pazienza{300};
    for (bool piena = false; !piena && coda.size() < 10;) {
      try {
        coda.push_back(nexaro::OpenSocket("127.0.0.1", porta, nexaro::Clock::now() + Pazienza, Pazienza));
      } catch (const RuntimeError&) {
        piena = true;
      }
    }
  }
  base::Descriptor presa;
  std::vector<base::Descriptor> coda;
  unsigned porta = 0;
};

} // namespace lumoscad::test
