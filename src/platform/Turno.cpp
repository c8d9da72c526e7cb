#include "platform/Turno.hpp"

#include "platform/Servizi.hpp"

#include <atomic>
#include <cstdint>
#include <initializer_list>
#include <pthread.h>

namespace lumoscad {
namespace {

// Threads are told apart by a number of ours: the system gives the identifier of one that has ended to the next.
using Numero = std::uint64_t;
constexpr Numero Nessuno = 0;

std::atomic<Numero> numerati{Nessuno};
std::atomic<Numero> inCorso{Nessuno}; ///< whose call runs
std::atomic<Numero> primo{Nessuno};   ///< who gave the first command

Numero QuestoThread() noexcept {
  static thread_local Numero numero = Nessuno;
  if (numero == Nessuno) {
    numero = ++numerati;
  }
  return numero;
}

/// Of a forked process' threads only the one that forked lives on in the child: what the others had begun is nobody's
/// there, and would refuse every call for as long as the child lives.
void NelFiglio() noexcept {
  const Numero io = QuestoThread();
  for (std::atomic<Numero>* const chi : {&inCorso, &primo}) {
    if (chi->load() != io) {
      chi->store(Nessuno);
    }
  }
}

[[maybe_unused]] const int avvisato = pthread_atfork(nullptr, nullptr, NelFiglio);

bool HaLeFinestre(Numero chi) noexcept {
  const auto& chiedi = servizi().threadFinestre;
  const ThreadFinestre dove = chiedi ? chiedi() : ThreadFinestre::Nessuno;
  if (dove == ThreadFinestre::Altro) {
    return false;
  }
  Numero ilPrimo = Nessuno;
  const bool isPrimo = primo.compare_exchange_strong(ilPrimo, chi) || ilPrimo == chi;
  return isPrimo || dove == ThreadFinestre::Questo;
}

Turno::Esito Prendi(Turno::Chi chi) noexcept {
  const Numero io = QuestoThread();
  if (chi == Turno::Chi::Comando && !HaLeFinestre(io)) {
    return Turno::Esito::AltroThread;
  }
  Numero chiLoHa = Nessuno;
  if (inCorso.compare_exchange_strong(chiLoHa, io)) {
    return Turno::Esito::Preso;
  }
  return chiLoHa == io ? Turno::Esito::Annidato : Turno::Esito::Occupato;
}

} // namespace

Turno::Turno(Chi chi) noexcept : esito_(Prendi(chi)) {}

std::string_view Turno::Motivo() const noexcept {
  switch (esito_) {
  case Esito::Annidato:
    return "Comando rifiutato: ne è già in corso un altro, che va prima portato a termine.";
  case Esito::Occupato:
    return "Comando rifiutato: ne è già in corso un altro, dato da un altro thread del programma.";
  case Esito::AltroThread:
    return "Comando rifiutato: va dato dal thread delle finestre del programma, e questo è un altro.";
  default:
    return {};
  }
}

Turno::~Turno() {
  if (esito_ == Esito::Preso) {
    inCorso.store(Nessuno);
  }
}

} // namespace lumoscad
