#pragma once

#include "platform/Desktop.hpp"
#include "platform/qt/ModelloElenco.hpp"
#include "platform/qt/TestateElenco.hpp"
#include "platform/qt/VistaElenco.hpp"

class QBoxLayout;
class QComboBox;
class QDialog;
class QFrame;
class QLabel;
class QLineEdit;
class QPushButton;

namespace lumoscad::qt {

/// The widgets of a list window, each under its control's own name. The dialog owns them all; a top field or a bank
/// editor that the window does not have is null.
struct StrutturaElenco {
  StrutturaElenco(QDialog& dialogo, const FinestraElenco& finestra, ModelloElenco& modello);

  QLineEdit* TextScadenza = nullptr;
  QComboBox* cmbBanche = nullptr;
  QFrame* picScadenzeBanche = nullptr;
  TestateElenco* testate = nullptr;
  VistaElenco* vista = nullptr;
  QFrame* PicScrollVerticale = nullptr;
  QFrame* PicScrollOrizzontale = nullptr;
  QFrame* FrameScad = nullptr;
  QLineEdit* TextScad = nullptr;
  QFrame* FrameBanca = nullptr;
  QComboBox* cmbBanche2 = nullptr;
  QLabel* lblRighe = nullptr;
  QPushButton* PictureOk = nullptr;
  QPushButton* PictureAnnulla = nullptr;

  /// Lays an in-place editor's frame over `cella` (in viewport coordinates), never beyond the list's own area.
  void PosizionaSullaCella(QFrame& cornice, const QRect& cella) const;
  /// Lays the covers over the scroll bars, or takes them away.
  void CopriBarrette(bool coperte) const;

 private:
  void Sopra(QDialog& dialogo, const FinestraElenco& finestra, QBoxLayout& pila);
  [[nodiscard]] QFrame* CampoScadenza(const FinestraElenco& finestra, QWidget* padre);
  [[nodiscard]] QFrame* CampoBanca(const FinestraElenco& finestra, QWidget* padre);
  void Lista(QDialog& dialogo, const FinestraElenco& finestra, ModelloElenco& modello, QBoxLayout& pila);
  void Editor(const FinestraElenco& finestra);
  void Sotto(QDialog& dialogo, const FinestraElenco& finestra, QBoxLayout& pila);
};

} // namespace lumoscad::qt
