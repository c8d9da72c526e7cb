#include "platform/nexaro/cartella/Processo.hpp"

#include "platform/base/Descriptor.hpp"
#include "platform/nexaro/ErroriLink.hpp"
#include "platform/nexaro/Termine.hpp"
#include "platform/nexaro/cartella/Chiusura.hpp"

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

constexpr std::string_view avvio = "Avvio del programma";

/// What the supervisor reports through its pipe: one write, shorter than PIPE_BUF, hence whole.
struct Rapporto {
  FineProcesso fine;
  int stato;
};

struct Tubo {
  base::Descriptor lettura;
  base::Descriptor scrittura;
};

/// Takes a new descriptor and keeps clear of 0 to 2, which a calling program may have closed.
base::Descriptor SopraIlDue(int numero) {
  if (numero < 0) {
    throw ErroreSistema(avvio, errno);
  }
  base::Descriptor originale(numero);
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
  Tubo tubo{base::Descriptor(numeri[0]), base::Descriptor(numeri[1])};
  tubo.lettura = SopraIlDue(tubo.lettura.Release());
  tubo.scrittura = SopraIlDue(tubo.scrittura.Release());
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
    ::sigprocmask(SIG_SETMASK, &nessuno, nullptr);
    ::execve(dati.eseguibile, dati.argomenti, dati.ambiente);
  }
  Riferisci(dati.rapporto, FineProcesso::NonAvviato, errno);
  ::_exit(127);
}

/// Waits for the program's end and tells how it ended.
void Attendi(const Preparato& dati, pid_t figlio) {
  int stato = 0;
  while (::waitpid(figlio, &stato, 0) < 0 && errno == EINTR) {
  }
  if (WIFEXITED(stato)) {
    Riferisci(dati.rapporto, FineProcesso::Uscito, WEXITSTATUS(stato));
  } else {
    Riferisci(dati.rapporto, FineProcesso::Segnale, WTERMSIG(stato));
  }
}

/// The supervisor stands between caller and program, so that the program's status reaches the caller even where the
/// calling program ignores SIGCHLD or reaps every child. It leads the process group and outlives the program until the
/// caller ends it or is gone: so neither number can pass to strangers while the caller may still kill it.
[[noreturn]] void Sorveglia(const Preparato& dati) {
  ::setpgid(0, 0);
  RipristinaSegnali();
  // A descriptor that the calling program left inheritable is none of the program's business, and an end of a pipe that
  // lives on in a supervisor keeps its reader waiting. The five that stay are closed by the program's start.
  ChiudiTranne(dati.tenuti);
  const auto figlio = ::_Fork();
  if (figlio == 0) {
    DiventaProgramma(dati);
  }
  const auto codice = errno;
  ::close(dati.uscita);
  ::close(dati.errori);
  if (figlio < 0) {
    Riferisci(dati.rapporto, FineProcesso::NonAvviato, codice);
  } else {
    Attendi(dati, figlio);
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
  Sorvegliante(pid_t pid, base::Descriptor congedo) : pid_(pid), congedo_(std::move(congedo)) {}
  Sorvegliante(const Sorvegliante&) = delete;
  Sorvegliante& operator=(const Sorvegliante&) = delete;
  ~Sorvegliante() {
    // Its task is over, and the end of the pipe that would tell it so may live on in a process that another thread of
    // the caller has forked.
    if (!ucciso_) {
      ::kill(pid_, SIGKILL);
    }
    congedo_.Close();
    Raccogli();
  }

  void Uccidi() {
    ::kill(-pid_, SIGKILL);
    ::kill(pid_, SIGKILL);
    ucciso_ = true;
  }

 private:
  /// Where the calling program ignores SIGCHLD or reaps by itself, the answer is ECHILD. A process that the system
  /// cannot end now, because a disk or a network does not answer it, is left to it.
  void Raccogli() const {
    const timespec pausa{0, 500'000};
    const auto limite = Orologio::now() + Proroga;
    for (;;) {
      const auto raccolto = ::waitpid(pid_, nullptr, WNOHANG);
      if (raccolto > 0 || (raccolto < 0 && errno != EINTR) || Orologio::now() >= limite) {
        return;
      }
      ::nanosleep(&pausa, nullptr);
    }
  }

  pid_t pid_;
  base::Descriptor congedo_;
  bool ucciso_ = false;
};

/// Reads what is there; false at the end of the stream.
template <typename Raccolta> bool Travasa(const base::Descriptor& sorgente, Raccolta raccogli) {
  std::array<char, 65536> tampone;
  const auto letti = ::read(sorgente.Number(), tampone.data(), tampone.size());
  if (letti < 0) {
    return errno == EINTR || errno == EAGAIN;
  }
  raccogli(std::string_view(tampone.data(), static_cast<std::size_t>(letti)));
  return letti > 0;
}

/// The three streams of a running program.
struct Flussi {
  base::Descriptor uscita;
  base::Descriptor errori;
  base::Descriptor rapporto;
};

/// What has been heard of a program, and when to stop listening.
class Ascolto {
 public:
  Ascolto(const Processo& processo, Flussi flussi, EsitoProcesso& esito)
      : processo_(processo), flussi_(std::move(flussi)), esito_(esito), termine_(Orologio::now() + processo.attesa) {}

  /// Listens until the program and its output have come to their end, or have to be given up; false in that case.
  bool Esegui() {
    while (!Finito()) {
      const auto sguardo = sguardi_.Prossimo(termine_);
      if (sguardo && Guarda(*sguardo)) {
        if (esito_.uscita.size() > processo_.massimoUscita) {
          esito_.uscita.resize(processo_.massimoUscita);
          esito_.fine = FineProcesso::UscitaEccessiva;
          return false;
        }
        continue;
      }
      const bool scaduto = TempoRestante(termine_).count() == 0;
      if (Riferito() && (scaduto || TempoRestante(quiete_).count() == 0)) {
        quiete_ = Orologio::now() + Quiete;
        if (Basta()) {
          break;
        }
      }
      if (scaduto) {
        esito_.fine = FineProcesso::Scaduto;
        return false;
      }
    }
    Concludi();
    return true;
  }

  /// The supervisor has told how the program ended, or has gone without a word.
  [[nodiscard]] bool Riferito() const { return rapporti_.size() >= sizeof(Rapporto) || !flussi_.rapporto.Opened(); }

 private:
  [[nodiscard]] bool Finito() const {
    return Riferito() &&
           (Letto().fine == FineProcesso::NonAvviato || (!flussi_.uscita.Opened() && !flussi_.errori.Opened()));
  }

  /// Whether the end of the output can be done without.
  [[nodiscard]] bool Basta() const {
    const auto rapporto = Letto();
    const bool riuscito = rapporto.fine == FineProcesso::Uscito && rapporto.stato == 0;
    return !riuscito || !processo_.completa || processo_.completa(esito_.uscita);
  }

  /// Waits at most `millesimi` and takes what there is; false when there is nothing.
  bool Guarda(int millesimi) {
    if (Riferito()) {
      millesimi = std::min(millesimi, static_cast<int>(TempoRestante(quiete_).count()));
    }
    std::array<pollfd, 3> pronti{{{flussi_.uscita.Number(), POLLIN, 0},
                                  {flussi_.errori.Number(), POLLIN, 0},
                                  {flussi_.rapporto.Number(), POLLIN, 0}}};
    if (::poll(pronti.data(), pronti.size(), millesimi) <= 0) {
      return false;
    }
    Prendi(pronti);
    quiete_ = Orologio::now() + Quiete;
    return true;
  }

  void Prendi(const std::array<pollfd, 3>& pronti) {
    if (pronti[0].revents != 0 &&
        !Travasa(flussi_.uscita, [this](std::string_view dati) { esito_.uscita.append(dati); })) {
      flussi_.uscita.Close();
    }
    if (pronti[1].revents != 0 && !Travasa(flussi_.errori, [this](std::string_view dati) {
          esito_.errori.append(dati.substr(0, processo_.massimoErrori - esito_.errori.size()));
        })) {
      flussi_.errori.Close();
    }
    if (pronti[2].revents != 0 &&
        !Travasa(flussi_.rapporto, [this](std::string_view dati) { rapporti_.append(dati); })) {
      flussi_.rapporto.Close();
    }
  }

  /// The first report counts: a program that could not start reports that before its supervisor reports its exit.
  [[nodiscard]] Rapporto Letto() const {
    Rapporto rapporto{FineProcesso::Segnale, SIGKILL};
    if (rapporti_.size() >= sizeof rapporto) {
      rapporti_.copy(reinterpret_cast<char*>(&rapporto), sizeof rapporto);
    }
    return rapporto;
  }

  void Concludi() {
    const auto rapporto = Letto();
    esito_.fine = rapporto.fine;
    esito_.stato = rapporto.stato;
  }

  const Processo& processo_;
  Flussi flussi_;
  EsitoProcesso& esito_;
  std::string rapporti_;
  Termine termine_;
  Termine quiete_; ///< when the output of a program that has ended will have been silent for long enough
  Sguardi sguardi_;
};

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
    throw ErroreSistema(avvio, codice).ConEsito(EsitoTransazione::NonApplicata);
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
                 ingresso.Number(),
                 uscita.scrittura.Number(),
                 errori.scrittura.Number(),
                 rapporto.scrittura.Number(),
                 congedo.lettura.Number(),
                 {}};
  dati.tenuti = {dati.ingresso, dati.uscita, dati.errori, dati.rapporto, dati.congedo};
  std::sort(dati.tenuti.begin(), dati.tenuti.end());
  EsitoProcesso esito;
  if (processo.avviato != nullptr) {
    *processo.avviato = true;
  }
  Sorvegliante sorvegliante(Biforca(dati), std::move(congedo.scrittura));
  uscita.scrittura.Close();
  errori.scrittura.Close();
  rapporto.scrittura.Close();
  congedo.lettura.Close();
  Ascolto ascolto(processo, {std::move(uscita.lettura), std::move(errori.lettura), std::move(rapporto.lettura)}, esito);
  try {
    if (!ascolto.Esegui()) {
      sorvegliante.Uccidi();
    }
  } catch (...) {
    // Nobody would watch over the program any more. One that has ended has nothing but what it left behind on purpose.
    if (!ascolto.Riferito()) {
      sorvegliante.Uccidi();
    }
    throw;
  }
  return esito;
}

} // namespace lumoscad::nexaro
