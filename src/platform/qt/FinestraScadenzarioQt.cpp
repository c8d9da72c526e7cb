#include "platform/qt/FinestraScadenzarioQt.hpp"

#include "platform/qt/Aspetto.hpp"
#include "platform/qt/Testi.hpp"

#include <QFocusEvent>
#include <QFrame>
#include <QGridLayout>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QWindow>

#include <utility>

namespace lumoscad::qt {

namespace {

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

FinestraScadenzarioQt::FinestraScadenzarioQt(FinestraScadenzario& finestra, QWidget* sotto)
    : FinestraModaleQt(finestra.Elenco(), sotto), finestra_(finestra) {
  AggiungiDescrizione();
  AggiungiSelezionaTutto();
  RinominaParti();
  CollegaConferma([this] { finestra_.PictureOk_Click(); });
  CollegaCampi();
  MostraScadenzario(finestra_.Stato());
  Completa();
}

QString FinestraScadenzarioQt::QuanteRighe(int righe) const {
  return righe == 1 ? QStringLiteral("1 rata") : QString::number(righe) + QStringLiteral(" rate");
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
  for (const RigaDescrizione& voce : finestra_.Description().descrizione) {
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
  QLabel* congedo = Scritta(finestra_.Description().congedo, this);
  congedo->setFont(aspetto::Carattere(finestra_.Description().carattereCongedo));
  congedo->adjustSize();
  congedo->hide();
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
  parti_.vista->Immagini().setObjectName({}); // its list has check boxes and no image list
  if (auto* didascalia = findChild<QLabel*>(QStringLiteral("lblScadenza"))) {
    didascalia->setObjectName(QStringLiteral("LabelNScad"));
  }
}

void FinestraScadenzarioQt::CollegaCampi() {
  parti_.vista->installEventFilter(this);
  parti_.vista->setFocusPolicy(Qt::StrongFocus); // the wheel must not take the focus from an open editor
  CollegaPulsanti();
}

void FinestraScadenzarioQt::CollegaPulsanti() {
  connect(PicSelezionaTutto_, &QPushButton::clicked, this,
          [this] { Gesto([this] { finestra_.PicSelezionaTutto_Click(); }); });
  connect(PicSelezionaTutto_, &QPushButton::pressed, this, [this] {
    // Its key leaves the field that has the focus before it counts, as a click does.
    PicSelezionaTutto_->setFocus(Qt::ShortcutFocusReason);
    if (std::exchange(rilascioPerso_, false)) {
      PicSelezionaTutto_->click();
    }
  });
  for (QPushButton* pulsante : {parti_.PictureOk, parti_.PictureAnnulla}) {
    // After a refused date the person presses once more: what was refused is not confirmed unseen.
    connect(pulsante, &QPushButton::pressed, this, [this, pulsante] {
      if (std::exchange(rilascioPerso_, false)) {
        pulsante->setDown(false);
      }
    });
  }
}

void FinestraScadenzarioQt::Segui(const StatoElenco& /*stato*/) {
  MostraScadenzario(finestra_.Stato());
}

void FinestraScadenzarioQt::MostraScadenzario(const StatoScadenzario& stato) {
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

void FinestraScadenzarioQt::MousePressed(int row, int x, int /*y*/) {
  rigaPremuta_ = row;
  premutaLaSpunta_ = x < elenco_.Description().colonne.front().larghezza;
  if (row >= 0) {
    Gesto([this, row] { elenco_.Seleziona(row); });
  }
  if (std::exchange(rilascioPerso_, false)) {
    MouseReleased();
  }
}

void FinestraScadenzarioQt::MouseReleased() {
  const int riga = std::exchange(rigaPremuta_, -1);
  if (riga < 0) {
    return;
  }
  if (premutaLaSpunta_) {
    Gesto([this, riga] { elenco_.LVScadenze_ItemCheck(static_cast<std::size_t>(riga)); });
  }
  Gesto([&] { elenco_.LVScadenze_Click(parti_.vista->rowViewportPosition(riga) * TwipsPerPixelY); });
}

void FinestraScadenzarioQt::CellActivated(const QModelIndex& cell) {
  PremiColonna(modello_.Genere(cell.column()));
}

void FinestraScadenzarioQt::DigitTyped(const QModelIndex& /*cell*/, const QString& digit) {
  Digita(digit);
}

void FinestraScadenzarioQt::KeyRefused() {
  parti_.TextScad->setFocus();
}

void FinestraScadenzarioQt::PremiColonna(Genere genere) {
  const QModelIndex cella = parti_.vista->currentIndex();
  if (cella.isValid()) {
    parti_.vista->Premi(modello_.index(cella.row(), Colonna(genere)));
  }
}

void FinestraScadenzarioQt::Digita(const QString& cifra) {
  PremiColonna(Genere::EditorData);
  DigitaNellEditor(cifra);
}

bool FinestraScadenzarioQt::TastoInLista(const QKeyEvent& tasto) {
  if (elenco_.Stato().data.visibile) {
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
    Gesto([this] { elenco_.TextScad_KeyPress(CodiceTab); });
    return true; // the focus stays: leaving the field would close it
  case Qt::Key_Return:
  case Qt::Key_Enter:
    Gesto([this] { elenco_.TextScad_KeyPress(CodiceInvio); });
    if (!Chiusa() && parti_.FrameScad->isHidden()) {
      parti_.vista->Vai(CellaEditor(Genere::EditorData).row() + 1, parti_.vista->currentIndex().column());
    }
    return true;
  case Qt::Key_Escape:
    Gesto([this] { elenco_.AbbandonaEditor(); });
    return true;
  default:
    return false;
  }
}

void FinestraScadenzarioQt::LasciaCampo(const std::function<void()>& gesto, const QFocusEvent& evento) {
  coperta_ = false;
  Gesto(gesto);
  // The focus went with a press of the mouse, and a message came up before the press arrived: the button of the mouse
  // went up over the message, and this window never hears of it.
  if (coperta_ && evento.reason() == Qt::MouseFocusReason && !(QGuiApplication::mouseButtons() & Qt::LeftButton)) {
    rilascioPerso_ = true;
    QMetaObject::invokeMethod(
        this, [this] { rilascioPerso_ = false; }, Qt::QueuedConnection);
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
    const auto& perso = static_cast<const QFocusEvent&>(*evento);
    if (oggetto == parti_.TextScad) {
      LasciaCampo([this] { elenco_.TextScad_LostFocus(); }, perso);
    } else if (oggetto == parti_.TextScadenza) {
      LasciaCampo([this] { elenco_.TextScadenza_LostFocus(); }, perso);
    }
  }
  return FinestraModaleQt::eventFilter(oggetto, evento);
}

void FinestraScadenzarioQt::reject() {
  Abbandona();
}

} // namespace lumoscad::qt
