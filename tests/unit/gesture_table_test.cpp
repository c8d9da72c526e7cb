#include "platform/GestureTable.hpp"
#include "support/Paths.hpp"

#include <gmock/gmock.h>

#include <fstream>
#include <map>
#include <set>
#include <sstream>

namespace lumoscad::test {
namespace {

constexpr std::string_view Begin = "<!-- i gesti, scritti da scripts/guide.sh -->\n";
constexpr std::string_view End = "<!-- fine dei gesti -->\n";

/// Whether two gestures can be meant by the same key in the same window.
bool Together(const GestureEntry& a, const GestureEntry& b) {
  return a.place == b.place &&
         (a.screens == b.screens || a.screens == GestureScreens::All || b.screens == GestureScreens::All);
}

/// The guide's chapter: a table a place.
std::string Chapter() {
  std::string chapter;
  const GestureEntry* before = nullptr;
  for (const GestureEntry& entry : GestureTable()) {
    if (before == nullptr || before->place != entry.place) {
      chapter.append("\n### ")
          .append(PlaceName(entry.place))
          .append("\n\n| tasto | gesto | che cosa fa |\n|---|---|---|\n");
    }
    chapter.append("| ").append(ItalianKeys(entry)).append(" | ").append(entry.name);
    chapter.append(" | ").append(entry.help);
    chapter.append(entry.screens == GestureScreens::Item ? " (solo nelle scadenze di una partita) |\n" : " |\n");
    before = &entry;
  }
  return chapter + "\n";
}

std::string Read(const std::filesystem::path& path) {
  std::ostringstream text;
  text << std::ifstream(path).rdbuf();
  return text.str();
}

TEST(TableOfGestures, HasEachGestureOnceWithANameAndAWayToDoIt) {
  std::set<Gesture> seen;
  for (const GestureEntry& entry : GestureTable()) {
    EXPECT_TRUE(seen.insert(entry.gesture).second) << entry.name;
    EXPECT_NE(entry.gesture, Gesture::None);
    EXPECT_FALSE(entry.name.empty());
    EXPECT_FALSE(entry.help.empty()) << entry.name;
    EXPECT_NE(entry.keys.empty(), entry.typed.empty()) << entry.name;
    EXPECT_FALSE(PlaceName(entry.place).empty());
    EXPECT_EQ(&EntryOf(entry.gesture), &entry);
  }
  EXPECT_THROW(static_cast<void>(EntryOf(Gesture::None)), std::out_of_range);
}

TEST(TableOfGestures, GivesNoKeyTwoMeaningsInOnePlace) {
  std::map<std::string, std::vector<const GestureEntry*>> meanings;
  for (const GestureEntry& entry : GestureTable()) {
    for (const std::string_view key : KeysOf(entry)) {
      for (const GestureEntry* other : meanings[std::string(key)]) {
        EXPECT_FALSE(Together(entry, *other)) << key << ": " << entry.name << ", " << other->name;
      }
      meanings[std::string(key)].push_back(&entry);
    }
  }
}

TEST(TableOfGestures, KeepsThoseOfAPlaceTogether) {
  std::set<GesturePlace> done;
  const GestureEntry* before = nullptr;
  for (const GestureEntry& entry : GestureTable()) {
    if (before == nullptr || before->place != entry.place) {
      EXPECT_TRUE(done.insert(entry.place).second) << PlaceName(entry.place);
    }
    before = &entry;
  }
}

TEST(TableOfGestures, HasTheKeysOfAMovementInItsOrder) {
  const std::vector<std::string_view> ends{"Up", "Down", "PgUp", "PgDown", "Home", "End"};
  for (const Gesture movement : {Gesture::Move, Gesture::Extend, Gesture::MoveAlone, Gesture::AddRange}) {
    const auto keys = KeysOf(EntryOf(movement));
    ASSERT_GE(keys.size(), 4U);
    for (std::size_t which = 0; which < keys.size(); ++which) {
      EXPECT_TRUE(keys[which].ends_with(ends[which])) << keys[which];
    }
  }
}

TEST(TableOfGestures, NamesKeysAsItalianKeyboardsDo) {
  EXPECT_EQ(ItalianKey("Ctrl+Shift+Z"), "Ctrl+Maiusc+Z");
  EXPECT_EQ(ItalianKey("Shift+PgDown"), "Maiusc+Pag giù");
  EXPECT_EQ(ItalianKey("F12"), "F12");
  EXPECT_EQ(ItalianKey(Gesture::Confirm), "Ctrl+Invio");
  EXPECT_EQ(ItalianKeys(EntryOf(Gesture::Confirm)), "Ctrl+Invio") << "the other Enter is no key to learn";
  EXPECT_EQ(ItalianKeys(EntryOf(Gesture::Redo)), "Ctrl+Y, Ctrl+Maiusc+Z");
  EXPECT_EQ(ItalianKeys(EntryOf(Gesture::TypeDigit)), "una cifra");
}

TEST(TableOfGestures, IsTheChapterOfTheGuide) {
  const auto path = SourcePath("docs/guida.md");
  const std::string guide = Read(path);
  const auto begin = guide.find(Begin);
  const auto end = guide.find(End);
  ASSERT_TRUE(begin != std::string::npos && end != std::string::npos && begin < end) << "the chapter's marks are gone";
  const std::string before = guide.substr(0, begin + Begin.size());
  if (std::getenv("LUMOSCAD_SCRIVI_GUIDA") != nullptr) {
    std::ofstream(path) << before << Chapter() << guide.substr(end);
  }
  EXPECT_EQ(Read(path), before + Chapter() + guide.substr(end)) << "scripts/guide.sh writes it anew";
}

} // namespace
} // namespace lumoscad::test
