#include "platform/qt/FinestraElencoQt.hpp"

#include "platform/qt/Testi.hpp"

#include <QAbstractItemView>
#include <QCloseEvent>
#include <QComboBox>
#include <QFocusEvent>
#include <QFrame>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QMouseEvent>
#include <QPushButton>
#include <QScreen>
#include <QScrollBar>
#include <QShortcut>

#include <algorithm>
#include <utility>

namespace lumoscad::qt {

namespace {

using Genere = ColonnaElenco::Genere;

constexpr int CodiceTab = 9;
constexpr int CodiceInvio = 13;

template <class Richiamo, class... Argomenti> void Chiama(const Richiamo& richiamo, Argomenti... argomenti) {
  if (richiamo) {
    richiamo(argomenti...);
  }
}

QString QuanteRighe(int righe) {
  return righe == 1 ? QStringLiteral("1 riga")
                    : QLocale(QLocale::Italian, QLocale::Italy).toString(righe) + QStringLiteral(" righe");
}

/// True when the focus only moved to the field's own list or to another window: the field has not been left.
bool RestaNelCampo(const QComboBox& campo, const QFocusEvent& evento) {
  return campo.view()->isVisible() || evento.reason() == Qt::PopupFocusReason ||
         evento.reason() == Qt::ActiveWindowFocusReason || evento.reason() == Qt::MenuBarFocusReason;
}

} // namespace

FinestraElencoQt::FinestraElencoQt(FinestraElenco& finestra, QWidget* padre)
    : QDialog(padre, Qt::Dialog | Qt::WindowTitleHint | Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint |
                         Qt::WindowMaximizeButtonHint),
      finestra_(finestra), modello_(finestra), parti_(*this, finestra, modello_), ordine_(finestra.stato().ordine),
      contenuto_(finestra.stato().contenuto) {
  setObjectName(Testo(finestra.nome));
  setWindowTitle(Testo(finestra.titolo));
  modello_.guasto = [this](std::exception_ptr errore) {
    errore_ = std::move(errore);
    QMetaObject::invokeMethod(
        this, [this] { Chiudi(); }, Qt::QueuedConnection);
  };
  CollegaLista();
  CollegaCampi();
  CollegaTasti();
  parti_.lblRighe->setText(QuanteRighe(modello_.rowCount()));
  if (const QScreen* schermo = screen()) {
    resize(sizeHint().boundedTo(schermo->availableSize() - QSize(24, 56)));
  }
}

std::exception_ptr FinestraElencoQt::Mostra() {
  const auto attiva = std::max(parti_.vista->ColonnaAttiva(-1, true, false), 0);
  const std::ptrdiff_t scelta = finestra_.stato().selezionata;
  sincronizza_ = true;
  parti_.vista->Vai(static_cast<int>(std::max<std::ptrdiff_t>(scelta, 0)), attiva);
  sincronizza_ = false;
  if (scelta < 0 && modello_.rowCount() > 0) {
    Gesto([this] { Chiama(finestra_.seleziona, std::ptrdiff_t{0}); });
  } else {
    Gesto([] {});
  }
  if (!chiusa_) {
    exec();
  }
  return std::exchange(errore_, nullptr);
}

template <class Azione> void FinestraElencoQt::Gesto(const Azione& azione) {
  if (inGesto_ || sincronizza_ || chiusa_) {
    return;
  }
  inGesto_ = true;
  try {
    azione();
    Sincronizza();
  } catch (...) {
    errore_ = std::current_exception();
  }
  inGesto_ = false;
  if (errore_) {
    Chiudi();
  }
}

void FinestraElencoQt::Chiudi() {
  if (!std::exchange(chiusa_, true)) {
    done(Accepted);
  }
}

void FinestraElencoQt::CollegaLista() {
  VistaElenco::Gesti& gesti = parti_.vista->gesti;
  gesti.seleziona = [this](int riga) { Gesto([this, riga] { Chiama(finestra_.seleziona, std::ptrdiff_t{riga}); }); };
  gesti.preme = [this](int riga, int x, int y) { Preme(riga, x, y); };
  gesti.rilascia = [this] { Rilascia(); };
  gesti.attiva = [this](const QModelIndex& cella) { parti_.vista->Premi(cella); };
  gesti.digita = [this](const QModelIndex& cella, const QString& cifra) { Digita(cella, cifra); };
  gesti.bloccata = [this] {
    (parti_.FrameScad->isHidden() ? static_cast<QWidget*>(parti_.cmbBanche2) : parti_.TextScad)->setFocus();
  };
  gesti.disposta = [this] {
    parti_.testate->Disponi();
    PosizionaEditor();
  };
  parti_.testate->cliccata = [this](int indice) { Gesto([this, indice] { Chiama(finestra_.clicTestata, indice); }); };
}

void FinestraElencoQt::CollegaCampi() {
  parti_.TextScad->installEventFilter(this);
  parti_.cmbBanche2->installEventFilter(this);
  connect(parti_.TextScad, &QLineEdit::textEdited, this, [this](const QString& testo) {
    Gesto([this, &testo] { Chiama(finestra_.testoEditor, std::string_view(Utf8(testo))); });
  });
  connect(parti_.cmbBanche2, &QComboBox::activated, this,
          [this](int indice) { Gesto([this, indice] { Chiama(finestra_.scegliBancaCella, indice); }); });
  if (parti_.TextScadenza != nullptr) {
    parti_.TextScadenza->installEventFilter(this);
    connect(parti_.TextScadenza, &QLineEdit::textEdited, this, [this](const QString& testo) {
      Gesto([this, &testo] { Chiama(finestra_.testoScadenza, std::string_view(Utf8(testo))); });
    });
  }
  if (parti_.cmbBanche != nullptr) {
    parti_.cmbBanche->installEventFilter(this);
    connect(parti_.cmbBanche, &QComboBox::activated, this,
            [this](int indice) { Gesto([this, indice] { Chiama(finestra_.scegliBanca, indice); }); });
  }
}

void FinestraElencoQt::CollegaTasti() {
  const auto conferma = [this] { Gesto([this] { Chiama(finestra_.conferma); }); };
  connect(parti_.PictureOk, &QPushButton::clicked, this, conferma);
  connect(parti_.PictureAnnulla, &QPushButton::clicked, this, [this] { Gesto([this] { Chiama(finestra_.annulla); }); });
  for (const Qt::Key tasto : {Qt::Key_Return, Qt::Key_Enter}) {
    auto* scorciatoia = new QShortcut(QKeySequence(Qt::CTRL | tasto), this);
    connect(scorciatoia, &QShortcut::activated, this, conferma);
  }
  for (const TestataElenco& testata : finestra_.testate) {
    if (testata.indice >= 1 && testata.indice <= 9) {
      const auto tasto = static_cast<Qt::Key>(Qt::Key_0 + testata.indice);
      auto* scorciatoia = new QShortcut(QKeySequence(Qt::CTRL | tasto), this);
      connect(scorciatoia, &QShortcut::activated, this,
              [this, indice = testata.indice] { Gesto([this, indice] { Chiama(finestra_.clicTestata, indice); }); });
    }
  }
}

void FinestraElencoQt::Sincronizza() {
  const StatoElenco& stato = finestra_.stato();
  if (stato.scaricata) {
    Chiudi();
    return;
  }
  sincronizza_ = true;
  try {
    SincronizzaRighe(stato);
    SincronizzaCampi(stato);
    SincronizzaEditor(stato.data, *parti_.FrameScad, *parti_.TextScad, Genere::EditorData);
    SincronizzaEditor(stato.banca, *parti_.FrameBanca, *parti_.cmbBanche2, Genere::EditorBanca);
    parti_.vista->Blocca(stato.barretteNascoste || stato.data.visibile || stato.banca.visibile);
    parti_.CopriBarrette(stato.barretteNascoste);
  } catch (...) {
    sincronizza_ = false;
    throw;
  }
  sincronizza_ = false;
}

void FinestraElencoQt::SincronizzaRighe(const StatoElenco& stato) {
  VistaElenco& vista = *parti_.vista;
  const int colonna = std::max(vista.currentIndex().column(), 0);
  if (std::exchange(ordine_, stato.ordine) != stato.ordine) {
    modello_.Ricarica();
    vista.Vai(static_cast<int>(stato.selezionata), colonna);
    rigaEditor_ = stato.selezionata;
    contenuto_ = stato.contenuto;
    parti_.lblRighe->setText(QuanteRighe(modello_.rowCount()));
  } else if (std::exchange(contenuto_, stato.contenuto) != stato.contenuto) {
    const auto [prima, ultima] = vista.RigheInVista();
    modello_.Aggiorna(prima, ultima);
  }
  if (vista.currentIndex().row() != stato.selezionata) {
    vista.MostraSelezionata(static_cast<int>(stato.selezionata));
  }
  parti_.testate->MostraOrdine(stato.testataOrdinata, stato.crescente);
}

void FinestraElencoQt::SincronizzaCampi(const StatoElenco& stato) {
  if (parti_.TextScadenza != nullptr && Utf8(parti_.TextScadenza->text()) != stato.testoScadenza) {
    parti_.TextScadenza->setText(Testo(stato.testoScadenza));
  }
  if (parti_.cmbBanche != nullptr && parti_.cmbBanche->currentIndex() != stato.indiceBanca) {
    parti_.cmbBanche->setCurrentIndex(stato.indiceBanca);
  }
}

void FinestraElencoQt::SincronizzaEditor(const EditorCella& editor, QFrame& cornice, QWidget& campo, Genere genere) {
  if (!editor.visibile) {
    // The list takes the focus first: a field hidden while it has it would pass it on along the tab order.
    if (!cornice.isHidden() && focusWidget() == &campo) {
      parti_.vista->setFocus();
    }
    cornice.hide();
    return;
  }
  if (genere == Genere::EditorData && Utf8(parti_.TextScad->text()) != editor.testo) {
    parti_.TextScad->setText(Testo(editor.testo));
  }
  if (genere == Genere::EditorBanca && parti_.cmbBanche2->currentIndex() != editor.indice) {
    parti_.cmbBanche2->setCurrentIndex(editor.indice);
  }
  parti_.PosizionaSullaCella(cornice, CellaEditor(genere));
  if (cornice.isHidden()) {
    cornice.show();
    campo.setFocus();
    parti_.TextScad->selectAll();
  }
}

QRect FinestraElencoQt::CellaEditor(Genere genere) const {
  for (int colonna = 0; colonna < modello_.columnCount(); ++colonna) {
    if (modello_.Genere(colonna) == genere) {
      return parti_.vista->visualRect(modello_.index(static_cast<int>(rigaEditor_), colonna));
    }
  }
  return {};
}

void FinestraElencoQt::PosizionaEditor() {
  if (!parti_.FrameScad->isHidden()) {
    parti_.PosizionaSullaCella(*parti_.FrameScad, CellaEditor(Genere::EditorData));
  }
  if (!parti_.FrameBanca->isHidden()) {
    parti_.PosizionaSullaCella(*parti_.FrameBanca, CellaEditor(Genere::EditorBanca));
  }
}

void FinestraElencoQt::Preme(int riga, int x, int y) {
  Gesto([this, riga, x, y] {
    if (riga >= 0) {
      Chiama(finestra_.seleziona, std::ptrdiff_t{riga});
    }
    Chiama(finestra_.premeMouse, x, y);
  });
}

void FinestraElencoQt::Rilascia() {
  Gesto([this] {
    rigaEditor_ = finestra_.stato().selezionata;
    const int alto = rigaEditor_ < 0 ? 0 : parti_.vista->rowViewportPosition(static_cast<int>(rigaEditor_));
    Chiama(finestra_.clic, alto * TwipsPerPixelY);
  });
}

void FinestraElencoQt::Digita(const QModelIndex& cella, const QString& cifra) {
  parti_.vista->Premi(cella);
  if (!chiusa_ && finestra_.stato().data.visibile) {
    parti_.TextScad->setText(cifra);
    Gesto([this, &cifra] { Chiama(finestra_.testoEditor, std::string_view(Utf8(cifra))); });
  }
}

bool FinestraElencoQt::TastoInEditor(QObject* campo, int tasto) {
  switch (tasto) {
  case Qt::Key_Tab:
  case Qt::Key_Backtab:
    ChiudiEditorCon(campo, CodiceTab);
    VaiAllaProssima(tasto);
    return true;
  case Qt::Key_Return:
  case Qt::Key_Enter:
    ChiudiEditorCon(campo, CodiceInvio);
    VaiAllaProssima(Qt::Key_Return);
    return true;
  case Qt::Key_Escape:
    Gesto([this] { Chiama(finestra_.abbandonaEditor); });
    return true;
  default:
    return false;
  }
}

void FinestraElencoQt::ChiudiEditorCon(QObject* campo, int codice) {
  if (campo == parti_.TextScad) {
    Gesto([this, codice] { Chiama(finestra_.tastoEditor, codice); });
  } else {
    parti_.vista->setFocus(); // the bank editor closes because it loses the focus
  }
}

void FinestraElencoQt::VaiAllaProssima(int tasto) {
  if (chiusa_ || !parti_.FrameScad->isHidden() || !parti_.FrameBanca->isHidden()) {
    return;
  }
  VistaElenco& vista = *parti_.vista;
  const QModelIndex cella = vista.currentIndex();
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
  const bool inEditor = oggetto == parti_.TextScad || oggetto == parti_.cmbBanche2;
  const auto tipo = evento->type();
  if (inEditor && tipo == QEvent::KeyPress) {
    const auto& tasto = static_cast<const QKeyEvent&>(*evento);
    return !(tasto.modifiers() & (Qt::ControlModifier | Qt::AltModifier)) && TastoInEditor(oggetto, tasto.key());
  }
  if (oggetto == parti_.cmbBanche2 && tipo == QEvent::FocusOut &&
      !RestaNelCampo(*parti_.cmbBanche2, static_cast<const QFocusEvent&>(*evento))) {
    Gesto([this] { Chiama(finestra_.perdeFuocoBancaCella); });
  }
  if (oggetto == parti_.TextScadenza && tipo == QEvent::MouseButtonPress) {
    Gesto([this] { Chiama(finestra_.clicScadenza); });
  }
  if (oggetto == parti_.cmbBanche && tipo == QEvent::Wheel && !parti_.cmbBanche->hasFocus()) {
    evento->ignore(); // scrolling past the field must not choose a bank
    return true;
  }
  return QDialog::eventFilter(oggetto, evento);
}

void FinestraElencoQt::reject() {
  const StatoElenco& stato = finestra_.stato();
  if (stato.data.visibile || stato.banca.visibile) {
    Gesto([this] { Chiama(finestra_.abbandonaEditor); });
  } else {
    Gesto([this] { Chiama(finestra_.annulla); });
  }
}

void FinestraElencoQt::closeEvent(QCloseEvent* evento) {
  if (chiusa_) {
    evento->accept();
    return;
  }
  evento->ignore();
  Gesto([this] { Chiama(finestra_.chiudi); });
}

void FinestraElencoQt::showEvent(QShowEvent* evento) {
  QDialog::showEvent(evento);
  parti_.vista->setFocus();
  parti_.testate->Disponi();
}

void FinestraElencoQt::resizeEvent(QResizeEvent* evento) {
  QDialog::resizeEvent(evento);
  parti_.testate->Disponi();
  parti_.CopriBarrette(finestra_.stato().barretteNascoste);
  PosizionaEditor();
}

void FinestraElencoQt::mousePressEvent(QMouseEvent* evento) {
  premutaFuori_ = evento->button() == Qt::LeftButton;
  evento->accept();
}

void FinestraElencoQt::mouseReleaseEvent(QMouseEvent* evento) {
  evento->accept();
  if (evento->button() == Qt::LeftButton && std::exchange(premutaFuori_, false)) {
    Gesto([this] { Chiama(finestra_.clicFuori); });
  }
}

} // namespace lumoscad::qt
