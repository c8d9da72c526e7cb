#pragma once

#include <cstddef>
#include <string_view>

namespace lumoscad::ado::detail {

/// The number that a driver wrote into `text` with the decimal separator of the process' locale, with a point instead.
/// Works in place: the result is the beginning of `text`. What is no such number (NaN, Infinity) stays as it is.
[[nodiscard]] std::string_view WithPoint(char* text, std::size_t length) noexcept;

/// The number of an amount that a server wrote by its own customs, "-1.234,50 €" or "$1,234.50": sign, digits and a
/// point. Works in place as above. An amount whose last group has not two digits stays as it is, for it may be a group
/// of thousands as well as decimals.
[[nodiscard]] std::string_view WithoutCurrency(char* text, std::size_t length);

} // namespace lumoscad::ado::detail
