#pragma once

#include <functional>
#include <string>

namespace lumoscad::nexaro {

/// Locks on texts among all processes of this machine, whoever their users are. The kernel keeps them: a lock goes with
/// the process that holds it, however that ends, and a child forked meanwhile does not have it. They exclude other
/// processes only: in one process a lock that is held is given again.
class Esclusione {
 public:
  Esclusione() = default;
  Esclusione(const Esclusione&) = delete;
  Esclusione& operator=(const Esclusione&) = delete;
  virtual ~Esclusione() = default;

  /// Takes the lock on `testo`, the workstation's identifier, and waits for another process to let go of it; those that
  /// wait get it in turn, none twice while another waits. Calls `respiro` again and again meanwhile. True when it
  /// waited. Raises a run-time error that names the process in the way when the wait has lasted too long, or when there
  /// can be no lock; what `respiro` raises leaves this call. Nothing is held then.
  [[nodiscard]] virtual bool Attendi(const std::string& testo, const std::function<void()>& respiro) = 0;
  /// Lets go of the lock that `Attendi` took.
  virtual void Lascia() noexcept = 0;

  /// Takes the lock on `nome` and keeps it until this process reserves another name, or ends. False when another
  /// process has it; what was reserved stays reserved then.
  [[nodiscard]] virtual bool Riserva(const std::string& nome) = 0;
};

} // namespace lumoscad::nexaro
