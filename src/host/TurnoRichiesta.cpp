#include "host/TurnoRichiesta.hpp"

#include "common/Testo.hpp"
#include "platform/Errore.hpp"
#include "platform/Esclusione.hpp"
#include "platform/Servizi.hpp"

#include <chrono>
#include <thread>

namespace lumoscad {
namespace {

/// Longer than a second lasts on any clock that runs.
constexpr std::chrono::seconds AttesaSecondo{2};
constexpr std::chrono::milliseconds Intervallo{5};

std::string NomeBase(const std::string& postazione) {
  const DataOra ora = servizi().adesso();
  return postazione + ConZeri(ora.anno, 4) + ConZeri(ora.mese, 2) + ConZeri(ora.giorno, 2) + ConZeri(ora.ora, 2) +
         ConZeri(ora.minuto, 2) + ConZeri(ora.secondo, 2);
}

/// What the person sees of a wait.
class Pazienza {
 public:
  explicit Pazienza(Puntatore puntatore) : puntatore_(puntatore) {}
  Pazienza(const Pazienza&) = delete;
  Pazienza& operator=(const Pazienza&) = delete;
  ~Pazienza() {
    try {
      if (attesa_) {
        servizi().desktop().ImpostaPuntatore(puntatore_);
      }
    } catch (...) { // NOLINT(bugprone-empty-catch): a pointer is no reason to fail
    }
  }

  void Respira() {
    if (!attesa_) {
      attesa_ = true;
      servizi().desktop().ImpostaPuntatore(Puntatore::Clessidra);
    }
    servizi().desktop().EventiInAttesa();
  }

 private:
  Puntatore puntatore_;
  bool attesa_ = false;
};

/// The first name that no other process has; `usato` is another's already.
std::string NomeLibero(nexaro::Esclusione& esclusione, const std::string& postazione, const std::string& usato,
                       Pazienza& pazienza) {
  const auto termine = std::chrono::steady_clock::now() + AttesaSecondo;
  for (;;) {
    std::string nome = NomeBase(postazione);
    if (nome != usato && esclusione.Riserva(nome)) {
      return nome;
    }
    if (std::chrono::steady_clock::now() >= termine) {
      throw ErroreRuntime(errori::AccessoAlFile,
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
TurnoRichiesta::TurnoRichiesta(Puntatore puntatore) : TurnoRichiesta() {
  const nexaro::Ambiente& ambiente = servizi().ambiente();
  const std::string postazione(SenzaSpaziAiLati(ambiente.CodicePostazione));
  std::string nome;
  if (servizi().esclusione) {
    auto& esclusione = servizi().esclusione();
    Pazienza pazienza(puntatore);
    const bool atteso = esclusione.Attendi(postazione, [&pazienza] { pazienza.Respira(); });
    esclusione_ = &esclusione;
    // Whom this one waited for may have used the second, and ended.
    nome = NomeLibero(esclusione, postazione, atteso ? NomeBase(postazione) : std::string(), pazienza);
  } else {
    nome = NomeBase(postazione);
  }
  nomi_ = {ambiente.CartellaLocale + "/" + nome, "/tmp/" + nome};
}

NomiRichiesta TurnoRichiesta::NomiSenzaTurno() {
  const nexaro::Ambiente& ambiente = servizi().ambiente();
  const std::string nome = NomeBase(std::string(SenzaSpaziAiLati(ambiente.CodicePostazione)));
  return {ambiente.CartellaLocale + "/" + nome, "/tmp/" + nome};
}

TurnoRichiesta::~TurnoRichiesta() {
  if (esclusione_ != nullptr) {
    esclusione_->Lascia();
  }
}

} // namespace lumoscad
