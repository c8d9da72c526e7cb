#include "platform/qt/ListMenu.hpp"

#include "platform/qt/GestureKeys.hpp"
#include "platform/qt/Texts.hpp"

#include <QAction>
#include <QLocale>
#include <QMenu>
#include <QWidget>

#include <algorithm>
#include <iterator>
#include <utility>

namespace lumoscad::qt {

ListMenu::ListMenu(ListGestures& gestures, Run run, QWidget* window)
    : QObject(window), gestures_(gestures), run_(std::move(run)), window_(window) {
  AddSelections();
  AddSeparator();
  AddSteps();
  AddSeparator();
}

QAction* ListMenu::Add(Gesture gesture, const std::function<void()>& action) {
  entries_.push_back(ActionFor(*window_, gesture, action));
  return entries_.back();
}

void ListMenu::Add(std::initializer_list<QAction*> actions) {
  AddSeparator();
  std::copy_if(actions.begin(), actions.end(), std::back_inserter(entries_),
               [](const QAction* action) { return action != nullptr; });
}

void ListMenu::AddSeparator() {
  auto* line = new QAction(this);
  line->setSeparator(true);
  entries_.push_back(line);
}

QAction* ListMenu::AddGesture(Gesture gesture, std::function<void()> action) {
  return Add(gesture, [this, action = std::move(action)] { run_(action); });
}

void ListMenu::AddSelections() {
  visible_ = AddGesture(Gesture::SelectAll, [this] { gestures_.ScegliVisibili(); });
  visible_->setShortcuts(QList<QKeySequence>()); // its key is the list's own: in a field it selects the field's text
  AddGesture(Gesture::InvertSelection, [this] { gestures_.InvertiScelta(); });
  for (const auto& [likeness, gesture] :
       {std::pair(Likeness::Account, Gesture::SelectAccount), std::pair(Likeness::Item, Gesture::SelectItem),
        std::pair(Likeness::Bank, Gesture::SelectBank), std::pair(Likeness::Month, Gesture::SelectMonth)}) {
    if (gestures_.Confrontabile(likeness)) {
      AddGesture(gesture, [this, likeness = likeness] { gestures_.ScegliSimili(likeness); });
    }
  }
  if (gestures_.Confrontabile(Likeness::Month)) {
    AddGesture(Gesture::SelectOverdue, [this] { gestures_.ScegliScadute(); });
  }
}

void ListMenu::AddSteps() {
  undo_ = AddGesture(Gesture::Undo, [this] { gestures_.Annulla(); });
  redo_ = AddGesture(Gesture::Redo, [this] { gestures_.Rifai(); });
}

/// Gives the entries that count or name something their texts.
void ListMenu::Name() {
  const QLocale italian(QLocale::Italian, QLocale::Italy);
  visible_->setText(QStringLiteral("%1 (%2)\t%3")
                        .arg(NameOf(Gesture::SelectAll),
                             italian.toString(static_cast<qulonglong>(gestures_.RigheInVista())),
                             KeyText(Gesture::SelectAll)));
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
