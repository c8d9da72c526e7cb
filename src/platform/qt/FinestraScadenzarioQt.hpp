#pragma once

#include "platform/qt/FinestraModaleQt.hpp"

class QKeyEvent;

namespace lumoscad::qt {

/// The modal window of a single item's due dates: a window over a list, with the item's description above and the
/// control that ticks every row.
class FinestraScadenzarioQt final : public FinestraModaleQt {
 public:
  FinestraScadenzarioQt(FinestraScadenzario& finestra, QWidget* sotto);

  /// Esc outside the editor.
  void reject() override;

 protected:
  bool eventFilter(QObject* oggetto, QEvent* evento) override;

 private:
  [[nodiscard]] QString QuanteRighe(int righe) const override;
  void Segui(const StatoElenco& stato) override;
  void MousePressed(int row, int x, int y) override;
  void MouseReleased() override;
  void CellActivated(const QModelIndex& cell) override;
  void DigitTyped(const QModelIndex& cell, const QString& digit) override;
  void KeyRefused() override;

  void AggiungiDescrizione();
  void AggiungiSelezionaTutto();
  void RinominaParti();
  void CollegaCampi();
  void CollegaPulsanti();

  void MostraScadenzario(const StatoScadenzario& stato);
  void TieniInPrimoPiano(bool sopra);

  void PremiColonna(Genere genere);
  void Digita(const QString& cifra);
  bool TastoInLista(const QKeyEvent& tasto);
  bool TastoInEditor(const QKeyEvent& tasto);
  void LasciaCampo(const std::function<void()>& gesto, const QFocusEvent& evento);

  FinestraScadenzario& finestra_;
  QFrame* FrameDesc_ = nullptr;
  QPushButton* PicSelezionaTutto_ = nullptr;
  int rigaPremuta_ = -1;
  bool premutaLaSpunta_ = false;
  bool rilascioPerso_ = false; ///< the press that is on its way will not be followed by its release
};

} // namespace lumoscad::qt
