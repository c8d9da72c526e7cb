// The sftp subsystem of a test's host: sees a directory as the root of the host, and stands still where it is told to.
//
//   sftp_radice [-f BYTE] [-o CARTELLA] RADICE
//
// -f bounds the size of the files that are written, as a full disk would. With -o the file CARTELLA/ordine, "OPERATION
// MOMENT", is obeyed once: OPERATION is apri, leggi, scrivi, chiudi, rinomina, cancella, stato or sincronizza, MOMENT
// is prima (the request is not carried out) or dopo (it is carried out, its answer is kept). Then the file
// CARTELLA/fermo appears, and nothing is answered any more until the connection ends.

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <linux/capability.h>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

constexpr const char* Server = "/usr/lib/openssh/sftp-server";

/// The requests of the protocol, version 3, that hold a path (draft-ietf-secsh-filexfer-02, 3 and 6).
enum Tipo : unsigned char {
  Apri = 3,
  Chiudi = 4,
  Leggi = 5,
  Scrivi = 6,
  StatoCollegamento = 7,
  StatoAperto = 8,
  ImpostaStato = 9,
  ApriCartella = 11,
  Cancella = 13,
  Rinomina = 18,
  Stato = 17,
  CreaCollegamento = 20,
  Esteso = 200
};

struct Opzioni {
  std::string radice;
  fs::path ordini;
  long massimo = 0;
};

struct Ordine {
  std::string operazione;
  bool dopo = false;
};

std::uint32_t Numero(std::string_view testo, std::size_t posto) {
  std::uint32_t numero = 0;
  for (std::size_t indice = posto; indice < posto + 4 && indice < testo.size(); ++indice) {
    numero = numero << 8U | static_cast<unsigned char>(testo[indice]);
  }
  return numero;
}

std::string Ottetti(std::size_t numero) {
  std::string testo;
  for (int scorri = 24; scorri >= 0; scorri -= 8) {
    testo += static_cast<char>(numero >> static_cast<unsigned>(scorri) & 0xFFU);
  }
  return testo;
}

bool LeggiTutto(int file, char* dove, std::size_t quanti) {
  while (quanti > 0) {
    const auto letti = ::read(file, dove, quanti);
    if (letti < 0 && errno == EINTR) {
      continue;
    }
    if (letti <= 0) {
      return false;
    }
    dove += letti;
    quanti -= static_cast<std::size_t>(letti);
  }
  return true;
}

bool ScriviTutto(int file, std::string_view testo) {
  while (!testo.empty()) {
    const auto scritti = ::write(file, testo.data(), testo.size());
    if (scritti < 0 && errno == EINTR) {
      continue;
    }
    if (scritti <= 0) {
      return false;
    }
    testo.remove_prefix(static_cast<std::size_t>(scritti));
  }
  return true;
}

/// A packet without its length: type, number of the request, the rest.
std::optional<std::string> LeggiPacchetto(int file) {
  std::array<char, 4> testa{};
  if (!LeggiTutto(file, testa.data(), testa.size())) {
    return std::nullopt;
  }
  std::string pacchetto(Numero(std::string_view(testa.data(), testa.size()), 0), '\0');
  if (pacchetto.empty() || !LeggiTutto(file, pacchetto.data(), pacchetto.size())) {
    return std::nullopt;
  }
  return pacchetto;
}

bool ScriviPacchetto(int file, const std::string& pacchetto) {
  return ScriviTutto(file, Ottetti(pacchetto.size()) + pacchetto);
}

constexpr std::size_t DopoNumero = 5;

std::string Testo(const std::string& pacchetto, std::size_t posto) {
  return posto + 4 <= pacchetto.size() ? pacchetto.substr(posto + 4, Numero(pacchetto, posto)) : "";
}

std::string Estensione(const std::string& pacchetto) {
  return static_cast<unsigned char>(pacchetto[0]) == Esteso ? Testo(pacchetto, DopoNumero) : "";
}

/// Puts the root before the path that stands at `posto`; the place behind it.
std::size_t AnteponiRadice(std::string& pacchetto, std::size_t posto, const std::string& radice) {
  const auto percorso = Testo(pacchetto, posto);
  const auto nuovo = percorso.starts_with('/') ? radice + percorso : percorso;
  pacchetto.replace(posto, 4 + percorso.size(), Ottetti(nuovo.size()) + nuovo);
  return posto + 4 + nuovo.size();
}

void AnteponiRadici(std::string& pacchetto, const std::string& radice) {
  const auto tipo = static_cast<unsigned char>(pacchetto[0]);
  const auto estensione = Estensione(pacchetto);
  const bool diFile = tipo == Apri || tipo == StatoCollegamento || tipo == ImpostaStato || tipo == ApriCartella ||
                      (tipo >= Cancella && tipo <= CreaCollegamento);
  if (diFile || estensione == "posix-rename@openssh.com" || estensione == "statvfs@openssh.com" ||
      estensione == "hardlink@openssh.com" || estensione == "lsetstat@openssh.com") {
    const bool due = tipo == Rinomina || tipo == CreaCollegamento || estensione == "posix-rename@openssh.com" ||
                     estensione == "hardlink@openssh.com";
    const auto dopo =
        AnteponiRadice(pacchetto, estensione.empty() ? DopoNumero : DopoNumero + 4 + estensione.size(), radice);
    if (due) {
      AnteponiRadice(pacchetto, dopo, radice);
    }
  }
}

std::string Operazione(const std::string& pacchetto) {
  static const std::map<unsigned char, std::string> nomi{
      {Apri, "apri"},     {Chiudi, "chiudi"},           {Leggi, "leggi"},
      {Scrivi, "scrivi"}, {Rinomina, "rinomina"},       {Cancella, "cancella"},
      {Stato, "stato"},   {StatoCollegamento, "stato"}, {StatoAperto, "stato"}};
  const auto estensione = Estensione(pacchetto);
  if (estensione == "posix-rename@openssh.com") {
    return "rinomina";
  }
  if (estensione == "fsync@openssh.com") {
    return "sincronizza";
  }
  const auto nome = nomi.find(static_cast<unsigned char>(pacchetto[0]));
  return nome == nomi.end() ? "" : nome->second;
}

/// The order, where there is one for this request; it is obeyed once.
std::optional<Ordine> LeggiOrdine(const Opzioni& opzioni, const std::string& pacchetto) {
  if (opzioni.ordini.empty()) {
    return std::nullopt;
  }
  std::ifstream file(opzioni.ordini / "ordine");
  Ordine ordine;
  std::string momento;
  if (!(file >> ordine.operazione >> momento) || ordine.operazione != Operazione(pacchetto)) {
    return std::nullopt;
  }
  ordine.dopo = momento == "dopo";
  fs::remove(opzioni.ordini / "ordine");
  return ordine;
}

/// Says that the place is reached, and takes in what still comes.
[[noreturn]] void Fermati(const Opzioni& opzioni) {
  std::ofstream(opzioni.ordini / "fermo") << '\n';
  std::array<char, 4096> ignorati{};
  while (::read(STDIN_FILENO, ignorati.data(), ignorati.size()) > 0) {
  }
  std::_Exit(0);
}

struct Tubi {
  int alServer = -1;
  int dalServer = -1;
};

/// Root's files would be open to it whatever their permissions say; the host's user is no such one.
void ObbedisciAiPermessi() {
  if (::geteuid() == 0) {
    ::prctl(PR_CAPBSET_DROP, CAP_DAC_OVERRIDE);
    ::prctl(PR_CAPBSET_DROP, CAP_DAC_READ_SEARCH);
  }
}

Tubi AvviaServer(const Opzioni& opzioni) {
  std::array<int, 2> richieste{};
  std::array<int, 2> risposte{};
  if (::pipe(richieste.data()) != 0 || ::pipe(risposte.data()) != 0) {
    throw std::system_error(errno, std::generic_category(), "pipe");
  }
  const pid_t figlio = ::fork();
  if (figlio == 0) {
    ::dup2(richieste[0], STDIN_FILENO);
    ::dup2(risposte[1], STDOUT_FILENO);
    for (const int file : {richieste[0], richieste[1], risposte[0], risposte[1]}) {
      ::close(file);
    }
    if (opzioni.massimo > 0) {
      const rlimit limite{static_cast<rlim_t>(opzioni.massimo), static_cast<rlim_t>(opzioni.massimo)};
      ::setrlimit(RLIMIT_FSIZE, &limite);
      // The write is to fail, not the server to die.
      ::signal(SIGXFSZ, SIG_IGN);
    }
    ObbedisciAiPermessi();
    ::execl(Server, Server, nullptr);
    ::_exit(127);
  }
  ::close(richieste[0]);
  ::close(risposte[1]);
  return {richieste[1], risposte[0]};
}

/// Carries the answers; stands still at the one that is to be kept.
void PortaRisposte(const Opzioni& opzioni, int dalServer, const std::atomic<std::int64_t>& trattenuta) {
  while (const auto pacchetto = LeggiPacchetto(dalServer)) {
    if (pacchetto->size() >= DopoNumero && trattenuta == static_cast<std::int64_t>(Numero(*pacchetto, 1))) {
      std::ofstream(opzioni.ordini / "fermo") << '\n';
      return;
    }
    if (!ScriviPacchetto(STDOUT_FILENO, *pacchetto)) {
      return;
    }
  }
  std::_Exit(0);
}

[[noreturn]] void Servi(const Opzioni& opzioni) {
  ::signal(SIGPIPE, SIG_IGN);
  const auto tubi = AvviaServer(opzioni);
  std::atomic<std::int64_t> trattenuta{-1};
  const std::thread risposte([&] { PortaRisposte(opzioni, tubi.dalServer, trattenuta); });
  while (auto pacchetto = LeggiPacchetto(STDIN_FILENO)) {
    const auto ordine = LeggiOrdine(opzioni, *pacchetto);
    if (ordine && !ordine->dopo) {
      Fermati(opzioni);
    }
    if (ordine) {
      trattenuta = Numero(*pacchetto, 1);
    }
    AnteponiRadici(*pacchetto, opzioni.radice);
    if (!ScriviPacchetto(tubi.alServer, *pacchetto)) {
      break;
    }
  }
  // What is still being answered goes with the connection, and the server with its pipes.
  std::_Exit(0);
}

} // namespace

int main(int numero, char** argomenti) {
  Opzioni opzioni;
  for (int lettera = 0; (lettera = ::getopt(numero, argomenti, "f:o:")) != -1;) {
    if (lettera == 'f') {
      opzioni.massimo = std::strtol(optarg, nullptr, 10);
    } else if (lettera == 'o') {
      opzioni.ordini = optarg;
    } else {
      return 2;
    }
  }
  if (optind + 1 != numero) {
    std::fputs("uso: sftp_radice [-f BYTE] [-o CARTELLA] RADICE\n", stderr);
    return 2;
  }
  opzioni.radice = argomenti[optind];
  Servi(opzioni);
}
