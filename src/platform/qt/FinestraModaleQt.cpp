#include "platform/qt/FinestraModaleQt.hpp"

#include "platform/qt/Testi.hpp"

#include <QCloseEvent>
#include <QComboBox>
#include <QFocusEvent>
#include <QFrame>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QScreen>
#include <QShortcut>

#include <algorithm>
#include <utility>

namespace lumoscad::qt {

FinestraModaleQt::FinestraModaleQt(FinestraElenco& elenco, QWidget* sotto)
    : DialogoQt(sotto, Qt::Dialog | Qt::WindowTitleHint | Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint |
                           Qt::WindowMaximizeButtonHint),
      elenco_(elenco), modello_(elenco), parti_(*this, elenco, modello_), ordine_(elenco.Stato().ordine),
      contenuto_(elenco.Stato().contenuto) {
  setObjectName(Testo(elenco.Description().nome));
  setWindowTitle(Testo(elenco.Description().titolo));
  modello_.guasto = [this](std::exception_ptr errore) {
    errore_ = std::move(errore);
    QMetaObject::invokeMethod(
        this, [this] { Chiudi(); }, Qt::QueuedConnection);
  };
  CollegaLista();
  CollegaCampi();
  connect(parti_.PictureAnnulla, &QPushButton::clicked, this,
          [this] { Gesto([this] { elenco_.PictureAnnulla_Click(); }); });
}

void FinestraModaleQt::Completa() {
  MostraQuanteRighe();
  if (const QScreen* schermo = screen()) {
    resize(sizeHint().boundedTo(schermo->availableSize() - QSize(24, 56)));
  }
}

std::exception_ptr FinestraModaleQt::Mostra() {
  const auto attiva = std::max(parti_.vista->ColonnaAttiva(-1, true, false), 0);
  const std::ptrdiff_t scelta = elenco_.Stato().selezionata;
  {
    const QScopedValueRollback<bool> muta(sincronizza_, true);
    parti_.vista->Vai(static_cast<int>(std::max<std::ptrdiff_t>(scelta, 0)), attiva);
  }
  if (scelta < 0 && modello_.rowCount() > 0) {
    Gesto([this] { elenco_.Seleziona(0); });
  } else {
    Gesto([] {});
  }
  if (!chiusa_) {
    exec();
  }
  if (!chiusa_) {
    Gesto([this] {
      elenco_.Form_QueryUnload();
    }); // the calling program has ended the event loop: nobody can close the window any more
  }
  return std::exchange(errore_, nullptr);
}

void FinestraModaleQt::Gesto(const std::function<void()>& azione) {
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

void FinestraModaleQt::Chiudi() {
  if (!std::exchange(chiusa_, true)) {
    done(Accepted);
  }
}

void FinestraModaleQt::CollegaLista() {
  parti_.vista->SetListener(this);
}

void FinestraModaleQt::RowSelected(int row) {
  Gesto([this, row] { elenco_.Seleziona(row); });
}

void FinestraModaleQt::LaidOut() {
  parti_.testate->Disponi();
  PosizionaEditor();
}

void FinestraModaleQt::CollegaCampi() {
  parti_.TextScad->installEventFilter(this);
  connect(parti_.TextScad, &QLineEdit::textEdited, this,
          [this](const QString& testo) { ScriviNellEditor(Utf8(testo)); });
  if (parti_.TextScadenza != nullptr) {
    parti_.TextScadenza->installEventFilter(this);
    connect(parti_.TextScadenza, &QLineEdit::textEdited, this,
            [this](const QString& testo) { Gesto([this, utf8 = Utf8(testo)] { elenco_.TextScadenza_Change(utf8); }); });
  }
}

void FinestraModaleQt::CollegaConferma(const std::function<void()>& gesto) {
  const auto conferma = [this, gesto] { Gesto(gesto); };
  connect(parti_.PictureOk, &QPushButton::clicked, this, conferma);
  for (const Qt::Key tasto : {Qt::Key_Return, Qt::Key_Enter}) {
    auto* scorciatoia = new QShortcut(QKeySequence(Qt::CTRL | tasto), this);
    connect(scorciatoia, &QShortcut::activated, this, conferma);
  }
}

void FinestraModaleQt::Abbandona() {
  Gesto([&] {
    if (parti_.PictureAnnulla->hasFocus() || !modello_.HaVariazioni()) {
      elenco_.PictureAnnulla_Click();
    } else {
      parti_.PictureAnnulla->setFocus();
    }
  });
}

void FinestraModaleQt::MostraQuanteRighe() {
  parti_.lblRighe->setText(QuanteRighe(modello_.rowCount()));
}

void FinestraModaleQt::Sincronizza() {
  const StatoElenco& stato = elenco_.Stato();
  if (stato.scaricata) {
    Chiudi();
    return;
  }
  const QScopedValueRollback<bool> muta(sincronizza_, true);
  SincronizzaRighe(stato);
  if (parti_.TextScadenza != nullptr && Utf8(parti_.TextScadenza->text()) != stato.testoScadenza) {
    parti_.TextScadenza->setText(Testo(stato.testoScadenza));
  }
  Segui(stato);
  SincronizzaEditor(stato);
}

void FinestraModaleQt::SincronizzaEditor(const StatoElenco& stato) {
  SincronizzaEditor(stato.data, *parti_.FrameScad, *parti_.TextScad, Genere::EditorData);
  if (parti_.FrameBanca != nullptr) {
    SincronizzaEditor(stato.banca, *parti_.FrameBanca, *parti_.cmbBanche2, Genere::EditorBanca);
  }
  parti_.vista->Blocca(stato.barretteNascoste || stato.data.visibile || stato.banca.visibile);
  parti_.CopriBarrette(stato.barretteNascoste);
}

void FinestraModaleQt::SincronizzaRighe(const StatoElenco& stato) {
  VistaElenco& vista = *parti_.vista;
  const int colonna = std::max(vista.currentIndex().column(), 0);
  const bool riordinate = std::exchange(ordine_, stato.ordine) != stato.ordine;
  if (riordinate) {
    modello_.Ricarica();
    vista.Vai(static_cast<int>(stato.selezionata), colonna);
    contenuto_ = stato.contenuto;
    MostraQuanteRighe();
  } else if (std::exchange(contenuto_, stato.contenuto) != stato.contenuto) {
    const auto [prima, ultima] = vista.RigheInVista();
    modello_.Aggiorna(prima, ultima);
  }
  if (vista.currentIndex().row() != stato.selezionata) {
    vista.MostraSelezionata(static_cast<int>(stato.selezionata));
  }
  if (riordinate) {
    // What is being typed stays in sight, wherever the selection went.
    for (const Genere genere : {Genere::EditorData, Genere::EditorBanca}) {
      if (StatoEditor(genere).visibile) {
        vista.scrollTo(CellaEditor(genere));
      }
    }
  }
}

void FinestraModaleQt::SincronizzaEditor(const EditorCella& editor, QFrame& cornice, QWidget& campo, Genere genere) {
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
  parti_.PosizionaSullaCella(cornice, AreaEditor(genere));
  if (cornice.isHidden()) {
    cornice.show();
    campo.setFocus();
    parti_.TextScad->selectAll();
  }
}

int FinestraModaleQt::Colonna(Genere genere) const {
  int colonna = 0;
  while (colonna < modello_.columnCount() && modello_.Genere(colonna) != genere) {
    ++colonna;
  }
  return colonna;
}

const EditorCella& FinestraModaleQt::StatoEditor(Genere genere) const {
  const StatoElenco& stato = elenco_.Stato();
  return genere == Genere::EditorData ? stato.data : stato.banca;
}

QModelIndex FinestraModaleQt::CellaEditor(Genere genere) const {
  return modello_.index(static_cast<int>(StatoEditor(genere).posto), Colonna(genere));
}

QRect FinestraModaleQt::AreaEditor(Genere genere) const {
  const QModelIndex cella = CellaEditor(genere);
  QRect area = parti_.vista->visualRect(cella);
  if (area.isEmpty()) {
    return area;
  }
  // The screen knows the columns at their nominal widths: what it leaves free at the cell's ends stays free.
  int sinistra = elenco_.Stato().sinistraLista;
  for (int colonna = 0; colonna < cella.column(); ++colonna) {
    sinistra += elenco_.Description().colonne[static_cast<std::size_t>(colonna)].larghezza;
  }
  const EditorCella& editor = StatoEditor(genere);
  const int libera =
      elenco_.Description().colonne[static_cast<std::size_t>(cella.column())].larghezza - editor.larghezza;
  const int larghezza = area.width() - libera / TwipsPerPixelX;
  area.translate((editor.sinistra - sinistra) / TwipsPerPixelX, 0);
  area.setWidth(larghezza);
  return area;
}

void FinestraModaleQt::PosizionaEditor() {
  if (!parti_.FrameScad->isHidden()) {
    parti_.PosizionaSullaCella(*parti_.FrameScad, AreaEditor(Genere::EditorData));
  }
  if (parti_.FrameBanca != nullptr && !parti_.FrameBanca->isHidden()) {
    parti_.PosizionaSullaCella(*parti_.FrameBanca, AreaEditor(Genere::EditorBanca));
  }
}

void FinestraModaleQt::ScriviNellEditor(const std::string& testo) {
  Gesto([&] { elenco_.TextScad_Change(testo); });
}

void FinestraModaleQt::DigitaNellEditor(const QString& cifra) {
  if (!chiusa_ && elenco_.Stato().data.visibile) {
    parti_.TextScad->setText(cifra);
    ScriviNellEditor(Utf8(cifra));
  }
}

bool FinestraModaleQt::HaLasciatoIlCampo(const QFocusEvent& evento) {
  return evento.reason() != Qt::ActiveWindowFocusReason && evento.reason() != Qt::PopupFocusReason &&
         evento.reason() != Qt::MenuBarFocusReason;
}

bool FinestraModaleQt::event(QEvent* evento) {
  if (evento->type() == QEvent::WindowBlocked) {
    coperta_ = true;
    if (inGesto_ && !chiusa_) {
      // A message of the gesture that is running: an editor that the screen has closed is gone before it shows.
      const QScopedValueRollback<bool> muta(sincronizza_, true);
      SincronizzaEditor(elenco_.Stato());
    }
  }
  return QDialog::event(evento);
}

bool FinestraModaleQt::eventFilter(QObject* oggetto, QEvent* evento) {
  if (oggetto == parti_.TextScadenza && evento->type() == QEvent::FocusIn) {
    entratoConClic_ = static_cast<const QFocusEvent&>(*evento).reason() == Qt::MouseFocusReason;
  }
  // A click into the field selects the date as Tab does, so that the next one replaces it.
  if (oggetto == parti_.TextScadenza && evento->type() == QEvent::MouseButtonRelease &&
      std::exchange(entratoConClic_, false) && !parti_.TextScadenza->hasSelectedText()) {
    parti_.TextScadenza->selectAll();
  }
  return DialogoQt::eventFilter(oggetto, evento);
}

void FinestraModaleQt::closeEvent(QCloseEvent* evento) {
  if (chiusa_) {
    evento->accept();
    return;
  }
  evento->ignore();
  Gesto([this] { elenco_.Form_QueryUnload(); });
}

void FinestraModaleQt::showEvent(QShowEvent* evento) {
  DialogoQt::showEvent(evento);
  parti_.vista->setFocus();
  parti_.testate->Disponi();
}

void FinestraModaleQt::resizeEvent(QResizeEvent* evento) {
  DialogoQt::resizeEvent(evento);
  parti_.testate->Disponi();
  parti_.CopriBarrette(elenco_.Stato().barretteNascoste);
  PosizionaEditor();
}

} // namespace lumoscad::qt
