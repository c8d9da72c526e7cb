// The administrator's commands, in the real program.

#include "BancoSsh.hpp"
#include "platform/nexaro/OperationsTrial.hpp"
#include "support/Files.hpp"
#include "support/Paths.hpp"

#include <array>
#include <cstdio>
#include <gmock/gmock.h>
#include <sys/wait.h>

namespace lumoscad {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

struct Esito {
  int stato = -1;
  std::string uscita;
};

class Administration : public test::BancoSsh {
 protected:
  void SetUp() override {
    test::BancoSsh::SetUp();
    variabili.Togli("NEXARO_TRASPORTO");
    for (const auto& [nome, valore] :
         {std::pair<std::string, std::string>("NEXARO_SSH_PORTA", std::to_string(server->Port())),
          {"NEXARO_SSH_UTENTE", server->User()},
          {"NEXARO_SSH_CHIAVE", server->Key()},
          {"NEXARO_SSH_NOTI", base / "noti"},
          {"NEXARO_PROGRAMMI", base / "programmi"},
          {"NEXARO_POSTAZIONE", "PROVA" + fs::path(base.Path().string()).filename().string()},
          {"NEXARO_CARTELLA_LOCALE", base / "locale"},
          {"NEXARO_CODIFICA", ""},
          {"NEXARO_ATTESA", "20"}}) {
      variabili.Imposta(nome, valore);
    }
  }

  [[nodiscard]] static Esito Esegui(const std::string& argomenti, const std::string& ingresso = "") {
    const auto riga =
        "printf '" + ingresso + "' | '" + test::ProgramPath("lumoscad").string() + "' " + argomenti + " 2>&1";
    std::FILE* tubo = ::popen(riga.c_str(), "r");
    Esito esito;
    std::array<char, 256> pezzo{};
    while (const auto letti = std::fread(pezzo.data(), 1, pezzo.size(), tubo)) {
      esito.uscita.append(pezzo.data(), letti);
    }
    const int stato = ::pclose(tubo);
    esito.stato = WIFEXITED(stato) ? WEXITSTATUS(stato) : -1;
    return esito;
  }
  [[nodiscard]] static Esito Registra(const std::string& risposta) {
    return Esegui(std::string("--registra-host ") + Host, risposta);
  }
  [[nodiscard]] static Esito Prova(const std::string& programma = "") {
    return Esegui(std::string("--prova-host ") + Host + " " + programma);
  }
  void Conosci() const { fs::copy_file(server->KnownHosts(), base / "noti"); }
  /// What the tests of this workstation left on the host.
  [[nodiscard]] std::vector<std::string> Resti() const {
    std::vector<std::string> resti;
    for (const auto& voce : fs::directory_iterator("/tmp")) {
      if (voce.path().filename().string().starts_with("PROVA" + fs::path(base.Path().string()).filename().string())) {
        resti.push_back(voce.path());
      }
    }
    return resti;
  }

  test::VariabiliProvvisorie variabili;
};

TEST_F(Administration, KeyIsShownAndRegisteredOnAYes) {
  const auto esito = Registra("sì\\n");
  EXPECT_EQ(esito.stato, 0);
  EXPECT_THAT(esito.uscita, AllOf(HasSubstr("presenta la chiave ssh-ed25519\n  " + server->Hash()),
                                  HasSubstr("(sì/no)"), HasSubstr("La chiave è stata registrata.")));
  EXPECT_EQ(test::FileText(base / "noti"),
            "[127.0.0.1]:" + std::to_string(server->Port()) + " " + server->HostPublicKey() + "\n");
  const auto ancora = Registra("");
  EXPECT_EQ(ancora.stato, 0);
  EXPECT_THAT(ancora.uscita, AllOf(HasSubstr("È già fra gli host noti"), Not(HasSubstr("(sì/no)"))));
}

TEST_F(Administration, NothingButAYesRegistersAKey) {
  for (const auto* risposta : {"no\\n", "", "\\n", "s\\n", "sii\\n", " sì\\n", "yes\\n"}) {
    const auto esito = Registra(risposta);
    EXPECT_EQ(esito.stato, 3) << risposta;
    EXPECT_THAT(esito.uscita, HasSubstr("La chiave non è stata registrata.")) << risposta;
    EXPECT_FALSE(fs::exists(base / "noti")) << risposta;
  }
}

TEST_F(Administration, ChangedKeyIsRefusedWithInstructionsAndNeverOverwritten) {
  Conosci();
  const auto prima = test::FileText(base / "noti");
  server->ChangeHostKey("ed25519");
  const auto esito = Registra("sì\\n");
  EXPECT_EQ(esito.stato, 1);
  EXPECT_THAT(esito.uscita, AllOf(HasSubstr("diversa da quella nota"), HasSubstr("riga 1"),
                                  HasSubstr("cancellare quella riga"), Not(HasSubstr("(sì/no)"))));
  server->ChangeHostKey("ecdsa");
  EXPECT_THAT(Registra("sì\\n").uscita, HasSubstr("di tipo diverso da quella nota"));
  EXPECT_EQ(test::FileText(base / "noti"), prima);
  server->ChangeHostKey("ed25519");
  server->MakeKnown(server->Port());
}

TEST_F(Administration, HostThatDoesNotAnswerCannotBeRegistered) {
  variabili.Imposta("NEXARO_SSH_PORTA", "1");
  const auto esito = Registra("sì\\n");
  EXPECT_EQ(esito.stato, 1);
  EXPECT_THAT(esito.uscita, HasSubstr("connessione rifiutata"));
}

TEST_F(Administration, EveryOperationIsTriedAndSaidToWork) {
  Conosci();
  Programma("touch '" + base / "avviato" + "'");
  const auto esito = Prova();
  EXPECT_EQ(esito.stato, 0) << esito.uscita;
  for (const auto* riga : {"InviaFile        riuscito: ", "RiceviFile       riuscito: ", "RinominaFile     riuscito: ",
                           "CancellaFile     riuscito: ", "EseguiProgramma  riuscito: ", "VB0001» è pronto",
                           "Tutte le operazioni riescono."}) {
    EXPECT_THAT(esito.uscita, HasSubstr(riga));
  }
  EXPECT_FALSE(fs::exists(base / "avviato")) << "looked for, not started";
  EXPECT_THAT(Resti(), IsEmpty());
  EXPECT_THAT(NomiIn("locale"), IsEmpty());
}

TEST_F(Administration, NamedProgramIsRun) {
  Conosci();
  test::ScriviProgramma(base / "programmi/PROVA", "echo \"<ESITO>$#</ESITO>\"; touch '" + base / "avviato" + "'");
  const auto esito = Prova("PROVA");
  EXPECT_EQ(esito.stato, 0) << esito.uscita;
  EXPECT_THAT(esito.uscita, HasSubstr("EseguiProgramma  riuscito: PROVA ha risposto con l'elemento XML «ESITO»"));
  EXPECT_TRUE(fs::exists(base / "avviato"));
}

TEST_F(Administration, ProgramThatIsMissingOrMayNotRunIsSaid) {
  Conosci();
  auto esito = Prova();
  EXPECT_EQ(esito.stato, 1);
  EXPECT_THAT(esito.uscita, AllOf(HasSubstr("CancellaFile     riuscito"), HasSubstr("EseguiProgramma  NON riuscito"),
                                  HasSubstr("Non tutte le operazioni riescono.")));
  test::Scrivi(base / "programmi/VB0001", "");
  EXPECT_THAT(Prova().uscita, HasSubstr("EseguiProgramma  NON riuscito"));
  variabili.Imposta("NEXARO_PROGRAMMI", "");
  EXPECT_THAT(Prova().uscita, HasSubstr("non è fra quelli che la shell dell'utente trova"));
}

TEST_F(Administration, WithoutATrustedKeyNothingWorksAndTheReasonIsShown) {
  const auto esito = Prova();
  EXPECT_EQ(esito.stato, 1);
  EXPECT_THAT(esito.uscita, AllOf(HasSubstr("InviaFile        NON riuscito: L'host 127.0.0.1 ha presentato la chiave"),
                                  HasSubstr("RinominaFile     NON riuscito: non provato"),
                                  HasSubstr("EseguiProgramma  NON riuscito")));
}

TEST_F(Administration, SettingThatIsUnfitIsShown) {
  variabili.Imposta("NEXARO_SSH_PORTA", "molte");
  const auto esito = Prova();
  EXPECT_EQ(esito.stato, 1);
  EXPECT_THAT(esito.uscita, HasSubstr("NEXARO_SSH_PORTA deve essere un numero"));
}

TEST_F(Administration, EveryOperationWorksWithAnEncodingSetToo) {
  Conosci();
  Programma("true");
  variabili.Imposta("NEXARO_CODIFICA", "ISO-8859-15");
  EXPECT_EQ(Prova().stato, 0);
}

TEST_F(Administration, DirectoryThatPlaysTheHostIsTriedToo) {
  variabili.Imposta("NEXARO_TRASPORTO", "cartella");
  variabili.Imposta("NEXARO_RADICE", base.Path().string());
  fs::create_directories(base / "tmp");
  Programma("true");
  const auto esito = Prova();
  EXPECT_EQ(esito.stato, 0) << esito.uscita;
  EXPECT_THAT(NomiIn("tmp"), IsEmpty());
}

/// A host of one directory whose operations can be made to fail.
class HostGuasto final : public nexaro::HostLink {
 public:
  explicit HostGuasto(std::string radice) : radice_(std::move(radice)) {}
  void EseguiProgramma(std::string_view /*host*/, std::string_view /*programma*/,
                       const std::vector<std::string>& /*parametri*/, nexaro::XMLParser& risposta) override {
    risposta.Consegna({});
  }
  void RiceviFile(std::string_view /*host*/, std::string_view remoto, std::string_view locale,
                  std::string& /*testo*/) override {
    if (!fs::exists(Posto(remoto))) {
      throw RuntimeError(errors::FileNotFound, "file inesistente");
    }
    Inciampa("RiceviFile " + fs::path(remoto).extension().string());
    fs::copy_file(Posto(remoto), locale, fs::copy_options::overwrite_existing);
  }
  void InviaFile(std::string_view /*host*/, std::string_view locale, std::string_view remoto) override {
    fs::copy_file(locale, Posto(remoto));
    Inciampa("InviaFile");
  }
  void RinominaFile(std::string_view /*host*/, std::string_view remoto, std::string_view nuovo,
                    std::string& /*testo*/) override {
    fs::rename(Posto(remoto), Posto(nuovo));
    Inciampa("RinominaFile");
  }
  void CancellaFile(std::string_view /*host*/, std::string_view remoto) override { fs::remove(Posto(remoto)); }

  std::string guasto; ///< what does its part and then fails

 private:
  [[nodiscard]] fs::path Posto(std::string_view remoto) const { return radice_ / fs::path(remoto).filename(); }
  void Inciampa(const std::string& operazione) const {
    if (operazione == guasto) {
      throw RuntimeError(errors::Driver, "guasto");
    }
  }
  fs::path radice_;
};

TEST(OperationsTest, LeavesNothingOnTheHostWhateverFails) {
  const test::TemporaryFolder base;
  for (const auto* nome : {"host", "locale"}) {
    fs::create_directory(base / nome);
  }
  HostGuasto host(base / "host");
  for (const auto* guasto : {"InviaFile", "RinominaFile", "RiceviFile .dos"}) {
    host.guasto = guasto;
    std::string cancellazione;
    EXPECT_FALSE(nexaro::TryOperations(
        host, "h", "PROVA", {"T01", base / "locale"}, [&cancellazione](const nexaro::StepOutcome& passo) {
          if (passo.operation == "CancellaFile") {
            cancellazione = (passo.succeeded ? "riuscito: " : "NON riuscito: ") + passo.detail;
          }
        }));
    EXPECT_THAT(cancellazione, testing::StartsWith("riuscito: il file non c'è più, né come «/tmp/T01.prova."))
        << guasto;
    EXPECT_TRUE(fs::is_empty(base / "host")) << guasto;
  }
}

TEST(OperationsTest, LeavesNothingWhenItsOutcomesCannotBeShown) {
  const test::TemporaryFolder base;
  for (const auto* nome : {"host", "locale"}) {
    fs::create_directory(base / nome);
  }
  HostGuasto host(base / "host");
  for (const std::string muta : {"InviaFile", "RiceviFile", "RinominaFile", "CancellaFile"}) {
    EXPECT_THROW(static_cast<void>(nexaro::TryOperations(host, "h", "PROVA", {"T01", base / "locale"},
                                                         [&muta](const nexaro::StepOutcome& passo) {
                                                           if (passo.operation == muta) {
                                                             throw std::runtime_error("no screen");
                                                           }
                                                         })),
                 std::runtime_error);
    EXPECT_TRUE(fs::is_empty(base / "host")) << muta;
    EXPECT_TRUE(fs::is_empty(base / "locale")) << muta;
  }
}

TEST_F(Administration, WrongUseIsAnsweredWithTheUsage) {
  for (const auto* argomenti :
       {"--registra-host", "--registra-host a b", "--prova-host", "--prova-host a b c", "--blocchi", "--blocchi a b",
        "--prova-base-dati", "--libera-blocco", "--libera-blocco a", "--libera-blocco a b c", "--riallinea",
        "--riallinea a", "--riallinea a --si", "--archivia", "--archivia a"}) {
    const auto esito = Esegui(argomenti);
    EXPECT_EQ(esito.stato, 2) << argomenti;
    EXPECT_THAT(esito.uscita, HasSubstr("--prova-host HOST [PROGRAMMA]")) << argomenti;
  }
}

} // namespace
} // namespace lumoscad
