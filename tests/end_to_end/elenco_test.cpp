// The list windows with real widgets under the component's public entry, down to the request that the back end reads.

#include "FinestraIntera.hpp"
#include "lumoscad/LumoScadenze.hpp"
#include "screens/FormConsegna.hpp"
#include "screens/frmLumoScadenzeBanche.hpp"

#include <QLineEdit>
#include <QTableView>

#include <gmock/gmock.h>

#include <algorithm>

namespace lumoscad::test {
namespace {

using testing::UnorderedElementsAre;

/// What differs between the list screens whose rows take a date.
struct ElencoConData {
  const char* nome;
  const char* comando;
  const char* lista;
  int documento;      ///< column of the item or document
  int data;           ///< column of the present date
  int spunta;         ///< column of the tick for the date at the top
  int nuova;          ///< column of the new date
  const char* ordina; ///< heading that sorts by date
  /// The fields of a request line that make up the text of `documento`, the present and the new date.
  std::string (*documentoRichiesto)(const Righe& campi);
  std::size_t dataRichiesta;
  std::size_t nuovaRichiesta;
};

std::string Partita(const Righe& campi) {
  return campi[1];
}
std::string Ordine(const Righe& campi) {
  return campi[1] + campi[2] + "/" + campi[3];
}

const ElencoConData Crediti{"crediti",
                            "BANCA /CREDITI",
                            "LVScadenzeBanche",
                            frmLumoScadenzeBanche::Partita,
                            frmLumoScadenzeBanche::Scadenza,
                            frmLumoScadenzeBanche::Radio1,
                            frmLumoScadenzeBanche::NuovaScadenza,
                            "TLwTestata_5",
                            Partita,
                            5,
                            7};
const ElencoConData Consegna{"consegna",
                             "CONSEGNA /PRESUNTI -TIPOMOVIMENTI V -B TUTTE",
                             "LVScadenzePresunti",
                             FormConsegna::Ordine,
                             FormConsegna::ConsegnaPrevista,
                             FormConsegna::Radio,
                             FormConsegna::NuovaConsegna,
                             "TLwTestata_3",
                             Ordine,
                             4,
                             6};

Righe Dividi(const std::string& testo, const std::string& separatore) {
  Righe parti;
  for (std::size_t inizio = 0; inizio <= testo.size();) {
    const auto fine = std::min(testo.find(separatore, inizio), testo.size());
    parti.push_back(testo.substr(inizio, fine - inizio));
    inizio = fine + separatore.size();
  }
  return parti;
}

/// "yyyymmdd" for "DD/MM/YYYY".
std::string PerHost(const std::string& data) {
  return data.empty() ? "00000000" : data.substr(6) + data.substr(3, 2) + data.substr(0, 2);
}

class WholeList : public FinestraIntera, public testing::WithParamInterface<ElencoConData> {
 protected:
  std::string Esegui() {
    return LumoScadenze().EseguiLumoScad("-T " + std::string(GetParam().comando) + " -D 01 -H " + demo.Indirizzo() +
                                         " -DB2SOURCE " + demo.Sorgente() + " -DB2SCHEMA main");
  }
  static std::string Cella(const QTableView& lista, int riga, int colonna) {
    return lista.model()->index(riga, colonna).data().toString().toStdString();
  }
  /// The row as the host knows it: its document and its present date.
  static std::string Identita(const QTableView& lista, int riga) {
    return Cella(lista, riga, GetParam().documento) + " " + PerHost(Cella(lista, riga, GetParam().data));
  }
  static std::vector<int> RigheDi(const QTableView& lista, const std::string& identita) {
    std::vector<int> righe;
    for (int riga = 0; riga < lista.model()->rowCount(); ++riga) {
      if (Identita(lista, riga) == identita) {
        righe.push_back(riga);
      }
    }
    return righe;
  }
  /// The first row from `riga` on that no other row could be taken for.
  static int RigaUnica(const QTableView& lista, int riga) {
    while (RigheDi(lista, Identita(lista, riga)).size() != 1) {
      ++riga;
    }
    return riga;
  }
  /// The place of the row over which the date editor lies; -1 when it lies over none in sight.
  static int RigaDellEditor(QDialog& finestra, const QTableView& lista) {
    const auto& cornice = Trova<QWidget>(finestra, "FrameScad");
    const QPoint angolo = lista.viewport()->mapFromGlobal(cornice.mapToGlobal(QPoint(0, 0)));
    const QRect cella = lista.visualRect(lista.model()->index(lista.rowAt(angolo.y()), GetParam().nuova));
    return cornice.isVisible() && angolo == cella.topLeft() && lista.viewport()->rect().contains(cella)
               ? lista.rowAt(angolo.y())
               : -1;
  }
  /// Every line of the request that the back end read: the row's identity and its new date.
  [[nodiscard]] Righe Richieste() const {
    Righe richieste;
    const std::string chiamata = Chiamata();
    for (const auto& riga : Dividi(chiamata.substr(chiamata.rfind('\t') + 1), "\\r\\n")) {
      const auto campi = Dividi(riga, ",");
      if (campi.size() > GetParam().nuovaRichiesta) {
        richieste.push_back(GetParam().documentoRichiesto(campi) + " " + campi[GetParam().dataRichiesta] + " " +
                            campi[GetParam().nuovaRichiesta]);
      }
    }
    return richieste;
  }
};
INSTANTIATE_TEST_SUITE_P(Screens, WholeList, testing::Values(Crediti, Consegna),
                         [](const auto& caso) { return std::string(caso.param.nome); });

TEST_P(WholeList, ADateBeingTypedStaysWithItsRowWhileAnotherIsTickedAndTheListIsSorted) {
  std::string modificata;
  std::string spuntata;
  Recita([&](QDialog& finestra) {
    auto& lista = Trova<QTableView>(finestra, GetParam().lista);
    QTest::keyClicks(&Trova<QWidget>(finestra, "TextScadenza"), "15/04/26");
    const int riga = RigaUnica(lista, 1);
    modificata = Identita(lista, riga);
    const int altra = RigaUnica(lista, riga + 2);
    spuntata = Identita(lista, altra);
    Clicca(lista, riga, GetParam().nuova);
    QTest::keyClicks(&Trova<QWidget>(finestra, "TextScad"), "200526");
    EXPECT_EQ(RigaDellEditor(finestra, lista), riga);

    Clicca(lista, altra, GetParam().spunta);
    EXPECT_EQ(lista.model()->index(altra, GetParam().spunta).data(Qt::CheckStateRole), Qt::Checked);
    EXPECT_EQ(RigaDellEditor(finestra, lista), riga);

    for (int volta = 0; volta < 2; ++volta) { // ascending, then descending
      Premi(finestra, GetParam().ordina);
      const auto ora = RigheDi(lista, modificata);
      ASSERT_EQ(ora.size(), 1U);
      EXPECT_EQ(RigaDellEditor(finestra, lista), ora[0]);
    }
    EXPECT_EQ(Trova<QLineEdit>(finestra, "TextScad").text(), "200526");
    Premi(finestra, "PictureOk");
  });
  EXPECT_EQ(Esegui(), "");
  EXPECT_THAT(Richieste(), UnorderedElementsAre(modificata + " 20260520", spuntata + " 20260415"));
}

TEST_P(WholeList, TheEditorIsGoneBeforeAMessageSaysThatItsDateIsRefused) {
  Recita([&](QDialog& finestra) {
    auto& lista = Trova<QTableView>(finestra, GetParam().lista);
    int viste = 0;
    alBox = [&] { viste += Visibile(finestra, "FrameScad") || Visibile(finestra, "TextScad") ? 1 : 0; };
    Clicca(lista, 1, GetParam().nuova);
    QTest::keyClicks(&Trova<QWidget>(finestra, "TextScad"), "31/13/26");
    QTest::keyClick(&Trova<QWidget>(finestra, "TextScad"), Qt::Key_Return);
    Clicca(lista, 2, GetParam().nuova);
    QTest::keyClicks(&Trova<QWidget>(finestra, "TextScad"), "32/12/26");
    Premi(finestra, "RigaScura");
    EXPECT_EQ(box.size(), 2U);
    EXPECT_EQ(viste, 0);
    alBox = {};
  });
  EXPECT_EQ(Esegui(), "closed");
}

TEST_P(WholeList, AClickBelowTheLastRowWritesTheEditorAndTicksNothing) {
  Recita([&](QDialog& finestra) {
    auto& lista = Trova<QTableView>(finestra, GetParam().lista);
    finestra.resize(1200, 24 * lista.model()->rowCount() + 600);
    QTest::keyClicks(&Trova<QWidget>(finestra, "TextScadenza"), "15/04/26");
    const int ultima = lista.model()->rowCount() - 1;
    for (const int colonna : {GetParam().spunta, GetParam().nuova}) {
      Clicca(lista, 0, GetParam().nuova);
      QTest::keyClick(&Trova<QWidget>(finestra, "TextScad"), Qt::Key_A, Qt::ControlModifier);
      QTest::keyClicks(&Trova<QWidget>(finestra, "TextScad"), "200526");
      const QRect cella = lista.visualRect(lista.model()->index(ultima, colonna));
      ASSERT_GT(lista.viewport()->height(), cella.bottom() + 40);
      QTest::mouseClick(lista.viewport(), Qt::LeftButton, {}, cella.center() + QPoint(0, 30));
      EXPECT_EQ(Cella(lista, 0, GetParam().nuova), "20/05/2026");
      EXPECT_FALSE(Visibile(finestra, "FrameScad"));
      EXPECT_EQ(lista.model()->index(0, GetParam().spunta).data(Qt::CheckStateRole), Qt::Unchecked);
    }
  });
  EXPECT_EQ(Esegui(), "closed");
}

TEST_P(WholeList, AfterTheEditorThePersonGoesOnFromItsRowAndNotFromTheTickedOne) {
  Recita([&](QDialog& finestra) {
    auto& lista = Trova<QTableView>(finestra, GetParam().lista);
    Clicca(lista, 1, GetParam().nuova);
    Clicca(lista, 4, GetParam().spunta);
    auto& editor = Trova<QWidget>(finestra, "TextScad");
    editor.setFocus();
    QTest::keyClick(&editor, Qt::Key_Return);
    EXPECT_EQ(lista.currentIndex(), lista.model()->index(2, GetParam().nuova));
  });
  EXPECT_EQ(Esegui(), "closed");
}

} // namespace
} // namespace lumoscad::test
