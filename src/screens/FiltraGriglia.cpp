// Finding rows: which are in sight, and jumping to one by its first letters.

#include "common/Testo.hpp"
#include "platform/Services.hpp"
#include "platform/base/FoldedText.hpp"
#include "screens/Griglia.hpp"

#include <algorithm>
#include <utility>

namespace lumoscad {
namespace {

constexpr std::size_t CaratteriMese = 7; ///< of "YYYY/MM/DD"

} // namespace

FiltroGriglia::Colonne Griglia::ColonneDelFiltro() const {
  const DescrizioneGriglia& d = descrizione_;
  FiltroGriglia::Colonne colonne;
  for (int colonna = 0; colonna < static_cast<int>(d.colonne.size()); ++colonna) {
    const ListColumn::Kind genere = d.colonne[static_cast<std::size_t>(colonna)].kind;
    if (Larghezza(colonna) == 0 || genere == ListColumn::Kind::Tick) {
      continue;
    }
    colonne.testi.push_back(colonna);
    if (genere == ListColumn::Kind::Amount) {
      colonne.importi.push_back(colonna);
    }
    if (colonna == d.colonnaScadenza || colonna == d.colonnaOriginale || colonna == d.data.colonna) {
      colonne.date.push_back(colonna);
    }
  }
  colonne.conto = d.colonnaConto;
  colonne.partita = d.colonnaPartita;
  colonne.banca = d.colonnaBanca;
  colonne.nuovaBanca = d.banca.colonna;
  return colonne;
}

bool Griglia::Passa(std::size_t riga) const {
  return (!filtro_.changedOnly || Variata(riga)) && (!filtro_.tickedOnly || righe.Spunte(riga) != 0) &&
         (!dietro_ || dietro_->Contiene(riga)) && (!ricerca_ || ricerca_->Passa(righe, riga));
}

void Griglia::FiltraDietro(std::string nome, std::optional<EffettoVariazioni::RigheDietro> dietro) {
  ListFilter filtro = filtro_;
  filtro.behind = std::move(nome);
  CambiaFiltro(filtro, std::move(dietro));
}

void Griglia::Filtra(const ListFilter& filtro) {
  if (filtro != filtro_) {
    CambiaFiltro(filtro, filtro.behind.empty() ? std::nullopt : dietro_);
  }
}

void Griglia::CambiaFiltro(const ListFilter& filtro, std::optional<EffettoVariazioni::RigheDietro> dietro) {
  if (descrizione_.caselle) {
    return;
  }
  Form_Click();
  FiltroGriglia ricerca(filtro.text, ColonneDelFiltro());
  const bool stringe = vista_.Ristretta() && !daRivedere_ && filtro.changedOnly == filtro_.changedOnly &&
                       filtro.tickedOnly == filtro_.tickedOnly && filtro.behind == filtro_.behind && ricerca_ &&
                       ricerca.Restringe(*ricerca_);
  filtro_ = filtro;
  dietro_ = std::move(dietro);
  ricerca_ = std::move(ricerca);
  MostraPassate(stringe, false);
}

/// `traVisibili`: the others are not let through either. `tieni`: the current row and the selected ones in sight stay.
void Griglia::MostraPassate(bool traVisibili, bool tieni) {
  const auto corrente = RigaSelezionata();
  daRivedere_ = false;
  if (!filtro_.changedOnly && !filtro_.tickedOnly && !dietro_ && (!ricerca_ || ricerca_->Vuoto())) {
    vista_.MostraTutte();
  } else {
    InsiemeRighe insieme;
    const auto prova = [&](std::size_t riga) {
      if (Passa(riga)) {
        insieme.Aggiungi(riga);
      } else if (tieni && vista_.Contiene(riga) && (riga == corrente || scelta_.Contiene(riga))) {
        insieme.Aggiungi(riga);
        daRivedere_ = true;
      }
    };
    if (traVisibili) {
      vista_.OgnunaPerNumero(prova);
    } else {
      for (std::size_t riga = 0; riga < righe.Quante(); ++riga) {
        prova(riga);
      }
    }
    if (stato_.data.visible || stato_.bank.visible) {
      insieme.Aggiungi(rigaInModifica_);
    }
    vista_.Mostra(std::move(insieme));
  }
  const auto ora = corrente ? corrente : scelta_.Ancora();
  const auto posto = righe.Quante() == 0 ? std::nullopt : vista_.PostoDa(ora.value_or(0));
  stato_.selected = posto ? static_cast<std::ptrdiff_t>(*posto) : -1;
  if (posto && scelta_.Quante() < 2) {
    scelta_.Solo(vista_.Riga(*posto));
  }
  SegnaSelezione();
  VistaMutata();
}

void Griglia::Salta(std::string_view lettere, bool daCapo) {
  const auto testata = std::find_if(descrizione_.testate.begin(), descrizione_.testate.end(),
                                    [this](const auto& altra) { return altra.colonnaOrdine == colonnaOrdine_; });
  const std::string cercate = base::Folded(lettere);
  const std::size_t quante = vista_.Quante();
  if (testata == descrizione_.testate.end() || quante == 0 || cercate.empty()) {
    return;
  }
  const int colonna = Larghezza(colonnaOrdine_) > 0 ? colonnaOrdine_ : testata->colonna;
  const std::size_t inizio = static_cast<std::size_t>(std::max<std::ptrdiff_t>(stato_.selected, 0)) + (daCapo ? 1 : 0);
  std::string testo;
  for (std::size_t i = 0; i < quante; ++i) {
    const std::size_t posto = (inizio + i) % quante;
    base::Fold(righe.Testo(vista_.Riga(posto), colonna), testo);
    if (testo.starts_with(cercate)) {
      Seleziona(static_cast<std::ptrdiff_t>(posto));
      return;
    }
  }
}

void GestiGriglia::Filtra(const ListFilter& filtro) {
  griglia_.Filtra(filtro);
}

const ListFilter& GestiGriglia::Filtro() const {
  return griglia_.filtro_;
}

std::vector<ListGestures::Places> GestiGriglia::Trovati(std::size_t posto, int colonna) const {
  if (!griglia_.ricerca_ || griglia_.ricerca_->Vuoto() || posto >= griglia_.Visibili()) {
    return {};
  }
  return griglia_.ricerca_->Trovati(griglia_.CellText(posto, colonna), colonna);
}

void GestiGriglia::Salta(std::string_view lettere, bool daCapo) {
  griglia_.Salta(lettere, daCapo);
}

void GestiGriglia::ScegliDove(const auto& scegli) {
  if (!SelezioneMultipla()) {
    return;
  }
  griglia_.Form_Click();
  griglia_.scelta_.Scegli(scegli);
  griglia_.SegnaSelezione();
}

void GestiGriglia::ScegliVisibili() {
  ScegliDove([](std::size_t) { return true; });
}

void GestiGriglia::InvertiScelta() {
  const SelezioneGriglia prima = griglia_.scelta_;
  ScegliDove([&](std::size_t riga) { return !prima.Contiene(riga); });
}

bool GestiGriglia::Confrontabile(Likeness simile) const {
  const DescrizioneGriglia& d = griglia_.descrizione_;
  switch (simile) {
  case Likeness::Account:
    return d.colonnaConto >= 0;
  case Likeness::Item:
    return d.colonnaConto >= 0 && d.colonnaPartita >= 0;
  case Likeness::Bank:
    return d.colonnaBanca >= 0;
  case Likeness::Month:
    return d.colonnaOrdina >= 0;
  }
  return false;
}

void GestiGriglia::ScegliSimili(Likeness simile) {
  const auto corrente = griglia_.RigaSelezionata();
  if (!corrente || !Confrontabile(simile)) {
    return;
  }
  const DescrizioneGriglia& d = griglia_.descrizione_;
  const RigheGriglia& righe = griglia_.righe;
  const auto stessoConto = [&](std::size_t riga) {
    return righe.Tag(riga, d.colonnaConto) == righe.Tag(*corrente, d.colonnaConto);
  };
  const auto mese = [&](std::size_t riga) { return righe.Testo(riga, d.colonnaOrdina).substr(0, CaratteriMese); };
  ScegliDove([&](std::size_t riga) {
    switch (simile) {
    case Likeness::Account:
      return stessoConto(riga);
    case Likeness::Item:
      return stessoConto(riga) && righe.Testo(riga, d.colonnaPartita) == righe.Testo(*corrente, d.colonnaPartita);
    case Likeness::Bank:
      return righe.Tag(riga, d.colonnaBanca) == righe.Tag(*corrente, d.colonnaBanca);
    case Likeness::Month:
      return mese(riga) == mese(*corrente);
    }
    return false;
  });
}

void GestiGriglia::ScegliScadute() {
  const int colonna = griglia_.descrizione_.colonnaOrdina;
  if (colonna < 0) {
    return;
  }
  const DateTime oggi = ActiveServices().localTime();
  const std::string adesso = ConZeri(oggi.year, 4) + "/" + ConZeri(oggi.month, 2) + "/" + ConZeri(oggi.day, 2);
  ScegliDove([&](std::size_t riga) {
    const std::string_view data = griglia_.righe.Testo(riga, colonna);
    return !data.empty() && data < adesso;
  });
}

} // namespace lumoscad
