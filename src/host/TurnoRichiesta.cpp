#include "host/TurnoRichiesta.hpp"

#include "common/Testo.hpp"
#include "platform/ProcessLock.hpp"
#include "platform/RuntimeError.hpp"
#include "platform/Services.hpp"

#include <chrono>
#include <thread>

namespace lumoscad {
namespace {

/// Longer than a second lasts on any clock that runs.
constexpr std::chrono::seconds AttesaSecondo{2};
constexpr std::chrono::milliseconds Intervallo{5};

std::string NomeBase(const std::string& postazione) {
  const DateTime ora = ActiveServices().localTime();
  return postazione + ConZeri(ora.year, 4) + ConZeri(ora.month, 2) + ConZeri(ora.day, 2) + ConZeri(ora.hour, 2) +
         ConZeri(ora.minute, 2) + ConZeri(ora.second, 2);
}

/// What the person sees of a wait.
class Pazienza {
 public:
  explicit Pazienza(Pointer puntatore) : puntatore_(puntatore) {}
  Pazienza(const Pazienza&) = delete;
  Pazienza& operator=(const Pazienza&) = delete;
  ~Pazienza() {
    try {
      if (attesa_) {
        ActiveServices().desktop().SetPointer(puntatore_);
      }
    } catch (...) { // NOLINT(bugprone-empty-catch): a pointer is no reason to fail
    }
  }

  void Respira() {
    if (!attesa_) {
      attesa_ = true;
      ActiveServices().desktop().SetPointer(Pointer::Hourglass);
    }
    ActiveServices().desktop().RunPendingEvents();
  }

 private:
  Pointer puntatore_;
  bool attesa_ = false;
};

/// The first name that no other process has; `usato` is another's already.
std::string NomeLibero(nexaro::ProcessLock& esclusione, const std::string& postazione, const std::string& usato,
                       Pazienza& pazienza) {
  const auto termine = std::chrono::steady_clock::now() + AttesaSecondo;
  for (;;) {
    std::string nome = NomeBase(postazione);
    if (nome != usato && esclusione.Reserve(nome)) {
      return nome;
    }
    if (std::chrono::steady_clock::now() >= termine) {
      throw RuntimeError(errors::FileAccess,
                         "Il nome «" + nome +
                             "» per la richiesta è di un altro programma con lo stesso codice di "
                             "postazione, e l'orologio della macchina non va avanti. La richiesta non è stata inviata "
                             "all'host.");
    }
    pazienza.Respira();
    std::this_thread::sleep_for(Intervallo);
  }
}

} // namespace

// Delegating: where the rest fails, the destructor lets go of what was taken.
TurnoRichiesta::TurnoRichiesta(Pointer puntatore) : TurnoRichiesta() {
  const nexaro::Environment& ambiente = ActiveServices().environment();
  const std::string postazione(SenzaSpaziAiLati(ambiente.CodicePostazione));
  std::string nome;
  if (ActiveServices().processLock) {
    auto& esclusione = ActiveServices().processLock();
    Pazienza pazienza(puntatore);
    const bool atteso = esclusione.Wait(postazione, [&pazienza] { pazienza.Respira(); });
    esclusione_ = &esclusione;
    // Whom this one waited for may have used the second, and ended.
    nome = NomeLibero(esclusione, postazione, atteso ? NomeBase(postazione) : std::string(), pazienza);
  } else {
    nome = NomeBase(postazione);
  }
  nomi_ = {ambiente.CartellaLocale + "/" + nome, "/tmp/" + nome};
}

NomiRichiesta TurnoRichiesta::NomiSenzaTurno() {
  const nexaro::Environment& ambiente = ActiveServices().environment();
  const std::string nome = NomeBase(std::string(SenzaSpaziAiLati(ambiente.CodicePostazione)));
  return {ambiente.CartellaLocale + "/" + nome, "/tmp/" + nome};
}

TurnoRichiesta::~TurnoRichiesta() {
  if (esclusione_ != nullptr) {
    esclusione_->LetGo();
  }
}

} // namespace lumoscad
