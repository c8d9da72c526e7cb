#include "Bare.hpp"
#include "Dimostrazione.hpp"
#include "Program.hpp"
#include "Scrolling.hpp"
#include "Stopwatch.hpp"
#include "Windows.hpp"
#include "common/Stato.hpp"
#include "platform/ado/ConnectionText.hpp"
#include "screens/frmLumoScadenzeBanche.hpp"
#include "support/LargeDatabase.hpp"
#include "support/Paths.hpp"

#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlQueryModel>

#include <cstdio>
#include <stdexcept>

namespace lumoscad::bench {
namespace {

/// How many instalments, and how often each side reads them.
struct Extent {
  std::size_t rows;
  int runs;
  double target;
};
constexpr Extent Extents[] = {{1000, 101, 1.30}, {10000, 25, 1.08}, {100000, 9, 1.08}, {1000000, 3, 1.08}};
constexpr std::size_t OfModel = 100000;
constexpr std::size_t OfWindows = 1000000;
constexpr int FewRuns = 2;
constexpr double MegaByte = 1e6;

/// Qt's model over Qt's own ODBC plugin, with every row fetched and every text read once, as the component does.
class QtModel {
 public:
  explicit QtModel(const std::string& connectionText) {
    ApplicationWithoutDisplay(); // for its plugins
    const ado::ConnectionSettings settings = ado::ReadConnectionText(connectionText);
    QSqlDatabase base = QSqlDatabase::addDatabase(QStringLiteral("QODBC"), Name());
    base.setDatabaseName(QString::fromStdString(settings.DataSource));
    base.setUserName(QString::fromStdString(settings.UserId));
    base.setPassword(QString::fromStdString(settings.Password));
    if (!base.open()) {
      throw std::runtime_error("QODBC: " + base.lastError().text().toStdString());
    }
  }
  QtModel(const QtModel&) = delete;
  QtModel& operator=(const QtModel&) = delete;
  ~QtModel() { QSqlDatabase::removeDatabase(Name()); }

  [[nodiscard]] static double Load(const std::string& statement, std::size_t rows) {
    const auto begin = Clock::now();
    QSqlQuery query(QSqlDatabase::database(Name()));
    query.prepare(QString::fromStdString(statement));
    query.addBindValue(QStringLiteral("1"));
    query.exec();
    QSqlQueryModel model;
    model.setQuery(std::move(query));
    while (model.canFetchMore()) {
      model.fetchMore();
    }
    qsizetype characters = 0;
    for (int row = 0; row < model.rowCount(); ++row) {
      for (int column = 0; column < model.columnCount(); ++column) {
        characters += model.data(model.index(row, column)).toString().size();
      }
    }
    if (model.rowCount() != static_cast<int>(rows) || characters == 0) {
      throw std::runtime_error("QODBC read " + std::to_string(model.rowCount()) + " rows");
    }
    return Milliseconds(begin);
  }

 private:
  static QString Name() { return QStringLiteral("bench"); }
};

/// An accounting with its schedule, and the sides that read it.
class Schedule {
 public:
  Schedule(const Extent& extent, Sizes sizes)
      : extent_(extent), sizes_(sizes), base_(Folder(sizes, "postgres"), static_cast<long>(extent.rows)) {
    lumoscad::stato().ComandoCorrente = base_.command();
    Component(desktop_);
    connection_ = std::make_unique<BareConnection>(base_.ConnectionText());
    BareCommand bare(*connection_, statement_);
    const std::size_t read = bare.Run({"1"});
    spaces_ = bare.Spaces();
    if (desktop_.rows != extent.rows || read != extent.rows) {
      throw std::runtime_error("the two sides did not read " + std::to_string(extent.rows) + " rows");
    }
  }

  [[nodiscard]] std::string Size() const { return Grouped(extent_.rows) + " rows"; }

  [[nodiscard]] Row Load(int runs) {
    const Times outcome = Compare(
        runs, [this] { return Component(desktop_); }, [this] { return Bare(); });
    return {"load, without the window", Size(), outcome.Report(), extent_.target,
            Sides("component", outcome.screen, "bare", outcome.bare)};
  }

  [[nodiscard]] Row AgainstModel(int runs) {
    const QtModel model(base_.ConnectionText());
    const Times outcome = Compare(
        runs, [this] { return Component(desktop_); }, [this] { return QtModel::Load(statement_, extent_.rows); });
    return {"load, against QSqlQueryModel", Size(), outcome.Report(), 0.42,
            Sides("component", outcome.screen, "model", outcome.bare)};
  }

  /// The bare program has the server's last row as soon as its statement is executed: the driver asks for all at once.
  [[nodiscard]] Row UntilWindow(int runs) {
    PaintedDesktop desktop;
    const Times outcome = Compare(
        runs, [&] { return Component(desktop); },
        [this] { return BareCommand(*connection_, statement_).UntilLastRow({"1"}); });
    return {"wait until the window, against the server's last row", Size(), outcome.Report(), 1.15,
            Sides("painted", outcome.screen, "last row", outcome.bare)};
  }

  [[nodiscard]] Row Scrolling(int pages) {
    PaintedDesktop desktop;
    Times outcome;
    desktop.inWindow = [&](QDialog& window) { outcome = ScrollPages(window, pages); };
    Component(desktop);
    return {"scrolling a page, against an empty table of Qt", Size(), outcome.Report(), 1.5,
            Sides("component", outcome.screen, "empty table", outcome.bare)};
  }

  /// A program that calls the component and shows its window, without what the same program takes for a list of one
  /// row. A command lists the customers' instalments or the suppliers': about half of what the database holds.
  [[nodiscard]] Row Memory() const {
    const test::Dimostrazione host;
    const std::string output = Listing(host, base_.Options());
    const double whole = Peak(output);
    const double listed = NumberBefore(output, "listed");
    const test::LargeDatabase small(Folder(sizes_, "postgres-vuoto"), 1);
    const double empty = Peak(Listing(host, small.Options()));
    std::array<char, 100> detail{};
    std::snprintf(detail.data(), detail.size(), "%.1f MB, of which %.1f MB with one row", whole / MegaByte,
                  empty / MegaByte);
    return {"resident memory at its highest, whole process",
            Grouped(static_cast<std::size_t>(listed)) + " rows listed",
            (whole - empty) / listed,
            250,
            detail.data(),
            "B a row"};
  }

 private:
  template <typename Shown> double Component(Shown& desktop) {
    return LoadScreen(
        desktop, [this](std::string_view text) { statement_ = text; },
        [] {
          frmLumoScadenzeBanche banks;
          VariazioniCanalizzazione changes;
          banks.VisualizzaScadenzeBanche("01", {}, changes);
        });
  }
  /// On a connection that has just been opened, as the component's is: its server has yet to read the catalogue.
  [[nodiscard]] double Bare() const {
    BareConnection connection(base_.ConnectionText());
    const auto begin = Clock::now();
    BareCommand(connection, statement_, spaces_).Run({"1"});
    connection.End();
    return Milliseconds(begin);
  }
  /// What the program says that shows the list.
  static std::string Listing(const test::Dimostrazione& host, const std::string& options) {
    std::vector<std::string> settings = host.Ambiente();
    settings.insert(settings.end(), {"QT_QPA_PLATFORM=offscreen", "QT_LOGGING_RULES=*=false"});
    const auto words = Words("finestra -T BANCA /CREDITI -H locale -D 01 " + options);
    return Run("bench_programma", words, settings).output;
  }
  /// Bytes.
  static double Peak(const std::string& output) { return NumberBefore(output, "kB") * 1024; }

  Extent extent_;
  Sizes sizes_;
  test::LargeDatabase base_;
  StatoSostituito status_;
  StopwatchDesktop desktop_;
  std::string statement_; ///< the list's, which is the last one sent
  std::unique_ptr<BareConnection> connection_;
  std::vector<std::size_t> spaces_; ///< what the bare program knows of the columns beforehand
};

} // namespace

Rows Load(Sizes sizes) {
  if (!test::PostgresServer::Available()) {
    std::fputs("Carico: PostgreSQL o il suo driver ODBC non è installato, misura saltata\n", stderr);
    return {};
  }
  const bool few = sizes == Sizes::Smallest;
  Rows rows;
  Rows others;
  for (const Extent& extent : Extents) {
    Schedule schedule(extent, sizes);
    const int runs = few ? FewRuns : extent.runs;
    rows.push_back(schedule.Load(runs));
    if (few || extent.rows == OfModel) {
      others.push_back(schedule.AgainstModel(runs));
    }
    if (few || extent.rows == OfWindows) {
      others.push_back(schedule.UntilWindow(runs));
      others.push_back(schedule.Scrolling(few ? 5 : 300));
      others.push_back(schedule.Memory());
    }
    if (few) {
      break;
    }
  }
  rows.insert(rows.end(), others.begin(), others.end());
  return rows;
}

} // namespace lumoscad::bench
