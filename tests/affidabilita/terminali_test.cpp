// Eight terminals work at once on one database and one host.
//
//   LUMOSCAD_PER_INTERO=1  200 commands each; otherwise 20

#include "Blocchi.hpp"
#include "Lavoro.hpp"
#include "Modello.hpp"
#include "Persona.hpp"
#include "Sistema.hpp"
#include "Storia.hpp"
#include "common/Nota.hpp"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <vector>

namespace lumoscad::test {
namespace {

using testing::IsEmpty;

constexpr int Terminali = 8;
constexpr unsigned PrimoSeme = 20060305;
const Misura Misura{6, 3, 60, 24, 160};

int Comandi() {
  return std::getenv("LUMOSCAD_PER_INTERO") != nullptr ? 200 : 20;
}

class ManyTerminals : public testing::Test {
 protected:
  ManyTerminals() : sistema("postgres", Righe(Misura) + Sorveglianza()), iniziale(LeggiStato(sistema)) {
    // One customer is refused by the host: commands that fail keep their lock.
    std::ofstream(sistema.Host() / "conti_bloccati") << "20100006\n";
  }

  /// Runs all terminals to their end.
  void Lavora() {
    std::vector<Famiglia> famiglie;
    for (int quale = 1; quale <= Terminali; ++quale) {
      Persona persona(Misura, PrimoSeme + static_cast<unsigned>(quale));
      Sistema::Lancio lancio{Postazione(quale), {}};
      std::generate_n(std::back_inserter(lancio.comandi), Comandi(), [&] { return persona.Prossimo(); });
      lancio.amministratore = true;
      famiglie.push_back(sistema.Avvia(lancio));
    }
    for (Famiglia& famiglia : famiglie) {
      EXPECT_EQ(famiglia.Attendi(), 0);
    }
    for (int quale = 1; quale <= Terminali; ++quale) {
      EXPECT_EQ(LeggiComandi(sistema, Postazione(quale), comandi), static_cast<std::size_t>(Comandi()));
    }
  }

  [[nodiscard]] Riscontro Confronta() {
    return test::Confronta(Modello(Misura, iniziale), iniziale, LeggiStato(sistema), LeggiConferme(sistema), comandi);
  }

  void VerificaResti() {
    EXPECT_TRUE(sistema.SenzaSessioni()) << "a session, and with it a transaction, is left";
    EXPECT_EQ(sistema.Interroga("SELECT count(*) FROM pg_prepared_xacts"), Testi{"0"});
    EXPECT_THAT(Contenuto(sistema.Tmp()), IsEmpty());
    for (const Eseguito& comando : comandi) {
      const std::string postazione = comando.nome.substr(0, comando.nome.find('.'));
      // The local copy of a lock stays where it is, and the note of a change that the host has and the database has
      // not.
      EXPECT_THAT(Contenuto(sistema.Locale(postazione)),
                  testing::Each(testing::AnyOf(testing::StartsWith("VB"), testing::StartsWith("sospeso-"))));
      EXPECT_THAT(LeggiRighe(sistema.Base() / (postazione + ".errori")), IsEmpty());
    }
  }

  /// What the terminals have left open.
  [[nodiscard]] std::vector<Nota> Note() const {
    std::set<std::string> postazioni;
    for (const Eseguito& comando : comandi) {
      postazioni.insert(comando.nome.substr(0, comando.nome.find('.')));
    }
    std::vector<Nota> note;
    for (const std::string& postazione : postazioni) {
      const auto sue = LeggiNote(sistema.Locale(postazione));
      note.insert(note.end(), sue.begin(), sue.end());
    }
    return note;
  }

  Sistema sistema;
  Stato iniziale;
  std::vector<Eseguito> comandi;
};

void StampaBlocchi(const std::map<std::string, ContoBlocco>& conti) {
  for (const auto& [blocco, conto] : conti) {
    std::printf(
        "terminali: %-11s preso %3zu volte, rifiutato %3zu, tolto dall'amministratore %2zu; insieme %3zu coppie "
        "(%zu fra lettura e scrittura, %zu dopo un rilascio altrui), al massimo %zu\n",
        blocco.c_str(), conto.presi, conto.rifiutati, conto.rimossi, conto.insieme, conto.perIntervallo,
        conto.perRilascio, conto.massimo);
  }
}

TEST_F(ManyTerminals, TheDatabaseIsWhatTheAcceptedCommandsSayInTheirOrder) {
  Lavora();
  VerificaResti();
  EXPECT_EQ(AccettateDallHost(sistema), AccettatePerITerminali(comandi));
  const Riscontro riscontro = Confronta();
  EXPECT_THAT(riscontro.errori, IsEmpty());
  EXPECT_GT(riscontro.inOrdine, static_cast<std::size_t>(Comandi())) << "hardly anything was tried";
  std::size_t nonApplicate = 0;
  for (const Nota& nota : Note()) {
    EXPECT_EQ(nota.errore, "");
    EXPECT_FALSE(nota.inCorso) << nota.nome;
    nonApplicate += nota.fase == FaseNota::NonApplicata ? 1 : 0;
    EXPECT_TRUE(nota.fase == FaseNota::NonApplicata || (nota.fase == FaseNota::Applicata && !nota.righeRimaste.empty()))
        << nota.nome;
  }
  EXPECT_EQ(nonApplicate, riscontro.detti);
  const auto blocchi = ContaBlocchi(comandi);
  for (const auto& [blocco, conto] : blocchi) {
    EXPECT_THAT(conto.inspiegati, IsEmpty()) << blocco;
  }
  StampaComandi("terminali", comandi);
  StampaRiscontro("terminali", riscontro, comandi);
  StampaBlocchi(blocchi);
}

TEST_F(ManyTerminals, AChangeOfARowThatSomebodySuspendedMeanwhileStaysWithTheHostAndIsTold) {
  const std::string partita = "AB   9";
  const std::string via = (sistema.Base() / "via").string();
  Famiglia lento = sistema.Avvia({"T01",
                                  {"-T BANCA /CREDITI -H locale -D 01 -B X -C 20100001\tdata:=" + partita +
                                   ":15/04/26;aspetta:" + via + ";conferma"}});
  ASSERT_TRUE(sistema.Compare(via + ".qui"));
  Famiglia svelto = sistema.Avvia({"T02", {"-T SOSPESO /A -H locale -D 01 -C 20100001 -P " + partita}});
  EXPECT_EQ(svelto.Attendi(), 0);
  std::ofstream(via) << "";
  EXPECT_EQ(lento.Attendi(), 0);
  ASSERT_EQ(LeggiComandi(sistema, "T01", comandi), 1U);
  ASSERT_EQ(LeggiComandi(sistema, "T02", comandi), 1U);
  EXPECT_EQ(comandi[0].risultato, "");
  EXPECT_EQ(comandi[0].box,
            (Testi{"Variata 1 scadenza", "L'host ha registrato la modifica; nella base dati queste righe erano già "
                                         "cambiate e sono rimaste com'erano: conto 20100001 partita AB   9 rata 1 del "
                                         "10/03/2026"}));
  EXPECT_TRUE(comandi[0].accettata);
  const Riscontro riscontro = Confronta();
  EXPECT_THAT(riscontro.errori, IsEmpty());
  EXPECT_EQ(riscontro.confermati, 1U);
  EXPECT_EQ(riscontro.lineePerse, 1U);
  const auto note = Note();
  ASSERT_EQ(note.size(), 1U);
  EXPECT_EQ(note[0].fase, FaseNota::Applicata);
  EXPECT_THAT(note[0].righeRimaste, testing::ElementsAre("conto 20100001 partita AB   9 rata 1 del 10/03/2026"));
  EXPECT_EQ(LeggiStato(sistema).at("E90"), "9|9|101|C|S|2026-03-10|2026-03-10|1|4|-|O");
  VerificaResti();
}

TEST_F(ManyTerminals, ARowThatIsMovedOntoAnothersDateGoesOnWithIt) {
  ASSERT_EQ(sistema
                .Avvia({"T01",
                        {"-T CONSEGNA /PRESUNTI -H locale -D 01 -B X -TIPOMOVIMENTI V -S OC -A 06 -N 1\t"
                         "data:=04/03/2026:15/07/26;data:=03/03/2026:04/03/26;conferma"}})
                .Attendi(),
            0);
  ASSERT_EQ(LeggiComandi(sistema, "T01", comandi), 1U);
  EXPECT_EQ(comandi[0].risultato, "");
  ASSERT_EQ(comandi[0].contenuto, "20100002,OC,1,06,20260303,20260303,20260304\r\n"
                                  "20100002,OC,1,06,20260304,20260304,20260715\r\n")
      << "the second line finds what the first has moved";
  const Riscontro riscontro = Confronta();
  EXPECT_THAT(riscontro.errori, IsEmpty());
  EXPECT_EQ(riscontro.inOrdine, 1U);
  const Stato stato = LeggiStato(sistema);
  EXPECT_EQ(stato.at("E10010"), "1001|-|102|P|N|-|-|-|2|2026-03-02|O");
  EXPECT_EQ(stato.at("E10011"), "1001|-|102|P|N|-|-|-|3|2026-07-15| ");
  EXPECT_EQ(stato.at("E10012"), "1001|-|102|P|N|-|-|-|4|2026-07-15| ");
  VerificaResti();
}

} // namespace
} // namespace lumoscad::test
