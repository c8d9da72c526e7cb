#pragma once

#include "FinestraFinta.hpp"
#include "platform/GestureTable.hpp"

#include <QDialog>

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad::test {

/// A gesture of the table that is being tried in a window: the keys are the table's own.
class Tried {
 public:
  Tried(QDialog& window, const GestureEntry& entry, std::size_t which)
      : window_(window), entry_(entry), which_(which) {}

  [[nodiscard]] QDialog& Window() const { return window_; }
  /// Which of its keys is tried.
  [[nodiscard]] std::size_t Which() const { return which_; }
  /// Presses the key where the keyboard is.
  void Press() const;

 private:
  QDialog& window_;
  const GestureEntry& entry_;
  std::size_t which_;
};

/// What a gesture is expected to do: prepares the window, presses, and asserts.
using Trial = std::function<void(const Tried&)>;
using Trials = std::map<Gesture, Trial>;

/// Presses a key, given in Qt's portable names, where the keyboard is: in what has dropped down while something has.
void PressKey(std::string_view key);
/// Each letter to whatever has the keyboard by then.
void TypeText(const char* text);
/// Runs `look` in the modal window of this name that the next gesture opens, and closes it.
void InModalWindow(const char* name, std::function<void(QDialog&)> look);

/// Tries every key of every gesture of `places` that windows of `screens` have, each in a window that `show` opens
/// anew, and fails for a gesture that no trial is there for.
void TryEveryKey(GestureScreens screens, const Trials& trials,
                 const std::function<void(const std::function<void(QDialog&)>&)>& show);

} // namespace lumoscad::test
