#include "screens/RigheGriglia.hpp"

#include "platform/base/AsciiCase.hpp"

#include <algorithm>
#include <array>
#include <cstring>
#include <functional>
#include <limits>
#include <numeric>
#include <utility>

namespace lumoscad {
namespace {

constexpr std::size_t DimensioneBlocco = std::size_t{64} * 1024;
constexpr std::size_t PostiIniziali = 1024;

unsigned char Minuscola(char c) {
  return static_cast<unsigned char>(base::LowerCase(c));
}

bool Precede(std::string_view a, std::string_view b) {
  const auto comuni = std::min(a.size(), b.size());
  for (std::size_t i = 0; i < comuni; ++i) {
    const auto ca = Minuscola(a[i]);
    const auto cb = Minuscola(b[i]);
    if (ca != cb) {
      return ca < cb;
    }
  }
  return a.size() < b.size();
}

/// The first letters of a text as two numbers that order as they do; dates and item numbers fit whole.
std::pair<std::uint64_t, std::uint64_t> Inizio(std::string_view testo) {
  std::array<std::uint64_t, 2> inizio{};
  std::size_t i = 0;
  for (std::uint64_t& parte : inizio) {
    for (const std::size_t fine = i + sizeof parte; i < fine; ++i) {
      parte = parte << 8U | (i < testo.size() ? Minuscola(testo[i]) : 0U);
    }
  }
  return {inizio[0], inizio[1]};
}

} // namespace

TestiUnici::TestiUnici() : posti_(PostiIniziali, 0) {}

void TestiUnici::Svuota() {
  blocchi_.clear();
  libero_ = 0;
  testi_.clear();
  posti_.assign(PostiIniziali, 0);
}

std::uint32_t TestiUnici::Numero(std::string_view testo) {
  if (testi_.size() * 2 >= posti_.size()) {
    Allarga();
  }
  const std::size_t maschera = posti_.size() - 1;
  for (std::size_t posto = std::hash<std::string_view>{}(testo)&maschera;; posto = (posto + 1) & maschera) {
    if (posti_[posto] == 0) {
      testi_.push_back(Conserva(testo));
      posti_[posto] = static_cast<std::uint32_t>(testi_.size());
      return posti_[posto] - 1;
    }
    if (testi_[posti_[posto] - 1] == testo) {
      return posti_[posto] - 1;
    }
  }
}

std::string_view TestiUnici::Conserva(std::string_view testo) {
  if (testo.empty()) {
    return {};
  }
  if (blocchi_.empty() || libero_ < testo.size()) {
    libero_ = std::max(DimensioneBlocco, testo.size());
    blocchi_.push_back(std::make_unique<char[]>(libero_));
  }
  // Blocks are filled from their end, so that what is free is one number.
  libero_ -= testo.size();
  char* const dove = blocchi_.back().get() + libero_;
  std::memcpy(dove, testo.data(), testo.size());
  return {dove, testo.size()};
}

void TestiUnici::Allarga() {
  posti_.assign(posti_.size() * 2, 0);
  const std::size_t maschera = posti_.size() - 1;
  for (std::size_t numero = 0; numero < testi_.size(); ++numero) {
    std::size_t posto = std::hash<std::string_view>{}(testi_[numero]) & maschera;
    while (posti_[posto] != 0) {
      posto = (posto + 1) & maschera;
    }
    posti_[posto] = static_cast<std::uint32_t>(numero + 1);
  }
}

RigheGriglia::RigheGriglia(std::size_t colonne, const std::vector<int>& conTag)
    : colonne_(colonne), postiTag_(colonne, -1), tagPerRiga_(conTag.size()) {
  for (std::size_t i = 0; i < conTag.size(); ++i) {
    postiTag_[static_cast<std::size_t>(conTag[i])] = static_cast<int>(i);
  }
}

void RigheGriglia::Svuota() {
  testi_.Svuota();
  celle_.clear();
  tag_.clear();
  spunte_.clear();
  ordine_.clear();
  posti_.clear();
}

/// The number of a new row's text. Looking it up is what costs, and most texts are there already: in the row before, or
/// in the same row, which shows some of them twice.
std::uint32_t RigheGriglia::NumeroDiCella(const std::vector<std::string_view>& testi, std::size_t inizio,
                                          std::size_t colonna) {
  const std::string_view testo = colonna < testi.size() ? testi[colonna] : std::string_view();
  if (inizio > 0) {
    const std::uint32_t precedente = celle_[inizio - colonne_ + colonna];
    if (testi_.Testo(precedente) == testo) {
      return precedente;
    }
  }
  for (std::size_t prima = 0; !testo.empty() && prima < colonna; ++prima) {
    if (testi[prima].data() == testo.data() && testi[prima].size() == testo.size()) {
      return celle_[inizio + prima];
    }
  }
  return testi_.Numero(testo);
}

std::size_t RigheGriglia::Aggiungi(const std::vector<std::string_view>& testi) {
  const std::size_t riga = ordine_.size();
  const std::size_t inizio = celle_.size();
  for (std::size_t colonna = 0; colonna < colonne_; ++colonna) {
    celle_.push_back(NumeroDiCella(testi, inizio, colonna));
  }
  tag_.insert(tag_.end(), tagPerRiga_, testi_.Numero({}));
  spunte_.push_back(0);
  ordine_.push_back(static_cast<std::uint32_t>(riga));
  posti_.push_back(static_cast<std::uint32_t>(riga));
  return riga;
}

void RigheGriglia::ImpostaTesto(std::size_t riga, int colonna, std::string_view testo) {
  celle_[riga * colonne_ + static_cast<std::size_t>(colonna)] = testi_.Numero(testo);
}

std::size_t RigheGriglia::PostoTag(std::size_t riga, int colonna) const {
  return riga * tagPerRiga_ + static_cast<std::size_t>(postiTag_[static_cast<std::size_t>(colonna)]);
}

std::string_view RigheGriglia::Tag(std::size_t riga, int colonna) const {
  return testi_.Testo(tag_[PostoTag(riga, colonna)]);
}

void RigheGriglia::ImpostaTag(std::size_t riga, int colonna, std::string_view tag) {
  const std::size_t posto = PostoTag(riga, colonna);
  const bool precedente = riga > 0 && testi_.Testo(tag_[posto - tagPerRiga_]) == tag;
  tag_[posto] = precedente ? tag_[posto - tagPerRiga_] : testi_.Numero(tag);
}

void RigheGriglia::ImpostaSpunta(std::size_t riga, int quale, bool spuntata) {
  const auto bit = static_cast<unsigned>(1U << static_cast<unsigned>(quale));
  const unsigned altre = spunte_[riga] & ~bit;
  spunte_[riga] = static_cast<std::uint8_t>(spuntata ? altre | bit : altre);
}

/// The rank of each row's text among the distinct texts of the column.
std::vector<std::uint32_t> RigheGriglia::Ranghi(int colonna, std::size_t& quanti) const {
  struct Chiave {
    std::pair<std::uint64_t, std::uint64_t> inizio;
    std::uint32_t numero;
  };
  constexpr auto Nessuno = std::numeric_limits<std::uint32_t>::max();
  std::vector<std::uint32_t> rango(testi_.Quanti(), Nessuno);
  std::vector<Chiave> chiavi;
  for (std::size_t riga = 0; riga < ordine_.size(); ++riga) {
    const std::uint32_t numero = celle_[riga * colonne_ + static_cast<std::size_t>(colonna)];
    if (rango[numero] == Nessuno) {
      rango[numero] = 0;
      chiavi.push_back({Inizio(testi_.Testo(numero)), numero});
    }
  }
  const auto precede = [this](const Chiave& a, const Chiave& b) {
    return a.inizio != b.inizio ? a.inizio < b.inizio : Precede(testi_.Testo(a.numero), testi_.Testo(b.numero));
  };
  std::sort(chiavi.begin(), chiavi.end(), precede);
  quanti = 0;
  for (std::size_t i = 0; i < chiavi.size(); ++i) {
    // Texts that differ only in case share a rank: the rows then keep the order in which they came.
    quanti += i == 0 || precede(chiavi[i - 1], chiavi[i]) ? 1U : 0U;
    rango[chiavi[i].numero] = static_cast<std::uint32_t>(quanti - 1);
  }
  std::vector<std::uint32_t> ranghi(ordine_.size());
  for (std::size_t riga = 0; riga < ranghi.size(); ++riga) {
    ranghi[riga] = rango[celle_[riga * colonne_ + static_cast<std::size_t>(colonna)]];
  }
  return ranghi;
}

void RigheGriglia::Ordina(int colonna, bool crescente) {
  std::size_t quanti = 0;
  const auto ranghi = Ranghi(colonna, quanti);
  std::vector<std::uint32_t> inizi(quanti + 1, 0);
  const auto cesto = [&](std::size_t riga) { return crescente ? ranghi[riga] : quanti - 1 - ranghi[riga]; };
  for (std::size_t riga = 0; riga < ranghi.size(); ++riga) {
    ++inizi[cesto(riga) + 1];
  }
  std::partial_sum(inizi.begin(), inizi.end(), inizi.begin());
  for (std::size_t riga = 0; riga < ranghi.size(); ++riga) {
    const std::uint32_t posto = inizi[cesto(riga)]++;
    ordine_[posto] = static_cast<std::uint32_t>(riga);
    posti_[riga] = posto;
  }
}

} // namespace lumoscad
