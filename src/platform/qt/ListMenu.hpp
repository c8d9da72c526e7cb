#pragma once

#include "platform/GestureTable.hpp"
#include "platform/ListGestures.hpp"

#include <QObject>

#include <functional>
#include <initializer_list>
#include <vector>

class QAction;
class QMenu;
class QPoint;
class QWidget;

namespace lumoscad::qt {

/// The context menu of a list, and the keys of its entries, which work without it too.
class ListMenu final : public QObject {
 public:
  /// Runs a gesture and follows it.
  using Run = std::function<void(const std::function<void()>&)>;

  /// `window` hears the keys.
  ListMenu(ListGestures& gestures, Run run, QWidget* window);

  /// Adds an entry at the end, under its name and with its keys. `action` is run as it is.
  QAction* Add(Gesture gesture, const std::function<void()>& action);
  /// Adds actions of the window at the end, behind a line; null ones are left out.
  void Add(std::initializer_list<QAction*> actions);
  void Open(const QPoint& where);

 private:
  QAction* AddGesture(Gesture gesture, std::function<void()> action);
  void AddSelections();
  void AddSteps();
  void AddSeparator();
  void Name();

  ListGestures& gestures_;
  Run run_;
  QWidget* window_;
  QMenu* menu_ = nullptr; ///< there from its first opening on
  std::vector<QAction*> entries_;
  QAction* visible_ = nullptr;
  QAction* undo_ = nullptr;
  QAction* redo_ = nullptr;
};

} // namespace lumoscad::qt
