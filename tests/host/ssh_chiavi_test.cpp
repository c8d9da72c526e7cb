// Whom the link trusts, and whom it lets in.

#include "BancoSsh.hpp"
#include "Chiamante.hpp"
#include "ChiamateRifiutate.hpp"
#include "platform/nexaro/LinkErrors.hpp"
#include "platform/nexaro/ssh/HostKey.hpp"

#include <array>
#include <csignal>
#include <cstdio>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

namespace lumoscad {
namespace {

namespace fs = std::filesystem;
using nexaro::KeyState;
using test::ErroreDi;
using testing::AllOf;
using testing::HasSubstr;

/// Runs a program of the system to its end and returns its output.
std::string Esegui(const std::string& riga) {
  std::FILE* tubo = ::popen((riga + " 2>&1 </dev/null").c_str(), "r");
  std::string uscita;
  std::array<char, 256> pezzo{};
  while (const auto letti = std::fread(pezzo.data(), 1, pezzo.size(), tubo)) {
    uscita.append(pezzo.data(), letti);
  }
  EXPECT_EQ(::pclose(tubo), 0) << riga << ": " << uscita;
  return uscita;
}

class SshHostKeys : public test::BancoSsh {
 protected:
  void SetUp() override {
    test::BancoSsh::SetUp();
    noti = base / "noti";
    fs::copy_file(server->KnownHosts(), noti);
    impostazioni.knownHosts = noti;
    Collega();
  }

  /// What an operation says with the present settings.
  std::string Prova() {
    Collega();
    try {
      collegamento->CancellaFile(Host, base / "host/manca");
    } catch (const RuntimeError& errore) {
      return errore.Description();
    }
    return "riuscito";
  }
  [[nodiscard]] static std::string Posto() { return "[" + std::string(Host) + "]:" + std::to_string(server->Port()); }
  [[nodiscard]] KeyState Stato() const { return nexaro::AskHostKey(impostazioni, Host).state; }
  /// The public half of a new key of a type.
  [[nodiscard]] std::string NuovaChiave(const std::string& nome, const std::string& tipo,
                                        const std::string& parola = "") const {
    Esegui("ssh-keygen -q -t " + tipo + " -N '" + parola + "' -C prova -f '" + base / nome + "'");
    return test::FileText(base / (nome + ".pub"));
  }

  std::string noti;
};

TEST_F(SshHostKeys, KnownKeyIsAccepted) {
  EXPECT_EQ(Prova(), "riuscito");
}

TEST_F(SshHostKeys, UnknownKeyIsRefusedWithItsFingerprintAndTheRemedy) {
  for (const auto* contenuto : {"", "# niente\n\n", "altro.host ssh-ed25519 AAAA\n", "spazzatura\n"}) {
    test::Scrivi(noti, contenuto);
    EXPECT_THAT(Prova(), AllOf(HasSubstr("ha presentato la chiave ssh-ed25519 " + server->Hash()),
                               HasSubstr("non è fra gli host noti"), HasSubstr("«lumoscad --registra-host 127.0.0.1»")))
        << contenuto;
  }
  fs::remove(noti);
  EXPECT_THAT(Prova(), HasSubstr("non è fra gli host noti (" + noti + ")"));
}

TEST_F(SshHostKeys, PipeInTheFilesPlaceHoldsNobodyUp) {
  fs::remove(noti);
  ASSERT_EQ(::mkfifo(noti.c_str(), 0600), 0);
  EXPECT_THAT(Prova(), AllOf(HasSubstr(server->Hash()), HasSubstr("non può essere letto"),
                             HasSubstr("non è un file ordinario")));
}

TEST_F(SshHostKeys, KeyOfAnotherPortOrHostIsNotThisHostsKey) {
  test::Scrivi(noti, std::string(Host) + " " + server->HostPublicKey() +
                         "\n[127.0.0.2]:" + std::to_string(server->Port()) + " " + server->HostPublicKey() + "\n");
  EXPECT_EQ(Stato(), KeyState::Unknown);
}

TEST_F(SshHostKeys, ChangedKeyIsRefusedAndItsLineNamed) {
  test::Scrivi(noti, "# uno\n" + Posto() + " " + NuovaChiave("altra", "ed25519"));
  EXPECT_THAT(Prova(), AllOf(HasSubstr("diversa da quella nota (" + noti + ", riga 2)"), HasSubstr(server->Hash()),
                             HasSubstr("un'altra macchina")));
}

TEST_F(SshHostKeys, KeyOfAnotherTypeIsRefusedAndSaidToBe) {
  test::Scrivi(noti, Posto() + " " + NuovaChiave("altra", "ecdsa"));
  EXPECT_THAT(Prova(), AllOf(HasSubstr("di tipo diverso da quella nota"), HasSubstr("riga 1")));
}

TEST_F(SshHostKeys, OneOfSeveralKnownKeysIsEnough) {
  test::Scrivi(noti, Posto() + " " + NuovaChiave("altra", "ecdsa") + Posto() + " " + NuovaChiave("vecchia", "ed25519") +
                         "altro,*.altrove," + Posto() + " " + server->HostPublicKey() + " commento\r\n");
  EXPECT_EQ(Prova(), "riuscito");
}

TEST_F(SshHostKeys, HashedNamesAreKnown) {
  Esegui("ssh-keygen -q -H -f '" + noti + "'");
  ASSERT_EQ(test::FileText(noti).find(Host), std::string::npos);
  EXPECT_EQ(Prova(), "riuscito");
}

TEST_F(SshHostKeys, RevokedKeyIsRefusedWhateverElseTheFileSays) {
  const auto revoca = "@revoked * " + server->HostPublicKey() + "\n";
  test::Scrivi(noti, test::FileText(server->KnownHosts()) + revoca);
  EXPECT_THAT(Prova(), HasSubstr("che è revocata"));
  test::Scrivi(noti, revoca + test::FileText(server->KnownHosts()));
  EXPECT_EQ(Stato(), KeyState::Revoked);
}

TEST_F(SshHostKeys, AuthoritiesAndExceptionsAcceptNoKey) {
  test::Scrivi(noti, "@cert-authority * " + server->HostPublicKey() + "\n!" + Posto() + ",* " +
                         server->HostPublicKey() + "\n");
  EXPECT_EQ(Stato(), KeyState::Unknown);
}

TEST_F(SshHostKeys, UnreadableFileIsSaidAndTrustsNobody) {
  impostazioni.knownHosts = base.Path().string();
  EXPECT_THAT(Prova(), AllOf(HasSubstr("il file degli host noti non può essere letto"), HasSubstr("è una cartella")));
  impostazioni.knownHosts = noti + "/sotto";
  EXPECT_THAT(Prova(), HasSubstr("un elemento del percorso non è una cartella"));
}

TEST_F(SshHostKeys, FilesOfTheSshProgramAreLeftAlone) {
  test::VariabiliProvvisorie variabili;
  fs::create_directories(base / "casa/.ssh");
  test::Scrivi(base / "casa/.ssh/config", "Host *\n  StrictHostKeyChecking no\n  Port 1\n  User nessuno\n");
  fs::copy_file(server->KnownHosts(), base / "casa/.ssh/known_hosts");
  variabili.Imposta("HOME", base / "casa");
  EXPECT_EQ(Prova(), "riuscito");
  test::Scrivi(noti, "");
  EXPECT_THAT(Prova(), HasSubstr("non è fra gli host noti"));
}

TEST_F(SshHostKeys, EveryTypeOfHostKeyIsAccepted) {
  for (const auto* tipo : {"ecdsa", "rsa", "ed25519"}) {
    server->ChangeHostKey(tipo);
    test::Scrivi(noti, Posto() + " " + server->HostPublicKey() + "\n");
    EXPECT_EQ(Prova(), "riuscito") << tipo;
    test::Scrivi(noti, "");
    EXPECT_THAT(Prova(), HasSubstr(server->Hash())) << tipo;
  }
  server->MakeKnown(server->Port());
}

TEST_F(SshHostKeys, HostWithSeveralKeysIsAskedForTheKnownOne) {
  const auto seconda = NuovaChiave("host-rsa", "rsa");
  server->Change({"ed25519", {}, "internal-sftp", {"HostKey " + base / "host-rsa"}});
  test::Scrivi(noti, Posto() + " " + seconda);
  EXPECT_EQ(Prova(), "riuscito");
  test::Scrivi(noti, Posto() + " " + server->HostPublicKey() + "\n");
  EXPECT_EQ(Prova(), "riuscito");
  server->Change({});
}

TEST_F(SshHostKeys, RegisteredKeyIsKnown) {
  noti = base / "nuova/noti";
  impostazioni.knownHosts = noti;
  const auto chiave = nexaro::AskHostKey(impostazioni, Host);
  EXPECT_EQ(chiave.state, KeyState::Unknown);
  nexaro::AddLine(chiave.line, noti);
  EXPECT_EQ(test::FileText(noti), Posto() + " " + server->HostPublicKey() + "\n");
  EXPECT_EQ(Prova(), "riuscito");
  struct stat stato {};
  ASSERT_EQ(::stat(noti.c_str(), &stato), 0);
  EXPECT_EQ(stato.st_mode & 0777U, 0600U);
  ASSERT_EQ(::stat((base / "nuova").c_str(), &stato), 0);
  EXPECT_EQ(stato.st_mode & 0777U, 0700U);
}

TEST_F(SshHostKeys, RegisteringKeepsWhatTheFileHolds) {
  test::Scrivi(noti, "altro ssh-ed25519 AAAA");
  nexaro::AddLine("nuovo ssh-ed25519 BBBB", noti);
  EXPECT_EQ(test::FileText(noti), "altro ssh-ed25519 AAAA\nnuovo ssh-ed25519 BBBB\n");
  EXPECT_THAT(ErroreDi([&] { nexaro::AddLine("x", base / "manca/sotto/noti"); }).Description(),
              HasSubstr("file inesistente"));
}

class SshLogin : public SshHostKeys {
 protected:
  void SetUp() override {
    SshHostKeys::SetUp();
    variabili.Togli("SSH_AUTH_SOCK");
    impostazioni.directory = base / "ssh";
    fs::create_directory(base / "ssh");
  }
  test::VariabiliProvvisorie variabili;
};

TEST_F(SshLogin, KeyThatTheHostDoesNotAcceptIsNamed) {
  impostazioni.key = server->ForeignKey();
  Collega();
  const auto errore = ErroreDi([this] { collegamento->CancellaFile(Host, "/tmp/x"); });
  EXPECT_EQ(errore.Number(), nexaro::PermissionError);
  EXPECT_THAT(errore.Description(),
              AllOf(HasSubstr("nessuna chiave dell'utente «" + server->User() + "» è stata accettata"),
                    HasSubstr(impostazioni.key + ": non accettata"), HasSubstr("amministratore dell'host")));
}

TEST_F(SshLogin, RefusedKeyIsSaidAlikeWhereTheHostSoonHasEnoughOfAttempts) {
  impostazioni.key = server->ForeignKey();
  const auto usual = Prova();
  server->Change({"ed25519", {}, "internal-sftp", {"MaxAuthTries 2"}});
  EXPECT_EQ(Prova(), usual);
  server->Change({});
}

TEST_F(SshLogin, OnlyTheNamedKeyIsPresented) {
  fs::copy_file(server->Key(), base / "ssh/id_ed25519");
  impostazioni.key = server->ForeignKey();
  EXPECT_THAT(Prova(), testing::Not(HasSubstr("id_ed25519")));
  impostazioni.key.clear();
  EXPECT_EQ(Prova(), "riuscito");
}

TEST_F(SshLogin, KeyFileThatCannotBeUsedIsSaid) {
  impostazioni.key = base / "manca";
  EXPECT_THAT(Prova(), HasSubstr("manca: file inesistente"));
  ASSERT_EQ(::mkfifo((base / "tubo").c_str(), 0600), 0);
  impostazioni.key = base / "tubo";
  EXPECT_THAT(Prova(), HasSubstr("tubo: non è un file ordinario"));
  impostazioni.key = base / "host";
  EXPECT_THAT(Prova(), HasSubstr("host: è una cartella"));
  test::Scrivi(base / "spazzatura", "non è una chiave");
  impostazioni.key = base / "spazzatura";
  EXPECT_THAT(Prova(), HasSubstr("non è una chiave privata leggibile"));
}

TEST_F(SshLogin, ProtectedKeyIsSaidAndNeverAskedFor) {
  static_cast<void>(NuovaChiave("protetta", "ed25519", "segreto"));
  Esegui("ssh-keygen -q -t rsa -m PEM -N segreto -C prova -f '" + base / "protetta-pem" + "'");
  for (const auto* nome : {"protetta", "protetta-pem"}) {
    impostazioni.key = base / nome;
    EXPECT_THAT(Prova(), HasSubstr("è protetta da una parola d'ordine, che non viene mai chiesta")) << nome;
  }
}

TEST_F(SshLogin, EveryUsualKeyIsTriedAndListed) {
  impostazioni.key.clear();
  EXPECT_THAT(Prova(), HasSubstr("agente delle chiavi: non attivo"));
  static_cast<void>(NuovaChiave("ssh/id_ed25519", "ed25519"));
  static_cast<void>(NuovaChiave("ssh/id_ecdsa", "ecdsa", "segreto"));
  EXPECT_THAT(Prova(), AllOf(HasSubstr("id_ed25519: non accettata"), HasSubstr("id_ecdsa: è protetta")));
  fs::copy_file(server->Key(), base / "ssh/id_rsa");
  EXPECT_EQ(Prova(), "riuscito");
}

/// An agent without keys; it ends with the object and takes its socket with it.
class Agente {
 public:
  explicit Agente(const std::string& presa) : presa_(presa) {
    const auto uscita = Esegui("ssh-agent -s -a '" + presa + "'");
    const auto segno = uscita.find("SSH_AGENT_PID=");
    EXPECT_NE(segno, std::string::npos) << uscita;
    processo_ = segno == std::string::npos ? -1 : std::stoi(uscita.substr(segno + 14));
    variabili_.Imposta("SSH_AUTH_SOCK", presa);
  }
  Agente(const Agente&) = delete;
  Agente& operator=(const Agente&) = delete;
  ~Agente() {
    if (processo_ > 0) {
      EXPECT_EQ(::kill(processo_, SIGTERM), 0);
      for (int giro = 0; giro < 1000 && fs::exists(presa_); ++giro) {
        ::usleep(10000);
      }
      EXPECT_FALSE(fs::exists(presa_));
    }
  }
  static void Aggiungi(const std::string& chiave) { Esegui("ssh-add -q '" + chiave + "'"); }

 private:
  std::string presa_;
  pid_t processo_ = -1;
  test::VariabiliProvvisorie variabili_;
};

TEST_F(SshLogin, AgentsKeysComeFirst) {
  impostazioni.key.clear();
  const Agente agente(base / "agente");
  EXPECT_THAT(Prova(), HasSubstr("agente delle chiavi: nessuna chiave accettata"));
  Agente::Aggiungi(server->Key());
  EXPECT_EQ(Prova(), "riuscito");
}

TEST_F(SshLogin, AgentThatIsGoneIsNoObstacle) {
  impostazioni.key.clear();
  variabili.Imposta("SSH_AUTH_SOCK", base / "manca");
  fs::copy_file(server->Key(), base / "ssh/id_ed25519");
  EXPECT_EQ(Prova(), "riuscito");
}

TEST_F(SshLogin, KeyFilesAreTriedWhereTheSystemHasNoThreadForTheAgent) {
  impostazioni.key.clear();
  const Agente agente(base / "agente");
  Agente::Aggiungi(server->Key());
  const auto senzaFili = [this] {
    const test::Chiamante chiamante([this] {
      test::Rifiuta(SYS_clone3, SYS_clone, EAGAIN);
      return Prova();
    });
    return chiamante.Esito(std::chrono::seconds(20));
  };
  EXPECT_THAT(senzaFili(), HasSubstr("agente delle chiavi: non raggiungibile (risorse del sistema esaurite)"));
  fs::copy_file(server->Key(), base / "ssh/id_ed25519");
  EXPECT_EQ(senzaFili(), "riuscito");
}

/// A type of user's keys.
struct TipoChiave {
  const char* nome;         ///< as the server's log names it
  const char* generazione;  ///< as ssh-keygen is told it
  const char* fileConsueto; ///< where the user has such a key
};

class SshLoginByKeyType : public SshLogin, public testing::WithParamInterface<TipoChiave> {
 protected:
  void SetUp() override {
    SshLogin::SetUp();
    pubblica = NuovaChiave("utente", GetParam().generazione);
    chiave = base / "utente";
    ammesse_ = test::FileText(server->Authorized());
  }
  void TearDown() override { test::Scrivi(server->Authorized(), ammesse_); }

  /// The host admits the new key, and no other.
  void Ammetti() const { test::Scrivi(server->Authorized(), pubblica); }
  /// The login succeeds, and the server has taken down that it was with the new key.
  void VerificaAccesso() {
    const auto prima = test::FileText(server->Log()).size();
    EXPECT_EQ(Prova(), "riuscito");
    const auto riga = Esegui("ssh-keygen -l -E sha256 -f '" + chiave + ".pub'");
    const auto impronta =
        riga.substr(riga.find("SHA256:"), riga.find(' ', riga.find("SHA256:")) - riga.find("SHA256:"));
    EXPECT_THAT(test::FileText(server->Log()).substr(prima),
                AllOf(HasSubstr("Accepted publickey for " + server->User()),
                      HasSubstr("ssh2: " + std::string(GetParam().nome) + " " + impronta)));
  }

  std::string chiave;
  std::string pubblica;

 private:
  std::string ammesse_;
};

TEST_P(SshLoginByKeyType, LogsInWithTheNamedKey) {
  impostazioni.key = chiave;
  EXPECT_THAT(Prova(), HasSubstr(chiave + ": non accettata"));
  Ammetti();
  VerificaAccesso();
}

TEST_P(SshLoginByKeyType, LogsInWithTheUsersUsualKey) {
  impostazioni.key.clear();
  fs::copy_file(chiave, base / (std::string("ssh/") + GetParam().fileConsueto));
  EXPECT_THAT(Prova(), HasSubstr(std::string(GetParam().fileConsueto) + ": non accettata"));
  Ammetti();
  VerificaAccesso();
}

TEST_P(SshLoginByKeyType, LogsInWithTheAgentsKey) {
  impostazioni.key.clear();
  const Agente agente(base / "agente");
  Agente::Aggiungi(chiave);
  EXPECT_THAT(Prova(), HasSubstr("agente delle chiavi: nessuna chiave accettata"));
  Ammetti();
  VerificaAccesso();
}

INSTANTIATE_TEST_SUITE_P(Keys, SshLoginByKeyType,
                         testing::Values(TipoChiave{"ED25519", "ed25519", "id_ed25519"},
                                         TipoChiave{"RSA", "rsa -b 3072", "id_rsa"},
                                         TipoChiave{"ECDSA", "ecdsa -b 256", "id_ecdsa"}),
                         [](const auto& tipo) { return std::string(tipo.param.nome); });

TEST_F(SshLogin, HostThatTakesNoKeysIsSaid) {
  server->Change(
      {"ed25519", {}, "internal-sftp", {"Match all", "PubkeyAuthentication no", "PasswordAuthentication yes"}});
  EXPECT_THAT(Prova(), HasSubstr("non ammette l'accesso con una chiave"));
  server->Change({});
}

TEST_F(SshLogin, HostThatAsksForMoreThanAKeyIsSaid) {
  server->Change({"ed25519", {}, "internal-sftp", {"AuthenticationMethods publickey,publickey"}});
  EXPECT_THAT(Prova(), HasSubstr("l'host chiede altro oltre alla chiave"));
  server->Change({});
}

} // namespace
} // namespace lumoscad
