#include "TuttiITasti.hpp"

#include <QApplication>
#include <QKeySequence>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

namespace lumoscad::test {
namespace {

QWidget* Keyboard() {
  QWidget* const popup = QApplication::activePopupWidget();
  QWidget* const focus = popup == nullptr ? QApplication::focusWidget() : popup->focusWidget();
  return focus == nullptr ? popup : focus;
}

} // namespace

void PressKey(std::string_view key) {
  QWidget* const keyboard = Keyboard();
  ASSERT_NE(keyboard, nullptr);
  const QKeySequence sequence(QString::fromUtf8(key.data(), static_cast<qsizetype>(key.size())),
                              QKeySequence::PortableText);
  ASSERT_EQ(sequence.count(), 1) << key;
  const Qt::KeyboardModifiers held = sequence[0].keyboardModifiers();
  const bool back = sequence[0].key() == Qt::Key_Tab && held.testFlag(Qt::ShiftModifier);
  QTest::keyClick(keyboard, back ? Qt::Key_Backtab : sequence[0].key(), held);
}

void TypeText(const char* text) {
  for (const QChar letter : QString::fromUtf8(text)) {
    QTest::keyClicks(Keyboard(), letter);
  }
}

void InModalWindow(const char* name, std::function<void(QDialog&)> look) {
  QTimer::singleShot(0, qApp, [name, look = std::move(look)] {
    auto* window = qobject_cast<QDialog*>(QApplication::activeModalWidget());
    ASSERT_NE(window, nullptr);
    EXPECT_EQ(window->objectName().toStdString(), name);
    window->activateWindow(); // as a desktop does
    // A window counts as active while the one below it is.
    const auto active = [window] { return QApplication::activeWindow() == window; };
    if (window->objectName() == QLatin1String(name) && QTest::qWaitFor(active)) {
      try {
        look(*window);
      } catch (const std::exception& error) {
        ADD_FAILURE() << error.what();
      }
    }
    if (window->objectName() == QLatin1String(name)) {
      window->close();
    }
  });
}

void Tried::Press() const {
  PressKey(KeysOf(entry_).at(which_));
}

void TryEveryKey(GestureScreens screens, const Trials& trials,
                 const std::function<void(const std::function<void(QDialog&)>&)>& show) {
  std::size_t keys = 0;
  for (const GestureEntry& entry : GestureTable()) {
    if (entry.screens != screens && entry.screens != GestureScreens::All) {
      continue;
    }
    const auto trial = trials.find(entry.gesture);
    if (trial == trials.end()) {
      ADD_FAILURE() << "nothing tries \"" << entry.name << "\" (" << PlaceName(entry.place) << ")";
      continue;
    }
    const std::size_t count = std::max<std::size_t>(KeysOf(entry).size(), 1);
    for (std::size_t which = 0; which < count; ++which) {
      SCOPED_TRACE(std::string(entry.name) + ", " + std::string(PlaceName(entry.place)) + ", key " +
                   std::to_string(which + 1));
      bool shown = false;
      show([&](QDialog& window) {
        shown = true;
        trial->second(Tried(window, entry, which));
      });
      EXPECT_TRUE(shown);
      ++keys;
    }
  }
  EXPECT_GT(keys, GestureTable().size() / 2);
}

} // namespace lumoscad::test
