#pragma once

#include "PresuntiDiProva.hpp"
#include "common/Variazioni.hpp"
#include "database/procedureLumoDB2.hpp"
#include "platform/RuntimeError.hpp"
#include "screens/Griglia.hpp"
#include "support/TestBench.hpp"

#include <gmock/gmock.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace lumoscad::test {

/// A screen of presumed documents over a database: each showing plays a script of gestures on its window.
template <typename Form> class SchermataPresunti : public testing::TestWithParam<const char*> {
 protected:
  using Mostratore = void (Form::*)(std::string_view, const procedureLumoDB2::FiltroPresunti&, VariazioniConsegna&);

  SchermataPresunti(Mostratore mostratore, std::string dati)
      : mostratore_(mostratore), base(this->GetParam(), dati.empty() ? DatiPresunti() : dati) {
    stato().ComandoCorrente = "X /PRESUNTI " + base.Opzioni();
    filtro.parTipoMovimenti = "V";
  }

  VariazioniConsegna Mostra(const std::function<void()>& copione = {}) {
    banco.desktop.scripts.emplace_back([this, copione](ListWindow& aperta) {
      finestra = &aperta;
      if (copione) {
        copione();
      }
    });
    VariazioniConsegna variazioni(1); // what an earlier command left must not come back
    (schermata.*mostratore_)("001", filtro, variazioni);
    return variazioni;
  }
  /// The text with which the showing fails; empty when it does not.
  std::string Fallimento(const std::function<void()>& copione = {}) {
    try {
      static_cast<void>(Mostra(copione));
    } catch (const RuntimeError& errore) {
      EXPECT_EQ(errore.Number(), -2147220954);
      return errore.Description();
    }
    return "";
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
  void Clic(std::size_t riga, int colonna) const {
    int sinistra = 0;
    for (int i = 0; i < colonna; ++i) {
      sinistra += finestra->Description().columns[static_cast<std::size_t>(i)].width;
    }
    finestra->Seleziona(static_cast<std::ptrdiff_t>(righe.PostoDellaRiga(riga)));
    finestra->LVScadenze_MouseDown(sinistra + 1, 5);
    finestra->LVScadenze_Click(240 * static_cast<int>(righe.PostoDellaRiga(riga)));
  }
  /// The texts of a column in the order in which the rows show.
  [[nodiscard]] std::vector<std::string> InOrdine(int colonna) const {
    std::vector<std::string> testi;
    for (std::size_t posto = 0; posto < righe.Quante(); ++posto) {
      testi.emplace_back(righe.Testo(righe.RigaAlPosto(posto), colonna));
    }
    return testi;
  }
  [[nodiscard]] std::vector<std::string> Testi(std::size_t riga) const {
    std::vector<std::string> testi;
    for (int colonna = 0; colonna < Form::Colonne; ++colonna) {
      testi.emplace_back(righe.Testo(riga, colonna));
    }
    return testi;
  }

 private:
  Mostratore mostratore_;

 protected:
  BaseDati base;
  TestBench banco;
  Form schermata;
  const RigheGriglia& righe = schermata.griglia().righe;
  procedureLumoDB2::FiltroPresunti filtro;
  ListWindow* finestra = nullptr;
};

} // namespace lumoscad::test
