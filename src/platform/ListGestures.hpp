#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace lumoscad {

/// The keys that were held while a row was clicked or moved to.
struct HeldKeys {
  bool shift = false;
  bool control = false;
};

/// What becomes of a press of the left button on a row.
enum class RowPress {
  Plain, ///< the row is selected, as by any press, and the click follows
  Kept,  ///< the selection stays as it is, the row is the current one, and the click follows
  Done   ///< it is done: no click follows
};

/// Which rows of a list are in sight; all of them without any of these.
struct ListFilter {
  std::string text;         ///< what was typed to find rows
  bool changedOnly = false; ///< rows that would be sent
  bool tickedOnly = false;  ///< rows with a tick
  std::string behind = {};  ///< rows behind the bar of this name, which only the bar can set; empty for none

  [[nodiscard]] bool operator==(const ListFilter&) const = default;
  [[nodiscard]] bool Empty() const { return text.empty() && !changedOnly && !tickedOnly && behind.empty(); }
};

/// In what rows are like the current one.
enum class Likeness {
  Account,
  Item, ///< of one account
  Bank, ///< the present one
  Month ///< of the present date
};

/// What a person can do in a list beside the gestures of its controls. A window calls, a screen answers; rows are
/// addressed by their place in sight, as in `ListWindow`. What a gesture did, and what it left out, is the notice of
/// the list's state.
class ListGestures {
 public:
  /// The first and the last place of rows that stand together.
  using Places = std::pair<std::size_t, std::size_t>;

  ListGestures() = default;
  ListGestures(const ListGestures&) = delete;
  ListGestures& operator=(const ListGestures&) = delete;
  virtual ~ListGestures() = default;

  // Many rows at once. The list's state counts in `selection` how often the selection changed.

  /// Whether more than one row can be selected.
  [[nodiscard]] virtual bool SelezioneMultipla() const = 0;
  [[nodiscard]] virtual bool Scelta(std::size_t place) const = 0;
  /// The places of the selected rows that are in sight, ascending.
  [[nodiscard]] virtual std::vector<Places> Scelte() const = 0;
  /// How many rows are selected, in sight or not.
  [[nodiscard]] virtual std::size_t QuanteScelte() const = 0;
  /// Left button down on a row, `x` twips from the left end of the list.
  [[nodiscard]] virtual RowPress Premi(std::size_t place, int x, HeldKeys held) = 0;
  /// The pressed button was moved to this row: the rows from the pressed one on are selected.
  virtual void Trascina(std::size_t place) = 0;
  /// The button went up after it was moved: over ticks, those of the rows passed take the other state of the first.
  virtual void Rilascia() = 0;
  /// Whether the editor that is open writes into several rows: they stay selected when it closes.
  [[nodiscard]] virtual bool EditorDiMolte() const = 0;
  /// Moves to a row by keyboard: with Shift the selection follows, with Ctrl it stays.
  virtual void Vai(std::size_t place, HeldKeys held) = 0;
  /// The tick `column` of the rows between the anchor and this one takes the state that the anchor's has.
  virtual void SpuntaFinoA(std::size_t place, int column) = 0;
  /// Selects every row in sight.
  virtual void ScegliVisibili() = 0;
  /// Selects those rows in sight that are not selected, and no other.
  virtual void InvertiScelta() = 0;
  /// Selects the rows in sight that are like the current one.
  virtual void ScegliSimili(Likeness likeness) = 0;
  [[nodiscard]] virtual bool Confrontabile(Likeness likeness) const = 0; ///< whether the list has such a column
  /// Selects the rows in sight whose present date is before today.
  virtual void ScegliScadute() = 0;

  // Steps back and forth.

  virtual void Annulla() = 0;
  virtual void Rifai() = 0;
  /// What the step is called, for instance "banca di 210 rate"; empty where there is none.
  [[nodiscard]] virtual std::string DaAnnullare() const = 0;
  [[nodiscard]] virtual std::string DaRifare() const = 0;

  // Finding.

  /// Shows those rows alone, after an editor that is open was closed. The current row stays the current one where it is
  /// in sight, or else the next one in sight becomes it; a changed row stays in sight until another is selected.
  virtual void Filtra(const ListFilter& filter) = 0;
  [[nodiscard]] virtual const ListFilter& Filtro() const = 0;
  /// The bytes of a cell's text that the filter looks for: each first one, and the one behind the last.
  [[nodiscard]] virtual std::vector<Places> Trovati(std::size_t place, int column) const = 0;
  /// Selects the next row whose text in the sorted column begins so. With `anew` the current row is not looked at.
  virtual void Salta(std::string_view letters, bool anew) = 0;

  // Which rows there are.

  /// All rows, in sight or not.
  [[nodiscard]] virtual std::size_t RigheTotali() const = 0;
  [[nodiscard]] virtual std::size_t RigheInVista() const = 0;
  /// The rows that would be sent.
  [[nodiscard]] virtual std::size_t QuanteVariate() const = 0;
  [[nodiscard]] virtual std::size_t VariateNonInVista() const = 0;
};

} // namespace lumoscad
