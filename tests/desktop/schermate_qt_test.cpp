// The list screens in their real windows, without a database: which widgets each has, and how they look.

#include "FinestraFinta.hpp"
#include "platform/qt/QtDesktop.hpp"
#include "platform/qt/WaitQt.hpp"
#include "screens/FormConsegna.hpp"
#include "screens/FormPresunti.hpp"
#include "screens/frmLumoScadenzeBanche.hpp"
#include "support/TestBench.hpp"

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QFontInfo>
#include <QLabel>

#include <gmock/gmock.h>

#include <array>

namespace lumoscad::test {
namespace {

/// Each family stands for a font that every machine with a desktop has, so that what is drawn tells them apart; goes
/// with the object.
class CaratteriSostituiti {
 public:
  CaratteriSostituiti() {
    for (const auto& [famiglia, sostituto] : Coppie) {
      QFont::insertSubstitution(famiglia, sostituto);
    }
  }
  CaratteriSostituiti(const CaratteriSostituiti&) = delete;
  CaratteriSostituiti& operator=(const CaratteriSostituiti&) = delete;
  ~CaratteriSostituiti() {
    for (const auto& coppia : Coppie) {
      QFont::removeSubstitutions(coppia.first);
    }
  }

  static constexpr std::array<std::pair<const char*, const char*>, 3> Coppie{
      {{"Verdana", "DejaVu Serif"}, {"Arial", "DejaVu Sans Mono"}, {"MS Sans Serif", "DejaVu Sans"}}};
};

/// The family that `widget` asks for; fails where something else than its substitute is drawn.
std::string Famiglia(const QWidget& widget) {
  std::string famiglia = widget.font().family().toStdString();
  for (const auto& [chiesta, sostituto] : CaratteriSostituiti::Coppie) {
    if (famiglia == chiesta) {
      EXPECT_EQ(QFontInfo(widget.font()).family(), sostituto) << widget.objectName().toStdString();
    }
  }
  return famiglia;
}

class Screens : public testing::Test {
 protected:
  Screens() : desktop(qt::CreateDesktop()) {
    ActiveServices().desktop = [this]() -> Desktop& { return *desktop; };
  }
  template <class Schermata> static void Mostra(Schermata& schermata, const std::function<void(QDialog&)>& copione) {
    schermata.griglia().Resize();
    Recita(copione);
    schermata.griglia().Mostra();
  }

  TestBench banco;
  std::unique_ptr<Desktop> desktop;
  CaratteriSostituiti caratteri;
};

TEST_F(Screens, OfTheBanksHaveEveryTextInVerdana) {
  frmLumoScadenzeBanche schermata;
  Mostra(schermata, [](QDialog& finestra) {
    for (const char* nome : {"LVScadenzeBanche", "TLwTestata_1", "TLwTestata_2", "TLwTestata_3", "TLwTestata_4",
                             "TLwTestata_5", "TLwTestata_6", "KNuovaScadenza", "cmbBanche", "cmbBanche2", "TextScad"}) {
      EXPECT_EQ(Famiglia(Trova<QWidget>(finestra, nome)), "Verdana") << nome;
    }
  });
}

TEST_F(Screens, OfThePresumedDocumentsHaveListAndBanksInArialAndHeadingsInVerdana) {
  FormPresunti schermata;
  Mostra(schermata, [](QDialog& finestra) {
    for (const char* nome : {"LVPresunti", "cmbBanche", "cmbBanche2"}) {
      EXPECT_EQ(Famiglia(Trova<QWidget>(finestra, nome)), "Arial") << nome;
    }
    for (const char* nome : {"TLwTestata_1", "TLwTestata_2", "TLwTestata_3", "TLwTestata_4", "TLwTestata_5",
                             "TLwTestata_6", "KNuovaBanca"}) {
      EXPECT_EQ(Famiglia(Trova<QWidget>(finestra, nome)), "Verdana") << nome;
    }
  });
}

/// The list that drops down from a bank box.
QWidget& Tendina(QDialog& finestra, const char* nome) {
  return *Trova<QComboBox>(finestra, nome).view();
}

TEST_F(Screens, DropTheirBanksDownInTheFontOfTheirList) {
  frmLumoScadenzeBanche banche;
  FormPresunti presunti;
  banche.griglia().cmbBanche.voci = banche.griglia().cmbBanche2.voci = {" ", "BANCA ALFA"};
  presunti.griglia().cmbBanche.voci = presunti.griglia().cmbBanche2.voci = {" ", "BANCA ALFA"};
  const auto tendine = [](const std::string& carattere) {
    return [carattere](QDialog& finestra) {
      for (const char* nome : {"cmbBanche", "cmbBanche2"}) {
        EXPECT_EQ(Famiglia(Tendina(finestra, nome)), carattere) << nome;
        EXPECT_EQ(Tendina(finestra, nome).font().pixelSize(), 12) << nome;
        Trova<QComboBox>(finestra, nome).showPopup();
        EXPECT_EQ(Famiglia(Tendina(finestra, nome)), carattere) << nome;
        Trova<QComboBox>(finestra, nome).hidePopup();
      }
    };
  };
  Mostra(banche, tendine("Verdana"));
  Mostra(presunti, tendine("Arial"));
}

TEST_F(Screens, OfTheDeliveriesHaveEveryTextInVerdana) {
  FormConsegna schermata;
  Mostra(schermata, [](QDialog& finestra) {
    for (const char* nome : {"LVScadenzePresunti", "TLwTestata_1", "TLwTestata_6", "KNuovaScadenza", "TextScad"}) {
      EXPECT_EQ(Famiglia(Trova<QWidget>(finestra, nome)), "Verdana") << nome;
    }
  });
}

TEST_F(Screens, KeepTheirFontsUnderACallingProgramThatHasItsOwn) {
  const QFont diPrima = QApplication::font();
  const char* tipi[] = {"QComboBox",  "QAbstractButton",   "QLineEdit", "QLabel",
                        "QTableView", "QAbstractItemView", "QListView"};
  for (const char* tipo : tipi) {
    QApplication::setFont(QFont("DejaVu Sans Mono", 20), tipo);
  }
  FormPresunti schermata;
  Mostra(schermata, [](QDialog& finestra) {
    for (const char* nome : {"LVPresunti", "cmbBanche", "cmbBanche2"}) {
      EXPECT_EQ(Famiglia(Trova<QWidget>(finestra, nome)), "Arial") << nome;
      EXPECT_EQ(Trova<QWidget>(finestra, nome).font().pixelSize(), 12) << nome;
    }
    for (const char* nome : {"cmbBanche", "cmbBanche2"}) {
      EXPECT_EQ(Famiglia(Tendina(finestra, nome)), "Arial") << nome;
      EXPECT_EQ(Tendina(finestra, nome).font().pixelSize(), 12) << nome;
    }
    EXPECT_EQ(Famiglia(Trova<QWidget>(finestra, "TLwTestata_1")), "Verdana");
  });
  QApplication::setFont(diPrima);
}

TEST_F(Screens, OfTheWaitSpeakInMsSansSerif) {
  std::string famiglia;
  desktop->ShowWait("Attendere, sto variando il movimento", 1,
                    [&] { famiglia = Famiglia(Trova<QLabel>(*QApplication::activeModalWidget(), "lblAttesa")); });
  EXPECT_EQ(famiglia, "MS Sans Serif");
}

TEST_F(Screens, OpenAndCloseTheDropDownOfABankBox) {
  frmLumoScadenzeBanche schermata;
  Griglia& griglia = schermata.griglia();
  griglia.cmbBanche.voci = griglia.cmbBanche2.voci = {" ", "BANCA ALFA", "BANCA BETA"};
  griglia.righe.Aggiungi({"ROSSI", "2006 1", "31/03/2006", "31/01/2006", "", "100,00", "", "31/03/2006", "1"});
  griglia.ShowComboDropdown("cmbBanche", true); // without a window there is nothing to open
  Mostra(schermata, [&](QDialog& finestra) {
    const auto aperta = [&finestra](const char* nome) { return Trova<QComboBox>(finestra, nome).view()->isVisible(); };
    griglia.ShowComboDropdown("cmbBanche", true);
    EXPECT_TRUE(aperta("cmbBanche"));
    griglia.ShowComboDropdown("cmbBanche", false);
    EXPECT_FALSE(aperta("cmbBanche"));
    griglia.ShowComboDropdown("cmbBanche2", true);
    EXPECT_FALSE(aperta("cmbBanche2")) << "its editor is closed";
    Clicca(Lista(finestra), 0, frmLumoScadenzeBanche::NuovaBanca);
    EXPECT_FALSE(aperta("cmbBanche2")) << "the editor opens with its list closed";
    griglia.ShowComboDropdown("cmbBanche2", true);
    EXPECT_TRUE(aperta("cmbBanche2"));
    griglia.ShowComboDropdown("cmbBanche2", false);
    EXPECT_FALSE(aperta("cmbBanche2"));
    EXPECT_TRUE(Visibile(finestra, "FrameBanca"));
    griglia.ShowComboDropdown("altro", true);
  });
  griglia.ShowComboDropdown("cmbBanche", true);
}

TEST_F(Screens, OfTheBanksInThePresumedLayoutHaveNothingOfNewDueDates) {
  frmLumoScadenzeBanche schermata;
  schermata.griglia().righe.Aggiungi({"ROSSI", "AB1/06", "31/03/2006", "", "", "100,00"});
  schermata.ResizeScadBanchePresunti();
  const int tutte = schermata.griglia().Stato().listWidth;
  Recita([&](QDialog& finestra) {
    const auto& lista = Lista(finestra);
    EXPECT_EQ(finestra.findChild<QWidget*>("TextScadenza"), nullptr);
    EXPECT_TRUE(lista.isColumnHidden(frmLumoScadenzeBanche::Radio1));
    EXPECT_TRUE(lista.isColumnHidden(frmLumoScadenzeBanche::NuovaScadenza));
    EXPECT_FALSE(lista.isColumnHidden(frmLumoScadenzeBanche::Radio2));
    EXPECT_FALSE(lista.isColumnHidden(frmLumoScadenzeBanche::NuovaBanca));
    Clicca(Lista(finestra), 0, frmLumoScadenzeBanche::Radio2);
    EXPECT_TRUE(schermata.griglia().righe.Spuntata(0, 1));
  });
  schermata.griglia().Mostra();
  schermata.ResizeScadBanche();
  EXPECT_EQ(schermata.griglia().Stato().listWidth, tutte + 420 + 1500);
}

TEST_F(Screens, OfTheDeliveriesCarryNoBankEditor) {
  FormConsegna schermata;
  Mostra(schermata, [](QDialog& finestra) {
    for (const char* nome : {"FrameBanca", "cmbBanche2", "FrameNuovaBanca", "cmbBanche", "FrameRigaBanca"}) {
      EXPECT_EQ(finestra.findChild<QWidget*>(nome), nullptr) << nome;
    }
    EXPECT_TRUE(finestra.findChildren<QComboBox*>().isEmpty());
    EXPECT_NE(finestra.findChild<QWidget*>("FrameScad"), nullptr);
  });
}

TEST_F(Screens, OfThePresumedDocumentsCarryBothEditorsAndNoDateAtTheTop) {
  FormPresunti schermata;
  Mostra(schermata, [](QDialog& finestra) {
    for (const char* nome : {"FrameBanca", "cmbBanche2", "FrameNuovaBanca", "cmbBanche", "FrameScad", "TextScad"}) {
      EXPECT_NE(finestra.findChild<QWidget*>(nome), nullptr) << nome;
    }
    EXPECT_EQ(finestra.findChild<QWidget*>("TextScadenza"), nullptr);
  });
}

} // namespace
} // namespace lumoscad::test
