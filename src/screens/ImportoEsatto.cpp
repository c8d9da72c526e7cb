#include "screens/ImportoEsatto.hpp"

#include <algorithm>
#include <cstddef>

namespace lumoscad {
namespace {

constexpr std::int64_t Base = 1'000'000'000'000'000'000;
constexpr std::size_t CifreDellaBase = 18;
constexpr std::size_t CifreAlPiu = 30;

bool CifraScritta(char c) {
  return c >= '0' && c <= '9';
}

} // namespace

std::optional<ImportoEsatto> ImportoEsatto::Leggi(std::string_view testo) noexcept {
  const bool negativo = testo.starts_with('-');
  testo.remove_prefix(negativo ? 1 : 0);
  const auto virgola = std::min(testo.find(','), testo.size());
  const std::string_view decimali = testo.substr(std::min(virgola + 1, testo.size()));
  if (virgola < testo.size() &&
      (decimali.size() != 2 || !std::all_of(decimali.begin(), decimali.end(), CifraScritta))) {
    return std::nullopt;
  }
  ImportoEsatto importo;
  std::size_t cifre = 0;
  const auto aggiungi = [&](char cifra) {
    importo.alto_ = importo.alto_ * 10 + importo.basso_ / (Base / 10);
    importo.basso_ = importo.basso_ % (Base / 10) * 10 + (cifra - '0');
    ++cifre;
  };
  for (const char c : testo.substr(0, virgola)) {
    if (CifraScritta(c) && cifre < CifreAlPiu - 2) {
      aggiungi(c);
    } else if (c != '.' || cifre == 0) {
      return std::nullopt;
    }
  }
  if (cifre == 0) {
    return std::nullopt;
  }
  aggiungi(decimali.empty() ? '0' : decimali[0]);
  aggiungi(decimali.empty() ? '0' : decimali[1]);
  return negativo ? -importo : importo;
}

std::string ImportoEsatto::Testo() const {
  const bool negativo = alto_ < 0;
  const ImportoEsatto senzaSegno = negativo ? -*this : *this;
  std::string cifre = std::to_string(senzaSegno.basso_);
  if (senzaSegno.alto_ > 0) {
    cifre = std::to_string(senzaSegno.alto_) + std::string(CifreDellaBase - cifre.size(), '0') + cifre;
  }
  cifre.insert(0, cifre.size() < 3 ? 3 - cifre.size() : 0, '0');
  std::string testo = cifre.substr(0, cifre.size() - 2);
  for (std::size_t posto = testo.size(); posto > 3;) {
    posto -= 3;
    testo.insert(posto, 1, '.');
  }
  return (negativo ? "-" : "") + testo + "," + cifre.substr(cifre.size() - 2);
}

int ImportoEsatto::Millesimi(const ImportoEsatto& totale) const noexcept {
  ImportoEsatto intero = totale.alto_ < 0 ? -totale : totale;
  ImportoEsatto parte = alto_ < 0 ? -*this : *this;
  while (intero.alto_ > 0 || intero.basso_ >= Base / 1000 || parte.alto_ > 0 || parte.basso_ >= Base / 1000) {
    intero.DividiPerDieci();
    parte.DividiPerDieci();
  }
  return intero.Zero() ? 0 : static_cast<int>(std::min<std::int64_t>(parte.basso_ * 1000 / intero.basso_, 1000));
}

ImportoEsatto& ImportoEsatto::operator+=(const ImportoEsatto& altro) noexcept {
  alto_ += altro.alto_;
  basso_ += altro.basso_;
  Riporta();
  return *this;
}

ImportoEsatto& ImportoEsatto::operator-=(const ImportoEsatto& altro) noexcept {
  alto_ -= altro.alto_;
  basso_ -= altro.basso_;
  Riporta();
  return *this;
}

ImportoEsatto ImportoEsatto::operator-() const noexcept {
  ImportoEsatto opposto;
  opposto -= *this;
  return opposto;
}

void ImportoEsatto::Riporta() noexcept {
  if (basso_ >= Base) {
    basso_ -= Base;
    ++alto_;
  } else if (basso_ < 0) {
    basso_ += Base;
    --alto_;
  }
}

void ImportoEsatto::DividiPerDieci() noexcept {
  basso_ = alto_ % 10 * (Base / 10) + basso_ / 10;
  alto_ /= 10;
}

} // namespace lumoscad
