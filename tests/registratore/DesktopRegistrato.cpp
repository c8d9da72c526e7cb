#include "DesktopRegistrato.hpp"

#include "FinestraRegistrata.hpp"

namespace lumoscad::test {

void DesktopRegistrato::ShowBox(std::string_view testo, std::string_view titolo) {
  registro_.Annota("box " + Cita(titolo) + " " + Cita(testo));
  vero_.ShowBox(testo, titolo);
}

void DesktopRegistrato::SetPointer(Pointer puntatore) {
  registro_.Annota("puntatore " + std::to_string(static_cast<int>(puntatore)));
  vero_.SetPointer(puntatore);
}

void DesktopRegistrato::ShowList(ListWindow& finestra) {
  FinestraRegistrata registrata(registro_, finestra);
  registrata.Descrivi();
  vero_.ShowList(registrata);
  registro_.Annota("la finestra è chiusa");
}

void DesktopRegistrato::ShowSingleItem(SingleItemWindow& finestra) {
  ScadenzarioRegistrato registrata(registro_, finestra);
  registrata.Descrivi();
  vero_.ShowSingleItem(registrata);
  registro_.Annota("la finestra è chiusa");
}

void DesktopRegistrato::ShowWait(std::string_view testo, int millisecondi, const std::function<void()>& lavoro) {
  registro_.Annota("attesa " + Cita(testo) + " dopo " + std::to_string(millisecondi) + " ms");
  vero_.ShowWait(testo, millisecondi, lavoro);
  registro_.Annota("l'attesa è finita");
}

} // namespace lumoscad::test
