// The bank of presumed documents: from the command line to the database and back.

#include "ListaPresunti.hpp"

namespace lumoscad::test {
namespace {

using testing::SizeIs;

const std::string Accettato = "Variato 1 documento";
constexpr std::size_t Vuoti = 6; ///< empty parameters of the request

class PresumedDocuments : public ListaPresunti {
 protected:
  PresumedDocuments() : ListaPresunti("-T BANCA", "LumoScad - Banca dei documenti presunti") {}

  /// Opens the cell of the row's new bank and chooses the entry `voce` of the list of banks, from 0.
  void ScegliBanca(int riga, int voce) {
    Vai(riga);
    Tasti({"Right", "F2"});
    Righe tasti{"Home"};
    tasti.insert(tasti.end(), static_cast<std::size_t>(voce), "Down");
    tasti.emplace_back("Return");
    Tasti(tasti);
    Tasti({"Left"});
  }
};

TEST_P(PresumedDocuments, ABankChosenForOneRowIsThatOfTheWholeDocument) {
  Attendi("UPDATE EVENTOCONTABILE SET BANCAPRESENTAZIONE_KEY=2 WHERE EVENTOCONTABILEKEY IN (512,513,514)", 3);
  Avvia();
  ASSERT_NO_FATAL_FAILURE(ApriLista());
  ScegliBanca(4, 2);
  Fotografa("presunti");
  ASSERT_NO_FATAL_FAILURE(Conferma());
  VerificaFine(0, "");
  VerificaRichiesta("CANALIZZAZIONE", Vuoti, "20100012,,26,214,OC,,,,60100001,60100002,\r\n", Accettato);
  VerificaBaseDati();
}

TEST_P(PresumedDocuments, TheTickWithABlankBankRemovesTheBank) {
  // The second row of this document is not listed: nothing is to be invoiced in its currency. The bank is the
  // document's.
  Attendi("UPDATE EVENTOCONTABILE SET BANCAPRESENTAZIONE_KEY=NULL WHERE EVENTOCONTABILEKEY IN (521,522)", 2);
  Avvia();
  ASSERT_NO_FATAL_FAILURE(ApriLista());
  Vai(Elencate - 1);
  Tasti({"space"});
  ASSERT_NO_FATAL_FAILURE(Conferma());
  VerificaFine(0, "");
  VerificaRichiesta("CANALIZZAZIONE", Vuoti, "20100012,,26,218,OC,,,,60100003,#null#,\r\n", Accettato);
  VerificaBaseDati();
}

TEST_P(PresumedDocuments, OfADocumentWithSeveralBanksOnlyTheFirstOneChanges) {
  Attendi("UPDATE EVENTOCONTABILE SET BANCAPRESENTAZIONE_KEY=5 WHERE EVENTOCONTABILEKEY=517", 1);
  Avvia();
  ASSERT_NO_FATAL_FAILURE(ApriLista());
  ScegliBanca(7, 6);
  ASSERT_NO_FATAL_FAILURE(Conferma());
  VerificaFine(0, "");
  VerificaRichiesta("CANALIZZAZIONE", Vuoti, "20100012,,26,215,OC,,,,#null#,60100005,\r\n", Accettato);
  VerificaBaseDati();
}

TEST_P(PresumedDocuments, TheBankAtTheTopGoesToTheSelectedDocumentAndToTickedOnes) {
  Attendi("UPDATE EVENTOCONTABILE SET BANCAPRESENTAZIONE_KEY=6 WHERE EVENTOCONTABILEKEY IN (512,513,514,520)", 4);
  Avvia();
  ASSERT_NO_FATAL_FAILURE(ApriLista());
  Vai(2);
  Tasti({"alt+n", "Down", "Tab"});
  Vai(3);
  Tasti({"space"});
  ASSERT_NO_FATAL_FAILURE(Conferma());
  VerificaFine(0, "");
  VerificaRichiesta("CANALIZZAZIONE", Vuoti,
                    "20100012,,26,217,BC,,,,#null#,60200001,\r\n20100012,,26,214,OC,,,,60100001,60200001,\r\n",
                    "Variati 2 documenti");
  VerificaBaseDati();
}

TEST_P(PresumedDocuments, ARefusalOfTheBackEndIsShownAndNothingIsWritten) {
  Scrivi(demo.Host() / "conti_bloccati", "20100012\n");
  Avvia();
  ASSERT_NO_FATAL_FAILURE(ApriLista());
  ScegliBanca(4, 2);
  ASSERT_NO_FATAL_FAILURE(Conferma());
  VerificaFine(1, "error\n", {"VBPRESUNTI"});
  ASSERT_THAT(Chiamate(), SizeIs(1));
  EXPECT_EQ(Chiamate().front().at(1), "Riga 1, campo 1 (CodiceConto): «20100012» è un conto bloccato.");
  VerificaBaseDati();
}

TEST_P(PresumedDocuments, AnnullaSendsNothing) {
  Avvia();
  ASSERT_NO_FATAL_FAILURE(ApriLista());
  ScegliBanca(4, 2);
  Tasti({"alt+a"});
  VerificaFine(3, "closed\n");
  VerificaNullaFatto();
}

TEST_P(PresumedDocuments, TheCloseBoxAfterAnEarlierConfirmationSendsNothingMore) {
  Attendi("UPDATE EVENTOCONTABILE SET BANCAPRESENTAZIONE_KEY=2 WHERE EVENTOCONTABILEKEY IN (512,513,514)", 3);
  AvviaSequenza(2);
  ASSERT_NO_FATAL_FAILURE(ApriLista());
  ScegliBanca(4, 2);
  ASSERT_NO_FATAL_FAILURE(Conferma());
  ASSERT_NO_FATAL_FAILURE(ApriLista());
  ScegliBanca(0, 3);
  Tasti({"alt+F4"});
  VerificaFine(0, "\"\"\n\"closed\"\n");
  VerificaRichiesta("CANALIZZAZIONE", Vuoti, "20100012,,26,214,OC,,,,60100001,60100002,\r\n", Accettato);
  VerificaBaseDati();
}

INSTANTIATE_TEST_SUITE_P(Transports, PresumedDocuments, testing::Values(Trasporto::Cartella, Trasporto::Ssh),
                         [](const auto& caso) { return NomeTrasporto(caso.param); });

} // namespace
} // namespace lumoscad::test
