#include "platform/qt/ModelloElenco.hpp"

#include "platform/qt/Testi.hpp"

#include <algorithm>
#include <limits>

namespace lumoscad::qt {

using Colonna = ColonnaElenco::Genere;

ModelloElenco::ModelloElenco(const FinestraElenco& finestra, QObject* padre)
    : QAbstractTableModel(padre), finestra_(finestra) {
  Ricarica();
}

int ModelloElenco::rowCount(const QModelIndex& padre) const {
  return padre.isValid() ? 0 : righe_;
}

int ModelloElenco::columnCount(const QModelIndex& padre) const {
  return padre.isValid() ? 0 : static_cast<int>(finestra_.Description().colonne.size());
}

QVariant ModelloElenco::data(const QModelIndex& cella, int ruolo) const {
  if (!cella.isValid()) {
    return {};
  }
  try {
    const auto riga = static_cast<std::size_t>(cella.row());
    // While a gesture runs, the screen may already have fewer rows than this model was told of.
    return riga < finestra_.RowCount() ? Leggi(riga, cella.column(), ruolo) : QVariant();
  } catch (...) {
    if (guasto) {
      guasto(std::current_exception());
    }
    return {};
  }
}

QVariant ModelloElenco::Leggi(std::size_t riga, int colonna, int ruolo) const {
  const Colonna genere = Genere(colonna);
  switch (ruolo) {
  case Qt::DisplayRole:
    return genere == Colonna::Spunta ? QVariant() : QVariant(TestoCella(riga, colonna));
  case Qt::CheckStateRole:
    return genere == Colonna::Spunta ? QVariant(finestra_.Ticked(riga, colonna) ? Qt::Checked : Qt::Unchecked)
                                     : QVariant();
  case Qt::TextAlignmentRole:
    return QVariant::fromValue(Qt::AlignVCenter | (genere == Colonna::Importo ? Qt::AlignRight : Qt::AlignLeft));
  case Qt::AccessibleTextRole:
    return genere == Colonna::Spunta
               ? QVariant(finestra_.Ticked(riga, colonna) ? QStringLiteral("spuntata") : QStringLiteral("non spuntata"))
               : QVariant(TestoCella(riga, colonna));
  case RuoloReportIcon:
    return genere == Colonna::Spunta
               ? QVariant(finestra_.Ticked(riga, colonna) ? QStringLiteral("CHKON") : QStringLiteral("CHKOFF"))
               : QVariant();
  case RuoloVariata:
    return Variata(riga, colonna);
  default:
    return {};
  }
}

QString ModelloElenco::TestoCella(std::size_t riga, int colonna) const {
  return Testo(finestra_.CellText(riga, colonna));
}

bool ModelloElenco::Variata(std::size_t riga, int colonna) const {
  const int attuale = finestra_.Description().colonne[static_cast<std::size_t>(colonna)].attuale;
  if (attuale < 0) {
    return false;
  }
  // Both texts may live in one buffer of the screen, so the first is copied before the second is asked for.
  const std::string nuovo(finestra_.CellText(riga, colonna));
  // A blank is what a refused date leaves behind: it changes nothing.
  return nuovo.find_first_not_of(' ') != std::string::npos && nuovo != finestra_.CellText(riga, attuale);
}

bool ModelloElenco::HaVariazioni() const {
  for (int riga = 0; riga < righe_; ++riga) {
    for (int colonna = 0; colonna < columnCount(); ++colonna) {
      if (Variata(static_cast<std::size_t>(riga), colonna)) {
        return true;
      }
    }
  }
  return false;
}

QVariant ModelloElenco::headerData(int sezione, Qt::Orientation verso, int ruolo) const {
  if (verso != Qt::Horizontal || ruolo != Qt::DisplayRole || sezione < 0 || sezione >= columnCount()) {
    return {};
  }
  return Testo(finestra_.Description().colonne[static_cast<std::size_t>(sezione)].intestazione);
}

Qt::ItemFlags ModelloElenco::flags(const QModelIndex& cella) const {
  return cella.isValid() ? Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren : Qt::NoItemFlags;
}

void ModelloElenco::Ricarica() {
  beginResetModel();
  righe_ = static_cast<int>(std::min<std::size_t>(finestra_.RowCount(), std::numeric_limits<int>::max() / 64));
  endResetModel();
}

void ModelloElenco::Aggiorna(int prima, int ultima) {
  ultima = std::min(ultima, righe_ - 1);
  if (prima >= 0 && prima <= ultima) {
    emit dataChanged(index(prima, 0), index(ultima, columnCount() - 1));
  }
}

ColonnaElenco::Genere ModelloElenco::Genere(int colonna) const {
  if (colonna < 0 || colonna >= columnCount()) {
    return Colonna::Testo;
  }
  return finestra_.Description().colonne[static_cast<std::size_t>(colonna)].genere;
}

} // namespace lumoscad::qt
