// Faults of a host behind SSH from the call of the back end on: of its connection, of itself and of its reply, and of
// the clean-up after it.

#include "GuastiSsh.hpp"

#include "lumoscad/LumoScadenze.hpp"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <utility>

namespace lumoscad::test {
namespace {

using testing::AnyOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Verso = ByteProxy::Direction;

// The call.

TEST_F(SshFaults, AConnectionThatDiedBeforeTheCallIsOpenedAgain) {
  primaDi = [this](std::string_view operazione) {
    if (operazione == "EseguiProgramma") {
      Taglia();
    }
  };
  Prova("Cut before the call is sent, host back");
  VerificaRiuscito();
  VerificaRimasti({});
  VerificaAvvii(1);
  EXPECT_EQ(proxy.Connections(), 2);
}

TEST_F(SshFaults, AServerThatWasStartedAgainIsReachedAgain) {
  primaDi = [this](std::string_view operazione) {
    if (operazione == "EseguiProgramma") {
      demo.Ssh().Restart();
    }
  };
  Prova("Server restarted before the call is sent");
  VerificaRiuscito();
  VerificaRimasti({});
  VerificaAvvii(1);
}

/// Says that the place is reached, and can wait until the connection was cut.
constexpr std::string_view Segnala = R"(
: >"$NEXARO_RADICE/qui"
aspetta() { n=0; until [ -e "$NEXARO_RADICE/via" ] || [ $n -ge 300 ]; do sleep 0.05; n=$((n+1)); done; }
)";

class SshCallFaults : public SshFaults {
 protected:
  /// The connection is cut when the back end says that it has got there.
  void TagliaAlSegnale(const std::string& guasto, const std::string& inizio, const std::string& poi) {
    Agguato(demo.Host() / "qui", [this] {
      Taglia();
      Scrivi(demo.Host() / "via", "");
    });
    ProvaCon(guasto, inizio + std::string(Segnala) + poi);
  }
};

TEST_F(SshCallFaults, AProgramWhoseStartWasSentIsNotStartedAgain) {
  TagliaAlSegnale("Cut after the start was sent, before the program has done anything", "", "aspetta; exit 1");
  VerificaFallito();
  VerificaErrore({Programma});
  VerificaRimasti({Completo, Blocco});
  VerificaAvvii(1);
}

TEST_F(SshCallFaults, ACutWhileTheProgramRunsIsAnErrorThoughTheHostHasDoneItsPart) {
  TagliaAlSegnale("Cut while the program runs", "risposta=$(vero \"$@\")", "aspetta; echo \"$risposta\"");
  VerificaFallito();
  VerificaErrore({Programma});
  VerificaRimasti({Completo, Blocco});
  VerificaAvvii(1);
  EXPECT_THAT(FileText(demo.Registro()), testing::StartsWith("ACCETTATA\t"));
}

TEST_F(SshCallFaults, ACutInTheMiddleOfTheReplyIsAnError) {
  TagliaAlSegnale("Cut in the middle of the reply", "risposta=$(vero \"$@\"); printf %s \"$risposta\" | head -c 60",
                  "aspetta; printf %s \"$risposta\" | tail -c +61");
  VerificaFallito();
  VerificaErrore({Programma});
  VerificaRimasti({Completo, Blocco});
  VerificaAvvii(1);
}

TEST_F(SshFaults, ACutInTheMiddleOfALongReplyIsAnError) {
  // The encrypted bytes are somewhat more than the reply's own.
  primaDi = [this](std::string_view operazione) {
    if (operazione == "EseguiProgramma") {
      proxy.StrikeAfter(Verso::ToClient, 1000000, Azione::Close);
    }
  };
  ProvaCon("Cut after 1 MB of a reply of 4 MB", R"(vero "$@" >/dev/null
echo '<RISPOSTA><MESSAGGIO>'; head -c 4000000 /dev/zero | tr '\0' x; echo '</MESSAGGIO></RISPOSTA>')");
  EXPECT_TRUE(proxy.HasStruck());
  VerificaFallito();
  VerificaErrore({Programma});
  VerificaRimasti({Completo, Blocco});
  VerificaAvvii(1);
}

TEST_F(SshFaults, ANetworkThatFallsSilentWhileTheProgramRunsIsGivenUpAfterTheWait) {
  LimitaAttesa(Breve);
  Agguato(demo.Host() / "qui", [this] {
    proxy.Strike(Azione::Hold);
    Scrivi(demo.Host() / "via", "");
  });
  ProvaCon("Network silent while the program runs", std::string(Segnala) + "aspetta; vero \"$@\"");
  VerificaFallito();
  VerificaErrore({Programma, "entro 3 secondi"});
  VerificaRimasti({Completo, Blocco});
  VerificaAvvii(1);
}

class SshCleanUpFaults : public SshFaults {
 protected:
  /// Cuts the connection before the request's files are deleted.
  void TagliaAllaPulizia(bool perSempre) {
    primaDi = [this, perSempre, fatto = false](std::string_view operazione) mutable {
      if (operazione == "CancellaFile" && !std::exchange(fatto, true)) {
        Taglia(perSempre);
      }
    };
  }
};

TEST_F(SshCleanUpFaults, ACutBeforeTheCleanUpIsMended) {
  TagliaAllaPulizia(false);
  Prova("Cut before the clean-up, host back");
  VerificaRiuscito();
  VerificaRimasti({});
  VerificaAvvii(1);
  EXPECT_EQ(proxy.Connections(), 2);
}

TEST_F(SshCleanUpFaults, ACleanUpThatCannotBeDoneFailsTheCommand) {
  TagliaAllaPulizia(true);
  Prova("Cut before the clean-up, host gone");
  VerificaFallito();
  VerificaErrore({"host 127.0.0.1"});
  VerificaRimasti({Completo, Blocco});
  VerificaAvvii(1);
}

TEST_F(SshCleanUpFaults, ALostAnswerToADeletionIsReplacedByALookAtTheName) {
  Ferma("CancellaFile", "cancella dopo", [this] { Taglia(); });
  Prova("Answer to a deletion lost, host back");
  VerificaRiuscito();
  VerificaRimasti({});
  VerificaAvvii(1);
}

TEST_F(SshCleanUpFaults, AHostThatIsGoneAfterTheReplyKeepsTheLockOnly) {
  allaIstruzione = [this, fatto = false](std::string_view istruzione) mutable {
    if (istruzione.starts_with("UPDATE") && !std::exchange(fatto, true)) {
      Taglia(true);
    }
  };
  Prova("Cut after the clean-up, host gone");
  VerificaRiuscito();
  VerificaRimasti({Blocco});
  VerificaAvvii(1);
}

// The back end.

class SshProgramFaults : public SshFaults {
 protected:
  void VerificaGuasto(const Righe& parti) {
    VerificaFallito();
    VerificaErrore(parti);
    VerificaRimasti({Completo, Blocco});
  }
};

TEST_F(SshProgramFaults, ARefusalIsShown) {
  Scrivi(demo.Host() / "conti_bloccati", "20100023\n");
  Prova("Request refused by the back end");
  VerificaFallito();
  VerificaErrore({"Riga 1, campo 1 (CodiceConto): «20100023» è un conto bloccato."});
  VerificaRimasti({Blocco});
}

TEST_F(SshProgramFaults, AMissingProgramIsNamed) {
  ::setenv("NEXARO_PROGRAMMI", (demo.Host() / "altrove").c_str(), 1);
  Prova("Program missing");
  VerificaGuasto({Programma, "non è stato trovato"});
}

TEST_F(SshProgramFaults, AnExitStatusOtherThanZeroIsAnErrorWhateverTheAnswer) {
  ProvaCon("Program exits with status 3", "echo '<RISPOSTA/>'; echo 'archivio occupato' >&2; exit 3");
  VerificaGuasto({Programma + "è terminato con lo stato 3: archivio occupato", Ignoto});
}

TEST_F(SshProgramFaults, AProgramKilledByASignalIsAnError) {
  ProvaCon("Program killed by a signal", "echo '<RISPOSTA/>'; kill -KILL $$");
  VerificaGuasto({Programma, Ignoto});
  // A login shell that waits for the program reports the signal as a status of its own.
  EXPECT_THAT(desktop.box, ElementsAre(AnyOf(HasSubstr("è stato terminato dal segnale KILL"),
                                             HasSubstr("è terminato con lo stato 137"))));
}

TEST_F(SshProgramFaults, AProgramThatHangsIsGivenUpAfterTheWait) {
  LimitaAttesa(Breve);
  const auto inizio = std::chrono::steady_clock::now();
  ProvaCon("Program hangs", "echo $$ >\"$NEXARO_RADICE/processo\"; exec sleep 30");
  EXPECT_LT(std::chrono::steady_clock::now() - inizio, std::chrono::seconds(20));
  VerificaGuasto({Programma, "non ha risposto entro 3 secondi", Ignoto});
  ::kill(static_cast<pid_t>(std::stol(FileText(demo.Host() / "processo"))), SIGKILL);
}

TEST_F(SshProgramFaults, AReplyOfAHundredMegabytesIsCutOffAndTakesNoLonger) {
  const auto inizio = std::chrono::steady_clock::now();
  ProvaCon("Reply of 100 MB", "head -c 100000000 /dev/zero");
  EXPECT_LT(std::chrono::steady_clock::now() - inizio, std::chrono::seconds(20));
  VerificaGuasto({Programma, "oltre 16 MiB", Ignoto});
}

TEST_F(SshProgramFaults, AReplyThatBreaksOffIsAnError) {
  ProvaCon("Reply truncated", "echo '<RISPOSTA><MESSAGGIO>Variate 2'");
  VerificaGuasto({Programma + "ha dato una risposta non valida", Ignoto});
}

TEST_F(SshProgramFaults, NoReplyIsAnError) {
  ProvaCon("No reply", "exit 0");
  VerificaGuasto({Programma + "non ha dato alcuna risposta.", Ignoto});
}

constexpr const char* AccentataLatin1 = "printf '<RISPOSTA><MESSAGGIO>Citt\\340</MESSAGGIO></RISPOSTA>'";

TEST_F(SshProgramFaults, AReplyInAnotherEncodingThanAgreedIsAnError) {
  ProvaCon("Reply in another encoding than NEXARO_CODIFICA", AccentataLatin1);
  VerificaGuasto({Programma + "ha dato una risposta non valida", Ignoto});
}

TEST_F(SshFaults, ACharacterThatTheHostsEncodingLacksStopsTheRequest) {
  ::setenv("NEXARO_POSTAZIONE", "T€", 1);
  ::setenv("NEXARO_CODIFICA", "ISO-8859-1", 1);
  Prova("Character missing from NEXARO_CODIFICA");
  VerificaFallito();
  VerificaErrore({"«€»", "U+20AC", "ISO-8859-1"});
  VerificaAvvii(0);
}

class SshEncodingFaults : public SshFaults {
 protected:
  void VerificaLetta() {
    EXPECT_EQ(risultato, "");
    EXPECT_THAT(desktop.box, ElementsAre("Città"));
    VerificaRimasti({});
    EXPECT_THAT(Differenze(dopo, demo.Stato()), IsEmpty());
  }
  /// What is shown of the demonstration's answer to a request of `conto`, on a host with this encoding.
  Righe Risposta(const char* codifica, const std::string& conto) {
    ::setenv("NEXARO_CODIFICA", codifica, 1);
    ScriviProgramma(demo.VB0001(), "exec \"$NEXARO_RADICE/programmi/VB0001.vero\" \"$@\"");
    LumoScadenze().EseguiLumoScad("-T SOSPESO /A -D 01 -H " + demo.Indirizzo() + " -C " + conto +
                                  " -P AB   123 -DB2SOURCE " + demo.Sorgente() + " -DB2SCHEMA main");
    return desktop.box;
  }
};

TEST_F(SshEncodingFaults, TheDemonstrationsProgramAnswersInLatin1) {
  EXPECT_THAT(Risposta("ISO-8859-1", "Perché"), Contains("Sospesa la partita AB123 del conto Perché"));
}

TEST_F(SshEncodingFaults, TheDemonstrationsProgramAnswersWithTheEuroOfTheHostsEncoding) {
  EXPECT_THAT(Risposta("ISO-8859-15", "Città€"), Contains("Sospesa la partita AB123 del conto Città€"));
}

TEST_F(SshEncodingFaults, TheDemonstrationsProgramAnswersInUtf8) {
  EXPECT_THAT(Risposta("UTF-8", "Città€"), Contains("Sospesa la partita AB123 del conto Città€"));
}

TEST_F(SshEncodingFaults, AReplyInTheAgreedEncodingIsRead) {
  ::setenv("NEXARO_CODIFICA", "ISO-8859-1", 1);
  ProvaCon("None: reply in ISO-8859-1, as NEXARO_CODIFICA says", AccentataLatin1);
  VerificaLetta();
}

TEST_F(SshEncodingFaults, AReplyInTheEncodingThatItDeclaresIsRead) {
  ProvaCon(
      "None: reply declares another encoding",
      "printf '<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><RISPOSTA><MESSAGGIO>Citt\\340</MESSAGGIO></RISPOSTA>'");
  VerificaLetta();
}

} // namespace
} // namespace lumoscad::test
