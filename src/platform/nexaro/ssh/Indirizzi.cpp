#include "platform/nexaro/ssh/Indirizzi.hpp"

#include "platform/nexaro/ErroriLink.hpp"
#include "platform/nexaro/Testi.hpp"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <list>
#include <mutex>
#include <new>
#include <unistd.h>
#include <utility>

namespace lumoscad::nexaro {

namespace {

constexpr const char* RimedioNomi =
    "Verificare la rete di questa macchina, o indicare l'host con il suo indirizzo numerico (-H).";

/// One look-up and all that its thread reads and writes.
struct Ricerca {
  Ricerca(std::string nome, unsigned numero) : host(std::move(nome)), porta(std::to_string(numero)) {
    criteri.ai_socktype = SOCK_STREAM;
    criteri.ai_flags = AI_NUMERICSERV;
    richiesta.ar_name = host.c_str();
    richiesta.ar_service = porta.c_str();
    richiesta.ar_request = &criteri;
  }
  Ricerca(const Ricerca&) = delete;
  Ricerca& operator=(const Ricerca&) = delete;
  ~Ricerca() { static_cast<void>(Cedi()); }

  [[nodiscard]] Indirizzi Cedi() { return {std::exchange(richiesta.ar_result, nullptr), &::freeaddrinfo}; }

  std::string host;
  std::string porta;
  addrinfo criteri{};
  gaicb richiesta{};
};

/// The look-ups that were given up while their threads were at work: what those still write to must outlive them. They
/// are never freed but by a later look-up that finds them ended, for at the program's end, or when the component is
/// unloaded, a thread may be at work yet.
class Abbandonate {
 public:
  static Abbandonate& Tutte() {
    static auto* const tutte = new Abbandonate; // NOLINT(cppcoreguidelines-owning-memory): see above
    return *tutte;
  }
  void Accogli(std::unique_ptr<Ricerca> ricerca) {
    const std::lock_guard guardia(chiave_);
    ricerche_.push_back(std::move(ricerca));
  }
  void TogliFinite() {
    const std::lock_guard guardia(chiave_);
    ricerche_.remove_if([](const auto& ricerca) { return ::gai_error(&ricerca->richiesta) != EAI_INPROGRESS; });
  }

 private:
  std::mutex chiave_;
  std::list<std::unique_ptr<Ricerca>> ricerche_;
};

/// Whether the threads that look names up can be relied on. They stay behind in the parent of a forked process, which
/// would go on counting on them.
bool FiliPropri() {
  static std::atomic<pid_t> proprietario{0};
  pid_t nessuno = 0;
  const pid_t questo = ::getpid();
  return proprietario.compare_exchange_strong(nessuno, questo) || nessuno == questo;
}

/// Waits for the end of a look-up under way, or until `termine`.
void Attendi(const gaicb& richiesta, Termine termine) {
  const gaicb* const lista[] = {&richiesta};
  Sguardi sguardi;
  bool ultimo = false;
  while (!ultimo && ::gai_error(const_cast<gaicb*>(&richiesta)) == EAI_INPROGRESS) {
    const auto sguardo = sguardi.Prossimo(termine).value_or(0);
    ultimo = TempoRestante(termine).count() == 0;
    const timespec limite{sguardo / 1000, (sguardo % 1000) * 1'000'000L};
    ::gai_suspend(lista, 1, &limite);
  }
}

/// The outcome of the look-up: an EAI_... value, EAI_INPROGRESS where it was given up. Raises a run-time error where
/// the system could not begin it.
int CercaConLimite(const std::string& host, unsigned porta, Termine termine, const std::string& operazione,
                   Indirizzi& trovati) {
  auto& abbandonate = Abbandonate::Tutte();
  abbandonate.TogliFinite();
  auto ricerca = std::make_unique<Ricerca>(host, porta);
  gaicb* lista[] = {&ricerca->richiesta};
  sigevent nessuno{};
  nessuno.sigev_notify = SIGEV_NONE;
  if (const int esito = ::getaddrinfo_a(GAI_NOWAIT, lista, 1, &nessuno); esito != 0) {
    if (esito == EAI_MEMORY) {
      return esito;
    }
    // Only here the system lacks something of its own, a thread.
    throw ErroreSistema(operazione, EAGAIN);
  }
  Attendi(ricerca->richiesta, termine);
  if (::gai_error(&ricerca->richiesta) == EAI_INPROGRESS && ::gai_cancel(&ricerca->richiesta) == EAI_CANCELED) {
    return EAI_INPROGRESS;
  }
  const int esito = ::gai_error(&ricerca->richiesta);
  if (esito == EAI_INPROGRESS) {
    abbandonate.Accogli(std::move(ricerca));
    return esito;
  }
  trovati = ricerca->Cedi();
  return esito;
}

/// Asks nobody for what is written in numbers; a name goes to the name service.
int Cerca(const std::string& host, unsigned porta, Termine termine, const std::string& operazione, Indirizzi& trovati) {
  Ricerca ricerca(host, porta);
  ricerca.criteri.ai_flags |= AI_NUMERICHOST;
  int esito =
      ::getaddrinfo(ricerca.host.c_str(), ricerca.porta.c_str(), &ricerca.criteri, &ricerca.richiesta.ar_result);
  if (esito == EAI_NONAME && FiliPropri()) {
    return CercaConLimite(host, porta, termine, operazione, trovati);
  }
  if (esito == EAI_NONAME) {
    ricerca.criteri.ai_flags = AI_NUMERICSERV;
    esito = ::getaddrinfo(ricerca.host.c_str(), ricerca.porta.c_str(), &ricerca.criteri, &ricerca.richiesta.ar_result);
  }
  trovati = ricerca.Cedi();
  return esito;
}

} // namespace

ErroreRuntime ErroreRicerca(int esito, std::chrono::milliseconds attesa, const std::string& operazione) {
  switch (esito) {
  case EAI_INPROGRESS:
    return ErroreLink(operazione + ": il servizio dei nomi di questa macchina non ha risposto entro " +
                      Secondi(attesa) + ". " + RimedioNomi);
  case EAI_AGAIN:
  case EAI_FAIL:
    return ErroreLink(operazione + ": il servizio dei nomi non risponde. Verificare la rete di questa macchina.");
  case EAI_SYSTEM:
    return ErroreLink(operazione + ": il servizio dei nomi di questa macchina ha dato un errore. " + RimedioNomi);
  default:
    return ErroreLink(operazione + ": l'indirizzo non esiste. Verificare l'indirizzo dell'host (-H).");
  }
}

Indirizzi TrovaIndirizzi(const std::string& host, unsigned porta, Termine termine, std::chrono::milliseconds attesa,
                         const std::string& operazione) {
  Indirizzi trovati(nullptr, &::freeaddrinfo);
  const int esito = Cerca(host, porta, termine, operazione, trovati);
  if (esito == EAI_MEMORY) {
    throw std::bad_alloc();
  }
  if (esito != 0) {
    throw ErroreRicerca(esito, attesa, operazione);
  }
  return trovati;
}

} // namespace lumoscad::nexaro
