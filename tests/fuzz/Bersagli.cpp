#include "Bersagli.hpp"

#include <cstdlib>

namespace lumoscad::fuzz {
namespace {

/// The length of the UTF-8 character that begins here, 0 where none does.
std::size_t LunghezzaCarattere(std::string_view testo) {
  const auto byte = [&](std::size_t i) { return i < testo.size() ? static_cast<unsigned char>(testo[i]) : 0U; };
  const auto coda = [&](std::size_t i) { return (byte(i) & 0xC0U) == 0x80U; };
  const unsigned primo = byte(0);
  if (primo < 0x80) {
    return primo >= 0x20 || primo == '\t' || primo == '\r' || primo == '\n' ? 1 : 0;
  }
  if (primo >= 0xC2 && primo <= 0xDF) {
    return coda(1) ? 2 : 0;
  }
  if (primo >= 0xE0 && primo <= 0xEF) {
    const bool lunga = primo == 0xE0 && byte(1) < 0xA0;
    const bool surrogato = primo == 0xED && byte(1) > 0x9F;
    return coda(1) && coda(2) && !lunga && !surrogato ? 3 : 0;
  }
  if (primo >= 0xF0 && primo <= 0xF4) {
    const bool lunga = primo == 0xF0 && byte(1) < 0x90;
    const bool oltre = primo == 0xF4 && byte(1) > 0x8F;
    return coda(1) && coda(2) && coda(3) && !lunga && !oltre ? 4 : 0;
  }
  return 0;
}

} // namespace

void Esigi(bool vale, std::string_view regola) {
  if (!vale) {
    throw Smentita(std::string(regola));
  }
}

void TogliLeSorgenti() {
  static const bool Tolte = [] {
    for (const char* variabile : {"ODBCINI", "ODBCINSTINI", "ODBCSYSINI"}) {
      ::setenv(variabile, "/dev/null/nessuna", 1);
    }
    return true;
  }();
  static_cast<void>(Tolte);
}

std::string_view Testo(Ingresso ingresso) {
  return {reinterpret_cast<const char*>(ingresso.data()), ingresso.size()};
}

std::string_view Parte(std::string_view testo, char separatore, std::size_t quale) {
  for (; quale > 0; --quale) {
    const auto fine = testo.find(separatore);
    if (fine == std::string_view::npos) {
      return {};
    }
    testo.remove_prefix(fine + 1);
  }
  return testo.substr(0, testo.find(separatore));
}

bool TestoPulito(std::string_view testo) {
  while (!testo.empty()) {
    const std::size_t lunghezza = LunghezzaCarattere(testo);
    if (lunghezza == 0) {
      return false;
    }
    testo.remove_prefix(lunghezza);
  }
  return true;
}

} // namespace lumoscad::fuzz
