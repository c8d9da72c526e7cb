// A confirmation over SSH on a long line, from the start of the program to its end, without the person.

#include "Dimostrazione.hpp"
#include "Figlio.hpp"
#include "Measures.hpp"
#include "Program.hpp"
#include "Stopwatch.hpp"
#include "support/DelayProxy.hpp"
#include "support/Paths.hpp"
#include "support/SshServer.hpp"

#include <cstdio>
#include <stdexcept>

namespace lumoscad::bench {
namespace {

constexpr int Records = 300;
constexpr int FewRecords = 3;
constexpr int Runs = 5;
constexpr double Target = 1.2;
constexpr double ShortTrip = 10; ///< milliseconds
constexpr double LongTrip = 60;

/// The demonstration once more, with a list of credits of more than 300 rows.
void Enlarge(const test::Dimostrazione& demonstration) {
  const std::vector<std::string> settings{"LUMOSCAD_BIN=" + (test::BuildFolder() / "bin").string(),
                                          "LUMOSCAD_DATA=" + std::string(test::Dimostrazione::Giorno)};
  if (!test::Comando({test::SourcePath("demo/prepara.sh").string(), demonstration.Base().string(), "1200"}, settings)) {
    throw std::runtime_error("the demonstration cannot be enlarged");
  }
}

struct Command {
  double milliseconds = 0; ///< without the person
  int trips = 0;           ///< as the line counted them
};

/// A whole command whose host is a round trip of `trip` milliseconds away.
Command Confirmation(double trip, int records) {
  const test::Dimostrazione demonstration(test::Trasporto::Ssh);
  Enlarge(demonstration);
  const test::DelayProxy proxy(demonstration.Ssh().Port(), std::chrono::microseconds(static_cast<long>(trip * 500)));
  demonstration.Ssh().MakeKnown(proxy.Port());
  std::vector<std::string> settings = demonstration.Ambiente(proxy.Port());
  settings.insert(settings.end(), {"QT_QPA_PLATFORM=offscreen", "QT_LOGGING_RULES=*=false"});
  const auto before = demonstration.Stato();
  const Ended ended =
      Run("bench_programma",
          {"conferma", std::to_string(records), "-T", "BANCA", "/CREDITI", "-H", demonstration.Indirizzo(), "-D", "01",
           "-DB2SOURCE", demonstration.Sorgente(), "-DB2SCHEMA", "main"},
          settings);
  const auto changed = test::Differenze(before, demonstration.Stato());
  if (changed.size() != 2 * static_cast<std::size_t>(records)) {
    throw std::runtime_error(std::to_string(changed.size() / 2) + " instalments changed: " + ended.output);
  }
  return {ended.milliseconds - NumberBefore(ended.output, "ms person"), proxy.Trips()};
}

} // namespace

Rows ConfirmRemotely(Sizes sizes) {
  if (!test::SshServer::Available()) {
    std::fputs("Conferma via SSH: OpenSSH non è installato, misura saltata\n", stderr);
    return {};
  }
  const int records = sizes == Sizes::All ? Records : FewRecords;
  int trips = 0;
  const Times outcome = Compare(
      sizes == Sizes::All ? Runs : 1,
      [records, &trips] {
        const Command command = Confirmation(LongTrip, records);
        trips = command.trips;
        return command.milliseconds;
      },
      [records] { return Confirmation(ShortTrip, records).milliseconds; });
  return {{"confirmation over SSH, against its " + Grouped(static_cast<std::size_t>(trips)) + " round trips",
           Grouped(static_cast<std::size_t>(records)) + " records", outcome.screen / (trips * LongTrip), Target,
           Sides("a trip of 60 ms", outcome.screen, "of 10 ms", outcome.bare)}};
}

} // namespace lumoscad::bench
