// The two commands with which a host is made known and tried out: the real program against a real server.

#include "Dimostrazione.hpp"
#include "Figlio.hpp"
#include "support/Paths.hpp"
#include "support/SshServer.hpp"

#include <algorithm>
#include <gmock/gmock.h>

namespace lumoscad::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
namespace fs = std::filesystem;

class HostTest : public testing::Test {
 protected:
  /// Runs the program with what the person types; its exit status, a line break and its standard output.
  std::string Lancia(const std::vector<std::string>& opzioni, const std::string& digitato = "") {
    Scrivi(demo.Base() / "digitato", digitato);
    std::vector<std::string> argomenti{test::ProgramPath("lumoscad").string()};
    argomenti.insert(argomenti.end(), opzioni.begin(), opzioni.end());
    Figlio programma(argomenti, demo.Ambiente(), demo.Base() / "digitato", demo.Base() / "risultato",
                     demo.Base() / "errori");
    const auto stato = programma.Attendi();
    EXPECT_EQ(FileText(demo.Base() / "errori"), "");
    return (stato ? std::to_string(*stato) : "fermo") + "\n" + FileText(demo.Base() / "risultato");
  }

  Dimostrazione demo{Trasporto::Ssh};
  const std::string indirizzo = demo.Indirizzo();
};

TEST_F(HostTest, RunsThroughTheFiveOperationsAndLeavesNothing) {
  EXPECT_THAT(Lancia({"--prova-host", indirizzo}),
              AllOf(testing::StartsWith("0\n"), HasSubstr("InviaFile        riuscito: "),
                    HasSubstr("RiceviFile       riuscito: "), HasSubstr("RinominaFile     riuscito: "),
                    HasSubstr("CancellaFile     riuscito: "), HasSubstr("EseguiProgramma  riuscito: "),
                    HasSubstr("PrendiBlocco     riuscito: "), HasSubstr("LeggiBlocco      riuscito: "),
                    HasSubstr("PermessiBlocco   riuscito: permessi 6"), HasSubstr("LasciaBlocco     riuscito: "),
                    HasSubstr("NotaLocale       riuscito: un comando interrotto lascia una nota in «" +
                              demo.Locale().string() + "»"),
                    HasSubstr("Tutte le operazioni riescono.\n")));
  EXPECT_THAT(Contenuto(demo.Tmp()), IsEmpty());
  EXPECT_THAT(Contenuto(demo.Locale()), IsEmpty());
  EXPECT_FALSE(fs::exists(demo.Registro())) << "the back end is not called";
}

TEST_F(HostTest, SaysWhichOperationDoesNotWork) {
  fs::remove(demo.VB0001());
  EXPECT_THAT(Lancia({"--prova-host", indirizzo}),
              AllOf(testing::StartsWith("1\n"), HasSubstr("InviaFile        riuscito: "),
                    HasSubstr("EseguiProgramma  NON riuscito: "), HasSubstr("Non tutte le operazioni riescono.\n")));
  EXPECT_THAT(Contenuto(demo.Tmp()), IsEmpty());
}

TEST_F(HostTest, LooksAtTheDatabaseOfACommandAndChangesNothing) {
  const auto prima = demo.Stato();
  const auto opzioni = "-DB2SOURCE " + demo.Sorgente() + " -DB2SCHEMA main";
  const auto serve = AllOf(testing::StartsWith("0\nOrigine          riuscito: "),
                           HasSubstr("\nElenco           riuscito: 10 "
                                     "righe in "),
                           testing::EndsWith("\nTutte le operazioni riescono.\n"));
  EXPECT_THAT(Lancia({"--prova-base-dati", "-DB2SOURCE", demo.Sorgente(), "-DB2SCHEMA", "main"}), serve);
  EXPECT_THAT(Lancia({"--prova-base-dati", "-"}, opzioni + "\n"), serve);
  EXPECT_THAT(Lancia({"--prova-base-dati", "-DB2SOURCE", "NESSUNA"}),
              AllOf(testing::StartsWith("1\nOrigine          NON riuscito: "),
                    testing::EndsWith("\nNon tutte le operazioni riescono.\n")));
  EXPECT_EQ(demo.Stato(), prima);
}

/// Whichever way the host is reached.
class HostTestReadHalfway : public testing::TestWithParam<Trasporto> {};

TEST_P(HostTestReadHalfway, AReaderThatLeavesEarlyLeavesNoFileBehind) {
  const Dimostrazione demo(GetParam());
  Scrivi(demo.Base() / "digitato", "");
  for (const char* righe : {"0", "1", "2", "3", "6", "7"}) {
    Figlio programma({"sh", "-c", "\"$1\" --prova-host \"$2\" | head -n \"$3\"; sleep 0.1", "sh",
                      test::ProgramPath("lumoscad").string(), demo.Indirizzo(), righe},
                     demo.Ambiente(), demo.Base() / "digitato", demo.Base() / "risultato", demo.Base() / "errori");
    EXPECT_EQ(programma.Attendi(), 0);
    const auto letto = FileText(demo.Base() / "risultato");
    EXPECT_EQ(std::to_string(std::count(letto.begin(), letto.end(), '\n')), righe);
    EXPECT_THAT(Contenuto(demo.Tmp()), IsEmpty()) << righe;
    EXPECT_THAT(Contenuto(demo.Locale()), IsEmpty()) << righe;
    EXPECT_EQ(FileText(demo.Base() / "errori"), "");
  }
}

INSTANTIATE_TEST_SUITE_P(Transports, HostTestReadHalfway, testing::Values(Trasporto::Cartella, Trasporto::Ssh),
                         [](const auto& caso) { return NomeTrasporto(caso.param); });

/// Who holds which list, and how a list is freed; whichever way the host is reached.
class LocksOfAHost : public testing::TestWithParam<Trasporto> {
 protected:
  void SetUp() override { Prendi("Utente : T07\r\nData : 05/03/2026   Ora : 09:15\r\n"); }

  void Prendi(std::string_view contenuto) const { Scrivi(demo.Tmp() / "VBDEBITI", contenuto); }
  /// Runs the program in a shell that types for it; its exit status, a line break and all that it wrote.
  [[nodiscard]] std::string Lancia(const std::string& argomenti, const std::string& digitando = "true") const {
    Scrivi(demo.Base() / "digitato", "");
    Figlio programma({"sh", "-c", "{ " + digitando + "; } | \"$1\" " + argomenti, "sh",
                      test::ProgramPath("lumoscad").string(), demo.Indirizzo(), (demo.Tmp() / "VBDEBITI").string()},
                     demo.Ambiente(), demo.Base() / "digitato", demo.Base() / "risultato", demo.Base() / "errori");
    const auto stato = programma.Attendi();
    EXPECT_EQ(FileText(demo.Base() / "errori"), "");
    EXPECT_THAT(Contenuto(demo.Locale()), IsEmpty()) << argomenti;
    return (stato ? std::to_string(*stato) : "fermo") + "\n" + FileText(demo.Base() / "risultato");
  }

  Dimostrazione demo{GetParam()};
  static constexpr const char* Preso = "DEBITI    presa: Utente : T07, Data : 05/03/2026   Ora : 09:15\n";
};

TEST_P(LocksOfAHost, AreToldAndLeftAsTheyAre) {
  EXPECT_EQ(Lancia("--blocchi \"$2\""), std::string("0\nCREDITI   libera\n") + Preso + "PRESUNTI  libera\n");
  EXPECT_THAT(Contenuto(demo.Tmp()), testing::ElementsAre("VBDEBITI"));
}

TEST_P(LocksOfAHost, OfATestThatWasCutAreToldToo) {
  Scrivi(demo.Tmp() / "VBPROVA4", "Utente : T08\r\nData : 05/03/2026   Ora : 09:16\r\n");
  EXPECT_THAT(Lancia("--blocchi \"$2\""), testing::EndsWith("PROVA4    presa: Utente : T08, Data : 05/03/2026   Ora : "
                                                            "09:16\n"));
  EXPECT_THAT(Lancia("--libera-blocco \"$2\" PROVA4 --si"), testing::StartsWith("0\n"));
  EXPECT_THAT(Contenuto(demo.Tmp()), testing::ElementsAre("VBDEBITI"));
}

TEST_P(LocksOfAHost, AreRemovedOnAYesAlone) {
  for (const char* risposta : {"no", "", "s", "yes", " sì"}) {
    EXPECT_THAT(Lancia("--libera-blocco \"$2\" DEBITI", std::string("echo '") + risposta + "'"),
                AllOf(testing::StartsWith(std::string("3\n") + Preso), HasSubstr("Togliere il blocco? (sì/no) "),
                      testing::EndsWith("Il blocco non è stato tolto.\n")));
    EXPECT_THAT(Contenuto(demo.Tmp()), testing::ElementsAre("VBDEBITI"));
  }
  EXPECT_THAT(Lancia("--libera-blocco \"$2\" DEBITI", "echo sì"),
              AllOf(testing::StartsWith(std::string("0\n") + Preso), testing::EndsWith("Il blocco è stato tolto.\n")));
  EXPECT_THAT(Contenuto(demo.Tmp()), IsEmpty());
  EXPECT_EQ(Lancia("--libera-blocco \"$2\" DEBITI"), "0\nDEBITI    libera\nNon c'è un blocco da togliere.\n");
}

TEST_P(LocksOfAHost, AreRemovedWithoutAQuestionWhereItIsAnsweredBeforehand) {
  EXPECT_EQ(Lancia("--libera-blocco \"$2\" DEBITI --si"), std::string("0\n") + Preso + "Il blocco è stato tolto.\n");
  EXPECT_THAT(Contenuto(demo.Tmp()), IsEmpty());
}

TEST_P(LocksOfAHost, StayWhereSomebodyElseHasTakenTheListDuringTheQuestion) {
  const auto aspetta = "until grep -q presa '" + (demo.Base() / "risultato").string() + "'; do sleep 0.02; done; ";
  EXPECT_THAT(Lancia("--libera-blocco \"$2\" DEBITI", aspetta +
                                                          "printf 'Utente : T09\\r\\nData : oggi\\r\\n' > \"$3\"; "
                                                          "echo sì"),
              AllOf(testing::StartsWith(std::string("1\n") + Preso),
                    testing::EndsWith("Il blocco è cambiato nel frattempo e non è stato tolto. Ora: Utente : T09, Data "
                                      ": oggi.\n")));
  EXPECT_EQ(FileText(demo.Tmp() / "VBDEBITI"), "Utente : T09\r\nData : oggi\r\n");
}

/// The same workstation may free a list and take it again within the minute that a lock tells.
TEST_P(LocksOfAHost, StayWhereTheSameWordsWereWrittenAnew) {
  const auto aspetta = "until grep -q presa '" + (demo.Base() / "risultato").string() + "'; do sleep 0.02; done; ";
  EXPECT_THAT(Lancia("--libera-blocco \"$2\" DEBITI", aspetta + "touch -d '2026-03-05 09:15:30' \"$3\"; echo sì"),
              AllOf(testing::StartsWith("1\n"), HasSubstr("Il blocco è cambiato nel frattempo e non è stato tolto.")));
  EXPECT_THAT(Contenuto(demo.Tmp()), testing::ElementsAre("VBDEBITI"));
}

TEST_P(LocksOfAHost, ThatAreGoneMeanwhileAreToldAsGone) {
  const auto aspetta = "until grep -q presa '" + (demo.Base() / "risultato").string() + "'; do sleep 0.02; done; ";
  EXPECT_THAT(Lancia("--libera-blocco \"$2\" DEBITI", aspetta + "rm \"$3\"; echo sì"),
              AllOf(testing::StartsWith("0\n"), testing::EndsWith("Il blocco non c'era già più.\n")));
}

TEST_P(LocksOfAHost, OfAnUnknownListAreNotLookedFor) {
  EXPECT_THAT(Lancia("--libera-blocco \"$2\" ../DEBITI --si"),
              testing::StartsWith("1\nLista sconosciuta: «../DEBITI». Sono ammesse CREDITI, DEBITI, PRESUNTI e"));
  EXPECT_THAT(Contenuto(demo.Tmp()), testing::ElementsAre("VBDEBITI"));
}

INSTANTIATE_TEST_SUITE_P(Transports, LocksOfAHost, testing::Values(Trasporto::Cartella, Trasporto::Ssh),
                         [](const auto& caso) { return NomeTrasporto(caso.param); });

TEST_F(HostTest, SaysThatTheLocksOfAHostThatIsOffAreUnknown) {
  demo.Ssh().Stop();
  EXPECT_THAT(Lancia({"--blocchi", indirizzo}),
              AllOf(testing::StartsWith("1\nCREDITI   NON letto: Collegamento all'host"),
                    HasSubstr("PRESUNTI  NON letto: non letto, dopo gli errori di sopra\n"),
                    testing::EndsWith("Non tutti i blocchi sono stati letti.\n")));
}

TEST(HostOfADirectory, SaysThatOtherUsersCannotSeeALock) {
  const Dimostrazione demo(Trasporto::Cartella);
  Scrivi(demo.Base() / "digitato", "");
  Figlio programma({"sh", "-c", "umask 077; exec \"$1\" --prova-host \"$2\"", "sh",
                    test::ProgramPath("lumoscad").string(), demo.Indirizzo()},
                   demo.Ambiente(), demo.Base() / "digitato", demo.Base() / "risultato", demo.Base() / "errori");
  EXPECT_EQ(programma.Attendi(), 0);
  EXPECT_THAT(
      FileText(demo.Base() / "risultato"),
      HasSubstr("PermessiBlocco   riuscito: permessi 600: può leggere il blocco solo l'utente che lo prende; chi "
                "accede all'host con un altro utente crede libera la lista\n"));
}

TEST_F(HostTest, AnUnknownHostIsReachedOnlyAfterItsKeyWasTakenInWithAYes) {
  Scrivi(demo.Ssh().KnownHosts(), "");
  const auto rifiutato = AllOf(testing::StartsWith("1\n"), HasSubstr("non è fra gli host noti"),
                               HasSubstr(demo.Ssh().Hash()), Not(HasSubstr(" riuscito: il")));
  EXPECT_THAT(Lancia({"--prova-host", indirizzo}), rifiutato);
  for (const char* risposta : {"no\n", "", "s\n", "yes\n"}) {
    EXPECT_THAT(Lancia({"--registra-host", indirizzo}, risposta),
                AllOf(testing::StartsWith("3\n"), HasSubstr(demo.Ssh().Hash())));
    EXPECT_EQ(FileText(demo.Ssh().KnownHosts()), "");
  }
  EXPECT_THAT(Lancia({"--registra-host", indirizzo}, "sì\n"),
              AllOf(testing::StartsWith("0\n"), HasSubstr(demo.Ssh().Hash())));
  EXPECT_THAT(FileText(demo.Ssh().KnownHosts()), HasSubstr(demo.Ssh().HostPublicKey()));
  EXPECT_THAT(Lancia({"--prova-host", indirizzo}), testing::StartsWith("0\n"));
}

TEST_F(HostTest, AChangedKeyIsNotTakenInByRegistering) {
  const auto prima = FileText(demo.Ssh().KnownHosts());
  demo.Ssh().ChangeHostKey();
  EXPECT_THAT(Lancia({"--registra-host", indirizzo}, "sì\n"),
              AllOf(Not(testing::StartsWith("0\n")), HasSubstr("diversa da quella nota")));
  EXPECT_EQ(FileText(demo.Ssh().KnownHosts()), prima);
}

} // namespace
} // namespace lumoscad::test
