#include "platform/qt/GestureKeys.hpp"

#include "platform/qt/Texts.hpp"

#include <QAction>
#include <QKeyEvent>
#include <QShortcut>
#include <QWidget>

#include <vector>

namespace lumoscad::qt {
namespace {

struct KnownKey {
  GesturePlace place;
  PressedGesture meaning;
  QKeyCombination combination;
};

std::vector<KnownKey> ReadTable() {
  std::vector<KnownKey> keys;
  for (const GestureEntry& entry : GestureTable()) {
    std::size_t which = 0;
    for (const QKeySequence& sequence : Keys(entry.gesture)) {
      keys.push_back({entry.place, {entry.gesture, which++}, sequence[0]});
    }
  }
  return keys;
}

PressedGesture Found(GesturePlace place, Qt::Key key, Qt::KeyboardModifiers held, bool any) {
  static const std::vector<KnownKey> KnownKeys = ReadTable();
  for (const KnownKey& known : KnownKeys) {
    if (known.place == place && known.combination.key() == key &&
        (any || known.combination.keyboardModifiers() == held)) {
      return known.meaning;
    }
  }
  return {};
}

} // namespace

PressedGesture PressedAt(GesturePlace place, const QKeyEvent& key, HeldWith held) {
  constexpr Qt::KeyboardModifiers Counting =
      Qt::ShiftModifier | Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier;
  // Qt has a key of its own for Shift+Tab.
  const bool backtab = key.key() == Qt::Key_Backtab;
  const Qt::Key which = backtab ? Qt::Key_Tab : static_cast<Qt::Key>(key.key());
  const Qt::KeyboardModifiers with = (key.modifiers() & Counting) | (backtab ? Qt::ShiftModifier : Qt::NoModifier);
  if (held == HeldWith::Nothing) {
    return Found(place, which, with, true);
  }
  const PressedGesture exact = Found(place, which, with, false);
  return exact == Gesture::None ? Found(place, which, with & ~Qt::KeyboardModifiers(Qt::ShiftModifier), false) : exact;
}

QList<QKeySequence> Keys(Gesture gesture) {
  QList<QKeySequence> keys;
  for (const std::string_view key : KeysOf(EntryOf(gesture))) {
    keys.append(QKeySequence(Text(key), QKeySequence::PortableText));
  }
  return keys;
}

QString KeyText(Gesture gesture) {
  return Text(ItalianKey(gesture));
}

QString NameOf(Gesture gesture) {
  return Text(EntryOf(gesture).name);
}

QAction* ActionFor(QWidget& window, Gesture gesture, const std::function<void()>& action) {
  auto* entry = new QAction(NameOf(gesture), &window);
  entry->setShortcuts(Keys(gesture));
  QObject::connect(entry, &QAction::triggered, &window, action);
  window.addAction(entry);
  return entry;
}

void Bind(QWidget& window, Gesture gesture, const std::function<void(std::size_t which)>& action) {
  std::size_t which = 0;
  for (const QKeySequence& key : Keys(gesture)) {
    auto* shortcut = new QShortcut(key, &window);
    QObject::connect(shortcut, &QShortcut::activated, &window, [action, which] { action(which); });
    ++which;
  }
}

} // namespace lumoscad::qt
