#pragma once

#include "platform/Desktop.hpp"
#include "platform/qt/ModelloElenco.hpp"
#include "platform/qt/StrutturaElenco.hpp"

#include <QDialog>

#include <cstdint>
#include <exception>

class QFrame;
class QKeyEvent;

namespace lumoscad::qt {

/// The modal window of a single item's due dates: the widgets of a list window, with the item's description above and
/// the control that ticks every row. Like the list window it has no rule of its own.
class FinestraScadenzarioQt final : public QDialog {
 public:
  FinestraScadenzarioQt(FinestraScadenzario& finestra, QWidget* padre);

  /// Shows the window until the screen has unloaded itself; gives back what a gesture threw, or null.
  [[nodiscard]] std::exception_ptr Mostra();

  /// Esc outside the editor: cancels.
  void reject() override;

 protected:
  void closeEvent(QCloseEvent* evento) override;
  void showEvent(QShowEvent* evento) override;
  void resizeEvent(QResizeEvent* evento) override;
  bool eventFilter(QObject* oggetto, QEvent* evento) override;

 private:
  /// Runs one gesture and follows it; gestures that come while another one runs are dropped.
  template <class Azione> void Gesto(const Azione& azione);
  void Chiudi();

  void AggiungiDescrizione();
  void AggiungiSelezionaTutto();
  void RinominaParti();
  void CollegaLista();
  void CollegaCampi();
  void CollegaTasti();

  void Sincronizza();
  void SincronizzaRighe(const StatoElenco& stato);
  void SincronizzaEditor(const EditorCella& editor);
  void SincronizzaScadenzario(const StatoScadenzario& stato);
  void TieniInPrimoPiano(bool sopra);
  void PosizionaEditor();

  void Preme(int riga, int x);
  void Rilascia();
  void PremiColonna(ColonnaElenco::Genere genere);
  void Digita(const QString& cifra);
  [[nodiscard]] int Colonna(ColonnaElenco::Genere genere) const;
  bool TastoInLista(const QKeyEvent& tasto);
  bool TastoInEditor(const QKeyEvent& tasto);

  FinestraScadenzario& finestra_;
  FinestraElenco& elenco_; ///< the list part of `finestra_`
  ModelloElenco modello_;
  StrutturaElenco parti_;
  QFrame* FrameDesc_ = nullptr;
  QPushButton* PicSelezionaTutto_ = nullptr;
  std::uint64_t ordine_ = 0;
  std::uint64_t contenuto_ = 0;
  std::ptrdiff_t rigaEditor_ = -1;
  int rigaPremuta_ = -1;
  bool premutaLaSpunta_ = false;
  bool inGesto_ = false;
  bool sincronizza_ = false;
  bool chiusa_ = false;
  std::exception_ptr errore_;
};

} // namespace lumoscad::qt
