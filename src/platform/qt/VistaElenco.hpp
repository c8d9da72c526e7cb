#pragma once

#include "platform/qt/Aspetto.hpp"
#include "platform/qt/IconeElenco.hpp"
#include "platform/qt/MisureColonne.hpp"
#include "platform/qt/ModelloElenco.hpp"

#include <QTableView>

#include <functional>
#include <utility>

namespace lumoscad::qt {

/// The list of a window: a table that turns mouse and keys into the gestures the screens know.
class VistaElenco final : public QTableView {
 public:
  /// Where the gestures go; positions are nominal twips, rows are -1 for none.
  struct Gesti {
    std::function<void(int riga)> seleziona;
    std::function<void(int riga, int x, int y)> preme;    ///< left button down; `riga` is the row under the pointer
    std::function<void()> rilascia;                       ///< left button up after a press in the list
    std::function<void(const QModelIndex& cella)> attiva; ///< a tick or an editor, by keyboard
    std::function<void(const QModelIndex& cella, const QString& cifra)> digita; ///< a digit on a date cell
    std::function<void()> bloccata;                                             ///< a key while the list is blocked
    std::function<void()> disposta;                                             ///< columns or scroll position changed
  };

  VistaElenco(const FinestraElenco& finestra, ModelloElenco& modello, QWidget* padre);

  Gesti gesti;

  /// The pictures of the tick cells.
  [[nodiscard]] ImmaginiElenco& Immagini() const noexcept { return *immagini_; }
  /// Makes `riga` the current row, in the current column, without telling anyone.
  void MostraSelezionata(int riga);
  /// Makes `cella` the current one; the row is told to `seleziona` when it changes.
  void Vai(int riga, int colonna);
  /// While blocked, neither the wheel nor the keys move the list under an open editor.
  void Blocca(bool bloccata) { bloccata_ = bloccata; }
  /// Presses in the middle of `cella`, as the mouse would.
  void Premi(const QModelIndex& cella);

  /// The nearest cell to tick or to edit in `riga`, from `colonna` (not included) to the right or to the left;
  /// -1 when there is none.
  [[nodiscard]] int ColonnaAttiva(int colonna, bool avanti, bool soloEditor) const;
  /// First and last row in sight; -1 when there is none.
  [[nodiscard]] std::pair<int, int> RigheInVista() const;
  [[nodiscard]] QSize sizeHint() const override;
  [[nodiscard]] QSize minimumSizeHint() const override { return {240, 4 * aspetto::AltezzaRiga}; }

  void keyboardSearch(const QString&) override {} // a search would read every row

 protected:
  void currentChanged(const QModelIndex& nuova, const QModelIndex& vecchia) override;
  void mousePressEvent(QMouseEvent* evento) override;
  void mouseDoubleClickEvent(QMouseEvent* evento) override { mousePressEvent(evento); }
  void mouseMoveEvent(QMouseEvent* evento) override;
  void mouseReleaseEvent(QMouseEvent* evento) override;
  void keyPressEvent(QKeyEvent* evento) override;
  void wheelEvent(QWheelEvent* evento) override;
  void resizeEvent(QResizeEvent* evento) override;
  void scrollContentsBy(int dx, int dy) override;

 private:
  void Prepara();
  void DisponiColonne();
  [[nodiscard]] int NominaleX(int x) const;
  [[nodiscard]] bool TastoSullaCella(const QKeyEvent& evento);
  [[nodiscard]] bool TastoDiMovimento(const QKeyEvent& evento);

  const FinestraElenco& finestra_;
  ModelloElenco& modello_;
  MisureColonne misure_;
  ImmaginiElenco* immagini_;
  bool taciSelezione_ = false;
  bool premuta_ = false;
  bool bloccata_ = false;
};

} // namespace lumoscad::qt
