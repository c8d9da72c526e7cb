#pragma once

#include "platform/qt/DialogQt.hpp"

#include <QElapsedTimer>

#include <cstddef>

class QLabel;

namespace lumoscad::qt {

/// The small modal window that says how far the reading of a list is. It runs no event loop of its own and takes no
/// input but Esc.
class ReadingQt final : public DialogQt {
 public:
  explicit ReadingQt(QWidget* below);

  /// Says how many rows have been read; often called, it writes only as often as one can read.
  void Tell(std::size_t rows);
  /// True once the person has pressed Esc.
  [[nodiscard]] bool GivenUp() const noexcept { return givenUp_; }

  void reject() override { givenUp_ = true; }

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  QLabel* rows_;
  QElapsedTimer told_;
  bool givenUp_ = false;
};

} // namespace lumoscad::qt
