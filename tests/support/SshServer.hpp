#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

namespace lumoscad::test {

/// An OpenSSH server of the test's own on a loopback port, with host keys, a client key and a known hosts file in a
/// directory of its own. It lets in the user that runs the test, by key alone, with an empty home directory. It ends
/// with the object.
class SshServer {
 public:
  struct Options {
    std::string hostKeyType = "ed25519";  ///< the host key's type, as ssh-keygen names it
    std::vector<std::string> environment; ///< "NAME=value": what the programs find in their environment
    std::string sftp = "internal-sftp";   ///< the command of the sftp subsystem
    std::vector<std::string> rows;        ///< further lines of the server's configuration
  };

  /// True where the server's programs are installed.
  [[nodiscard]] static bool Available();

  /// Creates `directory`, which is removed first and again at the end, and starts the server. Raises when it does not
  /// come up within half a minute.
  explicit SshServer(const std::filesystem::path& directory);
  SshServer(const std::filesystem::path& directory, Options options);
  SshServer(const SshServer&) = delete;
  SshServer& operator=(const SshServer&) = delete;
  ~SshServer();

  [[nodiscard]] static std::string Address() { return "127.0.0.1"; }
  [[nodiscard]] int Port() const noexcept { return port_; }
  /// The name of the user who is let in.
  [[nodiscard]] const std::string& User() const noexcept { return user_; }
  /// The private key that is accepted; its public half stands beside it with the ending ".pub".
  [[nodiscard]] std::filesystem::path Key() const { return directory_ / "cliente"; }
  /// The file of the public keys that are accepted, one a line; it is read at each login.
  [[nodiscard]] std::filesystem::path Authorized() const { return directory_ / "ammesse"; }
  /// A private key that is not accepted.
  [[nodiscard]] std::filesystem::path ForeignKey() const { return directory_ / "estraneo"; }
  /// The known hosts file: it names the server by address and port.
  [[nodiscard]] std::filesystem::path KnownHosts() const { return directory_ / "noti"; }
  /// What the server logs.
  [[nodiscard]] std::filesystem::path Log() const { return directory_ / "sshd.log"; }
  [[nodiscard]] const std::filesystem::path& Directory() const noexcept { return directory_; }
  /// "SHA256:..." of the host key that the server shows now.
  [[nodiscard]] std::string Hash() const;
  /// "ssh-ed25519 AAAA..." of the host key that the server shows now.
  [[nodiscard]] std::string HostPublicKey() const;

  /// Makes the host known under another port of the loopback address too, as a proxy in front of it needs.
  void MakeKnown(int port) const;
  /// Gives the host a new key of a type ("ed25519", "ecdsa", "rsa") and starts the server again on the same port; the
  /// known hosts file keeps the old one.
  void ChangeHostKey(const std::string& type = "ed25519");
  /// Changes the options of the running server, which starts again on the same port with the same keys.
  void Change(Options options);

  /// Ends the server and every session.
  void Stop();
  /// Starts the server on the same port; ends it first where it runs.
  void Restart();
  /// Ends the sessions, with their programs, and keeps the server.
  void CutSessions();

  /// The server's process and all that descend from it: sessions, subsystems, programs.
  [[nodiscard]] std::vector<pid_t> Processes() const;

  /// The settings of a component that is to reach this server, "NAME=value", through `port` or directly.
  [[nodiscard]] std::vector<std::string> Environment(int port = 0) const;

 private:
  void GenerateKey(const std::filesystem::path& file, const std::string& type) const;
  void WriteConfiguration() const;
  void Start();
  [[nodiscard]] bool Ready();

  std::filesystem::path directory_;
  Options options_;
  std::string user_;
  int port_ = 0;
  pid_t process_ = -1;
};

/// Every process that descends from `ancestor`.
[[nodiscard]] std::vector<pid_t> Descendants(pid_t ancestor);

} // namespace lumoscad::test
