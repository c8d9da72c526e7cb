#include "common/Testo.hpp"
#include "common/Utilities.hpp"
#include "database/EsameAzioni.hpp"
#include "database/ProceduraDB2.hpp"
#include "database/db2Searches.hpp"
#include "database/procedureLumoDB2.hpp"
#include "platform/RuntimeError.hpp"

#include <algorithm>

namespace lumoscad::procedureLumoDB2 {
namespace {

constexpr std::size_t PrimoGruppo = 5;
constexpr std::size_t ElementiGruppo = 3;

/// One group of a due-date list: the date to match as "YYYY-MM-DD", and the new date as the list holds it.
struct Spostamento {
  std::string da;
  std::string a;

  [[nodiscard]] std::string NuovaData() const {
    std::string iso = Utilities::DataIsoDaCompatta(a);
    if (iso.empty()) {
      // Some databases would store the empty text that this date became.
      throw RuntimeError(errors::TypeMismatch, "Data non valida: " + a);
    }
    return iso;
  }
};

std::vector<Spostamento> LeggiSpostamenti(const std::vector<std::string>& parametri) {
  std::vector<Spostamento> spostamenti;
  for (std::size_t inizio = PrimoGruppo; inizio < parametri.size(); inizio += ElementiGruppo) {
    const std::string& da = Elemento(parametri, inizio + 1);
    if (SenzaSpaziAiLati(da).empty()) {
      break;
    }
    spostamenti.push_back({Utilities::DataIsoDaCompatta(da), Elemento(parametri, inizio + 2)});
  }
  return spostamenti;
}

/// "YYYY-MM-DD" of a date field, without a time that the driver may add; empty for NULL.
std::string DataDelCampo(ado::Recordset& righe, std::string_view nome) {
  return std::string(righe.Fields(nome).Value().value_or("").substr(0, 10));
}

EventiScelti EventiDellaPartita(ado::Connection& connection, const std::vector<std::string>& parametri) {
  return {"SELECT EVENTOCONTABILEKEY,DATASCADENZA,DATASCADENZAORIGINALE FROM EVENTOCONTABILE WHERE "
          "PARTITACONTABILEKEY=?",
          ChiavePartita(connection, parametri)};
}

EventiScelti EventiDelMovimento(ado::Connection& connection, const std::vector<std::string>& parametri) {
  return {"SELECT EVENTOCONTABILEKEY,DATASCADENZA,DATASCADENZAORIGINALE FROM EVENTOCONTABILE WHERE "
          "MOVIMENTOKEY=?",
          MovimentoExtra(connection, parametri)};
}

/// Both dates of an event, as `DataDelCampo` gives them.
struct Date {
  std::string scadenza;
  std::string originale;
  bool operator==(const Date&) const = default;
};

Date DateDiEvento(ado::Recordset& righe) {
  return {DataDelCampo(righe, "DATASCADENZA"), DataDelCampo(righe, "DATASCADENZAORIGINALE")};
}

std::vector<Date> LeggiDate(ado::Connection& connection, const EventiScelti& scelti) {
  std::vector<Date> date;
  for (ado::Recordset righe = LeggiEventi(connection, scelti); !righe.Eof(); righe.MoveNext()) {
    date.push_back(DateDiEvento(righe));
  }
  return date;
}

std::string Condizione(const Date& date) {
  const auto uguale = [](std::string_view colonna, const std::string& data) {
    return UgualeTesto(colonna, data.empty() ? std::nullopt : std::optional<std::string_view>(data));
  };
  return uguale("DATASCADENZA", date.scadenza) + "AND " + uguale("DATASCADENZAORIGINALE", date.originale);
}

Alterazione Alterate(const Date& prima, const Date& dopo) {
  return prima == dopo ? Alterazione() : Alterazione{Condizione(dopo), Condizione(prima)};
}

std::string NomeGruppo(const std::string& oggetto, const Spostamento& spostamento) {
  return oggetto + " scadenza del " +
         (Utilities::DataDellaBaseDati(spostamento.da) ? Utilities::FormattaData(spostamento.da) : spostamento.da);
}

/// The last group of a date has the last word.
const Spostamento& UltimoDellaData(const std::vector<Spostamento>& spostamenti, const std::string& da) {
  const auto trovato = std::find_if(spostamenti.rbegin(), spostamenti.rend(),
                                    [&](const Spostamento& spostamento) { return spostamento.da == da; });
  return *trovato;
}

StatoRiga StatoPerOriginale(const std::vector<Date>& eventi, const std::string& originale, const std::string& nuova) {
  const auto suoi =
      std::count_if(eventi.begin(), eventi.end(), [&](const Date& evento) { return evento.originale == originale; });
  const auto fatti = std::count_if(eventi.begin(), eventi.end(), [&](const Date& evento) {
    return evento.originale == originale && evento.scadenza == nuova;
  });
  return suoi == 0 ? StatoRiga::Cambiata : suoi == fatti ? StatoRiga::Fatta : StatoRiga::ComePrima;
}

/// A moved event keeps no trace of the date that it had. `arrivo`: the old date is another group's new one, so that an
/// event which holds it as both of its dates may be one that the other group has moved.
StatoRiga StatoPerScadenza(const std::vector<Date>& eventi, const std::string& da, const std::string& nuova,
                           bool arrivo) {
  const auto quanti = [&](auto vale) { return std::count_if(eventi.begin(), eventi.end(), vale); };
  const auto daSpostare =
      quanti([&](const Date& evento) { return evento.scadenza == da && !(da == nuova && evento.originale == nuova); });
  const auto dubbi = quanti([&](const Date& evento) { return evento.scadenza == da && evento.originale == da; });
  if (daSpostare > (arrivo ? dubbi : 0)) {
    return StatoRiga::ComePrima;
  }
  if (daSpostare > 0) {
    return StatoRiga::Cambiata;
  }
  return quanti([&](const Date& evento) { return evento.scadenza == nuova && evento.originale == nuova; }) > 0
             ? StatoRiga::Fatta
             : StatoRiga::Cambiata;
}

/// The first group of a date is the one that moves its events.
const Spostamento& PrimoDellaData(const std::vector<Spostamento>& spostamenti, const std::string& da) {
  return *std::find_if(spostamenti.begin(), spostamenti.end(),
                       [&](const Spostamento& spostamento) { return spostamento.da == da; });
}

} // namespace

std::string ScriviScadenzePartita(const std::vector<std::string>& parametri, MsgAnnulla& msg) {
  if (parametri.size() <= PrimoGruppo) {
    return "";
  }
  return Procedura(msg, [&](moduloDatabase::Lavoro& lavoro, ado::Connection& connection, const auto&) {
    const auto scelti = EventiDellaPartita(connection, parametri);
    const auto spostamenti = LeggiSpostamenti(parametri);
    PerOgniEvento(lavoro, connection, scelti, [&](ado::Recordset& righe) {
      const Date prima = DateDiEvento(righe);
      Date dopo = prima;
      for (const Spostamento& spostamento : spostamenti) {
        if (!prima.originale.empty() && spostamento.da == prima.originale) {
          dopo.scadenza = spostamento.NuovaData();
          righe.Fields("DATASCADENZA").SetValue(dopo.scadenza);
          righe.Update();
        }
      }
      return Alterate(prima, dopo);
    });
  });
}

std::vector<RigaEsaminata> EsaminaScadenzePartita(ado::Connection& connection,
                                                  const std::vector<std::string>& parametri,
                                                  const std::string& oggetto) {
  std::vector<RigaEsaminata> righe;
  if (parametri.size() <= PrimoGruppo) {
    return righe;
  }
  const auto eventi = LeggiDate(connection, EventiDellaPartita(connection, parametri));
  const auto spostamenti = LeggiSpostamenti(parametri);
  for (const Spostamento& spostamento : spostamenti) {
    const std::string nuova = UltimoDellaData(spostamenti, spostamento.da).NuovaData();
    righe.push_back({NomeGruppo(oggetto, spostamento), StatoPerOriginale(eventi, spostamento.da, nuova)});
  }
  return righe;
}

std::string ScriviScadenzeMovimento(const std::vector<std::string>& parametri, MsgAnnulla& msg) {
  if (parametri.size() <= PrimoGruppo) {
    return "";
  }
  return Procedura(msg, [&](moduloDatabase::Lavoro& lavoro, ado::Connection& connection, const auto&) {
    const auto scelti = EventiDelMovimento(connection, parametri);
    const auto spostamenti = LeggiSpostamenti(parametri);
    PerOgniEvento(lavoro, connection, scelti, [&](ado::Recordset& righe) {
      const Date prima = DateDiEvento(righe);
      Date dopo = prima;
      for (const Spostamento& spostamento : spostamenti) {
        if (!prima.scadenza.empty() && spostamento.da == prima.scadenza) {
          dopo.scadenza = spostamento.NuovaData();
          dopo.originale = dopo.scadenza;
          righe.Fields("DATASCADENZA").SetValue(dopo.scadenza);
          righe.Fields("DATASCADENZAORIGINALE").SetValue(dopo.originale);
          righe.Update();
          break;
        }
      }
      return Alterate(prima, dopo);
    });
  });
}

std::vector<RigaEsaminata> EsaminaScadenzeMovimento(ado::Connection& connection,
                                                    const std::vector<std::string>& parametri,
                                                    const std::string& oggetto) {
  std::vector<RigaEsaminata> righe;
  if (parametri.size() <= PrimoGruppo) {
    return righe;
  }
  const auto eventi = LeggiDate(connection, EventiDelMovimento(connection, parametri));
  const auto spostamenti = LeggiSpostamenti(parametri);
  for (const Spostamento& spostamento : spostamenti) {
    const std::string nuova = PrimoDellaData(spostamenti, spostamento.da).NuovaData();
    const bool arrivo = std::any_of(spostamenti.begin(), spostamenti.end(), [&](const Spostamento& altro) {
      return altro.da != spostamento.da && altro.NuovaData() == spostamento.da;
    });
    righe.push_back({NomeGruppo(oggetto, spostamento), StatoPerScadenza(eventi, spostamento.da, nuova, arrivo)});
  }
  return righe;
}

} // namespace lumoscad::procedureLumoDB2
