#pragma once

#include "common/Variazioni.hpp"
#include "database/procedureLumoDB2.hpp"
#include "screens/ElencoBanche.hpp"
#include "screens/SchermataElenco.hpp"

#include <cstddef>
#include <string>
#include <string_view>

namespace lumoscad {

/// The credits/debits bank schedule screen: lists the open due dates of customers' or suppliers' items and lets the
/// person give chosen rows a new due date or a new presentation bank.
class frmLumoScadenzeBanche final : public SchermataElenco<VariazioneCanalizzazione> {
 public:
  /// The list's columns, by index.
  enum Colonna {
    Conto,
    Partita,
    Scadenza,
    ScadenzaOrig,
    Banca,
    Importo,
    Radio1,
    NuovaScadenza,
    NumeroRata,
    Radio2,
    NuovaBanca,
    ScadenzaOrdinaData,
    Colonne
  };

  frmLumoScadenzeBanche();

  /// Loads the rows of a company that `filtro` selects, shows the screen modally and hands back what was confirmed:
  /// nothing when it was left without confirming. After the screen has closed, raises error -2147220954 with the
  /// text of a failure that happened while loading.
  void VisualizzaScadenzeBanche(std::string_view parAzienda, const procedureLumoDB2::FiltroScadenze& filtro,
                                VariazioniCanalizzazione& variazioni);

  /// Lay the controls out for the number of rows: in mode "DEBITI/CREDITI", and in mode "PRESUNTI" without all that
  /// has to do with new due dates.
  void ResizeScadBanche();
  void ResizeScadBanchePresunti();

  [[nodiscard]] std::string ChiaveElemento(std::size_t riga) const override;

 private:
  void elaboraCreditiDebiti(std::string_view parAzienda, const procedureLumoDB2::FiltroScadenze& filtro,
                            MsgAnnulla& msg);
  void AggiungiRighe(ado::Recordset& righe);
  void AssegnaBanca(std::size_t riga, int indice, const BancheCombo& combo);
  void Disponi() override;
  void ChiudiData(std::size_t riga, std::string_view testo) override;
  void ChiudiBanca(std::size_t riga, int indice) override;
  void CambiaCheck(std::size_t riga, std::string_view chiave, bool spunta) override;
  void SceltaBanca() override;
  [[nodiscard]] bool LeggiVariazione(std::size_t riga, VariazioneCanalizzazione& variazione) const override;

  BancheCombo banche_;      ///< of the top field
  BancheCombo bancheCella_; ///< of the in-place editor
};

} // namespace lumoscad
