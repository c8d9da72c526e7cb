// The request file of a list's changes, from the records to its last byte.

#include "Measures.hpp"
#include "Stopwatch.hpp"
#include "host/Richieste.hpp"
#include "support/Files.hpp"
#include "support/TestBench.hpp"

#include <cstdio>
#include <memory>

namespace lumoscad::bench {
namespace {

constexpr std::size_t Records = 10000;
constexpr std::size_t FewRecords = 100;
constexpr int Runs = 41;
constexpr int FewRuns = 3;
constexpr double Target = 1.3;

VariazioniCanalizzazione Changes(std::size_t howMany) {
  VariazioniCanalizzazione changes(howMany);
  for (std::size_t i = 0; i < howMany; ++i) {
    VariazioneCanalizzazione& v = changes[i];
    v.CodiceConto = std::to_string(20100000 + i % 5000);
    v.NumeroPartita = "2006/" + std::to_string(i);
    v.ScadenzaOriginale = v.VecchiaScadenza = "31/03/2006";
    v.NuovaScadenza = "30/04/2006";
    v.VecchiaBanca = "10060001";
    v.NuovaBanca = "10060002";
    v.NumeroRata = std::to_string(i % 4 + 1);
    v.isBancaChanged = v.isScadenzaChanged = true;
  }
  return changes;
}

/// What the request's upload is met with: its file is whole by then.
struct Written {};

/// The same bytes, a line at a time as they come about.
double Bare(const std::vector<std::string>& lines, const std::string& path) {
  const auto begin = Clock::now();
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "wb"), std::fclose);
  for (const std::string& line : lines) {
    std::fwrite(line.data(), 1, line.size(), file.get());
  }
  std::fflush(file.get());
  return Milliseconds(begin);
}

std::vector<std::string> Lines(const std::string& content) {
  std::vector<std::string> lines;
  for (std::size_t at = 0; at < content.size();) {
    const auto end = std::min(content.find('\n', at), content.size() - 1) + 1;
    lines.push_back(content.substr(at, end - at));
    at = end;
  }
  return lines;
}

} // namespace

Rows RequestFile(Sizes sizes) {
  const VariazioniCanalizzazione changes = Changes(sizes == Sizes::All ? Records : FewRecords);
  test::TestBench bench;
  Clock::time_point end;
  std::string content;
  bench.host.fault = [&](const std::string& operation) {
    if (operation.starts_with("Invia")) {
      end = Clock::now();
      if (content.empty()) {
        const auto path = bench.environment.CartellaLocale;
        for (const auto& entry : std::filesystem::directory_iterator(path)) {
          content = test::FileText(entry.path());
        }
      }
      throw Written{};
    }
  };
  const auto component = [&] {
    const auto begin = Clock::now();
    try {
      static_cast<void>(ScriviRichiestaCanalizzazione("10.0.0.1", "01", changes, "CREDITI"));
    } catch (const RuntimeError&) { // NOLINT(bugprone-empty-catch): the upload was refused, as it was to be
    }
    return std::chrono::duration<double, std::milli>(end - begin).count();
  };
  component();
  const std::vector<std::string> lines = Lines(content);
  const std::string path = bench.environment.CartellaLocale + "/nudo";
  const auto bare = [&] {
    const double time = Bare(lines, path);
    std::filesystem::remove(path);
    return time;
  };
  const Times outcome = Compare(sizes == Sizes::All ? Runs : FewRuns, component, bare);
  return {{"request file, against fwrite of the same bytes", Grouped(changes.size()) + " records", outcome.Report(),
           Target, Sides("component", outcome.screen, "fwrite", outcome.bare)}};
}

} // namespace lumoscad::bench
