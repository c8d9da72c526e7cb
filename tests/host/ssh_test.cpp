// The five operations against a real server.

#include "BancoSsh.hpp"
#include "platform/nexaro/LinkErrors.hpp"

#include <csignal>
#include <cstdlib>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace lumoscad {
namespace {

namespace fs = std::filesystem;
using test::ErroreDi;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class Ssh : public test::BancoSsh {};

TEST_F(Ssh, SendsRenamesAndDeletesAFile) {
  const std::string contenuto("A,1\r\nà\0,2\r\n", 12);
  Invia("T01", contenuto);
  EXPECT_EQ(test::FileText(base / "host/T01"), contenuto);
  testo = "prima";
  collegamento->RinominaFile(Host, base / "host/T01", base / "host/T01.dos", testo);
  EXPECT_EQ(testo, "");
  EXPECT_THAT(NomiIn("host"), ElementsAre("T01.dos"));
  EXPECT_EQ(test::FileText(base / "host/T01.dos"), contenuto);
  collegamento->CancellaFile(Host, base / "host/T01.dos");
  EXPECT_THAT(NomiIn("host"), IsEmpty());
}

TEST_F(Ssh, FileSentAgainReplacesTheFirst) {
  Invia("T01", "molto più lungo di prima");
  Invia("T01", "nuovo");
  EXPECT_EQ(test::FileText(base / "host/T01"), "nuovo");
}

TEST_F(Ssh, EmptyFileIsSentAndReceived) {
  Invia("vuoto", "");
  EXPECT_EQ(std::filesystem::file_size(base / "host/vuoto"), 0U);
  collegamento->RiceviFile(Host, base / "host/vuoto", base / "locale/ritorno", testo);
  EXPECT_EQ(std::filesystem::file_size(base / "locale/ritorno"), 0U);
}

TEST_F(Ssh, LargeFileArrivesWholeBothWays) {
  // Neither a multiple of the blocks nor of what is under way at once.
  std::string contenuto(std::size_t{9} * 1024 * 1024 + 12345, '\0');
  unsigned seme = 1;
  for (auto& byte : contenuto) {
    seme = seme * 1103515245U + 12345U;
    byte = static_cast<char>(seme >> 16U);
  }
  Invia("grande", contenuto);
  EXPECT_TRUE(test::FileText(base / "host/grande") == contenuto);
  collegamento->RiceviFile(Host, base / "host/grande", base / "locale/ritorno", testo);
  EXPECT_TRUE(test::FileText(base / "locale/ritorno") == contenuto);
}

TEST_F(Ssh, SentFileIsSharedByTheTerminals) {
  Invia("T01", "x");
  struct stat stato {};
  ASSERT_EQ(::lstat((base / "host/T01").c_str(), &stato), 0);
  EXPECT_EQ(stato.st_mode & 0777U, 0644U) << "0666 less the server's umask";
}

TEST_F(Ssh, SendingReplacesASymbolicLinkInsteadOfFollowingIt) {
  test::Scrivi(base / "vittima", "intatta");
  fs::create_symlink(base / "vittima", base / "host/T01");
  Invia("T01", "nuovo");
  EXPECT_EQ(test::FileText(base / "vittima"), "intatta");
  EXPECT_FALSE(fs::is_symlink(base / "host/T01"));
  EXPECT_EQ(test::FileText(base / "host/T01"), "nuovo");
}

TEST_F(Ssh, SendingFailsWhereItCannotWriteAndSaysWhy) {
  fs::create_directory(base / "host/T01");
  const auto cartella = ErroreDi([this] { Invia("T01", "x"); });
  EXPECT_THAT(cartella.Description(), HasSubstr("è una cartella"));
  test::Scrivi(base / "locale/T02", "x");
  const auto manca = ErroreDi([this] { collegamento->InviaFile(Host, base / "locale/T02", "/manca/T02"); });
  EXPECT_EQ(manca.Number(), errors::FileNotFound);
  EXPECT_THAT(manca.Description(), HasSubstr("«/manca/T02» sull'host 127.0.0.1: file inesistente"));
  // Not even the superuser makes a file there.
  const auto negato = ErroreDi([this] { collegamento->InviaFile(Host, base / "locale/T02", "/sys/T02"); });
  EXPECT_EQ(negato.Number(), nexaro::PermissionError);
  EXPECT_THAT(negato.Description(), HasSubstr("permesso negato. Chiedere all'amministratore dell'host i permessi per "
                                              "l'utente «" +
                                              server->User() + "»."));
}

TEST_F(Ssh, LocalFileThatIsMissingIsNamedBeforeAnythingIsSent) {
  const auto errore = ErroreDi([this] { collegamento->InviaFile(Host, base / "locale/manca", base / "host/T01"); });
  EXPECT_EQ(errore.Number(), errors::FileNotFound);
  EXPECT_THAT(NomiIn("host"), IsEmpty());
}

TEST_F(Ssh, ReceivedFileIsForItsOwnerOnlyAndReplacesALink) {
  test::Scrivi(base / "host/VBCREDITI", "Utente : T02\n");
  test::Scrivi(base / "vittima", "intatta");
  fs::create_symlink(base / "vittima", base / "locale/VBCREDITI");
  testo = "prima";
  collegamento->RiceviFile(Host, base / "host/VBCREDITI", base / "locale/VBCREDITI", testo);
  EXPECT_EQ(testo, "");
  EXPECT_EQ(test::FileText(base / "vittima"), "intatta");
  EXPECT_EQ(test::FileText(base / "locale/VBCREDITI"), "Utente : T02\n");
  struct stat stato {};
  ASSERT_EQ(::lstat((base / "locale/VBCREDITI").c_str(), &stato), 0);
  EXPECT_EQ(stato.st_mode & 0777U, 0600U);
}

TEST_F(Ssh, ReceivingAMissingFileFailsAndLeavesNothing) {
  const auto errore =
      ErroreDi([this] { collegamento->RiceviFile(Host, base / "host/VBX", base / "locale/VBX", testo); });
  EXPECT_EQ(errore.Number(), errors::FileNotFound);
  EXPECT_THAT(errore.Description(), HasSubstr("file inesistente"));
  EXPECT_THAT(NomiIn("locale"), IsEmpty());
}

TEST_F(Ssh, WhatIsNoOrdinaryFileIsRefusedWithoutWaiting) {
  ASSERT_EQ(::mkfifo((base / "host/VBX").c_str(), 0600), 0);
  const auto motivo = [this](const std::string& nome) {
    return ErroreDi([&] { collegamento->RiceviFile(Host, base / nome, base / "locale/VBX", testo); }).Description();
  };
  EXPECT_THAT(motivo("host/VBX"), HasSubstr("non è un file ordinario"));
  EXPECT_THAT(motivo("host"), HasSubstr("è una cartella"));
  EXPECT_THAT(NomiIn("locale"), IsEmpty());
}

TEST_F(Ssh, ReceivingWhereTheLocalFileCannotStandKeepsTheConnectionInOrder) {
  test::Scrivi(base / "host/VBX", std::string(300000, 'x'));
  const auto errore =
      ErroreDi([this] { collegamento->RiceviFile(Host, base / "host/VBX", base / "manca/VBX", testo); });
  EXPECT_EQ(errore.Number(), errors::FileNotFound);
  collegamento->RiceviFile(Host, base / "host/VBX", base / "locale/VBX", testo);
  EXPECT_EQ(fs::file_size(base / "locale/VBX"), 300000U);
}

TEST_F(Ssh, RenamingReplacesTheTargetAsTheDirectoryTransportDoes) {
  test::Scrivi(base / "host/T01", "nuovo");
  test::Scrivi(base / "host/T01.dos", "vecchio");
  collegamento->RinominaFile(Host, base / "host/T01", base / "host/T01.dos", testo);
  EXPECT_EQ(test::FileText(base / "host/T01.dos"), "nuovo");
  EXPECT_THAT(NomiIn("host"), ElementsAre("T01.dos"));
}

TEST_F(Ssh, RenamingAMissingFileFails) {
  const auto errore = ErroreDi([this] { collegamento->RinominaFile(Host, base / "host/a", base / "host/b", testo); });
  EXPECT_EQ(errore.Number(), errors::FileNotFound);
  EXPECT_THAT(errore.Description(), HasSubstr("Cambio di nome"));
}

TEST_F(Ssh, DeletingAMissingFileSucceedsAndOtherFailuresDoNot) {
  EXPECT_NO_THROW(collegamento->CancellaFile(Host, base / "host/manca"));
  fs::create_directory(base / "host/cartella");
  EXPECT_THAT(ErroreDi([this] { collegamento->CancellaFile(Host, base / "host/cartella"); }).Description(),
              HasSubstr("Cancellazione del file"));
  EXPECT_THAT(NomiIn("host"), ElementsAre("cartella"));
}

TEST_F(Ssh, PathsAreAbsoluteAndDoNotClimb) {
  for (const auto* percorso : {"segreto", "", "/tmp/../etc/passwd", "/.."}) {
    EXPECT_THAT(ErroreDi([&] { collegamento->CancellaFile(Host, percorso); }).Description(),
                HasSubstr("Percorso dell'host non ammesso"))
        << percorso;
  }
}

/// A server that lacks what an OpenSSH server usually offers.
class SshPlainService : public Ssh {
 protected:
  void Offri(const std::string& sftp) const { server->Change({"ed25519", {}, sftp, {}}); }
  void TearDown() override { server->Change({}); }
};

TEST_F(SshPlainService, NameThatIsTakenIsRefusedWhereTheHostCannotReplaceInOneStep) {
  Offri("internal-sftp -P posix-rename");
  test::Scrivi(base / "host/T01", "nuovo");
  test::Scrivi(base / "host/T01.dos", "vecchio");
  const auto errore =
      ErroreDi([this] { collegamento->RinominaFile(Host, base / "host/T01", base / "host/T01.dos", testo); });
  EXPECT_THAT(errore.Description(), HasSubstr("il nuovo nome è già preso e l'host non lo sostituisce"));
  EXPECT_EQ(test::FileText(base / "host/T01.dos"), "vecchio");
  EXPECT_EQ(test::FileText(base / "host/T01"), "nuovo");
  collegamento->CancellaFile(Host, base / "host/T01.dos");
  collegamento->RinominaFile(Host, base / "host/T01", base / "host/T01.dos", testo);
  EXPECT_EQ(test::FileText(base / "host/T01.dos"), "nuovo");
}

TEST_F(SshPlainService, FileArrivesWhereTheHostOffersNoFlush) {
  Offri("internal-sftp -P fsync,statvfs");
  Invia("T01", "contenuto");
  EXPECT_EQ(test::FileText(base / "host/T01"), "contenuto");
}

TEST_F(SshPlainService, RefusedWriteLeavesNoHalfFile) {
  Offri("internal-sftp -P write");
  const auto errore = ErroreDi([this] { Invia("T01", std::string(200000, 'x')); });
  EXPECT_EQ(errore.Number(), nexaro::PermissionError);
  EXPECT_THAT(NomiIn("host"), IsEmpty());
}

TEST_F(SshPlainService, FullDiskIsSaidAndLeavesNoHalfFile) {
  // The file service sees a tiny disk of its own, where the system lets it have one.
  const std::string disco = "exec unshare -rm sh -c 'mount -t tmpfs -o size=64k tmpfs \"$0\" && exec ";
  if (std::system((disco + "true' /tmp 2>/dev/null").c_str()) != 0) {
    GTEST_SKIP() << "no mount of one's own here";
  }
  Offri(test::ScriviProgramma(base / "piccolo", disco + "/usr/lib/openssh/sftp-server' '" + base / "host" + "'"));
  EXPECT_THAT(ErroreDi([this] { Invia("T01", std::string(300000, 'x')); }).Description(),
              HasSubstr("spazio esaurito sull'host"));
  // There would be no room for this beside a half file.
  Invia("T02", std::string(50000, 'x'));
  collegamento->RiceviFile(Host, base / "host/T02", base / "locale/ritorno", testo);
  EXPECT_EQ(fs::file_size(base / "locale/ritorno"), 50000U);
}

TEST_F(SshPlainService, MissingFileServiceIsSaid) {
  Offri("/bin/false");
  EXPECT_THAT(ErroreDi([this] { Invia("T01", "x"); }).Description(), HasSubstr("l'host non offre il servizio SFTP"));
}

class SshEncoding : public Ssh {
 protected:
  void Usa(const std::string& nome) {
    impostazioni.encoding = nexaro::Encoding(nome);
    Collega();
  }
};

TEST_F(SshEncoding, NamesContentsAndParametersTravelInTheHostsEncoding) {
  Usa("ISO-8859-15");
  Programma("printf '%s' \"$1\" >'" + base / "argomento" + "'; echo '<A/>'");
  static_cast<void>(Risposta({"5 € è"}));
  EXPECT_EQ(test::FileText(base / "argomento"), "5 \xA4 \xE8");
  test::Scrivi(base / "locale/x", "perché, 5 €\r\n");
  collegamento->InviaFile(Host, base / "locale/x", base / "host/perché");
  EXPECT_EQ(test::FileText(base / "host/perch\xE9"), "perch\xE9, 5 \xA4\r\n");
  collegamento->RiceviFile(Host, base / "host/perché", base / "locale/y", testo);
  EXPECT_EQ(test::FileText(base / "locale/y"), "perché, 5 €\r\n");
  collegamento->RinominaFile(Host, base / "host/perché", base / "host/più", testo);
  EXPECT_THAT(NomiIn("host"), ElementsAre("pi\xF9"));
  collegamento->CancellaFile(Host, base / "host/più");
  EXPECT_THAT(NomiIn("host"), IsEmpty());
}

TEST_F(SshEncoding, CharacterThatIsMissingIsNamedBeforeAnythingIsSent) {
  Usa("ISO-8859-1");
  Programma("touch '" + base / "avviato" + "'; echo '<A/>'");
  EXPECT_THAT(ErroreDi([this] {
                static_cast<void>(Risposta({"01", "5 €"}));
              }).Description(),
              HasSubstr("Il parametro 2 di VB0001 contiene il carattere «€» (U+20AC)"));
  EXPECT_FALSE(fs::exists(base / "avviato"));
  EXPECT_THAT(ErroreDi([this] { Invia("T01", std::string(100000, 'x') + "€"); }).Description(),
              HasSubstr("T01» contiene il carattere «€»"));
  EXPECT_THAT(ErroreDi([this] { Invia("T€", "x"); }).Description(), HasSubstr("contiene il carattere «€»"));
  EXPECT_THAT(NomiIn("host"), IsEmpty());
}

TEST_F(SshEncoding, ReplyIsReadInItsOwnEncodingOrElseInTheHosts) {
  Usa("Windows-1252");
  Programma(R"(printf '<A>perch\351 \200</A>')");
  EXPECT_EQ(Risposta()->value, "perché €");
  Programma(R"(printf '<?xml version="1.0"?><A>perch\351</A>')");
  EXPECT_EQ(Risposta()->value, "perché");
  Programma(R"(printf '<?xml version="1.0" encoding="UTF-8"?><A>perch\303\251</A>')");
  EXPECT_EQ(Risposta()->value, "perché");
  Programma(R"(printf '<?xml version="1.0" encoding="ISO-8859-15"?><A>\244</A>')");
  EXPECT_EQ(Risposta()->value, "€");
  Programma(R"(printf '<A>\201</A>')");
  EXPECT_THAT(Rifiuto(), HasSubstr("non sono caratteri della codifica Windows-1252"));
}

TEST_F(SshEncoding, ReplyInUtf16IsReadWithAndWithoutAMark) {
  Usa("ISO-8859-1");
  for (const auto* codifica : {"UTF-16", "UTF-16LE", "UTF-16BE"}) {
    Programma(R"(printf '<?xml version="1.0"?><A>perch\303\251</A>' | iconv -f UTF-8 -t )" + std::string(codifica));
    EXPECT_EQ(Risposta()->value, "perché") << codifica;
  }
}

TEST_F(SshEncoding, ComplaintsAreReadInTheHostsEncodingWhateverTheyHold) {
  Programma(R"(printf 'perch\351' >&2; exit 3)");
  EXPECT_THAT(Rifiuto(), HasSubstr("perch\uFFFD"));
  Usa("ISO-8859-1");
  EXPECT_THAT(Rifiuto(), HasSubstr("lo stato 3: perché"));
}

class SshSingleConnection : public Ssh {
 protected:
  [[nodiscard]] static std::size_t Accessi() {
    const auto registro = test::FileText(server->Log());
    std::size_t numero = 0;
    for (std::size_t posto = 0; (posto = registro.find("Accepted publickey", posto)) != std::string::npos; ++posto) {
      ++numero;
    }
    return numero;
  }
};

TEST_F(SshSingleConnection, OneConnectionServesEveryOperation) {
  Programma("echo '<A/>'");
  const auto prima = Accessi();
  for (int giro = 0; giro < 10; ++giro) {
    Invia("T01", "x");
    collegamento->RinominaFile(Host, base / "host/T01", base / "host/T01.dos", testo);
    EXPECT_TRUE(Risposta().has_value());
    collegamento->RiceviFile(Host, base / "host/T01.dos", base / "locale/y", testo);
    collegamento->CancellaFile(Host, base / "host/T01.dos");
  }
  EXPECT_EQ(Accessi(), prima + 1);
}

TEST_F(SshSingleConnection, ConnectionThatDiedInBetweenIsOpenedAgain) {
  Programma("echo '<A/>'");
  Invia("T01", "x");
  server->CutSessions();
  EXPECT_TRUE(Risposta().has_value());
  server->CutSessions();
  collegamento->CancellaFile(Host, base / "host/T01");
  EXPECT_THAT(NomiIn("host"), IsEmpty());
}

TEST_F(SshSingleConnection, ServerThatIsGoneIsSaidAndFoundAgainLater) {
  Invia("T01", "x");
  server->Stop();
  // The news of the end may reach us only while we speak.
  EXPECT_THAT(ErroreDi([this] { Invia("T02", "x"); }).Description(),
              testing::AnyOf(HasSubstr("connessione rifiutata"), HasSubstr("la connessione è caduta")));
  EXPECT_THAT(ErroreDi([this] { Invia("T02", "x"); }).Description(), HasSubstr("connessione rifiutata"));
  server->Restart();
  Invia("T03", "x");
  EXPECT_THAT(NomiIn("host"), ElementsAre("T01", "T03"));
}

/// A host whose end of the connection stands still, and nobody says so.
class SshSilence : public SshSingleConnection {
 protected:
  void SetUp() override {
    SshSingleConnection::SetUp();
    impostazioni.timeout = std::chrono::seconds(5);
    Collega();
    Programma("echo x >>'" + base / "avvii" + "'; echo \"<A>$PPID</A>\"");
    Invia("T01", "x");
    capo = std::stoi(Risposta()->value);
  }
  void TearDown() override {
    // Without a process of its own, 0 would mean this program and everything around it.
    if (capo > 0) {
      ::kill(capo, SIGKILL);
    }
  }
  void Taci() const {
    ASSERT_EQ(::kill(capo, SIGSTOP), 0);
    // Longer than the component trusts an answer.
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
  }
  pid_t capo = 0; ///< the server's process for the connection
};

TEST_F(SshSilence, SilentConnectionIsOpenedAgainForAFile) {
  Taci();
  collegamento->CancellaFile(Host, base / "host/T01");
  EXPECT_THAT(NomiIn("host"), IsEmpty());
}

TEST_F(SshSilence, SilentConnectionIsOpenedAgainForAProgramThatThenStartsOnce) {
  Taci();
  EXPECT_NE(std::stoi(Risposta()->value), capo);
  EXPECT_EQ(test::FileText(base / "avvii"), "x\nx\n") << "once before, once now";
}

TEST_F(SshSingleConnection, ProgramWhoseConnectionBreaksIsNotStartedAgain) {
  // The parent of the program is the server's process for this connection.
  Programma("echo x >>'" + base / "avvii" + "'; kill -9 $PPID; sleep 5");
  EXPECT_THAT(Rifiuto(), testing::EndsWith(". " + test::Ignoto));
  EXPECT_EQ(test::FileText(base / "avvii"), "x\n");
  Programma("echo '<A/>'");
  EXPECT_TRUE(Risposta().has_value());
}

TEST_F(SshSingleConnection, AddressThatCouldMeanSomethingElseIsRefused) {
  for (const auto* host : {"", "-oProxyCommand=x", "root@127.0.0.1", "127.0.0.1 x", "a\nb", "$(id)", "a/b"}) {
    EXPECT_THAT(ErroreDi([&] { collegamento->CancellaFile(host, "/tmp/x"); }).Description(),
                HasSubstr("Indirizzo dell'host (-H) non ammesso"))
        << host;
  }
}

TEST_F(SshSingleConnection, NumericAddressesOfBothKindsAreTaken) {
  // Nobody listens at the second.
  for (const auto* host : {"127.0.0.1", "::1"}) {
    try {
      collegamento->CancellaFile(host, base / "host/manca");
    } catch (const RuntimeError& errore) {
      EXPECT_STREQ(host, "::1");
      EXPECT_THAT(errore.Description(), HasSubstr("Collegamento all'host ::1"));
    }
  }
}

TEST_F(SshSingleConnection, NameThatDoesNotExistIsSaid) {
  EXPECT_THAT(ErroreDi([&] { collegamento->CancellaFile("manca.invalid", "/tmp/x"); }).Description(),
              testing::AnyOf(HasSubstr("l'indirizzo non esiste"), HasSubstr("il servizio dei nomi non risponde")));
}

TEST_F(SshSingleConnection, NothingIsLeftOpen) {
  Programma("echo '<A/>'");
  const auto aperti = [] { return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator()); };
  Invia("T01", "x");
  const auto prima = aperti();
  for (int giro = 0; giro < 20; ++giro) {
    Invia("T01", "x");
    static_cast<void>(Risposta());
    static_cast<void>(ErroreDi([this] { collegamento->RiceviFile(Host, "/manca", base / "locale/y", testo); }));
  }
  EXPECT_EQ(aperti(), prima);
  collegamento.reset();
  EXPECT_EQ(aperti(), prima - 1);
  impostazioni.knownHosts = "/dev/null";
  Collega();
  for (int giro = 0; giro < 5; ++giro) {
    EXPECT_THAT(ErroreDi([this] { Invia("T01", "x"); }).Description(), HasSubstr("SHA256:"));
  }
  EXPECT_EQ(aperti(), prima - 1);
}

} // namespace
} // namespace lumoscad
