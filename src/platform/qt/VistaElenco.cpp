#include "platform/qt/VistaElenco.hpp"

#include "platform/qt/DelegatoElenco.hpp"
#include "platform/qt/Testi.hpp"

#include <QApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QScrollBar>
#include <QWheelEvent>

#include <algorithm>

namespace lumoscad::qt {

namespace {

using Genere = ColonnaElenco::Genere;

bool Editabile(Genere genere) {
  return genere == Genere::EditorData || genere == Genere::EditorBanca;
}

} // namespace

VistaElenco::VistaElenco(const FinestraElenco& finestra, ModelloElenco& modello, QWidget* padre)
    : QTableView(padre), finestra_(finestra), modello_(modello), misure_(finestra.Description().colonne),
      immagini_(new ImmaginiElenco(this)) {
  setObjectName(Testo(finestra.Description().nomeLista));
  setAccessibleName(Testo(finestra.Description().titolo));
  setFont(aspetto::Carattere(finestra.Description().carattere));
  setModel(&modello);
  setItemDelegate(new DelegatoElenco(*immagini_, this));
  Prepara();
}

void VistaElenco::Prepara() {
  setFrameShape(QFrame::NoFrame);
  setShowGrid(false);
  setWordWrap(false);
  setEditTriggers(NoEditTriggers);
  setSelectionBehavior(SelectRows);
  setSelectionMode(SingleSelection);
  setTabKeyNavigation(false);
  setVerticalScrollMode(ScrollPerItem);
  setHorizontalScrollMode(ScrollPerPixel);
  setCornerButtonEnabled(false);
  horizontalHeader()->hide();
  horizontalHeader()->setMinimumSectionSize(1);
  horizontalHeader()->setSectionResizeMode(QHeaderView::Fixed);
  verticalHeader()->hide();
  verticalHeader()->setMinimumSectionSize(aspetto::AltezzaRiga);
  verticalHeader()->setDefaultSectionSize(aspetto::AltezzaRiga);
  verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
  for (int colonna = 0; colonna < modello_.columnCount(); ++colonna) {
    setColumnHidden(colonna, finestra_.Description().colonne[static_cast<std::size_t>(colonna)].larghezza <= 0);
  }
  DisponiColonne();
}

QSize VistaElenco::sizeHint() const {
  const StatoElenco& stato = finestra_.Stato();
  const int barra = style()->pixelMetric(QStyle::PM_ScrollBarExtent, nullptr, this);
  const bool scorre = modello_.rowCount() > finestra_.Description().righeSenzaScorrere;
  const int larghezza = std::max(misure_.Totale() + (scorre ? barra : 0), stato.larghezzaLista / TwipsPerPixelX);
  const int altezza = std::max(stato.altezzaLista / TwipsPerPixelY, 6 * aspetto::AltezzaRiga);
  return {larghezza, altezza};
}

void VistaElenco::MostraSelezionata(int riga) {
  const bool prima = std::exchange(taciSelezione_, true);
  const int colonna = std::max(currentIndex().column(), 0);
  if (riga < 0 || riga >= modello_.rowCount()) {
    setCurrentIndex({});
    clearSelection();
  } else {
    setCurrentIndex(modello_.index(riga, colonna));
  }
  taciSelezione_ = prima;
}

void VistaElenco::Vai(int riga, int colonna) {
  if (riga >= 0 && riga < modello_.rowCount()) {
    setCurrentIndex(modello_.index(riga, std::clamp(colonna, 0, modello_.columnCount() - 1)));
  }
}

void VistaElenco::Premi(const QModelIndex& cella) {
  scrollTo(cella);
  const int y = (rowViewportPosition(cella.row()) + rowHeight(cella.row()) / 2) * TwipsPerPixelY;
  listener_->MousePressed(cella.row(), misure_.Mezzo(cella.column()), y);
  listener_->MouseReleased();
}

int VistaElenco::ColonnaAttiva(int colonna, bool avanti, bool soloEditor) const {
  const int passo = avanti ? 1 : -1;
  for (int c = colonna + passo; c >= 0 && c < modello_.columnCount(); c += passo) {
    const Genere genere = modello_.Genere(c);
    if (!isColumnHidden(c) && (Editabile(genere) || (!soloEditor && genere == Genere::Spunta))) {
      return c;
    }
  }
  return -1;
}

std::pair<int, int> VistaElenco::RigheInVista() const {
  const int ultima = rowAt(viewport()->height() - 1);
  return {rowAt(0), ultima < 0 ? modello_.rowCount() - 1 : ultima};
}

void VistaElenco::currentChanged(const QModelIndex& nuova, const QModelIndex& vecchia) {
  QTableView::currentChanged(nuova, vecchia);
  viewport()->update(visualRect(vecchia));
  viewport()->update(visualRect(nuova));
  if (!taciSelezione_ && nuova.isValid() && nuova.row() != vecchia.row() && listener_ != nullptr) {
    listener_->RowSelected(nuova.row());
  }
}

int VistaElenco::NominaleX(int x) const {
  const int colonna = columnAt(x);
  if (colonna >= 0) {
    return misure_.Twips(colonna, x - columnViewportPosition(colonna), columnWidth(colonna));
  }
  return misure_.Oltre(x - (horizontalHeader()->length() - horizontalHeader()->offset()));
}

void VistaElenco::mousePressEvent(QMouseEvent* evento) {
  evento->accept();
  if (evento->button() != Qt::LeftButton) {
    return;
  }
  const QPoint punto = evento->position().toPoint();
  const int riga = rowAt(punto.y());
  const int colonna = columnAt(punto.x());
  // Taken before the selection moves: making a half-hidden cell current scrolls the list.
  const int x = NominaleX(punto.x());
  const int y = punto.y() * TwipsPerPixelY;
  if (riga >= 0 && colonna >= 0) {
    const bool prima = std::exchange(taciSelezione_, true);
    setCurrentIndex(modello_.index(riga, colonna));
    taciSelezione_ = prima;
  }
  premuta_ = true;
  listener_->MousePressed(riga, x, y);
}

void VistaElenco::mouseMoveEvent(QMouseEvent* evento) {
  evento->accept();
}

void VistaElenco::mouseReleaseEvent(QMouseEvent* evento) {
  evento->accept();
  if (evento->button() == Qt::LeftButton && std::exchange(premuta_, false)) {
    listener_->MouseReleased();
  }
}

void VistaElenco::keyPressEvent(QKeyEvent* evento) {
  if (evento->key() == Qt::Key_Escape) {
    evento->ignore();
    return;
  }
  if (bloccata_) {
    listener_->KeyRefused();
    evento->accept();
    return;
  }
  if (TastoSullaCella(*evento) || TastoDiMovimento(*evento)) {
    evento->accept();
    return;
  }
  QTableView::keyPressEvent(evento);
}

bool VistaElenco::TastoSullaCella(const QKeyEvent& evento) {
  if (evento.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)) {
    return false;
  }
  const QModelIndex cella = currentIndex();
  const Genere genere = modello_.Genere(cella.column());
  const int tasto = evento.key();
  if (tasto == Qt::Key_Space || tasto == Qt::Key_Return || tasto == Qt::Key_Enter || tasto == Qt::Key_F2) {
    if (cella.isValid() && (tasto == Qt::Key_Space ? genere == Genere::Spunta : Editabile(genere))) {
      listener_->CellActivated(cella);
    }
    return true;
  }
  if (genere == Genere::EditorData && evento.text().size() == 1 && evento.text().at(0).isDigit()) {
    listener_->DigitTyped(cella, evento.text());
    return true;
  }
  return false;
}

bool VistaElenco::TastoDiMovimento(const QKeyEvent& evento) {
  if (evento.key() == Qt::Key_Home) {
    Vai(0, currentIndex().column());
    return true;
  }
  if (evento.key() == Qt::Key_End) {
    Vai(modello_.rowCount() - 1, currentIndex().column());
    return true;
  }
  return false;
}

void VistaElenco::wheelEvent(QWheelEvent* evento) {
  if (bloccata_) {
    evento->accept();
    return;
  }
  QTableView::wheelEvent(evento);
}

void VistaElenco::resizeEvent(QResizeEvent* evento) {
  QTableView::resizeEvent(evento);
  DisponiColonne();
}

void VistaElenco::scrollContentsBy(int dx, int dy) {
  QTableView::scrollContentsBy(dx, dy);
  if (listener_ != nullptr) {
    listener_->LaidOut();
  }
}

void VistaElenco::DisponiColonne() {
  const std::vector<int> pixel = misure_.Pixel(viewport()->width());
  for (int colonna = 0; colonna < modello_.columnCount(); ++colonna) {
    if (!isColumnHidden(colonna)) {
      setColumnWidth(colonna, pixel[static_cast<std::size_t>(colonna)]);
    }
  }
  if (listener_ != nullptr) {
    listener_->LaidOut();
  }
}

} // namespace lumoscad::qt
