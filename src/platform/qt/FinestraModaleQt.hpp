#pragma once

#include "platform/Desktop.hpp"
#include "platform/qt/DialogoQt.hpp"
#include "platform/qt/ModelloElenco.hpp"
#include "platform/qt/StrutturaElenco.hpp"

#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <string>

namespace lumoscad::qt {

/// What the windows over a list have in common: the modal showing and its end, the way of a gesture to the screen and
/// of the screen's state back to the widgets, the in-place editors. It has no rule of its own. A window adds the
/// gestures that it alone has.
class FinestraModaleQt : public DialogoQt, protected ListListener {
 public:
  FinestraModaleQt(const FinestraModaleQt&) = delete;
  FinestraModaleQt& operator=(const FinestraModaleQt&) = delete;
  ~FinestraModaleQt() override { parti_.vista->SetListener(nullptr); } // the list goes after this

  /// Shows the window until the screen has unloaded itself; gives back what a gesture threw, or null.
  [[nodiscard]] std::exception_ptr Mostra();

 protected:
  using Genere = ColonnaElenco::Genere;

  static constexpr int CodiceTab = 9;
  static constexpr int CodiceInvio = 13;

  FinestraModaleQt(FinestraElenco& elenco, QWidget* sotto);

  /// Ends the construction, once all widgets are there: tells how many rows there are and takes a size.
  void Completa();
  /// The text that tells how many rows there are.
  [[nodiscard]] virtual QString QuanteRighe(int righe) const = 0;
  /// Makes the widgets that only this kind of window has follow the screen, before the in-place editors do.
  virtual void Segui(const StatoElenco& stato) = 0;

  /// Runs one gesture and follows it. Gestures that come while another one runs are dropped: they would find the
  /// screen half-way through a change. What one throws ends the showing.
  void Gesto(const std::function<void()>& azione);
  /// `gesto` is what "Conferma" and its keys do.
  void CollegaConferma(const std::function<void()>& gesto);
  [[nodiscard]] bool Chiusa() const noexcept { return chiusa_; }

  /// The first column of this kind; one past the last where there is none.
  [[nodiscard]] int Colonna(Genere genere) const;
  /// Writes a digit typed over the list into the date editor, once a gesture has opened it.
  void DigitaNellEditor(const QString& cifra);
  /// The cell on which the editor of this kind was opened last, where its row shows now.
  [[nodiscard]] QModelIndex CellaEditor(Genere genere) const;
  /// Esc outside an editor: leaves the window. Over changes it first goes to Annulla, because one Esc too many out of
  /// an editor must not throw a morning's work away.
  void Abbandona();
  /// True when the person left the field; false when the focus went to a list or a menu, or the window lost it.
  [[nodiscard]] static bool HaLasciatoIlCampo(const QFocusEvent& evento);

  void RowSelected(int row) override;
  void LaidOut() override;
  bool event(QEvent* evento) override;
  bool eventFilter(QObject* oggetto, QEvent* evento) override;
  void closeEvent(QCloseEvent* evento) override;
  void showEvent(QShowEvent* evento) override;
  void resizeEvent(QResizeEvent* evento) override;

  FinestraElenco& elenco_;
  ModelloElenco modello_;
  StrutturaElenco parti_;
  bool coperta_ = false; ///< another window came up modally since this was last set to false

 private:
  void CollegaLista();
  void CollegaCampi();
  void ScriviNellEditor(const std::string& testo);
  void MostraQuanteRighe();
  void Sincronizza();
  void SincronizzaRighe(const StatoElenco& stato);
  void SincronizzaEditor(const EditorCella& editor, QFrame& cornice, QWidget& campo, Genere genere);
  void SincronizzaEditor(const StatoElenco& stato);
  void PosizionaEditor();
  [[nodiscard]] const EditorCella& StatoEditor(Genere genere) const;
  [[nodiscard]] QRect AreaEditor(Genere genere) const;
  void Chiudi();

  std::uint64_t ordine_;
  std::uint64_t contenuto_;
  bool inGesto_ = false;
  bool sincronizza_ = false;
  bool chiusa_ = false;
  bool entratoConClic_ = false; ///< the click that gave the date field at the top the focus is still held
  std::exception_ptr errore_;
};

} // namespace lumoscad::qt
