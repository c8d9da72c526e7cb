#include "platform/ado/Diagnostics.hpp"
#include "platform/ado/RecordsetImpl.hpp"

#include <algorithm>
#include <utility>

namespace lumoscad::ado {

namespace {

namespace numeri = interno::numeri;

using interno::Prepared;
using interno::Session;

/// A text with the values of its markers.
struct Sql {
  std::string text;
  std::vector<std::string> parameters;
};

/// Column names come back in the case of the server; without quotes any case is right, and one case for all
/// drivers gives one statement text.
std::string columnName(std::string name) {
  std::transform(name.begin(), name.end(), name.begin(),
                 [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; });
  return name;
}

Sql condition(const Recordset::Impl& set, std::string_view key) {
  Sql sql;
  sql.text = " WHERE " + columnName(set.names[set.keyColumn]) + "=?";
  sql.parameters.emplace_back(key);
  for (const auto& [column, unused] : set.pending) {
    const auto original = set.rows.cell(set.current, column);
    if (original && !set.comparable[column])
      continue;
    sql.text += " AND " + columnName(set.names[column]);
    sql.text += original ? "=?" : " IS NULL";
    if (original)
      sql.parameters.emplace_back(*original);
  }
  return sql;
}

Sql assignments(const Recordset::Impl& set) {
  Sql sql;
  sql.text = "UPDATE " + set.table->tabella + " SET ";
  const char* separator = "";
  for (const auto& [column, value] : set.pending) {
    sql.text += std::exchange(separator, ",") + columnName(set.names[column]) + (value ? "=?" : "=NULL");
    if (value)
      sql.parameters.push_back(*value);
  }
  return sql;
}

/// How many rows meet `where`; asked when an UPDATE counts no row, because some drivers count only the rows whose
/// values became different.
std::int64_t matching(const std::shared_ptr<Session>& session, const Recordset::Impl& set, const Sql& where) {
  const auto found =
      Prepared(session, "SELECT COUNT(*) FROM " + set.table->tabella + where.text).execute(where.parameters);
  const auto count = found.rows.rows() == 1 ? found.rows.cell(0, 0) : std::nullopt;
  return count ? std::stoll(std::string(*count)) : 0;
}

void requireOneRow(std::int64_t affected) {
  if (affected == 1)
    return;
  const char* why = affected == 0 ? "La riga è stata modificata o eliminata da un altro terminale: la modifica non è "
                                    "stata registrata."
                    : affected > 1 ? "La modifica riguarda più di una riga della tabella: non è stata registrata."
                                   : "Il driver non dice quante righe sono state modificate: la modifica non è stata "
                                     "registrata.";
  throw ErroreRuntime(numeri::ModificaConcorrente, why, "ODBC");
}

/// A transaction of its own around a change, unless the caller has one: a change that hits too many rows must not
/// stay.
class OwnTransaction {
 public:
  explicit OwnTransaction(Session& session) : session_(session), own_(!session.inTransaction()) {
    if (own_)
      session_.begin();
  }
  OwnTransaction(const OwnTransaction&) = delete;
  OwnTransaction& operator=(const OwnTransaction&) = delete;
  ~OwnTransaction() {
    if (!own_ || !session_.inTransaction())
      return;
    try {
      session_.rollback();
    } catch (const ErroreRuntime&) { // NOLINT(bugprone-empty-catch): the failure in flight is the one to report
    }
  }
  void commit() {
    if (own_)
      session_.commit();
  }

 private:
  Session& session_;
  bool own_;
};

} // namespace

void Recordset::Impl::sendChanges() {
  const auto alive = session.lock();
  if (!alive || !alive->isOpen())
    throw ErroreRuntime(numeri::OggettoChiuso, "Operazione non consentita: la connessione alla base dati è chiusa.",
                        "ODBC");
  const auto key = rows.cell(current, keyColumn);
  if (!key)
    throw ErroreRuntime(numeri::ContestoNonValido, "La riga corrente non ha chiave e non si può modificare.", "ODBC");
  const Sql where = condition(*this, *key);
  Sql update = assignments(*this);
  update.text += where.text;
  update.parameters.insert(update.parameters.end(), where.parameters.begin(), where.parameters.end());

  OwnTransaction transaction(*alive);
  std::int64_t affected = Prepared(alive, update.text).execute(update.parameters).affected;
  if (affected == 0)
    affected = matching(alive, *this, where);
  requireOneRow(affected);
  transaction.commit();
}

void Recordset::Impl::takeChanges() {
  std::vector<std::optional<std::string_view>> cells(names.size());
  for (std::size_t i = 0; i < cells.size(); ++i)
    cells[i] = value(i);
  rows.replace(current, cells);
  pending.clear();
}

} // namespace lumoscad::ado
