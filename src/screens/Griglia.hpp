#pragma once

#include "platform/Desktop.hpp"
#include "screens/CampiGriglia.hpp"
#include "screens/DescrizioneGriglia.hpp"
#include "screens/ElencoBanche.hpp"
#include "screens/FiltroGriglia.hpp"
#include "screens/GestiGriglia.hpp"
#include "screens/InsiemeRighe.hpp"
#include "screens/PassiGriglia.hpp"
#include "screens/ResocontoGriglia.hpp"
#include "screens/RigheGriglia.hpp"
#include "screens/SelezioneGriglia.hpp"
#include "screens/VistaGriglia.hpp"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace lumoscad {

/// The editable schedule grid that the screens share: rows, ticks, in-place editors, sorting and layout. It takes the
/// person's gestures from the window and changes its rows by them; in what the screens differ its description says. All
/// lengths are twips.
class Griglia final : public ListWindow {
 public:
  explicit Griglia(DescrizioneGriglia descrizione);
  Griglia(const Griglia&) = delete;
  Griglia& operator=(const Griglia&) = delete;
  ~Griglia() override = default;

  RigheGriglia righe;
  BancheCombo cmbBanche;  ///< the top bank field
  BancheCombo cmbBanche2; ///< the in-place bank editor
  std::string titolo;     ///< the window's title, at first the description's
  std::string Tag;        ///< the list's own: what it lists; empty while its rows are being loaded
  std::string modo;       ///< what the screen is being used for, for instance "DEBITI/CREDITI"
  std::vector<ListLabel> etichette;
  std::string avviso;            ///< what the person is told at the head of the list; empty for nothing
  int aspetto = 0;               ///< what a screen shows of its own and a step back brings back
  std::function<void()> ripreso; ///< runs after a step was taken back or done again

  /// Forgets rows, editors, selection and top fields, for a new showing.
  void Azzera();
  /// Orders and lays out after loading, without the columns `nascoste`; a list that sorts starts at its first
  /// column, ascending.
  void Resize(const std::vector<int>& nascoste = {});
  /// Makes ready for a showing, no editor open and nothing confirmed.
  void Prepara();
  /// The person gave the list up while it was being read: its rows go, and `Mostra` shows nothing.
  void Abbandona();
  /// Shows the window modally until the screen is unloaded.
  void Mostra();

  [[nodiscard]] const std::string& MotivoChiusura() const noexcept { return motivoChiusura_; }
  /// True once the person has confirmed the showing.
  [[nodiscard]] bool Confermata() const noexcept { return confermata_; }
  /// The rows whose changes count, in the order in which they show: all once they are confirmed, none before.
  [[nodiscard]] std::vector<std::size_t> RigheConfermate() const;
  /// True once the list's `Tag` says that it is loaded: until then no step edits or confirms anything.
  [[nodiscard]] bool Modificabile() const { return Tag == descrizione_.tagLista; }
  [[nodiscard]] const DescrizioneGriglia& Descrizione() const noexcept { return descrizione_; }

  /// The rows in sight: how many they are, the one at a place, and whether a row is one.
  [[nodiscard]] std::size_t Visibili() const { return vista_.Quante(); }
  [[nodiscard]] std::size_t RigaVisibile(std::size_t posto) const { return vista_.Riga(posto); }
  [[nodiscard]] bool InVista(std::size_t riga) const { return vista_.Contiene(riga); }
  /// Shows the rows that a filter lets through, and those that the person is at.
  void Filtra(const ListFilter& filtro);
  /// Selects the next row whose text in the sorted column begins with `lettere`.
  void Salta(std::string_view lettere, bool daCapo);
  [[nodiscard]] const SelezioneGriglia& Selezione() const noexcept { return scelta_; }

  /// Whether a row has a new date or bank that would be sent.
  [[nodiscard]] bool DataVariata(std::size_t riga) const;
  [[nodiscard]] bool BancaVariata(std::size_t riga) const;
  [[nodiscard]] bool Variata(std::size_t riga) const { return DataVariata(riga) || BancaVariata(riga); }
  /// The rows that a person changed, ascending by number.
  [[nodiscard]] std::vector<std::size_t> ElencoVariate() const;

  // What a gesture writes into a row goes through these, so that it can be taken back (`GestoGriglia`).

  void ScriviTesto(std::size_t riga, int colonna, std::string_view testo);
  void ScriviTag(std::size_t riga, int colonna, std::string_view tag);
  void ScriviSpunta(std::size_t riga, int quale, bool spuntata);
  /// The code and the text of a new bank.
  void ScriviBanca(std::size_t riga, std::string_view codice, std::string_view testo);
  /// Takes the last step back, or does it again. An open editor is abandoned instead.
  void Annulla();
  void Rifai();
  /// What the step is called, with the number of its rows.
  [[nodiscard]] std::string NomePasso(const PassoGriglia& passo) const;
  /// "1 rata", "2.421 rate".
  [[nodiscard]] std::string QuanteRighe(std::size_t quante) const;
  [[nodiscard]] const PassiGriglia& Passi() const noexcept { return passi_; }

  /// The row key: the texts of the identifying columns, joined with nothing between them.
  [[nodiscard]] std::string ChiaveRiga(std::size_t riga) const;
  [[nodiscard]] std::optional<std::size_t> RigaSelezionata() const;

  /// The 0-based column under `x`; one past the last column when `x` lies right of them all.
  [[nodiscard]] int TrovaCoordinate(int x) const;
  /// Open an editor on the selected row; without one do nothing.
  void InserisciScadenza(int top, int left, int width);
  void InserisciBanca(int top, int left, int width);
  /// Close an editor and write what it holds into the edited row.
  void TogliScadenza();
  void TogliBanca();
  /// Opens or closes the drop-down of `combo` ("cmbBanche" or "cmbBanche2") in the window that is showing. No step of
  /// the grid does so: its editors open with their lists closed.
  void ShowComboDropdown(std::string_view combo, bool show) const;
  /// Turns the tick `chiave` ("RADIO1" or "RADIO2") of the selected row.
  void CambiaCheck(std::string_view chiave);
  /// The check box of a row takes the state `spuntata`.
  void SpuntaCasella(std::size_t riga, bool spuntata);
  void DeselezionaTutto(std::string_view chiave);
  /// The field at the top was left: a short form of a date in it is written out. A list of check boxes does that with
  /// the date check (`TextScadenza_LostFocus`).
  void EspandiTextScadenza();
  void NascondiBarrette();
  void RimettiBarrette();
  /// The first entry whose text equals `testo`, 0 when there is none.
  [[nodiscard]] static int TrovaRigaBanca(const std::vector<std::string>& combo, std::string_view testo);

  [[nodiscard]] const ListDescription& Description() const override { return finestra_; }
  [[nodiscard]] const ListState& Stato() const override { return stato_; }
  [[nodiscard]] std::size_t RowCount() const override { return vista_.Quante(); }
  [[nodiscard]] std::string_view CellText(std::size_t posto, int colonna) const override;
  [[nodiscard]] bool Ticked(std::size_t posto, int colonna) const override;
  void SetDropDown(DropDown dropDown) override;
  [[nodiscard]] ListGestures* Gestures() override { return &gesti_; }
  [[nodiscard]] FieldGestures* Fields() override { return &campi_; }
  [[nodiscard]] std::vector<RowDetail> Dettagli(std::size_t posto) const override;
  /// "rata 2", beside the item of a row that shows the same as another one in all that cannot be changed.
  [[nodiscard]] std::string_view Distinzione(std::size_t posto, int colonna) const override;
  [[nodiscard]] ListReport* Report() override { return &resoconto_; }

  void Seleziona(std::ptrdiff_t posto) override;
  void LVScadenze_MouseDown(int x, int y) override;
  /// A click on the selected row; not heeded when it is the one that checked the row.
  void LVScadenze_Click(int topRiga) override;
  void LVScadenze_ItemCheck(std::size_t posto) override;
  void TLwTestata_Click(int indice) override;
  void Form_Click() override;
  void TextScad_Change(std::string_view testo) override;
  void TextScad_KeyPress(int codice) override;
  void TextScad_LostFocus() override;
  void cmbBanche2_Click(int indice) override;
  void cmbBanche2_LostFocus() override;
  void AbbandonaEditor() override;
  void TextScadenza_Change(std::string_view testo) override;
  void TextScadenza_Click() override;
  void TextScadenza_LostFocus() override;
  void cmbBanche_Click(int indice) override;
  void PictureOk_Click() override;
  void PictureAnnulla_Click() override;
  void Form_QueryUnload() override;

 private:
  friend class CampiGriglia;
  friend class GestiGriglia;
  friend class GestoGriglia;
  friend class IncollaGriglia;
  friend class ResocontoGriglia;

  [[nodiscard]] int SinistraColonna(int colonna) const;
  [[nodiscard]] int Larghezza(int colonna) const { return larghezze_[static_cast<std::size_t>(colonna)]; }
  /// What a column shows beside an editable one: the present value.
  [[nodiscard]] std::string_view TestoPresente(std::size_t riga, int colonna) const;
  [[nodiscard]] int QualeSpunta(std::string_view chiave) const;
  [[nodiscard]] std::optional<std::size_t> RigaInModifica() const;
  [[nodiscard]] std::ptrdiff_t PostoInModifica() const;
  void MisuraColonne(const std::vector<int>& nascoste);
  void ApriEditor(CellEditor& editor, std::size_t riga, int top, int left, int width);
  void NascondiSeScorre();
  void PortaA(std::optional<std::size_t> riga);
  void SegnaSelezione() noexcept { stato_.selection = scelta_.Volta(); }
  void Avvisa(std::string testo) { stato_.notice = std::move(testo); }
  [[nodiscard]] CampiInAlto InAlto() const { return {stato_.dueDateText, stato_.bankIndex, aspetto}; }
  void RimettiInAlto(const CampiInAlto& alto);
  void ScriviNumero(int campo, std::size_t riga, std::uint32_t numero);
  /// "; 5 non in vista", or nothing where all of them are.
  [[nodiscard]] std::string NonInVista(const InsiemeRighe& insieme) const;
  void AvvisaNonInVista(std::string_view nome) noexcept;
  [[nodiscard]] FiltroGriglia::Colonne ColonneDelFiltro() const;
  [[nodiscard]] bool Passa(std::size_t riga) const;
  /// Shows the rows behind a bar alone, as far as the rest of the filter lets them through; all of them without one.
  void FiltraDietro(std::string nome, std::optional<EffettoVariazioni::RigheDietro> dietro);
  void CambiaFiltro(const ListFilter& filtro, std::optional<EffettoVariazioni::RigheDietro> dietro);
  void MostraPassate(bool traVisibili, bool tieni);
  void VistaMutata();
  /// Abandons an editor that is open; false where none is.
  [[nodiscard]] bool LasciaEditor();
  [[nodiscard]] std::string_view DataTolta(std::size_t riga) const;
  /// A date field's text with the short forms of a date written out: of the row's, or without one of the top field's.
  [[nodiscard]] std::string DataEspansa(std::string_view testo, std::optional<std::size_t> riga = {}) const;
  /// The present date beside the one that is edited; empty where the list has none.
  [[nodiscard]] std::string_view DataPresente(std::size_t riga) const;
  void SpuntaData(std::size_t riga, bool spunta);
  void ScriviData(std::size_t riga, bool spunta);
  void SpuntaBanche(const std::vector<std::size_t>& scelte, bool spunta);
  void AssegnaBanca(const std::vector<std::size_t>& scelte, int indice, const BancheCombo& combo);
  [[nodiscard]] bool NienteDaTogliere(std::size_t riga) const;
  [[nodiscard]] std::string_view BancaTolta(std::size_t riga) const;
  /// All rows that get a new bank together with one of these, these included, each once.
  [[nodiscard]] std::vector<std::size_t> ConIGruppi(const std::vector<std::size_t>& scelte) const;
  void Ordina(int colonna);
  /// Tells the window that cells changed.
  void Cambiata() noexcept {
    ++stato_.content;
    daRivedere_ = vista_.Ristretta();
  }
  void Scarica() noexcept { stato_.unloaded = true; }

  /// Finds the rows that look like another one.
  void SegnaUguali();
  [[nodiscard]] std::string Didascalia(int colonna) const;
  void AggiungiCodici(std::size_t riga, int colonna, std::vector<RowDetail>& dettagli) const;

  DescrizioneGriglia descrizione_;
  std::vector<bool> uguali_; ///< by row: another one shows the same
  mutable std::string distinzione_;
  ListDescription finestra_; ///< of the window that is showing
  ListState stato_;
  std::vector<int> larghezze_; ///< of the columns, 0 for one that does not show
  std::vector<ListHeading> testate_;
  DropDown tendina_; ///< of the window that is showing
  CampiGriglia campi_{*this};
  std::string motivoChiusura_;
  std::string chiaveInModifica_;
  std::size_t rigaInModifica_ = 0;
  std::vector<std::size_t> molteInModifica_; ///< the rows that the open editor writes into, where they are several
  bool editorToccato_ = false;               ///< the person wrote or chose something in it
  VistaGriglia vista_{righe};
  SelezioneGriglia scelta_{vista_};
  PassiGriglia passi_;
  ListFilter filtro_;
  std::optional<FiltroGriglia> ricerca_;                 ///< what was typed in it
  std::optional<EffettoVariazioni::RigheDietro> dietro_; ///< the bar that it is about
  bool daRivedere_ = false; ///< rows in sight may no longer be among those that it lets through
  InsiemeRighe toccate_;    ///< the rows that a gesture has written into
  GestiGriglia gesti_{*this};
  ResocontoGriglia resoconto_{*this};
  int colonnaOrdine_ = 0;
  int mouseX_ = 0;
  int mouseY_ = 0;
  bool saltaClic_ = false;
  bool confermata_ = false;
  bool abbandonata_ = false;
};

} // namespace lumoscad
