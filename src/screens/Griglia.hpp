#pragma once

#include "platform/Desktop.hpp"
#include "screens/RigheGriglia.hpp"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad {

/// How many rows a list shows before it needs a vertical scroll bar.
inline constexpr int RigheSenzaScorrere = 20;

/// One heading of a list screen: where it stands and what a click on it sorts by.
struct TestataGriglia {
  int indice = 0; ///< index in `TLwTestata`
  std::string testo;
  int colonna = 0;        ///< the list column below it
  int colonnaOrdine = -1; ///< the column whose texts it sorts by, -1 when it does not sort
};

/// What is particular to one list screen of the schedule grid.
struct DescrizioneGriglia {
  std::string nome; ///< the form's name
  std::string titolo;
  std::string nomeLista;                    ///< the list control's name
  std::string tagLista;                     ///< the list's `Tag` once it is loaded
  std::string carattere;                    ///< the font of the list and of both bank boxes
  std::string carattereTestate = "Verdana"; ///< the headings' font
  std::vector<ColonnaElenco> colonne;
  std::vector<int> colonneConTag;
  std::vector<TestataGriglia> testate;
  std::optional<std::string> campoData;  ///< caption of the top date field
  std::optional<std::string> campoBanca; ///< caption of the top bank field
  int colonneChiave = 0;                 ///< the row key is the texts of this many first columns
  int colonnaSpunta1 = -1;               ///< the tick "RADIO1"
  int colonnaSpunta2 = -1;               ///< the tick "RADIO2"
  int colonnaNuovaData = -1;             ///< edited by `TextScad`
  int colonnaNuovaBanca = -1;            ///< edited by `cmbBanche2`
};

/// The rules in which the list screens differ. Rows are named by number.
struct RegoleGriglia {
  std::function<void(std::size_t riga, std::string_view testo)> chiudiData; ///< the date editor leaves this text
  std::function<void(std::size_t riga, int indice)> chiudiBanca;            ///< the bank editor leaves this choice
  std::function<void(std::size_t riga, std::string_view chiave, bool spunta)> cambiaCheck;
  std::function<void()> clicScadenza; ///< a click in the top date field
  std::function<void()> sceltaBanca;  ///< a choice in the top bank field
  std::function<void()> conferma;     ///< "Conferma", before the window unloads
  std::function<void()> annulla;      ///< "Annulla" and the close box, before the window unloads
};

/// The editable schedule grid that the list screens share: rows, ticks, in-place editors, sorting and layout.
/// All lengths are twips.
class Griglia {
 public:
  Griglia(DescrizioneGriglia descrizione, RegoleGriglia regole);
  Griglia(const Griglia&) = delete;
  Griglia& operator=(const Griglia&) = delete;
  ~Griglia() = default;

  RigheGriglia Righe;
  std::vector<std::string> cmbBanche;  ///< entries of the top bank field
  std::vector<std::string> cmbBanche2; ///< entries of the in-place bank editor
  std::string Titolo;                  ///< the window's title, at first the description's
  std::string Tag;                     ///< the list's own: what it lists; empty while its rows are being loaded
  std::vector<EtichettaElenco> Etichette;

  /// Forgets rows, editors, selection and top fields, for a new showing.
  void Azzera();
  /// Orders and lays out after loading, without the columns `nascoste`; the sort starts at the first column, ascending.
  void Resize(const std::vector<int>& nascoste = {});
  /// Shows the window modally until the screen is unloaded.
  void Mostra();

  [[nodiscard]] const StatoElenco& Stato() const noexcept { return stato_; }
  [[nodiscard]] const std::string& MotivoChiusura() const noexcept { return motivoChiusura_; }
  /// True once the list's `Tag` says that it is loaded: until then no step edits or confirms anything.
  [[nodiscard]] bool Modificabile() const { return Tag == descrizione_.tagLista; }
  /// The row key: the texts of the identifying columns, joined with nothing between them.
  [[nodiscard]] std::string ChiaveRiga(std::size_t riga) const;
  [[nodiscard]] std::optional<std::size_t> RigaSelezionata() const;

  /// The 0-based column under `x`; one past the last column when `x` lies right of them all.
  [[nodiscard]] int TrovaCoordinate(int x) const;
  void InserisciScadenza(int top, int left, int width);
  void TogliScadenza();
  void InserisciBanca(int top, int left, int width);
  void TogliBanca();
  /// Opens or closes the drop-down of `combo` ("cmbBanche" or "cmbBanche2") in the window that is showing. No step of
  /// the grid does so: its editors open with their lists closed.
  void ShowComboDropdown(std::string_view combo, bool show) const;
  void CambiaCheck(std::string_view chiave);
  void DeselezionaTutto(std::string_view chiave);
  void NascondiBarrette();
  void RimettiBarrette();
  /// The first entry whose text equals `testo`, 0 when there is none.
  [[nodiscard]] static int TrovaRigaBanca(const std::vector<std::string>& combo, std::string_view testo);
  void ImpostaTestoScadenza(std::string_view testo);
  void ImpostaSpunta(std::size_t riga, std::string_view chiave, bool spuntata);
  /// Tells the window that cells changed.
  void Cambiata() noexcept { ++stato_.contenuto; }

  void Seleziona(std::ptrdiff_t posto);
  void LVScadenze_MouseDown(int x, int y);
  void LVScadenze_Click(int topRiga);
  void LVScadenze_ItemCheck(std::size_t posto);
  void TLwTestata_Click(int indice);
  void Form_Click();
  void TextScad_Change(std::string_view testo);
  void TextScad_KeyPress(int codice);
  void cmbBanche2_Click(int indice);
  void cmbBanche2_LostFocus();
  void AbbandonaEditor();
  void TextScadenza_Change(std::string_view testo);
  void TextScadenza_Click();
  void cmbBanche_Click(int indice);
  void PictureOk_Click();
  void PictureAnnulla_Click();
  void Form_QueryUnload();

 private:
  [[nodiscard]] int SinistraColonna(int colonna) const;
  [[nodiscard]] int Larghezza(int colonna) const { return larghezze_[static_cast<std::size_t>(colonna)]; }
  [[nodiscard]] int QualeSpunta(std::string_view chiave) const;
  [[nodiscard]] std::optional<std::size_t> RigaInModifica() const;
  [[nodiscard]] std::ptrdiff_t PostoInModifica() const;
  void MisuraColonne(const std::vector<int>& nascoste);
  void ApriEditor(EditorCella& editor, int top, int left, int width);
  void Ordina(int colonna);
  void Scarica() noexcept { stato_.scaricata = true; }
  [[nodiscard]] FinestraElenco Finestra();
  void CollegaLettura(FinestraElenco& finestra);
  void CollegaGesti(FinestraElenco& finestra);

  DescrizioneGriglia descrizione_;
  RegoleGriglia regole_;
  StatoElenco stato_;
  std::vector<int> larghezze_; ///< of the columns, 0 for one that does not show
  std::vector<TestataElenco> testate_;
  const FinestraElenco* aperta_ = nullptr; ///< the window that is showing
  std::string motivoChiusura_;
  std::string chiaveInModifica_;
  std::size_t rigaInModifica_ = 0;
  int colonnaOrdine_ = 0;
  int mouseX_ = 0;
  int mouseY_ = 0;
  bool saltaClic_ = false;
};

} // namespace lumoscad
