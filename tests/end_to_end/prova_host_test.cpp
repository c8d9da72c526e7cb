// The two commands with which a host is made known and tried out: the real program against a real server.

#include "Dimostrazione.hpp"
#include "Figlio.hpp"
#include "support/Paths.hpp"
#include "support/SshServer.hpp"

#include <algorithm>
#include <gmock/gmock.h>

namespace lumoscad::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
namespace fs = std::filesystem;

class HostTest : public testing::Test {
 protected:
  /// Runs the program with what the person types; its exit status, a line break and its standard output.
  std::string Lancia(const std::vector<std::string>& opzioni, const std::string& digitato = "") {
    Scrivi(demo.Base() / "digitato", digitato);
    std::vector<std::string> argomenti{test::ProgramPath("lumoscad").string()};
    argomenti.insert(argomenti.end(), opzioni.begin(), opzioni.end());
    Figlio programma(argomenti, demo.Ambiente(), demo.Base() / "digitato", demo.Base() / "risultato",
                     demo.Base() / "errori");
    const auto stato = programma.Attendi();
    EXPECT_EQ(FileText(demo.Base() / "errori"), "");
    return (stato ? std::to_string(*stato) : "fermo") + "\n" + FileText(demo.Base() / "risultato");
  }

  Dimostrazione demo{Trasporto::Ssh};
  const std::string indirizzo = demo.Indirizzo();
};

TEST_F(HostTest, RunsThroughTheFiveOperationsAndLeavesNothing) {
  EXPECT_THAT(Lancia({"--prova-host", indirizzo}),
              AllOf(testing::StartsWith("0\n"), HasSubstr("InviaFile        riuscito: "),
                    HasSubstr("RiceviFile       riuscito: "), HasSubstr("RinominaFile     riuscito: "),
                    HasSubstr("CancellaFile     riuscito: "), HasSubstr("EseguiProgramma  riuscito: "),
                    HasSubstr("Tutte le operazioni riescono.\n")));
  EXPECT_THAT(Contenuto(demo.Tmp()), IsEmpty());
  EXPECT_FALSE(fs::exists(demo.Registro())) << "the back end is not called";
}

TEST_F(HostTest, SaysWhichOperationDoesNotWork) {
  fs::remove(demo.VB0001());
  EXPECT_THAT(Lancia({"--prova-host", indirizzo}),
              AllOf(testing::StartsWith("1\n"), HasSubstr("InviaFile        riuscito: "),
                    HasSubstr("EseguiProgramma  NON riuscito: "), HasSubstr("Non tutte le operazioni riescono.\n")));
  EXPECT_THAT(Contenuto(demo.Tmp()), IsEmpty());
}

/// Whichever way the host is reached.
class HostTestReadHalfway : public testing::TestWithParam<Trasporto> {};

TEST_P(HostTestReadHalfway, AReaderThatLeavesEarlyLeavesNoFileBehind) {
  const Dimostrazione demo(GetParam());
  Scrivi(demo.Base() / "digitato", "");
  for (const char* righe : {"0", "1", "2", "3"}) {
    Figlio programma({"sh", "-c", "\"$1\" --prova-host \"$2\" | head -n \"$3\"; sleep 0.1", "sh",
                      test::ProgramPath("lumoscad").string(), demo.Indirizzo(), righe},
                     demo.Ambiente(), demo.Base() / "digitato", demo.Base() / "risultato", demo.Base() / "errori");
    EXPECT_EQ(programma.Attendi(), 0);
    const auto letto = FileText(demo.Base() / "risultato");
    EXPECT_EQ(std::to_string(std::count(letto.begin(), letto.end(), '\n')), righe);
    EXPECT_THAT(Contenuto(demo.Tmp()), IsEmpty()) << righe;
    EXPECT_THAT(Contenuto(demo.Locale()), IsEmpty()) << righe;
    EXPECT_EQ(FileText(demo.Base() / "errori"), "");
  }
}

INSTANTIATE_TEST_SUITE_P(Transports, HostTestReadHalfway, testing::Values(Trasporto::Cartella, Trasporto::Ssh),
                         [](const auto& caso) { return NomeTrasporto(caso.param); });

TEST_F(HostTest, AnUnknownHostIsReachedOnlyAfterItsKeyWasTakenInWithAYes) {
  Scrivi(demo.Ssh().KnownHosts(), "");
  const auto rifiutato = AllOf(testing::StartsWith("1\n"), HasSubstr("non è fra gli host noti"),
                               HasSubstr(demo.Ssh().Hash()), Not(HasSubstr(" riuscito: il")));
  EXPECT_THAT(Lancia({"--prova-host", indirizzo}), rifiutato);
  for (const char* risposta : {"no\n", "", "s\n", "yes\n"}) {
    EXPECT_THAT(Lancia({"--registra-host", indirizzo}, risposta),
                AllOf(testing::StartsWith("3\n"), HasSubstr(demo.Ssh().Hash())));
    EXPECT_EQ(FileText(demo.Ssh().KnownHosts()), "");
  }
  EXPECT_THAT(Lancia({"--registra-host", indirizzo}, "sì\n"),
              AllOf(testing::StartsWith("0\n"), HasSubstr(demo.Ssh().Hash())));
  EXPECT_THAT(FileText(demo.Ssh().KnownHosts()), HasSubstr(demo.Ssh().HostPublicKey()));
  EXPECT_THAT(Lancia({"--prova-host", indirizzo}), testing::StartsWith("0\n"));
}

TEST_F(HostTest, AChangedKeyIsNotTakenInByRegistering) {
  const auto prima = FileText(demo.Ssh().KnownHosts());
  demo.Ssh().ChangeHostKey();
  EXPECT_THAT(Lancia({"--registra-host", indirizzo}, "sì\n"),
              AllOf(Not(testing::StartsWith("0\n")), HasSubstr("diversa da quella nota")));
  EXPECT_EQ(FileText(demo.Ssh().KnownHosts()), prima);
}

} // namespace
} // namespace lumoscad::test
