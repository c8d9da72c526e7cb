#include "Banco.hpp"
#include "platform/nexaro/LinkErrors.hpp"
#include "platform/nexaro/cartella/DirectoryLink.hpp"
#include "support/Files.hpp"

#include <gmock/gmock.h>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

namespace lumoscad {
namespace {

using namespace std::chrono_literals;
using test::ErroreDi;
using test::Ignoto;
using testing::HasSubstr;

class DirectoryLink : public testing::Test {
 protected:
  void SetUp() override {
    for (const auto* nome : {"host/tmp", "host/programmi", "locale"}) {
      std::filesystem::create_directories(base / nome);
    }
    collegamento.emplace(base / "host", 20s);
  }

  void Programma(const std::string& corpo) { test::ScriviProgramma(base / "host/programmi/VB0001", corpo); }

  std::optional<xml::Nodo> Risposta(const std::vector<std::string>& parametri = {}) {
    std::optional<xml::Nodo> ricevuto;
    nexaro::XMLParser lettore;
    lettore.Parse = [&](const xml::Nodo& nodo) { ricevuto = nodo; };
    collegamento->EseguiProgramma("10.0.0.1", "VB0001", parametri, lettore);
    return ricevuto;
  }
  std::string Rifiuto() {
    return ErroreDi([this] { static_cast<void>(Risposta()); }).Description();
  }
  [[nodiscard]] std::size_t FileIn(const std::string& nome) const {
    std::size_t numero = 0;
    for (const auto& voce : std::filesystem::directory_iterator(base / nome)) {
      static_cast<void>(voce);
      ++numero;
    }
    return numero;
  }

  test::TemporaryFolder base;
  std::optional<nexaro::DirectoryLink> collegamento;
  std::string testo;
};

TEST_F(DirectoryLink, SendsRenamesAndDeletesAFile) {
  const std::string contenuto("A,1\r\nà\0,2\r\n", 12);
  test::Scrivi(base / "locale/T01", contenuto);
  collegamento->InviaFile("h", base / "locale/T01", "/tmp/T01");
  EXPECT_EQ(test::FileText(base / "host/tmp/T01"), contenuto);
  collegamento->RinominaFile("h", "/tmp/T01", "/tmp/T01.dos", testo);
  EXPECT_FALSE(std::filesystem::exists(base / "host/tmp/T01"));
  EXPECT_EQ(test::FileText(base / "host/tmp/T01.dos"), contenuto);
  collegamento->CancellaFile("h", "/tmp/T01.dos");
  EXPECT_EQ(FileIn("host/tmp"), 0U);
}

TEST_F(DirectoryLink, FileSentAgainReplacesTheFirst) {
  test::Scrivi(base / "host/tmp/T01", "molto più lungo di prima");
  test::Scrivi(base / "locale/T01", "nuovo");
  collegamento->InviaFile("h", base / "locale/T01", "/tmp/T01");
  EXPECT_EQ(test::FileText(base / "host/tmp/T01"), "nuovo");
  EXPECT_EQ(FileIn("host/tmp"), 1U);
}

TEST_F(DirectoryLink, RenamingReplacesTheTarget) {
  test::Scrivi(base / "host/tmp/T01", "nuovo");
  test::Scrivi(base / "host/tmp/T01.dos", "vecchio");
  testo = "prima";
  collegamento->RinominaFile("h", "/tmp/T01", "/tmp/T01.dos", testo);
  EXPECT_EQ(test::FileText(base / "host/tmp/T01.dos"), "nuovo");
  EXPECT_EQ(testo, "");
}

TEST_F(DirectoryLink, ReceivedFileIsForItsOwnerOnly) {
  test::Scrivi(base / "host/tmp/VBCREDITI", "Utente : T02\n");
  collegamento->RiceviFile("h", "/tmp/VBCREDITI", base / "locale/VBCREDITI", testo);
  EXPECT_EQ(test::FileText(base / "locale/VBCREDITI"), "Utente : T02\n");
  struct stat stato {};
  ASSERT_EQ(::lstat((base / "locale/VBCREDITI").c_str(), &stato), 0);
  EXPECT_EQ(stato.st_mode & 0777U, 0600U);
}

TEST_F(DirectoryLink, ReceivingReplacesASymbolicLinkInsteadOfFollowingIt) {
  test::Scrivi(base / "vittima", "intatta");
  std::filesystem::create_symlink(base / "vittima", base / "locale/VBCREDITI");
  test::Scrivi(base / "host/tmp/VBCREDITI", "nuovo");
  collegamento->RiceviFile("h", "/tmp/VBCREDITI", base / "locale/VBCREDITI", testo);
  EXPECT_EQ(test::FileText(base / "vittima"), "intatta");
  EXPECT_FALSE(std::filesystem::is_symlink(base / "locale/VBCREDITI"));
  EXPECT_EQ(test::FileText(base / "locale/VBCREDITI"), "nuovo");
}

TEST_F(DirectoryLink, ReceivingAMissingFileFailsAndLeavesNothing) {
  const auto errore =
      ErroreDi([this] { collegamento->RiceviFile("10.0.0.1", "/tmp/VBX", base / "locale/VBX", testo); });
  EXPECT_EQ(errore.Number(), errors::FileNotFound);
  EXPECT_THAT(errore.Description(), HasSubstr("Ricezione del file «/tmp/VBX» sull'host 10.0.0.1"));
  EXPECT_THAT(errore.Description(), HasSubstr("file inesistente"));
  EXPECT_EQ(FileIn("locale"), 0U);
}

TEST_F(DirectoryLink, LargestFileIsReceivedAndALargerOneRefused) {
  constexpr std::uintmax_t Massimo = std::uintmax_t{16} * 1024 * 1024;
  test::Scrivi(base / "host/tmp/VBX", "x");
  std::filesystem::resize_file(base / "host/tmp/VBX", Massimo);
  collegamento->RiceviFile("h", "/tmp/VBX", base / "locale/VBX", testo);
  EXPECT_EQ(std::filesystem::file_size(base / "locale/VBX"), Massimo);
  std::filesystem::remove(base / "locale/VBX");
  std::filesystem::resize_file(base / "host/tmp/VBX", Massimo + 1);
  const auto errore = ErroreDi([this] { collegamento->RiceviFile("h", "/tmp/VBX", base / "locale/VBX", testo); });
  EXPECT_EQ(errore.Number(), nexaro::LinkFailure);
  EXPECT_EQ(errore.Description(), "Ricezione del file «/tmp/VBX» sull'host h in «" + base / "locale/VBX" +
                                      "»: il file supera i 16 MiB ammessi.");
  EXPECT_EQ(FileIn("locale"), 0U);
}

TEST_F(DirectoryLink, SendingLooksAtNoSize) {
  test::Scrivi(base / "locale/T01", "x");
  std::filesystem::resize_file(base / "locale/T01", std::uintmax_t{17} * 1024 * 1024);
  collegamento->InviaFile("h", base / "locale/T01", "/tmp/T01");
  EXPECT_EQ(std::filesystem::file_size(base / "host/tmp/T01"), std::uintmax_t{17} * 1024 * 1024);
}

TEST_F(DirectoryLink, SendingOntoADirectoryLeavesNoPrivateFile) {
  std::filesystem::create_directory(base / "host/tmp/T01");
  test::Scrivi(base / "locale/T01", "x");
  const auto errore = ErroreDi([this] { collegamento->InviaFile("h", base / "locale/T01", "/tmp/T01"); });
  EXPECT_EQ(errore.Number(), errors::FileAccess);
  EXPECT_EQ(FileIn("host/tmp"), 1U);
}

TEST_F(DirectoryLink, SendingFailsWhereTheHostDirectoryIsNotThere) {
  test::Scrivi(base / "locale/T01", "x");
  EXPECT_EQ(ErroreDi([this] { collegamento->InviaFile("h", base / "locale/T01", "/manca/T01"); }).Number(),
            errors::FileNotFound);
}

TEST_F(DirectoryLink, SendingFailsWhereTheHostDirectoryIsReadOnly) {
  test::Scrivi(base / "locale/T01", "x");
  std::filesystem::permissions(base.Path().string(), std::filesystem::perms(0755));
  std::filesystem::permissions(base / "host/tmp", std::filesystem::perms(0555));
  // Permissions do not bind the superuser, who tests as nobody.
  const bool onnipotente = ::geteuid() == 0;
  ASSERT_TRUE(!onnipotente || ::seteuid(65534) == 0);
  const auto errore = ErroreDi([this] { collegamento->InviaFile("h", base / "locale/T01", "/tmp/T01"); });
  ASSERT_TRUE(!onnipotente || ::seteuid(0) == 0);
  std::filesystem::permissions(base / "host/tmp", std::filesystem::perms(0755));
  EXPECT_EQ(FileIn("host/tmp"), 0U);
  EXPECT_EQ(errore.Number(), nexaro::PermissionError);
  EXPECT_THAT(errore.Description(), HasSubstr("permesso negato"));
}

TEST_F(DirectoryLink, APipeInTheFilesPlaceIsRefusedWithoutWaiting) {
  ASSERT_EQ(::mkfifo((base / "host/tmp/VBX").c_str(), 0600), 0);
  const auto errore = ErroreDi([this] { collegamento->RiceviFile("h", "/tmp/VBX", base / "locale/VBX", testo); });
  EXPECT_THAT(errore.Description(), HasSubstr("non è un file ordinario"));
}

TEST_F(DirectoryLink, BeginningOfAFileIsReceivedWhateverItsSize) {
  const std::string lungo(200000, 'y');
  for (const std::size_t dimensione : {0U, 10U, 65537U, 65538U, 200000U}) {
    test::Scrivi(base / "host/tmp/VBX", lungo.substr(0, dimensione));
    collegamento->ReceiveBeginning("h", "/tmp/VBX", base / "locale/VBX", 65537, testo);
    EXPECT_EQ(test::FileText(base / "locale/VBX"), lungo.substr(0, std::min<std::size_t>(dimensione, 65537)));
  }
  std::filesystem::resize_file(base / "host/tmp/VBX", std::uintmax_t{1} << 30U);
  collegamento->ReceiveBeginning("h", "/tmp/VBX", base / "locale/VBX", 65537, testo);
  EXPECT_EQ(std::filesystem::file_size(base / "locale/VBX"), 65537U);
}

TEST_F(DirectoryLink, FileThatTakesTooLongIsNotReceived) {
  test::Scrivi(base / "host/tmp/VBX", "x");
  std::filesystem::resize_file(base / "host/tmp/VBX", std::uintmax_t{16} * 1024 * 1024);
  collegamento.emplace(base / "host", 1ms);
  const auto errore = ErroreDi([this] { collegamento->RiceviFile("h", "/tmp/VBX", base / "locale/VBX", testo); });
  EXPECT_THAT(errore.Description(), HasSubstr("»: il trasferimento non è finito entro 0,001 secondi."));
  EXPECT_TRUE(std::filesystem::is_empty(base / "locale"));
}

TEST_F(DirectoryLink, FileThatWasReadInOnePieceIsReceivedThoughTheCallerWasHeldUpMeanwhile) {
  collegamento.emplace(base / "host", 0ms);
  for (const std::size_t dimensione : {0U, 10U, 65536U}) {
    test::Scrivi(base / "host/tmp/VBX", std::string(dimensione, 'x'));
    collegamento->RiceviFile("h", "/tmp/VBX", base / "locale/VBX", testo);
    EXPECT_EQ(test::FileText(base / "locale/VBX"), std::string(dimensione, 'x'));
  }
  std::filesystem::remove(base / "locale/VBX");
  test::Scrivi(base / "host/tmp/VBX", std::string(65537, 'x'));
  const auto errore = ErroreDi([this] { collegamento->RiceviFile("h", "/tmp/VBX", base / "locale/VBX", testo); });
  EXPECT_THAT(errore.Description(), HasSubstr("»: il trasferimento non è finito entro 0 secondi."));
  EXPECT_TRUE(std::filesystem::is_empty(base / "locale"));
}

TEST_F(DirectoryLink, DeletingAMissingFileSucceedsAndOtherFailuresDoNot) {
  EXPECT_NO_THROW(collegamento->CancellaFile("h", "/tmp/manca"));
  std::filesystem::create_directory(base / "host/tmp/cartella");
  EXPECT_EQ(ErroreDi([this] { collegamento->CancellaFile("h", "/tmp/cartella"); }).Number(), errors::FileAccess);
}

TEST_F(DirectoryLink, RenamingAMissingFileFails) {
  const auto errore = ErroreDi([this] { collegamento->RinominaFile("h", "/tmp/a", "/tmp/b", testo); });
  EXPECT_EQ(errore.Number(), errors::FileNotFound);
  EXPECT_THAT(errore.Description(), HasSubstr("«/tmp/a» in «/tmp/b»"));
}

TEST_F(DirectoryLink, NoPathLeavesTheHostDirectory) {
  test::Scrivi(base / "segreto", "x");
  for (const auto* percorso : {"/../segreto", "/tmp/../../segreto", "segreto", "", "../segreto", "/tmp/.."}) {
    EXPECT_THAT(ErroreDi([&] { collegamento->CancellaFile("h", percorso); }).Description(), HasSubstr("non ammesso"))
        << percorso;
  }
  EXPECT_TRUE(std::filesystem::exists(base / "segreto"));
}

TEST_F(DirectoryLink, ProgramGetsItsParametersAndAnswersInXml) {
  Programma("echo \"<RISPOSTA><MESSAGGIO>$# $1 $NEXARO_RADICE</MESSAGGIO></RISPOSTA>\"");
  const auto risposta = Risposta({"01", "", "", ""});
  ASSERT_TRUE(risposta.has_value());
  EXPECT_EQ(risposta->name, "RISPOSTA");
  EXPECT_EQ(risposta->children.at(0).value, "4 01 " + std::filesystem::canonical(base / "host").string());
}

TEST_F(DirectoryLink, MissingProgramIsNamedWithItsHost) {
  const auto errore = ErroreDi([this] { static_cast<void>(Risposta()); });
  EXPECT_EQ(errore.Number(), errors::FileNotFound);
  EXPECT_EQ(errore.Description(), "Il programma VB0001 sull'host 10.0.0.1 non è stato avviato: file inesistente.");
}

TEST_F(DirectoryLink, FailedProgramIsReportedWithWhatItSaid) {
  Programma("echo 'disco pieno' >&2; exit 3");
  EXPECT_EQ(Rifiuto(), "Il programma VB0001 sull'host 10.0.0.1 è terminato con lo stato 3: disco pieno. " + Ignoto);
}

TEST_F(DirectoryLink, LongComplaintIsCutBetweenCharacters) {
  Programma("printf x >&2; i=0; while [ $i -lt 3000 ]; do printf 'à' >&2; i=$((i+1)); done; exit 3");
  const auto rifiuto = Rifiuto();
  EXPECT_LT(rifiuto.size(), 2200U);
  EXPECT_THAT(rifiuto, testing::EndsWith("àà. " + Ignoto));
}

TEST_F(DirectoryLink, KilledProgramIsReportedWithTheSignal) {
  Programma("kill -SEGV $$");
  EXPECT_EQ(Rifiuto(), "Il programma VB0001 sull'host 10.0.0.1 è stato terminato dal segnale 11. " + Ignoto);
}

TEST_F(DirectoryLink, HangingProgramIsInterrupted) {
  Programma("sleep 60");
  collegamento.emplace(base / "host", 300ms);
  EXPECT_EQ(Rifiuto(),
            "Il programma VB0001 sull'host 10.0.0.1 non ha risposto entro 0,300 secondi ed è stato interrotto. " +
                Ignoto);
}

TEST_F(DirectoryLink, SilentProgramIsAnError) {
  Programma("exit 0");
  EXPECT_EQ(Rifiuto(), "Il programma VB0001 sull'host 10.0.0.1 non ha dato alcuna risposta. " + Ignoto);
}

TEST_F(DirectoryLink, EndlessAnswerIsInterrupted) {
  Programma("exec yes '<A>'");
  EXPECT_THAT(Rifiuto(), HasSubstr("oltre 16 MiB"));
}

TEST_F(DirectoryLink, UnusableAnswersAreDistinguished) {
  Programma("echo spazzatura");
  EXPECT_THAT(Rifiuto(), HasSubstr("risposta non valida. Documento XML non valido: testo fuori"));
  Programma("echo '<!DOCTYPE a><a/>'");
  EXPECT_THAT(Rifiuto(), HasSubstr("DOCTYPE"));
  Programma("i=0; while [ $i -lt 65 ]; do printf '<a>'; i=$((i+1)); done; "
            "i=0; while [ $i -lt 65 ]; do printf '</a>'; i=$((i+1)); done");
  EXPECT_THAT(Rifiuto(), HasSubstr("64 livelli"));
}

TEST_F(DirectoryLink, ProgramNameIsAPlainName) {
  nexaro::XMLParser lettore;
  for (const auto* nome : {"", "..", "../tmp/x", "/bin/sh"}) {
    EXPECT_THAT(ErroreDi([&] { collegamento->EseguiProgramma("h", nome, {}, lettore); }).Description(),
                HasSubstr("Nome di programma non ammesso"));
  }
}

TEST_F(DirectoryLink, ParameterWithANulCharacterIsRefused) {
  Programma("echo '<A/>'");
  EXPECT_THAT(ErroreDi([this] { static_cast<void>(Risposta({std::string("a\0b", 3)})); }).Description(),
              HasSubstr("carattere nullo"));
}

} // namespace
} // namespace lumoscad
