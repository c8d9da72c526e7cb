#include "platform/qt/ListWindowQt.hpp"

#include "platform/qt/GestureKeys.hpp"
#include "platform/qt/Look.hpp"
#include "platform/qt/Texts.hpp"

#include <QAbstractItemView>
#include <QComboBox>
#include <QFrame>
#include <QKeyEvent>
#include <QLineEdit>
#include <QLocale>
#include <QMouseEvent>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace lumoscad::qt {

ListWindowQt::ListWindowQt(ListWindow& window, QWidget* below) : ModalWindowQt(window, below) {
  ConnectConfirm([this] { list_.PictureOk_Click(); });
  ConnectBanks();
  ConnectHeadings();
  if (list_.Report() != nullptr) {
    reporter_ =
        new ListReporter(*this, list_, parts_, [this](const std::function<void()>& action) { Gesture(action); });
  }
  AddMenu();
  Complete();
  if (reporter_ != nullptr) {
    reporter_->effectsToggled = [this](bool open) { layout_.PanelChanged(open); };
    if (layout_.PanelOpen()) {
      reporter_->OpenEffects(!layout_.OwnSize());
    }
  }
}

void ListWindowQt::ClosePanels() {
  if (reporter_ != nullptr) {
    reporter_->CloseEffects();
  }
}

QString ListWindowQt::RowCountText(int rows) const {
  return rows == 1 ? QStringLiteral("1 riga")
                   : QLocale(QLocale::Italian, QLocale::Italy).toString(rows) + QStringLiteral(" righe");
}

bool ListWindowQt::Offers(const GestureEntry& entry) const {
  const ListGestures* const gestures = list_.Gestures();
  const auto alike = [gestures](Likeness likeness) { return gestures != nullptr && gestures->Confrontabile(likeness); };
  switch (entry.gesture) {
  case Gesture::SecondField:
    return parts_.TextScadenza != nullptr && parts_.cmbBanche != nullptr;
  case Gesture::SelectAccount:
    return alike(Likeness::Account);
  case Gesture::SelectItem:
    return alike(Likeness::Item);
  case Gesture::SelectBank:
    return alike(Likeness::Bank);
  case Gesture::SelectMonth:
  case Gesture::SelectOverdue:
    return alike(Likeness::Month);
  case Gesture::TypeDigit:
    return Column(Kind::DateEditor) < model_.columnCount();
  default:
    break;
  }
  const bool dates = parts_.TextScadenza != nullptr || Column(Kind::DateEditor) < model_.columnCount();
  const bool banks = parts_.cmbBanche != nullptr || parts_.cmbBanche2 != nullptr;
  const bool dated = entry.place == GesturePlace::DateField || entry.place == GesturePlace::Calendar;
  return entry.screens != GestureScreens::Item && (dates || !dated) && (banks || entry.place != GesturePlace::BankBox);
}

void ListWindowQt::ConnectBanks() {
  list_.SetDropDown([this](std::string_view name, bool opened) { ShowDropDown(name, opened); });
  if (parts_.cmbBanche2 != nullptr) {
    parts_.cmbBanche2->installEventFilter(this);
    connect(parts_.cmbBanche2, &QComboBox::activated, this,
            [this](int index) { Gesture([this, index] { list_.cmbBanche2_Click(index); }); });
  }
  if (parts_.cmbBanche != nullptr) {
    parts_.cmbBanche->installEventFilter(this);
    connect(parts_.cmbBanche, &QComboBox::activated, this,
            [this](int index) { Gesture([this, index] { list_.cmbBanche_Click(index); }); });
  }
  ConnectTyping(parts_.cmbBanche2, BankField::Cell);
  ConnectTyping(parts_.cmbBanche, BankField::Top);
}

void ListWindowQt::ConnectTyping(BankBox* box, BankField field) {
  FieldGestures* const fields = list_.Fields();
  if (box == nullptr || fields == nullptr) {
    return;
  }
  box->matches = [this, fields, field](const QString& typed) {
    BankMatches found;
    Gesture([&] { found = fields->BancheCon(field, Utf8(typed)); });
    return found;
  };
}

void ListWindowQt::ShowDropDown(std::string_view name, bool opened) {
  QComboBox* const combo = name == "cmbBanche" ? parts_.cmbBanche : name == "cmbBanche2" ? parts_.cmbBanche2 : nullptr;
  if (combo == nullptr || !combo->isVisible()) {
    return;
  }
  if (opened) {
    combo->showPopup();
  } else {
    combo->hidePopup();
  }
}

void ListWindowQt::ConnectHeadings() {
  const auto clickRow = [this](int index) { Gesture([this, index] { list_.TLwTestata_Click(index); }); };
  parts_.headings->headingClicked = clickRow;
  Bind(*this, Gesture::Sort, [this, clickRow](std::size_t which) {
    const auto& headings = list_.Description().headings;
    const int index = static_cast<int>(which) + 1;
    if (std::any_of(headings.begin(), headings.end(), [index](const auto& h) { return h.index == index; })) {
      clickRow(index);
    }
  });
}

void ListWindowQt::AddMenu() {
  ListGestures* const gestures = list_.Gestures();
  if (gestures == nullptr) {
    return;
  }
  menu_ = new ListMenu(
      *gestures, [this](const std::function<void()>& gesture) { Gesture(gesture); }, this);
  menu_->Add(Gesture::Find, [this] {
    Gesture([this] { list_.Form_Click(); });
    if (!Closed()) {
      Filter().Ask();
    }
  });
  if (reporter_ != nullptr) {
    menu_->Add({reporter_->copy, reporter_->paste, reporter_->save});
  }
  menu_->Add({details_, help_});
}

/// The list stands in the window's stack, or in a row of it beside a panel.
int ListWindowQt::PlaceOfTheList(const QBoxLayout& stack) const {
  int place = 0;
  while (place < stack.count()) {
    QLayoutItem& item = *stack.itemAt(place);
    const bool beside = item.layout() != nullptr && item.layout()->indexOf(parts_.picScadenzeBanche) >= 0;
    if (beside || item.widget() == parts_.picScadenzeBanche) {
      break;
    }
    ++place;
  }
  return place;
}

/// The bar is there from the first time on that it is asked for.
FilterBar& ListWindowQt::Filter() {
  if (filter_ == nullptr) {
    filter_ = new FilterBar(this, parts_.picScadenzeBanche->layout()->contentsMargins().right());
    if (auto* stack = qobject_cast<QVBoxLayout*>(layout())) {
      stack->insertWidget(PlaceOfTheList(*stack), filter_);
    }
    filter_->TabBehind(parts_.cmbBanche != nullptr ? static_cast<QWidget*>(parts_.cmbBanche) : parts_.TextScadenza);
    filter_->changed = [this](const ListFilter& filter) { Gesture([&] { list_.Gestures()->Filtra(filter); }); };
    filter_->left = [this] { parts_.table->setFocus(); };
  }
  return *filter_;
}

void ListWindowQt::MenuAsked(int row, const QPoint& where) {
  if (menu_ == nullptr) {
    return;
  }
  const ListGestures& gestures = *list_.Gestures();
  Gesture([&] {
    list_.Form_Click();
    if (row >= 0 && !gestures.Scelta(static_cast<std::size_t>(row))) {
      list_.Seleziona(row);
    }
  });
  if (!Closed()) {
    menu_->Open(where);
  }
}

void ListWindowQt::Follow(const ListState& state) {
  const ListGestures* const gestures = list_.Gestures();
  if (gestures != nullptr && (filter_ != nullptr || !gestures->Filtro().Empty())) {
    Filter().Follow(gestures->Filtro(), gestures->RigheInVista(), gestures->RigheTotali());
  }
  parts_.headings->ShowOrder(state.sortedHeading, state.ascending);
  if (parts_.cmbBanche != nullptr && parts_.cmbBanche->currentIndex() != state.bankIndex) {
    parts_.cmbBanche->setCurrentIndex(state.bankIndex);
  }
  if (reporter_ != nullptr) {
    reporter_->Follow(state);
  }
}

void ListWindowQt::MousePressed(int row, int x, int y, HeldKeys held) {
  pressedBelowRows_ = row < 0;
  dragged_ = false;
  press_ = RowPress::Plain;
  Gesture([this, row, x, y, held] {
    ListGestures* const gestures = list_.Gestures();
    if (row >= 0 && gestures != nullptr) {
      press_ = gestures->Premi(static_cast<std::size_t>(row), x, held);
    }
    if (row >= 0 && press_ == RowPress::Plain) {
      list_.Seleziona(row);
    }
    list_.LVScadenze_MouseDown(x, y);
  });
}

void ListWindowQt::MouseDragged(int row) {
  if (pressedBelowRows_ || press_ == RowPress::Done) {
    return;
  }
  dragged_ = true;
  Gesture([this, row] { list_.Gestures()->Trascina(static_cast<std::size_t>(row)); });
}

void ListWindowQt::MouseReleased() {
  if (pressedBelowRows_) {
    Gesture([this] { list_.Form_Click(); });
    return;
  }
  if (press_ == RowPress::Done) {
    return;
  }
  if (std::exchange(dragged_, false)) {
    Gesture([this] { list_.Gestures()->Rilascia(); });
    return;
  }
  Gesture([this] {
    const auto row = static_cast<int>(list_.Stato().selected);
    const int top = row < 0 ? 0 : parts_.table->rowViewportPosition(row);
    list_.LVScadenze_Click(look::TwipsY(top));
  });
}

void ListWindowQt::CellActivated(const QModelIndex& cell) {
  parts_.table->Press(cell);
}

void ListWindowQt::DigitTyped(const QModelIndex& cell, const QString& digit) {
  parts_.table->Press(cell);
  TypeIntoEditor(digit);
}

void ListWindowQt::KeyRefused() {
  const bool bank = parts_.FrameBanca != nullptr && !parts_.FrameBanca->isHidden();
  (bank ? static_cast<QWidget*>(parts_.cmbBanche2) : parts_.TextScad)->setFocus();
}

bool ListWindowQt::KeyInEditor(QObject* field, const QKeyEvent& key) {
  const ListGestures* const gestures = list_.Gestures();
  const bool stays = gestures != nullptr && gestures->EditorDiMolte();
  const PressedGesture pressed = PressedAt(GesturePlace::Editor, key);
  switch (pressed.gesture) {
  case Gesture::NextCell:
    CloseEditorWith(field, TabCode);
    if (!stays) {
      GoToNext(field, pressed.which == 0 ? Way::NextCell : Way::CellBefore);
    }
    return true;
  case Gesture::CloseCell:
    CloseEditorWith(field, EnterCode);
    if (!stays) {
      GoToNext(field, Way::NextRow);
    }
    return true;
  case Gesture::AbandonCell:
    Gesture([this] { list_.AbbandonaEditor(); });
    return true;
  default:
    return false;
  }
}

void ListWindowQt::CloseEditorWith(QObject* field, int code) {
  if (field == parts_.TextScad) {
    Gesture([this, code] { list_.TextScad_KeyPress(code); });
  } else {
    parts_.table->setFocus(); // the bank editor closes because it loses the focus
  }
}

void ListWindowQt::GoToNext(const QObject* field, Way way) {
  const ListState& state = list_.Stato();
  if (Closed() || state.data.visible || state.bank.visible) {
    return;
  }
  ListView& table = *parts_.table;
  // From the cell that was edited: the selection may have gone elsewhere meanwhile.
  const QModelIndex cell = EditorCell(field == parts_.TextScad ? Kind::DateEditor : Kind::BankEditor);
  const int last = model_.columnCount();
  if (way == Way::NextRow) {
    table.GoTo(cell.row() + 1, cell.column());
    return;
  }
  const bool forward = way == Way::NextCell;
  const int column = table.ActiveColumn(cell.column(), forward, true);
  if (column >= 0) {
    table.GoTo(cell.row(), column);
  } else {
    table.GoTo(cell.row() + (forward ? 1 : -1), table.ActiveColumn(forward ? -1 : last, forward, true));
  }
}

bool ListWindowQt::eventFilter(QObject* object, QEvent* event) {
  const bool onBank = object == parts_.cmbBanche2;
  // While its list is open, the keys of the bank editor belong to that.
  const bool inEditor = object == parts_.TextScad || (onBank && !parts_.cmbBanche2->view()->isVisible());
  const auto type = event->type();
  if (inEditor && type == QEvent::KeyPress) {
    const auto& key = static_cast<const QKeyEvent&>(*event);
    return !(key.modifiers() & (Qt::ControlModifier | Qt::AltModifier)) && KeyInEditor(object, key);
  }
  if (onBank && type == QEvent::FocusOut && !parts_.cmbBanche2->view()->isVisible() &&
      LeftTheField(static_cast<const QFocusEvent&>(*event))) {
    Gesture([this] { list_.cmbBanche2_LostFocus(); });
  }
  if (object == parts_.TextScadenza && type == QEvent::FocusOut && list_.Fields() != nullptr &&
      LeftTheField(static_cast<const QFocusEvent&>(*event))) {
    Gesture([this] { list_.Fields()->EspandiTextScadenza(); });
  }
  if (object == parts_.TextScadenza && type == QEvent::MouseButtonPress) {
    Gesture([this] { list_.TextScadenza_Click(); });
  }
  if (object == parts_.cmbBanche && type == QEvent::Wheel && !parts_.cmbBanche->hasFocus()) {
    event->ignore(); // scrolling past the field must not choose a bank
    return true;
  }
  return ModalWindowQt::eventFilter(object, event);
}

void ListWindowQt::reject() {
  const ListState& state = list_.Stato();
  if (state.data.visible || state.bank.visible) {
    Gesture([this] { list_.AbbandonaEditor(); });
  } else {
    Abandon();
  }
}

void ListWindowQt::mousePressEvent(QMouseEvent* event) {
  pressedOutside_ = event->button() == Qt::LeftButton;
  event->accept();
}

void ListWindowQt::mouseReleaseEvent(QMouseEvent* event) {
  event->accept();
  if (event->button() == Qt::LeftButton && std::exchange(pressedOutside_, false)) {
    Gesture([this] { list_.Form_Click(); });
  }
}

} // namespace lumoscad::qt
