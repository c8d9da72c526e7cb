#include "screens/ResocontoGriglia.hpp"

#include "common/Testo.hpp"
#include "screens/EsportaGriglia.hpp"
#include "screens/FrasiVariazioni.hpp"
#include "screens/Griglia.hpp"
#include "screens/IncollaGriglia.hpp"

#include <algorithm>
#include <array>
#include <iterator>
#include <map>
#include <optional>

namespace lumoscad {
namespace {

using GenereEffetto = EffettoVariazioni::Genere;

/// "30 scelte: 45.120,00 €": how many, what they are, and what they come to.
std::string ParteDelPiede(std::size_t quante, std::string_view una, std::string_view molte, const std::string& somme) {
  std::string parte = Migliaia(quante);
  parte.append(" ").append(quante == 1 ? una : molte);
  return somme.empty() ? parte : parte + ": " + somme;
}

std::string ParteDelPiede(const Griglia& griglia, const std::vector<std::size_t>& righe, std::string_view una,
                          std::string_view molte) {
  return ParteDelPiede(righe.size(), una, molte, SommaRighe(griglia, righe).Testo());
}

std::string Titolo(GenereEffetto genere) {
  return genere == GenereEffetto::Banca ? "Per banca" : "Per mese";
}

EffectBar Barra(const EffettoVariazioni::Voce& voce, const ImportoEsatto& massimo) {
  EffectBar barra;
  barra.name = voce.nome;
  barra.before = ConDivisa(voce.prima, voce.divisa);
  barra.after = ConDivisa(voce.dopo, voce.divisa);
  barra.beforePart = voce.prima.Millesimi(massimo);
  barra.afterPart = voce.dopo.Millesimi(massimo);
  barra.negativeBefore = voce.prima < ImportoEsatto();
  barra.negativeAfter = voce.dopo < ImportoEsatto();
  barra.changed = voce.prima != voce.dopo || voce.righePrima != voce.righeDopo;
  return barra;
}

} // namespace

std::vector<std::string> ResocontoGriglia::Piede() const {
  std::vector<std::string> parti;
  const auto scelte = griglia_.Selezione().InVistaPerNumero();
  std::string sommeScelte;
  if (scelte.size() > 1) {
    sommeScelte = SommaRighe(griglia_, scelte).Testo();
    parti.push_back(ParteDelPiede(scelte.size(), "scelta", "scelte", sommeScelte));
  }
  std::vector<std::size_t> spuntate;
  for (std::size_t riga = 0; riga < griglia_.righe.Quante(); ++riga) {
    if (griglia_.righe.Spunte(riga) != 0) {
      spuntate.push_back(riga);
    }
  }
  if (!spuntate.empty()) {
    parti.push_back(ParteDelPiede(griglia_, spuntate, "spuntata", "spuntate"));
  }
  const auto variate = griglia_.ElencoVariate();
  if (variate.empty()) {
    parti.emplace_back("Nessuna variazione");
    return parti;
  }
  // After a gesture on many rows those that changed are mostly those that are selected.
  parti.push_back(scelte.size() > 1 && variate == scelte
                      ? ParteDelPiede(variate.size(), "variata", "variate", sommeScelte)
                      : ParteDelPiede(griglia_, variate, "variata", "variate"));
  std::vector<std::size_t> nascoste;
  std::copy_if(variate.begin(), variate.end(), std::back_inserter(nascoste),
               [this](std::size_t riga) { return !griglia_.InVista(riga); });
  if (!nascoste.empty()) {
    parti.push_back(ParteDelPiede(griglia_, nascoste, "variata non in vista", "variate non in vista"));
  }
  return parti;
}

const std::vector<std::size_t>& ResocontoGriglia::Variate() const {
  if (contenuto_ != griglia_.Stato().content) {
    variate_ = griglia_.ElencoVariate();
    contenuto_ = griglia_.Stato().content;
  }
  return variate_;
}

void ResocontoGriglia::Azzera() {
  effetto_.Azzera();
  contenuto_.reset();
}

std::size_t ResocontoGriglia::QuanteFrasi() const {
  return Variate().size();
}

std::string ResocontoGriglia::Frase(std::size_t quale) const {
  const auto& variate = Variate();
  return quale < variate.size() ? FraseVariazione(griglia_, variate[quale]) : std::string();
}

void ResocontoGriglia::RiprendiFrasi(const std::vector<std::size_t>& quali) {
  const auto variate = griglia_.ElencoVariate();
  std::vector<std::size_t> righe;
  for (const std::size_t quale : quali) {
    if (quale < variate.size()) {
      righe.push_back(variate[quale]);
    }
  }
  if (righe.empty() || !griglia_.Modificabile()) {
    return;
  }
  griglia_.Form_Click();
  const GestoGriglia gesto(griglia_, "ripresa");
  const DescrizioneGriglia& d = griglia_.Descrizione();
  std::vector<std::size_t> conBanca;
  for (const std::size_t riga : righe) {
    if (griglia_.DataVariata(riga)) {
      griglia_.ScriviTesto(riga, d.data.colonna, griglia_.DataTolta(riga));
      if (d.banca.spunta != 0) {
        griglia_.ScriviSpunta(riga, 0, false);
      }
    }
    if (griglia_.BancaVariata(riga)) {
      conBanca.push_back(riga);
    }
  }
  if (!conBanca.empty()) {
    griglia_.SpuntaBanche(conBanca, false);
  }
  griglia_.Cambiata();
  const InsiemeRighe& mosse = griglia_.passi_.Mosse();
  griglia_.Avvisa(griglia_.QuanteRighe(mosse.Quante()) + ": come prima" + griglia_.NonInVista(mosse));
}

std::vector<GenereEffetto> ResocontoGriglia::Generi() const {
  std::vector<GenereEffetto> generi;
  for (const GenereEffetto genere : {GenereEffetto::Banca, GenereEffetto::Mese}) {
    if (effetto_.Riguarda(genere)) {
      generi.push_back(genere);
    }
  }
  return generi;
}

std::vector<EffectGroup> ResocontoGriglia::Effetto() {
  std::vector<EffectGroup> gruppi;
  const auto variate = griglia_.ElencoVariate();
  for (const GenereEffetto genere : Generi()) {
    const auto voci = effetto_.Voci(genere, variate);
    std::map<std::string, ImportoEsatto> massimi; // a currency each: they do not compare
    for (const auto& voce : voci) {
      ImportoEsatto& massimo = massimi[voce.divisa];
      for (const ImportoEsatto& importo : {voce.prima, voce.dopo}) {
        massimo = std::max({massimo, importo, -importo});
      }
    }
    EffectGroup gruppo;
    gruppo.title = Titolo(genere);
    for (const auto& voce : voci) {
      gruppo.bars.push_back(Barra(voce, massimi[voce.divisa]));
      gruppo.bars.back().filters = griglia_.dietro_ && griglia_.dietro_->Di(genere, voce);
    }
    gruppi.push_back(std::move(gruppo));
  }
  return gruppi;
}

void ResocontoGriglia::ScegliDietro(std::size_t gruppo, std::size_t barra) {
  const auto generi = Generi();
  if (gruppo >= generi.size()) {
    return;
  }
  const GenereEffetto genere = generi[gruppo];
  const auto voci = effetto_.Voci(genere, griglia_.ElencoVariate());
  if (barra >= voci.size()) {
    return;
  }
  const auto& voce = voci[barra];
  const std::string nome = Titolo(genere) + ": " + voce.nome + (voce.divisa.empty() ? "" : ", " + voce.divisa);
  if (griglia_.dietro_ && griglia_.dietro_->Di(genere, voce)) {
    griglia_.FiltraDietro({}, std::nullopt);
    Avvisa("Tolto il filtro " + nome);
  } else {
    griglia_.FiltraDietro(nome, EffettoVariazioni::RigheDietro(effetto_, genere, voce));
    Avvisa(nome + ": " + griglia_.QuanteRighe(griglia_.Visibili()) + ", le altre non sono in vista");
  }
}

CopiedRows ResocontoGriglia::Copia() {
  const EsportaGriglia esporta(griglia_);
  const auto righe = esporta.Righe();
  Avvisa("Copiate " + griglia_.QuanteRighe(righe.size()));
  return {esporta.Tabulato(righe), esporta.Html(righe)};
}

std::string ResocontoGriglia::Csv() {
  const EsportaGriglia esporta(griglia_);
  return esporta.Csv(esporta.Righe());
}

PrintedTable ResocontoGriglia::Stampa() {
  const EsportaGriglia esporta(griglia_);
  const auto righe = esporta.Righe();
  PrintedTable tabella;
  tabella.title = griglia_.titolo;
  for (const auto& colonna : esporta.Colonne()) {
    tabella.columns.push_back({colonna.titolo, colonna.larghezza, colonna.importo});
  }
  for (const std::size_t riga : righe) {
    std::vector<std::string>& celle = tabella.rows.emplace_back();
    for (const auto& colonna : esporta.Colonne()) {
      celle.push_back(esporta.Cella(riga, colonna));
    }
  }
  tabella.totals.push_back(
      ParteDelPiede(griglia_, righe, griglia_.Descrizione().nomeRiga, griglia_.Descrizione().nomeRighe));
  std::vector<std::size_t> variate;
  std::copy_if(righe.begin(), righe.end(), std::back_inserter(variate),
               [this](std::size_t riga) { return griglia_.Variata(riga); });
  tabella.totals.push_back(variate.empty() ? "Nessuna variazione"
                                           : ParteDelPiede(griglia_, variate, "variata", "variate"));
  return tabella;
}

void ResocontoGriglia::Incolla(std::string_view testo, int colonna) {
  IncollaGriglia(griglia_).Incolla(testo, colonna);
}

void ResocontoGriglia::Avvisa(std::string_view avviso) {
  griglia_.Avvisa(std::string(avviso));
}

} // namespace lumoscad
