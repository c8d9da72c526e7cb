#pragma once

#include <functional>
#include <string>

namespace lumoscad::nexaro {

/// Locks on texts among all processes of this machine, whoever their users are. The kernel keeps them: a lock goes with
/// the process that holds it, however that ends, and a child forked meanwhile does not have it. They exclude other
/// processes only: in one process a lock that is held is given again.
class ProcessLock {
 public:
  ProcessLock() = default;
  ProcessLock(const ProcessLock&) = delete;
  ProcessLock& operator=(const ProcessLock&) = delete;
  virtual ~ProcessLock() = default;

  /// Takes the lock on `text`, the workstation's identifier, and waits for another process to let go of it; those that
  /// wait get it in turn, none twice while another waits. Calls `idle` again and again meanwhile. True when it
  /// waited. Raises a run-time error that names the process in the way when the wait has lasted too long, or when there
  /// can be no lock; what `idle` raises leaves this call. Nothing is held then.
  [[nodiscard]] virtual bool Wait(const std::string& text, const std::function<void()>& idle) = 0;
  /// Lets go of the lock that `Wait` took.
  virtual void LetGo() noexcept = 0;

  /// Takes the lock on `name` and keeps it until this process reserves another name, or ends. False when another
  /// process has it; what was reserved stays reserved then.
  [[nodiscard]] virtual bool Reserve(const std::string& name) = 0;
};

} // namespace lumoscad::nexaro
