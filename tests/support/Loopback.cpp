#include "support/Loopback.hpp"

#include <arpa/inet.h>
#include <cerrno>
#include <netinet/in.h>
#include <sys/socket.h>
#include <system_error>

namespace lumoscad::prova {
namespace {

constexpr int Coda = 16;

sockaddr_in Indirizzo(int porta) {
  sockaddr_in indirizzo{};
  indirizzo.sin_family = AF_INET;
  indirizzo.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  indirizzo.sin_port = htons(static_cast<in_port_t>(porta));
  return indirizzo;
}

base::Descriptor Presa() {
  base::Descriptor presa(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  if (!presa.Opened()) {
    throw std::system_error(errno, std::generic_category(), "socket");
  }
  return presa;
}

} // namespace

base::Descriptor Ascolta(int porta) {
  auto presa = Presa();
  const int si = 1;
  const auto indirizzo = Indirizzo(porta);
  if (::setsockopt(presa.Number(), SOL_SOCKET, SO_REUSEADDR, &si, sizeof si) != 0 ||
      ::bind(presa.Number(), reinterpret_cast<const sockaddr*>(&indirizzo), sizeof indirizzo) != 0 ||
      ::listen(presa.Number(), Coda) != 0) {
    return {};
  }
  return presa;
}

int PortaDi(const base::Descriptor& presa) {
  sockaddr_in indirizzo{};
  socklen_t lunghezza = sizeof indirizzo;
  if (::getsockname(presa.Number(), reinterpret_cast<sockaddr*>(&indirizzo), &lunghezza) != 0) {
    throw std::system_error(errno, std::generic_category(), "getsockname");
  }
  return ntohs(indirizzo.sin_port);
}

int PortaLibera() {
  return PortaDi(Ascolta());
}

base::Descriptor Collega(int porta) {
  auto presa = Presa();
  const auto indirizzo = Indirizzo(porta);
  if (::connect(presa.Number(), reinterpret_cast<const sockaddr*>(&indirizzo), sizeof indirizzo) != 0) {
    return {};
  }
  return presa;
}

} // namespace lumoscad::prova
