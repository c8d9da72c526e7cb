#pragma once

#include "platform/base/Descriptor.hpp"
#include "platform/nexaro/Termine.hpp"

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

namespace lumoscad::nexaro {

/// A connection to a key agent, for someone who would wait for its answers for ever: when the limit is over, the
/// connection is shut down, and whoever waits on it sees its end.
class Agente {
 public:
  /// Connects to the agent that listens at `presa`, at most until `termine`. `Errore` says whether it succeeded.
  Agente(const std::string& presa, Termine termine);
  Agente(const Agente&) = delete;
  Agente& operator=(const Agente&) = delete;
  ~Agente();

  /// 0 where the agent took the connection; ETIMEDOUT where it did not in time; EAGAIN where there is no thread that
  /// would end the wait; otherwise the `errno` of the failure.
  [[nodiscard]] int Errore() const { return errore_; }

  /// A descriptor of the connection, which is the caller's from now on; none, and `Errore`, where the system has none
  /// to give. The limit holds as long as this object lives.
  [[nodiscard]] base::Descriptor Presa();

  /// Whether the limit was over before this object's end.
  [[nodiscard]] bool Scaduto();

 private:
  void Collega(const std::string& presa, Termine termine);
  void Sorveglia(Termine termine);

  int errore_ = 0;
  base::Descriptor presa_;
  std::mutex chiave_; ///< guards the next two
  bool finito_ = false;
  bool scaduto_ = false;
  std::condition_variable cambiato_;
  std::thread filo_;
};

} // namespace lumoscad::nexaro
