#pragma once

#include "support/WorkClock.hpp"

#include <QDialog>
#include <QObject>
#include <QTimer>

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace lumoscad::test {

/// One gesture on an open window; gestures of one kind share a name.
struct Passo {
  std::string nome;
  std::function<void(QDialog&)> azione;
};

/// Watches the event loop from inside: plays gestures on the modal window that comes up, one after another, and
/// keeps the longest work in which the loop did not turn for each kind of them, painting included.
class Battito final : public QObject {
 public:
  explicit Battito(std::vector<Passo> passi);

  /// Longest standstill in milliseconds of work, by the name of the gesture; "apertura" is the window's own first
  /// turns.
  [[nodiscard]] const std::map<std::string, double>& Fermi() const noexcept { return fermi_; }
  [[nodiscard]] bool Finito() const noexcept { return prossimo_ == passi_.size(); }
  /// Ends the account of the last gesture: to be called once the window has handed back.
  void Chiudi();

 private:
  void Batti();
  void Annota();

  std::vector<Passo> passi_;
  std::size_t prossimo_ = 0;
  int quieti_ = 0;
  std::string corrente_;
  std::map<std::string, double> fermi_;
  test::WorkClock orologio_;
  QTimer timer_;
};

} // namespace lumoscad::test
