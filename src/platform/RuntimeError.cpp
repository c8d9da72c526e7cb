#include "platform/RuntimeError.hpp"

#include <new>

namespace lumoscad {

RuntimeError CurrentError() {
  try {
    throw;
  } catch (const RuntimeError& e) {
    return e;
  } catch (const std::bad_alloc&) {
    return {errors::OutOfMemory, "Memoria insufficiente"};
  } catch (const std::exception& e) {
    return {errors::InternalError, std::string("Errore interno: ") + e.what()};
  } catch (...) {
    return {errors::InternalError, "Errore interno"};
  }
}

std::string WithSentence(std::string text, std::string_view sentence) {
  return sentence.empty() ? text : std::move(text.append("\r\n").append(sentence));
}

} // namespace lumoscad
