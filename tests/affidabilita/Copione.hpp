#pragma once

#include "platform/Desktop.hpp"

#include <string>
#include <vector>

namespace lumoscad::test {

/// A desktop whose person follows a written script: gestures separated by ";", which every list window plays from the
/// start. "data:ROW:TEXT" types a date into a row's editor, "banca:ROW:PLACE" chooses a bank in it; "aspetta:FILE"
/// makes FILE.qui and waits for FILE; then "conferma", "annulla" or "chiudi". ROW is a number, counted round in the
/// rows that are there, or "=TEXT" for the first row that shows this text; a row that is not there is passed over.
/// Boxes are recorded and closed at once.
class DesktopACopione final : public Desktop {
 public:
  std::string gesti;
  std::vector<std::string> box; ///< the texts shown, in order

  void ShowBox(std::string_view testo, std::string_view titolo) override;
  void SetPointer(Pointer puntatore) override;
  void RunPendingEvents() override;
  void ShowList(ListWindow& finestra) override;
  void ShowSingleItem(SingleItemWindow& finestra) override;
  void ShowWait(std::string_view testo, int millisecondi, const std::function<void()>& lavoro) override;
};

} // namespace lumoscad::test
