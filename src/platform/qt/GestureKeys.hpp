#pragma once

#include "platform/GestureTable.hpp"

#include <QKeySequence>
#include <QList>
#include <QString>

#include <cstddef>
#include <functional>

class QAction;
class QKeyEvent;
class QWidget;

namespace lumoscad::qt {

/// A gesture that a key stands for, and which of its keys it was.
struct PressedGesture {
  Gesture gesture = Gesture::None;
  std::size_t which = 0; ///< counted from 0, in the table's order

  [[nodiscard]] bool operator==(Gesture other) const { return gesture == other; }
};

/// Which of the keys that are held down beside another one decide what it means.
enum class HeldWith {
  All,     ///< all of them; where no gesture of the place has Shift with that key, Shift does not count
  Nothing, ///< none: the key means the same whatever is held with it
};

/// What a key that is pressed at a place means there, by the table of gestures.
[[nodiscard]] PressedGesture PressedAt(GesturePlace place, const QKeyEvent& key, HeldWith held = HeldWith::All);
/// The keys of a gesture.
[[nodiscard]] QList<QKeySequence> Keys(Gesture gesture);
/// The first of them in Italian, for a text that a person reads.
[[nodiscard]] QString KeyText(Gesture gesture);
[[nodiscard]] QString NameOf(Gesture gesture);
/// Has `window` do this at each key of a gesture, wherever in it the keyboard is; `action` is told which key it was.
void Bind(QWidget& window, Gesture gesture, const std::function<void(std::size_t which)>& action);
/// The same as an action of `window`, under the gesture's name, for a menu to show.
QAction* ActionFor(QWidget& window, Gesture gesture, const std::function<void()>& action);

} // namespace lumoscad::qt
