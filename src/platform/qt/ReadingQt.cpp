#include "platform/qt/ReadingQt.hpp"

#include "platform/qt/Look.hpp"

#include <QCloseEvent>
#include <QLabel>
#include <QLocale>
#include <QVBoxLayout>

namespace lumoscad::qt {

namespace {

constexpr qint64 TellMilliseconds = 100;

} // namespace

ReadingQt::ReadingQt(QWidget* below)
    : DialogQt(below, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint), rows_(new QLabel(this)) {
  setObjectName(QStringLiteral("FormLettura"));
  setWindowTitle(QStringLiteral("LumoScad"));
  setModal(true);
  rows_->setObjectName(QStringLiteral("lblLettura"));
  rows_->setTextFormat(Qt::PlainText);
  rows_->setAlignment(Qt::AlignCenter);
  rows_->setMinimumSize(look::Scaled(300), look::Scaled(32));
  auto* key = new QLabel(QStringLiteral("Esc: lascia l'elenco"), this);
  key->setObjectName(QStringLiteral("lblLetturaEsc"));
  key->setAlignment(Qt::AlignCenter);
  auto* stack = new QVBoxLayout(this);
  stack->setContentsMargins(28, 18, 28, 18);
  stack->addWidget(rows_);
  stack->addWidget(key);
  stack->setSizeConstraint(QLayout::SetFixedSize);
}

void ReadingQt::Tell(std::size_t rows) {
  if (told_.isValid() && told_.elapsed() < TellMilliseconds) {
    return;
  }
  told_.start();
  const QString count = QLocale(QLocale::Italian, QLocale::Italy).toString(static_cast<qulonglong>(rows));
  rows_->setText(QStringLiteral("Lettura dell'elenco: ") + count + QStringLiteral(" righe"));
}

void ReadingQt::closeEvent(QCloseEvent* event) {
  event->ignore();
}

} // namespace lumoscad::qt
