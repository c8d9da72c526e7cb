#include "platform/nexaro/ssh/Authentication.hpp"

#include "platform/base/SystemError.hpp"
#include "platform/nexaro/File.hpp"
#include "platform/nexaro/LinkErrors.hpp"
#include "platform/nexaro/Settings.hpp"
#include "platform/nexaro/Texts.hpp"
#include "platform/nexaro/ssh/Agent.hpp"
#include "platform/nexaro/ssh/Key.hpp"

#include <array>
#include <cerrno>
#include <unistd.h>

namespace lumoscad::nexaro {

namespace {

constexpr std::array<const char*, 3> UsualKeys{"id_ed25519", "id_ecdsa", "id_rsa"};

/// Stands where the library would otherwise ask on the terminal.
int NeverAsk(const char* /*domanda*/, char* /*tampone*/, std::size_t /*lunghezza*/, int /*eco*/, int /*verifica*/,
             void* asked) {
  *static_cast<bool*>(asked) = true;
  return -1;
}

/// The private key of a file; nothing and a reason where it cannot be used.
Key ReadKey(const std::string& path, std::string& reason) {
  // Looked at first: the library would wait for a pipe.
  if (const int error = OrdinaryFileError(path); error != 0) {
    reason = base::SystemErrorText(error);
    return nullptr;
  }
  if (::access(path.c_str(), R_OK) != 0) {
    reason = base::SystemErrorText(errno);
    return nullptr;
  }
  ssh_key key = nullptr;
  bool passphraseProtected = false;
  if (ssh_pki_import_privkey_file(path.c_str(), nullptr, NeverAsk, &passphraseProtected, &key) != SSH_OK) {
    reason = passphraseProtected
                 ? "è protetta da una parola d'ordine, che non viene mai chiesta: usare l'agente delle chiavi"
                 : "non è una chiave privata leggibile";
    return nullptr;
  }
  return Key(key);
}

/// One login, attempt after attempt.
class Login {
 public:
  Login(const Session& session, const SshSettings& settings) : session_(session), settings_(settings) {}

  void Run() {
    if (!settings_.key.empty()) {
      if (!TryNamedKey()) {
        throw Refusal();
      }
      return;
    }
    if (TryWithoutKey() || TryAgent()) {
      return;
    }
    for (const auto* name : UsualKeys) {
      const auto path = settings_.directory + "/" + name;
      if (!settings_.directory.empty() && ::access(path.c_str(), F_OK) == 0 && TryFile(path)) {
        return;
      }
    }
    throw Refusal();
  }

 private:
  /// Runs one attempt within what is left of the wait: true when the user is logged in.
  template <typename Attempt> bool Succeeds(Attempt attempt) {
    session_.LimitTimeout();
    const int outcome = attempt();
    if (outcome == SSH_AUTH_AGAIN) {
      throw LinkError("Accesso all'host " + session_.Host() + ": il servizio SSH non ha risposto entro " +
                      Seconds(settings_.timeout) + ". Verificare che l'host sia in funzione." + session_.LookUpNote());
    }
    if (outcome == SSH_AUTH_PARTIAL) {
      throw LinkError("Accesso all'host " + session_.Host() + ": all'utente " + Quote(settings_.user) +
                      " l'host chiede altro oltre alla chiave. Chiedere all'amministratore dell'host di ammettere "
                      "l'accesso con la sola chiave.");
    }
    if (outcome == SSH_AUTH_ERROR && ssh_is_connected(session_.Raw()) == 0) {
      Note("il collegamento è stato chiuso dall'host (" + ForeignText(ssh_get_error(session_.Raw())) + ")");
      throw Refusal();
    }
    return outcome == SSH_AUTH_SUCCESS;
  }

  /// Opens the login, which some hosts grant right away, and learns what the host admits.
  bool TryWithoutKey() {
    if (Succeeds([this] { return ssh_userauth_none(session_.Raw(), nullptr); })) {
      return true;
    }
    RequireKeysAdmitted();
    return false;
  }

  /// The one key is presented without asking first what the host admits: a refusal says that too.
  bool TryNamedKey() {
    std::string reason;
    const auto key = ReadKey(settings_.key, reason);
    if (!key) {
      Note(settings_.key + ": " + reason);
      return TryWithoutKey();
    }
    Note(settings_.key + ": non accettata");
    OpenService();
    if (Succeeds([&] { return ssh_userauth_publickey(session_.Raw(), nullptr, key.get()); })) {
      return true;
    }
    // Some hosts let everybody in. One that has had enough of attempts refuses this too, and has said what it admits.
    session_.LimitTimeout();
    if (ssh_userauth_none(session_.Raw(), nullptr) == SSH_AUTH_SUCCESS) {
      return true;
    }
    RequireKeysAdmitted();
    return false;
  }

  /// With its answer comes what the host says of itself: which signatures of an RSA key it takes.
  void OpenService() {
    static_cast<void>(Succeeds([this] {
      const int outcome = ssh_service_request(session_.Raw(), "ssh-userauth");
      return outcome == SSH_AGAIN ? static_cast<int>(SSH_AUTH_AGAIN) : outcome;
    }));
  }

  void RequireKeysAdmitted() const {
    const auto methods = static_cast<unsigned>(ssh_userauth_list(session_.Raw(), nullptr));
    if ((methods & SSH_AUTH_METHOD_PUBLICKEY) == 0) {
      throw LinkError("Accesso all'host " + session_.Host() + ": all'utente " + Quote(settings_.user) +
                      " l'host non ammette l'accesso con una chiave. Chiedere all'amministratore dell'host di "
                      "ammetterlo.");
    }
  }

  bool TryAgent() {
    const auto socket = Setting("SSH_AUTH_SOCK");
    if (socket.empty()) {
      Note("agente delle chiavi: non attivo");
      return false;
    }
    Agent agent(socket, session_.OpeningDeadline());
    if (agent.TimedOut()) {
      throw SilentAgent();
    }
    if (agent.Error() != 0 || !Entrust(agent)) {
      Note("agente delle chiavi: non raggiungibile (" + base::SystemErrorText(agent.Error()) + ")");
      return false;
    }
    Note("agente delle chiavi: nessuna chiave accettata");
    return Succeeds([&] {
      const int outcome = ssh_userauth_agent(session_.Raw(), nullptr);
      if (outcome != SSH_AUTH_SUCCESS && agent.TimedOut()) {
        throw SilentAgent();
      }
      return outcome;
    });
  }

  /// Left to itself the library would make the connection, and wait on it without a limit.
  bool Entrust(Agent& agent) const {
    auto socket = agent.Socket();
    if (!socket.Opened() || ssh_set_agent_socket(session_.Raw(), socket.Number()) != SSH_OK) {
      return false;
    }
    static_cast<void>(socket.Release());
    return true;
  }

  [[nodiscard]] RuntimeError SilentAgent() const {
    return LinkError("Accesso all'host " + session_.Host() +
                     ": l'agente delle chiavi (SSH_AUTH_SOCK) non ha risposto entro " + Seconds(settings_.timeout) +
                     ". Verificare se attende una conferma, o indicare la chiave con NEXARO_SSH_CHIAVE." +
                     session_.LookUpNote());
  }

  bool TryFile(const std::string& path) {
    std::string reason;
    const auto key = ReadKey(path, reason);
    if (!key) {
      Note(path + ": " + reason);
      return false;
    }
    Note(path + ": non accettata");
    return Succeeds([&] { return ssh_userauth_publickey(session_.Raw(), nullptr, key.get()); });
  }

  void Note(const std::string& attempt) { attempts_ += (attempts_.empty() ? "" : "; ") + attempt; }

  [[nodiscard]] RuntimeError Refusal() const {
    return {PermissionError, "Accesso all'host " + session_.Host() + ": nessuna chiave dell'utente " +
                                 Quote(settings_.user) + " è stata accettata (" + attempts_ +
                                 "). Chiedere all'amministratore dell'host di ammettere la chiave pubblica, o indicare "
                                 "la chiave giusta con NEXARO_SSH_CHIAVE."};
  }

  const Session& session_;
  const SshSettings& settings_;
  std::string attempts_;
};

} // namespace

void Authenticate(const Session& session, const SshSettings& settings) {
  Login(session, settings).Run();
}

} // namespace lumoscad::nexaro
