// The two commands with which a host is made known and tried out: the real program against a real server.

#include "Dimostrazione.hpp"
#include "Figlio.hpp"
#include "support/ServerSsh.hpp"

#include <gmock/gmock.h>

namespace lumoscad::prova {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
namespace fs = std::filesystem;

class ProvaHost : public testing::Test {
 protected:
  /// Runs the program with what the person types; its exit status, a line break and its standard output.
  std::string Lancia(const std::vector<std::string>& opzioni, const std::string& digitato = "") {
    Scrivi(demo.Base() / "digitato", digitato);
    std::vector<std::string> argomenti{LUMOSCAD_PROGRAMMA};
    argomenti.insert(argomenti.end(), opzioni.begin(), opzioni.end());
    Figlio programma(argomenti, demo.Ambiente(), demo.Base() / "digitato", demo.Base() / "risultato",
                     demo.Base() / "errori");
    const auto stato = programma.Attendi();
    EXPECT_EQ(Leggi(demo.Base() / "errori"), "");
    return (stato ? std::to_string(*stato) : "fermo") + "\n" + Leggi(demo.Base() / "risultato");
  }

  Dimostrazione demo{Trasporto::Ssh};
  const std::string indirizzo = demo.Indirizzo();
};

TEST_F(ProvaHost, RunsThroughTheFiveOperationsAndLeavesNothing) {
  EXPECT_THAT(Lancia({"--prova-host", indirizzo}),
              AllOf(testing::StartsWith("0\n"), HasSubstr("InviaFile        riuscito: "),
                    HasSubstr("RiceviFile       riuscito: "), HasSubstr("RinominaFile     riuscito: "),
                    HasSubstr("CancellaFile     riuscito: "), HasSubstr("EseguiProgramma  riuscito: "),
                    HasSubstr("Tutte le operazioni riescono.\n")));
  EXPECT_THAT(Contenuto(demo.Tmp()), IsEmpty());
  EXPECT_FALSE(fs::exists(demo.Registro())) << "the back end is not called";
}

TEST_F(ProvaHost, SaysWhichOperationDoesNotWork) {
  fs::remove(demo.VB0001());
  EXPECT_THAT(Lancia({"--prova-host", indirizzo}),
              AllOf(testing::StartsWith("1\n"), HasSubstr("InviaFile        riuscito: "),
                    HasSubstr("EseguiProgramma  NON riuscito: "), HasSubstr("Non tutte le operazioni riescono.\n")));
  EXPECT_THAT(Contenuto(demo.Tmp()), IsEmpty());
}

TEST_F(ProvaHost, AnUnknownHostIsReachedOnlyAfterItsKeyWasTakenInWithAYes) {
  Scrivi(demo.Ssh().Noti(), "");
  const auto rifiutato = AllOf(testing::StartsWith("1\n"), HasSubstr("non è fra gli host noti"),
                               HasSubstr(demo.Ssh().Impronta()), Not(HasSubstr(" riuscito: il")));
  EXPECT_THAT(Lancia({"--prova-host", indirizzo}), rifiutato);
  for (const char* risposta : {"no\n", "", "s\n", "yes\n"}) {
    EXPECT_THAT(Lancia({"--registra-host", indirizzo}, risposta),
                AllOf(testing::StartsWith("3\n"), HasSubstr(demo.Ssh().Impronta())));
    EXPECT_EQ(Leggi(demo.Ssh().Noti()), "");
  }
  EXPECT_THAT(Lancia({"--registra-host", indirizzo}, "sì\n"),
              AllOf(testing::StartsWith("0\n"), HasSubstr(demo.Ssh().Impronta())));
  EXPECT_THAT(Leggi(demo.Ssh().Noti()), HasSubstr(demo.Ssh().ChiavePubblicaHost()));
  EXPECT_THAT(Lancia({"--prova-host", indirizzo}), testing::StartsWith("0\n"));
}

TEST_F(ProvaHost, AChangedKeyIsNotTakenInByRegistering) {
  const auto prima = Leggi(demo.Ssh().Noti());
  demo.Ssh().CambiaChiaveHost();
  EXPECT_THAT(Lancia({"--registra-host", indirizzo}, "sì\n"),
              AllOf(Not(testing::StartsWith("0\n")), HasSubstr("diversa da quella nota")));
  EXPECT_EQ(Leggi(demo.Ssh().Noti()), prima);
}

} // namespace
} // namespace lumoscad::prova
