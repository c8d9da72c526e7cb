#include "platform/qt/TestateElenco.hpp"

#include "platform/qt/Aspetto.hpp"
#include "platform/qt/Testi.hpp"

#include <QEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QTableView>

#include <algorithm>

namespace lumoscad::qt {

namespace {

constexpr int Margine = 6;
constexpr int LatoIndicatore = 10;
constexpr int LatoQuadratino = 14;
constexpr int PixelTestata = 11; // bold is wider: one pixel less keeps the longest heading whole

} // namespace

TestataQt::TestataQt(const QString& nome, const QString& testo, bool ordina, const QFont& carattere, QWidget* padre)
    : QAbstractButton(padre), ordina_(ordina) {
  setObjectName(nome);
  setText(testo);
  setAccessibleName(testo);
  setFocusPolicy(Qt::NoFocus);
  setFont(carattere); // under a style sheet it would not come down from the window
  if (ordina) {
    setCursor(Qt::PointingHandCursor);
    setAttribute(Qt::WA_Hover);
  }
}

bool TestataQt::event(QEvent* evento) {
  // A click on a heading that does not sort must not count as a click on the window behind it.
  if (!ordina_ && (evento->type() == QEvent::MouseButtonPress || evento->type() == QEvent::MouseButtonRelease)) {
    if (evento->type() == QEvent::MouseButtonRelease) {
      emit clicked();
    }
    evento->accept();
    return true;
  }
  return QAbstractButton::event(evento);
}

void TestataQt::paintEvent(QPaintEvent*) {
  QPainter disegno(this);
  if (ordina_ && underMouse()) {
    disegno.fillRect(rect(), aspetto::TestataSfiorata);
  }
  disegno.setPen(aspetto::Linea);
  disegno.drawLine(width() - 1, 0, width() - 1, height());
  QFont carattere = font();
  carattere.setBold(true);
  carattere.setPixelSize(PixelTestata);
  disegno.setFont(carattere);
  disegno.setPen(aspetto::Inchiostro);
  const QRect area = rect().adjusted(Margine, LatoIndicatore + 2, -Margine, -2);
  const QString testo = QFontMetrics(carattere).elidedText(text(), Qt::ElideRight, area.width());
  const Qt::Alignment verso = Qt::AlignVCenter | (destra_ ? Qt::AlignRight : Qt::AlignLeft);
  disegno.drawText(area, static_cast<int>(verso.toInt()) | static_cast<int>(Qt::TextSingleLine), testo);
}

ImmagineQt::ImmagineQt(const QString& nome, IconaElenco icona, QWidget* padre) : QWidget(padre), icona_(icona) {
  setObjectName(nome);
  setAttribute(Qt::WA_TransparentForMouseEvents);
  Mostra(icona);
}

void ImmagineQt::Mostra(IconaElenco icona) {
  icona_ = icona;
  setProperty("immagine", Testo(Chiave(icona)));
  update();
}

void ImmagineQt::paintEvent(QPaintEvent*) {
  QPainter disegno(this);
  Disegna(disegno, rect(), icona_);
}

TestateElenco::TestateElenco(const FinestraElenco& finestra, QTableView& vista, QWidget* padre)
    : QWidget(padre), finestra_(finestra), vista_(vista) {
  setFont(aspetto::Carattere(finestra.Description().carattereTestate));
  setFixedHeight(aspetto::AltezzaTestata);
  AggiungiTestate();
  AggiungiColonneScoperte();
}

void TestateElenco::AggiungiTestate() {
  for (const TestataElenco& testata : finestra_.Description().testate) {
    const QString numero = QString::number(testata.indice);
    Voce voce;
    voce.testata =
        new TestataQt(QStringLiteral("TLwTestata_") + numero, Testo(testata.testo), testata.ordina, font(), this);
    voce.indicatore = new ImmagineQt(QStringLiteral("PTestata_") + numero, IconaElenco::Unsorted, this);
    voce.indicatore->setVisible(testata.ordina); // nothing to indicate over a heading that never sorts
    voce.indice = testata.indice;
    voce.prima = testata.prima;
    voce.ultima = testata.ultima;
    const auto ultima = static_cast<std::size_t>(std::max(testata.ultima, 0));
    voce.testata->AllineaDestra(ultima < finestra_.Description().colonne.size() &&
                                finestra_.Description().colonne[ultima].genere == ColonnaElenco::Genere::Importo);
    voce.testata->setToolTip(testata.ordina
                                 ? QStringLiteral("Ordina per %1 (Ctrl+%2)").arg(Testo(testata.testo), numero)
                                 : Testo(testata.testo));
    QObject::connect(voce.testata, &QAbstractButton::clicked, this, [this, indice = testata.indice] {
      if (cliccata) {
        cliccata(indice);
      }
    });
    voci_.push_back(voce);
  }
}

bool TestateElenco::Coperta(int colonna) const {
  return std::any_of(finestra_.Description().testate.begin(), finestra_.Description().testate.end(),
                     [colonna](const TestataElenco& t) { return t.prima <= colonna && colonna <= t.ultima; });
}

void TestateElenco::AggiungiColonneScoperte() {
  for (int colonna = 0; colonna < static_cast<int>(finestra_.Description().colonne.size()); ++colonna) {
    const ColonnaElenco& c = finestra_.Description().colonne[static_cast<std::size_t>(colonna)];
    if (c.larghezza <= 0) {
      continue;
    }
    if (c.genere == ColonnaElenco::Genere::Spunta) {
      const QString nome = QStringLiteral("TLwTestataQuadratino");
      quadratini_.emplace_back(colonna, new ImmagineQt(quadratini_.empty() ? nome : nome + QString::number(colonna),
                                                       IconaElenco::Quadratino, this));
    }
    if (Coperta(colonna)) {
      continue;
    }
    Voce voce;
    voce.testata = new TestataQt(Testo(c.chiave), Testo(c.intestazione), false, font(), this);
    voce.testata->setToolTip(Testo(c.intestazione));
    voce.testata->AllineaDestra(c.genere == ColonnaElenco::Genere::Importo);
    voce.prima = voce.ultima = colonna;
    voci_.push_back(voce);
  }
  for (const auto& [colonna, quadratino] : quadratini_) {
    quadratino->raise();
  }
}

void TestateElenco::Disponi() {
  const int inizio = mapFromGlobal(vista_.viewport()->mapToGlobal(QPoint(0, 0))).x();
  for (const Voce& voce : voci_) {
    int sinistra = 0;
    int larghezza = 0;
    for (int colonna = voce.prima; colonna <= voce.ultima && colonna < vista_.model()->columnCount(); ++colonna) {
      if (!vista_.isColumnHidden(colonna)) {
        sinistra = larghezza == 0 ? vista_.columnViewportPosition(colonna) : sinistra;
        larghezza += vista_.columnWidth(colonna);
      }
    }
    voce.testata->setVisible(larghezza > 0);
    voce.testata->setGeometry(inizio + sinistra, 0, larghezza, height() - 1);
    if (voce.indicatore != nullptr) {
      voce.indicatore->setGeometry(inizio + sinistra + (larghezza - LatoIndicatore) / 2, 2, LatoIndicatore,
                                   LatoIndicatore);
      voce.indicatore->raise();
    }
  }
  for (const auto& [colonna, quadratino] : quadratini_) {
    const int sinistra = inizio + vista_.columnViewportPosition(colonna);
    quadratino->setGeometry(sinistra + (vista_.columnWidth(colonna) - LatoQuadratino) / 2,
                            (height() - LatoQuadratino) / 2 + 4, LatoQuadratino, LatoQuadratino);
  }
}

void TestateElenco::MostraOrdine(int indice, bool crescente) {
  for (const Voce& voce : voci_) {
    if (voce.indicatore != nullptr) {
      const IconaElenco direzione = crescente ? IconaElenco::Sorted : IconaElenco::SortedInverso;
      voce.indicatore->Mostra(voce.indice == indice ? direzione : IconaElenco::Unsorted);
    }
  }
}

void TestateElenco::paintEvent(QPaintEvent*) {
  QPainter disegno(this);
  disegno.fillRect(rect(), aspetto::FondoTestata);
  disegno.setPen(aspetto::Linea);
  disegno.drawLine(0, height() - 1, width(), height() - 1);
}

} // namespace lumoscad::qt
