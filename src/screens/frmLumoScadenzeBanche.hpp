#pragma once

#include "common/MsgAnnulla.hpp"
#include "common/Variazioni.hpp"
#include "database/procedureLumoDB2.hpp"
#include "screens/ElencoBanche.hpp"
#include "screens/Griglia.hpp"

#include <cstddef>
#include <string>
#include <string_view>

namespace lumoscad {

/// The credits/debits bank schedule screen: lists the open due dates of customers' or suppliers' items and lets the
/// person give chosen rows a new due date or a new presentation bank.
class frmLumoScadenzeBanche {
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
  frmLumoScadenzeBanche(const frmLumoScadenzeBanche&) = delete;
  frmLumoScadenzeBanche& operator=(const frmLumoScadenzeBanche&) = delete;
  ~frmLumoScadenzeBanche() = default;

  /// Loads the rows of a company that `filtro` selects, shows the screen modally and hands back what was confirmed:
  /// nothing when it was left without confirming. After the screen has closed, raises error -2147220954 with the
  /// text of a failure that happened while loading.
  void VisualizzaScadenzeBanche(std::string_view parAzienda, const procedureLumoDB2::FiltroScadenze& filtro,
                                VariazioniCanalizzazione& variazioni);

  /// "closed" when the screen was left without confirming.
  [[nodiscard]] const std::string& MotivoChiusura() const noexcept { return griglia_.MotivoChiusura(); }
  /// The key of a row among the list's items.
  [[nodiscard]] std::string ChiaveElemento(std::size_t riga) const;
  [[nodiscard]] Griglia& griglia() noexcept { return griglia_; }

 private:
  void elaboraCreditiDebiti(std::string_view parAzienda, const procedureLumoDB2::FiltroScadenze& filtro,
                            MsgAnnulla& msg);
  void AggiungiRighe(ado::Recordset& righe);
  void AssegnaBanca(std::size_t riga, int indice, const BancheCombo& combo);
  void CambiaCheck(std::size_t riga, std::string_view chiave, bool spunta);
  void ChiudiData(std::size_t riga, std::string_view testo);
  void Conferma();
  [[nodiscard]] bool LeggiVariazione(std::size_t riga, VariazioneCanalizzazione& variazione) const;
  [[nodiscard]] RegoleGriglia Regole();

  Griglia griglia_;
  BancheCombo banche_;      ///< of the top field
  BancheCombo bancheCella_; ///< of the in-place editor
  VariazioniCanalizzazione variazioni_;
};

} // namespace lumoscad
