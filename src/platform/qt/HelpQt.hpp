#pragma once

#include "platform/GestureTable.hpp"
#include "platform/ListReport.hpp"
#include "platform/qt/DialogQt.hpp"

#include <vector>

class QLabel;
class QLineEdit;
class QTableWidget;

namespace lumoscad::qt {

/// What can be done in a window, as the table of gestures has it: a window that finds a gesture by what is typed, and
/// leaves the list as a PDF to be printed.
class HelpQt final : public DialogQt {
 public:
  HelpQt(const std::vector<GestureEntry>& entries, QWidget* below);

 protected:
  void TakeLook() override;
  bool eventFilter(QObject* object, QEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;

 private:
  void Fill(const std::vector<GestureEntry>& entries);
  void Search(const QString& words);
  void FitCells();
  void Print();
  [[nodiscard]] PrintedTable Printed() const;

  QLineEdit* words_;
  QLabel* count_;
  QTableWidget* table_;
};

} // namespace lumoscad::qt
