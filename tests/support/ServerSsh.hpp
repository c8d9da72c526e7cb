#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

namespace lumoscad::prova {

/// An OpenSSH server of the test's own on a loopback port, with host keys, a client key and a known hosts file in a
/// directory of its own. It lets in the user that runs the test, by key alone, with an empty home directory. It ends
/// with the object.
class ServerSsh {
 public:
  struct Opzioni {
    std::string tipoHost = "ed25519";   ///< the host key's type, as ssh-keygen names it
    std::vector<std::string> ambiente;  ///< "NAME=value": what the programs find in their environment
    std::string sftp = "internal-sftp"; ///< the command of the sftp subsystem
    std::vector<std::string> righe;     ///< further lines of the server's configuration
  };

  /// True where the server's programs are installed.
  [[nodiscard]] static bool Disponibile();

  /// Creates `cartella`, which is removed first and again at the end, and starts the server. Raises when it does not
  /// come up within half a minute.
  explicit ServerSsh(const std::filesystem::path& cartella);
  ServerSsh(const std::filesystem::path& cartella, Opzioni opzioni);
  ServerSsh(const ServerSsh&) = delete;
  ServerSsh& operator=(const ServerSsh&) = delete;
  ~ServerSsh();

  [[nodiscard]] static std::string Indirizzo() { return "127.0.0.1"; }
  [[nodiscard]] int Porta() const noexcept { return porta_; }
  /// The name of the user who is let in.
  [[nodiscard]] const std::string& Utente() const noexcept { return utente_; }
  /// The private key that is accepted; its public half stands beside it with the ending ".pub".
  [[nodiscard]] std::filesystem::path Chiave() const { return cartella_ / "cliente"; }
  /// The file of the public keys that are accepted, one a line; it is read at each login.
  [[nodiscard]] std::filesystem::path Ammesse() const { return cartella_ / "ammesse"; }
  /// A private key that is not accepted.
  [[nodiscard]] std::filesystem::path ChiaveEstranea() const { return cartella_ / "estraneo"; }
  /// The known hosts file: it names the server by address and port.
  [[nodiscard]] std::filesystem::path Noti() const { return cartella_ / "noti"; }
  /// What the server logs.
  [[nodiscard]] std::filesystem::path Registro() const { return cartella_ / "sshd.log"; }
  [[nodiscard]] const std::filesystem::path& Cartella() const noexcept { return cartella_; }
  /// "SHA256:..." of the host key that the server shows now.
  [[nodiscard]] std::string Impronta() const;
  /// "ssh-ed25519 AAAA..." of the host key that the server shows now.
  [[nodiscard]] std::string ChiavePubblicaHost() const;

  /// Makes the host known under another port of the loopback address too, as a proxy in front of it needs.
  void RendiNoto(int porta) const;
  /// Gives the host a new key of a type ("ed25519", "ecdsa", "rsa") and starts the server again on the same port; the
  /// known hosts file keeps the old one.
  void CambiaChiaveHost(const std::string& tipo = "ed25519");
  /// Changes the options of the running server, which starts again on the same port with the same keys.
  void Cambia(Opzioni opzioni);

  /// Ends the server and every session.
  void Ferma();
  /// Starts the server on the same port; ends it first where it runs.
  void Riavvia();
  /// Ends the sessions, with their programs, and keeps the server.
  void TroncaSessioni();

  /// The server's process and all that descend from it: sessions, subsystems, programs.
  [[nodiscard]] std::vector<pid_t> Processi() const;

  /// The settings of a component that is to reach this server, "NAME=value", through `porta` or directly.
  [[nodiscard]] std::vector<std::string> Ambiente(int porta = 0) const;

 private:
  void GeneraChiave(const std::filesystem::path& file, const std::string& tipo) const;
  void ScriviConfigurazione() const;
  void Avvia();
  [[nodiscard]] bool Pronto();

  std::filesystem::path cartella_;
  Opzioni opzioni_;
  std::string utente_;
  int porta_ = 0;
  pid_t processo_ = -1;
};

/// Every process that descends from `capostipite`.
[[nodiscard]] std::vector<pid_t> Discendenti(pid_t capostipite);

} // namespace lumoscad::prova
