#include "platform/Servizi.hpp"

#include <utility>

namespace lumoscad {

Servizi& servizi() {
  static Servizi unici;
  return unici;
}

ServiziSostituiti::ServiziSostituiti(Servizi nuovi) : precedenti_(std::exchange(servizi(), std::move(nuovi))) {}

ServiziSostituiti::~ServiziSostituiti() {
  servizi() = std::move(precedenti_);
}

} // namespace lumoscad
