// What the grid tells of a row beside its cells.

#include "SchermataDiProva.hpp"

#include "screens/FormConsegna.hpp"

namespace lumoscad {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

class GridDetails : public test::GrigliaDiProva {
 protected:
  static std::vector<std::string> Lines(const Griglia& grid, std::size_t place) {
    std::vector<std::string> lines;
    for (const RowDetail& detail : grid.Dettagli(place)) {
      lines.push_back(detail.caption + ": " + detail.value);
    }
    return lines;
  }
};

TEST_F(GridDetails, TellEverythingOfARowThatMeansSomethingToAPerson) {
  Aggiungi("ROSSI", "31/03/2006", "BANCA ALFA");
  griglia.Resize();
  griglia.righe.ImpostaSpunta(0, 1, true);
  griglia.righe.ImpostaTag(0, Schermata::NuovaBanca, "#null#");
  EXPECT_THAT(Lines(griglia, 0),
              ElementsAre("Conto: ROSSI", "Codice conto: C0", "Partita: 2006 1", "Scadenza: 31/03/2006",
                          "Scad Orig.: 31/01/2006", "Banca: BANCA ALFA", "Codice banca: B06", "Importo: 100,00",
                          "Spunta della nuova data: no", "Nuova Scad: 31/03/2006", "Rata: 1",
                          "Spunta della nuova banca: sì", "NuovaBanca: BANCA ALFA", "Codice nuova banca: nessuno"));
}

TEST_F(GridDetails, TellNothingOfARowThatIsNotThere) {
  EXPECT_THAT(griglia.Dettagli(0), IsEmpty());
}

TEST_F(GridDetails, FollowTheRowsWhereverTheyShow) {
  Aggiungi("ROSSI");
  Aggiungi("BIANCHI");
  griglia.Resize();
  EXPECT_EQ(griglia.Dettagli(0).front().value, "BIANCHI");
}

TEST_F(GridDetails, ShowTheOriginalDateOfADeliveryAndAnUnreadableOneAsItWasRead) {
  FormConsegna form;
  Griglia& grid = form.griglia();
  for (const char* original : {"2006-02-28", "presto"}) {
    grid.righe.ImpostaTag(grid.righe.Aggiungi({"ROSSI", "AB1/06", "31/03/2006", "EUR", "1,00", "1,00", "", "", ""}),
                          FormConsegna::ConsegnaPrevista, original);
  }
  grid.Resize();
  EXPECT_THAT(Lines(grid, 0), Contains("Consegna originale: 28/02/2006"));
  EXPECT_THAT(Lines(grid, 1), Contains("Consegna originale: presto"));
}

TEST_F(GridDetails, TellRowsThatLookTheSameApartByTheirInstalment) {
  Aggiungi("ROSSI");
  Aggiungi("ROSSI");
  Aggiungi("ROSSI", "30/04/2006");
  griglia.righe.ImpostaTesto(1, Schermata::NumeroRata, "2");
  griglia.Resize();
  const auto shown = [this](std::size_t place) { return std::string(griglia.Distinzione(place, Schermata::Partita)); };
  EXPECT_EQ(shown(0), "rata 1");
  EXPECT_EQ(shown(1), "rata 2");
  EXPECT_EQ(shown(2), "") << "its date tells it apart";
  EXPECT_EQ(griglia.Distinzione(0, Schermata::Conto), "");
  EXPECT_EQ(griglia.CellText(0, Schermata::Partita), "2006 1") << "the cell's own text stays as it is";
}

} // namespace
} // namespace lumoscad
