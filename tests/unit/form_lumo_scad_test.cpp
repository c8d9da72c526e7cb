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
              EXPECT_TRUE(finestra.stato().descrizioneVisibile);
              ASSERT_THAT(finestra.descrizione, SizeIs(2));
              EXPECT_EQ(finestra.descrizione[0].didascalia.nome, "LabelPartita");
              EXPECT_EQ(finestra.descrizione[0].didascalia.testo, "Partita:");
              EXPECT_EQ(finestra.descrizione[0].valore.nome, "LabelDescPartita");
              EXPECT_EQ(finestra.descrizione[0].valore.testo, "2006 15");
              EXPECT_EQ(finestra.descrizione[1].didascalia.nome, "LabelCliFor");
              EXPECT_EQ(finestra.descrizione[1].didascalia.testo, "Cliente/Fornitore:");
              EXPECT_EQ(finestra.descrizione[1].valore.nome, "LabelDescCliFor");
              EXPECT_EQ(finestra.descrizione[1].valore.testo, "ROSSI");
            }),
            "closed");
}

TEST_F(ShowingAnItem, HidesTheDescriptionForAnExtraSchedule) {
  banco.desktop.copioniScadenzario.emplace_back([&](FinestraScadenzario& finestra) {
    EXPECT_EQ(form.Modo(), "Extra");
    EXPECT_FALSE(finestra.stato().descrizioneVisibile);
  });
  EXPECT_EQ(form.VisualizzaExtra(), "closed");
  Mostra([](FinestraScadenzario& finestra) { EXPECT_TRUE(finestra.stato().descrizioneVisibile); });
  EXPECT_EQ(banco.desktop.finestre, 2U);
}

TEST_F(ShowingAnItem, ShowsATickAndFourColumnsARow) {
  form.Righe.ImpostaSpunta(1, 0, true);
  Mostra([](FinestraScadenzario& finestra) {
    const FinestraElenco& elenco = finestra.elenco;
    std::vector<std::string> intestazioni;
    for (const ColonnaElenco& colonna : elenco.colonne) {
      intestazioni.push_back(colonna.intestazione);
    }
    EXPECT_THAT(intestazioni, ElementsAre("", "Scadenza", "Scad. orig.", "Importo", "Nuova scadenza"));
    EXPECT_THAT(elenco.testate, IsEmpty()) << "nothing sorts";
    EXPECT_EQ(elenco.righe(), 3U);
    EXPECT_EQ(elenco.testo(1, 0), "");
    EXPECT_EQ(elenco.testo(1, 1), "30/04/2006");
    EXPECT_EQ(elenco.testo(1, 2), "28/02/2006");
    EXPECT_EQ(elenco.testo(1, 3), "100,00");
    EXPECT_EQ(elenco.testo(1, 4), "");
    EXPECT_TRUE(elenco.spuntata(1, 0));
    EXPECT_FALSE(elenco.spuntata(0, 0));
    EXPECT_EQ(elenco.stato().selezionata, 0);
  });
}

TEST_F(ShowingAnItem, NeverShowsTheFarewellLabel) {
  Mostra([](FinestraScadenzario& finestra) {
    EXPECT_THAT(finestra.elenco.etichette, IsEmpty());
    for (const RigaDescrizione& riga : finestra.descrizione) {
      EXPECT_NE(riga.didascalia.nome, "Label1");
      EXPECT_NE(riga.valore.nome, "Label1");
    }
  });
}

TEST_F(ShowingAnItem, StartsWithoutRowsWhereThereAreNone) {
  form.Svuota();
  EXPECT_EQ(Mostra([](FinestraScadenzario& finestra) {
              EXPECT_EQ(finestra.elenco.righe(), 0U);
              EXPECT_EQ(finestra.elenco.stato().selezionata, -1);
              finestra.elenco.clic(0);
              finestra.selezionaTutto();
              EXPECT_FALSE(finestra.elenco.stato().data.visibile);
            }),
            "closed");
}

TEST_F(ShowingAnItem, EmptiedIsAsNew) {
  form.LabelDescPartita = "2006 15";
  form.TextScadenza_Change("010406");
  form.PicSelezionaTutto_Click();
  form.PicSelezionaTutto_Click();
  form.SetTopMostWindow(true);
  form.Svuota();
  EXPECT_EQ(form.Righe.Quante(), 0U);
  EXPECT_EQ(form.LabelDescPartita, "");
  EXPECT_EQ(form.Stato().testoScadenza, "");
  EXPECT_FALSE(form.SelezionaTutto());
  EXPECT_EQ(form.StatoFinestra().selezionaTutto, "Seleziona tutto");
  EXPECT_FALSE(form.StatoFinestra().primoPiano);
}

TEST_F(ShowingAnItem, LaysOutAtMostTwelveRows) {
  EXPECT_EQ(form.Stato().altezzaLista, 3 * 240);
  EXPECT_EQ(form.Stato().larghezzaLista, 420 + 1800 + 1800 + 1950 + 1950 + 50);
  EXPECT_EQ(form.Stato().larghezzaQuadro, 420 + 1800 + 1800 + 1950 + 1950 + 100);
  for (int i = 0; i < 20; ++i) {
    form.Righe.Aggiungi({"30/06/2006", "", "1,00", ""});
  }
  form.ResizeScad();
  EXPECT_EQ(form.Stato().altezzaLista, 12 * 240);
}

TEST_F(ShowingAnItem, StaysOnTopForTrueAlone) {
  form.SetTopMostWindow(true);
  EXPECT_TRUE(form.StatoFinestra().primoPiano);
  form.SetTopMostWindow(false);
  EXPECT_FALSE(form.StatoFinestra().primoPiano);
  for (const int valore : {1, 0, 2, -2, 255}) {
    form.SetTopMostWindow(true);
    form.SetTopMostWindow(valore);
    EXPECT_FALSE(form.StatoFinestra().primoPiano) << valore;
  }
  form.SetTopMostWindow(-1);
  EXPECT_TRUE(form.StatoFinestra().primoPiano);
}

TEST_F(ItemConfirmation, OfAnOpenItemHandsBackItsOwnResult) {
  esito = [] { return "scritte"; };
  EXPECT_EQ(Mostra([](FinestraScadenzario& finestra) { finestra.elenco.conferma(); }), "scritte");
  EXPECT_THAT(confermate, ElementsAre("Scad"));
  EXPECT_EQ(form.MotivoChiusura(), "");
}

TEST_F(ItemConfirmation, OfAnExtraScheduleHandsBackItsOwnResult) {
  esito = [] { return "error"; };
  banco.desktop.copioniScadenzario.emplace_back([](FinestraScadenzario& finestra) { finestra.elenco.conferma(); });
  EXPECT_EQ(form.VisualizzaExtra(), "error");
  EXPECT_THAT(confermate, ElementsAre("Extra"));
}

TEST_F(ItemConfirmation, RunsBeforeTheWindowIsUnloaded) {
  bool scaricata = true;
  esito = [&] {
    scaricata = form.Stato().scaricata;
    return std::string();
  };
  EXPECT_EQ(Mostra([](FinestraScadenzario& finestra) { finestra.elenco.conferma(); }), "");
  EXPECT_FALSE(scaricata);
  EXPECT_TRUE(form.Stato().scaricata);
}

TEST_F(ItemConfirmation, OfADemonstrationRunsOnceTheWindowIsGone) {
  stato().DemoPresunti = true;
  bool aperta = true;
  bool scaricata = false;
  esito = [&] {
    EXPECT_FALSE(aperta);
    scaricata = form.Stato().scaricata;
    return std::string("dopo");
  };
  EXPECT_EQ(Mostra([&](FinestraScadenzario& finestra) {
              finestra.elenco.conferma();
              EXPECT_THAT(confermate, IsEmpty());
              EXPECT_TRUE(finestra.elenco.stato().scaricata);
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
    finestra.elenco.conferma();
  });
  EXPECT_THAT(confermate, SizeIs(1));
}

TEST_F(ItemConfirmation, ThatFailsComesOut) {
  esito = []() -> std::string { throw ErroreRuntime(errori::IndiceNonValido, "troppe scadenze"); };
  EXPECT_THROW(Mostra([](FinestraScadenzario& finestra) { finestra.elenco.conferma(); }), ErroreRuntime);
}

TEST_F(ItemConfirmation, IsNotRunByAnnullaNorByTheCloseBox) {
  stato().DemoPresunti = true;
  for (const bool annulla : {true, false}) {
    EXPECT_EQ(Mostra([annulla](FinestraScadenzario& finestra) {
                annulla ? finestra.elenco.annulla() : finestra.elenco.chiudi();
              }),
              "closed");
    EXPECT_EQ(form.MotivoChiusura(), "closed");
  }
  EXPECT_THAT(confermate, IsEmpty());
}

TEST_F(ItemConfirmation, LeavesNothingBehindForTheNextShowing) {
  stato().DemoPresunti = true;
  esito = [] { return "prima"; };
  EXPECT_EQ(Mostra([](FinestraScadenzario& finestra) { finestra.elenco.conferma(); }), "prima");
  EXPECT_EQ(Mostra([&](FinestraScadenzario& finestra) {
              EXPECT_FALSE(finestra.elenco.stato().scaricata);
              EXPECT_FALSE(finestra.elenco.stato().data.visibile);
              finestra.elenco.chiudi();
            }),
            "closed");
  stato().DemoPresunti = false;
  esito = [] { return "seconda"; };
  EXPECT_EQ(Mostra([](FinestraScadenzario& finestra) { finestra.elenco.conferma(); }), "seconda");
  EXPECT_EQ(form.MotivoChiusura(), "");
  EXPECT_THAT(confermate, ElementsAre("Scad", "Scad"));
}

TEST_F(ItemConfirmation, LeavesAnEditorThatWasOpenClosedForTheNextShowing) {
  Mostra([&](FinestraScadenzario& finestra) {
    ScriviData(0, "150606");
    finestra.elenco.annulla();
  });
  Mostra([](FinestraScadenzario& finestra) { EXPECT_FALSE(finestra.elenco.stato().data.visibile); });
  EXPECT_THAT(NuoveScadenze(), ElementsAre("", "", ""));
}

} // namespace
} // namespace lumoscad
