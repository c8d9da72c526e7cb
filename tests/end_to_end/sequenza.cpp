// Runs the command lines of the standard input one after the other in one process, as an accounting program does, and
// writes each result on a line of its own.

#include "lumoscad/LumoScadenze.hpp"

#include <iostream>
#include <string>

int main() {
  lumoscad::LumoScadenze lumoScadenze;
  for (std::string comando; std::getline(std::cin, comando);) {
    std::cout << '"' << lumoScadenze.EseguiLumoScad(comando) << "\"\n" << std::flush;
  }
  return std::cout.good() ? 0 : 1;
}
