#include "Passi.hpp"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/types.h>
#include <unistd.h>

namespace lumoscad::test::passi {
namespace {

struct Contatore {
  long passo = 0;
  long morte = 0;
  int elenco = -1;
  bool attivo = false;
  std::string cartella;
  std::string istruzione; ///< announced and not yet sent
  std::string inCorso;    ///< being sent; empty outside a statement
  std::string operazione; ///< of the host link; empty outside one
};

Contatore& Il() {
  static Contatore contatore;
  return contatore;
}

/// The verb of a statement and the table that it is about.
std::string Nome(std::string_view testo) {
  const auto parola = [](std::string_view resto) { return std::string(resto.substr(0, resto.find_first_of(" ,)"))); };
  std::string verbo = parola(testo);
  for (const std::string_view domanda : {"pg_backend", "CONNECTION_ID", "inet_client_port"}) {
    if (testo.find(domanda) != std::string_view::npos) {
      return verbo + " of the server's session";
    }
  }
  for (const std::string_view prima : {" FROM ", "UPDATE "}) {
    if (const auto posto = testo.find(prima); posto != std::string_view::npos) {
      const std::string tabella = parola(testo.substr(posto + prima.size()));
      return verbo + " " + tabella.substr(tabella.find('.') + 1);
    }
  }
  return verbo;
}

} // namespace

void Conta(const std::string& elenco, long morte, const std::string& cartella) {
  Contatore& il = Il();
  il.attivo = true;
  il.passo = 0;
  il.morte = morte;
  il.cartella = cartella + "/";
  if (!elenco.empty()) {
    il.elenco = ::open(elenco.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, S_IRUSR | S_IWUSR);
  }
}

void Punto(std::string_view nome) {
  Contatore& il = Il();
  if (!il.attivo) {
    return;
  }
  ++il.passo;
  if (il.elenco >= 0) {
    const std::string riga = std::string(nome) + "\n";
    static_cast<void>(::write(il.elenco, riga.data(), riga.size()) != 0);
  }
  if (il.passo == il.morte) {
    ::kill(::getpid(), SIGKILL);
  }
}

void ProssimaIstruzione(std::string_view testo) {
  if (!Il().attivo) {
    return;
  }
  Il().istruzione = Nome(testo);
}

void OperazioneHost(std::string_view nome) {
  Il().operazione = nome;
}

namespace {

template <typename Funzione> Funzione* Vera(const char* nome) {
  return reinterpret_cast<Funzione*>(::dlsym(RTLD_NEXT, nome));
}

/// Runs a call to the database as the steps before it, after each message to the server, and after its answer.
template <typename Chiamata> short Istruzione(const std::string& nome, Chiamata chiamata) {
  Punto(nome + ": before");
  Il().inCorso = nome;
  const short esito = chiamata();
  Il().inCorso.clear();
  Punto(nome + ": answered");
  return esito;
}

/// A text that is given to the driver with its length, or up to a zero.
std::string_view Vista(const unsigned char* testo, int lunghezza) {
  constexpr int FinoAlloZero = -3;
  const auto* const caratteri = reinterpret_cast<const char*>(testo);
  return lunghezza == FinoAlloZero ? std::string_view(caratteri)
                                   : std::string_view(caratteri, static_cast<std::size_t>(lunghezza));
}

/// What a part of a note is called by its file; empty for another file. Both parts are written under one other name.
std::string ParteDellaNota(std::string_view percorso) {
  const Contatore& il = Il();
  if (!il.attivo || !percorso.starts_with(il.cartella)) {
    return "";
  }
  return percorso.ends_with(".nota") ? "note" : percorso.ends_with(".fase") ? "note's phase" : "";
}

/// The path of an open file, as the system tells it; empty where no step is counted.
std::string PercorsoDi(int descrittore) {
  if (!Il().attivo) {
    return "";
  }
  std::array<char, 4096> percorso{};
  const std::string legame = "/proc/self/fd/" + std::to_string(descrittore);
  const auto lungo = ::readlink(legame.c_str(), percorso.data(), percorso.size());
  return lungo > 0 ? std::string(percorso.data(), static_cast<std::size_t>(lungo)) : "";
}

/// Whether an open file is a part of a note that has not got its name yet.
bool NotaInAttesa(int descrittore) {
  return PercorsoDi(descrittore).ends_with(".parte");
}

/// What the removal of a file is called; empty for one that is no step. The lock's local copy keeps the lock's name; a
/// request's file begins with the workstation's; SQLite's journal undoes a transaction for as long as it is there.
std::string NomeTolto(std::string_view percorso) {
  const Contatore& il = Il();
  if (!il.inCorso.empty() && percorso.ends_with("-journal")) {
    return il.inCorso + ", remove the journal";
  }
  if (!il.attivo || !il.operazione.empty() || !percorso.starts_with(il.cartella)) {
    return "";
  }
  if (const std::string parte = ParteDellaNota(percorso); !parte.empty()) {
    return "remove the " + parte;
  }
  if (percorso.ends_with(".parte") || percorso.ends_with(".conferma") || percorso.ends_with(".archivio")) {
    return "";
  }
  return percorso.substr(il.cartella.size()).starts_with("VB") ? "remove the local copy of the lock"
                                                               : "remove the local request file";
}

/// A file has all its bytes on the disk.
int Scritto(int descrittore, int esito) {
  const Contatore& il = Il();
  if (NotaInAttesa(descrittore)) {
    Punto("note: flushed beside its place");
  } else if (!il.operazione.empty()) {
    Punto(il.operazione + ": copied beside its place");
  } else if (!il.inCorso.empty()) {
    Punto(il.inCorso + ": on the disk");
  }
  return esito;
}

} // namespace
} // namespace lumoscad::test::passi

namespace passi = lumoscad::test::passi;

// The stand-ins. Each does what the library's own does, and nothing else while no step is counted.

extern "C" short SQLPrepare(void* statement, unsigned char* testo, int lunghezza) {
  static auto* const Originale = passi::Vera<short(void*, unsigned char*, int)>("SQLPrepare");
  if (passi::Il().attivo) {
    passi::Il().istruzione = passi::Nome(passi::Vista(testo, lunghezza));
  }
  return Originale(statement, testo, lunghezza);
}

extern "C" short SQLExecute(void* statement) {
  static auto* const Originale = passi::Vera<short(void*)>("SQLExecute");
  if (!passi::Il().attivo) {
    return Originale(statement);
  }
  return passi::Istruzione(passi::Il().istruzione, [&] { return Originale(statement); });
}

extern "C" short SQLExecDirect(void* statement, unsigned char* testo, int lunghezza) {
  static auto* const Originale = passi::Vera<short(void*, unsigned char*, int)>("SQLExecDirect");
  if (!passi::Il().attivo) {
    return Originale(statement, testo, lunghezza);
  }
  const std::string nome = passi::Nome(passi::Vista(testo, lunghezza));
  return passi::Istruzione(nome, [&] { return Originale(statement, testo, lunghezza); });
}

extern "C" short SQLEndTran(short genere, void* connessione, short esito) {
  static auto* const Originale = passi::Vera<short(short, void*, short)>("SQLEndTran");
  if (!passi::Il().attivo) {
    return Originale(genere, connessione, esito);
  }
  return passi::Istruzione(esito == 0 ? "COMMIT" : "ROLLBACK", [&] { return Originale(genere, connessione, esito); });
}

// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name): the C library's names are reserved
extern "C" ssize_t send(int presa, const void* dati, size_t quanti, int modi) {
  static auto* const Originale = passi::Vera<ssize_t(int, const void*, size_t, int)>("send");
  const ssize_t spediti = Originale(presa, dati, quanti, modi);
  // Of the link to the host only the messages of the program's call are steps: the others have steps around them.
  const std::string nome =
      passi::Il().inCorso.empty() && passi::Il().operazione == "program" ? "program" : passi::Il().inCorso;
  if (const int errore = errno; !nome.empty()) {
    passi::Punto(nome + ": sent");
    errno = errore;
  }
  return spediti;
}

extern "C" pid_t fork() {
  static auto* const Originale = passi::Vera<pid_t()>("fork");
  const pid_t figlio = Originale();
  if (figlio > 0 && !passi::Il().operazione.empty()) {
    passi::Punto(passi::Il().operazione + ": started");
  }
  return figlio;
}

extern "C" int fsync(int descrittore) {
  static auto* const Originale = passi::Vera<int(int)>("fsync");
  return passi::Scritto(descrittore, Originale(descrittore));
}

extern "C" int fdatasync(int descrittore) {
  static auto* const Originale = passi::Vera<int(int)>("fdatasync");
  return passi::Scritto(descrittore, Originale(descrittore));
}

extern "C" int fchmod(int descrittore, mode_t modo) {
  static auto* const Originale = passi::Vera<int(int, mode_t)>("fchmod");
  const int esito = Originale(descrittore, modo);
  if (passi::NotaInAttesa(descrittore)) {
    passi::Punto("note: made, still empty");
  } else if (passi::PercorsoDi(descrittore).ends_with(".nota")) {
    passi::Punto("note: marked");
  } else if (passi::Il().operazione.empty()) {
    passi::Punto("local file: made, still empty");
  }
  return esito;
}

extern "C" int rename(const char* da, const char* a) {
  static auto* const Originale = passi::Vera<int(const char*, const char*)>("rename");
  const int esito = Originale(da, a);
  if (const std::string parte = passi::ParteDellaNota(a); !parte.empty()) {
    passi::Punto(parte + ": in its place");
  }
  return esito;
}

extern "C" int renameat2(int cartellaDa, const char* da, int cartellaA, const char* a, unsigned modi) {
  static auto* const Originale = passi::Vera<int(int, const char*, int, const char*, unsigned)>("renameat2");
  const int esito = Originale(cartellaDa, da, cartellaA, a, modi);
  if (const std::string parte = passi::ParteDellaNota(a); !parte.empty()) {
    passi::Punto(parte + ": in its place");
  }
  return esito;
}

extern "C" int unlink(const char* percorso) {
  static auto* const Originale = passi::Vera<int(const char*)>("unlink");
  if (!passi::Il().attivo) {
    return Originale(percorso);
  }
  const std::string nome = passi::NomeTolto(percorso);
  if (nome.empty()) {
    return Originale(percorso);
  }
  passi::Punto(nome + ": before");
  const int esito = Originale(percorso);
  const int errore = errno;
  passi::Punto(nome + ": done");
  errno = errore;
  return esito;
}
// NOLINTEND(readability-inconsistent-declaration-parameter-name)
