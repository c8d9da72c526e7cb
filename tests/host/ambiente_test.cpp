#include "Banco.hpp"
#include "platform/nexaro/LinkErrors.hpp"
#include "platform/nexaro/Nexaro.hpp"
#include "platform/nexaro/Workstation.hpp"
#include "support/Files.hpp"

#include <array>
#include <functional>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace lumoscad {
namespace {

using test::ErroreDi;
using testing::HasSubstr;

class LinkEnvironment : public testing::Test {
 protected:
  void SetUp() override {
    for (const auto* nome : {"NEXARO_ATTESA", "NEXARO_CARTELLA_LOCALE", "TMPDIR"}) {
      variabili.Togli(nome);
    }
    variabili.Imposta("NEXARO_TRASPORTO", "cartella");
    variabili.Imposta("NEXARO_POSTAZIONE", "T01");
    variabili.Imposta("NEXARO_RADICE", cartella.Path().string());
    variabili.Imposta("XDG_RUNTIME_DIR", cartella.Path().string());
  }

  static std::string Rifiuto() {
    return ErroreDi([] { static_cast<void>(nexaro::ReadEnvironment()); }).Description();
  }
  static std::string RifiutoDelCollegamento() {
    return ErroreDi([] { static_cast<void>(nexaro::CreateHostLink()); }).Description();
  }

  test::TemporaryFolder cartella;
  test::VariabiliProvvisorie variabili;
};

TEST_F(LinkEnvironment, GivesTheSettingsAsTheyAre) {
  variabili.Imposta("NEXARO_CARTELLA_LOCALE", cartella.Path().string() + "/");
  const auto ambiente = nexaro::ReadEnvironment();
  EXPECT_EQ(ambiente.CodicePostazione, "T01");
  EXPECT_EQ(ambiente.CartellaLocale, cartella.Path().string());
}

/// The identifier that the process `figlio` becomes would have.
std::string PostazioneDi(const std::function<void()>& diventa) {
  std::array<int, 2> tubo{};
  if (::pipe(tubo.data()) != 0) {
    return "";
  }
  const pid_t figlio = ::fork();
  if (figlio == 0) {
    diventa();
    const auto postazione = nexaro::DefaultWorkstation();
    const bool scritta = ::write(tubo[1], postazione.data(), postazione.size()) > 0;
    ::_exit(scritta ? 0 : 1);
  }
  ::close(tubo[1]);
  std::string postazione(200, '\0');
  const auto letti = ::read(tubo[0], postazione.data(), postazione.size());
  postazione.resize(letti > 0 ? static_cast<std::size_t>(letti) : 0);
  ::close(tubo[0]);
  ::waitpid(figlio, nullptr, 0);
  return postazione;
}

TEST_F(LinkEnvironment, WorkstationDefaultsToMachineUserAndSession) {
  variabili.Togli("NEXARO_POSTAZIONE");
  variabili.Imposta("XDG_SESSION_ID", "c 3");
  char nome[256]{};
  ASSERT_EQ(::gethostname(nome, sizeof nome - 1), 0);
  const auto postazione = nexaro::ReadEnvironment().CodicePostazione;
  EXPECT_THAT(postazione, testing::MatchesRegex("[A-Za-z0-9._-]+-c_3-[0-9a-f]{8}"));
  EXPECT_THAT(postazione, testing::StartsWith(std::string(nome).substr(0, 40)));
  EXPECT_LE(postazione.size(), 93U);
  EXPECT_EQ(nexaro::ReadEnvironment().CodicePostazione, postazione);
}

TEST_F(LinkEnvironment, TheProgramsOfOneSessionShareItsDefaultWorkstation) {
  variabili.Imposta("XDG_SESSION_ID", "3");
  const auto nostra = nexaro::DefaultWorkstation();
  EXPECT_EQ(PostazioneDi([] {}), nostra);
  EXPECT_EQ(PostazioneDi([] { ::setsid(); }), nostra) << "a desktop starts its programs in sessions of their own";
}

TEST_F(LinkEnvironment, AnotherSessionHasAnotherDefaultWorkstation) {
  variabili.Imposta("XDG_SESSION_ID", "3");
  const auto terza = nexaro::DefaultWorkstation();
  for (const char* altra : {"4", "33", "c3", "3 ", "3/"}) {
    variabili.Imposta("XDG_SESSION_ID", altra);
    EXPECT_NE(nexaro::DefaultWorkstation(), terza) << altra;
  }
  variabili.Togli("XDG_SESSION_ID");
  EXPECT_NE(PostazioneDi([] { ::setsid(); }), nexaro::DefaultWorkstation());
  EXPECT_EQ(PostazioneDi([] {}), nexaro::DefaultWorkstation());
}

TEST_F(LinkEnvironment, AnotherUserHasAnotherDefaultWorkstation) {
  if (::geteuid() != 0) {
    GTEST_SKIP() << "only root can play another user";
  }
  const auto nostra = nexaro::DefaultWorkstation();
  const auto diventa = [](uid_t utente) {
    return PostazioneDi([utente] {
      if (::setuid(utente) != 0) {
        ::_exit(1);
      }
    });
  };
  // The second of them has no name in the system.
  const auto altra = diventa(65534);
  const auto ignota = diventa(54321);
  EXPECT_THAT(altra, testing::MatchesRegex("[A-Za-z0-9._-]+"));
  EXPECT_THAT(ignota, HasSubstr("-54321-"));
  EXPECT_NE(altra, nostra);
  EXPECT_NE(ignota, nostra);
}

TEST_F(LinkEnvironment, RefusesAWorkstationThatCannotBePartOfAFileName) {
  const std::string lunga(100, 'T');
  for (const std::string& postazione :
       {std::string("../T01"), std::string("T\n01"), std::string("  "), std::string("T\\01"), lunga + "T"}) {
    variabili.Imposta("NEXARO_POSTAZIONE", postazione);
    EXPECT_THAT(Rifiuto(), HasSubstr("NEXARO_POSTAZIONE")) << postazione;
  }
  variabili.Imposta("NEXARO_POSTAZIONE", lunga);
  EXPECT_EQ(nexaro::ReadEnvironment().CodicePostazione, lunga);
}

TEST_F(LinkEnvironment, CreatesAPrivateDirectoryOfTheUser) {
  const auto ambiente = nexaro::ReadEnvironment();
  EXPECT_EQ(ambiente.CartellaLocale, cartella / "lumoscad");
  struct stat stato {};
  ASSERT_EQ(::lstat(ambiente.CartellaLocale.c_str(), &stato), 0);
  EXPECT_EQ(stato.st_mode & 07777U, 0700U);
  EXPECT_EQ(nexaro::ReadEnvironment().CartellaLocale, ambiente.CartellaLocale);
}

TEST_F(LinkEnvironment, FallsBackToTheTemporaryDirectory) {
  variabili.Togli("XDG_RUNTIME_DIR");
  variabili.Imposta("TMPDIR", cartella.Path().string());
  EXPECT_EQ(nexaro::ReadEnvironment().CartellaLocale, cartella / ("lumoscad-" + std::to_string(::getuid())));
}

TEST_F(LinkEnvironment, RefusesADefaultDirectoryThatIsASymbolicLink) {
  std::filesystem::create_directory(cartella / "altrove");
  std::filesystem::create_directory_symlink(cartella / "altrove", cartella / "lumoscad");
  EXPECT_THAT(Rifiuto(), HasSubstr("collegamento simbolico"));
}

TEST_F(LinkEnvironment, PassesOverARelativeRuntimeDirectory) {
  variabili.Imposta("XDG_RUNTIME_DIR", "relativa");
  variabili.Imposta("TMPDIR", cartella.Path().string());
  EXPECT_EQ(nexaro::ReadEnvironment().CartellaLocale, cartella / ("lumoscad-" + std::to_string(::getuid())));
}

TEST_F(LinkEnvironment, RefusesADefaultDirectoryOpenToOthers) {
  std::filesystem::create_directory(cartella / "lumoscad");
  for (const auto modo : {0740, 0720, 0710, 0704, 0702, 0701}) {
    std::filesystem::permissions(cartella / "lumoscad", std::filesystem::perms(modo));
    EXPECT_THAT(Rifiuto(), HasSubstr("accessibile ad altri")) << modo;
  }
}

TEST_F(LinkEnvironment, RefusesADefaultDirectoryThatIsAFile) {
  test::Scrivi(cartella / "lumoscad", "");
  EXPECT_THAT(Rifiuto(), HasSubstr("non è una cartella"));
}

TEST_F(LinkEnvironment, RefusesARelativeOrMissingLocalDirectory) {
  variabili.Imposta("NEXARO_CARTELLA_LOCALE", "relativa");
  EXPECT_THAT(Rifiuto(), HasSubstr("percorso assoluto"));
  variabili.Imposta("NEXARO_CARTELLA_LOCALE", cartella / "manca");
  EXPECT_THAT(Rifiuto(), HasSubstr("file inesistente"));
}

TEST_F(LinkEnvironment, RefusesTransportsItDoesNotHave) {
  variabili.Imposta("NEXARO_TRASPORTO", "piccione");
  EXPECT_THAT(RifiutoDelCollegamento(), HasSubstr("«piccione»"));
}

TEST_F(LinkEnvironment, NeedsARootDirectoryThatExists) {
  variabili.Togli("NEXARO_RADICE");
  EXPECT_THAT(RifiutoDelCollegamento(), HasSubstr("Manca l'impostazione NEXARO_RADICE"));
  variabili.Imposta("NEXARO_RADICE", cartella / "manca");
  EXPECT_THAT(RifiutoDelCollegamento(), HasSubstr("file inesistente"));
  test::Scrivi(cartella / "file", "");
  variabili.Imposta("NEXARO_RADICE", cartella / "file");
  EXPECT_THAT(RifiutoDelCollegamento(), HasSubstr("non è una cartella"));
}

TEST_F(LinkEnvironment, WaitIsAPositiveNumberOfSeconds) {
  for (const auto* attesa : {"0", "-1", "abc", "10s", "nan", "inf", "86401", " 5"}) {
    variabili.Imposta("NEXARO_ATTESA", attesa);
    EXPECT_THAT(RifiutoDelCollegamento(), HasSubstr("NEXARO_ATTESA")) << attesa;
  }
  for (const auto* attesa : {"1", "0.25", "86400"}) {
    variabili.Imposta("NEXARO_ATTESA", attesa);
    EXPECT_NE(nexaro::CreateHostLink(), nullptr) << attesa;
  }
}

} // namespace
} // namespace lumoscad
