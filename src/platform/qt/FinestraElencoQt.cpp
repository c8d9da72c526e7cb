#include "platform/qt/FinestraElencoQt.hpp"

#include "platform/qt/Testi.hpp"

#include <QAbstractItemView>
#include <QComboBox>
#include <QFrame>
#include <QKeyEvent>
#include <QLineEdit>
#include <QLocale>
#include <QMouseEvent>
#include <QShortcut>

#include <utility>

namespace lumoscad::qt {

FinestraElencoQt::FinestraElencoQt(FinestraElenco& finestra, QWidget* sotto) : FinestraModaleQt(finestra, sotto) {
  CollegaConferma([this] { elenco_.PictureOk_Click(); });
  CollegaBanche();
  CollegaTestate();
  Completa();
}

QString FinestraElencoQt::QuanteRighe(int righe) const {
  return righe == 1 ? QStringLiteral("1 riga")
                    : QLocale(QLocale::Italian, QLocale::Italy).toString(righe) + QStringLiteral(" righe");
}

void FinestraElencoQt::CollegaBanche() {
  elenco_.SetDropDown([this](std::string_view nome, bool aperta) { MostraTendina(nome, aperta); });
  if (parti_.cmbBanche2 != nullptr) {
    parti_.cmbBanche2->installEventFilter(this);
    connect(parti_.cmbBanche2, &QComboBox::activated, this,
            [this](int indice) { Gesto([this, indice] { elenco_.cmbBanche2_Click(indice); }); });
  }
  if (parti_.cmbBanche != nullptr) {
    parti_.cmbBanche->installEventFilter(this);
    connect(parti_.cmbBanche, &QComboBox::activated, this,
            [this](int indice) { Gesto([this, indice] { elenco_.cmbBanche_Click(indice); }); });
  }
}

void FinestraElencoQt::MostraTendina(std::string_view nome, bool aperta) {
  QComboBox* const combo = nome == "cmbBanche" ? parti_.cmbBanche : nome == "cmbBanche2" ? parti_.cmbBanche2 : nullptr;
  if (combo == nullptr || !combo->isVisible()) {
    return;
  }
  if (aperta) {
    combo->showPopup();
  } else {
    combo->hidePopup();
  }
}

void FinestraElencoQt::CollegaTestate() {
  const auto clic = [this](int indice) { Gesto([this, indice] { elenco_.TLwTestata_Click(indice); }); };
  parti_.testate->cliccata = clic;
  for (const TestataElenco& testata : elenco_.Description().testate) {
    if (testata.indice >= 1 && testata.indice <= 9) {
      const auto tasto = static_cast<Qt::Key>(Qt::Key_0 + testata.indice);
      auto* scorciatoia = new QShortcut(QKeySequence(Qt::CTRL | tasto), this);
      connect(scorciatoia, &QShortcut::activated, this, [clic, indice = testata.indice] { clic(indice); });
    }
  }
}

void FinestraElencoQt::Segui(const StatoElenco& stato) {
  parti_.testate->MostraOrdine(stato.testataOrdinata, stato.crescente);
  if (parti_.cmbBanche != nullptr && parti_.cmbBanche->currentIndex() != stato.indiceBanca) {
    parti_.cmbBanche->setCurrentIndex(stato.indiceBanca);
  }
}

void FinestraElencoQt::MousePressed(int row, int x, int y) {
  premutaSottoLeRighe_ = row < 0;
  Gesto([this, row, x, y] {
    if (row >= 0) {
      elenco_.Seleziona(row);
    }
    elenco_.LVScadenze_MouseDown(x, y);
  });
}

void FinestraElencoQt::MouseReleased() {
  if (premutaSottoLeRighe_) {
    Gesto([this] { elenco_.Form_Click(); });
    return;
  }
  Gesto([this] {
    const auto riga = static_cast<int>(elenco_.Stato().selezionata);
    const int alto = riga < 0 ? 0 : parti_.vista->rowViewportPosition(riga);
    elenco_.LVScadenze_Click(alto * TwipsPerPixelY);
  });
}

void FinestraElencoQt::CellActivated(const QModelIndex& cell) {
  parti_.vista->Premi(cell);
}

void FinestraElencoQt::DigitTyped(const QModelIndex& cell, const QString& digit) {
  parti_.vista->Premi(cell);
  DigitaNellEditor(digit);
}

void FinestraElencoQt::KeyRefused() {
  const bool banca = parti_.FrameBanca != nullptr && !parti_.FrameBanca->isHidden();
  (banca ? static_cast<QWidget*>(parti_.cmbBanche2) : parti_.TextScad)->setFocus();
}

bool FinestraElencoQt::TastoInEditor(QObject* campo, int tasto) {
  switch (tasto) {
  case Qt::Key_Tab:
  case Qt::Key_Backtab:
    ChiudiEditorCon(campo, CodiceTab);
    VaiAllaProssima(campo, tasto);
    return true;
  case Qt::Key_Return:
  case Qt::Key_Enter:
    ChiudiEditorCon(campo, CodiceInvio);
    VaiAllaProssima(campo, Qt::Key_Return);
    return true;
  case Qt::Key_Escape:
    Gesto([this] { elenco_.AbbandonaEditor(); });
    return true;
  default:
    return false;
  }
}

void FinestraElencoQt::ChiudiEditorCon(QObject* campo, int codice) {
  if (campo == parti_.TextScad) {
    Gesto([this, codice] { elenco_.TextScad_KeyPress(codice); });
  } else {
    parti_.vista->setFocus(); // the bank editor closes because it loses the focus
  }
}

void FinestraElencoQt::VaiAllaProssima(const QObject* campo, int tasto) {
  const StatoElenco& stato = elenco_.Stato();
  if (Chiusa() || stato.data.visibile || stato.banca.visibile) {
    return;
  }
  VistaElenco& vista = *parti_.vista;
  // From the cell that was edited: the selection may have gone elsewhere meanwhile.
  const QModelIndex cella = CellaEditor(campo == parti_.TextScad ? Genere::EditorData : Genere::EditorBanca);
  const int ultima = modello_.columnCount();
  if (tasto == Qt::Key_Return) {
    vista.Vai(cella.row() + 1, cella.column());
    return;
  }
  const bool avanti = tasto == Qt::Key_Tab;
  const int colonna = vista.ColonnaAttiva(cella.column(), avanti, true);
  if (colonna >= 0) {
    vista.Vai(cella.row(), colonna);
  } else {
    vista.Vai(cella.row() + (avanti ? 1 : -1), vista.ColonnaAttiva(avanti ? -1 : ultima, avanti, true));
  }
}

bool FinestraElencoQt::eventFilter(QObject* oggetto, QEvent* evento) {
  const bool suBanca = oggetto == parti_.cmbBanche2;
  const bool inEditor = oggetto == parti_.TextScad || suBanca;
  const auto tipo = evento->type();
  if (inEditor && tipo == QEvent::KeyPress) {
    const auto& tasto = static_cast<const QKeyEvent&>(*evento);
    return !(tasto.modifiers() & (Qt::ControlModifier | Qt::AltModifier)) && TastoInEditor(oggetto, tasto.key());
  }
  if (suBanca && tipo == QEvent::FocusOut && !parti_.cmbBanche2->view()->isVisible() &&
      HaLasciatoIlCampo(static_cast<const QFocusEvent&>(*evento))) {
    Gesto([this] { elenco_.cmbBanche2_LostFocus(); });
  }
  if (oggetto == parti_.TextScadenza && tipo == QEvent::MouseButtonPress) {
    Gesto([this] { elenco_.TextScadenza_Click(); });
  }
  if (oggetto == parti_.cmbBanche && tipo == QEvent::Wheel && !parti_.cmbBanche->hasFocus()) {
    evento->ignore(); // scrolling past the field must not choose a bank
    return true;
  }
  return FinestraModaleQt::eventFilter(oggetto, evento);
}

void FinestraElencoQt::reject() {
  const StatoElenco& stato = elenco_.Stato();
  if (stato.data.visibile || stato.banca.visibile) {
    Gesto([this] { elenco_.AbbandonaEditor(); });
  } else {
    Abbandona();
  }
}

void FinestraElencoQt::mousePressEvent(QMouseEvent* evento) {
  premutaFuori_ = evento->button() == Qt::LeftButton;
  evento->accept();
}

void FinestraElencoQt::mouseReleaseEvent(QMouseEvent* evento) {
  evento->accept();
  if (evento->button() == Qt::LeftButton && std::exchange(premutaFuori_, false)) {
    Gesto([this] { elenco_.Form_Click(); });
  }
}

} // namespace lumoscad::qt
