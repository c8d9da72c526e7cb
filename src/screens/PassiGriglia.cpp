#include "screens/PassiGriglia.hpp"

#include <algorithm>
#include <iterator>
#include <new>
#include <utility>

namespace lumoscad {

void PassiGriglia::Svuota() {
  *this = PassiGriglia();
}

void PassiGriglia::Comincia(std::string_view nome, bool conRighe, Unione unione, const CampiInAlto& alto) {
  if (dentro_ > 0) {
    ++dentro_;
    return;
  }
  const bool unibile = unione == Unione::ConPrecedente;
  PassoGriglia nuovo;
  nuovo.nome = nome;
  nuovo.conRighe = conRighe;
  nuovo.unibile = unibile;
  nuovo.altoPrima = alto;
  mosse_.Svuota();
  unito_ = unibile && fatti_ > 0 && fatti_ == passi_.size() && passi_.back().unibile && passi_.back().nome == nome;
  corrente_ = std::move(nuovo);
  ++dentro_;
}

void PassiGriglia::Annota(int campo, std::size_t riga, std::uint32_t prima, std::uint32_t dopo) {
  if (prima == dopo || dentro_ == 0) {
    return;
  }
  auto scritte = std::find_if(corrente_.scritte.begin(), corrente_.scritte.end(),
                              [campo](const PassoGriglia::Scritte& altre) { return altre.campo == campo; });
  if (scritte == corrente_.scritte.end()) {
    scritte = corrente_.scritte.insert(scritte, PassoGriglia::Scritte{campo, {}});
  }
  scritte->celle.push_back({static_cast<std::uint32_t>(riga), prima, dopo});
  mosse_.Aggiungi(riga);
}

void PassiGriglia::Chiudi(const CampiInAlto& alto) noexcept {
  if (--dentro_ > 0) {
    return;
  }
  PassoGriglia passo = std::exchange(corrente_, {});
  if (passo.scritte.empty() && passo.altoPrima == alto) {
    return;
  }
  try {
    passo.altoDopo = alto;
    passo.righe = mosse_.Quante();
    for (PassoGriglia::Scritte& scritte : passo.scritte) {
      scritte.celle.shrink_to_fit();
    }
    if (unito_) {
      PassoGriglia& precedente = passi_.back();
      std::move(passo.scritte.begin(), passo.scritte.end(), std::back_inserter(precedente.scritte));
      precedente.altoDopo = std::move(passo.altoDopo);
      return;
    }
    passi_.resize(fatti_);
    passi_.push_back(std::move(passo));
    fatti_ = passi_.size();
  } catch (const std::bad_alloc&) {
    // No step can be taken back over one that is not there.
    passi_.clear();
    fatti_ = 0;
  }
}

void PassiGriglia::Annullato() {
  passi_[--fatti_].unibile = false;
}

void PassiGriglia::Rifatto() {
  ++fatti_;
}

std::size_t PassiGriglia::Memoria() const {
  std::size_t byte = passi_.capacity() * sizeof(PassoGriglia);
  for (const PassoGriglia& passo : passi_) {
    byte += passo.scritte.capacity() * sizeof(PassoGriglia::Scritte);
    for (const PassoGriglia::Scritte& scritte : passo.scritte) {
      byte += scritte.celle.capacity() * sizeof(CellaScritta);
    }
  }
  return byte;
}

} // namespace lumoscad
