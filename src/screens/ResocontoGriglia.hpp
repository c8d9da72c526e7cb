#pragma once

#include "platform/ListReport.hpp"
#include "screens/EffettoVariazioni.hpp"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad {

class Griglia;

/// What a grid says of itself beside its rows: the foot's sums, the changes as sentences, what they come to by bank and
/// by month, and its rows as they are taken away.
class ResocontoGriglia final : public ListReport {
 public:
  explicit ResocontoGriglia(Griglia& griglia) : griglia_(griglia), effetto_(griglia) {}

  /// The rows are others.
  void Azzera();

  [[nodiscard]] std::vector<std::string> Piede() const override;
  [[nodiscard]] std::size_t QuanteFrasi() const override;
  [[nodiscard]] std::string Frase(std::size_t quale) const override;
  void RiprendiFrasi(const std::vector<std::size_t>& quali) override;
  [[nodiscard]] std::vector<EffectGroup> Effetto() override;
  void ScegliDietro(std::size_t gruppo, std::size_t barra) override;
  [[nodiscard]] CopiedRows Copia() override;
  [[nodiscard]] std::string Csv() override;
  [[nodiscard]] PrintedTable Stampa() override;
  void Incolla(std::string_view testo, int colonna) override;
  void Avvisa(std::string_view avviso) override;

 private:
  [[nodiscard]] std::vector<EffettoVariazioni::Genere> Generi() const;
  /// The changed rows, looked for once as long as no cell changes: the list of changes asks line by line.
  [[nodiscard]] const std::vector<std::size_t>& Variate() const;

  Griglia& griglia_;
  EffettoVariazioni effetto_;
  mutable std::vector<std::size_t> variate_;
  mutable std::optional<std::uint64_t> contenuto_; ///< of the list, when they were looked for
};

} // namespace lumoscad
