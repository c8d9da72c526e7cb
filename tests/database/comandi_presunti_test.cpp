#include "PresuntiDiProva.hpp"
#include "common/Stato.hpp"
#include "lumoscad/LumoScadenze.hpp"
#include "platform/RuntimeError.hpp"
#include "screens/FormConsegna.hpp"
#include "screens/FormPresunti.hpp"
#include "support/TestBench.hpp"

#include <gmock/gmock.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace lumoscad {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

const std::string Nome = "/tmp/T0120060305140709";

/// Clicks a cell of the first row of a document in the list of `Form`.
template <typename Form> void Clicca(ListWindow& finestra, const std::string& documento, int colonna) {
  int x = 1;
  for (int i = 0; i < colonna; ++i) {
    x += finestra.Description().columns[static_cast<std::size_t>(i)].width;
  }
  for (std::size_t riga = 0; riga < finestra.RowCount(); ++riga) {
    if (finestra.CellText(riga, Form::Ordine) == documento) {
      finestra.Seleziona(static_cast<std::ptrdiff_t>(riga));
      finestra.LVScadenze_MouseDown(x, 1);
      finestra.LVScadenze_Click(0);
      return;
    }
  }
  ADD_FAILURE() << "nessuna riga di " << documento;
}

void DaiBanca(ListWindow& finestra, const std::string& documento, int indice) {
  Clicca<FormPresunti>(finestra, documento, FormPresunti::NuovaBanca);
  finestra.cmbBanche2_Click(indice);
  finestra.cmbBanche2_LostFocus();
}

void DaiConsegna(ListWindow& finestra, const std::string& documento, const char* data) {
  Clicca<FormConsegna>(finestra, documento, FormConsegna::NuovaConsegna);
  finestra.TextScad_Change(data);
  finestra.TextScad_KeyPress(13);
}

class PresumedCommands : public testing::TestWithParam<const char*> {
 protected:
  PresumedCommands() : base(GetParam(), test::DatiPresunti()), prima(test::Rate(base)) {}

  std::string Esegui(const std::string& comando) {
    return LumoScadenze().EseguiLumoScad("-T " + comando + " -H 10.0.0.1 -D 001 " + base.Opzioni());
  }
  std::string Banca(const std::string& opzioni = "-TIPOMOVIMENTI V -B X") {
    return Esegui("BANCA /PRESUNTI " + opzioni);
  }
  std::string Consegna(const std::string& opzioni = "-TIPOMOVIMENTI V -B X") {
    return Esegui("CONSEGNA /PRESUNTI " + opzioni);
  }
  void Recita(test::ScriptedDesktop::Script copione) { banco.desktop.scripts.push_back(std::move(copione)); }
  [[nodiscard]] std::vector<std::string> Cambiati() const {
    const auto dopo = test::Rate(base);
    std::vector<std::string> chiavi;
    for (std::size_t i = 0; i < prima.size(); ++i) {
      if (prima[i] != dopo.at(i)) {
        chiavi.push_back(dopo[i].substr(0, dopo[i].find('|')));
      }
    }
    return chiavi;
  }
  [[nodiscard]] bool ListaPresa() const { return banco.host.file.count("/tmp/VBPRESUNTI") != 0; }
  [[nodiscard]] bool HaSpedito(const std::string& inizio) const {
    return std::any_of(banco.statements.begin(), banco.statements.end(),
                       [&](const std::string& sql) { return sql.starts_with(inizio); });
  }
  /// The statement that listed the documents.
  [[nodiscard]] std::string Elenco() const {
    for (const std::string& sql : banco.statements) {
      if (sql.starts_with("SELECT sum(EVE")) {
        return sql.substr(sql.find("MOV.TIPOOPERAZIONE"));
      }
    }
    return "";
  }

  test::BaseDati base;
  std::vector<std::string> prima;
  test::TestBench banco;
};
INSTANTIATE_TEST_SUITE_P(Databases, PresumedCommands, testing::ValuesIn(test::GeneriDiBase()), test::NomeDelGenere);

TEST_P(PresumedCommands, AConfirmedBankGoesToTheHostAndIntoTheDatabase) {
  Recita([](ListWindow& finestra) {
    DaiBanca(finestra, "CD5/06", 2);
    DaiBanca(finestra, "AB124/06", 1);
    finestra.PictureOk_Click();
  });
  EXPECT_EQ(Banca(), "");
  EXPECT_THAT(banco.host.operazioni,
              ElementsAre("Ricevi /tmp/VBPRESUNTI", "Invia /tmp/VBPRESUNTI", "Invia " + Nome,
                          "Rinomina " + Nome + " " + Nome + ".dos", "Esegui VB0001", "Cancella " + Nome,
                          "Cancella " + Nome + ".dos", "Cancella /tmp/VBPRESUNTI"));
  EXPECT_THAT(banco.host.calls, ElementsAre(ElementsAre("001", "CANALIZZAZIONE", "PRESUNTI", "T01", Nome + ".dos", "",
                                                        "", "", "", "", "")));
  EXPECT_EQ(banco.host.uploads.at(1), "C02,,06,124,AB,,,,#null#,B07,\r\n"
                                      "C01,,06,5,CD,,,,B07,B06,\r\n");
  EXPECT_THAT(Cambiati(), ElementsAre("4", "5", "11"));
  EXPECT_THAT(banco.desktop.box, IsEmpty());
  EXPECT_FALSE(ListaPresa());
}

TEST_P(PresumedCommands, AConfirmedDeliveryGoesToTheHostAndIntoTheDatabase) {
  Recita([](ListWindow& finestra) {
    DaiConsegna(finestra, "CD5/06", "010306");
    DaiConsegna(finestra, "AB124/06", "2/3/06");
    finestra.PictureOk_Click();
  });
  EXPECT_EQ(Consegna(), "");
  EXPECT_THAT(banco.host.calls, ElementsAre(ElementsAre("001", "CONSEGNA", "PRESUNTI", "T01", Nome + ".dos", "")));
  EXPECT_EQ(banco.host.uploads.at(1), "C02,AB,124,06,00000000,00000000,20060302\r\n"
                                      "C01,CD,5,06,20060228,20060228,20060301\r\n");
  EXPECT_THAT(Cambiati(), ElementsAre("4", "5", "11"));
  EXPECT_THAT(
      base.Righe("SELECT DATACONSEGNA, TITOLOIVA FROM EVENTOCONTABILE WHERE EVENTOCONTABILEKEY IN (4,5) ORDER BY "
                 "EVENTOCONTABILEKEY"),
      ElementsAre("2006-03-02|" + base.Contesto().TextFor(" ", 1), "2006-03-01|" + base.Contesto().TextFor(" ", 1)));
  EXPECT_FALSE(ListaPresa());
}

TEST_P(PresumedCommands, ClosedWithoutConfirmingItSendsNothing) {
  for (const bool annulla : {true, false}) {
    for (const bool consegna : {true, false}) {
      Recita([&](ListWindow& finestra) {
        consegna ? DaiConsegna(finestra, "CD5/06", "010306") : DaiBanca(finestra, "CD5/06", 2);
        annulla ? finestra.PictureAnnulla_Click() : finestra.Form_QueryUnload();
      });
      EXPECT_EQ(consegna ? Consegna() : Banca(), "closed");
    }
  }
  EXPECT_THAT(banco.host.calls, IsEmpty());
  EXPECT_FALSE(HaSpedito("UPDATE"));
  EXPECT_THAT(Cambiati(), IsEmpty());
  EXPECT_FALSE(ListaPresa());
  EXPECT_EQ(banco.desktop.pointers.back(), Pointer::Standard);
}

TEST_P(PresumedCommands, GivenUpWhileTheListIsReadTheyShowNothingAndReleaseIt) {
  banco.desktop.givenUpAt = 1;
  for (const bool consegna : {true, false}) {
    EXPECT_EQ(consegna ? Consegna() : Banca(), "closed");
    EXPECT_FALSE(ListaPresa());
  }
  EXPECT_EQ(banco.desktop.readings, 2U);
  EXPECT_EQ(banco.desktop.windows, 0U);
  EXPECT_THAT(banco.desktop.box, IsEmpty());
  EXPECT_THAT(banco.host.calls, IsEmpty());
  EXPECT_THAT(Cambiati(), IsEmpty());
}

TEST_P(PresumedCommands, SayAtTheHeadOfAListThatItIsNotWhole) {
  base.Esegui("DELETE FROM AZIENDELINEE");
  for (const bool consegna : {true, false}) {
    std::string avviso;
    Recita([&](ListWindow& finestra) { avviso = finestra.Description().warning; });
    EXPECT_EQ(consegna ? Consegna() : Banca(), "error");
    EXPECT_EQ(avviso, "Elenco incompleto: il motivo è mostrato alla chiusura");
    banco.host.file.clear(); // the list stays taken after an error
  }
}

TEST_P(PresumedCommands, ClosedAfterAConfirmationOfTheCommandBeforeItSendsNothing) {
  Recita([](ListWindow& finestra) {
    DaiBanca(finestra, "CD5/06", 2);
    finestra.PictureOk_Click();
  });
  EXPECT_EQ(Banca(), "");
  const auto dopo = test::Rate(base);
  Recita([](ListWindow& finestra) { finestra.Form_QueryUnload(); });
  EXPECT_EQ(Banca(), "closed");
  EXPECT_EQ(banco.host.calls.size(), 1U);
  EXPECT_EQ(test::Rate(base), dopo);
}

TEST_P(PresumedCommands, AListTakenByOneCommandStopsTheOtherToo) {
  banco.host.file["/tmp/VBPRESUNTI"] = "Utente : T02\r\nieri\r\n";
  EXPECT_EQ(Banca(), "error");
  EXPECT_EQ(Consegna(), "error");
  EXPECT_EQ(banco.desktop.windows, 0U);
  EXPECT_TRUE(ListaPresa());
  EXPECT_THAT(banco.statements, IsEmpty());
}

TEST_P(PresumedCommands, TheOptionsSelectTheDocuments) {
  EXPECT_EQ(Banca("-SC SCADUTO -C C01 -S AB -N 123 -A 06 -DATA 20060101 -SERIEESCLUSE X,Y -TIPOMOVIMENTI V"), "closed");
  EXPECT_EQ(Elenco(),
            "MOV.TIPOOPERAZIONE = 'V' AND EVE.SOSPESA = 'N' AND CONTO.TIPOLOGIACONTO in ('01','02','03','04') AND "
            "CONTO.BLOCCO = 'N' AND CONTO.CODICECONTO = 'C01' AND EVE.MOVIMENTOKEY = 401 AND (EVE.DATACONSEGNA < "
            "'2006-03-05') AND EVE.BANCAPRESENTAZIONE_KEY IS NOT NULL AND (MOV.SERIE != 'X' AND MOV.SERIE != 'Y' ) "
            "GROUP BY MOV.SERIE, MOV.NUMERO, CONTO.CODICECONTO, CONTO.DESCRIZIONEVOCE, BANCA.CODICECONTO, "
            "BANCA.DESCRIZIONEVOCE, EVE.DATACONSEGNA, EVE.CODICEDIVISA, EVE.DATACONSEGNAPRODUZIONE ");
}

TEST_P(PresumedCommands, WithoutAnOptionTheDocumentsWithABankAreShown) {
  EXPECT_EQ(Consegna("-TIPOMOVIMENTI V"), "closed");
  EXPECT_THAT(Elenco(), testing::HasSubstr("AND EVE.BANCAPRESENTAZIONE_KEY IS NOT NULL GROUP"));
}

TEST_P(PresumedCommands, AnEmptyExcludedSeriesExcludesNothing) {
  EXPECT_EQ(Banca("-SERIEESCLUSE  -TIPOMOVIMENTI V"), "closed");
  EXPECT_THAT(Elenco(), Not(testing::HasSubstr("MOV.SERIE !=")));
  EXPECT_THAT(Elenco(), StartsWith("MOV.TIPOOPERAZIONE = 'V'"));
}

TEST_P(PresumedCommands, TheItemOptionIsNotRead) {
  EXPECT_EQ(Banca("-TIPOMOVIMENTI V -P"), "closed");
}

TEST_P(PresumedCommands, TheProgramsRefusalLeavesLockAndDatabaseAsTheyWere) {
  banco.host.reply = "<RISPOSTA><ERRORE>Documento fatturato</ERRORE></RISPOSTA>";
  Recita([](ListWindow& finestra) {
    DaiConsegna(finestra, "CD5/06", "010306");
    finestra.PictureOk_Click();
  });
  EXPECT_EQ(Consegna(), "error");
  EXPECT_THAT(Cambiati(), IsEmpty());
  EXPECT_TRUE(ListaPresa());
  EXPECT_THAT(banco.desktop.box.back(), StartsWith("-2147220905\r\n"));
}

TEST_P(PresumedCommands, AnErrorOfTheDatabaseNeverRestoresThePointer) {
  Recita([this](ListWindow& finestra) {
    DaiBanca(finestra, "CD5/06", 2);
    base.Esegui("DELETE FROM CONTOCONTABILE WHERE CODICECONTO='B06'");
    finestra.PictureOk_Click();
  });
  EXPECT_EQ(Banca(), "error");
  EXPECT_THAT(banco.desktop.pointers, ElementsAre(Pointer::Hourglass, Pointer::Hourglass, Pointer::Hourglass,
                                                  Pointer::Standard, Pointer::Standard))
      << "il comando, la richiesta e la chiamata la mettono; solo le ultime due la tolgono";
}

TEST_P(PresumedCommands, AChangeThatCannotBeWrittenIsUndoneAndSaid) {
  Recita([this](ListWindow& finestra) {
    DaiBanca(finestra, "CD5/06", 2);
    base.Esegui("DELETE FROM CONTOCONTABILE WHERE CODICECONTO='B06'");
    finestra.PictureOk_Click();
  });
  EXPECT_EQ(Banca(), "error");
  EXPECT_THAT(Cambiati(), IsEmpty());
  EXPECT_THAT(banco.desktop.box.back(),
              StartsWith("-2147220954\r\nERRORE: -2147220990\r\nCONTO CONTABILE INESISTENTE"));
  EXPECT_TRUE(ListaPresa());
}

TEST_P(PresumedCommands, TheBankScreenIsUsedAgain) {
  EXPECT_EQ(Banca(), "closed");
  const auto usata = stato().presunti;
  ASSERT_NE(usata, nullptr);
  EXPECT_EQ(Consegna(), "closed");
  EXPECT_EQ(Banca(), "closed");
  EXPECT_EQ(stato().presunti, usata);
}

} // namespace
} // namespace lumoscad
