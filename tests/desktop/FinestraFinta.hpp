#pragma once

#include "platform/Desktop.hpp"

#include <QDialog>
#include <QTableView>

#include <cstddef>
#include <functional>
#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace lumoscad::test {

/// A list window's screen that only records gestures and follows the plainest rules: enough to see the window move.
class FinestraFinta final : public ListWindow {
 public:
  /// Columns as in the bank schedule window; the rows are computed, so that any number of them is cheap.
  explicit FinestraFinta(std::size_t quante);
  FinestraFinta(const FinestraFinta&) = delete;
  FinestraFinta& operator=(const FinestraFinta&) = delete;

  static constexpr int ColonnaSpuntaData = 6;
  static constexpr int ColonnaData = 7;
  static constexpr int ColonnaSpuntaBanca = 9;
  static constexpr int ColonnaBanca = 10;

  ListDescription description;
  ListState stato;
  std::size_t righe;
  bool inverso = false;           ///< the rows are shown from the last to the first
  std::vector<std::string> gesti; ///< every gesture received, as text
  std::set<std::pair<std::size_t, int>> spunte;
  std::map<std::pair<std::size_t, int>, std::string> texts; ///< cells that say something of their own
  std::string nuovaData;                                    ///< what the date editor wrote last
  int ultimaX = -1;
  std::vector<RowDetail> dettagli;                     ///< of every row
  std::map<std::size_t, std::string> distinzioni;      ///< by row, shown in the second column
  mutable std::size_t letture = 0;                     ///< cells read
  std::function<void()> whileReading;                  ///< runs before a cell is read
  std::map<std::string, std::function<void()>> during; ///< by a gesture's name: runs inside it, before it has an effect

  /// How often `gesto` was received.
  [[nodiscard]] int Volte(const std::string& gesto) const;
  /// Nominal left end of a column, twips.
  [[nodiscard]] int Inizio(int colonna) const;

  [[nodiscard]] const ListDescription& Description() const override { return description; }
  [[nodiscard]] const ListState& Stato() const override { return stato; }
  [[nodiscard]] std::size_t RowCount() const override { return righe; }
  [[nodiscard]] std::string_view CellText(std::size_t riga, int colonna) const override;
  [[nodiscard]] bool Ticked(std::size_t riga, int colonna) const override { return spunte.count({riga, colonna}) > 0; }
  void SetDropDown(DropDown /*dropDown*/) override {}
  [[nodiscard]] std::vector<RowDetail> Dettagli(std::size_t /*riga*/) const override { return dettagli; }
  [[nodiscard]] std::string_view Distinzione(std::size_t riga, int colonna) const override;

  void Seleziona(std::ptrdiff_t riga) override;
  void LVScadenze_MouseDown(int x, int y) override;
  void LVScadenze_Click(int alto) override;
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
  void Colonne();
  void Record(const std::string& gesture, const std::string& value = "");
  void ChiudiEditor();

  mutable std::string cella_;
};

/// Shows the window modally and runs `copione` on it once it is active; closes it afterwards if it is still open.
void Esegui(FinestraFinta& finta, const std::function<void(QDialog&)>& copione);

/// Runs `copione` on the modal window that opens next, once it is active; closes it afterwards if it is still open.
void Recita(std::function<void(QDialog&)> copione);

/// The widget called `nome`; a missing one fails the test by an exception.
template <class Widget> Widget& Trova(QWidget& dove, const char* nome) {
  auto* trovato = dove.findChild<Widget*>(QString::fromUtf8(nome));
  if (trovato == nullptr) {
    throw std::runtime_error(std::string("no widget ") + nome);
  }
  return *trovato;
}

/// The window's list.
[[nodiscard]] QTableView& Lista(QDialog& finestra);
/// Clicks in the middle of a cell.
void Clicca(QTableView& lista, int riga, int colonna);
/// Whether the widget called `nome` is on the screen.
[[nodiscard]] bool Visibile(QDialog& finestra, const char* nome);

} // namespace lumoscad::test
