// Programs of a directory host, started from a process whose system, threads or fate are against it.

#include "Banco.hpp"
#include "Chiamante.hpp"
#include "ChiamateRifiutate.hpp"
#include "platform/nexaro/cartella/DirectoryLink.hpp"
#include "platform/nexaro/cartella/Process.hpp"
#include "support/Files.hpp"

#include <atomic>
#include <cerrno>
#include <gmock/gmock.h>
#include <pthread.h>
#include <sys/prctl.h>
#include <sys/syscall.h>

namespace lumoscad {
namespace {

using namespace std::chrono_literals;
using nexaro::ProcessEnd;
using test::Chiamante;
using test::Rifiuta;
using testing::HasSubstr;

class AdverseCaller : public testing::Test {
 protected:
  void SetUp() override { std::filesystem::create_directories(base / "host/programmi"); }

  /// What a caller says of the host's program `corpo`: its answer, or the error.
  std::string Chiama(const std::string& corpo, std::chrono::milliseconds attesa) {
    test::ScriviProgramma(base / "host/programmi/VB0001", corpo);
    nexaro::DirectoryLink collegamento(base / "host", attesa);
    std::string detto;
    nexaro::XMLParser lettore;
    lettore.Parse = [&detto](const xml::Nodo& nodo) { detto = nodo.name + " " + nodo.value; };
    try {
      collegamento.EseguiProgramma("10.0.0.1", "VB0001", {}, lettore);
    } catch (const RuntimeError& errore) {
      return errore.Description();
    }
    return detto;
  }
  /// Whether a program gets a descriptor that its caller left inheritable, where the system refuses two calls.
  std::string Ereditati(long prima, long seconda, int codice) {
    test::ScriviProgramma(base / "host/programmi/VB0001",
                          "[ -e /proc/$$/fd/200 ] && aperti=200; echo \"<A>$aperti</A>\"");
    const Chiamante chiamante([&] {
      const int aperto = ::open("/dev/null", O_RDONLY); // NOLINT: to be inherited
      if (::fcntl(aperto, F_DUPFD, 200) < 0) {
        return std::string("F_DUPFD");
      }
      Rifiuta(prima, seconda, codice);
      nexaro::DirectoryLink collegamento(base / "host", 10s);
      std::string detto;
      nexaro::XMLParser lettore;
      lettore.Parse = [&detto](const xml::Nodo& nodo) { detto = nodo.name + ": " + nodo.value; };
      collegamento.EseguiProgramma("10.0.0.1", "VB0001", {}, lettore);
      return detto;
    });
    return chiamante.Esito(20s);
  }

  test::TemporaryFolder base;
};

TEST_F(AdverseCaller, ProgramAnswersWhereTheSystemCannotCloseARangeOfDescriptors) {
  EXPECT_EQ(Ereditati(SYS_close_range, SYS_close_range, ENOSYS), "A: ") << "an older kernel";
  EXPECT_EQ(Ereditati(SYS_close_range, SYS_close_range, EPERM), "A: ") << "a sandbox";
}

TEST_F(AdverseCaller, ProgramAnswersWhereTheDescriptorsCannotBeListedEither) {
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

TEST_F(AdverseCaller, ForkOfAnotherThreadHoldsUpNeitherTheAnswerNorTheCaller) {
  EXPECT_EQ(ConBiforcazione([&] { return Chiama("echo '<A>fatto</A>'", 8s); }, 6s), "A fatto");
}

TEST_F(AdverseCaller, ForkOfAnotherThreadHidesNoFailure) {
  EXPECT_THAT(ConBiforcazione([&] { return Chiama("echo pieno >&2; exit 3", 8s); }, 6s),
              HasSubstr("lo stato 3: pieno"));
  EXPECT_THAT(ConBiforcazione([&] { return Chiama("kill -KILL $$", 8s); }, 6s), HasSubstr("dal segnale 9"));
  EXPECT_THAT(ConBiforcazione(
                  [&] {
                    auto fine = nexaro::Run({base / "manca", {}, {}, base.Path().string(), 8s, 10, 10}).finish;
                    return std::string(fine == ProcessEnd::NotStarted ? "non avviato" : "altro");
                  },
                  6s),
              "non avviato");
}

TEST_F(AdverseCaller, CompleteAnswerIsTakenThoughAChildHoldsTheOutput) {
  const auto inizio = std::chrono::steady_clock::now();
  EXPECT_EQ(Chiama("sleep 30 & echo $! >figlio; echo '<A>fatto</A>'", 20s), "A fatto");
  EXPECT_LT(std::chrono::steady_clock::now() - inizio, 10s);
  const auto figlio = static_cast<pid_t>(std::stol(test::FileText(base / "host/figlio")));
  EXPECT_EQ(::kill(figlio, 0), 0) << "what goes on in the background is the program's own affair";
  ::kill(figlio, SIGKILL);
}

TEST_F(AdverseCaller, AnswerThatAChildCompletesIsWaitedFor) {
  EXPECT_EQ(Chiama("(sleep 3; echo '<B/></A>'; exec sleep 5) & printf '<A>'", 20s), "A ");
}

TEST_F(AdverseCaller, HalfAnAnswerIsNotTakenThoughTheProgramEndedWell) {
  EXPECT_THAT(Chiama("sleep 30 & echo '<A>'", 2500ms), HasSubstr("non ha risposto entro 2,500 secondi"));
}

TEST_F(AdverseCaller, FailureIsSaidThoughAChildHoldsTheOutput) {
  EXPECT_THAT(Chiama("sleep 30 & echo '<A/>'; echo pieno >&2; exit 3", 20s), HasSubstr("lo stato 3: pieno"));
}

TEST_F(AdverseCaller, AnswerThatCameWhileTheCallerWasStoppedIsRead) {
  const Chiamante chiamante([&] { return Chiama("sleep 1; echo '<A>fatto</A>'", 2s); });
  std::this_thread::sleep_for(500ms);
  chiamante.Ferma(3s);
  EXPECT_EQ(chiamante.Esito(60s), "A fatto");
}

TEST_F(AdverseCaller, LongAnswerThatWasHeldUpWhileTheCallerWasStoppedIsReadToItsEnd) {
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

void* EseguiNelFilo(void* processo) {
  static_cast<void>(nexaro::Run(*static_cast<const nexaro::Process*>(processo)));
  return nullptr;
}

/// Ends a thread that runs the program `corpo`, as an exception would, once there is a file `segno`.
void InterrompiFilo(const std::string& cartella, const std::string& corpo, const std::string& segno) {
  const auto percorso = test::ScriviProgramma(cartella + "/programma", corpo);
  nexaro::Process processo{percorso, {}, {}, cartella, 20s, 10000, 10};
  pthread_t filo{};
  ASSERT_EQ(::pthread_create(&filo, nullptr, EseguiNelFilo, &processo), 0);
  for (int giro = 0; giro < 1000 && !std::filesystem::exists(cartella + segno); ++giro) {
    std::this_thread::sleep_for(10ms);
  }
  // The report of a program's end follows it.
  std::this_thread::sleep_for(300ms);
  ASSERT_EQ(::pthread_cancel(filo), 0);
  void* esito = nullptr;
  ASSERT_EQ(::pthread_join(filo, &esito), 0);
  ASSERT_EQ(esito, PTHREAD_CANCELED);
}

TEST_F(AdverseCaller, ProgramDoesNotGoOnUnwatchedWhenTheWaitIsBrokenOff) {
  InterrompiFilo(base.Path().string(), "touch partito; sleep 1; touch finito", "/partito");
  std::this_thread::sleep_for(1500ms);
  EXPECT_FALSE(std::filesystem::exists(base / "finito"));
}

TEST_F(AdverseCaller, WhatAProgramLeftBehindGoesOnThoughTheWaitIsBrokenOff) {
  InterrompiFilo(base.Path().string(), "(sleep 1; touch finito) & touch partito", "/partito");
  std::this_thread::sleep_for(1500ms);
  EXPECT_TRUE(std::filesystem::exists(base / "finito"));
}

TEST_F(AdverseCaller, ProgramThatOnlyComplainsIsGivenUpAllTheSame) {
  const auto inizio = std::chrono::steady_clock::now();
  EXPECT_THAT(Chiama("while :; do echo ancora >&2; sleep 0.02; done", 500ms), HasSubstr("non ha risposto entro"));
  EXPECT_LT(std::chrono::steady_clock::now() - inizio, 12s);
}

} // namespace
} // namespace lumoscad
