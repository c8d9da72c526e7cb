#pragma once

#include <string_view>

namespace lumoscad {

/// The turn of the one call that may run in this process. The module-level values, the screens and the link to the host
/// are not made for two calls at once, be it a second thread or a timer that fires in a window of ours. Nobody waits:
/// who comes second is refused, whatever the first one does, and nothing is locked meanwhile. A child that is forked
/// during a call has the turn free, unless the thread that forked it was inside the call: that goes on in the child.
class Turno {
 public:
  enum class Chi {
    Comando,       ///< may show windows, and so belongs to the windows' thread
    Amministratore ///< uses the link to the host and shows nothing: any thread
  };
  enum class Esito {
    Preso,
    Annidato,   ///< this thread's own call is running: this one came out of it
    Occupato,   ///< another thread's call is running
    AltroThread ///< the windows belong to another thread, call or no call
  };

  /// Takes the turn where it is free. The windows' thread is that of the application that owns the windows
  /// (`Servizi::threadFinestre`); while there is none, that of the first command of all, for as long as the process
  /// lives; in a forked child, where it does not live on, that of the first command there.
  explicit Turno(Chi chi) noexcept;
  Turno(const Turno&) = delete;
  Turno& operator=(const Turno&) = delete;
  ~Turno();

  [[nodiscard]] Esito Come() const noexcept { return esito_; }
  /// Why the turn was refused, for the person; empty where it was taken.
  [[nodiscard]] std::string_view Motivo() const noexcept;

 private:
  Esito esito_;
};

} // namespace lumoscad
