// The program call against a real server.

#include "BancoSsh.hpp"
#include "platform/nexaro/LinkErrors.hpp"
#include "platform/nexaro/ssh/Quoting.hpp"
#include "support/Paths.hpp"

#include <cstdlib>
#include <gmock/gmock.h>
#include <unistd.h>

namespace lumoscad {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;
using test::ErroreDi;
using test::Ignoto;
using testing::HasSubstr;

class SshProgram : public test::BancoSsh {
 protected:
  /// The arguments that the program gets, each ended by a null character.
  std::string Argomenti(const std::vector<std::string>& parametri) {
    Programma("for a; do printf '%s\\0' \"$a\"; done >'" + base / "argomenti" + "'; echo '<A/>'");
    EXPECT_TRUE(Risposta(parametri).has_value());
    return test::FileText(base / "argomenti");
  }
  static std::string Attesi(const std::vector<std::string>& parametri) {
    std::string attesi;
    for (const auto& parametro : parametri) {
      attesi += parametro + '\0';
    }
    return attesi;
  }
};

TEST_F(SshProgram, GetsItsParametersAndAnswersInXml) {
  Programma("echo \"<RISPOSTA><MESSAGGIO>$# $1</MESSAGGIO></RISPOSTA>\"");
  const auto risposta = Risposta({"01", "", "", ""});
  ASSERT_TRUE(risposta.has_value());
  EXPECT_EQ(risposta->name, "RISPOSTA");
  EXPECT_EQ(risposta->children.at(0).value, "4 01");
}

TEST_F(SshProgram, NoCharacterOfAParameterMeansAnythingToTheHost) {
  std::vector<std::string> parametri{"'",    "\"",   "\\", "\\'", "$(id)", "$HOME", "`id`", "; id",
                                     "| id", "> /x", "*",  "~",   "-rf",   "--",    "",     "a\nb",
                                     "\n",   "\t",   "!!", "# x", "è€😀",   "\xE9",  "l'ora"};
  EXPECT_EQ(Argomenti(parametri), Attesi(parametri));
}

TEST_F(SshProgram, AHundredParametersArriveInTheirOrder) {
  std::vector<std::string> parametri(100);
  for (std::size_t numero = 0; numero < parametri.size(); ++numero) {
    parametri[numero] = numero % 3 == 0 ? "" : "valore " + std::to_string(numero);
  }
  EXPECT_EQ(Argomenti(parametri), Attesi(parametri));
}

TEST_F(SshProgram, LongParametersArriveWhole) {
  const std::vector<std::string> parametri{std::string(50000, '\''), std::string(20000, 'x')};
  // More than a command line of the host can hold would be refused there: what fits arrives whole.
  const std::vector<std::string> corti{std::string(10000, '\''), std::string(20000, 'x')};
  EXPECT_EQ(Argomenti(corti), Attesi(corti));
  EXPECT_THAT(ErroreDi([&] { static_cast<void>(Risposta(parametri)); }).Description(), HasSubstr("lo stato"));
}

TEST_F(SshProgram, HasAnEmptyInput) {
  Programma("cat >'" + base / "ingresso" + "'; echo '<A/>'");
  EXPECT_TRUE(Risposta().has_value());
  EXPECT_EQ(test::FileText(base / "ingresso"), "");
}

TEST_F(SshProgram, IsFoundByTheLoginShellWhereNoDirectoryIsSet) {
  server->Change({"ed25519", {"PATH=" + base / "programmi" + ":/usr/bin:/bin"}, "internal-sftp", {}});
  Programma("echo '<A>trovato</A>'");
  impostazioni.programs.clear();
  Collega();
  EXPECT_EQ(Risposta()->value, "trovato");
  server->Change({});
}

TEST_F(SshProgram, MissingProgramIsNamedWithItsHost) {
  const auto errore = ErroreDi([this] { static_cast<void>(Risposta()); });
  EXPECT_EQ(errore.Number(), errors::FileNotFound);
  EXPECT_THAT(errore.Description(), HasSubstr("Il programma VB0001 sull'host 127.0.0.1 è terminato con lo stato 127, "
                                              "cioè non è stato trovato (verificare NEXARO_PROGRAMMI): "));
}

TEST_F(SshProgram, ProgramThatMayNotRunIsSaid) {
  test::Scrivi(base / "programmi/VB0001", "#!/bin/sh\n");
  EXPECT_THAT(Rifiuto(), HasSubstr("lo stato 126, cioè non può essere eseguito"));
}

TEST_F(SshProgram, FailedProgramIsReportedWithWhatItSaid) {
  Programma("echo 'disco pieno' >&2; exit 3");
  EXPECT_EQ(Rifiuto(), "Il programma VB0001 sull'host 127.0.0.1 è terminato con lo stato 3: disco pieno. " + Ignoto);
}

TEST_F(SshProgram, ComplaintGivesNoOrdersToATerminal) {
  Programma("printf '\\033]0;x\\007disco\\tpieno\\nriprovare\\r\\n' >&2; exit 3");
  EXPECT_THAT(Rifiuto(), testing::EndsWith("lo stato 3:  ]0;x disco pieno\nriprovare. " + Ignoto));
}

TEST_F(SshProgram, LongComplaintIsCutBetweenCharacters) {
  Programma("printf x >&2; i=0; while [ $i -lt 3000 ]; do printf 'à' >&2; i=$((i+1)); done; exit 3");
  const auto rifiuto = Rifiuto();
  EXPECT_LT(rifiuto.size(), 2200U);
  EXPECT_THAT(rifiuto, testing::EndsWith("àà. " + Ignoto));
}

TEST_F(SshProgram, KilledProgramIsReportedWithTheSignal) {
  Programma("kill -SEGV $$");
  EXPECT_EQ(Rifiuto(), "Il programma VB0001 sull'host 127.0.0.1 è stato terminato dal segnale SEGV. " + Ignoto);
}

TEST_F(SshProgram, BothStreamsMayBeFullAtOnce) {
  Programma("head -c 3000000 /dev/zero | tr '\\0' 'e' >&2; echo '<A>'; head -c 3000000 /dev/zero | tr '\\0' 'x'; "
            "head -c 3000000 /dev/zero | tr '\\0' 'e' >&2; echo '</A>'");
  EXPECT_EQ(Risposta()->value.size(), 3000002U - 1U);
}

TEST_F(SshProgram, HangingProgramIsGivenUpAndItsOutcomeSaidToBeUnknown) {
  Programma("echo parte >&2; exec sleep 10");
  impostazioni.timeout = 1500ms;
  Collega();
  EXPECT_EQ(Rifiuto(), "Il programma VB0001 sull'host 127.0.0.1 non ha risposto entro 1,500 secondi e ne è stata "
                       "chiesta l'interruzione: parte. " +
                           Ignoto);
}

TEST_F(SshProgram, HangingProgramIsAskedToEnd) {
  if (::geteuid() == 0) {
    GTEST_SKIP() << "a server does not signal the programs of the superuser";
  }
  Programma("echo $$ >'" + base / "pid" + "'; exec sleep 10");
  impostazioni.timeout = 1500ms;
  Collega();
  static_cast<void>(Rifiuto());
  const auto processo = "/proc/" + std::to_string(std::stol(test::FileText(base / "pid")));
  for (int giro = 0; giro < 1000 && fs::exists(processo); ++giro) {
    ::usleep(10000);
  }
  EXPECT_FALSE(fs::exists(processo));
}

TEST_F(SshProgram, SilentProgramIsAnError) {
  Programma("exit 0");
  EXPECT_EQ(Rifiuto(), "Il programma VB0001 sull'host 127.0.0.1 non ha dato alcuna risposta. " + Ignoto);
}

TEST_F(SshProgram, EndlessAnswerIsGivenUp) {
  Programma("exec yes '<A>'");
  EXPECT_THAT(Rifiuto(), HasSubstr("oltre 16 MiB"));
  Programma("echo '<A/>'");
  EXPECT_TRUE(Risposta().has_value());
}

TEST_F(SshProgram, LargestAnswerIsRead) {
  Programma("printf '<A>'; head -c 16777209 /dev/zero | tr '\\0' x; printf '</A>'");
  EXPECT_EQ(Risposta()->value.size(), 16777209U);
}

TEST_F(SshProgram, UnusableAnswersAreDistinguished) {
  Programma("echo spazzatura");
  EXPECT_THAT(Rifiuto(), HasSubstr("risposta non valida. Documento XML non valido: testo fuori"));
  Programma("echo '<!DOCTYPE a><a/>'");
  EXPECT_THAT(Rifiuto(), HasSubstr("DOCTYPE"));
  Programma("echo '<A><B>'");
  EXPECT_THAT(Rifiuto(), HasSubstr("risposta non valida"));
}

TEST_F(SshProgram, NameIsAPlainNameAndNoParameterHoldsANul) {
  nexaro::XMLParser lettore;
  for (const auto* nome : {"", "..", "../tmp/x", "/bin/sh"}) {
    EXPECT_THAT(ErroreDi([&] { collegamento->EseguiProgramma(Host, nome, {}, lettore); }).Description(),
                HasSubstr("Nome di programma non ammesso"));
  }
  EXPECT_THAT(ErroreDi([this] { static_cast<void>(Risposta({std::string("a\0b", 3)})); }).Description(),
              HasSubstr("carattere nullo"));
}

TEST_F(SshProgram, HostThatRunsNoProgramsIsSaid) {
  server->Change({"ed25519", {}, "internal-sftp", {"MaxSessions 0"}});
  EXPECT_THAT(Rifiuto(), HasSubstr("non è stato avviato: l'host non ammette altri canali"));
  server->Change({});
}

TEST_F(SshProgram, HostWithoutRoomForAProgramBesideItsFileServiceIsSaidWhenTheProgramIsCalled) {
  server->Change({"ed25519", {}, "internal-sftp", {"MaxSessions 1"}});
  Programma("echo '<A/>'");
  Invia("T01", "x");
  EXPECT_NO_THROW(collegamento->RinominaFile(Host, base / "host/T01", base / "host/T01.dos", testo));
  EXPECT_THAT(Rifiuto(), HasSubstr("non è stato avviato: l'host non ammette altri canali"));
  EXPECT_NO_THROW(collegamento->CancellaFile(Host, base / "host/T01.dos"));
  EXPECT_THAT(NomiIn("host"), testing::IsEmpty());
  server->Change({});
}

/// The look for a program, where the host does not bring it to its end.
class SshSearch : public SshProgram {
 protected:
  void TearDown() override { server->Change({}); }
  std::string RicercaCon(const std::string& comando) {
    server->Change({"ed25519", {}, "internal-sftp", {"ForceCommand " + comando}});
    Collega();
    return ErroreDi([this] { static_cast<void>(collegamento->FindProgram(Host, "VB0001")); }).Description();
  }
};

TEST_F(SshSearch, LookThatBreaksOffDoesNotCallTheProgramMissing) {
  const std::string controllo = "Il controllo del programma VB0001 sull'host 127.0.0.1 ";
  EXPECT_THAT(RicercaCon("kill -9 $PPID; exec sleep 5"),
              testing::StartsWith(controllo + "è stato richiesto, ma la connessione è caduta"));
  EXPECT_EQ(RicercaCon("kill -SEGV $$"), controllo + "è stato terminato dal segnale SEGV.");
  impostazioni.timeout = 1500ms;
  EXPECT_EQ(RicercaCon("exec sleep 10"),
            controllo + "non ha risposto entro 1,500 secondi e ne è stata chiesta l'interruzione.");
  EXPECT_THAT(RicercaCon("exit 1"), HasSubstr("Il programma VB0001 sull'host 127.0.0.1 non è nella cartella"));
}

/// The documented forced command stands between the key and the host.
class SshForcedCommand : public SshProgram {
 protected:
  void SetUp() override {
    SshProgram::SetUp();
    auto ingresso = test::FileText(test::SourcePath("docs/lumoscad-ingresso.sh"));
    const std::string originale = "programmi=/opt/contabile/programmi\n";
    const auto posto = ingresso.find(originale);
    ASSERT_NE(posto, std::string::npos);
    ingresso.replace(posto, originale.size(), "programmi='" + base / "programmi" + "'\n");
    test::Scrivi(base / "ingresso.sh", ingresso);
    fs::permissions(base / "ingresso.sh", fs::perms::owner_all);
    Offri("internal-sftp");
  }
  void Offri(const std::string& sftp) const {
    server->Change({"ed25519", {}, sftp, {"ForceCommand " + base / "ingresso.sh"}});
  }
  void TearDown() override { server->Change({}); }
};

TEST_F(SshForcedCommand, LetsTheComponentDoItsWork) {
  Invia("T01", "x");
  collegamento->RinominaFile(Host, base / "host/T01", base / "host/T01.dos", testo);
  collegamento->RiceviFile(Host, base / "host/T01.dos", base / "locale/T02", testo);
  collegamento->CancellaFile(Host, base / "host/T01.dos");
  const std::vector<std::string> parametri{"", "'", "l'ora", "$(id)", "a\nb", "\\", "\xE9\xFF", "; id"};
  EXPECT_EQ(Argomenti(parametri), Attesi(parametri));
}

TEST_F(SshForcedCommand, KnowsTheFileServiceByItsOptionsToo) {
  for (const auto* sftp : {"internal-sftp -u 0077", "/usr/lib/openssh/sftp-server -u 0077"}) {
    Offri(sftp);
    Collega();
    Invia("T01", sftp);
    EXPECT_EQ(test::FileText(base / "host/T01"), sftp);
  }
}

TEST_F(SshForcedCommand, LetsNothingElseIn) {
  Programma("touch '" + base / "avviato" + "'; echo '<A/>'");
  const auto programma = "'" + base / "programmi/VB0001" + "'";
  const auto traccia = "touch '" + base / "entrato" + "'";
  for (const auto& comando :
       {traccia, programma + "; " + traccia, programma + " $(" + traccia + ")", programma + " x\n" + traccia,
        programma + "\n" + traccia, programma + " \\'; " + traccia, "'" + base / "programmi/../entra" + "'",
        "'/bin/sh' '-c' '" + base / "entrato" + "'", std::string("'" + base / "programmi/" + "'"), std::string()}) {
    test::ScriviProgramma(base / "entra", traccia);
    const auto riga = "SSH_ORIGINAL_COMMAND=" + nexaro::QuoteForShell(comando) + " '" + base / "ingresso.sh" + "'";
    EXPECT_NE(std::system((riga + " 2>/dev/null").c_str()), 0) << comando;
    EXPECT_FALSE(fs::exists(base / "entrato")) << comando;
    EXPECT_FALSE(fs::exists(base / "avviato")) << comando;
  }
}

} // namespace
} // namespace lumoscad
