#include "platform/qt/HelpQt.hpp"

#include "platform/base/FoldedText.hpp"
#include "platform/qt/GestureKeys.hpp"
#include "platform/qt/ListPdf.hpp"
#include "platform/qt/Look.hpp"
#include "platform/qt/SaveDialog.hpp"
#include "platform/qt/Texts.hpp"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSaveFile>
#include <QScreen>
#include <QTableWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <array>

namespace lumoscad::qt {

namespace {

enum HelpCell { KeysColumn, NameColumn, HelpColumn, PlaceColumn, Columns };

constexpr QSize HelpSize(900, 560);
constexpr std::array Shares{22, 20, 39, 19}; ///< of the columns in the width, hundredths
constexpr int SearchMargin = 5;
constexpr int HelpRowMargin = 6;

const std::array<QString, Columns>& HelpHeadings() {
  static const std::array<QString, Columns> Headings{QStringLiteral("Tasti"), QStringLiteral("Gesto"),
                                                     QStringLiteral("Che cosa fa"), QStringLiteral("Dove")};
  return Headings;
}

QPushButton* HelpButton(const QString& name, const QString& text, QWidget* parent) {
  auto* button = new QPushButton(text, parent);
  button->setObjectName(name);
  button->setAutoDefault(false); // Enter in the field above presses nothing
  return button;
}

} // namespace

HelpQt::HelpQt(const std::vector<GestureEntry>& entries, QWidget* below)
    : DialogQt(below, Qt::Dialog | Qt::WindowTitleHint | Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint),
      words_(new QLineEdit(this)), count_(new QLabel(this)),
      table_(new QTableWidget(static_cast<int>(entries.size()), Columns, this)) {
  setObjectName(QStringLiteral("HelpWindow"));
  setWindowTitle(NameOf(Gesture::Help));
  words_->setObjectName(QStringLiteral("HelpSearch"));
  words_->setAccessibleName(QStringLiteral("Cerca fra i gesti"));
  words_->setPlaceholderText(QStringLiteral("Cerca: un tasto o una parola"));
  words_->setContextMenuPolicy(Qt::NoContextMenu);
  words_->setClearButtonEnabled(true);
  words_->setTextMargins(SearchMargin, 0, SearchMargin, 0);
  count_->setObjectName(QStringLiteral("HelpCount"));
  Fill(entries);
  QPushButton* print = HelpButton(QStringLiteral("HelpPrint"), QStringLiteral("&Stampa…"), this);
  print->setToolTip(QStringLiteral("Salva l'elenco in un PDF da stampare (%1)").arg(KeyText(Gesture::HelpPrint)));
  QPushButton* close = HelpButton(QStringLiteral("HelpClose"), QStringLiteral("&Chiudi"), this);
  close->setToolTip(QStringLiteral("Chiude (%1)").arg(KeyText(Gesture::HelpClose)));
  connect(print, &QPushButton::clicked, this, [this] { Print(); });
  connect(close, &QPushButton::clicked, this, &QDialog::reject);
  connect(words_, &QLineEdit::textChanged, this, [this](const QString& words) { Search(words); });
  Bind(*this, Gesture::HelpPrint, [this](std::size_t) { Print(); });
  words_->installEventFilter(this);
  table_->installEventFilter(this);
  auto* buttons = new QHBoxLayout;
  buttons->addWidget(count_, 1);
  buttons->addWidget(print);
  buttons->addWidget(close);
  auto* stack = new QVBoxLayout(this);
  stack->setContentsMargins(16, 14, 16, 14);
  stack->setSpacing(10);
  stack->addWidget(words_);
  stack->addWidget(table_, 1);
  stack->addLayout(buttons);
  HelpQt::TakeLook();
  Search({});
  words_->setFocus();
}

void HelpQt::Fill(const std::vector<GestureEntry>& entries) {
  table_->setObjectName(QStringLiteral("HelpTable"));
  table_->setAccessibleName(windowTitle());
  table_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  table_->setSelectionBehavior(QAbstractItemView::SelectRows);
  table_->setSelectionMode(QAbstractItemView::SingleSelection);
  table_->setTabKeyNavigation(false);
  table_->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
  table_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  table_->verticalHeader()->hide();
  table_->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
  table_->horizontalHeader()->setSectionResizeMode(QHeaderView::Fixed);
  table_->horizontalHeader()->setSectionsClickable(false);
  table_->horizontalHeader()->setHighlightSections(false);
  table_->horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
  for (int column = 0; column < Columns; ++column) {
    table_->setHorizontalHeaderItem(column, new QTableWidgetItem(HelpHeadings().at(static_cast<std::size_t>(column))));
  }
  int row = 0;
  for (const GestureEntry& entry : entries) {
    table_->setItem(row, KeysColumn, new QTableWidgetItem(Text(ItalianKeys(entry))));
    table_->setItem(row, NameColumn, new QTableWidgetItem(Text(entry.name)));
    table_->setItem(row, HelpColumn, new QTableWidgetItem(Text(entry.help)));
    table_->setItem(row, PlaceColumn, new QTableWidgetItem(Text(PlaceName(entry.place))));
    ++row;
  }
}

/// Shows the rows in which every word stands, accents and case ignored.
void HelpQt::Search(const QString& words) {
  const QStringList wanted = Text(base::Folded(Utf8(words))).split(QLatin1Char(' '), Qt::SkipEmptyParts);
  int shown = 0;
  int first = -1;
  for (int row = 0; row < table_->rowCount(); ++row) {
    QString all;
    for (int column = 0; column < Columns; ++column) {
      all += table_->item(row, column)->text() + QLatin1Char('\n');
    }
    const QString folded = Text(base::Folded(Utf8(all)));
    const bool found =
        std::all_of(wanted.begin(), wanted.end(), [&folded](const QString& word) { return folded.contains(word); });
    table_->setRowHidden(row, !found);
    shown += found ? 1 : 0;
    first = found && first < 0 ? row : first;
  }
  table_->setCurrentCell(first, KeysColumn);
  const QString all = QString::number(table_->rowCount());
  count_->setText(shown == table_->rowCount() ? QStringLiteral("%1 gesti").arg(all)
                                              : QStringLiteral("%1 gesti di %2").arg(QString::number(shown), all));
}

PrintedTable HelpQt::Printed() const {
  PrintedTable printed;
  printed.title = Utf8(windowTitle());
  printed.wholeTexts = true;
  for (int column = 0; column < Columns; ++column) {
    printed.columns.push_back(
        {Utf8(HelpHeadings().at(static_cast<std::size_t>(column))), table_->columnWidth(column), false});
  }
  for (int row = 0; row < table_->rowCount(); ++row) {
    if (!table_->isRowHidden(row)) {
      std::vector<std::string>& cells = printed.rows.emplace_back();
      for (int column = 0; column < Columns; ++column) {
        cells.push_back(Utf8(table_->item(row, column)->text()));
      }
    }
  }
  return printed;
}

void HelpQt::Print() {
  const QString path =
      AskWhereToSave(*this, QStringLiteral("SaveHelp"), QStringLiteral("Salva l'elenco dei gesti"),
                     {{QStringLiteral("Documento PDF"), QStringLiteral("pdf")}}, QStringLiteral("tasti e gesti"));
  if (path.isEmpty()) {
    return;
  }
  const QByteArray bytes = PdfOf(Printed());
  QSaveFile file(path);
  const bool saved = file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit();
  count_->setText(saved ? QStringLiteral("Salvato: ") + path : QStringLiteral("Non salvato: ") + file.errorString());
}

bool HelpQt::eventFilter(QObject* object, QEvent* event) {
  if (event->type() != QEvent::KeyPress) {
    return DialogQt::eventFilter(object, event);
  }
  const PressedGesture pressed = PressedAt(GesturePlace::Help, static_cast<const QKeyEvent&>(*event));
  const bool down = pressed.which > 0;
  if (pressed == Gesture::HelpRows && object == words_ && down) {
    table_->setFocus();
    return true;
  }
  if (pressed == Gesture::HelpRows && object == table_ && !down) {
    int row = table_->currentRow() - 1;
    while (row >= 0 && table_->isRowHidden(row)) {
      --row;
    }
    if (row < 0) {
      words_->setFocus(); // above the first row stands the search
      return true;
    }
  }
  return DialogQt::eventFilter(object, event);
}

void HelpQt::TakeLook() {
  look::Dress(*this);
  words_->setMinimumHeight(fontMetrics().height() + 2 * SearchMargin);
  QSize size(look::Scaled(HelpSize.width()), look::Scaled(HelpSize.height()));
  if (const QScreen* display = screen()) {
    size = size.boundedTo(display->availableSize() - QSize(24, 56));
  }
  resize(size);
  FitCells();
}

void HelpQt::resizeEvent(QResizeEvent* event) {
  DialogQt::resizeEvent(event);
  FitCells();
}

void HelpQt::FitCells() {
  for (int column = 0; column < Columns; ++column) {
    table_->setColumnWidth(column, table_->viewport()->width() * Shares.at(static_cast<std::size_t>(column)) / 100);
  }
  table_->resizeRowsToContents();
  for (int row = 0; row < table_->rowCount(); ++row) {
    table_->setRowHeight(row, table_->rowHeight(row) + look::Scaled(HelpRowMargin));
  }
}

} // namespace lumoscad::qt
