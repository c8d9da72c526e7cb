#pragma once

#include "platform/ListReport.hpp"

#include <QListWidget>

#include <cstddef>
#include <functional>
#include <vector>

namespace lumoscad::qt {

/// The panel beside a list, "EffectPanel": amounts by bank and by month before and after the changes, bars over a list
/// whose entries say the same in words. Enter, the space bar or a click on an entry asks for the rows behind it alone,
/// and Esc for all of them again.
class ListEffects final : public QListWidget {
 public:
  explicit ListEffects(QWidget* parent);

  void Show(const std::vector<EffectGroup>& groups);
  std::function<void(std::size_t group, std::size_t bar)> chosen;

 protected:
  void keyPressEvent(QKeyEvent* event) override;

 private:
  void Choose(const QListWidgetItem* item) const;

  const QListWidgetItem* filtering_ = nullptr; ///< the bar whose rows alone are in sight
};

} // namespace lumoscad::qt
