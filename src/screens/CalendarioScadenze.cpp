#include "screens/CalendarioScadenze.hpp"

#include "common/Testo.hpp"
#include "screens/DescrizioneGriglia.hpp"
#include "screens/RigheGriglia.hpp"

#include <algorithm>
#include <optional>

namespace lumoscad {
namespace {

int NumeroDelGiorno(Giorno giorno) {
  return static_cast<int>(giorno.time_since_epoch().count());
}

/// The day of a cell, as the one before it where it says the same: rows that stand together often do.
class GiorniLetti {
 public:
  std::optional<Giorno> Leggi(std::string_view testo) {
    if (testo != ultimo_) {
      ultimo_ = testo;
      giorno_ = LeggiGiorno(testo);
    }
    return giorno_;
  }

 private:
  std::string ultimo_;
  std::optional<Giorno> giorno_;
};

void Conta(SommaDelGiorno& somma, std::string_view divisa, const std::optional<ImportoEsatto>& importo) {
  ++somma.quante;
  if (!importo) {
    somma.incompleta = true;
    return;
  }
  auto totale = std::find_if(somma.totali.begin(), somma.totali.end(),
                             [divisa](const auto& altro) { return altro.first == divisa; });
  if (totale == somma.totali.end()) {
    totale = somma.totali.insert(totale, {std::string(divisa), ImportoEsatto()});
  }
  totale->second += *importo;
}

} // namespace

std::string SommaDelGiorno::Testo(std::string_view nomeRiga, std::string_view nomeRighe) const {
  if (quante == 0) {
    return {};
  }
  std::string testo = std::to_string(quante) + " ";
  testo.append(quante == 1 ? nomeRiga : nomeRighe);
  for (const auto& [divisa, totale] : totali) {
    if (!incompleta) {
      testo.append(", ").append(totale.Testo()).append(divisa.empty() ? "" : " ").append(divisa);
    }
  }
  return testo;
}

CalendarioScadenze::CalendarioScadenze(const RigheGriglia& righe, const DescrizioneGriglia& descrizione) {
  GiorniLetti presenti;
  GiorniLetti nuove;
  for (std::size_t riga = 0; riga < righe.Quante(); ++riga) {
    const std::string_view testoPresente = righe.Testo(riga, descrizione.colonnaScadenza);
    const std::string_view testoNuovo =
        descrizione.data.colonna < 0 ? std::string_view() : righe.Testo(riga, descrizione.data.colonna);
    const auto presente = presenti.Leggi(testoPresente);
    // A blank is what a refused date leaves behind: it changes nothing.
    const auto nuova = MaggioreDiSpazio(testoNuovo) ? nuove.Leggi(testoNuovo) : presente;
    if (!presente && !nuova) {
      continue;
    }
    const auto importo = ImportoEsatto::Leggi(righe.Testo(riga, descrizione.colonnaImporto));
    const std::string_view divisa =
        descrizione.colonnaDivisa < 0 ? std::string_view() : righe.Testo(riga, descrizione.colonnaDivisa);
    if (presente) {
      Conta(presenti_[NumeroDelGiorno(*presente)], divisa, importo);
    }
    if (nuova) {
      Conta(variate_[NumeroDelGiorno(*nuova)], divisa, importo);
    }
  }
}

const SommaDelGiorno& CalendarioScadenze::Trova(const Somme& somme, Giorno giorno) {
  static const SommaDelGiorno Niente;
  const auto somma = somme.find(NumeroDelGiorno(giorno));
  return somma == somme.end() ? Niente : somma->second;
}

} // namespace lumoscad
