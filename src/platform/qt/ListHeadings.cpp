#include "platform/qt/ListHeadings.hpp"

#include "platform/qt/GestureKeys.hpp"
#include "platform/qt/ListView.hpp"
#include "platform/qt/Look.hpp"
#include "platform/qt/Texts.hpp"

#include <QEvent>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <cstdlib>

namespace lumoscad::qt {

namespace {

constexpr int HeadingMargin = 6;
constexpr int IndicatorSide = 10;
constexpr int SquareSide = 14;
constexpr int BorderReach = 4; ///< pixels from which a border is taken hold of
/// Bold is wider: so many pixels of twelve keep the longest heading whole.
constexpr int HeadingPixels = 11;

/// " (Ctrl+1)"; nothing for a heading whose number is no key.
QString SortKey(const ListHeading& heading) {
  const std::vector<std::string_view> keys = KeysOf(EntryOf(Gesture::Sort));
  const auto which = static_cast<std::size_t>(heading.index) - 1;
  return which < keys.size() ? QStringLiteral(" (%1)").arg(Text(ItalianKey(keys[which]))) : QString();
}

} // namespace

HeadingQt::HeadingQt(const QString& name, const QString& caption, bool sorts, QWidget* parent)
    : QAbstractButton(parent), sorts_(sorts) {
  setObjectName(name);
  setText(caption);
  setAccessibleName(caption);
  setFocusPolicy(Qt::NoFocus);
  if (sorts) {
    setCursor(Qt::PointingHandCursor);
    setAttribute(Qt::WA_Hover);
  }
}

bool HeadingQt::event(QEvent* event) {
  // A click on a heading that does not sort must not count as a click on the window behind it.
  if (!sorts_ && (event->type() == QEvent::MouseButtonPress || event->type() == QEvent::MouseButtonRelease)) {
    if (event->type() == QEvent::MouseButtonRelease) {
      emit clicked();
    }
    event->accept();
    return true;
  }
  return QAbstractButton::event(event);
}

void HeadingQt::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  // Its own ground, because another heading may lie below it.
  painter.fillRect(rect(), sorts_ && underMouse() ? look::Now().hoveredHeading : look::Now().headingBackground);
  painter.setPen(look::Now().line);
  painter.drawLine(width() - 1, 0, width() - 1, height());
  QFont fontName = font();
  fontName.setBold(true);
  fontName.setPixelSize(look::Scaled(HeadingPixels));
  painter.setFont(fontName);
  painter.setPen(look::Now().windowInk);
  const int margin = look::Scaled(HeadingMargin);
  const QRect area = rect().adjusted(margin, look::Scaled(IndicatorSide) + 2, -margin, -2);
  const QString caption = QFontMetrics(fontName).elidedText(text(), Qt::ElideRight, area.width());
  const Qt::Alignment orientation = Qt::AlignVCenter | (right_ ? Qt::AlignRight : Qt::AlignLeft);
  painter.drawText(area, static_cast<int>(orientation.toInt()) | static_cast<int>(Qt::TextSingleLine), caption);
}

ImageQt::ImageQt(const QString& name, ListIcon icon, QWidget* parent) : QWidget(parent), icon_(icon) {
  setObjectName(name);
  setAttribute(Qt::WA_TransparentForMouseEvents);
  Display(icon);
}

void ImageQt::Display(ListIcon icon) {
  icon_ = icon;
  setProperty("immagine", Text(Key(icon)));
  update();
}

void ImageQt::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  Draw(painter, rect(), icon_);
}

ListHeadings::ListHeadings(const ListWindow& window, ListView& table, QWidget* parent)
    : QWidget(parent), window_(window), table_(table), drag_(new ColumnDrag(*this)) {
  AddHeadings();
  AddUncoveredColumns();
  AddBorders();
  Measure();
  table_.SetHeadings(this);
}

void ListHeadings::Measure() {
  setFont(look::Font(window_.Description().headingFont));
  setFixedHeight(look::HeadingHeight());
  for (const Entry& entry : entries_) {
    entry.heading->setFont(font());
    if (entry.indicator != nullptr) {
      entry.indicator->setFont(look::Font({})); // it writes nothing
    }
  }
  for (const auto& [column, smallSquare] : squares_) {
    smallSquare->setFont(look::Font({}));
  }
}

void ListHeadings::AddHeadings() {
  for (const ListHeading& heading : window_.Description().headings) {
    const QString number = QString::number(heading.index);
    Entry entry;
    entry.heading = new HeadingQt(QStringLiteral("TLwTestata_") + number, Text(heading.text), heading.sorts, this);
    entry.indicator = new ImageQt(QStringLiteral("PTestata_") + number, ListIcon::Unsorted, this);
    entry.indicator->setVisible(heading.sorts); // nothing to indicate over a heading that never sorts
    entry.index = heading.index;
    entry.first = heading.first;
    entry.last = heading.last;
    const auto last = static_cast<std::size_t>(std::max(heading.last, 0));
    entry.heading->SetRightAligned(last < window_.Description().columns.size() &&
                                   window_.Description().columns[last].kind == ListColumn::Kind::Amount);
    entry.heading->setToolTip(heading.sorts
                                  ? QStringLiteral("Ordina per %1%2").arg(Text(heading.text), SortKey(heading))
                                  : Text(heading.text));
    if (const auto keys = Keys(Gesture::Sort); heading.sorts && heading.index >= 1 && heading.index <= keys.size()) {
      entry.heading->SetKeys(keys[heading.index - 1].toString());
    }
    QObject::connect(entry.heading, &QAbstractButton::clicked, this, [this, index = heading.index] {
      if (headingClicked) {
        headingClicked(index);
      }
    });
    entries_.push_back(entry);
  }
}

bool ListHeadings::Covered(int column) const {
  return std::any_of(window_.Description().headings.begin(), window_.Description().headings.end(),
                     [column](const ListHeading& t) { return t.first <= column && column <= t.last; });
}

void ListHeadings::AddUncoveredColumns() {
  for (int column = 0; column < static_cast<int>(window_.Description().columns.size()); ++column) {
    const ListColumn& c = window_.Description().columns[static_cast<std::size_t>(column)];
    if (c.width <= 0) {
      continue;
    }
    if (c.kind == ListColumn::Kind::Tick) {
      const QString name = QStringLiteral("TLwTestataQuadratino");
      squares_.emplace_back(
          column, new ImageQt(squares_.empty() ? name : name + QString::number(column), ListIcon::SmallSquare, this));
    }
    if (Covered(column)) {
      continue;
    }
    Entry entry;
    entry.heading = new HeadingQt(Text(c.key), Text(c.headingText), false, this);
    entry.heading->setToolTip(Text(c.headingText));
    entry.heading->setAccessibleName(Text(c.caption.empty() ? c.headingText : c.caption));
    entry.heading->SetRightAligned(c.kind == ListColumn::Kind::Amount);
    entry.first = entry.last = column;
    entries_.push_back(entry);
  }
  for (const auto& [column, smallSquare] : squares_) {
    smallSquare->raise();
  }
}

void ListHeadings::LayOut() {
  const int begin = mapFromGlobal(table_.viewport()->mapToGlobal(QPoint(0, 0))).x();
  for (const Entry& entry : entries_) {
    int left = 0;
    int width = 0;
    for (int column = entry.first; column <= entry.last && column < table_.model()->columnCount(); ++column) {
      if (!table_.isColumnHidden(column)) {
        left = width == 0 ? table_.Frozen().Left(column) : left;
        width += table_.columnWidth(column);
      }
    }
    entry.heading->setVisible(width > 0);
    entry.heading->setGeometry(begin + left, 0, width, height() - 1);
    if (entry.indicator != nullptr) {
      const int side = look::Scaled(IndicatorSide);
      entry.indicator->setGeometry(begin + left + (width - side) / 2, 2, side, side);
    }
  }
  for (const auto& [column, smallSquare] : squares_) {
    const int left = begin + table_.Frozen().Left(column);
    const int side = look::Scaled(SquareSide);
    smallSquare->setGeometry(left + (table_.columnWidth(column) - side) / 2, (height() - side) / 2 + 4, side, side);
  }
  for (const Entry& entry : entries_) {
    if (table_.Frozen().Contains(entry.first)) {
      entry.heading->raise();
      if (entry.indicator != nullptr) {
        entry.indicator->raise();
      }
    }
  }
}

void ListHeadings::AddBorders() {
  drag_->borderAt = [this](int x) { return BorderAt(x); };
  drag_->widthOf = [this](int column) { return table_.columnWidth(column); };
  drag_->dragged = [this](int column, int pixels) {
    table_.SetWidth(column, pixels);
    if (widthChanged) {
      widthChanged();
    }
  };
  drag_->doubleClicked = [this](int column) { drag_->dragged(column, table_.ContentWidth(column)); };
  for (const Entry& entry : entries_) {
    drag_->Watch(*entry.heading);
  }
}

void ListHeadings::FitAll() {
  for (int column = 0; column < table_.model()->columnCount(); ++column) {
    if (!table_.isColumnHidden(column)) {
      drag_->doubleClicked(column);
    }
  }
}

int ListHeadings::BorderAt(int x) const {
  const int begin = mapFromGlobal(table_.viewport()->mapToGlobal(QPoint(0, 0))).x();
  const FrozenColumns& frozen = table_.Frozen();
  for (int column = table_.model()->columnCount() - 1; column >= 0; --column) {
    const int border = frozen.Left(column) + table_.columnWidth(column);
    const bool below = !frozen.Contains(column) && border <= frozen.Width();
    if (!table_.isColumnHidden(column) && !below && std::abs(begin + border - x) <= BorderReach) {
      return column;
    }
  }
  return -1;
}

void ListHeadings::ShowOrder(int index, bool ascending) {
  order_.clear();
  for (const Entry& entry : entries_) {
    if (entry.indicator == nullptr) {
      continue;
    }
    const bool sorted = entry.index == index;
    const ListIcon direction = ascending ? ListIcon::Sorted : ListIcon::SortedReverse;
    entry.indicator->Display(sorted ? direction : ListIcon::Unsorted);
    QString name = entry.heading->text();
    if (sorted) {
      const QString order = ascending ? QStringLiteral("ordine crescente") : QStringLiteral("ordine decrescente");
      order_ = QStringLiteral("Per %1, %2").arg(name, order);
      name += QStringLiteral(", ") + order;
    }
    if (entry.heading->accessibleName() != name) {
      entry.heading->setAccessibleName(name);
    }
  }
}

HeadingQt* ListHeadings::Over(int column) const {
  const auto found = std::find_if(entries_.begin(), entries_.end(),
                                  [column](const Entry& e) { return e.first <= column && column <= e.last; });
  return found == entries_.end() ? nullptr : found->heading;
}

void ListHeadings::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.fillRect(rect(), look::Now().headingBackground);
  painter.setPen(look::Now().line);
  painter.drawLine(0, height() - 1, width(), height() - 1);
}

} // namespace lumoscad::qt
