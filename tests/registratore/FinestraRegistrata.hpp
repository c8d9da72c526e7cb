#pragma once

#include "Registro.hpp"

#include "platform/Desktop.hpp"

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace lumoscad::test {

/// A list window whose gestures are written into a record on their way to the screen, each with what it changed.
class FinestraRegistrata final : public ListWindow {
 public:
  /// `item` is the single-item window around the list, null for a plain list.
  FinestraRegistrata(Registro& registro, ListWindow& vera, const SingleItemWindow* item = nullptr)
      : registro_(registro), vera_(vera), item_(item) {}
  FinestraRegistrata(const FinestraRegistrata&) = delete;
  FinestraRegistrata& operator=(const FinestraRegistrata&) = delete;

  /// The window as it opens.
  void Descrivi();
  void Gesto(const std::string& quale, const std::function<void()>& azione);

  [[nodiscard]] const ListDescription& Description() const override { return vera_.Description(); }
  [[nodiscard]] const ListState& Stato() const override { return vera_.Stato(); }
  [[nodiscard]] std::size_t RowCount() const override { return vera_.RowCount(); }
  [[nodiscard]] std::string_view CellText(std::size_t riga, int colonna) const override {
    return vera_.CellText(riga, colonna);
  }
  [[nodiscard]] bool Ticked(std::size_t riga, int colonna) const override { return vera_.Ticked(riga, colonna); }
  void SetDropDown(DropDown dropDown) override { vera_.SetDropDown(std::move(dropDown)); }
  [[nodiscard]] ListGestures* Gestures() override { return vera_.Gestures(); }
  [[nodiscard]] FieldGestures* Fields() override { return vera_.Fields(); }

  void Seleziona(std::ptrdiff_t riga) override;
  void LVScadenze_MouseDown(int x, int y) override;
  void LVScadenze_Click(int topRiga) override;
  void LVScadenze_ItemCheck(std::size_t riga) override;
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
  struct Aspetto {
    std::vector<std::string> stato; ///< "name value"
    std::vector<std::string> righe; ///< the cells of a row, in display order
  };

  [[nodiscard]] std::vector<std::string> Riga(std::size_t riga) const;
  [[nodiscard]] Aspetto Guarda() const;
  void DescriviRighe(const std::vector<std::string>& righe);
  void Differenze(const Aspetto& prima, const Aspetto& dopo);
  [[nodiscard]] std::string ColonnaSotto(int x) const;

  Registro& registro_;
  ListWindow& vera_;
  const SingleItemWindow* item_;
};

/// The same for the single-item window.
class ScadenzarioRegistrato final : public SingleItemWindow {
 public:
  ScadenzarioRegistrato(Registro& registro, SingleItemWindow& vera)
      : vera_(vera), elenco_(registro, vera.Elenco(), &vera) {}

  void Descrivi() { elenco_.Descrivi(); }
  [[nodiscard]] ListWindow& Elenco() override { return elenco_; }
  [[nodiscard]] const ItemDescription& Description() const override { return vera_.Description(); }
  [[nodiscard]] const SingleItemState& Stato() const override { return vera_.Stato(); }
  void PicSelezionaTutto_Click() override {
    elenco_.Gesto("seleziona tutto", [this] { vera_.PicSelezionaTutto_Click(); });
  }
  void PictureOk_Click() override {
    elenco_.Gesto("Conferma", [this] { vera_.PictureOk_Click(); });
  }

 private:
  SingleItemWindow& vera_;
  FinestraRegistrata elenco_;
};

} // namespace lumoscad::test
