#include "SchermataPresunti.hpp"
#include "screens/FormPresunti.hpp"

namespace lumoscad {
namespace {

/// Rows without a document text, as a movement without series gives them, beside the documents of the list.
class PresumedScreenWithoutDocument : public test::SchermataPresunti<FormPresunti> {
 protected:
  PresumedScreenWithoutDocument() : SchermataPresunti(&FormPresunti::elaboraPresunti, "") {}

  std::size_t AggiungiSenzaDocumento(const char* banca) {
    Griglia& griglia = schermata.griglia();
    const auto riga = griglia.righe.Aggiungi({"ROSSI SRL", "", "", "EUR", "1,00", banca});
    griglia.righe.ImpostaTag(riga, FormPresunti::Banca, "B06");
    return riga;
  }
  [[nodiscard]] std::string NuovaBanca(std::size_t riga) const {
    return std::string(righe.Testo(riga, FormPresunti::NuovaBanca)) + "|" +
           std::string(righe.Tag(riga, FormPresunti::NuovaBanca));
  }
  void Scegli(std::size_t riga, int indice) const {
    finestra->Seleziona(static_cast<std::ptrdiff_t>(righe.PostoDellaRiga(riga)));
    finestra->cmbBanche_Click(indice);
  }
};

TEST_P(PresumedScreenWithoutDocument, TheBlankEntryEmptiesTheNewBankOfAllRowsWithoutADocument) {
  Mostra([this] {
    const auto prima = AggiungiSenzaDocumento("BANCA BETA");
    const auto seconda = AggiungiSenzaDocumento("BANCA BETA");
    Scegli(prima, 1);
    EXPECT_EQ(NuovaBanca(prima), "BANCA ALFA|B07");
    EXPECT_EQ(NuovaBanca(seconda), "BANCA ALFA|B07");
    EXPECT_EQ(NuovaBanca(Riga("CD5/06", "CHF")), "|");
    Scegli(seconda, 0);
    EXPECT_EQ(NuovaBanca(prima), "|");
    EXPECT_EQ(NuovaBanca(seconda), "|");
    finestra->Form_QueryUnload();
  });
}

TEST_P(PresumedScreenWithoutDocument, ItsRecordHasNoSeriesNumberAndYear) {
  const auto variazioni = Mostra([this] {
    Scegli(AggiungiSenzaDocumento("BANCA BETA"), 1);
    finestra->PictureOk_Click();
  });
  ASSERT_EQ(variazioni.size(), 1U);
  EXPECT_EQ(variazioni[0].Serie + variazioni[0].Numero + variazioni[0].Anno, "");
  EXPECT_EQ(variazioni[0].idMovimentoKey, 0);
  EXPECT_EQ(variazioni[0].NuovaBanca, "B07");
}

INSTANTIATE_TEST_SUITE_P(Databases, PresumedScreenWithoutDocument, testing::Values("sqlite"));

} // namespace
} // namespace lumoscad
