// What the loading of the presumed documents sends.

#include "SchermataPresunti.hpp"
#include "screens/FormConsegna.hpp"
#include "screens/FormPresunti.hpp"
#include "support/IstruzioniContate.hpp"

namespace lumoscad {
namespace {

constexpr std::string_view RicercaMovimento = "SELECT MOVIMENTOKEY FROM MOVIMENTOCONTABILE";

/// Documents of the list; one of them has three rows, one a row that is not listed.
constexpr std::size_t Documenti = 4;
constexpr std::size_t Elencate = 6;

class PresumedLoad : public prova::SchermataPresunti<FormPresunti> {
 protected:
  PresumedLoad() : SchermataPresunti(&FormPresunti::elaboraPresunti, "") {}
};
INSTANTIATE_TEST_SUITE_P(Databases, PresumedLoad, testing::ValuesIn(prova::GeneriDiBase()), prova::NomeDelGenere);

class DeliveryLoad : public prova::SchermataPresunti<FormConsegna> {
 protected:
  DeliveryLoad() : SchermataPresunti(&FormConsegna::elaboraConsegna, "") {}
};
INSTANTIATE_TEST_SUITE_P(Databases, DeliveryLoad, testing::ValuesIn(prova::GeneriDiBase()), prova::NomeDelGenere);

TEST_P(PresumedLoad, PreparesTheMovementsLookUpOnceAndExecutesItOnceADocument) {
  const prova::IstruzioniContate contate;
  Mostra([this] { EXPECT_EQ(finestra->righe(), Elencate); });
  EXPECT_EQ(contate.Preparate(RicercaMovimento), 1U);
  EXPECT_EQ(contate.Eseguite(RicercaMovimento), Documenti);
}

TEST_P(DeliveryLoad, PreparesTheMovementsLookUpOnceAndExecutesItOnceADocument) {
  const prova::IstruzioniContate contate;
  Mostra([this] { EXPECT_GE(finestra->righe(), Documenti); });
  EXPECT_EQ(contate.Preparate(RicercaMovimento), 1U);
  EXPECT_EQ(contate.Eseguite(RicercaMovimento), Documenti);
}

} // namespace
} // namespace lumoscad
