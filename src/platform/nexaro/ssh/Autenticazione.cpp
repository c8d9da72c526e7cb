#include "platform/nexaro/ssh/Autenticazione.hpp"

#include "platform/base/SystemError.hpp"
#include "platform/nexaro/ErroriLink.hpp"
#include "platform/nexaro/File.hpp"
#include "platform/nexaro/Impostazioni.hpp"
#include "platform/nexaro/Testi.hpp"
#include "platform/nexaro/ssh/Agente.hpp"

#include <array>
#include <cerrno>
#include <unistd.h>

namespace lumoscad::nexaro {

namespace {

struct LiberaChiave {
  void operator()(ssh_key chiave) const { ssh_key_free(chiave); }
};
using Chiave = std::unique_ptr<ssh_key_struct, LiberaChiave>;

constexpr std::array<const char*, 3> ChiaviUsuali{"id_ed25519", "id_ecdsa", "id_rsa"};

/// Stands where the library would otherwise ask on the terminal.
int NonChiedere(const char* /*domanda*/, char* /*tampone*/, std::size_t /*lunghezza*/, int /*eco*/, int /*verifica*/,
                void* chiesta) {
  *static_cast<bool*>(chiesta) = true;
  return -1;
}

/// The private key of a file; nothing and a reason where it cannot be used.
Chiave LeggiChiave(const std::string& percorso, std::string& motivo) {
  // Looked at first: the library would wait for a pipe.
  if (const int errore = ErroreOrdinario(percorso); errore != 0) {
    motivo = base::SystemErrorText(errore);
    return nullptr;
  }
  if (::access(percorso.c_str(), R_OK) != 0) {
    motivo = base::SystemErrorText(errno);
    return nullptr;
  }
  ssh_key chiave = nullptr;
  bool protetta = false;
  if (ssh_pki_import_privkey_file(percorso.c_str(), nullptr, NonChiedere, &protetta, &chiave) != SSH_OK) {
    motivo = protetta ? "è protetta da una parola d'ordine, che non viene mai chiesta: usare l'agente delle chiavi"
                      : "non è una chiave privata leggibile";
    return nullptr;
  }
  return Chiave(chiave);
}

/// One login, attempt after attempt.
class Accesso {
 public:
  Accesso(const Sessione& sessione, const ImpostazioniSsh& impostazioni)
      : sessione_(sessione), impostazioni_(impostazioni) {}

  void Esegui() {
    if (ProvaSenzaChiave()) {
      return;
    }
    if (!impostazioni_.chiave.empty()) {
      if (ProvaFile(impostazioni_.chiave)) {
        return;
      }
      throw Rifiuto();
    }
    if (ProvaAgente()) {
      return;
    }
    for (const auto* nome : ChiaviUsuali) {
      const auto percorso = impostazioni_.cartella + "/" + nome;
      if (!impostazioni_.cartella.empty() && ::access(percorso.c_str(), F_OK) == 0 && ProvaFile(percorso)) {
        return;
      }
    }
    throw Rifiuto();
  }

 private:
  /// Runs one attempt within what is left of the wait: true when the user is logged in.
  template <typename Tentativo> bool Riesce(Tentativo tentativo) {
    sessione_.LimitaAttesa();
    const int esito = tentativo();
    if (esito == SSH_AUTH_AGAIN) {
      throw ErroreLink("Accesso all'host " + sessione_.Host() + ": il servizio SSH non ha risposto entro " +
                       Secondi(impostazioni_.attesa) + ". Verificare che l'host sia in funzione." +
                       sessione_.NotaRicerca());
    }
    if (esito == SSH_AUTH_PARTIAL) {
      throw ErroreLink("Accesso all'host " + sessione_.Host() + ": all'utente " + Cita(impostazioni_.utente) +
                       " l'host chiede altro oltre alla chiave. Chiedere all'amministratore dell'host di ammettere "
                       "l'accesso con la sola chiave.");
    }
    if (esito == SSH_AUTH_ERROR && ssh_is_connected(sessione_.Grezza()) == 0) {
      Annota("il collegamento è stato chiuso dall'host (" + TestoAltrui(ssh_get_error(sessione_.Grezza())) + ")");
      throw Rifiuto();
    }
    return esito == SSH_AUTH_SUCCESS;
  }

  /// Opens the login, which some hosts grant right away, and learns what the host admits.
  bool ProvaSenzaChiave() {
    if (Riesce([this] { return ssh_userauth_none(sessione_.Grezza(), nullptr); })) {
      return true;
    }
    const auto metodi = static_cast<unsigned>(ssh_userauth_list(sessione_.Grezza(), nullptr));
    if ((metodi & SSH_AUTH_METHOD_PUBLICKEY) == 0) {
      throw ErroreLink("Accesso all'host " + sessione_.Host() + ": all'utente " + Cita(impostazioni_.utente) +
                       " l'host non ammette l'accesso con una chiave. Chiedere all'amministratore dell'host di "
                       "ammetterlo.");
    }
    return false;
  }

  bool ProvaAgente() {
    const auto presa = Impostazione("SSH_AUTH_SOCK");
    if (presa.empty()) {
      Annota("agente delle chiavi: non attivo");
      return false;
    }
    Agente agente(presa, sessione_.TermineApertura());
    if (agente.Scaduto()) {
      throw AgenteMuto();
    }
    if (agente.Errore() != 0 || !Affida(agente)) {
      Annota("agente delle chiavi: non raggiungibile (" + base::SystemErrorText(agente.Errore()) + ")");
      return false;
    }
    Annota("agente delle chiavi: nessuna chiave accettata");
    return Riesce([&] {
      const int esito = ssh_userauth_agent(sessione_.Grezza(), nullptr);
      if (esito != SSH_AUTH_SUCCESS && agente.Scaduto()) {
        throw AgenteMuto();
      }
      return esito;
    });
  }

  /// Left to itself the library would make the connection, and wait on it without a limit.
  bool Affida(Agente& agente) const {
    auto presa = agente.Presa();
    if (!presa.Opened() || ssh_set_agent_socket(sessione_.Grezza(), presa.Number()) != SSH_OK) {
      return false;
    }
    static_cast<void>(presa.Release());
    return true;
  }

  [[nodiscard]] ErroreRuntime AgenteMuto() const {
    return ErroreLink("Accesso all'host " + sessione_.Host() +
                      ": l'agente delle chiavi (SSH_AUTH_SOCK) non ha risposto entro " + Secondi(impostazioni_.attesa) +
                      ". Verificare se attende una conferma, o indicare la chiave con NEXARO_SSH_CHIAVE." +
                      sessione_.NotaRicerca());
  }

  bool ProvaFile(const std::string& percorso) {
    std::string motivo;
    const auto chiave = LeggiChiave(percorso, motivo);
    if (!chiave) {
      Annota(percorso + ": " + motivo);
      return false;
    }
    Annota(percorso + ": non accettata");
    return Riesce([&] { return ssh_userauth_publickey(sessione_.Grezza(), nullptr, chiave.get()); });
  }

  void Annota(const std::string& tentativo) { tentativi_ += (tentativi_.empty() ? "" : "; ") + tentativo; }

  [[nodiscard]] ErroreRuntime Rifiuto() const {
    return {ErrorePermesso, "Accesso all'host " + sessione_.Host() + ": nessuna chiave dell'utente " +
                                Cita(impostazioni_.utente) + " è stata accettata (" + tentativi_ +
                                "). Chiedere all'amministratore dell'host di ammettere la chiave pubblica, o indicare "
                                "la chiave giusta con NEXARO_SSH_CHIAVE."};
  }

  const Sessione& sessione_;
  const ImpostazioniSsh& impostazioni_;
  std::string tentativi_;
};

} // namespace

void Autentica(const Sessione& sessione, const ImpostazioniSsh& impostazioni) {
  Accesso(sessione, impostazioni).Esegui();
}

} // namespace lumoscad::nexaro
