#include "platform/qt/FinestraScadenzarioQt.hpp"

#include "platform/qt/Testi.hpp"

#include <QCloseEvent>
#include <QFocusEvent>
#include <QFrame>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QShortcut>
#include <QWindow>

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

/// True when the person left the field; false when only the window lost the keyboard, to a message for instance.
bool HaLasciatoIlCampo(const QFocusEvent& evento) {
  return evento.reason() != Qt::ActiveWindowFocusReason && evento.reason() != Qt::PopupFocusReason &&
         evento.reason() != Qt::MenuBarFocusReason;
}

/// The text of the control with its access key, the "s" that both of its texts have.
QString ConTasto(QString testo) {
  const qsizetype dove = testo.indexOf(QLatin1Char('s'), 0, Qt::CaseInsensitive);
  return dove < 0 ? testo : testo.insert(dove, QLatin1Char('&'));
}

QLabel* Scritta(const EtichettaElenco& voce, QWidget* padre) {
  auto* etichetta = new QLabel(padre);
  etichetta->setObjectName(Testo(voce.nome));
  etichetta->setTextFormat(Qt::PlainText);
  etichetta->setText(Testo(voce.testo));
  return etichetta;
}

} // namespace

FinestraScadenzarioQt::FinestraScadenzarioQt(FinestraScadenzario& finestra, QWidget* padre)
    : QDialog(padre, Qt::Dialog | Qt::WindowTitleHint | Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint |
                         Qt::WindowMaximizeButtonHint),
      finestra_(finestra), elenco_(finestra.elenco), modello_(elenco_), parti_(*this, elenco_, modello_),
      ordine_(elenco_.stato().ordine), contenuto_(elenco_.stato().contenuto) {
  setObjectName(Testo(elenco_.nome));
  setWindowTitle(Testo(elenco_.titolo));
  modello_.guasto = [this](std::exception_ptr errore) {
    errore_ = std::move(errore);
    QMetaObject::invokeMethod(
        this, [this] { Chiudi(); }, Qt::QueuedConnection);
  };
  AggiungiDescrizione();
  AggiungiSelezionaTutto();
  RinominaParti();
  CollegaLista();
  CollegaCampi();
  CollegaTasti();
  const int righe = modello_.rowCount();
  parti_.lblRighe->setText(righe == 1 ? QStringLiteral("1 rata") : QString::number(righe) + QStringLiteral(" rate"));
  SincronizzaScadenzario(finestra_.stato());
  if (const QScreen* schermo = screen()) {
    resize(sizeHint().boundedTo(schermo->availableSize() - QSize(24, 56)));
  }
}

std::exception_ptr FinestraScadenzarioQt::Mostra() {
  const std::ptrdiff_t scelta = elenco_.stato().selezionata;
  sincronizza_ = true;
  parti_.vista->Vai(static_cast<int>(std::max<std::ptrdiff_t>(scelta, 0)), 0);
  sincronizza_ = false;
  if (scelta < 0 && modello_.rowCount() > 0) {
    Gesto([this] { Chiama(elenco_.seleziona, std::ptrdiff_t{0}); });
  } else {
    Gesto([] {});
  }
  if (!chiusa_) {
    exec();
  }
  return std::exchange(errore_, nullptr);
}

template <class Azione> void FinestraScadenzarioQt::Gesto(const Azione& azione) {
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

void FinestraScadenzarioQt::Chiudi() {
  if (!std::exchange(chiusa_, true)) {
    done(Accepted);
  }
}

void FinestraScadenzarioQt::AggiungiDescrizione() {
  FrameDesc_ = new QFrame(this);
  FrameDesc_->setObjectName(QStringLiteral("FrameDesc"));
  auto* griglia = new QGridLayout(FrameDesc_);
  griglia->setContentsMargins(0, 2, 0, 6);
  griglia->setHorizontalSpacing(8);
  griglia->setVerticalSpacing(4);
  griglia->setColumnStretch(1, 1);
  int riga = 0;
  for (const RigaDescrizione& voce : finestra_.descrizione) {
    QLabel* valore = Scritta(voce.valore, FrameDesc_);
    QFont carattere = valore->font();
    carattere.setBold(true);
    valore->setFont(carattere);
    valore->setToolTip(QStringLiteral("<p>%1</p>").arg(valore->text().toHtmlEscaped()));
    // A long name must not widen the window: what does not fit is in the tooltip.
    valore->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    griglia->addWidget(Scritta(voce.didascalia, FrameDesc_), riga, 0);
    griglia->addWidget(valore, riga, 1);
    ++riga;
  }
  if (auto* pila = qobject_cast<QVBoxLayout*>(layout())) {
    pila->insertWidget(0, FrameDesc_);
  }
}

void FinestraScadenzarioQt::AggiungiSelezionaTutto() {
  QWidget* campo = parti_.TextScadenza->parentWidget();
  QWidget* riga = campo->parentWidget();
  PicSelezionaTutto_ = new QPushButton(riga);
  PicSelezionaTutto_->setObjectName(QStringLiteral("PicSelezionaTutto"));
  PicSelezionaTutto_->setAutoDefault(false);
  PicSelezionaTutto_->setToolTip(QStringLiteral("Mette o toglie il segno a tutte le rate (Alt+S)"));
  if (auto* scatola = qobject_cast<QHBoxLayout*>(riga->layout())) {
    scatola->insertWidget(scatola->indexOf(campo) + 1, PicSelezionaTutto_);
    scatola->insertSpacing(scatola->indexOf(PicSelezionaTutto_), 8);
  }
  QWidget::setTabOrder(parti_.TextScadenza, PicSelezionaTutto_);
  QWidget::setTabOrder(PicSelezionaTutto_, parti_.vista);
}

void FinestraScadenzarioQt::RinominaParti() {
  parti_.picScadenzeBanche->setObjectName(QStringLiteral("FrameScadenzeBase"));
  if (auto* didascalia = findChild<QLabel*>(QStringLiteral("lblScadenza"))) {
    didascalia->setObjectName(QStringLiteral("LabelNScad"));
  }
}

void FinestraScadenzarioQt::CollegaLista() {
  VistaElenco::Gesti& gesti = parti_.vista->gesti;
  gesti.seleziona = [this](int riga) { Gesto([this, riga] { Chiama(elenco_.seleziona, std::ptrdiff_t{riga}); }); };
  gesti.preme = [this](int riga, int x, int) { Preme(riga, x); };
  gesti.rilascia = [this] { Rilascia(); };
  gesti.attiva = [this](const QModelIndex& cella) { PremiColonna(modello_.Genere(cella.column())); };
  gesti.digita = [this](const QModelIndex&, const QString& cifra) { Digita(cifra); };
  gesti.bloccata = [this] { parti_.TextScad->setFocus(); };
  gesti.disposta = [this] {
    parti_.testate->Disponi();
    PosizionaEditor();
  };
}

void FinestraScadenzarioQt::CollegaCampi() {
  parti_.vista->installEventFilter(this);
  parti_.vista->setFocusPolicy(Qt::StrongFocus); // the wheel must not take the focus from an open editor
  parti_.TextScad->installEventFilter(this);
  parti_.TextScadenza->installEventFilter(this);
  connect(parti_.TextScad, &QLineEdit::textEdited, this, [this](const QString& testo) {
    Gesto([this, &testo] { Chiama(elenco_.testoEditor, std::string_view(Utf8(testo))); });
  });
  connect(parti_.TextScadenza, &QLineEdit::textEdited, this, [this](const QString& testo) {
    Gesto([this, &testo] { Chiama(elenco_.testoScadenza, std::string_view(Utf8(testo))); });
  });
}

void FinestraScadenzarioQt::CollegaTasti() {
  const auto conferma = [this] { Gesto([this] { Chiama(elenco_.conferma); }); };
  connect(parti_.PictureOk, &QPushButton::clicked, this, conferma);
  connect(parti_.PictureAnnulla, &QPushButton::clicked, this, [this] { Gesto([this] { Chiama(elenco_.annulla); }); });
  connect(PicSelezionaTutto_, &QPushButton::clicked, this,
          [this] { Gesto([this] { Chiama(finestra_.selezionaTutto); }); });
  for (const Qt::Key tasto : {Qt::Key_Return, Qt::Key_Enter}) {
    auto* scorciatoia = new QShortcut(QKeySequence(Qt::CTRL | tasto), this);
    connect(scorciatoia, &QShortcut::activated, this, conferma);
  }
}

void FinestraScadenzarioQt::Sincronizza() {
  const StatoElenco& stato = elenco_.stato();
  if (stato.scaricata) {
    Chiudi();
    return;
  }
  sincronizza_ = true;
  try {
    SincronizzaRighe(stato);
    if (Utf8(parti_.TextScadenza->text()) != stato.testoScadenza) {
      parti_.TextScadenza->setText(Testo(stato.testoScadenza));
    }
    SincronizzaEditor(stato.data);
    SincronizzaScadenzario(finestra_.stato());
    parti_.vista->Blocca(stato.data.visibile);
    parti_.CopriBarrette(stato.barretteNascoste);
  } catch (...) {
    sincronizza_ = false;
    throw;
  }
  sincronizza_ = false;
}

void FinestraScadenzarioQt::SincronizzaRighe(const StatoElenco& stato) {
  VistaElenco& vista = *parti_.vista;
  if (std::exchange(ordine_, stato.ordine) != stato.ordine) {
    modello_.Ricarica();
    contenuto_ = stato.contenuto;
  } else if (std::exchange(contenuto_, stato.contenuto) != stato.contenuto) {
    const auto [prima, ultima] = vista.RigheInVista();
    modello_.Aggiorna(prima, ultima);
  }
  if (vista.currentIndex().row() != stato.selezionata) {
    vista.MostraSelezionata(static_cast<int>(stato.selezionata));
  }
}

void FinestraScadenzarioQt::SincronizzaEditor(const EditorCella& editor) {
  QFrame& cornice = *parti_.FrameScad;
  if (!editor.visibile) {
    // The list takes the focus first: a field hidden while it has it would pass it on along the tab order.
    if (!cornice.isHidden() && focusWidget() == parti_.TextScad) {
      parti_.vista->setFocus();
    }
    cornice.hide();
    return;
  }
  if (Utf8(parti_.TextScad->text()) != editor.testo) {
    parti_.TextScad->setText(Testo(editor.testo));
  }
  if (cornice.isHidden()) {
    rigaEditor_ = elenco_.stato().selezionata;
    cornice.show();
    parti_.TextScad->setFocus();
    parti_.TextScad->selectAll();
  }
  PosizionaEditor();
}

void FinestraScadenzarioQt::SincronizzaScadenzario(const StatoScadenzario& stato) {
  const QString testo = ConTasto(Testo(stato.selezionaTutto));
  if (PicSelezionaTutto_->text() != testo) {
    PicSelezionaTutto_->setText(testo);
  }
  for (auto* etichetta : FrameDesc_->findChildren<QLabel*>()) {
    etichetta->setVisible(stato.descrizioneVisibile);
  }
  FrameDesc_->setVisible(stato.descrizioneVisibile);
  TieniInPrimoPiano(stato.primoPiano);
}

void FinestraScadenzarioQt::TieniInPrimoPiano(bool sopra) {
  if (windowFlags().testFlag(Qt::WindowStaysOnTopHint) == sopra) {
    return;
  }
  // Setting the flags of a widget on the screen hides it, and a dialog that is hidden has ended.
  overrideWindowFlags(windowFlags().setFlag(Qt::WindowStaysOnTopHint, sopra));
  if (QWindow* finestra = windowHandle()) {
    finestra->setFlag(Qt::WindowStaysOnTopHint, sopra);
  }
}

void FinestraScadenzarioQt::PosizionaEditor() {
  if (!parti_.FrameScad->isHidden()) {
    const QModelIndex cella = modello_.index(static_cast<int>(rigaEditor_), Colonna(Genere::EditorData));
    parti_.PosizionaSullaCella(*parti_.FrameScad, parti_.vista->visualRect(cella));
  }
}

int FinestraScadenzarioQt::Colonna(Genere genere) const {
  int colonna = 0;
  while (colonna < modello_.columnCount() && modello_.Genere(colonna) != genere) {
    ++colonna;
  }
  return colonna;
}

void FinestraScadenzarioQt::Preme(int riga, int x) {
  rigaPremuta_ = riga;
  premutaLaSpunta_ = x < elenco_.colonne.front().larghezza;
  if (riga >= 0) {
    Gesto([this, riga] { Chiama(elenco_.seleziona, std::ptrdiff_t{riga}); });
  }
}

void FinestraScadenzarioQt::Rilascia() {
  const int riga = std::exchange(rigaPremuta_, -1);
  if (riga < 0) {
    return;
  }
  if (premutaLaSpunta_) {
    Gesto([this, riga] { Chiama(finestra_.spunta, static_cast<std::size_t>(riga)); });
  }
  Gesto([this, riga] { Chiama(elenco_.clic, parti_.vista->rowViewportPosition(riga) * TwipsPerPixelY); });
}

void FinestraScadenzarioQt::PremiColonna(Genere genere) {
  const QModelIndex cella = parti_.vista->currentIndex();
  if (cella.isValid()) {
    parti_.vista->Premi(modello_.index(cella.row(), Colonna(genere)));
  }
}

void FinestraScadenzarioQt::Digita(const QString& cifra) {
  PremiColonna(Genere::EditorData);
  if (!chiusa_ && elenco_.stato().data.visibile) {
    parti_.TextScad->setText(cifra);
    Gesto([this, &cifra] { Chiama(elenco_.testoEditor, std::string_view(Utf8(cifra))); });
  }
}

bool FinestraScadenzarioQt::TastoInLista(const QKeyEvent& tasto) {
  if (elenco_.stato().data.visibile) {
    return false;
  }
  switch (tasto.key()) {
  case Qt::Key_Space:
    PremiColonna(Genere::Spunta);
    return true;
  case Qt::Key_Return:
  case Qt::Key_Enter:
  case Qt::Key_F2:
    PremiColonna(Genere::EditorData);
    return true;
  default:
    if (tasto.text().size() == 1 && tasto.text().at(0).isDigit()) {
      Digita(tasto.text());
      return true;
    }
    return false;
  }
}

bool FinestraScadenzarioQt::TastoInEditor(const QKeyEvent& tasto) {
  switch (tasto.key()) {
  case Qt::Key_Tab:
  case Qt::Key_Backtab:
    Gesto([this] { Chiama(elenco_.tastoEditor, CodiceTab); });
    return true; // the focus stays: leaving the field would close it
  case Qt::Key_Return:
  case Qt::Key_Enter:
    Gesto([this] { Chiama(elenco_.tastoEditor, CodiceInvio); });
    if (!chiusa_ && parti_.FrameScad->isHidden()) {
      parti_.vista->Vai(parti_.vista->currentIndex().row() + 1, parti_.vista->currentIndex().column());
    }
    return true;
  case Qt::Key_Escape:
    Gesto([this] { Chiama(elenco_.abbandonaEditor); });
    return true;
  default:
    return false;
  }
}

bool FinestraScadenzarioQt::eventFilter(QObject* oggetto, QEvent* evento) {
  if (evento->type() == QEvent::KeyPress) {
    const auto& tasto = static_cast<const QKeyEvent&>(*evento);
    const bool solo = !(tasto.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier));
    return solo &&
           ((oggetto == parti_.vista && TastoInLista(tasto)) || (oggetto == parti_.TextScad && TastoInEditor(tasto)));
  }
  if (evento->type() == QEvent::FocusOut && HaLasciatoIlCampo(static_cast<const QFocusEvent&>(*evento))) {
    if (oggetto == parti_.TextScad) {
      Gesto([this] { Chiama(finestra_.perdeFuocoEditor); });
    } else if (oggetto == parti_.TextScadenza) {
      Gesto([this] { Chiama(finestra_.perdeFuocoScadenza); });
    }
  }
  return QDialog::eventFilter(oggetto, evento);
}

void FinestraScadenzarioQt::reject() {
  Gesto([this] { Chiama(elenco_.annulla); });
}

void FinestraScadenzarioQt::closeEvent(QCloseEvent* evento) {
  if (chiusa_) {
    evento->accept();
    return;
  }
  evento->ignore();
  Gesto([this] { Chiama(elenco_.chiudi); });
}

void FinestraScadenzarioQt::showEvent(QShowEvent* evento) {
  QDialog::showEvent(evento);
  parti_.vista->setFocus();
  parti_.testate->Disponi();
}

void FinestraScadenzarioQt::resizeEvent(QResizeEvent* evento) {
  QDialog::resizeEvent(evento);
  parti_.testate->Disponi();
  parti_.CopriBarrette(elenco_.stato().barretteNascoste);
  PosizionaEditor();
}

} // namespace lumoscad::qt
