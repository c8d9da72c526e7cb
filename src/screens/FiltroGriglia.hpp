#pragma once

#include "screens/ImportoEsatto.hpp"
#include "screens/RigheGriglia.hpp"

#include <compare>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace lumoscad {

/// What a person typed to find rows. Words, in any order, must each be found in some visible column, accents and case
/// ignored; a word of digits finds an amount by its digits, "1584" finds 1.584,36. "conto:", "partita:" (or "ordine:")
/// and "banca:" in front of a word look in these columns alone, the last one in the present and in the new bank.
///
/// The signs ">", "<", ">=", "<=" and "=" compare with dates what looks like a date ("31/12" is one of this year) and
/// with amounts what looks like an amount: some date, or some amount, of the row must agree. "-" in front of any of
/// these leaves the row out. Quotes hold blanks together. What is only begun ("banca:", "-", ">") restricts nothing; a
/// comparison with anything else is a word.
class FiltroGriglia {
 public:
  /// Where a screen's columns are; -1 for one that it has not.
  struct Colonne {
    std::vector<int> testi; ///< all that are visible
    int conto = -1;
    int partita = -1;
    int banca = -1;
    int nuovaBanca = -1;
    std::vector<int> importi; ///< of `testi`, those that show amounts
    std::vector<int> date;    ///< of `testi`, those that show dates
  };

  FiltroGriglia(std::string_view testo, const Colonne& colonne);

  /// Everything passes.
  [[nodiscard]] bool Vuoto() const noexcept { return condizioni_.empty(); }
  /// Whether a row that passes this has passed `prima` too, so that its hits alone need be searched. Where it cannot be
  /// told, false.
  [[nodiscard]] bool Restringe(const FiltroGriglia& prima) const;
  /// Whether a row passes. What became of a text is kept for the next row that has it, as long as the rows are the same
  /// and are not emptied.
  [[nodiscard]] bool Passa(const RigheGriglia& righe, std::size_t riga) const;
  /// What of a cell's text was looked for: first byte and the one behind the last, in order, none overlapping.
  [[nodiscard]] std::vector<std::pair<std::size_t, std::size_t>> Trovati(std::string_view testoCella,
                                                                         int colonna) const;

 private:
  enum class Genere { Parola, Importo, Data };
  enum class Confronto { Maggiore, MaggioreUguale, Minore, MinoreUguale, Uguale };

  /// What is known of each text, by its number.
  class Verdetti {
   public:
    [[nodiscard]] std::uint8_t& Di(std::uint32_t numero);

   private:
    std::vector<std::vector<std::uint8_t>> blocchi_;
  };

  /// A column in which a condition looks.
  struct Dove {
    int colonna = 0;
    bool importo = false;
    [[nodiscard]] bool operator==(const Dove&) const = default;
  };

  struct Condizione {
    Genere genere = Genere::Parola;
    Confronto confronto = Confronto::Uguale;
    bool esclude = false;
    std::string parola;    ///< folded
    std::string cifre;     ///< of a word of digits, without what groups them; empty for any other word
    ImportoEsatto importo; ///< compared with
    int giorno = 0;        ///< the same, of dates: YYYYMMDD
    std::vector<Dove> dove;
    mutable Verdetti verdetti;
  };
  using Tratti = std::vector<std::pair<std::size_t, std::size_t>>;

  void Leggi(std::string_view parola, bool esclude, bool traVirgolette);
  [[nodiscard]] bool LeggiConfronto(std::string_view testo, Condizione& condizione) const;
  [[nodiscard]] std::vector<Dove> In(const std::vector<int>& colonne) const;
  /// Whether a condition holds for a cell, without regard to `esclude`.
  [[nodiscard]] bool Vale(const Condizione& condizione, std::string_view testo, bool importo) const;
  [[nodiscard]] bool ValePerRiga(const Condizione& condizione, const RigheGriglia& righe, std::size_t riga) const;
  static void Segna(const Condizione& condizione, std::string_view testo, bool importo, Tratti& tratti);
  [[nodiscard]] static bool Confronta(Confronto confronto, std::strong_ordering ordine);
  /// Whether a row for which `questa` holds is one for which `quella` does; false where it cannot be told.
  [[nodiscard]] static bool Implica(const Condizione& questa, const Condizione& quella);
  [[nodiscard]] static bool ImplicaConfronto(const Condizione& questa, const Condizione& quella);

  Colonne colonne_;
  std::vector<Condizione> condizioni_;
  mutable std::string piegato_; ///< the text that is being looked at
};

} // namespace lumoscad
