#include "platform/Services.hpp"

#include <utility>

namespace lumoscad {

Services& ActiveServices() {
  static Services single;
  return single;
}

ReplacedServices::ReplacedServices(Services replacement)
    : previous_(std::exchange(ActiveServices(), std::move(replacement))) {}

ReplacedServices::~ReplacedServices() {
  ActiveServices() = std::move(previous_);
}

} // namespace lumoscad
