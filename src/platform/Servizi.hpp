#pragma once

#include "platform/Desktop.hpp"
#include "platform/Environment.hpp"
#include "platform/HostLink.hpp"
#include "platform/Orologio.hpp"

#include <functional>
#include <string_view>

namespace lumoscad {

namespace nexaro {
class Esclusione;
}

/// The platform services. The composition root fills them once; a test puts its own in place with
/// `ServiziSostituiti` and gets the old ones back at the end of the scope.
struct Servizi {
  std::function<Desktop&()> desktop;                 ///< created on first use
  std::function<nexaro::HostLink&()> hostLink;       ///< created on first use, kept
  std::function<const nexaro::Ambiente&()> ambiente; ///< read on first use, kept
  std::function<DataOra()> adesso;                   ///< the current local date and time
  std::function<void(std::string_view)>
      istruzioneInviata;                               ///< told every statement text before it is sent; may be empty
  std::function<ThreadFinestre()> threadFinestre = {}; ///< asked from any thread; none: as if without an application
  /// the locks that requests of one workstation share on this machine, created on first use, kept; may be empty
  std::function<nexaro::Esclusione&()> esclusione = {};
};

/// The one set of services of the process.
[[nodiscard]] Servizi& servizi();

/// Puts `nuovi` in place for the life of the object.
class ServiziSostituiti {
 public:
  explicit ServiziSostituiti(Servizi nuovi);
  ServiziSostituiti(const ServiziSostituiti&) = delete;
  ServiziSostituiti& operator=(const ServiziSostituiti&) = delete;
  ~ServiziSostituiti();

 private:
  Servizi precedenti_;
};

} // namespace lumoscad
