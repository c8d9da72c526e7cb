// The window of one open item, which no command opens.

#include "Pagine.hpp"

#include "handlers/ModuloMain.hpp"
#include "host/RichiestaScadenze.hpp"
#include "screens/FormLumoScad.hpp"

namespace lumoscad::test {
namespace {

using Gesti = std::function<void(SingleItemWindow&)>;

std::vector<RigaScadenze> RigheDellaFinestra(const FormLumoScad& form) {
  std::vector<RigaScadenze> righe;
  for (std::size_t riga = 0; riga < form.griglia().righe.Quante(); ++riga) {
    const auto testo = [&](int colonna) { return std::string(form.griglia().righe.Testo(riga, colonna)); };
    righe.push_back({stato().contoScadenze, stato().partitaScadenze, testo(FormLumoScad::Scadenza),
                     testo(FormLumoScad::ScadOrig), testo(FormLumoScad::NuovaScadenza)});
  }
  return righe;
}

void Apri(Scena& scena, const std::string& modo, const Gesti& gesti) {
  scena.recitato.itemScripts.push_back(gesti);
  ApriScadenzario(scena, modo);
}

Scenetta Gioca(const std::string& modo, const std::string& titolo, Gesti gesti) {
  return {"scadenzario " + modo + ", " + titolo,
          [modo, gesti = std::move(gesti)](Scena& scena) { Apri(scena, modo, gesti); }};
}

void Scrivi(SingleItemWindow& finestra, int riga, const char* data) {
  constexpr int Invio = 13;
  finestra.Elenco().Seleziona(riga);
  finestra.Elenco().LVScadenze_Click(riga * 240);
  finestra.Elenco().TextScad_Change(data);
  finestra.Elenco().TextScad_KeyPress(Invio);
}

} // namespace

void ApriScadenzario(Scena& scena, const std::string& modo) {
  auto& s = stato();
  s.ComandoCorrente = scena.OpzioniDatabase();
  s.azienda = "01";
  s.HostIP = "10.0.0.1";
  s.tipoComando = "BANCA";
  s.contoScadenze = "20100001";
  s.partitaScadenze = "AB   123";
  s.Serie = "A";
  s.Esercizio = "2006";
  s.Numero = "15";
  FormLumoScad* questa = nullptr;
  FormLumoScad form{[&] { return ScriviRichiestaScadenze(RigheDellaFinestra(*questa)); },
                    [] {
                      const auto& t = stato();
                      return ModuloMain::CancellaExtra(t.azienda, t.HostIP, t.Serie, t.Esercizio, t.Numero);
                    }};
  questa = &form;
  form.LabelDescPartita = "AB   123";
  form.LabelDescCliFor = "Cliente della partita";
  for (const char* scadenza : {"31/03/2006", "30/04/2006", "31/05/2006"}) {
    form.Aggiungi(scadenza, scadenza, "100,00");
  }
  scena.Registra("scadenzario " + modo,
                 [&] { return modo == "Scad" ? form.VisualizzaScad() : form.VisualizzaExtra(); });
}

std::vector<Scenetta> ReciteScadenzario() {
  std::vector<Scenetta> tutte;
  for (const char* modo : {"Scad", "Extra"}) {
    tutte.push_back(Gioca(modo, "chiuso", [](auto& finestra) { finestra.Elenco().Form_QueryUnload(); }));
    tutte.push_back(Gioca(modo, "annullato", [](auto& finestra) {
      Scrivi(finestra, 0, "150606");
      finestra.Elenco().PictureAnnulla_Click();
    }));
    tutte.push_back(Gioca(modo, "confermato senza cambi", [](auto& finestra) { finestra.PictureOk_Click(); }));
    tutte.push_back(Gioca(modo, "date nelle celle", [](auto& finestra) {
      Scrivi(finestra, 0, "150606");
      Scrivi(finestra, 1, "31/02/06");
      finestra.Elenco().Seleziona(1);
      finestra.Elenco().LVScadenze_Click(240);
      finestra.Elenco().TextScad_Change("20/07/06");
      finestra.PictureOk_Click();
    }));
    tutte.push_back(Gioca(modo, "la data in alto con le spunte", [](auto& finestra) {
      finestra.Elenco().TextScadenza_Change("300906");
      finestra.Elenco().TextScadenza_LostFocus();
      finestra.Elenco().LVScadenze_ItemCheck(1);
      finestra.Elenco().LVScadenze_Click(240);
      finestra.Elenco().LVScadenze_ItemCheck(0);
      finestra.Elenco().LVScadenze_ItemCheck(0);
      finestra.PictureOk_Click();
    }));
    tutte.push_back(Gioca(modo, "seleziona tutto", [](auto& finestra) {
      finestra.PicSelezionaTutto_Click();
      finestra.Elenco().TextScadenza_Change("domani");
      finestra.Elenco().TextScadenza_LostFocus();
      finestra.PicSelezionaTutto_Click();
      finestra.Elenco().TextScadenza_Change("300906");
      finestra.Elenco().TextScadenza_LostFocus();
      finestra.PicSelezionaTutto_Click();
      finestra.PicSelezionaTutto_Click();
      finestra.PictureOk_Click();
    }));
  }
  tutte.push_back({"scadenzario dopo un comando dimostrativo", [](Scena& scena) {
                     scena.Esegui("-T PRESUNTO /A -DEMO");
                     Apri(scena, "Scad", [](auto& finestra) {
                       Scrivi(finestra, 0, "150606");
                       finestra.PictureOk_Click();
                     });
                     Apri(scena, "Extra", [](auto& finestra) { finestra.PictureOk_Click(); });
                   }});
  tutte.push_back({"scadenzario, rifiutato dall'host", [](Scena& scena) {
                     lumoscad::test::Scrivi(scena.demo.Host() / "conti_bloccati", "20100001\n");
                     Apri(scena, "Scad", [](auto& finestra) {
                       Scrivi(finestra, 0, "150606");
                       finestra.PictureOk_Click();
                     });
                   }});
  tutte.push_back({"scadenzario, una risposta che è una partita", [](Scena& scena) {
                     scena.Programma(R"(printf '<PARTITA><SCADENZA><DATA>20060615</DATA></SCADENZA></PARTITA>')");
                     Apri(scena, "Scad", [](auto& finestra) {
                       Scrivi(finestra, 0, "150606");
                       finestra.PictureOk_Click();
                     });
                   }});
  return tutte;
}

} // namespace lumoscad::test
