#pragma once

#include "common/Variazioni.hpp"
#include "database/procedureLumoDB2.hpp"
#include "screens/Griglia.hpp"

#include <cstddef>
#include <string>
#include <string_view>

namespace lumoscad {

/// The presumed-documents screen: lists orders that are expected to be invoiced, one row a bank, date and currency of
/// a document, and lets the person choose the bank through which a document will be presented. All rows of a document
/// carry the same new bank.
class FormPresunti final {
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

  /// Adds the records of the changed rows, in the order in which they show; none unless the screen was confirmed.
  void LeggiVariazioni(VariazioniConsegna& variazioni) const;
  /// "closed" when the screen was left without confirming.
  [[nodiscard]] const std::string& MotivoChiusura() const noexcept { return griglia_.MotivoChiusura(); }
  /// The key of a row, by its number, among the list's items.
  [[nodiscard]] std::string ChiaveElemento(std::size_t riga) const;
  [[nodiscard]] Griglia& griglia() noexcept { return griglia_; }

 private:
  void CaricaRighe(std::string_view parAzienda, const procedureLumoDB2::FiltroPresunti& filtro, MsgAnnulla& msg);
  /// Reads what the person changed in a row into a new record; false when that is nothing.
  [[nodiscard]] bool LeggiVariazione(std::size_t riga, VariazioneConsegna& variazione) const;

  Griglia griglia_;
};

} // namespace lumoscad
