#include "platform/qt/ListModel.hpp"

#include "platform/qt/Texts.hpp"

#include <algorithm>
#include <limits>

namespace lumoscad::qt {

using Column = ListColumn::Kind;

ListModel::ListModel(const ListWindow& window, QObject* parent) : QAbstractTableModel(parent), window_(window) {
  Reload();
}

int ListModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : rows_;
}

int ListModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(window_.Description().columns.size());
}

template <class Answer> Answer ListModel::Guarded(int row, const auto& read) const {
  try {
    const auto place = static_cast<std::size_t>(row);
    // While a gesture runs, the screen may already have fewer rows than this model was told of.
    return place < window_.RowCount() ? Answer(read(place)) : Answer();
  } catch (...) {
    if (fault) {
      fault(std::current_exception());
    }
    return {};
  }
}

QVariant ListModel::data(const QModelIndex& cell, int role) const {
  return cell.isValid() ? Guarded<QVariant>(cell.row(), [&](std::size_t row) { return Read(row, cell.column(), role); })
                        : QVariant();
}

std::string_view ListModel::CellText(int row, int column) const {
  return Guarded<std::string_view>(row, [&](std::size_t place) { return window_.CellText(place, column); });
}

bool ListModel::CellChanged(int row, int column) const {
  return Guarded<bool>(row, [&](std::size_t place) { return Changed(place, column); });
}

std::string_view ListModel::CellDistinction(int row, int column) const {
  return Guarded<std::string_view>(row, [&](std::size_t place) { return window_.Distinzione(place, column); });
}

bool ListModel::Searched() const {
  return gestures_ != nullptr && !gestures_->Filtro().text.empty();
}

std::vector<ListGestures::Places> ListModel::CellHits(int row, int column) const {
  return Guarded<std::vector<ListGestures::Places>>(
      row, [&](std::size_t place) { return gestures_->Trovati(place, column); });
}

std::optional<bool> ListModel::CellTicked(int row, int column) const {
  return Guarded<std::optional<bool>>(row, [&](std::size_t place) { return window_.Ticked(place, column); });
}

QVariant ListModel::Read(std::size_t row, int column, int role) const {
  const Column kind = Kind(column);
  switch (role) {
  case Qt::DisplayRole:
    return kind == Column::Tick ? QVariant() : QVariant(TextOfCell(row, column));
  case Qt::CheckStateRole:
    return kind == Column::Tick ? QVariant(window_.Ticked(row, column) ? Qt::Checked : Qt::Unchecked) : QVariant();
  case Qt::TextAlignmentRole:
    return QVariant::fromValue(Qt::AlignVCenter | (kind == Column::Amount ? Qt::AlignRight : Qt::AlignLeft));
  case Qt::AccessibleTextRole:
    return kind == Column::Tick
               ? QVariant(window_.Ticked(row, column) ? QStringLiteral("spuntata") : QStringLiteral("non spuntata"))
               : QVariant(SpokenText(row, column));
  case ReportIconRole:
    return kind == Column::Tick
               ? QVariant(window_.Ticked(row, column) ? QStringLiteral("CHKON") : QStringLiteral("CHKOFF"))
               : QVariant();
  case ChangedRole:
    return Changed(row, column);
  default:
    return {};
  }
}

QString ListModel::SpokenText(std::size_t row, int column) const {
  QStringList parts{TextOfCell(row, column)};
  if (const std::string_view distinction = window_.Distinzione(row, column); !distinction.empty()) {
    parts.append(Text(distinction));
  }
  if (Changed(row, column)) {
    parts.append(QStringLiteral("variata"));
  }
  return parts.join(QStringLiteral(", "));
}

QString ListModel::TextOfCell(std::size_t row, int column) const {
  return Text(window_.CellText(row, column));
}

bool ListModel::Changed(std::size_t row, int column) const {
  const int present = window_.Description().columns[static_cast<std::size_t>(column)].present;
  if (present < 0) {
    return false;
  }
  // Both texts may live in one buffer of the screen, so the first is copied before the second is asked for.
  const std::string newName(window_.CellText(row, column));
  // A blank is what a refused date leaves behind: it changes nothing.
  return newName.find_first_not_of(' ') != std::string::npos && newName != window_.CellText(row, present);
}

QString ListModel::Caption(int column) const {
  if (column < 0 || column >= columnCount()) {
    return {};
  }
  const ListColumn& described = window_.Description().columns[static_cast<std::size_t>(column)];
  if (!described.caption.empty()) {
    return Text(described.caption);
  }
  return described.headingText.empty() && described.kind == Column::Tick ? QStringLiteral("Spunta")
                                                                         : Text(described.headingText);
}

QString ListModel::PresentText(const QModelIndex& cell) const {
  const auto column = static_cast<std::size_t>(cell.column());
  const int present = cell.isValid() ? window_.Description().columns[column].present : -1;
  return present < 0 ? QString() : Text(CellText(cell.row(), present));
}

bool ListModel::ContainsChanges() const {
  for (int row = 0; row < rows_; ++row) {
    for (int column = 0; column < columnCount(); ++column) {
      if (Changed(static_cast<std::size_t>(row), column)) {
        return true;
      }
    }
  }
  return false;
}

QVariant ListModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section < 0 || section >= columnCount()) {
    return {};
  }
  return Text(window_.Description().columns[static_cast<std::size_t>(section)].headingText);
}

Qt::ItemFlags ListModel::flags(const QModelIndex& cell) const {
  return cell.isValid() ? Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren : Qt::NoItemFlags;
}

void ListModel::Reload() {
  beginResetModel();
  rows_ = static_cast<int>(std::min<std::size_t>(window_.RowCount(), std::numeric_limits<int>::max() / 64));
  endResetModel();
}

void ListModel::Refresh(int first, int last) {
  last = std::min(last, rows_ - 1);
  if (first >= 0 && first <= last) {
    emit dataChanged(index(first, 0), index(last, columnCount() - 1));
  }
}

ListColumn::Kind ListModel::Kind(int column) const {
  if (column < 0 || column >= columnCount()) {
    return Column::Text;
  }
  return window_.Description().columns[static_cast<std::size_t>(column)].kind;
}

} // namespace lumoscad::qt
