#pragma once

#include "platform/qt/Aspetto.hpp"
#include "platform/qt/IconeElenco.hpp"
#include "platform/qt/MisureColonne.hpp"
#include "platform/qt/ModelloElenco.hpp"

#include <QTableView>

#include <utility>

namespace lumoscad::qt {

/// Who is told of what happens in a list. Positions are nominal twips, rows are -1 for none.
class ListListener {
 public:
  ListListener() = default;
  ListListener(const ListListener&) = delete;
  ListListener& operator=(const ListListener&) = delete;
  virtual ~ListListener() = default;

  virtual void RowSelected(int row) = 0;
  /// Left button down; `row` is the one under the pointer.
  virtual void MousePressed(int row, int x, int y) = 0;
  /// Left button up after a press in the list.
  virtual void MouseReleased() = 0;
  /// A tick or an editor was chosen by keyboard.
  virtual void CellActivated(const QModelIndex& cell) = 0;
  /// A digit was typed on a date cell.
  virtual void DigitTyped(const QModelIndex& cell, const QString& digit) = 0;
  /// A key came while the list was blocked.
  virtual void KeyRefused() = 0;
  /// Columns or scroll position changed.
  virtual void LaidOut() = 0;
};

/// The list of a window: a table that turns mouse and keys into the gestures the screens know.
class VistaElenco final : public QTableView {
 public:
  VistaElenco(const FinestraElenco& finestra, ModelloElenco& modello, QWidget* padre);

  /// There is one from the moment on at which the list can be seen, and it outlives the list's last event.
  void SetListener(ListListener* listener) { listener_ = listener; }

  /// The pictures of the tick cells.
  [[nodiscard]] ImmaginiElenco& Immagini() const noexcept { return *immagini_; }
  /// Makes `riga` the current row, in the current column, without telling anyone.
  void MostraSelezionata(int riga);
  /// Makes `cella` the current one; the listener is told of the row when it changes.
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
  ListListener* listener_ = nullptr;
  bool taciSelezione_ = false;
  bool premuta_ = false;
  bool bloccata_ = false;
};

} // namespace lumoscad::qt
