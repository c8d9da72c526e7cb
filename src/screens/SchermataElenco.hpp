#pragma once

#include "common/MsgAnnulla.hpp"
#include "platform/Errore.hpp"
#include "screens/Griglia.hpp"

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace lumoscad {

/// The frame that the list screens share, from loading the rows to the records that the person's changes make. A
/// screen adds its columns, its loader, the rules of its editors and what a changed row becomes. Rows are named by
/// number.
template <typename Variazione> class SchermataElenco {
 public:
  using Variazioni = std::vector<Variazione>;

  SchermataElenco(const SchermataElenco&) = delete;
  SchermataElenco& operator=(const SchermataElenco&) = delete;
  virtual ~SchermataElenco() = default;

  std::string Modo; ///< what the screen is being used for: "DEBITI/CREDITI", "PRESUNTI" or "CONSEGNA"

  /// "closed" when the screen was left without confirming.
  [[nodiscard]] const std::string& MotivoChiusura() const noexcept { return griglia_.MotivoChiusura(); }
  /// The key of a row among the list's items.
  [[nodiscard]] virtual std::string ChiaveElemento(std::size_t riga) const = 0;
  [[nodiscard]] Griglia& griglia() noexcept { return griglia_; }

 protected:
  explicit SchermataElenco(DescrizioneGriglia descrizione) : griglia_(std::move(descrizione), Regole()) {}

  /// Empties the screen, has `carica` fill it, shows it modally and hands back what was confirmed: nothing when it was
  /// left without confirming. After the screen has closed, raises error -2147220954 with the text of a failure that
  /// `carica` told of.
  void Visualizza(const std::function<void(MsgAnnulla& msg)>& carica, Variazioni& variazioni);

  /// Lays the controls out once the rows are loaded.
  virtual void Disponi() = 0;
  /// The date editor leaves this text.
  virtual void ChiudiData(std::size_t /*riga*/, std::string_view /*testo*/) {}
  /// The bank editor leaves this choice.
  virtual void ChiudiBanca(std::size_t /*riga*/, int /*indice*/) {}
  /// The tick `chiave` of a row is to become `spunta`.
  virtual void CambiaCheck(std::size_t riga, std::string_view chiave, bool spunta) = 0;
  /// A click in the top date field closes the editors and takes the ticks of the dates away.
  virtual void ClicScadenza();
  /// A choice in the top bank field.
  virtual void SceltaBanca() {}
  /// Reads what the person changed in a row into a new record; false when that is nothing.
  [[nodiscard]] virtual bool LeggiVariazione(std::size_t riga, Variazione& variazione) const = 0;
  /// The records of the changed rows, in the order in which the rows show.
  [[nodiscard]] virtual Variazioni LeggiVariazioni() const;

  Griglia griglia_;

 private:
  [[nodiscard]] RegoleGriglia Regole();

  Variazioni variazioni_;
};

template <typename Variazione>
void SchermataElenco<Variazione>::Visualizza(const std::function<void(MsgAnnulla& msg)>& carica,
                                             Variazioni& variazioni) {
  MsgAnnulla msg;
  variazioni.clear();
  variazioni_.clear();
  griglia_.Azzera();
  carica(msg);
  Disponi();
  griglia_.Mostra();
  variazioni = std::exchange(variazioni_, {});
  if (!msg.Errore.empty()) {
    throw ErroreRuntime(errori::ErroreRegistrato, msg.Errore);
  }
}

template <typename Variazione> void SchermataElenco<Variazione>::ClicScadenza() {
  griglia_.Form_Click();
  griglia_.DeselezionaTutto("RADIO1");
}

template <typename Variazione> std::vector<Variazione> SchermataElenco<Variazione>::LeggiVariazioni() const {
  Variazioni variazioni;
  for (std::size_t posto = 0; posto < griglia_.Righe.Quante(); ++posto) {
    Variazione variazione;
    if (LeggiVariazione(griglia_.Righe.RigaAlPosto(posto), variazione)) {
      variazioni.push_back(std::move(variazione));
    }
  }
  return variazioni;
}

template <typename Variazione> RegoleGriglia SchermataElenco<Variazione>::Regole() {
  RegoleGriglia regole;
  regole.chiudiData = [this](std::size_t riga, std::string_view testo) { ChiudiData(riga, testo); };
  regole.chiudiBanca = [this](std::size_t riga, int indice) { ChiudiBanca(riga, indice); };
  regole.cambiaCheck = [this](std::size_t riga, std::string_view chiave, bool spunta) {
    CambiaCheck(riga, chiave, spunta);
  };
  regole.clicScadenza = [this] { ClicScadenza(); };
  regole.sceltaBanca = [this] { SceltaBanca(); };
  regole.conferma = [this] { variazioni_ = griglia_.Modificabile() ? LeggiVariazioni() : Variazioni(); };
  regole.annulla = [this] { variazioni_.clear(); };
  return regole;
}

} // namespace lumoscad
