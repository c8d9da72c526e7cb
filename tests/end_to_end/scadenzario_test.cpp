// The window of one open item, which no command opens: in its real window, with the real request, the real back end on
// a host that is a directory, and a database.

#include "FinestraIntera.hpp"
#include "handlers/ModuloMain.hpp"
#include "host/RichiestaScadenze.hpp"
#include "screens/FormLumoScad.hpp"
#include "support/OdbcConfiguration.hpp"
#include "support/Paths.hpp"

#include <gmock/gmock.h>

namespace lumoscad::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::StartsWith;
namespace fs = std::filesystem;

constexpr std::string_view Nome = "T0120260305140709";

class WholeItemWindow : public FinestraIntera {
 protected:
  WholeItemWindow() {
    test::RunScript(demo.Connessione(), FileText(test::SourcePath("demo/comandi.sql")));
    prima = demo.Stato();
    auto& s = stato();
    s.ComandoCorrente = "-DB2SOURCE " + demo.Sorgente() + " -DB2SCHEMA main";
    s.azienda = "01";
    s.HostIP = demo.Indirizzo();
    s.tipoComando = "BANCA";
    s.contoScadenze = "20100001";
    s.partitaScadenze = "AB   123";
    s.Serie = "A";
    s.Esercizio = "2006";
    s.Numero = "15";
    for (const char* scadenza : {"31/03/2006", "30/04/2006"}) {
      form.Aggiungi(scadenza, scadenza, "100,00");
    }
  }

  static void Scrivi(QDialog& finestra, int riga, const char* data) {
    Clicca(Trova<QTableView>(finestra, "LWScad"), riga, FormLumoScad::NuovaScadenza);
    auto& editor = Trova<QWidget>(finestra, "TextScad");
    QTest::keyClicks(&editor, data);
    QTest::keyClick(&editor, Qt::Key_Return);
  }

  Fotografia prima;
  FormLumoScad form{[this] { return ScriviRichiestaScadenze(RigheDellaFinestra()); },
                    [] {
                      const auto& s = stato();
                      return ModuloMain::CancellaExtra(s.azienda, s.HostIP, s.Serie, s.Esercizio, s.Numero);
                    }};

 private:
  [[nodiscard]] std::vector<RigaScadenze> RigheDellaFinestra() const {
    std::vector<RigaScadenze> righe;
    for (std::size_t riga = 0; riga < form.griglia().righe.Quante(); ++riga) {
      const auto testo = [&](int colonna) { return std::string(form.griglia().righe.Testo(riga, colonna)); };
      righe.push_back({stato().contoScadenze, stato().partitaScadenze, testo(FormLumoScad::Scadenza),
                       testo(FormLumoScad::ScadOrig), testo(FormLumoScad::NuovaScadenza)});
    }
    return righe;
  }
};

TEST_F(WholeItemWindow, TheDatesTypedInTheWindowGoToTheHostAndIntoTheDatabase) {
  const auto dopo =
      demo.StatoDopo("UPDATE EVENTOCONTABILE SET DATASCADENZA='2006-06-15' WHERE EVENTOCONTABILEKEY=900001;"
                     "UPDATE EVENTOCONTABILE SET DATASCADENZA='2006-07-20' WHERE EVENTOCONTABILEKEY=900002");
  ASSERT_EQ(Differenze(prima, dopo).size(), 4U);
  Recita([](QDialog& finestra) {
    Scrivi(finestra, 0, "150606");
    Scrivi(finestra, 1, "20/07/06");
    Premi(finestra, "PictureOk");
  });
  EXPECT_EQ(form.VisualizzaScad(), "");
  EXPECT_THAT(box, IsEmpty()) << "the answer to this request is an item, not a message";
  EXPECT_THAT(Chiamata(), StartsWith("ACCETTATA\tVariate 2 scadenze\t101\t01\tSCRIVISCADENZE\tBANCA\tT01\t/tmp/" +
                                     std::string(Nome) + ".dos\t"));
  EXPECT_THAT(Chiamata(), testing::EndsWith("\t20100001,AB   123,20060331,20060615\\r\\n"
                                            "20100001,AB   123,20060430,20060720\\r\\n\n"));
  EXPECT_THAT(Contenuto(demo.Tmp()), IsEmpty());
  EXPECT_THAT(Differenze(dopo, demo.Stato()), IsEmpty());
}

TEST_F(WholeItemWindow, TheTopDateGoesToTheTickedRowAlone) {
  const auto dopo =
      demo.StatoDopo("UPDATE EVENTOCONTABILE SET DATASCADENZA='2006-09-30' WHERE EVENTOCONTABILEKEY=900002");
  Recita([](QDialog& finestra) {
    QTest::keyClicks(&Trova<QWidget>(finestra, "TextScadenza"), "300906");
    Clicca(Trova<QTableView>(finestra, "LWScad"), 1, 0);
    Premi(finestra, "PictureOk");
  });
  EXPECT_EQ(form.VisualizzaScad(), "");
  EXPECT_THAT(Chiamata(), testing::EndsWith("\t20100001,AB   123,20060430,20060930\\r\\n\n"));
  EXPECT_THAT(Differenze(dopo, demo.Stato()), IsEmpty());
}

TEST_F(WholeItemWindow, AnnullaSendsNothing) {
  Recita([](QDialog& finestra) {
    Scrivi(finestra, 0, "150606");
    Premi(finestra, "PictureAnnulla");
  });
  EXPECT_EQ(form.VisualizzaScad(), "closed");
  EXPECT_THAT(box, IsEmpty());
  EXPECT_FALSE(fs::exists(demo.Registro()));
  EXPECT_THAT(Differenze(prima, demo.Stato()), IsEmpty());
}

TEST_F(WholeItemWindow, TheConfirmationOfAnExtraScheduleDeletesItOnTheHostAndInTheDatabase) {
  const auto dopo = demo.StatoDopo("DELETE FROM EVENTOCONTABILE WHERE MOVIMENTOKEY=900003;"
                                   "DELETE FROM MOVIMENTOCONTABILE WHERE MOVIMENTOKEY=900003");
  Recita([](QDialog& finestra) { Premi(finestra, "PictureOk"); });
  EXPECT_EQ(form.VisualizzaExtra(), "");
  EXPECT_THAT(box, ElementsAre("Annullato il movimento A 15 dell'esercizio 2006"));
  EXPECT_THAT(Chiamata(), MatchesRegex("ACCETTATA\t[^\n]*\t6\t01\tEXTRADEL\tA\t2006\t15\t[^\n]*\n"));
  EXPECT_THAT(Differenze(dopo, demo.Stato()), IsEmpty());
}

} // namespace
} // namespace lumoscad::test
