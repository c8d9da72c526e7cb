#pragma once

#include "platform/qt/CellTexts.hpp"
#include "platform/qt/ListIcons.hpp"
#include "platform/qt/ListModel.hpp"
#include "platform/qt/Look.hpp"

#include <QColor>
#include <QFont>
#include <QPixmap>
#include <QRect>

#include <vector>

class QPainter;

namespace lumoscad::qt {

/// Paints the rows of the list: alternating backgrounds, lines, texts, ticks, changed values, the current cell.
class ListPainter {
 public:
  ListPainter(const ListModel& model, const ListImages& images) : model_(model), images_(images) {}

  /// A column that is in sight, in pixels.
  struct Column {
    int index = 0;
    int left = 0;
    int width = 0;
  };

  /// A row that is in sight, in pixels.
  struct Row {
    int index = 0;
    int top = 0;
    int height = 0;
    bool selected = false;
    int current = -1; ///< the column of the current cell; -1 for none in this row
  };

  /// Begins a painting of a list with this font, which has the keyboard or has not.
  void Begin(QPainter& painter, const QFont& font, bool focus);
  void Paint(QPainter& painter, const Row& row, const std::vector<Column>& columns);
  /// Marks a selected row at its left end: a ground alone would be told by its colour only.
  void Mark(QPainter& painter, int left, const Row& row) const;
  /// Drops what was prepared with the fonts that the process had.
  void FontsChanged() { texts_.Forget(); }

  /// The part of a cell that its text may take.
  [[nodiscard]] static QRect TextArea(const QRect& cell);

 private:
  void PaintInPieces(QPainter& painter, const Row& row, const std::vector<Column>& columns);
  void PaintCellByCell(QPainter& painter, const Row& row, const std::vector<Column>& columns);
  [[nodiscard]] bool Changed(const Row& row, int column) const;
  [[nodiscard]] const QColor& RowBackground(const Row& row) const;
  void Content(QPainter& painter, const Row& row, const Column& column, const QRect& covered);
  /// Marks what the list's filter looks for in a cell's text, below the text: by a ground and a line.
  void MarkHits(QPainter& painter, const Row& row, int column, const QRect& area, CellTexts::Style style);
  /// Writes what tells the row from others at the right end of a cell; gives back what is left for its text.
  [[nodiscard]] QRect Distinguish(QPainter& painter, const Row& row, int column, const QRect& area,
                                  const QRect& covered);
  void Tick(QPainter& painter, const QRect& cell, bool ticked, const QColor& background);
  [[nodiscard]] const QPixmap& TickOn(const QColor& background, bool ticked);
  void Frame(QPainter& painter, const QRect& cell) const;

  /// A tick as it looks on a background.
  struct PaintedTick {
    QRgb background = 0;
    bool ticked = false;
    QPixmap picture;
  };

  const ListModel& model_;
  const ListImages& images_;
  CellTexts texts_;
  std::vector<PaintedTick> ticks_; ///< at most two for each of the four backgrounds
  int scale_ = 0;                  ///< of the device that `ticks_` were painted for; 0 for none that they fit
  int tickSide_ = 0;
  int paintedSide_ = 0; ///< of `ticks_`
  look::Colours colours_ = look::Now();
  QFont font_;
  bool focus_ = false;
  bool searched_ = false; ///< something is looked for
};

} // namespace lumoscad::qt
