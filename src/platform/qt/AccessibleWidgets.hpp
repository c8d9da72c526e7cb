#pragma once

#include "platform/qt/AccessibleItems.hpp"

#include <QAccessibleWidget>

namespace lumoscad::qt {

class HeadingQt;
class MonthView;

/// A heading of the list. What it sorts by it says in its name; where it sorts, it can be pressed.
class AccessibleHeading final : public QAccessibleWidget {
 public:
  explicit AccessibleHeading(HeadingQt& heading);

  [[nodiscard]] QStringList actionNames() const override;
  void doAction(const QString& name) override;
  [[nodiscard]] QString localizedActionName(const QString& name) const override;
  [[nodiscard]] QStringList keyBindingsForAction(const QString& name) const override;

 private:
  [[nodiscard]] HeadingQt* Heading() const;
};

/// A picture beside something that says the same in words.
class AccessibleOrnament final : public QAccessibleWidget {
 public:
  explicit AccessibleOrnament(QWidget& widget) : QAccessibleWidget(&widget, QAccessible::Graphic) {}

  [[nodiscard]] QAccessible::State state() const override;
};

/// The days of a month: each can be chosen.
class AccessibleMonth final : public AccessibleItems {
 public:
  explicit AccessibleMonth(MonthView& month);

  [[nodiscard]] std::vector<CellAction> Actions(const QModelIndex& cell) const override;
  [[nodiscard]] QString columnDescription(int column) const override;

 protected:
  [[nodiscard]] std::vector<int> ShownColumns() const override;
};

/// Entries below each other, those alone that are shown. With each a gesture can be made.
class AccessibleEntries final : public AccessibleItems {
 public:
  AccessibleEntries(QAbstractItemView& view, Gesture gesture);

  [[nodiscard]] std::vector<CellAction> Actions(const QModelIndex& cell) const override;
  void Perform(const QModelIndex& cell, Gesture gesture) const override;
  [[nodiscard]] int rowCount() const override;
  [[nodiscard]] int RowShown(int row) const override;

 protected:
  [[nodiscard]] int ModelRow(int place) const override;

 private:
  [[nodiscard]] bool Hidden(int row) const;

  Gesture gesture_;
};

} // namespace lumoscad::qt
