#include "DesktopRegistrato.hpp"

#include "FinestraRegistrata.hpp"

namespace lumoscad::prova {

void DesktopRegistrato::MostraBox(std::string_view testo, std::string_view titolo) {
  registro_.Annota("box " + Cita(titolo) + " " + Cita(testo));
  vero_.MostraBox(testo, titolo);
}

void DesktopRegistrato::ImpostaPuntatore(Puntatore puntatore) {
  registro_.Annota("puntatore " + std::to_string(static_cast<int>(puntatore)));
  vero_.ImpostaPuntatore(puntatore);
}

void DesktopRegistrato::MostraElenco(FinestraElenco& finestra) {
  FinestraRegistrata registrata(registro_, finestra);
  registrata.Descrivi();
  vero_.MostraElenco(registrata);
  registro_.Annota("la finestra è chiusa");
}

void DesktopRegistrato::MostraScadenzario(FinestraScadenzario& finestra) {
  ScadenzarioRegistrato registrata(registro_, finestra);
  registrata.Descrivi();
  vero_.MostraScadenzario(registrata);
  registro_.Annota("la finestra è chiusa");
}

void DesktopRegistrato::MostraAttesa(std::string_view testo, int millisecondi, const std::function<void()>& lavoro) {
  registro_.Annota("attesa " + Cita(testo) + " dopo " + std::to_string(millisecondi) + " ms");
  vero_.MostraAttesa(testo, millisecondi, lavoro);
  registro_.Annota("l'attesa è finita");
}

} // namespace lumoscad::prova
