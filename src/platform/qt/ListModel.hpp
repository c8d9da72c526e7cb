#pragma once

#include "platform/Desktop.hpp"

#include <QAbstractTableModel>

#include <exception>
#include <functional>
#include <optional>
#include <string_view>
#include <vector>

namespace lumoscad::qt {

/// The rows of a list window as a Qt model. It keeps no row of its own: every cell is read from the
/// screen when it is painted, so a million rows cost no more than twenty.
class ListModel final : public QAbstractTableModel {
 public:
  /// True for an editable cell whose new value differs from the present one.
  static constexpr int ChangedRole = Qt::UserRole;
  /// For a tick cell, the key of its picture: "CHKON" or "CHKOFF".
  static constexpr int ReportIconRole = Qt::UserRole + 1;

  explicit ListModel(const ListWindow& window, QObject* parent = nullptr);

  /// Who knows what is looked for; null where nothing can be.
  void SetGestures(const ListGestures* gestures) { gestures_ = gestures; }

  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] QVariant data(const QModelIndex& cell, int role = Qt::DisplayRole) const override;
  [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                    int role = Qt::DisplayRole) const override;
  [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& cell) const override;

  /// The set or the order of the rows changed.
  void Reload();
  /// The content of the rows from `first` to `last` may have changed.
  void Refresh(int first, int last);
  /// The kind of a column; plain text for a column that is not there.
  [[nodiscard]] ListColumn::Kind Kind(int column) const;

  // What a cell shows, without the detour through a QVariant. Of a row that is no longer there it is nothing.

  /// The text of a cell as UTF-8; it holds until the next cell is asked for.
  [[nodiscard]] std::string_view CellText(int row, int column) const;
  /// True for an editable cell whose new value differs from the present one.
  [[nodiscard]] bool CellChanged(int row, int column) const;
  /// What tells the row from others that look the same, where this cell shows it; it holds as a text does.
  [[nodiscard]] std::string_view CellDistinction(int row, int column) const;
  /// The bytes of a cell's text that the list's filter looks for: each first one, and the one behind the last.
  [[nodiscard]] std::vector<ListGestures::Places> CellHits(int row, int column) const;
  /// Whether something is looked for at all.
  [[nodiscard]] bool Searched() const;
  /// Whether a tick is set.
  [[nodiscard]] std::optional<bool> CellTicked(int row, int column) const;

  /// What a person calls a column.
  [[nodiscard]] QString Caption(int column) const;
  /// What is in the place of a new value now; empty for a cell that has none.
  [[nodiscard]] QString PresentText(const QModelIndex& cell) const;

  /// True when the person has changed a cell of any row.
  [[nodiscard]] bool ContainsChanges() const;

  /// Told of what a callback threw while a cell was read: painting cannot let it through.
  std::function<void(std::exception_ptr)> fault;

 private:
  /// What `read` gives back of a row that is there, and nothing when it throws.
  template <class Answer> [[nodiscard]] Answer Guarded(int row, const auto& read) const;
  [[nodiscard]] QVariant Read(std::size_t row, int column, int role) const;
  [[nodiscard]] QString SpokenText(std::size_t row, int column) const;
  [[nodiscard]] QString TextOfCell(std::size_t row, int column) const;
  [[nodiscard]] bool Changed(std::size_t row, int column) const;

  const ListWindow& window_;
  const ListGestures* gestures_ = nullptr;
  int rows_ = 0;
};

} // namespace lumoscad::qt
