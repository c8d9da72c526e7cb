#pragma once

#include "platform/FieldGestures.hpp"

#include <QComboBox>
#include <QString>

#include <functional>

namespace lumoscad::qt {

/// A bank box in which one can type: its list drops down and holds what was typed against. Typing chooses nothing;
/// Enter or a click in the list does, once, and Esc leaves everything as it was. The entries that are out of sight keep
/// their places, so that a choice is told by its place in the whole list.
class BankBox final : public QComboBox {
 public:
  explicit BankBox(QWidget* parent);

  std::function<BankMatches(const QString&)> matches; ///< which entries a text means; where empty, keys are as ever

  void showPopup() override;
  [[nodiscard]] const QString& Typed() const noexcept { return typed_; }

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  bool eventFilter(QObject* object, QEvent* event) override;

 private:
  /// Takes a key that writes, or takes back, a character of the text; false for any other.
  [[nodiscard]] bool TakeKey(const QKeyEvent& key);
  void Narrow(const QString& typed);
  void ShowAll();
  void FitList(int entries);

  QString typed_;
  bool ready_ = false; ///< the list that drops down is watched
};

} // namespace lumoscad::qt
