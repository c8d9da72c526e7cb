#include "screens/CampiGriglia.hpp"

#include "common/Festivita.hpp"
#include "platform/Services.hpp"
#include "screens/Griglia.hpp"
#include "screens/RicercaBanche.hpp"

namespace lumoscad {
namespace {

CalendarDate DataDi(Giorno giorno) {
  const std::chrono::year_month_day data(giorno);
  return {static_cast<int>(data.year()), static_cast<int>(static_cast<unsigned>(data.month())),
          static_cast<int>(static_cast<unsigned>(data.day()))};
}

Giorno GiornoDi(CalendarDate data) {
  return std::chrono::year_month_day{std::chrono::year(data.year),
                                     std::chrono::month(static_cast<unsigned>(data.month)),
                                     std::chrono::day(static_cast<unsigned>(data.day))};
}

DateTime Adesso() {
  return ActiveServices().localTime();
}

} // namespace

bool CampiGriglia::Aperto(DateField campo) const {
  return campo == DateField::Top || griglia_.Stato().data.visible;
}

std::string_view CampiGriglia::Testo(DateField campo) const {
  const ListState& stato = griglia_.Stato();
  return campo == DateField::Top ? stato.dueDateText : stato.data.text;
}

std::string_view CampiGriglia::DataDellaRiga(DateField campo) const {
  const auto riga = campo == DateField::Cell ? griglia_.RigaInModifica() : std::nullopt;
  return riga ? griglia_.DataPresente(*riga) : std::string_view();
}

void CampiGriglia::Scrivi(DateField campo, const std::string& testo) {
  if (!Aperto(campo) || testo == Testo(campo)) {
    return;
  }
  if (campo == DateField::Top) {
    griglia_.TextScadenza_Change(testo);
  } else {
    griglia_.TextScad_Change(testo);
  }
}

void CampiGriglia::Sposta(DateField campo, dataScritta::Passo passo, int quanti) {
  Scrivi(campo, dataScritta::Sposta(Testo(campo), DataDellaRiga(campo), Adesso(), passo, quanti));
}

void CampiGriglia::EspandiTextScadenza() {
  griglia_.EspandiTextScadenza();
}

CalendarDate CampiGriglia::GiornoDelCampo(DateField campo) const {
  return DataDi(dataScritta::GiornoDelCampo(Testo(campo), DataDellaRiga(campo), Adesso()));
}

void CampiGriglia::ScegliGiorno(DateField campo, CalendarDate giorno) {
  Scrivi(campo, dataScritta::Scrivi(GiornoDi(giorno)));
}

const CalendarioScadenze& CampiGriglia::Calendario() {
  const std::pair adesso{griglia_.Stato().order, griglia_.Stato().content};
  if (!fatto_ || stato_ != adesso) {
    calendario_ = CalendarioScadenze(griglia_.righe, griglia_.descrizione_);
    stato_ = adesso;
    fatto_ = true;
  }
  return calendario_;
}

std::vector<CalendarDay> CampiGriglia::Giorni(CalendarDate primo, int quanti) {
  const DescrizioneGriglia& descrizione = griglia_.descrizione_;
  const CalendarioScadenze& calendario = Calendario();
  const Giorno oggi = GiornoDelMomento(Adesso());
  std::vector<CalendarDay> giorni;
  for (Giorno giorno = GiornoDi(primo); static_cast<int>(giorni.size()) < quanti; giorno += std::chrono::days(1)) {
    const SommaDelGiorno& presente = calendario.Presente(giorno);
    const SommaDelGiorno& variata = calendario.Variata(giorno);
    CalendarDay mostrato;
    mostrato.date = DataDi(giorno);
    mostrato.today = giorno == oggi;
    mostrato.weekend = FineSettimana(giorno);
    mostrato.holiday = Festivita(giorno);
    mostrato.due = variata.quante;
    const auto testo = [&](const SommaDelGiorno& somma) {
      return somma.quante == 0 ? "nessuna " + descrizione.nomeRiga
                               : somma.Testo(descrizione.nomeRiga, descrizione.nomeRighe);
    };
    if (variata.quante > 0 || presente.quante > 0) {
      mostrato.dueText = testo(variata);
    }
    if (presente != variata) {
      mostrato.presentText = testo(presente);
    }
    giorni.push_back(std::move(mostrato));
  }
  return giorni;
}

BankMatches CampiGriglia::BancheCon(BankField campo, std::string_view testo) const {
  return CercaBanche(campo == BankField::Top ? griglia_.cmbBanche : griglia_.cmbBanche2, testo);
}

} // namespace lumoscad
