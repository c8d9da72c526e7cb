#include "DateImpossibili.hpp"
#include "SchermataPresunti.hpp"
#include "screens/FormPresunti.hpp"

#include <set>

namespace lumoscad {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

class PresumedScreen : public test::SchermataPresunti<FormPresunti> {
 protected:
  explicit PresumedScreen(const std::string& dati = "") : SchermataPresunti(&FormPresunti::elaboraPresunti, dati) {}

  /// Entries of the bank fields: " ", BANCA ALFA (B07), BANCA BETA (B06).
  void ScegliBanca(std::size_t riga, int indice) const { ScegliInCella(riga, FormPresunti::NuovaBanca, indice); }
  /// Text and tag of the new bank, and the tick.
  [[nodiscard]] std::string NuovaBanca(std::size_t riga) const {
    return BancaInCella(riga, FormPresunti::NuovaBanca, 0);
  }
  /// The new bank of the three rows of document AB123/06.
  [[nodiscard]] std::vector<std::string> NuoveBanche() const {
    return {NuovaBanca(Riga("AB123/06", "EUR", "100,00")), NuovaBanca(Riga("AB123/06", "EUR", "50,00")),
            NuovaBanca(Riga("AB123/06", "USD"))};
  }
};
INSTANTIATE_TEST_SUITE_P(Databases, PresumedScreen, testing::ValuesIn(test::GeneriDiBase()), test::NomeDelGenere);

TEST_P(PresumedScreen, ShowsOneRowABankDateAndCurrencyOfADocument) {
  Mostra([this] {
    EXPECT_THAT(Testi(Riga("AB123/06", "EUR", "50,00")),
                ElementsAre("ROSSI SRL", "AB123/06", "10/03/06", "EUR", "50,00", "BANCA ALFA", "", "", "2006/03/10"));
    EXPECT_THAT(InOrdine(FormPresunti::Ordine),
                ElementsAre("AB124/06", "EF/06", "AB123/06", "AB123/06", "AB123/06", "CD5/06"));
  });
}

TEST_P(PresumedScreen, HasNoTagWhileItIsLoadingAndItsModeOnceItIsLoaded) {
  std::vector<std::string> durante;
  schermata.griglia().Tag = "PRESUNTI"; // of an earlier showing
  AscoltaIlTag(durante);
  Mostra([&] {
    EXPECT_EQ(schermata.griglia().Tag, "PRESUNTI");
    EXPECT_EQ(schermata.griglia().modo, "PRESUNTI");
  });
  EXPECT_THAT(durante, testing::AllOf(testing::Not(testing::IsEmpty()), testing::Each("")));
}

TEST_P(PresumedScreen, DescribesItsWindow) {
  Mostra([this] {
    EXPECT_EQ(finestra->Description().name, "FormPresunti");
    EXPECT_EQ(finestra->Description().listName, "LVPresunti");
    EXPECT_EQ(finestra->Description().fontName, "Arial");
    EXPECT_EQ(finestra->Description().bankField, "Nuova banca");
    EXPECT_FALSE(finestra->Description().dateField.has_value());
    EXPECT_THAT(Testate(), ElementsAre("Conto", "Ordine", "Cons. prevista", "Divisa", "Fatturato", "Banca"));
    EXPECT_EQ(finestra->Description().columns[FormPresunti::Radio].key, "Kradio");
    EXPECT_EQ(finestra->Description().columns[FormPresunti::NuovaBanca].headingText, "Nuova Banca");
    EXPECT_THAT(finestra->Description().banks, ElementsAre(" ", "BANCA ALFA", "BANCA BETA"));
    EXPECT_EQ(finestra->Description().cellBanks, finestra->Description().banks);
  });
}

TEST_P(PresumedScreen, RowsCarryTheCodesThatAChangeNeeds) {
  Mostra([this] {
    const auto riga = Riga("AB123/06", "USD");
    EXPECT_EQ(righe.Tag(riga, FormPresunti::Conto), "C01");
    EXPECT_EQ(righe.Tag(riga, FormPresunti::ConsegnaPrevista), "MOVIMENTO_401");
    EXPECT_EQ(righe.Tag(riga, FormPresunti::Banca), "B06");
    EXPECT_EQ(righe.Tag(Riga("AB124/06"), FormPresunti::Banca), "");
    EXPECT_EQ(schermata.ChiaveElemento(riga), "K_C01_AB123/06_10/04/06_USD_B06");
  });
}

TEST_P(PresumedScreen, ANullFieldShowsAnEmptyCell) {
  Mostra([this] {
    EXPECT_THAT(Testi(Riga("AB124/06")), ElementsAre("BIANCHI", "AB124/06", "", "EUR", "1.234,50", "", "", "", ""));
  });
}

TEST_P(PresumedScreen, ANumberOfTwoCharactersIsAllYear) {
  Mostra([this] { EXPECT_EQ(righe.Testo(Riga("EF/06"), FormPresunti::Fatturato), "7,00"); });
}

TEST_P(PresumedScreen, NothingToInvoiceIsNotListedButOneCentIs) {
  Mostra([this] {
    EXPECT_EQ(righe.Testo(Riga("CD5/06", "CHF"), FormPresunti::Fatturato), "0,01");
    EXPECT_THAT(InOrdine(FormPresunti::Ordine), testing::Contains("AB124/06").Times(1))
        << "its USD row amounts to 0,00";
  });
}

TEST_P(PresumedScreen, TheMovementIsLookedUpOnceADocument) {
  Mostra();
  const auto ricerche = std::count_if(banco.statements.begin(), banco.statements.end(), [](const std::string& sql) {
    return sql.starts_with("SELECT MOVIMENTOKEY FROM MOVIMENTOCONTABILE");
  });
  EXPECT_EQ(ricerche, 4) << "six rows, four documents";
}

TEST_P(PresumedScreen, YieldsToTheWindowOnceARow) {
  Mostra();
  EXPECT_EQ(banco.desktop.breaths, 7U) << "the skipped row included";
}

TEST_P(PresumedScreen, ABankChosenForOneRowShowsOnAllRowsOfTheDocument) {
  const auto variazioni = Mostra([this] {
    ScegliBanca(Riga("AB123/06", "EUR", "50,00"), 2);
    EXPECT_THAT(NuoveBanche(), ElementsAre("BANCA BETA|B06|", "BANCA BETA|B06|x", "BANCA BETA|B06|"));
    EXPECT_EQ(NuovaBanca(Riga("CD5/06", "CHF")), "||");
    finestra->PictureOk_Click();
  });
  ASSERT_THAT(variazioni, SizeIs(1)) << "one record a document";
  const VariazioneConsegna& v = variazioni[0];
  EXPECT_EQ(v.CodiceConto, "C01");
  EXPECT_EQ(v.idMovimentoKey, 401);
  EXPECT_EQ(v.Serie, "AB");
  EXPECT_EQ(v.Numero, "123");
  EXPECT_EQ(v.Anno, "06");
  EXPECT_EQ(v.VecchiaBanca, "B07") << "of the first row that changes: the others have that bank already";
  EXPECT_EQ(v.NuovaBanca, "B06");
  EXPECT_TRUE(v.isBancaChanged);
  EXPECT_FALSE(v.isConsegnaChanged);
  EXPECT_EQ(v.Consegna + v.NuovaConsegna + v.ConsegnaOrigine + v.idOrdineKey, "");
}

TEST_P(PresumedScreen, ARecordIsTakenFromTheFirstChangedRowInTheListsOrder) {
  filtro.parNumero = "123";
  filtro.parAnno = "06";
  filtro.parSerie = "AB";
  const auto variazioni = Mostra([this] {
    ScegliBanca(0, 0);
    finestra->TLwTestata_Click(3);
    finestra->TLwTestata_Click(3); // latest first: the dollar row, with bank B06
    finestra->PictureOk_Click();
  });
  ASSERT_THAT(variazioni, SizeIs(1));
  EXPECT_EQ(variazioni[0].VecchiaBanca, "B06");
  EXPECT_EQ(variazioni[0].NuovaBanca, "#null#");
}

TEST_P(PresumedScreen, TheBlankEntryRemovesTheBank) {
  const auto variazioni = Mostra([this] {
    ScegliBanca(Riga("CD5/06", "CHF"), 0);
    EXPECT_EQ(NuovaBanca(Riga("CD5/06", "CHF")), "ANNULLA|#null#|x");
    finestra->PictureOk_Click();
  });
  ASSERT_THAT(variazioni, SizeIs(1));
  EXPECT_EQ(variazioni[0].VecchiaBanca, "B07");
  EXPECT_EQ(variazioni[0].NuovaBanca, "#null#");
}

TEST_P(PresumedScreen, RemovingABankThatIsNotThereIsNoChange) {
  EXPECT_THAT(Mostra([this] {
                ScegliBanca(Riga("AB124/06"), 0);
                EXPECT_EQ(NuovaBanca(Riga("AB124/06")), "ANNULLA|#null#|x");
                finestra->PictureOk_Click();
              }),
              IsEmpty());
}

TEST_P(PresumedScreen, TheBankThatTheDocumentHasIsNoChange) {
  EXPECT_THAT(Mostra([this] {
                ScegliBanca(Riga("CD5/06", "CHF"), 1);
                finestra->PictureOk_Click();
              }),
              IsEmpty());
}

TEST_P(PresumedScreen, ADocumentWithoutBankReceivesOne) {
  const auto variazioni = Mostra([this] {
    ScegliBanca(Riga("AB124/06"), 1);
    finestra->PictureOk_Click();
  });
  ASSERT_THAT(variazioni, SizeIs(1));
  EXPECT_EQ(variazioni[0].VecchiaBanca, "#null#");
  EXPECT_EQ(variazioni[0].NuovaBanca, "B07");
}

TEST_P(PresumedScreen, ConfirmingWithoutAChangeHandsBackNothing) {
  EXPECT_THAT(Mostra([this] { finestra->PictureOk_Click(); }), IsEmpty());
  EXPECT_EQ(schermata.MotivoChiusura(), "");
}

TEST_P(PresumedScreen, ATickAppliesTheTopBankToTheDocumentAndTicksItsRow) {
  Mostra([this] {
    finestra->cmbBanche_Click(2);
    Clic(Riga("AB123/06", "USD"), FormPresunti::Radio);
    EXPECT_THAT(NuoveBanche(), ElementsAre("BANCA BETA|B06|", "BANCA BETA|B06|", "BANCA BETA|B06|x"));
  });
}

TEST_P(PresumedScreen, ATickWithTheBlankTopBankRemovesTheBank) {
  Mostra([this] {
    Clic(Riga("CD5/06", "CHF"), FormPresunti::Radio);
    EXPECT_EQ(NuovaBanca(Riga("CD5/06", "CHF")), "ANNULLA|#null#|x");
  });
}

TEST_P(PresumedScreen, TakingATickOffClearsTheWholeDocument) {
  Mostra([this] {
    ScegliBanca(Riga("AB123/06", "EUR", "50,00"), 2);
    ScegliBanca(Riga("CD5/06", "CHF"), 2);
    ScegliBanca(Riga("AB123/06", "USD"), 1);
    Clic(Riga("AB123/06", "EUR", "50,00"), FormPresunti::Radio);
    EXPECT_THAT(NuoveBanche(), ElementsAre("||", "||", "||"));
    EXPECT_EQ(NuovaBanca(Riga("CD5/06", "CHF")), "BANCA BETA|B06|x");
  });
}

TEST_P(PresumedScreen, AChoiceInTheTopFieldGoesToTheSelectedRowWithoutATick) {
  Mostra([this] {
    Clic(Riga("CD5/06", "CHF"), FormPresunti::Conto);
    finestra->cmbBanche_Click(2);
    EXPECT_EQ(NuovaBanca(Riga("CD5/06", "CHF")), "BANCA BETA|B06|");
    finestra->cmbBanche_Click(0);
    EXPECT_EQ(NuovaBanca(Riga("CD5/06", "CHF")), "ANNULLA|#null#|");
    finestra->Seleziona(-1);
    finestra->cmbBanche_Click(1);
    EXPECT_EQ(NuovaBanca(Riga("CD5/06", "CHF")), "ANNULLA|#null#|");
  });
}

TEST_P(PresumedScreen, TheEditorOpensOnTheNewBankAndOnTheBlankWithoutOne) {
  Mostra([this] {
    Clic(Riga("CD5/06", "CHF"), FormPresunti::NuovaBanca);
    EXPECT_EQ(finestra->Stato().bank.index, 0);
    finestra->cmbBanche2_Click(2);
    Clic(Riga("CD5/06", "CHF"), FormPresunti::Conto);
    Clic(Riga("CD5/06", "CHF"), FormPresunti::NuovaBanca);
    EXPECT_EQ(finestra->Stato().bank.index, 2);
    EXPECT_EQ(finestra->Stato().bank.width, finestra->Description().columns[FormPresunti::NuovaBanca].width - 60);
  });
}

TEST_P(PresumedScreen, TheEditorLeftOnItsBlankEntryRemovesTheBank) {
  for (const bool conferma : {false, true}) {
    const auto variazioni = Mostra([&] {
      Clic(Riga("CD5/06", "CHF"), FormPresunti::NuovaBanca);
      if (!conferma) {
        Clic(Riga("CD5/06", "CHF"), FormPresunti::Divisa);
        EXPECT_EQ(NuovaBanca(Riga("CD5/06", "CHF")), "ANNULLA|#null#|x");
      }
      finestra->PictureOk_Click();
    });
    ASSERT_THAT(variazioni, SizeIs(1));
    EXPECT_EQ(variazioni[0].NuovaBanca, "#null#");
  }
}

TEST_P(PresumedScreen, ABankCodeThatComesTwiceIsListedTwice) {
  base.Esegui(base.Contesto().DropIndex("CONTO_CODICE", "CONTOCONTABILE"));
  base.Esegui("INSERT INTO CONTOCONTABILE VALUES (120,'B07','BANCA GAMMA','06',NULL,'N')");
  Mostra([this] {
    EXPECT_THAT(finestra->Description().banks, ElementsAre(" ", "BANCA ALFA", "BANCA BETA", "BANCA GAMMA"));
  });
}

TEST_P(PresumedScreen, ConfermaClosesTheOpenEditorFirst) {
  EXPECT_THAT(Mostra([this] {
                Clic(Riga("CD5/06", "CHF"), FormPresunti::NuovaBanca);
                finestra->cmbBanche2_Click(2);
                finestra->PictureOk_Click();
              }),
              SizeIs(1));
}

TEST_P(PresumedScreen, SortsByAccountDocumentDateAndNewBankOnly) {
  Mostra([this] {
    finestra->TLwTestata_Click(2);
    EXPECT_THAT(InOrdine(FormPresunti::Ordine),
                ElementsAre("AB123/06", "AB123/06", "AB123/06", "AB124/06", "CD5/06", "EF/06"));
    finestra->TLwTestata_Click(3);
    const std::vector<std::string> perData = {"", "28/02/06", "10/03/06", "10/03/06", "10/04/06", "01/01/07"};
    EXPECT_EQ(InOrdine(FormPresunti::ConsegnaPrevista), perData);
    for (const int immobile : {4, 5}) {
      finestra->TLwTestata_Click(immobile);
      EXPECT_EQ(InOrdine(FormPresunti::ConsegnaPrevista), perData) << immobile;
      EXPECT_EQ(finestra->Stato().sortedHeading, 3);
    }
    ScegliBanca(Riga("EF/06"), 1);
    ScegliBanca(Riga("CD5/06", "CHF"), 2);
    finestra->TLwTestata_Click(6);
    finestra->TLwTestata_Click(6);
    EXPECT_EQ(InOrdine(FormPresunti::NuovaBanca)[0], "BANCA BETA");
    EXPECT_EQ(InOrdine(FormPresunti::NuovaBanca)[1], "BANCA ALFA");
  });
}

TEST_P(PresumedScreen, TheEditedRowIsFoundAgainAfterSorting) {
  Mostra([this] {
    const auto riga = Riga("CD5/06", "CHF");
    Clic(riga, FormPresunti::NuovaBanca);
    finestra->cmbBanche2_Click(2);
    finestra->TLwTestata_Click(2);
    finestra->cmbBanche2_LostFocus();
    EXPECT_EQ(NuovaBanca(riga), "BANCA BETA|B06|x");
  });
}

TEST_P(PresumedScreen, AnnullaAndTheCloseBoxHandBackNothing) {
  for (const bool annulla : {true, false}) {
    EXPECT_THAT(Mostra([&] {
                  ScegliBanca(Riga("CD5/06", "CHF"), 2);
                  annulla ? finestra->PictureAnnulla_Click() : finestra->Form_QueryUnload();
                }),
                IsEmpty());
    EXPECT_EQ(schermata.MotivoChiusura(), "closed");
  }
}

TEST_P(PresumedScreen, TheCloseBoxAfterAnEarlierConfirmationHandsBackNothing) {
  EXPECT_THAT(Mostra([this] {
                ScegliBanca(Riga("CD5/06", "CHF"), 2);
                finestra->PictureOk_Click();
              }),
              SizeIs(1));
  EXPECT_THAT(Mostra([this] {
                EXPECT_EQ(NuovaBanca(Riga("CD5/06", "CHF")), "||") << "nothing of the first showing is left";
                finestra->Form_QueryUnload();
              }),
              IsEmpty());
}

TEST_P(PresumedScreen, BeforeAnythingWasLoadedNothingCanBeEditedOrConfirmed) {
  auto& griglia = schermata.griglia();
  griglia.righe.Aggiungi({"ROSSI", "AB123/06"});
  griglia.Resize();
  griglia.CambiaCheck("RADIO1");
  EXPECT_EQ(griglia.righe.Testo(0, FormPresunti::NuovaBanca), "");
  EXPECT_FALSE(griglia.righe.Spuntata(0, 0));
  griglia.righe.ImpostaTag(0, FormPresunti::NuovaBanca, "B06");
  griglia.PictureOk_Click();
  EXPECT_TRUE(griglia.Stato().unloaded);
}

TEST_P(PresumedScreen, AFailureToLoadIsRaisedAfterTheWindowWasShown) {
  stato().ComandoCorrente = "BANCA /PRESUNTI -DB2SOURCE NESSUNA";
  EXPECT_THAT(Fallimento([this] { EXPECT_EQ(finestra->RowCount(), 0U); }), testing::StartsWith("ERRORE: "));
  EXPECT_EQ(banco.desktop.windows, 1U);
}

TEST_P(PresumedScreen, AnUnknownCompanyIsRaisedAfterTheWindowWasShown) {
  base.Esegui("DELETE FROM AZIENDELINEE");
  EXPECT_EQ(Fallimento(), "ERRORE: -2147220990\r\nAZIENDA INESISTENTE");
  EXPECT_EQ(banco.desktop.windows, 1U);
}

TEST_P(PresumedScreen, ADateThatIsNoneStopsTheLoadAndIsNamedWithAccountAndColumn) {
  for (const auto& [scritta, letta] : test::DateImpossibili(GetParam())) {
    test::ScriviDataImpossibile(base, GetParam(), "DATACONSEGNA", scritta, 3);
    EXPECT_EQ(Fallimento([this] { EXPECT_LT(righe.Quante(), 6U); }),
              "ERRORE: 13\r\nData non valida nella base dati: conto C01, colonna DATACONSEGNA, valore «" + letta + "».")
        << scritta;
  }
}

class PresumedScreenTwins : public PresumedScreen {
 protected:
  // Two movements of one number in different years: the look-up over all years finds both.
  PresumedScreenTwins()
      : PresumedScreen(test::DatiPresunti() +
                       "INSERT INTO MOVIMENTOCONTABILE VALUES (409,1,'N','CD','506','2005','V');") {}
};
INSTANTIATE_TEST_SUITE_P(Databases, PresumedScreenTwins, testing::ValuesIn(test::GeneriDiBase()), test::NomeDelGenere);

TEST_P(PresumedScreenTwins, AMovementThatIsNotFoundKeepsTheRowsLoadedSoFar) {
  EXPECT_EQ(Fallimento([this] {
              // Which rows come before the failing one is the database's choice; that one is the last.
              ASSERT_GT(righe.Quante(), 0U);
              const std::size_t ultima = righe.Quante() - 1;
              EXPECT_EQ(righe.Testo(ultima, FormPresunti::Ordine), "CD5/06");
              EXPECT_EQ(righe.Tag(ultima, FormPresunti::ConsegnaPrevista), "");
              for (std::size_t riga = 0; riga < ultima; ++riga) {
                EXPECT_THAT(std::string(righe.Tag(riga, FormPresunti::ConsegnaPrevista)),
                            testing::StartsWith("MOVIMENTO_"));
              }
              finestra->PictureOk_Click();
            }),
            "ERRORE: -2147220990\r\nMOVIMENTO CONTABILE INESISTENTE");
}

class PresumedScreenLetters : public PresumedScreen {
 protected:
  // Two documents apart only by the case of their letters, where the database tells such texts apart.
  PresumedScreenLetters()
      : PresumedScreen(test::DatiPresunti() +
                       "INSERT INTO MOVIMENTOCONTABILE VALUES (409,1,'N','ab','12306','2006','V');" +
                       test::Presunto("21,1,409,101,'N',106,30,30,'EUR','2006-03-10','2006-03-01','X'")) {}
};
INSTANTIATE_TEST_SUITE_P(Databases, PresumedScreenLetters, testing::Values("sqlite", "postgres"), test::NomeDelGenere);

TEST_P(PresumedScreenLetters, DocumentsApartOnlyByTheCaseOfTheirLettersGiveARecordEach) {
  const auto variazioni = Mostra([this] {
    ScegliBanca(Riga("AB123/06", "USD"), 1);
    EXPECT_EQ(NuovaBanca(Riga("ab123/06")), "||");
    ScegliBanca(Riga("ab123/06"), 1);
    finestra->PictureOk_Click();
  });
  ASSERT_THAT(variazioni, SizeIs(2));
  EXPECT_THAT((std::set<int>{variazioni[0].idMovimentoKey, variazioni[1].idMovimentoKey}), ElementsAre(401, 409));
}

class PresumedScreenEqualRows : public PresumedScreen {
 protected:
  // The same document, date, currency and bank, apart only by the original date, which the screen does not show.
  PresumedScreenEqualRows()
      : PresumedScreen(test::DatiPresunti() + test::Presunto("21,1,403,101,'N',107,0,5,'CHF','2006-02-28',NULL,'X'") +
                       test::Presunto("22,1,403,101,'N',107,0,5,'CHF','2006-02-28','2006-01-01','X'")) {}
};
INSTANTIATE_TEST_SUITE_P(Databases, PresumedScreenEqualRows, testing::ValuesIn(test::GeneriDiBase()),
                         test::NomeDelGenere);

TEST_P(PresumedScreenEqualRows, RowsWithEqualKeysAreBothListed) {
  Mostra([this] {
    EXPECT_THAT(InOrdine(FormPresunti::Ordine), testing::Contains("CD5/06").Times(3));
    const auto riga = Riga("CD5/06", "CHF", "5,00");
    Clic(riga, FormPresunti::NuovaBanca);
    finestra->cmbBanche2_Click(2);
    finestra->cmbBanche2_LostFocus();
    EXPECT_EQ(NuovaBanca(riga), "BANCA BETA|B06|x");
  });
}

} // namespace
} // namespace lumoscad
