#pragma once

#include "BaseDati.hpp"
#include "platform/RuntimeError.hpp"
#include "screens/frmLumoScadenzeBanche.hpp"
#include "support/TestBench.hpp"

#include <gmock/gmock.h>

#include <functional>
#include <string>
#include <vector>

namespace lumoscad::test {

/// Instalments of two customers and a supplier: with and without bank, a pair that sums up to zero, one all NULL.
inline std::string RateDellaSchermata() {
  return Rata("1,1,301,201,101,'C','N','2006-03-04','2006-01-31',1,106,1234.5") +
         Rata("2,1,301,202,102,'C','N','2006-03-05','2006-03-05',1,NULL,10") +
         Rata("3,1,301,201,101,'C','N','2006-04-01','2006-04-01',2,108,30") +
         Rata("4,1,301,202,102,'C','N','2006-05-01','2006-05-01',3,NULL,25") +
         Rata("5,1,301,202,102,'C','N','2006-05-01','2006-05-01',3,NULL,-25") +
         Rata("6,1,301,202,102,'C','N',NULL,NULL,4,NULL,NULL") +
         Rata("7,1,301,203,103,'C','N','2006-03-04','2006-03-04',1,106,40");
}

/// The screen over a database: each showing plays a script of gestures on its window.
class SchermataSuBase : public testing::TestWithParam<const char*> {
 protected:
  using Schermata = frmLumoScadenzeBanche;

  SchermataSuBase() { stato().ComandoCorrente = "BANCA /CREDITI " + base.Opzioni(); }

  VariazioniCanalizzazione Mostra(const std::function<void()>& copione = {},
                                  procedureLumoDB2::FiltroScadenze filtro = SoloCrediti()) {
    banco.desktop.scripts.emplace_back([this, copione](ListWindow& aperta) {
      finestra = &aperta;
      if (copione) {
        copione();
      }
    });
    VariazioniCanalizzazione variazioni(1); // what an earlier command left must not come back
    schermata.VisualizzaScadenzeBanche("001", filtro, variazioni);
    return variazioni;
  }
  [[nodiscard]] static procedureLumoDB2::FiltroScadenze SoloCrediti() {
    procedureLumoDB2::FiltroScadenze filtro;
    filtro.parModalita = "CREDITI";
    return filtro;
  }
  /// The text with which the showing fails; empty when it does not.
  std::string Fallimento(const std::function<void()>& copione = {}) {
    try {
      static_cast<void>(Mostra(copione));
    } catch (const RuntimeError& errore) {
      EXPECT_EQ(errore.Number(), -2147220954);
      return errore.Description();
    }
    return "";
  }

  /// The row of an instalment, by its due date.
  [[nodiscard]] std::size_t Riga(const std::string& scadenza) const {
    for (std::size_t riga = 0; riga < righe.Quante(); ++riga) {
      if (righe.Testo(riga, Schermata::Scadenza) == scadenza) {
        return riga;
      }
    }
    ADD_FAILURE() << "no instalment due on " << scadenza;
    return 0;
  }
  void Clic(std::size_t riga, int colonna) const {
    int sinistra = 0;
    for (int i = 0; i < colonna; ++i) {
      sinistra += finestra->Description().columns[static_cast<std::size_t>(i)].width;
    }
    finestra->Seleziona(static_cast<std::ptrdiff_t>(righe.PostoDellaRiga(riga)));
    finestra->LVScadenze_MouseDown(sinistra + 1, 5);
    finestra->LVScadenze_Click(240 * static_cast<int>(righe.PostoDellaRiga(riga)));
  }
  void ScriviData(std::size_t riga, const char* testo) const {
    Clic(riga, Schermata::NuovaScadenza);
    finestra->TextScad_Change(testo);
    finestra->TextScad_KeyPress(13);
  }
  void ScegliBanca(std::size_t riga, int indice) const {
    Clic(riga, Schermata::NuovaBanca);
    finestra->cmbBanche2_Click(indice);
    finestra->cmbBanche2_LostFocus();
  }
  /// Text and tag of the new bank, and the tick "RADIO2".
  [[nodiscard]] std::string NuovaBanca(std::size_t riga) const {
    return std::string(righe.Testo(riga, Schermata::NuovaBanca)) + "|" +
           std::string(righe.Tag(riga, Schermata::NuovaBanca)) + (righe.Spuntata(riga, 1) ? "|x" : "|");
  }
  [[nodiscard]] std::vector<std::string> Testi(std::size_t riga) const {
    std::vector<std::string> testi;
    for (int colonna = 0; colonna < Schermata::Colonne; ++colonna) {
      testi.emplace_back(righe.Testo(riga, colonna));
    }
    return testi;
  }

  BaseDati base{GetParam(), DatiDiProva() + RateDellaSchermata()};
  TestBench banco;
  frmLumoScadenzeBanche schermata;
  const RigheGriglia& righe = schermata.griglia().righe;
  ListWindow* finestra = nullptr;
};

} // namespace lumoscad::test
