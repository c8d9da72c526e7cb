// How what gestures wrote into the rows of a grid is taken back, and done again.

#include "common/Testo.hpp"
#include "screens/Griglia.hpp"

#include <new>

namespace lumoscad {
void Griglia::RimettiInAlto(const CampiInAlto& alto) {
  stato_.dueDateText = alto.data;
  stato_.bankIndex = alto.banca;
  aspetto = alto.schermata;
}

bool Griglia::LasciaEditor() {
  const bool aperto = stato_.data.visible || stato_.bank.visible;
  if (aperto) {
    AbbandonaEditor();
  }
  return aperto;
}

void Griglia::Annulla() {
  const PassoGriglia* const passo = Modificabile() ? passi_.DaAnnullare() : nullptr;
  if (LasciaEditor()) {
    return;
  }
  if (passo == nullptr) {
    Avvisa("Niente da annullare");
    return;
  }
  InsiemeRighe mosse;
  // NOLINTNEXTLINE(modernize-loop-convert): backwards, for which the standard library has no range that clang 14 takes
  for (auto scritte = passo->scritte.rbegin(); scritte != passo->scritte.rend(); ++scritte) {
    for (auto cella = scritte->celle.rbegin(); cella != scritte->celle.rend(); ++cella) {
      ScriviNumero(scritte->campo, cella->riga, cella->prima);
      mosse.Aggiungi(cella->riga);
    }
  }
  RimettiInAlto(passo->altoPrima);
  Avvisa("Annullato: " + NomePasso(*passo) + NonInVista(mosse));
  passi_.Annullato();
  Cambiata();
  if (ripreso) {
    ripreso();
  }
}

void Griglia::Rifai() {
  const PassoGriglia* const passo = Modificabile() ? passi_.DaRifare() : nullptr;
  if (LasciaEditor()) {
    return;
  }
  if (passo == nullptr) {
    Avvisa("Niente da ripetere");
    return;
  }
  InsiemeRighe mosse;
  for (const PassoGriglia::Scritte& scritte : passo->scritte) {
    for (const CellaScritta& cella : scritte.celle) {
      ScriviNumero(scritte.campo, cella.riga, cella.dopo);
      mosse.Aggiungi(cella.riga);
    }
  }
  RimettiInAlto(passo->altoDopo);
  Avvisa("Ripetuto: " + NomePasso(*passo) + NonInVista(mosse));
  passi_.Rifatto();
  Cambiata();
  if (ripreso) {
    ripreso();
  }
}

std::string Griglia::NomePasso(const PassoGriglia& passo) const {
  return passo.conRighe ? passo.nome + " di " + QuanteRighe(passo.righe) : passo.nome;
}

std::string Griglia::QuanteRighe(std::size_t quante) const {
  return Migliaia(quante) + " " + (quante == 1 ? descrizione_.nomeRiga : descrizione_.nomeRighe);
}

std::string Griglia::NonInVista(const InsiemeRighe& insieme) const {
  std::size_t nascoste = 0;
  if (vista_.Ristretta()) {
    insieme.Ognuna([&](std::size_t riga) { nascoste += vista_.Contiene(riga) ? 0U : 1U; });
  }
  return nascoste == 0 ? std::string() : "; " + Migliaia(nascoste) + " non in vista";
}

/// What reached rows that are not in sight is said, also of a gesture that says nothing else.
void Griglia::AvvisaNonInVista(std::string_view nome) noexcept {
  try {
    const std::string nascoste = NonInVista(passi_.Mosse());
    if (stato_.notice.empty() && !nascoste.empty()) {
      stato_.notice = QuanteRighe(passi_.Mosse().Quante()) + ": " + std::string(nome) + nascoste;
    }
  } catch (const std::bad_alloc&) {
    stato_.notice.clear();
  }
}

} // namespace lumoscad
