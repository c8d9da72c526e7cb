#pragma once

#include "platform/FieldGestures.hpp"
#include "platform/ListGestures.hpp"
#include "platform/ListReport.hpp"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad {

/// Mouse pointers, with the values that the commands use.
enum class Pointer { Standard = 0, Hourglass = 11 };

/// Which thread the windows of this process belong to, as the asking thread sees it.
enum class WindowThread {
  None, ///< no application for windows is there yet, or none any more
  ThisOne,
  Other
};

/// Horizontal twips of one device-independent pixel.
inline constexpr int TwipsPerPixelX = 15;
/// Vertical twips of one device-independent pixel: a grid row of 240 twips is 24 pixels high.
inline constexpr int TwipsPerPixelY = 10;

/// One column of a list window.
struct ListColumn {
  enum class Kind { Text, Amount, Tick, DateEditor, BankEditor };
  std::string key;         ///< the header's key, for instance "KScadenza"
  std::string headingText; ///< the list's own heading text; empty over an icon column
  int width = 0;           ///< twips; 0 hides the column
  Kind kind = Kind::Text;
  int present = -1;         ///< for an editable column, the column that shows the present value; -1 for none
  std::string caption = {}; ///< what a person calls it, also where nothing stands over it; empty: its heading text
};

/// One heading drawn above the list (an element of the control array `TLwTestata`).
struct ListHeading {
  int index = 0; ///< index in the control array; the widget is named `TLwTestata_<index>`
  std::string text;
  int first = 0;      ///< first column below it
  int last = 0;       ///< last column below it
  int left = 0;       ///< twips
  int width = 0;      ///< twips
  bool sorts = false; ///< a click on it sorts; otherwise it does nothing
};

/// A caption of the top area; the widget carries `name`.
struct ListLabel {
  std::string name;
  std::string text;
};

/// Something that was read of a row, for a person.
struct RowDetail {
  std::string caption;
  std::string value;
};

/// An in-place editor: `FrameScad` with `TextScad`, or `FrameBanca` with `cmbBanche2`.
struct CellEditor {
  bool visible = false;
  std::ptrdiff_t place = -1; ///< place in display order of the row being edited, -1 when it is gone
  int top = 0;               ///< twips, in window coordinates
  int left = 0;              ///< twips
  int width = 0;             ///< twips
  std::string text;          ///< `TextScad.Text`
  int index = -1;            ///< `cmbBanche2.ListIndex`
};

/// What a list window shows besides its rows. The screen owns and changes it; the window reads it after every
/// gesture and follows.
struct ListState {
  std::ptrdiff_t selected = -1; ///< place of the selected row in display order, -1 for none
  CellEditor data;
  CellEditor bank;
  std::string dueDateText; ///< `TextScadenza.Text`, the top date field
  int bankIndex = 0;       ///< `cmbBanche.ListIndex`, the top bank field
  int sortedHeading = -1;  ///< the heading whose indicator shows "SORTED"
  bool ascending = true;
  bool scrollBarsHidden = false; ///< the scroll-bar covers are shown
  bool unloaded = false;         ///< the screen unloaded itself: the window closes
  int listLeft = 0;              ///< left end of the list in window coordinates, twips
  int listWidth = 0;             ///< twips
  int pictureWidth = 0;          ///< of the picture that holds the list, twips
  int listHeight = 0;            ///< twips
  std::uint64_t order = 0;       ///< grows whenever the set or the order of the rows changed
  std::uint64_t content = 0;     ///< grows whenever the content of a cell changed
  std::uint64_t selection = 0;   ///< grows whenever the set of selected rows changed
  std::string notice;            ///< what the last gesture on many rows did and left out; empty after any other
};

/// What a list window looks like; no gesture changes it while the window is open.
struct ListDescription {
  std::string name; ///< name of the window, for instance "frmLumoScadenzeBanche"
  std::string title;
  std::string listName;    ///< name of the list control, for instance "LVScadenzeBanche"
  std::string fontName;    ///< font family of the list and of both bank boxes
  std::string headingFont; ///< font family of the headings
  int rowsWithoutScrolling = 20;
  std::vector<ListColumn> columns;
  std::vector<ListHeading> headings;
  std::vector<ListLabel> labels;
  std::string warning;                  ///< stands at the head of the list; empty: there is none
  std::optional<std::string> dateField; ///< caption of `FrameNuovaScadenza`; none: the field is not there
  std::optional<std::string> bankField; ///< caption of `FrameNuovaBanca`; none: the field is not there
  std::vector<std::string> banks;       ///< the entries of `cmbBanche`; the first is a single blank
  std::vector<std::string> cellBanks;   ///< the entries of `cmbBanche2`
};

/// All that passes between a list screen and the window that shows it: what to show, how to read it, and the person's
/// gestures, each under the name of its control. A window calls, a screen answers. Rows are addressed by their place in
/// display order among those in sight, from 0.
class ListWindow {
 public:
  /// Opens or closes the drop-down of a combo, by its name.
  using DropDown = std::function<void(std::string_view combo, bool open)>;

  ListWindow() = default;
  ListWindow(const ListWindow&) = delete;
  ListWindow& operator=(const ListWindow&) = delete;
  virtual ~ListWindow() = default;

  [[nodiscard]] virtual const ListDescription& Description() const = 0;
  [[nodiscard]] virtual const ListState& Stato() const = 0;
  [[nodiscard]] virtual std::size_t RowCount() const = 0;
  /// The text of a cell; it holds until the next cell is asked for.
  [[nodiscard]] virtual std::string_view CellText(std::size_t row, int column) const = 0;
  [[nodiscard]] virtual bool Ticked(std::size_t row, int column) const = 0;
  /// The window says here how its drop-downs are opened, and takes it back (an empty one) when it goes.
  virtual void SetDropDown(DropDown dropDown) = 0;
  /// What can be done beside the gestures below; null where nothing can.
  [[nodiscard]] virtual ListGestures* Gestures() { return nullptr; }
  /// What can be done in the date fields and bank boxes beside the gestures below; null where nothing can.
  [[nodiscard]] virtual FieldGestures* Fields() { return nullptr; }
  /// Everything of a row that means something to a person, what its columns show and what they do not.
  [[nodiscard]] virtual std::vector<RowDetail> Dettagli(std::size_t /*row*/) const { return {}; }
  /// What tells a row from others that look the same, to be shown at the end of its cell in `column`; empty for
  /// nothing. It holds until the next one is asked for.
  [[nodiscard]] virtual std::string_view Distinzione(std::size_t /*row*/, int /*column*/) const { return {}; }
  /// What the list says of itself, and what is taken from it and brought into it; null where it does not.
  [[nodiscard]] virtual ListReport* Report() { return nullptr; }

  virtual void Seleziona(std::ptrdiff_t place) = 0;            ///< the selection moved to this row
  virtual void LVScadenze_MouseDown(int x, int y) = 0;         ///< mouse-down over the list, twips
  virtual void LVScadenze_Click(int rowTop) = 0;               ///< click on the list; top of the selected row, twips
  virtual void LVScadenze_ItemCheck(std::size_t place) = 0;    ///< the check box of this row was clicked
  virtual void TLwTestata_Click(int index) = 0;                ///< click on a heading
  virtual void Form_Click() = 0;                               ///< click elsewhere on the window
  virtual void TextScad_Change(std::string_view text) = 0;     ///< `TextScad` was edited
  virtual void TextScad_KeyPress(int code) = 0;                ///< key in `TextScad` (9 Tab, 13 Enter)
  virtual void TextScad_LostFocus() = 0;                       ///< `TextScad` lost the focus
  virtual void cmbBanche2_Click(int index) = 0;                ///< choice in `cmbBanche2`
  virtual void cmbBanche2_LostFocus() = 0;                     ///< `cmbBanche2` lost the focus
  virtual void AbbandonaEditor() = 0;                          ///< Esc in an in-place editor: close it, write nothing
  virtual void TextScadenza_Change(std::string_view text) = 0; ///< `TextScadenza` was edited
  virtual void TextScadenza_Click() = 0;                       ///< click in `TextScadenza`
  virtual void TextScadenza_LostFocus() = 0;                   ///< `TextScadenza` lost the focus
  virtual void cmbBanche_Click(int index) = 0;                 ///< choice in `cmbBanche`
  virtual void PictureOk_Click() = 0;
  virtual void PictureAnnulla_Click() = 0;
  virtual void Form_QueryUnload() = 0; ///< the window's close box
};

/// One line of the description above a list: a caption and what it names.
struct DescriptionLine {
  ListLabel caption;
  ListLabel value;
};

/// What the single-item window shows besides its list and never changes while it is open.
struct ItemDescription {
  std::vector<DescriptionLine> description; ///< `FrameDesc`, from top to bottom
  ListLabel farewell;                       ///< a label of earlier days, which is never shown
  std::string farewellFont;                 ///< its font family
};

/// What the single-item window shows besides its list. As with the list's own state, the screen owns and changes it;
/// the window reads it after every gesture.
struct SingleItemState {
  std::string selectEverything;    ///< the text of `PicSelezionaTutto`
  bool descriptionVisible = false; ///< the labels of `FrameDesc` are shown
  bool onTop = false;              ///< the window stays above all other windows
};

/// The window of a single item's due dates: a list window whose first column ticks its row, with a control that ticks
/// them all and a few lines on what the dates belong to. Of its list it uses no sorting, no mouse position and no
/// bank; a click in the first column is a check, and a click on the list after that.
class SingleItemWindow {
 public:
  SingleItemWindow() = default;
  SingleItemWindow(const SingleItemWindow&) = delete;
  SingleItemWindow& operator=(const SingleItemWindow&) = delete;
  virtual ~SingleItemWindow() = default;

  [[nodiscard]] virtual ListWindow& Elenco() = 0;
  [[nodiscard]] virtual const ItemDescription& Description() const = 0;
  [[nodiscard]] virtual const SingleItemState& Stato() const = 0;

  virtual void PicSelezionaTutto_Click() = 0;
  virtual void PictureOk_Click() = 0; ///< in place of the list's own
};

/// The desktop, as the component uses it.
class Desktop {
 public:
  Desktop() = default;
  Desktop(const Desktop&) = delete;
  Desktop& operator=(const Desktop&) = delete;
  virtual ~Desktop() = default;

  // A calling program may end all event loops of its thread while a window is open: a box then raises, since nobody
  // has read it, a list is closed as by its close box, and a wait window returns without having run its work.

  /// One modal box with an OK button only and no icon. A lone CR in `text` shows as a line break.
  virtual void ShowBox(std::string_view text, std::string_view title) = 0;
  virtual void SetPointer(Pointer pointer) = 0;
  /// Lets pending window events run; cheap enough to be called once a row.
  virtual void RunPendingEvents() = 0;
  /// `RunPendingEvents` once a row of a list that is being read, of which `rows` are there. A desktop may show after a
  /// while how far the reading is, in a window that takes no input but Esc: false from then on, which gives the list
  /// up.
  [[nodiscard]] virtual bool RowRead(std::size_t rows) {
    static_cast<void>(rows);
    RunPendingEvents();
    return true;
  }
  /// The reading that `RowRead` told of is over, to its end or not.
  virtual void ReadingEnded() noexcept {}
  /// Shows a list window modally; returns once `Stato().unloaded` is true. What a gesture throws leaves this
  /// call, after the window is gone.
  virtual void ShowList(ListWindow& window) = 0;
  /// Shows the single-item window modally, on the same terms: until its list's `Stato().unloaded` is
  /// true.
  virtual void ShowSingleItem(SingleItemWindow& window) = 0;
  /// Shows a small modal window without buttons that holds `text`; after `milliseconds`, once it is painted,
  /// runs `work` and closes. What `work` throws leaves this call, after the window is gone.
  virtual void ShowWait(std::string_view text, int milliseconds, const std::function<void()>& work) = 0;
};

} // namespace lumoscad
