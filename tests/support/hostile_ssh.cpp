// An SSH server that means ill: it lets everybody in, and serves one connection.
//
//   ssh_ostile CHIAVE CARTELLA piena      refuses the first channel, and then sends messages that mean nothing, without
//                                         pause and without asking whether anyone takes them
//   ssh_ostile CHIAVE CARTELLA congeda    starts what the first channel asks for, and closes it in the same breath
//   ssh_ostile CHIAVE CARTELLA open-door  the same, but takes no key: it lets in who asks without one
//
// CHIAVE is the private host key. The port that it has found is in the file CARTELLA/porta. The flood comes once there
// is a file CARTELLA/via; when no more of it is taken the file CARTELLA/piena appears.

#include "support/Loopback.hpp"

#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <libssh/libssh.h>
#include <libssh/server.h>
#include <memory>
#include <netinet/tcp.h>
#include <stdexcept>
#include <string>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

struct Release {
  void operator()(ssh_bind listening) const { ssh_bind_free(listening); }
  void operator()(ssh_session session) const { ssh_free(session); }
  void operator()(ssh_message message) const { ssh_message_free(message); }
};
using Listening = std::unique_ptr<ssh_bind_struct, Release>;
using Session = std::unique_ptr<ssh_session_struct, Release>;
using Message = std::unique_ptr<ssh_message_struct, Release>;

/// A socket that listens on the loopback address. The file of its port appears whole.
lumoscad::base::Descriptor ListenFor(const fs::path& directory) {
  auto socket = lumoscad::test::Listen(0, 1);
  std::ofstream(directory / "porta.nuova") << lumoscad::test::PortOf(socket);
  fs::rename(directory / "porta.nuova", directory / "porta");
  return socket;
}

/// Grants the login; ends with the refusal of the channel that is asked for then.
void LetIn(ssh_session session) {
  for (bool rejected = false; !rejected;) {
    const Message message(ssh_message_get(session));
    if (!message) {
      throw std::runtime_error(ssh_get_error(session));
    }
    rejected = ssh_message_type(message.get()) == SSH_REQUEST_CHANNEL_OPEN;
    if (ssh_message_type(message.get()) == SSH_REQUEST_AUTH) {
      ssh_message_auth_reply_success(message.get(), 0);
    } else if (rejected) {
      ssh_message_reply_default(message.get());
    } else {
      ssh_message_service_reply_success(message.get());
    }
  }
}

/// Answers an attempt to log in; with `openDoor` a key is refused.
void Admit(ssh_message message, bool openDoor) {
  if (openDoor && ssh_message_subtype(message) != static_cast<int>(SSH_AUTH_METHOD_NONE)) {
    ssh_message_auth_set_methods(message, static_cast<int>(SSH_AUTH_METHOD_PASSWORD));
    ssh_message_reply_default(message);
    return;
  }
  ssh_message_auth_reply_success(message, 0);
}

/// Lets the other side in and grants its first channel what it asks for; the grant and the channel's end come in one
/// piece.
void Dismiss(ssh_session session, bool openDoor) {
  ssh_channel channel = nullptr; // goes with the session
  for (bool granted = false; !granted;) {
    const Message message(ssh_message_get(session));
    if (!message) {
      throw std::runtime_error(ssh_get_error(session));
    }
    switch (ssh_message_type(message.get())) {
    case SSH_REQUEST_AUTH:
      Admit(message.get(), openDoor);
      break;
    case SSH_REQUEST_CHANNEL_OPEN:
      channel = ssh_message_channel_request_open_reply_accept(message.get());
      break;
    case SSH_REQUEST_CHANNEL: {
      const int together = 1;
      const int apart = 0;
      ::setsockopt(ssh_get_fd(session), IPPROTO_TCP, TCP_CORK, &together, sizeof together);
      ssh_message_channel_request_reply_success(message.get());
      ssh_channel_close(channel);
      ssh_blocking_flush(session, 1000);
      ::setsockopt(ssh_get_fd(session), IPPROTO_TCP, TCP_CORK, &apart, sizeof apart);
      granted = true;
      break;
    }
    default:
      ssh_message_service_reply_success(message.get());
    }
  }
  while (const Message message{ssh_message_get(session)}) {
    ssh_message_reply_default(message.get());
  }
}

/// Floods the other side to the end of the connection.
void Overwhelm(ssh_session session, const fs::path& directory) {
  static constexpr int Pause = 200;
  static constexpr int Pieces = 200;
  const std::string nothing(30000, 'x');
  for (int outcome = SSH_OK; outcome != SSH_ERROR;) {
    for (int piece = 0; piece < Pieces && outcome != SSH_ERROR; ++piece) {
      outcome = ssh_send_ignore(session, nothing.c_str());
    }
    while (outcome != SSH_ERROR && (outcome = ssh_blocking_flush(session, Pause)) == SSH_AGAIN) {
      std::ofstream(directory / "piena") << '\n';
    }
  }
}

void Serve(const char* key, const fs::path& directory, const std::string& harm) {
  const Listening listening(ssh_bind_new());
  const Session session(ssh_new());
  ssh_bind_options_set(listening.get(), SSH_BIND_OPTIONS_HOSTKEY, key);
  auto socket = ListenFor(directory);
  const int client = ::accept4(socket.Number(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
  socket.Close();
  if (ssh_bind_accept_fd(listening.get(), session.get(), client) != SSH_OK ||
      ssh_handle_key_exchange(session.get()) != SSH_OK) {
    throw std::runtime_error(ssh_get_error(session.get()));
  }
  if (harm == "congeda" || harm == "open-door") {
    Dismiss(session.get(), harm == "open-door");
    return;
  }
  LetIn(session.get());
  while (!fs::exists(directory / "via")) {
    ::usleep(10000);
  }
  Overwhelm(session.get(), directory);
}

} // namespace

int main(int number, char** arguments) {
  /// Seconds after which even this host is tired of it.
  static constexpr unsigned Duration = 30;
  if (number != 4) {
    std::fputs("uso: ssh_ostile CHIAVE CARTELLA piena|congeda|open-door\n", stderr);
    return 2;
  }
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  ::signal(SIGPIPE, SIG_IGN);
  ::alarm(Duration);
  try {
    Serve(arguments[1], arguments[2], arguments[3]);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "ssh_ostile: %s\n", error.what());
    return 1;
  }
  return 0;
}
