#pragma once

#include "platform/Desktop.hpp"

#include <string>

namespace lumoscad {

namespace nexaro {
class ProcessLock;
}

/// The names of one request's file, taken once at its start.
struct NomiRichiesta {
  std::string locale; ///< local path
  std::string remoto; ///< "/tmp/", workstation, "yyyymmddhhmmss": the name of the upload
  /// The name under which the complete file awaits the program.
  [[nodiscard]] std::string Completo() const { return remoto + ".dos"; }
};

/// The time from the naming of a request to the end of its clean-up, in which no other process of this machine sends
/// one for the same workstation: their names tell requests apart by the second alone.
class TurnoRichiesta {
 public:
  /// Names a request made now by this workstation. Where another process has a request under way, waits for its end,
  /// and names this one after a later second; also where another process that still runs has used this second. Requests
  /// of one process within a second have the same name. A wait shows the hourglass, lets pending events run, and leaves
  /// `puntatore` behind. Raises a run-time error when the other's end does not come within `NEXARO_ATTESA`, or no free
  /// second within two more.
  explicit TurnoRichiesta(Pointer puntatore);
  TurnoRichiesta(const TurnoRichiesta&) = delete;
  TurnoRichiesta& operator=(const TurnoRichiesta&) = delete;
  ~TurnoRichiesta();

  [[nodiscard]] const NomiRichiesta& Nomi() const noexcept { return nomi_; }
  /// The names of a request made now that nobody will send.
  [[nodiscard]] static NomiRichiesta NomiSenzaTurno();

 private:
  TurnoRichiesta() = default;

  nexaro::ProcessLock* esclusione_ = nullptr; ///< where the turn is held
  NomiRichiesta nomi_;
};

} // namespace lumoscad
