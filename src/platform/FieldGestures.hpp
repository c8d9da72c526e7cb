#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad {

/// The date fields of a list window.
enum class DateField {
  Cell, ///< `TextScad`, while it is open over its row
  Top   ///< `TextScadenza`
};

/// The bank boxes of a list window.
enum class BankField {
  Cell, ///< `cmbBanche2`
  Top   ///< `cmbBanche`
};

/// A day of the Gregorian calendar.
struct CalendarDate {
  int year = 1;
  int month = 1; ///< 1-12
  int day = 1;   ///< 1-31
  friend bool operator==(const CalendarDate&, const CalendarDate&) = default;
};

/// What a calendar shows of a day.
struct CalendarDay {
  CalendarDate date;
  bool today = false;
  bool weekend = false;
  std::string holiday; ///< the name of the public holiday, empty for none
  std::size_t due = 0; ///< the rows that fall due on it, as they are changed
  std::string dueText; ///< how many these are and their total, "3 rate, 12.400,00"; empty where nothing was due either
  std::string presentText; ///< the same without the changes, where that differs
};

/// Which entries of a bank box a person means who types part of a name or code.
struct BankMatches {
  std::vector<int> entries; ///< indexes in the whole list, ascending
  int best = -1;            ///< of these the one to propose, -1 where there is none
};

/// What a person can do in the date fields and bank boxes beside writing and choosing. A window calls, a screen
/// answers; what it writes into a field counts as typed.
class FieldGestures {
 public:
  FieldGestures() = default;
  FieldGestures(const FieldGestures&) = delete;
  FieldGestures& operator=(const FieldGestures&) = delete;
  virtual ~FieldGestures() = default;

  /// Move the day of a field; where no date is written in it, that of its row, or else today.
  virtual void SpostaGiorni(DateField field, int days) = 0;
  virtual void SpostaMesi(DateField field, int months) = 0;
  /// `TextScadenza` was left: a short form of a date in it is written out.
  virtual void EspandiTextScadenza() = 0;

  /// The day that a field's calendar opens on.
  [[nodiscard]] virtual CalendarDate GiornoDelCampo(DateField field) const = 0;
  /// `count` days from `first` on.
  [[nodiscard]] virtual std::vector<CalendarDay> Giorni(CalendarDate first, int count) = 0;
  /// A day was chosen in a field's calendar.
  virtual void ScegliGiorno(DateField field, CalendarDate day) = 0;

  /// The entries of a bank box in whose name or code `typed` stands; accents and case do not count.
  [[nodiscard]] virtual BankMatches BancheCon(BankField field, std::string_view typed) const = 0;
};

} // namespace lumoscad
