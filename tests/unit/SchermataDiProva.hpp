#pragma once

#include "screens/frmLumoScadenzeBanche.hpp"
#include "support/TestBench.hpp"

#include <gmock/gmock.h>

#include <string>
#include <string_view>
#include <vector>

namespace lumoscad::test {

/// The credits/debits screen with rows put in by hand, without a database: what a person's gestures do to it.
class GrigliaDiProva : public testing::Test {
 protected:
  using Schermata = frmLumoScadenzeBanche;

  /// Adds a row; its bank has the code "B06" where `banca` is given.
  std::size_t Aggiungi(const std::string& conto, const std::string& scadenza = "31/03/2006",
                       const std::string& banca = "") {
    const std::string ordina =
        scadenza.empty() ? "" : scadenza.substr(6) + "/" + scadenza.substr(3, 2) + "/" + scadenza.substr(0, 2);
    std::vector<std::string_view> testi(Schermata::Colonne);
    testi[Schermata::Conto] = conto;
    testi[Schermata::Partita] = "2006 1";
    testi[Schermata::Scadenza] = scadenza;
    testi[Schermata::ScadenzaOrig] = "31/01/2006";
    testi[Schermata::Banca] = banca;
    testi[Schermata::Importo] = "100,00";
    testi[Schermata::NuovaScadenza] = scadenza;
    testi[Schermata::NumeroRata] = "1";
    testi[Schermata::NuovaBanca] = banca;
    testi[Schermata::ScadenzaOrdinaData] = ordina;
    const auto riga = griglia.righe.Aggiungi(testi);
    griglia.righe.ImpostaTag(riga, Schermata::Conto, "C" + std::to_string(riga));
    griglia.righe.ImpostaTag(riga, Schermata::Banca, banca.empty() ? "" : "B06");
    return riga;
  }
  void AggiungiMolte(int quante) {
    for (int i = 0; i < quante; ++i) {
      Aggiungi("CLIENTE " + std::to_string(1000 + i));
    }
    griglia.Resize();
  }

  /// The middle of a column's cells, in twips from the list's left end.
  [[nodiscard]] int Mezzo(int colonna) const {
    int sinistra = 0;
    while (griglia.TrovaCoordinate(sinistra) < colonna) {
      ++sinistra;
    }
    int destra = sinistra;
    while (griglia.TrovaCoordinate(destra) == colonna) {
      ++destra;
    }
    return (sinistra + destra) / 2;
  }
  /// Selects the row and clicks its cell.
  void Clic(std::size_t riga, int colonna) {
    griglia.Seleziona(static_cast<std::ptrdiff_t>(griglia.righe.PostoDellaRiga(riga)));
    griglia.LVScadenze_MouseDown(Mezzo(colonna), 5);
    griglia.LVScadenze_Click(240);
  }
  void ScriviData(std::size_t riga, std::string_view testo) {
    Clic(riga, Schermata::NuovaScadenza);
    griglia.TextScad_Change(testo);
  }
  [[nodiscard]] std::string NuovaScadenza(std::size_t riga) const {
    return std::string(griglia.righe.Testo(riga, Schermata::NuovaScadenza));
  }
  [[nodiscard]] std::vector<std::string> InOrdine(int colonna = Schermata::Conto) const {
    std::vector<std::string> testi;
    for (std::size_t posto = 0; posto < griglia.righe.Quante(); ++posto) {
      testi.emplace_back(griglia.righe.Testo(griglia.righe.RigaAlPosto(posto), colonna));
    }
    return testi;
  }

  TestBench banco;
  frmLumoScadenzeBanche schermata;
  Griglia& griglia = schermata.griglia();
};

} // namespace lumoscad::test
