#include "PresuntiDiProva.hpp"
#include "database/procedureLumoDB2.hpp"
#include "lumoscad/LumoScadenze.hpp"
#include "platform/RuntimeError.hpp"
#include "support/TestBench.hpp"

#include <gmock/gmock.h>

#include <algorithm>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

// A change that the host accepted and whose rows somebody else had changed meanwhile.

namespace lumoscad::procedureLumoDB2 {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

const std::string RataUno = "conto C01 partita 2006   1 rata 1 del 04/03/2006";
const std::string UnDocumento = "conto C01 documento AB/06/123";

/// Instalment 1 of an item in two events, instalment 2 in one.
std::string RateDiProva() {
  using test::Rata;
  return Rata("101,1,301,201,101,'C','N','2006-03-04','2006-01-31',1,106,100") +
         Rata("102,1,301,201,101,'C','N','2006-03-04','2006-01-31',1,106,50") +
         Rata("103,1,301,201,101,'C','N','2006-04-04','2006-02-28',2,106,1");
}

VariazioneCanalizzazione Rata(const std::string& nuovaBanca, const std::string& nuovaData = "") {
  VariazioneCanalizzazione v;
  v.idPartitaKey = "201";
  v.CodiceConto = "C01";
  v.NumeroPartita = "2006   1";
  v.VecchiaBanca = "B06";
  v.NuovaBanca = nuovaBanca;
  v.isBancaChanged = !nuovaBanca.empty();
  v.ScadenzaOriginale = "31/01/2006";
  v.NumeroRata = "1";
  v.VecchiaScadenza = "04/03/2006";
  v.NuovaScadenza = nuovaData.empty() ? "#null#" : nuovaData;
  v.isScadenzaChanged = !nuovaData.empty();
  return v;
}

VariazioneConsegna Documento() {
  VariazioneConsegna v;
  v.idMovimentoKey = 401;
  v.CodiceConto = "C01";
  v.Serie = "AB";
  v.Anno = "06";
  v.Numero = "123";
  return v;
}

VariazioneConsegna CambioBanca(const std::string& vecchia, const std::string& nuova) {
  VariazioneConsegna v = Documento();
  v.VecchiaBanca = vecchia;
  v.NuovaBanca = nuova;
  v.isBancaChanged = true;
  return v;
}

VariazioneConsegna Consegna(const std::string& nuova) {
  VariazioneConsegna v = Documento();
  v.Consegna = "10/03/2006";
  v.ConsegnaOrigine = "01/03/2006";
  v.NuovaConsegna = nuova;
  v.isConsegnaChanged = true;
  return v;
}

class RowsLeft : public testing::TestWithParam<const char*> {
 protected:
  RowsLeft() { stato().ComandoCorrente = "BANCA /CREDITI " + base.Opzioni(); }

  /// Somebody else's change, before or while this one is written.
  void Altro(const std::string& cambio, const std::string& chiavi) const {
    base.Esegui("UPDATE EVENTOCONTABILE SET " + cambio + " WHERE EVENTOCONTABILEKEY IN (" + chiavi + ")");
  }
  /// What the confirmation of bank and date changes leaves, each row as the person reads it.
  std::vector<std::string> Rimaste(const VariazioniCanalizzazione& variazioni, const char* modo = "CREDITI") {
    EXPECT_EQ(AggiornaCanalizzazione(variazioni, msg, modo), "");
    EXPECT_EQ(msg.Errore, "");
    return msg.righeRimaste;
  }
  std::vector<std::string> RimasteBanca(const VariazioniConsegna& variazioni) {
    EXPECT_EQ(AggiornaBancaPresunti(variazioni, msg, "PRESUNTI"), "");
    EXPECT_EQ(msg.Errore, "");
    return msg.righeRimaste;
  }
  std::vector<std::string> RimasteConsegna(const VariazioniConsegna& variazioni) {
    EXPECT_EQ(AggiornaConsegna(variazioni, msg, "PRESUNTI"), "");
    EXPECT_EQ(msg.Errore, "");
    return msg.righeRimaste;
  }
  [[nodiscard]] std::size_t Domande() const {
    return static_cast<std::size_t>(
        std::count_if(banco.statements.begin(), banco.statements.end(),
                      [](const std::string& sql) { return sql.starts_with("SELECT COUNT"); }));
  }
  [[nodiscard]] std::vector<std::string> Banche(const std::string& chiavi) const {
    return base.Righe("SELECT BANCAPRESENTAZIONE_KEY FROM EVENTOCONTABILE WHERE EVENTOCONTABILEKEY IN (" + chiavi +
                      ") ORDER BY EVENTOCONTABILEKEY");
  }

  test::BaseDati base{GetParam(), test::DatiPresunti() + RateDiProva()};
  test::TestBench banco;
  MsgAnnulla msg;
};

/// Two writers at once need a database that lets a row be changed while a transaction reads it.
class RowsLeftOnAServer : public RowsLeft {};

INSTANTIATE_TEST_SUITE_P(Databases, RowsLeft, testing::ValuesIn(test::GeneriDiBase()), test::NomeDelGenere);
INSTANTIATE_TEST_SUITE_P(Databases, RowsLeftOnAServer, testing::ValuesIn(test::DatabaseServers()), test::NomeDelGenere);

TEST_P(RowsLeft, AreNamedWhereSomebodyChangedThemAndTheRestIsCommitted) {
  Altro("BANCAPRESENTAZIONE_KEY=108", "101,102");
  VariazioneCanalizzazione seconda = Rata("B07");
  seconda.ScadenzaOriginale = "28/02/2006";
  seconda.VecchiaScadenza = "04/04/2006";
  seconda.NumeroRata = "2";
  EXPECT_THAT(Rimaste({Rata("B07"), seconda}), ElementsAre(RataUno));
  EXPECT_THAT(Banche("101,102,103"), ElementsAre("108", "108", "107"));
}

TEST_P(RowsLeft, AreNamedWhereSomebodyTookThemAway) {
  base.Esegui("DELETE FROM EVENTOCONTABILE WHERE EVENTOCONTABILEKEY IN (101,102)");
  EXPECT_THAT(Rimaste({Rata("B07")}), ElementsAre(RataUno));
}

TEST_P(RowsLeft, AreNamedWhereSomebodySuspendedThem) {
  Altro("SOSPESA='S'", "101,102");
  EXPECT_THAT(Rimaste({Rata("", "01/04/2006")}), ElementsAre(RataUno));
}

TEST_P(RowsLeft, AreNotNamedWhereTheyHoldTheNewValueAlready) {
  Altro("BANCAPRESENTAZIONE_KEY=107,DATASCADENZA='2006-04-01'", "101,102");
  EXPECT_THAT(Rimaste({Rata("B07")}), IsEmpty());
  EXPECT_THAT(Rimaste({Rata("", "01/04/2006")}), IsEmpty());
  EXPECT_THAT(Rimaste({Rata("B07", "01/04/2006")}), IsEmpty());
  Altro("BANCAPRESENTAZIONE_KEY=NULL,SOSPESA='S'", "101,102");
  EXPECT_THAT(Rimaste({Rata("#null#")}), IsEmpty());
}

TEST_P(RowsLeft, AreNamedWhereOneOfTwoNewValuesIsMissing) {
  Altro("BANCAPRESENTAZIONE_KEY=107", "101,102");
  EXPECT_THAT(Rimaste({Rata("B07", "01/04/2006")}), ElementsAre(RataUno));
}

TEST_P(RowsLeft, AreNamedWhereOneOfTheRecordsRowsHoldsAnotherValue) {
  Altro("BANCAPRESENTAZIONE_KEY=107", "101");
  Altro("BANCAPRESENTAZIONE_KEY=108", "102");
  EXPECT_THAT(Rimaste({Rata("B07")}), ElementsAre(RataUno));
}

TEST_P(RowsLeft, AreNamedWithoutADueDateToo) {
  VariazioneCanalizzazione v = Rata("B07");
  v.VecchiaScadenza = "#null#";
  EXPECT_THAT(Rimaste({v}), ElementsAre("conto C01 partita 2006   1 rata 1 senza scadenza"));
}

TEST_P(RowsLeft, AreAskedForOnlyWhereAStatementMatchedNone) {
  EXPECT_THAT(Rimaste({Rata("B07", "01/04/2006")}), IsEmpty());
  EXPECT_THAT(RimasteBanca({CambioBanca("B06", "B08")}), IsEmpty());
  EXPECT_THAT(RimasteConsegna({Consegna("11/03/2006")}), IsEmpty());
  EXPECT_EQ(Domande(), 0U);
}

TEST_P(RowsLeft, AreToldForEachRecordByWhatTheOnesBeforeItWrote) {
  EXPECT_THAT(Rimaste({Rata("B07"), Rata("B07")}), IsEmpty()) << "the second finds its own bank there";
  Altro("BANCAPRESENTAZIONE_KEY=106", "101,102");
  EXPECT_THAT(Rimaste({Rata("B07"), Rata("B08")}), ElementsAre(RataUno)) << "the first one's bank stays";
  EXPECT_THAT(Banche("101,102"), ElementsAre("107", "107"));
  VariazioneCanalizzazione seguente = Rata("B06");
  seguente.VecchiaBanca = "B07";
  Altro("BANCAPRESENTAZIONE_KEY=108", "101");
  EXPECT_THAT(Rimaste({Rata("B07"), seguente}), ElementsAre(RataUno)) << "the second moved the other event on";
}

TEST_P(RowsLeft, AreForgottenWhereNothingIsKept) {
  Altro("BANCAPRESENTAZIONE_KEY=108", "101,102");
  EXPECT_EQ(AggiornaCanalizzazione({Rata("B07"), Rata("Z99")}, msg, "CREDITI"), "error");
  EXPECT_THAT(msg.Errore, HasSubstr("CONTO CONTABILE INESISTENTE"));
  EXPECT_THAT(msg.righeRimaste, IsEmpty());
}

TEST_P(RowsLeft, OfTheListByMovementOrItemAreNamedToo) {
  VariazioneCanalizzazione v = Rata("B07");
  v.idMovimentoKey = "301";
  EXPECT_THAT(Rimaste({v}, "PRESUNTI"), IsEmpty());
  EXPECT_THAT(Rimaste({v}, "PRESUNTI"), IsEmpty()) << "they hold the bank by now";
  v.NuovaBanca = "B08";
  EXPECT_THAT(Rimaste({v}, "PRESUNTI"), ElementsAre(RataUno));
  v.idMovimentoKey = "#null#";
  EXPECT_THAT(Rimaste({v}, "PRESUNTI"), ElementsAre(RataUno));
  Altro("BANCAPRESENTAZIONE_KEY=108", "101,102");
  EXPECT_THAT(Rimaste({v}, "PRESUNTI"), IsEmpty());
}

TEST_P(RowsLeft, OfARecordWithoutKeysAreNotAskedFor) {
  VariazioneCanalizzazione v = Rata("B07");
  v.idMovimentoKey = v.idPartitaKey = "#null#";
  EXPECT_THAT(Rimaste({v}, "PRESUNTI"), IsEmpty());
  VariazioneConsegna banca = CambioBanca("B06", "B07");
  VariazioneConsegna consegna = Consegna("11/03/2006");
  banca.idMovimentoKey = consegna.idMovimentoKey = 0;
  EXPECT_THAT(RimasteBanca({banca}), IsEmpty());
  EXPECT_THAT(RimasteConsegna({consegna}), IsEmpty());
  EXPECT_EQ(Domande(), 0U);
}

TEST_P(RowsLeft, OfADocumentWhoseBankSomebodyChangedAreNamed) {
  Altro("BANCAPRESENTAZIONE_KEY=107", "1,3,12");
  EXPECT_THAT(RimasteBanca({CambioBanca("B06", "B08")}), ElementsAre(UnDocumento));
  EXPECT_THAT(RimasteBanca({CambioBanca("B06", "#null#")}), ElementsAre(UnDocumento));
  EXPECT_THAT(RimasteBanca({CambioBanca("B06", "B07")}), IsEmpty());
  Altro("SOSPESA='S'", "1,2,3");
  EXPECT_THAT(RimasteBanca({CambioBanca("B07", "B08")}), IsEmpty()) << "the instalment of the same movement is changed";
  EXPECT_THAT(RimasteBanca({CambioBanca("B07", "B08")}), ElementsAre(UnDocumento)) << "and the document is suspended";
}

TEST_P(RowsLeft, OfADocumentWhoseDeliverySomebodyMovedAreNamed) {
  Altro("DATACONSEGNA='2006-03-15'", "1,2,12");
  EXPECT_THAT(RimasteConsegna({Consegna("11/03/2006")}), ElementsAre(UnDocumento));
  EXPECT_THAT(RimasteConsegna({Consegna("#null#")}), ElementsAre(UnDocumento));
  EXPECT_THAT(RimasteConsegna({Consegna("15/03/2006")}), IsEmpty()) << "the row of another first date says nothing";
  Altro("DATACONSEGNA='2006-03-11'", "1,12");
  EXPECT_THAT(RimasteConsegna({Consegna("11/03/2006")}), ElementsAre(UnDocumento)) << "one of its rows is elsewhere";
  VariazioneConsegna ordine = Consegna("11/03/2006");
  ordine.idOrdineKey = "403";
  EXPECT_THAT(RimasteConsegna({ordine}), ElementsAre(UnDocumento)) << "the order key counts before the movement's";
}

TEST_P(RowsLeftOnAServer, AreNamedWhereSomebodyTakesOneAwayBetweenSelectionAndChange) {
  bool tolta = false;
  ActiveServices().statementSent = [&](std::string_view sql) {
    if (!tolta && sql.starts_with("UPDATE")) {
      tolta = true;
      base.Esegui("DELETE FROM EVENTOCONTABILE WHERE EVENTOCONTABILEKEY=101");
    }
  };
  EXPECT_THAT(Rimaste({Rata("B07")}), ElementsAre(RataUno));
  EXPECT_THAT(Banche("102"), ElementsAre("107"));
}

TEST_P(RowsLeftOnAServer, AreNotNamedWhereSomebodyMakesTheSameChangeBetweenSelectionAndChange) {
  bool fatta = false;
  ActiveServices().statementSent = [&](std::string_view sql) {
    if (!fatta && sql.starts_with("UPDATE")) {
      fatta = true;
      Altro("BANCAPRESENTAZIONE_KEY=107", "101");
    }
  };
  EXPECT_THAT(Rimaste({Rata("B07")}), IsEmpty());
  EXPECT_THAT(Banche("101,102"), ElementsAre("107", "107"));
}

TEST_P(RowsLeft, OfTwoEqualDeliveriesAreChangedByTheFirst) {
  const std::string consegne = "SELECT DATACONSEGNA FROM EVENTOCONTABILE WHERE EVENTOCONTABILEKEY IN (1,2,3) "
                               "ORDER BY EVENTOCONTABILEKEY";
  for (const char* origine : {"'2006-03-01'", "NULL"}) {
    Altro(std::string("DATACONSEGNA='2006-03-10',DATACONSEGNAPRODUZIONE=") + origine, "1,2,3");
    Altro("CODICEDIVISA='USD'", "2");
    Altro("DATACONSEGNA='2006-03-20'", "3");
    VariazioneConsegna v = Consegna("11/03/2006");
    v.ConsegnaOrigine = origine == std::string_view("NULL") ? "#null#" : "01/03/2006";
    EXPECT_THAT(RimasteConsegna({v, v}), IsEmpty()) << origine;
    EXPECT_THAT(base.Righe(consegne), ElementsAre("2006-03-11", "2006-03-11", "2006-03-20")) << origine;
    EXPECT_EQ(Domande(), 0U) << origine;
    EXPECT_THAT(RimasteConsegna({v}), ElementsAre(UnDocumento)) << "another confirmation knows nothing of this one";
    banco.statements.clear();
  }
}

TEST_P(RowsLeft, WithoutAFirstDateAreAskedForAsSuch) {
  Altro("DATACONSEGNA='2006-03-11',DATACONSEGNAPRODUZIONE=NULL", "1,2");
  Altro("DATACONSEGNAPRODUZIONE='2006-03-01'", "3");
  VariazioneConsegna v = Consegna("11/03/2006");
  for (const char* vuota : {"", "#null#"}) {
    v.ConsegnaOrigine = vuota;
    EXPECT_THAT(RimasteConsegna({v}), IsEmpty()) << "the rows of a first date say nothing";
  }
}

TEST_P(RowsLeft, OfTwoEqualBanksOfADocumentAreChangedByTheFirst) {
  Altro("BANCAPRESENTAZIONE_KEY=106", "1,2");
  Altro("BANCAPRESENTAZIONE_KEY=107", "3");
  EXPECT_THAT(RimasteBanca({CambioBanca("B06", "B08"), CambioBanca("B06", "B08")}), IsEmpty());
  EXPECT_THAT(Banche("1,2"), ElementsAre("108", "108"));
  EXPECT_EQ(Domande(), 0U);
  EXPECT_THAT(RimasteBanca({CambioBanca("B06", "B08")}), ElementsAre(UnDocumento));
}

TEST_P(RowsLeft, OfTwoEqualInstalmentsAreChangedByTheFirst) {
  Altro("DATASCADENZA='2006-05-05',BANCAPRESENTAZIONE_KEY=108", "102");
  VariazioneCanalizzazione v = Rata("B07", "01/04/2006");
  EXPECT_THAT(Rimaste({v, v}), IsEmpty());
  EXPECT_THAT(Banche("101,102"), ElementsAre("107", "108"));
  EXPECT_EQ(Domande(), 0U);
  Altro("DATASCADENZA='2006-03-04',BANCAPRESENTAZIONE_KEY=106", "101,102");
  Altro("BANCAPRESENTAZIONE_KEY=108", "102");
  v = Rata("B07");
  v.idMovimentoKey = "301";
  EXPECT_THAT(Rimaste({v, v}, "PRESUNTI"), IsEmpty());
  EXPECT_THAT(Banche("101,102"), ElementsAre("107", "108"));
  EXPECT_EQ(Domande(), 0U);
}

TEST_P(RowsLeft, AreNoneWhereTheDatabaseDropsAChangeWithoutAWord) {
  const auto scarta = base.Contesto().DropUpdate("EVENTOCONTABILE", "OLD.EVENTOCONTABILEKEY=102");
  if (scarta.empty()) {
    GTEST_SKIP() << "no trigger of this server drops an update";
  }
  for (const std::string& istruzione : scarta) {
    base.Esegui(istruzione);
  }
  for (const auto& v : {Rata("B07"), Rata("", "01/04/2006"), Rata("B07", "01/04/2006")}) {
    EXPECT_EQ(AggiornaCanalizzazione({v}, msg, "CREDITI"), "error");
    EXPECT_THAT(msg.Errore, AllOf(HasSubstr("-2147217864"),
                                  HasSubstr("La base dati non ha registrato la modifica, senza dirne il motivo: una "
                                            "regola della tabella può averla scartata.")));
    EXPECT_THAT(msg.righeRimaste, IsEmpty());
  }
  EXPECT_THAT(Banche("101,102"), ElementsAre("106", "106"));
}

constexpr const char* Frase = "L'host ha registrato la modifica; nella base dati queste righe erano già cambiate e "
                              "sono rimaste com'erano: ";

class CommandWithRowsLeft : public RowsLeft {
 protected:
  CommandWithRowsLeft() {
    banco.host.fault = [this](const std::string& operazione) {
      if (operazione == "Cancella /tmp/VBCREDITI" || operazione == "Cancella /tmp/VBPRESUNTI") {
        boxAlRilascio = banco.desktop.box.size();
      }
    };
  }

  std::string Esegui(const std::string& comando) const {
    return LumoScadenze().EseguiLumoScad("-T " + comando + " -H h -D 001 " + base.Opzioni());
  }
  /// Types `nuovo` into the column `colonna` of every row, lets somebody else do `altro`, and confirms.
  void Recita(int colonna, const char* nuovo, const std::function<void()>& altro) {
    banco.desktop.scripts.emplace_back([=](ListWindow& finestra) {
      int x = 1;
      for (int i = 0; i < colonna; ++i) {
        x += finestra.Description().columns[static_cast<std::size_t>(i)].width;
      }
      for (std::size_t riga = 0; riga < finestra.RowCount(); ++riga) {
        finestra.Seleziona(static_cast<std::ptrdiff_t>(riga));
        finestra.LVScadenze_MouseDown(x, 1);
        finestra.LVScadenze_Click(0);
        finestra.TextScad_Change(nuovo);
        finestra.TextScad_KeyPress(13);
      }
      altro();
      finestra.PictureOk_Click();
    });
  }

  std::size_t boxAlRilascio = 99;
};

INSTANTIATE_TEST_SUITE_P(Databases, CommandWithRowsLeft, testing::Values("postgres"), test::NomeDelGenere);

TEST_P(CommandWithRowsLeft, ShowsThemInOneBoxAfterTheReleaseAndSucceeds) {
  banco.host.reply = "<R><MESSAGGIO>Variate 2 scadenze</MESSAGGIO></R>";
  Recita(7, "010406", [this] { Altro("DATASCADENZA='2006-05-05'", "101,102"); });
  EXPECT_EQ(Esegui("BANCA /CREDITI -P 2006   1"), "");
  EXPECT_THAT(banco.desktop.box, ElementsAre("Variate 2 scadenze", Frase + RataUno));
  EXPECT_EQ(banco.desktop.titles.back(), "LumoScad");
  EXPECT_EQ(boxAlRilascio, 1U) << "the list was still taken";
  EXPECT_EQ(banco.desktop.pointers.back(), Pointer::Standard);
  EXPECT_EQ(base.Righe("SELECT DATASCADENZA FROM EVENTOCONTABILE WHERE EVENTOCONTABILEKEY=103"),
            std::vector<std::string>{"2006-04-01"});
}

TEST_P(CommandWithRowsLeft, SaysNothingWhereEveryRowWasChanged) {
  Recita(7, "010406", [] {});
  EXPECT_EQ(Esegui("BANCA /CREDITI -P 2006   1"), "");
  EXPECT_THAT(banco.desktop.box, IsEmpty());
}

TEST_P(CommandWithRowsLeft, TellsOfDeliveriesToo) {
  Recita(7, "110306", [this] { Altro("SOSPESA='S'", "1,2,3"); });
  EXPECT_EQ(Esegui("CONSEGNA /PRESUNTI -TIPOMOVIMENTI V -B X -S AB -N 123 -A 06"), "");
  // The two rows of the document read the same.
  EXPECT_THAT(banco.desktop.box, ElementsAre(Frase + UnDocumento));
  EXPECT_EQ(boxAlRilascio, 0U);
}

TEST_P(CommandWithRowsLeft, CountsThoseBeyondTwenty) {
  std::string altre;
  for (int rata = 11; rata <= 32; ++rata) {
    altre += test::Rata(std::to_string(1000 + rata) + ",1,301,202,102,'C','N','2006-06-30','2006-06-30'," +
                        std::to_string(rata) + ",106,1");
  }
  base.Script(altre);
  Recita(7, "010706", [this] { base.Esegui("DELETE FROM EVENTOCONTABILE WHERE PARTITACONTABILEKEY=202"); });
  EXPECT_EQ(Esegui("BANCA /CREDITI -P 2006   2"), "");
  ASSERT_THAT(banco.desktop.box, SizeIs(1));
  const std::string& testo = banco.desktop.box[0];
  EXPECT_THAT(testo, AllOf(StartsWith(Frase), EndsWith("; e altre 2")));
  EXPECT_EQ(std::count(testo.begin() + static_cast<std::ptrdiff_t>(std::string(Frase).size()), testo.end(), ';'), 20);
}

} // namespace
} // namespace lumoscad::procedureLumoDB2
