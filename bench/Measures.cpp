#include "Measures.hpp"

#include "support/Paths.hpp"

#include <array>
#include <cstdio>

namespace lumoscad::bench {

std::filesystem::path Folder(Sizes sizes, std::string_view name) {
  return test::BuildFolder() / (sizes == Sizes::All ? "bench" : "bench-veloce") / name;
}

std::string Grouped(std::size_t number) {
  constexpr std::size_t Group = 3;
  std::string text = std::to_string(number);
  for (std::size_t place = text.size(); place > Group; place -= Group) {
    text.insert(place - Group, 1, ',');
  }
  return text;
}

std::string Sides(const char* ours, double ourMilliseconds, const char* other, double otherMilliseconds) {
  std::array<char, 200> text{};
  const int length = std::snprintf(text.data(), text.size(), "%s %.2f ms, %s %.2f ms", ours, ourMilliseconds, other,
                                   otherMilliseconds);
  return {text.data(), std::min(static_cast<std::size_t>(std::max(length, 0)), text.size() - 1)};
}

} // namespace lumoscad::bench
