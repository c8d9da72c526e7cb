// What terminals cost a database and a host, by how many work at once. Nobody pauses.
//
//   LUMOSCAD_PER_INTERO=1         1, 2, 4 and so on to 64 terminals of 40 commands, on PostgreSQL and on a Galera
//   cluster;
//                                 otherwise one of 4, on PostgreSQL
//   LUMOSCAD_CRESCITA_TERMINALI   the most terminals in the place of 64

#include "Blocchi.hpp"
#include "Contabilita.hpp"
#include "Lavoro.hpp"
#include "Persona.hpp"
#include "Sistema.hpp"
#include "support/ByteProxy.hpp"
#include "support/Files.hpp"
#include "support/GaleraCluster.hpp"
#include "support/MariaDbProgram.hpp"
#include "support/Paths.hpp"
#include "support/PostgresServer.hpp"
#include "support/ServerProcess.hpp"

#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

namespace lumoscad::test {
namespace {

using testing::IsEmpty;
using Verso = ByteProxy::Direction;

constexpr unsigned PrimoSeme = 20261122;
constexpr int VoltePerSvolta = 2;
const Misura Misura{30, 10, 400, 100, 2000};

bool PerIntero() {
  return std::getenv("LUMOSCAD_PER_INTERO") != nullptr;
}
int Comandi() {
  return PerIntero() ? 40 : 4;
}
int TerminaliAlMassimo() {
  const char* detto = std::getenv("LUMOSCAD_CRESCITA_TERMINALI");
  return detto != nullptr ? std::stoi(detto) : PerIntero() ? 64 : 1;
}

/// Seconds of processor that a process has used, its descendants, and all that these have waited for.
double SecondiDiProcessore(pid_t primo) {
  std::vector<pid_t> tutti = Descendants(primo);
  tutti.push_back(primo);
  long scatti = 0;
  for (const pid_t quale : tutti) {
    std::ifstream file("/proc/" + std::to_string(quale) + "/stat");
    std::string riga;
    std::getline(file, riga);
    if (riga.rfind(')') == std::string::npos) {
      continue; // it has just ended, and its parent has waited for it
    }
    std::istringstream campi(riga.substr(riga.rfind(')') + 1));
    std::vector<std::string> parole(std::istream_iterator<std::string>(campi), {});
    constexpr std::size_t PrimoTempo = 11; // utime, stime, cutime, cstime, counted from the state
    for (std::size_t indice = PrimoTempo; indice < PrimoTempo + 4; ++indice) {
      scatti += std::stol(parole.at(indice));
    }
  }
  return static_cast<double>(scatti) / static_cast<double>(::sysconf(_SC_CLK_TCK));
}

/// What a database's own counters say up to now.
struct Contatori {
  double sessioni = 0;
  double rifiuti = 0;            ///< deadlocks, and on a cluster changes that came too late
  double attesaMillisecondi = 0; ///< of rows that others held; negative where only a look now and then tells
  double processore = 0;         ///< seconds
};

/// A look at the sessions that are there.
struct Sguardo {
  double aperte = 0;
  double inAttesa = 0;
};

/// A database server with as many databases as there are measurements.
class Base {
 public:
  Base() = default;
  Base(const Base&) = delete;
  Base& operator=(const Base&) = delete;
  virtual ~Base() = default;

  [[nodiscard]] virtual const char* Nome() const = 0;
  /// The kind, as `Sistema` has it.
  [[nodiscard]] virtual const char* Genere() const = 0;
  /// A new database with the accounting; `passaggio` is reached in the place of the server where it is given.
  [[nodiscard]] virtual std::unique_ptr<TestDatabase> Apri(const ByteProxy* passaggio) = 0;
  [[nodiscard]] virtual std::unique_ptr<ByteProxy> Passaggio() = 0;
  [[nodiscard]] virtual Contatori Conta(Sistema& sistema) = 0;
  [[nodiscard]] virtual Sguardo Guarda(Sistema& sistema) = 0;

 protected:
  static std::string Script() { return FileText(SourcePath("demo/schema.sql")) + Righe(Misura); }
  std::string NuovoNome() { return "crescita" + std::to_string(++numero_); }

 private:
  int numero_ = 0;
};

double Numero(const std::string& testo) {
  return std::stod(testo);
}

class UnPostgres final : public Base {
 public:
  [[nodiscard]] const char* Nome() const override { return "PostgreSQL"; }
  [[nodiscard]] const char* Genere() const override { return "postgres"; }

  [[nodiscard]] std::unique_ptr<TestDatabase> Apri(const ByteProxy* passaggio) override {
    const std::string nome = NuovoNome();
    auto database = std::make_unique<DatabaseWithSource>();
    database->source = server_.CreateDatabase(nome, Script());
    if (passaggio != nullptr) {
      database->source = server_.AddSource(nome, passaggio->Port());
    }
    database->user = server_.User();
    database->password = server_.Password();
    database->schema = "public";
    return database;
  }

  [[nodiscard]] std::unique_ptr<ByteProxy> Passaggio() override {
    return std::make_unique<ByteProxy>(server_.Port(), server_.Host());
  }

  [[nodiscard]] Contatori Conta(Sistema& sistema) override {
    // What a session has counted the server tells a second after its end.
    std::this_thread::sleep_for(std::chrono::milliseconds(1500));
    static_cast<void>(sistema.Interroga("SELECT pg_stat_clear_snapshot()"));
    const auto riga = sistema.Interroga("SELECT sessions FROM pg_stat_database WHERE datname=current_database()").at(0);
    const auto rifiuti =
        sistema.Interroga("SELECT deadlocks FROM pg_stat_database WHERE datname=current_database()").at(0);
    return {Numero(riga), Numero(rifiuti), -1, SecondiDiProcessore(server_.Process())};
  }

  [[nodiscard]] Sguardo Guarda(Sistema& sistema) override {
    const auto riga = sistema.Interroga("SELECT count(*), count(*) FILTER (WHERE wait_event_type='Lock') FROM "
                                        "pg_stat_activity WHERE datname=current_database() AND pid<>pg_backend_pid()");
    const auto confine = riga.at(0).find('|');
    return {Numero(riga[0].substr(0, confine)), Numero(riga[0].substr(confine + 1))};
  }

 private:
  PostgresServer server_{ServerDirectory("crescita")};
};

class TreGalera final : public Base {
 public:
  [[nodiscard]] const char* Nome() const override { return "Galera"; }
  [[nodiscard]] const char* Genere() const override { return "mariadb"; }

  [[nodiscard]] std::unique_ptr<TestDatabase> Apri(const ByteProxy* passaggio) override {
    const std::string nome = NuovoNome();
    nodi_.CreateDatabase(nome, Script());
    auto database = std::make_unique<DatabaseWithSource>();
    database->source = passaggio == nullptr
                           ? OdbcConfiguration::Instance().AddSource(MariaDbNames.kind, MariaDbNames.library,
                                                                     {{"SERVER", nodi_.Hosts()}, {"DATABASE", nome}})
                           : nodi_.Node(0).AddSource(nome, passaggio->Port());
    database->user = nodi_.Node(0).User();
    database->password = nodi_.Node(0).Password();
    database->schema = nome;
    return database;
  }

  [[nodiscard]] std::unique_ptr<ByteProxy> Passaggio() override {
    return std::make_unique<ByteProxy>(nodi_.Node(0).Port());
  }

  [[nodiscard]] Contatori Conta(Sistema&) override {
    Contatori contatori;
    for (std::size_t quale = 0; quale < GaleraCluster::Size; ++quale) {
      GaleraNode& nodo = nodi_.Node(quale);
      const auto stato = [&nodo](const char* nome) { return Numero(nodo.Status(nome)); };
      contatori.sessioni += stato("Connections");
      contatori.rifiuti += stato("wsrep_local_bf_aborts") + stato("wsrep_local_cert_failures");
      contatori.attesaMillisecondi += stato("Innodb_row_lock_time");
      contatori.processore += SecondiDiProcessore(nodo.Process());
    }
    return contatori;
  }

  [[nodiscard]] Sguardo Guarda(Sistema& sistema) override {
    const auto riga = sistema.Interroga("SELECT count(*) FROM information_schema.processlist WHERE db=DATABASE() AND "
                                        "id<>CONNECTION_ID()");
    return {Numero(riga.at(0)), 0};
  }

 private:
  GaleraCluster nodi_{ServerDirectory("crescita-galera")};
};

/// What a number of terminals did and cost.
struct Esito {
  std::size_t comandi = 0;
  std::size_t accettati = 0;  ///< by the host
  std::size_t listePrese = 0; ///< commands that found their list taken
  double secondi = 0;
  double medio = 0;      ///< milliseconds a command
  double quasiTutti = 0; ///< milliseconds that 95 of 100 commands stay below
  Contatori costo;
  double processoreHost = 0;
  double aperte = 0;   ///< most sessions at once
  double inAttesa = 0; ///< sessions that wait for a row, on the average
  double versoBase = 0;
  double dallaBase = 0;
  double versoHost = 0;
  double dallHost = 0;
};

void LeggiTempi(Esito& esito, const std::vector<Eseguito>& comandi) {
  Istante prima = comandi.at(0).inizio;
  Istante ultima = 0;
  std::vector<double> durate;
  constexpr double Milioni = 1e6;
  for (const Eseguito& comando : comandi) {
    prima = std::min(prima, comando.inizio);
    ultima = std::max(ultima, comando.fine);
    durate.push_back(static_cast<double>(comando.fine - comando.inizio) / Milioni);
    esito.medio += durate.back();
    esito.accettati += comando.accettata ? 1 : 0;
  }
  for (const auto& [blocco, conto] : ContaBlocchi(comandi)) {
    esito.listePrese += conto.rifiutati;
  }
  std::sort(durate.begin(), durate.end());
  esito.comandi = comandi.size();
  esito.medio /= static_cast<double>(comandi.size());
  esito.quasiTutti = durate.at(durate.size() * 95 / 100);
  esito.secondi = static_cast<double>(ultima - prima) / (Milioni * 1000);
}

/// Has so many terminals work at once; with `contaByte` through what counts what passes.
Esito Lavora(Base& base, int terminali, bool contaByte) {
  const std::unique_ptr<ByteProxy> passaggio = contaByte ? base.Passaggio() : nullptr;
  Sistema sistema(base.Genere(), base.Apri(passaggio.get()));
  SshServer& host = sistema.UsaSsh();
  std::unique_ptr<ByteProxy> passaggioHost;
  Testi ambiente;
  if (contaByte) {
    passaggioHost = std::make_unique<ByteProxy>(host.Port());
    host.MakeKnown(passaggioHost->Port());
    ambiente = host.Environment(passaggioHost->Port());
  }
  // What the counting itself costs is known by counting twice.
  const Contatori primaDiPrima = base.Conta(sistema);
  const Contatori prima = base.Conta(sistema);
  const double hostPrima = SecondiDiProcessore(host.Processes().back());
  const std::uint64_t versoPrima = passaggio ? passaggio->Passed(Verso::ToServer) : 0;
  const std::uint64_t dallaPrima = passaggio ? passaggio->Passed(Verso::ToClient) : 0;
  std::vector<Famiglia> famiglie;
  for (int quale = 1; quale <= terminali; ++quale) {
    Persona persona(Misura, PrimoSeme + static_cast<unsigned>(quale));
    Sistema::Lancio lancio{Postazione(quale), {}};
    std::generate_n(std::back_inserter(lancio.comandi), Comandi(),
                    [&] { return Replaced(persona.Prossimo(), "-H locale", "-H " + SshServer::Address()); });
    lancio.amministratore = true;
    lancio.ambiente = ambiente;
    famiglie.push_back(sistema.Avvia(lancio));
  }
  Esito esito;
  // The looks of the counting pass would be counted themselves.
  int sguardi = 0;
  const auto lavora = [&famiglie] {
    return std::any_of(famiglie.begin(), famiglie.end(), [](Famiglia& una) { return !una.Esito(); });
  };
  while (!contaByte && lavora()) {
    const Sguardo sguardo = base.Guarda(sistema);
    esito.aperte = std::max(esito.aperte, sguardo.aperte);
    esito.inAttesa += sguardo.inAttesa;
    ++sguardi;
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
  }
  for (Famiglia& famiglia : famiglie) {
    EXPECT_EQ(famiglia.Attendi(), 0);
  }
  std::vector<Eseguito> comandi;
  for (int quale = 1; quale <= terminali; ++quale) {
    EXPECT_EQ(LeggiComandi(sistema, Postazione(quale), comandi), static_cast<std::size_t>(Comandi()));
    EXPECT_THAT(LeggiRighe(sistema.Errori(Postazione(quale))), IsEmpty());
  }
  if (passaggio) {
    esito.versoBase = static_cast<double>(passaggio->Passed(Verso::ToServer) - versoPrima);
    esito.dallaBase = static_cast<double>(passaggio->Passed(Verso::ToClient) - dallaPrima);
    esito.versoHost = static_cast<double>(passaggioHost->Passed(Verso::ToServer));
    esito.dallHost = static_cast<double>(passaggioHost->Passed(Verso::ToClient));
  }
  EXPECT_TRUE(sistema.SenzaSessioni()) << "a session is left";
  EXPECT_EQ(AccettateDallHost(sistema), AccettatePerITerminali(comandi));
  LeggiTempi(esito, comandi);
  const Contatori dopo = base.Conta(sistema);
  esito.inAttesa /= std::max(1, sguardi);
  esito.costo = {dopo.sessioni - 2 * prima.sessioni + primaDiPrima.sessioni, dopo.rifiuti - prima.rifiuti,
                 prima.attesaMillisecondi < 0 ? esito.inAttesa * esito.secondi * 1000
                                              : dopo.attesaMillisecondi - prima.attesaMillisecondi,
                 dopo.processore - 2 * prima.processore + primaDiPrima.processore};
  esito.processoreHost = SecondiDiProcessore(host.Processes().back()) - hostPrima;
  return esito;
}

void Stampa(const char* base, int terminali, const Esito& esito) {
  const auto perComando = [&esito](double quanto) { return quanto / static_cast<double>(esito.comandi); };
  std::printf("crescita: %s terminali=%d comandi=%zu accettati=%zu listeprese=%zu alsecondo=%.1f medio=%.1f "
              "quasitutti=%.1f attesarighe=%.3f rifiuti=%.0f sessioni=%.2f aperte=%.0f processorebase=%.2f "
              "processorehost=%.2f\n",
              base, terminali, esito.comandi, esito.accettati, esito.listePrese,
              static_cast<double>(esito.comandi) / esito.secondi, esito.medio, esito.quasiTutti,
              perComando(esito.costo.attesaMillisecondi), esito.costo.rifiuti, perComando(esito.costo.sessioni),
              esito.aperte, 1000 * perComando(esito.costo.processore), 1000 * perComando(esito.processoreHost));
}

void StampaByte(const char* base, const Esito& esito) {
  const auto perComando = [&esito](double quanto) { return quanto / static_cast<double>(esito.comandi); };
  std::printf("crescita: %s byte comandi=%zu versobase=%.0f dallabase=%.0f versohost=%.0f dallhost=%.0f\n", base,
              esito.comandi, perComando(esito.versoBase), perComando(esito.dallaBase), perComando(esito.versoHost),
              perComando(esito.dallHost));
}

void Cresci(Base& base) {
  const Esito byte = Lavora(base, 1, true);
  EXPECT_GT(byte.versoBase, 0);
  EXPECT_GT(byte.dallHost, 0);
  StampaByte(base.Nome(), byte);
  for (int terminali = 1; terminali <= TerminaliAlMassimo(); terminali *= VoltePerSvolta) {
    const Esito esito = Lavora(base, terminali, false);
    EXPECT_GT(esito.accettati, 0U) << "hardly anything was tried";
    EXPECT_GT(esito.costo.sessioni, 0);
    EXPECT_GT(esito.processoreHost, 0);
    Stampa(base.Nome(), terminali, esito);
  }
}

TEST(Growth, OfTerminalsIsToldByWhatACommandCosts) {
  ASSERT_TRUE(PostgresServer::Available()) << "PostgreSQL or its ODBC driver is not installed";
  {
    UnPostgres base;
    Cresci(base);
  }
  if (PerIntero()) {
    ASSERT_TRUE(GaleraCluster::Available()) << "galera-4 is missing";
    TreGalera base;
    Cresci(base);
  }
}

} // namespace
} // namespace lumoscad::test
