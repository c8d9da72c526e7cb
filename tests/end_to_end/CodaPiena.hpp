#pragma once

#include "platform/RuntimeError.hpp"
#include "platform/nexaro/ssh/Socket.hpp"
#include "support/Loopback.hpp"

#include <chrono>
#include <cstddef>
#include <vector>

namespace lumoscad::test {

/// A loopback port whose queue of connections is full: the system leaves the next ones without an answer.
struct CodaPiena {
  CodaPiena() {
    constexpr std::chrono::milliseconds Pazienza{300};
    for (bool piena = false; !piena && coda.size() < 10;) {
      try {
        coda.push_back(nexaro::OpenSocket("127.0.0.1", porta, nexaro::Clock::now() + Pazienza, Pazienza));
      } catch (const RuntimeError&) {
        piena = true;
      }
    }
  }
  base::Descriptor presa = Listen(0, 0);
  std::vector<base::Descriptor> coda;
  unsigned porta = static_cast<unsigned>(PortOf(presa));
};

} // namespace lumoscad::test
