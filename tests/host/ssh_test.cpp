// The five operations against a real server.

#include "BancoSsh.hpp"
#include "platform/nexaro/ErroriLink.hpp"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

namespace lumoscad {
namespace {

using prove::ErroreDi;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class Ssh : public prove::BancoSsh {};

TEST_F(Ssh, SendsRenamesAndDeletesAFile) {
  const std::string contenuto("A,1\r\nà\0,2\r\n", 12);
  Invia("T01", contenuto);
  EXPECT_EQ(prove::Leggi(base / "host/T01"), contenuto);
  testo = "prima";
  collegamento->RinominaFile(Host, base / "host/T01", base / "host/T01.dos", testo);
  EXPECT_EQ(testo, "");
  EXPECT_THAT(NomiIn("host"), ElementsAre("T01.dos"));
  EXPECT_EQ(prove::Leggi(base / "host/T01.dos"), contenuto);
  collegamento->CancellaFile(Host, base / "host/T01.dos");
  EXPECT_THAT(NomiIn("host"), IsEmpty());
}

TEST_F(Ssh, FileSentAgainReplacesTheFirst) {
  Invia("T01", "molto più lungo di prima");
  Invia("T01", "nuovo");
  EXPECT_EQ(prove::Leggi(base / "host/T01"), "nuovo");
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
  EXPECT_TRUE(prove::Leggi(base / "host/grande") == contenuto);
  collegamento->RiceviFile(Host, base / "host/grande", base / "locale/ritorno", testo);
  EXPECT_TRUE(prove::Leggi(base / "locale/ritorno") == contenuto);
}

TEST_F(Ssh, ProgramGetsItsParametersAndAnswersInXml) {
  Programma("echo \"<RISPOSTA><MESSAGGIO>$# $1</MESSAGGIO></RISPOSTA>\"");
  const auto risposta = Risposta({"01", "", "", ""});
  ASSERT_TRUE(risposta.has_value());
  EXPECT_EQ(risposta->nome, "RISPOSTA");
  EXPECT_EQ(risposta->figli.at(0).valore, "4 01");
}

} // namespace
} // namespace lumoscad
