#include "SchermataSuBase.hpp"

namespace lumoscad {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class BankScreenConfirmation : public test::SchermataSuBase {};
INSTANTIATE_TEST_SUITE_P(Databases, BankScreenConfirmation, testing::ValuesIn(test::GeneriDiBase()),
                         test::NomeDelGenere);

TEST_P(BankScreenConfirmation, CarriesABankChange) {
  const auto variazioni = Mostra([this] {
    ScegliBanca(Riga("04/03/2006"), 1);
    finestra->PictureOk_Click();
  });
  ASSERT_EQ(variazioni.size(), 1U);
  const VariazioneCanalizzazione& v = variazioni[0];
  EXPECT_TRUE(v.isBancaChanged);
  EXPECT_FALSE(v.isScadenzaChanged);
  EXPECT_EQ(v.idPartitaKey, "201");
  EXPECT_EQ(v.CodiceConto, "C01");
  EXPECT_EQ(v.NumeroPartita, "2006   1");
  EXPECT_EQ(v.VecchiaBanca, "B06");
  EXPECT_EQ(v.NuovaBanca, "B07");
  EXPECT_EQ(v.ScadenzaOriginale, "31/01/2006");
  EXPECT_EQ(v.NumeroRata, "1");
  EXPECT_EQ(v.VecchiaScadenza, "04/03/2006");
  EXPECT_EQ(v.NuovaScadenza, "#null#");
  EXPECT_EQ(v.idMovimentoKey + v.Anno + v.Serie + v.Numero, "");
  EXPECT_EQ(schermata.MotivoChiusura(), "");
}

TEST_P(BankScreenConfirmation, CarriesADateChangeWithoutANewBank) {
  const auto variazioni = Mostra([this] {
    ScriviData(Riga("05/03/2006"), "010406");
    finestra->PictureOk_Click();
  });
  ASSERT_EQ(variazioni.size(), 1U);
  EXPECT_FALSE(variazioni[0].isBancaChanged);
  EXPECT_TRUE(variazioni[0].isScadenzaChanged);
  EXPECT_EQ(variazioni[0].VecchiaScadenza, "05/03/2006");
  EXPECT_EQ(variazioni[0].NuovaScadenza, "01/04/2006");
  EXPECT_EQ(variazioni[0].VecchiaBanca, "#null#");
  EXPECT_EQ(variazioni[0].NuovaBanca, "");
}

TEST_P(BankScreenConfirmation, CarriesMissingOldValuesAsNoValue) {
  const auto variazioni = Mostra([this] {
    ScriviData(Riga(""), "010406");
    finestra->PictureOk_Click();
  });
  ASSERT_EQ(variazioni.size(), 1U);
  EXPECT_EQ(variazioni[0].VecchiaScadenza, "#null#");
  EXPECT_EQ(variazioni[0].VecchiaBanca, "#null#");
  EXPECT_EQ(variazioni[0].ScadenzaOriginale, "");
  EXPECT_EQ(variazioni[0].NuovaScadenza, "01/04/2006");
}

TEST_P(BankScreenConfirmation, CarriesBothChangesInOneRecord) {
  const auto variazioni = Mostra([this] {
    ScriviData(Riga("04/03/2006"), "010406");
    ScegliBanca(Riga("04/03/2006"), 0);
    finestra->PictureOk_Click();
  });
  ASSERT_EQ(variazioni.size(), 1U);
  EXPECT_TRUE(variazioni[0].isBancaChanged);
  EXPECT_TRUE(variazioni[0].isScadenzaChanged);
  EXPECT_EQ(variazioni[0].NuovaBanca, "#null#");
  EXPECT_EQ(variazioni[0].NuovaScadenza, "01/04/2006");
}

TEST_P(BankScreenConfirmation, RemovesABankButNeverOneThatIsNotThere) {
  const auto variazioni = Mostra([this] {
    ScegliBanca(Riga("04/03/2006"), 0);
    ScegliBanca(Riga("05/03/2006"), 0);
    finestra->PictureOk_Click();
  });
  ASSERT_EQ(variazioni.size(), 1U);
  EXPECT_EQ(variazioni[0].CodiceConto, "C01");
  EXPECT_EQ(variazioni[0].NuovaBanca, "#null#");
  EXPECT_TRUE(variazioni[0].isBancaChanged);
}

TEST_P(BankScreenConfirmation, CarriesNothingForValuesThatEqualThePresentOnes) {
  EXPECT_THAT(Mostra([this] {
                ScriviData(Riga("04/03/2006"), "040306");
                ScegliBanca(Riga("04/03/2006"), 2);
                finestra->PictureOk_Click();
              }),
              IsEmpty());
  EXPECT_EQ(schermata.MotivoChiusura(), "");
}

TEST_P(BankScreenConfirmation, CarriesNothingForARefusedDate) {
  EXPECT_THAT(Mostra([this] {
                ScriviData(Riga("04/03/2006"), "31/13/06");
                EXPECT_EQ(righe.Testo(Riga("04/03/2006"), Schermata::NuovaScadenza), " ");
                finestra->PictureOk_Click();
              }),
              IsEmpty());
}

TEST_P(BankScreenConfirmation, IncludesADateStillBeingTyped) {
  const auto variazioni = Mostra([this] {
    Clic(Riga("04/03/2006"), Schermata::NuovaScadenza);
    finestra->TextScad_Change("010406");
    finestra->PictureOk_Click();
  });
  ASSERT_EQ(variazioni.size(), 1U);
  EXPECT_EQ(variazioni[0].NuovaScadenza, "01/04/2006");
}

TEST_P(BankScreenConfirmation, IncludesABankStillBeingChosen) {
  const auto variazioni = Mostra([this] {
    Clic(Riga("05/03/2006"), Schermata::NuovaBanca);
    finestra->cmbBanche2_Click(1);
    finestra->PictureOk_Click();
  });
  ASSERT_EQ(variazioni.size(), 1U);
  EXPECT_EQ(variazioni[0].NuovaBanca, "B07");
}

TEST_P(BankScreenConfirmation, GoesByTheValuesNotByTheTicks) {
  const auto variazioni = Mostra([this] {
    finestra->TextScadenza_Change("010406");
    Clic(Riga("04/03/2006"), Schermata::Radio1);
    finestra->TextScadenza_Click(); // takes the tick away, and leaves the date
    finestra->PictureOk_Click();
  });
  ASSERT_EQ(variazioni.size(), 1U);
  EXPECT_EQ(variazioni[0].NuovaScadenza, "01/04/2006");
}

TEST_P(BankScreenConfirmation, FollowsTheOrderInWhichTheRowsShow) {
  const auto date = [this](bool inverso) {
    std::vector<std::string> vecchie;
    for (const auto& v : Mostra([this, inverso] {
           for (const char* scadenza : {"05/03/2006", "01/04/2006", "04/03/2006"}) {
             ScriviData(Riga(scadenza), "020406");
           }
           finestra->TLwTestata_Click(5);
           if (inverso) {
             finestra->TLwTestata_Click(5);
           }
           finestra->PictureOk_Click();
         })) {
      vecchie.push_back(v.VecchiaScadenza);
    }
    return vecchie;
  };
  EXPECT_THAT(date(false), ElementsAre("04/03/2006", "05/03/2006", "01/04/2006"));
  EXPECT_THAT(date(true), ElementsAre("01/04/2006", "05/03/2006", "04/03/2006"));
}

TEST_P(BankScreenConfirmation, IsNoneWhenTheScreenIsLeft) {
  for (const bool casella : {false, true}) {
    EXPECT_THAT(Mostra([this, casella] {
                  ScriviData(Riga("04/03/2006"), "010406");
                  casella ? finestra->Form_QueryUnload() : finestra->PictureAnnulla_Click();
                }),
                IsEmpty());
    EXPECT_EQ(schermata.MotivoChiusura(), "closed");
  }
}

TEST_P(BankScreenConfirmation, NeverRepeatsAnEarlierShowing) {
  EXPECT_EQ(Mostra([this] {
              ScriviData(Riga("04/03/2006"), "010406");
              finestra->PictureOk_Click();
            }).size(),
            1U);
  EXPECT_THAT(Mostra(), IsEmpty());
  EXPECT_EQ(schermata.MotivoChiusura(), "closed");
  EXPECT_THAT(Mostra([this] {
                EXPECT_EQ(righe.Testo(Riga("04/03/2006"), Schermata::NuovaScadenza), "04/03/2006");
                finestra->PictureOk_Click();
              }),
              IsEmpty());
  EXPECT_EQ(schermata.MotivoChiusura(), "");
}

TEST_P(BankScreenConfirmation, LeavesTheDatabaseAlone) {
  const auto prima = test::Rate(base);
  static_cast<void>(Mostra([this] {
    ScriviData(Riga("04/03/2006"), "010406");
    finestra->PictureOk_Click();
  }));
  EXPECT_EQ(test::Rate(base), prima);
}

} // namespace
} // namespace lumoscad
