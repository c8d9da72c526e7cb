#pragma once

#include "platform/nexaro/ssh/ImpostazioniSsh.hpp"
#include "platform/nexaro/ssh/Presa.hpp"

#include <exception>
#include <libssh/libssh.h>
#include <memory>
#include <string>
#include <utility>

namespace lumoscad::nexaro {

/// The connection is gone, or the host no longer answers on it. Stays inside the link, which knows what was under way.
class ConnessionePersa final : public std::exception {
 public:
  /// `motivo` is Italian and fits behind a colon.
  explicit ConnessionePersa(std::string motivo) : motivo_(std::move(motivo)) {}
  [[nodiscard]] const std::string& Motivo() const noexcept { return motivo_; }
  [[nodiscard]] const char* what() const noexcept override { return motivo_.c_str(); }

 private:
  std::string motivo_;
};

/// The host refused a request on a connection that stays open. Stays inside the link.
class RichiestaRifiutata final : public std::exception {
 public:
  [[nodiscard]] const char* what() const noexcept override { return "richiesta rifiutata"; }
};

/// Takes leave of the host, as far as it is there, and releases what libssh allocated.
struct LiberaSessione {
  void operator()(ssh_session sessione) const {
    ssh_disconnect(sessione);
    ssh_free(sessione);
  }
};
struct LiberaEvento {
  void operator()(ssh_event evento) const { ssh_event_free(evento); }
};

/// One SSH connection. It is made with the host's key unchecked and nobody logged in; `Attiva` ends that stage. From
/// then on nothing blocks but `Serve`, which never waits beyond its limit.
class Sessione {
 public:
  /// Connects within the wait of `impostazioni`. Raises a run-time error.
  Sessione(const ImpostazioniSsh& impostazioni, const std::string& host);
  Sessione(const Sessione&) = delete;
  Sessione& operator=(const Sessione&) = delete;
  ~Sessione();

  [[nodiscard]] ssh_session Grezza() const { return sessione_.get(); }
  [[nodiscard]] const std::string& Host() const { return host_; }
  [[nodiscard]] std::chrono::milliseconds Attesa() const { return attesa_; }
  /// When the opening of the connection, the login included, is given up.
  [[nodiscard]] Termine TermineApertura() const { return termineApertura_; }
  [[nodiscard]] Termine NuovoTermine() const { return Orologio::now() + attesa_; }
  /// When a connection that was silent before, and is asked for a sign of life, is given up to be opened anew.
  [[nodiscard]] Termine TermineSaluto() const;

  /// While connecting: lets libssh wait no longer than what is left of the wait for the connection; where nothing is
  /// left, as long as one look takes, for the answer may be there.
  void LimitaAttesa() const;

  /// What follows a message about a wait for the connection that was too short; see `ApriPresa`.
  [[nodiscard]] const std::string& NotaRicerca() const { return notaRicerca_; }

  /// The host's key was checked and the user logged in.
  void Attiva();

  [[nodiscard]] bool Viva() const;

  /// Handles what arrives, and waits for it until `termine`. Raises `ConnessionePersa` when the connection is gone or
  /// the time is over; what had arrived before was handled.
  void Serve(Termine termine);
  /// The same; false when the time is over, and what had arrived by then was handled.
  [[nodiscard]] bool ServeEntro(Termine termine);

  /// Handles what has arrived without waiting. Raises `ConnessionePersa` when it does not come to an end.
  void ServeSubito();

  /// Repeats a call of libssh until it has its answer, at most until `termine`. Raises `ConnessionePersa` or
  /// `RichiestaRifiutata`.
  template <typename Chiamata> void Ripeti(Termine termine, Chiamata chiamata) {
    for (;;) {
      const int esito = chiamata();
      if (esito == SSH_OK) {
        return;
      }
      if (esito != SSH_AGAIN) {
        Rifiutata();
      }
      Serve(termine);
    }
  }

  /// What became of the connection, Italian, to stand behind a colon.
  [[nodiscard]] std::string MotivoPerdita() const;

 private:
  void Apri(base::Descriptor presa, const std::string& operazione);
  [[noreturn]] void Rifiutata() const;

  std::string host_;
  std::chrono::milliseconds attesa_;
  Termine termineApertura_;
  std::string notaRicerca_;
  ssh_counter_struct contati_{}; ///< what has passed since the login; the session counts in it to its end
  std::unique_ptr<ssh_session_struct, LiberaSessione> sessione_;
  std::unique_ptr<ssh_event_struct, LiberaEvento> evento_;
  std::string erroreVecchio_; ///< the library's error text, which it never clears, from before the connection was used
  Sguardi sguardi_;
  bool guasta_ = false;
};

} // namespace lumoscad::nexaro
