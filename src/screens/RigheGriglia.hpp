#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad {

/// The distinct texts of a grid: each is kept once and named by a small number.
class TestiUnici {
 public:
  TestiUnici();
  [[nodiscard]] std::uint32_t Numero(std::string_view testo);
  [[nodiscard]] std::string_view Testo(std::uint32_t numero) const { return testi_[numero]; }
  [[nodiscard]] std::size_t Quanti() const noexcept { return testi_.size(); }
  void Svuota();

 private:
  [[nodiscard]] std::string_view Conserva(std::string_view testo);
  void Allarga();

  std::vector<std::unique_ptr<char[]>> blocchi_;
  std::size_t libero_ = 0;
  std::vector<std::string_view> testi_;
  std::vector<std::uint32_t> posti_; ///< open addressing: number + 1, 0 for a free place
};

/// The rows of a schedule grid: texts and tags of its cells, two ticks a row, and the order in which they show.
/// A row is named by its number, which sorting never changes; a place is where it shows.
class RigheGriglia {
 public:
  /// `conTag` lists the columns whose cells carry a tag.
  RigheGriglia(std::size_t colonne, const std::vector<int>& conTag);

  void Svuota();
  /// Adds a row with one text a column at the end of the order, without tags and ticks; returns its number.
  std::size_t Aggiungi(const std::vector<std::string_view>& testi);
  [[nodiscard]] std::size_t Quante() const noexcept { return ordine_.size(); }

  [[nodiscard]] std::string_view Testo(std::size_t riga, int colonna) const {
    return testi_.Testo(celle_[riga * colonne_ + static_cast<std::size_t>(colonna)]);
  }
  void ImpostaTesto(std::size_t riga, int colonna, std::string_view testo);
  [[nodiscard]] std::string_view Tag(std::size_t riga, int colonna) const;
  void ImpostaTag(std::size_t riga, int colonna, std::string_view tag);
  /// Tick `quale` (0 or 1) of a row.
  [[nodiscard]] bool Spuntata(std::size_t riga, int quale) const { return (spunte_[riga] >> quale & 1) != 0; }
  void ImpostaSpunta(std::size_t riga, int quale, bool spuntata);

  /// Orders the places by the texts of a column, letters in any case; rows with equal texts keep the order in
  /// which they were added.
  void Ordina(int colonna, bool crescente);
  [[nodiscard]] std::size_t RigaAlPosto(std::size_t posto) const { return ordine_[posto]; }
  [[nodiscard]] std::size_t PostoDellaRiga(std::size_t riga) const { return posti_[riga]; }

 private:
  [[nodiscard]] std::vector<std::uint32_t> Ranghi(int colonna, std::size_t& quanti) const;
  [[nodiscard]] std::uint32_t NumeroDiCella(const std::vector<std::string_view>& testi, std::size_t inizio,
                                            std::size_t colonna);
  [[nodiscard]] std::size_t PostoTag(std::size_t riga, int colonna) const;

  std::size_t colonne_;
  std::vector<int> postiTag_; ///< place of a column's tag within a row, -1 for none
  std::size_t tagPerRiga_;
  TestiUnici testi_;
  std::vector<std::uint32_t> celle_;
  std::vector<std::uint32_t> tag_;
  std::vector<std::uint8_t> spunte_;
  std::vector<std::uint32_t> ordine_;
  std::vector<std::uint32_t> posti_;
};

} // namespace lumoscad
