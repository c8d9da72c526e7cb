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
      elenco_(elenco), modello_(elenco), parti_(*this, elenco, modello_), ordine_(elenco.stato().ordine),
      contenuto_(elenco.stato().contenuto) {
  setObjectName(Testo(elenco.nome));
  setWindowTitle(Testo(elenco.titolo));
  modello_.guasto = [this](std::exception_ptr errore) {
    errore_ = std::move(errore);
    QMetaObject::invokeMethod(
        this, [this] { Chiudi(); }, Qt::QueuedConnection);
  };
  CollegaLista();
  CollegaCampi();
  CollegaTasti();
}

void FinestraModaleQt::Completa() {
  MostraQuanteRighe();
  if (const QScreen* schermo = screen()) {
    resize(sizeHint().boundedTo(schermo->availableSize() - QSize(24, 56)));
  }
}

std::exception_ptr FinestraModaleQt::Mostra() {
  const auto attiva = std::max(parti_.vista->ColonnaAttiva(-1, true, false), 0);
  const std::ptrdiff_t scelta = elenco_.stato().selezionata;
  {
    const QScopedValueRollback<bool> muta(sincronizza_, true);
    parti_.vista->Vai(static_cast<int>(std::max<std::ptrdiff_t>(scelta, 0)), attiva);
  }
  if (scelta < 0 && modello_.rowCount() > 0) {
    Invia(elenco_.seleziona, std::ptrdiff_t{0});
  } else {
    Gesto([] {});
  }
  if (!chiusa_) {
    exec();
  }
  if (!chiusa_) {
    Invia(elenco_.chiudi); // the calling program has ended the event loop: nobody can close the window any more
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
  VistaElenco::Gesti& gesti = parti_.vista->gesti;
  gesti.seleziona = [this](int riga) { Invia(elenco_.seleziona, std::ptrdiff_t{riga}); };
  gesti.disposta = [this] {
    parti_.testate->Disponi();
    PosizionaEditor();
  };
}

void FinestraModaleQt::CollegaCampi() {
  parti_.TextScad->installEventFilter(this);
  connect(parti_.TextScad, &QLineEdit::textEdited, this,
          [this](const QString& testo) { Invia(elenco_.testoEditor, std::string_view(Utf8(testo))); });
  if (parti_.TextScadenza != nullptr) {
    parti_.TextScadenza->installEventFilter(this);
    connect(parti_.TextScadenza, &QLineEdit::textEdited, this,
            [this](const QString& testo) { Invia(elenco_.testoScadenza, std::string_view(Utf8(testo))); });
  }
}

void FinestraModaleQt::CollegaTasti() {
  const auto conferma = [this] { Invia(elenco_.conferma); };
  connect(parti_.PictureOk, &QPushButton::clicked, this, conferma);
  connect(parti_.PictureAnnulla, &QPushButton::clicked, this, [this] { Invia(elenco_.annulla); });
  for (const Qt::Key tasto : {Qt::Key_Return, Qt::Key_Enter}) {
    auto* scorciatoia = new QShortcut(QKeySequence(Qt::CTRL | tasto), this);
    connect(scorciatoia, &QShortcut::activated, this, conferma);
  }
}

void FinestraModaleQt::Abbandona() {
  Gesto([&] {
    if (parti_.PictureAnnulla->hasFocus() || !modello_.HaVariazioni()) {
      Chiama(elenco_.annulla);
    } else {
      parti_.PictureAnnulla->setFocus();
    }
  });
}

void FinestraModaleQt::MostraQuanteRighe() {
  parti_.lblRighe->setText(QuanteRighe(modello_.rowCount()));
}

void FinestraModaleQt::Sincronizza() {
  const StatoElenco& stato = elenco_.stato();
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
  const StatoElenco& stato = elenco_.stato();
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
  int sinistra = elenco_.stato().sinistraLista;
  for (int colonna = 0; colonna < cella.column(); ++colonna) {
    sinistra += elenco_.colonne[static_cast<std::size_t>(colonna)].larghezza;
  }
  const EditorCella& editor = StatoEditor(genere);
  const int libera = elenco_.colonne[static_cast<std::size_t>(cella.column())].larghezza - editor.larghezza;
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

void FinestraModaleQt::DigitaNellEditor(const QString& cifra) {
  if (!chiusa_ && elenco_.stato().data.visibile) {
    parti_.TextScad->setText(cifra);
    Invia(elenco_.testoEditor, std::string_view(Utf8(cifra)));
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
      SincronizzaEditor(elenco_.stato());
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
  Invia(elenco_.chiudi);
}

void FinestraModaleQt::showEvent(QShowEvent* evento) {
  DialogoQt::showEvent(evento);
  parti_.vista->setFocus();
  parti_.testate->Disponi();
}

void FinestraModaleQt::resizeEvent(QResizeEvent* evento) {
  DialogoQt::resizeEvent(evento);
  parti_.testate->Disponi();
  parti_.CopriBarrette(elenco_.stato().barretteNascoste);
  PosizionaEditor();
}

} // namespace lumoscad::qt
