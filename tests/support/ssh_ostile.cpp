// An SSH server that means ill: it lets everybody in, refuses the first channel, and then sends messages that mean
// nothing, without pause and without asking whether anyone takes them.
//
//   ssh_ostile CHIAVE CARTELLA
//
// CHIAVE is the private host key. The port that it has found is in the file CARTELLA/porta. The flood comes once there
// is a file CARTELLA/via; when no more of it is taken the file CARTELLA/piena appears. It serves one connection and
// ends.

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <libssh/libssh.h>
#include <libssh/server.h>
#include <memory>
#include <netinet/in.h>
#include <stdexcept>
#include <string>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <system_error>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

struct Libera {
  void operator()(ssh_bind ascolto) const { ssh_bind_free(ascolto); }
  void operator()(ssh_session sessione) const { ssh_free(sessione); }
  void operator()(ssh_message messaggio) const { ssh_message_free(messaggio); }
};
using Ascolto = std::unique_ptr<ssh_bind_struct, Libera>;
using Sessione = std::unique_ptr<ssh_session_struct, Libera>;
using Messaggio = std::unique_ptr<ssh_message_struct, Libera>;

/// A socket that listens on the loopback address. The file of its port appears whole.
int Ascolta(const fs::path& cartella) {
  const int presa = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in indirizzo{};
  indirizzo.sin_family = AF_INET;
  indirizzo.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t lunghezza = sizeof indirizzo;
  auto* generico = reinterpret_cast<sockaddr*>(&indirizzo); // NOLINT(cppcoreguidelines-pro-type-reinterpret-cast)
  if (presa < 0 || ::bind(presa, generico, lunghezza) != 0 || ::listen(presa, 1) != 0 ||
      ::getsockname(presa, generico, &lunghezza) != 0) {
    throw std::system_error(errno, std::generic_category(), "listen");
  }
  std::ofstream(cartella / "porta.nuova") << ntohs(indirizzo.sin_port);
  fs::rename(cartella / "porta.nuova", cartella / "porta");
  return presa;
}

/// Grants the login; ends with the refusal of the channel that is asked for then.
void FaiEntrare(ssh_session sessione) {
  for (bool respinto = false; !respinto;) {
    const Messaggio messaggio(ssh_message_get(sessione));
    if (!messaggio) {
      throw std::runtime_error(ssh_get_error(sessione));
    }
    respinto = ssh_message_type(messaggio.get()) == SSH_REQUEST_CHANNEL_OPEN;
    if (ssh_message_type(messaggio.get()) == SSH_REQUEST_AUTH) {
      ssh_message_auth_reply_success(messaggio.get(), 0);
    } else if (respinto) {
      ssh_message_reply_default(messaggio.get());
    } else {
      ssh_message_service_reply_success(messaggio.get());
    }
  }
}

/// Floods the other side to the end of the connection.
void Travolgi(ssh_session sessione, const fs::path& cartella) {
  static constexpr int Pausa = 200;
  static constexpr int Pezzi = 200;
  const std::string nulla(30000, 'x');
  for (int esito = SSH_OK; esito != SSH_ERROR;) {
    for (int pezzo = 0; pezzo < Pezzi && esito != SSH_ERROR; ++pezzo) {
      esito = ssh_send_ignore(sessione, nulla.c_str());
    }
    while (esito != SSH_ERROR && (esito = ssh_blocking_flush(sessione, Pausa)) == SSH_AGAIN) {
      std::ofstream(cartella / "piena") << '\n';
    }
  }
}

void Servi(const char* chiave, const fs::path& cartella) {
  const Ascolto ascolto(ssh_bind_new());
  const Sessione sessione(ssh_new());
  ssh_bind_options_set(ascolto.get(), SSH_BIND_OPTIONS_HOSTKEY, chiave);
  const int presa = Ascolta(cartella);
  const int cliente = ::accept4(presa, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
  ::close(presa);
  if (ssh_bind_accept_fd(ascolto.get(), sessione.get(), cliente) != SSH_OK ||
      ssh_handle_key_exchange(sessione.get()) != SSH_OK) {
    throw std::runtime_error(ssh_get_error(sessione.get()));
  }
  FaiEntrare(sessione.get());
  while (!fs::exists(cartella / "via")) {
    ::usleep(10000);
  }
  Travolgi(sessione.get(), cartella);
}

} // namespace

int main(int numero, char** argomenti) {
  /// Seconds after which even this host is tired of it.
  static constexpr unsigned Durata = 30;
  if (numero != 3) {
    std::fputs("uso: ssh_ostile CHIAVE CARTELLA\n", stderr);
    return 2;
  }
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  ::signal(SIGPIPE, SIG_IGN);
  ::alarm(Durata);
  try {
    Servi(argomenti[1], argomenti[2]);
  } catch (const std::exception& errore) {
    std::fprintf(stderr, "ssh_ostile: %s\n", errore.what());
    return 1;
  }
  return 0;
}
