#include "NotaSuBase.hpp"
#include "common/Testo.hpp"
#include "entry/RigheDubbie.hpp"
#include "platform/LocalFile.hpp"
#include "support/OdbcConfiguration.hpp"

#include <gmock/gmock.h>

#include <chrono>
#include <string>
#include <string_view>
#include <thread>

// What the server itself says of a note's transaction, and whose database a note is of.

namespace lumoscad {
namespace {

using ado::TransactionMark;
using test::NotaSuBase;
using testing::AllOf;
using testing::Each;
using testing::ElementsAreArray;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

const test::ModificaProvata& UnaLista() {
  return test::TrovaModifica("Crediti");
}

/// A list whose note holds by what its transaction can be asked for.
class NoteOfATransaction : public testing::TestWithParam<const char*>, protected NotaSuBase {
 protected:
  explicit NoteOfATransaction(const test::ModificaProvata& provata = UnaLista()) : NotaSuBase(GetParam(), provata) {}

  /// Carries the change out, and keeps the mark of its transaction.
  void Registra() {
    std::string testo;
    stato().notaInCorso.Riprendi([&testo](std::string_view transazione) { testo = transazione; });
    MsgAnnulla msg;
    EXPECT_EQ(test::EseguiModifica(modifica, msg), "") << msg.Errore;
    stato().notaInCorso.Riprendi(nullptr);
    segno_ = TransactionMark::FromText(testo);
    EXPECT_EQ(segno_.Text(), testo);
    EXPECT_NE(segno_.session, "");
    WaitUntilItsSessionIsGone();
  }
  [[nodiscard]] std::string Sessioni() const {
    return SuPostgres() ? "SELECT COUNT(*) FROM pg_stat_activity WHERE pid=" + segno_.session
                        : "SELECT COUNT(*) FROM information_schema.PROCESSLIST WHERE ID=" + segno_.session;
  }
  void WaitUntilItsSessionIsGone() const {
    for (int volta = 0; volta < 500 && base.Righe(Sessioni()).at(0) != "0"; ++volta) {
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    ASSERT_EQ(base.Righe(Sessioni()).at(0), "0");
  }
  /// Another terminal's transaction that has changed a row, and its number and session instead of the mark's.
  void Comincia(ado::Connection& altra) {
    base.Apri(altra);
    altra.BeginTrans();
    altra.Execute("UPDATE EVENTOCONTABILE SET NUMERORATA=NUMERORATA WHERE EVENTOCONTABILEKEY=107");
    if (SuPostgres()) {
      segno_.session = test::FirstValue(altra, "SELECT pg_backend_pid()");
      segno_.number = test::FirstValue(altra, "SELECT pg_current_xact_id_if_assigned()::text");
      segno_.client.clear();
    } else {
      segno_.session = test::FirstValue(altra, "SELECT CONNECTION_ID()");
      segno_.client =
          test::FirstValue(altra, "SELECT HOST FROM information_schema.PROCESSLIST WHERE ID=CONNECTION_ID()");
    }
  }
  /// Puts the number of a transaction that was taken back into the mark.
  void Annulla() {
    ado::Connection altra;
    Comincia(altra);
    altra.RollbackTrans();
    altra.Close();
    WaitUntilItsSessionIsGone();
  }
  void LasciaConSegno(FaseNota fase) {
    Lascia(fase);
    const NotaPresa presa(CartellaNote(), nota);
    Nota letta = presa.Leggi();
    letta.transazione = segno_.Text();
    presa.SegnaFase(letta);
  }
  [[nodiscard]] static bool SuPostgres() { return std::string_view(GetParam()) == "postgres"; }

  TransactionMark segno_;
};

class NoteOfANumberedTransaction : public NoteOfATransaction {};

class NoteOfAChain : public NoteOfATransaction {
 protected:
  NoteOfAChain() : NoteOfATransaction(Catena()) {}
  static const test::ModificaProvata& Catena() {
    static const test::ModificaProvata Una{"Banche",
                                           {ModificaChiesta::Genere::BancaPresunti,
                                            "PRESUNTI",
                                            {},
                                            {test::UnaBanca(test::UnDocumento(401, "C01", "AB", "123"), "B07", "B08"),
                                             test::UnaBanca(test::UnDocumento(401, "C01", "AB", "123"), "B06", "B07")},
                                            {}},
                                           "",
                                           2,
                                           "",
                                           ""};
    return Una;
  }
};

INSTANTIATE_TEST_SUITE_P(Servers, NoteOfATransaction, testing::Values("postgres", "mariadb"), test::NomeDelGenere);
INSTANTIATE_TEST_SUITE_P(Servers, NoteOfANumberedTransaction, testing::Values("postgres"), test::NomeDelGenere);
INSTANTIATE_TEST_SUITE_P(Servers, NoteOfAChain, testing::Values("postgres"), test::NomeDelGenere);

TEST_P(NoteOfATransaction, IsLeftAloneWhileThatIsUnderWay) {
  Registra();
  Ripristina();
  ado::Connection altra;
  Comincia(altra);
  LasciaConSegno(FaseNota::Sconosciuta);
  const NotaInSospeso vista = Guarda();
  EXPECT_EQ(vista.errore, "la base dati: la transazione del comando è ancora in corso. Guardare più tardi.");
  EXPECT_FALSE(RiallineaVista(vista, Opzioni()).riuscito);
  EXPECT_THAT(test::Tutto(base), ElementsAreArray(prima));
  altra.RollbackTrans();
  altra.Close();
  WaitUntilItsSessionIsGone();
  EXPECT_THAT(Stati(), Each("come prima"));
  EXPECT_TRUE(Riallinea().riuscito);
}

TEST_P(NoteOfANumberedTransaction, IsNotWrittenASecondTimeWhereThatWasCommittedAndItsRowsWerePutBack) {
  Registra();
  Ripristina();
  for (const FaseNota fase : {FaseNota::ConfermaInviata, FaseNota::Sconosciuta}) {
    LasciaConSegno(fase);
    EXPECT_THAT(Stati(), Each("cambiata da altri"));
    EXPECT_EQ(Guarda().baseDati, "il comando vi ha registrato la modifica: lo dice il numero della transazione");
    EXPECT_EQ(Guarda().domanda, "");
    EXPECT_FALSE(Riallinea().riuscito);
    EXPECT_TRUE(NotaRimasta());
    EXPECT_THAT(test::Tutto(base), ElementsAreArray(prima));
  }
}

TEST_P(NoteOfANumberedTransaction, IsDoneWhereThatWasCommittedAndItsRowsSayTheSame) {
  Registra();
  LasciaConSegno(FaseNota::ConfermaInviata);
  EXPECT_THAT(Stati(), Each("fatta"));
  EXPECT_EQ(Guarda().domanda, "");
  EXPECT_TRUE(Riallinea().riuscito);
  EXPECT_FALSE(NotaRimasta());
}

TEST_P(NoteOfANumberedTransaction, WarnsBeforeItGoesWhereThatWasTakenBackAndItsRowsAreDone) {
  Registra();
  Annulla();
  LasciaConSegno(FaseNota::Sconosciuta);
  EXPECT_THAT(Stati(), Each("fatta"));
  EXPECT_EQ(Guarda().baseDati, "il comando non vi ha registrato nulla: lo dice il numero della transazione");
  EXPECT_THAT(Guarda().domanda,
              AllOf(StartsWith("La transazione del comando è stata annullata, eppure ci sono righe «fatta»: "),
                    EndsWith("\nTogliere la nota? (sì/no) ")));
  EXPECT_TRUE(NotaRimasta());
}

TEST_P(NoteOfANumberedTransaction, GoesByItsRowsAloneInAnotherLifeOfTheServer) {
  Registra();
  Annulla();
  segno_.life += "1";
  LasciaConSegno(FaseNota::Sconosciuta);
  EXPECT_THAT(Stati(), Each("fatta"));
  EXPECT_EQ(Guarda().baseDati, "non si sa se il comando vi ha registrato tutto o nulla");
  EXPECT_EQ(Guarda().domanda, "");
}

TEST_P(NoteOfATransaction, SaysThatAnotherServerKnowsNothingOfIt) {
  Registra();
  segno_.server += "1";
  LasciaConSegno(FaseNota::Sconosciuta);
  EXPECT_THAT(Stati(), Each("fatta"));
  EXPECT_THAT(Guarda().domanda,
              AllOf(StartsWith("Questo server non sa nulla della transazione del comando, e dicono solo le righe: "),
                    EndsWith("\nTogliere la nota? (sì/no) ")));
}

TEST_P(NoteOfAChain, IsWrittenWholeWhereThatWasTakenBack) {
  Registra();
  Ripristina();
  Annulla();
  LasciaConSegno(FaseNota::Sconosciuta);
  EXPECT_THAT(Stati(), Each("come prima"));
  EXPECT_TRUE(Riallinea().riuscito);
  EXPECT_THAT(test::Tutto(base), ElementsAreArray(dopo));
}

// The database takes the change and does not make it.
TEST_P(NoteOfANumberedTransaction, StaysWhereRowsAreStillAsBeforeThoughTheRealignmentIsCommitted) {
  base.Esegui("CREATE FUNCTION COME_ERA() RETURNS trigger LANGUAGE plpgsql AS $$ BEGIN NEW.DATASCADENZA := "
              "OLD.DATASCADENZA; NEW.BANCAPRESENTAZIONE_KEY := OLD.BANCAPRESENTAZIONE_KEY; RETURN NEW; END $$");
  base.Esegui("CREATE TRIGGER COME_ERA BEFORE UPDATE ON EVENTOCONTABILE FOR EACH ROW EXECUTE FUNCTION COME_ERA()");
  Lascia(FaseNota::Accettata);
  const EsitoInSospeso esito = Riallinea();
  EXPECT_FALSE(esito.riuscito);
  EXPECT_THAT(esito.testo,
              EndsWith("La base dati ha registrato le righe, ma ce ne sono ancora «come prima»: guardarle ancora, con "
                       "lumoscad --in-sospeso.\nLa nota resta.\n"));
  EXPECT_TRUE(NotaRimasta());
}

TEST(DoubtfulRows, AreKnownHoweverTheirTextsAreWritten) {
  ModificaChiesta modifica = UnaLista().modifica;
  const auto rata = [](const char* scadenza, const char* nuova, const char* banca) {
    return test::UnaRata("201", "1", "31/01/2006", scadenza, nuova, banca, "");
  };
  modifica.canalizzazioni = {rata("04/03/2006", "15/03/2006", "B06"), rata("01/02/2006", " 04/03/2006", "b06  ")};
  EXPECT_EQ(RigheDubbie(modifica), (std::vector<bool>{true, false}));
}

TEST(TransactionMarkText, IsReadAsItWasWritten) {
  for (const TransactionMark& mark :
       {TransactionMark{"12", "10.0.0.2:5411", "733", "7345", "2026-11-22 17:18:15.1+00  00000001"},
        TransactionMark{"12", "", "", "nodo, client 3306 1", ""}, TransactionMark{"12", "", "", "", ""},
        TransactionMark{}}) {
    const auto read = TransactionMark::FromText(mark.Text());
    EXPECT_EQ(read.Text(), mark.Text());
    EXPECT_EQ(read.session, mark.session);
  }
  for (const char* other : {"pg 1/2/3", "12", "sessione12", "altro 1, sessione 12"}) {
    EXPECT_EQ(TransactionMark::FromText(other).Text(), "") << other;
  }
}

/// A note and the options of another database.
class NoteOfADatabase : public testing::TestWithParam<const char*>, protected NotaSuBase {
 protected:
  NoteOfADatabase() : NotaSuBase(GetParam(), test::TrovaModifica("CancellaExtra")) {}

  void LasciaCon(const std::string& opzioni) {
    stato().ComandoCorrente = opzioni;
    Lascia(FaseNota::Accettata);
    stato().ComandoCorrente = Opzioni();
  }
  [[nodiscard]] std::string Testo() const { return ReadLocalFile(PercorsiNota(CartellaNote(), nota).nota, MaxRead); }
  /// As one that was written before the user and the schema were kept.
  void Invecchia() const {
    std::string testo = Testo();
    for (const std::string_view campo : {"\nutente=", "\nschema=", "\nriservato=utente", "\nriservato=schema"}) {
      const auto inizio = testo.find(campo);
      if (inizio != std::string::npos) {
        testo.erase(inizio, testo.find('\n', inizio + 1) - inizio);
      }
    }
    WriteLocalFile(PercorsiNota(CartellaNote(), nota).nota, testo);
  }
};

INSTANTIATE_TEST_SUITE_P(Databases, NoteOfADatabase, testing::ValuesIn(test::GeneriDiBase()), test::NomeDelGenere);

TEST_P(NoteOfADatabase, IsNotLookedAtWithAnotherSchemaOrUser) {
  LasciaCon(base.Opzioni() + " -DB2SCHEMA ALTRO");
  EXPECT_EQ(Guarda().errore, "la modifica è dello schema «ALTRO»: questa non è stata guardata");
  EXPECT_EQ(RiallineaVista(Guarda(), Opzioni()).testo,
            "La modifica è dello schema «ALTRO», e nessun'altra va toccata.\nLa nota resta.\n");
  LasciaCon(Opzioni() + " -DB2USER altri");
  const std::string conUtente = Opzioni() + " -DB2USER anna";
  EXPECT_EQ(GuardaNota(nota, conUtente).errore,
            "la modifica è dell'utente «altri» della base dati: questa non è stata guardata");
  EXPECT_FALSE(RiallineaVista(GuardaNota(nota, conUtente), conUtente).riuscito);
  EXPECT_THAT(test::Tutto(base), ElementsAreArray(prima));
}

TEST_P(NoteOfADatabase, HoldsNoPasswordThatStandsForTheSchema) {
  const std::string senza = " -DB2SOURCE X -DB2USER anna;PWD=Segr3taXy9 -DB2PASS Segr3taXy9";
  for (const char* schema : {"", " -DB2SCHEMA Segr3taXy9", " -DB2SCHEMA segr3taxy9", " -DB2USER Segr3taXy9"}) {
    LasciaCon(senza + schema);
    EXPECT_THAT(Maiuscolo(Testo()), Not(HasSubstr("SEGR"))) << schema;
    EXPECT_THAT(Testo(), HasSubstr("\nriservato=schema\n"));
  }
}

TEST_P(NoteOfADatabase, OfBeforeTheseWereKeptWarnsBeforeTheQuestion) {
  const std::string avviso = "La nota non dice con quale utente e quale schema della base dati lavorava il comando: "
                             "accertarsi che siano quelli delle opzioni.\n";
  Lascia(FaseNota::Accettata);
  EXPECT_THAT(Guarda().domanda, Not(HasSubstr(avviso)));
  Invecchia();
  EXPECT_THAT(Guarda().domanda, HasSubstr(avviso));
  MsgAnnulla msg;
  ASSERT_EQ(test::EseguiModifica(modifica, msg), "");
  EXPECT_THAT(Stati(), Each("fatta"));
  EXPECT_EQ(Guarda().domanda, avviso + "Togliere la nota? (sì/no) ") << "it may read so in another schema too";
}

} // namespace
} // namespace lumoscad
