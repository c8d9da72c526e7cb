#include "platform/Turn.hpp"

#include "platform/Services.hpp"

#include <atomic>
#include <cstdint>
#include <initializer_list>
#include <pthread.h>

namespace lumoscad {
namespace {

// Threads are told apart by a number of ours: the system gives the identifier of one that has ended to the next.
using Number = std::uint64_t;
constexpr Number None = 0;

std::atomic<Number> numbered{None};
std::atomic<Number> running{None}; ///< whose call runs
std::atomic<Number> first{None};   ///< who gave the first command

Number ThisThread() noexcept {
  static thread_local Number number = None;
  if (number == None) {
    number = ++numbered;
  }
  return number;
}

/// Of a forked process' threads only the one that forked lives on in the child: what the others had begun is nobody's
/// there, and would refuse every call for as long as the child lives.
void InChild() noexcept {
  const Number me = ThisThread();
  for (std::atomic<Number>* const who : {&running, &first}) {
    if (who->load() != me) {
      who->store(None);
    }
  }
}

[[maybe_unused]] const int Told = pthread_atfork(nullptr, nullptr, InChild);

bool OwnsTheWindows(Number who) noexcept {
  const auto& request = ActiveServices().windowThread;
  const WindowThread where = request ? request() : WindowThread::None;
  if (where == WindowThread::Other) {
    return false;
  }
  Number theFirst = None;
  const bool cameFirst = first.compare_exchange_strong(theFirst, who) || theFirst == who;
  return cameFirst || where == WindowThread::ThisOne;
}

Turn::Outcome Take(Turn::Who who) noexcept {
  const Number me = ThisThread();
  if (who == Turn::Who::Command && !OwnsTheWindows(me)) {
    return Turn::Outcome::OtherThread;
  }
  Number holder = None;
  if (running.compare_exchange_strong(holder, me)) {
    return Turn::Outcome::Taken;
  }
  return holder == me ? Turn::Outcome::Nested : Turn::Outcome::Busy;
}

} // namespace

Turn::Turn(Who who) noexcept : outcome_(Take(who)) {}

std::string_view Turn::Reason() const noexcept {
  switch (outcome_) {
  case Outcome::Nested:
    return "Comando rifiutato: ne è già in corso un altro, che va prima portato a termine.";
  case Outcome::Busy:
    return "Comando rifiutato: ne è già in corso un altro, dato da un altro thread del programma.";
  case Outcome::OtherThread:
    return "Comando rifiutato: va dato dal thread delle finestre del programma, e questo è un altro.";
  default:
    return {};
  }
}

Turn::~Turn() {
  if (outcome_ == Outcome::Taken) {
    running.store(None);
  }
}

} // namespace lumoscad
