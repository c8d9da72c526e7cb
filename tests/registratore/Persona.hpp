#pragma once

#include "platform/Desktop.hpp"

#include <cstddef>
#include <string>
#include <string_view>

namespace lumoscad::test {

/// The gestures of a person in a list window, as a real window passes them on.
class PersonaAllaLista {
 public:
  explicit PersonaAllaLista(ListWindow& finestra) : finestra_(finestra) {}

  /// Clicks the cell of the column with this key in the row at this place.
  void Clicca(std::size_t riga, std::string_view colonna) const;
  /// Types into the date cell and leaves it with Enter.
  void ScriviData(std::size_t riga, std::string_view testo) const;
  /// Chooses in the bank cell and leaves it.
  void ScegliBanca(std::size_t riga, int indice) const;

 private:
  ListWindow& finestra_;
};

} // namespace lumoscad::test
