#include "Bare.hpp"
#include "Stopwatch.hpp"
#include "common/Stato.hpp"
#include "database/procedureLumoDB2.hpp"
#include "support/LargeDatabase.hpp"

#include <array>
#include <cstdio>
#include <deque>
#include <stdexcept>
#include <string>
#include <utility>

namespace lumoscad::bench {
namespace {

constexpr std::size_t SmallList = 3000;
constexpr std::size_t LongList = 10000;
constexpr std::size_t FewRecords = 200;
constexpr int Runs = 9;
constexpr int LongRuns = 5;
constexpr int FewRuns = 3;
constexpr double CreditsTarget = 1.10;
constexpr double PresumedTarget = 1.15;

constexpr std::string_view LookUp = "SELECT CONTOCONTABILE_KEY ";
constexpr std::string_view Selection = "SELECT * ";

/// A statement that was sent, with the values of its markers.
struct Sent {
  std::string text;
  std::vector<std::string> values;
};

/// A list to be confirmed: the procedure that writes it, and the values that it binds, each kind in their order.
struct Confirmation {
  std::size_t records = 0;
  std::function<std::string(MsgAnnulla&)> write;
  std::deque<std::string> accounts; ///< of the look-ups
  std::deque<std::string> keys;     ///< of every other statement with a marker
};

/// The demonstration's banks that an instalment may be given.
const std::string& OtherBank(std::string_view bank, std::size_t record) {
  static const std::array<std::string, 4> Banks{"60100001", "60100002", "60100003", "60200001"};
  const std::string& chosen = Banks.at(record % Banks.size());
  return chosen == bank ? Banks.at((record + 1) % Banks.size()) : chosen;
}

/// "DD/MM/YYYY" of a date of the database.
std::string Shown(std::string_view iso) {
  return iso.empty() ? std::string()
                     : std::string(iso.substr(8, 2)) + "/" + std::string(iso.substr(5, 2)) + "/" +
                           std::string(iso.substr(0, 4));
}

class Database {
 public:
  Database(Sizes sizes, std::size_t instalments, std::size_t presumed)
      : base_(Folder(sizes, "postgres"), static_cast<long>(instalments), static_cast<long>(presumed)) {
    lumoscad::stato().ComandoCorrente = base_.command();
    own_.ConnectionString = base_.ConnectionText();
    own_.Open();
    own_.Execute("CREATE TABLE PRIMA AS SELECT * FROM EVENTOCONTABILE");
    own_.Execute("ALTER TABLE PRIMA ADD PRIMARY KEY (EVENTOCONTABILEKEY)");
  }

  /// Puts every row back as it was, and the table in the state in which each run is to find it.
  void Restore() {
    own_.Execute("UPDATE EVENTOCONTABILE AS E SET BANCAPRESENTAZIONE_KEY=P.BANCAPRESENTAZIONE_KEY, "
                 "DATASCADENZA=P.DATASCADENZA, DATACONSEGNA=P.DATACONSEGNA, TITOLOIVA=P.TITOLOIVA FROM PRIMA AS P "
                 "WHERE P.EVENTOCONTABILEKEY=E.EVENTOCONTABILEKEY AND (P.BANCAPRESENTAZIONE_KEY,P.DATASCADENZA,"
                 "P.DATACONSEGNA,P.TITOLOIVA) IS DISTINCT FROM (E.BANCAPRESENTAZIONE_KEY,E.DATASCADENZA,"
                 "E.DATACONSEGNA,E.TITOLOIVA)");
    own_.Execute("VACUUM ANALYZE EVENTOCONTABILE");
  }
  [[nodiscard]] std::size_t Changed() {
    return static_cast<std::size_t>(std::stoul(
        std::string(*Query("SELECT COUNT(*) FROM EVENTOCONTABILE AS E JOIN PRIMA AS P ON "
                           "P.EVENTOCONTABILEKEY=E.EVENTOCONTABILEKEY WHERE (P.BANCAPRESENTAZIONE_KEY,P.DATASCADENZA,"
                           "P.DATACONSEGNA) IS DISTINCT FROM (E.BANCAPRESENTAZIONE_KEY,E.DATASCADENZA,E.DATACONSEGNA)")
                         .ValueAt(0))));
  }
  ado::Recordset Query(const std::string& text) {
    ado::Command command;
    command.ActiveConnection = &own_;
    command.CommandText = text;
    return command.Execute();
  }
  [[nodiscard]] std::string ConnectionText() const { return base_.ConnectionText(); }

 private:
  test::LargeDatabase base_;
  ado::Connection own_;
};

/// A new bank for every instalment, and for every third a new date besides.
Confirmation Credits(Database& database, std::size_t records) {
  auto rows = database.Query(
      "SELECT E.PARTITACONTABILEKEY, C.CODICECONTO, COALESCE(B.CODICECONTO,''), E.DATASCADENZA, "
      "COALESCE(CAST(E.DATASCADENZAORIGINALE AS VARCHAR),''), E.NUMERORATA FROM EVENTOCONTABILE AS E JOIN "
      "MOVIMENTOCONTABILE AS M ON M.MOVIMENTOKEY=E.MOVIMENTOKEY JOIN CONTOCONTABILE AS C ON "
      "C.CONTOCONTABILE_KEY=E.CONTOCONTABILE_KEY LEFT JOIN CONTOCONTABILE AS B ON "
      "B.CONTOCONTABILE_KEY=E.BANCAPRESENTAZIONE_KEY WHERE M.TIPOMOVIMENTO='N' AND E.TIPOEVENTO='C' AND "
      "E.SOSPESA='N' ORDER BY E.EVENTOCONTABILEKEY LIMIT " +
      std::to_string(records));
  Confirmation confirmation;
  VariazioniCanalizzazione changes;
  for (; !rows.Eof(); rows.MoveNext()) {
    const auto text = [&](std::size_t column) { return std::string(rows.ValueAt(column).value_or("")); };
    VariazioneCanalizzazione change;
    change.idPartitaKey = text(0);
    change.CodiceConto = text(1);
    change.VecchiaBanca = text(2);
    change.NuovaBanca = OtherBank(text(2), changes.size());
    change.isBancaChanged = true;
    change.VecchiaScadenza = Shown(text(3));
    change.ScadenzaOriginale = Shown(text(4));
    change.NumeroRata = text(5);
    change.NuovaScadenza = "15/09/2006";
    change.isScadenzaChanged = changes.size() % 3 == 0;
    for (const std::string& bank : {change.VecchiaBanca, change.NuovaBanca}) {
      if (!bank.empty()) {
        confirmation.accounts.push_back(bank);
      }
    }
    confirmation.keys.push_back(change.idPartitaKey);
    changes.push_back(std::move(change));
  }
  confirmation.records = changes.size();
  confirmation.write = [changes = std::move(changes)](MsgAnnulla& msg) {
    return procedureLumoDB2::AggiornaCanalizzazione(changes, msg, "CREDITI");
  };
  return confirmation;
}

/// The presumed documents of customers' orders, one record a document, without a change.
VariazioniConsegna Documents(Database& database, std::size_t records) {
  auto rows =
      database.Query("SELECT E.MOVIMENTOKEY, C.CODICECONTO, COALESCE(MIN(B.CODICECONTO),''), MIN(E.DATACONSEGNA), "
                     "MIN(E.DATACONSEGNAPRODUZIONE) FROM EVENTOCONTABILE AS E JOIN CONTOCONTABILE AS C ON "
                     "C.CONTOCONTABILE_KEY=E.CONTOCONTABILE_KEY LEFT JOIN CONTOCONTABILE AS B ON "
                     "B.CONTOCONTABILE_KEY=E.BANCAPRESENTAZIONE_KEY WHERE E.TIPOEVENTO='P' AND E.SOSPESA='N' GROUP BY "
                     "E.MOVIMENTOKEY, C.CODICECONTO HAVING COUNT(DISTINCT COALESCE(E.BANCAPRESENTAZIONE_KEY,0))=1 AND "
                     "COUNT(DISTINCT E.DATACONSEGNA)=1 ORDER BY E.MOVIMENTOKEY LIMIT " +
                     std::to_string(records));
  VariazioniConsegna changes;
  for (; !rows.Eof(); rows.MoveNext()) {
    const auto text = [&](std::size_t column) { return std::string(rows.ValueAt(column).value_or("")); };
    VariazioneConsegna change;
    change.idMovimentoKey = std::stoi(text(0));
    change.CodiceConto = text(1);
    change.VecchiaBanca = text(2);
    change.Consegna = Shown(text(3));
    change.ConsegnaOrigine = Shown(text(4));
    changes.push_back(std::move(change));
  }
  return changes;
}

Confirmation PresumedBanks(Database& database, std::size_t records) {
  auto changes = Documents(database, records);
  Confirmation confirmation;
  confirmation.records = changes.size();
  for (auto& change : changes) {
    change.NuovaBanca = OtherBank(change.VecchiaBanca, confirmation.keys.size());
    change.isBancaChanged = true;
    for (const std::string& account : {change.VecchiaBanca, change.NuovaBanca, change.CodiceConto}) {
      if (!account.empty()) {
        confirmation.accounts.push_back(account);
      }
    }
    confirmation.keys.push_back(std::to_string(change.idMovimentoKey));
  }
  confirmation.write = [changes = std::move(changes)](MsgAnnulla& msg) {
    return procedureLumoDB2::AggiornaBancaPresunti(changes, msg, "PRESUNTI");
  };
  return confirmation;
}

Confirmation Deliveries(Database& database, std::size_t records) {
  auto changes = Documents(database, records);
  Confirmation confirmation;
  confirmation.records = changes.size();
  for (auto& change : changes) {
    change.NuovaConsegna = "15/09/2006";
    change.isConsegnaChanged = true;
    confirmation.keys.push_back(std::to_string(change.idMovimentoKey));
  }
  confirmation.write = [changes = std::move(changes)](MsgAnnulla& msg) {
    return procedureLumoDB2::AggiornaConsegna(changes, msg, "PRESUNTI");
  };
  return confirmation;
}

/// Writes the list by the component; milliseconds from its first statement to its end, COMMIT and disconnection
/// included. `sent` is told the text of every statement.
double Write(const Confirmation& confirmation, const std::function<void(std::string_view)>& sent) {
  Clock::time_point begin{};
  Services services;
  services.statementSent = [&](std::string_view text) {
    if (begin == Clock::time_point{}) {
      begin = Clock::now();
    }
    if (sent) {
      sent(text);
    }
  };
  const ReplacedServices replaced(services);
  MsgAnnulla msg;
  if (!confirmation.write(msg).empty() || !msg.righeRimaste.empty()) {
    throw std::runtime_error("the list was not written: " + msg.Errore);
  }
  return Milliseconds(begin);
}

/// What the component sends for the list, by sending it.
std::vector<Sent> Recorded(const Confirmation& confirmation) {
  std::vector<Sent> statements;
  auto accounts = confirmation.accounts;
  auto keys = confirmation.keys;
  const auto next = [](std::deque<std::string>& values) {
    if (values.empty()) {
      throw std::runtime_error("more values were bound than the list has");
    }
    std::string value = std::move(values.front());
    values.pop_front();
    return value;
  };
  Write(confirmation, [&](std::string_view text) {
    Sent statement{std::string(text), {}};
    if (text.find('?') != std::string_view::npos) {
      statement.values.push_back(next(text.starts_with(LookUp) ? accounts : keys));
    }
    statements.push_back(std::move(statement));
  });
  if (!accounts.empty() || !keys.empty()) {
    throw std::runtime_error("fewer values were bound than the list has");
  }
  return statements;
}

/// A plain program that knows what it sends: one handle that is kept prepared for the look-ups, another for all that is
/// sent once; of each answer it reads the one column that it needs, or how many rows were changed.
class BareWriting {
 public:
  explicit BareWriting(const BareConnection& connection)
      : connection_(connection.get()), lookUp_(connection_), direct_(connection_) {}

  double Write(const std::vector<Sent>& statements) {
    const auto begin = Clock::now();
    Autocommit(false);
    bool prepared = false;
    for (const Sent& statement : statements) {
      if (statement.text.starts_with(LookUp)) {
        if (!std::exchange(prepared, true)) {
          Demand(SQLPrepare(lookUp_.get(), Text(statement.text), SQL_NTS));
        }
        Bind(lookUp_.get(), statement);
        Demand(SQLExecute(lookUp_.get()));
        Read(lookUp_.get(), 1);
      } else {
        Bind(direct_.get(), statement);
        Demand(SQLExecDirect(direct_.get(), Text(statement.text), static_cast<SQLINTEGER>(statement.text.size())));
        if (statement.text.starts_with(Selection)) {
          Read(direct_.get(), EventKey());
        } else {
          SQLLEN rows = 0;
          Demand(SQLRowCount(direct_.get(), &rows));
        }
        SQLFreeStmt(direct_.get(), SQL_RESET_PARAMS);
      }
    }
    Demand(SQLEndTran(SQL_HANDLE_DBC, connection_, SQL_COMMIT));
    Autocommit(true);
    return Milliseconds(begin);
  }

 private:
  static SQLCHAR* Text(const std::string& text) {
    return reinterpret_cast<SQLCHAR*>(const_cast<char*>(text.data())); // the interface takes a pointer to non-const
  }
  void Autocommit(bool on) const {
    Demand(SQLSetConnectAttr(connection_, SQL_ATTR_AUTOCOMMIT, ado::detail::AsPointer(on ? 1 : 0), SQL_IS_UINTEGER));
  }
  void Bind(SQLHANDLE handle, const Sent& statement) {
    for (const std::string& value : statement.values) {
      length_ = static_cast<SQLLEN>(value.size());
      Demand(SQLBindParameter(handle, 1, SQL_PARAM_INPUT, SQL_C_CHAR, SQL_VARCHAR, value.size(), 0,
                              const_cast<char*>(value.data()), length_, &length_));
    }
  }
  void Read(SQLHANDLE handle, SQLUSMALLINT column) {
    std::array<char, 64> key{};
    SQLLEN length = 0;
    std::size_t rows = 0;
    while (SQL_SUCCEEDED(SQLFetch(handle))) {
      Demand(SQLGetData(handle, column, SQL_C_CHAR, key.data(), key.size(), &length));
      ++rows;
    }
    if (rows == 0) {
      throw std::runtime_error("the bare program found no row");
    }
    Demand(SQLCloseCursor(handle));
  }
  /// Where the key of the event stands in the selection.
  SQLUSMALLINT EventKey() {
    while (eventKey_ == 0) {
      std::array<SQLCHAR, 128> name{};
      SQLSMALLINT length = 0;
      for (SQLUSMALLINT column = 1; eventKey_ == 0; ++column) {
        Demand(SQLDescribeCol(direct_.get(), column, name.data(), name.size(), &length, nullptr, nullptr, nullptr,
                              nullptr));
        if (std::string_view(reinterpret_cast<const char*>(name.data())) == "eventocontabilekey") {
          eventKey_ = column;
        }
      }
    }
    return eventKey_;
  }

  SQLHANDLE connection_;
  ado::detail::Handle<SQL_HANDLE_STMT> lookUp_;
  ado::detail::Handle<SQL_HANDLE_STMT> direct_;
  SQLLEN length_ = 0;
  SQLUSMALLINT eventKey_ = 0;
};

Row Measured(Database& database, const Confirmation& confirmation, std::size_t wanted, std::string what, double target,
             int runs) {
  if (confirmation.records != wanted) {
    throw std::runtime_error("there are not as many records as wanted");
  }
  const std::vector<Sent> statements = Recorded(confirmation);
  const std::size_t changed = database.Changed();
  database.Restore();
  const BareConnection connection(database.ConnectionText());
  BareWriting bare(connection);
  bare.Write(statements);
  if (database.Changed() != changed || changed < wanted) {
    throw std::runtime_error("the two sides did not change the same rows");
  }
  database.Restore();
  const auto restored = [&](double milliseconds) {
    database.Restore();
    return milliseconds;
  };
  const Times outcome = Compare(
      runs, [&] { return restored(Write(confirmation, nullptr)); }, [&] { return restored(bare.Write(statements)); });
  return {std::move(what), Grouped(wanted) + " records", outcome.Report(), target,
          Sides("component", outcome.screen, "bare", outcome.bare) + ", " + Grouped(statements.size()) + " statements"};
}

} // namespace

Rows Confirm(Sizes sizes) {
  if (!test::PostgresServer::Available()) {
    std::fputs("Conferma: PostgreSQL o il suo driver ODBC non è installato, misura saltata\n", stderr);
    return {};
  }
  const bool all = sizes == Sizes::All;
  const std::size_t small = all ? SmallList : FewRecords;
  const int runs = all ? Runs : FewRuns;
  const StatoSostituito status;
  // Half of the instalments are suppliers' or not shown; an order has one row to three.
  Database database(sizes, (all ? LongList : FewRecords) * 2, small * 3);
  Rows rows;
  rows.push_back(Measured(database, Credits(database, small), small, "confirmation of credits, database update",
                          CreditsTarget, runs));
  if (all) {
    rows.push_back(Measured(database, Credits(database, LongList), LongList, "confirmation of credits, database update",
                            CreditsTarget, LongRuns));
  }
  rows.push_back(Measured(database, PresumedBanks(database, small), small,
                          "confirmation of presumed documents' banks, database update", PresumedTarget, runs));
  rows.push_back(Measured(database, Deliveries(database, small), small,
                          "confirmation of delivery dates, database update", PresumedTarget, runs));
  return rows;
}

} // namespace lumoscad::bench
