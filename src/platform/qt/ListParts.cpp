#include "platform/qt/ListParts.hpp"

#include "platform/qt/AreaQt.hpp"
#include "platform/qt/GestureKeys.hpp"
#include "platform/qt/ListIcons.hpp"
#include "platform/qt/Look.hpp"
#include "platform/qt/Texts.hpp"

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

constexpr int WindowMargin = 14;
constexpr int LabelWidth = 110;
constexpr int FieldHeight = 28;
constexpr AreaQt::Colour Cover = &look::Colours::headingBackground;

/// What the picture has to the right of the list, in pixels.
int PictureMargin(const ListWindow& window) {
  const ListState& state = window.Stato();
  return look::PixelsX(state.pictureWidth - state.listWidth);
}

QFrame* Frame(const QString& name, QWidget* parent) {
  auto* frame = new QFrame(parent);
  frame->setObjectName(name);
  return frame;
}

QHBoxLayout* InRow(QWidget* container, int above = 0, int below = 0) {
  auto* row = new QHBoxLayout(container);
  row->setContentsMargins(0, above, 0, below);
  row->setSpacing(8);
  return row;
}

/// Makes an in-place editor fill its frame, which is hidden until the editor opens.
void InFrame(QWidget* editor) {
  editor->setFocusPolicy(Qt::ClickFocus); // opened from the list, never reached by Tab
  editor->setMinimumSize(0, 0);
  editor->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Ignored);
  QHBoxLayout* row = InRow(editor->parentWidget());
  row->setContentsMargins(1, 1, 1, 1);
  row->addWidget(editor);
  editor->parentWidget()->hide();
}

bool EditsBanks(const ListWindow& window) {
  return std::any_of(window.Description().columns.begin(), window.Description().columns.end(),
                     [](const ListColumn& column) { return column.kind == ListColumn::Kind::BankEditor; });
}

/// Adds a widget that is to be as wide as the list, which is narrower than the picture that holds it.
void AddToList(QBoxLayout& stack, QWidget* widget, const ListWindow& window) {
  auto* row = new QHBoxLayout;
  row->setContentsMargins(0, 0, PictureMargin(window), 0);
  row->addWidget(widget);
  stack.addLayout(row);
}

/// The caption with an access key that neither of the two buttons uses.
QString WithAccessKey(const QString& text, const QString& occupied) {
  for (qsizetype i = 0; i < text.size(); ++i) {
    if (text.at(i).isLetter() && !occupied.contains(text.at(i).toLower())) {
      return QString(text).insert(i, QLatin1Char('&'));
    }
  }
  return text;
}

QLabel* Caption(const QString& name, const QString& text, QWidget* field, QWidget* parent) {
  auto* label = new QLabel(parent);
  label->setObjectName(name);
  label->setTextFormat(Qt::PlainText);
  label->setText(text);
  label->setBuddy(field);
  return label;
}

/// The frames of the window carry the list's font, what is written in them the desktop's.
void SetFonts(QDialog& dialog, const QFont& listFont) {
  for (QWidget* frame : dialog.findChildren<QFrame*>(QString(), Qt::FindDirectChildrenOnly)) {
    if (qobject_cast<QLabel*>(frame) != nullptr) {
      continue;
    }
    frame->setFont(listFont);
    for (QWidget* widget : frame->findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly)) {
      const QFont font = look::Font({});
      widget->setFont(widget->font().bold() ? look::Bold(font) : font);
    }
  }
}

BankBox* Elenco(const QString& name, const std::vector<std::string>& entries, QWidget* parent) {
  auto* combo = new BankBox(parent);
  combo->setObjectName(name);
  // Sized by a fixed number of characters: measuring every entry would read them all.
  combo->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  // The style's own delegate draws menu entries, whose chosen one a style sheet leaves without a colour.
  combo->setItemDelegate(new QStyledItemDelegate(combo));
  combo->setMinimumContentsLength(12);
  combo->setMaxVisibleItems(14);
  QStringList texts;
  texts.reserve(static_cast<qsizetype>(entries.size()));
  for (const std::string& entry : entries) {
    texts.append(Text(entry));
  }
  combo->addItems(texts);
  return combo;
}

void AddLabels(const ListWindow& window, QBoxLayout& row, QWidget* parent) {
  for (const ListLabel& entry : window.Description().labels) {
    auto* label = new QLabel(parent);
    label->setObjectName(Text(entry.name));
    label->setTextFormat(Qt::PlainText);
    label->setText(Text(entry.text));
    if (label->objectName().endsWith(QStringLiteral("Value"))) {
      label->setFont(look::Bold(label->font()));
    } else {
      label->setContentsMargins(16, 0, 0, 0); // sets the pair apart from what is before it
    }
    label->setVisible(!entry.text.empty());
    row.addWidget(label);
  }
}

QPushButton* ImageButton(const QString& name, const QString& text, ListIcon icon, const QString& help,
                         QWidget* parent) {
  auto* button = new QPushButton(Icon(icon), text, parent);
  button->setObjectName(name);
  button->setAutoDefault(false);
  button->setToolTip(help);
  return button;
}

} // namespace

ListParts::ListParts(QDialog& dialog, ListWindow& window, ListModel& model) {
  look::Dress(dialog);
  auto* stack = new QVBoxLayout(&dialog);
  stack->setContentsMargins(WindowMargin, 10, WindowMargin, 10);
  stack->setSpacing(0);
  Above(dialog, window, *stack);
  BuildList(dialog, window, model, *stack);
  Editor(window);
  Below(dialog, window, *stack);
  QWidget* previous = nullptr;
  for (QWidget* widget : std::initializer_list<QWidget*>{TextScadenza, cmbBanche, table, PictureOk, PictureAnnulla}) {
    if (widget != nullptr && previous != nullptr) {
      QWidget::setTabOrder(previous, widget);
    }
    previous = widget != nullptr ? widget : previous;
  }
  Measure(dialog, window);
}

void ListParts::Measure(QDialog& dialog, const ListWindow& window) const {
  look::Dress(dialog);
  const QFont font = look::Font(window.Description().fontName);
  SetFonts(dialog, font);
  const int fieldHeight = look::Scaled(FieldHeight);
  if (TextScadenza != nullptr) {
    TextScadenza->setFixedSize(look::Scaled(132), fieldHeight);
    TextScadenza->setTextMargins(look::Scaled(6), 0, look::Scaled(6), 0);
  }
  for (QComboBox* combo : {cmbBanche, cmbBanche2}) {
    if (combo != nullptr) {
      combo->setFont(font);
      combo->view()->setFont(font); // what drops down is a window of its own, and has the calling program's font
    }
  }
  if (cmbBanche != nullptr) {
    cmbBanche->setFixedSize(look::Scaled(320), fieldHeight);
  }
  for (const char* name : {"lblScadenza", "LabelNScad", "lblBanche"}) {
    if (auto* caption = dialog.findChild<QLabel*>(QLatin1String(name))) {
      caption->setMinimumWidth(look::Scaled(LabelWidth));
    }
  }
  if (cellBankLabel != nullptr) {
    cellBankLabel->adjustSize();
  }
  TextScad->setFont(font);
  table->Measure();
  headings->Measure();
  for (QPushButton* button : {PictureOk, PictureAnnulla}) {
    button->setIconSize(QSize(look::Scaled(16), look::Scaled(16)));
    button->setMinimumSize(look::Scaled(120), look::Scaled(34));
  }
}

void ListParts::Above(QDialog& dialog, const ListWindow& window, QBoxLayout& stack) {
  if (!window.Description().warning.empty()) {
    auto* warning = new QLabel(&dialog);
    warning->setObjectName(QStringLiteral("lblAvviso"));
    warning->setTextFormat(Qt::PlainText);
    warning->setText(QStringLiteral("\u26A0 ") + Text(window.Description().warning));
    QFont bold = warning->font();
    bold.setBold(true);
    warning->setFont(bold);
    warning->setContentsMargins(0, 0, 0, 6);
    AddToList(stack, warning, window);
  }
  QFrame* dueDateRow = Frame(QStringLiteral("FrameRigaScadenza"), &dialog);
  QHBoxLayout* firstRow = InRow(dueDateRow, 2, 4);
  AddToList(stack, dueDateRow, window);
  QWidget* bankContainer = dueDateRow;
  QHBoxLayout* bankRow = firstRow;
  if (window.Description().dateField) {
    firstRow->addWidget(DueDateField(window, dueDateRow));
  }
  if (window.Description().bankField && window.Description().dateField) {
    bankContainer = Frame(QStringLiteral("FrameRigaBanca"), &dialog);
    bankRow = InRow(bankContainer, 2, 4);
    AddToList(stack, bankContainer, window);
  }
  if (window.Description().bankField) {
    bankRow->addWidget(BankField(window, bankContainer));
  }
  AddLabels(window, *firstRow, dueDateRow);
  firstRow->addStretch(1);
  if (bankRow != firstRow) {
    bankRow->addStretch(1);
  }
  auto* darkRow = new AreaQt(QStringLiteral("RigaScura"), &look::Colours::darkLine, &dialog);
  darkRow->setFixedHeight(3);
  stack.addSpacing(4);
  AddToList(stack, darkRow, window);
}

QFrame* ListParts::DueDateField(const ListWindow& window, QWidget* parent) {
  QFrame* frame = Frame(QStringLiteral("FrameNuovaScadenza"), parent);
  QHBoxLayout* row = InRow(frame);
  TextScadenza = new QLineEdit(frame);
  TextScadenza->setObjectName(QStringLiteral("TextScadenza"));
  TextScadenza->setAccessibleName(Text(*window.Description().dateField));
  TextScadenza->setPlaceholderText(QStringLiteral("GG/MM/AAAA"));
  TextScadenza->setContextMenuPolicy(Qt::NoContextMenu);
  row->addWidget(Caption(QStringLiteral("lblScadenza"),
                         WithAccessKey(Text(*window.Description().dateField), QStringLiteral("cab")), TextScadenza,
                         frame));
  row->addWidget(TextScadenza);
  return frame;
}

QFrame* ListParts::BankField(const ListWindow& window, QWidget* parent) {
  QFrame* frame = Frame(QStringLiteral("FrameNuovaBanca"), parent);
  QHBoxLayout* row = InRow(frame);
  cmbBanche = Elenco(QStringLiteral("cmbBanche"), window.Description().banks, frame);
  cmbBanche->setAccessibleName(Text(*window.Description().bankField));
  cmbBanche->view()->setAccessibleName(cmbBanche->accessibleName());
  cmbBanche->setFocusPolicy(Qt::StrongFocus);
  const QString occupied = window.Description().dateField ? QStringLiteral("can") : QStringLiteral("ca");
  row->addWidget(Caption(QStringLiteral("lblBanche"), WithAccessKey(Text(*window.Description().bankField), occupied),
                         cmbBanche, frame));
  row->addWidget(cmbBanche);
  return frame;
}

void ListParts::BuildList(QDialog& dialog, ListWindow& window, ListModel& model, QBoxLayout& stack) {
  picScadenzeBanche = Frame(QStringLiteral("picScadenzeBanche"), &dialog);
  auto* column = new QVBoxLayout(picScadenzeBanche);
  column->setContentsMargins(0, 0, PictureMargin(window), 0);
  column->setSpacing(0);
  table = new ListView(window, model, picScadenzeBanche);
  headings = new ListHeadings(window, *table, picScadenzeBanche);
  column->addWidget(headings);
  column->addWidget(table, 1);
  PicScrollVerticale = new AreaQt(QStringLiteral("PicScrollVerticale"), Cover, picScadenzeBanche);
  PicScrollOrizzontale = new AreaQt(QStringLiteral("PicScrollOrizzontale"), Cover, picScadenzeBanche);
  PicScrollVerticale->hide();
  PicScrollOrizzontale->hide();
  stack.addWidget(picScadenzeBanche, 1);
}

void ListParts::Editor(const ListWindow& window) {
  FrameScad = new AreaQt(QStringLiteral("FrameScad"), &look::Colours::accent, picScadenzeBanche);
  TextScad = new QLineEdit(FrameScad);
  TextScad->setObjectName(QStringLiteral("TextScad"));
  TextScad->setFrame(false); // the frame that it lies in is its border
  TextScad->setAccessibleName(QStringLiteral("Nuova data della riga"));
  TextScad->setContextMenuPolicy(Qt::NoContextMenu);
  InFrame(TextScad);
  if (EditsBanks(window)) {
    FrameBanca = new AreaQt(QStringLiteral("FrameBanca"), &look::Colours::accent, picScadenzeBanche);
    cmbBanche2 = Elenco(QStringLiteral("cmbBanche2"), window.Description().cellBanks, FrameBanca);
    cmbBanche2->setAccessibleName(QStringLiteral("Nuova banca della riga"));
    InFrame(cmbBanche2);
    cellBankLabel = Caption({}, cmbBanche2->accessibleName(), cmbBanche2, FrameBanca);
    cellBankLabel->hide(); // on this system a box is called by what is chosen in it, unless a label is its own
  }
}

void ListParts::Below(QDialog& dialog, const ListWindow& window, QBoxLayout& stack) {
  QFrame* separator = Frame(QStringLiteral("FrameSeparatore"), &dialog);
  QHBoxLayout* line = InRow(separator);
  auto* separatorRow = new AreaQt(QStringLiteral("RigaSepara"), &look::Colours::line, separator);
  separatorRow->setFixedHeight(1);
  line->addWidget(separatorRow);
  AddToList(stack, separator, window);

  QFrame* frameOkAnnulla = Frame(QStringLiteral("FrameOkAnnulla"), &dialog);
  QHBoxLayout* row = InRow(frameOkAnnulla, 10, 0);
  lblRighe = new QLabel(frameOkAnnulla);
  lblRighe->setObjectName(QStringLiteral("lblRighe"));
  PictureOk = ImageButton(QStringLiteral("PictureOk"), QStringLiteral("&Conferma"), ListIcon::Confirm,
                          QStringLiteral("Conferma le variazioni (%1)").arg(KeyText(Gesture::Confirm)), frameOkAnnulla);
  PictureAnnulla =
      ImageButton(QStringLiteral("PictureAnnulla"), QStringLiteral("&Annulla"), ListIcon::Cancel,
                  QStringLiteral("Chiude senza variare nulla (%1)").arg(KeyText(Gesture::Leave)), frameOkAnnulla);
  look::MarkAsConfirming(*PictureOk);
  look::MarkAsFaint(*lblRighe);
  auto* texts = new QVBoxLayout;
  texts->setSpacing(0);
  foot.Build(lblRighe, frameOkAnnulla, *texts);
  row->addLayout(texts, 1);
  row->addWidget(PictureOk);
  row->addWidget(PictureAnnulla);
  AddToList(stack, frameOkAnnulla, window);
}

void ListParts::PlaceOverCell(QFrame& frame, const QRect& cell) const {
  const QWidget* area = table->viewport();
  const QRect inside = cell.intersected(area->rect().adjusted(table->Frozen().Width(), 0, 0, 0));
  if (inside.isEmpty()) {
    frame.move(-2 * picScadenzeBanche->width() - 1000, 0); // out of sight, but still open
    return;
  }
  frame.setGeometry(QRect(area->mapTo(picScadenzeBanche, inside.topLeft()), inside.size()));
  frame.raise();
}

void ListParts::CoverScrollBars(bool covered) const {
  const auto coverWith = [this, covered](QFrame& cover, const QScrollBar& bar) {
    const bool serve = covered && bar.isVisibleTo(picScadenzeBanche);
    if (serve) {
      cover.setGeometry(QRect(bar.mapTo(picScadenzeBanche, QPoint(0, 0)), bar.size()));
      cover.raise();
    }
    cover.setVisible(serve);
  };
  coverWith(*PicScrollVerticale, *table->verticalScrollBar());
  coverWith(*PicScrollOrizzontale, *table->horizontalScrollBar());
}

} // namespace lumoscad::qt
