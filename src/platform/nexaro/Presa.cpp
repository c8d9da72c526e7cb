#include "platform/nexaro/Presa.hpp"

#include "platform/nexaro/ErroriLink.hpp"
#include "platform/nexaro/Testi.hpp"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <memory>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>

namespace lumoscad::nexaro {

namespace {

using Indirizzi = std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)>;

Indirizzi Risolvi(const std::string& host, unsigned porta, const std::string& operazione) {
  addrinfo richiesta{};
  richiesta.ai_socktype = SOCK_STREAM;
  richiesta.ai_flags = AI_NUMERICSERV;
  addrinfo* trovati = nullptr;
  const int esito = ::getaddrinfo(host.c_str(), std::to_string(porta).c_str(), &richiesta, &trovati);
  if (esito == EAI_AGAIN) {
    throw ErroreLink(operazione + ": il servizio dei nomi non risponde. Verificare la rete di questa macchina.");
  }
  if (esito != 0) {
    throw ErroreLink(operazione + ": l'indirizzo non esiste. Verificare l'indirizzo dell'host (-H).");
  }
  return {trovati, &::freeaddrinfo};
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

int Prova(const addrinfo& indirizzo, Termine termine, Descrittore& presa) {
  presa = Descrittore(
      ::socket(indirizzo.ai_family, indirizzo.ai_socktype | SOCK_CLOEXEC | SOCK_NONBLOCK, indirizzo.ai_protocol));
  if (presa.Aperto() && presa.Numero() <= STDERR_FILENO) {
    // Keeps clear of the standard streams, which a calling program may have closed.
    presa = Descrittore(::fcntl(presa.Numero(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
  }
  if (!presa.Aperto()) {
    return errno;
  }
  const int acceso = 1;
  ::setsockopt(presa.Numero(), IPPROTO_TCP, TCP_NODELAY, &acceso, sizeof acceso);
  ::setsockopt(presa.Numero(), SOL_SOCKET, SO_KEEPALIVE, &acceso, sizeof acceso);
  if (::connect(presa.Numero(), indirizzo.ai_addr, indirizzo.ai_addrlen) == 0) {
    return 0;
  }
  return errno == EINPROGRESS || errno == EINTR ? AttendiEsito(presa.Numero(), termine) : errno;
}

ErroreRuntime ErrorePresa(const std::string& operazione, int codice, std::chrono::milliseconds attesa) {
  switch (codice) {
  case ECONNREFUSED:
    return ErroreLink(operazione +
                      ": connessione rifiutata. Verificare che sull'host sia attivo il servizio SSH e che " +
                      "la porta (NEXARO_SSH_PORTA) sia giusta.");
  case ETIMEDOUT:
    return ErroreLink(operazione + ": nessuna risposta entro " + Secondi(attesa) +
                      ". Verificare che l'host sia acceso e raggiungibile.");
  case EHOSTUNREACH:
  case ENETUNREACH:
    return ErroreLink(operazione + ": host non raggiungibile. Verificare la rete e l'indirizzo dell'host (-H).");
  default:
    return ErroreSistema(operazione, codice);
  }
}

} // namespace

Descrittore ApriPresa(const std::string& host, unsigned porta, Termine termine, std::chrono::milliseconds attesa) {
  const auto operazione = "Collegamento all'host " + host + " (porta " + std::to_string(porta) + ")";
  const auto indirizzi = Risolvi(host, porta, operazione);
  long restano = 0;
  for (const auto* indirizzo = indirizzi.get(); indirizzo != nullptr; indirizzo = indirizzo->ai_next) {
    ++restano;
  }
  int codice = 0;
  for (const auto* indirizzo = indirizzi.get(); indirizzo != nullptr; indirizzo = indirizzo->ai_next, --restano) {
    // An address that stays silent leaves their share of the wait to the others.
    Descrittore presa;
    codice = Prova(*indirizzo, Orologio::now() + TempoRestante(termine) / restano, presa);
    if (codice == 0) {
      return presa;
    }
  }
  throw ErrorePresa(operazione, codice, attesa);
}

} // namespace lumoscad::nexaro
