#include "common/Messaggi.hpp"
#include "common/Utilities.hpp"
#include "host/Richieste.hpp"
#include "lumoscad/LumoScadenze.hpp"
#include "platform/RuntimeError.hpp"
#include "support/TestBench.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace lumoscad {
namespace {

/// A desktop whose pointer works and whose boxes do not.
class SenzaBox final : public Desktop {
 public:
  void ShowBox(std::string_view, std::string_view) override {
    throw RuntimeError(errors::Driver, "Nessuno schermo raggiungibile");
  }
  void SetPointer(Pointer) override {}
  void RunPendingEvents() override {}
  void ShowList(ListWindow&) override {}
  void ShowSingleItem(SingleItemWindow&) override {}
  void ShowWait(std::string_view, int, const std::function<void()>& lavoro) override { lavoro(); }
};

TEST(WithoutADesktop, AnErrorGoesToTheStandardErrorAndTheResultIsError) {
  test::TestBench banco;
  ActiveServices().desktop = []() -> Desktop& { throw RuntimeError(errors::Driver, "Nessuno schermo raggiungibile"); };
  testing::internal::CaptureStderr();
  EXPECT_EQ(LumoScadenze().EseguiLumoScad("-T"), "error");
  const std::string scritto = testing::internal::GetCapturedStderr();
  EXPECT_THAT(scritto, testing::HasSubstr("LumoScad: 9 Indice non incluso nell'intervallo"));
  EXPECT_THAT(scritto, testing::HasSubstr("Nessuno schermo raggiungibile"));
}

/// No window can be opened, for the life of the object; what goes to the standard error is kept.
class Senza {
 public:
  Senza() {
    ActiveServices().desktop = []() -> Desktop& {
      throw RuntimeError(errors::Driver, "Nessuno schermo raggiungibile");
    };
    testing::internal::CaptureStderr();
  }
  Senza(const Senza&) = delete;
  Senza& operator=(const Senza&) = delete;
  ~Senza() {
    if (!letto_) {
      testing::internal::GetCapturedStderr();
    }
  }
  [[nodiscard]] std::string Scritto() {
    letto_ = true;
    return testing::internal::GetCapturedStderr();
  }

  test::TestBench banco;

 private:
  bool letto_ = false;
};

constexpr const char* Perche = "LumoScad: Nessuno schermo raggiungibile\n";

TEST(WithoutADesktop, AMessageGoesToTheStandardErrorWithTheReasonAndNothingIsRaised) {
  Senza senza;
  EXPECT_NO_THROW(MostraMessaggio("Messaggio", "Dettaglio"));
  EXPECT_EQ(senza.Scritto(), std::string("LumoScad: Dettaglio Messaggio\n") + Perche);
}

TEST(WithoutADesktop, TheBoxOfAHeldLockGoesToTheStandardErrorAndTheListIsRefused) {
  Senza senza;
  senza.banco.host.file["/tmp/VBCREDITI"] = "Utente : T02\r\nieri\r\n";
  EXPECT_EQ(LumoScadenze().EseguiLumoScad("-T BANCA /CREDITI -H h"), "error");
  EXPECT_EQ(senza.Scritto(), std::string("LumoScad: Area CREDITI in manutenzione presso un altro terminale Utente : "
                                         "T02 ieri\n") +
                                 Perche);
}

TEST(WithoutADesktop, TheTestOfTheDatabaseKeepsTheDriversMessage) {
  Senza senza;
  EXPECT_EQ(LumoScadenze().EseguiLumoScad("-T TEST -DB2SOURCE CHE-NON-ESISTE"), "error");
  const std::string scritto = senza.Scritto();
  EXPECT_THAT(scritto, testing::StartsWith("LumoScad: testScrittura "));
  EXPECT_THAT(scritto, testing::HasSubstr("Data source name not found"));
  EXPECT_THAT(scritto, testing::EndsWith(Perche));
}

TEST(WithoutADesktop, ADemonstrationSucceedsAndItsMessageGoesToTheStandardError) {
  Senza senza;
  EXPECT_EQ(LumoScadenze().EseguiLumoScad("-T SOSPESO /A -DEMO"), "");
  EXPECT_EQ(senza.Scritto(), std::string("LumoScad: La partita è stata sospesa\n") + Perche);
}

TEST(WithoutADesktop, ARefusedDateRaisesNothing) {
  Senza senza;
  std::string controllata;
  EXPECT_NO_THROW(controllata = Utilities::ControllaData("31/13/06"));
  EXPECT_EQ(controllata, " ");
  EXPECT_EQ(senza.Scritto(), std::string("LumoScad: Mese errato: 31/13/06\n") + Perche);
}

TEST(WithoutADesktop, ADateThatCannotBeCheckedIsRefusedAndRaisesNothing) {
  Senza senza;
  ActiveServices().localTime = []() -> DateTime { throw RuntimeError(errors::InternalError, "Senza orologio"); };
  std::string controllata;
  EXPECT_NO_THROW(controllata = Utilities::ControllaData("15/01"));
  EXPECT_EQ(controllata, " ");
}

TEST(WithoutADesktop, TheHostsMessageThatCannotBeShownDoesNotFailTheRequestThatTheHostAccepted) {
  Senza senza;
  senza.banco.host.reply = "<R><MESSAGGIO>fatto</MESSAGGIO></R>";
  ActiveServices().desktop = [&]() -> Desktop& {
    static SenzaBox desktop;
    return desktop;
  };
  VariazioneCanalizzazione variazione;
  variazione.CodiceConto = "C10";
  EXPECT_EQ(ScriviRichiestaCanalizzazione("h", "01", {variazione}, "CREDITI"), "");
  EXPECT_EQ(senza.Scritto(), std::string("LumoScad: fatto\n") + Perche);
}

TEST(WithoutADesktop, WhatOthersHaveWrittenGivesTheTerminalNoOrders) {
  test::TestBench banco;
  ActiveServices().desktop = []() -> Desktop& {
    throw RuntimeError(errors::Driver, "Schermo\x1B[2J\xC2\x9B"
                                       "2J negato");
  };
  testing::internal::CaptureStderr();
  EXPECT_EQ(LumoScadenze().EseguiLumoScad("-T"), "error");
  EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::EndsWith("LumoScad: Schermo [2J 2J negato\n"));
}

TEST(WithoutADesktop, ACommandThatShowsNothingNeedsNone) {
  test::TestBench banco;
  ActiveServices().desktop = []() -> Desktop& { throw RuntimeError(errors::Driver, "Nessuno schermo raggiungibile"); };
  EXPECT_EQ(LumoScadenze().EseguiLumoScad("-T ALTRO /A"), "");
}

} // namespace
} // namespace lumoscad
