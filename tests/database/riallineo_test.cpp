#include "NotaSuBase.hpp"

#include <gmock/gmock.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

// What a command left open is brought to its end.

namespace lumoscad {
namespace {

using test::ModificaProvata;
using test::NotaSuBase;
using testing::AllOf;
using testing::Contains;
using testing::Each;
using testing::ElementsAreArray;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

const std::vector<FaseNota> FasiConIlSi = {FaseNota::Accettata, FaseNota::ConfermaInviata, FaseNota::NonApplicata,
                                           FaseNota::Sconosciuta};

class Realigning : public testing::TestWithParam<std::tuple<const char*, ModificaProvata>>, protected NotaSuBase {
 protected:
  Realigning() : NotaSuBase(std::get<0>(GetParam()), std::get<1>(GetParam())) {}

  /// What is said of an action before the question.
  [[nodiscard]] std::string Avviso() const {
    return modifica.genere == ModificaChiesta::Genere::Azione
               ? "Di un comando come questo non si conoscono i valori di prima: «come prima» sono anche le righe che "
                 "qualcuno ha riportato indietro da allora.\n"
               : "";
  }

  const ModificaProvata& provata = std::get<1>(GetParam());
};

INSTANTIATE_TEST_SUITE_P(Databases, Realigning,
                         testing::Combine(testing::ValuesIn(test::GeneriDiBase()),
                                          testing::ValuesIn(test::ModificheProvate())),
                         [](const auto& caso) {
                           return std::string(std::get<0>(caso.param)) + std::get<1>(caso.param).nome;
                         });

TEST_P(Realigning, DoesWhatTheCommandWouldHaveDoneAndTakesTheNoteAway) {
  for (const FaseNota fase : FasiConIlSi) {
    Lascia(fase);
    const NotaInSospeso vista = Guarda();
    EXPECT_EQ(vista.errore, "");
    EXPECT_THAT(Stati(), AllOf(SizeIs(provata.righe), Each("come prima")));
    EXPECT_EQ(vista.domanda, Avviso() + "Registrare nella base dati le righe «come prima», " +
                                 std::to_string(provata.righe) + " in tutto? (sì/no) ");
    EXPECT_THAT(vista.consiglio, StartsWith("lumoscad --riallinea " + nota + " -DB2SOURCE "));
    EXPECT_THAT(test::Tutto(base), ElementsAreArray(prima)) << "looking changes nothing";
    EXPECT_THAT(Modifiche(), IsEmpty());

    const EsitoInSospeso esito = RiallineaVista(vista, Opzioni());
    EXPECT_TRUE(esito.riuscito) << esito.testo;
    EXPECT_THAT(esito.testo, AllOf(StartsWith("    fatta              "),
                                   EndsWith("L'host e la base dati hanno registrato la modifica: la nota è stata "
                                            "tolta.\n")));
    EXPECT_THAT(test::Tutto(base), ElementsAreArray(dopo));
    EXPECT_FALSE(NotaRimasta());
    EXPECT_THAT(Riallinea().testo, StartsWith("Non c'è nessuna nota di nome «" + nota + "»."));
    Ripristina();
    banco.statements.clear();
  }
  EXPECT_THAT(banco.host.operazioni, IsEmpty());
  EXPECT_THAT(banco.desktop.box, IsEmpty());
  EXPECT_TRUE(std::filesystem::is_empty(banco.environment.CartellaLocale));
}

TEST_P(Realigning, TakesTheNoteOfAChangeAwayThatIsDone) {
  MsgAnnulla msg;
  ASSERT_EQ(test::EseguiModifica(modifica, msg), "");
  banco.statements.clear();
  for (const FaseNota fase : {FaseNota::ConfermaInviata, FaseNota::Applicata, FaseNota::Sconosciuta}) {
    Lascia(fase);
    EXPECT_THAT(Stati(), Each("fatta"));
    EXPECT_EQ(Guarda().domanda, "");
    EXPECT_THAT(Guarda().consiglio, StartsWith("nulla di aperto, e la nota si può togliere: lumoscad --riallinea "));
    EXPECT_TRUE(Riallinea().riuscito);
    EXPECT_FALSE(NotaRimasta());
  }
  EXPECT_THAT(Modifiche(), IsEmpty());
  EXPECT_THAT(test::Tutto(base), ElementsAreArray(dopo));
}

TEST_P(Realigning, OfAChangeThatWasKeptWritesTheRowsAloneThatWereLeftOver) {
  Lascia(FaseNota::Accettata);
  const auto righe = Guarda().righe;
  if (modifica.genere == ModificaChiesta::Genere::Azione || righe.size() < 2) {
    return; // an action leaves no rows over, and of a single row there is nothing to tell apart
  }
  ASSERT_NE(righe[0].riga, righe[1].riga);
  CancellaNota(CartellaNote(), nota);
  // All rows are as before: the first was left over, the others were written and put back by somebody.
  nota = test::LasciaNota(modifica, FaseNota::Applicata, {righe[0].riga});
  const auto stati = Stati();
  EXPECT_EQ(stati.at(0), "come prima");
  EXPECT_THAT(std::vector<std::string>(stati.begin() + 1, stati.end()), Each("cambiata da altri"));
  banco.statements.clear();
  EXPECT_THAT(Riallinea().testo, EndsWith("La nota resta.\n"));
  const auto sue = Modifiche();
  EXPECT_THAT(sue, Not(IsEmpty()));
  EXPECT_EQ(Stati().at(0), "fatta");
  EXPECT_THAT(Stati(), Not(Contains("come prima")));
  EXPECT_THAT(Riallinea().testo, EndsWith("La nota resta.\n"));
  EXPECT_EQ(Modifiche(), sue) << "nothing is written another time";
}

TEST_P(Realigning, LeavesWhatOthersHaveChangedAndKeepsTheNote) {
  for (const std::string& altri : {provata.altri, provata.sparita}) {
    if (altri.empty()) {
      continue;
    }
    base.Esegui(altri);
    const auto cambiata = test::Tutto(base);
    Lascia(FaseNota::Accettata);
    EXPECT_EQ(Stati().at(0), "cambiata da altri");
    const EsitoInSospeso esito = Riallinea();
    EXPECT_FALSE(esito.riuscito);
    EXPECT_THAT(esito.testo,
                AllOf(HasSubstr("Le righe cambiate da altri restano come sono: guardarle sull'host e nella "
                                "base dati, e poi: lumoscad --archivia " +
                                nota + " MOTIVO\n"),
                      EndsWith("La nota resta.\n")));
    EXPECT_TRUE(NotaRimasta());
    EXPECT_THAT(Stati(), Not(Contains("come prima"))) << "the others are done";
    EXPECT_THAT(Guarda().consiglio,
                StartsWith("guardare sull'host e nella base dati le righe cambiate da altri, e poi: "
                           "lumoscad --archivia "));
    const auto adesso = test::Tutto(base);
    EXPECT_THAT(Riallinea().testo, EndsWith("La nota resta.\n"));
    EXPECT_THAT(test::Tutto(base), ElementsAreArray(adesso)) << "the second time there is nothing to write";
    if (provata.righe == 1) {
      EXPECT_THAT(adesso, ElementsAreArray(cambiata));
    }
    EXPECT_TRUE(Archivia(nota, "provata").riuscito);
    Ripristina();
  }
}

TEST_P(Realigning, SaysInTheQuestionThatTheHostsOutcomeIsNotKnown) {
  Lascia(FaseNota::Avviata);
  const NotaInSospeso vista = Guarda();
  EXPECT_EQ(vista.host, "non si sa se ha eseguito la richiesta");
  EXPECT_EQ(vista.domanda, "Non si sa se l'host ha eseguito la richiesta: rispondere sì solo se risulta che l'ha "
                           "eseguita.\n" +
                               Avviso() + "Registrare nella base dati le righe «come prima», " +
                               std::to_string(provata.righe) + " in tutto? (sì/no) ");
  EXPECT_THAT(vista.consiglio,
              AllOf(StartsWith("guardare sull'host se la richiesta risulta eseguita. Se lo è: lumoscad "
                               "--riallinea " +
                               nota),
                    EndsWith("; se non lo è: lumoscad --archivia " + nota + " MOTIVO")));
  EXPECT_TRUE(RiallineaVista(vista, Opzioni()).riuscito);
  EXPECT_THAT(test::Tutto(base), ElementsAreArray(dopo));

  Lascia(FaseNota::Avviata);
  EXPECT_EQ(Guarda().domanda, "Non si sa se l'host ha eseguito la richiesta: rispondere sì solo se risulta che l'ha "
                              "eseguita.\nTogliere la nota? (sì/no) ");
  EXPECT_TRUE(Riallinea().riuscito);
  EXPECT_FALSE(NotaRimasta());
}

TEST_P(Realigning, TakesTheNoteOfARefusedRequestAwayAndAsksNoDatabase) {
  Lascia(FaseNota::Rifiutata);
  const NotaInSospeso vista = Guarda();
  EXPECT_EQ(vista.host, "ha rifiutato la richiesta: conto bloccato");
  EXPECT_EQ(vista.domanda, "");
  const EsitoInSospeso esito = RiallineaVista(vista, "-DB2SOURCE NESSUNA");
  EXPECT_TRUE(esito.riuscito);
  EXPECT_EQ(esito.testo, "L'host aveva rifiutato la richiesta e nulla è cambiato: la nota è stata tolta.\n");
  EXPECT_THAT(banco.statements, IsEmpty());
  EXPECT_THAT(test::Tutto(base), ElementsAreArray(prima));
}

/// The list of three rows.
class RealigningAList : public testing::TestWithParam<const char*>, protected NotaSuBase {
 protected:
  RealigningAList() : NotaSuBase(GetParam(), test::TrovaModifica("Crediti")) {}
};

INSTANTIATE_TEST_SUITE_P(Databases, RealigningAList, testing::ValuesIn(test::GeneriDiBase()), test::NomeDelGenere);

TEST_P(RealigningAList, TellsEachRowAndWritesOnlyThoseThatAreAsBefore) {
  // One done, one changed by others, one as before.
  base.Esegui("UPDATE EVENTOCONTABILE SET DATASCADENZA='2006-03-15',BANCAPRESENTAZIONE_KEY=107 WHERE "
              "EVENTOCONTABILEKEY IN (101,102)");
  base.Esegui("UPDATE EVENTOCONTABILE SET DATASCADENZA='2006-12-01' WHERE EVENTOCONTABILEKEY=103");
  Lascia(FaseNota::Sconosciuta);
  EXPECT_THAT(Guarda().testo, HasSubstr("    fatta              conto C01 partita 2006   1 rata 1 del 04/03/2006\n"
                                        "    cambiata da altri  conto C01 partita 2006   1 rata 2 del 04/04/2006\n"
                                        "    come prima         conto C01 partita 2006   1 rata 3 senza scadenza\n"));
  const EsitoInSospeso esito = Riallinea();
  EXPECT_FALSE(esito.riuscito);
  EXPECT_THAT(esito.testo, StartsWith("    fatta              conto C01 partita 2006   1 rata 1 del 04/03/2006\n"
                                      "    cambiata da altri  conto C01 partita 2006   1 rata 2 del 04/04/2006\n"
                                      "    fatta              conto C01 partita 2006   1 rata 3 senza scadenza\n"));
  EXPECT_THAT(Modifiche(), SizeIs(1));
  EXPECT_THAT(base.Righe("SELECT DATASCADENZA,BANCAPRESENTAZIONE_KEY FROM EVENTOCONTABILE WHERE EVENTOCONTABILEKEY IN "
                         "(103,104) ORDER BY EVENTOCONTABILEKEY"),
              testing::ElementsAre("2006-12-01|106", "NULL|107"));
  EXPECT_EQ(Guarda().baseDati, "il comando vi ha registrato la modifica, salvo righe già cambiate da altri");
}

TEST_P(RealigningAList, WritesNothingWhereOneRowFails) {
  base.Impedisci("EVENTOCONTABILE", "NEW.EVENTOCONTABILEKEY=104", "guasto di prova");
  Lascia(FaseNota::Accettata);
  const EsitoInSospeso esito = Riallinea();
  EXPECT_FALSE(esito.riuscito);
  EXPECT_THAT(esito.testo, AllOf(StartsWith("    come prima         "), HasSubstr("ERRORE: "),
                                 EndsWith("\nLa base dati non ha registrato nulla.\nLa nota resta.\n")));
  EXPECT_THAT(test::Tutto(base), ElementsAreArray(prima));
  EXPECT_TRUE(NotaRimasta());
  EXPECT_EQ(Guarda().baseDati, "il comando non vi ha registrato nulla");
}

TEST_P(RealigningAList, DoesWithoutTheRowsThatCannotBeWrittenAtAll) {
  base.Esegui("DELETE FROM CONTOCONTABILE WHERE CODICECONTO='B07'");
  Lascia(FaseNota::Accettata);
  EXPECT_THAT(Riallinea().testo,
              StartsWith("    cambiata da altri  conto C01 partita 2006   1 rata 1 del 04/03/2006\n"
                         "    fatta              conto C01 partita 2006   1 rata 2 del 04/04/2006\n"
                         "    cambiata da altri  conto C01 partita 2006   1 rata 3 senza scadenza\n"));
  EXPECT_EQ(base.Righe("SELECT DATASCADENZA FROM EVENTOCONTABILE WHERE EVENTOCONTABILEKEY=103").at(0), "2006-04-15");
}

TEST_P(RealigningAList, WritesNothingWhereTheNoteCannotSayThatItIsBeingWritten) {
  Lascia(FaseNota::Accettata);
  const NotaInSospeso vista = Guarda();
  // A directory in the place of what is being written of the note.
  std::filesystem::create_directory(PercorsiNota(CartellaNote(), nota).parte);
  const EsitoInSospeso esito = RiallineaVista(vista, Opzioni());
  EXPECT_FALSE(esito.riuscito);
  EXPECT_THAT(esito.testo, EndsWith("La nota resta.\n"));
  EXPECT_THAT(test::Tutto(base), ElementsAreArray(prima));
  EXPECT_TRUE(NotaRimasta());
}

TEST_P(RealigningAList, LeavesTheValuesOfTheLastCommandAsTheyAre) {
  Lascia(FaseNota::Accettata);
  stato().ComandoCorrente = "-T BANCA /DEBITI";
  stato().demoPresunti = true;
  EXPECT_TRUE(Riallinea().riuscito);
  EXPECT_EQ(stato().ComandoCorrente, "-T BANCA /DEBITI");
  EXPECT_TRUE(stato().demoPresunti);
}

TEST_P(RealigningAList, WritesNothingThatHasChangedSinceItWasLookedAt) {
  Lascia(FaseNota::Accettata);
  const NotaInSospeso vista = Guarda();
  base.Esegui("UPDATE EVENTOCONTABILE SET DATASCADENZA='2006-12-01' WHERE EVENTOCONTABILEKEY=103");
  const auto cambiata = test::Tutto(base);
  const EsitoInSospeso esito = RiallineaVista(vista, Opzioni());
  EXPECT_FALSE(esito.riuscito);
  EXPECT_THAT(esito.testo, StartsWith("Nel frattempo è cambiata: guardarla ancora, con lumoscad --in-sospeso. Non è "
                                      "stato registrato nulla.\n"));
  EXPECT_THAT(test::Tutto(base), ElementsAreArray(cambiata));
  EXPECT_TRUE(NotaRimasta());
}

TEST_P(RealigningAList, TouchesNoOtherDatabase) {
  Lascia(FaseNota::Accettata);
  stato().ComandoCorrente = "-DB2SOURCE ALTRA";
  const std::string diAltra = test::LasciaNota(modifica, FaseNota::Accettata);
  const NotaInSospeso vista = GuardaNota(diAltra, Opzioni());
  EXPECT_EQ(vista.errore, "la modifica è dell'origine dati «ALTRA»: questa non è stata guardata");
  EXPECT_THAT(vista.righe, IsEmpty());
  EXPECT_EQ(RiallineaVista(vista, Opzioni()).testo,
            "La modifica è dell'origine dati «ALTRA», e nessun'altra va toccata.\nLa nota resta.\n");
  EXPECT_THAT(test::Tutto(base), ElementsAreArray(prima));
}

TEST_P(RealigningAList, ShowsWhatOthersHaveWrittenOnOneLine) {
  Lascia(FaseNota::Accettata);
  {
    const NotaPresa presa(CartellaNote(), nota);
    Nota letta = presa.Leggi();
    letta.rispostaHost = "Fatto\n  da fare    spegnere\x1B[2J";
    presa.SegnaFase(letta);
  }
  EXPECT_THAT(Guarda().testo, HasSubstr("  host       ha accettato la richiesta: Fatto   da fare    spegnere [2J\n"));
}

TEST_P(RealigningAList, GoesToOnePersonAlone) {
  Lascia(FaseNota::Accettata);
  const NotaInSospeso vista = Guarda();
  {
    const NotaPresa altro(CartellaNote(), nota);
    EXPECT_TRUE(Guarda().inCorso);
    EXPECT_EQ(Guarda().consiglio, "attendere: il comando è ancora in corso, o qualcuno sta riallineando la nota");
    EXPECT_THAT(Guarda().righe, IsEmpty()) << "they are about to change";
    const EsitoInSospeso esito = RiallineaVista(vista, Opzioni());
    EXPECT_FALSE(esito.riuscito);
    EXPECT_THAT(esito.testo, HasSubstr("è di un comando ancora in corso, o qualcuno ci sta già lavorando."));
    EXPECT_FALSE(Archivia(nota, "in due").riuscito);
  }
  EXPECT_THAT(test::Tutto(base), ElementsAreArray(prima));
  EXPECT_TRUE(RiallineaVista(vista, Opzioni()).riuscito);
}

TEST_P(RealigningAList, SaysWhyTheDatabaseCannotBeAsked) {
  stato().ComandoCorrente = "-DB2SOURCE NESSUNA";
  Lascia(FaseNota::Accettata);
  const auto elenco = GuardaInSospeso("-DB2SOURCE NESSUNA");
  EXPECT_FALSE(elenco.riuscito);
  EXPECT_THAT(elenco.testo, AllOf(HasSubstr("ha accettato la richiesta: Variate 3 scadenze\n"),
                                  HasSubstr("  NON letta  la base dati: "), HasSubstr("«NESSUNA»")));
  EXPECT_FALSE(RiallineaVista(elenco.note.at(0), "-DB2SOURCE NESSUNA").riuscito);
  EXPECT_TRUE(NotaRimasta());
}

/// Lists in which one record arrives where another one departs.
std::vector<ModificaProvata> Catene() {
  using Genere = ModificaChiesta::Genere;
  return {{"Rate",
           {Genere::Canalizzazione,
            "CREDITI",
            {test::UnaRata("201", "1", "31/01/2006", "04/03/2006", "15/03/2006", "B06", ""),
             test::UnaRata("201", "1", "31/01/2006", "01/02/2006", "04/03/2006", "B06", "")},
            {},
            {}},
           "UPDATE EVENTOCONTABILE SET DATASCADENZA='2006-02-01' WHERE EVENTOCONTABILEKEY=102",
           2,
           "",
           ""},
          {"Banche",
           {Genere::BancaPresunti,
            "PRESUNTI",
            {},
            {test::UnaBanca(test::UnDocumento(401, "C01", "AB", "123"), "B07", "B08"),
             test::UnaBanca(test::UnDocumento(401, "C01", "AB", "123"), "B06", "B07")},
            {}},
           "",
           2,
           "",
           ""},
          {"Consegne",
           {Genere::Consegna,
            "PRESUNTI",
            {},
            {test::UnaConsegna(test::UnDocumento(401, "C01", "AB", "123"), "10/04/2006", "#null#", "10/05/2006"),
             test::UnaConsegna(test::UnDocumento(401, "C01", "AB", "123"), "10/03/2006", "01/03/2006", "10/04/2006")},
            {}},
           "",
           2,
           "",
           ""}};
}

class RealigningAChain : public testing::TestWithParam<std::tuple<const char*, ModificaProvata>>, protected NotaSuBase {
 protected:
  RealigningAChain() : NotaSuBase(std::get<0>(GetParam()), std::get<1>(GetParam())) {}
};

INSTANTIATE_TEST_SUITE_P(Databases, RealigningAChain,
                         testing::Combine(testing::ValuesIn(test::GeneriDiBase()), testing::ValuesIn(Catene())),
                         [](const auto& caso) {
                           return std::string(std::get<0>(caso.param)) + std::get<1>(caso.param).nome;
                         });

TEST_P(RealigningAChain, DoesWhatTheCommandWouldHaveDone) {
  for (const FaseNota fase : {FaseNota::Avviata, FaseNota::Accettata, FaseNota::NonApplicata}) {
    Lascia(fase);
    const EsitoInSospeso esito = Riallinea();
    EXPECT_TRUE(esito.riuscito) << esito.testo;
    EXPECT_THAT(test::Tutto(base), ElementsAreArray(dopo));
    EXPECT_FALSE(NotaRimasta());
    Ripristina();
  }
}

TEST_P(RealigningAChain, WritesNothingASecondTimeThatTheCommandMayHaveWritten) {
  MsgAnnulla msg;
  ASSERT_EQ(test::EseguiModifica(modifica, msg), "");
  for (const FaseNota fase : {FaseNota::ConfermaInviata, FaseNota::Sconosciuta, FaseNota::Applicata}) {
    Lascia(fase);
    EXPECT_THAT(Stati(), Not(Contains("come prima")));
    static_cast<void>(Riallinea());
    EXPECT_THAT(test::Tutto(base), ElementsAreArray(dopo));
  }
}

} // namespace
} // namespace lumoscad
