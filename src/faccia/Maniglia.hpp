#pragma once

#include "faccia/Esito.hpp"
#include "platform/RuntimeError.hpp"
#include "platform/Turn.hpp"

#include <initializer_list>
#include <new>
#include <string>
#include <string_view>

/// What a caller has set, and its last error.
struct lumoscad_maniglia {
  /// Keeps how a call went, and returns it.
  int Segna(int numero, std::string_view testo = {}) noexcept;
  [[nodiscard]] int Errore() const noexcept { return errore_; }
  [[nodiscard]] const char* Testo() const noexcept { return senzaMemoria_ ? "Memoria insufficiente" : testo_.c_str(); }

  unsigned long finestraMadre = 0;
  bool controllaTesti = true;

 private:
  int errore_ = LUMOSCAD_RIUSCITO;
  bool senzaMemoria_ = false; ///< there was none for the text itself
  std::string testo_;
};

namespace lumoscad {

/// A text that a caller hands over.
struct Argomento {
  const char* testo;
  bool facoltativo = false; ///< null stands for the empty text
};

/// What a caller's text says; a null one says nothing.
[[nodiscard]] inline std::string_view Letto(const char* testo) noexcept {
  return testo == nullptr ? std::string_view() : std::string_view(testo);
}

/// The text of an error, where there is one: what a call that went well tells is none.
[[nodiscard]] inline std::string_view SeNo(bool riuscito, std::string_view testo) noexcept {
  return riuscito ? std::string_view() : testo;
}

/// Whether the call may begin; otherwise why not is in the handle.
[[nodiscard]] bool Accettati(lumoscad_maniglia& maniglia, std::initializer_list<Argomento> argomenti) noexcept;

/// The number of the failure in flight, with its text in the handle.
int SegnaGuasto(lumoscad_maniglia& maniglia) noexcept;

/// Carries a call of the C interface out: `azione` is handed the handle and a fresh result, and gives the number that
/// the call returns. A call whose arguments are refused does not begin, and none raises anything.
template <class Azione>
int Chiama(lumoscad_maniglia* maniglia, std::initializer_list<Argomento> argomenti, lumoscad_esito** dove,
           Azione azione) noexcept {
  if (dove != nullptr) {
    *dove = nullptr;
  }
  if (maniglia == nullptr) {
    return LUMOSCAD_ARGOMENTO;
  }
  if (!Accettati(*maniglia, argomenti)) {
    return maniglia->Errore();
  }
  try {
    auto esito = std::make_unique<lumoscad_esito>();
    maniglia->Segna(LUMOSCAD_RIUSCITO);
    const int numero = azione(*maniglia, *esito);
    if (dove != nullptr && numero != LUMOSCAD_RIFIUTATO) {
      *dove = esito.release();
    }
    return numero;
  } catch (...) {
    return SegnaGuasto(*maniglia);
  }
}

/// The same for a call that needs the link to the host, or what commands leave in the local directory: in its turn.
template <class Azione>
int ChiamaAlSuoTurno(lumoscad_maniglia* maniglia, std::initializer_list<Argomento> argomenti, lumoscad_esito** dove,
                     Azione azione) noexcept {
  return Chiama(maniglia, argomenti, dove, [&azione](lumoscad_maniglia& sua, lumoscad_esito& esito) {
    const Turn turno(Turn::Who::Administrator);
    return turno.How() == Turn::Outcome::Taken ? azione(sua, esito) : sua.Segna(LUMOSCAD_RIFIUTATO, turno.Reason());
  });
}

} // namespace lumoscad
