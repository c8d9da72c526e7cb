// The delivery dates of presumed documents: from the command line to the database and back.

#include "ListaPresunti.hpp"

namespace lumoscad::test {
namespace {

constexpr std::size_t VuotiInConsegna = 1; ///< empty parameters of the request

/// The second row's delivery was put off once before, by a week: its original date is not its present one.
const std::string DueRighe =
    "20100012,BC,216,26,20260408,20260408,20260520\r\n20100012,BC,216,26,20260415,20260408,20260527\r\n";

/// A changed delivery date also clears the VAT heading.
constexpr std::string_view DueConsegne =
    "UPDATE EVENTOCONTABILE SET DATACONSEGNA='2026-05-20', TITOLOIVA=' ' WHERE EVENTOCONTABILEKEY=518;"
    "UPDATE EVENTOCONTABILE SET DATACONSEGNA='2026-05-27', TITOLOIVA=' ' WHERE EVENTOCONTABILEKEY=519";

class Deliveries : public ListaPresunti {
 protected:
  Deliveries() : ListaPresunti("-T CONSEGNA", "LumoScad - Date di consegna") {}

  /// The first row gets its date from the field at the top, the second in its cell, which stays open.
  void VariaDueRighe() {
    Tasti({"alt+n"});
    Digita("20/05/26");
    Tasti({"Tab", "Home", "space", "Down", "Right", "F2"});
    Digita("27/05/26");
  }
};

TEST_P(Deliveries, TwoRowsOfADocumentChangeEachOnItsOwn) {
  Attendi(DueConsegne, 2);
  Avvia();
  ASSERT_NO_FATAL_FAILURE(ApriLista());
  VariaDueRighe();
  Fotografa("consegna");
  ASSERT_NO_FATAL_FAILURE(Conferma());
  VerificaFine(0, "");
  VerificaRichiesta("CONSEGNA", VuotiInConsegna, DueRighe, "Variate 2 consegne");
  VerificaBaseDati();
}

TEST_P(Deliveries, ADocumentWithoutADateGetsOne) {
  Attendi("UPDATE EVENTOCONTABILE SET DATACONSEGNA='2026-06-10', TITOLOIVA=' ' WHERE EVENTOCONTABILEKEY=520", 1);
  Avvia();
  ASSERT_NO_FATAL_FAILURE(ApriLista());
  Vai(2);
  Tasti({"Right"});
  Digita("100626");
  Tasti({"Return"});
  ASSERT_NO_FATAL_FAILURE(Conferma());
  VerificaFine(0, "");
  VerificaRichiesta("CONSEGNA", VuotiInConsegna, "20100012,BC,217,26,00000000,00000000,20260610\r\n",
                    "Variata 1 consegna");
  VerificaBaseDati();
}

TEST_P(Deliveries, ADeliveryThatWasPutOffGoesBackToItsOriginalDate) {
  Attendi("UPDATE EVENTOCONTABILE SET DATACONSEGNA='2026-04-08', TITOLOIVA=' ' WHERE EVENTOCONTABILEKEY=519", 1);
  Avvia();
  ASSERT_NO_FATAL_FAILURE(ApriLista());
  Vai(1);
  Tasti({"Right"});
  Digita("080426");
  Tasti({"Return"});
  ASSERT_NO_FATAL_FAILURE(Conferma());
  VerificaFine(0, "");
  VerificaRichiesta("CONSEGNA", VuotiInConsegna, "20100012,BC,216,26,20260415,20260408,20260408\r\n",
                    "Variata 1 consegna");
  VerificaBaseDati();
}

TEST_P(Deliveries, AnEmptiedCellIsNoChange) {
  Avvia();
  ASSERT_NO_FATAL_FAILURE(ApriLista());
  Tasti({"Right"});
  Digita("100626");
  Tasti({"Return", "Up", "F2", "ctrl+a", "Delete", "Return", "ctrl+Return"});
  VerificaFine(3, "closed\n");
  VerificaNullaFatto();
}

TEST_P(Deliveries, AnnullaSendsNothing) {
  Avvia();
  ASSERT_NO_FATAL_FAILURE(ApriLista());
  VariaDueRighe();
  Tasti({"Return", "alt+a"});
  VerificaFine(3, "closed\n");
  VerificaNullaFatto();
}

TEST_P(Deliveries, TheCloseBoxAfterAnEarlierConfirmationSendsNothingMore) {
  Attendi(DueConsegne, 2);
  AvviaSequenza(2);
  ASSERT_NO_FATAL_FAILURE(ApriLista());
  VariaDueRighe();
  ASSERT_NO_FATAL_FAILURE(Conferma());
  ASSERT_NO_FATAL_FAILURE(ApriLista());
  VariaDueRighe();
  Tasti({"Return", "alt+F4"});
  VerificaFine(0, "\"\"\n\"closed\"\n");
  VerificaRichiesta("CONSEGNA", VuotiInConsegna, DueRighe, "Variate 2 consegne");
  VerificaBaseDati();
}

INSTANTIATE_TEST_SUITE_P(Transports, Deliveries, testing::Values(Trasporto::Cartella, Trasporto::Ssh),
                         [](const auto& caso) { return NomeTrasporto(caso.param); });

} // namespace
} // namespace lumoscad::test
