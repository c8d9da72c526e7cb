#include "platform/qt/MisureColonne.hpp"

#include <algorithm>
#include <cstdint>

namespace lumoscad::qt {

MisureColonne::MisureColonne(const std::vector<ColonnaElenco>& colonne) {
  colonne_.reserve(colonne.size());
  for (const ColonnaElenco& colonna : colonne) {
    const int twips = std::max(colonna.larghezza, 0);
    const bool elastica =
        colonna.genere == ColonnaElenco::Genere::Testo || colonna.genere == ColonnaElenco::Genere::EditorBanca;
    const int pixel = twips == 0 ? 0 : std::max(1, (twips + TwipsPerPixelX / 2) / TwipsPerPixelX);
    colonne_.push_back({fine_, twips, pixel, elastica && twips > 0});
    fine_ += twips;
    totale_ += pixel;
  }
}

std::vector<int> MisureColonne::Pixel(int disponibili) const {
  int elastici = 0;
  for (const Colonna& colonna : colonne_) {
    elastici += colonna.elastica ? colonna.pixel : 0;
  }
  int resto = elastici > 0 ? std::max(0, disponibili - totale_) : 0;
  std::vector<int> risultato;
  risultato.reserve(colonne_.size());
  for (const Colonna& colonna : colonne_) {
    int larghezza = colonna.pixel;
    if (colonna.elastica && elastici > 0) {
      // Each elastic column takes its share of what is still left, so that the rounding never loses a pixel.
      const auto parte = static_cast<int>(std::int64_t{resto} * colonna.pixel / elastici);
      larghezza += parte;
      resto -= parte;
      elastici -= colonna.pixel;
    }
    risultato.push_back(larghezza);
  }
  return risultato;
}

int MisureColonne::Twips(int colonna, int scarto, int larghezza) const {
  const Colonna& c = colonne_.at(static_cast<std::size_t>(colonna));
  if (larghezza <= 0 || c.twips == 0) {
    return c.inizio;
  }
  const auto dentro = static_cast<int>(std::int64_t{scarto} * c.twips / larghezza);
  return c.inizio + std::clamp(dentro, 0, c.twips - 1);
}

int MisureColonne::Mezzo(int colonna) const {
  const Colonna& c = colonne_.at(static_cast<std::size_t>(colonna));
  return c.inizio + c.twips / 2;
}

int MisureColonne::Oltre(int scarto) const {
  return fine_ + std::max(0, scarto) * TwipsPerPixelX;
}

} // namespace lumoscad::qt
