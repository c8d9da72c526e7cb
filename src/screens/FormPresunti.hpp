#pragma once

#include "common/Variazioni.hpp"
#include "database/procedureLumoDB2.hpp"
#include "screens/ElencoBanche.hpp"
#include "screens/SchermataElenco.hpp"

#include <cstddef>
#include <string>
#include <string_view>

namespace lumoscad {

/// The presumed-documents screen: lists orders that are expected to be invoiced, one row a bank, date and currency of
/// a document, and lets the person choose the bank through which a document will be presented. All rows of a document
/// carry the same new bank.
class FormPresunti final : public SchermataElenco<VariazioneConsegna> {
 public:
  /// The list's columns, by index.
  enum Colonna {
    Conto,
    Ordine,
    ConsegnaPrevista,
    Divisa,
    Fatturato,
    Banca,
    Radio,
    NuovaBanca,
    ConsegnaOrdinaData, ///< the planned date in a form that sorts by time; not shown
    Colonne
  };

  FormPresunti();

  /// Loads the documents of a company that `filtro` selects, shows the screen modally and hands back one record a
  /// changed document: nothing when it was left without confirming. After the screen has closed, raises error
  /// -2147220954 with the text of a failure that happened while loading.
  void elaboraPresunti(std::string_view parAzienda, const procedureLumoDB2::FiltroPresunti& filtro,
                       VariazioniConsegna& variazioni);

  /// Lays the controls out for the number of rows.
  void ResizePresunti();

  [[nodiscard]] std::string ChiaveElemento(std::size_t riga) const override;

 private:
  void CaricaRighe(std::string_view parAzienda, const procedureLumoDB2::FiltroPresunti& filtro, MsgAnnulla& msg);
  /// Gives `riga` and its whole document entry `indice` of the banks, in mode "PRESUNTI" alone.
  void AssegnaBanca(int indice, std::string_view modo, std::size_t riga);
  void Disponi() override { ResizePresunti(); }
  void ChiudiBanca(std::size_t riga, int indice) override;
  void CambiaCheck(std::size_t riga, std::string_view chiave, bool spunta) override;
  void SceltaBanca() override;
  [[nodiscard]] bool LeggiVariazione(std::size_t riga, VariazioneConsegna& variazione) const override;
  [[nodiscard]] Variazioni LeggiVariazioni() const override;
  template <typename Azione> void PerOgniRigaDelDocumento(std::size_t riga, Azione azione);

  BancheCombo banche_;      ///< of the top field
  BancheCombo bancheCella_; ///< of the in-place editor
};

} // namespace lumoscad
