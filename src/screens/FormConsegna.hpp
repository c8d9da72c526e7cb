#pragma once

#include "common/Variazioni.hpp"
#include "database/procedureLumoDB2.hpp"
#include "screens/Griglia.hpp"

#include <cstddef>
#include <string>
#include <string_view>

namespace lumoscad {

/// The delivery date screen: lists the presumed documents with their planned delivery date and lets the person give
/// chosen rows a new one.
class FormConsegna final {
 public:
  /// The list's columns, by index.
  enum Colonna {
    Conto,
    Ordine,
    ConsegnaPrevista,
    Divisa,
    Fatturato,
    FatturatoEuro,
    Radio,
    NuovaConsegna,
    ConsegnaOrdinaData, ///< the planned date in a form that sorts by time; not shown
    Colonne
  };

  FormConsegna();

  /// Loads the documents of a company that `filtro` selects, shows the screen modally and hands back one record a
  /// changed row: nothing when it was left without confirming. After the screen has closed, raises error -2147220954
  /// with the text of a failure that happened while loading.
  void elaboraConsegna(std::string_view parAzienda, const procedureLumoDB2::FiltroPresunti& filtro,
                       VariazioniConsegna& variazioni);

  /// Lays the controls out for the number of rows.
  void ResizeConsegna();

  /// "closed" when the screen was left without confirming.
  [[nodiscard]] const std::string& MotivoChiusura() const noexcept { return griglia_.MotivoChiusura(); }
  /// The key of a row, by its number, among the list's items.
  [[nodiscard]] std::string ChiaveElemento(std::size_t riga) const;
  [[nodiscard]] Griglia& griglia() noexcept { return griglia_; }

 private:
  void CaricaRighe(std::string_view parAzienda, const procedureLumoDB2::FiltroPresunti& filtro, MsgAnnulla& msg);
  /// Adds the records of the changed rows.
  void LeggiVariazioni(VariazioniConsegna& variazioni) const;
  /// Reads what the person changed in a row into a new record; false when that is nothing.
  [[nodiscard]] bool LeggiVariazione(std::size_t riga, VariazioneConsegna& variazione) const;

  Griglia griglia_;
};

} // namespace lumoscad
