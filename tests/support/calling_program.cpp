#include "support/Paths.hpp"

#include <QApplication>

#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>

/// Runs the tests of a program as they are, or, where the environment's LUMOSCAD_PROVA_LOCALE names a locale, inside a
/// calling program with windows: its QApplication has taken that locale over from the environment.
int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  const char* const name = std::getenv("LUMOSCAD_PROVA_LOCALE");
  if (name == nullptr) {
    return RUN_ALL_TESTS();
  }
  const auto locales = (lumoscad::test::BuildFolder() / "locali").string();
  qputenv("LOCPATH", locales.c_str());
  qputenv("LC_ALL", name);
  qputenv("QT_QPA_PLATFORM", "offscreen");
  const QApplication application(argc, argv);
  if (std::string(std::setlocale(LC_NUMERIC, nullptr)) != name) {
    std::cerr << "the locale " << name << " was not found in " << locales << '\n';
    return EXIT_FAILURE;
  }
  const int result = RUN_ALL_TESTS();
  if (std::string(std::setlocale(LC_ALL, nullptr)) != name) {
    std::cerr << "a test left another locale than " << name << ": " << std::setlocale(LC_ALL, nullptr) << '\n';
    return EXIT_FAILURE;
  }
  return result;
}
