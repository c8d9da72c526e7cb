#pragma once

#include "common/Utilities.hpp"
#include "platform/RuntimeError.hpp"

#include <string>
#include <string_view>

namespace lumoscad {

/// Lets a row's date pass that is one, or missing (empty). Raises error 13 for any other text, which names the account,
/// the column and the value: a database may hold what is no date.
inline void RichiediData(std::string_view conto, std::string_view colonna, std::string_view valore) {
  if (valore.empty() || Utilities::DataDellaBaseDati(valore)) {
    return;
  }
  std::string testo = "Data non valida nella base dati: conto ";
  testo.append(conto).append(", colonna ").append(colonna).append(", valore «").append(valore).append("».");
  throw RuntimeError(errors::TypeMismatch, testo);
}

} // namespace lumoscad
