#include "screens/VistaGriglia.hpp"

#include <algorithm>
#include <utility>

namespace lumoscad {

std::optional<std::size_t> VistaGriglia::Posto(std::size_t riga) const {
  if (!ristretta_) {
    return righe_.PostoDellaRiga(riga);
  }
  if (!insieme_.Contiene(riga)) {
    return std::nullopt;
  }
  return Prima(riga);
}

std::size_t VistaGriglia::Prima(std::size_t riga) const {
  const auto trovata =
      std::lower_bound(inOrdine_.begin(), inOrdine_.end(), righe_.PostoDellaRiga(riga),
                       [this](std::uint32_t altra, std::size_t posto) { return righe_.PostoDellaRiga(altra) < posto; });
  return static_cast<std::size_t>(trovata - inOrdine_.begin());
}

std::optional<std::size_t> VistaGriglia::PostoDa(std::size_t riga) const {
  if (Quante() == 0) {
    return std::nullopt;
  }
  return ristretta_ ? std::min(Prima(riga), Quante() - 1) : righe_.PostoDellaRiga(riga);
}

void VistaGriglia::MostraTutte() {
  ristretta_ = false;
  insieme_ = {};
  inOrdine_ = {};
}

void VistaGriglia::Mostra(InsiemeRighe insieme) {
  insieme_ = std::move(insieme);
  ristretta_ = true;
  Riordina();
}

void VistaGriglia::Riordina() {
  if (!ristretta_) {
    return;
  }
  inOrdine_.clear();
  inOrdine_.reserve(insieme_.Quante());
  for (std::size_t posto = 0; posto < righe_.Quante(); ++posto) {
    const std::size_t riga = righe_.RigaAlPosto(posto);
    if (insieme_.Contiene(riga)) {
      inOrdine_.push_back(static_cast<std::uint32_t>(riga));
    }
  }
}

} // namespace lumoscad
