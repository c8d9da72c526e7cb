// What the loading of the presumed documents sends, and what it keeps where a part of it fails.

#include "SchermataPresunti.hpp"
#include "lumoscad/LumoScadenze.hpp"
#include "screens/FormConsegna.hpp"
#include "screens/FormPresunti.hpp"
#include "support/CountedStatements.hpp"

#include <optional>

namespace lumoscad {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

constexpr std::string_view RicercaMovimento = "SELECT MOVIMENTOKEY FROM MOVIMENTOCONTABILE";

/// Documents of the list; one of them has three rows, one a row that is not listed.
constexpr std::size_t Documenti = 4;
constexpr std::size_t Elencate = 6;

class PresumedLoad : public test::SchermataPresunti<FormPresunti> {
 protected:
  PresumedLoad() : SchermataPresunti(&FormPresunti::elaboraPresunti, "") {}
};
INSTANTIATE_TEST_SUITE_P(Databases, PresumedLoad, testing::ValuesIn(test::GeneriDiBase()), test::NomeDelGenere);

class DeliveryLoad : public test::SchermataPresunti<FormConsegna> {
 protected:
  DeliveryLoad() : SchermataPresunti(&FormConsegna::elaboraConsegna, "") {}
};
INSTANTIATE_TEST_SUITE_P(Databases, DeliveryLoad, testing::ValuesIn(test::GeneriDiBase()), test::NomeDelGenere);

TEST_P(PresumedLoad, PreparesTheMovementsLookUpOnceAndExecutesItOnceADocument) {
  const test::CountedStatements contate;
  Mostra([this] { EXPECT_EQ(finestra->RowCount(), Elencate); });
  EXPECT_EQ(contate.Preparations(RicercaMovimento), 1U);
  EXPECT_EQ(contate.Executions(RicercaMovimento), Documenti);
}

TEST_P(DeliveryLoad, PreparesTheMovementsLookUpOnceAndExecutesItOnceADocument) {
  const test::CountedStatements contate;
  Mostra([this] { EXPECT_GE(finestra->RowCount(), Documenti); });
  EXPECT_EQ(contate.Preparations(RicercaMovimento), 1U);
  EXPECT_EQ(contate.Executions(RicercaMovimento), Documenti);
}

/// The accounts are missing while the banks are listed, and there again when the documents are.
class BancheAssenti {
 public:
  explicit BancheAssenti(const test::BaseDati& base) : base_(base) {
    base.Esegui("ALTER TABLE CONTOCONTABILE RENAME TO CONTIASSENTI");
    auto nuovi = ActiveServices();
    nuovi.statementSent = [this, prima = nuovi.statementSent](std::string_view istruzione) {
      prima(istruzione);
      if (assenti_ && istruzione.find("AZIENDELINEE") != std::string_view::npos) {
        Rimetti();
      }
    };
    sostituiti_.emplace(std::move(nuovi));
  }

 private:
  void Rimetti() {
    assenti_ = false;
    ado::Connection connection;
    base_.Apri(connection);
    connection.Execute("ALTER TABLE CONTIASSENTI RENAME TO CONTOCONTABILE");
  }

  const test::BaseDati& base_;
  bool assenti_ = true;
  std::optional<ReplacedServices> sostituiti_;
};

TEST_P(PresumedLoad, ListsTheDocumentsWithoutBanksAndReportsTheBanksAfterTheWindow) {
  const BancheAssenti assenti(base);
  const auto errore = Fallimento([this] {
    EXPECT_THAT(finestra->Description().banks, ElementsAre(" "));
    EXPECT_THAT(finestra->Description().cellBanks, ElementsAre(" "));
    ASSERT_EQ(finestra->RowCount(), Elencate);
    for (std::size_t riga = 0; riga < righe.Quante(); ++riga) {
      EXPECT_THAT(std::string(righe.Tag(riga, FormPresunti::ConsegnaPrevista)), StartsWith("MOVIMENTO_"));
    }
    EXPECT_THAT(Testi(Riga("AB123/06", "EUR", "50,00")),
                ElementsAre("ROSSI SRL", "AB123/06", "10/03/06", "EUR", "50,00", "BANCA ALFA", "", "", "2006/03/10"));
  });
  EXPECT_THAT(errore, StartsWith("ERRORE: " + std::to_string(base.Particolarita().missingTable) + "\r\n"));
  EXPECT_EQ(banco.desktop.windows, 1U);
}

TEST_P(PresumedLoad, ChangesNothingWhereTheBanksCouldNotBeListedAndListsThemTheNextTime) {
  const auto prima = test::Rate(base);
  const std::string comando = "-T BANCA /PRESUNTI -TIPOMOVIMENTI V -B X -H 10.0.0.1 -D 001 " + base.Opzioni();
  {
    const BancheAssenti assenti(base);
    banco.desktop.scripts.emplace_back([](ListWindow& aperta) {
      // The blank entry is left: it takes away what banks the documents have.
      ASSERT_EQ(aperta.RowCount(), Elencate);
      for (std::size_t riga = 0; riga < Elencate; ++riga) {
        aperta.Seleziona(static_cast<std::ptrdiff_t>(riga));
        aperta.cmbBanche_Click(0);
      }
      EXPECT_EQ(aperta.CellText(0, FormPresunti::NuovaBanca), "ANNULLA");
      aperta.PictureOk_Click();
    });
    EXPECT_EQ(LumoScadenze().EseguiLumoScad(comando), "error");
  }
  EXPECT_THAT(banco.desktop.box,
              ElementsAre(StartsWith("-2147220954\r\nERRORE: " + std::to_string(base.Particolarita().missingTable))));
  EXPECT_THAT(banco.host.calls, IsEmpty());
  EXPECT_EQ(test::Rate(base), prima);
  banco.host.file.clear();
  banco.desktop.scripts.emplace_back([](ListWindow& aperta) {
    EXPECT_THAT(aperta.Description().banks, ElementsAre(" ", "BANCA ALFA", "BANCA BETA"));
    EXPECT_EQ(aperta.RowCount(), Elencate);
    aperta.Form_QueryUnload();
  });
  EXPECT_EQ(LumoScadenze().EseguiLumoScad(comando), "closed");
}

} // namespace
} // namespace lumoscad
