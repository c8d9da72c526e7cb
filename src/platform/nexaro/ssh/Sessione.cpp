#include "platform/nexaro/ssh/Sessione.hpp"

#include "platform/nexaro/ErroriLink.hpp"
#include "platform/nexaro/File.hpp"
#include "platform/nexaro/Testi.hpp"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <new>

namespace lumoscad::nexaro {

namespace {

/// How long one step of a login may take when the limit is over: the host reckons meanwhile.
constexpr std::chrono::milliseconds SguardoAllAccesso{1000};

/// Bytes. While nothing is asked a host sends a few small messages at most: signs of life, new keys.
constexpr std::uint64_t MassimoNonChiesto = std::uint64_t{256} * 1024;

void Imposta(ssh_session sessione, ssh_options_e opzione, const void* valore, const char* nome) {
  if (ssh_options_set(sessione, opzione, valore) != SSH_OK) {
    throw ErroreLink("Preparazione del collegamento SSH: valore non ammesso per " + std::string(nome) + ".");
  }
}

/// An address that could be taken for something else (a user, an option) is refused.
void VerificaIndirizzo(const std::string& host) {
  bool valido = !host.empty() && host.front() != '-' && host.size() <= 255;
  for (const char carattere : host) {
    const auto codice = static_cast<unsigned char>(carattere);
    valido = valido && codice > 0x20 && codice < 0x7F &&
             std::string_view("@/\\\"'`,|*?!#$").find(carattere) == std::string_view::npos;
  }
  if (!valido) {
    throw ErroreLink("Indirizzo dell'host (-H) non ammesso: " + Cita(host) + ".");
  }
}

} // namespace

Sessione::Sessione(const ImpostazioniSsh& impostazioni, const std::string& host)
    : host_(host), attesa_(impostazioni.attesa), termineApertura_(NuovoTermine()), sessione_(ssh_new()) {
  if (!sessione_) {
    throw std::bad_alloc();
  }
  VerificaIndirizzo(host);
  const bool no = false;
  // The settings of the link are the environment's alone: the files of the ssh program stay out of it.
  Imposta(Grezza(), SSH_OPTIONS_PROCESS_CONFIG, &no, "la configurazione");
  Imposta(Grezza(), SSH_OPTIONS_GLOBAL_KNOWNHOSTS, "/dev/null", "gli host noti");
  // The library would wait for a pipe. What is wrong with the file is said when the key is looked up in it.
  const auto noti = ErroreOrdinario(impostazioni.noti) == 0 ? impostazioni.noti : "/dev/null";
  Imposta(Grezza(), SSH_OPTIONS_KNOWNHOSTS, noti.c_str(), "NEXARO_SSH_NOTI");
  Imposta(Grezza(), SSH_OPTIONS_HOST, host.c_str(), "l'indirizzo dell'host (-H)");
  Imposta(Grezza(), SSH_OPTIONS_PORT, &impostazioni.porta, "NEXARO_SSH_PORTA");
  Imposta(Grezza(), SSH_OPTIONS_USER, impostazioni.utente.c_str(), "NEXARO_SSH_UTENTE");
  Apri(ApriPresa(host, impostazioni.porta, termineApertura_, attesa_, &notaRicerca_),
       "Collegamento all'host " + host + " (porta " + std::to_string(impostazioni.porta) + ")");
}

void Sessione::Apri(base::Descriptor presa, const std::string& operazione) {
  // The library keeps sixteen bits of the number that it is given.
  static constexpr socket_t NumeroMassimo = 0xFFFF;
  const socket_t numero = presa.Number();
  if (numero > NumeroMassimo) {
    throw ErroreSistema(operazione, EMFILE);
  }
  Imposta(Grezza(), SSH_OPTIONS_FD, &numero, "la connessione");
  LimitaAttesa();
  static_cast<void>(presa.Release());
  const int esito = ssh_connect(Grezza());
  const auto dettaglio = TestoAltrui(ssh_get_error(Grezza()));
  // A descriptor that was handed over is closed by the library only where it takes it for its own. It does so here,
  // though it calls the number an error.
  const socket_t nessuno = SSH_INVALID_SOCKET;
  static_cast<void>(ssh_options_set(Grezza(), SSH_OPTIONS_FD, &nessuno));
  erroreVecchio_ = ssh_get_error(Grezza());
  if (esito == SSH_OK) {
    return;
  }
  if (TempoRestante(termineApertura_).count() == 0) {
    throw ErroreLink(operazione + ": il servizio SSH non ha risposto entro " + Secondi(attesa_) +
                     ". Verificare che l'host sia in funzione." + notaRicerca_);
  }
  throw ErroreLink(operazione + ": l'apertura del collegamento SSH non è riuscita (" + dettaglio +
                   "). Verificare che a questa porta risponda un servizio SSH.");
}

Sessione::~Sessione() {
  if (evento_) {
    ssh_event_remove_session(evento_.get(), Grezza());
  }
}

void Sessione::LimitaAttesa() const {
  const auto resta = TempoRestante(termineApertura_);
  const auto limite = resta.count() > 0 ? resta : SguardoAllAccesso;
  const long secondi = static_cast<long>(limite.count() / 1000);
  const long micro = static_cast<long>(limite.count() % 1000) * 1000;
  // Two zeros would mean the library's own default.
  Imposta(Grezza(), SSH_OPTIONS_TIMEOUT, &secondi, "NEXARO_ATTESA");
  Imposta(Grezza(), SSH_OPTIONS_TIMEOUT_USEC, &micro, "NEXARO_ATTESA");
}

Termine Sessione::TermineSaluto() const {
  static constexpr std::chrono::milliseconds AttesaSaluto{10000};
  return Orologio::now() + std::min(attesa_, AttesaSaluto);
}

void Sessione::Attiva() {
  ssh_set_blocking(Grezza(), 0);
  ssh_set_counters(Grezza(), &contati_, nullptr);
  evento_.reset(ssh_event_new());
  if (!evento_ || ssh_event_add_session(evento_.get(), Grezza()) != SSH_OK) {
    throw std::bad_alloc();
  }
}

bool Sessione::Viva() const {
  return !guasta_ && ssh_is_connected(Grezza()) != 0;
}

void Sessione::Serve(Termine termine) {
  if (!ServeEntro(termine)) {
    throw ConnessionePersa("nessuna risposta entro " + Secondi(attesa_));
  }
}

bool Sessione::ServeEntro(Termine termine) {
  if (!Viva()) {
    throw ConnessionePersa(MotivoPerdita());
  }
  const auto sguardo = sguardi_.Prossimo(termine);
  if (!sguardo) {
    return false;
  }
  const int esito = ssh_event_dopoll(evento_.get(), *sguardo);
  guasta_ = esito == SSH_ERROR;
  return esito != SSH_AGAIN || TempoRestante(termine).count() > 0;
}

void Sessione::ServeSubito() {
  const auto prima = contati_.in_bytes;
  while (Viva()) {
    const int esito = ssh_event_dopoll(evento_.get(), 0);
    guasta_ = guasta_ || esito == SSH_ERROR;
    if (esito != SSH_OK) {
      return;
    }
    if (contati_.in_bytes - prima > MassimoNonChiesto) {
      guasta_ = true;
      throw ConnessionePersa("l'host invia senza sosta dati che nessuno ha chiesto");
    }
  }
}

std::string Sessione::MotivoPerdita() const {
  const std::string dettaglio = ssh_get_error(Grezza());
  return "la connessione è caduta" +
         (dettaglio.empty() || dettaglio == erroreVecchio_ ? std::string() : " (" + TestoAltrui(dettaglio) + ")");
}

void Sessione::Rifiutata() const {
  if (!Viva()) {
    throw ConnessionePersa(MotivoPerdita());
  }
  throw RichiestaRifiutata();
}

} // namespace lumoscad::nexaro
