#pragma once

#include "common/Variazioni.hpp"
#include "database/procedureLumoDB2.hpp"
#include "screens/Griglia.hpp"

#include <cstddef>
#include <string>
#include <string_view>

namespace lumoscad {

/// The credits/debits bank schedule screen: lists the open due dates of customers' or suppliers' items and lets the
/// person give chosen rows a new due date or a new presentation bank.
class frmLumoScadenzeBanche final {
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

  /// Adds the records of the changed rows, in the order in which they show; none unless the screen was confirmed.
  void LeggiVariazioni(VariazioniCanalizzazione& variazioni) const;
  /// "closed" when the screen was left without confirming.
  [[nodiscard]] const std::string& MotivoChiusura() const noexcept { return griglia_.MotivoChiusura(); }
  /// The key of a row, by its number, among the list's items.
  [[nodiscard]] std::string ChiaveElemento(std::size_t riga) const;
  [[nodiscard]] Griglia& griglia() noexcept { return griglia_; }

 private:
  void elaboraCreditiDebiti(std::string_view parAzienda, const procedureLumoDB2::FiltroScadenze& filtro,
                            MsgAnnulla& msg);
  void AggiungiRighe(ado::Recordset& righe);
  /// Reads what the person changed in a row into a new record; false when that is nothing.
  [[nodiscard]] bool LeggiVariazione(std::size_t riga, VariazioneCanalizzazione& variazione) const;

  Griglia griglia_;
};

} // namespace lumoscad
