#include "platform/qt/ModalWindowQt.hpp"

#include "platform/qt/AccessibleList.hpp"
#include "platform/qt/GestureKeys.hpp"
#include "platform/qt/HelpQt.hpp"
#include "platform/qt/Look.hpp"
#include "platform/qt/RowDetailsQt.hpp"
#include "platform/qt/Texts.hpp"

#include <QAbstractItemView>
#include <QAction>
#include <QCloseEvent>
#include <QComboBox>
#include <QFocusEvent>
#include <QFrame>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScopedValueRollback>

#include <algorithm>
#include <utility>

namespace lumoscad::qt {

ModalWindowQt::ModalWindowQt(ListWindow& list, QWidget* below)
    : DialogQt(below, Qt::Dialog | Qt::WindowTitleHint | Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint |
                          Qt::WindowMaximizeButtonHint),
      list_(list), model_(list), parts_(*this, list, model_), layout_(*this, parts_, list), order_(list.Stato().order),
      content_(list.Stato().content) {
  setObjectName(Text(list.Description().name));
  setWindowTitle(Text(list.Description().title));
  model_.fault = [this](std::exception_ptr error) {
    error_ = std::move(error);
    QMetaObject::invokeMethod(
        this, [this] { Close(); }, Qt::QueuedConnection);
  };
  details_ = ActionFor(*this, Gesture::Details, [this] { ShowDetails(); });
  details_->setObjectName(QStringLiteral("azioneDettagli"));
  help_ = ActionFor(*this, Gesture::Help, [this] { ShowHelp(); });
  ConnectList();
  ConnectFields();
  connect(parts_.PictureAnnulla, &QPushButton::clicked, this,
          [this] { Gesture([this] { list_.PictureAnnulla_Click(); }); });
}

void ModalWindowQt::Complete() {
  TakeLook();
  ShowRowCount();
  AddLayoutActions();
  layout_.TakeOwnSize();
  layout_.Apply();
}

std::exception_ptr ModalWindowQt::Display() {
  const auto activate = std::max(parts_.table->ActiveColumn(-1, true, false), 0);
  const std::ptrdiff_t choice = list_.Stato().selected;
  {
    const QScopedValueRollback<bool> mute(synchronising_, true);
    parts_.table->GoTo(static_cast<int>(std::max<std::ptrdiff_t>(choice, 0)), activate);
  }
  if (choice < 0 && model_.rowCount() > 0) {
    Gesture([this] { list_.Seleziona(0); });
  } else {
    Gesture([] {});
  }
  if (!closed_) {
    exec();
  }
  if (!closed_) {
    Gesture([this] {
      list_.Form_QueryUnload();
    }); // the calling program has ended the event loop: nobody can close the window any more
  }
  layout_.Keep();
  return std::exchange(error_, nullptr);
}

void ModalWindowQt::AddLayoutActions() {
  parts_.headings->widthChanged = [this] { layout_.ColumnsChanged(); };
  auto* reset = new QAction(NameOf(Gesture::ResetLayout), this);
  reset->setObjectName(QStringLiteral("azioneRipristina"));
  reset->setShortcuts(Keys(Gesture::ResetLayout));
  connect(reset, &QAction::triggered, this, [this] {
    ClosePanels();
    layout_.Reset();
  });
  auto* fit = new QAction(QStringLiteral("Larghezze secondo il contenuto"), this);
  fit->setObjectName(QStringLiteral("azioneLarghezze"));
  connect(fit, &QAction::triggered, parts_.headings, &ListHeadings::FitAll);
  addAction(reset);
  parts_.headings->addActions({fit, reset});
  parts_.headings->setContextMenuPolicy(Qt::ActionsContextMenu);
}

void ModalWindowQt::ShowDetails() {
  const std::ptrdiff_t place = list_.Stato().selected;
  if (place < 0 || inGesture_ || closed_) {
    return;
  }
  try {
    RowDetailsQt(list_.Dettagli(static_cast<std::size_t>(place)), this).exec();
  } catch (...) {
    error_ = std::current_exception();
    Close();
  }
}

void ModalWindowQt::ShowHelp() {
  if (inGesture_ || closed_) {
    return;
  }
  std::vector<GestureEntry> entries;
  for (const GestureEntry& entry : GestureTable()) {
    if (Offers(entry)) {
      entries.push_back(entry);
    }
  }
  HelpQt(entries, this).exec();
}

void ModalWindowQt::Gesture(const std::function<void()>& action) {
  if (inGesture_ || synchronising_ || closed_) {
    return;
  }
  inGesture_ = true;
  try {
    action();
    Synchronise();
  } catch (...) {
    error_ = std::current_exception();
  }
  inGesture_ = false;
  if (error_) {
    Close();
  }
}

void ModalWindowQt::Close() {
  if (!std::exchange(closed_, true)) {
    done(Accepted);
  }
}

void ModalWindowQt::ConnectList() {
  parts_.table->SetListener(this);
}

void ModalWindowQt::RowSelected(int row) {
  Gesture([this, row] { list_.Seleziona(row); });
}

void ModalWindowQt::RowMoved(int row, HeldKeys held) {
  Gesture([this, row, held] { list_.Gestures()->Vai(static_cast<std::size_t>(row), held); });
}

void ModalWindowQt::TickedUpTo(const QModelIndex& cell) {
  Gesture([&] { list_.Gestures()->SpuntaFinoA(static_cast<std::size_t>(cell.row()), cell.column()); });
}

void ModalWindowQt::AllSelected() {
  Gesture([this] { list_.Gestures()->ScegliVisibili(); });
}

void ModalWindowQt::LettersTyped(const QString& letters, bool anew) {
  Gesture([this, utf8 = Utf8(letters), anew] { list_.Gestures()->Salta(utf8, anew); });
}

void ModalWindowQt::LaidOut() {
  parts_.headings->LayOut();
  PlaceEditor();
}

void ModalWindowQt::ConnectFields() {
  parts_.TextScad->installEventFilter(this);
  ConnectText(*parts_.TextScad, list_.Stato().data.text, [this](const std::string& text) { WriteIntoEditor(text); });
  ConnectDateKeys(*parts_.TextScad, DateField::Cell);
  if (parts_.TextScadenza != nullptr) {
    parts_.TextScadenza->installEventFilter(this);
    ConnectDateKeys(*parts_.TextScadenza, DateField::Top);
    ConnectText(*parts_.TextScadenza, list_.Stato().dueDateText,
                [this](const std::string& text) { Gesture([&] { list_.TextScadenza_Change(text); }); });
  }
}

/// What an assistive tool writes counts as typed, though Qt does not call it edited; the keyboard goes to the field
/// with it, so that the field is left as any other.
void ModalWindowQt::ConnectText(QLineEdit& field, const std::string& known,
                                const std::function<void(const std::string&)>& write) {
  connect(&field, &QLineEdit::textEdited, this, [write](const QString& text) { write(Utf8(text)); });
  connect(&field, &QLineEdit::textChanged, this, [this, &field, &known, write] {
    if (inGesture_ || synchronising_ || closed_ || Utf8(field.text()) == known) {
      return;
    }
    const std::string text = Utf8(field.text()); // leaving another field may put back what is known of this one
    if (field.isVisible()) {
      field.setFocus(Qt::OtherFocusReason);
    }
    write(text);
  });
}

void ModalWindowQt::ConnectDateKeys(QLineEdit& field, DateField which) {
  if (FieldGestures* fields = list_.Fields()) {
    dateKeys_.push_back(std::make_unique<DateKeys>(field, which, *fields,
                                                   [this](const std::function<void()>& action) { Gesture(action); }));
  }
}

void ModalWindowQt::ConnectConfirm(const std::function<void()>& gesture) {
  const auto confirm = [this, gesture] { Gesture(gesture); };
  connect(parts_.PictureOk, &QPushButton::clicked, this, confirm);
  Bind(*this, Gesture::Confirm, [confirm](std::size_t) { confirm(); });
}

void ModalWindowQt::Abandon() {
  Gesture([&] {
    const ListGestures* const gestures = list_.Gestures();
    const bool hidden = gestures != nullptr && gestures->VariateNonInVista() > 0;
    if (parts_.PictureAnnulla->hasFocus() || (!hidden && !model_.ContainsChanges())) {
      list_.PictureAnnulla_Click();
    } else {
      parts_.PictureAnnulla->setFocus();
    }
  });
}

void ModalWindowQt::ShowRowCount() {
  const ListGestures* const gestures = list_.Gestures();
  const bool narrowed = gestures != nullptr && !gestures->Filtro().Empty();
  parts_.lblRighe->setText(RowCountText(narrowed ? static_cast<int>(gestures->RigheTotali()) : model_.rowCount()));
}

void ModalWindowQt::Synchronise() {
  const ListState& state = list_.Stato();
  if (state.unloaded) {
    Close();
    return;
  }
  const QScopedValueRollback<bool> mute(synchronising_, true);
  SynchroniseRows(state);
  if (parts_.TextScadenza != nullptr && Utf8(parts_.TextScadenza->text()) != state.dueDateText) {
    parts_.TextScadenza->setText(Text(state.dueDateText));
  }
  Follow(state);
  SynchroniseEditor(state);
}

void ModalWindowQt::SynchroniseEditor(const ListState& state) {
  SynchroniseEditor(state.data, *parts_.FrameScad, *parts_.TextScad, Kind::DateEditor);
  if (parts_.FrameBanca != nullptr) {
    SynchroniseEditor(state.bank, *parts_.FrameBanca, *parts_.cmbBanche2, Kind::BankEditor);
  }
  parts_.table->Block(state.scrollBarsHidden || state.data.visible || state.bank.visible);
  parts_.CoverScrollBars(state.scrollBarsHidden);
}

void ModalWindowQt::SynchroniseRows(const ListState& state) {
  ListView& table = *parts_.table;
  const int column = std::max(table.currentIndex().column(), 0);
  const bool reordered = std::exchange(order_, state.order) != state.order;
  if (reordered) {
    model_.Reload();
    table.GoTo(static_cast<int>(state.selected), column);
    content_ = state.content;
    ShowRowCount();
  } else if (std::exchange(content_, state.content) != state.content) {
    const auto [first, last] = table.RowsInView();
    model_.Refresh(first, last);
    table.TellContent();
  }
  if (table.currentIndex().row() != state.selected) {
    table.ShowSelected(static_cast<int>(state.selected));
  }
  if (std::exchange(selection_, state.selection) != state.selection || reordered) {
    table.ShowSelection();
  }
  if (reordered) {
    // What is being typed stays in sight, wherever the selection went.
    for (const Kind kind : {Kind::DateEditor, Kind::BankEditor}) {
      if (EditorState(kind).visible) {
        table.scrollTo(EditorCell(kind));
      }
    }
  }
}

void ModalWindowQt::SynchroniseEditor(const CellEditor& editor, QFrame& frame, QWidget& field, Kind kind) {
  if (!editor.visible) {
    // The list takes the focus first: a field hidden while it has it would pass it on along the tab order.
    if (!frame.isHidden() && focusWidget() == &field) {
      parts_.table->setFocus();
    }
    frame.hide();
    return;
  }
  if (kind == Kind::DateEditor && Utf8(parts_.TextScad->text()) != editor.text) {
    parts_.TextScad->setText(Text(editor.text));
  }
  if (kind == Kind::BankEditor && parts_.cmbBanche2->currentIndex() != editor.index) {
    parts_.cmbBanche2->setCurrentIndex(editor.index);
  }
  parts_.PlaceOverCell(frame, EditorArea(kind));
  if (frame.isHidden()) {
    NameEditor(kind);
    frame.show();
    field.setFocus();
    parts_.TextScad->selectAll();
  }
}

int ModalWindowQt::Column(Kind kind) const {
  int column = 0;
  while (column < model_.columnCount() && model_.Kind(column) != kind) {
    ++column;
  }
  return column;
}

const CellEditor& ModalWindowQt::EditorState(Kind kind) const {
  const ListState& state = list_.Stato();
  return kind == Kind::DateEditor ? state.data : state.bank;
}

QModelIndex ModalWindowQt::EditorCell(Kind kind) const {
  return model_.index(static_cast<int>(EditorState(kind).place), Column(kind));
}

QRect ModalWindowQt::EditorArea(Kind kind) const {
  const QModelIndex cell = EditorCell(kind);
  QRect area = parts_.table->visualRect(cell);
  if (area.isEmpty()) {
    return area;
  }
  // The screen knows the columns at their nominal widths: what it leaves free at the cell's ends stays free.
  int left = list_.Stato().listLeft;
  for (int column = 0; column < cell.column(); ++column) {
    left += list_.Description().columns[static_cast<std::size_t>(column)].width;
  }
  const CellEditor& editor = EditorState(kind);
  const int freeWidth = list_.Description().columns[static_cast<std::size_t>(cell.column())].width - editor.width;
  const int width = area.width() - look::PixelsX(freeWidth);
  area.translate(look::PixelsX(editor.left - left), 0);
  area.setWidth(width);
  return area;
}

void ModalWindowQt::PlaceEditor() {
  if (!parts_.FrameScad->isHidden()) {
    parts_.PlaceOverCell(*parts_.FrameScad, EditorArea(Kind::DateEditor));
  }
  if (parts_.FrameBanca != nullptr && !parts_.FrameBanca->isHidden()) {
    parts_.PlaceOverCell(*parts_.FrameBanca, EditorArea(Kind::BankEditor));
  }
}

/// Says whose value is being written.
void ModalWindowQt::NameEditor(Kind kind) {
  const QModelIndex cell = EditorCell(kind);
  const ListGestures* const gestures = list_.Gestures();
  QString name = SpokenPlace(*parts_.table, cell);
  if (gestures != nullptr && gestures->EditorDiMolte()) {
    name = model_.Caption(cell.column()) + QStringLiteral(" di ") + QString::number(gestures->QuanteScelte()) +
           QStringLiteral(" righe");
  }
  if (kind == Kind::DateEditor) {
    parts_.TextScad->setAccessibleName(name);
  } else {
    parts_.cmbBanche2->setAccessibleName(name);
    parts_.cmbBanche2->view()->setAccessibleName(name);
    parts_.cellBankLabel->setText(name);
    parts_.cellBankLabel->adjustSize();
  }
}

QWidget* ModalWindowQt::EditorOver(const QModelIndex& cell) {
  if (EditorState(Kind::DateEditor).visible && EditorCell(Kind::DateEditor) == cell) {
    return parts_.TextScad;
  }
  return EditorState(Kind::BankEditor).visible && EditorCell(Kind::BankEditor) == cell ? parts_.cmbBanche2 : nullptr;
}

void ModalWindowQt::WriteIntoEditor(const std::string& text) {
  Gesture([&] { list_.TextScad_Change(text); });
}

void ModalWindowQt::TypeIntoEditor(const QString& digit) {
  if (!closed_ && list_.Stato().data.visible) {
    const QScopedValueRollback<bool> mute(synchronising_, true);
    parts_.TextScad->setText(digit);
  }
  if (!closed_ && list_.Stato().data.visible) {
    WriteIntoEditor(Utf8(digit));
  }
}

bool ModalWindowQt::LeftTheField(const QFocusEvent& event) {
  return event.reason() != Qt::ActiveWindowFocusReason && event.reason() != Qt::PopupFocusReason &&
         event.reason() != Qt::MenuBarFocusReason;
}

void ModalWindowQt::TakeLook() {
  parts_.Measure(*this, list_);
  LaidOut();
  parts_.CoverScrollBars(list_.Stato().scrollBarsHidden);
}

bool ModalWindowQt::event(QEvent* event) {
  if (event->type() == QEvent::WindowBlocked) {
    covered_ = true;
    if (inGesture_ && !closed_) {
      // A message of the gesture that is running: an editor that the screen has closed is gone before it shows.
      const QScopedValueRollback<bool> mute(synchronising_, true);
      SynchroniseEditor(list_.Stato());
    }
  }
  return DialogQt::event(event);
}

bool ModalWindowQt::eventFilter(QObject* object, QEvent* event) {
  if (object == parts_.TextScadenza && event->type() == QEvent::FocusIn) {
    enteredByClick_ = static_cast<const QFocusEvent&>(*event).reason() == Qt::MouseFocusReason;
  }
  if (object == parts_.TextScadenza && event->type() == QEvent::KeyPress &&
      PressedAt(GesturePlace::Window, static_cast<const QKeyEvent&>(*event)) == Gesture::Undo &&
      !parts_.TextScadenza->isUndoAvailable() && list_.Gestures() != nullptr) {
    Gesture([this] { list_.Gestures()->Annulla(); }); // nothing of the field's own is left to take back
    return true;
  }
  // A click into the field selects the date as Tab does, so that the next one replaces it.
  if (object == parts_.TextScadenza && event->type() == QEvent::MouseButtonRelease &&
      std::exchange(enteredByClick_, false) && !parts_.TextScadenza->hasSelectedText()) {
    parts_.TextScadenza->selectAll();
  }
  return DialogQt::eventFilter(object, event);
}

void ModalWindowQt::closeEvent(QCloseEvent* event) {
  if (closed_) {
    event->accept();
    return;
  }
  event->ignore();
  Gesture([this] { list_.Form_QueryUnload(); });
}

void ModalWindowQt::showEvent(QShowEvent* event) {
  DialogQt::showEvent(event);
  parts_.table->setFocus();
  parts_.table->ShowTicks();
  layout_.Shown();
  parts_.headings->LayOut();
}

void ModalWindowQt::resizeEvent(QResizeEvent* event) {
  DialogQt::resizeEvent(event);
  layout_.Resized(*event);
  parts_.headings->LayOut();
  parts_.CoverScrollBars(list_.Stato().scrollBarsHidden);
  PlaceEditor();
}

} // namespace lumoscad::qt
