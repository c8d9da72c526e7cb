#include "platform/Errore.hpp"

#include <new>

namespace lumoscad {

ErroreRuntime ErroreCorrente() {
  try {
    throw;
  } catch (const ErroreRuntime& e) {
    return e;
  } catch (const std::bad_alloc&) {
    return {errori::MemoriaInsufficiente, "Memoria insufficiente"};
  } catch (const std::exception& e) {
    return {errori::ErroreInterno, std::string("Errore interno: ") + e.what()};
  } catch (...) {
    return {errori::ErroreInterno, "Errore interno"};
  }
}

std::string ConFrase(std::string testo, std::string_view frase) {
  return frase.empty() ? testo : std::move(testo.append("\r\n").append(frase));
}

} // namespace lumoscad
