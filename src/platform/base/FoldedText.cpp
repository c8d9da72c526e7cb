#include "platform/base/FoldedText.hpp"

#include "platform/base/AsciiCase.hpp"
#include "platform/base/Utf8.hpp"

namespace lumoscad::base {
namespace {

constexpr char32_t FirstCombining = 0x300;
constexpr char32_t LastCombining = 0x36F;

/// The base letters of consecutive characters, '-' for one that has none of its own.
struct Letters {
  char32_t first;
  std::string_view letters;
};

constexpr Letters Table[] = {{0xE0, "aaaaaa-ceeeeiiiidnooooo-ouuuuy-y"},
                             {0x100, "aaaaaaccccccccddddeeeeeeeeeegggggggghhhhiiiiiiiiii--jjkkkllllllllll"
                                     "nnnnnnnnnoooooo--rrrrrrssssssssttttttuuuuuuuuuuuuwwyyyzzzzzzs"},
                             {0x1CD, "aaiioouuuuuuuuuu"},
                             {0x218, "sstt"},
                             {0x1E00, "aabbbbbbccddddddddddeeeeeeeeeeffgghhhhhhhhhhiiiikkkkkkllllllllmm"
                                      "mmmmnnnnnnnnoooooooopppprrrrrrrrssssssssssttttttttuuuuuuuuuuvvvv"
                                      "wwwwwwwwwwxxxxyyzzzzzzhtwy------aaaaaaaaaaaaaaaaaaaaaaaaeeeeeeee"
                                      "eeeeeeeeiiiioooooooooooooooooooooooouuuuuuuuuuuuuuyyyyyyyy"}};

/// What has no base letter of one character, or is written in two ways.
struct Written {
  char32_t code;
  std::string_view folded;
};
constexpr Written Others[] = {{0xA0, " "},   {0xDF, "ss"},   {0xE6, "ae"},   {0xFE, "th"},   {0x132, "ij"},
                              {0x133, "ij"}, {0x152, "oe"},  {0x153, "oe"},  {0x1E9E, "ss"}, {0x2010, "-"},
                              {0x2011, "-"}, {0x2012, "-"},  {0x2013, "-"},  {0x2014, "-"},  {0x2018, "'"},
                              {0x2019, "'"}, {0x201C, "\""}, {0x201D, "\""}, {0x202F, " "}};

constexpr bool In(char32_t code, char32_t first, char32_t last) {
  return code >= first && code <= last;
}

/// The small letter of a Latin, Greek or Cyrillic capital; any other character as it is.
char32_t Small(char32_t code) {
  const bool byThirtyTwo =
      In(code, 'A', 'Z') || (In(code, 0xC0, 0xDE) && code != 0xD7) || In(code, 0x391, 0x3AB) || In(code, 0x410, 0x42F);
  if (byThirtyTwo) {
    return code + 0x20;
  }
  if (In(code, 0x400, 0x40F)) {
    return code + 0x50;
  }
  if (code == 0x178) {
    return 0xFF;
  }
  const bool oddCapitals = In(code, 0x139, 0x148) || In(code, 0x179, 0x17E) || In(code, 0x1CD, 0x1DC);
  const bool evenCapitals = In(code, 0x100, 0x137) || In(code, 0x14A, 0x177) || In(code, 0x218, 0x21B) ||
                            In(code, 0x1E00, 0x1E95) || In(code, 0x1EA0, 0x1EFF);
  if (oddCapitals || evenCapitals) {
    return code + ((code & 1U) == (oddCapitals ? 1U : 0U) ? 1U : 0U);
  }
  return code;
}

void AppendCharacter(char32_t code, std::string& folded) {
  if (code < 0x80U) {
    folded += static_cast<char>(code);
  } else if (code < 0x800U) {
    folded += static_cast<char>(0xC0U | (code >> 6U));
    folded += static_cast<char>(0x80U | (code & 0x3FU));
  }
}

/// Folds the character of several bytes at the beginning of `text`, and says how long it is.
std::size_t FoldCharacter(std::string_view text, std::string& folded) {
  const Utf8Character character = FirstCharacter(text);
  if (character.length == 0) {
    folded += text.front();
    return 1;
  }
  if (In(character.code, FirstCombining, LastCombining)) {
    return character.length;
  }
  const char32_t small = Small(character.code);
  for (const Letters& part : Table) {
    if (small >= part.first && small - part.first < part.letters.size() && part.letters[small - part.first] != '-') {
      folded += part.letters[small - part.first];
      return character.length;
    }
  }
  for (const Written& other : Others) {
    if (small == other.code) {
      folded += other.folded;
      return character.length;
    }
  }
  if (small == character.code) {
    folded += text.substr(0, character.length);
  } else {
    AppendCharacter(small, folded);
  }
  return character.length;
}

/// The next character of a text, which loses it; a byte that is none counts as one.
char32_t Next(std::string_view& text) {
  const Utf8Character character = FirstCharacter(text);
  const char32_t code = character.length == 0 ? static_cast<unsigned char>(text.front()) : character.code;
  text.remove_prefix(character.length == 0 ? 1 : character.length);
  return code;
}

} // namespace

void Fold(std::string_view text, std::string& folded) {
  folded.clear();
  for (std::size_t i = 0; i < text.size();) {
    if (static_cast<unsigned char>(text[i]) < 0x80U) {
      folded += LowerCase(text[i]);
      ++i;
    } else {
      i += FoldCharacter(text.substr(i), folded);
    }
  }
}

std::string Folded(std::string_view text) {
  std::string folded;
  Fold(text, folded);
  return folded;
}

FoldedPlaces FoldedWithPlaces(std::string_view text) {
  FoldedPlaces places;
  for (std::size_t i = 0; i < text.size();) {
    const std::size_t begin = i;
    if (static_cast<unsigned char>(text[i]) < 0x80U) {
      places.folded += LowerCase(text[i]);
      ++i;
    } else {
      i += FoldCharacter(text.substr(i), places.folded);
    }
    places.begins.resize(places.folded.size(), begin);
  }
  places.begins.push_back(text.size());
  return places;
}

bool BeforeByAccentsAndCase(std::string_view a, std::string_view b) {
  int byCase = 0;
  while (!a.empty() && !b.empty()) {
    const char32_t first = Next(a);
    const char32_t second = Next(b);
    const char32_t small = Small(first);
    const char32_t otherSmall = Small(second);
    if (small != otherSmall) {
      return small < otherSmall;
    }
    if (byCase == 0 && first != second) {
      byCase = first == small ? -1 : 1;
    }
  }
  return a.empty() != b.empty() ? a.empty() : byCase < 0;
}

} // namespace lumoscad::base
