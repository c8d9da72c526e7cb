#include "Banco.hpp"
#include "platform/ControlCharacters.hpp"
#include "platform/nexaro/Texts.hpp"
#include "platform/nexaro/ssh/Socket.hpp"
#include "support/Loopback.hpp"

#include <gmock/gmock.h>
#include <vector>

namespace lumoscad {
namespace {

using namespace std::chrono_literals;
using nexaro::Clock;
using nexaro::OpenSocket;
using test::ErroreDi;
using testing::HasSubstr;

/// A loopback port where somebody listens without ever taking a connection.
struct Ascolto {
  base::Descriptor presa = test::Listen(0, 0);
  unsigned porta = static_cast<unsigned>(test::PortOf(presa));
};

TEST(SocketOfALink, ConnectsByNumberAndByName) {
  const Ascolto uno;
  EXPECT_TRUE(OpenSocket("127.0.0.1", uno.porta, Clock::now() + 20s, 20s).Opened());
  const Ascolto due;
  EXPECT_TRUE(OpenSocket("localhost", due.porta, Clock::now() + 20s, 20s).Opened());
}

TEST(SocketOfALink, RefusalIsSaidAtOnce) {
  unsigned porta = 0;
  {
    const Ascolto chiuso;
    porta = chiuso.porta;
  }
  const auto errore = ErroreDi([&] { static_cast<void>(OpenSocket("127.0.0.1", porta, Clock::now() + 20s, 20s)); });
  EXPECT_THAT(errore.Description(), HasSubstr("(porta " + std::to_string(porta) + "): connessione rifiutata."));
}

TEST(SocketOfALink, AddressThatStaysSilentIsGivenUpInTime) {
  // The queue of connections that nobody takes is full: the system leaves the next ones without an answer.
  const Ascolto ascolto;
  std::vector<base::Descriptor> coda;
  std::string rifiuto;
  const auto inizio = Clock::now();
  while (rifiuto.empty() && coda.size() < 10) {
    try {
      coda.push_back(OpenSocket("127.0.0.1", ascolto.porta, Clock::now() + 300ms, 300ms));
    } catch (const RuntimeError& errore) {
      rifiuto = errore.Description();
    }
  }
  EXPECT_THAT(rifiuto, HasSubstr("nessuna risposta entro 0,300 secondi. Verificare che l'host sia acceso"));
  EXPECT_LT(Clock::now() - inizio, 20s);
}

TEST(SocketOfALink, TimeThatIsOverIsNotNegative) {
  EXPECT_EQ(nexaro::TimeLeft(Clock::now() - 5s).count(), 0);
  EXPECT_GT(nexaro::TimeLeft(Clock::now() + 5s).count(), 0);
}

TEST(ForeignText, StandsInAMessageWhateverItHolds) {
  EXPECT_EQ(nexaro::ForeignText("Connection reset by peer"), "Connection reset by peer");
  EXPECT_EQ(nexaro::ForeignText("a\x1B[31m\r\nb\x7F"), "a [31m  b");
  EXPECT_EQ(nexaro::ForeignText("a\u009B31mb\u0080à"), "a 31mb à");
  EXPECT_EQ(WithoutControls("a\tb\r\nc\x1B[0m", "\n"), "a b \nc [0m");
  EXPECT_EQ(nexaro::ForeignText("perch\xE9 così"), "perch\uFFFD così");
  EXPECT_LE(nexaro::ForeignText(std::string(5000, 'x')).size(), 300U);
}

} // namespace
} // namespace lumoscad
