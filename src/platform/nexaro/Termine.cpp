#include "platform/nexaro/Termine.hpp"

#include <algorithm>

namespace lumoscad::nexaro {

namespace {

constexpr long SguardoMassimo = 60000;

} // namespace

std::chrono::milliseconds TempoRestante(Termine termine) {
  return std::max(std::chrono::milliseconds(0),
                  std::chrono::ceil<std::chrono::milliseconds>(termine - Orologio::now()));
}

std::optional<int> Sguardi::Prossimo(Termine termine) {
  if (const auto resta = TempoRestante(termine).count(); resta > 0) {
    return static_cast<int>(std::min<long>(resta, SguardoMassimo));
  }
  if (termine != termine_) {
    termine_ = termine;
    fine_ = Orologio::now() + Proroga;
  }
  return Orologio::now() < fine_ ? std::optional(static_cast<int>(SguardoOltre.count())) : std::nullopt;
}

} // namespace lumoscad::nexaro
