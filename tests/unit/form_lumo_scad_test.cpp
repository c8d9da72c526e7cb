#include "ScadenzarioDiProva.hpp"
#include "platform/Errore.hpp"

namespace lumoscad {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class ShowingAnItem : public prova::ScadenzarioDiProva {};
class ItemConfirmation : public prova::ScadenzarioDiProva {};

TEST_F(ShowingAnItem, ShowsTheDescriptionOfAnOpenItem) {
  form.LabelDescPartita = "2006 15";
  form.LabelDescCliFor = "ROSSI";
  EXPECT_EQ(Mostra([&](FinestraScadenzario& finestra) {
              EXPECT_EQ(form.Modo(), "Scad");
              EXPECT_TRUE(finestra.Stato().descrizioneVisibile);
              ASSERT_THAT(finestra.Description().descrizione, SizeIs(2));
              EXPECT_EQ(finestra.Description().descrizione[0].didascalia.nome, "LabelPartita");
              EXPECT_EQ(finestra.Description().descrizione[0].didascalia.testo, "Partita:");
              EXPECT_EQ(finestra.Description().descrizione[0].valore.nome, "LabelDescPartita");
              EXPECT_EQ(finestra.Description().descrizione[0].valore.testo, "2006 15");
              EXPECT_EQ(finestra.Description().descrizione[1].didascalia.nome, "LabelCliFor");
              EXPECT_EQ(finestra.Description().descrizione[1].didascalia.testo, "Cliente/Fornitore:");
              EXPECT_EQ(finestra.Description().descrizione[1].valore.nome, "LabelDescCliFor");
              EXPECT_EQ(finestra.Description().descrizione[1].valore.testo, "ROSSI");
            }),
            "closed");
}

TEST_F(ShowingAnItem, HidesTheDescriptionForAnExtraSchedule) {
  banco.desktop.copioniScadenzario.emplace_back([&](FinestraScadenzario& finestra) {
    EXPECT_EQ(form.Modo(), "Extra");
    EXPECT_FALSE(finestra.Stato().descrizioneVisibile);
  });
  EXPECT_EQ(form.VisualizzaExtra(), "closed");
  Mostra([](FinestraScadenzario& finestra) { EXPECT_TRUE(finestra.Stato().descrizioneVisibile); });
  EXPECT_EQ(banco.desktop.finestre, 2U);
}

TEST_F(ShowingAnItem, ShowsATickAndFourColumnsARow) {
  form.griglia().Righe.ImpostaSpunta(1, 0, true);
  Mostra([](FinestraScadenzario& finestra) {
    const FinestraElenco& elenco = finestra.Elenco();
    std::vector<std::string> intestazioni;
    for (const ColonnaElenco& colonna : elenco.Description().colonne) {
      intestazioni.push_back(colonna.intestazione);
    }
    EXPECT_THAT(intestazioni, ElementsAre("", "Scadenza", "Scad. orig.", "Importo", "Nuova scadenza"));
    EXPECT_THAT(elenco.Description().testate, IsEmpty()) << "nothing sorts";
    EXPECT_EQ(elenco.RowCount(), 3U);
    EXPECT_EQ(elenco.CellText(1, 0), "");
    EXPECT_EQ(elenco.CellText(1, 1), "30/04/2006");
    EXPECT_EQ(elenco.CellText(1, 2), "28/02/2006");
    EXPECT_EQ(elenco.CellText(1, 3), "100,00");
    EXPECT_EQ(elenco.CellText(1, 4), "");
    EXPECT_TRUE(elenco.Ticked(1, 0));
    EXPECT_FALSE(elenco.Ticked(0, 0));
    EXPECT_EQ(elenco.Stato().selezionata, 0);
  });
}

TEST_F(ShowingAnItem, NeverShowsTheFarewellLabel) {
  Mostra([](FinestraScadenzario& finestra) {
    EXPECT_THAT(finestra.Elenco().Description().etichette, IsEmpty());
    for (const RigaDescrizione& riga : finestra.Description().descrizione) {
      EXPECT_NE(riga.didascalia.nome, "Label1");
      EXPECT_NE(riga.valore.nome, "Label1");
    }
  });
}

TEST_F(ShowingAnItem, StartsWithoutRowsWhereThereAreNone) {
  form.Svuota();
  EXPECT_EQ(Mostra([](FinestraScadenzario& finestra) {
              EXPECT_EQ(finestra.Elenco().RowCount(), 0U);
              EXPECT_EQ(finestra.Elenco().Stato().selezionata, -1);
              finestra.Elenco().LVScadenze_Click(0);
              finestra.PicSelezionaTutto_Click();
              EXPECT_FALSE(finestra.Elenco().Stato().data.visibile);
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
  EXPECT_EQ(form.griglia().Righe.Quante(), 0U);
  EXPECT_EQ(form.LabelDescPartita, "");
  EXPECT_EQ(form.griglia().Stato().testoScadenza, "");
  EXPECT_FALSE(form.SelezionaTutto());
  EXPECT_EQ(form.Stato().selezionaTutto, "Seleziona tutto");
  EXPECT_FALSE(form.Stato().primoPiano);
}

TEST_F(ShowingAnItem, LaysOutAtMostTwelveRows) {
  EXPECT_EQ(form.griglia().Stato().altezzaLista, 3 * 240);
  EXPECT_EQ(form.griglia().Stato().larghezzaLista, 420 + 1800 + 1800 + 1950 + 1950 + 50);
  EXPECT_EQ(form.griglia().Stato().larghezzaQuadro, 420 + 1800 + 1800 + 1950 + 1950 + 100);
  for (int i = 0; i < 20; ++i) {
    form.Aggiungi("30/06/2006", "", "1,00");
  }
  form.ResizeScad();
  EXPECT_EQ(form.griglia().Stato().altezzaLista, 12 * 240);
}

TEST_F(ShowingAnItem, StaysOnTopForTrueAlone) {
  form.SetTopMostWindow(true);
  EXPECT_TRUE(form.Stato().primoPiano);
  form.SetTopMostWindow(false);
  EXPECT_FALSE(form.Stato().primoPiano);
  for (const int valore : {1, 0, 2, -2, 255}) {
    form.SetTopMostWindow(true);
    form.SetTopMostWindow(valore);
    EXPECT_FALSE(form.Stato().primoPiano) << valore;
  }
  form.SetTopMostWindow(-1);
  EXPECT_TRUE(form.Stato().primoPiano);
}

TEST_F(ItemConfirmation, OfAnOpenItemHandsBackItsOwnResult) {
  esito = [] { return "scritte"; };
  EXPECT_EQ(Mostra([](FinestraScadenzario& finestra) { finestra.PictureOk_Click(); }), "scritte");
  EXPECT_THAT(confermate, ElementsAre("Scad"));
  EXPECT_EQ(form.MotivoChiusura(), "");
}

TEST_F(ItemConfirmation, OfAnExtraScheduleHandsBackItsOwnResult) {
  esito = [] { return "error"; };
  banco.desktop.copioniScadenzario.emplace_back([](FinestraScadenzario& finestra) { finestra.PictureOk_Click(); });
  EXPECT_EQ(form.VisualizzaExtra(), "error");
  EXPECT_THAT(confermate, ElementsAre("Extra"));
}

TEST_F(ItemConfirmation, RunsBeforeTheWindowIsUnloaded) {
  bool scaricata = true;
  esito = [&] {
    scaricata = form.griglia().Stato().scaricata;
    return std::string();
  };
  EXPECT_EQ(Mostra([](FinestraScadenzario& finestra) { finestra.PictureOk_Click(); }), "");
  EXPECT_FALSE(scaricata);
  EXPECT_TRUE(form.griglia().Stato().scaricata);
}

TEST_F(ItemConfirmation, OfADemonstrationRunsOnceTheWindowIsGone) {
  stato().DemoPresunti = true;
  bool aperta = true;
  bool scaricata = false;
  esito = [&] {
    EXPECT_FALSE(aperta);
    scaricata = form.griglia().Stato().scaricata;
    return std::string("dopo");
  };
  EXPECT_EQ(Mostra([&](FinestraScadenzario& finestra) {
              finestra.PictureOk_Click();
              EXPECT_THAT(confermate, IsEmpty());
              EXPECT_TRUE(finestra.Elenco().Stato().scaricata);
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
  Mostra([&](FinestraScadenzario& finestra) {
    ScriviData(0, "150606");
    finestra.PictureOk_Click();
  });
  EXPECT_THAT(confermate, SizeIs(1));
}

TEST_F(ItemConfirmation, ThatFailsComesOut) {
  esito = []() -> std::string { throw ErroreRuntime(errori::IndiceNonValido, "troppe scadenze"); };
  EXPECT_THROW(Mostra([](FinestraScadenzario& finestra) { finestra.PictureOk_Click(); }), ErroreRuntime);
}

TEST_F(ItemConfirmation, IsNotRunByAnnullaNorByTheCloseBox) {
  stato().DemoPresunti = true;
  for (const bool annulla : {true, false}) {
    EXPECT_EQ(Mostra([annulla](FinestraScadenzario& finestra) {
                annulla ? finestra.Elenco().PictureAnnulla_Click() : finestra.Elenco().Form_QueryUnload();
              }),
              "closed");
    EXPECT_EQ(form.MotivoChiusura(), "closed");
  }
  EXPECT_THAT(confermate, IsEmpty());
}

TEST_F(ItemConfirmation, LeavesNothingBehindForTheNextShowing) {
  stato().DemoPresunti = true;
  esito = [] { return "prima"; };
  EXPECT_EQ(Mostra([](FinestraScadenzario& finestra) { finestra.PictureOk_Click(); }), "prima");
  EXPECT_EQ(Mostra([&](FinestraScadenzario& finestra) {
              EXPECT_FALSE(finestra.Elenco().Stato().scaricata);
              EXPECT_FALSE(finestra.Elenco().Stato().data.visibile);
              finestra.Elenco().Form_QueryUnload();
            }),
            "closed");
  stato().DemoPresunti = false;
  esito = [] { return "seconda"; };
  EXPECT_EQ(Mostra([](FinestraScadenzario& finestra) { finestra.PictureOk_Click(); }), "seconda");
  EXPECT_EQ(form.MotivoChiusura(), "");
  EXPECT_THAT(confermate, ElementsAre("Scad", "Scad"));
}

TEST_F(ItemConfirmation, LeavesAnEditorThatWasOpenClosedForTheNextShowing) {
  Mostra([&](FinestraScadenzario& finestra) {
    ScriviData(0, "150606");
    finestra.Elenco().PictureAnnulla_Click();
  });
  Mostra([](FinestraScadenzario& finestra) { EXPECT_FALSE(finestra.Elenco().Stato().data.visibile); });
  EXPECT_THAT(NuoveScadenze(), ElementsAre("", "", ""));
}

} // namespace
} // namespace lumoscad
