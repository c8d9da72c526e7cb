#pragma once

#include <cstddef>
#include <string>

namespace lumoscad {

class Griglia;

/// What a person changed in a row, as a sentence with the old and the new values: "Rossi S.r.l., 2006 12, rata 1,
/// 100,00 €: scadenza dal 31/03/2026 al 20/01/2027; banca da Banca Uno a Banca Due". Empty for a row without change.
[[nodiscard]] std::string FraseVariazione(const Griglia& griglia, std::size_t riga);

} // namespace lumoscad
