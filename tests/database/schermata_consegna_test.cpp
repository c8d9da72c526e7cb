#include "DateImpossibili.hpp"
#include "SchermataPresunti.hpp"
#include "screens/FormConsegna.hpp"

namespace lumoscad {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class DeliveryScreen : public test::SchermataPresunti<FormConsegna> {
 protected:
  explicit DeliveryScreen(const std::string& dati = "") : SchermataPresunti(&FormConsegna::elaboraConsegna, dati) {}

  void ScriviData(std::size_t riga, const char* testo) const {
    ScriviInCella(riga, FormConsegna::NuovaConsegna, testo);
  }
  /// The new date and the tick.
  [[nodiscard]] std::string Nuova(std::size_t riga) const {
    return std::string(righe.Testo(riga, FormConsegna::NuovaConsegna)) + (righe.Spuntata(riga, 0) ? "|x" : "|");
  }
};
INSTANTIATE_TEST_SUITE_P(Databases, DeliveryScreen, testing::ValuesIn(test::GeneriDiBase()), test::NomeDelGenere);

TEST_P(DeliveryScreen, ShowsOneRowADateAndCurrencyOfADocument) {
  Mostra([this] {
    EXPECT_THAT(Testi(Riga("AB123/06", "USD")),
                ElementsAre("ROSSI SRL", "AB123/06", "10/04/2006", "USD", "100,50", "80,00", "", "", "2006/04/10"));
    EXPECT_EQ(righe.Quante(), 6U);
  });
}

TEST_P(DeliveryScreen, HasNoTagWhileItIsLoadingAndItsModeOnceItIsLoaded) {
  std::vector<std::string> durante;
  schermata.griglia().Tag = "CONSEGNA"; // of an earlier showing
  AscoltaIlTag(durante);
  Mostra([&] {
    EXPECT_EQ(schermata.griglia().Tag, "CONSEGNA");
    EXPECT_EQ(schermata.griglia().modo, "CONSEGNA");
  });
  EXPECT_THAT(durante, testing::AllOf(testing::Not(testing::IsEmpty()), testing::Each("")));
}

TEST_P(DeliveryScreen, DescribesItsWindow) {
  Mostra([this] {
    EXPECT_EQ(finestra->Description().name, "FormConsegna");
    EXPECT_EQ(finestra->Description().listName, "LVScadenzePresunti");
    EXPECT_EQ(finestra->Description().fontName, "Verdana");
    EXPECT_EQ(finestra->Description().dateField, "Nuova consegna");
    EXPECT_FALSE(finestra->Description().bankField.has_value());
    EXPECT_THAT(Testate(),
                ElementsAre("Conto", "Ordine", "Consegna prevista", "Divisa", "Fatturato", "Fatturato Euro"));
    EXPECT_EQ(finestra->Description().columns[FormConsegna::NuovaConsegna].key, "KNuovaScadenza");
    EXPECT_EQ(finestra->Description().columns[FormConsegna::NuovaConsegna].headingText, "Nuova Consegna");
  });
}

TEST_P(DeliveryScreen, RowsCarryTheCodesThatAChangeNeeds) {
  Mostra([this] {
    const auto riga = Riga("AB123/06", "EUR", "50,00");
    EXPECT_EQ(righe.Tag(riga, FormConsegna::Conto), "C01");
    EXPECT_EQ(righe.Tag(riga, FormConsegna::Ordine), "MOVIMENTO_401");
    EXPECT_EQ(righe.Tag(riga, FormConsegna::ConsegnaPrevista), "01/03/2006");
    EXPECT_EQ(righe.Tag(Riga("AB123/06", "USD"), FormConsegna::ConsegnaPrevista), "");
    EXPECT_EQ(schermata.ChiaveElemento(riga), "K_C01_AB123/06_10/03/2006_EUR");
  });
}

TEST_P(DeliveryScreen, ANullFieldShowsAnEmptyCell) {
  Mostra([this] {
    EXPECT_THAT(Testi(Riga("AB124/06")),
                ElementsAre("BIANCHI", "AB124/06", "", "EUR", "1.234,50", "1.234,50", "", "", ""));
  });
}

TEST_P(DeliveryScreen, ARowWithNothingInItsCurrencyIsNotListedWhateverItsEuros) {
  Mostra([this] {
    EXPECT_THAT(InOrdine(FormConsegna::Divisa), testing::Contains("USD").Times(1))
        << "AB124/06 has 0,00 USD and 5 euro";
    EXPECT_EQ(righe.Testo(Riga("CD5/06", "CHF"), FormConsegna::FatturatoEuro), "0,00");
  });
}

TEST_P(DeliveryScreen, ANewDateGivesARecordOfItsRow) {
  const auto variazioni = Mostra([this] {
    ScriviData(Riga("AB123/06", "EUR", "50,00"), "110306");
    EXPECT_EQ(Nuova(Riga("AB123/06", "EUR", "50,00")), "11/03/2006|");
    EXPECT_EQ(Nuova(Riga("AB123/06", "EUR", "100,00")), "|") << "a row of the same key";
    finestra->PictureOk_Click();
  });
  ASSERT_THAT(variazioni, SizeIs(1));
  const VariazioneConsegna& v = variazioni[0];
  EXPECT_EQ(v.CodiceConto, "C01");
  EXPECT_EQ(v.idMovimentoKey, 401);
  EXPECT_EQ(v.Serie, "AB");
  EXPECT_EQ(v.Numero, "123");
  EXPECT_EQ(v.Anno, "06");
  EXPECT_EQ(v.Consegna, "10/03/2006");
  EXPECT_EQ(v.NuovaConsegna, "11/03/2006");
  EXPECT_EQ(v.ConsegnaOrigine, "01/03/2006");
  EXPECT_TRUE(v.isConsegnaChanged);
  EXPECT_FALSE(v.isBancaChanged);
  EXPECT_EQ(v.idOrdineKey + v.VecchiaBanca + v.NuovaBanca, "");
}

TEST_P(DeliveryScreen, TwoRowsOfADocumentGiveTwoRecords) {
  const auto variazioni = Mostra([this] {
    ScriviData(Riga("AB123/06", "EUR", "50,00"), "11/3/2006");
    ScriviData(Riga("AB123/06", "USD"), "12/4/06");
    finestra->TLwTestata_Click(3);
    finestra->PictureOk_Click();
  });
  ASSERT_THAT(variazioni, SizeIs(2));
  EXPECT_EQ(variazioni[0].NuovaConsegna, "11/03/2006");
  EXPECT_EQ(variazioni[1].NuovaConsegna, "12/04/2006");
  EXPECT_EQ(variazioni[1].ConsegnaOrigine, "");
}

TEST_P(DeliveryScreen, ThePlannedDateTypedAgainIsNoChange) {
  EXPECT_THAT(Mostra([this] {
                ScriviData(Riga("AB123/06", "USD"), "100406");
                EXPECT_EQ(Nuova(Riga("AB123/06", "USD")), "10/04/2006|");
                finestra->PictureOk_Click();
              }),
              IsEmpty());
}

TEST_P(DeliveryScreen, ADateStillOpenInTheEditorCounts) {
  EXPECT_THAT(Mostra([this] {
                Clic(Riga("AB123/06", "USD"), FormConsegna::NuovaConsegna);
                finestra->TextScad_Change("130406");
                finestra->PictureOk_Click();
              }),
              SizeIs(1));
}

TEST_P(DeliveryScreen, AnEmptiedEditorLeavesTheCellEmpty) {
  EXPECT_THAT(Mostra([this] {
                const auto riga = Riga("AB123/06", "USD");
                ScriviData(riga, "130406");
                ScriviData(riga, "");
                EXPECT_EQ(Nuova(riga), "|");
                finestra->PictureOk_Click();
              }),
              IsEmpty());
  EXPECT_THAT(banco.desktop.box, IsEmpty());
}

TEST_P(DeliveryScreen, BlanksInTheEditorAreCheckedAsADate) {
  EXPECT_THAT(Mostra([this] {
                ScriviData(Riga("AB123/06", "USD"), " ");
                EXPECT_EQ(Nuova(Riga("AB123/06", "USD")), " |");
                finestra->PictureOk_Click();
              }),
              IsEmpty());
  EXPECT_EQ(banco.desktop.box.size(), 1U);
}

TEST_P(DeliveryScreen, TheEditedRowIsFoundAgainAfterSorting) {
  Mostra([this] {
    const auto riga = Riga("AB123/06", "USD");
    Clic(riga, FormConsegna::NuovaConsegna);
    finestra->TextScad_Change("130406");
    finestra->TLwTestata_Click(3);
    finestra->TLwTestata_Click(3);
    finestra->TextScad_KeyPress(13);
    EXPECT_EQ(Nuova(riga), "13/04/2006|");
  });
}

TEST_P(DeliveryScreen, ARefusedDateIsReportedAndIsNoChange) {
  EXPECT_THAT(Mostra([this] {
                ScriviData(Riga("AB123/06", "USD"), "310206");
                EXPECT_EQ(Nuova(Riga("AB123/06", "USD")), " |");
                finestra->PictureOk_Click();
              }),
              IsEmpty());
  EXPECT_THAT(banco.desktop.box, ElementsAre(testing::StartsWith("Data errata: ")));
}

TEST_P(DeliveryScreen, ADocumentWithoutADateReceivesOne) {
  const auto variazioni = Mostra([this] {
    ScriviData(Riga("AB124/06"), "130406");
    finestra->PictureOk_Click();
  });
  ASSERT_THAT(variazioni, SizeIs(1));
  EXPECT_EQ(variazioni[0].Consegna, "#null#");
  EXPECT_EQ(variazioni[0].NuovaConsegna, "13/04/2006");
  EXPECT_EQ(variazioni[0].ConsegnaOrigine, "");
}

TEST_P(DeliveryScreen, ATickGivesTheRowTheTopDateNormalised) {
  Mostra([this] {
    finestra->TextScadenza_Change("1/5/06");
    Clic(Riga("AB123/06", "USD"), FormConsegna::Radio);
    EXPECT_EQ(Nuova(Riga("AB123/06", "USD")), "01/05/2006|x");
    EXPECT_EQ(finestra->Stato().dueDateText, "01/05/2006");
    EXPECT_EQ(Nuova(Riga("AB123/06", "EUR", "50,00")), "|") << "the other rows of the document stay";
    Clic(Riga("AB123/06", "USD"), FormConsegna::Radio);
    EXPECT_EQ(Nuova(Riga("AB123/06", "USD")), "|");
  });
}

TEST_P(DeliveryScreen, ATickWithoutATopDateTicksARowThatDoesNotChange) {
  EXPECT_THAT(Mostra([this] {
                Clic(Riga("AB123/06", "USD"), FormConsegna::Radio);
                EXPECT_EQ(Nuova(Riga("AB123/06", "USD")), "|x");
                finestra->PictureOk_Click();
              }),
              IsEmpty());
}

TEST_P(DeliveryScreen, AClickInTheTopDateTakesAllTicksOff) {
  Mostra([this] {
    finestra->TextScadenza_Change("1/5/06");
    Clic(Riga("AB123/06", "USD"), FormConsegna::Radio);
    Clic(Riga("AB124/06"), FormConsegna::NuovaConsegna);
    finestra->TextScad_Change("020506");
    finestra->TextScadenza_Click();
    EXPECT_FALSE(finestra->Stato().data.visible);
    EXPECT_EQ(Nuova(Riga("AB124/06")), "02/05/2006|");
    EXPECT_EQ(Nuova(Riga("AB123/06", "USD")), "01/05/2006|");
  });
}

TEST_P(DeliveryScreen, TheEditorLiesOverTheNewDateCell) {
  Mostra([this] {
    Clic(Riga("AB124/06"), FormConsegna::NuovaConsegna);
    EXPECT_TRUE(finestra->Stato().data.visible);
    EXPECT_EQ(finestra->Stato().data.width, finestra->Description().columns[FormConsegna::NuovaConsegna].width - 60);
    Clic(Riga("AB124/06"), FormConsegna::Divisa);
    EXPECT_FALSE(finestra->Stato().data.visible);
  });
}

TEST_P(DeliveryScreen, SortsByAccountDocumentAndDateOnly) {
  Mostra([this] {
    finestra->TLwTestata_Click(3);
    const std::vector<std::string> perData = {"", "28/02/2006", "10/03/2006", "10/03/2006", "10/04/2006", "01/01/2007"};
    EXPECT_EQ(InOrdine(FormConsegna::ConsegnaPrevista), perData);
    for (const int immobile : {4, 5, 6}) {
      finestra->TLwTestata_Click(immobile);
      EXPECT_EQ(InOrdine(FormConsegna::ConsegnaPrevista), perData) << immobile;
    }
    finestra->TLwTestata_Click(3);
    EXPECT_EQ(InOrdine(FormConsegna::ConsegnaPrevista).front(), "01/01/2007");
    finestra->TLwTestata_Click(1);
    EXPECT_EQ(InOrdine(FormConsegna::Conto).front(), "BIANCHI");
    finestra->TLwTestata_Click(2);
    EXPECT_EQ(InOrdine(FormConsegna::Ordine).front(), "AB123/06");
  });
}

TEST_P(DeliveryScreen, AnnullaAndTheCloseBoxHandBackNothing) {
  for (const bool annulla : {true, false}) {
    EXPECT_THAT(Mostra([&] {
                  ScriviData(Riga("AB123/06", "USD"), "130406");
                  annulla ? finestra->PictureAnnulla_Click() : finestra->Form_QueryUnload();
                }),
                IsEmpty());
    EXPECT_EQ(schermata.MotivoChiusura(), "closed");
  }
}

TEST_P(DeliveryScreen, AFailureToLoadIsRaisedAfterTheWindowWasShown) {
  filtro.parSerie = "ZZ";
  EXPECT_EQ(Fallimento([this] { EXPECT_EQ(finestra->RowCount(), 0U); }),
            "ERRORE: -2147220990\r\nMOVIMENTO CONTABILE INESISTENTE");
  EXPECT_EQ(banco.desktop.windows, 1U);
}

TEST_P(DeliveryScreen, ADateThatIsNoneStopsTheLoadAndIsNamedWithAccountAndColumn) {
  for (const auto& [colonna, nome] : std::vector<std::pair<std::string, std::string>>{
           {"DATACONSEGNA", "DATACONSEGNA"}, {"DATACONSEGNAPRODUZIONE", "DATACONSEGNAORIGINE"}}) {
    for (const auto& [scritta, letta] : test::DateImpossibili(GetParam())) {
      test::ScriviDataImpossibile(base, GetParam(), colonna, scritta, 3);
      EXPECT_EQ(Fallimento([this] { EXPECT_LT(righe.Quante(), 6U); }),
                "ERRORE: 13\r\nData non valida nella base dati: conto C01, colonna " + nome + ", valore «" + letta +
                    "».")
          << scritta;
    }
    base.Esegui("UPDATE EVENTOCONTABILE SET DATACONSEGNA='2006-04-10' WHERE EVENTOCONTABILEKEY=3");
  }
}

class DeliveryScreenNullAmount : public DeliveryScreen {
 protected:
  DeliveryScreenNullAmount()
      : DeliveryScreen(test::DatiPresunti() +
                       test::Presunto("31,1,403,101,'N',NULL,NULL,NULL,NULL,'2006-02-27',NULL,NULL")) {}
};
INSTANTIATE_TEST_SUITE_P(Databases, DeliveryScreenNullAmount, testing::ValuesIn(test::GeneriDiBase()),
                         test::NomeDelGenere);

TEST_P(DeliveryScreenNullAmount, ARowOfNullsIsListedWithEmptyCells) {
  Mostra([this] {
    EXPECT_THAT(Testi(Riga("CD5/06", "")),
                ElementsAre("ROSSI SRL", "CD5/06", "27/02/2006", "", "", "", "", "", "2006/02/27"));
  });
}

} // namespace
} // namespace lumoscad
