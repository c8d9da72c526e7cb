#include "FinestraFinta.hpp"

#include "platform/qt/ListIcons.hpp"
#include "platform/qt/ListModel.hpp"
#include "platform/qt/ListWindowQt.hpp"
#include "platform/qt/Look.hpp"

#include <QAccessible>
#include <QApplication>
#include <QHeaderView>
#include <QHelpEvent>
#include <QImage>
#include <QPainter>
#include <QScrollBar>
#include <QStyledItemDelegate>
#include <QTableView>
#include <QTest>
#include <QToolTip>

#include <gtest/gtest.h>

namespace lumoscad::test {
namespace {

using qt::ListModel;

/// Paints every cell by itself with what Qt has for it: the text is measured and elided each time, and drawn by the
/// painter, and the tick is drawn where it stands.
class CellByCell final : public QStyledItemDelegate {
 public:
  CellByCell(const QTableView& list, QObject* parent) : QStyledItemDelegate(parent), list_(list), images_(nullptr) {}

  void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& cell) const override {
    painter->save();
    painter->fillRect(option.rect, Background(cell));
    painter->setPen(qt::look::Now().faintLine);
    painter->drawLine(option.rect.topRight(), option.rect.bottomRight());
    painter->drawLine(option.rect.bottomLeft(), option.rect.bottomRight());
    const QVariant picture = cell.data(ListModel::ReportIconRole);
    if (picture.isValid()) {
      QRect square(0, 0, 16, 16);
      square.moveCenter(option.rect.center());
      images_.Draw(*painter, square, picture.toString().toStdString());
    } else {
      Content(*painter, option.rect.adjusted(6, 0, -6, 0), cell);
    }
    if (list_.currentIndex() == cell) {
      const int border = list_.hasFocus() ? 1 : 0;
      painter->setBrush(Qt::NoBrush);
      painter->setPen(list_.hasFocus() ? QPen(qt::look::Now().accent, 2) : QPen(qt::look::Now().border, 1));
      painter->drawRect(option.rect.adjusted(border, border, -1 - border / 2, -1 - border / 2));
    }
    painter->restore();
  }

 private:
  [[nodiscard]] QColor Background(const QModelIndex& cell) const {
    if (list_.selectionModel()->isSelected(cell)) {
      return list_.hasFocus() ? qt::look::Now().selection : qt::look::Now().selectionWithoutFocus;
    }
    if (cell.data(ListModel::ChangedRole).toBool()) {
      return qt::look::Now().changedBackground;
    }
    return cell.row() % 2 == 0 ? qt::look::Now().paper : qt::look::Now().alternateRow;
  }

  void Content(QPainter& painter, const QRect& area, const QModelIndex& cell) const {
    QFont font = list_.font();
    font.setBold(cell.data(ListModel::ChangedRole).toBool());
    painter.setFont(font);
    painter.setPen(font.bold() ? qt::look::Now().changedInk : qt::look::Now().ink);
    const QString text = QFontMetrics(font).elidedText(cell.data().toString(), Qt::ElideRight, area.width());
    painter.drawText(area, cell.data(Qt::TextAlignmentRole).toInt() | static_cast<int>(Qt::TextSingleLine), text);
  }

  const QTableView& list_;
  qt::ListImages images_;
};

/// The picture of a widget on a device with `scale` times as many pixels.
QImage Picture(QWidget& widget, qreal scale, const QRegion& part) {
  QImage picture((QSizeF(widget.size()) * scale).toSize(), QImage::Format_RGB32);
  picture.setDevicePixelRatio(scale);
  picture.fill(Qt::magenta);
  widget.render(&picture, part.boundingRect().topLeft(), part);
  return picture;
}

/// What Qt's own table shows of the same model in the same state.
QImage Reference(const QTableView& list, qreal scale, const QRegion& part) {
  QTableView table;
  table.setFrameShape(QFrame::NoFrame);
  table.setShowGrid(false);
  table.setFont(list.font());
  QPalette palette = table.palette();
  palette.setColor(QPalette::Base, qt::look::Now().paper);
  table.setPalette(palette);
  table.setItemDelegate(new CellByCell(list, &table));
  table.setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  table.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  table.setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
  table.horizontalHeader()->hide();
  table.verticalHeader()->hide();
  table.horizontalHeader()->setMinimumSectionSize(1);
  table.verticalHeader()->setMinimumSectionSize(1);
  table.verticalHeader()->setDefaultSectionSize(qt::look::RowHeight());
  table.setModel(list.model());
  table.setSelectionModel(list.selectionModel());
  for (int column = 0; column < list.model()->columnCount(); ++column) {
    table.setColumnWidth(column, list.columnWidth(column));
    table.setColumnHidden(column, list.isColumnHidden(column));
  }
  table.resize(list.viewport()->size());
  table.ensurePolished();
  static_cast<void>(table.grab()); // gives it its layout, and its scroll bars their ranges
  table.verticalScrollBar()->setValue(list.verticalScrollBar()->value());
  table.horizontalScrollBar()->setValue(list.horizontalScrollBar()->value());
  QImage picture = Picture(*table.viewport(), scale, part);
  QPainter painter(&picture);
  if (const int scrolled = table.horizontalScrollBar()->value(); scrolled > 0) {
    table.horizontalScrollBar()->setValue(0);
    const QImage unscrolled = Picture(*table.viewport(), scale, part);
    const int width = list.visualRect(list.model()->index(0, 1)).right() + 1; // the first two columns stay
    painter.setClipRect(QRect(0, 0, width, picture.height()).intersected(part.boundingRect()));
    painter.drawImage(0, 0, unscrolled);
    painter.fillRect(QRect(width - 1, 0, 1, picture.height()), qt::look::Now().border);
    table.horizontalScrollBar()->setValue(scrolled);
  }
  painter.setClipRegion(part);
  for (const QModelIndex& row : list.selectionModel()->selectedRows()) {
    const QRect cell(0, list.rowViewportPosition(row.row()), 3, list.rowHeight(row.row()) - 1);
    painter.fillRect(cell, list.hasFocus() ? qt::look::Now().accent : qt::look::Now().border);
  }
  return picture;
}

/// How many pixels of the list are others than Qt's own.
int Differences(const QTableView& list, qreal scale = 1, const QRegion& part = {}) {
  const QRegion shown = part.isEmpty() ? QRegion(list.viewport()->rect()) : part;
  const QImage ours = Picture(*list.viewport(), scale, shown);
  const QImage theirs = Reference(list, scale, shown);
  EXPECT_EQ(ours.size(), theirs.size());
  int differences = 0;
  for (int y = 0; y < ours.height(); ++y) {
    for (int x = 0; x < ours.width(); ++x) {
      differences += ours.pixel(x, y) != theirs.pixel(x, y) ? 1 : 0;
    }
  }
  if (differences > 0 && qEnvironmentVariableIsSet("LUMOSCAD_PICTURES")) {
    const QString folder = qEnvironmentVariable("LUMOSCAD_PICTURES");
    ours.save(folder + QStringLiteral("/ours.png"));
    theirs.save(folder + QStringLiteral("/theirs.png"));
  }
  return differences;
}

const std::vector<std::string> Texts{
    "al\xcd\x9f",
    "al\xcd\xa0",
    "al\xcc\xb6\xe2\x83\xa4",
    "Caffè Però & Così S.r.l., già Città",
    "AVATAR To Ty. Wa, 1.111.111,11",
    "difficile, affluente, fine, ffi fj",
    "",
    "W",
    " ",
    "   blanks before and after   ",
    "Un nome che non sta in nessuna colonna di questa finestra, per quanto la si allarghi, e che continua",
    "e\xcc\x81 a\xcc\x80 o\xcc\x82\xcc\x84\xcc\x86\xcc\x87\xcc\x88 Z\xcc\xa3\xcc\xa4\xcc\xa5\xcc\xa6\xcc\xa7\xcc\xa8",
    "x\xcd\xa0y\xcd\x9cz o\xcc\x82\xcc\x82\xcc\x82\xcc\x82\xcc\x82\xcc\x82\xcc\x82\xcc\x82\xcc\x82\xcc\x82",
    "\xd7\xa9\xd7\x9c\xd7\x95\xd7\x9d abc 12,50",
    "abc \xd8\xb3\xd9\x84\xd8\xa7\xd9\x85 (12)",
    "Banca \xf0\x9f\x8f\xa6 \xf0\x9f\x91\xa8\xe2\x80\x8d\xf0\x9f\x91\xa9\xe2\x80\x8d\xf0\x9f\x91\xa7 fine",
    "\xe9\x8a\x80\xe8\xa1\x8c \xe6\x9d\xb1\xe4\xba\xac",
    "tab\there\tand there",
    "two\nlines\r\nor three",
    "first\xe2\x80\xa8second\xe2\x80\xa9third",
    "a longer variant of the text\xc2\x9cshort",
    ("soft\xc2\xadhyphen hard\xc2\xa0"
     "blank"),
    "bell\x07 escape\x1b delete\x7f",
    "&access &&key",
    "not UTF-8: \xff\xfe \xc3",
    "\xef\xac\x81n \xc7\x84 \xc4\xb2 \xca\xb0",
    "-1.234,56",
    "07/03/2006"};

/// Puts every text into a column of texts, into that of the amounts, and as a changed value.
void GiveTexts(FinestraFinta& fake) {
  for (std::size_t i = 0; i < Texts.size(); ++i) {
    for (const int column : {0, 5, FinestraFinta::ColonnaBanca}) {
      fake.texts[{i, column}] = Texts[i];
    }
  }
}

/// Shows a list of so many rows whose texts are the hard ones.
void WithHardTexts(std::size_t rows, const std::function<void(QDialog&, QTableView&)>& then) {
  FinestraFinta fake(rows);
  GiveTexts(fake);
  fake.spunte = {{1, FinestraFinta::ColonnaSpuntaData}, {2, FinestraFinta::ColonnaSpuntaBanca}};
  Esegui(fake, [&](QDialog& window) { then(window, Lista(window)); });
}

TEST(ListPainting, GivesPixelByPixelWhatQtGivesOfEachCell) {
  WithHardTexts(Texts.size(), [](QDialog& window, QTableView& list) {
    window.resize(1500, 780);
    QCoreApplication::processEvents();
    EXPECT_EQ(Differences(list), 0);
    EXPECT_EQ(Differences(list), 0) << "a second time";
    list.setCurrentIndex(list.model()->index(8, 5));
    EXPECT_EQ(Differences(list), 0) << "another row";
    Trova<QWidget>(window, "TextScadenza").setFocus();
    EXPECT_FALSE(list.hasFocus());
    EXPECT_EQ(Differences(list), 0) << "without the keyboard";
    window.setEnabled(false);
    EXPECT_EQ(Differences(list), 0) << "disabled";
  });
}

TEST(ListPainting, GivesTheSameAtEveryWidth) {
  WithHardTexts(Texts.size(), [](QDialog& window, QTableView& list) {
    window.resize(1500, 780);
    QCoreApplication::processEvents();
    for (int width = 1; width < 320; width += width < 60 ? 1 : 11) {
      for (const int column : {0, 5, FinestraFinta::ColonnaBanca}) {
        list.setColumnWidth(column, width);
      }
      list.setColumnWidth(FinestraFinta::ColonnaSpuntaData, width / 2 + 1);
      ASSERT_EQ(Differences(list), 0) << width;
    }
  });
}

TEST(ListPainting, GivesTheSameOnDevicesOfEveryScale) {
  WithHardTexts(Texts.size(), [](QDialog& window, QTableView& list) {
    window.resize(1500, 780);
    QCoreApplication::processEvents();
    for (const qreal scale : {1.0, 2.0, 3.0, 1.5, 1.25, 1.0}) {
      EXPECT_EQ(Differences(list, scale), 0) << scale;
    }
  });
}

TEST(ListPainting, GivesTheSameScrolledAndInParts) {
  WithHardTexts(200, [](QDialog& window, QTableView& list) {
    window.resize(700, 400);
    QCoreApplication::processEvents();
    for (const int place : {0, 37, 90, 185}) {
      list.horizontalScrollBar()->setValue(place);
      list.verticalScrollBar()->setValue(place);
      EXPECT_EQ(Differences(list), 0) << place;
      EXPECT_EQ(Differences(list, 1, QRect(30, 50, 400, 60)), 0) << place;
    }
  });
}

TEST(ListPainting, FillsWhatNoRowAndNoColumnCovers) {
  WithHardTexts(3, [](QDialog& window, QTableView& list) {
    window.resize(1200, 600);
    QCoreApplication::processEvents();
    for (int column = 0; column < list.model()->columnCount(); ++column) {
      list.setColumnWidth(column, 40);
    }
    EXPECT_EQ(Differences(list), 0);
  });
  WithHardTexts(0, [](QDialog& window, QTableView& list) {
    window.resize(1200, 600);
    QCoreApplication::processEvents();
    EXPECT_EQ(Differences(list), 0);
  });
}

TEST(ListPainting, FollowsTheFontAndAnswersOfTheScreen) {
  FinestraFinta fake(Texts.size());
  GiveTexts(fake);
  Esegui(fake, [&](QDialog& window) {
    QTableView& list = Lista(window);
    window.resize(1500, 780);
    QCoreApplication::processEvents();
    EXPECT_EQ(Differences(list), 0);
    QFont font = list.font();
    font.setPixelSize(15);
    font.setItalic(true);
    list.setFont(font);
    EXPECT_EQ(Differences(list), 0) << "another font";
    font.setLetterSpacing(QFont::AbsoluteSpacing, 2);
    list.setFont(font);
    EXPECT_EQ(Differences(list), 0) << "another spacing";
    for (auto& [cell, text] : fake.texts) {
      text += " and more";
    }
    EXPECT_EQ(Differences(list), 0) << "other texts";
    fake.righe = 4;
    EXPECT_EQ(Differences(list), 0) << "rows that the screen no longer has";
  });
}

TEST(ListPainting, ShowsEachStateDifferently) {
  WithHardTexts(Texts.size(), [](QDialog& window, QTableView& list) {
    window.resize(1500, 780);
    QCoreApplication::processEvents();
    const QRegion all(list.viewport()->rect());
    std::vector<QImage> pictures{Picture(*list.viewport(), 1, all)};
    list.setCurrentIndex(list.model()->index(8, 5));
    pictures.push_back(Picture(*list.viewport(), 1, all));
    Trova<QWidget>(window, "TextScadenza").setFocus();
    pictures.push_back(Picture(*list.viewport(), 1, all));
    EXPECT_NE(pictures[0], pictures[1]);
    EXPECT_NE(pictures[1], pictures[2]);
  });
}

/// What the tooltip of a cell says when the pointer rests on it; empty where there is none.
QString Tooltip(const QTableView& list, int row, int column) {
  QToolTip::hideText();
  EXPECT_TRUE(QTest::qWaitFor([] { return !QToolTip::isVisible(); }));
  const QPoint where = list.visualRect(list.model()->index(row, column)).center();
  QHelpEvent event(QEvent::ToolTip, where, list.viewport()->mapToGlobal(where));
  QCoreApplication::sendEvent(list.viewport(), &event);
  return QToolTip::isVisible() ? QToolTip::text() : QString();
}

TEST(ListTooltip, ShowsTheWholeOfATextThatDoesNotFit) {
  FinestraFinta fake(4);
  fake.texts = {{{1, 0}, "Rossi & Figli <tutti>"}, {{2, FinestraFinta::ColonnaBanca}, "Banca del Garda"}};
  fake.texts[{2, 4}] = "Banca";
  fake.texts[{1, FinestraFinta::ColonnaBanca}] = "Banca del Garda";
  fake.texts[{1, 4}] = "Banca del Garda";
  Esegui(fake, [&](QDialog& window) {
    QTableView& list = Lista(window);
    window.resize(1500, 400);
    QCoreApplication::processEvents();
    EXPECT_EQ(Tooltip(list, 1, 0), "");
    list.setColumnWidth(0, 60);
    EXPECT_EQ(Tooltip(list, 1, 0), "<p>Rossi &amp; Figli &lt;tutti&gt;</p>");
    const int plain = QFontMetrics(list.font()).horizontalAdvance(QStringLiteral("Banca del Garda"));
    list.setColumnWidth(FinestraFinta::ColonnaBanca, plain + 12);
    EXPECT_EQ(Tooltip(list, 1, FinestraFinta::ColonnaBanca), "");
    EXPECT_EQ(Tooltip(list, 2, FinestraFinta::ColonnaBanca), "<p>Banca del Garda</p>") << "a changed value is bold";
  });
}

TEST(ListForScreenReaders, SaysWhatEachCellShows) {
  FinestraFinta fake(4);
  fake.spunte = {{1, FinestraFinta::ColonnaSpuntaData}};
  Esegui(fake, [&](QDialog& window) {
    QAccessibleInterface* const list = QAccessible::queryAccessibleInterface(&Lista(window));
    ASSERT_NE(list, nullptr);
    QAccessibleTableInterface* const table = list->tableInterface();
    ASSERT_NE(table, nullptr);
    const auto said = [&](int row, int column) { return table->cellAt(row, column)->text(QAccessible::Name); };
    EXPECT_EQ(said(1, 0), "Oleificio Santa Chiara");
    EXPECT_EQ(said(1, FinestraFinta::ColonnaSpuntaData), "spuntata");
    EXPECT_EQ(said(2, FinestraFinta::ColonnaSpuntaData), "non spuntata");
  });
}

} // namespace
} // namespace lumoscad::test
