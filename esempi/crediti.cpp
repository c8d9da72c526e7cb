// A program in C++ without windows of its own: reads a command line from the standard input, runs it, and prints the
// result. It wants nothing but the headers and the library: not Qt, and not the compiler that the library was built
// with.

#include <lumoscad/LumoScadenze.hpp>

#include <iostream>
#include <string>

int main() {
  std::string line;
  if (!std::getline(std::cin, line)) {
    return 2;
  }
  const std::string result = lumoscad::LumoScadenze().EseguiLumoScad(line);
  std::cout << '"' << result << "\"\n";
  return result == "error" ? 1 : 0;
}
