#pragma once

#include "platform/qt/DialogoQt.hpp"

#include <string_view>

namespace lumoscad::qt {

/// A modal box with a text and an OK button. CR, LF and CR LF are line breaks; the text is never taken for markup.
class MessaggioQt final : public DialogoQt {
 public:
  MessaggioQt(std::string_view testo, std::string_view titolo, QWidget* sotto);

  /// Shows the box until the person closes it; false when the calling program ended the event loop before that.
  [[nodiscard]] bool Mostra();
};

} // namespace lumoscad::qt
