#include "common/Stato.hpp"
#include "database/Aggiornamento.hpp"
#include "database/procedureLumoDB2.hpp"
#include "host/Richieste.hpp"
#include "platform/RuntimeError.hpp"
#include "platform/Services.hpp"
#include "support/TestBench.hpp"

#include <algorithm>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

using namespace lumoscad;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

namespace {

VariazioneCanalizzazione CambioScadenza() {
  VariazioneCanalizzazione v;
  v.idPartitaKey = "100";
  v.CodiceConto = "C100";
  v.NumeroPartita = "2006 15";
  v.VecchiaBanca = "B1";
  v.ScadenzaOriginale = "31/03/2006";
  v.NumeroRata = "1";
  v.VecchiaScadenza = "31/03/2006";
  v.NuovaScadenza = "5/4/06";
  v.isScadenzaChanged = true;
  return v;
}

class BankRequest : public testing::Test {
 protected:
  std::string Invia(const VariazioniCanalizzazione& variazioni) {
    return ScriviRichiestaCanalizzazione("10.0.0.1", "12", variazioni, "CREDITI");
  }
  std::string Invia(const VariazioneCanalizzazione& variazione) { return Invia(VariazioniCanalizzazione{variazione}); }
  /// The one line sent for `variazione`.
  std::string Riga(const VariazioneCanalizzazione& variazione) {
    banco_.host.uploads.clear();
    EXPECT_EQ(Invia(variazione), "");
    return banco_.host.uploads.empty() ? "nulla" : banco_.host.uploads.front();
  }
  /// The text that the request fails with; it must carry the number of a transfer error.
  std::string Fallisce(const VariazioneCanalizzazione& variazione) { return FallisceLista({variazione}); }
  std::string FallisceLista(const VariazioniCanalizzazione& variazioni) {
    try {
      static_cast<void>(Invia(variazioni));
    } catch (const RuntimeError& errore) {
      EXPECT_EQ(errore.Number(), -2147220905);
      return errore.Description();
    }
    ADD_FAILURE() << "la richiesta è riuscita";
    return "";
  }
  /// The request fails at the host operation that begins with `operazione`.
  void GuastoA(const std::string& operazione) {
    banco_.host.fault = [operazione](const std::string& chiesta) {
      if (chiesta.rfind(operazione, 0) == 0) {
        throw RuntimeError(errors::FileAccess, "Guasto: " + operazione);
      }
    };
  }
  /// Nothing but the note, of which the command disposes.
  [[nodiscard]] bool NienteInLocale() const {
    const std::filesystem::directory_iterator tutti(banco_.environment.CartellaLocale);
    return std::all_of(begin(tutti), end(tutti),
                       [](const auto& voce) { return voce.path().filename().string().starts_with("sospeso-"); });
  }

  test::TestBench banco_;
};

const std::string Nome = "/tmp/T0120060305140709";

} // namespace

TEST_F(BankRequest, WithoutChangesDoesNotContactTheHost) {
  EXPECT_EQ(Invia(VariazioniCanalizzazione{}), "");
  EXPECT_THAT(banco_.host.operazioni, IsEmpty());
  EXPECT_THAT(banco_.desktop.pointers, IsEmpty());
  EXPECT_TRUE(NienteInLocale());
}

TEST_F(BankRequest, HasItsOperationsInThisOrder) {
  EXPECT_EQ(Invia(CambioScadenza()), "");
  EXPECT_THAT(banco_.host.operazioni, ElementsAre("Invia " + Nome, "Rinomina " + Nome + " " + Nome + ".dos",
                                                  "Esegui VB0001", "Cancella " + Nome, "Cancella " + Nome + ".dos"));
  EXPECT_THAT(banco_.host.host, Each("10.0.0.1"));
  EXPECT_THAT(banco_.host.file, IsEmpty());
  EXPECT_TRUE(NienteInLocale());
}

TEST_F(BankRequest, HandsTheProgramElevenParameters) {
  EXPECT_EQ(Invia(CambioScadenza()), "");
  EXPECT_THAT(banco_.host.calls, ElementsAre(ElementsAre("12", "CANALIZZAZIONE", "CREDITI", "T01", Nome + ".dos", "",
                                                         "", "", "", "", "")));
}

TEST_F(BankRequest, HasTheWorkstationWithoutBlanksInNameAndParameters) {
  banco_.environment.CodicePostazione = "  T 9 ";
  EXPECT_EQ(Invia(CambioScadenza()), "");
  EXPECT_EQ(banco_.host.operazioni.front(), "Invia /tmp/T 920060305140709");
  ASSERT_THAT(banco_.host.calls, SizeIs(1));
  EXPECT_EQ(banco_.host.calls[0][3], "T 9");
}

TEST_F(BankRequest, HasTheNameOfAnotherOfTheSameSecond) {
  EXPECT_EQ(Invia(CambioScadenza()), "");
  EXPECT_EQ(Invia(CambioScadenza()), "");
  EXPECT_EQ(banco_.host.operazioni[0], banco_.host.operazioni[5]);
}

TEST_F(BankRequest, HasLinesOfElevenFields) {
  VariazioneCanalizzazione v = CambioScadenza();
  v.Anno = "2006";
  v.Numero = "77";
  v.Serie = "A";
  v.NuovaBanca = "B2";
  v.isBancaChanged = true;
  EXPECT_EQ(Riga(v), "C100,2006 15,2006,77,A,20060331,20060331,20060405,B1,B2,1\r\n");
}

TEST_F(BankRequest, CarriesTheNewBankOnlyWhereItChanged) {
  VariazioneCanalizzazione v = CambioScadenza();
  v.NuovaBanca = "B2";
  EXPECT_EQ(Riga(v), "C100,2006 15,,,,20060331,20060331,20060405,B1,,1\r\n");
}

TEST_F(BankRequest, PutsAYearOfOneOrTwoDigitsIntoTheTwentyFirstCentury) {
  VariazioneCanalizzazione v = CambioScadenza();
  v.NuovaScadenza = "5/3/99";
  EXPECT_EQ(Riga(v), "C100,2006 15,,,,20060331,20060331,20990305,B1,,1\r\n");
}

TEST_F(BankRequest, WritesADateWithoutAValueAsAnEmptyField) {
  VariazioneCanalizzazione v = CambioScadenza();
  v.ScadenzaOriginale = "#null#";
  v.VecchiaScadenza = "#null#";
  v.NuovaScadenza = "#null#";
  EXPECT_EQ(Riga(v), "C100,2006 15,,,,,,,B1,,1\r\n");
}

TEST_F(BankRequest, WritesAnEmptyOriginalDueDateAsEightZeros) {
  VariazioneCanalizzazione v = CambioScadenza();
  v.ScadenzaOriginale = "";
  EXPECT_EQ(Riga(v), "C100,2006 15,,,,00000000,20060331,20060405,B1,,1\r\n");
}

TEST_F(BankRequest, WritesTheSignOfNoValueIntoTheFieldsOfTheBanks) {
  VariazioneCanalizzazione v = CambioScadenza();
  v.VecchiaBanca = "#null#";
  v.NuovaBanca = "#null#";
  v.isBancaChanged = true;
  EXPECT_EQ(Riga(v), "C100,2006 15,,,,20060331,20060331,20060405,#null#,#null#,1\r\n");
}

TEST_F(BankRequest, GivesEachChangeItsLineInTheGivenOrder) {
  VariazioneCanalizzazione seconda = CambioScadenza();
  seconda.CodiceConto = "C200";
  EXPECT_EQ(Invia({CambioScadenza(), seconda}), "");
  EXPECT_THAT(banco_.host.uploads, ElementsAre("C100,2006 15,,,,20060331,20060331,20060405,B1,,1\r\n"
                                               "C200,2006 15,,,,20060331,20060331,20060405,B1,,1\r\n"));
}

TEST_F(BankRequest, WritesACommaInAFieldAsItIs) {
  VariazioneCanalizzazione v = CambioScadenza();
  v.CodiceConto = "C1,0";
  v.NumeroPartita = ",15,";
  EXPECT_EQ(Riga(v), "C1,0,,15,,,,,20060331,20060331,20060405,B1,,1\r\n");
}

TEST_F(BankRequest, StopsBeforeTheHostAtALineBreakInAField) {
  VariazioneCanalizzazione v = CambioScadenza();
  for (const char* partita : {"15\r16", "15\n16", "15\r\n"}) {
    v.NumeroPartita = partita;
    EXPECT_THAT(Fallisce(v), StartsWith("13 ")) << partita;
  }
  EXPECT_THAT(banco_.host.operazioni, IsEmpty());
  EXPECT_TRUE(NienteInLocale());
}

TEST_F(BankRequest, StopsBeforeTheHostAtADateThatCannotBeSplit) {
  VariazioneCanalizzazione v = CambioScadenza();
  v.NuovaScadenza = " ";
  EXPECT_THAT(Fallisce(v), StartsWith("9 "));
  EXPECT_THAT(banco_.host.operazioni, IsEmpty());
  EXPECT_TRUE(NienteInLocale());
}

TEST_F(BankRequest, TellsOfADateThatCannotBeSplitBeforeALineBreakInTheSameRecord) {
  VariazioneCanalizzazione v = CambioScadenza();
  v.CodiceConto = "C\n100";
  v.NuovaScadenza = "5-4-06";
  EXPECT_EQ(Fallisce(v), "9 Indice non incluso nell'intervallo: data \"5-4-06\"");
  VariazioneCanalizzazione prima = CambioScadenza();
  prima.CodiceConto = "C\r1";
  EXPECT_THAT(FallisceLista({prima, v}), StartsWith("13 Il valore \"C\r1\"")) << "record by record all the same";
  EXPECT_THAT(banco_.host.operazioni, IsEmpty());
  EXPECT_TRUE(NienteInLocale());
}

TEST_F(BankRequest, WritesALongListWithLinesOfAnyLength) {
  VariazioniCanalizzazione variazioni;
  std::string attesi;
  for (std::size_t i = 0; i < 3000; ++i) {
    VariazioneCanalizzazione v = CambioScadenza();
    v.CodiceConto = std::to_string(i);
    v.NumeroPartita = std::string(i % 500 == 0 ? 100000 : i % 300, 'p');
    v.NuovaScadenza = i % 2 == 0 ? "5/4/06" : "30/04/2006";
    attesi += v.CodiceConto + "," + v.NumeroPartita + ",,,,20060331,20060331," +
              (i % 2 == 0 ? "20060405" : "20060430") + ",B1,,1\r\n";
    variazioni.push_back(std::move(v));
  }
  EXPECT_EQ(Invia(variazioni), "");
  std::string scritti;
  for (const std::string& riga : banco_.host.uploads) {
    scritti += riga;
  }
  EXPECT_TRUE(scritti == attesi) << scritti.size() << " bytes in the place of " << attesi.size();
}

TEST_F(BankRequest, ShowsTheHostsMessage) {
  banco_.host.reply = "<R><MESSAGGIO>Variate 1 scadenze</MESSAGGIO></R>";
  EXPECT_EQ(Invia(CambioScadenza()), "");
  EXPECT_THAT(banco_.desktop.box, ElementsAre("Variate 1 scadenze"));
  EXPECT_THAT(banco_.desktop.titles, ElementsAre("LumoScad"));
}

TEST_F(BankRequest, DoesNotShowABlankMessage) {
  banco_.host.reply = "<R><MESSAGGIO>   </MESSAGGIO></R>";
  EXPECT_EQ(Invia(CambioScadenza()), "");
  EXPECT_THAT(banco_.desktop.box, IsEmpty());
}

TEST_F(BankRequest, RaisesTheHostsRefusalWithItsText) {
  banco_.host.reply = "<R><ERRORE>Riga 1: conto inesistente</ERRORE></R>";
  EXPECT_EQ(Fallisce(CambioScadenza()), "Riga 1: conto inesistente");
  EXPECT_THAT(banco_.host.file, IsEmpty()) << "i file sull'host si cancellano anche dopo un rifiuto";
  EXPECT_TRUE(NienteInLocale());
}

TEST_F(BankRequest, ShowsTheMessageOfARefusalAllTheSame) {
  banco_.host.reply = "<R><MESSAGGIO>nota</MESSAGGIO><ERRORE>no</ERRORE></R>";
  EXPECT_EQ(Fallisce(CambioScadenza()), "no");
  EXPECT_THAT(banco_.desktop.box, ElementsAre("nota"));
}

TEST_F(BankRequest, RaisesABlankRefusalAlsoWithoutAText) {
  banco_.host.reply = "<R><ERRORE> </ERRORE></R>";
  EXPECT_EQ(Fallisce(CambioScadenza()), " ");
}

TEST_F(BankRequest, RaisesEachFailedStepWithNumberAndText) {
  for (const char* passo : {"Invia", "Rinomina", "Esegui", "Cancella"}) {
    banco_.host.operazioni.clear();
    GuastoA(passo);
    EXPECT_THAT(Fallisce(CambioScadenza()), StartsWith(std::string("75 Guasto: ") + passo));
    EXPECT_THAT(banco_.host.operazioni.back(), StartsWith(passo)) << "dopo il guasto non si chiede altro all'host";
    EXPECT_TRUE(NienteInLocale()) << passo;
    EXPECT_EQ(banco_.desktop.pointers.back(), Pointer::Standard) << passo;
  }
}

TEST_F(BankRequest, TellsTheSourceOfAFaultWithoutADescription) {
  banco_.host.fault = [](const std::string&) { throw RuntimeError(errors::SearchFailed, "", "CONTO INESISTENTE"); };
  EXPECT_EQ(Fallisce(CambioScadenza()), "-2147220990 CONTO INESISTENTE");
}

TEST_F(BankRequest, TellsAfterAFailedCleanUpThatTheHostHasAccepted) {
  GuastoA("Cancella");
  EXPECT_EQ(Fallisce(CambioScadenza()), "75 Guasto: Cancella");
  EXPECT_EQ(stato().andamento.Frase(),
            "L'host ha già accettato la modifica; la base dati non ne ha registrato nulla. Da allineare: conto C100 "
            "partita 2006 15 rata 1 del 31/03/2006.");
}

TEST_F(BankRequest, DoesNotLoseTheRefusalAfterAFailedCleanUp) {
  GuastoA("Cancella");
  banco_.host.reply = "<R><ERRORE>no</ERRORE></R>";
  EXPECT_EQ(Fallisce(CambioScadenza()), "75 Guasto: Cancella");
  EXPECT_EQ(stato().andamento.Frase(), "L'host ha rifiutato la richiesta: no");
  banco_.host.reply = "<R><ERRORE><![CDATA[\n]]></ERRORE></R>";
  Fallisce(CambioScadenza());
  EXPECT_EQ(stato().andamento.Frase(), "L'host ha rifiutato la richiesta: \n")
      << "le azioni lo prendono per un rifiuto";
}

TEST_F(BankRequest, LeavesTheFilesOnTheHostAfterAnInterruptedCall) {
  GuastoA("Esegui");
  Fallisce(CambioScadenza());
  EXPECT_THAT(banco_.host.file, ElementsAre(testing::Key(Nome + ".dos")));
}

TEST_F(BankRequest, FailsOnAnUnreadableReply) {
  banco_.host.reply = "<R><ERRORE>";
  EXPECT_NE(Fallisce(CambioScadenza()), "");
  EXPECT_TRUE(NienteInLocale());
}

TEST_F(BankRequest, FailsWithoutALocalDirectory) {
  const std::string cartella = banco_.environment.CartellaLocale;
  banco_.environment.CartellaLocale = cartella + "/che-non-esiste";
  EXPECT_THAT(Fallisce(CambioScadenza()), StartsWith("53 "));
  EXPECT_THAT(banco_.host.operazioni, IsEmpty());
  banco_.environment.CartellaLocale = cartella;
}

TEST_F(BankRequest, FailsWithoutAnEnvironment) {
  ActiveServices().environment = []() -> const nexaro::Environment& {
    throw RuntimeError(errors::FileAccess, "Cartella locale non sicura");
  };
  EXPECT_EQ(Fallisce(CambioScadenza()), "75 Cartella locale non sicura");
  EXPECT_THAT(banco_.host.operazioni, IsEmpty());
  EXPECT_EQ(banco_.desktop.pointers.back(), Pointer::Standard);
}

TEST_F(BankRequest, ShowsTheHourglassWhileItWorks) {
  Pointer durante = Pointer::Standard;
  banco_.host.fault = [&](const std::string&) { durante = banco_.desktop.pointers.back(); };
  EXPECT_EQ(Invia(CambioScadenza()), "");
  EXPECT_EQ(durante, Pointer::Hourglass);
  EXPECT_EQ(banco_.desktop.pointers.back(), Pointer::Standard);
  EXPECT_EQ(banco_.desktop.breaths, banco_.desktop.pointers.size());
}

TEST_F(BankRequest, HasAReplyOfItsOwn) {
  banco_.host.reply = "<R><ERRORE>no</ERRORE></R>";
  Fallisce(CambioScadenza());
  const auto prima = stato().risposta;
  ASSERT_NE(prima, nullptr);
  EXPECT_EQ(prima->Errore, "no");
  banco_.host.reply = "<R/>";
  EXPECT_EQ(Invia(CambioScadenza()), "");
  EXPECT_NE(stato().risposta, prima);
  EXPECT_EQ(stato().risposta->Errore, "");
}

TEST(NamesOfTheRows, AreEightAtMostAndTheNumberOfTheOthers) {
  const std::string una = procedureLumoDB2::Righe({CambioScadenza()});
  std::string otto = una;
  for (int altra = 1; altra < 8; ++altra) {
    otto += "; " + una;
  }
  EXPECT_EQ(procedureLumoDB2::Righe(VariazioniCanalizzazione(8, CambioScadenza())), otto);
  EXPECT_EQ(procedureLumoDB2::Righe(VariazioniCanalizzazione(9, CambioScadenza())), otto + "; e altre 1");
}

TEST(KnownChanges, AreToldApartWhereTheirTextsReadTheSameTogether) {
  using procedureLumoDB2::Modifica;
  const auto modifica = [](std::initializer_list<std::string_view> testi) {
    Modifica fatta;
    for (const std::string_view testo : testi) {
      fatta.Aggiungi(testo);
    }
    return fatta;
  };
  EXPECT_EQ(modifica({"12", "3"}), modifica({"12", "3"}));
  EXPECT_FALSE(modifica({"12", "3"}) == modifica({"1", "23"}));
  EXPECT_FALSE(modifica({"123"}) == modifica({"12", "3"}));
  EXPECT_FALSE(modifica({"1:a"}) == modifica({"", "a"}));
  EXPECT_FALSE(modifica({"", "a"}) == modifica({"a"}));
}
