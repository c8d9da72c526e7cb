#pragma once

#include "platform/Desktop.hpp"

#include <QDialog>
#include <QTableView>

#include <functional>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace lumoscad::prova {

/// A list window's screen that only records gestures and follows the plainest rules: enough to see the window move.
class FinestraFinta {
 public:
  /// Columns as in the bank schedule window; the rows are computed, so that any number of them is cheap.
  explicit FinestraFinta(std::size_t righe);
  FinestraFinta(const FinestraFinta&) = delete;
  FinestraFinta& operator=(const FinestraFinta&) = delete;

  static constexpr int ColonnaSpuntaData = 6;
  static constexpr int ColonnaData = 7;
  static constexpr int ColonnaSpuntaBanca = 9;
  static constexpr int ColonnaBanca = 10;

  FinestraElenco finestra;
  StatoElenco stato;
  std::size_t righe;
  bool inverso = false;           ///< the rows are shown from the last to the first
  std::vector<std::string> gesti; ///< every gesture received, as text
  std::set<std::pair<std::size_t, int>> spunte;
  std::string nuovaData; ///< what the date editor wrote last
  int ultimaX = -1;
  std::size_t letture = 0;            ///< cells read
  std::function<void()> allaConferma; ///< runs inside the confirm gesture

  /// How often `gesto` was received.
  [[nodiscard]] int Volte(const std::string& gesto) const;
  /// Nominal left end of a column, twips.
  [[nodiscard]] int Inizio(int colonna) const;

 private:
  void Colonne();
  void Richiami();
  void RichiamiEditor();
  void Clic(int alto);
  std::string_view TestoCella(std::size_t riga, int colonna);
  void ChiudiEditor();

  std::string cella_;
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

} // namespace lumoscad::prova
