#include "platform/qt/ListPdf.hpp"

#include "platform/qt/Look.hpp"
#include "platform/qt/Texts.hpp"

#include <QBuffer>
#include <QPageLayout>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>

#include <numeric>

namespace lumoscad::qt {
namespace {

constexpr int DotsPerInch = 300;
constexpr qreal PageMargin = 12; ///< millimetres
constexpr qreal TextSize = 8;
constexpr int LineGap = 8;  ///< dots between lines
constexpr int CellGap = 12; ///< dots between columns

/// Draws a table page by page.
class Printer {
 public:
  Printer(QPdfWriter& writer, const PrintedTable& table) : writer_(writer), table_(table), painter_(&writer) {
    QFont font = look::Font({});
    font.setPointSizeF(TextSize);
    painter_.setFont(font);
    line_ = painter_.fontMetrics().lineSpacing() + LineGap;
    const int sum =
        std::accumulate(table.columns.begin(), table.columns.end(), 0,
                        [](int before, const PrintedTable::Column& column) { return before + column.width; });
    for (const PrintedTable::Column& column : table.columns) {
      widths_.push_back(painter_.viewport().width() * column.width / std::max(sum, 1));
    }
  }

  void Run() {
    BeginPage();
    for (const auto& row : table_.rows) {
      const auto textOf = [&row](std::size_t column) { return Text(row[column]); };
      const int height = HeightOf(textOf);
      MakeRoom(height);
      Cells(textOf, height);
    }
    MakeRoom(line_);
    painter_.drawLine(0, y_ + 2, painter_.viewport().width(), y_ + 2);
    y_ += 8;
    Embolden(true);
    for (const std::string& total : table_.totals) {
      MakeRoom(line_);
      painter_.drawText(0, y_, painter_.viewport().width(), line_, Qt::AlignLeft | Qt::AlignVCenter, Text(total));
      y_ += line_;
    }
  }

 private:
  void Embolden(bool bold) {
    QFont font = painter_.font();
    font.setBold(bold);
    painter_.setFont(font);
  }

  void BeginPage() {
    const bool bold = painter_.font().bold();
    y_ = 0;
    ++page_;
    Embolden(false);
    painter_.drawText(0, 0, painter_.viewport().width(), line_, Qt::AlignLeft | Qt::AlignVCenter, Text(table_.title));
    painter_.drawText(0, 0, painter_.viewport().width(), line_, Qt::AlignRight | Qt::AlignVCenter,
                      QStringLiteral("pagina %1").arg(page_));
    y_ = line_ + line_ / 2;
    Embolden(true);
    Cells([this](std::size_t column) { return Text(table_.columns[column].heading); }, line_);
    painter_.drawLine(0, y_, painter_.viewport().width(), y_);
    y_ += 4;
    Embolden(bold);
  }

  void MakeRoom(int height) {
    if (y_ + height > painter_.viewport().height()) {
      writer_.newPage();
      BeginPage();
    }
  }

  [[nodiscard]] int WidthOf(std::size_t column) const { return widths_[column] - CellGap; }

  /// A line, or in a table of whole texts as many as its longest text takes.
  template <typename TextOf> [[nodiscard]] int HeightOf(const TextOf& textOf) const {
    int height = line_;
    for (std::size_t column = 0; table_.wholeTexts && column < widths_.size(); ++column) {
      const QRect area(0, 0, WidthOf(column), painter_.viewport().height());
      height = std::max(height,
                        painter_.fontMetrics().boundingRect(area, Qt::TextWordWrap, textOf(column)).height() + LineGap);
    }
    return height;
  }

  template <typename TextOf> void Cells(const TextOf& textOf, int height) {
    int x = 0;
    for (std::size_t column = 0; column < widths_.size(); ++column) {
      const int width = WidthOf(column);
      const int side = table_.columns[column].amount ? Qt::AlignRight : Qt::AlignLeft;
      const QString text = textOf(column);
      if (table_.wholeTexts) {
        painter_.drawText(x, y_, width, height, side | Qt::AlignVCenter | Qt::TextWordWrap, text);
      } else {
        painter_.drawText(x, y_, width, height, side | Qt::AlignVCenter,
                          painter_.fontMetrics().elidedText(text, Qt::ElideRight, width));
      }
      x += widths_[column];
    }
    y_ += height;
  }

  QPdfWriter& writer_;
  const PrintedTable& table_;
  QPainter painter_;
  std::vector<int> widths_;
  int line_ = 0;
  int y_ = 0;
  int page_ = 0;
};

} // namespace

QByteArray PdfOf(const PrintedTable& table) {
  QByteArray bytes;
  QBuffer buffer(&bytes);
  buffer.open(QIODevice::WriteOnly);
  QPdfWriter writer(&buffer);
  writer.setResolution(DotsPerInch);
  writer.setTitle(Text(table.title));
  writer.setPageLayout(QPageLayout(QPageSize(QPageSize::A4), QPageLayout::Landscape,
                                   QMarginsF(PageMargin, PageMargin, PageMargin, PageMargin), QPageLayout::Millimeter));
  Printer(writer, table).Run();
  return bytes;
}

} // namespace lumoscad::qt
