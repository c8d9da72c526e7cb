// The requests to a host behind SSH: what it gets and what is said when it fails.

#include "Pagine.hpp"
#include "Persona.hpp"

#include <cstdlib>

namespace lumoscad::test {
namespace {

constexpr const char* Crediti = "-T BANCA /CREDITI -C 20100023 -SC SCADUTO";
constexpr const char* Sospeso = "-T SOSPESO /A -C 20100001 -P AB   123";

void Cambia(Scena& scena) {
  scena.Recita([](ListWindow& finestra) {
    PersonaAllaLista(finestra).ScriviData(1, "150426");
    finestra.PictureOk_Click();
  });
  scena.Esegui(Crediti);
}

Scenetta ConProgramma(std::string titolo, std::string corpo) {
  return {std::move(titolo), [corpo = std::move(corpo)](Scena& scena) {
            scena.Programma(corpo);
            Cambia(scena);
            scena.Esegui(Sospeso);
          }};
}

} // namespace

std::vector<Scenetta> ReciteSsh() {
  return {{"ssh, comandi senza finestra",
           [](Scena& scena) {
             for (const char* comando : {Sospeso, "-T SOSPESO /D -C 20100001 -P AB   123",
                                         "-T PRESUNTO /A -S OC -A 06 -N 123", "-T EXTRA /A -S A -E 2006 -N 15"}) {
               scena.Esegui(comando);
             }
           }},
          {"ssh, una data e una banca",
           [](Scena& scena) {
             scena.Recita([](ListWindow& finestra) {
               const PersonaAllaLista persona(finestra);
               persona.ScriviData(1, "150426");
               persona.ScegliBanca(3, 2);
               finestra.PictureOk_Click();
             });
             scena.Esegui(Crediti);
           }},
          {"ssh, presunti e consegne",
           [](Scena& scena) {
             scena.Recita([](ListWindow& finestra) {
               PersonaAllaLista(finestra).ScegliBanca(0, 2);
               finestra.PictureOk_Click();
             });
             scena.Esegui("-T BANCA /PRESUNTI -C 20100012 -TIPOMOVIMENTI V -B TUTTE");
             scena.Recita([](ListWindow& finestra) {
               PersonaAllaLista(finestra).ScriviData(0, "200526");
               finestra.PictureOk_Click();
             });
             scena.Esegui("-T CONSEGNA /PRESUNTI -C 20100012 -TIPOMOVIMENTI V -B TUTTE");
           }},
          {"ssh, la lista è presa",
           [](Scena& scena) {
             Scrivi(scena.demo.Tmp() / "VBCREDITI", "Utente : ALTRO\r\nData : 01/03/2026   Ora : 09:00\r\n");
             scena.Esegui(Crediti);
           }},
          {"ssh, l'host rifiuta un conto",
           [](Scena& scena) {
             Scrivi(scena.demo.Host() / "conti_bloccati", "20100023\n20100001\n");
             Cambia(scena);
             scena.Esegui(Sospeso);
           }},
          {"ssh, un host in ISO-8859-1",
           [](Scena& scena) {
             ::setenv("NEXARO_CODIFICA", "ISO-8859-1", 1);
             scena.Esegui("-T SOSPESO /A -C Perché -P AB   123");
             scena.Esegui("-T SOSPESO /A -C Euro€ -P AB   123");
             ::unsetenv("NEXARO_CODIFICA");
           }},
          ConProgramma("ssh, il programma finisce male", "echo 'manca il file' >&2; exit 3"),
          ConProgramma("ssh, il programma dice altro", "echo 'buongiorno'")};
}

} // namespace lumoscad::test
