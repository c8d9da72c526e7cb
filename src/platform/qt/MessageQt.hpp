#pragma once

#include "platform/qt/DialogQt.hpp"

#include <string_view>

namespace lumoscad::qt {

/// A modal box with a text and an OK button. CR, LF and CR LF are line breaks; the text is never taken for markup.
class MessageQt final : public DialogQt {
 public:
  MessageQt(std::string_view text, std::string_view title, QWidget* below);

  /// Shows the box until the person closes it; false when the calling program ended the event loop before that.
  [[nodiscard]] bool Display();

 protected:
  void TakeLook() override;
};

} // namespace lumoscad::qt
