#pragma once

#include "platform/ListGestures.hpp"

#include <QFrame>

#include <functional>
#include <string>

class QCheckBox;
class QLabel;
class QLineEdit;
class QPushButton;

namespace lumoscad::qt {

/// The bar above a list in which a person says which rows are to be in sight. It is hidden until it is asked for; Esc
/// in it empties and hides it.
class FilterBar final : public QFrame {
 public:
  /// `margin` is what stays free at its right end, in pixels.
  FilterBar(QWidget* parent, int margin);

  /// Told of what was typed or ticked.
  std::function<void(const ListFilter&)> changed;
  /// Told when the person goes on to the list.
  std::function<void()> left;

  /// Shows the bar and gives its field the keyboard.
  void Ask();
  /// Follows the screen: what it filters by, and how many rows of all of them are in sight.
  void Follow(const ListFilter& filter, std::size_t inSight, std::size_t all);
  /// Places the bar's controls behind `before` in the order of Tab.
  void TabBehind(QWidget* before);

 protected:
  bool eventFilter(QObject* object, QEvent* event) override;

 private:
  void Tell();
  void Leave();

  QLineEdit* text_;
  QCheckBox* changedOnly_;
  QCheckBox* tickedOnly_;
  QPushButton* behind_; ///< names the bar that the filter is about, and takes it out; hidden without one
  QLabel* count_;
  std::string behindName_;
  bool following_ = false;
  bool asked_ = false; ///< by the person, and not for what the filter is about alone
};

} // namespace lumoscad::qt
