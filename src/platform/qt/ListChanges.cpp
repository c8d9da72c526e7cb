#include "platform/qt/ListChanges.hpp"

#include "platform/qt/GestureKeys.hpp"
#include "platform/qt/Look.hpp"
#include "platform/qt/Texts.hpp"

#include <QKeyEvent>

#include <algorithm>
#include <limits>

namespace lumoscad::qt {
namespace {

constexpr int LinesInSight = 5;

} // namespace

void ChangesModel::Reload() {
  beginResetModel();
  rows_ = static_cast<int>(std::min<std::size_t>(report_.QuanteFrasi(), std::numeric_limits<int>::max()));
  endResetModel();
}

int ChangesModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : rows_;
}

QVariant ChangesModel::data(const QModelIndex& index, int role) const {
  const bool shown = role == Qt::DisplayRole || role == Qt::ToolTipRole || role == Qt::AccessibleTextRole;
  return index.isValid() && shown ? Text(report_.Frase(static_cast<std::size_t>(index.row()))) : QVariant();
}

ListChanges::ListChanges(const ListReport& report, QWidget* parent) : QListView(parent), model_(report, this) {
  setObjectName(QStringLiteral("ChangesList"));
  setAccessibleName(QStringLiteral("Variazioni"));
  setToolTip(QStringLiteral("%1 rimette com'era").arg(KeyText(Gesture::TakeBack)));
  setSelectionMode(ExtendedSelection);
  setUniformItemSizes(true);
  setEditTriggers(NoEditTriggers);
  setTextElideMode(Qt::ElideRight);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setModel(&model_);
}

void ListChanges::Reload() {
  const int row = currentIndex().row();
  model_.Reload();
  if (model_.rowCount() > 0) {
    setCurrentIndex(model_.index(std::clamp(row, 0, model_.rowCount() - 1)));
  }
  setFixedHeight(LinesInSight * fontMetrics().lineSpacing() + 2 * frameWidth() + 6);
}

void ListChanges::keyPressEvent(QKeyEvent* event) {
  const bool plain = !(event->modifiers() & ~Qt::KeyboardModifiers(Qt::KeypadModifier));
  if (!plain || PressedAt(GesturePlace::Changes, *event) != Gesture::TakeBack) {
    QListView::keyPressEvent(event);
    return;
  }
  std::vector<std::size_t> places;
  for (const QModelIndex& index : selectionModel()->selectedIndexes()) {
    places.push_back(static_cast<std::size_t>(index.row()));
  }
  std::sort(places.begin(), places.end());
  takenBack(places);
}

} // namespace lumoscad::qt
