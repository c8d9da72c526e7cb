// The proxy breaks exactly where it is told to: the faults of the host and of the database are built on it.

#include "support/Loopback.hpp"
#include "support/ProxyByte.hpp"

#include <array>
#include <cerrno>
#include <gtest/gtest.h>
#include <string>
#include <sys/socket.h>
#include <thread>

namespace lumoscad::prova {
namespace {

using namespace std::chrono_literals;
using Azione = ProxyByte::Azione;
using Momento = ProxyByte::Momento;
using Verso = ProxyByte::Verso;

void Manda(const base::Descriptor& presa, const std::string& testo) {
  ASSERT_EQ(::send(presa.Number(), testo.data(), testo.size(), MSG_NOSIGNAL), static_cast<ssize_t>(testo.size()));
}

/// What arrives until `quanti` bytes are there or the connection ends; "!" stands for a reset, "?" for silence.
std::string Arrivati(const base::Descriptor& presa, std::size_t quanti, std::chrono::milliseconds limite = 10s) {
  const timeval attesa{limite.count() / 1000, (limite.count() % 1000) * 1000};
  ::setsockopt(presa.Number(), SOL_SOCKET, SO_RCVTIMEO, &attesa, sizeof attesa);
  std::string testo;
  std::array<char, 4096> dati{};
  while (testo.size() < quanti) {
    const auto letti = ::recv(presa.Number(), dati.data(), std::min(dati.size(), quanti - testo.size()), 0);
    if (letti <= 0) {
      return letti == 0 ? testo : testo + (errno == ECONNRESET ? "!" : "?");
    }
    testo.append(dati.data(), static_cast<std::size_t>(letti));
  }
  return testo;
}

class Proxy : public testing::Test {
 protected:
  void Apri() {
    cliente = Collega(proxy.Porta());
    ASSERT_TRUE(cliente.Opened());
    server = base::Descriptor(::accept(ascolto.Number(), nullptr, nullptr));
    ASSERT_TRUE(server.Opened());
  }

  base::Descriptor ascolto = Ascolta();
  ProxyByte proxy{PortaDi(ascolto)};
  base::Descriptor cliente;
  base::Descriptor server;
};

TEST_F(Proxy, CarriesBothWaysAndCounts) {
  Apri();
  Manda(cliente, "domanda");
  EXPECT_EQ(Arrivati(server, 7), "domanda");
  Manda(server, "ecco");
  EXPECT_EQ(Arrivati(cliente, 4), "ecco");
  EXPECT_EQ(proxy.Passati(Verso::AlServer), 7U);
  EXPECT_EQ(proxy.Passati(Verso::AlCliente), 4U);
  EXPECT_EQ(proxy.Connessioni(), 1);
  EXPECT_EQ(proxy.Aperte(), 1);
}

TEST_F(Proxy, HandsTheEndOfOneSideOnWhileTheOtherStillSends) {
  Apri();
  Manda(cliente, "fine");
  ::shutdown(cliente.Number(), SHUT_WR);
  EXPECT_EQ(Arrivati(server, 100), "fine");
  Manda(server, "ancora");
  server.Close();
  EXPECT_EQ(Arrivati(cliente, 100), "ancora");
}

TEST_F(Proxy, CarriesMoreThanTheSocketsHoldThoughNobodyReadsAtFirst) {
  Apri();
  const std::string molto(8U << 20U, 'x');
  std::thread mittente([&] { Manda(cliente, molto); });
  EXPECT_EQ(Arrivati(server, molto.size()), molto);
  mittente.join();
  EXPECT_EQ(proxy.Passati(Verso::AlServer), molto.size());
}

TEST_F(Proxy, ClosesBothSidesAfterTheBytesItWasGiven) {
  Apri();
  proxy.ScattaDopo(Verso::AlServer, 5, Azione::Chiudi);
  Manda(cliente, "domanda");
  EXPECT_EQ(Arrivati(server, 100), "doman");
  EXPECT_EQ(Arrivati(cliente, 100), "");
  EXPECT_TRUE(proxy.Scattato(10s));
  EXPECT_EQ(proxy.Aperte(), 0);
  Apri();
  Manda(cliente, "domanda");
  EXPECT_EQ(Arrivati(server, 7), "domanda");
}

TEST_F(Proxy, ResetsBothSides) {
  Apri();
  Manda(cliente, "a");
  EXPECT_EQ(Arrivati(server, 1), "a");
  proxy.Scatta(Azione::Azzera);
  EXPECT_EQ(Arrivati(server, 100), "!");
  EXPECT_EQ(Arrivati(cliente, 100), "!");
}

TEST_F(Proxy, FallsSilentAndCarriesOnWhenItIsRestored) {
  Apri();
  proxy.ScattaDopo(Verso::AlCliente, 2, Azione::Trattieni);
  Manda(server, "ecc");
  EXPECT_EQ(Arrivati(cliente, 2), "ec");
  Manda(server, "o");
  EXPECT_EQ(Arrivati(cliente, 1, 200ms), "?");
  Manda(cliente, "ehi");
  EXPECT_EQ(Arrivati(server, 1, 200ms), "?");
  proxy.Ripristina();
  EXPECT_EQ(Arrivati(server, 3), "ehi");
  EXPECT_EQ(Arrivati(cliente, 1), "o");
}

TEST_F(Proxy, KeepsASequenceFromTheServer) {
  Apri();
  proxy.ScattaAllaSequenza("COMMIT", Momento::PrimaDelPassaggio, Azione::Chiudi);
  Manda(cliente, "UPDATE; COMM");
  EXPECT_EQ(Arrivati(server, 12), "UPDATE; COMM");
  EXPECT_FALSE(proxy.Scattato());
  Manda(cliente, "IT;");
  EXPECT_EQ(Arrivati(server, 100), "");
  EXPECT_TRUE(proxy.Scattato(10s));
}

TEST_F(Proxy, KeepsTheAnswerToASequenceFromTheClient) {
  Apri();
  proxy.ScattaAllaSequenza("COMMIT", Momento::PrimaDellaRisposta, Azione::Azzera, 2);
  Manda(cliente, "COMMIT");
  EXPECT_EQ(Arrivati(server, 6), "COMMIT");
  Manda(server, "fatto");
  EXPECT_EQ(Arrivati(cliente, 5), "fatto");
  Manda(cliente, "COM");
  EXPECT_EQ(Arrivati(server, 3), "COM");
  Manda(cliente, "MIT");
  EXPECT_EQ(Arrivati(server, 3), "MIT");
  EXPECT_FALSE(proxy.Scattato());
  Manda(server, "fatto");
  EXPECT_EQ(Arrivati(cliente, 100), "!");
  EXPECT_TRUE(proxy.Scattato(10s));
}

TEST_F(Proxy, RefusesNewConnectionsAndTakesThemAgain) {
  proxy.Rifiuta(true);
  EXPECT_FALSE(Collega(proxy.Porta()).Opened());
  proxy.Rifiuta(false);
  Apri();
  proxy.RifiutaDopoLoScatto();
  proxy.Scatta(Azione::Chiudi);
  EXPECT_FALSE(Collega(proxy.Porta()).Opened());
  EXPECT_EQ(proxy.Connessioni(), 1);
}

} // namespace
} // namespace lumoscad::prova
