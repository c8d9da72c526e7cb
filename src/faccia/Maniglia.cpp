#include "faccia/Maniglia.hpp"

#include "platform/base/Utf8.hpp"

#include <algorithm>

namespace lumoscad {
namespace {

bool Utf8Intero(std::string_view testo) noexcept {
  while (!testo.empty()) {
    const std::size_t lungo = base::FirstCharacter(testo).length;
    if (lungo == 0) {
      return false;
    }
    testo.remove_prefix(lungo);
  }
  return true;
}

} // namespace

bool Accettati(lumoscad_maniglia& maniglia, std::initializer_list<Argomento> argomenti) noexcept {
  if (std::any_of(argomenti.begin(), argomenti.end(),
                  [](const Argomento& a) { return a.testo == nullptr && !a.facoltativo; })) {
    maniglia.Segna(LUMOSCAD_ARGOMENTO, "Il programma chiamante non ha dato un argomento che serve.");
    return false;
  }
  if (maniglia.controllaTesti &&
      !std::all_of(argomenti.begin(), argomenti.end(), [](const Argomento& a) { return Utf8Intero(Letto(a.testo)); })) {
    maniglia.Segna(LUMOSCAD_NON_UTF8, "Il programma chiamante ha dato un testo che non è UTF-8.");
    return false;
  }
  return true;
}

int SegnaGuasto(lumoscad_maniglia& maniglia) noexcept {
  try {
    throw;
  } catch (const std::bad_alloc&) {
    return maniglia.Segna(LUMOSCAD_SENZA_MEMORIA, "Memoria insufficiente");
  } catch (...) {
    try {
      const RuntimeError errore = CurrentError();
      return maniglia.Segna(LUMOSCAD_ERRORE, WithSentence(errore.Text(), errore.Note()));
    } catch (...) {
      return maniglia.Segna(LUMOSCAD_SENZA_MEMORIA, "Memoria insufficiente");
    }
  }
}

} // namespace lumoscad

int lumoscad_maniglia::Segna(int numero, std::string_view testo) noexcept {
  errore_ = numero;
  try {
    testo_ = testo;
    senzaMemoria_ = false;
  } catch (...) {
    senzaMemoria_ = true;
  }
  return numero;
}

extern "C" const char* lumoscad_versione(void) {
  return LUMOSCAD_VERSIONE;
}

extern "C" unsigned long lumoscad_versione_numero(void) {
  return LUMOSCAD_VERSIONE_NUMERO;
}

extern "C" int lumoscad_apri(lumoscad_maniglia** maniglia) {
  if (maniglia == nullptr) {
    return LUMOSCAD_ARGOMENTO;
  }
  *maniglia = std::unique_ptr<lumoscad_maniglia>(new (std::nothrow) lumoscad_maniglia).release();
  return *maniglia == nullptr ? LUMOSCAD_SENZA_MEMORIA : LUMOSCAD_RIUSCITO;
}

extern "C" void lumoscad_chiudi(lumoscad_maniglia* maniglia) {
  const std::unique_ptr<lumoscad_maniglia> propria(maniglia);
}

extern "C" int lumoscad_errore(const lumoscad_maniglia* maniglia) {
  return maniglia == nullptr ? LUMOSCAD_ARGOMENTO : maniglia->Errore();
}

extern "C" const char* lumoscad_errore_testo(const lumoscad_maniglia* maniglia) {
  return maniglia == nullptr ? "" : maniglia->Testo();
}

extern "C" int lumoscad_finestra_madre(lumoscad_maniglia* maniglia, unsigned long finestra) {
  if (maniglia == nullptr) {
    return LUMOSCAD_ARGOMENTO;
  }
  maniglia->finestraMadre = finestra;
  return maniglia->Segna(LUMOSCAD_RIUSCITO);
}

extern "C" int lumoscad_controlla_testi(lumoscad_maniglia* maniglia, int controlla) {
  if (maniglia == nullptr) {
    return LUMOSCAD_ARGOMENTO;
  }
  maniglia->controllaTesti = controlla != 0;
  return maniglia->Segna(LUMOSCAD_RIUSCITO);
}
