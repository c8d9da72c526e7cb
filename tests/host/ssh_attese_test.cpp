// How long the component waits for a host on the network, and what it takes before it gives up.

#include "BancoSsh.hpp"
#include "Chiamante.hpp"

#include <gmock/gmock.h>

namespace lumoscad {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;
using prove::Chiamante;
using prove::ErroreDi;
using prove::ignoto;
using testing::EndsWith;
using testing::HasSubstr;

class SshAttese : public prove::BancoSsh {
 protected:
  void TearDown() override { server->Cambia({}); }

  /// The error of an operation, or "" where it succeeds.
  template <typename Operazione> static std::string Detto(Operazione operazione) {
    try {
      operazione();
      return "";
    } catch (const ErroreRuntime& errore) {
      return errore.Descrizione();
    }
  }
  /// The text that the program answers, or the error.
  std::string Chiama() {
    std::string valore;
    const auto errore = Detto([&] { valore = Risposta()->valore; });
    return errore.empty() ? valore : errore;
  }
  /// What a caller says that is stopped, for longer than it would wait, while the program works.
  std::string ChiamaFermato(const std::string& corpo) {
    Programma("touch '" + base / "partito" + "'; sleep 1; " + corpo);
    impostazioni.attesa = 2s;
    Collega();
    const Chiamante chiamante([this] { return Chiama().substr(0, 300); });
    for (int giro = 0; giro < 1000 && !fs::exists(base / "partito"); ++giro) {
      std::this_thread::sleep_for(10ms);
    }
    chiamante.Ferma(3s);
    return chiamante.Esito(20s);
  }
};

TEST_F(SshAttese, CompleteAnswerIsTakenThoughAChildHoldsTheOutput) {
  Programma("sleep 15 & echo '<A>fatto</A>'");
  const auto inizio = std::chrono::steady_clock::now();
  EXPECT_EQ(Chiama(), "fatto");
  EXPECT_LT(std::chrono::steady_clock::now() - inizio, 10s);
  const auto prima = server->Processi();
  Programma("echo '<A>ancora</A>'");
  EXPECT_EQ(Chiama(), "ancora") << "over the same connection";
}

TEST_F(SshAttese, AnswerThatAChildCompletesIsWaitedFor) {
  Programma("(sleep 3; echo 'fatto</A>'; exec sleep 15) & printf '<A>'");
  EXPECT_EQ(Chiama(), "fatto");
}

TEST_F(SshAttese, HalfAnAnswerIsNotTakenThoughTheProgramEndedWell) {
  Programma("sleep 15 & echo '<A>'");
  impostazioni.attesa = 2500ms;
  Collega();
  EXPECT_THAT(Chiama(), HasSubstr("non ha risposto entro 2,500 secondi"));
}

TEST_F(SshAttese, FailureIsSaidThoughAChildHoldsTheOutput) {
  Programma("sleep 15 & echo '<A/>'; echo pieno >&2; exit 3");
  const auto inizio = std::chrono::steady_clock::now();
  EXPECT_THAT(Chiama(), HasSubstr("lo stato 3: pieno"));
  EXPECT_LT(std::chrono::steady_clock::now() - inizio, 10s);
}

TEST_F(SshAttese, AnswerThatCameWhileTheCallerWasStoppedIsRead) {
  EXPECT_EQ(ChiamaFermato("echo '<A>fatto</A>'"), "fatto");
}

TEST_F(SshAttese, LongAnswerThatWasHeldUpWhileTheCallerWasStoppedIsReadToItsEnd) {
  // More than the connection holds: the program goes on only when somebody reads.
  EXPECT_THAT(ChiamaFermato("printf '<A>fatto'; head -c 8000000 /dev/zero | tr '\\0' ' '; echo '</A>'"),
              testing::StartsWith("fatto "));
}

TEST_F(SshAttese, ProgramThatOnlyComplainsIsGivenUpAllTheSame) {
  Programma("while :; do echo ancora >&2; sleep 0.02; done");
  impostazioni.attesa = 500ms;
  Collega();
  const auto inizio = std::chrono::steady_clock::now();
  EXPECT_THAT(Chiama(), HasSubstr("non ha risposto entro 0,500 secondi"));
  EXPECT_LT(std::chrono::steady_clock::now() - inizio, 12s);
}

} // namespace
} // namespace lumoscad
