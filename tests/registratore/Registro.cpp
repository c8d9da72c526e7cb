#include "Registro.hpp"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <regex>

namespace lumoscad::test {
namespace {

/// A text that differs from run to run: how it begins, its pattern, what stands for it.
struct Disegno {
  const char* inizio;
  std::regex disegno;
  const char* segno;
};

/// What no text names: the moment in a request's name, the date and time of a lock, a server's port, a copy under way.
const std::array<Disegno, 4>& Disegni() {
  static const std::array<Disegno, 4> Disegni{
      {{"{postazione}", std::regex(R"(\{postazione\}\d{14})"), "{postazione}{momento}"},
       {"Data : ", std::regex(R"(Data : \d\d/\d\d/\d{4}   Ora : \d\d:\d\d)"), "Data : {data}   Ora : {ora}"},
       {"port ", std::regex(R"(port \d+)"), "port {porta}"},
       {".lumoscad-", std::regex(R"(\.lumoscad-[A-Za-z0-9.-]+)"), ".lumoscad-{copia}"}}};
  return Disegni;
}

/// The length of the character at the beginning of a text; 1 for a byte that begins none.
std::size_t LunghezzaUtf8(std::string_view testo) {
  const auto primo = static_cast<unsigned char>(testo[0]);
  const std::size_t lunghezza = primo >= 0xF0U ? 4 : primo >= 0xE0U ? 3 : primo >= 0xC2U ? 2 : 1;
  if (testo.size() < lunghezza) {
    return 1;
  }
  const auto resto = testo.substr(1, lunghezza - 1);
  const bool intero = std::all_of(resto.begin(), resto.end(), [](char carattere) {
    return (static_cast<unsigned char>(carattere) & 0xC0U) == 0x80U;
  });
  return intero ? lunghezza : 1;
}

std::string Sostituito(std::string testo, std::string_view da, std::string_view a) {
  for (auto posto = testo.find(da); posto != std::string::npos; posto = testo.find(da, posto + a.size())) {
    testo.replace(posto, da.size(), a);
  }
  return testo;
}

} // namespace

std::string Cita(std::string_view testo) {
  // Of a long text what it begins with, how it ends, and a digest of all of it.
  constexpr std::size_t Intero = 2500;
  constexpr std::size_t Assaggio = 100;
  if (testo.size() > Intero) {
    return Cita(testo.substr(0, Assaggio)) + " … " + Cita(testo.substr(testo.size() - Assaggio)) + " " +
           std::to_string(testo.size()) + " byte, impronta " + Impronta(testo);
  }
  std::string citato = "«";
  for (std::size_t posto = 0; posto < testo.size(); ++posto) {
    const char carattere = testo[posto];
    const auto codice = static_cast<unsigned char>(carattere);
    const auto lunghezza = LunghezzaUtf8(testo.substr(posto));
    if (carattere == '\r') {
      citato += "\\r";
    } else if (carattere == '\n') {
      citato += "\\n";
    } else if (carattere == '\\') {
      citato += "\\\\";
    } else if (lunghezza > 1) {
      citato += testo.substr(posto, lunghezza);
      posto += lunghezza - 1;
    } else if (codice < 0x20 || codice >= 0x7F) {
      std::array<char, 5> numero{};
      std::snprintf(numero.data(), numero.size(), "\\x%02x", static_cast<unsigned>(codice));
      citato += numero.data();
    } else {
      citato += carattere;
    }
  }
  return citato + "»";
}

std::string Impronta(std::string_view testo) {
  std::uint64_t somma = 0xCBF29CE484222325U;
  for (const char carattere : testo) {
    somma = (somma ^ static_cast<unsigned char>(carattere)) * 0x100000001B3U;
  }
  std::array<char, 17> numero{};
  std::snprintf(numero.data(), numero.size(), "%016llx", static_cast<unsigned long long>(somma));
  return numero.data();
}

void Registro::Maschera(std::string testo, std::string segno) {
  if (!testo.empty()) {
    maschere_.emplace_back(std::move(testo), std::move(segno));
  }
}

void Registro::AnnotaUnaVolta(const std::vector<std::string>& righe) {
  const bool nuove = scritte_.insert(righe).second;
  Annota(righe.front() + (nuove ? "" : " (come sopra)"));
  for (std::size_t i = 1; nuove && i < righe.size(); ++i) {
    Annota(righe[i]);
  }
}

std::string Registro::Mascherato(std::string testo) const {
  auto maschere = maschere_;
  std::stable_sort(maschere.begin(), maschere.end(),
                   [](const auto& una, const auto& altra) { return una.first.size() > altra.first.size(); });
  for (const auto& [da, a] : maschere) {
    testo = Sostituito(std::move(testo), da, a);
  }
  for (const auto& [inizio, disegno, segno] : Disegni()) {
    if (testo.find(inizio) != std::string::npos) {
      testo = std::regex_replace(testo, disegno, segno);
    }
  }
  return testo;
}

std::string Registro::Chiudi(std::string_view titolo) {
  std::string testo = "=== " + std::string(titolo) + "\n";
  for (const auto& riga : righe_) {
    testo += Mascherato(riga) + "\n";
  }
  if (!strato_.empty()) {
    testo += "--- lo strato della base dati, per conto suo\n";
    for (const auto& riga : strato_) {
      testo += Mascherato(riga) + "\n";
    }
  }
  righe_.clear();
  strato_.clear();
  maschere_.clear();
  return testo + "\n";
}

} // namespace lumoscad::test
