// The comparison of commands and database finds what it is there for.

#include "Blocchi.hpp"
#include "Modello.hpp"
#include "Storia.hpp"

#include <gmock/gmock.h>

namespace lumoscad::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr const char* Attiva = "1|1|101|C|N|2026-03-02|2026-03-02|1|2|-|O";
constexpr const char* Sospesa = "1|1|101|C|S|2026-03-02|2026-03-02|1|2|-|O";
constexpr const char* Spostata = "1|1|101|C|N|2026-04-15|2026-03-02|1|2|-|O";

/// Item 1 of customer 20100001, with one instalment.
const Stato Iniziale{{"E10", Attiva}, {"M1", "N|F|1|2026"}, {"R100", ""}};

/// The times of the cases are in seconds.
constexpr Istante Secondo = 1'000'000'000;

Eseguito Comando(const std::string& nome, Istante inizio, Istante fine, std::vector<std::string> richiesta,
                 const std::string& contenuto = "") {
  Eseguito comando;
  comando.nome = nome;
  comando.inizio = inizio * Secondo;
  comando.risposto = inizio * Secondo;
  comando.fine = fine * Secondo;
  comando.comando = "-T X";
  comando.richiesta = std::move(richiesta);
  comando.contenuto = contenuto;
  comando.accettata = true;
  return comando;
}

Eseguito Sospende(const std::string& nome, Istante inizio, Istante fine) {
  return Comando(nome, inizio, fine, {"01", "SOSPESOCREA", "20100001", "AB1", "T01", ""});
}

Eseguito Sposta(const std::string& nome, Istante inizio, Istante fine) {
  return Comando(nome, inizio, fine, {"01", "CANALIZZAZIONE", "CREDITI", "T01", "/tmp/x.dos"},
                 "20100001,AB   1,,,,20260302,20260302,20260415,60100002,,1\r\n");
}

Riscontro Prova(const Stato& finale, std::vector<Conferma> conferme, const std::vector<Eseguito>& comandi,
                std::vector<Caduta> cadute = {}) {
  for (Conferma& conferma : conferme) {
    conferma.ora *= Secondo;
  }
  for (Caduta& caduta : cadute) {
    caduta = {caduta.dalla * Secondo, caduta.alla * Secondo};
  }
  return Confronta(Modello({1, 0, 1, 0, 0}, Iniziale), Iniziale, finale, conferme, comandi, cadute);
}

Stato Con(const char* riga) {
  Stato stato = Iniziale;
  stato["E10"] = riga;
  return stato;
}

TEST(Reconciliation, ACommandWithItsTransactionIsInOrder) {
  const auto riscontro = Prova(Con(Sospesa), {{"T01.1", 15, {{"E10", Attiva, Sospesa}}}}, {Sospende("T01.1", 10, 20)});
  EXPECT_THAT(riscontro.errori, IsEmpty());
  EXPECT_EQ(riscontro.inOrdine, 1U);
}

TEST(Reconciliation, ALostCommandIsFound) {
  EXPECT_THAT(Prova(Iniziale, {}, {Sospende("T01.1", 10, 20)}).errori, ElementsAre(HasSubstr("T01.1 is lost")));
}

TEST(Reconciliation, ADoubledCommandIsFound) {
  const std::vector<Conferma> conferme{{"T01.1", 15, {{"E10", Attiva, Sospesa}}},
                                       {"T01.1", 16, {{"E10", Sospesa, Sospesa}}}};
  EXPECT_THAT(Prova(Con(Sospesa), conferme, {Sospende("T01.1", 10, 20)}).errori,
              ElementsAre(HasSubstr("has two transactions")));
}

TEST(Reconciliation, ATransactionOfNoCommandIsFound) {
  EXPECT_THAT(Prova(Con(Sospesa), {{"T02.1", 15, {{"E10", Attiva, Sospesa}}}}, {}).errori,
              ElementsAre(HasSubstr("of no command: T02.1")));
}

TEST(Reconciliation, AChangeThatNobodyAskedForIsFound) {
  EXPECT_THAT(Prova(Con(Spostata), {{"T01.1", 15, {{"E10", Attiva, Spostata}}}}, {Sospende("T01.1", 10, 20)}).errori,
              ElementsAre(HasSubstr("changed what it does not ask for")));
}

TEST(Reconciliation, AChangeOutsideTheLogIsFound) {
  EXPECT_THAT(Prova(Con(Sospesa), {}, {}).errori, ElementsAre(HasSubstr("final database")));
}

TEST(Reconciliation, ALogThatSkipsAChangeIsFound) {
  EXPECT_THAT(Prova(Con(Sospesa), {{"T01.1", 15, {{"E10", Spostata, Sospesa}}}}, {Sospende("T01.1", 10, 20)}).errori,
              Contains(HasSubstr("another row than the one before")));
}

TEST(Reconciliation, AChangeAfterAnErrorIsFound) {
  Eseguito fallito = Sospende("T01.1", 10, 20);
  fallito.risultato = "error";
  EXPECT_THAT(Prova(Con(Sospesa), {{"T01.1", 15, {{"E10", Attiva, Sospesa}}}}, {fallito}).errori,
              ElementsAre(HasSubstr("answered \"error\"")));
}

TEST(Reconciliation, ARefusalOfTheDatabaseMustBeSaid) {
  Eseguito fallito = Sospende("T01.1", 10, 20);
  fallito.risultato = "error";
  const std::vector<Conferma> altrui{{"T02.1", 15, {{"E10", Attiva, Sospesa}}}};
  const Eseguito altro = Sospende("T02.1", 12, 20);
  EXPECT_THAT(Prova(Con(Sospesa), altrui, {fallito, altro}).errori, ElementsAre(HasSubstr("in silence")));
  fallito.box = {"La riga è stata modificata o eliminata da un altro terminale: la modifica non è stata registrata."};
  const auto riscontro = Prova(Con(Sospesa), altrui, {fallito, altro});
  EXPECT_THAT(riscontro.errori, IsEmpty());
  EXPECT_EQ(riscontro.detti, 1U);
}

TEST(Reconciliation, ARefusalOfTheDatabaseMustHaveACause) {
  Eseguito fallito = Sospende("T01.1", 10, 20);
  fallito.risultato = "error";
  // Nobody else was there, and the item is.
  for (const char* box : {"La riga è stata modificata o eliminata da un altro terminale: la modifica non è stata "
                          "registrata.",
                          "ERRORE: -2147220990\r\nMOVIMENTO CONTABILE INESISTENTE", "ERRORE: -2147467259"}) {
    fallito.box = {box};
    EXPECT_THAT(Prova(Iniziale, {}, {fallito}).errori, ElementsAre(HasSubstr("without a cause"))) << box;
  }
}

TEST(Reconciliation, AMovementThatIsGoneIsACause) {
  Eseguito fallito = Comando("T01.1", 10, 20, {"01", "EXTRADEL", "A", "2006", "7", ""});
  fallito.risultato = "error";
  fallito.box = {"ERRORE: -2147220990\r\nMOVIMENTO CONTABILE INESISTENTE"};
  const Stato conExtra{{"M7", "X|A|7|2006"}};
  EXPECT_THAT(Confronta(Modello({1, 0, 0, 0, 0}, conExtra), conExtra, conExtra, {}, {fallito}).errori,
              ElementsAre(HasSubstr("without a cause")));
  const std::vector<Conferma> tolto{{"T02.1", 5 * Secondo, {{"M7", "X|A|7|2006", std::nullopt}}}};
  const Eseguito altro = Comando("T02.1", 4, 6, {"01", "EXTRADEL", "A", "2006", "7", ""});
  EXPECT_THAT(Confronta(Modello({1, 0, 0, 0, 0}, conExtra), conExtra, {}, tolto, {altro, fallito}).errori, IsEmpty());
}

constexpr const char* NienteTenuto = "L'host ha già accettato la modifica; la base dati non ne ha registrato nulla.";
constexpr const char* NonSiSa = "L'host ha già accettato la modifica; non si sa se la base dati l'ha registrata.";

Eseguito Fallito(const char* box) {
  Eseguito fallito = Sospende("T01.1", 10, 20);
  fallito.risultato = "error";
  fallito.box = {box};
  return fallito;
}

TEST(Reconciliation, ALostServerIsACauseForWhoWasAtWorkThen) {
  for (const char* box : {NienteTenuto, NonSiSa}) {
    const auto riscontro = Prova(Iniziale, {}, {Fallito(box)}, {{15, 16}});
    EXPECT_THAT(riscontro.errori, IsEmpty()) << box;
    EXPECT_EQ(riscontro.perduti, 1U);
    EXPECT_EQ(riscontro.ignoti, box == NonSiSa ? 1U : 0U);
    for (const Caduta& altra : {Caduta{5, 9}, Caduta{21, 30}}) {
      EXPECT_THAT(Prova(Iniziale, {}, {Fallito(box)}, {altra}).errori, ElementsAre(HasSubstr("without a cause")));
    }
  }
}

TEST(Reconciliation, AChangeThatWasKeptIsFoundWhereTheMessageDeniesIt) {
  const std::vector<Conferma> tenuta{{"T01.1", 15, {{"E10", Attiva, Sospesa}}}};
  EXPECT_THAT(Prova(Con(Sospesa), tenuta, {Fallito(NienteTenuto)}, {{15, 16}}).errori,
              ElementsAre(HasSubstr("answered \"error\"")));
  EXPECT_THAT(Prova(Con(Sospesa), tenuta, {Fallito(NonSiSa)}, {{5, 9}}).errori,
              ElementsAre(HasSubstr("answered \"error\"")));
  const auto riscontro = Prova(Con(Sospesa), tenuta, {Fallito(NonSiSa)}, {{15, 16}});
  EXPECT_THAT(riscontro.errori, IsEmpty());
  EXPECT_EQ(riscontro.ignotiTenuti, 1U);
}

TEST(Reconciliation, ALostServerExcusesNoCommandThatAnsweredWell) {
  EXPECT_THAT(Prova(Iniziale, {}, {Sospende("T01.1", 10, 20)}, {{15, 16}}).errori,
              ElementsAre(HasSubstr("T01.1 is lost")));
}

TEST(Reconciliation, ALineThatFindsItsRowTakenIsCounted) {
  // The item is suspended before the date's change comes to the database.
  const auto riscontro = Prova(Con(Sospesa), {{"T01.1", 15, {{"E10", Attiva, Sospesa}}}},
                               {Sospende("T01.1", 10, 20), Sposta("T02.1", 17, 30)});
  EXPECT_THAT(riscontro.errori, IsEmpty());
  EXPECT_EQ(riscontro.senzaEffetto, 1U);
  EXPECT_EQ(riscontro.lineePerse, 1U);
}

TEST(Reconciliation, ARowReadBeforeAnothersCommitIsAnOverlap) {
  // The date's change selects the row while it is active and writes it once it is suspended.
  const char* entrambi = "1|1|101|C|S|2026-04-15|2026-03-02|1|2|-|O";
  const std::vector<Conferma> conferme{{"T01.1", 15, {{"E10", Attiva, Sospesa}}},
                                       {"T02.1", 16, {{"E10", Sospesa, entrambi}}}};
  const auto riscontro = Prova(Con(entrambi), conferme, {Sospende("T01.1", 10, 20), Sposta("T02.1", 12, 30)});
  EXPECT_THAT(riscontro.errori, IsEmpty());
  EXPECT_EQ(riscontro.inOrdine, 1U);
  EXPECT_EQ(riscontro.sovrapposti, 1U);
}

TEST(Reconciliation, AnOverlapMustBeOneInTime) {
  const char* entrambi = "1|1|101|C|S|2026-04-15|2026-03-02|1|2|-|O";
  const std::vector<Conferma> conferme{{"T01.1", 15, {{"E10", Attiva, Sospesa}}},
                                       {"T02.1", 26, {{"E10", Sospesa, entrambi}}}};
  EXPECT_THAT(Prova(Con(entrambi), conferme, {Sospende("T01.1", 10, 20), Sposta("T02.1", 22, 30)}).errori,
              ElementsAre(HasSubstr("T02.1 changed what it does not ask for")));
}

TEST(Reconciliation, ARowThatALaterLineOfTheRequestCarriesAlongIsInOrder) {
  // The first line moves a row onto the date of another row of the document, which the second line moves on.
  const auto riga = [](const std::string& consegna) {
    return "1001|-|101|P|N|-|-|-|-|2026-" + consegna + "|" + (consegna < "05" ? "O" : " ");
  };
  const Stato iniziale{{"E10", riga("04-11")}, {"E11", riga("04-20")}, {"M1001", "N|OC|106|2006"}};
  const Stato finale{{"E10", riga("07-14")}, {"E11", riga("07-14")}, {"M1001", "N|OC|106|2006"}};
  const Eseguito comando = Comando("T01.1", 10, 20, {"01", "CONSEGNA", "PRESUNTI", "T01", "/tmp/x.dos"},
                                   "20100001,OC,1,06,20260411,20260316,20260420\r\n"
                                   "20100001,OC,1,06,20260420,20260315,20260714\r\n");
  const auto prova = [&](std::vector<Cambio> cambi, const Stato& esito) {
    const std::vector<Conferma> conferme{{"T01.1", 15 * Secondo, std::move(cambi)}};
    return Confronta(Modello({1, 0, 0, 1, 0}, iniziale), iniziale, esito, conferme, {comando});
  };
  const std::string inMezzo = "1001|-|101|P|N|-|-|-|-|2026-04-20| ";
  const auto riscontro =
      prova({{"E10", riga("04-11"), inMezzo}, {"E10", inMezzo, riga("07-14")}, {"E11", riga("04-20"), riga("07-14")}},
            finale);
  EXPECT_THAT(riscontro.errori, IsEmpty());
  EXPECT_EQ(riscontro.inOrdine, 1U);
  Stato lasciata = finale;
  lasciata["E10"] = inMezzo;
  EXPECT_THAT(prova({{"E10", riga("04-11"), inMezzo}, {"E11", riga("04-20"), riga("07-14")}}, lasciata).errori,
              ElementsAre(HasSubstr("changed what it does not ask for")))
      << "a row that the second line had to carry along";
}

Eseguito Blocca(const std::string& nome, Istante letto, Istante dentro, Istante fuori) {
  Eseguito comando;
  comando.nome = nome;
  comando.operazioni = {{"LETTO", "VBX", letto, letto + 1, false},
                        {"BLOCCATO", "VBX", letto + 2, dentro, true},
                        {"SBLOCCATO", "VBX", fuori, fuori + 1, true}};
  return comando;
}

TEST(Locks, CommandsOneAfterTheOtherAreNotTogether) {
  const auto conto = ContaBlocchi({Blocca("A", 0, 10, 20), Blocca("B", 30, 40, 50)}).at("VBX");
  EXPECT_EQ(conto.presi, 2U);
  EXPECT_EQ(conto.insieme, 0U);
  EXPECT_EQ(conto.massimo, 1U);
}

TEST(Locks, ALockReadBeforeTheOthersWasInPlaceIsExplained) {
  const auto conto = ContaBlocchi({Blocca("A", 0, 10, 30), Blocca("B", 5, 15, 40)}).at("VBX");
  EXPECT_EQ(conto.insieme, 1U);
  EXPECT_EQ(conto.perIntervallo, 1U);
  EXPECT_EQ(conto.massimo, 2U);
}

TEST(Locks, ALockTakenAwayByAThirdOnesReleaseIsExplained) {
  const auto conto = ContaBlocchi({Blocca("A", 0, 10, 20), Blocca("B", 5, 15, 60), Blocca("C", 30, 40, 50)}).at("VBX");
  EXPECT_EQ(conto.insieme, 2U);
  EXPECT_EQ(conto.perRilascio, 1U);
  EXPECT_THAT(conto.inspiegati, IsEmpty());
}

TEST(Locks, ALockThatWasThereAndDidNotHoldIsFound) {
  const auto conto = ContaBlocchi({Blocca("A", 0, 10, 60), Blocca("B", 20, 30, 50)}).at("VBX");
  EXPECT_THAT(conto.inspiegati, ElementsAre("A B"));
}

} // namespace
} // namespace lumoscad::test
