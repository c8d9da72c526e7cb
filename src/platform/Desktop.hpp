#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad {

/// Mouse pointers, with the values that the commands use.
enum class Puntatore { Predefinito = 0, Clessidra = 11 };

/// Which thread the windows of this process belong to, as the asking thread sees it.
enum class ThreadFinestre {
  Nessuno, ///< no application for windows is there yet, or none any more
  Questo,
  Altro
};

/// Horizontal twips of one device-independent pixel.
inline constexpr int TwipsPerPixelX = 15;
/// Vertical twips of one device-independent pixel: a grid row of 240 twips is 24 pixels high.
inline constexpr int TwipsPerPixelY = 10;

/// One column of a list window.
struct ColonnaElenco {
  enum class Genere { Testo, Importo, Spunta, EditorData, EditorBanca };
  std::string chiave;       ///< the header's key, for instance "KScadenza"
  std::string intestazione; ///< the list's own heading text; empty over an icon column
  int larghezza = 0;        ///< twips; 0 hides the column
  Genere genere = Genere::Testo;
  int attuale = -1; ///< for an editable column, the column that shows the present value; -1 for none
};

/// One heading drawn above the list (an element of the control array `TLwTestata`).
struct TestataElenco {
  int indice = 0; ///< index in the control array; the widget is named `TLwTestata_<indice>`
  std::string testo;
  int prima = 0;       ///< first column below it
  int ultima = 0;      ///< last column below it
  int sinistra = 0;    ///< twips
  int larghezza = 0;   ///< twips
  bool ordina = false; ///< a click on it sorts; otherwise it does nothing
};

/// A caption of the top area; the widget carries `nome`.
struct EtichettaElenco {
  std::string nome;
  std::string testo;
};

/// An in-place editor: `FrameScad` with `TextScad`, or `FrameBanca` with `cmbBanche2`.
struct EditorCella {
  bool visibile = false;
  std::ptrdiff_t posto = -1; ///< place in display order of the row being edited, -1 when it is gone
  int alto = 0;              ///< twips, in window coordinates
  int sinistra = 0;          ///< twips
  int larghezza = 0;         ///< twips
  std::string testo;         ///< `TextScad.Text`
  int indice = -1;           ///< `cmbBanche2.ListIndex`
};

/// What a list window shows besides its rows. The screen owns and changes it; the window reads it after every
/// gesture and follows.
struct StatoElenco {
  std::ptrdiff_t selezionata = -1; ///< place of the selected row in display order, -1 for none
  EditorCella data;
  EditorCella banca;
  std::string testoScadenza; ///< `TextScadenza.Text`, the top date field
  int indiceBanca = 0;       ///< `cmbBanche.ListIndex`, the top bank field
  int testataOrdinata = -1;  ///< the heading whose indicator shows "SORTED"
  bool crescente = true;
  bool barretteNascoste = false; ///< the scroll-bar covers are shown
  bool scaricata = false;        ///< the screen unloaded itself: the window closes
  int sinistraLista = 0;         ///< left end of the list in window coordinates, twips
  int larghezzaLista = 0;        ///< twips
  int larghezzaQuadro = 0;       ///< of the picture that holds the list, twips
  int altezzaLista = 0;          ///< twips
  std::uint64_t ordine = 0;      ///< grows whenever the set or the order of the rows changed
  std::uint64_t contenuto = 0;   ///< grows whenever the content of a cell changed
};

/// What a list window looks like; no gesture changes it while the window is open.
struct ListDescription {
  std::string nome; ///< name of the window, for instance "frmLumoScadenzeBanche"
  std::string titolo;
  std::string nomeLista;        ///< name of the list control, for instance "LVScadenzeBanche"
  std::string carattere;        ///< font family of the list and of both bank boxes
  std::string carattereTestate; ///< font family of the headings
  int righeSenzaScorrere = 20;
  std::vector<ColonnaElenco> colonne;
  std::vector<TestataElenco> testate;
  std::vector<EtichettaElenco> etichette;
  std::optional<std::string> campoData;  ///< caption of `FrameNuovaScadenza`; none: the field is not there
  std::optional<std::string> campoBanca; ///< caption of `FrameNuovaBanca`; none: the field is not there
  std::vector<std::string> banche;       ///< the entries of `cmbBanche`; the first is a single blank
  std::vector<std::string> bancheCella;  ///< the entries of `cmbBanche2`
};

/// All that passes between a list screen and the window that shows it: what to show, how to read it, and the person's
/// gestures, each under the name of its control. A window calls, a screen answers. Rows are addressed by their place in
/// display order, from 0.
class FinestraElenco {
 public:
  /// Opens or closes the drop-down of a combo, by its name.
  using DropDown = std::function<void(std::string_view combo, bool open)>;

  FinestraElenco() = default;
  FinestraElenco(const FinestraElenco&) = delete;
  FinestraElenco& operator=(const FinestraElenco&) = delete;
  virtual ~FinestraElenco() = default;

  [[nodiscard]] virtual const ListDescription& Description() const = 0;
  [[nodiscard]] virtual const StatoElenco& Stato() const = 0;
  [[nodiscard]] virtual std::size_t RowCount() const = 0;
  /// The text of a cell; it holds until the next cell is asked for.
  [[nodiscard]] virtual std::string_view CellText(std::size_t row, int column) const = 0;
  [[nodiscard]] virtual bool Ticked(std::size_t row, int column) const = 0;
  /// The window says here how its drop-downs are opened, and takes it back (an empty one) when it goes.
  virtual void SetDropDown(DropDown dropDown) = 0;

  virtual void Seleziona(std::ptrdiff_t posto) = 0;             ///< the selection moved to this row
  virtual void LVScadenze_MouseDown(int x, int y) = 0;          ///< mouse-down over the list, twips
  virtual void LVScadenze_Click(int topRiga) = 0;               ///< click on the list; top of the selected row, twips
  virtual void LVScadenze_ItemCheck(std::size_t posto) = 0;     ///< the check box of this row was clicked
  virtual void TLwTestata_Click(int indice) = 0;                ///< click on a heading
  virtual void Form_Click() = 0;                                ///< click elsewhere on the window
  virtual void TextScad_Change(std::string_view testo) = 0;     ///< `TextScad` was edited
  virtual void TextScad_KeyPress(int codice) = 0;               ///< key in `TextScad` (9 Tab, 13 Enter)
  virtual void TextScad_LostFocus() = 0;                        ///< `TextScad` lost the focus
  virtual void cmbBanche2_Click(int indice) = 0;                ///< choice in `cmbBanche2`
  virtual void cmbBanche2_LostFocus() = 0;                      ///< `cmbBanche2` lost the focus
  virtual void AbbandonaEditor() = 0;                           ///< Esc in an in-place editor: close it, write nothing
  virtual void TextScadenza_Change(std::string_view testo) = 0; ///< `TextScadenza` was edited
  virtual void TextScadenza_Click() = 0;                        ///< click in `TextScadenza`
  virtual void TextScadenza_LostFocus() = 0;                    ///< `TextScadenza` lost the focus
  virtual void cmbBanche_Click(int indice) = 0;                 ///< choice in `cmbBanche`
  virtual void PictureOk_Click() = 0;
  virtual void PictureAnnulla_Click() = 0;
  virtual void Form_QueryUnload() = 0; ///< the window's close box
};

/// One line of the description above a list: a caption and what it names.
struct RigaDescrizione {
  EtichettaElenco didascalia;
  EtichettaElenco valore;
};

/// What the single-item window shows besides its list and never changes while it is open.
struct ItemDescription {
  std::vector<RigaDescrizione> descrizione; ///< `FrameDesc`, from top to bottom
  EtichettaElenco congedo;                  ///< a label of earlier days, which is never shown
  std::string carattereCongedo;             ///< its font family
};

/// What the single-item window shows besides its list. As with the list's own state, the screen owns and changes it;
/// the window reads it after every gesture.
struct StatoScadenzario {
  std::string selezionaTutto;       ///< the text of `PicSelezionaTutto`
  bool descrizioneVisibile = false; ///< the labels of `FrameDesc` are shown
  bool primoPiano = false;          ///< the window stays above all other windows
};

/// The window of a single item's due dates: a list window whose first column ticks its row, with a control that ticks
/// them all and a few lines on what the dates belong to. Of its list it uses no sorting, no mouse position and no
/// bank; a click in the first column is a check, and a click on the list after that.
class FinestraScadenzario {
 public:
  FinestraScadenzario() = default;
  FinestraScadenzario(const FinestraScadenzario&) = delete;
  FinestraScadenzario& operator=(const FinestraScadenzario&) = delete;
  virtual ~FinestraScadenzario() = default;

  [[nodiscard]] virtual FinestraElenco& Elenco() = 0;
  [[nodiscard]] virtual const ItemDescription& Description() const = 0;
  [[nodiscard]] virtual const StatoScadenzario& Stato() const = 0;

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

  /// One modal box with an OK button only and no icon. A lone CR in `testo` shows as a line break.
  virtual void MostraBox(std::string_view testo, std::string_view titolo) = 0;
  virtual void ImpostaPuntatore(Puntatore puntatore) = 0;
  /// Lets pending window events run; cheap enough to be called once a row.
  virtual void EventiInAttesa() = 0;
  /// Shows a list window modally; returns once `Stato().scaricata` is true. What a gesture throws leaves this
  /// call, after the window is gone.
  virtual void MostraElenco(FinestraElenco& finestra) = 0;
  /// Shows the single-item window modally, on the same terms: until its list's `Stato().scaricata` is
  /// true.
  virtual void MostraScadenzario(FinestraScadenzario& finestra) = 0;
  /// Shows a small modal window without buttons that holds `testo`; after `millisecondi`, once it is painted,
  /// runs `lavoro` and closes. What `lavoro` throws leaves this call, after the window is gone.
  virtual void MostraAttesa(std::string_view testo, int millisecondi, const std::function<void()>& lavoro) = 0;
};

} // namespace lumoscad
