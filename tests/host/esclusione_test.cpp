
#include "Banco.hpp"
#include "platform/nexaro/Nexaro.hpp"
#include "support/OtherProcess.hpp"

#include <chrono>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <thread>

namespace lumoscad {
namespace {

using test::ErroreDi;
using test::OtherProcess;
using testing::HasSubstr;
using namespace std::chrono_literals;

void Niente() {}

/// Goes on as another user, or not at all.
void Diventa(uid_t utente) {
  if (::setgid(utente) != 0 || ::setuid(utente) != 0 || ::geteuid() != utente) {
    ::_exit(1);
  }
}

class LockAmongProcesses : public testing::Test {
 protected:
  void SetUp() override {
    variabili.Imposta("NEXARO_ATTESA", "0.3");
    nostra = nexaro::CreateProcessLock();
  }

  /// What another program does: its locks stay as long as its process.
  [[nodiscard]] std::function<void()> Prende() const {
    return [this] { static_cast<void>(nexaro::CreateProcessLock().release()->Wait(testo, Niente)); };
  }
  [[nodiscard]] bool Libero() const {
    try {
      const bool atteso = nostra->Wait(testo, Niente);
      nostra->LetGo();
      return !atteso;
    } catch (const RuntimeError&) {
      return false;
    }
  }

  test::VariabiliProvvisorie variabili;
  /// Of this test alone: the locks are the machine's.
  const std::string testo = "PROVA" + std::to_string(::getpid());
  std::unique_ptr<nexaro::ProcessLock> nostra;
};

TEST_F(LockAmongProcesses, KeepsAnotherProcessOutUntilItsHolderLetsGo) {
  ASSERT_FALSE(nostra->Wait(testo, Niente));
  EXPECT_FALSE(OtherProcess(Prende()).Succeeded());
  nostra->LetGo();
  EXPECT_TRUE(OtherProcess(Prende()).Succeeded());
}

TEST_F(LockAmongProcesses, AnotherTextIsAnotherLock) {
  const OtherProcess altro(Prende());
  ASSERT_TRUE(altro.Succeeded());
  EXPECT_FALSE(nostra->Wait(testo + "0", Niente));
  nostra->LetGo();
}

TEST_F(LockAmongProcesses, WhoWaitsGetsItOnceTheHolderHasEndedAndIsToldThatItWaited) {
  variabili.Imposta("NEXARO_ATTESA", "30");
  const auto paziente = nexaro::CreateProcessLock();
  OtherProcess altro(Prende());
  ASSERT_TRUE(altro.Succeeded());
  int respiri = 0;
  EXPECT_TRUE(paziente->Wait(testo, [&] {
    if (++respiri == 3) {
      altro.End();
    }
  }));
  EXPECT_GE(respiri, 3);
  paziente->LetGo();
}

TEST_F(LockAmongProcesses, GoesWithAKilledHolder) {
  OtherProcess altro(Prende());
  ASSERT_TRUE(altro.Succeeded());
  ASSERT_FALSE(Libero());
  altro.Kill();
  EXPECT_TRUE(Libero());
}

TEST_F(LockAmongProcesses, IsNotHeldByAChildThatItsHolderForked) {
  std::array<int, 2> tubo{};
  ASSERT_EQ(::pipe(tubo.data()), 0);
  OtherProcess altro([&] {
    Prende()();
    const pid_t figlio = ::fork();
    if (figlio == 0) {
      ::pause();
      ::_exit(0);
    }
    static_cast<void>(::write(tubo[1], &figlio, sizeof figlio));
  });
  ASSERT_TRUE(altro.Succeeded());
  pid_t figlio = 0;
  ASSERT_EQ(::read(tubo[0], &figlio, sizeof figlio), static_cast<ssize_t>(sizeof figlio));
  EXPECT_FALSE(Libero());
  altro.Kill();
  EXPECT_EQ(::kill(figlio, 0), 0) << "the child was to live on";
  EXPECT_TRUE(Libero());
  ::kill(figlio, SIGKILL);
  ::close(tubo[0]);
  ::close(tubo[1]);
}

TEST_F(LockAmongProcesses, AChildThatForksOffDoesNotLetGoOfItsParentsLock) {
  ASSERT_FALSE(nostra->Wait(testo, Niente));
  OtherProcess figlio([this] { nostra->LetGo(); });
  figlio.End();
  EXPECT_FALSE(OtherProcess(Prende()).Succeeded());
  nostra->LetGo();
}

TEST_F(LockAmongProcesses, TheEndOfTheWaitNamesTheProcessInTheWay) {
  const OtherProcess altro(Prende());
  ASSERT_TRUE(altro.Succeeded());
  const auto inizio = std::chrono::steady_clock::now();
  const auto errore = ErroreDi([&] { static_cast<void>(nostra->Wait(testo, Niente)); });
  const auto durata = std::chrono::steady_clock::now() - inizio;
  EXPECT_EQ(errore.Description(),
            "Un altro programma (processo " + std::to_string(altro.Number()) +
                ") di questa macchina con lo stesso codice di postazione «" + testo +
                "» sta inviando una richiesta e non ha finito entro 0,300 secondi. La richiesta non è stata inviata "
                "all'host. "
                "Prima di ripetere il comando può essere necessario togliere il blocco della lista sull'host.");
  EXPECT_GE(durata, 300ms);
  EXPECT_LT(durata, 5s);
}

TEST_F(LockAmongProcesses, AWaitThatFailsKeepsNobodyElseWaiting) {
  OtherProcess altro(Prende());
  ASSERT_TRUE(altro.Succeeded());
  EXPECT_THROW(static_cast<void>(nostra->Wait(testo, [] { throw RuntimeError(errors::Driver, "schermo"); })),
               RuntimeError);
  altro.End();
  EXPECT_TRUE(OtherProcess(Prende()).Succeeded());
}

TEST_F(LockAmongProcesses, TheLastHolderWaitsBehindWhoIsWaitingAlready) {
  variabili.Imposta("NEXARO_ATTESA", "30");
  ASSERT_FALSE(nostra->Wait(testo, Niente));
  std::array<int, 2> tubo{};
  ASSERT_EQ(::pipe(tubo.data()), 0);
  const pid_t figlio = ::fork();
  if (figlio == 0) {
    const auto sua = nexaro::CreateProcessLock();
    const auto scrivi = [&tubo](char segno) { static_cast<void>(::write(tubo[1], &segno, 1)); };
    static_cast<void>(sua->Wait(testo, [&] { scrivi('a'); }));
    scrivi('b');
    std::this_thread::sleep_for(100ms);
    scrivi('c');
    ::_exit(0);
  }
  ::close(tubo[1]);
  char segno = 0;
  ASSERT_EQ(::read(tubo[0], &segno, 1), 1);
  ASSERT_EQ(segno, 'a') << "the other was to wait";
  nostra->LetGo();
  const auto paziente = nexaro::CreateProcessLock();
  EXPECT_TRUE(paziente->Wait(testo, Niente)) << "the last holder was first again";
  std::string detto(200, '\0');
  const auto letti = ::read(tubo[0], detto.data(), detto.size());
  detto.resize(letti > 0 ? static_cast<std::size_t>(letti) : 0);
  EXPECT_TRUE(detto.ends_with("bc")) << "both had it: " << detto;
  ::waitpid(figlio, nullptr, 0);
  ::close(tubo[0]);
}

TEST_F(LockAmongProcesses, AnotherUserIsKeptOutAndHasNoFileToPutInTheWay) {
  if (::geteuid() != 0) {
    GTEST_SKIP() << "only root can play another user";
  }
  constexpr uid_t Altro = 65534;
  ASSERT_FALSE(nostra->Wait(testo, Niente));
  std::array<int, 2> tubo{};
  ASSERT_EQ(::pipe(tubo.data()), 0);
  OtherProcess altro([&] {
    Diventa(Altro);
    const bool senzaVie = ::chmod("/dev/full", 0600) != 0 && ::rename("/dev/full", "/dev/vuoto") != 0;
    bool fuori = false;
    try {
      Prende()();
    } catch (const RuntimeError&) {
      fuori = true;
    }
    const char esito = senzaVie && fuori ? 's' : 'n';
    static_cast<void>(::write(tubo[1], &esito, 1));
  });
  char esito = 0;
  ASSERT_EQ(::read(tubo[0], &esito, 1), 1);
  EXPECT_EQ(esito, 's');
  ::close(tubo[0]);
  ::close(tubo[1]);
  nostra->LetGo();
  const OtherProcess suo([&] {
    Diventa(Altro);
    Prende()();
  });
  EXPECT_TRUE(suo.Succeeded());
  EXPECT_FALSE(Libero()) << "two users were let in at once";
}

TEST_F(LockAmongProcesses, AReservedNameIsAnothersUntilItsProcessReservesTheNextOrEnds) {
  ASSERT_TRUE(nostra->Reserve(testo + "1"));
  EXPECT_TRUE(nostra->Reserve(testo + "1")) << "one process may use a name again";
  const auto riserva = [this](const char* quale) {
    return [this, quale] {
      if (!nexaro::CreateProcessLock().release()->Reserve(testo + quale)) {
        throw std::runtime_error("taken");
      }
    };
  };
  EXPECT_FALSE(OtherProcess(riserva("1")).Succeeded());
  ASSERT_TRUE(nostra->Reserve(testo + "2"));
  OtherProcess altro(riserva("1"));
  EXPECT_TRUE(altro.Succeeded());
  EXPECT_FALSE(nostra->Reserve(testo + "1"));
  EXPECT_FALSE(OtherProcess(riserva("2")).Succeeded()) << "a refusal must not cost the name that was reserved";
  altro.End();
  EXPECT_TRUE(nostra->Reserve(testo + "1"));
}

TEST_F(LockAmongProcesses, ADescriptorThatTheCallingProgramClosedIsOpenedAgainAndNotMistaken) {
  ASSERT_FALSE(nostra->Wait(testo, Niente));
  nostra->LetGo();
  int trovato = -1;
  for (int numero = 3; numero < 256 && trovato < 0; ++numero) {
    struct stat stato {};
    if (::fstat(numero, &stato) == 0 && S_ISCHR(stato.st_mode) && stato.st_rdev == 0x107) {
      trovato = numero;
    }
  }
  ASSERT_GT(trovato, 2);
  EXPECT_EQ(::fcntl(trovato, F_GETFD) & FD_CLOEXEC, FD_CLOEXEC) << "a program that is started would inherit it";
  const int altrui = ::open("/dev/null", O_RDWR | O_CLOEXEC);
  ASSERT_EQ(::dup3(altrui, trovato, O_CLOEXEC), trovato);
  ::close(altrui);
  ASSERT_FALSE(nostra->Wait(testo, Niente));
  EXPECT_FALSE(OtherProcess(Prende()).Succeeded());
  nostra->LetGo();
  EXPECT_EQ(::fcntl(trovato, F_GETFD) & FD_CLOEXEC, FD_CLOEXEC) << "the other's file was closed";
  ::close(trovato);
}

TEST_F(LockAmongProcesses, KeepsClearOfTheStandardDescriptors) {
  const int copia = ::dup(STDIN_FILENO);
  ::close(STDIN_FILENO);
  const auto altra = nexaro::CreateProcessLock();
  EXPECT_FALSE(altra->Wait(testo, Niente));
  EXPECT_LT(::fcntl(STDIN_FILENO, F_GETFD), 0);
  if (copia >= 0) {
    ::dup2(copia, STDIN_FILENO);
    ::close(copia);
  }
}

} // namespace
} // namespace lumoscad
