#pragma once

#include "platform/Desktop.hpp"
#include "platform/GestureTable.hpp"

#include <QObject>

#include <cstdint>
#include <functional>
#include <string>

class QAction;
class QBoxLayout;
class QDialog;

namespace lumoscad::qt {

struct ListParts;
class ListChanges;
class ListEffects;

/// Takes rows to the clipboard, as text and as a table.
void CopyRows(ListReport& report);

/// Shows what a list says of itself: its foot, on demand the list of its changes (F7) and the panel of their effect
/// (F6). Takes its rows away (Ctrl+C, Ctrl+S) and brings a column in (Ctrl+V). The two on demand are made when they are
/// first asked for.
class ListReporter final : public QObject {
 public:
  using Run = std::function<void(const std::function<void()>&)>;

  /// `gesture` runs one gesture and follows it.
  ListReporter(QDialog& dialog, ListWindow& list, ListParts& parts, Run gesture);

  /// Told when the person opened the panel of the effect or closed it.
  std::function<void(bool open)> effectsToggled;

  /// Opens the panel of the effect while the window opens, which keeps the keyboard where it is; `widen` gives it room
  /// of its own.
  void OpenEffects(bool widen);
  void CloseEffects();
  /// Makes all of it follow the screen.
  void Follow(const ListState& state);

 private:
  QAction* Action(Gesture gesture, void (ListReporter::*action)());
  void Copy();
  void Paste();
  void Save();
  void SaveAs(const QString& path);
  void ToggleChanges();
  void ToggleEffects();
  void BuildEffects();
  void ShowEffects();
  void ShowFoot();

  QDialog& dialog_;
  ListWindow& list_;
  ListParts& parts_;
  ListReport& report_;
  Run gesture_;
  ListChanges* changes_ = nullptr;
  ListEffects* effects_ = nullptr;
  int widthBefore_ = 0; ///< of the window, without the panel
  int widthAfter_ = 0;  ///< and as it was made with it
  bool first_ = true;
  std::string behind_; ///< the bar that the filter is about
  std::uint64_t content_ = 0;
  std::uint64_t selection_ = 0;
  std::uint64_t order_ = 0;

 public:
  // Of the window, for its menu. They stand behind what they act on.

  QAction* copy;
  QAction* paste;
  QAction* save;
};

} // namespace lumoscad::qt
