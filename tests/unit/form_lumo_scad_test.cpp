#include "ScadenzarioDiProva.hpp"
#include "platform/RuntimeError.hpp"

namespace lumoscad {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class ShowingAnItem : public test::ScadenzarioDiProva {};
class ItemConfirmation : public test::ScadenzarioDiProva {};

TEST_F(ShowingAnItem, ShowsTheDescriptionOfAnOpenItem) {
  form.LabelDescPartita = "2006 15";
  form.LabelDescCliFor = "ROSSI";
  EXPECT_EQ(Mostra([&](SingleItemWindow& finestra) {
              EXPECT_EQ(form.Modo(), "Scad");
              EXPECT_TRUE(finestra.Stato().descriptionVisible);
              ASSERT_THAT(finestra.Description().description, SizeIs(2));
              EXPECT_EQ(finestra.Description().description[0].caption.name, "LabelPartita");
              EXPECT_EQ(finestra.Description().description[0].caption.text, "Partita:");
              EXPECT_EQ(finestra.Description().description[0].value.name, "LabelDescPartita");
              EXPECT_EQ(finestra.Description().description[0].value.text, "2006 15");
              EXPECT_EQ(finestra.Description().description[1].caption.name, "LabelCliFor");
              EXPECT_EQ(finestra.Description().description[1].caption.text, "Cliente/Fornitore:");
              EXPECT_EQ(finestra.Description().description[1].value.name, "LabelDescCliFor");
              EXPECT_EQ(finestra.Description().description[1].value.text, "ROSSI");
            }),
            "closed");
}

TEST_F(ShowingAnItem, HidesTheDescriptionForAnExtraSchedule) {
  banco.desktop.itemScripts.emplace_back([&](SingleItemWindow& finestra) {
    EXPECT_EQ(form.Modo(), "Extra");
    EXPECT_FALSE(finestra.Stato().descriptionVisible);
  });
  EXPECT_EQ(form.VisualizzaExtra(), "closed");
  Mostra([](SingleItemWindow& finestra) { EXPECT_TRUE(finestra.Stato().descriptionVisible); });
  EXPECT_EQ(banco.desktop.windows, 2U);
}

TEST_F(ShowingAnItem, ShowsATickAndFourColumnsARow) {
  form.griglia().righe.ImpostaSpunta(1, 0, true);
  Mostra([](SingleItemWindow& finestra) {
    const ListWindow& elenco = finestra.Elenco();
    std::vector<std::string> intestazioni;
    for (const ListColumn& colonna : elenco.Description().columns) {
      intestazioni.push_back(colonna.headingText);
    }
    EXPECT_THAT(intestazioni, ElementsAre("", "Scadenza", "Scad. orig.", "Importo", "Nuova scadenza"));
    EXPECT_THAT(elenco.Description().headings, IsEmpty()) << "nothing sorts";
    EXPECT_EQ(elenco.RowCount(), 3U);
    EXPECT_EQ(elenco.CellText(1, 0), "");
    EXPECT_EQ(elenco.CellText(1, 1), "30/04/2006");
    EXPECT_EQ(elenco.CellText(1, 2), "28/02/2006");
    EXPECT_EQ(elenco.CellText(1, 3), "100,00");
    EXPECT_EQ(elenco.CellText(1, 4), "");
    EXPECT_TRUE(elenco.Ticked(1, 0));
    EXPECT_FALSE(elenco.Ticked(0, 0));
    EXPECT_EQ(elenco.Stato().selected, 0);
  });
}

TEST_F(ShowingAnItem, NeverShowsTheFarewellLabel) {
  Mostra([](SingleItemWindow& finestra) {
    EXPECT_THAT(finestra.Elenco().Description().labels, IsEmpty());
    for (const DescriptionLine& riga : finestra.Description().description) {
      EXPECT_NE(riga.caption.name, "Label1");
      EXPECT_NE(riga.value.name, "Label1");
    }
  });
}

TEST_F(ShowingAnItem, StartsWithoutRowsWhereThereAreNone) {
  form.Svuota();
  EXPECT_EQ(Mostra([](SingleItemWindow& finestra) {
              EXPECT_EQ(finestra.Elenco().RowCount(), 0U);
              EXPECT_EQ(finestra.Elenco().Stato().selected, -1);
              finestra.Elenco().LVScadenze_Click(0);
              finestra.PicSelezionaTutto_Click();
              EXPECT_FALSE(finestra.Elenco().Stato().data.visible);
            }),
            "closed");
}

TEST_F(ShowingAnItem, EmptiedIsAsNew) {
  form.LabelDescPartita = "2006 15";
  form.griglia().TextScadenza_Change("010406");
  form.PicSelezionaTutto_Click();
  form.PicSelezionaTutto_Click();
  form.SetTopMostWindow(true);
  form.Svuota();
  EXPECT_EQ(form.griglia().righe.Quante(), 0U);
  EXPECT_EQ(form.LabelDescPartita, "");
  EXPECT_EQ(form.griglia().Stato().dueDateText, "");
  EXPECT_FALSE(form.SelezionaTutto());
  EXPECT_EQ(form.Stato().selectEverything, "Seleziona tutto");
  EXPECT_FALSE(form.Stato().onTop);
}

TEST_F(ShowingAnItem, LaysOutAtMostTwelveRows) {
  EXPECT_EQ(form.griglia().Stato().listHeight, 3 * 240);
  EXPECT_EQ(form.griglia().Stato().listWidth, 420 + 1800 + 1800 + 1950 + 1950 + 50);
  EXPECT_EQ(form.griglia().Stato().pictureWidth, 420 + 1800 + 1800 + 1950 + 1950 + 100);
  for (int i = 0; i < 20; ++i) {
    form.Aggiungi("30/06/2006", "", "1,00");
  }
  form.ResizeScad();
  EXPECT_EQ(form.griglia().Stato().listHeight, 12 * 240);
}

TEST_F(ShowingAnItem, StaysOnTopForTrueAlone) {
  form.SetTopMostWindow(true);
  EXPECT_TRUE(form.Stato().onTop);
  form.SetTopMostWindow(false);
  EXPECT_FALSE(form.Stato().onTop);
  for (const int valore : {1, 0, 2, -2, 255}) {
    form.SetTopMostWindow(true);
    form.SetTopMostWindow(valore);
    EXPECT_FALSE(form.Stato().onTop) << valore;
  }
  form.SetTopMostWindow(-1);
  EXPECT_TRUE(form.Stato().onTop);
}

TEST_F(ItemConfirmation, OfAnOpenItemHandsBackItsOwnResult) {
  esito = [] { return "scritte"; };
  EXPECT_EQ(Mostra([](SingleItemWindow& finestra) { finestra.PictureOk_Click(); }), "scritte");
  EXPECT_THAT(confermate, ElementsAre("Scad"));
  EXPECT_EQ(form.MotivoChiusura(), "");
}

TEST_F(ItemConfirmation, OfAnExtraScheduleHandsBackItsOwnResult) {
  esito = [] { return "error"; };
  banco.desktop.itemScripts.emplace_back([](SingleItemWindow& finestra) { finestra.PictureOk_Click(); });
  EXPECT_EQ(form.VisualizzaExtra(), "error");
  EXPECT_THAT(confermate, ElementsAre("Extra"));
}

TEST_F(ItemConfirmation, RunsBeforeTheWindowIsUnloaded) {
  bool scaricata = true;
  esito = [&] {
    scaricata = form.griglia().Stato().unloaded;
    return std::string();
  };
  EXPECT_EQ(Mostra([](SingleItemWindow& finestra) { finestra.PictureOk_Click(); }), "");
  EXPECT_FALSE(scaricata);
  EXPECT_TRUE(form.griglia().Stato().unloaded);
}

TEST_F(ItemConfirmation, OfADemonstrationRunsOnceTheWindowIsGone) {
  stato().demoPresunti = true;
  bool aperta = true;
  bool scaricata = false;
  esito = [&] {
    EXPECT_FALSE(aperta);
    scaricata = form.griglia().Stato().unloaded;
    return std::string("dopo");
  };
  EXPECT_EQ(Mostra([&](SingleItemWindow& finestra) {
              finestra.PictureOk_Click();
              EXPECT_THAT(confermate, IsEmpty());
              EXPECT_TRUE(finestra.Elenco().Stato().unloaded);
              aperta = false;
            }),
            "dopo");
  EXPECT_TRUE(scaricata);
  EXPECT_THAT(confermate, ElementsAre("Scad"));
}

TEST_F(ItemConfirmation, WritesTheOpenEditorFirst) {
  esito = [&] {
    EXPECT_THAT(NuoveScadenze(), ElementsAre("15/06/2006", "", ""));
    return std::string();
  };
  Mostra([&](SingleItemWindow& finestra) {
    ScriviData(0, "150606");
    finestra.PictureOk_Click();
  });
  EXPECT_THAT(confermate, SizeIs(1));
}

TEST_F(ItemConfirmation, ThatFailsComesOut) {
  esito = []() -> std::string { throw RuntimeError(errors::SubscriptOutOfRange, "troppe scadenze"); };
  EXPECT_THROW(Mostra([](SingleItemWindow& finestra) { finestra.PictureOk_Click(); }), RuntimeError);
}

TEST_F(ItemConfirmation, IsNotRunByAnnullaNorByTheCloseBox) {
  stato().demoPresunti = true;
  for (const bool annulla : {true, false}) {
    EXPECT_EQ(Mostra([annulla](SingleItemWindow& finestra) {
                annulla ? finestra.Elenco().PictureAnnulla_Click() : finestra.Elenco().Form_QueryUnload();
              }),
              "closed");
    EXPECT_EQ(form.MotivoChiusura(), "closed");
  }
  EXPECT_THAT(confermate, IsEmpty());
}

TEST_F(ItemConfirmation, LeavesNothingBehindForTheNextShowing) {
  stato().demoPresunti = true;
  esito = [] { return "prima"; };
  EXPECT_EQ(Mostra([](SingleItemWindow& finestra) { finestra.PictureOk_Click(); }), "prima");
  EXPECT_EQ(Mostra([&](SingleItemWindow& finestra) {
              EXPECT_FALSE(finestra.Elenco().Stato().unloaded);
              EXPECT_FALSE(finestra.Elenco().Stato().data.visible);
              finestra.Elenco().Form_QueryUnload();
            }),
            "closed");
  stato().demoPresunti = false;
  esito = [] { return "seconda"; };
  EXPECT_EQ(Mostra([](SingleItemWindow& finestra) { finestra.PictureOk_Click(); }), "seconda");
  EXPECT_EQ(form.MotivoChiusura(), "");
  EXPECT_THAT(confermate, ElementsAre("Scad", "Scad"));
}

TEST_F(ItemConfirmation, LeavesAnEditorThatWasOpenClosedForTheNextShowing) {
  Mostra([&](SingleItemWindow& finestra) {
    ScriviData(0, "150606");
    finestra.Elenco().PictureAnnulla_Click();
  });
  Mostra([](SingleItemWindow& finestra) { EXPECT_FALSE(finestra.Elenco().Stato().data.visible); });
  EXPECT_THAT(NuoveScadenze(), ElementsAre("", "", ""));
}

} // namespace
} // namespace lumoscad
