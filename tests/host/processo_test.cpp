#include "Banco.hpp"
#include "platform/nexaro/cartella/Process.hpp"
#include "support/Files.hpp"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace lumoscad {
namespace {

using namespace std::chrono_literals;
using nexaro::ProcessEnd;

class LocalProgram : public testing::Test {
 protected:
  nexaro::ProcessOutcome Esegui(const std::string& corpo, std::vector<std::string> argomenti = {},
                                std::chrono::milliseconds attesa = 20s) {
    const auto percorso = test::ScriviProgramma(cartella / "programma", corpo);
    return nexaro::Run({percorso, std::move(argomenti), {"PROVA=sì"}, cartella.Path().string(), attesa, 100000, 50});
  }

  test::TemporaryFolder cartella;
};

/// A signal's treatment that returns to what it was.
class Trattamento {
 public:
  Trattamento(int segnale, void (*gestore)(int)) : segnale_(segnale) {
    struct sigaction nuovo {};
    nuovo.sa_handler = gestore;
    ::sigaction(segnale, &nuovo, &precedente_);
  }
  Trattamento(const Trattamento&) = delete;
  Trattamento& operator=(const Trattamento&) = delete;
  ~Trattamento() { ::sigaction(segnale_, &precedente_, nullptr); }

 private:
  int segnale_;
  struct sigaction precedente_ {};
};

TEST_F(LocalProgram, GetsEachArgumentAsOneAndEmptyOnesToo) {
  const auto esito = Esegui("printf '%s|' \"$#\" \"$@\"", {"a b", "", "$(id)", "`id`; rm *", ""});
  EXPECT_EQ(esito.finish, ProcessEnd::Exited);
  EXPECT_EQ(esito.state, 0);
  EXPECT_EQ(esito.output, "5|a b||$(id)|`id`; rm *||");
}

TEST_F(LocalProgram, RunsInItsDirectoryWithItsEnvironmentAndNoInput) {
  const auto esito = Esegui("pwd -P; echo $PROVA; wc -c");
  EXPECT_EQ(esito.output, std::filesystem::canonical(cartella.Path().string()).string() + "\nsì\n0\n");
}

TEST_F(LocalProgram, ReportsExitStatusAndStandardErrorApart) {
  const auto esito = Esegui("echo fuori; echo dentro >&2; exit 7");
  EXPECT_EQ(esito.finish, ProcessEnd::Exited);
  EXPECT_EQ(esito.state, 7);
  EXPECT_EQ(esito.output, "fuori\n");
  EXPECT_EQ(esito.errors, "dentro\n");
}

TEST_F(LocalProgram, KeepsTheBeginningOfStandardErrorOnly) {
  const auto esito = Esegui("i=0; while [ $i -lt 5000 ]; do echo 0123456789012345678901234567890123456789 >&2; "
                            "i=$((i+1)); done; echo fine");
  EXPECT_EQ(esito.output, "fine\n");
  EXPECT_EQ(esito.errors.size(), 50U);
}

TEST_F(LocalProgram, ReportsTheSignalThatKilledIt) {
  const auto esito = Esegui("kill -TERM $$");
  EXPECT_EQ(esito.finish, ProcessEnd::Signal);
  EXPECT_EQ(esito.state, SIGTERM);
}

TEST_F(LocalProgram, ReportsThatItCannotBeStarted) {
  auto esito = nexaro::Run({cartella / "manca", {}, {}, cartella.Path().string(), 5s, 10, 10});
  EXPECT_EQ(esito.finish, ProcessEnd::NotStarted);
  EXPECT_EQ(esito.state, ENOENT);
  test::Scrivi(cartella / "testo", "niente");
  esito = nexaro::Run({cartella / "testo", {}, {}, cartella.Path().string(), 5s, 10, 10});
  EXPECT_EQ(esito.finish, ProcessEnd::NotStarted);
  EXPECT_EQ(esito.state, EACCES);
}

TEST_F(LocalProgram, IsKilledWithItsWholeGroupWhenItTakesTooLong) {
  const auto inizio = std::chrono::steady_clock::now();
  const auto esito = Esegui("sleep 30 & echo $! > figlio; wait", {}, 500ms);
  EXPECT_EQ(esito.finish, ProcessEnd::TimedOut);
  EXPECT_LT(std::chrono::steady_clock::now() - inizio, 10s);
  const auto figlio = static_cast<pid_t>(std::stol(test::FileText(cartella / "figlio")));
  const auto morto = [figlio] {
    const auto stato = test::FileText("/proc/" + std::to_string(figlio) + "/stat");
    return stato.empty() || stato.find(") Z ") != std::string::npos;
  };
  for (int giro = 0; giro < 100 && !morto(); ++giro) {
    std::this_thread::sleep_for(50ms);
  }
  EXPECT_TRUE(morto());
}

TEST_F(LocalProgram, IsStoppedWhenItWritesTooMuch) {
  const auto esito = Esegui("while :; do echo 0123456789012345678901234567890123456789; done");
  EXPECT_EQ(esito.finish, ProcessEnd::ExcessiveOutput);
  EXPECT_EQ(esito.output.size(), 100000U);
}

TEST_F(LocalProgram, MayWriteExactlyTheBound) {
  const auto esito = Esegui("head -c 100000 /dev/zero");
  EXPECT_EQ(esito.finish, ProcessEnd::Exited);
  EXPECT_EQ(esito.output.size(), 100000U);
}

TEST_F(LocalProgram, StatusArrivesThoughTheCallerIgnoresSigchld) {
  const Trattamento ignorato(SIGCHLD, SIG_IGN);
  const auto esito = Esegui("exit 5");
  EXPECT_EQ(esito.finish, ProcessEnd::Exited);
  EXPECT_EQ(esito.state, 5);
}

void RaccogliTutti(int /*segnale*/) {
  const auto conservato = errno;
  while (::waitpid(-1, nullptr, WNOHANG) > 0) {
  }
  errno = conservato;
}

TEST_F(LocalProgram, StatusArrivesThoughTheCallerReapsEveryChild) {
  const Trattamento raccolto(SIGCHLD, RaccogliTutti);
  const auto esito = Esegui("exit 6");
  EXPECT_EQ(esito.finish, ProcessEnd::Exited);
  EXPECT_EQ(esito.state, 6);
}

TEST_F(LocalProgram, HasDefaultSignalsThoughTheCallerIgnoresThem) {
  const Trattamento ignorato(SIGPIPE, SIG_IGN);
  const auto esito = Esegui("kill -PIPE $$; echo vivo");
  EXPECT_EQ(esito.finish, ProcessEnd::Signal);
  EXPECT_EQ(esito.state, SIGPIPE);
}

TEST_F(LocalProgram, DoesNotInheritTheCallersFiles) {
  const int aperto = ::open("/dev/null", O_RDONLY);
  ASSERT_GE(aperto, 0);
  const auto esito = Esegui("[ -e /proc/self/fd/" + std::to_string(aperto) + " ] && echo ereditato; echo fine");
  ::close(aperto);
  EXPECT_EQ(esito.output, "fine\n");
}

TEST_F(LocalProgram, LeavesNoZombieBehind) {
  static_cast<void>(Esegui("exit 0"));
  EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
  EXPECT_EQ(errno, ECHILD);
}

TEST_F(LocalProgram, RunsSideBySideWithoutWaitingForEachOther) {
  const auto lento = test::ScriviProgramma(cartella / "lento", "sleep 2; echo lento");
  const auto svelto = test::ScriviProgramma(cartella / "svelto", "echo svelto");
  nexaro::ProcessOutcome primo;
  std::thread filo([&] { primo = nexaro::Run({lento, {}, {}, cartella.Path().string(), 20s, 100, 100}); });
  std::this_thread::sleep_for(200ms);
  const auto inizio = std::chrono::steady_clock::now();
  const auto secondo = nexaro::Run({svelto, {}, {}, cartella.Path().string(), 20s, 100, 100});
  EXPECT_LT(std::chrono::steady_clock::now() - inizio, 1s);
  filo.join();
  EXPECT_EQ(secondo.output, "svelto\n");
  EXPECT_EQ(primo.output, "lento\n");
}

} // namespace
} // namespace lumoscad
