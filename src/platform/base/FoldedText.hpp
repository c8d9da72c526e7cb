#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad::base {

// A folded text is what searching and sorting compare: its letters are small ones without their accents (the base
// letters of the Unicode Character Database's decompositions, and plain letters for those that have none, as "l" for
// "ł"), a ligature is its letters, and the typographic apostrophes, hyphens and blanks are those of ASCII. Greek and
// Cyrillic letters lose their case alone. Bytes that are no UTF-8 stay. It depends on no locale, and is never longer
// than the text.

/// Writes the folded text over what is in `folded`, whose memory is used again.
void Fold(std::string_view text, std::string& folded);

[[nodiscard]] std::string Folded(std::string_view text);

/// A folded text that knows where it comes from.
struct FoldedPlaces {
  std::string folded;
  /// For each byte of it, where in the text its character begins; and behind them the end of the text.
  std::vector<std::size_t> begins;
};
[[nodiscard]] FoldedPlaces FoldedWithPlaces(std::string_view text);

/// Whether `a` comes before `b` among texts that fold alike: by the first difference of accents, a letter without one
/// first, or else by the first difference of case, small letters first.
[[nodiscard]] bool BeforeByAccentsAndCase(std::string_view a, std::string_view b);

} // namespace lumoscad::base
