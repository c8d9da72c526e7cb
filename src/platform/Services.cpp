#include "platform/Services.hpp"

#include <utility>

namespace lumoscad {

Services& activeServices() {
  static Services single;
  return single;
}

ReplacedServices::ReplacedServices(Services replacement)
    : previous_(std::exchange(activeServices(), std::move(replacement))) {}

ReplacedServices::~ReplacedServices() {
  activeServices() = std::move(previous_);
}

} // namespace lumoscad
