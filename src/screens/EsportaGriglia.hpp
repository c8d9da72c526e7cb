#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad {

class Griglia;

/// A text that no spreadsheet takes for a formula: one that begins like a formula, after blanks too, gets an apostrophe
/// in front, and NULs, which would cut it, are left out.
[[nodiscard]] std::string SenzaFormula(std::string_view testo);

/// The rows of a list as they are taken away: their visible columns, as they show. Amounts and dates are never altered.
class EsportaGriglia {
 public:
  struct Colonna {
    int indice = 0;
    std::string titolo;
    int larghezza = 0; ///< twips
    bool importo = false;
    bool spunta = false;
  };

  explicit EsportaGriglia(const Griglia& griglia);

  [[nodiscard]] const std::vector<Colonna>& Colonne() const noexcept { return colonne_; }
  /// The selected rows in sight, where several are selected, or else all rows in sight; from top to bottom.
  [[nodiscard]] std::vector<std::size_t> Righe() const;
  /// A cell as it shows; a tick is "sì" or nothing.
  [[nodiscard]] std::string Cella(std::size_t riga, const Colonna& colonna) const;

  /// Cells between semicolons (RFC 4180 but for that), lines ending with CR LF, UTF-8 with its mark.
  [[nodiscard]] std::string Csv(const std::vector<std::size_t>& righe) const;
  /// Cells between tabulators; tabulators and line ends in a cell are blanks.
  [[nodiscard]] std::string Tabulato(const std::vector<std::size_t>& righe) const;
  [[nodiscard]] std::string Html(const std::vector<std::size_t>& righe) const;

 private:
  [[nodiscard]] std::string Protetta(std::size_t riga, const Colonna& colonna) const;

  const Griglia& griglia_;
  std::vector<Colonna> colonne_;
};

} // namespace lumoscad
