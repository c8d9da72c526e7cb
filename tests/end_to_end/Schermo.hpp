#pragma once

#include "Figlio.hpp"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace lumoscad::test {

/// A virtual display of its own, 1280 by 800 or of another size, with a window manager; both end with the object.
class Schermo {
 public:
  /// `cartella`, which holds no other display, takes the files of the two programs. Raises when the display does not
  /// come up.
  explicit Schermo(const std::filesystem::path& cartella, const std::string& misura = "1280x800");

  /// The settings of a program that is to show its windows here.
  [[nodiscard]] std::vector<std::string> Ambiente() const;

  /// Waits for a visible window with this whole title, gives it the keyboard and returns its number. Empty when none
  /// appears, or when `programma` ends first.
  [[nodiscard]] std::string AspettaFinestra(const std::string& titolo, Figlio& programma) const;
  [[nodiscard]] bool Sparita(const std::string& titolo) const;

  /// Each call returns false when the gesture could not be made.
  [[nodiscard]] bool Tasti(const std::vector<std::string>& tasti) const;
  [[nodiscard]] bool Digita(const std::string& testo) const;
  /// A click with the first button; coordinates are those of the window's inside, and negative ones count from its
  /// right and bottom edges.
  [[nodiscard]] bool Clicca(const std::string& finestra, int x, int y) const;
  [[nodiscard]] bool Fotografa(const std::string& finestra, const std::filesystem::path& file) const;

  struct Misure {
    int larghezza = 0;
    int altezza = 0;
  };
  [[nodiscard]] Misure MisureFinestra(const std::string& finestra) const;

 private:
  [[nodiscard]] std::string Trova(const std::string& titolo) const;

  std::filesystem::path esecuzione_; ///< private to the user, as programs with windows ask for
  std::string display_;
  std::unique_ptr<Figlio> server_;
  std::unique_ptr<Figlio> gestore_;
};

} // namespace lumoscad::test
