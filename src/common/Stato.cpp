#include "common/Stato.hpp"

#include <utility>

namespace lumoscad {

Stato& stato() {
  static Stato unico;
  return unico;
}

StatoSostituito::StatoSostituito() : precedente_(std::exchange(stato(), Stato{})) {}

StatoSostituito::~StatoSostituito() {
  stato() = std::move(precedente_);
}

} // namespace lumoscad
