#include "common/Testo.hpp"
#include "common/Utilities.hpp"
#include "database/ProceduraDB2.hpp"
#include "database/db2Searches.hpp"
#include "database/procedureLumoDB2.hpp"
#include "platform/RuntimeError.hpp"

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

} // namespace

std::string ScriviScadenzePartita(const std::vector<std::string>& parametri, MsgAnnulla& msg) {
  if (parametri.size() <= PrimoGruppo) {
    return "";
  }
  return Procedura(msg, [&](ado::Connection& connection, const auto&) {
    const auto conto = db2Searches::CercaContoContabile(connection, Elemento(parametri, 2));
    const auto partita = db2Searches::CercaPartitaContabile(connection, std::to_string(conto), Elemento(parametri, 3));
    const auto spostamenti = LeggiSpostamenti(parametri);
    PerOgniEvento(connection,
                  "SELECT EVENTOCONTABILEKEY,DATASCADENZA,DATASCADENZAORIGINALE FROM EVENTOCONTABILE WHERE "
                  "PARTITACONTABILEKEY=?",
                  partita, [&](ado::Recordset& righe) {
                    const std::string originale = DataDelCampo(righe, "DATASCADENZAORIGINALE");
                    for (const Spostamento& spostamento : spostamenti) {
                      if (!originale.empty() && spostamento.da == originale) {
                        righe.Fields("DATASCADENZA").SetValue(spostamento.NuovaData());
                        righe.Update();
                      }
                    }
                  });
  });
}

std::string ScriviScadenzeMovimento(const std::vector<std::string>& parametri, MsgAnnulla& msg) {
  if (parametri.size() <= PrimoGruppo) {
    return "";
  }
  return Procedura(msg, [&](ado::Connection& connection, const auto&) {
    const auto movimento = MovimentoExtra(connection, parametri);
    const auto spostamenti = LeggiSpostamenti(parametri);
    PerOgniEvento(connection,
                  "SELECT EVENTOCONTABILEKEY,DATASCADENZA,DATASCADENZAORIGINALE FROM EVENTOCONTABILE WHERE "
                  "MOVIMENTOKEY=?",
                  movimento, [&](ado::Recordset& righe) {
                    const std::string scadenza = DataDelCampo(righe, "DATASCADENZA");
                    for (const Spostamento& spostamento : spostamenti) {
                      if (!scadenza.empty() && spostamento.da == scadenza) {
                        const std::string nuova = spostamento.NuovaData();
                        righe.Fields("DATASCADENZA").SetValue(nuova);
                        righe.Fields("DATASCADENZAORIGINALE").SetValue(nuova);
                        righe.Update();
                        break;
                      }
                    }
                  });
  });
}

} // namespace lumoscad::procedureLumoDB2
