#pragma once

#include "platform/Desktop.hpp"
#include "platform/qt/ColumnDrag.hpp"
#include "platform/qt/ListIcons.hpp"

#include <QAbstractButton>
#include <QWidget>

#include <functional>
#include <utility>
#include <vector>

namespace lumoscad::qt {

class ListView;

/// One drawn heading. It answers to the mouse only when it sorts; the keyboard reaches it by Ctrl and its index.
class HeadingQt final : public QAbstractButton {
 public:
  HeadingQt(const QString& name, const QString& caption, bool sorts, QWidget* parent);
  void SetRightAligned(bool right) { right_ = right; }
  [[nodiscard]] bool Sorts() const noexcept { return sorts_; }
  /// The keys that press it; none where it does not sort.
  void SetKeys(const QString& keys) { keys_ = keys; }
  [[nodiscard]] const QString& Keys() const noexcept { return keys_; }

 protected:
  void paintEvent(QPaintEvent* event) override;
  bool event(QEvent* event) override;

 private:
  bool sorts_;
  bool right_ = false;
  QString keys_;
};

/// A widget that shows one picture; its property "immagine" holds the picture's key.
class ImageQt final : public QWidget {
 public:
  ImageQt(const QString& name, ListIcon icon, QWidget* parent);
  void Display(ListIcon icon);

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  ListIcon icon_;
};

/// The strip of headings above the list, lined up with its columns also when they are scrolled or stretched.
class ListHeadings final : public QWidget {
 public:
  ListHeadings(const ListWindow& window, ListView& table, QWidget* parent);

  /// Told the index of the heading that was clicked.
  std::function<void(int index)> headingClicked;
  /// Told that the person gave a column another width.
  std::function<void()> widthChanged;

  /// Takes the size of the desktop's text.
  void Measure();
  /// Places every heading over its columns.
  void LayOut();
  /// Makes every column as wide as what is in it.
  void FitAll();
  /// Shows which heading sorts the list, and in which direction.
  void ShowOrder(int index, bool ascending);
  /// The order of the rows as a person says it; empty while they are as they came.
  [[nodiscard]] const QString& SpokenOrder() const noexcept { return order_; }
  /// The heading over a column; null for none.
  [[nodiscard]] HeadingQt* Over(int column) const;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  struct Entry {
    HeadingQt* heading = nullptr;
    ImageQt* indicator = nullptr; ///< null over a column that has only its own heading text
    int index = -1;
    int first = 0;
    int last = 0;
  };

  void AddHeadings();
  void AddUncoveredColumns();
  [[nodiscard]] bool Covered(int column) const;
  void AddBorders();
  [[nodiscard]] int BorderAt(int x) const;

  const ListWindow& window_;
  ListView& table_;
  ColumnDrag* drag_;
  std::vector<Entry> entries_;
  QString order_;
  std::vector<std::pair<int, ImageQt*>> squares_; ///< the tick columns and their squares
};

} // namespace lumoscad::qt
