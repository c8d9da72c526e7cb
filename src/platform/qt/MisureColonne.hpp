#pragma once

#include "platform/Desktop.hpp"

#include <vector>

namespace lumoscad::qt {

/// The columns' nominal widths (twips) against the widths they have on the screen (pixels). The screen classes
/// only know the nominal ones, so every mouse position is brought back to them.
class MisureColonne {
 public:
  explicit MisureColonne(const std::vector<ColonnaElenco>& colonne);

  /// Pixels of all columns at their nominal widths.
  [[nodiscard]] int Totale() const { return totale_; }
  /// The width of each column when `disponibili` pixels are there: the columns of plain text and of banks share
  /// what is beyond the nominal widths; none is ever narrower than its nominal width.
  [[nodiscard]] std::vector<int> Pixel(int disponibili) const;
  /// Nominal x (twips) of the point `scarto` pixels into `colonna`, which is `larghezza` pixels wide on the screen.
  [[nodiscard]] int Twips(int colonna, int scarto, int larghezza) const;
  /// Nominal x (twips) of the middle of `colonna`.
  [[nodiscard]] int Mezzo(int colonna) const;
  /// Nominal x (twips) of a point `scarto` pixels to the right of the last column.
  [[nodiscard]] int Oltre(int scarto) const;

 private:
  struct Colonna {
    int inizio = 0; ///< twips
    int twips = 0;
    int pixel = 0;
    bool elastica = false;
  };

  std::vector<Colonna> colonne_;
  int totale_ = 0;
  int fine_ = 0; ///< twips
};

} // namespace lumoscad::qt
