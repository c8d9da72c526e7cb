#include "Banco.hpp"
#include "platform/nexaro/Nexaro.hpp"
#include "platform/nexaro/cartella/DirectoryLink.hpp"
#include "platform/nexaro/ssh/SshLink.hpp"
#include "platform/nexaro/ssh/SshSettings.hpp"

#include <gmock/gmock.h>

namespace lumoscad {
namespace {

using test::ErroreDi;
using testing::HasSubstr;

class TransportSettings : public testing::Test {
 protected:
  void SetUp() override {
    for (const auto* nome :
         {"NEXARO_TRASPORTO", "NEXARO_RADICE", "NEXARO_ATTESA", "NEXARO_SSH_PORTA", "NEXARO_SSH_UTENTE",
          "NEXARO_SSH_CHIAVE", "NEXARO_SSH_NOTI", "NEXARO_PROGRAMMI", "NEXARO_CODIFICA"}) {
      variabili.Togli(nome);
    }
    variabili.Imposta("HOME", "/casa");
  }

  static std::string Rifiuto() {
    return ErroreDi([] { static_cast<void>(nexaro::ReadSshSettings()); }).Description();
  }

  test::VariabiliProvvisorie variabili;
};

TEST_F(TransportSettings, NetworkIsTheTransportUnlessTheDirectoryIsAskedFor) {
  EXPECT_NE(dynamic_cast<nexaro::SshLink*>(nexaro::CreateHostLink().get()), nullptr);
  variabili.Imposta("NEXARO_TRASPORTO", "ssh");
  EXPECT_NE(dynamic_cast<nexaro::SshLink*>(nexaro::CreateHostLink().get()), nullptr);
  variabili.Imposta("NEXARO_TRASPORTO", "cartella");
  variabili.Imposta("NEXARO_RADICE", "/");
  EXPECT_NE(dynamic_cast<nexaro::DirectoryLink*>(nexaro::CreateHostLink().get()), nullptr);
}

TEST_F(TransportSettings, DefaultsAreTheUsersOwn) {
  const auto valori = nexaro::ReadSshSettings();
  EXPECT_EQ(valori.port, 22U);
  EXPECT_NE(valori.user, "");
  EXPECT_EQ(valori.key, "");
  EXPECT_EQ(valori.knownHosts, "/casa/.ssh/known_hosts");
  EXPECT_EQ(valori.directory, "/casa/.ssh");
  EXPECT_EQ(valori.programs, "");
  EXPECT_TRUE(valori.encoding.PlainUtf8());
  EXPECT_EQ(valori.timeout, std::chrono::seconds(60));
}

TEST_F(TransportSettings, EverySettingIsTaken) {
  variabili.Imposta("NEXARO_SSH_PORTA", "2222");
  variabili.Imposta("NEXARO_SSH_UTENTE", "contabile");
  variabili.Imposta("NEXARO_SSH_CHIAVE", "/chiavi/host");
  variabili.Imposta("NEXARO_SSH_NOTI", "/chiavi/noti");
  variabili.Imposta("NEXARO_PROGRAMMI", "/opt/contabile/");
  variabili.Imposta("NEXARO_CODIFICA", "ISO-8859-15");
  variabili.Imposta("NEXARO_ATTESA", "5");
  const auto valori = nexaro::ReadSshSettings();
  EXPECT_EQ(valori.port, 2222U);
  EXPECT_EQ(valori.user, "contabile");
  EXPECT_EQ(valori.key, "/chiavi/host");
  EXPECT_EQ(valori.knownHosts, "/chiavi/noti");
  EXPECT_EQ(valori.programs, "/opt/contabile");
  EXPECT_EQ(valori.encoding.Name(), "ISO-8859-15");
  EXPECT_EQ(valori.timeout, std::chrono::seconds(5));
}

TEST_F(TransportSettings, PortIsANumberOfAPort) {
  for (const auto* porta : {"0", "65536", "-1", "22a", " 22", "ssh"}) {
    variabili.Imposta("NEXARO_SSH_PORTA", porta);
    EXPECT_THAT(Rifiuto(), HasSubstr("NEXARO_SSH_PORTA")) << porta;
  }
}

TEST_F(TransportSettings, PathsAreAbsolute) {
  for (const auto* nome : {"NEXARO_SSH_CHIAVE", "NEXARO_SSH_NOTI", "NEXARO_PROGRAMMI"}) {
    test::VariabiliProvvisorie una;
    una.Imposta(nome, "~/chiave");
    EXPECT_THAT(Rifiuto(), HasSubstr(std::string(nome) + " deve essere un percorso assoluto"));
  }
}

TEST_F(TransportSettings, KnownHostsFileIsTheOneThatIsNamed) {
  // To the library the sign begins something that it replaces.
  for (const auto* nome : {"NEXARO_SSH_NOTI", "HOME"}) {
    test::VariabiliProvvisorie una;
    una.Imposta(nome, "/casa/%h");
    EXPECT_THAT(Rifiuto(), HasSubstr("(NEXARO_SSH_NOTI) non può contenere il carattere «%»: vale «/casa/%h")) << nome;
  }
}

TEST_F(TransportSettings, EncodingIsKnown) {
  variabili.Imposta("NEXARO_CODIFICA", "KLINGON");
  EXPECT_THAT(Rifiuto(), HasSubstr("NEXARO_CODIFICA"));
}

} // namespace
} // namespace lumoscad
