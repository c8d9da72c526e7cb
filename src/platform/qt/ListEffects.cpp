#include "platform/qt/ListEffects.hpp"

#include "platform/qt/GestureKeys.hpp"
#include "platform/qt/Look.hpp"
#include "platform/qt/Texts.hpp"

#include <QKeyEvent>
#include <QPainter>
#include <QStyledItemDelegate>

namespace lumoscad::qt {
namespace {

enum Role {
  GroupRole = Qt::UserRole,
  BarRole,
  NameRole,
  BeforeRole,
  AfterRole,
  BeforePartRole,
  AfterPartRole,
  NegativeBeforeRole,
  NegativeAfterRole,
  ChangedRole
};

constexpr int Thousand = 1000;
constexpr int Gap = 6;
constexpr int BarShare = 45; ///< hundredths of the width that a bar of the largest amount has

/// Draws an entry: its name, and below it the bar and the figure before the changes and after them.
class BarDelegate final : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;

  [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override {
    const int line = option.fontMetrics.lineSpacing();
    return {0, (index.data(BarRole).isValid() ? 3 * line : line) + 2 * Gap};
  }

  void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override {
    if (!index.data(BarRole).isValid()) {
      QStyleOptionViewItem heading = option;
      heading.font = look::Bold(option.font);
      QStyledItemDelegate::paint(painter, heading, index);
      return;
    }
    painter->save();
    const bool selected = option.state & QStyle::State_Selected;
    painter->fillRect(option.rect, option.palette.color(selected ? QPalette::Highlight : QPalette::Base));
    painter->setPen(option.palette.color(selected ? QPalette::HighlightedText : QPalette::Text));
    const bool changed = index.data(ChangedRole).toBool();
    painter->setFont(changed ? look::Bold(option.font) : option.font);
    const int line = option.fontMetrics.lineSpacing();
    QRect row = option.rect.adjusted(Gap, Gap, -Gap, 0);
    row.setHeight(line);
    painter->drawText(row, Qt::AlignLeft | Qt::AlignVCenter,
                      painter->fontMetrics().elidedText(index.data(NameRole).toString(), Qt::ElideRight, row.width()));
    painter->setFont(option.font);
    row.translate(0, line);
    Draw(*painter, row, index, QStringLiteral("prima "), BeforeRole, BeforePartRole, NegativeBeforeRole);
    row.translate(0, line);
    Draw(*painter, row, index, QStringLiteral("dopo "), AfterRole, AfterPartRole, NegativeAfterRole);
    if (option.state & QStyle::State_HasFocus) {
      painter->setBrush(Qt::NoBrush);
      painter->drawRect(option.rect.adjusted(1, 1, -2, -2));
    }
    painter->restore();
  }

 private:
  /// What was is an outline, what will be is filled, an amount below zero is hatched.
  static void Draw(QPainter& painter, const QRect& row, const QModelIndex& index, const QString& caption, Role figure,
                   Role part, Role negative) {
    const int full = row.width() * BarShare / 100;
    const int width = full * index.data(part).toInt() / Thousand;
    const QRect bar(row.left(), row.top() + 2, width, row.height() - 5);
    const QColor ink = painter.pen().color();
    if (width > 0) {
      const Qt::BrushStyle filled = figure == AfterRole ? Qt::SolidPattern : Qt::NoBrush;
      painter.setBrush(QBrush(ink, index.data(negative).toBool() ? Qt::BDiagPattern : filled));
      painter.drawRect(bar);
    }
    painter.drawText(row, Qt::AlignRight | Qt::AlignVCenter, caption + index.data(figure).toString());
  }
};

} // namespace

ListEffects::ListEffects(QWidget* parent) : QListWidget(parent) {
  setObjectName(QStringLiteral("EffectPanel"));
  setAccessibleName(QStringLiteral("Effetto delle variazioni"));
  setToolTip(
      QStringLiteral(
          "%1 o un clic tiene in vista le sole righe di una barra, una seconda volta le mostra tutte (%2 chiude)")
          .arg(KeyText(Gesture::FilterBehind), KeyText(Gesture::Effects)));
  setItemDelegate(new BarDelegate(this));
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setFixedWidth(look::Scaled(340));
  connect(this, &QListWidget::itemClicked, this, [this](const QListWidgetItem* item) { Choose(item); });
}

void ListEffects::Show(const std::vector<EffectGroup>& groups) {
  const int row = currentRow();
  filtering_ = nullptr;
  clear();
  for (std::size_t group = 0; group < groups.size(); ++group) {
    auto* heading = new QListWidgetItem(Text(groups[group].title), this);
    heading->setFlags(Qt::ItemIsEnabled);
    for (std::size_t place = 0; place < groups[group].bars.size(); ++place) {
      const EffectBar& bar = groups[group].bars[place];
      const QString name = Text(bar.name);
      const QString before = Text(bar.before);
      const QString after = Text(bar.after);
      auto* item = new QListWidgetItem(name + QStringLiteral(": prima ") + before + QStringLiteral(", dopo ") + after +
                                           (bar.changed ? QStringLiteral(", variata") : QString()) +
                                           (bar.filters ? QStringLiteral(", solo questa in vista") : QString()),
                                       this);
      item->setToolTip(item->text());
      item->setData(GroupRole, static_cast<int>(group));
      item->setData(BarRole, static_cast<int>(place));
      item->setData(NameRole, (bar.changed ? QStringLiteral("• ") + name : name) +
                                  (bar.filters ? QStringLiteral(" (solo questa in vista)") : QString()));
      filtering_ = bar.filters ? item : filtering_;
      item->setData(BeforeRole, before);
      item->setData(AfterRole, after);
      item->setData(BeforePartRole, bar.beforePart);
      item->setData(AfterPartRole, bar.afterPart);
      item->setData(NegativeBeforeRole, bar.negativeBefore);
      item->setData(NegativeAfterRole, bar.negativeAfter);
      item->setData(ChangedRole, bar.changed);
    }
  }
  setCurrentRow(std::min(row, count() - 1), QItemSelectionModel::ClearAndSelect);
}

void ListEffects::Choose(const QListWidgetItem* item) const {
  if (item != nullptr && item->data(BarRole).isValid()) {
    chosen(static_cast<std::size_t>(item->data(GroupRole).toInt()),
           static_cast<std::size_t>(item->data(BarRole).toInt()));
  }
}

void ListEffects::keyPressEvent(QKeyEvent* event) {
  const bool plain = !(event->modifiers() & ~Qt::KeyboardModifiers(Qt::KeypadModifier));
  if (plain && PressedAt(GesturePlace::Effects, *event) == Gesture::FilterBehind) {
    Choose(currentItem());
    return;
  }
  if (plain && filtering_ != nullptr && PressedAt(GesturePlace::Effects, *event) == Gesture::EffectsClear) {
    Choose(filtering_);
    return;
  }
  QListWidget::keyPressEvent(event);
}

} // namespace lumoscad::qt
