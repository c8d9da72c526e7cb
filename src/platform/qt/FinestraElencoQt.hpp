#pragma once

#include "platform/qt/FinestraModaleQt.hpp"

#include <string_view>

namespace lumoscad::qt {

/// The one modal window of all list screens: to what all windows over a list do it adds the headings, the two banks,
/// the mouse outside the list and the way from cell to cell.
class FinestraElencoQt final : public FinestraModaleQt {
 public:
  FinestraElencoQt(FinestraElenco& finestra, QWidget* sotto);
  FinestraElencoQt(const FinestraElencoQt&) = delete;
  FinestraElencoQt& operator=(const FinestraElencoQt&) = delete;
  ~FinestraElencoQt() override { elenco_.SetDropDown({}); }

  /// Esc: abandons an open editor, otherwise leaves the window as `Abbandona` does.
  void reject() override;

 protected:
  void mousePressEvent(QMouseEvent* evento) override;
  void mouseReleaseEvent(QMouseEvent* evento) override;
  bool eventFilter(QObject* oggetto, QEvent* evento) override;

 private:
  [[nodiscard]] QString QuanteRighe(int righe) const override;
  void Segui(const StatoElenco& stato) override;
  void MousePressed(int row, int x, int y) override;
  void MouseReleased() override;
  void CellActivated(const QModelIndex& cell) override;
  void DigitTyped(const QModelIndex& cell, const QString& digit) override;
  void KeyRefused() override;

  void CollegaBanche();
  void MostraTendina(std::string_view nome, bool aperta);
  void CollegaTestate();
  bool TastoInEditor(QObject* campo, int tasto);
  void ChiudiEditorCon(QObject* campo, int codice);
  void VaiAllaProssima(const QObject* campo, int tasto);

  bool premutaFuori_ = false;
  bool premutaSottoLeRighe_ = false;
};

} // namespace lumoscad::qt
