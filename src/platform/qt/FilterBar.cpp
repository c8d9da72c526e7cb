#include "platform/qt/FilterBar.hpp"

#include "platform/qt/GestureKeys.hpp"
#include "platform/qt/Texts.hpp"

#include <QAbstractButton>
#include <QCheckBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QScopedValueRollback>

namespace lumoscad::qt {

namespace {

constexpr int SmallestField = 220;
constexpr int FieldMargin = 5;

QString Number(std::size_t number) {
  return QLocale(QLocale::Italian, QLocale::Italy).toString(static_cast<qulonglong>(number));
}

} // namespace

FilterBar::FilterBar(QWidget* parent, int margin)
    : QFrame(parent), text_(new QLineEdit(this)), changedOnly_(new QCheckBox(QStringLiteral("Solo modificate"), this)),
      tickedOnly_(new QCheckBox(QStringLiteral("Solo spuntate"), this)), behind_(new QPushButton(this)),
      count_(new QLabel(this)) {
  setObjectName(QStringLiteral("FilterBar"));
  text_->setObjectName(QStringLiteral("TextFiltro"));
  text_->setAccessibleName(QStringLiteral("Filtro delle righe"));
  text_->setPlaceholderText(QStringLiteral("Trova: parole, importi, >1000, <31/12, banca:, conto:, -parola"));
  text_->setToolTip(QStringLiteral("Mostra solo le righe che hanno tutto ciò che è scritto (") +
                    KeyText(Gesture::Find) + QStringLiteral("; ") + KeyText(Gesture::FilterClear) +
                    QStringLiteral(" le mostra tutte)"));
  text_->setContextMenuPolicy(Qt::NoContextMenu);
  text_->setClearButtonEnabled(true);
  for (auto* button : text_->findChildren<QAbstractButton*>()) {
    button->setAccessibleName(QStringLiteral("Svuota il filtro"));
  }
  text_->setTextMargins(FieldMargin, 0, FieldMargin, 0);
  text_->setMinimumSize(SmallestField, fontMetrics().height() + 2 * FieldMargin);
  changedOnly_->setObjectName(QStringLiteral("ChangedOnly"));
  tickedOnly_->setObjectName(QStringLiteral("TickedOnly"));
  behind_->setObjectName(QStringLiteral("FilterBehind"));
  behind_->setAutoDefault(false);
  behind_->setToolTip(QStringLiteral("Toglie il filtro della barra e lascia il resto"));
  behind_->hide();
  count_->setObjectName(QStringLiteral("FilterCount"));
  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(0, 4, margin, 4);
  row->setSpacing(12);
  row->addWidget(text_, 1);
  row->addWidget(changedOnly_);
  row->addWidget(tickedOnly_);
  row->addWidget(behind_);
  row->addWidget(count_);
  for (QWidget* field : std::initializer_list<QWidget*>{text_, changedOnly_, tickedOnly_, behind_}) {
    field->installEventFilter(this);
  }
  connect(text_, &QLineEdit::textChanged, this, [this] { Tell(); });
  connect(changedOnly_, &QCheckBox::toggled, this, [this] { Tell(); });
  connect(tickedOnly_, &QCheckBox::toggled, this, [this] { Tell(); });
  connect(behind_, &QPushButton::clicked, this, [this] {
    behindName_.clear();
    Tell();
    Leave();
  });
  hide();
}

void FilterBar::TabBehind(QWidget* before) {
  for (QWidget* field : std::initializer_list<QWidget*>{text_, changedOnly_, tickedOnly_, behind_}) {
    QWidget::setTabOrder(before, field);
    before = field;
  }
}

void FilterBar::Ask() {
  asked_ = true;
  show();
  text_->setFocus(Qt::ShortcutFocusReason);
  text_->selectAll();
}

void FilterBar::Tell() {
  if (!following_ && changed) {
    changed({Utf8(text_->text()), changedOnly_->isChecked(), tickedOnly_->isChecked(), behindName_});
  }
}

void FilterBar::Follow(const ListFilter& filter, std::size_t inSight, std::size_t all) {
  const QScopedValueRollback<bool> mute(following_, true);
  if (Utf8(text_->text()) != filter.text) {
    text_->setText(Text(filter.text));
  }
  changedOnly_->setChecked(filter.changedOnly);
  tickedOnly_->setChecked(filter.tickedOnly);
  count_->setText(filter.Empty() ? QString() : Number(inSight) + QStringLiteral(" di ") + Number(all));
  behindName_ = filter.behind;
  behind_->setText(Text(filter.behind) + QStringLiteral("  ✕"));
  behind_->setAccessibleName(QStringLiteral("Togli il filtro ") + Text(filter.behind));
  behind_->setVisible(!filter.behind.empty());
  setVisible(asked_ || !filter.Empty());
}

void FilterBar::Leave() {
  if (left) {
    left();
  }
}

bool FilterBar::eventFilter(QObject* object, QEvent* event) {
  if (event->type() != QEvent::KeyPress) {
    return QFrame::eventFilter(object, event);
  }
  const auto& key = static_cast<const QKeyEvent&>(*event);
  if (key.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)) {
    return false;
  }
  switch (PressedAt(GesturePlace::Filter, key).gesture) {
  case Gesture::FilterClear:
    if (changed) {
      changed({});
    }
    Leave();
    asked_ = false;
    hide();
    return true;
  case Gesture::FilterDone:
    Leave();
    return true;
  default:
    return false;
  }
}

} // namespace lumoscad::qt
