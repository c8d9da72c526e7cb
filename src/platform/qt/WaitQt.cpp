#include "platform/qt/WaitQt.hpp"

#include "platform/qt/Look.hpp"
#include "platform/qt/Texts.hpp"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QGuiApplication>
#include <QLabel>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace lumoscad::qt {

namespace {

/// How long the work waits for a window that the display is slow to show: not for ever, it may be minimised.
constexpr int PostponementMilliseconds = 20;
constexpr int MaxPostponements = 50;

} // namespace

WaitQt::WaitQt(std::string_view text, int milliseconds, const std::function<void()>& work, QWidget* below)
    : DialogQt(below, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint), work_(work),
      timer_(new QTimer(this)) {
  setObjectName(QStringLiteral("FormAspetta"));
  setWindowTitle(QStringLiteral("LumoScad"));
  auto* label = new QLabel(this);
  label->setObjectName(QStringLiteral("lblAttesa"));
  label->setTextFormat(Qt::PlainText);
  label->setText(Text(text));
  label->setAlignment(Qt::AlignCenter);
  auto* stack = new QVBoxLayout(this);
  stack->setContentsMargins(28, 18, 28, 18);
  stack->addWidget(label);
  stack->setSizeConstraint(QLayout::SetFixedSize);
  timer_->setObjectName(QStringLiteral("Timer1"));
  timer_->setSingleShot(true);
  timer_->setInterval(std::max(milliseconds, 0));
  TakeLook();
  connect(timer_, &QTimer::timeout, this, [this] { Fire(); });
}

void WaitQt::TakeLook() {
  look::Dress(*this);
  auto* label = findChild<QLabel*>(QStringLiteral("lblAttesa"));
  label->setFont(look::Font("MS Sans Serif"));
  label->setMinimumSize(look::Scaled(300), look::Scaled(48));
}

std::exception_ptr WaitQt::Display() {
  timer_->start();
  exec();
  return std::exchange(error_, nullptr);
}

void WaitQt::Fire() {
  if (!painted_ && postponements_ < MaxPostponements) {
    ++postponements_;
    timer_->start(PostponementMilliseconds);
    return;
  }
  if (std::exchange(done_, true)) {
    return;
  }
  QGuiApplication::setOverrideCursor(Qt::WaitCursor);
  QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents); // the pointer shows before the work blocks
  try {
    work_();
  } catch (...) {
    error_ = std::current_exception();
  }
  QGuiApplication::restoreOverrideCursor();
  done(Accepted);
}

void WaitQt::closeEvent(QCloseEvent* event) {
  event->ignore();
}

void WaitQt::paintEvent(QPaintEvent* event) {
  QDialog::paintEvent(event);
  painted_ = true;
}

} // namespace lumoscad::qt
