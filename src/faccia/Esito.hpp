#pragma once

#include "lumoscad/lumoscad.h"

#include <array>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// What a caller in C is given to look into.
struct lumoscad_esito {
  static constexpr std::size_t Campi = LUMOSCAD_CAMPO_DOMANDA + 1;

  std::array<std::string, Campi> campi; ///< by the number of the field; the first stays empty
  std::vector<lumoscad_esito> voci;

  /// Puts a text in.
  lumoscad_esito& Con(int campo, std::string testo) {
    campi.at(static_cast<std::size_t>(campo)) = std::move(testo);
    return *this;
  }
  /// Puts a yes or a no in.
  lumoscad_esito& Con(int campo, bool vero) { return Con(campo, std::string(vero ? "1" : "")); }
};

namespace lumoscad {

using EsitoProprio = std::unique_ptr<lumoscad_esito>;

} // namespace lumoscad
