#pragma once

#include "platform/nexaro/ssh/Sessione.hpp"

#include <cstddef>
#include <libssh/callbacks.h>
#include <optional>
#include <string>
#include <string_view>

namespace lumoscad::nexaro {

/// One channel of a connection, and what has arrived on it. Every wait raises `ConnessionePersa` when the connection is
/// gone or the time is over.
class Canale {
 public:
  /// Opens a channel, which is a sign of life too, at most until `termine`. `massimoUscita` and `massimoErrori` limit
  /// what is kept of the two streams. Raises `ConnessionePersa` or `RichiestaRifiutata`.
  Canale(Sessione& sessione, Termine termine, std::size_t massimoUscita, std::size_t massimoErrori);
  Canale(const Canale&) = delete;
  Canale& operator=(const Canale&) = delete;
  ~Canale();

  /// Asks the host to start a subsystem or a command line. Raises `ConnessionePersa` or `RichiestaRifiutata`.
  void AvviaSottosistema(const char* nome);
  void AvviaComando(const std::string& riga);

  /// Ends the program's standard input.
  void ChiudiIngresso();

  /// Hands all of `dati` to the connection, at most until `limite`; where there is none, the wait begins anew each time
  /// that something got through.
  void Scrivi(std::string_view dati, std::optional<Termine> limite = std::nullopt);

  /// Asks the host to kill the program, as far as the host does such a thing.
  void Uccidi();

  /// Waits until something happens, at most until `termine`.
  void Serve(Termine termine) { sessione_.Serve(termine); }
  /// The same; false when the time is over.
  [[nodiscard]] bool ServeEntro(Termine termine) { return sessione_.ServeEntro(termine); }

  [[nodiscard]] const Sessione& SuaSessione() const { return sessione_; }
  [[nodiscard]] bool Viva() const { return sessione_.Viva(); }

  /// What has arrived and was not taken away.
  std::string uscita;
  std::string errori;
  bool uscitaEccessiva = false; ///< more than the limit arrived; the rest was dropped
  bool finita = false;          ///< the host sends no more data
  bool chiuso = false;          ///< the host has closed the channel
  std::optional<int> stato;     ///< the program's exit status
  std::string segnale;          ///< the name of the signal that killed the program, without "SIG"

 private:
  static int AlDato(ssh_session sessione, ssh_channel canale, void* dati, uint32_t lunghezza, int isErrori,
                    void* proprio);
  static void AllaFine(ssh_session sessione, ssh_channel canale, void* proprio);
  static void AllaChiusura(ssh_session sessione, ssh_channel canale, void* proprio);
  static void AlloStato(ssh_session sessione, ssh_channel canale, int stato, void* proprio);
  static void AlSegnale(ssh_session sessione, ssh_channel canale, const char* segnale, int core, const char* messaggio,
                        const char* lingua, void* proprio);
  void Accogli(std::string_view dati, bool isErrori) noexcept;

  struct Libera {
    void operator()(ssh_channel canale) const { ssh_channel_free(canale); }
  };

  Sessione& sessione_;
  std::size_t massimoUscita_;
  std::size_t massimoErrori_;
  ssh_channel_callbacks_struct richiami_{};
  std::unique_ptr<ssh_channel_struct, Libera> canale_;
};

} // namespace lumoscad::nexaro
