// What of a row is shown beside its cells: all that was read of it, and what tells it from one that looks the same.

#include "common/Testo.hpp"
#include "common/Utilities.hpp"
#include "platform/RuntimeError.hpp"
#include "screens/Griglia.hpp"

#include <algorithm>
#include <cstdint>
#include <functional>

namespace lumoscad {
namespace {

using Genere = ListColumn::Kind;

/// The date as screens show it; one that is none, as it was read.
std::string DataLetta(const std::string& letta) {
  try {
    return Utilities::FormattaData(letta);
  } catch (const RuntimeError&) {
    return letta;
  }
}

} // namespace

void Griglia::SegnaUguali() {
  uguali_.assign(righe.Quante(), false);
  if (descrizione_.colonnaRata < 0) {
    return;
  }
  // The texts are compared by their hashes: two rows that differ would at worst both show their instalment.
  std::vector<std::uint64_t> impronte(righe.Quante());
  const std::hash<std::string_view> impronta;
  for (std::size_t colonna = 0; colonna < descrizione_.colonne.size(); ++colonna) {
    const Genere genere = descrizione_.colonne[colonna].kind;
    if (larghezze_[colonna] <= 0 || (genere != Genere::Text && genere != Genere::Amount)) {
      continue;
    }
    for (std::size_t riga = 0; riga < impronte.size(); ++riga) {
      impronte[riga] = (impronte[riga] ^ impronta(righe.Testo(riga, static_cast<int>(colonna)))) *
                       0x9E3779B97F4A7C15ULL; // any large odd number
    }
  }
  std::vector<std::uint64_t> inOrdine = impronte;
  std::sort(inOrdine.begin(), inOrdine.end());
  for (std::size_t riga = 0; riga < impronte.size(); ++riga) {
    const auto [prima, dopo] = std::equal_range(inOrdine.begin(), inOrdine.end(), impronte[riga]);
    uguali_[riga] = dopo - prima > 1;
  }
}

std::string_view Griglia::Distinzione(std::size_t posto, int colonna) const {
  if (colonna != descrizione_.colonnaPartita || descrizione_.colonnaRata < 0) {
    return {};
  }
  const std::size_t riga = vista_.Riga(posto);
  if (riga >= uguali_.size() || !uguali_[riga] || righe.Testo(riga, descrizione_.colonnaRata).empty()) {
    return {};
  }
  return distinzione_ = "rata " + std::string(righe.Testo(riga, descrizione_.colonnaRata));
}

std::string Griglia::Didascalia(int colonna) const {
  if (colonna == descrizione_.colonnaSpunta1 && !descrizione_.caselle) {
    return descrizione_.data.colonna >= 0 ? "Spunta della nuova data" : "Spunta della nuova banca";
  }
  if (colonna == descrizione_.colonnaSpunta2) {
    return "Spunta della nuova banca";
  }
  if (colonna == descrizione_.colonnaRata) {
    return "Rata";
  }
  for (const TestataGriglia& testata : descrizione_.testate) {
    if (testata.colonna == colonna) {
      return testata.testo;
    }
  }
  const ListColumn& descrizione = descrizione_.colonne[static_cast<std::size_t>(colonna)];
  return descrizione.headingText.empty() && descrizione.kind == Genere::Tick ? "Spuntata" : descrizione.headingText;
}

void Griglia::AggiungiCodici(std::size_t riga, int colonna, std::vector<RowDetail>& dettagli) const {
  const auto tag = [&] { return std::string(righe.Tag(riga, colonna)); };
  if (colonna == descrizione_.colonnaConto) {
    dettagli.push_back({"Codice conto", tag()});
  } else if (colonna == descrizione_.colonnaBanca) {
    dettagli.push_back({"Codice banca", tag()});
  } else if (colonna == descrizione_.banca.colonna) {
    dettagli.push_back({"Codice nuova banca", tag() == Nullo ? "nessuno" : tag()});
  } else if (colonna == descrizione_.colonnaScadenza && !descrizione_.tagScadenza.empty()) {
    dettagli.push_back({descrizione_.tagScadenza, DataLetta(tag())});
  }
}

std::vector<RowDetail> Griglia::Dettagli(std::size_t posto) const {
  std::vector<RowDetail> dettagli;
  if (posto >= vista_.Quante()) {
    return dettagli;
  }
  const std::size_t riga = vista_.Riga(posto);
  for (int colonna = 0; colonna < static_cast<int>(descrizione_.colonne.size()); ++colonna) {
    if (colonna == descrizione_.colonnaOrdina) {
      continue; // the date a second time, as it sorts
    }
    const bool spunta = descrizione_.colonne[static_cast<std::size_t>(colonna)].kind == Genere::Tick;
    const std::string valore = !spunta ? std::string(righe.Testo(riga, colonna)) : Ticked(posto, colonna) ? "sì" : "no";
    dettagli.push_back({Didascalia(colonna), valore});
    AggiungiCodici(riga, colonna, dettagli);
  }
  return dettagli;
}

} // namespace lumoscad
