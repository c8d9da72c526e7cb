#include "RetroVB0001.hpp"
#include "support/Paths.hpp"

#include <gmock/gmock.h>

namespace lumoscad {
namespace {

using test::BackEndVB0001;
using testing::HasSubstr;
using namespace std::chrono_literals;

const std::string Riga = "20100001,2026/12,,,,20260131,20260131,20260228,60100001,60100002,1\r\n";
const std::string SoloData = "20100001,2026/12,,,,,20260131,20260228,#null#,,2\r\n";
const std::string SoloBanca = "20100001,2026/13,,,,00000000,20260131,,60100001,#null#,1\r\n";

TEST_F(BackEndVB0001, TellsHowManyInstalmentsItTook) {
  EXPECT_EQ(Testo("MESSAGGIO", Riga), "Variata 1 scadenza");
  EXPECT_EQ(Testo("MESSAGGIO", Riga + SoloData + SoloBanca), "Variate 3 scadenze");
}

TEST_F(BackEndVB0001, LogsEachCallOnOneLine) {
  static_cast<void>(Testo("MESSAGGIO", SoloBanca));
  static_cast<void>(Testo("ERRORE", ""));
  const std::string parametri = "11\t01\tCANALIZZAZIONE\tCREDITI\tT01\t/tmp/T01.dos\t\t\t\t\t\t\t";
  EXPECT_EQ(test::FileText(radice / "registro/VB0001.log"),
            "ACCETTATA\tVariata 1 scadenza\t" + parametri +
                "20100001,2026/13,,,,00000000,20260131,,60100001,#null#,1\\r\\n\n"
                "RIFIUTATA\tIl file della richiesta è vuoto.\t" +
                parametri + "\n");
}

TEST_F(BackEndVB0001, NamesLineAndFieldOfAWrongFile) {
  EXPECT_EQ(Errore(Riga + "20100001,2026/12,,,,,20260231,20260228,,,1\r\n"),
            "Riga 2, campo 7 (VecchiaScadenza): «20260231» è una data inesistente.");
  EXPECT_EQ(Errore("20100001,2026/12,,,,,20260131,28/02/26,,,1\r\n"),
            "Riga 1, campo 8 (NuovaScadenza): «28/02/26» non è una data di otto cifre.");
  EXPECT_EQ(Errore(" ,2026/12,,,,,20260131,20260228,,,1\r\n"), "Riga 1, campo 1 (CodiceConto): « » manca.");
  EXPECT_EQ(Errore("20100001,,,,,,20260131,20260228,,,1\r\n"), "Riga 1, campo 2 (NumeroPartita): «» manca.");
  EXPECT_EQ(Errore("20100001,2026/12,26,,,,20260131,20260228,,,1\r\n"),
            "Riga 1, campo 3 (Anno): «26» non è un anno di quattro cifre.");
  EXPECT_EQ(Errore("20100001,2026/12,,,,,20260131,20260228,,60 1,1\r\n"),
            "Riga 1, campo 10 (NuovaBanca): «60 1» non è un codice di banca.");
  EXPECT_EQ(Errore("20100001,2026/12,,,,,20260131,20260228,,,uno\r\n"),
            "Riga 1, campo 11 (NumeroRata): «uno» non è un numero di rata.");
}

TEST_F(BackEndVB0001, RefusesLinesOfTheWrongShape) {
  EXPECT_EQ(Errore("20100001,2026/12,,,,,20260131,20260228,,1\r\n"), "Riga 1: 10 campi invece di 11.");
  EXPECT_EQ(Errore("20100001,2026/12,,,,,20260131,20260228,,,1,\r\n"), "Riga 1: 12 campi invece di 11.");
  EXPECT_EQ(Errore(Riga + Riga.substr(0, Riga.size() - 2) + "\n"), "Riga 2: non termina con CR LF.");
  EXPECT_EQ(Errore(Riga.substr(0, Riga.size() - 2)), "Riga 1: non termina con CR LF.");
  EXPECT_EQ(Errore("20100001,2026/12,,,,,20260131,,60100001,,1\r\n"),
            "Riga 1: nessuna variazione, i campi 8 (NuovaScadenza) e 10 (NuovaBanca) sono vuoti.");
}

TEST_F(BackEndVB0001, RefusesBlockedAccounts) {
  const auto bloccata = "BLOCCATO" + Riga.substr(8);
  EXPECT_EQ(Errore(bloccata), "Riga 1, campo 1 (CodiceConto): «BLOCCATO» è un conto bloccato.");
  test::Scrivi(radice / "conti_bloccati", "20100009\n20100001\n");
  EXPECT_EQ(Errore(Riga), "Riga 1, campo 1 (CodiceConto): «20100001» è un conto bloccato.");
}

TEST_F(BackEndVB0001, RefusesAWrongParameterList) {
  auto parametri = Parametri();
  parametri.pop_back();
  EXPECT_EQ(Testo("ERRORE", Riga, parametri), "La richiesta CANALIZZAZIONE ha 10 parametri invece di 11.");
  parametri = Parametri();
  parametri[2] = "ALTRO";
  EXPECT_EQ(Testo("ERRORE", Riga, parametri), "Parametro 3: «ALTRO» non è CREDITI, DEBITI o PRESUNTI.");
  parametri = Parametri();
  parametri[0] = " ";
  EXPECT_EQ(Testo("ERRORE", Riga, parametri), "Parametro 1: manca.");
  parametri = Parametri();
  parametri[7] = "x";
  EXPECT_EQ(Testo("ERRORE", Riga, parametri), "Parametro 8: «x» dovrebbe essere vuoto.");
  parametri = Parametri();
  parametri[4] = "/tmp/T01";
  EXPECT_THAT(Testo("ERRORE", Riga, parametri), HasSubstr("non è il nome di un file di richiesta completo"));
  parametri[4] = "/tmp/T02.dos";
  EXPECT_EQ(Testo("ERRORE", Riga, parametri), "Il file della richiesta «/tmp/T02.dos» non esiste.");
}

const std::vector<std::string> Sospendi = {"01", "SOSPESOCREA", "C10", "AB123", "T01", ""};
const std::vector<std::string> Riattiva = {"01", "SOSPESOCANCELLA", "C10", "AB123", ""};
const std::vector<std::string> Presunto = {"01", "PRESUNTOCREA", "OC", "06", "123", "T01", ""};
const std::vector<std::string> Extra = {"01", "EXTRADEL", "A", "2006", "15", ""};

std::vector<std::string> Scadenze() {
  std::vector<std::string> parametri = {"01", "SCRIVISCADENZE", "BANCA", " T01 ", "/tmp/T01.dos"};
  parametri.resize(101);
  return parametri;
}

TEST_F(BackEndVB0001, TakesTheRequestsOfParametersOnly) {
  EXPECT_EQ(Testo("MESSAGGIO", "", Sospendi), "Sospesa la partita AB123 del conto C10");
  EXPECT_EQ(Testo("MESSAGGIO", "", Riattiva), "Riattivata la partita AB123 del conto C10");
  EXPECT_EQ(Testo("MESSAGGIO", "", Presunto), "Sospeso il documento OC 123/06");
  EXPECT_EQ(Testo("MESSAGGIO", "", Con(Con(Presunto, 1, "PRESUNTOCANCELLA"), 3, "2006")),
            "Riattivato il documento OC 123/2006");
  EXPECT_EQ(Testo("MESSAGGIO", "", Con(Con(Presunto, 3, ""), 4, "12306")), "Sospeso il documento OC 12306");
  EXPECT_EQ(Testo("MESSAGGIO", "", Extra), "Annullato il movimento A 15 dell'esercizio 2006");
}

TEST_F(BackEndVB0001, LogsARequestOfParametersOnlyWithAnEmptyFile) {
  static_cast<void>(Testo("MESSAGGIO", "non letto", Riattiva));
  EXPECT_EQ(test::FileText(radice / "registro/VB0001.log"),
            "ACCETTATA\tRiattivata la partita AB123 del conto C10\t5\t01\tSOSPESOCANCELLA\tC10\tAB123\t\t\n");
}

TEST_F(BackEndVB0001, RefusesWhatIsWrongInTheRequestsOfParametersOnly) {
  EXPECT_EQ(Testo("ERRORE", "", Con(Sospendi, 2, "BLOCCATO")), "Parametro 3: «BLOCCATO» è un conto bloccato.");
  EXPECT_EQ(Testo("ERRORE", "", Con(Riattiva, 2, "BLOCCATO")), "Parametro 3: «BLOCCATO» è un conto bloccato.");
  EXPECT_EQ(Testo("ERRORE", "", Con(Sospendi, 3, "")), "Parametro 4: manca.");
  EXPECT_EQ(Testo("ERRORE", "", Con(Sospendi, 4, " ")), "Parametro 5: manca.");
  EXPECT_EQ(Testo("ERRORE", "", Con(Riattiva, 4, "T01")), "Parametro 5: «T01» dovrebbe essere vuoto.");
  EXPECT_EQ(Testo("ERRORE", "", Con(Presunto, 2, "")), "Parametro 3: manca.");
  EXPECT_EQ(Testo("ERRORE", "", Con(Presunto, 3, "6")), "Parametro 4: «6» non è un anno.");
  EXPECT_EQ(Testo("ERRORE", "", Con(Presunto, 3, "an")), "Parametro 4: «an» non è un anno.");
  EXPECT_EQ(Testo("ERRORE", "", Con(Presunto, 4, "12A")), "Parametro 5: «12A» non è il numero di un documento.");
  EXPECT_EQ(Testo("ERRORE", "", Con(Extra, 3, "06")), "Parametro 4: «06» non è un esercizio.");
  EXPECT_EQ(Testo("ERRORE", "", Con(Extra, 4, "x")), "Parametro 5: «x» non è il numero di un documento.");
  EXPECT_EQ(Testo("ERRORE", "", {"01", "EXTRADEL", "A", "2006", "15"}),
            "La richiesta EXTRADEL ha 5 parametri invece di 6.");
  EXPECT_EQ(Testo("ERRORE", "", {"01", "SOSPESOCANCELLA", "C10", "AB123", "T01", ""}),
            "La richiesta SOSPESOCANCELLA ha 6 parametri invece di 5.");
}

TEST_F(BackEndVB0001, TakesAndRefusesNewDueDates) {
  const std::string scadenza = "C10,AB   123,20060228,20060405\r\n";
  EXPECT_EQ(Testo("MESSAGGIO", scadenza, Scadenze()), "Variata 1 scadenza");
  EXPECT_EQ(Testo("MESSAGGIO", scadenza + "C10,AB   123,00000000,20061231\r\n", Scadenze()), "Variate 2 scadenze");
  const auto rifiuto = [&](const std::string& seconda) { return Testo("ERRORE", scadenza + seconda, Scadenze()); };
  EXPECT_EQ(rifiuto("BLOCCATO,A 1,00000000,20061231\r\n"),
            "Riga 2, campo 1 (CodiceConto): «BLOCCATO» è un conto bloccato.");
  EXPECT_EQ(rifiuto("C10,A 1,00000000,00000000\r\n"), "Riga 2, campo 4 (NuovaScadenza): «00000000» manca.");
  EXPECT_EQ(rifiuto("C10,A 1,00000000,20060631\r\n"),
            "Riga 2, campo 4 (NuovaScadenza): «20060631» è una data inesistente.");
  EXPECT_EQ(rifiuto("C10,A 1,28/02/2006,20060601\r\n"),
            "Riga 2, campo 3 (ScadenzaOriginale): «28/02/2006» non è una data di otto cifre.");
  EXPECT_EQ(rifiuto("C10,A 1,20060601\r\n"), "Riga 2: 3 campi invece di 4.");
  auto corta = Scadenze();
  corta.pop_back();
  EXPECT_EQ(Testo("ERRORE", scadenza, corta), "La richiesta SCRIVISCADENZE ha 100 parametri invece di 101.");
}

TEST_F(BackEndVB0001, RefusesUnknownRequestsAndEscapesWhatItRepeats) {
  EXPECT_EQ(Testo("ERRORE", Riga, {"01", "<A&B>"}), "Richiesta sconosciuta: «<A&B>».");
  EXPECT_EQ(Testo("ERRORE", Riga, {}), "Richiesta sconosciuta: «».");
}

TEST_F(BackEndVB0001, SaysOnStandardErrorThatItCannotWriteItsLog) {
  std::filesystem::remove(radice / "registro");
  const auto esito = nexaro::Run({test::ProgramPath("VB0001").string(),
                                  {},
                                  {"NEXARO_RADICE=" + radice.Path().string()},
                                  radice.Path().string(),
                                  20s,
                                  100000,
                                  2000});
  EXPECT_EQ(esito.state, 1);
  EXPECT_EQ(esito.output, "");
  EXPECT_THAT(esito.errors, HasSubstr("registro"));
}

} // namespace
} // namespace lumoscad
