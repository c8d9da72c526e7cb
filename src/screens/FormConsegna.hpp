#pragma once

#include "common/MsgAnnulla.hpp"
#include "common/Variazioni.hpp"
#include "database/procedureLumoDB2.hpp"
#include "screens/Griglia.hpp"

#include <cstddef>
#include <string>
#include <string_view>

namespace lumoscad {

/// The delivery date screen: lists the presumed documents with their planned delivery date and lets the person give
/// chosen rows a new one.
class FormConsegna {
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
  FormConsegna(const FormConsegna&) = delete;
  FormConsegna& operator=(const FormConsegna&) = delete;
  ~FormConsegna() = default;

  /// Loads the documents of a company that `filtro` selects, shows the screen modally and hands back one record a
  /// changed row: nothing when it was left without confirming. After the screen has closed, raises error -2147220954
  /// with the text of a failure that happened while loading.
  void elaboraConsegna(std::string_view parAzienda, const procedureLumoDB2::FiltroPresunti& filtro,
                       VariazioniConsegna& variazioni);

  /// "closed" when the screen was left without confirming.
  [[nodiscard]] const std::string& MotivoChiusura() const noexcept { return griglia_.MotivoChiusura(); }
  /// The key of a row among the list's items.
  [[nodiscard]] std::string ChiaveElemento(std::size_t riga) const;
  [[nodiscard]] Griglia& griglia() noexcept { return griglia_; }

 private:
  void CaricaRighe(std::string_view parAzienda, const procedureLumoDB2::FiltroPresunti& filtro, MsgAnnulla& msg);
  void CambiaCheck(std::size_t riga, bool spunta);
  void Conferma();
  [[nodiscard]] bool LeggiVariazione(std::size_t riga, VariazioneConsegna& variazione) const;
  [[nodiscard]] RegoleGriglia Regole();

  Griglia griglia_;
  std::string tagLista_; ///< "CONSEGNA" once rows are loaded: on any other list nothing can be edited or confirmed
  VariazioniConsegna variazioni_;
};

} // namespace lumoscad
