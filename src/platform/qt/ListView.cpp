#include "platform/qt/ListView.hpp"

#include "platform/qt/GestureKeys.hpp"
#include "platform/qt/ListDelegate.hpp"
#include "platform/qt/Texts.hpp"

#include <QAccessible>
#include <QApplication>
#include <QContextMenuEvent>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QScrollBar>
#include <QWheelEvent>

#include <algorithm>

namespace lumoscad::qt {

namespace {

using Kind = ListColumn::Kind;

/// More stretches of selected rows than that are told to the table only as far as they can be seen: it compares each
/// with each.
constexpr std::size_t MostStretches = 1000;
/// Of the columns that tell whose row it is: at most two, those of plain text at the beginning.
constexpr int MostFrozen = 2;

int FrozenOf(const ListDescription& description) {
  int count = 0;
  for (const ListColumn& column : description.columns) {
    if (count == MostFrozen || column.kind != Kind::Text) {
      break;
    }
    ++count;
  }
  return count;
}

bool Editable(Kind kind) {
  return kind == Kind::DateEditor || kind == Kind::BankEditor;
}

HeldKeys Held(Qt::KeyboardModifiers keys) {
  return {keys.testFlag(Qt::ShiftModifier), keys.testFlag(Qt::ControlModifier)};
}

ListGestures* OfSeveralRows(ListGestures* gestures) {
  return gestures != nullptr && gestures->SelezioneMultipla() ? gestures : nullptr;
}

} // namespace

ListView::ListView(ListWindow& window, ListModel& model, QWidget* parent)
    : TableQt(parent), window_(window), gestures_(OfSeveralRows(window.Gestures())), model_(model),
      widths_(window.Description().columns), frozen_(*this, FrozenOf(window.Description())),
      images_(new ListImages(this)), painter_(model, *images_) {
  setObjectName(Text(window.Description().listName));
  setAccessibleName(Text(window.Description().title));
  setItemDelegate(new ListDelegate(this));
  connect(qGuiApp, &QGuiApplication::fontDatabaseChanged, this, [this] {
    painter_.FontsChanged();
    viewport()->update();
  });
  model_.SetGestures(gestures_);
  Prepare();
  Measure();
  setModel(&model);
  ShowColumns();
}

/// Before there is a model: a header that is not hidden yet would measure its texts, in a font that nothing is shown
/// in.
void ListView::Prepare() {
  setFrameShape(QFrame::NoFrame);
  setShowGrid(false);
  setWordWrap(false);
  setEditTriggers(NoEditTriggers);
  setSelectionBehavior(SelectRows);
  setSelectionMode(gestures_ == nullptr ? SingleSelection : ExtendedSelection);
  setTabKeyNavigation(false);
  setVerticalScrollMode(ScrollPerItem);
  setHorizontalScrollMode(ScrollPerPixel);
  setCornerButtonEnabled(false);
  viewport()->setAttribute(Qt::WA_OpaquePaintEvent); // all of it is painted here, so that nothing is painted twice
  horizontalHeader()->hide();
  horizontalHeader()->setMinimumSectionSize(1);
  horizontalHeader()->setSectionResizeMode(QHeaderView::Fixed);
  verticalHeader()->hide();
  verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
}

void ListView::Measure() {
  setFont(look::Font(window_.Description().fontName));
  verticalHeader()->setMinimumSectionSize(look::RowHeight());
  verticalHeader()->setDefaultSectionSize(look::RowHeight());
  const int pixels = look::FontPixels();
  const int before = std::exchange(measured_, pixels);
  for (auto& given : given_) {
    given.second = given.second * pixels / before;
  }
  widths_ = ColumnWidths(window_.Description().columns);
  LayOutColumns();
}

void ListView::ShowColumns() {
  for (int column = 0; column < model_.columnCount(); ++column) {
    setColumnHidden(column, window_.Description().columns[static_cast<std::size_t>(column)].width <= 0);
  }
  LayOutColumns();
}

QSize ListView::sizeHint() const {
  const ListState& state = window_.Stato();
  const int bar = style()->pixelMetric(QStyle::PM_ScrollBarExtent, nullptr, this);
  const bool scrolls = model_.rowCount() > window_.Description().rowsWithoutScrolling;
  const int width = std::max(widths_.Total() + (scrolls ? bar : 0), look::PixelsX(state.listWidth));
  const int height = std::max(look::PixelsY(state.listHeight), 6 * look::RowHeight());
  return {width, height};
}

void ListView::ShowSelected(int row) {
  const bool first = std::exchange(muteSelection_, true);
  const int column = std::max(currentIndex().column(), 0);
  if (row < 0 || row >= model_.rowCount()) {
    setCurrentIndex({});
    clearSelection();
  } else {
    setCurrentIndex(model_.index(row, column));
  }
  muteSelection_ = first;
}

void ListView::GoTo(int row, int column) {
  if (row >= 0 && row < model_.rowCount()) {
    setCurrentIndex(model_.index(row, std::clamp(column, 0, model_.columnCount() - 1)));
  }
}

QItemSelectionModel::SelectionFlags ListView::selectionCommand(const QModelIndex& cell, const QEvent* event) const {
  // Where the screen says which rows are selected, the table never does.
  return gestures_ == nullptr ? QTableView::selectionCommand(cell, event) : QItemSelectionModel::NoUpdate;
}

bool ListView::Selected(int row) const {
  return gestures_ == nullptr ? selectionModel()->isSelected(model_.index(row, 0))
                              : gestures_->Scelta(static_cast<std::size_t>(row));
}

void ListView::ShowSelection() {
  if (gestures_ == nullptr) {
    return;
  }
  const auto stretches = gestures_->Scelte();
  const auto [top, bottom] = RowsInView();
  clipped_ = stretches.size() > MostStretches;
  QItemSelection selection;
  const int lastColumn = model_.columnCount() - 1;
  for (const auto& [begin, end] : stretches) {
    const int first = static_cast<int>(begin);
    const int last = std::min(static_cast<int>(end), model_.rowCount() - 1);
    if (first <= last && (!clipped_ || (first <= bottom && last >= top))) {
      selection.append(QItemSelectionRange(model_.index(first, 0), model_.index(last, lastColumn)));
    }
  }
  selectionModel()->select(QItemSelection(), QItemSelectionModel::Clear);
  selectionModel()->select(selection, QItemSelectionModel::Select);
  viewport()->update();
}

void ListView::MoveTo(int row, int column, HeldKeys held) {
  if (row < 0 || row >= model_.rowCount()) {
    return;
  }
  const bool first = std::exchange(muteSelection_, true);
  setCurrentIndex(model_.index(row, std::clamp(column, 0, model_.columnCount() - 1)));
  muteSelection_ = first;
  listener_->RowMoved(row, held);
}

void ListView::Press(const QModelIndex& cell) {
  scrollTo(cell);
  const int y = look::TwipsY(rowViewportPosition(cell.row()) + rowHeight(cell.row()) / 2);
  listener_->MousePressed(cell.row(), widths_.Middle(cell.column()), y, {});
  listener_->MouseReleased();
}

int ListView::ActiveColumn(int column, bool forward, bool editorsOnly) const {
  const int step = forward ? 1 : -1;
  for (int c = column + step; c >= 0 && c < model_.columnCount(); c += step) {
    const Kind kind = model_.Kind(c);
    if (!isColumnHidden(c) && (Editable(kind) || (!editorsOnly && kind == Kind::Tick))) {
      return c;
    }
  }
  return -1;
}

std::vector<std::pair<int, int>> ListView::SelectedRows() const {
  std::vector<std::pair<int, int>> rows;
  if (gestures_ != nullptr) {
    for (const auto& [first, last] : gestures_->Scelte()) {
      rows.emplace_back(static_cast<int>(first), static_cast<int>(last));
    }
  } else if (const int row = currentIndex().row(); row >= 0 && Selected(row)) {
    rows.emplace_back(row, row);
  }
  return rows;
}

void ListView::ChooseRow(int row, bool chosen) {
  if (gestures_ != nullptr && Selected(row) != chosen) {
    const HeldKeys control{false, true};
    MoveTo(row, currentIndex().column(), control);
    listener_->MousePressed(row, widths_.Middle(std::max(currentIndex().column(), 0)), 0, control);
  }
}

QWidget* ListView::EditorOn(const QModelIndex& cell) const {
  return listener_ == nullptr ? nullptr : listener_->EditorOver(cell);
}

void ListView::TellContent() {
  if (!QAccessible::isActive()) {
    return;
  }
  const QModelIndex cell = currentIndex();
  const QString now = cell.data(Qt::AccessibleTextRole).toString();
  if (std::exchange(said_, now) != now) {
    TellOfCurrent(QAccessible::NameChanged);
    if (model_.Kind(cell.column()) == Kind::Tick) {
      TellOfCurrent(QAccessible::StateChanged);
    }
  }
}

std::pair<int, int> ListView::RowsInView() const {
  const int last = rowAt(viewport()->height() - 1);
  return {rowAt(0), last < 0 ? model_.rowCount() - 1 : last};
}

void ListView::currentChanged(const QModelIndex& newOne, const QModelIndex& oldOne) {
  said_ = QAccessible::isActive() ? newOne.data(Qt::AccessibleTextRole).toString() : QString();
  TableQt::currentChanged(newOne, oldOne);
  viewport()->update(visualRect(oldOne));
  viewport()->update(visualRect(newOne));
  if (!muteSelection_ && newOne.isValid() && newOne.row() != oldOne.row() && listener_ != nullptr) {
    listener_->RowSelected(newOne.row());
  }
}

int ListView::NominalX(int x, bool onRow) const {
  const int column = onRow ? frozen_.ColumnAt(x) : columnAt(x);
  if (column >= 0) {
    const int left = onRow ? frozen_.Left(column) : columnViewportPosition(column);
    return widths_.Twips(column, x - left, columnWidth(column));
  }
  return widths_.Beyond(x - (horizontalHeader()->length() - horizontalHeader()->offset()));
}

void ListView::mousePressEvent(QMouseEvent* event) {
  event->accept();
  if (event->button() != Qt::LeftButton) {
    return;
  }
  const QPoint point = event->position().toPoint();
  const int row = rowAt(point.y());
  const int column = frozen_.ColumnAt(point.x());
  // Taken before the selection moves: making a half-hidden cell current scrolls the list.
  const int x = NominalX(point.x(), row >= 0);
  const int y = look::TwipsY(point.y());
  if (row >= 0 && column >= 0) {
    const bool first = std::exchange(muteSelection_, true);
    setCurrentIndex(model_.index(row, column));
    muteSelection_ = first;
  }
  pressed_ = true;
  listener_->MousePressed(row, x, y, Held(event->modifiers()));
}

void ListView::mouseMoveEvent(QMouseEvent* event) {
  event->accept();
  if (!pressed_ || gestures_ == nullptr) {
    return;
  }
  const int y = event->position().toPoint().y();
  const auto [top, bottom] = RowsInView();
  // Beyond an end the list goes on, a row a movement.
  const int beyond = y < 0 ? top - 1 : y >= viewport()->height() ? bottom + 1 : rowAt(y);
  const int row = beyond < 0 && y >= 0 ? model_.rowCount() - 1 : std::clamp(beyond, 0, model_.rowCount() - 1);
  if (row >= 0 && row != currentIndex().row()) {
    const bool first = std::exchange(muteSelection_, true);
    setCurrentIndex(model_.index(row, std::max(currentIndex().column(), 0)));
    muteSelection_ = first;
    listener_->MouseDragged(row);
  }
}

void ListView::mouseReleaseEvent(QMouseEvent* event) {
  event->accept();
  if (event->button() == Qt::LeftButton && std::exchange(pressed_, false)) {
    listener_->MouseReleased();
  }
}

void ListView::keyPressEvent(QKeyEvent* event) {
  if (PressedAt(GesturePlace::Window, *event, HeldWith::Nothing) == Gesture::Leave) {
    event->ignore();
    return;
  }
  if (blocked_) {
    listener_->KeyRefused();
    event->accept();
    return;
  }
  if (SelectionKey(*event) || KeyOnCell(*event) || MovementKey(*event)) {
    event->accept();
    return;
  }
  QTableView::keyPressEvent(event);
}

void ListView::keyboardSearch(const QString& letters) {
  if (gestures_ == nullptr || letters.isEmpty() || !letters.at(0).isPrint() || letters.at(0).isSpace()) {
    return;
  }
  const bool anew = !sinceLast_.isValid() || sinceLast_.elapsed() > QApplication::keyboardInputInterval();
  sinceLast_.start();
  letters_ = anew ? letters : letters_ + letters;
  listener_->LettersTyped(letters_, anew);
}

void ListView::contextMenuEvent(QContextMenuEvent* event) {
  event->accept();
  if (gestures_ == nullptr) {
    return;
  }
  const bool mouse = event->reason() == QContextMenuEvent::Mouse;
  const QRect cell = visualRect(currentIndex());
  listener_->MenuAsked(mouse ? rowAt(event->pos().y()) : currentIndex().row(),
                       mouse ? event->globalPos() : viewport()->mapToGlobal(cell.center()));
}

/// The keys of several rows: Shift and Ctrl with a movement or the space bar, the menu, and all rows at once.
bool ListView::SelectionKey(const QKeyEvent& event) {
  if (gestures_ == nullptr || (event.modifiers() & (Qt::AltModifier | Qt::MetaModifier))) {
    return false;
  }
  const PressedGesture pressed = PressedAt(GesturePlace::List, event);
  const QModelIndex cell = currentIndex();
  switch (pressed.gesture) {
  case Gesture::SelectAll:
    listener_->AllSelected();
    return true;
  case Gesture::Menu:
    listener_->MenuAsked(cell.row(), viewport()->mapToGlobal(visualRect(cell).center()));
    return true;
  case Gesture::ToggleRow:
    if (cell.isValid()) {
      listener_->MousePressed(cell.row(), widths_.Middle(cell.column()), 0, {false, true});
    }
    return cell.isValid();
  case Gesture::TickUpTo:
    if (cell.isValid() && model_.Kind(cell.column()) == Kind::Tick) {
      listener_->TickedUpTo(cell);
    }
    return cell.isValid();
  case Gesture::Extend:
  case Gesture::MoveAlone:
  case Gesture::AddRange:
    MoveTo(RowTowards(static_cast<Movement>(pressed.which)), cell.column(), Held(event.modifiers()));
    return true;
  default:
    return false;
  }
}

/// The row to which a movement leads from the current one; no row where there is none beyond it.
int ListView::RowTowards(Movement movement) const {
  const int row = currentIndex().row();
  const int last = model_.rowCount() - 1;
  const int page = std::max(viewport()->height() / look::RowHeight() - 1, 1);
  switch (movement) {
  case Movement::Up:
    return row - 1;
  case Movement::Down:
    return row + 1;
  case Movement::PageUp:
    return std::max(row - page, 0);
  case Movement::PageDown:
    return std::min(row + page, last);
  case Movement::First:
    return 0;
  case Movement::Last:
    return last;
  }
  return row;
}

bool ListView::KeyOnCell(const QKeyEvent& event) {
  if (event.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)) {
    return false;
  }
  const QModelIndex cell = currentIndex();
  const Kind kind = model_.Kind(cell.column());
  const Gesture pressed = PressedAt(GesturePlace::List, event).gesture;
  // Shift with the space bar means more than one row; where there is no more than one it means that one.
  const bool ticks = pressed == Gesture::Tick || pressed == Gesture::TickUpTo;
  if (ticks || pressed == Gesture::OpenCell) {
    if (cell.isValid() && (ticks ? kind == Kind::Tick : Editable(kind))) {
      listener_->CellActivated(cell);
    }
    return true;
  }
  if (kind == Kind::DateEditor && event.text().size() == 1 && event.text().at(0).isDigit()) {
    listener_->DigitTyped(cell, event.text());
    return true;
  }
  return false;
}

/// The first and the last row, whatever is held; what else moves the table knows itself.
bool ListView::MovementKey(const QKeyEvent& event) {
  const PressedGesture pressed = PressedAt(GesturePlace::List, event, HeldWith::Nothing);
  const auto movement = static_cast<Movement>(pressed.which);
  if (pressed == Gesture::Move && (movement == Movement::First || movement == Movement::Last)) {
    GoTo(RowTowards(movement), currentIndex().column());
    return true;
  }
  return false;
}

void ListView::wheelEvent(QWheelEvent* event) {
  if (blocked_) {
    event->accept();
    return;
  }
  QTableView::wheelEvent(event);
}

void ListView::resizeEvent(QResizeEvent* event) {
  QTableView::resizeEvent(event);
  LayOutColumns();
}

ListPainter::Row ListView::RowInView(int row) const {
  const QModelIndex current = currentIndex();
  return {row, rowViewportPosition(row), rowHeight(row), Selected(row), current.row() == row ? current.column() : -1};
}

void ListView::scrollContentsBy(int dx, int dy) {
  QTableView::scrollContentsBy(dx, dy);
  if (dx != 0) {
    viewport()->update(); // what marks the selected rows does not move sideways with them
  }
  if (clipped_) {
    ShowSelection();
  }
  if (listener_ != nullptr) {
    listener_->LaidOut();
  }
}

void ListView::LayOutColumns() {
  if (model() == nullptr) {
    return;
  }
  const std::vector<int> pixel = widths_.Pixel(viewport()->width(), given_);
  for (int column = 0; column < model_.columnCount(); ++column) {
    if (!isColumnHidden(column)) {
      setColumnWidth(column, pixel[static_cast<std::size_t>(column)]);
    }
  }
  if (listener_ != nullptr) {
    listener_->LaidOut();
  }
}

} // namespace lumoscad::qt
