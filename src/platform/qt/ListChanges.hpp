#pragma once

#include "platform/ListReport.hpp"

#include <QAbstractListModel>
#include <QListView>

#include <functional>
#include <vector>

namespace lumoscad::qt {

/// The changes of a list as sentences, each read when it is to be seen.
class ChangesModel final : public QAbstractListModel {
 public:
  ChangesModel(const ListReport& report, QObject* parent) : QAbstractListModel(parent), report_(report) {}

  void Reload();
  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;

 private:
  const ListReport& report_;
  int rows_ = 0;
};

/// The list of changes, above the foot: "ChangesList". Del takes those back that are selected.
class ListChanges final : public QListView {
 public:
  ListChanges(const ListReport& report, QWidget* parent);

  void Reload();
  std::function<void(const std::vector<std::size_t>&)> takenBack; ///< Del, with the places of the sentences

 protected:
  void keyPressEvent(QKeyEvent* event) override;

 private:
  ChangesModel model_;
};

} // namespace lumoscad::qt
