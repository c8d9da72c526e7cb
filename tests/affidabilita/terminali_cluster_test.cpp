// Eight terminals work at once on one host and on a database of several servers, of which one is lost in the middle.
//
//   LUMOSCAD_PER_INTERO=1  five times 60 commands each; otherwise once 6

#include "Lavoro.hpp"
#include "Modello.hpp"
#include "Persona.hpp"
#include "support/Files.hpp"
#include "support/GaleraCluster.hpp"
#include "support/MariaDbProgram.hpp"
#include "support/Paths.hpp"
#include "support/PostgresPair.hpp"
#include "support/ServerProcess.hpp"

#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <thread>

namespace lumoscad::test {
namespace {

using testing::IsEmpty;

constexpr int Terminali = 8;
constexpr unsigned PrimoSeme = 20260711;
const Misura Misura{6, 3, 60, 24, 40};
constexpr const char* Base = "contabilita";

bool PerIntero() {
  return std::getenv("LUMOSCAD_PER_INTERO") != nullptr;
}
int Volte() {
  return PerIntero() ? 5 : 1;
}
int Comandi() {
  return PerIntero() ? 60 : 6;
}

Istante Adesso() {
  return std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::system_clock::now().time_since_epoch())
      .count();
}

/// What became of all times.
struct Somma {
  Riscontro riscontro;
  std::vector<Eseguito> comandi;

  void Aggiungi(const Riscontro& altro, const std::vector<Eseguito>& altri) {
    riscontro.confermati += altro.confermati;
    riscontro.inOrdine += altro.inOrdine;
    riscontro.sovrapposti += altro.sovrapposti;
    riscontro.senzaEffetto += altro.senzaEffetto;
    riscontro.lineePerse += altro.lineePerse;
    riscontro.detti += altro.detti;
    riscontro.perduti += altro.perduti;
    riscontro.ignoti += altro.ignoti;
    riscontro.ignotiTenuti += altro.ignotiTenuti;
    comandi.insert(comandi.end(), altri.begin(), altri.end());
  }
  void Stampa(const std::string& inizio) const {
    StampaRiscontro(inizio, riscontro, comandi);
    std::printf("%s: server perduto %d volte: %zu comandi falliti per questo e detti, di cui %zu con esito sconosciuto "
                "(%zu poi nella base dati)\n",
                inizio.c_str(), Volte(), riscontro.perduti + riscontro.ignotiTenuti, riscontro.ignoti,
                riscontro.ignotiTenuti);
  }
};

/// Several servers that play the database of a `Sistema`.
class Gruppo {
 public:
  Gruppo() = default;
  Gruppo(const Gruppo&) = delete;
  Gruppo& operator=(const Gruppo&) = delete;
  virtual ~Gruppo() = default;

  [[nodiscard]] virtual std::unique_ptr<TestDatabase> Apri() = 0;
  /// Loses the server that is worked with; returns when the others serve.
  virtual void Perdi() = 0;
  /// The connection that reads what came of it.
  virtual void Ricollega(Sistema& sistema) = 0;
};

class LostServer : public testing::Test {
 protected:
  /// A day's work with the loss of a server when a third of it is done; `utenti` gives each terminal its own user.
  void Giornata(Gruppo& gruppo, const char* genere, bool utenti, int volta, Somma& somma) {
    Sistema sistema(genere, gruppo.Apri());
    gruppo.Ricollega(sistema);
    const Stato iniziale = LeggiStato(sistema);
    ASSERT_THAT(iniziale, testing::SizeIs(testing::Gt(100U)));
    std::vector<Famiglia> famiglie;
    for (int quale = 1; quale <= Terminali; ++quale) {
      Persona persona(Misura, PrimoSeme + static_cast<unsigned>(volta * Terminali + quale));
      Sistema::Lancio lancio{Postazione(quale), {}};
      std::generate_n(std::back_inserter(lancio.comandi), Comandi(), [&] { return persona.Prossimo(); });
      lancio.amministratore = true;
      lancio.utente = utenti ? Postazione(quale) : "";
      famiglie.push_back(sistema.Avvia(lancio));
    }
    Await("a third of the work", [&] { return Finiti(sistema) >= Terminali * Comandi() / 3; });
    Caduta caduta{Adesso(), 0};
    gruppo.Perdi();
    caduta.alla = Adesso();
    for (Famiglia& famiglia : famiglie) {
      EXPECT_EQ(famiglia.Attendi(), 0);
    }
    gruppo.Ricollega(sistema);
    std::vector<Eseguito> comandi;
    for (int quale = 1; quale <= Terminali; ++quale) {
      EXPECT_EQ(LeggiComandi(sistema, Postazione(quale), comandi), static_cast<std::size_t>(Comandi()));
    }
    EXPECT_TRUE(sistema.SenzaSessioni()) << "a session, and with it a transaction, is left";
    EXPECT_THAT(Contenuto(sistema.Tmp()), IsEmpty());
    EXPECT_EQ(AccettateDallHost(sistema), AccettatePerITerminali(comandi));
    auto conferme = LeggiConferme(sistema);
    if (utenti) {
      DaiNomi(conferme, comandi);
    }
    const Riscontro riscontro =
        Confronta(Modello(Misura, iniziale), iniziale, LeggiStato(sistema), conferme, comandi, {caduta});
    EXPECT_THAT(riscontro.errori, IsEmpty());
    somma.Aggiungi(riscontro, comandi);
  }

  static int Finiti(const Sistema& sistema) {
    std::ptrdiff_t finiti = 0;
    for (int quale = 1; quale <= Terminali; ++quale) {
      const auto righe = LeggiRighe(sistema.Registro(Postazione(quale)));
      finiti += std::count_if(righe.begin(), righe.end(), [](const auto& riga) { return riga.starts_with("FINE\t"); });
    }
    return static_cast<int>(finiti);
  }

  /// A transaction that names its terminal alone belongs to the command that was at work there.
  static void DaiNomi(std::vector<Conferma>& conferme, const std::vector<Eseguito>& comandi) {
    for (Conferma& conferma : conferme) {
      const auto suo = std::find_if(comandi.begin(), comandi.end(), [&](const Eseguito& comando) {
        return comando.nome.starts_with(conferma.comando + ".") && comando.inizio <= conferma.ora &&
               conferma.ora <= comando.fine;
      });
      if (suo != comandi.end()) {
        conferma.comando = suo->nome;
      }
    }
  }
};

/// A primary and its standby, which is promoted.
class Coppia final : public Gruppo {
 public:
  std::unique_ptr<TestDatabase> Apri() override {
    coppia_ = std::make_unique<PostgresPair>(ServerDirectory("pair"));
    coppia_->CreateDatabase(Base, FileText(SourcePath("demo/schema.sql")) + Righe(Misura) + Sorveglianza());
    auto database = std::make_unique<DatabaseWithSource>();
    database->source = coppia_->AddSource(Base);
    database->user = coppia_->First().User();
    database->password = coppia_->First().Password();
    database->schema = "public";
    return database;
  }
  void Perdi() override {
    coppia_->First().KillAll();
    coppia_->Promote();
  }
  void Ricollega(Sistema& sistema) override { sistema.Ricollega(); }

 private:
  std::unique_ptr<PostgresPair> coppia_;
};

/// Three nodes; the terminals work with the first that is there.
class TreNodi final : public Gruppo {
 public:
  TreNodi() : nodi_(ServerDirectory("galera")) {}

  std::unique_ptr<TestDatabase> Apri() override {
    nodi_.CreateDatabase(Base, FileText(SourcePath("demo/schema.sql")) + Righe(Misura));
    auto database = std::make_unique<DatabaseWithSource>();
    database->source = OdbcConfiguration::Instance().AddSource(MariaDbNames.kind, MariaDbNames.library,
                                                               {{"SERVER", nodi_.Hosts()}, {"DATABASE", Base}});
    database->user = nodi_.Node(0).User();
    database->password = nodi_.Node(0).Password();
    database->schema = Base;
    ado::Connection connessione;
    connessione.ConnectionString = database->ConnectionText();
    connessione.Open();
    for (const std::string& istruzione : SorveglianzaMariaDb()) {
      connessione.Execute(istruzione);
    }
    for (int quale = 1; quale <= Terminali; ++quale) {
      connessione.Execute("GRANT ALL ON *.* TO " + Postazione(quale) + "@'%' IDENTIFIED BY '" + database->password +
                          "'");
    }
    return database;
  }
  void Perdi() override {
    nodi_.Node(0).Kill();
    Await("the others go on", [&] { return nodi_.Node(1).Sees(2) && nodi_.Node(2).Sees(2); });
  }
  void Ricollega(Sistema& sistema) override { sistema.Ricollega("SET SESSION wsrep_sync_wait=1"); }

 private:
  GaleraCluster nodi_;
};

TEST_F(LostServer, OfAPairLeavesEveryCommandOfTheLogExplained) {
  ASSERT_TRUE(PostgresPair::Available()) << "PostgreSQL or its ODBC driver is not installed";
  Somma somma;
  for (int volta = 0; volta < Volte(); ++volta) {
    Coppia coppia;
    Giornata(coppia, "postgres", false, volta, somma);
  }
  somma.Stampa("cluster: PostgreSQL");
  EXPECT_GT(somma.riscontro.inOrdine, static_cast<std::size_t>(Comandi() / 2)) << "hardly anything was tried";
}

TEST_F(LostServer, OfThreeNodesLeavesEveryCommandOfTheLogExplained) {
  ASSERT_TRUE(GaleraCluster::Available()) << "galera-4 is missing";
  Somma somma;
  for (int volta = 0; volta < Volte(); ++volta) {
    TreNodi nodi;
    Giornata(nodi, "mariadb", true, volta, somma);
  }
  somma.Stampa("cluster: Galera");
  EXPECT_GT(somma.riscontro.inOrdine, static_cast<std::size_t>(Comandi() / 2)) << "hardly anything was tried";
}

} // namespace
} // namespace lumoscad::test
