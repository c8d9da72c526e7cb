#include "BaseDelleAzioni.hpp"
#include "handlers/ModuloMain.hpp"
#include "host/RichiestaScadenze.hpp"
#include "host/Risposte.hpp"
#include "platform/RuntimeError.hpp"
#include "screens/FormLumoScad.hpp"
#include "screens/frmLumoScadenzeBanche.hpp"

using namespace lumoscad;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

using Elenco = frmLumoScadenzeBanche;

/// The rows that the due-date request takes: those of the credits/debits list, whichever screen confirms.
std::vector<RigaScadenze> RigheDellElenco(Elenco& elenco) {
  const RigheGriglia& griglia = elenco.griglia().righe;
  std::vector<RigaScadenze> righe;
  for (std::size_t posto = 0; posto < griglia.Quante(); ++posto) {
    const auto testo = [&griglia, riga = griglia.RigaAlPosto(posto)](int colonna) {
      return std::string(griglia.Testo(riga, colonna));
    };
    righe.push_back({testo(Elenco::Conto), testo(Elenco::Partita), testo(Elenco::Scadenza), testo(Elenco::ScadenzaOrig),
                     testo(Elenco::NuovaScadenza)});
  }
  return righe;
}

/// The single-item screen with the true request writer, the true extra deletion and a database behind them.
class ItemScreenOnADatabase : public test::BaseDelleAzioni {
 protected:
  ItemScreenOnADatabase() {
    stato().azienda = "01";
    stato().HostIP = "10.0.0.1";
    stato().tipoComando = "BANCA";
    stato().contoScadenze = "C10";
    stato().partitaScadenze = "AB   123";
    stato().Serie = "A";
    stato().Esercizio = "2006";
    stato().Numero = "15";
    form.Aggiungi("31/03/2006", "28/02/2006", "100,00");
    form.Aggiungi("31/05/2006", "31/05/2006", "100,00");
  }

  void NellElenco(const std::string& scadenza, const std::string& originale, const std::string& nuova) {
    elenco.griglia().righe.Aggiungi({"C10", "AB   123", scadenza, originale, "", "100,00", "", nuova, "1", "", "", ""});
  }
  /// "Conferma" in the window of the open item.
  std::string ConfermaScad() {
    banco_.desktop.itemScripts.emplace_back([](SingleItemWindow& finestra) { finestra.PictureOk_Click(); });
    return form.VisualizzaScad();
  }
  std::string ConfermaExtra() {
    banco_.desktop.itemScripts.emplace_back([](SingleItemWindow& finestra) { finestra.PictureOk_Click(); });
    return form.VisualizzaExtra();
  }

  Elenco elenco;
  FormLumoScad form{[this] { return ScriviRichiestaScadenze(RigheDellElenco(elenco)); },
                    [] {
                      const Stato& s = stato();
                      return ModuloMain::CancellaExtra(s.azienda, s.HostIP, s.Serie, s.Esercizio, s.Numero);
                    }};
};

// What is tested here is how the parts fit together, which no kind of database changes.
INSTANTIATE_TEST_SUITE_P(Databases, ItemScreenOnADatabase, testing::Values("sqlite"),
                         [](const auto& scelta) { return std::string(scelta.param); });

} // namespace

TEST_P(ItemScreenOnADatabase, ConfirmingAnItemSendsTheRequestAndRepeatsItInTheDatabase) {
  NellElenco("28/02/2006", "28/02/2006", "05/07/2006");
  NellElenco("30/04/2006", "30/04/2006", "");
  EXPECT_EQ(ConfermaScad(), "");
  EXPECT_THAT(banco_.host.uploads, ElementsAre("C10,AB   123,20060228,20060705\r\n"));
  ASSERT_THAT(banco_.host.calls, SizeIs(1));
  EXPECT_EQ(banco_.host.calls[0][1], "SCRIVISCADENZE");
  CambiatoCome("UPDATE EVENTOCONTABILE SET DATASCADENZA='2006-07-05' WHERE EVENTOCONTABILEKEY IN (1,4)");
}

TEST_P(ItemScreenOnADatabase, ThePresentDateOfTheListIsComparedWithTheOriginalOneOfTheInstalments) {
  NellElenco("31/05/2006", "28/02/2006", "05/07/2006");
  EXPECT_EQ(ConfermaScad(), "");
  CambiatoCome("UPDATE EVENTOCONTABILE SET DATASCADENZA='2006-07-05' WHERE EVENTOCONTABILEKEY=3");
}

TEST_P(ItemScreenOnADatabase, WithoutRowsInTheListTheConfirmationSendsNothingWhateverTheWindowHolds) {
  form.griglia().TextScadenza_Change("050706");
  form.PicSelezionaTutto_Click();
  EXPECT_EQ(form.griglia().righe.Testo(0, FormLumoScad::NuovaScadenza), "05/07/2006");
  EXPECT_EQ(ConfermaScad(), "");
  EXPECT_THAT(banco_.host.operazioni, IsEmpty());
  NienteCambiato();
}

TEST_P(ItemScreenOnADatabase, AnItemThatIsGoneIsAnError) {
  stato().partitaScadenze = "MAI VISTA";
  NellElenco("28/02/2006", "28/02/2006", "05/07/2006");
  EXPECT_EQ(ConfermaScad(), "error");
  NienteCambiato();
}

TEST_P(ItemScreenOnADatabase, ARequestThatIsTooLongComesOutAsAnError) {
  for (int i = 0; i < 33; ++i) {
    NellElenco("28/02/2006", "28/02/2006", "05/07/2006");
  }
  try {
    static_cast<void>(ConfermaScad());
    FAIL() << "nessun errore";
  } catch (const RuntimeError& errore) {
    EXPECT_EQ(errore.Number(), errors::SubscriptOutOfRange);
  }
  EXPECT_THAT(banco_.host.operazioni, IsEmpty());
  NienteCambiato();
}

TEST_P(ItemScreenOnADatabase, ConfirmingAnExtraDeletesTheMovementOnTheHostAndInTheDatabase) {
  EXPECT_EQ(ConfermaExtra(), "");
  EXPECT_THAT(banco_.host.calls, ElementsAre(std::vector<std::string>{"01", "EXTRADEL", "A", "2006", "15", ""}));
  EXPECT_THAT(banco_.desktop.waits, SizeIs(1));
  EXPECT_THAT(base_.Righe("SELECT COUNT(*) FROM MOVIMENTOCONTABILE WHERE MOVIMENTOKEY=2000"), ElementsAre("0"));
  EXPECT_THAT(base_.Righe("SELECT COUNT(*) FROM EVENTOCONTABILE WHERE MOVIMENTOKEY=2000"), ElementsAre("0"));
}

TEST_P(ItemScreenOnADatabase, ARefusalOfTheHostIsAnErrorAndIsShown) {
  banco_.host.reply = "<R><ERRORE>Movimento bloccato</ERRORE></R>";
  EXPECT_EQ(ConfermaExtra(), "error");
  EXPECT_THAT(banco_.desktop.box, ElementsAre("Movimento bloccato"));
  NienteCambiato();
}

TEST_P(ItemScreenOnADatabase, InADemonstrationTheConfirmationComesAfterTheWindowAndHasTheSameOutcome) {
  stato().demoPresunti = true;
  banco_.desktop.itemScripts.emplace_back([this](SingleItemWindow& finestra) {
    finestra.PictureOk_Click();
    EXPECT_THAT(banco_.host.operazioni, IsEmpty());
  });
  EXPECT_EQ(form.VisualizzaExtra(), "");
  EXPECT_THAT(banco_.host.operazioni, ElementsAre("Esegui VB0001"));
}

TEST_P(ItemScreenOnADatabase, AnnullaSendsNothing) {
  NellElenco("28/02/2006", "28/02/2006", "05/07/2006");
  for (int volta = 0; volta < 2; ++volta) {
    banco_.desktop.itemScripts.emplace_back(
        [](SingleItemWindow& finestra) { finestra.Elenco().PictureAnnulla_Click(); });
  }
  EXPECT_EQ(form.VisualizzaScad(), "closed");
  EXPECT_EQ(form.VisualizzaExtra(), "closed");
  EXPECT_THAT(banco_.host.operazioni, IsEmpty());
  NienteCambiato();
}
