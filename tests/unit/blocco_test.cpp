#include "handlers/Blocco.hpp"
#include "platform/RuntimeError.hpp"
#include "support/TestBench.hpp"

#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <tuple>
#include <vector>

using namespace lumoscad;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class TerminalLock : public testing::Test {
 protected:
  void OccupaCrediti() { banco_.host.file["/tmp/VBCREDITI"] = "Utente : T02\r\nData : 04/03/2006   Ora : 09:00\r\n"; }
  [[nodiscard]] std::string Locale(const std::string& nome) const {
    return banco_.environment.CartellaLocale + "/" + nome;
  }

  test::TestBench banco_;
};

} // namespace

TEST_F(TerminalLock, OfAFreeListIsTakenWithUserDateAndTime) {
  EXPECT_EQ(BloccaArea("10.0.0.1", "CREDITI"), "");
  EXPECT_EQ(banco_.host.file["/tmp/VBCREDITI"], "Utente : T01\r\nData : 05/03/2006   Ora : 14:07\r\n");
  EXPECT_THAT(banco_.host.operazioni, ElementsAre("Ricevi /tmp/VBCREDITI", "Invia /tmp/VBCREDITI"));
  EXPECT_THAT(banco_.host.host, Each("10.0.0.1"));
  EXPECT_THAT(banco_.desktop.box, IsEmpty());
}

TEST_F(TerminalLock, WritesTheYearInFourDigits) {
  banco_.adesso = DateTime{987, 3, 5, 4, 7, 9};
  EXPECT_EQ(BloccaArea("10.0.0.1", "CREDITI"), "");
  EXPECT_EQ(banco_.host.file["/tmp/VBCREDITI"], "Utente : T01\r\nData : 05/03/0987   Ora : 04:07\r\n");
}

TEST_F(TerminalLock, OfATakenListSaysByWhomAndWhen) {
  OccupaCrediti();
  EXPECT_EQ(BloccaArea("h", "CREDITI"), "Utente : T02");
  EXPECT_THAT(banco_.desktop.box, ElementsAre("Area CREDITI in manutenzione presso un altro terminale\rUtente : T02\r"
                                              "Data : 04/03/2006   Ora : 09:00"));
  EXPECT_THAT(banco_.desktop.titles, ElementsAre("LumoScad"));
  EXPECT_THAT(banco_.host.uploads, IsEmpty());
}

TEST_F(TerminalLock, KeepsTheSameTerminalOutOfItsOwnListToo) {
  EXPECT_EQ(BloccaArea("h", "CREDITI"), "");
  EXPECT_EQ(BloccaArea("h", "CREDITI"), "Utente : T01");
}

TEST_F(TerminalLock, OfTheCreditsDoesNotLockTheDebits) {
  OccupaCrediti();
  EXPECT_EQ(BloccaArea("h", "DEBITI"), "");
  EXPECT_EQ(banco_.host.file.count("/tmp/VBDEBITI"), 1U);
}

TEST_F(TerminalLock, SpeaksOfTheMovementForAnyOtherArea) {
  banco_.host.file["/tmp/VBPRESUNTI"] = "Utente : T02\r\nieri\r\n";
  EXPECT_EQ(BloccaArea("h", "PRESUNTI"), "Utente : T02");
  EXPECT_THAT(banco_.desktop.box, ElementsAre("Il movimento è in uso su un altro terminare\rUtente : T02\rieri"));
}

TEST_F(TerminalLock, HasAKeyWithoutBlanks) {
  EXPECT_EQ(BloccaArea("h", " A B  C "), "");
  EXPECT_EQ(banco_.host.file.count("/tmp/VBABC"), 1U);
  EXPECT_EQ(TogliSpazi(" A B  C "), "ABC");
  EXPECT_EQ(TogliSpazi(""), "");
}

TEST_F(TerminalLock, WithABlankFirstLineCountsAsFree) {
  for (const char* contenuto : {"", "  \r\nqualcosa\r\n", "\r\n"}) {
    banco_.host.file["/tmp/VBCREDITI"] = contenuto;
    EXPECT_EQ(BloccaArea("h", "CREDITI"), "") << contenuto;
    EXPECT_EQ(banco_.host.file["/tmp/VBCREDITI"], "Utente : T01\r\nData : 05/03/2006   Ora : 14:07\r\n");
  }
}

TEST_F(TerminalLock, OfMoreThan64KiBIsNeverFree) {
  const std::string lungo(65536, ' ');
  for (const auto& [contenuto, riga1, riga2] :
       {std::tuple<std::string, std::string, std::string>{"\r\n \r\nUtente : T02\r\nieri\r\n" + lungo, "Utente : T02",
                                                          "ieri"},
        {lungo + "Utente : T02\r\n", "un blocco di oltre 64 KiB", ""},
        {std::string(65537, '\n'), "un blocco di oltre 64 KiB", ""},
        {std::string(65537, '\0'), "un blocco di oltre 64 KiB", ""},
        {"Utente : T02\r\n\r\n" + lungo, "Utente : T02", ""}}) {
    banco_.desktop.box.clear();
    banco_.host.file["/tmp/VBDEBITI"] = contenuto;
    EXPECT_EQ(BloccaArea("h", "DEBITI"), riga1);
    EXPECT_THAT(banco_.desktop.box,
                ElementsAre("Area DEBITI in manutenzione presso un altro terminale\r" + riga1 + "\r" + riga2));
    EXPECT_EQ(banco_.host.file["/tmp/VBDEBITI"], contenuto);
  }
  EXPECT_THAT(banco_.host.uploads, IsEmpty());
}

TEST_F(TerminalLock, OfExactly64KiBFollowsItsFirstLine) {
  banco_.host.file["/tmp/VBDEBITI"] = std::string(65536, ' ');
  EXPECT_EQ(BloccaArea("h", "DEBITI"), "");
  banco_.host.file["/tmp/VBDEBITI"] = "Utente : T02\r\n" + std::string(65522, ' ');
  EXPECT_EQ(BloccaArea("h", "DEBITI"), "Utente : T02");
}

TEST_F(TerminalLock, IsReceivedInItsFirst64KiBAlone) {
  EXPECT_EQ(BloccaArea("h", "DEBITI"), "");
  EXPECT_EQ(banco_.host.limits, (std::vector<std::size_t>{65537})) << "one more tells that it is longer";
}

TEST_F(TerminalLock, OfASingleLineShowsTheSecondAsEmpty) {
  banco_.host.file["/tmp/VBDEBITI"] = "Utente : T02";
  EXPECT_EQ(BloccaArea("h", "DEBITI"), "Utente : T02");
  EXPECT_THAT(banco_.desktop.box, ElementsAre("Area DEBITI in manutenzione presso un altro terminale\rUtente : T02\r"));
}

TEST_F(TerminalLock, OfThePastDeceivesNobodyByItsLocalCopy) {
  EXPECT_EQ(BloccaArea("h", "CREDITI"), "");
  EXPECT_EQ(SbloccaArea("h", "CREDITI"), "");
  EXPECT_TRUE(std::filesystem::exists(Locale("VBCREDITI")));
  EXPECT_EQ(BloccaArea("h", "CREDITI"), "");
}

TEST_F(TerminalLock, CountsAsFreeWithoutAHost) {
  banco_.host.fault = [](const std::string&) { throw RuntimeError(errors::FileAccess, "Host irraggiungibile"); };
  EXPECT_EQ(BloccaArea("h", "CREDITI"), "");
  EXPECT_EQ(SbloccaArea("h", "CREDITI"), "");
  EXPECT_THAT(banco_.host.operazioni,
              ElementsAre("Ricevi /tmp/VBCREDITI", "Invia /tmp/VBCREDITI", "Cancella /tmp/VBCREDITI"));
  EXPECT_THAT(banco_.desktop.box, IsEmpty());
}

TEST_F(TerminalLock, CountsAsFreeWithoutALocalDirectory) {
  const std::string cartella = banco_.environment.CartellaLocale;
  banco_.environment.CartellaLocale = cartella + "/che-non-esiste";
  EXPECT_EQ(BloccaArea("h", "CREDITI"), "");
  EXPECT_THAT(banco_.desktop.box, IsEmpty());
  banco_.environment.CartellaLocale = cartella;
}

TEST_F(TerminalLock, DeletesItsFileOnTheHostWhenReleased) {
  OccupaCrediti();
  EXPECT_EQ(SbloccaArea("10.0.0.1", "CREDITI"), "");
  EXPECT_THAT(banco_.host.operazioni, ElementsAre("Cancella /tmp/VBCREDITI"));
  EXPECT_THAT(banco_.host.file, IsEmpty());
}
