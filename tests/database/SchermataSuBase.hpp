#pragma once

#include "BaseDati.hpp"
#include "SchermataDiLista.hpp"
#include "screens/frmLumoScadenzeBanche.hpp"

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

/// The screen of the instalments.
class SchermataSuBase : public SchermataDiLista<frmLumoScadenzeBanche> {
 protected:
  using Schermata = frmLumoScadenzeBanche;

  SchermataSuBase() { stato().ComandoCorrente = "BANCA /CREDITI " + base.Opzioni(); }

  VariazioniCanalizzazione Mostra(const std::function<void()>& copione = {},
                                  procedureLumoDB2::FiltroScadenze filtro = SoloCrediti()) {
    Recita(copione);
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
    return FallimentoDi([&] { static_cast<void>(Mostra(copione)); });
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
  void ScriviData(std::size_t riga, const char* testo) const { ScriviInCella(riga, Schermata::NuovaScadenza, testo); }
  void ScegliBanca(std::size_t riga, int indice) const { ScegliInCella(riga, Schermata::NuovaBanca, indice); }
  /// Text and tag of the new bank, and the tick "RADIO2".
  [[nodiscard]] std::string NuovaBanca(std::size_t riga) const { return BancaInCella(riga, Schermata::NuovaBanca, 1); }

  BaseDati base{GetParam(), DatiDiProva() + RateDellaSchermata()};
};

} // namespace lumoscad::test
