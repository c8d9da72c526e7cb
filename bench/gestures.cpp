#include "GridRows.hpp"
#include "Measures.hpp"
#include "PlainTable.hpp"
#include "Pulse.hpp"
#include "Windows.hpp"
#include "platform/Services.hpp"
#include "screens/frmLumoScadenzeBanche.hpp"

#include <QTableView>
#include <QTest>

#include <cstdio>
#include <malloc.h>
#include <optional>
#include <stdexcept>
#include <string>

namespace lumoscad::bench {
namespace {

constexpr std::size_t BesidePlain = 100000; ///< the rows that a plain table shows as well
constexpr double MostBytesOfARow = 220;
constexpr const char* Typed = "numero 12 s.r.l.";
constexpr const char* NewDate = "200127";

/// How long the event loop may stand still, in milliseconds.
double Target(std::size_t rows) {
  return rows == BesidePlain ? 50 : rows > BesidePlain ? 200 : 0;
}

std::size_t Used() {
  const auto memory = mallinfo2();
  return memory.uordblks + memory.hblkhd;
}

/// How often each gesture is played.
struct Times {
  int few;
  int many;
};

/// A window is painted before it has the keyboard.
void UntilKeysArrive() {
  while (QApplication::focusWidget() == nullptr) {
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
  }
}

void Press(Qt::Key key, Qt::KeyboardModifiers held = {}) {
  QTest::keyClick(QApplication::focusWidget(), key, held);
}

/// What both sides play, in this order; a side without such a gesture leaves it out.
struct Figures {
  std::optional<Standstill> scroll, sort, filterKey, selectAll, fill, undo, redo, panel;
};

Figures PlayInOurs(Times times) {
  UntilKeysArrive();
  Pulse pulse;
  Figures seen;
  seen.scroll = pulse.Play(times.many, {}, [] { Press(Qt::Key_PageDown); });
  int heading = 0;
  seen.sort =
      pulse.Play(times.few, {}, [&heading] { Press(++heading % 2 == 0 ? Qt::Key_1 : Qt::Key_2, Qt::ControlModifier); });
  static_cast<void>(pulse.Play(1, {}, [] { Press(Qt::Key_F, Qt::ControlModifier); }));
  const QString typed = QString::fromLatin1(Typed);
  qsizetype letter = 0;
  seen.filterKey = pulse.Play(static_cast<int>(typed.size()), {},
                              [&] { QTest::keyClicks(QApplication::focusWidget(), typed.at(letter++)); });
  static_cast<void>(pulse.Play(1, {}, [] { Press(Qt::Key_Escape); }));
  seen.selectAll = pulse.Play(
      times.few, [] { Press(Qt::Key_Home, Qt::ControlModifier); }, [] { Press(Qt::Key_A, Qt::ControlModifier); });
  const auto back = [] { Press(Qt::Key_Z, Qt::ControlModifier); };
  const auto write = [] {
    auto* const list = qobject_cast<QTableView*>(QApplication::focusWidget());
    if (list == nullptr) {
      throw std::runtime_error("the list has not got the focus");
    }
    while (list->currentIndex().column() != frmLumoScadenzeBanche::NuovaScadenza) {
      Press(Qt::Key_Right);
    }
    for (const QChar digit : QString::fromLatin1(NewDate)) {
      QTest::keyClicks(QApplication::focusWidget(), digit);
    }
  };
  bool first = true;
  seen.fill = pulse.Play(
      times.few,
      [&] {
        if (!std::exchange(first, false)) {
          back();
        }
        write();
      },
      [] { Press(Qt::Key_Return); });
  seen.undo = pulse.Play(
      times.few,
      [&first] {
        if (std::exchange(first, true)) {
          Press(Qt::Key_Y, Qt::ControlModifier);
        }
      },
      back);
  seen.redo = pulse.Play(
      times.few,
      [&first, back] {
        if (!std::exchange(first, false)) {
          back();
        }
      },
      [] { Press(Qt::Key_Y, Qt::ControlModifier); });
  seen.panel = pulse.Play(times.few, {}, [] { Press(Qt::Key_F6); });
  return seen;
}

std::vector<QString> Texts(const RigheGriglia& rows) {
  std::vector<QString> cells;
  cells.reserve(rows.Quante() * GridColumns);
  for (std::size_t row = 0; row < rows.Quante(); ++row) {
    for (std::size_t column = 0; column < GridColumns; ++column) {
      const std::string_view text = rows.Testo(row, static_cast<int>(column));
      cells.push_back(QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())));
    }
  }
  return cells;
}

Figures PlayInPlain(const RigheGriglia& rows, QSize size, Times times) {
  PlainTable table(Texts(rows), GridColumns);
  table.Show(size);
  Pulse pulse;
  Figures seen;
  seen.scroll = pulse.Play(times.many, {}, [&table] { table.PageDown(); });
  int heading = 0;
  seen.sort = pulse.Play(times.few, {}, [&] { table.SortBy(++heading % 2); });
  const QString typed = QString::fromLatin1(Typed);
  qsizetype letters = 0;
  seen.filterKey = pulse.Play(static_cast<int>(typed.size()), {}, [&] { table.Filter(typed.first(++letters)); });
  static_cast<void>(pulse.Play(1, {}, [&table] { table.Filter({}); }));
  seen.selectAll = pulse.Play(
      times.few, [&table] { table.Unselect(); }, [&table] { table.SelectAll(); });
  seen.fill = pulse.Play(1, {}, [&table] { table.Fill(frmLumoScadenzeBanche::NuovaScadenza, "20/01/2027"); });
  seen.undo = pulse.Play(1, {}, [&table] { table.Undo(); });
  seen.redo = pulse.Play(1, {}, [&table] { table.Redo(); });
  return seen;
}

Row Line(const char* gesture, std::size_t rows, const Standstill& ours, const std::optional<Standstill>& plain) {
  char detail[160];
  const int length = std::snprintf(detail, sizeof detail, "99th percentile %.1f ms, work of a gesture %.1f ms",
                                   ours.percentile99, ours.work);
  if (plain) {
    std::snprintf(detail + length, sizeof detail - static_cast<std::size_t>(length),
                  "; a plain table %.1f ms, work %.1f ms", plain->worst, plain->work);
  }
  return {std::string("gesture, longest standstill: ") + gesture,
          Grouped(rows) + " rows",
          ours.worst,
          Target(rows),
          detail,
          "ms"};
}

/// What was seen of a list in its real window.
struct Played {
  Figures ours;
  Figures plain;
  std::size_t changed = 0;
  std::size_t held = 0; ///< bytes, with a change of all rows to be undone
};

Played Play(std::size_t rows, Times times) {
  const std::size_t before = Used();
  PaintedDesktop desktop;
  Services services = ActiveServices();
  services.desktop = [&desktop]() -> Desktop& { return desktop; };
  services.localTime = [] { return DateTime{2006, 6, 15}; };
  const ReplacedServices replaced(services);
  frmLumoScadenzeBanche screen;
  Griglia& grid = screen.griglia();
  FillGrid(grid.righe, rows);
  grid.Resize();
  Played seen;
  desktop.inWindow = [&](QDialog& window) {
    seen.ours = PlayInOurs(times);
    seen.held = Used() - before;
    seen.changed = grid.Gestures()->QuanteVariate();
    if (rows <= BesidePlain) {
      seen.plain = PlayInPlain(grid.righe, window.size(), times);
    }
  };
  grid.Mostra();
  return seen;
}

/// `empty` is the same of a list of one row, whose memory is the window's.
Rows Table(std::size_t rows, const Played& seen, const Played& empty) {
  if (seen.changed * 2 < rows) {
    throw std::runtime_error("the rows were not changed");
  }
  Rows table;
  const auto add = [&](const char* gesture, const auto member) {
    table.push_back(Line(gesture, rows, *(seen.ours.*member), seen.plain.*member));
  };
  add("scroll a page", &Figures::scroll);
  add("sort", &Figures::sort);
  add("a key of the filter", &Figures::filterKey);
  add("select all", &Figures::selectAll);
  add("a date for all", &Figures::fill);
  add("undo it", &Figures::undo);
  add("redo it", &Figures::redo);
  add("panel", &Figures::panel);
  const double listed = static_cast<double>(seen.held) - static_cast<double>(empty.held);
  table.push_back({"gesture, memory of the list with a date for all to undo", Grouped(rows) + " rows",
                   listed / static_cast<double>(rows), rows < BesidePlain ? 0 : MostBytesOfARow,
                   Grouped(seen.changed) + " rows changed", "B a row"});
  return table;
}

} // namespace

Rows GesturesOfALongList(Sizes sizes) {
  const Played empty = Play(1, {1, 1});
  if (sizes == Sizes::Smallest) {
    return Table(1000, Play(1000, {2, 4}), empty);
  }
  Rows table = Table(BesidePlain, Play(BesidePlain, {10, 200}), empty);
  const Rows larger = Table(1000000, Play(1000000, {5, 100}), empty);
  table.insert(table.end(), larger.begin(), larger.end());
  return table;
}

} // namespace lumoscad::bench
