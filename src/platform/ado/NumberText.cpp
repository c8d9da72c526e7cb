#include "platform/ado/NumberText.hpp"

#include <algorithm>
#include <cstring>
#include <string>

namespace lumoscad::ado::detail {

namespace {

constexpr std::string_view DecimalDigits = "0123456789";
constexpr std::size_t Decimals = 2;

bool Separates(char c) noexcept {
  return c == ',' || static_cast<unsigned char>(c) >= 0x80;
}

} // namespace

std::string_view WithPoint(char* text, std::size_t length) noexcept {
  const std::string_view whole(text, length);
  const auto* const start = std::find_if(whole.begin(), whole.end(), Separates);
  if (start == whole.end()) {
    return whole;
  }
  const auto* const after = std::find_if_not(start, whole.end(), Separates);
  const auto before = static_cast<std::size_t>(start - whole.begin());
  const auto rest = static_cast<std::size_t>(after - whole.begin());
  if (whole.substr(0, before).find_first_not_of("0123456789+-") != std::string_view::npos ||
      whole.substr(rest).find_first_not_of("0123456789+-eE") != std::string_view::npos) {
    return whole;
  }
  text[before] = '.';
  std::memmove(text + before + 1, text + rest, length - rest);
  return {text, before + 1 + length - rest};
}

std::string_view WithoutCurrency(char* text, std::size_t length) {
  const std::string_view whole(text, length);
  const auto first = whole.find_first_of(DecimalDigits);
  if (first == std::string_view::npos) {
    return whole;
  }
  const auto last = whole.find_last_of(DecimalDigits);
  const std::string_view number = whole.substr(first, last - first + 1);
  const auto separator = number.find_last_not_of(DecimalDigits);
  if (separator != std::string_view::npos && number.size() - separator - 1 != Decimals) {
    return whole;
  }
  const auto sign = [&](char c) { return whole.substr(0, first).find(c) != std::string_view::npos; };
  const bool negative = sign('-') || sign('(') || whole.substr(last + 1).find('-') != std::string_view::npos;
  std::string plain = negative ? "-" : "";
  for (std::size_t i = 0; i < number.size(); ++i) {
    if (i == separator) {
      plain += '.';
    } else if (DecimalDigits.find(number[i]) != std::string_view::npos) {
      plain += number[i];
    }
  }
  return {text, plain.copy(text, length)};
}

} // namespace lumoscad::ado::detail
