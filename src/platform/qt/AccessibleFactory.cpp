#include "platform/qt/AccessibleFactory.hpp"

#include "platform/qt/AccessibleList.hpp"
#include "platform/qt/AccessibleWidgets.hpp"
#include "platform/qt/BankBox.hpp"
#include "platform/qt/ListChanges.hpp"
#include "platform/qt/ListEffects.hpp"
#include "platform/qt/ListFoot.hpp"
#include "platform/qt/ListHeadings.hpp"
#include "platform/qt/ListView.hpp"
#include "platform/qt/MonthView.hpp"

#include <QAccessible>

namespace lumoscad::qt {

namespace {

int facesWanted = 0;

/// Whether this is the list that drops down from one of our bank boxes.
bool DropsFromABankBox(const QAbstractItemView& view) {
  const QWidget* const frame = view.parentWidget();
  return frame != nullptr && dynamic_cast<const BankBox*>(frame->parentWidget()) != nullptr;
}

QAccessibleInterface* FaceOfView(QAbstractItemView& view) {
  if (auto* list = dynamic_cast<ListView*>(&view)) {
    return new AccessibleList(*list);
  }
  if (auto* month = dynamic_cast<MonthView*>(&view)) {
    return new AccessibleMonth(*month);
  }
  if (dynamic_cast<ListEffects*>(&view) != nullptr) {
    return new AccessibleEntries(view, Gesture::FilterBehind);
  }
  if (dynamic_cast<ListChanges*>(&view) != nullptr) {
    return new AccessibleEntries(view, Gesture::TakeBack);
  }
  if (DropsFromABankBox(view)) {
    return new AccessibleEntries(view, Gesture::ChooseBank);
  }
  return nullptr;
}

/// Asked for every object of the process whose face is wanted, with the name of each of its classes in turn.
QAccessibleInterface* FaceOf(const QString& /*className*/, QObject* object) {
  if (object == nullptr || !object->isWidgetType()) {
    return nullptr;
  }
  auto* widget = static_cast<QWidget*>(object);
  if (auto* view = qobject_cast<QAbstractItemView*>(widget)) {
    return FaceOfView(*view);
  }
  if (auto* heading = dynamic_cast<HeadingQt*>(widget)) {
    return new AccessibleHeading(*heading);
  }
  if (dynamic_cast<ShortenedLabel*>(widget) != nullptr) {
    return new QAccessibleWidget(widget, QAccessible::Notification);
  }
  return dynamic_cast<ImageQt*>(widget) != nullptr ? new AccessibleOrnament(*widget) : nullptr;
}

} // namespace

AccessibleFactory::AccessibleFactory() {
  if (facesWanted++ == 0) {
    QAccessible::installFactory(FaceOf);
  }
}

AccessibleFactory::~AccessibleFactory() {
  if (--facesWanted == 0) {
    QAccessible::removeFactory(FaceOf);
  }
}

void Announce(QWidget& widget) {
  if (QAccessible::isActive() && widget.isVisible()) {
    QAccessibleEvent event(&widget, QAccessible::ObjectShow);
    QAccessible::updateAccessibility(&event);
  }
}

} // namespace lumoscad::qt
