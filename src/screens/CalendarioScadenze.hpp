#pragma once

#include "common/Giorni.hpp"
#include "screens/ImportoEsatto.hpp"

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace lumoscad {

struct DescrizioneGriglia;
class RigheGriglia;

/// What falls due on one day: how many rows, and their exact total by currency.
struct SommaDelGiorno {
  std::size_t quante = 0;
  std::vector<std::pair<std::string, ImportoEsatto>> totali; ///< by currency, in the order in which they came
  bool incompleta = false;                                   ///< the amount of a row could not be read

  /// "3 rate, 12.400,00", of several currencies each with its name: "3 righe, 900,00 EUR, 300,00 USD"; the number of
  /// rows alone where a total would not be true. Empty where nothing falls due.
  [[nodiscard]] std::string Testo(std::string_view nomeRiga, std::string_view nomeRighe) const;
  friend bool operator==(const SommaDelGiorno&, const SommaDelGiorno&) = default;
};

/// What falls due on each day in the rows of a list, whether they are in sight or not: by their present dates, and by
/// the dates that they have with the changes. Rows without a date fall due on no day.
class CalendarioScadenze {
 public:
  CalendarioScadenze() = default;
  CalendarioScadenze(const RigheGriglia& righe, const DescrizioneGriglia& descrizione);

  [[nodiscard]] const SommaDelGiorno& Presente(Giorno giorno) const { return Trova(presenti_, giorno); }
  [[nodiscard]] const SommaDelGiorno& Variata(Giorno giorno) const { return Trova(variate_, giorno); }

 private:
  using Somme = std::unordered_map<int, SommaDelGiorno>; ///< by the day's number since 1970

  [[nodiscard]] static const SommaDelGiorno& Trova(const Somme& somme, Giorno giorno);

  Somme presenti_;
  Somme variate_;
};

} // namespace lumoscad
