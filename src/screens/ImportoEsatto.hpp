#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace lumoscad {

/// An amount in hundredths of its currency, exact: sums of millions of the amounts that it reads neither round nor
/// overflow.
class ImportoEsatto {
 public:
  ImportoEsatto() = default;

  /// Reads an amount as the lists show it, "-1.234,50": digits, grouped by "." or not, and no or two decimals. Nothing
  /// for any other text, nor for more than 28 digits in front of the decimals.
  [[nodiscard]] static std::optional<ImportoEsatto> Leggi(std::string_view testo) noexcept;
  /// As the lists show it, "-1.234,50".
  [[nodiscard]] std::string Testo() const;
  [[nodiscard]] bool Zero() const noexcept { return alto_ == 0 && basso_ == 0; }
  /// How many thousandths of `totale` it is, both taken without sign, rounded down; 0 where `totale` is zero.
  [[nodiscard]] int Millesimi(const ImportoEsatto& totale) const noexcept;

  ImportoEsatto& operator+=(const ImportoEsatto& altro) noexcept;
  ImportoEsatto& operator-=(const ImportoEsatto& altro) noexcept;
  [[nodiscard]] ImportoEsatto operator-() const noexcept;
  // NOLINTNEXTLINE(modernize-use-nullptr): it takes the comparison with 0 for one with a pointer
  [[nodiscard]] friend auto operator<=>(const ImportoEsatto&, const ImportoEsatto&) = default;

 private:
  void Riporta() noexcept;
  void DividiPerDieci() noexcept;

  std::int64_t alto_ = 0;  ///< how many times ten to the eighteenth, rounded down
  std::int64_t basso_ = 0; ///< the rest, never negative
};

} // namespace lumoscad
