#pragma once

#include "common/MsgAnnulla.hpp"
#include "platform/Services.hpp"

#include <cstddef>
#include <string>

namespace lumoscad {

/// The reading of a list's rows, as the person sees it: pending window events run after each, and Esc gives it up.
class Caricamento {
 public:
  Caricamento() = default;
  Caricamento(const Caricamento&) = delete;
  Caricamento& operator=(const Caricamento&) = delete;
  ~Caricamento() {
    if (desktop_ != nullptr) {
      desktop_->ReadingEnded();
    }
  }

  /// To be called after each row; false when the person gave the list up.
  [[nodiscard]] bool Avanza() {
    desktop_ = &ActiveServices().desktop();
    return desktop_->RowRead(++righe_);
  }

 private:
  Desktop* desktop_ = nullptr; ///< once it was told of a row: a list without rows needs no desktop to be read
  std::size_t righe_ = 0;
};

/// What stands at the head of a list of which something could not be read; nothing when all was.
inline std::string AvvisoElenco(const MsgAnnulla& msg) {
  return msg.Errore.empty() ? std::string() : "Elenco incompleto: il motivo è mostrato alla chiusura";
}

} // namespace lumoscad
