// Programs of a directory host, started from a process whose system, threads or fate are against it.

#include "Banco.hpp"
#include "Chiamante.hpp"
#include "platform/nexaro/CollegamentoCartella.hpp"
#include "platform/nexaro/Processo.hpp"

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <gmock/gmock.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <pthread.h>
#include <sys/prctl.h>
#include <sys/syscall.h>

namespace lumoscad {
namespace {

using namespace std::chrono_literals;
using nexaro::FineProcesso;
using prove::Chiamante;
using testing::HasSubstr;

/// From now on the system refuses these two calls to this process, as an older kernel or a sandbox does.
void Rifiuta(long prima, long seconda, int codice) {
  sock_filter regole[] = {
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<unsigned>(prima), 1, 0),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<unsigned>(seconda), 0, 1),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | static_cast<unsigned>(codice)),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
  };
  sock_fprog programma{static_cast<unsigned short>(std::size(regole)), regole};
  if (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 || ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &programma) != 0) {
    throw std::runtime_error("seccomp");
  }
  if (::syscall(prima, ~0U, ~0U, 0U) != -1 || errno != codice) {
    throw std::runtime_error("the call is not refused");
  }
}

class ChiamanteAvverso : public testing::Test {
 protected:
  void SetUp() override { std::filesystem::create_directories(base / "host/programmi"); }

  /// What a caller says of the host's program `corpo`: its answer, or the error.
  std::string Chiama(const std::string& corpo, std::chrono::milliseconds attesa) {
    prove::ScriviProgramma(base / "host/programmi/VB0001", corpo);
    nexaro::CollegamentoCartella collegamento(base / "host", attesa);
    std::string detto;
    nexaro::XMLParser lettore;
    lettore.Parse = [&detto](const xml::Nodo& nodo) { detto = nodo.nome + " " + nodo.valore; };
    try {
      collegamento.EseguiProgramma("10.0.0.1", "VB0001", {}, lettore);
    } catch (const ErroreRuntime& errore) {
      return errore.Descrizione();
    }
    return detto;
  }
  /// Whether a program gets a descriptor that its caller left inheritable, where the system refuses two calls.
  std::string Ereditati(long prima, long seconda, int codice) {
    prove::ScriviProgramma(base / "host/programmi/VB0001",
                           "[ -e /proc/$$/fd/200 ] && aperti=200; echo \"<A>$aperti</A>\"");
    const Chiamante chiamante([&] {
      const int aperto = ::open("/dev/null", O_RDONLY); // NOLINT: to be inherited
      if (::fcntl(aperto, F_DUPFD, 200) < 0) {
        return std::string("F_DUPFD");
      }
      Rifiuta(prima, seconda, codice);
      nexaro::CollegamentoCartella collegamento(base / "host", 10s);
      std::string detto;
      nexaro::XMLParser lettore;
      lettore.Parse = [&detto](const xml::Nodo& nodo) { detto = nodo.nome + ": " + nodo.valore; };
      collegamento.EseguiProgramma("10.0.0.1", "VB0001", {}, lettore);
      return detto;
    });
    return chiamante.Esito(20s);
  }

  prove::CartellaProvvisoria base;
};

TEST_F(ChiamanteAvverso, ProgramAnswersWhereTheSystemCannotCloseARangeOfDescriptors) {
  EXPECT_EQ(Ereditati(SYS_close_range, SYS_close_range, ENOSYS), "A: ") << "an older kernel";
  EXPECT_EQ(Ereditati(SYS_close_range, SYS_close_range, EPERM), "A: ") << "a sandbox";
}

TEST_F(ChiamanteAvverso, ProgramAnswersWhereTheDescriptorsCannotBeListedEither) {
  EXPECT_EQ(Ereditati(SYS_close_range, SYS_getdents64, EPERM), "A: ");
}

std::atomic<int> biforcazioni{-1}; // NOLINT: how many processes another thread's fork has left, while it is counted

/// What another thread's fork does at the worst moment: the new process holds every end of every pipe, and lives on.
void BiforcaAltrove() {
  if (biforcazioni >= 0) {
    if (::_Fork() == 0) {
      ::prctl(PR_SET_PDEATHSIG, SIGKILL);
      for (;;) {
        ::pause();
      }
    }
    ++biforcazioni;
  }
}

/// Runs in a process that another thread forks while a program is started.
template <typename Lavoro> std::string ConBiforcazione(Lavoro lavoro, std::chrono::milliseconds limite) {
  const Chiamante chiamante([&] {
    ::pthread_atfork(BiforcaAltrove, nullptr, nullptr);
    biforcazioni = 0;
    auto detto = lavoro();
    return biforcazioni > 0 ? detto : "nessuna biforcazione";
  });
  return chiamante.Esito(limite);
}

TEST_F(ChiamanteAvverso, ForkOfAnotherThreadHoldsUpNeitherTheAnswerNorTheCaller) {
  EXPECT_EQ(ConBiforcazione([&] { return Chiama("echo '<A>fatto</A>'", 8s); }, 6s), "A fatto");
}

TEST_F(ChiamanteAvverso, ForkOfAnotherThreadHidesNoFailure) {
  EXPECT_THAT(ConBiforcazione([&] { return Chiama("echo pieno >&2; exit 3", 8s); }, 6s),
              HasSubstr("lo stato 3: pieno"));
  EXPECT_THAT(ConBiforcazione([&] { return Chiama("kill -KILL $$", 8s); }, 6s), HasSubstr("dal segnale 9"));
  EXPECT_THAT(ConBiforcazione(
                  [&] {
                    auto fine = nexaro::Esegui({base / "manca", {}, {}, base.Percorso(), 8s, 10, 10}).fine;
                    return std::string(fine == FineProcesso::NonAvviato ? "non avviato" : "altro");
                  },
                  6s),
              "non avviato");
}

TEST_F(ChiamanteAvverso, CompleteAnswerIsTakenThoughAChildHoldsTheOutput) {
  const auto inizio = std::chrono::steady_clock::now();
  EXPECT_EQ(Chiama("sleep 30 & echo $! >figlio; echo '<A>fatto</A>'", 20s), "A fatto");
  EXPECT_LT(std::chrono::steady_clock::now() - inizio, 10s);
  const auto figlio = static_cast<pid_t>(std::stol(prove::Leggi(base / "host/figlio")));
  EXPECT_EQ(::kill(figlio, 0), 0) << "what goes on in the background is the program's own affair";
  ::kill(figlio, SIGKILL);
}

TEST_F(ChiamanteAvverso, AnswerThatAChildCompletesIsWaitedFor) {
  EXPECT_EQ(Chiama("(sleep 3; echo '<B/></A>'; exec sleep 5) & printf '<A>'", 20s), "A ");
}

TEST_F(ChiamanteAvverso, HalfAnAnswerIsNotTakenThoughTheProgramEndedWell) {
  EXPECT_THAT(Chiama("sleep 30 & echo '<A>'", 2500ms), HasSubstr("non ha risposto entro 2,500 secondi"));
}

TEST_F(ChiamanteAvverso, FailureIsSaidThoughAChildHoldsTheOutput) {
  EXPECT_THAT(Chiama("sleep 30 & echo '<A/>'; echo pieno >&2; exit 3", 20s), HasSubstr("lo stato 3: pieno"));
}

TEST_F(ChiamanteAvverso, AnswerThatCameWhileTheCallerWasStoppedIsRead) {
  const Chiamante chiamante([&] { return Chiama("sleep 1; echo '<A>fatto</A>'", 2s); });
  std::this_thread::sleep_for(500ms);
  chiamante.Ferma(3s);
  EXPECT_EQ(chiamante.Esito(10s), "A fatto");
}

TEST_F(ChiamanteAvverso, LongAnswerThatWasHeldUpWhileTheCallerWasStoppedIsReadToItsEnd) {
  // More than a pipe holds: the program goes on only when somebody reads.
  const Chiamante chiamante([&] {
    return Chiama("sleep 1; printf '<A>'; head -c 8000000 /dev/zero | tr '\\0' ' '; echo 'fatto</A>'", 2s)
                   .ends_with("fatto")
               ? std::string("tutto")
               : std::string("niente");
  });
  std::this_thread::sleep_for(500ms);
  chiamante.Ferma(3s);
  EXPECT_EQ(chiamante.Esito(20s), "tutto");
}

TEST_F(ChiamanteAvverso, ProgramThatOnlyComplainsIsGivenUpAllTheSame) {
  const auto inizio = std::chrono::steady_clock::now();
  EXPECT_THAT(Chiama("while :; do echo ancora >&2; sleep 0.02; done", 500ms), HasSubstr("non ha risposto entro"));
  EXPECT_LT(std::chrono::steady_clock::now() - inizio, 12s);
}

} // namespace
} // namespace lumoscad
