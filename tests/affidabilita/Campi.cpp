#include "Campi.hpp"

namespace lumoscad::test {

std::string Unisci(const std::vector<std::string>& campi) {
  std::string riga;
  for (const std::string& campo : campi) {
    riga += &campo == &campi.front() ? "" : "\t";
    for (const char c : campo) {
      switch (c) {
      case '\\':
        riga += "\\\\";
        break;
      case '\t':
        riga += "\\t";
        break;
      case '\r':
        riga += "\\r";
        break;
      case '\n':
        riga += "\\n";
        break;
      default:
        riga += c;
      }
    }
  }
  return riga;
}

std::vector<std::string> Separa(std::string_view riga) {
  std::vector<std::string> campi(1);
  for (std::size_t i = 0; i < riga.size(); ++i) {
    if (riga[i] == '\t') {
      campi.emplace_back();
    } else if (riga[i] == '\\' && i + 1 < riga.size()) {
      const char c = riga[++i];
      campi.back() += c == 't' ? '\t' : c == 'r' ? '\r' : c == 'n' ? '\n' : c;
    } else {
      campi.back() += riga[i];
    }
  }
  return campi;
}

} // namespace lumoscad::test
