#include "platform/qt/SingleItemWindowQt.hpp"

#include "platform/qt/GestureKeys.hpp"
#include "platform/qt/ListReporter.hpp"
#include "platform/qt/Look.hpp"
#include "platform/qt/Texts.hpp"

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
QString WithKey(QString text) {
  const qsizetype where = text.indexOf(QLatin1Char('s'), 0, Qt::CaseInsensitive);
  return where < 0 ? text : text.insert(where, QLatin1Char('&'));
}

QLabel* Writing(const ListLabel& entry, QWidget* parent) {
  auto* label = new QLabel(parent);
  label->setObjectName(Text(entry.name));
  label->setTextFormat(Qt::PlainText);
  label->setText(Text(entry.text));
  return label;
}

} // namespace

SingleItemWindowQt::SingleItemWindowQt(SingleItemWindow& window, QWidget* below)
    : ModalWindowQt(window.Elenco(), below), window_(window) {
  AddDescription();
  AddSelectAll();
  RenameParts();
  ConnectConfirm([this] { window_.PictureOk_Click(); });
  ConnectFields();
  ShowSingleItem(window_.Stato());
  Complete();
}

QString SingleItemWindowQt::RowCountText(int rows) const {
  return rows == 1 ? QStringLiteral("1 rata") : QString::number(rows) + QStringLiteral(" rate");
}

void SingleItemWindowQt::AddDescription() {
  FrameDesc_ = new QFrame(this);
  FrameDesc_->setObjectName(QStringLiteral("FrameDesc"));
  auto* grid = new QGridLayout(FrameDesc_);
  grid->setContentsMargins(0, 2, 0, 6);
  grid->setHorizontalSpacing(8);
  grid->setVerticalSpacing(4);
  grid->setColumnStretch(1, 1);
  int row = 0;
  for (const DescriptionLine& entry : window_.Description().description) {
    QLabel* value = Writing(entry.value, FrameDesc_);
    value->setFont(look::Bold(value->font()));
    value->setToolTip(QStringLiteral("<p>%1</p>").arg(value->text().toHtmlEscaped()));
    // A long name must not widen the window: what does not fit is in the tooltip.
    value->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    grid->addWidget(Writing(entry.caption, FrameDesc_), row, 0);
    grid->addWidget(value, row, 1);
    ++row;
  }
  if (auto* stack = qobject_cast<QVBoxLayout*>(layout())) {
    stack->insertWidget(0, FrameDesc_);
  }
  QLabel* farewell = Writing(window_.Description().farewell, this);
  farewell->setFont(look::Font(window_.Description().farewellFont));
  farewell->adjustSize();
  farewell->hide();
}

void SingleItemWindowQt::AddSelectAll() {
  QWidget* field = parts_.TextScadenza->parentWidget();
  QWidget* row = field->parentWidget();
  PicSelezionaTutto_ = new QPushButton(row);
  PicSelezionaTutto_->setObjectName(QStringLiteral("PicSelezionaTutto"));
  PicSelezionaTutto_->setAutoDefault(false);
  PicSelezionaTutto_->setToolTip(
      QStringLiteral("Mette o toglie il segno a tutte le rate (%1)").arg(KeyText(Gesture::SelectEverything)));
  if (auto* box = qobject_cast<QHBoxLayout*>(row->layout())) {
    box->insertWidget(box->indexOf(field) + 1, PicSelezionaTutto_);
    box->insertSpacing(box->indexOf(PicSelezionaTutto_), 8);
  }
  QWidget::setTabOrder(parts_.TextScadenza, PicSelezionaTutto_);
  QWidget::setTabOrder(PicSelezionaTutto_, parts_.table);
}

void SingleItemWindowQt::RenameParts() {
  parts_.picScadenzeBanche->setObjectName(QStringLiteral("FrameScadenzeBase"));
  parts_.table->Images().setObjectName({}); // its list has check boxes and no image list
  if (auto* caption = findChild<QLabel*>(QStringLiteral("lblScadenza"))) {
    caption->setObjectName(QStringLiteral("LabelNScad"));
  }
}

void SingleItemWindowQt::ConnectFields() {
  parts_.table->installEventFilter(this);
  parts_.table->setFocusPolicy(Qt::StrongFocus); // the wheel must not take the focus from an open editor
  ConnectButtons();
  ConnectSteps();
}

void SingleItemWindowQt::ConnectSteps() {
  if (ListReport* report = list_.Report()) {
    ActionFor(*this, Gesture::Copy, [this, report] { Gesture([report] { CopyRows(*report); }); });
  }
  for (const auto& [gesture, step] :
       {std::pair(Gesture::Undo, &ListGestures::Annulla), std::pair(Gesture::Redo, &ListGestures::Rifai)}) {
    Bind(*this, gesture, [this, step = step](std::size_t) { Gesture([this, step] { (list_.Gestures()->*step)(); }); });
  }
}

void SingleItemWindowQt::ConnectButtons() {
  connect(PicSelezionaTutto_, &QPushButton::clicked, this,
          [this] { Gesture([this] { window_.PicSelezionaTutto_Click(); }); });
  connect(PicSelezionaTutto_, &QPushButton::pressed, this, [this] {
    // Its key leaves the field that has the focus before it counts, as a click does.
    PicSelezionaTutto_->setFocus(Qt::ShortcutFocusReason);
    if (std::exchange(lostRelease_, false)) {
      PicSelezionaTutto_->click();
    }
  });
  for (QPushButton* button : {parts_.PictureOk, parts_.PictureAnnulla}) {
    // After a refused date the person presses once more: what was refused is not confirmed unseen.
    connect(button, &QPushButton::pressed, this, [this, button] {
      if (std::exchange(lostRelease_, false)) {
        button->setDown(false);
      }
    });
  }
}

void SingleItemWindowQt::Follow(const ListState& state) {
  parts_.foot.notice->SetWholeText(Text(state.notice));
  parts_.foot.notice->setVisible(!state.notice.empty());
  ShowSingleItem(window_.Stato());
}

void SingleItemWindowQt::ShowSingleItem(const SingleItemState& state) {
  const QString text = WithKey(Text(state.selectEverything));
  if (PicSelezionaTutto_->text() != text) {
    PicSelezionaTutto_->setText(text);
  }
  for (auto* label : FrameDesc_->findChildren<QLabel*>()) {
    label->setVisible(state.descriptionVisible);
  }
  FrameDesc_->setVisible(state.descriptionVisible);
  KeepOnTop(state.onTop);
}

void SingleItemWindowQt::KeepOnTop(bool above) {
  if (windowFlags().testFlag(Qt::WindowStaysOnTopHint) == above) {
    return;
  }
  // Setting the flags of a widget on the screen hides it, and a dialog that is hidden has ended.
  overrideWindowFlags(windowFlags().setFlag(Qt::WindowStaysOnTopHint, above));
  if (QWindow* window = windowHandle()) {
    window->setFlag(Qt::WindowStaysOnTopHint, above);
  }
}

void SingleItemWindowQt::MousePressed(int row, int x, int /*y*/, HeldKeys /*held*/) {
  pressedRow_ = row;
  pressedTick_ = x < list_.Description().columns.front().width;
  if (row >= 0) {
    Gesture([this, row] { list_.Seleziona(row); });
  }
  if (std::exchange(lostRelease_, false)) {
    MouseReleased();
  }
}

void SingleItemWindowQt::MouseReleased() {
  const int row = std::exchange(pressedRow_, -1);
  if (row < 0) {
    return;
  }
  if (pressedTick_) {
    Gesture([this, row] { list_.LVScadenze_ItemCheck(static_cast<std::size_t>(row)); });
  }
  Gesture([&] { list_.LVScadenze_Click(look::TwipsY(parts_.table->rowViewportPosition(row))); });
}

void SingleItemWindowQt::CellActivated(const QModelIndex& cell) {
  PressColumn(model_.Kind(cell.column()));
}

void SingleItemWindowQt::DigitTyped(const QModelIndex& /*cell*/, const QString& digit) {
  TypeDigit(digit);
}

void SingleItemWindowQt::KeyRefused() {
  parts_.TextScad->setFocus();
}

void SingleItemWindowQt::PressColumn(Kind kind) {
  const QModelIndex cell = parts_.table->currentIndex();
  if (cell.isValid()) {
    parts_.table->Press(model_.index(cell.row(), Column(kind)));
  }
}

void SingleItemWindowQt::TypeDigit(const QString& digit) {
  PressColumn(Kind::DateEditor);
  TypeIntoEditor(digit);
}

bool SingleItemWindowQt::KeyInList(const QKeyEvent& key) {
  if (list_.Stato().data.visible) {
    return false;
  }
  switch (PressedAt(GesturePlace::List, key).gesture) {
  case Gesture::Tick:
  case Gesture::TickUpTo: // there is no more than one row at a time
    PressColumn(Kind::Tick);
    return true;
  case Gesture::OpenCell:
    PressColumn(Kind::DateEditor);
    return true;
  default:
    if (key.text().size() == 1 && key.text().at(0).isDigit()) {
      TypeDigit(key.text());
      return true;
    }
    return false;
  }
}

bool SingleItemWindowQt::KeyInEditor(const QKeyEvent& key) {
  switch (PressedAt(GesturePlace::Editor, key).gesture) {
  case Gesture::NextCell:
    Gesture([this] { list_.TextScad_KeyPress(TabCode); });
    return true; // the focus stays: leaving the field would close it
  case Gesture::CloseCell:
    Gesture([this] { list_.TextScad_KeyPress(EnterCode); });
    if (!Closed() && parts_.FrameScad->isHidden()) {
      parts_.table->GoTo(EditorCell(Kind::DateEditor).row() + 1, parts_.table->currentIndex().column());
    }
    return true;
  case Gesture::AbandonCell:
    Gesture([this] { list_.AbbandonaEditor(); });
    return true;
  default:
    return false;
  }
}

void SingleItemWindowQt::LeaveField(const std::function<void()>& gesture, const QFocusEvent& event) {
  covered_ = false;
  Gesture(gesture);
  // The focus went with a press of the mouse, and a message came up before the press arrived: the button of the mouse
  // went up over the message, and this window never hears of it.
  if (covered_ && event.reason() == Qt::MouseFocusReason && !(QGuiApplication::mouseButtons() & Qt::LeftButton)) {
    lostRelease_ = true;
    QMetaObject::invokeMethod(
        this, [this] { lostRelease_ = false; }, Qt::QueuedConnection);
  }
}

bool SingleItemWindowQt::eventFilter(QObject* object, QEvent* event) {
  if (event->type() == QEvent::KeyPress) {
    const auto& key = static_cast<const QKeyEvent&>(*event);
    const bool only = !(key.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier));
    return only && ((object == parts_.table && KeyInList(key)) || (object == parts_.TextScad && KeyInEditor(key)));
  }
  if (event->type() == QEvent::FocusOut && LeftTheField(static_cast<const QFocusEvent&>(*event))) {
    const auto& lost = static_cast<const QFocusEvent&>(*event);
    if (object == parts_.TextScad) {
      LeaveField([this] { list_.TextScad_LostFocus(); }, lost);
    } else if (object == parts_.TextScadenza) {
      LeaveField([this] { list_.TextScadenza_LostFocus(); }, lost);
    }
  }
  return ModalWindowQt::eventFilter(object, event);
}

void SingleItemWindowQt::reject() {
  Abandon();
}

} // namespace lumoscad::qt
