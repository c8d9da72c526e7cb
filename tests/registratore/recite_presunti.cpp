// The two lists of presumed documents.

#include "Pagine.hpp"
#include "Persona.hpp"

namespace lumoscad::test {
namespace {

using Gesti = std::function<void(ListWindow&, const PersonaAllaLista&)>;

constexpr int Ordine = 2;

std::string NomeOrdine(ListWindow& finestra) {
  for (const auto& testata : finestra.Description().headings) {
    if (testata.text == "Ordine") {
      return std::to_string(testata.index);
    }
  }
  return std::to_string(Ordine);
}

/// The window opens in the order of documents, then come the gestures.
Scenetta Gioca(const std::string& tipo, const std::string& titolo, Gesti gesti) {
  return {tipo + " " + titolo, [tipo, gesti = std::move(gesti)](Scena& scena) {
            scena.Recita([gesti](ListWindow& finestra) {
              finestra.TLwTestata_Click(std::stoi(NomeOrdine(finestra)));
              gesti(finestra, PersonaAllaLista(finestra));
            });
            scena.Esegui("-T " + tipo + " /PRESUNTI -C 20100012 -TIPOMOVIMENTI V -B TUTTE");
          }};
}

std::vector<Scenetta> Comuni(const std::string& tipo) {
  return {Gioca(tipo, "chiusa", [](auto& finestra, const auto&) { finestra.Form_QueryUnload(); }),
          Gioca(tipo, "annullata", [](auto& finestra, const auto&) { finestra.PictureAnnulla_Click(); }),
          Gioca(tipo, "confermata senza cambi", [](auto& finestra, const auto&) { finestra.PictureOk_Click(); }),
          Gioca(tipo, "ogni testata due volte", [](auto& finestra, const auto&) {
            for (const auto& testata : finestra.Description().headings) {
              finestra.TLwTestata_Click(testata.index);
              finestra.TLwTestata_Click(testata.index);
            }
          })};
}

std::vector<Scenetta> Banche() {
  return {Gioca("BANCA", "una banca nella cella, per tutto il documento",
                [](auto& finestra, const auto& persona) {
                  persona.ScegliBanca(0, 2);
                  persona.ScegliBanca(4, 3);
                  finestra.PictureOk_Click();
                }),
          Gioca("BANCA", "dal campo in alto, con spunte messe e tolte",
                [](auto& finestra, const auto& persona) {
                  finestra.cmbBanche_Click(4);
                  persona.Clicca(0, "Kradio");
                  persona.Clicca(3, "Kradio");
                  persona.Clicca(3, "Kradio");
                  persona.Clicca(6, "Kradio");
                  finestra.PictureOk_Click();
                }),
          Gioca("BANCA", "banche tolte",
                [](auto& finestra, const auto& persona) {
                  for (std::size_t riga = 0; riga < finestra.RowCount(); ++riga) {
                    persona.ScegliBanca(riga, 0);
                  }
                  finestra.PictureOk_Click();
                }),
          Gioca("BANCA", "annullata dopo un cambio", [](auto& finestra, const auto& persona) {
            persona.ScegliBanca(0, 2);
            finestra.PictureAnnulla_Click();
          })};
}

std::vector<Scenetta> Consegne() {
  return {Gioca("CONSEGNA", "date nelle celle",
                [](auto& finestra, const auto& persona) {
                  persona.ScriviData(0, "20/05/26");
                  persona.ScriviData(1, "270526");
                  persona.ScriviData(2, "31/02/26");
                  persona.ScriviData(3, "");
                  finestra.PictureOk_Click();
                }),
          Gioca("CONSEGNA", "dal campo in alto, con una cella aperta",
                [](auto& finestra, const auto& persona) {
                  finestra.TextScadenza_Change("20/05/26");
                  persona.Clicca(0, "Kradio");
                  persona.Clicca(1, "Kradio");
                  persona.Clicca(1, "Kradio");
                  persona.Clicca(5, "KNuovaScadenza");
                  finestra.TextScad_Change("010626");
                  persona.Clicca(6, "Kradio");
                  finestra.TLwTestata_Click(1);
                  finestra.PictureOk_Click();
                }),
          Gioca("CONSEGNA", "annullata dopo un cambio",
                [](auto& finestra, const auto& persona) {
                  persona.ScriviData(0, "20/05/26");
                  finestra.PictureAnnulla_Click();
                }),
          Gioca("CONSEGNA", "un nuovo campo in alto toglie le spunte", [](auto& finestra, const auto& persona) {
            finestra.TextScadenza_Change("20/05/26");
            persona.Clicca(0, "Kradio");
            finestra.TextScadenza_Click();
            finestra.TextScadenza_Change("");
            persona.Clicca(1, "Kradio");
            finestra.PictureOk_Click();
          })};
}

} // namespace

std::vector<Scenetta> RecitePresunti() {
  auto tutte = Comuni("BANCA");
  for (auto& altre : {Banche(), Comuni("CONSEGNA"), Consegne()}) {
    tutte.insert(tutte.end(), altre.begin(), altre.end());
  }
  return tutte;
}

} // namespace lumoscad::test
