#include "platform/qt/ListFoot.hpp"

#include "platform/qt/AccessibleFactory.hpp"
#include "platform/qt/GestureKeys.hpp"

#include <QFontMetrics>
#include <QHBoxLayout>
#include <QPainter>
#include <QStyle>
#include <QToolButton>
#include <QVBoxLayout>

namespace lumoscad::qt {

ShortenedLabel::ShortenedLabel(const QString& name, QWidget* parent) : QLabel(parent) {
  setObjectName(name);
  setTextFormat(Qt::PlainText);
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
}

void ShortenedLabel::SetWholeText(const QString& text) {
  if (text != QLabel::text()) {
    setText(text);
    setToolTip(text);
    QString spoken = text; // without the points that only the eye needs
    spoken.remove(QStringLiteral("·  ")).replace(QStringLiteral("  "), QStringLiteral(", "));
    setAccessibleName(spoken);
    Announce(*this);
  }
}

QSize ShortenedLabel::sizeHint() const {
  return {0, fontMetrics().height()};
}

void ShortenedLabel::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  style()->drawItemText(&painter, contentsRect(), Qt::AlignLeft | Qt::AlignVCenter, palette(), isEnabled(),
                        fontMetrics().elidedText(text(), Qt::ElideRight, contentsRect().width()), foregroundRole());
}

void ListFoot::Build(QLabel* rows, QWidget* parent, QVBoxLayout& column) {
  effect = new ShortenedLabel(QStringLiteral("FootEffect"), parent);
  notice = new ShortenedLabel(QStringLiteral("FootNotice"), parent);
  changes = new QToolButton(parent);
  changes->setObjectName(QStringLiteral("FootChanges"));
  changes->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
  changes->setArrowType(Qt::RightArrow);
  changes->setCheckable(true);
  changes->setFocusPolicy(Qt::NoFocus);
  changes->setToolTip(QStringLiteral("Mostra le variazioni una per una (%1)").arg(KeyText(Gesture::Changes)));
  changes->hide();
  notice->hide();
  auto* line = new QHBoxLayout;
  line->setSpacing(8);
  line->addWidget(rows);
  line->addWidget(effect, 1);
  line->addWidget(changes);
  column.addLayout(line);
  column.addWidget(notice);
}

} // namespace lumoscad::qt
