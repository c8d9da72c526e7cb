#include "platform/nexaro/ssh/Canale.hpp"

#include <algorithm>
#include <new>

namespace lumoscad::nexaro {

namespace {

Canale& Proprio(void* proprio) {
  return *static_cast<Canale*>(proprio);
}

} // namespace

Canale::Canale(Sessione& sessione, Termine termine, std::size_t massimoUscita, std::size_t massimoErrori)
    : sessione_(sessione), massimoUscita_(massimoUscita), massimoErrori_(massimoErrori),
      canale_(ssh_channel_new(sessione.Grezza())) {
  richiami_.userdata = this;
  richiami_.channel_data_function = AlDato;
  richiami_.channel_eof_function = AllaFine;
  richiami_.channel_close_function = AllaChiusura;
  richiami_.channel_exit_status_function = AlloStato;
  richiami_.channel_exit_signal_function = AlSegnale;
  ssh_callbacks_init(&richiami_);
  if (!canale_ || ssh_set_channel_callbacks(canale_.get(), &richiami_) != SSH_OK) {
    throw std::bad_alloc();
  }
  sessione_.Ripeti(termine, [this] { return ssh_channel_open_session(canale_.get()); });
}

Canale::~Canale() {
  // The library keeps the channel until the host has closed it as well.
  ssh_remove_channel_callbacks(canale_.get(), &richiami_);
}

void Canale::AvviaSottosistema(const char* nome) {
  sessione_.Ripeti(sessione_.NuovoTermine(), [&] { return ssh_channel_request_subsystem(canale_.get(), nome); });
}

void Canale::AvviaComando(const std::string& riga) {
  sessione_.Ripeti(sessione_.NuovoTermine(), [&] { return ssh_channel_request_exec(canale_.get(), riga.c_str()); });
}

void Canale::ChiudiIngresso() {
  ssh_channel_send_eof(canale_.get());
}

void Canale::Scrivi(std::string_view dati, std::optional<Termine> limite) {
  auto termine = limite.value_or(sessione_.NuovoTermine());
  while (!dati.empty()) {
    const auto lunghezza = static_cast<uint32_t>(std::min<std::size_t>(dati.size(), std::size_t{1} << 20U));
    const int scritti = chiuso ? SSH_ERROR : ssh_channel_write(canale_.get(), dati.data(), lunghezza);
    if (scritti > 0) {
      dati.remove_prefix(static_cast<std::size_t>(scritti));
      termine = limite.value_or(sessione_.NuovoTermine());
      continue;
    }
    if (scritti != 0 && scritti != SSH_AGAIN) {
      throw ConnessionePersa(sessione_.Viva() ? "il servizio sull'host si è chiuso" : sessione_.MotivoPerdita());
    }
    sessione_.Serve(termine);
  }
}

void Canale::Uccidi() {
  static constexpr int AttesaInvio = 1000;
  if (sessione_.Viva() && !chiuso) {
    ssh_channel_request_send_signal(canale_.get(), "KILL");
    ssh_blocking_flush(sessione_.Grezza(), AttesaInvio);
  }
}

int Canale::AlDato(ssh_session /*sessione*/, ssh_channel /*canale*/, void* dati, uint32_t lunghezza, int isErrori,
                   void* proprio) {
  Proprio(proprio).Accogli({static_cast<const char*>(dati), lunghezza}, isErrori != 0);
  return static_cast<int>(lunghezza);
}

void Canale::AllaFine(ssh_session /*sessione*/, ssh_channel /*canale*/, void* proprio) {
  Proprio(proprio).finita = true;
}

void Canale::AllaChiusura(ssh_session /*sessione*/, ssh_channel /*canale*/, void* proprio) {
  Proprio(proprio).finita = true;
  Proprio(proprio).chiuso = true;
}

void Canale::AlloStato(ssh_session /*sessione*/, ssh_channel /*canale*/, int stato, void* proprio) {
  Proprio(proprio).stato = stato;
}

void Canale::AlSegnale(ssh_session /*sessione*/, ssh_channel /*canale*/, const char* segnale, int /*core*/,
                       const char* /*messaggio*/, const char* /*lingua*/, void* proprio) {
  Proprio(proprio).segnale = segnale != nullptr && *segnale != '\0' ? segnale : "sconosciuto";
}

/// The library's C code calls this: nothing may be thrown through it.
void Canale::Accogli(std::string_view dati, bool isErrori) noexcept {
  try {
    if (isErrori) {
      errori.append(dati.substr(0, massimoErrori_ - errori.size()));
      return;
    }
    const auto posto = massimoUscita_ - std::min(massimoUscita_, uscita.size());
    uscitaEccessiva = uscitaEccessiva || dati.size() > posto;
    uscita.append(dati.substr(0, posto));
  } catch (...) {
    uscitaEccessiva = true;
  }
}

} // namespace lumoscad::nexaro
