#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad {

/// Where in a window a gesture counts.
enum class GesturePlace : std::uint8_t {
  Window,    ///< wherever the keyboard is
  List,      ///< on the rows
  Editor,    ///< in the cell that is open
  DateField, ///< in a date cell that is open, and in the date field at the top
  BankBox,   ///< in a bank cell that is open, and in the bank field at the top
  Calendar,
  Filter,
  Changes, ///< the list of changes as sentences
  Effects, ///< the panel of what the changes come to
  Help,
  Mouse ///< no key; what is done with the mouse
};

/// Which windows have a gesture.
enum class GestureScreens : std::uint8_t { Lists, Item, All };

/// What a person can do. A movement says in which direction by the place of its key.
enum class Gesture : std::uint8_t {
  None, ///< no gesture of the table

  Help,
  Confirm,
  ConfirmButton,
  Leave,
  LeaveButton,
  NextField,
  FirstField,
  SecondField,
  SelectEverything,
  Sort, ///< the heading of this number
  Find,
  Undo,
  Redo,
  Copy,
  Paste,
  Save,
  Effects,
  Changes,
  Details,
  ResetLayout,
  InvertSelection,
  SelectAccount,
  SelectItem,
  SelectBank,
  SelectMonth,
  SelectOverdue,

  Move,   ///< in the order of `Movement`
  Across, ///< left, right
  Tick,
  OpenCell,
  TypeDigit,
  JumpTo,
  Menu,
  SelectAll,
  Extend,    ///< in the order of `Movement`
  MoveAlone, ///< in the order of `Movement`, as far as it goes
  AddRange,  ///< in the order of `Movement`
  ToggleRow,
  TickUpTo,

  CloseCell,
  NextCell, ///< forward, back
  AbandonCell,

  DayLater,
  DayEarlier,
  MonthLater,
  MonthEarlier,
  OpenCalendar,
  ShortDate,

  NarrowBanks,
  WidenBanks,
  ChooseBank,
  CloseBanks,

  CalendarDay,     ///< left, right
  CalendarWeek,    ///< up, down
  CalendarMonth,   ///< back, forward
  CalendarEndDays, ///< first, last
  CalendarChoose,
  CalendarClose,

  FilterDone,
  FilterClear,

  TakeBack,

  FilterBehind,
  EffectsClear,

  HelpSearch,
  HelpRows,
  HelpPrint,
  HelpClose,

  MouseTick,
  MouseOpen,
  MouseSelect,
  MouseTickUpTo,
  MouseDrag,
  MouseMenu,
  MouseSort,
  MouseWidth,
  MouseFit,
  MouseBar
};

/// The directions of a movement from row to row, in the order of its keys.
enum class Movement : std::uint8_t { Up, Down, PageUp, PageDown, First, Last };

/// A line of the table of gestures, from which come the keys that the windows heed, what they say of them, the help
/// behind F1 and the guide's chapter.
struct GestureEntry {
  Gesture gesture = Gesture::None;
  GesturePlace place = GesturePlace::Window;
  GestureScreens screens = GestureScreens::All;
  std::string_view keys;  ///< "Ctrl+Y; Ctrl+Shift+Z", in Qt's portable names; empty where no single key does it
  std::string_view typed; ///< Italian: what is done instead of a single key
  std::string_view name;  ///< Italian, as a menu has it
  std::string_view help;  ///< Italian: what it does, a sentence without its end
};

/// All gestures, those of a place together, in the order in which they are told.
[[nodiscard]] std::span<const GestureEntry> GestureTable();
/// The line of a gesture; raises `std::out_of_range` for one that has none.
[[nodiscard]] const GestureEntry& EntryOf(Gesture gesture);
/// Italian, as a heading: "Nell'elenco".
[[nodiscard]] std::string_view PlaceName(GesturePlace place);
/// The keys one by one, in Qt's portable names.
[[nodiscard]] std::vector<std::string_view> KeysOf(const GestureEntry& entry);
/// A key as Italian keyboards name it: "Ctrl+Maiusc+Z" of "Ctrl+Shift+Z".
[[nodiscard]] std::string ItalianKey(std::string_view key);
/// All that is pressed or done for a gesture, in Italian.
[[nodiscard]] std::string ItalianKeys(const GestureEntry& entry);
/// The first key of a gesture in Italian, for a tool tip: "Ctrl+Invio".
[[nodiscard]] std::string ItalianKey(Gesture gesture);

} // namespace lumoscad
