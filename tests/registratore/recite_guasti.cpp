// What the person is told when the host or the database refuses or fails.

#include "Pagine.hpp"
#include "Persona.hpp"

#include <cstdlib>

namespace lumoscad::test {
namespace {

namespace fs = std::filesystem;

constexpr const char* Crediti = "-T BANCA /CREDITI -C 20100023 -SC SCADUTO";
constexpr const char* Presunti = "-T BANCA /PRESUNTI -C 20100012 -TIPOMOVIMENTI V -B TUTTE";
constexpr const char* Consegna = "-T CONSEGNA /PRESUNTI -C 20100012 -TIPOMOVIMENTI V -B TUTTE";
constexpr const char* Sospeso = "-T SOSPESO /A -C 20100001 -P AB   123";
constexpr int Scadenza = 5;

/// Takes the locks away that a failed command left.
void Sblocca(const Scena& scena) {
  std::error_code ignorato;
  for (const char* blocco : {"VBCREDITI", "VBPRESUNTI"}) {
    fs::remove(scena.demo.Tmp() / blocco, ignorato);
  }
}

using Prima = std::function<void(Scena&)>;

/// A date and a bank in the list of instalments; `prima` happens while the window is open.
void Cambia(Scena& scena, const Prima& prima = nullptr) {
  scena.Recita([&scena, prima](ListWindow& finestra) {
    const PersonaAllaLista persona(finestra);
    finestra.TLwTestata_Click(Scadenza);
    persona.ScriviData(1, "150426");
    persona.ScegliBanca(4, 3);
    if (prima) {
      prima(scena);
    }
    finestra.PictureOk_Click();
  });
  scena.Esegui(Crediti);
}

void CambiaPresunti(Scena& scena, const Prima& prima = nullptr) {
  scena.Recita([&scena, prima](ListWindow& finestra) {
    PersonaAllaLista(finestra).ScegliBanca(0, 2);
    if (prima) {
      prima(scena);
    }
    finestra.PictureOk_Click();
  });
  scena.Esegui(Presunti);
}

void CambiaConsegna(Scena& scena, const Prima& prima = nullptr) {
  scena.Recita([&scena, prima](ListWindow& finestra) {
    PersonaAllaLista(finestra).ScriviData(0, "200526");
    if (prima) {
      prima(scena);
    }
    finestra.PictureOk_Click();
  });
  scena.Esegui(Consegna);
}

/// A request with a file, one for each list, and one without.
void OgniRichiesta(Scena& scena) {
  Cambia(scena);
  CambiaPresunti(scena);
  Sblocca(scena);
  CambiaConsegna(scena);
  scena.Esegui(Sospeso);
}

Scenetta ConProgramma(std::string titolo, std::string corpo) {
  return {std::move(titolo), [corpo = std::move(corpo)](Scena& scena) {
            scena.Programma(corpo);
            OgniRichiesta(scena);
          }};
}

std::vector<Scenetta> DellHost() {
  return {
      {"l'host rifiuta un conto",
       [](Scena& scena) {
         Scrivi(scena.demo.Host() / "conti_bloccati", "20100023\n20100012\n20100001\n");
         OgniRichiesta(scena);
       }},
      ConProgramma("il programma risponde con un errore", R"(printf '<R><ERRORE>Conto in chiusura</ERRORE></R>')"),
      ConProgramma("il programma finisce male", "echo 'manca il file' >&2; exit 3"),
      ConProgramma("il programma non dice nulla", "exit 0"),
      ConProgramma("il programma dice altro", "echo 'buongiorno'"),
      ConProgramma("il programma dice una risposta a metà", "printf '<R><MESSAGGIO>'"),
      ConProgramma("il programma muore", "kill -9 $$"),
      {"il programma non c'è",
       [](Scena& scena) {
         fs::remove(scena.demo.VB0001());
         OgniRichiesta(scena);
       }},
      {"il programma non risponde in tempo",
       [](Scena& scena) {
         ::setenv("NEXARO_ATTESA", "1", 1);
         scena.Programma("sleep 5");
         scena.Esegui(Sospeso);
         Cambia(scena);
       }},
      {"l'host non c'è",
       [](Scena& scena) {
         ::setenv("NEXARO_RADICE", (scena.demo.Base() / "altrove").c_str(), 1);
         OgniRichiesta(scena);
       }},
      {"la cartella dell'host non si può scrivere",
       [](Scena& scena) {
         const fs::path tmp = scena.demo.Tmp();
         fs::rename(tmp, tmp.string() + ".via");
         Scrivi(tmp, "non è una cartella");
         OgniRichiesta(scena);
         fs::remove(tmp);
         fs::rename(tmp.string() + ".via", tmp);
       }},
  };
}

std::vector<Scenetta> DellaBaseDati() {
  return {
      {"una banca che non c'è più",
       [](Scena& scena) {
         Cambia(scena, [](Scena& s) { s.Altrove("DELETE FROM CONTOCONTABILE WHERE CODICECONTO='60100001'"); });
       }},
      {"tutte le banche non ci sono più",
       [](Scena& scena) {
         const auto togli = [](Scena& s) {
           s.Altrove("DELETE FROM CONTOCONTABILE WHERE TIPOLOGIACONTO IN ('06','07')");
         };
         Cambia(scena, togli);
         CambiaPresunti(scena, togli);
       }},
      {"il conto e la partita non ci sono più",
       [](Scena& scena) {
         Cambia(scena, [](Scena& s) { s.Altrove("DELETE FROM CONTOCONTABILE WHERE CODICECONTO='20100023'"); });
       }},
      {"le rate non ci sono più",
       [](Scena& scena) {
         Cambia(scena, [](Scena& s) {
           s.Altrove("DELETE FROM EVENTOCONTABILE WHERE CONTOCONTABILE_KEY IN "
                     "(SELECT CONTOCONTABILE_KEY FROM CONTOCONTABILE WHERE CODICECONTO='20100023')");
         });
       }},
      {"le rate sono cambiate",
       [](Scena& scena) {
         Cambia(scena, [](Scena& s) {
           s.Altrove("UPDATE EVENTOCONTABILE SET DATASCADENZA='2026-12-31', BANCAPRESENTAZIONE_KEY=1 "
                     "WHERE CONTOCONTABILE_KEY=123");
         });
       }},
      {"i documenti presunti non ci sono più",
       [](Scena& scena) {
         const auto togli = [](Scena& s) { s.Altrove("DELETE FROM EVENTOCONTABILE WHERE CONTOCONTABILE_KEY=112"); };
         CambiaPresunti(scena, togli);
       }},
      {"le consegne sono cambiate",
       [](Scena& scena) {
         CambiaConsegna(scena, [](Scena& s) {
           s.Altrove("UPDATE EVENTOCONTABILE SET DATACONSEGNA='2026-12-31' WHERE CONTOCONTABILE_KEY=112");
         });
       }},
      {"i movimenti non ci sono più",
       [](Scena& scena) {
         const auto togli = [](Scena& s) { s.Altrove("DELETE FROM MOVIMENTOCONTABILE WHERE MOVIMENTOKEY>200"); };
         CambiaPresunti(scena, togli);
         Sblocca(scena);
         scena.Esegui("-T PRESUNTO /A -S OC -A 06 -N 123");
         scena.Esegui("-T EXTRA /A -S A -E 2006 -N 15");
       }},
      {"la tabella degli eventi non c'è più",
       [](Scena& scena) {
         const auto togli = [](Scena& s) { s.Altrove("ALTER TABLE EVENTOCONTABILE RENAME TO ALTROVE"); };
         const auto rimetti = [](Scena& s) { s.Altrove("ALTER TABLE ALTROVE RENAME TO EVENTOCONTABILE"); };
         togli(scena);
         scena.Esegui(Sospeso);
         scena.Esegui(Crediti);
         scena.Esegui(Consegna);
         rimetti(scena);
       }},
      {"una riga di TEST che non c'è",
       [](Scena& scena) {
         scena.Altrove("DELETE FROM ERRORE");
         scena.Esegui("-T TEST");
       }},
      {"due righe di TEST",
       [](Scena& scena) {
         scena.Altrove("INSERT INTO ERRORE VALUES (101, 'x'); UPDATE ERRORE SET FILEXML='y'");
         scena.Esegui("-T TEST");
       }},
      {"l'origine dati non c'è",
       [](Scena& scena) {
         for (const char* comando : {Crediti, Presunti, Consegna, Sospeso, "-T EXTRA /A -S A -E 2006 -N 15"}) {
           scena.EseguiCosi(std::string(comando) + " -H 10.0.0.1 -D 01 -DB2SOURCE MAI_VISTA -DB2USER u -DB2PASS p");
           Sblocca(scena);
         }
       }},
  };
}

} // namespace

std::vector<Scenetta> ReciteGuasti() {
  auto tutte = DellHost();
  for (auto& recita : DellaBaseDati()) {
    tutte.push_back(std::move(recita));
  }
  return tutte;
}

} // namespace lumoscad::test
