#include "platform/nexaro/Processo.hpp"

#include "platform/nexaro/Descrittore.hpp"
#include "platform/nexaro/ErroriLink.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <string_view>
#include <sys/wait.h>

namespace lumoscad::nexaro {

namespace {

using Orologio = std::chrono::steady_clock;

constexpr std::string_view avvio = "Avvio del programma";

/// What the supervisor reports through its pipe: one write, shorter than PIPE_BUF, hence whole.
struct Rapporto {
  FineProcesso fine;
  int stato;
};

struct Tubo {
  Descrittore lettura;
  Descrittore scrittura;
};

/// Takes a new descriptor and keeps clear of 0 to 2, which a calling program may have closed.
Descrittore SopraIlDue(int numero) {
  if (numero < 0) {
    throw ErroreSistema(avvio, errno);
  }
  Descrittore originale(numero);
  if (numero > 2) {
    return originale;
  }
  return SopraIlDue(::fcntl(numero, F_DUPFD_CLOEXEC, 3));
}

Tubo CreaTubo() {
  std::array<int, 2> numeri{-1, -1};
  if (::pipe2(numeri.data(), O_CLOEXEC) != 0) {
    throw ErroreSistema(avvio, errno);
  }
  Tubo tubo{Descrittore(numeri[0]), Descrittore(numeri[1])};
  tubo.lettura = SopraIlDue(tubo.lettura.Cedi());
  tubo.scrittura = SopraIlDue(tubo.scrittura.Cedi());
  return tubo;
}

std::vector<std::string> AmbienteDelProgramma(const std::vector<std::string>& aggiunte) {
  std::vector<std::string> voci;
  for (char** voce = environ; voce != nullptr && *voce != nullptr; ++voce) {
    const std::string_view testo(*voce);
    const auto nome = testo.substr(0, testo.find('='));
    bool sostituita = false;
    for (const auto& aggiunta : aggiunte) {
      sostituita = sostituita || std::string_view(aggiunta).substr(0, aggiunta.find('=')) == nome;
    }
    if (!sostituita) {
      voci.emplace_back(testo);
    }
  }
  voci.insert(voci.end(), aggiunte.begin(), aggiunte.end());
  return voci;
}

std::vector<char*> Puntatori(std::vector<std::string>& testi) {
  std::vector<char*> puntatori;
  puntatori.reserve(testi.size() + 1);
  for (auto& testo : testi) {
    puntatori.push_back(testo.data());
  }
  puntatori.push_back(nullptr);
  return puntatori;
}

/// Everything that the two children need, prepared before the fork: afterwards only async-signal-safe calls are made.
struct Preparato {
  const char* eseguibile;
  const char* cartella;
  char* const* argomenti;
  char* const* ambiente;
  int ingresso;
  int uscita;
  int errori;
  int rapporto;
  int congedo;
  std::array<int, 5> tenuti; ///< the five descriptors above, in ascending order
};

void Riferisci(int descrittore, FineProcesso fine, int stato) {
  const Rapporto rapporto{fine, stato};
  while (::write(descrittore, &rapporto, sizeof rapporto) < 0 && errno == EINTR) {
  }
}

void RipristinaSegnali() {
  struct sigaction predefinita {};
  predefinita.sa_handler = SIG_DFL;
  for (int segnale = 1; segnale < NSIG; ++segnale) {
    ::sigaction(segnale, &predefinita, nullptr);
  }
}

[[noreturn]] void DiventaProgramma(const Preparato& dati) {
  sigset_t nessuno;
  ::sigemptyset(&nessuno);
  const bool pronto = ::dup2(dati.ingresso, 0) == 0 && ::dup2(dati.uscita, 1) == 1 && ::dup2(dati.errori, 2) == 2 &&
                      ::chdir(dati.cartella) == 0;
  if (pronto) {
    // A descriptor that the calling program left inheritable is none of the program's business.
    ::close_range(3, ~0U, CLOSE_RANGE_CLOEXEC);
    ::sigprocmask(SIG_SETMASK, &nessuno, nullptr);
    ::execve(dati.eseguibile, dati.argomenti, dati.ambiente);
  }
  Riferisci(dati.rapporto, FineProcesso::NonAvviato, errno);
  ::_exit(127);
}

/// Lets go of everything else: an end of a pipe that lives on in a supervisor keeps its reader waiting.
void ChiudiGliAltri(const std::array<int, 5>& tenuti) {
  unsigned inizio = 0;
  for (const int tenuto : tenuti) {
    const auto numero = static_cast<unsigned>(tenuto);
    if (numero > inizio) {
      ::close_range(inizio, numero - 1, 0);
    }
    inizio = numero + 1;
  }
  ::close_range(inizio, ~0U, 0);
}

/// The supervisor stands between caller and program, so that the program's status reaches the caller even where the
/// calling program ignores SIGCHLD or reaps every child. It leads the process group and outlives the program until the
/// caller lets it go: so the group's number cannot pass to strangers while the caller may still kill it.
[[noreturn]] void Sorveglia(const Preparato& dati) {
  ::setpgid(0, 0);
  RipristinaSegnali();
  ChiudiGliAltri(dati.tenuti);
  const auto figlio = ::_Fork();
  if (figlio == 0) {
    DiventaProgramma(dati);
  }
  if (figlio < 0) {
    Riferisci(dati.rapporto, FineProcesso::NonAvviato, errno);
    ::_exit(1);
  }
  ::close(dati.uscita);
  ::close(dati.errori);
  int stato = 0;
  while (::waitpid(figlio, &stato, 0) < 0 && errno == EINTR) {
  }
  if (WIFEXITED(stato)) {
    Riferisci(dati.rapporto, FineProcesso::Uscito, WEXITSTATUS(stato));
  } else {
    Riferisci(dati.rapporto, FineProcesso::Segnale, WTERMSIG(stato));
  }
  ::close(dati.rapporto);
  char nulla = 0;
  while (::read(dati.congedo, &nulla, 1) < 0 && errno == EINTR) {
  }
  ::_exit(0);
}

/// The caller's end of a running supervisor.
class Sorvegliante {
 public:
  Sorvegliante(pid_t pid, Descrittore congedo) : pid_(pid), congedo_(std::move(congedo)) {}
  Sorvegliante(const Sorvegliante&) = delete;
  Sorvegliante& operator=(const Sorvegliante&) = delete;
  ~Sorvegliante() {
    congedo_.Chiudi();
    // Where the calling program ignores SIGCHLD or reaps by itself, the answer is ECHILD.
    while (::waitpid(pid_, nullptr, 0) < 0 && errno == EINTR) {
    }
  }

  void Uccidi() const {
    ::kill(-pid_, SIGKILL);
    ::kill(pid_, SIGKILL);
  }

 private:
  pid_t pid_;
  Descrittore congedo_;
};

/// Reads what is there; false at the end of the stream.
template <typename Raccolta> bool Travasa(const Descrittore& sorgente, Raccolta raccogli) {
  std::array<char, 65536> tampone;
  const auto letti = ::read(sorgente.Numero(), tampone.data(), tampone.size());
  if (letti < 0) {
    return errno == EINTR || errno == EAGAIN;
  }
  raccogli(std::string_view(tampone.data(), static_cast<std::size_t>(letti)));
  return letti > 0;
}

/// The three streams of a running program.
struct Flussi {
  Descrittore uscita;
  Descrittore errori;
  Descrittore rapporto;
};

struct Ascolto {
  const Processo& processo;
  EsitoProcesso& esito;
  std::string rapporti;

  void Serve(Flussi& flussi, const std::array<pollfd, 3>& pronti) {
    if (pronti[0].revents != 0 &&
        !Travasa(flussi.uscita, [this](std::string_view dati) { esito.uscita.append(dati); })) {
      flussi.uscita.Chiudi();
    }
    if (pronti[1].revents != 0 && !Travasa(flussi.errori, [this](std::string_view dati) {
          esito.errori.append(dati.substr(0, processo.massimoErrori - esito.errori.size()));
        })) {
      flussi.errori.Chiudi();
    }
    if (pronti[2].revents != 0 && !Travasa(flussi.rapporto, [this](std::string_view dati) { rapporti.append(dati); })) {
      flussi.rapporto.Chiudi();
    }
  }

  /// The first report counts: a program that could not start reports that before its supervisor reports its exit.
  void Concludi() {
    Rapporto rapporto{FineProcesso::Segnale, SIGKILL};
    if (rapporti.size() >= sizeof rapporto) {
      rapporti.copy(reinterpret_cast<char*>(&rapporto), sizeof rapporto);
    }
    esito.fine = rapporto.fine;
    esito.stato = rapporto.stato;
  }
};

void Ascolta(const Processo& processo, Flussi& flussi, const Sorvegliante& sorvegliante, EsitoProcesso& esito) {
  const auto termine = Orologio::now() + processo.attesa;
  Ascolto ascolto{processo, esito, {}};
  while (flussi.uscita.Aperto() || flussi.errori.Aperto() || flussi.rapporto.Aperto()) {
    const auto resta = std::chrono::ceil<std::chrono::milliseconds>(termine - Orologio::now()).count();
    if (resta <= 0) {
      esito.fine = FineProcesso::Scaduto;
      sorvegliante.Uccidi();
      return;
    }
    std::array<pollfd, 3> pronti{{{flussi.uscita.Numero(), POLLIN, 0},
                                  {flussi.errori.Numero(), POLLIN, 0},
                                  {flussi.rapporto.Numero(), POLLIN, 0}}};
    const auto esitoAttesa = ::poll(pronti.data(), pronti.size(), static_cast<int>(std::min<long>(resta, 60000)));
    if (esitoAttesa > 0) {
      ascolto.Serve(flussi, pronti);
    }
    if (esito.uscita.size() > processo.massimoUscita) {
      esito.uscita.resize(processo.massimoUscita);
      esito.fine = FineProcesso::UscitaEccessiva;
      sorvegliante.Uccidi();
      return;
    }
  }
  ascolto.Concludi();
}

/// Forks with every signal blocked, so that no handler of the calling program runs in the child.
pid_t Biforca(const Preparato& dati) {
  sigset_t tutti;
  sigset_t precedenti;
  ::sigfillset(&tutti);
  ::pthread_sigmask(SIG_SETMASK, &tutti, &precedenti);
  const auto pid = ::fork();
  if (pid == 0) {
    Sorveglia(dati);
  }
  const auto codice = errno;
  ::pthread_sigmask(SIG_SETMASK, &precedenti, nullptr);
  if (pid < 0) {
    throw ErroreSistema(avvio, codice);
  }
  // Both sides set the group: whichever comes first, a kill finds it.
  ::setpgid(pid, pid);
  return pid;
}

} // namespace

EsitoProcesso Esegui(const Processo& processo) {
  std::vector<std::string> testi{processo.eseguibile};
  testi.insert(testi.end(), processo.argomenti.begin(), processo.argomenti.end());
  auto variabili = AmbienteDelProgramma(processo.ambiente);
  const auto argomenti = Puntatori(testi);
  const auto ambiente = Puntatori(variabili);
  auto ingresso = SopraIlDue(::open("/dev/null", O_RDONLY | O_CLOEXEC));
  auto uscita = CreaTubo();
  auto errori = CreaTubo();
  auto rapporto = CreaTubo();
  auto congedo = CreaTubo();
  Preparato dati{processo.eseguibile.c_str(),
                 processo.cartella.c_str(),
                 argomenti.data(),
                 ambiente.data(),
                 ingresso.Numero(),
                 uscita.scrittura.Numero(),
                 errori.scrittura.Numero(),
                 rapporto.scrittura.Numero(),
                 congedo.lettura.Numero(),
                 {}};
  dati.tenuti = {dati.ingresso, dati.uscita, dati.errori, dati.rapporto, dati.congedo};
  std::sort(dati.tenuti.begin(), dati.tenuti.end());
  EsitoProcesso esito;
  const Sorvegliante sorvegliante(Biforca(dati), std::move(congedo.scrittura));
  uscita.scrittura.Chiudi();
  errori.scrittura.Chiudi();
  rapporto.scrittura.Chiudi();
  congedo.lettura.Chiudi();
  Flussi flussi{std::move(uscita.lettura), std::move(errori.lettura), std::move(rapporto.lettura)};
  Ascolta(processo, flussi, sorvegliante, esito);
  return esito;
}

} // namespace lumoscad::nexaro
