#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad {

/// One bar of the panel of effects: what a bank or a month has, before the changes and after them.
struct EffectBar {
  std::string name;
  std::string before; ///< the amount with its currency
  std::string after;
  int beforePart = 0; ///< thousandths of the largest amount of its currency in the group
  int afterPart = 0;
  bool negativeBefore = false;
  bool negativeAfter = false;
  bool changed = false;
  bool filters = false; ///< the rows behind it alone are in sight
};

/// Bars that belong together, "Per banca" or "Per mese".
struct EffectGroup {
  std::string title;
  std::vector<EffectBar> bars;
};

/// Rows as the clipboard takes them.
struct CopiedRows {
  std::string text; ///< lines of cells between tabulators
  std::string html; ///< a table
};

/// Rows as a table to be printed.
struct PrintedTable {
  struct Column {
    std::string heading;
    int width = 0; ///< twips
    bool amount = false;
  };
  std::string title;
  std::vector<Column> columns;
  std::vector<std::vector<std::string>> rows;
  std::vector<std::string> totals; ///< lines below the rows
  bool wholeTexts = false;         ///< a text that is too long goes on in another line; otherwise it is cut
};

/// What a list says of itself beside its rows, and what is taken from it and brought into it. A window calls, a screen
/// answers. What one of these did is the notice of the list's state, as with any gesture.
class ListReport {
 public:
  ListReport() = default;
  ListReport(const ListReport&) = delete;
  ListReport& operator=(const ListReport&) = delete;
  virtual ~ListReport() = default;

  /// The parts of the foot behind the number of rows: what is selected, ticked and changed, with exact sums.
  [[nodiscard]] virtual std::vector<std::string> Piede() const = 0;

  /// The changes as sentences, in the order of the rows, and taking some of them back.
  [[nodiscard]] virtual std::size_t QuanteFrasi() const = 0;
  [[nodiscard]] virtual std::string Frase(std::size_t which) const = 0;
  virtual void RiprendiFrasi(const std::vector<std::size_t>& which) = 0;

  [[nodiscard]] virtual std::vector<EffectGroup> Effetto() = 0;
  /// Shows the rows alone that lie behind a bar, as they are or as they will be; the same bar once more shows all
  /// again.
  virtual void ScegliDietro(std::size_t group, std::size_t bar) = 0;

  // The selected rows in sight, where several are selected, or else all rows in sight.

  [[nodiscard]] virtual CopiedRows Copia() = 0;
  /// Separated by semicolons, in UTF-8 with its mark.
  [[nodiscard]] virtual std::string Csv() = 0;
  [[nodiscard]] virtual PrintedTable Stampa() = 0;
  /// Gives the selected rows the dates or the bank codes of a column of texts: all of them, or none.
  virtual void Incolla(std::string_view text, int column) = 0;
  /// Says what became of the rows that were taken away: the notice of the list's state.
  virtual void Avvisa(std::string_view notice) = 0;
};

} // namespace lumoscad
