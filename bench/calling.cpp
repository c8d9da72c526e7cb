// A program that calls the component, as an accounting program does, and plays the person at the list.
//   bench_programma finestra COMMAND...   closes the list as soon as it is painted
//   bench_programma conferma ROWS COMMAND...   gives ROWS rows a new due date and confirms
// Prints the process' memory at its highest, when the list was painted or how long the person took, how many rows it
// had, and the result.

#include "FirstPaint.hpp"
#include "Measures.hpp"

#include <lumoscad/lumoscad.h>

#include <QAbstractButton>
#include <QDialog>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QTableView>

#include <array>
#include <cstdio>
#include <fstream>
#include <span>
#include <string>
#include <string_view>
#include <unistd.h>

namespace lumoscad::bench {
namespace {

/// Kilobytes that this process had in memory at its highest.
long Peak() {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("VmHWM:")) {
      return std::stol(line.substr(line.find_first_of("0123456789")));
    }
  }
  return 0;
}

void Key(QWidget& widget, Qt::Key key, const QString& text = {}) {
  for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease}) {
    QKeyEvent event(type, key, Qt::NoModifier, text);
    QCoreApplication::sendEvent(&widget, &event);
  }
}

/// Types a due date into the field at the top and ticks the first `rows` rows, which take it.
void Change(QDialog& window, int rows) {
  auto* const field = window.findChild<QLineEdit*>(QStringLiteral("TextScadenza"));
  auto* const list = window.findChild<QTableView*>();
  field->setFocus();
  for (const char digit : std::string_view("311230")) {
    Key(*field, static_cast<Qt::Key>(digit), QChar::fromLatin1(digit));
  }
  list->setFocus();
  constexpr int Tick = 6;
  for (int row = 0; row < rows; ++row) {
    list->setCurrentIndex(list->model()->index(row, Tick));
    Key(*list, Qt::Key_Space, QStringLiteral(" "));
  }
}

/// Answers the boxes and notes what they say.
class Answers final : public QObject {
 public:
  Answers() { QCoreApplication::instance()->installEventFilter(this); }

 protected:
  bool eventFilter(QObject* object, QEvent* event) override {
    if (event->type() == QEvent::Show && object->objectName() == QStringLiteral("MostraMessaggio")) {
      QTimer::singleShot(0, object, [object] {
        std::fprintf(stderr, "%s\n", static_cast<QDialog*>(object)->findChild<QLabel*>()->text().toUtf8().data());
        static_cast<QDialog*>(object)->findChild<QAbstractButton*>()->click();
      });
    }
    return false;
  }
};

std::string Joined(std::span<char* const> words) {
  std::string text;
  for (const char* const word : words) {
    text.append(text.empty() ? "" : " ").append(word);
  }
  return text;
}

void Command(std::span<char* const> words) {
  std::array<char, 200> result{};
  lumoscad_esegui(Joined(words).c_str(), result.data(), result.size());
  std::printf("result %s\n", result.data());
}

int Play(std::span<char* const> words) {
  const std::string_view mode = words[1];
  const auto list = QStringLiteral("LV");
  const Answers answers;
  if (mode == "finestra") {
    const FirstPaint painted(list, [] {
      auto* const window = QApplication::activeModalWidget();
      std::printf("%ld kB\n%.3f ms shown\n", Peak(), Now());
      std::printf("%d listed\n", window->findChild<QTableView*>()->model()->rowCount());
      window->close();
    });
    Command(words.subspan(2));
    return 0;
  }
  double person = 0;
  const FirstPaint painted(list, [&] {
    const auto begin = Clock::now();
    auto* const window = static_cast<QDialog*>(QApplication::activeModalWidget());
    Change(*window, std::stoi(words[2]));
    person = Milliseconds(begin);
    window->findChild<QAbstractButton*>(QStringLiteral("PictureOk"))->click();
  });
  Command(words.subspan(3));
  std::printf("%ld kB\n%.3f ms person\n", Peak(), person);
  std::fflush(stdout);
  ::_exit(0);
}

} // namespace
} // namespace lumoscad::bench

int main(int number, char** arguments) {
  const std::span<char* const> words(arguments, static_cast<std::size_t>(number));
  if (words.size() < 4) {
    std::fputs("Uso: bench_programma finestra COMANDO... | conferma RIGHE COMANDO...\n", stderr);
    return 2;
  }
  int one = 1; // Qt takes words such as -platform out
  const QApplication application(one, arguments);
  return lumoscad::bench::Play(words);
}
