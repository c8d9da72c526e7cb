#include "platform/ado/NumberText.hpp"

#include <gtest/gtest.h>

#include <string>

namespace lumoscad::ado::detail {
namespace {

std::string Pointed(std::string text) {
  return std::string(WithPoint(text.data(), text.size()));
}

std::string Amount(std::string text) {
  return std::string(WithoutCurrency(text.data(), text.size()));
}

TEST(NumberText, ANumberKeepsItsPoint) {
  for (const char* same : {"", "0", "-12", "1234.50", "-0.25", "1.5e-07", "+7", ".5", "5."}) {
    EXPECT_EQ(Pointed(same), same);
  }
}

TEST(NumberText, TheSeparatorOfALocaleBecomesAPoint) {
  EXPECT_EQ(Pointed("1234,50"), "1234.50");
  EXPECT_EQ(Pointed("-,5"), "-.5");
  EXPECT_EQ(Pointed("100,"), "100.");
  EXPECT_EQ(Pointed("1,5E-07"), "1.5E-07");
  EXPECT_EQ(Pointed("12\xD9\xAB"
                    "50"),
            "12.50")
      << "a separator of two bytes";
  EXPECT_EQ(Pointed("12\xD9"
                    "50"),
            "12.50")
      << "the first byte alone, as a driver may write it";
}

TEST(NumberText, WhatIsNoNumberStaysAsItIs) {
  for (const char* same : {"NaN", "-Infinity", "1,2,3", "1.234,5", "A,5", "12,3 x"}) {
    EXPECT_EQ(Pointed(same), same);
  }
}

TEST(NumberText, AnAmountLosesItsCurrencyAndGroups) {
  EXPECT_EQ(Amount("$1,234.50"), "1234.50");
  EXPECT_EQ(Amount("-$1,234.50"), "-1234.50");
  EXPECT_EQ(Amount("€ 1.234.567,89"), "1234567.89");
  EXPECT_EQ(Amount("-100,10 €"), "-100.10");
  EXPECT_EQ(Amount("($0.05)"), "-0.05");
  EXPECT_EQ(Amount("7,00-"), "-7.00");
  EXPECT_EQ(Amount("€ 12"), "12");
}

TEST(NumberText, AnAmountThatMayBeReadTwoWaysStaysAsItIs) {
  for (const char* same : {"￥1,234", "1.234 DT", "$1.5", "", "€"}) {
    EXPECT_EQ(Amount(same), same);
  }
}

} // namespace
} // namespace lumoscad::ado::detail
