#include "screens/SelezioneGriglia.hpp"

#include <algorithm>

namespace lumoscad {
namespace {

/// One selected row in that many: fewer are looked for one by one, and sorted.
constexpr std::size_t PocheUna = 32;

} // namespace

std::vector<std::size_t> SelezioneGriglia::InVista() const {
  std::vector<std::size_t> righe;
  for (const auto& [primo, ultimo] : Posti()) {
    for (std::size_t posto = primo; posto <= ultimo; ++posto) {
      righe.push_back(vista_.Riga(posto));
    }
  }
  return righe;
}

std::vector<std::size_t> SelezioneGriglia::InVistaPerNumero() const {
  std::vector<std::size_t> righe;
  righe.reserve(righe_.Quante());
  righe_.Ognuna([&](std::size_t riga) {
    if (vista_.Contiene(riga)) {
      righe.push_back(riga);
    }
  });
  return righe;
}

std::vector<ListGestures::Places> SelezioneGriglia::Posti() const {
  std::vector<ListGestures::Places> tratti;
  const auto aggiungi = [&tratti](std::size_t posto) {
    if (!tratti.empty() && tratti.back().second + 1 == posto) {
      tratti.back().second = posto;
    } else {
      tratti.emplace_back(posto, posto);
    }
  };
  if (righe_.Quante() > vista_.Quante() / PocheUna) {
    for (std::size_t posto = 0; posto < vista_.Quante(); ++posto) {
      if (righe_.Contiene(vista_.Riga(posto))) {
        aggiungi(posto);
      }
    }
    return tratti;
  }
  std::vector<std::size_t> posti;
  righe_.Ognuna([&](std::size_t riga) {
    if (const auto posto = vista_.Posto(riga)) {
      posti.push_back(*posto);
    }
  });
  std::sort(posti.begin(), posti.end());
  std::for_each(posti.begin(), posti.end(), aggiungi);
  return tratti;
}

void SelezioneGriglia::Svuota() {
  righe_.Svuota();
  ancora_.reset();
  ++volta_;
}

void SelezioneGriglia::Solo(std::size_t riga) {
  if (righe_.Quante() == 1 && righe_.Contiene(riga)) {
    ancora_ = riga;
    return;
  }
  righe_.Svuota();
  righe_.Aggiungi(riga);
  ancora_ = riga;
  ++volta_;
}

void SelezioneGriglia::Cambia(std::size_t riga) {
  if (righe_.Contiene(riga)) {
    righe_.Togli(riga);
  } else {
    righe_.Aggiungi(riga);
  }
  ancora_ = riga;
  ++volta_;
}

void SelezioneGriglia::Estendi(std::size_t riga, bool aggiungi) {
  const auto fino = vista_.Posto(riga);
  if (!fino) {
    return;
  }
  if (!ancora_ || !vista_.Posto(*ancora_)) {
    ancora_ = riga;
  }
  if (!aggiungi) {
    righe_.Svuota();
  }
  const std::size_t da = *vista_.Posto(*ancora_);
  for (std::size_t posto = std::min(da, *fino); posto <= std::max(da, *fino); ++posto) {
    righe_.Aggiungi(vista_.Riga(posto));
  }
  ++volta_;
}

} // namespace lumoscad
