#include "DateImpossibili.hpp"
#include "SchermataSuBase.hpp"

namespace lumoscad {
namespace {

using testing::ElementsAre;
using testing::StartsWith;

class BankScreenLoad : public test::SchermataSuBase {};
INSTANTIATE_TEST_SUITE_P(Databases, BankScreenLoad, testing::ValuesIn(test::GeneriDiBase()), test::NomeDelGenere);
class BankScreenBanks : public test::SchermataSuBase {};
INSTANTIATE_TEST_SUITE_P(Databases, BankScreenBanks, testing::ValuesIn(test::GeneriDiBase()), test::NomeDelGenere);

TEST_P(BankScreenLoad, FillsTheTextsOfARow) {
  static_cast<void>(Mostra([this] {
    EXPECT_THAT(Testi(Riga("04/03/2006")),
                ElementsAre("ROSSI SRL", "2006   1", "04/03/2006", "31/01/2006", "BANCA BETA", "1.234,50", "",
                            "04/03/2006", "1", "", "BANCA BETA", "2006/03/04"));
  }));
}

TEST_P(BankScreenLoad, KeepsTheCodesInTheTags) {
  static_cast<void>(Mostra([this] {
    const auto riga = Riga("04/03/2006");
    EXPECT_EQ(righe.Tag(riga, Schermata::Conto), "C01");
    EXPECT_EQ(righe.Tag(riga, Schermata::Partita), "201");
    EXPECT_EQ(righe.Tag(riga, Schermata::Banca), "B06");
    EXPECT_EQ(righe.Tag(riga, Schermata::NuovaScadenza), "");
    EXPECT_EQ(righe.Tag(riga, Schermata::NuovaBanca), "");
    EXPECT_FALSE(righe.Spuntata(riga, 0));
    EXPECT_FALSE(righe.Spuntata(riga, 1));
  }));
}

TEST_P(BankScreenLoad, SkipsInstalmentsThatSumUpToZero) {
  static_cast<void>(Mostra([this] {
    EXPECT_EQ(righe.Quante(), 4U);
    for (std::size_t riga = 0; riga < righe.Quante(); ++riga) {
      EXPECT_NE(righe.Testo(riga, Schermata::Importo), "0,00");
      EXPECT_NE(righe.Testo(riga, Schermata::Scadenza), "01/05/2006");
    }
  }));
}

TEST_P(BankScreenLoad, SkipsAnAmountThatRoundsToZero) {
  base.Esegui("UPDATE EVENTOCONTABILE SET IMPORTOEURO=0.004 WHERE EVENTOCONTABILEKEY=2");
  static_cast<void>(Mostra([this] { EXPECT_EQ(righe.Quante(), 3U); }));
}

TEST_P(BankScreenLoad, ListsNullDatesAndANullAmountAsEmptyCells) {
  static_cast<void>(Mostra([this] {
    EXPECT_THAT(Testi(Riga("")), ElementsAre("BIANCHI", "2006   2", "", "", "", "", "", "", "4", "", "", ""));
  }));
}

TEST_P(BankScreenLoad, StopsAtADateThatIsNoneAndNamesAccountColumnAndValue) {
  for (const char* colonna : {"DATASCADENZA", "DATASCADENZAORIGINALE"}) {
    for (const auto& [scritta, letta] : test::DateImpossibili(GetParam())) {
      test::ScriviDataImpossibile(base, GetParam(), colonna, scritta, 3);
      EXPECT_EQ(Fallimento([this] { EXPECT_LT(righe.Quante(), 4U); }),
                "ERRORE: 13\r\nData non valida nella base dati: conto C01, colonna " + std::string(colonna) +
                    ", valore «" + letta + "».")
          << scritta;
    }
    base.Esegui("UPDATE EVENTOCONTABILE SET DATASCADENZA='2006-04-01' WHERE EVENTOCONTABILEKEY=3");
  }
}

TEST_P(BankScreenLoad, StopsAtADateThatIsNoneAlsoInARowThatIsNotListed) {
  base.Esegui("UPDATE EVENTOCONTABILE SET IMPORTOEURO=0 WHERE EVENTOCONTABILEKEY=3");
  const auto [scritta, letta] = test::DateImpossibili(GetParam()).front();
  test::ScriviDataImpossibile(base, GetParam(), "DATASCADENZA", scritta, 3);
  EXPECT_EQ(Fallimento([] {}),
            "ERRORE: 13\r\nData non valida nella base dati: conto C01, colonna DATASCADENZA, valore «" +
                std::string(letta) + "».");
}

TEST_P(BankScreenLoad, ShowsANullBankAsEmptyTextAndTag) {
  static_cast<void>(Mostra([this] {
    const auto riga = Riga("05/03/2006");
    EXPECT_EQ(righe.Testo(riga, Schermata::Banca), "");
    EXPECT_EQ(righe.Tag(riga, Schermata::Banca), "");
    EXPECT_EQ(NuovaBanca(riga), "||");
  }));
}

TEST_P(BankScreenLoad, NeverTrimsTheTextsOfTheDatabase) {
  base.Esegui("UPDATE CONTOCONTABILE SET DESCRIZIONEVOCE=' ROSSI SRL  ' WHERE CODICECONTO='C01'");
  static_cast<void>(Mostra([this] { EXPECT_EQ(righe.Testo(Riga("04/03/2006"), Schermata::Conto), " ROSSI SRL  "); }));
}

TEST_P(BankScreenLoad, GivesEachRowItsItemKey) {
  static_cast<void>(Mostra([this] {
    EXPECT_EQ(schermata.ChiaveElemento(Riga("04/03/2006")), "K_C01_2006   1_04/03/2006131/01/2006_B06");
    EXPECT_EQ(schermata.ChiaveElemento(Riga("")), "K_C02_2006   2_4_");
  }));
}

TEST_P(BankScreenLoad, KeepsInstalmentsOfOneItemAndDateApart) {
  base.Esegui("UPDATE EVENTOCONTABILE SET DATASCADENZA='2006-03-04', BANCAPRESENTAZIONE_KEY=106, NUMERORATA=1 "
              "WHERE EVENTOCONTABILEKEY=3");
  base.Esegui(test::Rata("8,1,301,201,101,'C','N','2006-03-04','2006-04-01',2,106,7"));
  static_cast<void>(Mostra([this] {
    std::vector<std::string> chiavi;
    for (std::size_t riga = 0; riga < righe.Quante(); ++riga) {
      if (righe.Testo(riga, Schermata::Scadenza) == "04/03/2006") {
        chiavi.push_back(schermata.ChiaveElemento(riga));
      }
    }
    EXPECT_THAT(chiavi, testing::UnorderedElementsAre("K_C01_2006   1_04/03/2006131/01/2006_B06",
                                                      "K_C01_2006   1_04/03/2006101/04/2006_B06",
                                                      "K_C01_2006   1_04/03/2006201/04/2006_B06"));
  }));
}

TEST_P(BankScreenLoad, LetsEventsRunOnceARecord) {
  static_cast<void>(Mostra());
  EXPECT_EQ(banco.desktop.breaths, 5U); // four rows and the one skipped
}

TEST_P(BankScreenLoad, LeavesTheHeaderOfCustomerAndItemBlank) {
  static_cast<void>(Mostra([this] {
    std::vector<std::string> nomi;
    for (const ListLabel& etichetta : finestra->Description().labels) {
      nomi.push_back(etichetta.name);
      EXPECT_EQ(etichetta.text, "");
    }
    EXPECT_THAT(nomi, ElementsAre("lblClienteFornitore", "lblClienteFornitoreValue", "lblPartitaMovimento",
                                  "lblPartitaMovimentoValue"));
    EXPECT_EQ(finestra->Description().dateField, "Nuova scadenza");
    EXPECT_EQ(finestra->Description().bankField, "Nuova banca");
  }));
}

TEST_P(BankScreenLoad, ShowsWhatWasFoundAndThenRaisesAFailure) {
  base.Esegui("DELETE FROM AZIENDELINEE");
  bool mostrata = false;
  EXPECT_EQ(Fallimento([&] {
              mostrata = true;
              EXPECT_EQ(righe.Quante(), 0U);
              EXPECT_EQ(finestra->Description().banks.size(), 3U);
            }),
            "ERRORE: -2147220990\r\nAZIENDA INESISTENTE");
  EXPECT_TRUE(mostrata);
}

/// Only SQLite keeps a text that is no date in a column of dates.
class BankScreenOddDate : public test::SchermataSuBase {};
INSTANTIATE_TEST_SUITE_P(Databases, BankScreenOddDate, testing::Values("sqlite"), test::NomeDelGenere);

TEST_P(BankScreenOddDate, KeepsTheRowsReadBeforeIt) {
  base.Esegui("UPDATE EVENTOCONTABILE SET DATASCADENZAORIGINALE='domani' WHERE EVENTOCONTABILEKEY=2");
  std::size_t quante = 99;
  EXPECT_THAT(Fallimento([&] { quante = righe.Quante(); }), StartsWith("ERRORE: "));
  EXPECT_EQ(quante, 3U); // the fourth is the one that cannot be read
}

TEST_P(BankScreenLoad, RaisesAFailureOfTheConnectionOnceTheScreenHasClosed) {
  stato().ComandoCorrente = "BANCA /CREDITI";
  EXPECT_THAT(Fallimento([this] { EXPECT_EQ(finestra->Description().banks, std::vector<std::string>{" "}); }),
              StartsWith("ERRORE: -"));
  EXPECT_EQ(banco.desktop.windows, 1U);
}

TEST_P(BankScreenLoad, RaisesAFailureOfTheStatement) {
  procedureLumoDB2::FiltroScadenze filtro;
  filtro.parConto = "D'ARCO";
  EXPECT_THROW(static_cast<void>(Mostra({}, filtro)), RuntimeError);
  EXPECT_EQ(banco.desktop.windows, 1U);
}

TEST_P(BankScreenBanks, AreABlankAndTheAccountsByDescriptionInBothFields) {
  static_cast<void>(Mostra([this] {
    EXPECT_THAT(finestra->Description().banks, ElementsAre(" ", "BANCA ALFA", "BANCA BETA"));
    EXPECT_EQ(finestra->Description().cellBanks, finestra->Description().banks);
    EXPECT_EQ(finestra->Stato().bankIndex, 0);
  }));
}

TEST_P(BankScreenBanks, StopAtACodeThatComesTwiceAndReportIt) {
  base.Esegui(base.Contesto().DropIndex("CONTO_CODICE", "CONTOCONTABILE"));
  base.Esegui("INSERT INTO CONTOCONTABILE VALUES (199,'b07','BANCA BIS','06',NULL,'N')");
  std::vector<std::string> voci;
  std::size_t quante = 0;
  const std::string testo = Fallimento([&] {
    voci = finestra->Description().banks;
    quante = righe.Quante();
  });
  EXPECT_THAT(testo, StartsWith("ERRORE: 457\r\n"));
  EXPECT_THAT(voci, ElementsAre(" ", "BANCA ALFA", "BANCA BETA"));
  EXPECT_EQ(quante, 4U);
}

TEST_P(BankScreenBanks, ThatCouldNotAllBeListedDoNotKeepBackWhatWasConfirmed) {
  base.Esegui(base.Contesto().DropIndex("CONTO_CODICE", "CONTOCONTABILE"));
  base.Esegui("INSERT INTO CONTOCONTABILE VALUES (199,'b07','BANCA BIS','06',NULL,'N')");
  banco.desktop.scripts.emplace_back([this](ListWindow& aperta) {
    finestra = &aperta;
    ScriviData(Riga("04/03/2006"), "010406");
    finestra->PictureOk_Click();
  });
  VariazioniCanalizzazione variazioni;
  EXPECT_THROW(schermata.VisualizzaScadenzeBanche("001", SoloCrediti(), variazioni), RuntimeError);
  ASSERT_EQ(variazioni.size(), 1U);
  EXPECT_EQ(variazioni[0].NuovaScadenza, "01/04/2006");
}

TEST_P(BankScreenBanks, GiveTheirCodeWhenChosenInPlace) {
  static_cast<void>(Mostra([this] {
    const auto riga = Riga("05/03/2006");
    ScegliBanca(riga, 2);
    EXPECT_EQ(NuovaBanca(riga), "BANCA BETA|B06|x");
    EXPECT_EQ(righe.Testo(riga, Schermata::Banca), "");
    EXPECT_EQ(NuovaBanca(Riga("04/03/2006")), "BANCA BETA||");
  }));
}

TEST_P(BankScreenBanks, AreRemovedByTheBlankEntryOnARowThatHasOne) {
  static_cast<void>(Mostra([this] {
    const auto riga = Riga("04/03/2006");
    ScegliBanca(riga, 0);
    EXPECT_EQ(NuovaBanca(riga), "ANNULLA|#null#|x");
  }));
}

TEST_P(BankScreenBanks, StayNoneByTheBlankEntryOnARowWithout) {
  static_cast<void>(Mostra([this] {
    const auto riga = Riga("05/03/2006");
    ScegliBanca(riga, 0);
    EXPECT_EQ(NuovaBanca(riga), "||x");
    ScegliBanca(riga, 1);
    EXPECT_EQ(NuovaBanca(riga), "BANCA ALFA|B07|x");
    ScegliBanca(riga, 0);
    EXPECT_EQ(NuovaBanca(riga), "||x");
  }));
}

TEST_P(BankScreenBanks, ThatAreNotOfferedAreRemovedByLeavingTheEditorOnTheBlankEntry) {
  static_cast<void>(Mostra([this] {
    const auto riga = Riga("01/04/2006");
    ASSERT_EQ(righe.Testo(riga, Schermata::Banca), "BANCA CHIUSA");
    Clic(riga, Schermata::NuovaBanca);
    EXPECT_EQ(finestra->Stato().bank.index, 0);
    finestra->cmbBanche2_LostFocus();
    EXPECT_EQ(NuovaBanca(riga), "ANNULLA|#null#|x");
  }));
}

TEST_P(BankScreenBanks, OpenOnTheRowsPresentChoice) {
  static_cast<void>(Mostra([this] {
    const auto riga = Riga("05/03/2006");
    ScegliBanca(riga, 1);
    Clic(riga, Schermata::NuovaBanca);
    EXPECT_EQ(finestra->Stato().bank.index, 1);
  }));
}

TEST_P(BankScreenBanks, OfTheTopFieldAreCopiedByTheTickAndTakenBackByTheSecondClick) {
  static_cast<void>(Mostra([this] {
    const auto riga = Riga("04/03/2006");
    finestra->cmbBanche_Click(1);
    EXPECT_EQ(NuovaBanca(riga), "BANCA BETA||");
    Clic(riga, Schermata::Radio2);
    EXPECT_EQ(NuovaBanca(riga), "BANCA ALFA|B07|x");
    Clic(riga, Schermata::Radio2);
    EXPECT_EQ(NuovaBanca(riga), "BANCA BETA||");
  }));
}

} // namespace
} // namespace lumoscad
