#pragma once

#include "platform/Desktop.hpp"
#include "platform/qt/ModelloElenco.hpp"
#include "platform/qt/StrutturaElenco.hpp"

#include <QDialog>

#include <cstdint>
#include <exception>

namespace lumoscad::qt {

/// The one modal window of all list screens. It has no rule of its own: it hands every gesture to the screen, then
/// reads the screen's state again and follows it.
class FinestraElencoQt final : public QDialog {
 public:
  FinestraElencoQt(FinestraElenco& finestra, QWidget* padre);

  /// Shows the window until the screen has unloaded itself; gives back what a gesture threw, or null.
  [[nodiscard]] std::exception_ptr Mostra();

  /// Esc: abandons an open editor, otherwise cancels.
  void reject() override;

 protected:
  void closeEvent(QCloseEvent* evento) override;
  void showEvent(QShowEvent* evento) override;
  void resizeEvent(QResizeEvent* evento) override;
  void mousePressEvent(QMouseEvent* evento) override;
  void mouseReleaseEvent(QMouseEvent* evento) override;
  bool eventFilter(QObject* oggetto, QEvent* evento) override;

 private:
  /// Runs one gesture and follows it. Gestures that come while another one runs are dropped: they would find the
  /// screen half-way through a change.
  template <class Azione> void Gesto(const Azione& azione);
  void Sincronizza();
  void SincronizzaRighe(const StatoElenco& stato);
  void SincronizzaCampi(const StatoElenco& stato);
  void SincronizzaEditor(const EditorCella& editor, QFrame& cornice, QWidget& campo, ColonnaElenco::Genere genere);
  void PosizionaEditor();
  void Chiudi();

  void CollegaLista();
  void CollegaCampi();
  void CollegaTasti();
  void Preme(int riga, int x, int y);
  void Rilascia();
  void Digita(const QModelIndex& cella, const QString& cifra);
  bool TastoInEditor(QObject* campo, int tasto);
  void ChiudiEditorCon(QObject* campo, int codice);
  void VaiAllaProssima(int tasto);
  [[nodiscard]] QRect CellaEditor(ColonnaElenco::Genere genere) const;

  FinestraElenco& finestra_;
  ModelloElenco modello_;
  StrutturaElenco parti_;
  std::uint64_t ordine_ = 0;
  std::uint64_t contenuto_ = 0;
  std::ptrdiff_t rigaEditor_ = -1;
  bool premutaFuori_ = false;
  bool inGesto_ = false;
  bool sincronizza_ = false;
  bool chiusa_ = false;
  std::exception_ptr errore_;
};

} // namespace lumoscad::qt
