#pragma once

#include "common/Variazioni.hpp"
#include "screens/Griglia.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <numeric>
#include <random>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace lumoscad::test {

/// "1.234,56" of an amount in hundredths, by the plainest way.
inline std::string ImportoAtteso(std::int64_t centesimi) {
  std::string cifre = std::to_string(centesimi);
  cifre.insert(0, cifre.size() < 3 ? 3 - cifre.size() : 0, '0');
  std::string testo = "," + cifre.substr(cifre.size() - 2);
  cifre.resize(cifre.size() - 2);
  while (cifre.size() > 3) {
    testo = "." + cifre.substr(cifre.size() - 3) + testo;
    cifre.resize(cifre.size() - 3);
  }
  return cifre + testo;
}

/// What a sequence of gestures at random needs of any list: which rows are selected, in which order they show, and the
/// steps, each of which is a copy of all that the model holds.
template <typename Stato> class SequenzaACaso {
 protected:
  using Righe = std::vector<std::size_t>;

  SequenzaACaso(Griglia& griglia, unsigned seme) : generatore_(seme), elenco_(griglia) {}

  [[nodiscard]] std::size_t Fino(std::size_t massimo) {
    return std::uniform_int_distribution<std::size_t>(0, massimo)(generatore_);
  }
  [[nodiscard]] std::size_t Posto() { return Fino(elenco_.Visibili() - 1); }

  /// The selected rows in sight, from top to bottom.
  [[nodiscard]] Righe ScelteInVista() const {
    Righe righe;
    for (std::size_t posto = 0; posto < elenco_.Visibili(); ++posto) {
      if (scelte_.count(elenco_.RigaVisibile(posto)) > 0) {
        righe.push_back(elenco_.RigaVisibile(posto));
      }
    }
    return righe;
  }
  /// The rows that a gesture at this place means, from top to bottom.
  [[nodiscard]] Righe Del(std::size_t posto) const {
    const std::size_t riga = elenco_.RigaVisibile(posto);
    return scelte_.count(riga) > 0 ? ScelteInVista() : Righe{riga};
  }

  /// A step from what there was; one that changed nothing is none.
  void Passo(const Stato& prima) {
    if (!(prima == ora_)) {
      indietro_.push_back(prima);
      avanti_.clear();
    }
  }

  /// Presses a row where this column stands, `x` twips from the left.
  void Premi(std::size_t posto, int x) {
    const std::size_t riga = elenco_.RigaVisibile(posto);
    if (elenco_.Gestures()->Premi(posto, x, {}) == RowPress::Plain) {
      elenco_.Seleziona(static_cast<std::ptrdiff_t>(posto));
      scelte_ = {riga};
    }
    elenco_.LVScadenze_MouseDown(x, 5);
    elenco_.LVScadenze_Click(240);
  }

  void Seleziona(std::size_t posto) {
    scelte_ = {elenco_.RigaVisibile(posto)};
    elenco_.Seleziona(static_cast<std::ptrdiff_t>(posto));
  }

  void Estendi(std::size_t posto) {
    const std::size_t da = Posto();
    const std::size_t prima = elenco_.RigaVisibile(da);
    const std::size_t ultima = elenco_.RigaVisibile(posto);
    elenco_.Seleziona(static_cast<std::ptrdiff_t>(da));
    // An edited row may have gone with the selection, and the last with it.
    for (std::size_t altro = 0; altro < elenco_.Visibili(); ++altro) {
      if (elenco_.RigaVisibile(altro) == ultima) {
        elenco_.Gestures()->Vai(altro, {true, false});
        ScegliInVista(DoveSta(prima), altro);
        return;
      }
    }
    scelte_ = {prima};
  }

  void ScegliTutte() {
    elenco_.Gestures()->ScegliVisibili();
    ScegliInVista(0, elenco_.Visibili() - 1);
  }

  /// False where there was nothing to take back, or to do again.
  bool Annulla() {
    elenco_.Gestures()->Annulla();
    return Rimetti(indietro_, avanti_);
  }
  bool Rifai() {
    elenco_.Gestures()->Rifai();
    return Rimetti(avanti_, indietro_);
  }

  /// Filters by what `passa` says of a row of the model.
  void Filtra(const ListFilter& filtro, const auto& passa) {
    const bool nuovo = !(elenco_.Gestures()->Filtro() == filtro);
    elenco_.Gestures()->Filtra(filtro);
    if (!nuovo) {
      return;
    }
    std::set<std::size_t> attese;
    for (std::size_t riga = 0; riga < ora_.righe.size(); ++riga) {
      if (passa(riga)) {
        attese.insert(riga);
      }
    }
    std::set<std::size_t> inVista;
    for (std::size_t posto = 0; posto < elenco_.Visibili(); ++posto) {
      inVista.insert(elenco_.RigaVisibile(posto));
    }
    EXPECT_EQ(inVista, attese);
    if (scelte_.size() < 2 && elenco_.RigaSelezionata()) {
      scelte_ = {*elenco_.RigaSelezionata()};
    }
  }

  /// Clicks a heading; `testo` gives what a row is sorted by. Equal ones stay as they were loaded, either way round.
  void Ordina(int testata, const auto& testo) {
    elenco_.TLwTestata_Click(testata);
    crescente_ = testata == testata_ ? !crescente_ : true;
    testata_ = testata;
    std::iota(ordine_.begin(), ordine_.end(), std::size_t{0});
    std::stable_sort(ordine_.begin(), ordine_.end(), [&](std::size_t a, std::size_t b) {
      return crescente_ ? testo(a) < testo(b) : testo(b) < testo(a);
    });
  }

  /// The list was laid out for these rows: by the first heading, with the first of them selected.
  void Comincia(std::size_t quante, const auto& testo) {
    ordine_.resize(quante);
    std::iota(ordine_.begin(), ordine_.end(), std::size_t{0});
    std::stable_sort(ordine_.begin(), ordine_.end(), [&](std::size_t a, std::size_t b) { return testo(a) < testo(b); });
    scelte_ = {elenco_.RigaVisibile(0)};
  }

  /// What is selected, in which order the rows show, and what the foot says of them.
  void ConfrontaElenco() const {
    for (std::size_t riga = 0; riga < ora_.righe.size(); ++riga) {
      EXPECT_EQ(elenco_.Selezione().Contiene(riga), scelte_.count(riga) > 0) << riga;
    }
    Righe inVista;
    for (std::size_t posto = 0; posto < elenco_.Visibili(); ++posto) {
      inVista.push_back(elenco_.RigaVisibile(posto));
    }
    Righe attese;
    std::copy_if(ordine_.begin(), ordine_.end(), std::back_inserter(attese),
                 [this](std::size_t riga) { return elenco_.InVista(riga); });
    EXPECT_EQ(inVista, attese);
  }

  /// "3 scelte: 300,00 €"; amounts in hundredths, by currency.
  void ParteAttesa(std::vector<std::string>& parti, const Righe& righe, const char* una, const char* molte) const {
    std::map<std::string, std::int64_t> somme;
    for (const std::size_t riga : righe) {
      somme[ora_.righe[riga].divisa] += ora_.righe[riga].centesimi;
    }
    std::string testo;
    for (const auto& [divisa, somma] : somme) {
      testo += (testo.empty() ? "" : "; ") + ImportoAtteso(somma) + " " + (divisa.empty() ? "€" : divisa);
    }
    parti.push_back(std::to_string(righe.size()) + " " + (righe.size() == 1 ? una : molte) + ": " + testo);
  }

  void ConfrontaPiede() const {
    std::vector<std::string> parti;
    if (const Righe scelte = ScelteInVista(); scelte.size() > 1) {
      ParteAttesa(parti, scelte, "scelta", "scelte");
    }
    Righe spuntate;
    Righe variate;
    Righe nascoste;
    for (std::size_t riga = 0; riga < ora_.righe.size(); ++riga) {
      if (ora_.righe[riga].Spuntata()) {
        spuntate.push_back(riga);
      }
      if (ora_.righe[riga].Variata()) {
        variate.push_back(riga);
        if (!elenco_.InVista(riga)) {
          nascoste.push_back(riga);
        }
      }
    }
    EXPECT_EQ(elenco_.ElencoVariate(), variate);
    if (!spuntate.empty()) {
      ParteAttesa(parti, spuntate, "spuntata", "spuntate");
    }
    if (variate.empty()) {
      parti.emplace_back("Nessuna variazione");
    } else {
      ParteAttesa(parti, variate, "variata", "variate");
    }
    if (!nascoste.empty()) {
      ParteAttesa(parti, nascoste, "variata non in vista", "variate non in vista");
    }
    EXPECT_EQ(elenco_.Report()->Piede(), parti);
  }

  Stato ora_;
  std::vector<Stato> indietro_;
  std::vector<Stato> avanti_;
  std::set<std::size_t> scelte_;
  Righe ordine_; ///< all rows, as they were sorted last
  std::mt19937 generatore_;

 private:
  bool Rimetti(std::vector<Stato>& da, std::vector<Stato>& a) {
    if (da.empty()) {
      return false;
    }
    a.push_back(std::exchange(ora_, da.back()));
    da.pop_back();
    return true;
  }

  [[nodiscard]] std::size_t DoveSta(std::size_t riga) const {
    std::size_t posto = 0;
    while (elenco_.RigaVisibile(posto) != riga) {
      ++posto;
    }
    return posto;
  }

  void ScegliInVista(std::size_t primo, std::size_t ultimo) {
    scelte_.clear();
    for (std::size_t posto = std::min(primo, ultimo); posto <= std::max(primo, ultimo); ++posto) {
      scelte_.insert(elenco_.RigaVisibile(posto));
    }
  }

  Griglia& elenco_;
  int testata_ = 1;
  bool crescente_ = true;
};

/// Plays sequences until one differs, those of `trovati` besides, which showed something once; the confirmation of each
/// ends it.
template <typename Confronto> void GiocaSequenze(const std::vector<unsigned>& trovati = {}) {
  std::vector<unsigned> semi(std::getenv("LUMOSCAD_PER_INTERO") != nullptr ? 10000 : 300);
  std::iota(semi.begin(), semi.end(), 1U);
  semi.insert(semi.end(), trovati.begin(), trovati.end());
  for (const unsigned seme : semi) {
    if (testing::Test::HasFailure()) {
      break;
    }
    Confronto confronto(seme);
    for (int gesto = 0; gesto < 40 && !testing::Test::HasFailure(); ++gesto) {
      SCOPED_TRACE("sequence " + std::to_string(seme) + ", gesture " + std::to_string(gesto));
      confronto.Gesto();
      confronto.Confronta();
    }
    SCOPED_TRACE("sequence " + std::to_string(seme) + ", confirmed");
    confronto.Conferma();
  }
}

} // namespace lumoscad::test
