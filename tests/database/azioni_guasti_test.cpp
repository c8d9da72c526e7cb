#include "BaseDelleAzioni.hpp"

#include "platform/HostLink.hpp"
#include "platform/RuntimeError.hpp"

#include <new>
#include <stdexcept>

using namespace lumoscad;
using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

namespace {

constexpr const char* Sospendi = "-T SOSPESO /A -H h -D 01 -C C10 -P AB   123";
const std::string Oggetto = "partita AB   123 del conto C10.";
const std::string NonRegistrata = "L'host ha già accettato la modifica; la base dati non ne ha registrato nulla. Da "
                                  "allineare: ";
constexpr int RigaCambiata = -2147217864;

class CommandsOnADatabase : public test::BaseDelleAzioni {
 protected:
  /// Runs `azione` once, just before the statement number `quale` that begins with `inizio` is sent.
  void PrimaDi(const std::string& inizio, int quale, const std::function<void()>& azione) {
    ActiveServices().statementSent = [this, inizio, quale, azione, viste = 0](std::string_view istruzione) mutable {
      if (!distratto_ && istruzione.starts_with(inizio) && ++viste == quale) {
        distratto_ = true;
        azione();
        distratto_ = false;
      }
    };
  }
  /// What another terminal does meanwhile, on a connection of its own.
  void AltroTerminale(const std::string& sql) const {
    ado::Connection connection;
    base_.Apri(connection);
    connection.Execute(sql);
  }

 private:
  bool distratto_ = false;
};

/// The procedures whose rows another terminal changes between reading and writing. Two writers at once need a
/// database that lets a row be changed while a transaction reads it.
class TwoTerminals : public CommandsOnADatabase {};

INSTANTIATE_TEST_SUITE_P(Databases, CommandsOnADatabase, testing::ValuesIn(test::GeneriDiBase()), test::NomeDelGenere);
INSTANTIATE_TEST_SUITE_P(Databases, TwoTerminals, testing::ValuesIn(test::DatabaseServers()), test::NomeDelGenere);

} // namespace

TEST_P(CommandsOnADatabase, EachCommandTakesItsListDownToTheDatabase) {
  banco_.host.reply = "<R><MESSAGGIO>Fatto</MESSAGGIO></R>";
  EXPECT_EQ(Esegui(Sospendi), "");
  EXPECT_EQ(Esegui("-T PRESUNTO /A -D 01 -S OC -A 06 -N 123 -E 2006"), "");
  EXPECT_EQ(Esegui("-T EXTRA /A -S A -E 2006 -N 16"), "");
  EXPECT_THAT(banco_.desktop.box, ElementsAre("Fatto", "Fatto", "Fatto"));
  const test::BaseDati attesa(GetParam(), test::DatiDelleAzioni());
  attesa.Esegui("UPDATE EVENTOCONTABILE SET SOSPESA='S' WHERE EVENTOCONTABILEKEY IN (1,2,3,11,12)");
  attesa.Esegui("DELETE FROM MOVIMENTOCONTABILE WHERE MOVIMENTOKEY=2004");
  EXPECT_THAT(test::Tutto(base_), ElementsAreArray(test::Tutto(attesa)));
  EXPECT_EQ(Esegui("-T SOSPESO /D -C C10 -P AB   123"), "");
  EXPECT_EQ(Esegui("-T PRESUNTO /D -S OC -A 06 -N 123"), "");
  attesa.Esegui("UPDATE EVENTOCONTABILE SET SOSPESA='N' WHERE EVENTOCONTABILEKEY IN (1,2,3,11,12)");
  EXPECT_THAT(test::Tutto(base_), ElementsAreArray(test::Tutto(attesa)));
}

TEST_P(CommandsOnADatabase, TheHostsRefusalLeavesTheDatabaseAsItWas) {
  banco_.host.reply = "<R><MESSAGGIO>nota</MESSAGGIO><ERRORE>Conto bloccato</ERRORE></R>";
  EXPECT_EQ(Esegui(Sospendi), "error");
  EXPECT_THAT(banco_.desktop.box, ElementsAre("Conto bloccato", "nota"));
  NienteCambiato();
}

TEST_P(CommandsOnADatabase, AnErrorOfASingleBlankFailsWithoutABoxButTheDatabaseChanges) {
  banco_.host.reply = "<R><ERRORE> </ERRORE></R>";
  EXPECT_EQ(Esegui(Sospendi), "error");
  EXPECT_THAT(banco_.desktop.box, IsEmpty());
  CambiatoCome("UPDATE EVENTOCONTABILE SET SOSPESA='S' WHERE EVENTOCONTABILEKEY IN (1,2,3)");
}

TEST_P(CommandsOnADatabase, WithAnUnreachableHostTheDatabaseStaysAsItWas) {
  banco_.host.fault = [](const std::string&) { throw RuntimeError(75, "Host non raggiungibile"); };
  EXPECT_EQ(Esegui(Sospendi), "error");
  EXPECT_THAT(banco_.desktop.box, ElementsAre("75\r\nHost non raggiungibile"));
  NienteCambiato();
}

TEST_P(CommandsOnADatabase, WhatTheDatabaseLacksIsToldAfterTheHostsYes) {
  banco_.host.reply = "<R><MESSAGGIO>Fatto</MESSAGGIO></R>";
  EXPECT_EQ(Esegui("-T EXTRA /A -D 01 -S A -E 2006 -N 99"), "error");
  EXPECT_THAT(banco_.desktop.box, ElementsAre("ERRORE: -2147220990\r\nMOVIMENTO CONTABILE INESISTENTE\r\n" +
                                                  NonRegistrata + "documento A/2006/99 dell'azienda 01.",
                                              "Fatto"));
  NienteCambiato();
}

TEST_P(CommandsOnADatabase, AFaultOfOursAfterTheHostsYesSaysThatNothingIsStored) {
  PrimaDi("UPDATE", 2, [] { throw std::logic_error("svista"); });
  EXPECT_EQ(Esegui(Sospendi), "error");
  EXPECT_THAT(banco_.desktop.box, ElementsAre("ERRORE: 51\r\nErrore interno: svista\r\n" + NonRegistrata + Oggetto));
  NienteCambiato();
}

TEST_P(CommandsOnADatabase, WithoutMemoryAfterTheHostsYesItIsSaidThatNothingIsStored) {
  PrimaDi("UPDATE", 2, [] { throw std::bad_alloc(); });
  EXPECT_EQ(Esegui(Sospendi), "error");
  EXPECT_THAT(banco_.desktop.box, ElementsAre("ERRORE: 7\r\nMemoria insufficiente\r\n" + NonRegistrata + Oggetto));
  NienteCambiato();
}

TEST_P(CommandsOnADatabase, WithoutMemoryForTheBoxTheStandardErrorRemains) {
  PrimaDi("UPDATE", 2, [] { throw std::bad_alloc(); });
  banco_.desktop.fault = [] { throw std::bad_alloc(); };
  testing::internal::CaptureStderr();
  EXPECT_EQ(Esegui(Sospendi), "error");
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "LumoScad: ERRORE: 7 Memoria insufficiente " + NonRegistrata + Oggetto + "\n");
  NienteCambiato();
}

TEST_P(CommandsOnADatabase, AnUnreadableReplyLeavesTheOutcomeOnTheHostUnknown) {
  banco_.host.reply = "<R><ERRORE>";
  EXPECT_EQ(Esegui(Sospendi), "error");
  EXPECT_THAT(banco_.desktop.box, ElementsAre(AllOf(HasSubstr("Documento XML non valido"),
                                                    EndsWith("\r\n" + std::string(nexaro::UnknownOutcome)))));
  NienteCambiato();
}

TEST_P(CommandsOnADatabase, ACommandDoesNotRepeatTheOutcomeOfTheOneBefore) {
  EXPECT_EQ(Esegui(Sospendi), "");
  EXPECT_EQ(LumoScadenze().EseguiLumoScad("-T SOSPESO /A -H"), "error");
  EXPECT_THAT(banco_.desktop.box, ElementsAre(StartsWith("9\r\n")));
  EXPECT_THAT(banco_.desktop.box, Not(Contains(HasSubstr("L'host"))));
}

TEST_P(CommandsOnADatabase, WithTheDatabaseClosedAfterTheHostsYesTheReasonIsTold) {
  banco_.host.reply = "<R><MESSAGGIO>Fatto</MESSAGGIO></R>";
  const std::string chiusa = "-DB2SOURCE CHIUSA -DB2USER u -DB2PASS Parola!9";
  EXPECT_EQ(LumoScadenze().EseguiLumoScad(std::string(Sospendi) + " " + chiusa), "error");
  EXPECT_THAT(banco_.host.calls, SizeIs(1));
  EXPECT_THAT(banco_.desktop.box, ElementsAre(AllOf(StartsWith("ERRORE: -"), Not(HasSubstr("Parola!9"))), "Fatto"));
  NienteCambiato();
}

TEST_P(CommandsOnADatabase, ARowThatAnotherChangedBetweenReadingAndWritingIsNotOverwritten) {
  ado::Connection connection;
  base_.Apri(connection);
  ado::Command comando;
  comando.ActiveConnection = &connection;
  comando.CommandText = "SELECT EVENTOCONTABILEKEY,SOSPESA FROM EVENTOCONTABILE WHERE EVENTOCONTABILEKEY=1";
  ado::Recordset righe;
  righe.Open(comando, ado::CursorType::Dynamic, ado::LockType::Optimistic, {"EVENTOCONTABILE", "EVENTOCONTABILEKEY"});
  AltroTerminale("UPDATE EVENTOCONTABILE SET SOSPESA='X' WHERE EVENTOCONTABILEKEY=1");
  righe.Fields("SOSPESA").SetValue("S");
  try {
    righe.Update();
    FAIL() << "la riga è stata sovrascritta";
  } catch (const RuntimeError& errore) {
    EXPECT_EQ(errore.Number(), RigaCambiata);
    EXPECT_THAT(errore.Description(), HasSubstr("altro terminale"));
  }
  CambiatoCome("UPDATE EVENTOCONTABILE SET SOSPESA='X' WHERE EVENTOCONTABILEKEY=1");
}

TEST_P(TwoTerminals, ARowThatAnotherChangedUndoesEverythingAndKeepsTheOthersValue) {
  const std::string altro = "UPDATE EVENTOCONTABILE SET SOSPESA='X' WHERE EVENTOCONTABILEKEY=2";
  PrimaDi("UPDATE", 2, [&] { AltroTerminale(altro); });
  EXPECT_EQ(Azione({"01", "SOSPESOCREA", "C10", "AB   123", ""}), "error");
  EXPECT_THAT(msg_.Errore, AllOf(StartsWith("ERRORE: -2147217864\r\n"), HasSubstr("altro terminale")));
  CambiatoCome(altro);
}

TEST_P(TwoTerminals, ARowThatAnotherRemovedUndoesEverything) {
  const std::string altro = "DELETE FROM EVENTOCONTABILE WHERE EVENTOCONTABILEKEY=12";
  PrimaDi("UPDATE", 2, [&] { AltroTerminale(altro); });
  EXPECT_EQ(Azione({"01", "PRESUNTOCREA", "OC", "06", "123", "T01", ""}), "error");
  EXPECT_THAT(msg_.Errore, StartsWith("ERRORE: -2147217864\r\n"));
  CambiatoCome(altro);
}

TEST_P(TwoTerminals, ADueDateThatAnotherMovedIsNotOverwritten) {
  std::string altro = "UPDATE EVENTOCONTABILE SET DATASCADENZA='2006-12-24' WHERE EVENTOCONTABILEKEY=4";
  PrimaDi("UPDATE", 2, [&] { AltroTerminale(altro); });
  EXPECT_EQ(Azione({"01", "SCRIVISCADENZE", "C10", "AB   123", "", "1", "20060228", "20060705"}), "error");
  EXPECT_THAT(msg_.Errore, StartsWith("ERRORE: -2147217864\r\n"));
  CambiatoCome(altro);
}

TEST_P(TwoTerminals, AnOriginalDateThatAnotherWroteIsNotOverwritten) {
  const std::string altro = "UPDATE EVENTOCONTABILE SET DATASCADENZAORIGINALE='2006-12-24' WHERE EVENTOCONTABILEKEY=22";
  PrimaDi("UPDATE", 1, [&] { AltroTerminale(altro); });
  EXPECT_EQ(Azione({"01", "EXTRASCRIVISCAD", "A", "2006", "15", "1", "20060430", "20060705"}), "error");
  EXPECT_THAT(msg_.Errore, StartsWith("ERRORE: -2147217864\r\n"));
  CambiatoCome(altro);
}

TEST_P(TwoTerminals, TheTestOverwritesNothingEither) {
  if (!base_.Particolarita().comparesLongTexts) {
    GTEST_SKIP() << "un testo lungo qui non si confronta";
  }
  const std::string altro = "UPDATE ERRORE SET FILEXML='altro' WHERE ERROREKEY=100";
  PrimaDi("UPDATE", 1, [&] { AltroTerminale(altro); });
  EXPECT_EQ(Esegui("-T TEST"), "error");
  EXPECT_THAT(banco_.desktop.box, ElementsAre(StartsWith("testScrittura\r\n-2147217864\r\n")));
  CambiatoCome(altro);
}

TEST_P(CommandsOnADatabase, TheTestFailsWhereTheDatabaseDropsTheWriteWithoutAWord) {
  const auto scarta = base_.Contesto().DropUpdate("ERRORE", "OLD.ERROREKEY=100");
  if (scarta.empty()) {
    GTEST_SKIP() << "qui nessun trigger scarta una modifica";
  }
  for (const std::string& istruzione : scarta) {
    base_.Esegui(istruzione);
  }
  EXPECT_EQ(Esegui("-T TEST"), "error");
  EXPECT_THAT(banco_.desktop.box, ElementsAre(StartsWith("testScrittura\r\n-2147217864\r\n")));
  NienteCambiato();
}

TEST_P(CommandsOnADatabase, ASuspensionThatTheDatabaseDropsWithoutAWordIsNotTakenForDone) {
  const auto scarta = base_.Contesto().DropUpdate("EVENTOCONTABILE", "OLD.EVENTOCONTABILEKEY=2");
  if (scarta.empty()) {
    GTEST_SKIP() << "qui nessun trigger scarta una modifica";
  }
  for (const std::string& istruzione : scarta) {
    base_.Esegui(istruzione);
  }
  EXPECT_EQ(Azione({"01", "SOSPESOCREA", "C10", "AB   123", ""}), "error");
  EXPECT_THAT(msg_.Errore, StartsWith("ERRORE: -2147217864\r\n"));
  NienteCambiato();
}

TEST_P(TwoTerminals, AValueThatIsNotReadMayChangeMeanwhile) {
  const std::string altro = "UPDATE EVENTOCONTABILE SET IMPORTOEURO=7 WHERE EVENTOCONTABILEKEY=1";
  PrimaDi("UPDATE", 1, [&] { AltroTerminale(altro); });
  EXPECT_EQ(Azione({"01", "SOSPESOCREA", "C10", "AB   123", ""}), "") << msg_.Errore;
  EXPECT_EQ(base_.Righe("SELECT SOSPESA,IMPORTOEURO FROM EVENTOCONTABILE WHERE EVENTOCONTABILEKEY=1"),
            std::vector<std::string>{"S|7.00"});
}

TEST_P(TwoTerminals, AConnectionThatFallsHalfwayLeavesNothing) {
  banco_.host.reply = "<R><MESSAGGIO>Fatto</MESSAGGIO></R>";
  PrimaDi("UPDATE", 3, [&] { base_.ChiudiConnessioni(); });
  EXPECT_EQ(Esegui(Sospendi), "error");
  EXPECT_THAT(banco_.desktop.box, ElementsAre(StartsWith("ERRORE: -"), "Fatto"));
  NienteCambiato();
}
