#pragma once

#include "platform/Desktop.hpp"
#include "platform/qt/IconeElenco.hpp"

#include <QAbstractButton>
#include <QWidget>

#include <functional>
#include <utility>
#include <vector>

class QTableView;

namespace lumoscad::qt {

/// One drawn heading. It answers to the mouse only when it sorts; the keyboard reaches it by Ctrl and its index.
class TestataQt final : public QAbstractButton {
 public:
  TestataQt(const QString& nome, const QString& testo, bool ordina, const QFont& carattere, QWidget* padre);
  void AllineaDestra(bool destra) { destra_ = destra; }

 protected:
  void paintEvent(QPaintEvent* evento) override;
  bool event(QEvent* evento) override;

 private:
  bool ordina_;
  bool destra_ = false;
};

/// A widget that shows one picture; its property "immagine" holds the picture's key.
class ImmagineQt final : public QWidget {
 public:
  ImmagineQt(const QString& nome, IconaElenco icona, QWidget* padre);
  void Mostra(IconaElenco icona);

 protected:
  void paintEvent(QPaintEvent* evento) override;

 private:
  IconaElenco icona_;
};

/// The strip of headings above the list, lined up with its columns also when they are scrolled or stretched.
class TestateElenco final : public QWidget {
 public:
  TestateElenco(const FinestraElenco& finestra, QTableView& vista, QWidget* padre);

  /// Told the index of the heading that was clicked.
  std::function<void(int indice)> cliccata;

  /// Places every heading over its columns.
  void Disponi();
  /// Shows which heading sorts the list, and in which direction.
  void MostraOrdine(int indice, bool crescente);

 protected:
  void paintEvent(QPaintEvent* evento) override;

 private:
  struct Voce {
    TestataQt* testata = nullptr;
    ImmagineQt* indicatore = nullptr; ///< null over a column that has only its own heading text
    int indice = -1;
    int prima = 0;
    int ultima = 0;
  };

  void AggiungiTestate();
  void AggiungiColonneScoperte();
  [[nodiscard]] bool Coperta(int colonna) const;

  const FinestraElenco& finestra_;
  QTableView& vista_;
  std::vector<Voce> voci_;
  std::vector<std::pair<int, ImmagineQt*>> quadratini_; ///< the tick columns and their squares
};

} // namespace lumoscad::qt
