// What the component takes of a host that sends more than it should, or something else than it was asked for.

#include "BancoSsh.hpp"
#include "Chiamante.hpp"
#include "platform/nexaro/LinkErrors.hpp"
#include "support/Paths.hpp"

#include <chrono>
#include <csignal>
#include <fstream>
#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

namespace lumoscad {
namespace {

namespace fs = std::filesystem;
using test::ErroreDi;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr std::uintmax_t Massimo = std::uintmax_t{16} * 1024 * 1024;

void Attendi(const std::string& file) {
  for (int giro = 0; giro < 1000 && !fs::exists(file); ++giro) {
    ::usleep(10000);
  }
  ASSERT_TRUE(fs::exists(file)) << file;
}

class SshHostile : public test::BancoSsh {
 protected:
  void TearDown() override { server->Change({}); }

  /// The host's file service is from now on one that does its harm in this way.
  void Servizio(const std::string& modo) {
    server->Change({"ed25519", {}, test::ProgramPath("sftp_ostile").string() + " " + modo, {}});
  }
  /// The error of a file that is received; nothing may be left of it.
  RuntimeError Ricezione(const std::string& remoto) {
    auto errore = ErroreDi([&] { collegamento->RiceviFile(Host, remoto, base / "locale/VBX", testo); });
    EXPECT_THAT(NomiIn("locale"), IsEmpty());
    return errore;
  }
};

TEST_F(SshHostile, LargestFileIsReceivedAndALargerOneRefused) {
  test::Scrivi(base / "host/VBX", "x");
  fs::resize_file(base / "host/VBX", Massimo);
  collegamento->RiceviFile(Host, base / "host/VBX", base / "locale/VBX", testo);
  EXPECT_EQ(fs::file_size(base / "locale/VBX"), Massimo);
  fs::remove(base / "locale/VBX");
  fs::resize_file(base / "host/VBX", Massimo + 1);
  const auto errore = Ricezione(base / "host/VBX");
  EXPECT_EQ(errore.Number(), nexaro::LinkFailure);
  EXPECT_EQ(errore.Description(), "Ricezione del file «" + base / "host/VBX" + "» sull'host 127.0.0.1 in «" +
                                      base / "locale/VBX" + "»: il file supera i 16 MiB ammessi.");
}

TEST_F(SshHostile, FileWhoseAnnouncedSizeIsTooLargeIsNotEvenOpened) {
  Servizio("annuncio");
  EXPECT_THAT(Ricezione("/tmp/VBX").Description(), HasSubstr("il file supera i 16 MiB ammessi"));
}

TEST_F(SshHostile, FileThatIsLongerThanItWasSaidToBeIsGivenUpAndTheConnectionGoesOn) {
  Servizio("fiume");
  EXPECT_THAT(Ricezione("/tmp/VBX").Description(), HasSubstr("il file supera i 16 MiB ammessi"));
  const auto prima = server->Processes();
  collegamento->CancellaFile(Host, "/tmp/VBX");
  EXPECT_EQ(server->Processes(), prima);
}

TEST_F(SshHostile, FileThatComesPieceByPieceIsGivenUpAtTheEndOfOneWait) {
  Servizio("goccia");
  impostazioni.timeout = std::chrono::seconds(2);
  Collega();
  const auto inizio = std::chrono::steady_clock::now();
  EXPECT_THAT(Ricezione("/tmp/VBX").Description(),
              HasSubstr("»: il trasferimento non è finito entro 2 secondi; il file non è stato ricevuto. "));
  EXPECT_LT(std::chrono::steady_clock::now() - inizio, std::chrono::seconds(12));
}

TEST_F(SshHostile, BeginningOfAFileIsReceivedWhateverItsSize) {
  static constexpr std::size_t Inizio = 65537;
  const auto ricevi = [this](const std::string& remoto) {
    collegamento->ReceiveBeginning(Host, remoto, base / "locale/VBX", Inizio, testo);
    return test::FileText(base / "locale/VBX");
  };
  const std::string lungo(200000, 'y');
  for (const std::size_t dimensione : {std::size_t{0}, std::size_t{10}, Inizio - 1, Inizio, Inizio + 1, lungo.size()}) {
    test::Scrivi(base / "host/VBX", lungo.substr(0, dimensione));
    EXPECT_EQ(ricevi(base / "host/VBX"), lungo.substr(0, std::min(dimensione, Inizio)));
  }
  for (const auto* modo : {"fiume", "annuncio"}) {
    Servizio(modo);
    Collega();
    EXPECT_EQ(ricevi("/tmp/VBX"), std::string(Inizio, 'x')) << modo;
    const auto prima = server->Processes();
    collegamento->CancellaFile(Host, "/tmp/VBX");
    EXPECT_EQ(server->Processes(), prima) << "over the same connection";
  }
}

TEST_F(SshHostile, AnswerOfImpossibleLengthIsNotWaitedFor) {
  Servizio("pacchetto");
  EXPECT_THAT(Ricezione("/tmp/VBX").Description(),
              HasSubstr("il servizio SFTP dell'host ha dato una risposta inattesa"));
}

TEST_F(SshHostile, HandleOfImpossibleLengthIsNotSentBack) {
  Servizio("maniglia");
  EXPECT_THAT(Ricezione("/tmp/VBX").Description(),
              HasSubstr("il servizio SFTP dell'host ha dato una risposta inattesa"));
}

TEST_F(SshHostile, ServiceThatWritesUnaskedWithoutEndHoldsNobodyUp) {
  Servizio("valanga '" + base.Path().string() + "'");
  collegamento->CancellaFile(Host, "/tmp/VBX");
  test::Scrivi(base / "via", "");
  ASSERT_NO_FATAL_FAILURE(Attendi(base / "piena"));
  // What was said unasked is no answer: the connection is given up for a new one.
  collegamento->CancellaFile(Host, "/tmp/VBX");
}

/// A file service that does not do what the protocol says, and writes down what was asked of it.
class SshUnruly : public SshHostile {
 protected:
  void Serve(const std::string& mode) {
    Servizio(mode + " '" + base.Path().string() + "'");
    Collega();
  }
  [[nodiscard]] std::vector<std::string> Asked() const {
    std::vector<std::string> words;
    std::ifstream log(base / "log");
    for (std::string word; std::getline(log, word);) {
      words.push_back(word);
    }
    return words;
  }
  [[nodiscard]] std::string ReasonForNotReceiving() { return Ricezione("/tmp/VBX").Description(); }
  [[nodiscard]] std::string ReasonForNotSending() {
    return ErroreDi([this] { Invia("T01", std::string(100000, 'x')); }).Description();
  }
  void ExpectTheConnectionGoesOn() {
    const auto before = server->Processes();
    collegamento->CancellaFile(Host, "/tmp/VBX");
    EXPECT_EQ(server->Processes(), before);
  }
};

TEST_F(SshUnruly, ShortBlockInTheMiddleIsNotTakenForTheEndOfTheFile) {
  std::string contents;
  for (int line = 0; contents.size() < 300000; ++line) {
    contents += std::to_string(line) + "\n";
  }
  test::Scrivi(base / "served", contents);
  Serve("short-block");
  collegamento->RiceviFile(Host, "/tmp/VBX", base / "locale/VBX", testo);
  EXPECT_TRUE(test::FileText(base / "locale/VBX") == contents);
}

TEST_F(SshUnruly, BlockThatIsEmptyOrLongerThanAskedForIsRefused) {
  for (const auto* mode : {"empty-block", "oversized-block"}) {
    Serve(mode);
    EXPECT_THAT(ReasonForNotReceiving(), HasSubstr("il servizio SFTP dell'host ha dato un blocco non valido")) << mode;
  }
}

TEST_F(SshUnruly, AnswerToARequestThatNobodyMadeEndsTheConnection) {
  Serve("stranger");
  EXPECT_THAT(ReasonForNotReceiving(), HasSubstr("il servizio SFTP dell'host ha dato una risposta inattesa"));
}

TEST_F(SshUnruly, ServiceThatSpeaksAnOlderProtocolIsNotUsed) {
  Serve("old-version");
  EXPECT_THAT(ReasonForNotReceiving(), HasSubstr("l'host non offre il servizio SFTP"));
  EXPECT_THAT(Asked(), IsEmpty());
}

TEST_F(SshUnruly, ReadThatIsRefusedMidwayIsSaidAndTheFileClosedOnceNothingIsUnderWay) {
  Serve("refused-read");
  EXPECT_THAT(ReasonForNotReceiving(), HasSubstr("l'host non ha potuto eseguire l'operazione (disco guasto)"));
  EXPECT_THAT(Asked(), ElementsAre("open", "close"));
  ExpectTheConnectionGoesOn();
}

TEST_F(SshUnruly, CloseThatIsRefusedDoesNotHideWhyTheFileWasGivenUp) {
  Serve("refused-close");
  EXPECT_THAT(ReasonForNotReceiving(), HasSubstr("(disco guasto)"));
  EXPECT_THAT(Asked(), ElementsAre("open", "close"));
  ExpectTheConnectionGoesOn();
}

TEST_F(SshUnruly, FileThatTheHostHoldsInAnotherSizeIsNotTakenForSentAndRemoved) {
  Serve("lost-byte");
  EXPECT_THAT(ReasonForNotSending(), HasSubstr("l'host non ha potuto scrivere il file"));
  EXPECT_THAT(Asked(), testing::Contains("remove"));
}

TEST_F(SshUnruly, FileThatTheHostDoesNotBringToItsDiskIsNotTakenForSentAndRemoved) {
  Serve("refused-flush");
  EXPECT_THAT(ReasonForNotSending(), HasSubstr("l'host non ha potuto scrivere il file"));
  EXPECT_THAT(Asked(), testing::Contains("remove"));
}

TEST_F(SshUnruly, BlockThatCameWhileTheCallerWasStoppedIsTaken) {
  impostazioni.timeout = std::chrono::seconds(2);
  Serve("nap");
  const test::Chiamante caller([this] {
    collegamento->ReceiveBeginning(Host, "/tmp/VBX", base / "locale/VBX", 10, testo);
    return test::FileText(base / "locale/VBX");
  });
  ASSERT_NO_FATAL_FAILURE(Attendi(base / "asked"));
  caller.Ferma(std::chrono::seconds(3));
  EXPECT_EQ(caller.Esito(std::chrono::seconds(20)), "xxxxxxxxxx");
}

/// A server in the place of the usual one that does its harm to whoever has logged in.
class SshHostileServer : public test::BancoSsh {
 protected:
  void Avvia(const char* danno) {
    const auto chiave = server->Directory() / "host";
    const auto cartella = base.Path().string();
    const auto programma = test::ProgramPath("ssh_ostile").string();
    processo_ = ::fork();
    if (processo_ == 0) {
      ::execl(programma.c_str(), programma.c_str(), chiave.c_str(), cartella.c_str(), danno, nullptr);
      ::_exit(127);
    }
    ASSERT_GT(processo_, 0);
    ASSERT_NO_FATAL_FAILURE(Attendi(base / "porta"));
    impostazioni.port = static_cast<unsigned>(std::stoi(test::FileText(base / "porta")));
    server->MakeKnown(static_cast<int>(impostazioni.port));
    Collega();
  }
  void TearDown() override {
    if (processo_ > 0) {
      ::kill(processo_, SIGKILL);
      ::waitpid(processo_, nullptr, 0);
    }
  }

 private:
  pid_t processo_ = -1;
};

TEST_F(SshHostileServer, FileServiceThatEndsAsItBeginsIsAMissingOneAndNoFaultOfTheNetwork) {
  ASSERT_NO_FATAL_FAILURE(Avvia("congeda"));
  EXPECT_THAT(ErroreDi([this] { collegamento->CancellaFile(Host, "/tmp/VBX"); }).Description(),
              HasSubstr("l'host non offre il servizio SFTP"));
}

TEST_F(SshHostileServer, HostThatTakesNoKeyButLetsEverybodyInIsEntered) {
  ASSERT_NO_FATAL_FAILURE(Avvia("open-door"));
  EXPECT_THAT(ErroreDi([this] { collegamento->CancellaFile(Host, "/tmp/VBX"); }).Description(),
              HasSubstr("l'host non offre il servizio SFTP"))
      << "its file service is none, and to ask for it one has to be logged in";
}

TEST_F(SshHostileServer, FloodOfMessagesThatMeanNothingIsNotTakenInToItsEnd) {
  ASSERT_NO_FATAL_FAILURE(Avvia("piena"));
  const auto cancella = [this] { collegamento->CancellaFile(Host, "/tmp/VBX"); };
  EXPECT_THAT(ErroreDi(cancella).Description(), HasSubstr("l'host non offre il servizio SFTP"));
  test::Scrivi(base / "via", "");
  ASSERT_NO_FATAL_FAILURE(Attendi(base / "piena"));
  // The connection is given up for a new one at once, without waiting for an answer on it.
  const auto inizio = std::chrono::steady_clock::now();
  EXPECT_THAT(ErroreDi(cancella).Description(), HasSubstr("connessione rifiutata"));
  EXPECT_LT(std::chrono::steady_clock::now() - inizio, impostazioni.timeout / 2);
}

} // namespace
} // namespace lumoscad
