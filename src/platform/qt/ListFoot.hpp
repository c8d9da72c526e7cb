#pragma once

#include <QLabel>
#include <QString>

class QToolButton;
class QVBoxLayout;

namespace lumoscad::qt {

/// A label that shows as much of its text as it has room for; the whole text is its tool tip.
class ShortenedLabel final : public QLabel {
 public:
  ShortenedLabel(const QString& name, QWidget* parent);

  void SetWholeText(const QString& text);
  [[nodiscard]] QSize sizeHint() const override;
  [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

 protected:
  void paintEvent(QPaintEvent* event) override;
};

/// The foot of a list window, beside the number of rows: what is selected, ticked and changed, and what the last
/// gesture did.
struct ListFoot {
  ShortenedLabel* effect = nullptr; ///< "FootEffect"
  ShortenedLabel* notice = nullptr; ///< "FootNotice"; hidden while there is nothing to say
  QToolButton* changes = nullptr;   ///< "FootChanges"; opens the list of changes, hidden while there are none

  /// Makes them children of `parent`, `rows` in front.
  void Build(QLabel* rows, QWidget* parent, QVBoxLayout& column);
};

} // namespace lumoscad::qt
