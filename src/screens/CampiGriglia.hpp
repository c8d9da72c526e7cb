#pragma once

#include "platform/FieldGestures.hpp"
#include "screens/CalendarioScadenze.hpp"
#include "screens/DataScritta.hpp"

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace lumoscad {

class Griglia;

/// What a person does in the date fields and bank boxes of a grid beside writing and choosing.
class CampiGriglia final : public FieldGestures {
 public:
  explicit CampiGriglia(Griglia& griglia) : griglia_(griglia) {}

  void SpostaGiorni(DateField campo, int giorni) override { Sposta(campo, dataScritta::Passo::Giorno, giorni); }
  void SpostaMesi(DateField campo, int mesi) override { Sposta(campo, dataScritta::Passo::Mese, mesi); }
  void EspandiTextScadenza() override;
  [[nodiscard]] CalendarDate GiornoDelCampo(DateField campo) const override;
  [[nodiscard]] std::vector<CalendarDay> Giorni(CalendarDate primo, int quanti) override;
  void ScegliGiorno(DateField campo, CalendarDate giorno) override;
  [[nodiscard]] BankMatches BancheCon(BankField campo, std::string_view testo) const override;

 private:
  [[nodiscard]] bool Aperto(DateField campo) const;
  [[nodiscard]] std::string_view Testo(DateField campo) const;
  /// The present date of the row that the field belongs to; empty for none.
  [[nodiscard]] std::string_view DataDellaRiga(DateField campo) const;
  void Sposta(DateField campo, dataScritta::Passo passo, int quanti);
  void Scrivi(DateField campo, const std::string& testo);
  [[nodiscard]] const CalendarioScadenze& Calendario();

  Griglia& griglia_;
  CalendarioScadenze calendario_;
  std::pair<std::uint64_t, std::uint64_t> stato_{}; ///< the grid's order and content when the calendar was made
  bool fatto_ = false;                              ///< there is a calendar
};

} // namespace lumoscad
