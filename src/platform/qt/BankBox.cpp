#include "platform/qt/BankBox.hpp"

#include "platform/qt/GestureKeys.hpp"

#include <QAbstractItemView>
#include <QCoreApplication>
#include <QKeyEvent>
#include <QListView>
#include <QScreen>
#include <QStyleOptionComboBox>
#include <QStylePainter>

#include <algorithm>
#include <set>

namespace lumoscad::qt {

BankBox::BankBox(QWidget* parent) : QComboBox(parent) {}

bool BankBox::TakeKey(const QKeyEvent& key) {
  if (!matches || (key.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier))) {
    return false;
  }
  if (PressedAt(GesturePlace::BankBox, key) == Gesture::WidenBanks && !typed_.isEmpty()) {
    Narrow(typed_.chopped(1));
    return true;
  }
  const QString text = key.text();
  // A blank opens the list, as ever, unless it stands behind something.
  if (text.isEmpty() || !text.at(0).isPrint() || (typed_.isEmpty() && text.at(0).isSpace())) {
    return false;
  }
  Narrow(typed_ + text);
  return true;
}

void BankBox::keyPressEvent(QKeyEvent* event) {
  if (TakeKey(*event)) {
    event->accept();
  } else if (view()->isVisible()) {
    QCoreApplication::sendEvent(view(), event); // the keys belong to the list while it is open
  } else {
    QComboBox::keyPressEvent(event);
  }
}

bool BankBox::eventFilter(QObject* object, QEvent* event) {
  if (object == view() && event->type() == QEvent::KeyPress) {
    const auto& key = static_cast<const QKeyEvent&>(*event);
    const bool enter = PressedAt(GesturePlace::BankBox, key, HeldWith::Nothing) == Gesture::ChooseBank;
    // Where nothing is left to choose, Enter must not choose what is out of sight.
    if (TakeKey(key) || (enter && !typed_.isEmpty() && !view()->currentIndex().isValid())) {
      event->accept();
      return true;
    }
  }
  if (object == view() && event->type() == QEvent::Hide) {
    ShowAll();
  }
  return QComboBox::eventFilter(object, event);
}

void BankBox::showPopup() {
  if (!ready_) {
    view()->installEventFilter(this); // whoever opens the list first types in the list
    ready_ = true;
  }
  QComboBox::showPopup();
}

void BankBox::Narrow(const QString& typed) {
  auto* list = qobject_cast<QListView*>(view());
  if (list == nullptr) {
    return;
  }
  const BankMatches found = matches(typed);
  if (!isVisible()) {
    return; // what went wrong has closed the window
  }
  if (!list->isVisible()) {
    showPopup();
  }
  typed_ = typed;
  const std::set<int> shown(found.entries.begin(), found.entries.end());
  for (int entry = 0; entry < count(); ++entry) {
    list->setRowHidden(entry, shown.count(entry) == 0);
  }
  list->setCurrentIndex(model()->index(typed.isEmpty() ? currentIndex() : found.best, modelColumn(), rootModelIndex()));
  list->setAccessibleDescription(typed.isEmpty() ? QString()
                                                 : QStringLiteral("%1 banche con «%2»").arg(shown.size()).arg(typed));
  FitList(static_cast<int>(shown.size()));
  list->scrollTo(list->currentIndex());
  update();
}

void BankBox::ShowAll() {
  auto* list = qobject_cast<QListView*>(view());
  if (typed_.isEmpty() || list == nullptr) {
    return;
  }
  typed_.clear();
  for (int entry = 0; entry < count(); ++entry) {
    list->setRowHidden(entry, false);
  }
  list->setAccessibleDescription({});
  update();
}

/// The list stands below the box, or above it where there is no room, as high as what is left in it and as wide as its
/// names want.
void BankBox::FitList(int entries) {
  QWidget& frame = *view()->window();
  const int row = std::max(1, view()->sizeHintForRow(0));
  const int around = frame.height() - view()->viewport()->height();
  const int height = std::clamp(entries, 1, maxVisibleItems()) * row + around;
  const QRect box(mapToGlobal(QPoint(0, 0)), size());
  int top = box.bottom() + 1;
  if (const QScreen* display = screen();
      display != nullptr && top + height > display->availableGeometry().bottom() + 1) {
    top = std::max(display->availableGeometry().top(), box.top() - height);
  }
  int left = frame.x();
  int width = std::max(frame.width(), view()->sizeHintForColumn(0) + frame.width() - view()->viewport()->width());
  if (const QScreen* display = screen()) {
    const QRect free = display->availableGeometry();
    width = std::min(width, free.width());
    left = std::max(free.left(), std::min(left, free.right() + 1 - width));
  }
  frame.setGeometry(left, top, width, height);
}

void BankBox::paintEvent(QPaintEvent* event) {
  if (typed_.isEmpty()) {
    QComboBox::paintEvent(event);
    return;
  }
  QStylePainter painter(this);
  painter.setPen(palette().color(QPalette::Text));
  QStyleOptionComboBox option;
  initStyleOption(&option);
  option.currentText = typed_ + QStringLiteral("▏");
  if (!view()->currentIndex().isValid()) {
    option.currentText += QStringLiteral(" nessuna banca");
  }
  painter.drawComplexControl(QStyle::CC_ComboBox, option);
  painter.drawControl(QStyle::CE_ComboBoxLabel, option);
}

} // namespace lumoscad::qt
