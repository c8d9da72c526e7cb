#pragma once

#include "platform/ListGestures.hpp"
#include "screens/ElencoBanche.hpp"
#include "screens/PassiGriglia.hpp"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad {

class Griglia;

/// A gesture at a grid from its beginning to its end: what it writes is one step back. One inside another belongs to
/// it.
class GestoGriglia {
 public:
  enum class Nome {
    ConRighe, ///< the step's name tells how many rows it changed
    Solo,
    Unibile ///< the name alone; the next such gesture belongs to the same step
  };

  /// `nome` outlives the gesture.
  GestoGriglia(Griglia& griglia, std::string_view nome, Nome come = Nome::ConRighe);
  GestoGriglia(const GestoGriglia&) = delete;
  GestoGriglia& operator=(const GestoGriglia&) = delete;
  ~GestoGriglia();

 private:
  Griglia& griglia_;
  std::string_view nome_;
};

/// What a person does in a grid with many rows at once.
class GestiGriglia final : public ListGestures {
 public:
  explicit GestiGriglia(Griglia& griglia) : griglia_(griglia) {}

  /// True where a gesture at the current row means all that are selected in sight.
  [[nodiscard]] bool SuMolte() const;
  /// The tick `chiave` of the selected rows in sight takes the state that the current row has not.
  void CambiaCheck(std::string_view chiave);
  /// Gives rows, from the first to the last, what was written in the date editor.
  void DaiData(const std::vector<std::size_t>& righe, const std::string& testo);
  /// Gives rows an entry of the bank editor, and its tick.
  void DaiBanca(const std::vector<std::size_t>& righe, int indice);
  /// The choice in the field at the top is given to the selected rows in sight.
  void DaiBancaInAlto();
  /// Says that the editor that opens will write into that many rows.
  void Annuncia(std::size_t righe);

  [[nodiscard]] bool SelezioneMultipla() const override;
  [[nodiscard]] bool Scelta(std::size_t posto) const override;
  [[nodiscard]] std::vector<Places> Scelte() const override;
  [[nodiscard]] std::size_t QuanteScelte() const override;
  [[nodiscard]] RowPress Premi(std::size_t posto, int x, HeldKeys tasti) override;
  void Trascina(std::size_t posto) override;
  void Rilascia() override;
  [[nodiscard]] bool EditorDiMolte() const override;
  void Vai(std::size_t posto, HeldKeys tasti) override;
  void SpuntaFinoA(std::size_t posto, int colonna) override;
  void ScegliVisibili() override;
  void InvertiScelta() override;
  void ScegliSimili(Likeness simile) override;
  [[nodiscard]] bool Confrontabile(Likeness simile) const override;
  void ScegliScadute() override;
  void Annulla() override;
  void Rifai() override;
  [[nodiscard]] std::string DaAnnullare() const override;
  [[nodiscard]] std::string DaRifare() const override;
  void Filtra(const ListFilter& filtro) override;
  [[nodiscard]] const ListFilter& Filtro() const override;
  [[nodiscard]] std::vector<Places> Trovati(std::size_t posto, int colonna) const override;
  void Salta(std::string_view lettere, bool daCapo) override;
  [[nodiscard]] std::size_t RigheTotali() const override;
  [[nodiscard]] std::size_t RigheInVista() const override;
  [[nodiscard]] std::size_t QuanteVariate() const override;
  [[nodiscard]] std::size_t VariateNonInVista() const override;

 private:
  [[nodiscard]] bool ColonnaAttiva(int colonna) const;
  [[nodiscard]] std::optional<int> SpuntaDellaColonna(int colonna) const;
  void Scegli(std::size_t riga, HeldKeys tasti);
  void Corrente(std::size_t riga);
  void ScegliDove(const auto& scegli);
  void SpuntaRighe(const std::vector<std::size_t>& righe, int quale, bool spunta);
  [[nodiscard]] std::string EsitoSpunta(int quale) const;
  /// "banca BANCA ALFA", or that it was taken away.
  [[nodiscard]] static std::string EsitoBanca(int indice, const BancheCombo& combo);
  [[nodiscard]] bool DataInAltoBuona();
  /// The rows between two in sight, from top to bottom, both included.
  [[nodiscard]] std::vector<std::size_t> Tratto(std::size_t riga, std::size_t altra) const;
  /// "30 rate: " and what they got, how many had it already, how many more changed that are not in sight.
  void Avvisa(const std::vector<std::size_t>& righe, std::string_view esito);

  Griglia& griglia_;
  std::optional<std::size_t> premuta_; ///< the row on which the left button went down
  int colonnaPremuta_ = 0;
  bool trascinata_ = false;
};

} // namespace lumoscad
