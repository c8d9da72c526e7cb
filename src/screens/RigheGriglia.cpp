#include "screens/RigheGriglia.hpp"

#include <algorithm>
#include <cstring>
#include <functional>
#include <limits>
#include <new>
#include <utility>

namespace lumoscad {
namespace {

constexpr std::size_t VociIniziali = 1024;
constexpr std::uint32_t RicercheDiProva = 16384;
/// Of that many: from here on a column is one whose texts are mostly its own.
constexpr std::uint32_t NuoviMassimo = RicercheDiProva / 4 * 3;

} // namespace

TestiUnici::TestiUnici() : voci_(VociIniziali) {}

void TestiUnici::Svuota() {
  *this = TestiUnici();
}

std::uint32_t TestiUnici::Numero(std::string_view testo) {
  if (quanteVoci_ * 4 >= voci_.size() * 3) {
    Allarga();
  }
  const auto impronta = static_cast<std::uint32_t>(std::hash<std::string_view>{}(testo));
  const std::size_t maschera = voci_.size() - 1;
  for (std::size_t i = impronta & maschera;; i = (i + 1) & maschera) {
    if (voci_[i].numero == Libero) {
      voci_[i] = {impronta, Nuovo(testo)};
      ++quanteVoci_;
      return voci_[i].numero;
    }
    if (voci_[i].impronta == impronta && Testo(voci_[i].numero) == testo) {
      return voci_[i].numero;
    }
  }
}

std::uint32_t TestiUnici::Nuovo(std::string_view testo) {
  using Misura = std::uint32_t;
  const bool lungo = testo.size() >= Lunghissimo;
  const std::size_t prima = lungo ? 1 + sizeof(Misura) : 1;
  const std::size_t posti = (prima + testo.size() + Posto - 1) / Posto;
  const bool daSolo = posti > PostiPerBlocco;
  if (daSolo || posti > PostiPerBlocco - libero_) {
    if (blocchi_.size() == Libero / PostiPerBlocco || testo.size() > std::numeric_limits<Misura>::max()) {
      throw std::bad_alloc();
    }
    blocchi_.push_back(std::make_unique_for_overwrite<char[]>(std::max(posti, PostiPerBlocco) * Posto));
    corrente_ = daSolo ? corrente_ : blocchi_.size() - 1;
    libero_ = daSolo ? libero_ : 0;
  }
  const std::size_t blocco = daSolo ? blocchi_.size() - 1 : corrente_;
  const std::size_t posto = daSolo ? 0 : std::exchange(libero_, libero_ + posti);
  char* const inizio = blocchi_[blocco].get() + posto * Posto;
  *inizio = static_cast<char>(lungo ? Lunghissimo : testo.size());
  if (lungo) {
    const auto misura = static_cast<Misura>(testo.size());
    std::memcpy(inizio + 1, &misura, sizeof misura);
  }
  testo.copy(inizio + prima, testo.size());
  ++quanti_;
  return static_cast<std::uint32_t>(blocco * PostiPerBlocco + posto);
}

std::string_view TestiUnici::TestoLungo(const char* inizio) {
  std::uint32_t misura = 0;
  std::memcpy(&misura, inizio + 1, sizeof misura);
  return {inizio + 1 + sizeof misura, misura};
}

void TestiUnici::Allarga() {
  std::vector<Voce> piuVoci(voci_.size() * 2);
  const std::size_t maschera = piuVoci.size() - 1;
  for (const Voce& voce : voci_) {
    if (voce.numero != Libero) {
      std::size_t i = voce.impronta & maschera;
      while (piuVoci[i].numero != Libero) {
        i = (i + 1) & maschera;
      }
      piuVoci[i] = voce;
    }
  }
  voci_ = std::move(piuVoci);
}

RigheGriglia::RigheGriglia(std::size_t colonne, const std::vector<int>& conTag)
    : colonne_(colonne), postiTag_(colonne, -1), tagPerRiga_(conTag.size()), vuoto_(testi_.Numero({})),
      ricerche_(colonne + conTag.size()) {
  for (std::size_t i = 0; i < conTag.size(); ++i) {
    postiTag_[static_cast<std::size_t>(conTag[i])] = static_cast<int>(i);
  }
}

void RigheGriglia::Svuota() {
  testi_.Svuota();
  vuoto_ = testi_.Numero({});
  ricerche_.assign(ricerche_.size(), {});
  celle_ = {};
  tag_ = {};
  spunte_ = {};
  ordine_ = {};
  posti_ = {};
}

void RigheGriglia::Prepara(std::size_t righe) {
  celle_.reserve(righe * colonne_);
  tag_.reserve(righe * tagPerRiga_);
  spunte_.reserve(righe);
  ordine_.reserve(righe);
  posti_.reserve(righe);
}

/// The number of a text that the row above has not.
std::uint32_t RigheGriglia::NumeroDiTesto(std::string_view testo, Ricerca& ricerca) {
  if (testo.empty()) {
    return vuoto_;
  }
  if (ricerca.senzaRicerca) {
    return testi_.Nuovo(testo);
  }
  const std::size_t quanti = testi_.Quanti();
  const std::uint32_t numero = testi_.Numero(testo);
  ricerca.nuovi += testi_.Quanti() > quanti ? 1U : 0U;
  if (++ricerca.cercati == RicercheDiProva) {
    ricerca = {0, 0, ricerca.nuovi > NuoviMassimo};
  }
  return numero;
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
  return NumeroDiTesto(testo, ricerche_[colonna]);
}

std::size_t RigheGriglia::Aggiungi(const std::vector<std::string_view>& testi) {
  const std::size_t riga = ordine_.size();
  const std::size_t inizio = celle_.size();
  celle_.resize(inizio + colonne_);
  for (std::size_t colonna = 0; colonna < colonne_; ++colonna) {
    celle_[inizio + colonna] = NumeroDiCella(testi, inizio, colonna);
  }
  tag_.resize(tag_.size() + tagPerRiga_, vuoto_);
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
  tag_[posto] = precedente ? tag_[posto - tagPerRiga_] : NumeroDiTesto(tag, ricerche_[colonne_ + posto % tagPerRiga_]);
}

void RigheGriglia::ImpostaSpunta(std::size_t riga, int quale, bool spuntata) {
  const auto bit = static_cast<unsigned>(1U << static_cast<unsigned>(quale));
  const unsigned altre = spunte_[riga] & ~bit;
  spunte_[riga] = static_cast<std::uint8_t>(spuntata ? altre | bit : altre);
}

} // namespace lumoscad
