#pragma once

#include "PresuntiDiProva.hpp"
#include "SchermataDiLista.hpp"
#include "common/Variazioni.hpp"
#include "database/procedureLumoDB2.hpp"

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace lumoscad::test {

/// A screen of presumed documents.
template <typename Form> class SchermataPresunti : public SchermataDiLista<Form> {
 protected:
  using Mostratore = void (Form::*)(std::string_view, const procedureLumoDB2::FiltroPresunti&, VariazioniConsegna&);

  SchermataPresunti(Mostratore mostratore, std::string dati)
      : mostratore_(mostratore), base(this->GetParam(), dati.empty() ? DatiPresunti() : dati) {
    stato().ComandoCorrente = "X /PRESUNTI " + base.Opzioni();
    filtro.parTipoMovimenti = "V";
  }

  VariazioniConsegna Mostra(const std::function<void()>& copione = {}) {
    this->Recita(copione);
    VariazioniConsegna variazioni(1); // what an earlier command left must not come back
    (this->schermata.*mostratore_)("001", filtro, variazioni);
    return variazioni;
  }
  /// The text with which the showing fails; empty when it does not.
  std::string Fallimento(const std::function<void()>& copione = {}) {
    return this->FallimentoDi([&] { static_cast<void>(Mostra(copione)); });
  }
  /// The row of a document by its currency.
  [[nodiscard]] std::size_t Riga(const std::string& documento, const std::string& divisa = "EUR",
                                 const std::string& importo = "") const {
    for (std::size_t riga = 0; riga < righe.Quante(); ++riga) {
      if (righe.Testo(riga, Form::Ordine) == documento && righe.Testo(riga, Form::Divisa) == divisa &&
          (importo.empty() || righe.Testo(riga, Form::Fatturato) == importo)) {
        return riga;
      }
    }
    ADD_FAILURE() << "no row of " << documento << " in " << divisa;
    return 0;
  }
  /// The texts of a column in the order in which the rows show.
  [[nodiscard]] std::vector<std::string> InOrdine(int colonna) const {
    std::vector<std::string> testi;
    for (std::size_t posto = 0; posto < righe.Quante(); ++posto) {
      testi.emplace_back(righe.Testo(righe.RigaAlPosto(posto), colonna));
    }
    return testi;
  }

 private:
  Mostratore mostratore_;

 protected:
  using SchermataDiLista<Form>::righe;

  BaseDati base;
  procedureLumoDB2::FiltroPresunti filtro;
};

} // namespace lumoscad::test
