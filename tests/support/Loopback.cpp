#include "support/Loopback.hpp"

#include <arpa/inet.h>
#include <cerrno>
#include <netinet/in.h>
#include <sys/socket.h>
#include <system_error>

namespace lumoscad::test {
namespace {

sockaddr_in Address(int port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(static_cast<in_port_t>(port));
  return address;
}

base::Descriptor Socket() {
  base::Descriptor socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  if (!socket.Opened()) {
    throw std::system_error(errno, std::generic_category(), "socket");
  }
  return socket;
}

} // namespace

base::Descriptor Listen(int port, int waiting) {
  auto socket = Socket();
  const int yes = 1;
  const auto address = Address(port);
  if (::setsockopt(socket.Number(), SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes) != 0 ||
      ::bind(socket.Number(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
      ::listen(socket.Number(), waiting) != 0) {
    return {};
  }
  return socket;
}

int PortOf(const base::Descriptor& socket) {
  sockaddr_in address{};
  socklen_t length = sizeof address;
  if (::getsockname(socket.Number(), reinterpret_cast<sockaddr*>(&address), &length) != 0) {
    throw std::system_error(errno, std::generic_category(), "getsockname");
  }
  return ntohs(address.sin_port);
}

int FreePort() {
  return PortOf(Listen());
}

base::Descriptor Attach(int port, const std::string& host) {
  auto socket = Socket();
  auto address = Address(port);
  if (::inet_pton(AF_INET, host.c_str(), &address.sin_addr) != 1 ||
      ::connect(socket.Number(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    return {};
  }
  return socket;
}

} // namespace lumoscad::test
