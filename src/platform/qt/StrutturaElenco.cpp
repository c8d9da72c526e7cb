#include "platform/qt/StrutturaElenco.hpp"

#include "platform/qt/Aspetto.hpp"
#include "platform/qt/IconeElenco.hpp"
#include "platform/qt/Testi.hpp"

#include <QAbstractItemView>
#include <QComboBox>
#include <QDialog>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QStyle>
#include <QStyledItemDelegate>
#include <QVBoxLayout>

#include <algorithm>

namespace lumoscad::qt {

namespace {

constexpr int MargineFinestra = 14;
constexpr int LarghezzaEtichetta = 110;
constexpr int AltezzaCampo = 28;

/// What the picture has to the right of the list, in pixels.
int MargineQuadro(const FinestraElenco& finestra) {
  const StatoElenco& stato = finestra.Stato();
  return (stato.larghezzaQuadro - stato.larghezzaLista) / TwipsPerPixelX;
}

QFrame* Cornice(const QString& nome, QWidget* padre) {
  auto* cornice = new QFrame(padre);
  cornice->setObjectName(nome);
  return cornice;
}

QHBoxLayout* InRiga(QWidget* contenitore, int sopra = 0, int sotto = 0) {
  auto* riga = new QHBoxLayout(contenitore);
  riga->setContentsMargins(0, sopra, 0, sotto);
  riga->setSpacing(8);
  return riga;
}

/// Makes an in-place editor fill its frame, which is hidden until the editor opens.
void InCornice(QWidget* editor) {
  editor->setFocusPolicy(Qt::ClickFocus); // opened from the list, never reached by Tab
  editor->setMinimumSize(0, 0);
  editor->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Ignored);
  QHBoxLayout* riga = InRiga(editor->parentWidget());
  riga->setContentsMargins(1, 1, 1, 1);
  riga->addWidget(editor);
  editor->parentWidget()->hide();
}

bool HaEditorBanca(const FinestraElenco& finestra) {
  return std::any_of(finestra.Description().colonne.begin(), finestra.Description().colonne.end(),
                     [](const ColonnaElenco& colonna) { return colonna.genere == ColonnaElenco::Genere::EditorBanca; });
}

/// Adds a widget that is to be as wide as the list, which is narrower than the picture that holds it.
void AggiungiALista(QBoxLayout& pila, QWidget* widget, const FinestraElenco& finestra) {
  auto* riga = new QHBoxLayout;
  riga->setContentsMargins(0, 0, MargineQuadro(finestra), 0);
  riga->addWidget(widget);
  pila.addLayout(riga);
}

/// The caption with an access key that neither of the two buttons uses.
QString ConTastoDiScelta(const QString& testo, const QString& occupati) {
  for (qsizetype i = 0; i < testo.size(); ++i) {
    if (testo.at(i).isLetter() && !occupati.contains(testo.at(i).toLower())) {
      return QString(testo).insert(i, QLatin1Char('&'));
    }
  }
  return testo;
}

QLabel* Didascalia(const QString& nome, const QString& testo, QWidget* campo, QWidget* padre) {
  auto* etichetta = new QLabel(padre);
  etichetta->setObjectName(nome);
  etichetta->setTextFormat(Qt::PlainText);
  etichetta->setText(testo);
  etichetta->setMinimumWidth(LarghezzaEtichetta);
  etichetta->setBuddy(campo);
  return etichetta;
}

QComboBox* Elenco(const QString& nome, const std::vector<std::string>& voci, const FinestraElenco& finestra,
                  QWidget* padre) {
  auto* combo = new QComboBox(padre);
  combo->setObjectName(nome);
  const QFont carattere = aspetto::Carattere(finestra.Description().carattere);
  combo->setFont(carattere);
  combo->view()->setFont(carattere); // what drops down is a window of its own, and has the calling program's font
  // Sized by a fixed number of characters: measuring every entry would read them all.
  combo->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  // The style's own delegate draws menu entries, whose chosen one a style sheet leaves without a colour.
  combo->setItemDelegate(new QStyledItemDelegate(combo));
  combo->setMinimumContentsLength(12);
  combo->setMaxVisibleItems(14);
  QStringList testi;
  testi.reserve(static_cast<qsizetype>(voci.size()));
  for (const std::string& voce : voci) {
    testi.append(Testo(voce));
  }
  combo->addItems(testi);
  return combo;
}

void AggiungiEtichette(const FinestraElenco& finestra, QBoxLayout& riga, QWidget* padre) {
  for (const EtichettaElenco& voce : finestra.Description().etichette) {
    auto* etichetta = new QLabel(padre);
    etichetta->setObjectName(Testo(voce.nome));
    etichetta->setTextFormat(Qt::PlainText);
    etichetta->setText(Testo(voce.testo));
    if (etichetta->objectName().endsWith(QStringLiteral("Value"))) {
      QFont carattere = etichetta->font();
      carattere.setBold(true);
      etichetta->setFont(carattere);
    } else {
      etichetta->setContentsMargins(16, 0, 0, 0); // sets the pair apart from what is before it
    }
    etichetta->setVisible(!voce.testo.empty());
    riga.addWidget(etichetta);
  }
}

QPushButton* PulsanteImmagine(const QString& nome, const QString& testo, IconaElenco icona, const QString& aiuto,
                              QWidget* padre) {
  auto* pulsante = new QPushButton(Icona(icona), testo, padre);
  pulsante->setObjectName(nome);
  pulsante->setAutoDefault(false);
  pulsante->setIconSize(QSize(16, 16));
  pulsante->setMinimumSize(120, 34);
  pulsante->setToolTip(aiuto);
  return pulsante;
}

} // namespace

StrutturaElenco::StrutturaElenco(QDialog& dialogo, const FinestraElenco& finestra, ModelloElenco& modello) {
  aspetto::Vesti(dialogo, finestra.Description().carattere);
  auto* pila = new QVBoxLayout(&dialogo);
  pila->setContentsMargins(MargineFinestra, 10, MargineFinestra, 10);
  pila->setSpacing(0);
  Sopra(dialogo, finestra, *pila);
  Lista(dialogo, finestra, modello, *pila);
  Editor(finestra);
  Sotto(dialogo, finestra, *pila);
  QWidget* precedente = nullptr;
  for (QWidget* widget : std::initializer_list<QWidget*>{TextScadenza, cmbBanche, vista, PictureOk, PictureAnnulla}) {
    if (widget != nullptr && precedente != nullptr) {
      QWidget::setTabOrder(precedente, widget);
    }
    precedente = widget != nullptr ? widget : precedente;
  }
}

void StrutturaElenco::Sopra(QDialog& dialogo, const FinestraElenco& finestra, QBoxLayout& pila) {
  QFrame* rigaScadenza = Cornice(QStringLiteral("FrameRigaScadenza"), &dialogo);
  QHBoxLayout* primaRiga = InRiga(rigaScadenza, 2, 4);
  AggiungiALista(pila, rigaScadenza, finestra);
  QWidget* contenitoreBanca = rigaScadenza;
  QHBoxLayout* rigaBanca = primaRiga;
  if (finestra.Description().campoData) {
    primaRiga->addWidget(CampoScadenza(finestra, rigaScadenza));
  }
  if (finestra.Description().campoBanca && finestra.Description().campoData) {
    contenitoreBanca = Cornice(QStringLiteral("FrameRigaBanca"), &dialogo);
    rigaBanca = InRiga(contenitoreBanca, 2, 4);
    AggiungiALista(pila, contenitoreBanca, finestra);
  }
  if (finestra.Description().campoBanca) {
    rigaBanca->addWidget(CampoBanca(finestra, contenitoreBanca));
  }
  AggiungiEtichette(finestra, *primaRiga, rigaScadenza);
  primaRiga->addStretch(1);
  if (rigaBanca != primaRiga) {
    rigaBanca->addStretch(1);
  }
  QFrame* rigaScura = Cornice(QStringLiteral("RigaScura"), &dialogo);
  rigaScura->setFixedHeight(3);
  pila.addSpacing(4);
  AggiungiALista(pila, rigaScura, finestra);
}

QFrame* StrutturaElenco::CampoScadenza(const FinestraElenco& finestra, QWidget* padre) {
  QFrame* cornice = Cornice(QStringLiteral("FrameNuovaScadenza"), padre);
  QHBoxLayout* riga = InRiga(cornice);
  TextScadenza = new QLineEdit(cornice);
  TextScadenza->setObjectName(QStringLiteral("TextScadenza"));
  TextScadenza->setAccessibleName(Testo(*finestra.Description().campoData));
  TextScadenza->setPlaceholderText(QStringLiteral("GG/MM/AAAA"));
  TextScadenza->setContextMenuPolicy(Qt::NoContextMenu);
  TextScadenza->setFixedSize(132, AltezzaCampo);
  riga->addWidget(Didascalia(QStringLiteral("lblScadenza"),
                             ConTastoDiScelta(Testo(*finestra.Description().campoData), QStringLiteral("cab")),
                             TextScadenza, cornice));
  riga->addWidget(TextScadenza);
  return cornice;
}

QFrame* StrutturaElenco::CampoBanca(const FinestraElenco& finestra, QWidget* padre) {
  QFrame* cornice = Cornice(QStringLiteral("FrameNuovaBanca"), padre);
  QHBoxLayout* riga = InRiga(cornice);
  cmbBanche = Elenco(QStringLiteral("cmbBanche"), finestra.Description().banche, finestra, cornice);
  cmbBanche->setAccessibleName(Testo(*finestra.Description().campoBanca));
  cmbBanche->setFocusPolicy(Qt::StrongFocus);
  cmbBanche->setFixedSize(320, AltezzaCampo);
  const QString occupati = finestra.Description().campoData ? QStringLiteral("can") : QStringLiteral("ca");
  riga->addWidget(Didascalia(QStringLiteral("lblBanche"),
                             ConTastoDiScelta(Testo(*finestra.Description().campoBanca), occupati), cmbBanche,
                             cornice));
  riga->addWidget(cmbBanche);
  return cornice;
}

void StrutturaElenco::Lista(QDialog& dialogo, const FinestraElenco& finestra, ModelloElenco& modello,
                            QBoxLayout& pila) {
  picScadenzeBanche = Cornice(QStringLiteral("picScadenzeBanche"), &dialogo);
  auto* colonna = new QVBoxLayout(picScadenzeBanche);
  colonna->setContentsMargins(0, 0, MargineQuadro(finestra), 0);
  colonna->setSpacing(0);
  vista = new VistaElenco(finestra, modello, picScadenzeBanche);
  testate = new TestateElenco(finestra, *vista, picScadenzeBanche);
  colonna->addWidget(testate);
  colonna->addWidget(vista, 1);
  PicScrollVerticale = Cornice(QStringLiteral("PicScrollVerticale"), picScadenzeBanche);
  PicScrollOrizzontale = Cornice(QStringLiteral("PicScrollOrizzontale"), picScadenzeBanche);
  PicScrollVerticale->hide();
  PicScrollOrizzontale->hide();
  pila.addWidget(picScadenzeBanche, 1);
}

void StrutturaElenco::Editor(const FinestraElenco& finestra) {
  FrameScad = Cornice(QStringLiteral("FrameScad"), picScadenzeBanche);
  TextScad = new QLineEdit(FrameScad);
  TextScad->setObjectName(QStringLiteral("TextScad"));
  TextScad->setAccessibleName(QStringLiteral("Nuova data della riga"));
  TextScad->setContextMenuPolicy(Qt::NoContextMenu);
  TextScad->setFont(vista->font());
  InCornice(TextScad);
  if (HaEditorBanca(finestra)) {
    FrameBanca = Cornice(QStringLiteral("FrameBanca"), picScadenzeBanche);
    cmbBanche2 = Elenco(QStringLiteral("cmbBanche2"), finestra.Description().bancheCella, finestra, FrameBanca);
    cmbBanche2->setAccessibleName(QStringLiteral("Nuova banca della riga"));
    InCornice(cmbBanche2);
  }
}

void StrutturaElenco::Sotto(QDialog& dialogo, const FinestraElenco& finestra, QBoxLayout& pila) {
  QFrame* separatore = Cornice(QStringLiteral("FrameSeparatore"), &dialogo);
  QHBoxLayout* linea = InRiga(separatore);
  QFrame* rigaSepara = Cornice(QStringLiteral("RigaSepara"), separatore);
  rigaSepara->setFixedHeight(1);
  linea->addWidget(rigaSepara);
  AggiungiALista(pila, separatore, finestra);

  QFrame* frameOkAnnulla = Cornice(QStringLiteral("FrameOkAnnulla"), &dialogo);
  QHBoxLayout* riga = InRiga(frameOkAnnulla, 10, 0);
  lblRighe = new QLabel(frameOkAnnulla);
  lblRighe->setObjectName(QStringLiteral("lblRighe"));
  PictureOk = PulsanteImmagine(QStringLiteral("PictureOk"), QStringLiteral("&Conferma"), IconaElenco::Conferma,
                               QStringLiteral("Conferma le variazioni (Ctrl+Invio)"), frameOkAnnulla);
  PictureAnnulla = PulsanteImmagine(QStringLiteral("PictureAnnulla"), QStringLiteral("&Annulla"), IconaElenco::Annulla,
                                    QStringLiteral("Chiude senza variare nulla (Esc)"), frameOkAnnulla);
  riga->addWidget(lblRighe);
  riga->addStretch(1);
  riga->addWidget(PictureOk);
  riga->addWidget(PictureAnnulla);
  AggiungiALista(pila, frameOkAnnulla, finestra);
}

void StrutturaElenco::PosizionaSullaCella(QFrame& cornice, const QRect& cella) const {
  const QWidget* area = vista->viewport();
  const QRect dentro = cella.intersected(area->rect());
  if (dentro.isEmpty()) {
    cornice.move(-2 * picScadenzeBanche->width() - 1000, 0); // out of sight, but still open
    return;
  }
  cornice.setGeometry(QRect(area->mapTo(picScadenzeBanche, dentro.topLeft()), dentro.size()));
  cornice.raise();
}

void StrutturaElenco::CopriBarrette(bool coperte) const {
  const auto copri = [this, coperte](QFrame& coperchio, const QScrollBar& barra) {
    const bool serve = coperte && barra.isVisibleTo(picScadenzeBanche);
    if (serve) {
      coperchio.setGeometry(QRect(barra.mapTo(picScadenzeBanche, QPoint(0, 0)), barra.size()));
      coperchio.raise();
    }
    coperchio.setVisible(serve);
  };
  copri(*PicScrollVerticale, *vista->verticalScrollBar());
  copri(*PicScrollOrizzontale, *vista->horizontalScrollBar());
}

} // namespace lumoscad::qt
