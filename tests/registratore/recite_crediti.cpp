// The list of customers' and suppliers' instalments: gestures, changes, lock.

#include "Pagine.hpp"
#include "Persona.hpp"

namespace lumoscad::test {
namespace {

constexpr const char* Comando = "-T BANCA /CREDITI -C 20100023";
constexpr int Conto = 1;
constexpr int Partita = 2;
constexpr int ScadOrig = 3;
constexpr int Importo = 4;
constexpr int Scadenza = 5;
constexpr int Banca = 6;

using Gesti = std::function<void(ListWindow&, const PersonaAllaLista&)>;

/// The window opens in the order of due dates, then come the gestures.
Scenetta Gioca(std::string titolo, Gesti gesti, std::string comando = Comando) {
  return {std::move(titolo), [gesti = std::move(gesti), comando = std::move(comando)](Scena& scena) {
            scena.Recita([gesti](ListWindow& finestra) {
              finestra.TLwTestata_Click(Scadenza);
              gesti(finestra, PersonaAllaLista(finestra));
            });
            scena.Esegui(comando);
          }};
}

std::vector<Scenetta> Uscite() {
  return {
      Gioca("crediti, chiusa", [](auto& finestra, const auto&) { finestra.Form_QueryUnload(); }),
      Gioca("crediti, annullata dopo un cambio",
            [](auto& finestra, const auto& persona) {
              persona.ScriviData(1, "15/04/26");
              finestra.PictureAnnulla_Click();
            }),
      Gioca("crediti, chiusa dopo un cambio",
            [](auto& finestra, const auto& persona) {
              persona.ScegliBanca(1, 2);
              finestra.Form_QueryUnload();
            }),
      Gioca("crediti, confermata senza cambi", [](auto& finestra, const auto&) { finestra.PictureOk_Click(); }),
      Gioca("crediti, la stessa data e la stessa banca non sono un cambio", [](auto& finestra, const auto& persona) {
        persona.ScriviData(0, std::string(finestra.CellText(0, 2)));
        persona.Clicca(1, "KNuovaBanca");
        finestra.cmbBanche2_LostFocus();
        finestra.PictureOk_Click();
      })};
}

std::vector<Scenetta> Cambi() {
  return {
      Gioca("crediti, una data nella cella",
            [](auto& finestra, const auto& persona) {
              persona.ScriviData(1, "150426");
              finestra.PictureOk_Click();
            }),
      Gioca("crediti, una data nella cella ancora aperta",
            [](auto& finestra, const auto& persona) {
              persona.Clicca(1, "KNuovaScadenza");
              finestra.TextScad_Change("15/4/2026");
              finestra.PictureOk_Click();
            }),
      Gioca("crediti, date che non vanno",
            [](auto& finestra, const auto& persona) {
              persona.ScriviData(0, "31/02/26");
              persona.ScriviData(1, "domani");
              persona.ScriviData(2, "");
              persona.ScriviData(3, " ");
              finestra.TextScadenza_Change("32/01/26");
              persona.Clicca(4, "KRadio1");
              finestra.PictureOk_Click();
            }),
      Gioca("crediti, una banca nella cella",
            [](auto& finestra, const auto& persona) {
              persona.ScegliBanca(2, 3);
              finestra.PictureOk_Click();
            }),
      Gioca("crediti, date e banche dai campi in alto",
            [](auto& finestra, const auto& persona) {
              finestra.TextScadenza_Change("15/04/26");
              finestra.cmbBanche_Click(3);
              persona.Clicca(1, "KRadio1");
              persona.Clicca(4, "KRadio2");
              persona.Clicca(5, "KRadio1");
              persona.Clicca(5, "KRadio2");
              persona.Clicca(6, "KRadio1");
              persona.Clicca(6, "KRadio1");
              persona.Clicca(7, "KRadio2");
              persona.Clicca(7, "KRadio2");
              finestra.PictureOk_Click();
            }),
      Gioca("crediti, un nuovo campo in alto toglie le spunte",
            [](auto& finestra, const auto& persona) {
              finestra.TextScadenza_Change("15/04/26");
              finestra.cmbBanche_Click(3);
              persona.Clicca(1, "KRadio1");
              persona.Clicca(2, "KRadio2");
              finestra.TextScadenza_Click();
              finestra.cmbBanche_Click(4);
              finestra.PictureOk_Click();
            }),
      Gioca("crediti, banche tolte",
            [](auto& finestra, const auto& persona) {
              for (std::size_t riga = 0; riga < finestra.RowCount(); ++riga) {
                persona.Clicca(riga, "KRadio2");
              }
              finestra.PictureOk_Click();
            }),
      Gioca("crediti, una banca tolta nella cella",
            [](auto& finestra, const auto& persona) {
              for (std::size_t riga = 0; riga < 4; ++riga) {
                persona.ScegliBanca(riga, 0);
              }
              finestra.PictureOk_Click();
            }),
  };
}

std::vector<Scenetta> EditorLasciati() {
  return {
      Gioca("crediti, un editor abbandonato e uno lasciato con Tab",
            [](auto& finestra, const auto& persona) {
              persona.Clicca(1, "KNuovaScadenza");
              finestra.TextScad_Change("150426");
              finestra.AbbandonaEditor();
              persona.Clicca(2, "KNuovaBanca");
              finestra.cmbBanche2_Click(2);
              finestra.AbbandonaEditor();
              persona.Clicca(3, "KNuovaScadenza");
              finestra.TextScad_Change("150426");
              finestra.TextScad_KeyPress(9);
              finestra.PictureOk_Click();
            }),
      Gioca("crediti, un editor aperto mentre si clicca altrove",
            [](auto& finestra, const auto& persona) {
              finestra.TextScadenza_Change("150426");
              persona.Clicca(1, "KNuovaScadenza");
              finestra.TextScad_Change("200426");
              persona.Clicca(3, "KRadio1");
              finestra.TLwTestata_Click(Scadenza);
              finestra.Form_Click();
              persona.Clicca(2, "KNuovaBanca");
              finestra.cmbBanche2_Click(1);
              finestra.Form_Click();
              persona.Clicca(4, "KNuovaScadenza");
              finestra.TextScad_Change("210426");
              persona.Clicca(5, "KPartita");
              finestra.PictureOk_Click();
            }),
  };
}

std::vector<Scenetta> Altre() {
  return {
      Gioca("crediti, ogni testata due volte",
            [](auto& finestra, const auto&) {
              for (const int testata : {Conto, Partita, ScadOrig, Importo, Scadenza, Banca}) {
                finestra.TLwTestata_Click(testata);
                finestra.TLwTestata_Click(testata);
              }
            }),
      Gioca(
          "debiti, una data e una banca",
          [](auto& finestra, const auto& persona) {
            persona.ScriviData(0, "150426");
            persona.ScegliBanca(0, 1);
            persona.ScegliBanca(1, 2);
            finestra.PictureOk_Click();
          },
          "-T BANCA /DEBITI -C 40100004"),
      {"crediti e debiti in una riga",
       [](Scena& scena) {
         for (int volta = 0; volta < 2; ++volta) {
           scena.Recita([](ListWindow& finestra) {
             PersonaAllaLista(finestra).ScriviData(0, "150426");
             finestra.PictureOk_Click();
           });
         }
         scena.Esegui("-T BANCA /CREDITI /DEBITI -M 032026");
       }},
      {"crediti, due comandi di seguito",
       [](Scena& scena) {
         for (const char* data : {"150426", "160426"}) {
           scena.Recita([data](ListWindow& finestra) {
             PersonaAllaLista(finestra).ScriviData(0, data);
             finestra.PictureOk_Click();
           });
           scena.Esegui(Comando);
         }
       }},
      {"la lista è presa da un altro terminale",
       [](Scena& scena) {
         Scrivi(scena.demo.Tmp() / "VBCREDITI", "Utente : ALTRO\r\nData : 01/03/2026   Ora : 09:00\r\n");
         Scrivi(scena.demo.Tmp() / "VBPRESUNTI", "Utente : ALTRO\r\nData : 01/03/2026   Ora : 09:00\r\n");
         scena.Esegui(Comando);
         scena.Esegui("-T BANCA /DEBITI -C 40100004");
         scena.Esegui("-T BANCA /PRESUNTI -C 20100012 -TIPOMOVIMENTI V -B TUTTE");
         scena.Esegui("-T CONSEGNA /PRESUNTI -C 20100012 -TIPOMOVIMENTI V -B TUTTE");
       }},
      {"un blocco vuoto, uno di un blanco, uno senza seconda riga",
       [](Scena& scena) {
         for (const char* contenuto : {"", " \r\nqualcosa\r\n", "\r\nUtente : ALTRO\r\n", "Utente : ALTRO"}) {
           Scrivi(scena.demo.Tmp() / "VBCREDITI", contenuto);
           scena.Esegui(Comando);
         }
       }},
  };
}

} // namespace

namespace {

/// The lists sort in Italian text order. By its bytes "È" would stand behind "Z", a small letter behind every capital
/// one, and the two that differ by case alone apart.
Scenetta OrdineItaliano() {
  return {
      "crediti, conti e banche con accenti e minuscole: in ordine di testo italiano, non dei byte", [](Scena& scena) {
        const std::vector<std::pair<std::string, std::string>> nomi = {{"Bertolè Impianti S.p.A.", "Ziveri"},
                                                                       {"Confezioni Marilù S.r.l.", "Èlite Impianti"},
                                                                       {"Edil Nicolò S.r.l.", "elba"},
                                                                       {"Garden Center Le Ortensie S.r.l.", "Elba"},
                                                                       {"Mobilificio Tre Querce S.p.A.", "Élite B"},
                                                                       {"Banca dell'Aniene", "àncora"},
                                                                       {"Banca Orobica di Valcarsa", "Ancona"}};
        for (const auto& [prima, dopo] : nomi) {
          scena.Altrove("UPDATE CONTOCONTABILE SET DESCRIZIONEVOCE='" + dopo + "' WHERE DESCRIZIONEVOCE='" +
                        test::Replaced(prima, "'", "''") + "'");
        }
        scena.Recita([](ListWindow& finestra) {
          finestra.TLwTestata_Click(Banca);
          finestra.TLwTestata_Click(Conto);
          const PersonaAllaLista persona(finestra);
          for (std::size_t riga = 0; riga < finestra.RowCount(); riga += 2) {
            persona.ScriviData(riga, "15/04/26");
          }
          finestra.TLwTestata_Click(Conto);
          finestra.PictureOk_Click();
        });
        scena.Esegui("-T BANCA /CREDITI -M 032026");
      }};
}

} // namespace

std::vector<Scenetta> ReciteCrediti() {
  auto tutte = Uscite();
  for (auto* altre : {Cambi, EditorLasciati, Altre}) {
    for (auto& recita : altre()) {
      tutte.push_back(std::move(recita));
    }
  }
  tutte.push_back(OrdineItaliano());
  return tutte;
}

namespace {

/// Command lines that only show a list, one after the other.
Scenetta Guarda(std::string titolo, std::vector<std::string> comandi) {
  return {std::move(titolo), [comandi = std::move(comandi)](Scena& scena) {
            for (const auto& comando : comandi) {
              scena.Esegui(comando);
            }
          }};
}

std::vector<std::string> Con(const std::string& inizio, const std::vector<std::string>& opzioni) {
  std::vector<std::string> comandi;
  comandi.reserve(opzioni.size());
  for (const auto& opzione : opzioni) {
    comandi.push_back(inizio + opzione);
  }
  return comandi;
}

} // namespace

std::vector<Scenetta> ReciteFiltri() {
  std::vector<Scenetta> tutte{
      Guarda("filtri delle rate",
             Con("-T BANCA ", {"/CREDITI", "/DEBITI", "/CREDITI -B N", "/CREDITI -B TUTTE", "/CREDITI -SC SCADUTO",
                               "/CREDITI -SC DASCADERE", "/DEBITI -SC SCADUTO -B N", "/CREDITI -M 032026",
                               "/CREDITI -M 022026,042026", "/CREDITI -M 13", "/CREDITI -M 022026, -M"})),
      Guarda(
          "filtri delle rate di un conto",
          Con("-T BANCA /CREDITI ", {"-CODINT C1023", "-CODINT", "-C 20100023 -P 2026/119", "-C 20100023 -P 2026/ 119",
                                     "-P AB   123", "-C 20100023 -S A -A 26 -N 1 -E 2026", "-C MAI_VISTO",
                                     "-C  20100023", "-C O'Hara", "-c 20100023 -sc dascadere -b s"}))};
  for (const char* tipo : {"BANCA", "CONSEGNA"}) {
    const auto inizio = std::string("-T ") + tipo + " /PRESUNTI ";
    tutte.push_back(Guarda(
        "filtri dei documenti presunti, " + std::string(tipo),
        Con(inizio, {"-TIPOMOVIMENTI V", "-TIPOMOVIMENTI A", "", "-TIPOMOVIMENTI V -B TUTTE", "-TIPOMOVIMENTI V -B N",
                     "-TIPOMOVIMENTI V -SC SCADUTO", "-TIPOMOVIMENTI V -SC DASCADERE -DATA 20260601",
                     "-TIPOMOVIMENTI V -B TUTTE -SERIEESCLUSE OC", "-TIPOMOVIMENTI V -B TUTTE -SERIEESCLUSE OC,BC",
                     "-TIPOMOVIMENTI V -B TUTTE -SERIEESCLUSE ", "-TIPOMOVIMENTI V -B TUTTE -C 20100012",
                     "-TIPOMOVIMENTI V -B TUTTE -C 20100012 -S OC -A 26 -N 213",
                     "-TIPOMOVIMENTI V -B TUTTE -S OC -A 26 -N 999", "-TIPOMOVIMENTI V -P -C"})));
  }
  tutte.push_back({"un'azienda che non c'è", [](Scena& scena) {
                     for (const char* comando :
                          {"-T BANCA /CREDITI", "-T BANCA /PRESUNTI", "-T CONSEGNA /PRESUNTI",
                           "-T EXTRA /A -S A -E 2006 -N 15", "-T SOSPESO /A -C 20100001 -P AB   123"}) {
                       scena.EseguiCosi(std::string(comando) + " -H 10.0.0.1 -D 77 " + scena.OpzioniDatabase());
                     }
                   }});
  return tutte;
}

} // namespace lumoscad::test
