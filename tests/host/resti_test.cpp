// What a program that was killed in the middle of a transfer has left.

#include "Banco.hpp"
#include "platform/nexaro/File.hpp"
#include "platform/nexaro/Nexaro.hpp"
#include "support/Files.hpp"
#include "support/NoLocks.hpp"
#include "support/OtherProcess.hpp"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/file.h>
#include <sys/stat.h>

namespace lumoscad {
namespace {

using test::OtherProcess;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class Leftovers : public testing::Test {
 protected:
  void SetUp() override {
    for (const char* nome : {"host/tmp", "locale"}) {
      test::fs::create_directories(base / nome);
    }
    test::Scrivi(base / "host/tmp/VBCREDITI", "Utente : T01\r\n");
    variabili.Imposta("NEXARO_TRASPORTO", "cartella");
    variabili.Imposta("NEXARO_RADICE", base / "host");
    collegamento = nexaro::CreateHostLink();
  }

  /// A download like any other; what the local directory holds after it, the download's own file apart.
  std::vector<std::string> DopoUnaRicezione() {
    std::string testo;
    collegamento->RiceviFile("h", "/tmp/VBCREDITI", base / "locale/VBCREDITI", testo);
    return Nomi(base / "locale");
  }
  static std::vector<std::string> Nomi(const std::string& cartella) {
    std::vector<std::string> nomi;
    for (const auto& voce : test::fs::directory_iterator(cartella)) {
      if (voce.path().filename() != "VBCREDITI") {
        nomi.push_back(voce.path().filename().string());
      }
    }
    return nomi;
  }
  /// Another program in the middle of a download.
  [[nodiscard]] std::function<void()> Riceve() const {
    return [this] {
      const std::string prova = "Prova";
      auto* file = new nexaro::TemporaryFile(base / "locale/VBDEBITI", 0600, prova);
      file->Write("mezzo", prova);
    };
  }
  void Lascia(const std::string& nome) const { test::Scrivi(base / ("locale/" + nome), "mezzo"); }
  /// Makes a file look as if it had been written an hour before this test began.
  void Invecchia(const std::string& nome) const {
    const auto prima = ::time(nullptr) - 3600;
    const std::array<timespec, 2> tempi{timespec{prima, 0}, timespec{prima, 0}};
    ASSERT_EQ(::utimensat(AT_FDCWD, (base / ("locale/" + nome)).c_str(), tempi.data(), 0), 0);
  }
  /// The number of a process that is no more.
  static std::string Finito() {
    OtherProcess altro([] {});
    auto numero = std::to_string(altro.Number());
    altro.End();
    return numero;
  }

  test::TemporaryFolder base;
  test::VariabiliProvvisorie variabili;
  std::unique_ptr<nexaro::HostLink> collegamento;
};

TEST_F(Leftovers, OfAKilledDownloadGoWithTheNextOne) {
  OtherProcess altro(Riceve());
  ASSERT_TRUE(altro.Succeeded());
  altro.Kill();
  ASSERT_THAT(Nomi(base / "locale"), SizeIs(1)) << "nothing was left";
  EXPECT_THAT(DopoUnaRicezione(), IsEmpty());
}

TEST_F(Leftovers, OfAKilledUploadToADirectoryHostGoWithTheNextOne) {
  OtherProcess altro([this] { static_cast<void>(new nexaro::TemporaryFile(base / "host/tmp/T01", 0666, "Prova")); });
  ASSERT_TRUE(altro.Succeeded());
  altro.Kill();
  test::Scrivi(base / "locale/T01", "x");
  ASSERT_THAT(Nomi(base / "host/tmp"), SizeIs(1)) << "nothing was left";
  collegamento->InviaFile("h", base / "locale/T01", "/tmp/T01");
  EXPECT_THAT(Nomi(base / "host/tmp"), ElementsAre("T01"));
}

TEST_F(Leftovers, ADownloadUnderWayIsLeftAlone) {
  const OtherProcess altro(Riceve());
  ASSERT_TRUE(altro.Succeeded());
  EXPECT_THAT(DopoUnaRicezione(), SizeIs(1));
  const nexaro::TemporaryFile nostro(base / "locale/VBDEBITI", 0600, "Prova");
  EXPECT_THAT(DopoUnaRicezione(), SizeIs(2));
}

TEST_F(Leftovers, OfALivingProcessAreLeftAloneWithoutALockToo) {
  const OtherProcess altro([] {});
  const auto suo = ".lumoscad-" + std::to_string(altro.Number()) + "-12345";
  Lascia(suo);
  EXPECT_THAT(DopoUnaRicezione(), ElementsAre(suo)) << "an older release locks nothing";
}

TEST_F(Leftovers, OfALockedFileNothingIsTakenWhoeverItsNameTells) {
  const auto nome = ".lumoscad-" + Finito() + "-12345";
  Lascia(nome);
  Invecchia(nome);
  const int file = ::open((base / ("locale/" + nome)).c_str(), O_RDONLY | O_CLOEXEC);
  ASSERT_EQ(::flock(file, LOCK_EX), 0);
  EXPECT_THAT(DopoUnaRicezione(), ElementsAre(nome)) << "its process may be in another container";
  ::close(file);
  EXPECT_THAT(DopoUnaRicezione(), IsEmpty());
}

TEST_F(Leftovers, StayWhereTheFileSystemHasNoLocksAndTransfersGoOn) {
  const test::NoLocks nessuno;
  const auto suo = ".lumoscad-" + Finito() + "-12345";
  Lascia(suo);
  Invecchia(suo);
  EXPECT_THAT(DopoUnaRicezione(), ElementsAre(suo)) << "its process may be another machine's";
  test::Scrivi(base / "locale/T01", "x");
  collegamento->InviaFile("h", base / "locale/T01", "/tmp/T01");
  EXPECT_THAT(Nomi(base / "host/tmp"), ElementsAre("T01"));
}

TEST_F(Leftovers, AProcessThatBeganAfterTheFileWasWrittenIsNotItsOwn) {
  const OtherProcess altro([] {});
  for (const auto& numero : {std::to_string(altro.Number()), std::to_string(::getpid())}) {
    const auto nome = ".lumoscad-" + numero + "-12345";
    Lascia(nome);
    EXPECT_THAT(DopoUnaRicezione(), ElementsAre(nome));
    Invecchia(nome);
    EXPECT_THAT(DopoUnaRicezione(), IsEmpty()) << "the number has come round";
  }
}

TEST_F(Leftovers, WhatIsNotOursIsLeftAlone) {
  const auto finito = Finito();
  std::vector<std::string> altrui{".lumoscad-",
                                  ".lumoscad-" + finito,
                                  ".lumoscad-" + finito + "-",
                                  ".lumoscad-x-1",
                                  ".lumoscad-" + finito + "-1x",
                                  "lumoscad-" + finito + "-1",
                                  ".lumoscad-0-1",
                                  ".lumoscad--1-1",
                                  ".lumoscad-" + finito + "-1-1",
                                  ".lumoscad-99999999999999999999-1"};
  for (const auto& nome : altrui) {
    Lascia(nome);
    Invecchia(nome);
  }
  test::fs::create_directory(base / ("locale/.lumoscad-" + finito + "-7"));
  test::Scrivi(base / "vittima", "");
  test::fs::create_symlink(base / "vittima", base / ("locale/.lumoscad-" + finito + "-8"));
  altrui.insert(altrui.end(), {".lumoscad-" + finito + "-7", ".lumoscad-" + finito + "-8"});
  EXPECT_THAT(DopoUnaRicezione(), testing::UnorderedElementsAreArray(altrui));
  EXPECT_TRUE(test::fs::exists(base / "vittima"));
}

TEST_F(Leftovers, WhatIsAnotherUsersIsLeftAlone) {
  if (::geteuid() != 0) {
    GTEST_SKIP() << "only root can make a file another user's";
  }
  const auto nome = ".lumoscad-" + Finito() + "-9";
  Lascia(nome);
  Invecchia(nome);
  ASSERT_EQ(::chown((base / ("locale/" + nome)).c_str(), 65534, 65534), 0);
  EXPECT_THAT(DopoUnaRicezione(), ElementsAre(nome));
}

} // namespace
} // namespace lumoscad
