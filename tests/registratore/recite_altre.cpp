// What lies off the usual paths: no screen, a call inside a call, texts of any size, rows that are not as they should
// be.

#include "Pagine.hpp"
#include "Persona.hpp"

#include "lumoscad/LumoScadenze.hpp"

namespace lumoscad::test {
namespace {

constexpr const char* Crediti = "-T BANCA /CREDITI -C 20100023 -SC SCADUTO";
constexpr const char* Presunti = "-T BANCA /PRESUNTI -C 20100012 -TIPOMOVIMENTI V -B TUTTE";
constexpr const char* Consegna = "-T CONSEGNA /PRESUNTI -C 20100012 -TIPOMOVIMENTI V -B TUTTE";
constexpr const char* Sospeso = "-T SOSPESO /A -C 20100001 -P AB   123";
constexpr int Scadenza = 5;

const char* const EventiDelConto =
    "WHERE CONTOCONTABILE_KEY=(SELECT CONTOCONTABILE_KEY FROM CONTOCONTABILE WHERE CODICECONTO='20100023')";

/// A new date for one instalment.
void Cambia(Scena& scena) {
  scena.Recita([](ListWindow& finestra) {
    finestra.TLwTestata_Click(Scadenza);
    if (finestra.RowCount() > 1) {
      PersonaAllaLista(finestra).ScriviData(1, "150426");
    }
    finestra.PictureOk_Click();
  });
  scena.Esegui(Crediti);
}

std::vector<Scenetta> SenzaSchermo() {
  const auto senza = [](std::string titolo, std::function<void(Scena&)> azione) {
    return Scenetta{"senza schermo, " + std::move(titolo), [azione = std::move(azione)](Scena& scena) {
                      scena.desktop = nullptr;
                      azione(scena);
                    }};
  };
  return {senza("comandi che non mostrano nulla",
                [](Scena& scena) {
                  scena.Esegui("-T TEST");
                  scena.EseguiCosi("-T FOO /A");
                }),
          senza("TEST senza base dati", [](Scena& scena) { scena.EseguiCosi("-T TEST -DB2SOURCE MAI_VISTA"); }),
          senza("una lista presa",
                [](Scena& scena) {
                  Scrivi(scena.demo.Tmp() / "VBCREDITI", "Utente : ALTRO\r\nData : 01/03/2026   Ora : 09:00\r\n");
                  scena.Esegui(Crediti);
                }),
          senza("ogni genere di comando", [](Scena& scena) {
            for (const char* comando : {Crediti, Presunti, Consegna, Sospeso, "-T EXTRA /A -S A -E 2006 -N 15",
                                        "-T SOSPESO /A -DEMO", "-T PRESUNTO /D -DEMO", "-T"}) {
              scena.Esegui(comando);
            }
          })};
}

std::vector<Scenetta> Chiamate() {
  return {{"una chiamata mentre la lista è aperta",
           [](Scena& scena) {
             scena.Recita([&scena](ListWindow& finestra) {
               for (const std::string comando : {"-T TEST", "-T FOO /A", "-T BANCA /DEBITI", "-T SOSPESO /A -DEMO"}) {
                 const auto risultato = LumoScadenze().EseguiLumoScad(comando + " -H 10.9.9.9 -D 99");
                 scena.Annota("  chiamata dentro la chiamata " + Cita(comando) + ": " + Cita(risultato));
               }
               PersonaAllaLista(finestra).ScriviData(1, "150426");
               finestra.PictureOk_Click();
             });
             scena.Esegui(Crediti);
           }},
          {"due tipi, due opzioni, blanchi doppi", [](Scena& scena) {
             scena.EseguiCosi("-T FOO -T SOSPESO /A  -C 1 -C 20100001 -P AB   123 -H altrove " + scena.OpzioniHost() +
                              "  " + scena.OpzioniDatabase());
             scena.EseguiCosi("-T SOSPESO /A -D  01 -C 20100001 -P AB   123 -H 10.0.0.1 " + scena.OpzioniDatabase());
             scena.EseguiCosi("-T SOSPESO /A -C 20100001 -P AB   123");
           }}};
}

std::vector<Scenetta> Testi() {
  const auto programma = [](std::string titolo, std::string corpo) {
    return Scenetta{std::move(titolo), [corpo = std::move(corpo)](Scena& scena) {
                      scena.Programma(corpo);
                      scena.Esegui(Sospeso);
                    }};
  };
  return {
      programma("un messaggio di 40 KiB",
                "printf '<R><MESSAGGIO>'; head -c 40960 /dev/zero | tr '\\0' x; printf '</MESSAGGIO></R>'"),
      programma("un errore di 1 MiB",
                "printf '<R><ERRORE>'; head -c 1048576 /dev/zero | tr '\\0' x; printf '</ERRORE></R>'"),
      programma("una risposta in UTF-16", R"(printf '<R><MESSAGGIO>ciao</MESSAGGIO></R>' | iconv -t UTF-16)"),
      programma(
          "una risposta in UTF-16 senza segno",
          R"(printf '<?xml version="1.0" encoding="UTF-16"?><R><MESSAGGIO>ciao</MESSAGGIO></R>' | iconv -t UTF-16LE)"),
      programma("una risposta con un attributo doppio", R"(printf '<R a="1" a="2"><MESSAGGIO>x</MESSAGGIO></R>')"),
      programma("una risposta con un DOCTYPE", R"(printf '<!DOCTYPE R><R><MESSAGGIO>x</MESSAGGIO></R>')"),
      programma("un errore di un blanco accanto a un commento", R"(printf '<R><ERRORE> <!-- x --></ERRORE></R>')"),
      {"un blocco di 100 KB", [](Scena& scena) {
         const std::string riempitivo(100000, 'x');
         Scrivi(scena.demo.Tmp() / "VBCREDITI", "Utente : ALTRO\r\n" + riempitivo);
         scena.Esegui(Crediti);
         Scrivi(scena.demo.Tmp() / "VBCREDITI", std::string(100000, ' ') + "Utente : ALTRO\r\n");
         scena.Esegui(Crediti);
       }}};
}

std::vector<Scenetta> Dati() {
  const auto con = [](std::string titolo, std::string sql) {
    return Scenetta{std::move(titolo), [sql = std::move(sql)](Scena& scena) {
                      scena.Altrove(sql);
                      Cambia(scena);
                    }};
  };
  const std::string conto = EventiDelConto;
  return {
      con("una partita con una virgola",
          "UPDATE PARTITACONTABILE SET NUMEROPARTITA='2025,46' WHERE PARTITACONTABILEKEY=46"),
      con("una partita con un a capo",
          "UPDATE PARTITACONTABILE SET NUMEROPARTITA='2025\r\n46' WHERE PARTITACONTABILEKEY=46"),
      con("rate senza numero", "UPDATE EVENTOCONTABILE SET NUMERORATA=NULL " + conto),
      con("rate senza scadenza originale", "UPDATE EVENTOCONTABILE SET DATASCADENZAORIGINALE=NULL " + conto),
      con("una partita di righe che si annullano", "UPDATE EVENTOCONTABILE SET IMPORTOEURO=0 " + conto),
      {"rate senza scadenza",
       [](Scena& scena) {
         scena.Altrove(std::string("UPDATE EVENTOCONTABILE SET DATASCADENZA=NULL ") + EventiDelConto);
         scena.Recita([](ListWindow& finestra) {
           PersonaAllaLista(finestra).ScriviData(1, "150426");
           finestra.PictureOk_Click();
         });
         scena.Esegui("-T BANCA /CREDITI -C 20100023");
       }},
      {"una data che non è tale",
       [](Scena& scena) {
         const char* data = scena.SuServer() ? "'infinity'" : "'2026-02-00'";
         scena.Altrove(std::string("UPDATE EVENTOCONTABILE SET DATASCADENZA=") + data +
                       (scena.SuServer() ? ", DATACONSEGNA='infinity'" : ", DATACONSEGNA='domani'") +
                       " WHERE EVENTOCONTABILEKEY IN (111,512)");
         scena.Esegui("-T BANCA /CREDITI -C 20100023");
         scena.Esegui(Presunti);
         scena.Esegui(Consegna);
       }},
      {"un aggiornamento rifiutato",
       [](Scena& scena) {
         scena.Rifiuta("EVENTOCONTABILE", "OLD.EVENTOCONTABILEKEY IN (111,519,900001)", "riga bloccata");
         Cambia(scena);
         scena.Esegui(Sospeso);
         scena.Rifiuta("ERRORE", "OLD.ERROREKEY=100", "riga di prova bloccata");
         scena.Esegui("-T TEST");
       }},
      {"un aggiornamento che non aggiorna", [](Scena& scena) {
         if (scena.SuServer()) {
           scena.Altrove("CREATE FUNCTION TACE() RETURNS TRIGGER LANGUAGE plpgsql AS 'BEGIN RETURN NULL; END';"
                         "CREATE TRIGGER TACE BEFORE UPDATE ON ERRORE FOR EACH ROW EXECUTE FUNCTION TACE();"
                         "CREATE TRIGGER TACE BEFORE UPDATE ON EVENTOCONTABILE FOR EACH ROW EXECUTE FUNCTION TACE()");
         } else {
           scena.AltroveIntera("CREATE TRIGGER TACE BEFORE UPDATE ON ERRORE BEGIN SELECT RAISE(IGNORE); END");
           scena.AltroveIntera("CREATE TRIGGER TACE2 BEFORE UPDATE ON EVENTOCONTABILE BEGIN SELECT RAISE(IGNORE); END");
         }
         scena.Esegui("-T TEST");
         Cambia(scena);
       }}};
}

} // namespace

std::vector<Scenetta> ReciteAltre() {
  std::vector<Scenetta> tutte;
  for (auto* altre : {SenzaSchermo, Chiamate, Testi, Dati}) {
    for (auto& scenetta : altre()) {
      tutte.push_back(std::move(scenetta));
    }
  }
  return tutte;
}

} // namespace lumoscad::test
