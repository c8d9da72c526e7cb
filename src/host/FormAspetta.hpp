#pragma once

#include "common/MsgAnnulla.hpp"

#include <string>
#include <string_view>
#include <vector>

namespace lumoscad {

/// The wait window: it is on screen while a blocking call runs, which its one-shot timer starts once it is painted.
class FormAspetta {
 public:
  /// Runs `A_NomeProg` with `parametri` behind the modal window, applies the reply actions with `parametriDB2`, and
  /// returns their result, or "error" when the reply's `Errore` is not empty. What fails is raised, after the window
  /// is gone; so is a window that ended without asking the host.
  [[nodiscard]] std::string Visualizza(std::string_view A_HostIP, std::string_view A_NomeProg,
                                       const std::vector<std::string>& parametri,
                                       const std::vector<std::string>& parametriDB2, MsgAnnulla& A_MSGAnnulla);

  // What the window was given last.
  std::string HostIP; ///< kept and not used: the program runs on the running command's own host
  std::string NomeProg;
  std::vector<std::string> Parametri;
  std::vector<std::string> ParametriProcedureDB2;
  lumoscad::MsgAnnulla* MsgAnnulla = nullptr;

 private:
  void Timer1_Timer();

  std::string risultato_;
  bool interpellato_ = false; ///< the timer has begun its work
};

} // namespace lumoscad
