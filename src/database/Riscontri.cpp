#include "database/Riscontri.hpp"

#include "common/Testo.hpp"
#include "database/moduloDatabase.hpp"
#include "platform/ado/Aftermath.hpp"

#include <utility>

namespace lumoscad::procedureLumoDB2 {
namespace {

/// The numbers of the one row that a query gives.
std::vector<std::int64_t> Numeri(ado::Connection& connection, const std::string& sql,
                                 std::vector<std::string> valori = {}) {
  ado::Command comando = moduloDatabase::CreaComando(connection, sql);
  comando.sentOnce = true;
  comando.Parameters = std::move(valori);
  const ado::Recordset righe = comando.Execute();
  std::vector<std::int64_t> numeri;
  for (std::size_t colonna = 0; colonna < righe.ColumnCount(); ++colonna) {
    numeri.push_back(Intero(righe.ValueAt(colonna).value_or("0")));
  }
  return numeri;
}

} // namespace

std::optional<TransactionOutcome> RiscontroDiEventi(ado::Connection& connection, const std::vector<std::string>& chiavi,
                                                    const std::string& nuove, const std::string& vecchie) {
  std::string elenco;
  for (const std::string& chiave : chiavi) {
    elenco.append(elenco.empty() ? "" : ",").append(chiave);
  }
  const auto conti =
      Numeri(connection, "SELECT COUNT(*), COUNT(CASE WHEN " + nuove + "THEN 1 END), COUNT(CASE WHEN " + vecchie +
                             "THEN 1 END) FROM EVENTOCONTABILE WHERE EVENTOCONTABILEKEY IN (" + elenco + ")");
  const auto tutti = static_cast<std::int64_t>(chiavi.size());
  const bool fatti = conti.at(1) == tutti;
  const bool comePrima = conti.at(2) == tutti;
  if (conti.at(0) != tutti || (!fatti && !comePrima)) {
    return TransactionOutcome::Unknown;
  }
  if (fatti && comePrima) {
    return std::nullopt;
  }
  return fatti ? TransactionOutcome::Applied : TransactionOutcome::NotApplied;
}

std::string DomandaDelleScritte(const PrimaEDopo& righe) {
  if (righe.colpite == righe.scritte) {
    return {};
  }
  std::string testo;
  auto valore = righe.valori.begin();
  for (const char lettera : righe.scritte) {
    if (lettera != '?') {
      testo += lettera;
      continue;
    }
    if (valore == righe.valori.end() || valore->empty() ||
        valore->find_first_not_of("0123456789") != std::string::npos) {
      return {};
    }
    testo += *valore++;
  }
  return "(SELECT COUNT(*) FROM " + testo + "),(SELECT SUM(EVENTOCONTABILEKEY) FROM " + testo + ")";
}

std::optional<TransactionOutcome> RiscontroPerQuante(ado::Connection& connection, const PrimaEDopo& righe,
                                                     std::int64_t quante, const std::vector<std::string>& scritte) {
  if (righe.colpite == righe.scritte) {
    return std::nullopt;
  }
  const auto colpite = Numeri(connection, "SELECT COUNT(*) FROM " + righe.colpite, righe.valori).at(0);
  const auto adesso = Numeri(connection, "SELECT COUNT(*) FROM " + righe.scritte, righe.valori).at(0);
  const auto allora = scritte.empty() ? quante : Intero(scritte.front());
  if (colpite == 0) {
    const bool leStesse =
        !scritte.empty() && ado::AskAboutOutcome(connection, "SELECT " + DomandaDelleScritte(righe)) == scritte;
    return leStesse ? TransactionOutcome::Applied : TransactionOutcome::Unknown;
  }
  return colpite >= quante && adesso < allora ? TransactionOutcome::NotApplied : TransactionOutcome::Unknown;
}

std::string UgualeTesto(std::string_view colonna, std::optional<std::string_view> testo) {
  std::string condizione(colonna);
  if (!testo) {
    return condizione.append(" IS NULL ");
  }
  condizione.append("='");
  for (const char lettera : *testo) {
    condizione.append(lettera == '\'' ? 2 : 1, lettera);
  }
  return condizione.append("' ");
}

} // namespace lumoscad::procedureLumoDB2
