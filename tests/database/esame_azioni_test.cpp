#include "BaseDelleAzioni.hpp"
#include "database/EsameRighe.hpp"

// What the database holds of a reply action that was asked of it.

namespace lumoscad::procedureLumoDB2 {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using Parametri = std::vector<std::string>;

class ExaminedActions : public test::BaseDelleAzioni {
 protected:
  [[nodiscard]] std::vector<RigaEsaminata> Esame(const Parametri& parametri) const {
    ModificaChiesta modifica;
    modifica.genere = ModificaChiesta::Genere::Azione;
    modifica.parametri = parametri;
    ado::Connection connection;
    base_.Apri(connection);
    return EsaminaRighe(connection, moduloDatabase::LeggiParametriDB2(Opzioni()), modifica);
  }
  [[nodiscard]] std::vector<StatoRiga> Stati(const Parametri& parametri) const {
    std::vector<StatoRiga> stati;
    for (const RigaEsaminata& riga : Esame(parametri)) {
      stati.push_back(riga.stato);
    }
    return stati;
  }
  /// As before, and done once the action was written.
  void ExpectBeforeAndDone(const Parametri& parametri) {
    EXPECT_THAT(Stati(parametri), Each(StatoRiga::ComePrima));
    ASSERT_EQ(Azione(parametri), "") << msg_.Errore;
    EXPECT_THAT(Stati(parametri), Each(StatoRiga::Fatta));
  }

  const Parametri item_{"01", "SCRIVISCADENZE", "C10", "AB   123", "", "1", "20060228", "20060705"};
  const Parametri movement_{"01", "EXTRASCRIVISCAD", "A", "2006", "15", "1", "20060331", "20060705"};
};

INSTANTIATE_TEST_SUITE_P(Databases, ExaminedActions, testing::ValuesIn(test::GeneriDiBase()), test::NomeDelGenere);

TEST_P(ExaminedActions, OfASuspendedItemAreAsBeforeUntilEveryInstalmentIsSuspended) {
  const Parametri suspend{"01", "SOSPESOCREA", "C10", "AB   123", ""};
  ExpectBeforeAndDone(suspend);
  EXPECT_EQ(Esame(suspend).front().riga, "partita AB   123 del conto C10");
  ExpectBeforeAndDone({"01", "SOSPESOCANCELLA", "C10", "AB   123", ""});
  EXPECT_THAT(Stati(suspend), ElementsAre(StatoRiga::ComePrima));
  base_.Esegui("UPDATE EVENTOCONTABILE SET SOSPESA='S' WHERE EVENTOCONTABILEKEY IN (1,2)");
  EXPECT_THAT(Stati(suspend), ElementsAre(StatoRiga::ComePrima));
  base_.Esegui("UPDATE EVENTOCONTABILE SET SOSPESA='S' WHERE EVENTOCONTABILEKEY=3");
  EXPECT_THAT(Stati(suspend), ElementsAre(StatoRiga::Fatta));
}

TEST_P(ExaminedActions, OfAPresumedDocumentReadTheSame) {
  ExpectBeforeAndDone({"01", "PRESUNTOCREA", "OC", "06", "123", "T01", ""});
  ExpectBeforeAndDone({"01", "PRESUNTOCANCELLA", "OC", "06", "123", "T01", ""});
}

TEST_P(ExaminedActions, OfADeletedMovementAreDoneOnceItIsGone) {
  const Parametri removal{"01", "EXTRADEL", "A", "2006", "15", ""};
  ExpectBeforeAndDone(removal);
  EXPECT_EQ(Esame(removal).front().riga, "documento A/2006/15 dell'azienda 01");
  EXPECT_THAT(Stati({"99", "EXTRADEL", "A", "2006", "15", ""}), ElementsAre(StatoRiga::Cambiata))
      << "a company that is not there tells nothing of its movements";
}

TEST_P(ExaminedActions, OfAnItemsDueDatesAreReadAGroupATime) {
  Parametri parametri = item_;
  parametri.insert(parametri.end(), {"2", "20060531", "20060805", "3", "20070101", "20070201"});
  EXPECT_THAT(Stati(parametri), ElementsAre(StatoRiga::ComePrima, StatoRiga::ComePrima, StatoRiga::Cambiata))
      << "no instalment has the third date";
  ASSERT_EQ(Azione(parametri), "") << msg_.Errore;
  EXPECT_THAT(Stati(parametri), ElementsAre(StatoRiga::Fatta, StatoRiga::Fatta, StatoRiga::Cambiata));
  EXPECT_EQ(Esame(parametri)[1].riga, "partita AB   123 del conto C10 scadenza del 31/05/2006");
  base_.Esegui("UPDATE EVENTOCONTABILE SET DATASCADENZA='2006-12-24' WHERE EVENTOCONTABILEKEY=4");
  EXPECT_THAT(Stati(parametri), ElementsAre(StatoRiga::ComePrima, StatoRiga::Fatta, StatoRiga::Cambiata))
      << "the procedure would write it";
}

TEST_P(ExaminedActions, OfTwoGroupsOfOneDateOfAnItemTheLastCounts) {
  Parametri parametri = item_;
  parametri.insert(parametri.end(), {"2", "20060228", "20060805"});
  ExpectBeforeAndDone(parametri);
}

TEST_P(ExaminedActions, OfAMovementsDueDatesAreReadAGroupATime) {
  Parametri parametri = movement_;
  parametri.insert(parametri.end(), {"2", "20060430", "20060805"});
  ExpectBeforeAndDone(parametri);
  base_.Esegui("UPDATE EVENTOCONTABILE SET DATASCADENZA='2006-12-24' WHERE EVENTOCONTABILEKEY=22");
  EXPECT_THAT(Stati(parametri), ElementsAre(StatoRiga::Fatta, StatoRiga::Cambiata));
  base_.Esegui("UPDATE EVENTOCONTABILE SET DATASCADENZA=NULL WHERE EVENTOCONTABILEKEY=21");
  EXPECT_THAT(Stati(parametri), Each(StatoRiga::Cambiata));
}

TEST_P(ExaminedActions, OfTwoGroupsOfOneDateOfAMovementTheFirstCounts) {
  Parametri parametri = movement_;
  parametri.insert(parametri.end(), {"2", "20060331", "20060805"});
  ExpectBeforeAndDone(parametri);
}

// What one group has moved cannot be told from what the next one is to move.
TEST_P(ExaminedActions, OfDatesThatMoveOneAfterTheOtherAreNeverCalledDoneBeforeTheyAre) {
  Parametri parametri = movement_;
  parametri[7] = "20060430";
  parametri.insert(parametri.end(), {"2", "20060430", "20060531"});
  EXPECT_THAT(Stati(parametri), Each(StatoRiga::ComePrima));
  base_.Esegui("UPDATE EVENTOCONTABILE SET DATASCADENZAORIGINALE='2006-04-30' WHERE EVENTOCONTABILEKEY=22");
  EXPECT_THAT(Stati(parametri), ElementsAre(StatoRiga::ComePrima, StatoRiga::Cambiata));
  ASSERT_EQ(Azione(parametri), "") << msg_.Errore;
  EXPECT_THAT(Stati(parametri), ElementsAre(StatoRiga::Fatta, StatoRiga::Cambiata));
}

TEST_P(ExaminedActions, OfADateThatStaysWriteTheOriginalOneAlone) {
  Parametri parametri = movement_;
  parametri[7] = "20060331";
  ExpectBeforeAndDone(parametri);
}

TEST_P(ExaminedActions, OfWhatIsNotThereAreChanged) {
  EXPECT_THAT(Stati({"01", "SOSPESOCREA", "C10", "NON C'E'", ""}), ElementsAre(StatoRiga::Cambiata));
  EXPECT_THAT(Stati({"01", "SOSPESOCREA", "C11", "SENZA RATE", ""}), ElementsAre(StatoRiga::Cambiata));
  EXPECT_THAT(Stati({"01", "PRESUNTOCREA", "OC", "06", "999", "T01", ""}), ElementsAre(StatoRiga::Cambiata));
  EXPECT_THAT(Stati({"01", "SCRIVISCADENZE", "C10", "NON C'E'", "", "1", "20060228", "20060705"}),
              ElementsAre(StatoRiga::Cambiata));
  EXPECT_THAT(Stati({"01", "EXTRASCRIVISCAD", "A", "2006", "99", "1", "20060331", "20060705"}),
              ElementsAre(StatoRiga::Cambiata));
}

TEST_P(ExaminedActions, OfAListThatCannotBeWrittenAreChanged) {
  Parametri parametri = item_;
  parametri[7] = "2006";
  EXPECT_THAT(Stati(parametri), ElementsAre(StatoRiga::Cambiata));
  EXPECT_THAT(Stati({"01", "SCRIVISCADENZE", "C10", "AB   123", "", "1", "20060228"}),
              ElementsAre(StatoRiga::Cambiata));
  EXPECT_THAT(Stati({"01", "SOSPESOCREA"}), ElementsAre(StatoRiga::Cambiata));
}

TEST_P(ExaminedActions, WithoutADatabaseSideAreNone) {
  EXPECT_THAT(Stati({"01", "EXTRACREA", "A", "2006", "15"}), IsEmpty());
  EXPECT_THAT(Stati({}), IsEmpty());
  EXPECT_THAT(Stati({"01", "SCRIVISCADENZE", "C10", "AB   123", ""}), IsEmpty()) << "no group at all";
}

TEST_P(ExaminedActions, AreOnlyRead) {
  banco_.statements.clear();
  const Parametri removal{"01", "EXTRADEL", "A", "2006", "15", ""};
  const Parametri suspension{"01", "SOSPESOCREA", "C10", "AB   123", ""};
  for (const Parametri& parametri : {item_, movement_, removal, suspension}) {
    EXPECT_EQ(Esame(parametri).size(), 1U);
  }
  EXPECT_THAT(banco_.statements, Each(testing::StartsWith("SELECT ")));
  NienteCambiato();
}

} // namespace
} // namespace lumoscad::procedureLumoDB2
