#include "platform/qt/RowDetailsQt.hpp"

#include "platform/qt/Look.hpp"
#include "platform/qt/Texts.hpp"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QVBoxLayout>

#include <algorithm>

namespace lumoscad::qt {

namespace {

constexpr int SheetWidth = 420;
constexpr int TallestArea = 560;

QLabel* Written(const std::string& text, Qt::TextInteractionFlags flags, QWidget* parent) {
  auto* label = new QLabel(parent);
  label->setTextFormat(Qt::PlainText);
  label->setText(Text(text));
  label->setTextInteractionFlags(flags);
  label->setWordWrap(true);
  return label;
}

} // namespace

RowDetailsQt::RowDetailsQt(const std::vector<RowDetail>& details, QWidget* below)
    : DialogQt(below, Qt::Dialog | Qt::WindowTitleHint | Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint) {
  setObjectName(QStringLiteral("FormDettagli"));
  setWindowTitle(QStringLiteral("Dettagli della riga"));
  auto* area = new QScrollArea(this);
  area->setObjectName(QStringLiteral("AreaDettagli"));
  area->setAccessibleName(windowTitle());
  area->setFrameShape(QFrame::NoFrame);
  area->setWidgetResizable(true);
  auto* sheet = new QWidget(area);
  auto* grid = new QGridLayout(sheet);
  grid->setContentsMargins(0, 0, 8, 0);
  grid->setHorizontalSpacing(16);
  grid->setVerticalSpacing(6);
  grid->setColumnStretch(1, 1);
  int row = 0;
  for (const RowDetail& detail : details) {
    QLabel* caption = Written(detail.caption, Qt::NoTextInteraction, sheet);
    caption->setWordWrap(false);
    look::MarkAsFaint(*caption);
    QLabel* value = Written(detail.value, Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard, sheet);
    value->setObjectName(QStringLiteral("Dettaglio%1").arg(row));
    value->setAccessibleName(Text(detail.caption) + QStringLiteral(": ") + value->text());
    grid->addWidget(caption, row, 0, Qt::AlignTop);
    grid->addWidget(value, row, 1);
    ++row;
  }
  area->setWidget(sheet);
  auto* close = new QPushButton(QStringLiteral("&Chiudi"), this);
  close->setObjectName(QStringLiteral("PulsanteChiudi"));
  close->setDefault(true);
  connect(close, &QPushButton::clicked, this, &QDialog::accept);
  auto* buttons = new QHBoxLayout;
  buttons->addStretch(1);
  buttons->addWidget(close);
  auto* stack = new QVBoxLayout(this);
  stack->setContentsMargins(20, 18, 20, 14);
  stack->setSpacing(14);
  stack->addWidget(area, 1);
  stack->addLayout(buttons);
  RowDetailsQt::TakeLook();
  close->setFocus();
}

void RowDetailsQt::TakeLook() {
  look::Dress(*this);
  auto* area = findChild<QScrollArea*>(QStringLiteral("AreaDettagli"));
  const QSize sheet = area->widget()->sizeHint();
  area->setMinimumWidth(
      std::max(look::Scaled(SheetWidth), sheet.width() + area->verticalScrollBar()->sizeHint().width()));
  area->setMinimumHeight(std::min(sheet.height(), look::Scaled(TallestArea)));
}

} // namespace lumoscad::qt
