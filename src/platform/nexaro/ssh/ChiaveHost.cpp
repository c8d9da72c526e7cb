#include "platform/nexaro/ssh/ChiaveHost.hpp"

#include "platform/base/AsciiCase.hpp"
#include "platform/nexaro/ErroriLink.hpp"
#include "platform/nexaro/File.hpp"
#include "platform/nexaro/SenzaSigpipe.hpp"
#include "platform/nexaro/Testi.hpp"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace lumoscad::nexaro {

namespace {

struct LiberaChiave {
  void operator()(ssh_key chiave) const { ssh_key_free(chiave); }
};
struct LiberaTesto {
  void operator()(char* testo) const { ssh_string_free_char(testo); }
};
struct LiberaVoce {
  void operator()(ssh_knownhosts_entry* voce) const { ssh_knownhosts_entry_free(voce); }
};
struct LiberaImpronta {
  void operator()(unsigned char* impronta) const { ssh_clean_pubkey_hash(&impronta); }
};
using Chiave = std::unique_ptr<ssh_key_struct, LiberaChiave>;
using Testo = std::unique_ptr<char, LiberaTesto>;

Chiave ChiavePresentata(const Sessione& sessione) {
  ssh_key chiave = nullptr;
  if (ssh_get_server_publickey(sessione.Grezza(), &chiave) != SSH_OK) {
    throw ErroreLink("Collegamento all'host " + sessione.Host() + ": l'host non ha presentato una chiave.");
  }
  return Chiave(chiave);
}

std::string Impronta(const Chiave& chiave) {
  unsigned char* grezza = nullptr;
  std::size_t lunghezza = 0;
  if (ssh_get_publickey_hash(chiave.get(), SSH_PUBLICKEY_HASH_SHA256, &grezza, &lunghezza) != SSH_OK) {
    throw ErroreLink("L'impronta della chiave dell'host non può essere calcolata.");
  }
  const std::unique_ptr<unsigned char, LiberaImpronta> impronta(grezza);
  const Testo testo(ssh_get_fingerprint_hash(SSH_PUBLICKEY_HASH_SHA256, impronta.get(), lunghezza));
  return testo ? testo.get() : "";
}

/// The host as the file of known hosts writes it.
std::string NomeNoto(std::string_view nome, unsigned porta) {
  const auto host = base::LowerCase(nome);
  return porta == 22 ? host : "[" + host + "]:" + std::to_string(porta);
}

std::string RigaNota(const Chiave& chiave, const std::string& nome) {
  char* grezza = nullptr;
  if (ssh_pki_export_pubkey_base64(chiave.get(), &grezza) != SSH_OK) {
    throw ErroreLink("La chiave dell'host non può essere scritta.");
  }
  const Testo base64(grezza);
  return nome + " " + ssh_key_type_to_char(ssh_key_type(chiave.get())) + " " + base64.get();
}

/// The content of the file; `dettaglio` says why it cannot be read. A missing file is an empty one.
std::string LeggiNoti(const std::string& noti, std::string& dettaglio) {
  std::string contenuto;
  struct stat stato {};
  if (::stat(noti.c_str(), &stato) != 0 && errno == ENOENT) {
    return contenuto;
  }
  try {
    const auto file = ApriOrdinario(noti, noti);
    std::array<char, 16384> tampone{};
    for (std::size_t letti = 0; (letti = LeggiBlocco(file, tampone, noti)) > 0;) {
      contenuto.append(tampone.data(), letti);
    }
  } catch (const ErroreRuntime& errore) {
    dettaglio = errore.Testo();
  }
  return contenuto;
}

/// A line of the file, without its marker.
struct Riga {
  std::string testo;
  bool isRevoca = false;
};

/// Lines that name authorities, and lines with exceptions from a pattern, are left out: no key is accepted by them.
bool LeggiRiga(std::string_view grezza, Riga& riga) {
  const auto inizio = grezza.find_first_not_of(" \t");
  if (inizio == std::string_view::npos || grezza[inizio] == '#') {
    return false;
  }
  grezza.remove_prefix(inizio);
  if (grezza.ends_with('\r')) {
    grezza.remove_suffix(1);
  }
  riga.isRevoca = grezza.starts_with("@revoked");
  if (grezza.front() == '@') {
    const auto bianco = grezza.find_first_of(" \t");
    const auto seguito = bianco == std::string_view::npos ? bianco : grezza.find_first_not_of(" \t", bianco);
    if (!riga.isRevoca || seguito == std::string_view::npos) {
      return false;
    }
    grezza.remove_prefix(seguito);
  }
  riga.testo = std::string(grezza);
  std::replace(riga.testo.begin(), riga.testo.end(), '\t', ' ');
  return riga.isRevoca || grezza.substr(0, grezza.find_first_of(" \t")).find('!') == std::string_view::npos;
}

/// How one line changes what is known of the key so far.
StatoChiave Confronta(StatoChiave finora, const Riga& riga, const Chiave& chiave, const std::string& nome) {
  ssh_knownhosts_entry* grezza = nullptr;
  if (finora == StatoChiave::Revocata ||
      ssh_known_hosts_parse_line(nome.c_str(), riga.testo.c_str(), &grezza) != SSH_OK) {
    return finora;
  }
  const std::unique_ptr<ssh_knownhosts_entry, LiberaVoce> voce(grezza);
  const bool uguale = ssh_key_cmp(chiave.get(), voce->publickey, SSH_KEY_CMP_PUBLIC) == 0;
  if (riga.isRevoca) {
    return uguale ? StatoChiave::Revocata : finora;
  }
  if (uguale) {
    return StatoChiave::Nota;
  }
  if (finora == StatoChiave::Nota || finora == StatoChiave::Cambiata) {
    return finora;
  }
  return ssh_key_type(chiave.get()) == ssh_key_type(voce->publickey) ? StatoChiave::Cambiata : StatoChiave::AltroTipo;
}

void Cerca(std::string_view contenuto, const Chiave& chiave, const std::string& nome, ChiaveHost& esame) {
  for (int numero = 1; !contenuto.empty(); ++numero) {
    const auto fine = contenuto.find('\n');
    Riga riga;
    if (LeggiRiga(contenuto.substr(0, fine), riga)) {
      const auto stato = Confronta(esame.stato, riga, chiave, nome);
      if (stato != esame.stato) {
        esame.stato = stato;
        esame.dettaglio = "riga " + std::to_string(numero);
      }
    }
    contenuto = fine == std::string_view::npos ? std::string_view() : contenuto.substr(fine + 1);
  }
}

/// Creates the directory of the file where its parent exists.
void CreaCartella(const std::string& noti) {
  const auto cartella = ParentDirectory(noti);
  if (::mkdir(cartella.c_str(), S_IRWXU) != 0 && errno != EEXIST) {
    throw ErroreSistema("Creazione della cartella " + cartella, errno);
  }
}

} // namespace

ChiaveHost EsaminaChiave(const Sessione& sessione, unsigned porta, const std::string& noti) {
  const auto chiave = ChiavePresentata(sessione);
  const auto nome = NomeNoto(sessione.Host(), porta);
  ChiaveHost esame;
  esame.tipo = ssh_key_type_to_char(ssh_key_type(chiave.get()));
  esame.impronta = Impronta(chiave);
  esame.riga = RigaNota(chiave, nome);
  const auto contenuto = LeggiNoti(noti, esame.dettaglio);
  if (!esame.dettaglio.empty()) {
    esame.stato = StatoChiave::Illeggibile;
    return esame;
  }
  Cerca(contenuto, chiave, nome, esame);
  return esame;
}

ChiaveHost ChiediChiave(const ImpostazioniSsh& impostazioni, const std::string& host) {
  const SenzaSigpipe senzaSigpipe;
  const Sessione sessione(impostazioni, host);
  return EsaminaChiave(sessione, impostazioni.porta, impostazioni.noti);
}

std::string MotivoRifiuto(const ChiaveHost& chiave, const std::string& host, const std::string& noti) {
  const auto presentata = "L'host " + host + " ha presentato la chiave " + chiave.tipo + " " + chiave.impronta;
  const std::string rimedio =
      " Chiedere all'amministratore dell'host se la chiave è stata sostituita: solo in questo "
      "caso cancellare quella riga e registrare la nuova chiave con «lumoscad --registra-host " +
      host + "».";
  switch (chiave.stato) {
  case StatoChiave::Nota:
    return {};
  case StatoChiave::Sconosciuta:
    return presentata + ", che non è fra gli host noti (" + noti +
           "). Confrontare l'impronta con quella data dall'amministratore dell'host e registrarla con «lumoscad "
           "--registra-host " +
           host + "».";
  case StatoChiave::Cambiata:
    return presentata + ", diversa da quella nota (" + noti + ", " + chiave.dettaglio +
           "): la chiave è cambiata, o un'altra macchina si è messa al posto dell'host." + rimedio;
  case StatoChiave::AltroTipo:
    return presentata + ", di tipo diverso da quella nota (" + noti + ", " + chiave.dettaglio +
           "): l'host ha cambiato chiavi, o un'altra macchina si è messa al suo posto." + rimedio;
  case StatoChiave::Revocata:
    return presentata + ", che è revocata (" + noti + ", " + chiave.dettaglio +
           "). Avvertire l'amministratore dell'host.";
  case StatoChiave::Illeggibile:
    return presentata + ", ma il file degli host noti non può essere letto. " + chiave.dettaglio +
           " Verificare il file e i suoi permessi.";
  }
  return presentata + ".";
}

void RegistraRiga(const std::string& riga, const std::string& noti) {
  const auto operazione = "Registrazione nel file degli host noti " + noti;
  CreaCartella(noti);
  base::Descriptor file(::open(noti.c_str(), O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, 0600));
  struct stat stato {};
  if (!file.Opened() || ::fstat(file.Number(), &stato) != 0) {
    throw ErroreSistema(operazione, errno);
  }
  if (!S_ISREG(stato.st_mode)) {
    throw ErroreSistema(operazione, EINVAL);
  }
  char ultimo = '\n';
  const bool incompleta =
      stato.st_size > 0 && ::pread(file.Number(), &ultimo, 1, stato.st_size - 1) == 1 && ultimo != '\n';
  // One write: whoever else adds to the file cannot get in between.
  const auto testo = (incompleta ? "\n" : "") + riga + "\n";
  const auto scritti = ::write(file.Number(), testo.data(), testo.size());
  if (scritti != static_cast<ssize_t>(testo.size())) {
    throw ErroreSistema(operazione, scritti < 0 ? errno : ENOSPC);
  }
  if (::fsync(file.Number()) != 0 || file.Close() != 0) {
    throw ErroreSistema(operazione, errno);
  }
}

} // namespace lumoscad::nexaro
