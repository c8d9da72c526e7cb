#pragma once

#include "platform/Desktop.hpp"
#include "platform/qt/BankBox.hpp"
#include "platform/qt/ListFoot.hpp"
#include "platform/qt/ListHeadings.hpp"
#include "platform/qt/ListModel.hpp"
#include "platform/qt/ListView.hpp"

class QBoxLayout;
class QDialog;
class QFrame;
class QLabel;
class QLineEdit;
class QPushButton;

namespace lumoscad::qt {

/// The widgets of a list window, each under its control's own name. The dialog owns them all; a top field or a bank
/// editor that the window does not have is null.
struct ListParts {
  ListParts(QDialog& dialog, ListWindow& window, ListModel& model);

  QLineEdit* TextScadenza = nullptr;
  BankBox* cmbBanche = nullptr;
  QFrame* picScadenzeBanche = nullptr;
  ListHeadings* headings = nullptr;
  ListView* table = nullptr;
  QFrame* PicScrollVerticale = nullptr;
  QFrame* PicScrollOrizzontale = nullptr;
  QFrame* FrameScad = nullptr;
  QLineEdit* TextScad = nullptr;
  QFrame* FrameBanca = nullptr;
  BankBox* cmbBanche2 = nullptr;
  QLabel* cellBankLabel = nullptr; ///< what assistive tools call it; never shown
  QLabel* lblRighe = nullptr;
  ListFoot foot; ///< what stands behind it
  QPushButton* PictureOk = nullptr;
  QPushButton* PictureAnnulla = nullptr;

  /// Takes colours, fonts and sizes from the desktop as it is now.
  void Measure(QDialog& dialog, const ListWindow& window) const;
  /// Lays an in-place editor's frame over `cell` (in viewport coordinates), never beyond the list's own area.
  void PlaceOverCell(QFrame& frame, const QRect& cell) const;
  /// Lays the covers over the scroll bars, or takes them away.
  void CoverScrollBars(bool covered) const;

 private:
  void Above(QDialog& dialog, const ListWindow& window, QBoxLayout& stack);
  [[nodiscard]] QFrame* DueDateField(const ListWindow& window, QWidget* parent);
  [[nodiscard]] QFrame* BankField(const ListWindow& window, QWidget* parent);
  void BuildList(QDialog& dialog, ListWindow& window, ListModel& model, QBoxLayout& stack);
  void Editor(const ListWindow& window);
  void Below(QDialog& dialog, const ListWindow& window, QBoxLayout& stack);
};

} // namespace lumoscad::qt
