#include "platform/qt/MessageQt.hpp"

#include "platform/qt/Look.hpp"
#include "platform/qt/Texts.hpp"

#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>

namespace lumoscad::qt {

namespace {

constexpr int SmallestWidth = 320;
constexpr int LargestWidth = 620;
/// Beyond these the text goes into a scrolling field, so that OK stays on the screen.
constexpr qsizetype MaxCharacters = 1200;
constexpr qsizetype MaxRows = 16;

QString WithLineBreaks(std::string_view text) {
  QString result = Text(text);
  result.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
  result.replace(QLatin1Char('\r'), QLatin1Char('\n'));
  return result;
}

QWidget* Label(const QString& text, QWidget* parent) {
  auto* label = new QLabel(parent);
  label->setTextFormat(Qt::PlainText);
  label->setText(text);
  label->setWordWrap(true);
  label->setTextInteractionFlags(Qt::TextSelectableByMouse);
  return label;
}

/// As wide as its longest line, within bounds.
void Widen(QLabel& label) {
  int width = look::Scaled(SmallestWidth);
  for (const QString& row : label.text().split(QLatin1Char('\n'))) {
    width = std::max(width, label.fontMetrics().horizontalAdvance(row) + 4);
  }
  label.setFixedWidth(std::min(width, look::Scaled(LargestWidth)));
}

QWidget* LongField(const QString& text, QWidget* parent) {
  auto* field = new QPlainTextEdit(text, parent);
  field->setReadOnly(true);
  field->setTabChangesFocus(true);
  field->setContextMenuPolicy(Qt::NoContextMenu);
  return field;
}

} // namespace

MessageQt::MessageQt(std::string_view text, std::string_view title, QWidget* below)
    : DialogQt(below, Qt::Dialog | Qt::WindowTitleHint | Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint) {
  setObjectName(QStringLiteral("MostraMessaggio"));
  setWindowTitle(Text(title));
  const QString body = WithLineBreaks(text);
  const bool longest = body.size() > MaxCharacters || body.count(QLatin1Char('\n')) >= MaxRows;
  QWidget* writing = longest ? LongField(body, this) : Label(body, this);
  writing->setObjectName(QStringLiteral("lblMessaggio"));
  setAccessibleDescription(body.left(MaxCharacters));

  auto* ok = new QPushButton(QStringLiteral("OK"), this);
  ok->setObjectName(QStringLiteral("PulsanteOk"));
  ok->setDefault(true);
  connect(ok, &QPushButton::clicked, this, &QDialog::accept);

  auto* buttons = new QHBoxLayout;
  buttons->addStretch(1);
  buttons->addWidget(ok);
  auto* stack = new QVBoxLayout(this);
  stack->setContentsMargins(20, 18, 20, 14);
  stack->setSpacing(16);
  stack->addWidget(writing, 1);
  stack->addLayout(buttons);
  if (!longest) {
    stack->setSizeConstraint(QLayout::SetFixedSize);
  }
  TakeLook();
  ok->setFocus();
}

void MessageQt::TakeLook() {
  look::Dress(*this);
  findChild<QPushButton*>(QStringLiteral("PulsanteOk"))->setMinimumWidth(look::Scaled(96));
  if (auto* label = findChild<QLabel*>(QStringLiteral("lblMessaggio"))) {
    Widen(*label);
  } else if (auto* field = findChild<QPlainTextEdit*>(QStringLiteral("lblMessaggio"))) {
    field->setMinimumSize(look::Scaled(LargestWidth), look::Scaled(260));
  }
}

bool MessageQt::Display() {
  exec();
  return isHidden();
}

} // namespace lumoscad::qt
