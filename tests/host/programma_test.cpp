// What the program keeps to itself, and what the library leaves to the program that loads it.

#include "Banco.hpp"
#include "Riservatezza.hpp"
#include "lumoscad/LumoScadenze.hpp"
#include "support/Files.hpp"
#include "support/Paths.hpp"

#include <algorithm>
#include <array>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <gmock/gmock.h>
#include <regex>
#include <set>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace lumoscad {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr const char* Password = "Segreta77Parola";

rlimit LimiteImmagine() {
  rlimit limite{};
  ::getrlimit(RLIMIT_CORE, &limite);
  return limite;
}

/// The program, reading its command line from a pipe; memory images are allowed to it as far as they can be.
class Programma {
 public:
  Programma(const std::vector<std::string>& argomenti, const std::string& errori) {
    std::array<int, 2> tubo{};
    if (::pipe2(tubo.data(), O_CLOEXEC) != 0) {
      throw std::runtime_error("pipe2");
    }
    const std::string programma = test::ProgramPath("lumoscad").string();
    std::vector<char*> vettore{const_cast<char*>(programma.c_str())};
    for (const auto& argomento : argomenti) {
      vettore.push_back(const_cast<char*>(argomento.c_str()));
    }
    vettore.push_back(nullptr);
    pid_ = ::fork();
    if (pid_ == 0) {
      const int uscita = ::open(errori.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
      ::dup2(tubo[0], 0);
      ::dup2(uscita, 1);
      ::dup2(uscita, 2);
      rlimit limite = LimiteImmagine();
      limite.rlim_cur = limite.rlim_max;
      ::setrlimit(RLIMIT_CORE, &limite);
      ::execv(vettore.front(), vettore.data());
      ::_exit(127);
    }
    ::close(tubo[0]);
    ingresso_ = tubo[1];
  }
  Programma(const Programma&) = delete;
  Programma& operator=(const Programma&) = delete;
  ~Programma() {
    Chiudi();
    if (pid_ > 0) {
      ::kill(pid_, SIGKILL);
      ::waitpid(pid_, nullptr, 0);
    }
  }

  void Scrivi(const std::string& testo) const {
    EXPECT_EQ(::write(ingresso_, testo.data(), testo.size()), static_cast<ssize_t>(testo.size()));
  }
  void Chiudi() {
    if (ingresso_ >= 0) {
      ::close(ingresso_);
    }
    ingresso_ = -1;
  }
  [[nodiscard]] int Attendi() {
    int stato = 0;
    ::waitpid(std::exchange(pid_, -1), &stato, 0);
    return stato;
  }
  /// The exit status, with nothing more to read for it; -1 where it did not end by itself.
  [[nodiscard]] int Finisci() {
    Chiudi();
    const int stato = Attendi();
    return WIFEXITED(stato) ? WEXITSTATUS(stato) : -1;
  }
  /// A file of /proc about the program.
  [[nodiscard]] std::string Proc(const std::string& nome) const {
    return test::FileText("/proc/" + std::to_string(pid_) + "/" + nome);
  }
  /// Waits until it has taken what was written to it, which is after everything that it does first.
  [[nodiscard]] bool HaLetto() const {
    const auto fine = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    for (int restano = 1; std::chrono::steady_clock::now() < fine; ::usleep(2000)) {
      if (::ioctl(ingresso_, FIONREAD, &restano) == 0 && restano == 0) {
        return true;
      }
    }
    return false;
  }
  [[nodiscard]] pid_t Pid() const { return pid_; }

 private:
  pid_t pid_ = -1;
  int ingresso_ = -1;
};

class LumoscadProgram : public testing::Test {
 protected:
  /// Runs the program without a desktop and returns its exit status; `uscite` receives what it wrote.
  int Esegui(const std::vector<std::string>& argomenti, const std::string& ingresso = {}) {
    std::filesystem::remove(errori);
    Programma programma(argomenti, errori);
    if (!ingresso.empty()) {
      programma.Scrivi(ingresso);
    }
    const int stato = programma.Finisci();
    uscite = test::FileText(errori);
    return stato;
  }
  void TogliDesktop() {
    for (const auto* nome : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
      variabili.Togli(nome);
    }
  }

  test::VariabiliProvvisorie variabili;
  test::TemporaryFolder cartella;
  std::string errori = cartella / "uscite";
  std::string uscite;
};

/// In a child process of its own, so that the test's process stays as it is: the exit status says what was found.
[[noreturn]] void ProvaNelFiglio() {
  VietaImmagineDiMemoria();
  const rlimit limite = LimiteImmagine();
  bool chiuso = limite.rlim_cur == 0 && limite.rlim_max == 0;
#ifndef LUMOSCAD_SANITIZZATO
  chiuso = chiuso && ::prctl(PR_GET_DUMPABLE) == 0;
#endif
  ::_exit(chiuso ? 0 : 1);
}

} // namespace

TEST(Confidentiality, TheProcessLeavesNoImageOfItsMemory) {
  EXPECT_EXIT(ProvaNelFiglio(), testing::ExitedWithCode(0), "");
}

TEST(Confidentiality, TheLibraryLeavesTheLimitsOfItsProcessAlone) {
  const rlimit prima = LimiteImmagine();
  const int aperto = ::prctl(PR_GET_DUMPABLE);
  const mode_t maschera = ::umask(022);
  ::umask(maschera);
  EXPECT_EQ(LumoScadenze().EseguiLumoScad("-T BANCA -DB2PASS " + std::string(Password)), "");
  EXPECT_EQ(LimiteImmagine().rlim_cur, prima.rlim_cur);
  EXPECT_EQ(LimiteImmagine().rlim_max, prima.rlim_max);
  EXPECT_EQ(::prctl(PR_GET_DUMPABLE), aperto);
  EXPECT_EQ(::umask(maschera), maschera);
}

TEST_F(LumoscadProgram, DiesWithoutLeavingAnImageOfItsMemory) {
  Programma programma({"-"}, errori);
  programma.Scrivi("-T TEST -DB2SOURCE CONTI -DB2PASS " + std::string(Password));
  ASSERT_TRUE(programma.HaLetto());
  ASSERT_EQ(::kill(programma.Pid(), SIGSEGV), 0);
  const int stato = programma.Attendi();
#ifndef LUMOSCAD_SANITIZZATO
  ASSERT_TRUE(WIFSIGNALED(stato));
  EXPECT_EQ(WTERMSIG(stato), SIGSEGV);
#endif
  EXPECT_FALSE(WIFSIGNALED(stato) && WCOREDUMP(stato));
}

TEST_F(LumoscadProgram, AllowsItselfNoImageOfItsMemory) {
  Programma programma({"-"}, errori);
  programma.Scrivi("-T");
  ASSERT_TRUE(programma.HaLetto());
  const std::string limiti = programma.Proc("limits");
  const auto riga = limiti.find("Max core file size");
  ASSERT_NE(riga, std::string::npos);
  EXPECT_THAT(limiti.substr(riga, limiti.find('\n', riga) - riga), testing::ContainsRegex("size +0 +0 +bytes"));
}

TEST_F(LumoscadProgram, KeepsACommandOfItsStandardInputOutOfTheProcessList) {
  Programma programma({"-"}, errori);
  programma.Scrivi("-T FOO -DB2PASS " + std::string(Password));
  ASSERT_TRUE(programma.HaLetto());
  EXPECT_THAT(programma.Proc("cmdline"), HasSubstr("lumoscad"));
  EXPECT_THAT(programma.Proc("cmdline"), Not(HasSubstr(Password)));
  EXPECT_THAT(programma.Proc("environ"), Not(HasSubstr(Password)));
  programma.Chiudi();
  EXPECT_EQ(programma.Attendi(), 0);
  EXPECT_THAT(test::FileText(errori), Not(HasSubstr(Password)));
}

TEST_F(LumoscadProgram, TellsAFailureWithoutThePasswordWhereThereIsNoDesktop) {
  TogliDesktop();
  for (const std::string comando : {"-T TEST -DB2SOURCE non-esiste -DB2PASS ", "-T -DB2PASS ", "-D -T -DB2PASS "}) {
    Programma programma({"-"}, errori);
    programma.Scrivi(comando + Password + (comando == "-D -T -DB2PASS " ? " -T" : ""));
    programma.Chiudi();
    static_cast<void>(programma.Attendi());
  }
  EXPECT_THAT(test::FileText(errori), HasSubstr("error"));
  EXPECT_THAT(test::FileText(errori), Not(HasSubstr(Password)));
}

TEST_F(LumoscadProgram, StartsWithoutTheLibraryOfItsLinkToTheHost) {
  variabili.Imposta("LD_TRACE_LOADED_OBJECTS", "1");
  static_cast<void>(Esegui({"--versione"}));
  EXPECT_THAT(uscite, HasSubstr("liblumoscad.so"));
  EXPECT_THAT(uscite, Not(HasSubstr("libssh")));
}

TEST_F(LumoscadProgram, SaysThatTheLibraryOfItsLinkToTheHostDoesNotLoad) {
  test::Scrivi(cartella / "libssh.so.4", "no library");
  variabili.Imposta("LD_LIBRARY_PATH", cartella.Path());
  EXPECT_EQ(Esegui({"--registra-host", "127.0.0.1"}), 1);
  EXPECT_THAT(uscite, StartsWith("La libreria libssh.so.4 del collegamento SSH non si carica ("));
  EXPECT_THAT(uscite, EndsWith("Chiedere all'amministratore di questa macchina di installarla.\n"));
}

TEST_F(LumoscadProgram, JoinsItsArgumentsWithSingleBlanks) {
  TogliDesktop();
  EXPECT_EQ(Esegui({"-T", "EXTRA", "/A", "-S"}), 1);
  EXPECT_THAT(uscite, HasSubstr("manca il valore di un'opzione")) << "the type and the sub-command were found";
  EXPECT_THAT(uscite, EndsWith("error\n"));
  EXPECT_EQ(Esegui({"-T", "", "EXTRA", "/A", "-S"}), 0) << "an empty argument is an empty value";
  EXPECT_EQ(uscite, "");
}

TEST_F(LumoscadProgram, ReadsACommandWithoutItsLineEnd) {
  TogliDesktop();
  for (const char* comando : {"-T FOO -T", "-T FOO -T\n", "-T FOO -T\r\n"}) {
    EXPECT_EQ(Esegui({"-"}, comando), 1) << comando;
    EXPECT_THAT(uscite, HasSubstr("manca il valore di -T")) << comando;
  }
  EXPECT_EQ(Esegui({"-"}, "-T FOO -T \n"), 0) << "only the line end is taken off";
  EXPECT_EQ(uscite, "");
}

TEST_F(LumoscadProgram, TellsHowItIsUsed) {
  EXPECT_EQ(Esegui({"--aiuto"}), 0);
  EXPECT_THAT(uscite, StartsWith("Uso: lumoscad COMANDO...\n"));
  const std::string aiuto = uscite;
  EXPECT_EQ(Esegui({"-h"}), 0) << "alone it is no host";
  EXPECT_EQ(uscite, aiuto);
  EXPECT_EQ(Esegui({"-h", "10.0.0.1"}), 0) << "the host of a command without a type";
  EXPECT_EQ(uscite, "");
  EXPECT_EQ(Esegui({"--versione"}), 0);
  EXPECT_THAT(uscite, testing::MatchesRegex("lumoscad [0-9]+\\.[0-9]+\\.[0-9]+\n"));
  for (const std::vector<std::string>& argomenti :
       {std::vector<std::string>{}, {"--altro"}, {"--aiuto", "x"}, {"--versione", "x"}, {"--registra-host"}}) {
    EXPECT_EQ(Esegui(argomenti), 2);
    EXPECT_THAT(uscite, StartsWith("Uso: lumoscad COMANDO...\n"));
  }
}

TEST_F(LumoscadProgram, NamesEveryEnvironmentVariableInItsHelp) {
  EXPECT_EQ(Esegui({"--aiuto"}), 0);
  std::set<std::string> nomi{"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM", "SSH_AUTH_SOCK"};
  static const std::regex Variabile("\"((NEXARO|LUMOSCAD)_[A-Z_]+)\"");
  for (const auto& voce : std::filesystem::recursive_directory_iterator(test::SourcePath("src"))) {
    const std::string testo = voce.is_regular_file() ? test::FileText(voce.path().string()) : "";
    for (std::sregex_iterator trovata(testo.begin(), testo.end(), Variabile), fine; trovata != fine; ++trovata) {
      nomi.insert((*trovata)[1]);
    }
  }
  EXPECT_GE(nomi.size(), 14U) << "the sources were looked through";
  for (const std::string& nome : nomi) {
    EXPECT_THAT(uscite, HasSubstr("\n  " + nome + " ")) << nome;
  }
}

} // namespace lumoscad
