#include "platform/qt/MessaggioQt.hpp"

#include "platform/qt/Aspetto.hpp"
#include "platform/qt/Testi.hpp"

#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>

namespace lumoscad::qt {

namespace {

constexpr int LarghezzaMinima = 320;
constexpr int LarghezzaMassima = 620;
/// Beyond these the text goes into a scrolling field, so that OK stays on the screen.
constexpr qsizetype CaratteriMassimi = 1200;
constexpr qsizetype RigheMassime = 16;

QString ConInterruzioni(std::string_view testo) {
  QString risultato = Testo(testo);
  risultato.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
  risultato.replace(QLatin1Char('\r'), QLatin1Char('\n'));
  return risultato;
}

QWidget* Etichetta(const QString& testo, QWidget* padre) {
  auto* etichetta = new QLabel(padre);
  etichetta->setTextFormat(Qt::PlainText);
  etichetta->setText(testo);
  etichetta->setWordWrap(true);
  etichetta->setTextInteractionFlags(Qt::TextSelectableByMouse);
  int larghezza = LarghezzaMinima;
  for (const QString& riga : testo.split(QLatin1Char('\n'))) {
    larghezza = std::max(larghezza, etichetta->fontMetrics().horizontalAdvance(riga) + 4);
  }
  etichetta->setFixedWidth(std::min(larghezza, LarghezzaMassima));
  return etichetta;
}

QWidget* CampoLungo(const QString& testo, QWidget* padre) {
  auto* campo = new QPlainTextEdit(testo, padre);
  campo->setReadOnly(true);
  campo->setTabChangesFocus(true);
  campo->setContextMenuPolicy(Qt::NoContextMenu);
  campo->setMinimumSize(LarghezzaMassima, 260);
  return campo;
}

} // namespace

MessaggioQt::MessaggioQt(std::string_view testo, std::string_view titolo, QWidget* sotto)
    : DialogoQt(sotto, Qt::Dialog | Qt::WindowTitleHint | Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint) {
  setObjectName(QStringLiteral("MostraMessaggio"));
  setWindowTitle(Testo(titolo));
  aspetto::Vesti(*this, {});
  const QString corpo = ConInterruzioni(testo);
  const bool lungo = corpo.size() > CaratteriMassimi || corpo.count(QLatin1Char('\n')) >= RigheMassime;
  QWidget* scritta = lungo ? CampoLungo(corpo, this) : Etichetta(corpo, this);
  scritta->setObjectName(QStringLiteral("lblMessaggio"));
  setAccessibleDescription(corpo.left(CaratteriMassimi));

  auto* ok = new QPushButton(QStringLiteral("OK"), this);
  ok->setObjectName(QStringLiteral("PulsanteOk"));
  ok->setDefault(true);
  ok->setMinimumWidth(96);
  connect(ok, &QPushButton::clicked, this, &QDialog::accept);

  auto* pulsanti = new QHBoxLayout;
  pulsanti->addStretch(1);
  pulsanti->addWidget(ok);
  auto* pila = new QVBoxLayout(this);
  pila->setContentsMargins(20, 18, 20, 14);
  pila->setSpacing(16);
  pila->addWidget(scritta, 1);
  pila->addLayout(pulsanti);
  if (!lungo) {
    pila->setSizeConstraint(QLayout::SetFixedSize);
  }
  ok->setFocus();
}

bool MessaggioQt::Mostra() {
  exec();
  return isHidden();
}

} // namespace lumoscad::qt
