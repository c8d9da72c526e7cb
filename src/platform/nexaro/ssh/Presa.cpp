#include "platform/nexaro/ssh/Presa.hpp"

#include "platform/nexaro/ErroriLink.hpp"
#include "platform/nexaro/Testi.hpp"
#include "platform/nexaro/ssh/Indirizzi.hpp"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>

namespace lumoscad::nexaro {

namespace {

/// A name service that has taken this share of the wait, or this long, is named where the rest was not enough.
constexpr int Quota = 4;
constexpr std::chrono::milliseconds RicercaLunga{5000};

std::string NotaRicerca(std::chrono::milliseconds durata, std::chrono::milliseconds attesa) {
  if (durata < std::min(attesa / Quota, RicercaLunga)) {
    return {};
  }
  return " Di questo tempo " + Secondi(durata) +
         " sono andati nella ricerca dell'indirizzo: verificare anche il servizio dei nomi di questa macchina.";
}

/// Waits for the outcome of a connection under way: 0, or the `errno` of its failure.
int AttendiEsito(int numero, Termine termine) {
  for (;;) {
    pollfd pronto{numero, POLLOUT, 0};
    const auto resta = TempoRestante(termine).count();
    const int esito = ::poll(&pronto, 1, static_cast<int>(std::min<long>(resta, 60000)));
    if (esito > 0) {
      int errore = 0;
      socklen_t lunghezza = sizeof errore;
      return ::getsockopt(numero, SOL_SOCKET, SO_ERROR, &errore, &lunghezza) == 0 ? errore : errno;
    }
    if (esito < 0 && errno != EINTR) {
      return errno;
    }
    if (TempoRestante(termine).count() == 0) {
      return ETIMEDOUT;
    }
  }
}

int Prova(const addrinfo& indirizzo, Termine termine, base::Descriptor& presa) {
  presa = base::Descriptor(
      ::socket(indirizzo.ai_family, indirizzo.ai_socktype | SOCK_CLOEXEC | SOCK_NONBLOCK, indirizzo.ai_protocol));
  if (presa.Opened() && presa.Number() <= STDERR_FILENO) {
    // Keeps clear of the standard streams, which a calling program may have closed.
    presa = base::Descriptor(::fcntl(presa.Number(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
  }
  if (!presa.Opened()) {
    return errno;
  }
  const int acceso = 1;
  ::setsockopt(presa.Number(), IPPROTO_TCP, TCP_NODELAY, &acceso, sizeof acceso);
  ::setsockopt(presa.Number(), SOL_SOCKET, SO_KEEPALIVE, &acceso, sizeof acceso);
  if (::connect(presa.Number(), indirizzo.ai_addr, indirizzo.ai_addrlen) == 0) {
    return 0;
  }
  return errno == EINPROGRESS || errno == EINTR ? AttendiEsito(presa.Number(), termine) : errno;
}

ErroreRuntime ErrorePresa(const std::string& operazione, int codice, std::chrono::milliseconds attesa,
                          const std::string& nota) {
  switch (codice) {
  case ECONNREFUSED:
    return ErroreLink(operazione +
                      ": connessione rifiutata. Verificare che sull'host sia attivo il servizio SSH e che " +
                      "la porta (NEXARO_SSH_PORTA) sia giusta.");
  case ETIMEDOUT:
    return ErroreLink(operazione + ": nessuna risposta entro " + Secondi(attesa) +
                      ". Verificare che l'host sia acceso e raggiungibile." + nota);
  case EHOSTUNREACH:
  case ENETUNREACH:
    return ErroreLink(operazione + ": host non raggiungibile. Verificare la rete e l'indirizzo dell'host (-H).");
  default:
    return ErroreSistema(operazione, codice);
  }
}

} // namespace

base::Descriptor ApriPresa(const std::string& host, unsigned porta, Termine termine, std::chrono::milliseconds attesa,
                           std::string* notaRicerca) {
  const auto operazione = "Collegamento all'host " + host + " (porta " + std::to_string(porta) + ")";
  const auto inizio = Orologio::now();
  const auto indirizzi = TrovaIndirizzi(host, porta, termine, attesa, operazione);
  const auto nota =
      NotaRicerca(std::chrono::duration_cast<std::chrono::milliseconds>(Orologio::now() - inizio), attesa);
  if (notaRicerca != nullptr) {
    *notaRicerca = nota;
  }
  long restano = 0;
  for (const auto* indirizzo = indirizzi.get(); indirizzo != nullptr; indirizzo = indirizzo->ai_next) {
    ++restano;
  }
  int codice = 0;
  for (const auto* indirizzo = indirizzi.get(); indirizzo != nullptr; indirizzo = indirizzo->ai_next, --restano) {
    // An address that stays silent leaves their share of the wait to the others.
    base::Descriptor presa;
    codice = Prova(*indirizzo, Orologio::now() + TempoRestante(termine) / restano, presa);
    if (codice == 0) {
      return presa;
    }
  }
  throw ErrorePresa(operazione, codice, attesa, nota);
}

} // namespace lumoscad::nexaro
