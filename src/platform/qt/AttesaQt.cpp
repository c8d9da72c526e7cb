#include "platform/qt/AttesaQt.hpp"

#include "platform/qt/Aspetto.hpp"
#include "platform/qt/Testi.hpp"

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
constexpr int RinvioMillisecondi = 20;
constexpr int RinviiMassimi = 50;

} // namespace

AttesaQt::AttesaQt(std::string_view testo, int millisecondi, const std::function<void()>& lavoro, QWidget* sotto)
    : DialogoQt(sotto, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint), lavoro_(lavoro),
      timer_(new QTimer(this)) {
  setObjectName(QStringLiteral("FormAspetta"));
  setWindowTitle(QStringLiteral("LumoScad"));
  aspetto::Vesti(*this, {});
  auto* etichetta = new QLabel(this);
  etichetta->setObjectName(QStringLiteral("lblAttesa"));
  etichetta->setFont(aspetto::Carattere("MS Sans Serif"));
  etichetta->setTextFormat(Qt::PlainText);
  etichetta->setText(Testo(testo));
  etichetta->setAlignment(Qt::AlignCenter);
  etichetta->setMinimumSize(300, 48);
  auto* pila = new QVBoxLayout(this);
  pila->setContentsMargins(28, 18, 28, 18);
  pila->addWidget(etichetta);
  pila->setSizeConstraint(QLayout::SetFixedSize);
  timer_->setObjectName(QStringLiteral("Timer1"));
  timer_->setSingleShot(true);
  timer_->setInterval(std::max(millisecondi, 0));
  connect(timer_, &QTimer::timeout, this, [this] { Scatta(); });
}

std::exception_ptr AttesaQt::Mostra() {
  timer_->start();
  exec();
  return std::exchange(errore_, nullptr);
}

void AttesaQt::Scatta() {
  if (!dipinta_ && rinvii_ < RinviiMassimi) {
    ++rinvii_;
    timer_->start(RinvioMillisecondi);
    return;
  }
  if (std::exchange(eseguito_, true)) {
    return;
  }
  QGuiApplication::setOverrideCursor(Qt::WaitCursor);
  QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents); // the pointer shows before the work blocks
  try {
    lavoro_();
  } catch (...) {
    errore_ = std::current_exception();
  }
  QGuiApplication::restoreOverrideCursor();
  done(Accepted);
}

void AttesaQt::closeEvent(QCloseEvent* evento) {
  evento->ignore();
}

void AttesaQt::paintEvent(QPaintEvent* evento) {
  QDialog::paintEvent(evento);
  dipinta_ = true;
}

} // namespace lumoscad::qt
