#pragma once

#include "platform/qt/Look.hpp"

#include <QFrame>
#include <QPainter>
#include <QString>

namespace lumoscad::qt {

/// A frame that is filled with one of the windows' colours, whatever that is when it is painted.
class AreaQt final : public QFrame {
 public:
  using Colour = QColor look::Colours::*;

  AreaQt(const QString& name, Colour colour, QWidget* parent) : QFrame(parent), colour_(colour) { setObjectName(name); }

 protected:
  void paintEvent(QPaintEvent* /*event*/) override { QPainter(this).fillRect(rect(), look::Now().*colour_); }

 private:
  Colour colour_;
};

} // namespace lumoscad::qt
