#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad {

/// The texts of a grid, each of which is named by a number. They lie one behind the other in blocks, and the number
/// says where: a text costs its bytes, its length and at most three bytes more.
class TestiUnici {
 public:
  TestiUnici();
  /// The number of `testo`: of the one that was looked up before, or else of a new one.
  [[nodiscard]] std::uint32_t Numero(std::string_view testo);
  /// Keeps `testo` under a number of its own without looking for it; `Numero` does not find it.
  [[nodiscard]] std::uint32_t Nuovo(std::string_view testo);
  [[nodiscard]] std::string_view Testo(std::uint32_t numero) const {
    const char* const inizio = blocchi_[numero / PostiPerBlocco].get() + (numero % PostiPerBlocco) * Posto;
    const auto lungo = static_cast<unsigned char>(*inizio);
    return lungo < Lunghissimo ? std::string_view(inizio + 1, lungo) : TestoLungo(inizio);
  }
  [[nodiscard]] std::size_t Quanti() const noexcept { return quanti_; }
  [[nodiscard]] std::size_t Blocchi() const noexcept { return blocchi_.size(); }
  void Svuota();

  static constexpr std::size_t PostiPerBlocco = std::size_t{1} << 16; ///< numbers of a block, used and unused

 private:
  static constexpr std::size_t Posto = 4;            ///< bytes from one number to the next
  static constexpr unsigned char Lunghissimo = 0xFF; ///< the length's byte of a text whose length follows it whole

  /// Open addressing by the hash; a text is compared only where this part of it agrees.
  struct Voce {
    std::uint32_t impronta = 0;
    std::uint32_t numero = Libero;
  };
  static constexpr std::uint32_t Libero = 0xFFFFFFFF;

  [[nodiscard]] static std::string_view TestoLungo(const char* inizio);
  void Allarga();

  std::vector<std::unique_ptr<char[]>> blocchi_;
  std::size_t corrente_ = 0; ///< the block that is being filled
  std::size_t libero_ = PostiPerBlocco;
  std::size_t quanti_ = 0;
  std::vector<Voce> voci_;
  std::size_t quanteVoci_ = 0; ///< the texts that `voci_` finds
};

/// The rows of a schedule grid: texts and tags of its cells, two ticks a row, and the order in which they show.
/// A row is named by its number, which sorting never changes; a place is where it shows.
class RigheGriglia {
 public:
  /// `conTag` lists the columns whose cells carry a tag.
  RigheGriglia(std::size_t colonne, const std::vector<int>& conTag);

  void Svuota();
  /// Makes room for as many rows as will be there, so that none is moved while they are added.
  void Prepara(std::size_t righe);
  /// Adds a row with one text a column at the end of the order, without tags and ticks; returns its number.
  std::size_t Aggiungi(const std::vector<std::string_view>& testi);
  [[nodiscard]] std::size_t Quante() const noexcept { return ordine_.size(); }

  [[nodiscard]] std::string_view Testo(std::size_t riga, int colonna) const {
    return testi_.Testo(celle_[riga * colonne_ + static_cast<std::size_t>(colonna)]);
  }
  /// The number of a cell's text, as `TestiUnici` gives it: equal numbers are equal texts, and until the rows are
  /// emptied a number stays with its text.
  [[nodiscard]] std::uint32_t NumeroTesto(std::size_t riga, int colonna) const {
    return celle_[riga * colonne_ + static_cast<std::size_t>(colonna)];
  }
  void ImpostaTesto(std::size_t riga, int colonna, std::string_view testo);
  [[nodiscard]] std::string_view Tag(std::size_t riga, int colonna) const;
  void ImpostaTag(std::size_t riga, int colonna, std::string_view tag);
  /// Tick `quale` (0 or 1) of a row.
  [[nodiscard]] bool Spuntata(std::size_t riga, int quale) const { return (spunte_[riga] >> quale & 1) != 0; }
  void ImpostaSpunta(std::size_t riga, int quale, bool spuntata);

  // What a cell holds, by number: of its text, of its tag, or the ticks of its row as bits. What was read may be
  // written back as long as the rows are there.

  void ImpostaNumeroTesto(std::size_t riga, int colonna, std::uint32_t numero) {
    celle_[riga * colonne_ + static_cast<std::size_t>(colonna)] = numero;
  }
  [[nodiscard]] std::uint32_t NumeroTag(std::size_t riga, int colonna) const { return tag_[PostoTag(riga, colonna)]; }
  void ImpostaNumeroTag(std::size_t riga, int colonna, std::uint32_t numero) { tag_[PostoTag(riga, colonna)] = numero; }
  [[nodiscard]] std::uint8_t Spunte(std::size_t riga) const { return spunte_[riga]; }
  void ImpostaSpunte(std::size_t riga, std::uint8_t spunte) { spunte_[riga] = spunte; }

  /// Orders the places by the texts of a column, in Italian text order: accents and case count only between texts that
  /// are equal without them. Rows with equal texts keep the order in which they were added.
  void Ordina(int colonna, bool crescente);
  [[nodiscard]] std::size_t RigaAlPosto(std::size_t posto) const { return ordine_[posto]; }
  [[nodiscard]] std::size_t PostoDellaRiga(std::size_t riga) const { return posti_[riga]; }

 private:
  /// How often a column's new texts were looked for, and how many of them were not there.
  struct Ricerca {
    std::uint32_t cercati = 0;
    std::uint32_t nuovi = 0;
    bool senzaRicerca = false; ///< nearly all are new: looking for them costs more than keeping one twice
  };

  [[nodiscard]] std::vector<std::uint32_t> Ranghi(int colonna, std::size_t& quanti) const;
  [[nodiscard]] std::uint32_t NumeroDiCella(const std::vector<std::string_view>& testi, std::size_t inizio,
                                            std::size_t colonna);
  [[nodiscard]] std::uint32_t NumeroDiTesto(std::string_view testo, Ricerca& ricerca);
  [[nodiscard]] std::size_t PostoTag(std::size_t riga, int colonna) const;

  std::size_t colonne_;
  std::vector<int> postiTag_; ///< place of a column's tag within a row, -1 for none
  std::size_t tagPerRiga_;
  TestiUnici testi_;
  std::uint32_t vuoto_;           ///< the empty text
  std::vector<Ricerca> ricerche_; ///< of the columns' cells, and behind them of their tags
  std::vector<std::uint32_t> celle_;
  std::vector<std::uint32_t> tag_;
  std::vector<std::uint8_t> spunte_;
  std::vector<std::uint32_t> ordine_;
  std::vector<std::uint32_t> posti_;
};

} // namespace lumoscad
