#include "platform/qt/CalendarPopup.hpp"

#include "platform/qt/GestureKeys.hpp"
#include "platform/qt/Look.hpp"
#include "platform/qt/Texts.hpp"

#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QScreen>
#include <QToolButton>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace lumoscad::qt {

namespace {

QLabel* Line(const QString& name, QWidget* parent) {
  auto* label = new QLabel(parent);
  label->setObjectName(name);
  label->setTextFormat(Qt::PlainText);
  label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed); // a long text must not widen the calendar
  return label;
}

std::string MonthKey(std::size_t which) {
  return ItalianKey(KeysOf(EntryOf(Gesture::CalendarMonth)).at(which));
}

QToolButton* Arrow(Qt::ArrowType arrow, const QString& name, const QString& text, QWidget* parent) {
  auto* button = new QToolButton(parent);
  button->setObjectName(name);
  button->setArrowType(arrow);
  button->setAutoRaise(true);
  button->setFocusPolicy(Qt::NoFocus); // the keys stay with the days
  button->setAccessibleName(text);
  button->setToolTip(text);
  return button;
}

} // namespace

CalendarPopup::CalendarPopup(MonthModel::Source source, QWidget& field)
    : QFrame(field.window(), Qt::Popup), field_(field) {
  setObjectName(QStringLiteral("CalendarPopup"));
  setAccessibleName(QStringLiteral("Calendario"));
  setAttribute(Qt::WA_DeleteOnClose);
  setAttribute(Qt::WA_NoMouseReplay); // the click that closes it does nothing else
  setFrameShape(QFrame::StyledPanel);
  month_ = new MonthView(std::move(source), this);
  month_->setObjectName(QStringLiteral("CalendarDays"));
  auto* stack = new QVBoxLayout(this);
  const int margin = look::Scaled(6);
  stack->setContentsMargins(margin, margin, margin, margin);
  stack->setSpacing(look::Scaled(3));
  stack->addWidget(Heading());
  stack->addWidget(month_);
  day_ = Line(QStringLiteral("CalendarDayName"), this);
  due_ = Line(QStringLiteral("CalendarDayDue"), this);
  stack->addWidget(day_);
  stack->addWidget(due_);
  look::Dress(*this);
  month_->monthShown = [this] { ShowMonth(); };
  month_->described = [this](const QModelIndex& cell) { ShowDay(cell); };
  month_->chosen = [this](const QDate& day) {
    const auto tell = chosen;
    close();
    if (tell) {
      tell({day.year(), day.month(), day.day()});
    }
  };
}

QWidget* CalendarPopup::Heading() {
  auto* heading = new QWidget(this);
  auto* row = new QHBoxLayout(heading);
  row->setContentsMargins(0, 0, 0, 0);
  title_ = new QLabel(heading);
  title_->setObjectName(QStringLiteral("CalendarMonth"));
  title_->setAlignment(Qt::AlignCenter);
  title_->setFont(look::Bold(look::Font({})));
  auto* before = Arrow(Qt::LeftArrow, QStringLiteral("CalendarPreviousMonth"),
                       QStringLiteral("Mese precedente (%1)").arg(Text(MonthKey(0))), heading);
  auto* after = Arrow(Qt::RightArrow, QStringLiteral("CalendarNextMonth"),
                      QStringLiteral("Mese seguente (%1)").arg(Text(MonthKey(1))), heading);
  connect(before, &QToolButton::clicked, this, [this] { month_->GoToMonth(-1); });
  connect(after, &QToolButton::clicked, this, [this] { month_->GoToMonth(1); });
  row->addWidget(before);
  row->addWidget(title_, 1);
  row->addWidget(after);
  return heading;
}

void CalendarPopup::Open(CalendarDate day) {
  month_->GoTo(QDate(day.year, day.month, day.day));
  if (!field_.isVisible()) {
    close(); // what went wrong has closed the window
    return;
  }
  Place();
  show();
  month_->setFocus(Qt::PopupFocusReason);
}

void CalendarPopup::Place() {
  adjustSize();
  const QRect field(field_.mapToGlobal(QPoint(0, 0)), field_.size());
  QPoint corner = field.bottomLeft() + QPoint(0, 1);
  if (const QScreen* display = field_.screen()) {
    const QRect free = display->availableGeometry();
    if (corner.y() + height() > free.bottom() + 1 && field.top() - height() >= free.top()) {
      corner.setY(field.top() - height());
    }
    corner.setX(std::max(free.left(), std::min(corner.x(), free.right() + 1 - width())));
  }
  move(corner);
}

void CalendarPopup::ShowMonth() {
  const QString text =
      QLocale(QLocale::Italian, QLocale::Italy).toString(month_->Model().Month(), QStringLiteral("MMMM yyyy"));
  title_->setText(text);
  month_->setAccessibleName(QStringLiteral("Giorni di %1").arg(text));
}

void CalendarPopup::ShowDay(const QModelIndex& cell) {
  const CalendarDay* day = month_->Model().DayAt(cell);
  QString text = MonthModel::NameOf(month_->Model().DateAt(cell));
  if (day != nullptr && !day->holiday.empty()) {
    text += QStringLiteral(" · ") + Text(day->holiday);
  }
  day_->setText(text);
  due_->setText(month_->Model().DueAt(cell));
}

} // namespace lumoscad::qt
