// Eight terminals work at once on one host and on a database of several servers, of which one is lost in the middle.
//
//   LUMOSCAD_PER_INTERO=1  five times 60 commands each; otherwise once 6

#include "Gruppo.hpp"
#include "Lavoro.hpp"
#include "Modello.hpp"
#include "Persona.hpp"
#include "support/GaleraCluster.hpp"
#include "support/PostgresPair.hpp"
#include "support/ServerProcess.hpp"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iterator>

namespace lumoscad::test {
namespace {

using testing::IsEmpty;

constexpr int Terminali = 8;
constexpr unsigned PrimoSeme = 20260711;
const Misura Misura{6, 3, 60, 24, 40};

bool PerIntero() {
  return std::getenv("LUMOSCAD_PER_INTERO") != nullptr;
}
int Volte() {
  return PerIntero() ? 5 : 1;
}
int Comandi() {
  return PerIntero() ? 60 : 6;
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

class LostServer : public testing::Test {
 protected:
  /// A day's work with the loss of a server when a third of it is done.
  void Giornata(Gruppo& gruppo, int volta, Somma& somma) {
    Testi utenti;
    for (int quale = 1; quale <= Terminali; ++quale) {
      utenti.push_back(Postazione(quale));
    }
    Sistema sistema(gruppo.Genere(), gruppo.Apri(Misura, utenti));
    gruppo.Ricollega(sistema);
    const Stato iniziale = LeggiStato(sistema);
    ASSERT_THAT(iniziale, testing::SizeIs(testing::Gt(100U)));
    std::vector<Famiglia> famiglie;
    for (int quale = 1; quale <= Terminali; ++quale) {
      Persona persona(Misura, PrimoSeme + static_cast<unsigned>(volta * Terminali + quale));
      Sistema::Lancio lancio{Postazione(quale), {}};
      std::generate_n(std::back_inserter(lancio.comandi), Comandi(), [&] { return persona.Prossimo(); });
      lancio.amministratore = true;
      lancio.utente = gruppo.PerUtente() ? Postazione(quale) : "";
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
    if (gruppo.PerUtente()) {
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
};

TEST_F(LostServer, OfAPairLeavesEveryCommandOfTheLogExplained) {
  ASSERT_TRUE(PostgresPair::Available()) << "PostgreSQL or its ODBC driver is not installed";
  Somma somma;
  for (int volta = 0; volta < Volte(); ++volta) {
    Coppia coppia;
    Giornata(coppia, volta, somma);
  }
  somma.Stampa("cluster: PostgreSQL");
  EXPECT_GT(somma.riscontro.inOrdine, static_cast<std::size_t>(Comandi() / 2)) << "hardly anything was tried";
}

TEST_F(LostServer, OfThreeNodesLeavesEveryCommandOfTheLogExplained) {
  ASSERT_TRUE(GaleraCluster::Available()) << "galera-4 is missing";
  Somma somma;
  for (int volta = 0; volta < Volte(); ++volta) {
    TreNodi nodi;
    Giornata(nodi, volta, somma);
  }
  somma.Stampa("cluster: Galera");
  EXPECT_GT(somma.riscontro.inOrdine, static_cast<std::size_t>(Comandi() / 2)) << "hardly anything was tried";
}

} // namespace
} // namespace lumoscad::test
