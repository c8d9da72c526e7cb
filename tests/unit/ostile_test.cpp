#include "handlers/Blocco.hpp"
#include "host/RichiestaScadenze.hpp"
#include "host/Richieste.hpp"
#include "lumoscad/LumoScadenze.hpp"
#include "platform/RuntimeError.hpp"
#include "support/TestBench.hpp"

#include <filesystem>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

using namespace lumoscad;
using testing::AllOf;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

namespace {

namespace fs = std::filesystem;

class HostileInput : public testing::Test {
 protected:
  std::string Esegui(const std::string& comando) { return LumoScadenze().EseguiLumoScad(comando); }
  /// Without the notes, which end with the command: most of these tests play a part of one.
  [[nodiscard]] std::vector<std::string> FileLocali() const {
    std::vector<std::string> file;
    for (const auto& voce : fs::directory_iterator(banco_.environment.CartellaLocale)) {
      const std::string nome = voce.path().filename().string();
      if (!nome.starts_with("sospeso-")) {
        file.push_back(nome);
      }
    }
    return file;
  }

  test::TestBench banco_;
};

using Invio = std::function<std::string()>;

VariazioneCanalizzazione Rata() {
  VariazioneCanalizzazione v;
  v.CodiceConto = "C1";
  v.NumeroPartita = "2006 1";
  v.ScadenzaOriginale = v.VecchiaScadenza = v.NuovaScadenza = "31/03/2006";
  v.isScadenzaChanged = true;
  return v;
}

VariazioneConsegna Documento() {
  VariazioneConsegna v;
  v.CodiceConto = "C1";
  v.Numero = "1";
  v.Consegna = v.ConsegnaOrigine = v.NuovaConsegna = "31/03/2006";
  return v;
}

/// The record writers, each with a request that can be sent and with one that cannot be written.
struct Scrittore {
  const char* nome;
  Invio buona;
  Invio cattiva;
};

std::vector<Scrittore> Scrittori() {
  auto rata = Rata();
  rata.CodiceConto = "1\r2";
  auto documento = Documento();
  documento.CodiceConto = "1\n2";
  return {{"CANALIZZAZIONE", [] { return ScriviRichiestaCanalizzazione("h", "1", {Rata()}, "CREDITI"); },
           [rata] { return ScriviRichiestaCanalizzazione("h", "1", {rata}, "CREDITI"); }},
          {"PRESUNTI", [] { return ScriviRichiestaBancaPresunti("h", "1", {Documento()}, "PRESUNTI"); },
           [documento] { return ScriviRichiestaBancaPresunti("h", "1", {documento}, "PRESUNTI"); }},
          {"CONSEGNA", [] { return ScriviRichiestaConsegna("h", "1", {Documento()}, "PRESUNTI"); },
           [documento] { return ScriviRichiestaConsegna("h", "1", {documento}, "PRESUNTI"); }}};
}

std::string Errore(const Invio& invio) {
  try {
    return "nessun errore, risultato " + invio();
  } catch (const RuntimeError& errore) {
    EXPECT_EQ(errore.Number(), errors::TransferError);
    return errore.Description();
  }
}

/// Host addresses that a careless transport would take for an option, a user, a path, a line or nothing at all.
const std::vector<std::string>& IndirizziOstili() {
  static const std::vector<std::string> Indirizzi = {"-oProxyCommand=touch${IFS}/tmp/x",
                                                     "--",
                                                     "",
                                                     "root@10.0.0.1",
                                                     "10.0.0.1;reboot",
                                                     "$(reboot)",
                                                     "a\nb",
                                                     "a\tb",
                                                     "../../etc",
                                                     std::string(10240, 'h')};
  return Indirizzi;
}

} // namespace

TEST_F(HostileInput, TheLocalFileGoesWhenTheRequestSucceeds) {
  for (const Scrittore& scrittore : Scrittori()) {
    std::string durante;
    banco_.host.fault = [&](const std::string& operazione) {
      durante += operazione.starts_with("Invia") ? FileLocali().at(0) : "";
    };
    EXPECT_EQ(scrittore.buona(), "") << scrittore.nome;
    EXPECT_EQ(durante, "T0120060305140709") << scrittore.nome;
    EXPECT_THAT(FileLocali(), IsEmpty()) << scrittore.nome;
  }
}

TEST_F(HostileInput, TheLocalFileGoesWhicheverStepOfTheHostStops) {
  for (const char* passo : {"Invia", "Rinomina", "Esegui", "Cancella"}) {
    banco_.host.fault = [passo](const std::string& operazione) {
      if (operazione.starts_with(passo)) {
        throw RuntimeError(errors::Driver, "Guasto");
      }
    };
    for (const Scrittore& scrittore : Scrittori()) {
      EXPECT_THAT(Errore(scrittore.buona), StartsWith("-2147467259 Guasto")) << passo << " " << scrittore.nome;
      EXPECT_THAT(FileLocali(), IsEmpty()) << passo << " " << scrittore.nome;
    }
  }
}

TEST_F(HostileInput, TheLocalFileGoesWhenTheProgramRefusesOrAnswersWrongly) {
  for (const char* risposta : {"<R><ERRORE>no</ERRORE></R>", "niente di buono", "<!DOCTYPE a><a/>", ""}) {
    banco_.host.reply = risposta;
    for (const Scrittore& scrittore : Scrittori()) {
      EXPECT_THAT(Errore(scrittore.buona), Not(HasSubstr("nessun errore"))) << risposta << " " << scrittore.nome;
      EXPECT_THAT(FileLocali(), IsEmpty()) << risposta << " " << scrittore.nome;
    }
  }
}

TEST_F(HostileInput, ARequestThatCannotBeWrittenLeavesNothingAndIsNotSent) {
  for (const Scrittore& scrittore : Scrittori()) {
    EXPECT_THAT(Errore(scrittore.cattiva), StartsWith("13 ")) << scrittore.nome;
    EXPECT_THAT(FileLocali(), IsEmpty()) << scrittore.nome;
  }
  EXPECT_THAT(banco_.host.operazioni, IsEmpty());
}

TEST_F(HostileInput, TheLocalFileGoesAlsoWhenTheMessageCannotBeShown) {
  banco_.host.reply = "<R><MESSAGGIO>Fatto</MESSAGGIO></R>";
  class SenzaBox final : public Desktop {
   public:
    void ShowBox(std::string_view, std::string_view) override { throw RuntimeError(errors::Driver, "Niente schermo"); }
    void SetPointer(Pointer) override { throw RuntimeError(errors::Driver, "Niente puntatore"); }
    void RunPendingEvents() override {}
    void ShowList(ListWindow&) override {}
    void ShowSingleItem(SingleItemWindow&) override {}
    void ShowWait(std::string_view, int, const std::function<void()>&) override {}
  } desktop;
  Services servizi = lumoscad::ActiveServices();
  servizi.desktop = [&]() -> Desktop& { return desktop; };
  const ReplacedServices sostituiti(servizi);
  for (const Scrittore& scrittore : Scrittori()) {
    EXPECT_THAT(Errore(scrittore.buona), HasSubstr("Niente")) << scrittore.nome;
    EXPECT_THAT(FileLocali(), IsEmpty()) << scrittore.nome;
  }
}

TEST_F(HostileInput, ALinkInTheFilesPlaceStopsTheRequestAndLeavesItsTarget) {
  const fs::path vittima = fs::path(banco_.environment.CartellaLocale) / "vittima";
  const fs::path collegamento = fs::path(banco_.environment.CartellaLocale) / "T0120060305140709";
  fs::create_symlink(vittima, collegamento);
  EXPECT_THAT(Errore(Scrittori().front().buona), HasSubstr("collegamento simbolico"));
  EXPECT_FALSE(fs::exists(vittima));
  EXPECT_THAT(banco_.host.operazioni, IsEmpty());
  EXPECT_FALSE(fs::is_symlink(collegamento)) << "il collegamento è tolto come il file che doveva essere";
}

TEST_F(HostileInput, TheFileOfTheDueDatesStaysPrivate) {
  static_cast<void>(ScriviRichiestaScadenze({{"C1", "1", "31/03/2006", "", "30/04/2006"}}));
  ASSERT_THAT(FileLocali(), ElementsAre("T0120060305140709"));
  const auto permessi = fs::status(fs::path(banco_.environment.CartellaLocale) / FileLocali().front()).permissions();
  EXPECT_EQ(permessi, fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(HostileInput, AStrangeAddressReachesTheTransportAsWrittenAndNothingElse) {
  for (const std::string& indirizzo : IndirizziOstili()) {
    banco_.host.host.clear();
    banco_.host.calls.clear();
    EXPECT_EQ(Esegui("-T PRESUNTO /A -D 01 -S A -A 06 -N 1 -H " + indirizzo), "error"); // no database
    EXPECT_THAT(banco_.host.host, Each(indirizzo));
    ASSERT_THAT(banco_.host.calls, SizeIs(1));
    EXPECT_THAT(banco_.host.calls.front(), Each(Not(HasSubstr(indirizzo.empty() ? "-H" : indirizzo))));
  }
}

TEST_F(HostileInput, AnEnormousOrStrangeLockTakesTheListAndStopsNothing) {
  for (const std::string& blocco : {std::string(5'000'000, 'x'), "Utente : \x01\x02" + std::string(3, '\0') + "\r\n",
                                    std::string(100'000, '\n') + "x", std::string("\xFF\xFE\xFF")}) {
    banco_.desktop.box.clear();
    banco_.host.file["/tmp/VBCREDITI"] = blocco;
    EXPECT_NE(BloccaArea("h", "CREDITI"), "");
    EXPECT_THAT(banco_.desktop.box, SizeIs(1));
  }
}

TEST_F(HostileInput, AValueThatLooksLikeAStatementStaysAValue) {
  const std::string valore = "';DROP--\"`{}";
  banco_.host.reply = "<R><MESSAGGIO></MESSAGGIO></R>";
  EXPECT_EQ(Esegui("-T EXTRA /A -D 01 -H h -S " + valore + " -E 2006 -N 1"), "error"); // no database
  ASSERT_THAT(banco_.host.calls, SizeIs(1));
  EXPECT_EQ(banco_.host.calls.front().at(2), valore);
}

TEST_F(HostileInput, ACommandLineOfAMegabyteIsAnErrorOrNothing) {
  EXPECT_EQ(Esegui(std::string(1'000'000, 'x')), "");
  EXPECT_EQ(Esegui(std::string(1'000'000, ' ')), "");
  EXPECT_EQ(Esegui("-T BANCA /CREDITI -DB2SOURCE " + std::string(1'000'000, 'x')), "error");
  EXPECT_EQ(Esegui("-T TEST -DB2SOURCE c -DB2PASS " + std::string(100'000, 'p')), "error");
  EXPECT_THAT(banco_.desktop.box, SizeIs(2));
  EXPECT_THAT(banco_.desktop.box, Each(AllOf(HasSubstr("1000 byte"), Not(HasSubstr("pppp")))));
}

TEST_F(HostileInput, ANulCharacterInTheLineDoesNotShortenIt) {
  const std::string comando = std::string("-T EXTRA\0 /A -DEMO", 18);
  EXPECT_EQ(Esegui(comando), "") << "il tipo non è EXTRA";
  EXPECT_THAT(banco_.desktop.box, IsEmpty());
  EXPECT_EQ(stato().ComandoCorrente, comando);
}

TEST_F(HostileInput, WhatIsNoErrorOfTheComponentBecomesOne) {
  const auto numero = [](const std::function<void()>& lancia) {
    try {
      lancia();
    } catch (...) {
      return CurrentError().Number();
    }
    return 0;
  };
  EXPECT_EQ(numero([] { throw std::bad_alloc(); }), errors::OutOfMemory);
  EXPECT_EQ(numero([] { throw std::length_error("x"); }), errors::InternalError);
  EXPECT_EQ(numero([] { throw 7; }), errors::InternalError);
  EXPECT_EQ(numero([] { throw RuntimeError(9, "x"); }), 9);
}
