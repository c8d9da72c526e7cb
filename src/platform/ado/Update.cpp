#include "platform/ado/Diagnostics.hpp"
#include "platform/ado/RecordsetImpl.hpp"
#include "platform/base/AsciiCase.hpp"

#include <utility>

namespace lumoscad::ado {

namespace {

namespace numbers = detail::numbers;

using detail::Prepared;
using detail::Session;

/// A text with the values of its markers.
struct Sql {
  std::string text;
  std::vector<std::string> parameters;
};

/// Column names come back in the case of the server; without quotes any case is right, and one case for all
/// drivers gives one statement text.
std::string ColumnName(std::string_view name) {
  return base::UpperCase(name);
}

/// Adds " AND column=?" with a value, or " AND column IS NULL".
void AddEqual(Sql& sql, const std::string& name, std::optional<std::string_view> value) {
  sql.text += " AND " + ColumnName(name) + (value ? "=?" : " IS NULL");
  if (value) {
    sql.parameters.emplace_back(*value);
  }
}

Sql ByKey(const Recordset::Impl& set, std::string_view key) {
  return {" WHERE " + ColumnName(set.names[set.keyColumn]) + "=?", {std::string(key)}};
}

/// The row as it was read, in the columns that change.
Sql Condition(const Recordset::Impl& set, std::string_view key) {
  Sql sql = ByKey(set, key);
  for (const auto& [column, unused] : set.pending) {
    const auto original = set.rows.Cell(set.current, column);
    if (!original || set.comparable[column]) {
      AddEqual(sql, set.names[column], original);
    }
  }
  return sql;
}

Sql Assignments(const Recordset::Impl& set) {
  Sql sql;
  sql.text = "UPDATE " + set.table->tableName + " SET ";
  const char* separator = "";
  for (const auto& [column, value] : set.pending) {
    sql.text += std::exchange(separator, ",") + ColumnName(set.names[column]) + (value ? "=?" : "=NULL");
    if (value) {
      sql.parameters.push_back(*value);
    }
  }
  return sql;
}

std::int64_t Count(const std::shared_ptr<Session>& session, const Recordset::Impl& set, const Sql& where) {
  const auto found =
      Prepared(session, "SELECT COUNT(*) FROM " + set.table->tableName + where.text).Execute(where.parameters);
  const auto rows = found.rows.Rows() == 1 ? found.rows.Cell(0, 0) : std::nullopt;
  return rows ? std::stoll(std::string(*rows)) : 0;
}

/// How many rows of the key hold every value that was set, as the server compares them; a long text that it does not
/// compare is read.
std::int64_t Holding(const std::shared_ptr<Session>& session, const Recordset::Impl& set, std::string_view key) {
  Sql where = ByKey(set, key);
  std::string columns = ColumnName(set.names[set.keyColumn]);
  std::vector<std::string_view> wanted;
  for (const auto& [column, value] : set.pending) {
    if (!value || set.comparable[column]) {
      AddEqual(where, set.names[column], value);
    } else {
      columns += "," + ColumnName(set.names[column]);
      wanted.emplace_back(*value);
    }
  }
  if (wanted.empty()) {
    return Count(session, set, where);
  }
  const auto read =
      Prepared(session, "SELECT " + columns + " FROM " + set.table->tableName + where.text).Execute(where.parameters);
  std::int64_t rows = 0;
  for (std::size_t row = 0; row < read.rows.Rows(); ++row) {
    bool all = true;
    for (std::size_t i = 0; i < wanted.size(); ++i) {
      all = all && read.rows.Cell(row, i + 1) == wanted[i];
    }
    rows += all ? 1 : 0;
  }
  return rows;
}

[[noreturn]] void Refuse(const char* why) {
  throw RuntimeError(numbers::ConcurrentChange, why, "ODBC");
}

void RequireOneRow(std::int64_t affected) {
  if (affected > 1) {
    Refuse("La modifica riguarda più di una riga della tabella: non è stata registrata.");
  }
  if (affected < 0) {
    Refuse("Il driver non dice quante righe sono state modificate: la modifica non è stata registrata.");
  }
}

/// An UPDATE that counted no row: some drivers count only the rows whose values became different, and a trigger or
/// the table's row security may have dropped it without a word. What the row holds now tells.
void RequireHeld(const std::shared_ptr<Session>& session, const Recordset::Impl& set, std::string_view key,
                 const Sql& where) {
  const std::int64_t rows = Holding(session, set, key);
  RequireOneRow(rows);
  if (rows == 1) {
    return;
  }
  if (Count(session, set, where) > 0) {
    RefuseDroppedChange();
  }
  Refuse("La riga è stata modificata o eliminata da un altro terminale: la modifica non è stata registrata.");
}

/// A transaction of its own around a change, unless the caller has one: a change that hits too many rows must not
/// stay.
class OwnTransaction {
 public:
  explicit OwnTransaction(Session& session) : session_(session), own_(!session.InTransaction()) {
    if (own_) {
      session_.Begin();
    }
  }
  OwnTransaction(const OwnTransaction&) = delete;
  OwnTransaction& operator=(const OwnTransaction&) = delete;
  ~OwnTransaction() {
    if (!own_ || !session_.InTransaction()) {
      return;
    }
    try {
      session_.Rollback();
    } catch (const RuntimeError&) { // NOLINT(bugprone-empty-catch): the failure in flight is the one to report
    }
  }
  void Commit() {
    if (own_) {
      session_.Commit({});
    }
  }

 private:
  Session& session_;
  bool own_;
};

} // namespace

void Recordset::Impl::SendChanges() {
  const auto alive = session.lock();
  if (!alive || !alive->Opened()) {
    throw RuntimeError(numbers::ObjectClosed, "Operazione non consentita: la connessione alla base dati è chiusa.",
                       "ODBC");
  }
  const auto key = rows.Cell(current, keyColumn);
  if (!key) {
    throw RuntimeError(numbers::InvalidContext, "La riga corrente non ha chiave e non si può modificare.", "ODBC");
  }
  const Sql where = Condition(*this, *key);
  Sql update = Assignments(*this);
  update.text += where.text;
  update.parameters.insert(update.parameters.end(), where.parameters.begin(), where.parameters.end());

  OwnTransaction transaction(*alive);
  const std::int64_t affected = Prepared(alive, update.text).Execute(update.parameters).affected;
  if (affected == 0) {
    RequireHeld(alive, *this, *key, where);
  } else {
    RequireOneRow(affected);
  }
  transaction.Commit();
}

void RefuseDroppedChange() {
  Refuse("La base dati non ha registrato la modifica, senza dirne il motivo: una regola della tabella può averla "
         "scartata.");
}

void Recordset::Impl::TakeChanges() {
  std::vector<std::optional<std::string_view>> cells(names.size());
  for (std::size_t i = 0; i < cells.size(); ++i) {
    cells[i] = Value(i);
  }
  rows.Replace(current, cells);
  pending.clear();
}

} // namespace lumoscad::ado
