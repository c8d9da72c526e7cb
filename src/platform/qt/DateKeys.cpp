#include "platform/qt/DateKeys.hpp"

#include "platform/qt/CalendarPopup.hpp"
#include "platform/qt/GestureKeys.hpp"

#include <QKeyEvent>
#include <QLineEdit>
#include <QPointer>

#include <utility>

namespace lumoscad::qt {

DateKeys::DateKeys(QLineEdit& field, DateField which, FieldGestures& fields, Run run)
    : field_(field), which_(which), fields_(fields), run_(std::move(run)) {
  field.installEventFilter(this);
  field.setToolTip(QStringLiteral("Data, oppure fm (fine mese) o +30 (giorni); frecce: un giorno; Pag su e Pag giù: un "
                                  "mese; %1: calendario")
                       .arg(KeyText(Gesture::OpenCalendar)));
}

bool DateKeys::eventFilter(QObject* object, QEvent* event) {
  return event->type() == QEvent::KeyPress ? Key(static_cast<const QKeyEvent&>(*event))
                                           : QObject::eventFilter(object, event);
}

bool DateKeys::Key(const QKeyEvent& key) {
  if (key.modifiers() & (Qt::ShiftModifier | Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)) {
    return false;
  }
  switch (PressedAt(GesturePlace::DateField, key).gesture) {
  case Gesture::DayLater:
    Step(1, 0);
    return true;
  case Gesture::DayEarlier:
    Step(-1, 0);
    return true;
  case Gesture::MonthLater:
    Step(0, 1);
    return true;
  case Gesture::MonthEarlier:
    Step(0, -1);
    return true;
  case Gesture::OpenCalendar:
    OpenCalendar();
    return true;
  default:
    return false;
  }
}

void DateKeys::Step(int days, int months) {
  run_([&] {
    if (days != 0) {
      fields_.SpostaGiorni(which_, days);
    } else {
      fields_.SpostaMesi(which_, months);
    }
  });
  field_.selectAll(); // what is typed next replaces it
}

void DateKeys::OpenCalendar() {
  CalendarDate day;
  bool known = false;
  run_([&] {
    day = fields_.GiornoDelCampo(which_);
    known = true;
  });
  if (!known) {
    return;
  }
  const QPointer<DateKeys> self(this);
  auto* calendar = new CalendarPopup(
      [self](CalendarDate first, int count) {
        std::vector<CalendarDay> days;
        if (self) {
          self->run_([&] { days = self->fields_.Giorni(first, count); });
        }
        return days;
      },
      field_);
  calendar->chosen = [self](CalendarDate chosen) {
    if (self) {
      self->run_([&] { self->fields_.ScegliGiorno(self->which_, chosen); });
      self->field_.setFocus();
      self->field_.selectAll();
    }
  };
  calendar->Open(day);
}

} // namespace lumoscad::qt
