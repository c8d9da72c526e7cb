#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad {

class Griglia;

/// A column of texts, one a line, given to the selected rows as new dates or as codes of new banks: one text to all of
/// them, or as many texts as there are rows, from top to bottom. All are judged before the first is written, each text
/// once; where one is refused nothing is written.
class IncollaGriglia {
 public:
  explicit IncollaGriglia(Griglia& griglia) : griglia_(griglia) {}

  /// `colonna` says what the texts are, where dates or banks are edited in it.
  void Incolla(std::string_view testo, int colonna);

 private:
  void IncollaDate(const std::vector<std::size_t>& righe, const std::vector<std::string>& testi);
  void IncollaBanche(const std::vector<std::size_t>& righe, const std::vector<std::string>& testi);
  [[nodiscard]] bool SonoDate(const std::vector<std::string>& testi, int colonna) const;
  void Avvisa(std::string testo);
  /// "30 rate: " and what they got, with how many of them had it already.
  void Riferisci(std::size_t righe, std::string_view che);

  Griglia& griglia_;
};

} // namespace lumoscad
