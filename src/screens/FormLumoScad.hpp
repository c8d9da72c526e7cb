#pragma once

#include "platform/Desktop.hpp"
#include "screens/RigheGriglia.hpp"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace lumoscad {

/// The due dates of one open item, or of the extra schedule of one movement: the person gives single instalments, or
/// all that are ticked, a new due date. Who opens it fills the rows and the two descriptions first. All lengths are
/// twips.
class FormLumoScad {
 public:
  /// The list's columns, by index; the text of the first is what a row is known by.
  enum Colonna { Scadenza, ScadOrig, Importo, NuovaScadenza, Colonne };
  /// What "Conferma" does; returns the screen's result.
  using Conferma = std::function<std::string()>;

  /// How many rows the list shows before it needs a vertical scroll bar.
  static constexpr int RigheInVista = 12;

  /// `conferma` runs in mode "Scad", `confermaExtra` in mode "Extra"; neither may be empty.
  FormLumoScad(Conferma conferma, Conferma confermaExtra);
  FormLumoScad(const FormLumoScad&) = delete;
  FormLumoScad& operator=(const FormLumoScad&) = delete;
  ~FormLumoScad() = default;

  RigheGriglia Righe;           ///< one tick a row: number 0
  std::string LabelDescPartita; ///< the item's number, shown in mode "Scad"
  std::string LabelDescCliFor;  ///< the customer or supplier, shown in mode "Scad"

  /// Makes the screen as new: no rows, no descriptions, an empty top date, nothing ticked.
  void Svuota();

  /// Show the window modally and return the result: that of the confirmation, or "closed" when the window was left
  /// without one. Once a presumed-document command has made demonstrations of them all, the window is gone before
  /// the confirmation runs. What the confirmation raises comes out.
  [[nodiscard]] std::string VisualizzaScad();
  [[nodiscard]] std::string VisualizzaExtra();

  [[nodiscard]] const std::string& Modo() const noexcept { return modo_; } ///< "Scad" or "Extra"
  [[nodiscard]] bool SelezionaTutto() const noexcept { return selezionaTutto_; }
  /// "closed" when the window was left without confirming.
  [[nodiscard]] const std::string& MotivoChiusura() const noexcept { return motivoChiusura_; }
  [[nodiscard]] const StatoElenco& Stato() const noexcept { return stato_; }
  [[nodiscard]] const StatoScadenzario& StatoFinestra() const noexcept { return finestra_; }

  /// Opens the date editor on the selected row; without one does nothing.
  void InserisciScadenza(int top, int left, int width);
  /// Closes the date editor and writes its date into the first row that has the edited row's text.
  void TogliTextScad();
  /// Closes the date editor and writes nothing.
  void AbbandonaEditor();
  void ResizeScad();
  /// Keeps the window above all others, or no longer. A number counts as True only when it is -1, the number that
  /// the calling program writes for it.
  void SetTopMostWindow(bool topmost);
  void SetTopMostWindow(int topmost);

  void Seleziona(std::ptrdiff_t riga);
  /// A click on the selected row, in whatever column; not heeded when it is the one that ticked the row.
  void LWScad_Click(int topRiga);
  /// The check box of a row took the state `spuntata`.
  void LWScad_ItemCheck(std::size_t riga, bool spuntata);
  void TextScad_Change(std::string_view testo);
  void TextScad_KeyPress(int codice);
  void TextScad_LostFocus();
  void TextScadenza_Change(std::string_view testo);
  void TextScadenza_LostFocus();
  void PicSelezionaTutto_Click();
  void PictureOk_Click();
  void PictureAnnulla_Click();
  void Form_QueryUnload();

 private:
  [[nodiscard]] std::string Visualizza(std::string_view modo);
  [[nodiscard]] std::string EseguiConferma() const;
  [[nodiscard]] std::optional<std::size_t> RigaSelezionata() const;
  void Spunta(std::size_t riga, bool spuntata);
  void Cambiata() noexcept { ++stato_.contenuto; }
  void Scarica() noexcept { stato_.scaricata = true; }
  [[nodiscard]] FinestraScadenzario Finestra();
  void CollegaLettura(FinestraElenco& elenco);
  void CollegaGesti(FinestraScadenzario& finestra);

  Conferma conferma_;
  Conferma confermaExtra_;
  StatoElenco stato_;
  StatoScadenzario finestra_;
  std::string modo_;
  std::string risultato_;
  std::string motivoChiusura_;
  std::string testoInModifica_; ///< the text of the row being edited
  bool selezionaTutto_ = false;
  bool saltaClic_ = false;
  bool confermaDopo_ = false; ///< the confirmation waits until the window is gone
};

} // namespace lumoscad
