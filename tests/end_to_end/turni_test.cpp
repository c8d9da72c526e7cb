// Programs of one workstation that send requests at the same time, each in a process of its own.

#include "Dimostrazione.hpp"
#include "host/RichiestaScadenze.hpp"
#include "host/Richieste.hpp"
#include "platform/RuntimeError.hpp"
#include "platform/nexaro/Nexaro.hpp"
#include "support/OtherProcess.hpp"
#include "support/TestBench.hpp"

#include <array>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <gmock/gmock.h>
#include <map>
#include <new>
#include <set>
#include <string>
#include <sys/mman.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

namespace lumoscad::test {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

VariazioneCanalizzazione Rata(const std::string& conto) {
  VariazioneCanalizzazione v;
  v.CodiceConto = conto;
  v.NumeroPartita = "2006 15";
  v.NumeroRata = "1";
  v.ScadenzaOriginale = v.VecchiaScadenza = "31/03/2006";
  v.NuovaScadenza = "05/04/2006";
  v.isScadenzaChanged = true;
  return v;
}

VariazioneConsegna Documento() {
  VariazioneConsegna v;
  v.CodiceConto = "C1";
  v.Numero = "1";
  v.Consegna = v.ConsegnaOrigine = "31/03/2006";
  v.NuovaConsegna = "05/04/2006";
  return v;
}

/// The clock of every process, `passo` to a second: a hundred rounds need not last minutes.
DateTime OraAccelerata(std::chrono::milliseconds passo) {
  const auto secondi = std::chrono::steady_clock::now().time_since_epoch() / passo;
  const auto parte = [secondi](long divisore, long modulo) { return static_cast<int>(secondi / divisore % modulo); };
  return {2026, 3, 1 + parte(86400, 28), parte(3600, 24), parte(60, 60), parte(1, 60)};
}

/// Where two processes meet before each round.
class Barriera {
 public:
  void Attendi() {
    const int giro = giro_;
    if (++arrivati_ == 2) {
      arrivati_ = 0;
      ++giro_;
    }
    while (giro_ == giro) {
      std::this_thread::sleep_for(200us);
    }
  }

 private:
  std::atomic<int> arrivati_{0};
  std::atomic<int> giro_{0};
};

/// Memory that forked processes share.
template <typename Tipo> Tipo& Condiviso() {
  void* posto = ::mmap(nullptr, sizeof(Tipo), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (posto == MAP_FAILED) {
    throw std::bad_alloc();
  }
  return *new (posto) Tipo;
}

class Turns : public testing::Test {
 public:
  Turns(const Turns&) = delete;
  Turns& operator=(const Turns&) = delete;
  ~Turns() override {
    ::unsetenv("NEXARO_ATTESA");
    std::error_code ignorato;
    fs::remove_all(base_, ignorato);
  }

 protected:
  Turns() {
    ::setenv("NEXARO_ATTESA", "0.3", 1);
    banco_.environment.CodicePostazione = postazione_;
    banco_.environment.CartellaLocale = (base_ / "locale").string();
    esclusione_ = nexaro::CreateProcessLock();
    ActiveServices().processLock = [this]() -> nexaro::ProcessLock& { return *esclusione_; };
    for (const char* cartella : {"locale", "locale0", "locale1", "tmp", "programmi", "registro"}) {
      fs::create_directories(base_ / cartella);
    }
  }
  /// Another program of this workstation, between the naming of its request and its clean-up.
  [[nodiscard]] std::function<void()> HaIlTurno() const {
    return [this] { static_cast<void>(nexaro::CreateProcessLock().release()->Wait(postazione_, [] {})); };
  }

  /// What becomes of a request: "" or its error's text.
  static std::string Esito(const std::function<std::string()>& invio) {
    try {
      return invio();
    } catch (const RuntimeError& errore) {
      return errore.Text();
    }
  }
  static std::string Invia() {
    return Esito([] { return ScriviRichiestaCanalizzazione("h", "01", {Rata("C1")}, "CREDITI"); });
  }

  /// Becomes one of two programs that send a request in each round, and ends; its words are in `errors`.
  [[noreturn]] void Lavora(int quale, int giri, bool altraCartella, std::chrono::milliseconds passo,
                           Barriera& barriera) {
    ::alarm(100);
    ::setenv("NEXARO_ATTESA", "60", 1);
    ::setenv("NEXARO_TRASPORTO", "cartella", 1);
    ::setenv("NEXARO_RADICE", base_.c_str(), 1);
    nexaro::HostLink& link = *nexaro::CreateHostLink().release();
    esclusione_ = nexaro::CreateProcessLock();
    ActiveServices().hostLink = [&link]() -> nexaro::HostLink& { return link; };
    ActiveServices().localTime = [passo] { return OraAccelerata(passo); };
    banco_.environment.CartellaLocale = (base_ / ("locale" + std::to_string(altraCartella ? quale : 0))).string();
    std::ofstream errori(base_ / ("errori" + std::to_string(quale)));
    for (int giro = 0; giro < giri; ++giro) {
      const std::string conto = "C" + std::to_string(quale) + "." + std::to_string(giro);
      barriera.Attendi();
      const std::string esito =
          Esito([&] { return ScriviRichiestaCanalizzazione("h", "01", {Rata(conto)}, "CREDITI"); });
      if (!esito.empty()) {
        errori << conto << " " << esito << "\n";
      }
    }
    // A name is another's for as long as its process runs.
    barriera.Attendi();
    errori.close();
    ::_exit(0);
  }

  /// Two processes meet `giri` times, and both send. What the host's program saw of every request, and what was said.
  void Incontra(int giri, bool altraCartella, std::chrono::milliseconds passo) {
    ScriviProgramma(base_ / "programmi/VB0001", "printf '%s %s\\n' \"$5\" \"$(cut -d, -f1 \"$NEXARO_RADICE$5\")\" "
                                                ">>\"$NEXARO_RADICE/registro/visti\"\necho '<R/>'");
    auto& barriera = Condiviso<Barriera>();
    std::array<pid_t, 2> figli{};
    for (int quale = 0; quale < 2; ++quale) {
      figli.at(static_cast<std::size_t>(quale)) = ::fork();
      if (figli.at(static_cast<std::size_t>(quale)) == 0) {
        Lavora(quale, giri, altraCartella, passo, barriera);
      }
    }
    for (const pid_t figlio : figli) {
      int stato = -1;
      ASSERT_EQ(::waitpid(figlio, &stato, 0), figlio);
      EXPECT_EQ(stato, 0);
    }
    ::munmap(&barriera, sizeof barriera);
    EXPECT_EQ(FileText(base_ / "errori0") + FileText(base_ / "errori1"), "");
    std::ifstream visti(base_ / "registro/visti");
    for (std::string nome, conto; visti >> nome >> conto;) {
      // The account begins with the process' own letter and number.
      nomi_[nome].insert(conto.substr(0, 2));
      conti_.insert(conto);
    }
    EXPECT_THAT(Contenuto(base_ / "tmp"), IsEmpty());
  }

  void VerificaCheOgnunaSiaPassataUnaVolta(int giri) {
    std::multiset<std::string> attesi;
    for (int giro = 0; giro < giri; ++giro) {
      attesi.insert({"C0." + std::to_string(giro), "C1." + std::to_string(giro)});
    }
    EXPECT_EQ(conti_, attesi) << "a request was lost or carried out twice";
    for (const auto& [nome, processi] : nomi_) {
      EXPECT_EQ(processi.size(), 1U) << nome << " was the name of both";
    }
  }

  const std::string postazione_ = "PROVA" + std::to_string(::getpid());
  const fs::path base_ = fs::temp_directory_path() / ("lumoscad-" + postazione_);
  TestBench banco_;
  std::unique_ptr<nexaro::ProcessLock> esclusione_;
  std::map<std::string, std::set<std::string>> nomi_; ///< the processes that used a name
  std::multiset<std::string> conti_;
};

} // namespace

TEST_F(Turns, TwoProcessesThatMeetAHundredTimesLoseNoRequestAndDoNoneTwice) {
  Incontra(100, true, 20ms);
  VerificaCheOgnunaSiaPassataUnaVolta(100);
}

TEST_F(Turns, TwoProcessesWithOneLocalDirectoryLoseNoRequestEither) {
  Incontra(100, false, 20ms);
  VerificaCheOgnunaSiaPassataUnaVolta(100);
}

TEST_F(Turns, OnTheMachinesOwnSecondsTheyAreLateByASecondAndNotLost) {
  Incontra(2, true, 1000ms);
  VerificaCheOgnunaSiaPassataUnaVolta(2);
}

TEST_F(Turns, TheEndOfTheWaitIsAnErrorOfEveryWriterBeforeAnythingIsSent) {
  const OtherProcess altro(HaIlTurno());
  ASSERT_TRUE(altro.Succeeded());
  const std::string attesa = "Un altro programma (processo " + std::to_string(altro.Number()) + ")";
  const std::vector<std::pair<std::string, std::function<std::string()>>> scrittori{
      {"-2147467259 ", [] { return ScriviRichiestaCanalizzazione("h", "01", {Rata("C1")}, "CREDITI"); }},
      {"-2147467259 ", [] { return ScriviRichiestaBancaPresunti("h", "01", {Documento()}, "PRESUNTI"); }},
      {"-2147467259 ", [] { return ScriviRichiestaConsegna("h", "01", {Documento()}, "PRESUNTI"); }},
      {"", [] {
         return ScriviRichiestaScadenze({{"C1", "1", "31/03/2006", "", "30/04/2006"}});
       }}};
  for (const auto& [numero, scrittore] : scrittori) {
    const std::string esito = Esito(scrittore);
    EXPECT_THAT(esito, StartsWith(numero + attesa));
    EXPECT_THAT(esito, HasSubstr("entro 0,300 secondi. La richiesta non è stata inviata all'host."));
    EXPECT_THAT(banco_.desktop.pointers, Contains(Pointer::Hourglass));
    EXPECT_EQ(banco_.desktop.pointers.back(), Pointer::Standard);
  }
  EXPECT_THAT(banco_.host.operazioni, IsEmpty());
  EXPECT_THAT(Contenuto(base_ / "locale"), IsEmpty());
}

TEST_F(Turns, WhileItWaitsTheHourglassShowsAndEventsRun) {
  const OtherProcess altro(HaIlTurno());
  ASSERT_TRUE(altro.Succeeded());
  EXPECT_NE(Esito([] { return ScriviRichiestaScadenze({{"C1", "1", "31/03/2006", "", "30/04/2006"}}); }), "");
  EXPECT_THAT(banco_.desktop.pointers, ElementsAre(Pointer::Hourglass, Pointer::Standard));
  EXPECT_GE(banco_.desktop.breaths, 5U);
}

TEST_F(Turns, ARequestWithoutARowWaitsForNobodyAndTouchesNoFileOfAnothers) {
  const OtherProcess altro(HaIlTurno());
  ASSERT_TRUE(altro.Succeeded());
  const std::string nome = banco_.environment.CartellaLocale + "/" + postazione_ + "20060305140709";
  std::ofstream(nome) << "C1,1,20060331,20060430\r\n";
  EXPECT_EQ(Esito([] { return ScriviRichiestaScadenze({{"C1", "1", "31/03/2006", "", " "}}); }), "");
  EXPECT_EQ(std::filesystem::file_size(nome), 24U);
  std::filesystem::remove(nome);
  EXPECT_EQ(Esito([] { return ScriviRichiestaScadenze({}); }), "");
  EXPECT_EQ(std::filesystem::file_size(nome), 0U);
  EXPECT_THAT(banco_.host.operazioni, IsEmpty());
}

TEST_F(Turns, WhoWaitedTakesALaterSecondAlsoWhenTheOtherIsDead) {
  ::setenv("NEXARO_ATTESA", "30", 1);
  esclusione_ = nexaro::CreateProcessLock();
  OtherProcess altro(HaIlTurno());
  ASSERT_TRUE(altro.Succeeded());
  int letture = 0;
  ActiveServices().localTime = [&letture] { return DateTime{2006, 3, 5, 14, 7, ++letture > 3 ? 10 : 9}; };
  // The desktop is asked for twice before the turn, and then at every look during the wait.
  int richieste = 0;
  ActiveServices().desktop = [&]() -> Desktop& {
    if (++richieste == 5) {
      altro.Kill();
    }
    return banco_.desktop;
  };
  EXPECT_EQ(Invia(), "");
  EXPECT_GT(richieste, 5) << "it did not wait";
  EXPECT_EQ(banco_.host.operazioni.front(), "Invia /tmp/" + postazione_ + "20060305140710");
}

TEST_F(Turns, ASecondThatALivingProcessHasUsedIsNotTakenWithoutAWaitEither) {
  const OtherProcess altro([this] {
    if (!nexaro::CreateProcessLock().release()->Reserve(postazione_ + "20060305140709")) {
      throw RuntimeError(errors::InternalError, "taken");
    }
  });
  ASSERT_TRUE(altro.Succeeded());
  int letture = 0;
  ActiveServices().localTime = [&letture] { return DateTime{2006, 3, 5, 14, 7, ++letture > 3 ? 10 : 9}; };
  EXPECT_EQ(Invia(), "");
  EXPECT_EQ(banco_.host.operazioni.front(), "Invia /tmp/" + postazione_ + "20060305140710");
}

TEST_F(Turns, RequestsOfOneProcessWithinASecondHaveOneName) {
  EXPECT_EQ(Invia(), "");
  EXPECT_EQ(Invia(), "");
  EXPECT_EQ(banco_.host.operazioni.at(0), "Invia /tmp/" + postazione_ + "20060305140709");
  EXPECT_EQ(banco_.host.operazioni.at(5), banco_.host.operazioni.at(0));
}

TEST_F(Turns, AClockThatStandsStillIsSaidAndNothingIsSent) {
  const OtherProcess altro(
      [this] { static_cast<void>(nexaro::CreateProcessLock().release()->Reserve(postazione_ + "20060305140709")); });
  ASSERT_TRUE(altro.Succeeded());
  EXPECT_THAT(Invia(), testing::AllOf(HasSubstr("l'orologio della macchina non va avanti"),
                                      HasSubstr("La richiesta non è stata inviata all'host.")));
  EXPECT_THAT(banco_.host.operazioni, IsEmpty());
  EXPECT_TRUE(OtherProcess(HaIlTurno()).Succeeded()) << "the turn was kept";
}

TEST_F(Turns, ARequestThatFailsLetsTheNextOneIn) {
  banco_.host.fault = [](const std::string&) { throw RuntimeError(errors::FileAccess, "Guasto."); };
  EXPECT_EQ(Invia(), "75 Guasto.");
  EXPECT_TRUE(OtherProcess(HaIlTurno()).Succeeded());
}

TEST_F(Turns, TheTurnLastsUntilTheCleanUpAndNoLonger) {
  std::vector<std::string> libere;
  banco_.host.fault = [&](const std::string& operazione) {
    if (OtherProcess(HaIlTurno()).Succeeded()) {
      libere.push_back(operazione);
    }
  };
  EXPECT_EQ(Invia(), "");
  EXPECT_THAT(libere, IsEmpty());
  EXPECT_TRUE(OtherProcess(HaIlTurno()).Succeeded());
}

} // namespace lumoscad::test
