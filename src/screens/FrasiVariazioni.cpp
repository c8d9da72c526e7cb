#include "screens/FrasiVariazioni.hpp"

#include "common/Testo.hpp"
#include "screens/EffettoVariazioni.hpp"
#include "screens/Griglia.hpp"

#include <string_view>

namespace lumoscad {
namespace {

/// Which row it is, in a person's words.
std::string CheRiga(const Griglia& griglia, std::size_t riga) {
  const DescrizioneGriglia& d = griglia.Descrizione();
  std::string frase;
  const auto aggiungi = [&](std::string_view prima, int colonna, std::string_view dopo) {
    const std::string_view testo = colonna < 0 ? std::string_view() : griglia.righe.Testo(riga, colonna);
    if (!testo.empty()) {
      frase.append(frase.empty() ? "" : ", ").append(prima).append(testo).append(dopo);
    }
  };
  const std::string_view divisa = DivisaDiRiga(griglia, riga);
  aggiungi("", d.colonnaConto, "");
  aggiungi("", d.colonnaPartita, "");
  aggiungi("rata ", d.colonnaRata, "");
  aggiungi("", d.colonnaImporto, " " + std::string(divisa.empty() ? "€" : divisa));
  return frase;
}

std::string FraseData(const Griglia& griglia, std::size_t riga) {
  const DescrizioneGriglia& d = griglia.Descrizione();
  const std::string_view prima = griglia.righe.Testo(riga, d.colonnaScadenza);
  const std::string nuova(griglia.righe.Testo(riga, d.data.colonna));
  return prima.empty() ? d.nomeData + " " + nuova + " (prima nessuna)"
                       : d.nomeData + " dal " + std::string(prima) + " al " + nuova;
}

std::string FraseBanca(const Griglia& griglia, std::size_t riga) {
  const DescrizioneGriglia& d = griglia.Descrizione();
  const std::string prima(griglia.righe.Testo(riga, d.colonnaBanca));
  const std::string nuova(griglia.righe.Testo(riga, d.banca.colonna));
  if (griglia.righe.Tag(riga, d.banca.colonna) == Nullo) {
    return "banca tolta (era " + prima + ")";
  }
  const bool nessuna = griglia.righe.Tag(riga, d.colonnaBanca).empty();
  return nessuna ? "banca " + nuova + " (prima nessuna)" : "banca da " + prima + " a " + nuova;
}

} // namespace

std::string FraseVariazione(const Griglia& griglia, std::size_t riga) {
  std::string frase;
  if (griglia.DataVariata(riga)) {
    frase = FraseData(griglia, riga);
  }
  if (griglia.BancaVariata(riga)) {
    frase += (frase.empty() ? "" : "; ") + FraseBanca(griglia, riga);
  }
  return frase.empty() ? frase : CheRiga(griglia, riga) + ": " + frase;
}

} // namespace lumoscad
