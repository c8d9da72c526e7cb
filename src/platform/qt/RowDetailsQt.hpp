#pragma once

#include "platform/Desktop.hpp"
#include "platform/qt/DialogQt.hpp"

#include <vector>

namespace lumoscad::qt {

/// A small modal window with all that was read of a row, to be looked at and copied from.
class RowDetailsQt final : public DialogQt {
 public:
  RowDetailsQt(const std::vector<RowDetail>& details, QWidget* below);

 protected:
  void TakeLook() override;
};

} // namespace lumoscad::qt
