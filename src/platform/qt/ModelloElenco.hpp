#pragma once

#include "platform/Desktop.hpp"

#include <QAbstractTableModel>

#include <exception>
#include <functional>

namespace lumoscad::qt {

/// The rows of a list window as a Qt model. It keeps no row of its own: every cell is read from the
/// screen when it is painted, so a million rows cost no more than twenty.
class ModelloElenco final : public QAbstractTableModel {
 public:
  /// True for an editable cell whose new value differs from the present one.
  static constexpr int RuoloVariata = Qt::UserRole;
  /// For a tick cell, the key of its picture: "CHKON" or "CHKOFF".
  static constexpr int RuoloReportIcon = Qt::UserRole + 1;

  explicit ModelloElenco(const FinestraElenco& finestra, QObject* padre = nullptr);

  [[nodiscard]] int rowCount(const QModelIndex& padre = {}) const override;
  [[nodiscard]] int columnCount(const QModelIndex& padre = {}) const override;
  [[nodiscard]] QVariant data(const QModelIndex& cella, int ruolo = Qt::DisplayRole) const override;
  [[nodiscard]] QVariant headerData(int sezione, Qt::Orientation verso, int ruolo = Qt::DisplayRole) const override;
  [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& cella) const override;

  /// The set or the order of the rows changed.
  void Ricarica();
  /// The content of the rows from `prima` to `ultima` may have changed.
  void Aggiorna(int prima, int ultima);
  /// The kind of a column; plain text for a column that is not there.
  [[nodiscard]] ColonnaElenco::Genere Genere(int colonna) const;

  /// True when the person has changed a cell of any row.
  [[nodiscard]] bool HaVariazioni() const;

  /// Told of what a callback threw while a cell was read: painting cannot let it through.
  std::function<void(std::exception_ptr)> guasto;

 private:
  [[nodiscard]] QVariant Leggi(std::size_t riga, int colonna, int ruolo) const;
  [[nodiscard]] QString TestoCella(std::size_t riga, int colonna) const;
  [[nodiscard]] bool Variata(std::size_t riga, int colonna) const;

  const FinestraElenco& finestra_;
  int righe_ = 0;
};

} // namespace lumoscad::qt
