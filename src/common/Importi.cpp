#include "common/Testo.hpp"
#include "common/Utilities.hpp"
#include "platform/RuntimeError.hpp"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

namespace lumoscad::Utilities {
namespace {

/// A decimal number by its digits: the value is 0.CIFRE times ten to the power of `virgola`.
struct Decimale {
  bool negativo = false;
  std::string cifre;
  int virgola = 0;
};

bool Cifra(char c) {
  return c >= '0' && c <= '9';
}

[[noreturn]] void NonNumero(std::string_view testo) {
  throw RuntimeError(errors::TypeMismatch, "Importo non valido: " + std::string(testo));
}

/// A text that holds nothing but digits, "." and ",", with its "," for the decimals as an amount, or nothing where it
/// is no number. A "." behind the first digit groups thousands, wherever it stands.
std::optional<std::string> FormattaItaliano(std::string_view testo) {
  std::string numero;
  bool cifre = false;
  bool virgola = false;
  for (const char c : testo) {
    if (Cifra(c)) {
      cifre = true;
      numero += c;
    } else if (c == ',' && !virgola) {
      virgola = true;
      numero += '.';
    } else if (c == ',' || !cifre) {
      return std::nullopt;
    }
  }
  return cifre ? std::optional(FormattaImporto(numero)) : std::nullopt;
}

Decimale LeggiDecimale(std::string_view testo) {
  Decimale numero;
  std::string_view resto = SenzaSpaziAiLati(testo);
  if (!resto.empty() && (resto.front() == '-' || resto.front() == '+')) {
    numero.negativo = resto.front() == '-';
    resto.remove_prefix(1);
  }
  bool punto = false;
  std::size_t i = 0;
  for (; i < resto.size() && (Cifra(resto[i]) || (resto[i] == '.' && !punto)); ++i) {
    if (resto[i] == '.') {
      punto = true;
    } else {
      numero.cifre += resto[i];
      numero.virgola += punto ? 0 : 1;
    }
  }
  if (numero.cifre.empty()) {
    NonNumero(testo);
  }
  if (i < resto.size()) {
    if (resto[i] != 'e' && resto[i] != 'E') {
      NonNumero(testo);
    }
    const int esponente = Intero(resto.substr(i + 1));
    if (esponente < -400 || esponente > 400) {
      NonNumero(testo);
    }
    numero.virgola += esponente;
  }
  return numero;
}

/// The number in hundredths, rounded half away from zero, as digits without leading zeros.
std::string Centesimi(const Decimale& numero) {
  const int intere = numero.virgola + 2;
  std::string centesimi;
  for (int i = 0; i < intere; ++i) {
    const auto posto = static_cast<std::size_t>(i);
    centesimi += posto < numero.cifre.size() ? numero.cifre[posto] : '0';
  }
  const bool perEccesso = intere >= 0 && static_cast<std::size_t>(intere) < numero.cifre.size() &&
                          numero.cifre[static_cast<std::size_t>(intere)] >= '5';
  if (perEccesso) {
    auto c = centesimi.rbegin();
    for (; c != centesimi.rend() && *c == '9'; ++c) {
      *c = '0';
    }
    if (c == centesimi.rend()) {
      centesimi.insert(0, "1");
    } else {
      ++*c;
    }
  }
  centesimi.erase(0, std::min(centesimi.find_first_not_of('0'), centesimi.size()));
  return centesimi;
}

/// The amount of a number as most databases write it, a sign, digits and two decimals at most; nothing for any other.
std::optional<std::string> FormattaBreve(std::string_view numero) {
  constexpr std::size_t CifreAlPiu = 18;
  const bool negativo = numero.starts_with('-');
  numero.remove_prefix(negativo ? 1 : 0);
  const auto punto = std::min(numero.find('.'), numero.size());
  std::string_view intere = numero.substr(0, punto);
  const std::string_view decimali = numero.substr(std::min(punto + 1, numero.size()));
  if (intere.empty() || intere.size() > CifreAlPiu || decimali.size() > 2 ||
      !std::all_of(intere.begin(), intere.end(), Cifra) || !std::all_of(decimali.begin(), decimali.end(), Cifra)) {
    return std::nullopt;
  }
  intere.remove_prefix(std::min(intere.find_first_not_of('0'), intere.size() - 1));
  std::array<char, CifreAlPiu + CifreAlPiu / 3 + 4> tampone{};
  char* inizio = tampone.data() + tampone.size();
  *--inizio = decimali.size() > 1 ? decimali[1] : '0';
  *--inizio = decimali.empty() ? '0' : decimali[0];
  *--inizio = ',';
  for (std::size_t i = 0; i < intere.size(); ++i) {
    if (i > 0 && i % 3 == 0) {
      *--inizio = '.';
    }
    *--inizio = intere[intere.size() - 1 - i];
  }
  const std::string_view senzaSegno(inizio, static_cast<std::size_t>(tampone.data() + tampone.size() - inizio));
  if (negativo && senzaSegno != "0,00") {
    *--inizio = '-';
  }
  return std::string(inizio, tampone.data() + tampone.size());
}

} // namespace

void SeparaImporto(std::string_view importo, std::string& intero, std::string& decimali) {
  auto separatore = importo.find(',');
  if (separatore == std::string_view::npos) {
    separatore = importo.find('.');
  }
  if (separatore == std::string_view::npos) {
    intero = importo;
    decimali = "00";
    return;
  }
  intero = importo.substr(0, separatore);
  decimali = importo.substr(separatore + 1);
  if (decimali.size() == 1) {
    decimali += '0';
  }
}

bool ControllaImporto(std::string& importo, bool conDecimali, bool conSegno) {
  std::string testo;
  std::copy_if(importo.begin(), importo.end(), std::back_inserter(testo),
               [](char c) { return static_cast<unsigned char>(c) > ' '; });
  if (conSegno && !testo.empty() && (testo.front() == '-' || testo.front() == '+')) {
    testo.erase(0, 1);
  }
  const auto ammesso = [&](char c) { return Cifra(c) || (conDecimali && (c == '.' || c == ',')); };
  if (!std::all_of(testo.begin(), testo.end(), ammesso)) {
    return true;
  }
  if (testo.empty()) {
    importo.clear();
    return false;
  }
  if (conDecimali) {
    std::string intero;
    std::string decimali;
    SeparaImporto(testo, intero, decimali);
    testo = intero + "," + decimali;
  }
  if (auto formattato = FormattaItaliano(testo)) {
    importo = std::move(*formattato);
  }
  return false;
}

std::string FormattaImporto(std::string_view numero) {
  if (auto breve = FormattaBreve(numero)) {
    return std::move(*breve);
  }
  const Decimale decimale = LeggiDecimale(numero);
  std::string centesimi = Centesimi(decimale);
  const bool zero = centesimi.empty();
  centesimi.insert(0, centesimi.size() < 3 ? 3 - centesimi.size() : 0, '0');
  std::string testo = centesimi.substr(0, centesimi.size() - 2);
  for (std::size_t posto = testo.size(); posto > 3;) {
    posto -= 3;
    testo.insert(posto, 1, '.');
  }
  testo.append(",").append(centesimi, centesimi.size() - 2);
  return decimale.negativo && !zero ? "-" + testo : testo;
}

} // namespace lumoscad::Utilities
