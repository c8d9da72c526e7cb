// The back end of the demonstration in the encodings that a host may have.

#include "RetroVB0001.hpp"

#include <gmock/gmock.h>

namespace lumoscad {
namespace {

using test::BackEndVB0001;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

const std::vector<std::string> Sospensione = {"01", "SOSPESOCREA", "C10", "AB123", "T01", ""};

class Vb0001Encoding : public BackEndVB0001 {
 protected:
  /// The answer's bytes to a request of an account.
  std::string Risposta(const std::string& conto) { return Byte(Con(Sospensione, 2, conto)); }
  std::string Registro() { return test::FileText(radice / "registro/VB0001.log"); }
};

TEST_F(Vb0001Encoding, AUtf8CallIsAnsweredInUtf8) {
  EXPECT_EQ(Risposta("Perché€"), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<RISPOSTA><MESSAGGIO>Sospesa la partita "
                                 "AB123 del conto Perché€</MESSAGGIO></RISPOSTA>\n");
  EXPECT_THAT(Registro(), HasSubstr("\tPerché€\t"));
}

TEST_F(Vb0001Encoding, ACallOfAsciiAloneIsAnsweredInUtf8) {
  EXPECT_THAT(Risposta("BLOCCATO"), StartsWith("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"));
  EXPECT_EQ(Testo("ERRORE", "", Con(Sospensione, 2, "BLOCCATO")), "Parametro 3: «BLOCCATO» è un conto bloccato.");
}

TEST_F(Vb0001Encoding, ALatin1CallIsAnsweredInLatin1) {
  EXPECT_EQ(Risposta("Perch\xE9"), "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n<RISPOSTA><MESSAGGIO>Sospesa la "
                                   "partita AB123 del conto Perch\xE9</MESSAGGIO></RISPOSTA>\n");
  EXPECT_THAT(Registro(), HasSubstr("\tPerch\xE9\t"));
}

TEST_F(Vb0001Encoding, ItsOwnLettersComeInTheEncodingOfTheCall) {
  test::Scrivi(radice / "conti_bloccati", "Perché\n");
  EXPECT_EQ(Testo("ERRORE", "", Con(Sospensione, 2, "Perch\xE9")), "Parametro 3: «Perché» è un conto bloccato.");
  EXPECT_EQ(Testo("ERRORE", "", Con(Sospensione, 2, "Perché")), "Parametro 3: «Perché» è un conto bloccato.");
}

TEST_F(Vb0001Encoding, ARequestFileTellsTheEncodingToo) {
  EXPECT_EQ(Errore("Perch\xE9,2026/12,,,,,20260131,20260231,,,1\r\n"),
            "Riga 1, campo 8 (NuovaScadenza): «20260231» è una data inesistente.");
  EXPECT_EQ(Errore("C10,2026/12,,,,,20260131,Citt\xE0,,,1\r\n"),
            "Riga 1, campo 8 (NuovaScadenza): «Città» non è una data di otto cifre.");
  EXPECT_THAT(Registro(), HasSubstr("RIFIUTATA\tRiga 1, campo 8 (NuovaScadenza): \xAB"
                                    "Citt\xE0\xBB non \xE8 una data"));
}

TEST_F(Vb0001Encoding, ARequestFileIsFoundUnderAnAccentedName) {
  test::Scrivi(radice / "tmp/T\xE0.dos", "20100001,2026/12,,,,,20260131,20260228,,,1\r\n");
  auto parametri = Parametri();
  parametri[4] = "/tmp/T\xE0.dos";
  EXPECT_EQ(Testo("MESSAGGIO", "", parametri), "Variata 1 scadenza");
}

TEST_F(Vb0001Encoding, BytesThatTheWesternEncodingsReadDifferentlyComeBackAsTheyWere) {
  for (const std::string euro : {"\xA4", "\x80"}) {
    const auto risposta = Risposta("Citt\xE0" + euro);
    EXPECT_THAT(risposta, StartsWith("<?xml version=\"1.0\"?>\n"));
    EXPECT_THAT(risposta, HasSubstr("conto Citt\xE0" + euro + "</MESSAGGIO>"));
    EXPECT_THAT(risposta, Not(HasSubstr("\xC2")));
  }
}

TEST_F(Vb0001Encoding, OneTextOfAnotherEncodingTellsThatOfAllParameters) {
  // Two Latin-1 letters that happen to be one of UTF-8.
  EXPECT_EQ(Testo("MESSAGGIO", "", Con(Con(Sospensione, 2, "\xC3\xA9"), 3, "Citt\xE0")),
            "Sospesa la partita Città del conto Ã©");
}

} // namespace
} // namespace lumoscad
