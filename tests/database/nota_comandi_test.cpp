// The note that a command writes, from the program's start to the database.

#include "BaseDelleAzioni.hpp"
#include "common/Nota.hpp"
#include "platform/LocalFile.hpp"
#include "platform/RuntimeError.hpp"
#include "support/OtherProcess.hpp"

#include <filesystem>
#include <functional>
#include <iterator>
#include <unistd.h>

namespace lumoscad {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

const std::string Sospendi = "-T SOSPESO /A -H 10.0.0.1 -D 01 -C C10 -P AB   123";
/// The host has the item, the database does not.
const std::string SospendiAssente = "-T SOSPESO /A -H 10.0.0.1 -D 01 -C C10 -P ZZ   9";

class NoteOfACommand : public test::BaseDelleAzioni {
 protected:
  [[nodiscard]] std::string Cartella() const { return banco_.environment.CartellaLocale; }
  [[nodiscard]] std::vector<Nota> Note() const { return LeggiNote(Cartella()); }
  /// The one note that is there.
  [[nodiscard]] Nota UnaNota() const {
    const std::vector<Nota> note = Note();
    EXPECT_THAT(note, SizeIs(1));
    return note.empty() ? Nota{} : note.front();
  }
  [[nodiscard]] bool SenzaNote() const { return std::filesystem::is_empty(Cartella()); }
  /// Does something while the host's program runs.
  void Durante(std::function<void()> azione) {
    banco_.host.fault = [azione = std::move(azione)](const std::string& operazione) {
      if (operazione.starts_with("Esegui")) {
        azione();
      }
    };
  }
  /// The program's start was sent, and then the link fails.
  void CadeIlCollegamento(std::optional<TransactionOutcome> esito) {
    banco_.host.reply = "<R><ERRORE>";
    caduto_ = esito;
    ActiveServices().hostLink = [this]() -> nexaro::HostLink& { return cade_; };
  }

  struct HostCheCade final : nexaro::HostLink {
    explicit HostCheCade(const std::optional<TransactionOutcome>& esito) : come(esito) {}
    void EseguiProgramma(std::string_view, std::string_view, const std::vector<std::string>&,
                         nexaro::XMLParser& risposta) override {
      risposta.started = true;
      risposta.answered = haRisposto;
      throw RuntimeError(errors::Driver, "Il collegamento è caduto").WithOutcome(come);
    }
    void RiceviFile(std::string_view, std::string_view, std::string_view, std::string&) override {}
    void InviaFile(std::string_view, std::string_view, std::string_view) override {}
    void RinominaFile(std::string_view, std::string_view, std::string_view, std::string&) override {}
    void CancellaFile(std::string_view, std::string_view) override {}
    const std::optional<TransactionOutcome>& come;
    bool haRisposto = false;
  };
  std::optional<TransactionOutcome> caduto_;
  HostCheCade cade_{caduto_};
};

INSTANTIATE_TEST_SUITE_P(Databases, NoteOfACommand, testing::ValuesIn(test::GeneriDiBase()), test::NomeDelGenere);

TEST_P(NoteOfACommand, SaysWhileTheProgramRunsWhatWasAskedOfWhom) {
  std::vector<Nota> viste;
  std::string testo;
  Durante([&] {
    viste = Note();
    testo = ReadLocalFile(PercorsiNota(Cartella(), viste.at(0).nome).nota, MaxRead);
  });
  EXPECT_EQ(Esegui(Sospendi), "");
  ASSERT_THAT(viste, SizeIs(1));
  const Nota& nota = viste[0];
  EXPECT_EQ(nota.nome, "sospeso-20060305-140709-" + std::to_string(::getpid()));
  EXPECT_EQ(nota.errore, "");
  EXPECT_TRUE(nota.inCorso);
  EXPECT_EQ(nota.fase, FaseNota::Avviata);
  EXPECT_EQ(nota.inizio.minute, 7);
  EXPECT_EQ(nota.processo, ::getpid());
  EXPECT_EQ(nota.postazione, "T01");
  EXPECT_EQ(nota.tipoComando, "SOSPESO /A");
  EXPECT_EQ(nota.azienda, "01");
  EXPECT_EQ(nota.host, "10.0.0.1");
  EXPECT_EQ(nota.programma, "VB0001");
  EXPECT_EQ(nota.richiesta, "");
  EXPECT_THAT(nota.parametriHost, ElementsAre("01", "SOSPESOCREA", "C10", "AB123", "T01", ""));
  EXPECT_EQ(nota.modifica.genere, ModificaChiesta::Genere::Azione);
  EXPECT_THAT(nota.modifica.parametri, ElementsAre("01", "SOSPESOCREA", "C10", "AB   123", ""));
  EXPECT_THAT(Opzioni(), HasSubstr("-DB2SOURCE " + nota.origineDati + " "));
  EXPECT_THAT(testo, Not(HasSubstr("DB2PASS")));
  EXPECT_THAT(testo, Not(HasSubstr("DB2SCHEMA")));
  EXPECT_TRUE(SenzaNote());
}

TEST_P(NoteOfACommand, HoldsNoPasswordWhereverItStands) {
  std::string testo;
  Durante([&] { testo = ReadLocalFile(PercorsiNota(Cartella(), UnaNota().nome).nota, MaxRead); });
  EXPECT_EQ(LumoScadenze().EseguiLumoScad(Sospendi + " -DB2PASS Segretissima -DB2SOURCE x;PWD=Segretissima"), "error");
  EXPECT_THAT(testo, HasSubstr("origine=x\n"));
  EXPECT_THAT(testo, Not(HasSubstr("Segretissima")));
}

TEST_P(NoteOfACommand, SaysThatTheHostAcceptedBeforeTheDatabaseIsChanged) {
  banco_.host.reply = "<R><MESSAGGIO>Sospesa</MESSAGGIO></R>";
  std::vector<Nota> viste;
  ActiveServices().statementSent = [&](std::string_view sql) {
    if (sql.starts_with("UPDATE") && viste.empty()) {
      viste = Note();
    }
  };
  EXPECT_EQ(Esegui(Sospendi), "");
  ASSERT_THAT(viste, SizeIs(1));
  EXPECT_EQ(viste[0].fase, FaseNota::Accettata);
  EXPECT_EQ(viste[0].rispostaHost, "Sospesa");
  EXPECT_TRUE(SenzaNote());
}

TEST_P(NoteOfACommand, IsGoneWhereTheHostRefused) {
  banco_.host.reply = "<R><ERRORE>no</ERRORE></R>";
  EXPECT_EQ(Esegui(Sospendi), "error");
  EXPECT_TRUE(SenzaNote());
}

TEST_P(NoteOfACommand, IsGoneWhereTheProgramWasNotStarted) {
  Durante([] { throw RuntimeError(errors::Driver, "Host irraggiungibile"); });
  EXPECT_EQ(Esegui(Sospendi), "error");
  EXPECT_TRUE(SenzaNote());
  CadeIlCollegamento(TransactionOutcome::NotApplied);
  EXPECT_EQ(Esegui(Sospendi), "error");
  EXPECT_TRUE(SenzaNote());
}

TEST_P(NoteOfACommand, StaysWhereTheHostsAnswerIsNotKnown) {
  CadeIlCollegamento(std::nullopt);
  EXPECT_EQ(Esegui(Sospendi), "error");
  const Nota nota = UnaNota();
  EXPECT_EQ(nota.fase, FaseNota::Avviata);
  EXPECT_EQ(nota.rispostaHost, "Il collegamento è caduto");
  EXPECT_FALSE(nota.inCorso);
  NienteCambiato();
}

TEST_P(NoteOfACommand, StaysWhereTheProgramHasAnsweredThoughItsStatusIsThatOfOneThatWasNotFound) {
  cade_.haRisposto = true;
  CadeIlCollegamento(TransactionOutcome::NotApplied);
  EXPECT_EQ(Esegui(Sospendi), "error");
  EXPECT_EQ(UnaNota().fase, FaseNota::Avviata);
  EXPECT_EQ(UnaNota().rispostaHost, "Il collegamento è caduto");
  EXPECT_THAT(banco_.desktop.box, Each(Not(HasSubstr("L'esito sull'host non è noto")))) << "as ever";
  NienteCambiato();
}

TEST_P(NoteOfACommand, StaysWhereTheDatabaseKeptNothing) {
  EXPECT_EQ(Esegui(SospendiAssente), "error");
  EXPECT_EQ(UnaNota().fase, FaseNota::NonApplicata);
  EXPECT_FALSE(UnaNota().inCorso);
  // The next one of the same second has a name of its own, and leaves this one alone.
  EXPECT_EQ(Esegui(SospendiAssente), "error");
  const std::vector<Nota> note = Note();
  ASSERT_THAT(note, SizeIs(2));
  EXPECT_EQ(note[1].nome, note[0].nome + "-1");
}

TEST_P(NoteOfACommand, StaysWhereTheDatabaseCannotBeOpened) {
  EXPECT_EQ(LumoScadenze().EseguiLumoScad(Sospendi + " -DB2SOURCE assente"), "error");
  EXPECT_EQ(UnaNota().fase, FaseNota::NonApplicata);
  EXPECT_EQ(UnaNota().origineDati, "assente");
}

TEST_P(NoteOfACommand, IsGoneWhereTheChangeHasNothingToDoInTheDatabase) {
  EXPECT_EQ(Esegui("-T SOSPESO /A -H 10.0.0.1 -D 01 -C C11 -P SENZA RATE"), "");
  EXPECT_TRUE(SenzaNote());
}

TEST_P(NoteOfACommand, IsWrittenForEachOfTwoSubcommands) {
  std::vector<std::string> comandi;
  Durante([&] { comandi.push_back(UnaNota().tipoComando); });
  EXPECT_EQ(Esegui("-T SOSPESO /A /D -H 10.0.0.1 -D 01 -C C10 -P AB   123"), "");
  EXPECT_THAT(comandi, ElementsAre("SOSPESO /A", "SOSPESO /D"));
  EXPECT_TRUE(SenzaNote());
}

TEST_P(NoteOfACommand, IsNotWrittenByWhatAsksNobody) {
  bool vista = false;
  Durante([&] { vista = true; });
  EXPECT_EQ(Esegui("-T SOSPESO /A -H 10.0.0.1 -D 01 -C C10 -P AB 1 -DEMO"), "");
  EXPECT_EQ(Esegui("-T TEST"), "");
  EXPECT_TRUE(SenzaNote());
  EXPECT_FALSE(vista);
}

TEST_P(NoteOfACommand, IsLeftAloneByAChildForkedMeanwhile) {
  bool pulito = false;
  Durante([&] {
    const test::OtherProcess figlio([] {
      stato().notaInCorso.Accettata("dal figlio");
      stato().notaInCorso.Registrata(TransactionOutcome::Applied);
      stato().notaInCorso.Concludi(true);
    });
    pulito = figlio.Succeeded();
    EXPECT_EQ(UnaNota().fase, FaseNota::Avviata);
    EXPECT_TRUE(UnaNota().inCorso);
  });
  EXPECT_EQ(Esegui(SospendiAssente), "error");
  EXPECT_TRUE(pulito);
  EXPECT_EQ(UnaNota().fase, FaseNota::NonApplicata);
}

TEST_P(NoteOfACommand, OfTwoTerminalsWithOneCodeInTheSameSecondAreTwo) {
  Durante([&] {
    test::OtherProcess altro([] {
      static NotaInCorso nota;
      nota.Comincia("SOSPESO", "/D");
      nota.Prepara({"01", "SOSPESOCANCELLA", "C11", "AB   123", ""});
      nota.Avviata("10.0.0.1", "VB0001", {"01"});
    });
    ASSERT_TRUE(altro.Succeeded());
    const std::string sua = "sospeso-20060305-140709-" + std::to_string(altro.Number());
    EXPECT_THAT(Note(), SizeIs(2));
    EXPECT_TRUE(LeggiNota(Cartella(), sua).inCorso);
    altro.Kill();
    EXPECT_FALSE(LeggiNota(Cartella(), sua).inCorso);
    EXPECT_EQ(LeggiNota(Cartella(), sua).tipoComando, "SOSPESO /D");
  });
  EXPECT_EQ(Esegui(Sospendi), "");
  EXPECT_EQ(UnaNota().tipoComando, "SOSPESO /D") << "the dead one's stays, this one's is gone";
}

/// A command that can write no note does and says what it does with one.
TEST_P(NoteOfACommand, ThatCannotBeWrittenChangesNothing) {
  const std::vector<std::function<void()>> ostacoli = {
      [&] { banco_.environment.CartellaLocale = Cartella() + "/assente"; },
      [&] { banco_.environment.CartellaLocale = "/proc"; },
      [&] {
        WriteLocalFile(Cartella() + "/file", "");
        banco_.environment.CartellaLocale += "/file";
      },
  };
  const std::string cartella = Cartella();
  std::size_t riusciti = 0;
  for (const auto& ostacolo : ostacoli) {
    base_.Esegui("UPDATE EVENTOCONTABILE SET SOSPESA='N' WHERE EVENTOCONTABILEKEY IN (1,2)");
    banco_.environment.CartellaLocale = cartella;
    banco_.desktop.box.clear();
    ostacolo();
    testing::internal::CaptureStderr();
    EXPECT_EQ(Esegui(Sospendi), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_THAT(banco_.desktop.box, IsEmpty());
    CambiatoCome("UPDATE EVENTOCONTABILE SET SOSPESA='S' WHERE EVENTOCONTABILEKEY IN (1,2,3)");
    ++riusciti;
  }
  EXPECT_EQ(riusciti, ostacoli.size());
}

TEST_P(NoteOfACommand, WhoseNameIsTakenGetsAnother) {
  const std::string nome = "sospeso-20060305-140709-" + std::to_string(::getpid());
  std::filesystem::create_directory(PercorsiNota(Cartella(), nome).nota);
  std::filesystem::create_symlink("/etc/passwd", PercorsiNota(Cartella(), nome + "-1").nota);
  std::string suo;
  Durante([&] {
    for (const Nota& nota : Note()) {
      suo = nota.errore.empty() ? nota.nome : suo;
    }
  });
  EXPECT_EQ(Esegui(Sospendi), "");
  EXPECT_EQ(suo, nome + "-2");
}

TEST_P(NoteOfACommand, WhosePhaseCannotBeWrittenKeepsTheOneBefore) {
  Durante([&] { std::filesystem::create_directory(PercorsiNota(Cartella(), UnaNota().nome).fase); });
  EXPECT_EQ(Esegui(SospendiAssente), "error");
  const Nota nota = UnaNota();
  EXPECT_EQ(nota.fase, FaseNota::Avviata);
  EXPECT_NE(nota.errore, "");
}

TEST_P(NoteOfACommand, LeavesNoDescriptorBehind) {
  const auto descrittori = [] {
    const std::filesystem::directory_iterator tutti("/proc/self/fd");
    return std::distance(begin(tutti), end(tutti));
  };
  static_cast<void>(Esegui(Sospendi));
  const auto prima = descrittori();
  for (int volta = 0; volta < 30; ++volta) {
    static_cast<void>(Esegui(Sospendi));
    static_cast<void>(LumoScadenze().EseguiLumoScad(Sospendi + " -DB2SOURCE assente"));
  }
  EXPECT_THAT(Note(), SizeIs(30));
  EXPECT_EQ(descrittori(), prima);
}

} // namespace
} // namespace lumoscad
