#include "Banco.hpp"
#include "platform/LocalFile.hpp"
#include "platform/nexaro/File.hpp"
#include "platform/nexaro/LinkErrors.hpp"
#include "platform/nexaro/Nexaro.hpp"
#include "support/Files.hpp"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

namespace lumoscad {
namespace {

using test::ErroreDi;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;

constexpr uid_t Altro = 65534;

mode_t Modo(const std::string& percorso) {
  struct stat stato {};
  return ::lstat(percorso.c_str(), &stato) == 0 ? stato.st_mode & 07777U : 0;
}

class LocalFile : public testing::Test {
 protected:
  std::string Rifiuto(const std::string& percorso) {
    return ErroreDi([&] { WriteLocalFile(percorso, "nuovo"); }).Description();
  }
  test::TemporaryFolder cartella;
};

TEST_F(LocalFile, IsPrivateWhateverTheMaskOfTheProcess) {
  const mode_t prima = ::umask(0);
  WriteLocalFile(cartella / "aperta", "x");
  ::umask(0777);
  WriteLocalFile(cartella / "chiusa", "x");
  ::umask(prima);
  EXPECT_EQ(Modo(cartella / "aperta"), 0600U);
  EXPECT_EQ(Modo(cartella / "chiusa"), 0600U);
  EXPECT_EQ(test::FileText(cartella / "chiusa"), "x");
}

TEST_F(LocalFile, IsNeverWrittenThroughASymbolicLink) {
  test::Scrivi(cartella / "vittima", "mia");
  std::filesystem::create_symlink(cartella / "vittima", cartella / "T01");
  EXPECT_THAT(Rifiuto(cartella / "T01"), HasSubstr("collegamento simbolico"));
  EXPECT_EQ(test::FileText(cartella / "vittima"), "mia");
  std::filesystem::create_symlink(cartella / "non-ancora", cartella / "T02");
  EXPECT_THAT(Rifiuto(cartella / "T02"), HasSubstr("collegamento simbolico"));
  EXPECT_FALSE(std::filesystem::exists(cartella / "non-ancora"));
}

TEST_F(LocalFile, IsNeverWrittenThroughAHardLink) {
  test::Scrivi(cartella / "vittima", "mia");
  std::filesystem::create_hard_link(cartella / "vittima", cartella / "T01");
  WriteLocalFile(cartella / "T01", "nuovo");
  EXPECT_EQ(test::FileText(cartella / "vittima"), "mia");
  EXPECT_EQ(test::FileText(cartella / "T01"), "nuovo");
}

/// Writes over the file of others that stands at `file`, which somebody goes on reading.
void ReplaceFileOfOthers(const std::string& file) {
  const int ascolta = ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
  WriteLocalFile(file, "nuovo");
  EXPECT_EQ(Modo(file), 0600U);
  struct stat stato {};
  ASSERT_EQ(::lstat(file.c_str(), &stato), 0);
  EXPECT_EQ(stato.st_uid, ::geteuid());
  char letto[32]{};
  EXPECT_EQ(::read(ascolta, letto, sizeof letto), static_cast<ssize_t>(std::string("un testo più lungo").size()));
  EXPECT_THAT(std::string(letto), HasSubstr("un testo")) << "whoever had it open reads what is new";
  ::close(ascolta);
}

TEST_F(LocalFile, ReplacesAFileThatIsOpenToOthersByOneOfItsOwn) {
  test::Scrivi(cartella / "T01", "un testo più lungo");
  std::filesystem::permissions(cartella / "T01", std::filesystem::perms(0666));
  ReplaceFileOfOthers(cartella / "T01");
}

TEST_F(LocalFile, ReplacesAFileOfAnotherUserByOneOfItsOwn) {
  if (::geteuid() != 0) {
    GTEST_SKIP() << "only root can make a file another user's";
  }
  test::Scrivi(cartella / "T01", "un testo più lungo");
  std::filesystem::permissions(cartella / "T01", std::filesystem::perms(0666));
  ASSERT_EQ(::chown((cartella / "T01").c_str(), Altro, Altro), 0);
  ReplaceFileOfOthers(cartella / "T01");
}

TEST_F(LocalFile, NeitherWaitsForAPipeNorReadsOne) {
  ASSERT_EQ(::mkfifo((cartella / "T01").c_str(), 0666), 0);
  EXPECT_THAT(ErroreDi([&] { static_cast<void>(ReadLocalBeginning(cartella / "T01")); }).Description(),
              HasSubstr("Impossibile leggere"));
  WriteLocalFile(cartella / "T01", "nuovo");
  EXPECT_THAT(ReadLocalBeginning(cartella / "T01").lines, ElementsAre("nuovo"));
}

TEST_F(LocalFile, IsRefusedWhereADirectoryStands) {
  std::filesystem::create_directory(cartella / "T01");
  EXPECT_THAT(Rifiuto(cartella / "T01"), HasSubstr("una cartella"));
  EXPECT_TRUE(std::filesystem::is_directory(cartella / "T01"));
}

TEST_F(LocalFile, IsReadThroughNoLinkAndOnlyInItsBeginning) {
  test::Scrivi(cartella / "segreto", "altrui\n");
  std::filesystem::create_symlink(cartella / "segreto", cartella / "T01");
  EXPECT_THAT(ErroreDi([&] { static_cast<void>(ReadLocalBeginning(cartella / "T01")); }).Description(),
              HasSubstr("collegamento simbolico"));
  std::string enorme = "riga\r\n";
  enorme.append(50'000'000, 'x');
  test::Scrivi(cartella / "enorme", enorme);
  const auto righe = ReadLocalBeginning(cartella / "enorme").lines;
  ASSERT_THAT(righe, SizeIs(2));
  EXPECT_EQ(righe[0], "riga");
  EXPECT_LE(righe[1].size(), 65536U);
}

TEST_F(LocalFile, NameIsNotCutAtAZeroByte) {
  const std::string nome = cartella / std::string("T01\0.txt", 8);
  EXPECT_THAT(Rifiuto(nome), HasSubstr("carattere nullo"));
  EXPECT_THAT(ErroreDi([&] { static_cast<void>(ReadLocalBeginning(nome)); }).Description(),
              HasSubstr("carattere nullo"));
  EXPECT_THAT(ErroreDi([&] { DeleteLocalFile(nome); }).Description(), HasSubstr("carattere nullo"));
  EXPECT_FALSE(std::filesystem::exists(cartella / "T01"));
}

TEST_F(LocalFile, DeletingALinkLeavesWhatItPointsAt) {
  test::Scrivi(cartella / "vittima", "mia");
  std::filesystem::create_symlink(cartella / "vittima", cartella / "T01");
  DeleteLocalFile(cartella / "T01");
  EXPECT_EQ(test::FileText(cartella / "vittima"), "mia");
  EXPECT_FALSE(std::filesystem::is_symlink(cartella / "T01"));
}

TEST_F(LocalFile, DownloadReplacesALinkInsteadOfFollowingIt) {
  test::Scrivi(cartella / "remoto", "dall'host");
  test::Scrivi(cartella / "vittima", "mia");
  std::filesystem::create_symlink(cartella / "vittima", cartella / "VBCREDITI");
  const mode_t prima = ::umask(0);
  nexaro::CopyFile(cartella / "remoto", cartella / "VBCREDITI", 0600, "Prova");
  ::umask(prima);
  EXPECT_EQ(test::FileText(cartella / "vittima"), "mia");
  EXPECT_EQ(test::FileText(cartella / "VBCREDITI"), "dall'host");
  EXPECT_EQ(Modo(cartella / "VBCREDITI"), 0600U);
}

class HostileEnvironment : public testing::Test {
 protected:
  void SetUp() override {
    variabili.Imposta("NEXARO_POSTAZIONE", "T01");
    variabili.Imposta("NEXARO_CARTELLA_LOCALE", cartella.Path().string());
  }
  std::string Rifiuto(const std::string& nome, const std::string& valore) {
    variabili.Imposta(nome, valore);
    return ErroreDi([] { static_cast<void>(nexaro::ReadEnvironment()); }).Description();
  }
  /// A directory with these permissions below the test's own.
  std::string Nuova(const std::string& nome, unsigned modo) {
    std::filesystem::create_directory(cartella / nome);
    std::filesystem::permissions(cartella / nome, std::filesystem::perms(modo));
    return cartella / nome;
  }
  test::TemporaryFolder cartella;
  test::VariabiliProvvisorie variabili;
};

TEST_F(HostileEnvironment, WorkstationCannotLeaveItsDirectoryOrBreakALine) {
  for (const auto* postazione :
       {"../T01", "/etc/T01", "T/01", "T\\01", "T\n01", "T\r01", "T\t01", "T\x01", "T\x7F", " "}) {
    EXPECT_THAT(Rifiuto("NEXARO_POSTAZIONE", postazione), HasSubstr("NEXARO_POSTAZIONE")) << postazione;
  }
  EXPECT_THAT(Rifiuto("NEXARO_POSTAZIONE", std::string(101, 'T')), HasSubstr("NEXARO_POSTAZIONE"));
}

TEST_F(HostileEnvironment, LocalDirectoryIsTheUsersOwnOrNone) {
  const auto nome = "NEXARO_CARTELLA_LOCALE";
  EXPECT_THAT(Rifiuto(nome, "relativa"), HasSubstr("percorso assoluto"));
  EXPECT_THAT(Rifiuto(nome, "./" + cartella.Path().string()), HasSubstr("percorso assoluto"));
  std::filesystem::create_directory_symlink(Nuova("vera", 0700), cartella / "link");
  EXPECT_THAT(Rifiuto(nome, cartella / "link"), HasSubstr("collegamento simbolico"));
  EXPECT_THAT(Rifiuto(nome, cartella / "link/"), HasSubstr("collegamento simbolico"));
  EXPECT_THAT(Rifiuto(nome, Nuova("scrivibile", 0777)), HasSubstr("accessibile ad altri"));
  EXPECT_THAT(Rifiuto(nome, Nuova("appiccicosa", 01777)), HasSubstr("accessibile ad altri"));
  EXPECT_THAT(Rifiuto(nome, Nuova("gruppo", 0770)), HasSubstr("accessibile ad altri"));
  EXPECT_THAT(Rifiuto(nome, Nuova("leggibile", 0755)), HasSubstr("accessibile ad altri"));
  test::Scrivi(cartella / "file", "");
  EXPECT_THAT(Rifiuto(nome, cartella / "file"), HasSubstr("non è una cartella"));
  EXPECT_THAT(Rifiuto(nome, cartella / "manca"), HasSubstr("inesistente"));
  variabili.Imposta(nome, cartella / "vera//");
  EXPECT_EQ(nexaro::ReadEnvironment().CartellaLocale, cartella / "vera");
}

TEST_F(HostileEnvironment, LocalDirectoryOfAnotherUserIsRefused) {
  const std::string altrui = Nuova("altrui", 0700);
  if (::geteuid() == 0) {
    ASSERT_EQ(::chown(altrui.c_str(), Altro, Altro), 0);
    EXPECT_THAT(Rifiuto("NEXARO_CARTELLA_LOCALE", altrui), HasSubstr("appartiene a un altro utente"));
  } else {
    EXPECT_THAT(Rifiuto("NEXARO_CARTELLA_LOCALE", "/etc"), HasSubstr("appartiene a un altro utente"));
  }
}

TEST_F(HostileEnvironment, TemporaryDirectoryOfAnotherIsNotUsedForTheDefault) {
  variabili.Togli("NEXARO_CARTELLA_LOCALE");
  variabili.Togli("XDG_RUNTIME_DIR");
  variabili.Imposta("TMPDIR", cartella.Path().string());
  const std::string predefinita = cartella / ("lumoscad-" + std::to_string(::getuid()));
  std::filesystem::create_directory_symlink("/tmp", predefinita);
  EXPECT_THAT(ErroreDi([] { static_cast<void>(nexaro::ReadEnvironment()); }).Description(),
              HasSubstr("collegamento simbolico"));
}

} // namespace
} // namespace lumoscad
