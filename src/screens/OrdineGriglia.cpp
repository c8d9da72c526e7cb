// The order in which the rows of a grid show.

#include "platform/base/AsciiCase.hpp"
#include "platform/base/FoldedText.hpp"
#include "screens/RigheGriglia.hpp"

#include <algorithm>
#include <array>
#include <compare>
#include <cstring>
#include <limits>
#include <numeric>
#include <utility>

namespace lumoscad {
namespace {

unsigned char Minuscola(char c) {
  return static_cast<unsigned char>(base::LowerCase(c));
}

bool SoloAscii(std::string_view testo) {
  std::uint64_t insieme = 0;
  std::uint64_t parte = 0;
  while (testo.size() >= sizeof parte) {
    std::memcpy(&parte, testo.data(), sizeof parte);
    insieme |= parte;
    testo.remove_prefix(sizeof parte);
  }
  parte = 0;
  std::memcpy(&parte, testo.data(), testo.size());
  return ((insieme | parte) & 0x8080808080808080U) == 0;
}

/// The order of two texts that are folded but for the case of ASCII letters.
std::strong_ordering OrdinePiegati(std::string_view a, std::string_view b) {
  const auto comuni = std::min(a.size(), b.size());
  for (std::size_t i = 0; i < comuni; ++i) {
    const auto ca = Minuscola(a[i]);
    const auto cb = Minuscola(b[i]);
    if (ca != cb) {
      return ca <=> cb;
    }
  }
  return a.size() <=> b.size();
}

/// A text as it is compared: its first letters, folded, are two numbers that order as they do, in which dates and item
/// numbers fit whole.
struct Chiave {
  std::pair<std::uint64_t, std::uint64_t> inizio;
  std::uint32_t numero = 0;
  /// Whether the beginning is the whole folded text, whether the text is its own folded form, and above these bits, for
  /// a text with other than ASCII letters, 1 more than the place of its folded form.
  std::uint32_t resto = 0;
};

constexpr std::uint32_t Intera = 1;
constexpr std::uint32_t Semplice = 2;
constexpr unsigned BitDelResto = 2;
constexpr std::size_t LettereDellInizio = sizeof(Chiave::inizio);

/// Italian text order: accents and case count only between texts that are equal without them.
class OrdineTesti {
 public:
  explicit OrdineTesti(const TestiUnici& testi) : testi_(testi) {}

  [[nodiscard]] Chiave ChiaveDi(std::uint32_t numero) {
    Chiave chiave;
    chiave.numero = numero;
    std::string_view testo = testi_.Testo(numero);
    const bool ascii = SoloAscii(testo);
    if (!ascii) {
      piegati_.push_back(base::Folded(testo));
      testo = piegati_.back();
      chiave.resto = static_cast<std::uint32_t>(piegati_.size()) << BitDelResto;
    }
    std::array<char, LettereDellInizio> scritte{};
    const std::size_t quante = testo.copy(scritte.data(), scritte.size());
    std::array<char, LettereDellInizio> lettere = scritte;
    for (char& lettera : lettere) {
      lettera = base::LowerCase(lettera);
    }
    const bool intera = quante == testo.size() && std::memchr(scritte.data(), 0, quante) == nullptr;
    chiave.resto |= (intera ? Intera : 0U) | (ascii && lettere == scritte ? Semplice : 0U);
    chiave.inizio = {Numero(lettere.data()), Numero(lettere.data() + sizeof(std::uint64_t))};
    return chiave;
  }

  [[nodiscard]] bool Precede(const Chiave& a, const Chiave& b) const {
    const bool soloInizio = (a.resto & b.resto & (Intera | Semplice)) == (Intera | Semplice);
    return a.inizio != b.inizio || soloInizio ? a.inizio < b.inizio : PrecedeOltre(a, b);
  }

 private:
  /// Eight letters as a number that orders as they do.
  [[nodiscard]] static std::uint64_t Numero(const char* lettere) {
    std::uint64_t numero = 0;
    for (std::size_t i = 0; i < sizeof numero; ++i) {
      numero = numero << 8U | static_cast<unsigned char>(lettere[i]);
    }
    return numero;
  }

  /// The order of texts that begin alike.
  [[nodiscard]] bool PrecedeOltre(const Chiave& a, const Chiave& b) const {
    // A column that is not searched has many texts more than once.
    const std::string_view primo = testi_.Testo(a.numero);
    const std::string_view secondo = testi_.Testo(b.numero);
    if (primo == secondo) {
      return false;
    }
    const bool intere = (a.resto & b.resto & Intera) != 0;
    const auto ordine = intere ? std::strong_ordering::equal : OrdinePiegati(Piegato(a), Piegato(b));
    return std::is_neq(ordine) ? std::is_lt(ordine) : base::BeforeByAccentsAndCase(primo, secondo);
  }

  [[nodiscard]] std::string_view Piegato(const Chiave& chiave) const {
    const std::uint32_t posto = chiave.resto >> BitDelResto;
    return posto == 0 ? testi_.Testo(chiave.numero) : std::string_view(piegati_[posto - 1]);
  }

  const TestiUnici& testi_;
  std::vector<std::string> piegati_;
};

} // namespace

/// The rank of each row's text among the distinct texts of the column.
std::vector<std::uint32_t> RigheGriglia::Ranghi(int colonna, std::size_t& quanti) const {
  constexpr auto Nessuno = std::numeric_limits<std::uint32_t>::max();
  constexpr std::size_t PerBlocco = TestiUnici::PostiPerBlocco;
  std::vector<std::vector<std::uint32_t>> perNumero(testi_.Blocchi());
  const auto rango = [&](std::uint32_t numero) -> std::uint32_t& {
    auto& blocco = perNumero[numero / PerBlocco];
    if (blocco.empty()) {
      blocco.assign(PerBlocco, Nessuno);
    }
    return blocco[numero % PerBlocco];
  };
  OrdineTesti ordine(testi_);
  std::vector<Chiave> chiavi;
  for (std::size_t riga = 0; riga < ordine_.size(); ++riga) {
    const std::uint32_t numero = NumeroTesto(riga, colonna);
    if (rango(numero) == Nessuno) {
      rango(numero) = 0;
      chiavi.push_back(ordine.ChiaveDi(numero));
    }
  }
  const auto precede = [&ordine](const Chiave& a, const Chiave& b) { return ordine.Precede(a, b); };
  std::sort(chiavi.begin(), chiavi.end(), precede);
  quanti = 0;
  for (std::size_t i = 0; i < chiavi.size(); ++i) {
    // A text that stands under several numbers has one rank: the rows then keep the order in which they came.
    quanti += i == 0 || precede(chiavi[i - 1], chiavi[i]) ? 1U : 0U;
    rango(chiavi[i].numero) = static_cast<std::uint32_t>(quanti - 1);
  }
  std::vector<std::uint32_t> ranghi(ordine_.size());
  for (std::size_t riga = 0; riga < ranghi.size(); ++riga) {
    ranghi[riga] = rango(NumeroTesto(riga, colonna));
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
