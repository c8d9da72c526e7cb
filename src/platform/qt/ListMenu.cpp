#include "platform/qt/ListMenu.hpp"

#include "platform/qt/Texts.hpp"

#include <QAction>
#include <QLocale>
#include <QMenu>
#include <QWidget>

#include <utility>

namespace lumoscad::qt {

ListMenu::ListMenu(ListGestures& gestures, Run run, QWidget* window)
    : QObject(window), gestures_(gestures), run_(std::move(run)), window_(window) {
  AddSelections();
  AddSeparator();
  AddSteps();
  AddSeparator();
}

QAction* ListMenu::Add(const QString& text, const QKeySequence& keys, std::function<void()> action) {
  auto* entry = new QAction(text, this);
  entry->setShortcut(keys);
  connect(entry, &QAction::triggered, this, std::move(action));
  entries_.push_back(entry);
  window_->addAction(entry);
  return entry;
}

void ListMenu::AddSeparator() {
  auto* line = new QAction(this);
  line->setSeparator(true);
  entries_.push_back(line);
}

QAction* ListMenu::AddGesture(const QString& text, const QKeySequence& keys, std::function<void()> gesture) {
  return Add(text, keys, [this, gesture = std::move(gesture)] { run_(gesture); });
}

void ListMenu::AddSelections() {
  visible_ = AddGesture({}, {}, [this] { gestures_.ScegliVisibili(); }); // its key is the list's own
  AddGesture(QStringLiteral("Inverti la selezione"), Qt::CTRL | Qt::Key_I, [this] { gestures_.InvertiScelta(); });
  struct Alike {
    Likeness likeness;
    const char* text;
    Qt::Key key;
  };
  for (const Alike& alike : {Alike{Likeness::Account, "Seleziona tutto il conto", Qt::Key_T},
                             Alike{Likeness::Item, "Seleziona tutta la partita", Qt::Key_P},
                             Alike{Likeness::Bank, "Seleziona la stessa banca", Qt::Key_B},
                             Alike{Likeness::Month, "Seleziona lo stesso mese", Qt::Key_M}}) {
    if (gestures_.Confrontabile(alike.likeness)) {
      AddGesture(QString::fromUtf8(alike.text), QKeySequence(Qt::CTRL | alike.key),
                 [this, likeness = alike.likeness] { gestures_.ScegliSimili(likeness); });
    }
  }
  if (gestures_.Confrontabile(Likeness::Month)) {
    AddGesture(QStringLiteral("Seleziona tutte le scadute"), Qt::CTRL | Qt::Key_D,
               [this] { gestures_.ScegliScadute(); });
  }
}

void ListMenu::AddSteps() {
  undo_ = AddGesture({}, Qt::CTRL | Qt::Key_Z, [this] { gestures_.Annulla(); });
  redo_ = AddGesture({}, {}, [this] { gestures_.Rifai(); });
  redo_->setShortcuts({Qt::CTRL | Qt::Key_Y, Qt::CTRL | Qt::SHIFT | Qt::Key_Z});
}

/// Gives the entries that count or name something their texts.
void ListMenu::Name() {
  const QLocale italian(QLocale::Italian, QLocale::Italy);
  visible_->setText(QStringLiteral("Seleziona visibili (%1)\tCtrl+A")
                        .arg(italian.toString(static_cast<qulonglong>(gestures_.RigheInVista()))));
  const auto step = [](const char* verb, const std::string& name) {
    return QString::fromUtf8(verb) + (name.empty() ? QString() : QStringLiteral(": ") + Text(name));
  };
  undo_->setText(step("Annulla", gestures_.DaAnnullare()));
  redo_->setText(step("Ripeti", gestures_.DaRifare()));
}

void ListMenu::Open(const QPoint& where) {
  if (menu_ == nullptr) {
    menu_ = new QMenu(window_);
    menu_->setObjectName(QStringLiteral("ListMenu"));
    menu_->addActions(QList<QAction*>(entries_.begin(), entries_.end()));
  }
  Name();
  menu_->popup(where);
}

} // namespace lumoscad::qt
