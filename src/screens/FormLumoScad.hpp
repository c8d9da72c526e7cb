#pragma once

#include "platform/Desktop.hpp"
#include "screens/Griglia.hpp"

#include <functional>
#include <string>
#include <string_view>

namespace lumoscad {

/// The due dates of one open item, or of the extra schedule of one movement: the person gives single instalments, or
/// all that are ticked, a new due date. Who opens it fills the grid's rows and the two descriptions first. All lengths
/// are twips.
class FormLumoScad final : public SingleItemWindow {
 public:
  /// The list's columns, by index: the check box of the row, and after it the text that a row is known by.
  enum Colonna { Casella, Scadenza, ScadOrig, Importo, NuovaScadenza, Colonne };
  /// What "Conferma" does; returns the screen's result.
  using Conferma = std::function<std::string()>;

  /// How many rows the list shows before it needs a vertical scroll bar.
  static constexpr int RigheInVista = 12;

  /// `conferma` runs in mode "Scad", `confermaExtra` in mode "Extra"; neither may be empty.
  FormLumoScad(Conferma conferma, Conferma confermaExtra);
  FormLumoScad(const FormLumoScad&) = delete;
  FormLumoScad& operator=(const FormLumoScad&) = delete;
  ~FormLumoScad() override = default;

  std::string LabelDescPartita; ///< the item's number, shown in mode "Scad"
  std::string LabelDescCliFor;  ///< the customer or supplier, shown in mode "Scad"

  /// Makes the screen as new: no rows, no descriptions, an empty top date, nothing ticked.
  void Svuota();
  /// Adds an instalment without a new date.
  void Aggiungi(std::string_view scadenza, std::string_view originale, std::string_view importo);

  /// Show the window modally and return the result: that of the confirmation, or "closed" when the window was left
  /// without one. Once a presumed-document command has made demonstrations of them all, the window is gone before
  /// the confirmation runs. What the confirmation raises comes out.
  [[nodiscard]] std::string VisualizzaScad();
  [[nodiscard]] std::string VisualizzaExtra();

  [[nodiscard]] const std::string& Modo() const noexcept { return griglia_.modo; } ///< "Scad" or "Extra"
  [[nodiscard]] bool SelezionaTutto() const noexcept { return griglia_.aspetto == TutteMesse; }
  /// "closed" when the window was left without confirming.
  [[nodiscard]] const std::string& MotivoChiusura() const noexcept { return griglia_.MotivoChiusura(); }
  [[nodiscard]] Griglia& griglia() noexcept { return griglia_; }
  [[nodiscard]] const Griglia& griglia() const noexcept { return griglia_; }

  /// Opens the date editor on the selected row; without one does nothing.
  void InserisciScadenza(int top, int left, int width) { griglia_.InserisciScadenza(top, left, width); }
  /// Closes the date editor and writes its date into the first row that has the edited row's text.
  void TogliTextScad() { griglia_.TogliScadenza(); }
  void ResizeScad() { griglia_.Resize(); }
  /// Keeps the window above all others, or no longer. A number counts as True only when it is -1, the number that
  /// the calling program writes for it.
  void SetTopMostWindow(bool topmost);
  void SetTopMostWindow(int topmost);

  [[nodiscard]] ListWindow& Elenco() override { return griglia_; }
  [[nodiscard]] const ItemDescription& Description() const override { return descrizione_; }
  [[nodiscard]] const SingleItemState& Stato() const override { return finestra_; }
  void PicSelezionaTutto_Click() override;
  void PictureOk_Click() override;

 private:
  /// What the grid keeps for this screen: nobody has ticked every row yet, or what was done last.
  static constexpr int TutteMesse = 1;
  static constexpr int TutteTolte = 2;

  void MostraSelezionaTutto();
  [[nodiscard]] std::string Visualizza(std::string_view modo);
  [[nodiscard]] std::string EseguiConferma() const;

  Griglia griglia_;
  Conferma conferma_;
  Conferma confermaExtra_;
  ItemDescription descrizione_;
  SingleItemState finestra_;
  std::string risultato_;
  bool confermaDopo_ = false; ///< the confirmation waits until the window is gone
};

} // namespace lumoscad
