#include "Banco.hpp"
#include "platform/nexaro/Nexaro.hpp"
#include "platform/nexaro/cartella/CollegamentoCartella.hpp"
#include "platform/nexaro/ssh/CollegamentoSsh.hpp"
#include "platform/nexaro/ssh/ImpostazioniSsh.hpp"

#include <gmock/gmock.h>

namespace lumoscad {
namespace {

using prove::ErroreDi;
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
    return ErroreDi([] { static_cast<void>(nexaro::LeggiImpostazioniSsh()); }).Descrizione();
  }

  prove::VariabiliProvvisorie variabili;
};

TEST_F(TransportSettings, NetworkIsTheTransportUnlessTheDirectoryIsAskedFor) {
  EXPECT_NE(dynamic_cast<nexaro::CollegamentoSsh*>(nexaro::CreaHostLink().get()), nullptr);
  variabili.Imposta("NEXARO_TRASPORTO", "ssh");
  EXPECT_NE(dynamic_cast<nexaro::CollegamentoSsh*>(nexaro::CreaHostLink().get()), nullptr);
  variabili.Imposta("NEXARO_TRASPORTO", "cartella");
  variabili.Imposta("NEXARO_RADICE", "/");
  EXPECT_NE(dynamic_cast<nexaro::CollegamentoCartella*>(nexaro::CreaHostLink().get()), nullptr);
}

TEST_F(TransportSettings, DefaultsAreTheUsersOwn) {
  const auto valori = nexaro::LeggiImpostazioniSsh();
  EXPECT_EQ(valori.porta, 22U);
  EXPECT_NE(valori.utente, "");
  EXPECT_EQ(valori.chiave, "");
  EXPECT_EQ(valori.noti, "/casa/.ssh/known_hosts");
  EXPECT_EQ(valori.cartella, "/casa/.ssh");
  EXPECT_EQ(valori.programmi, "");
  EXPECT_TRUE(valori.codifica.IsUtf8());
  EXPECT_EQ(valori.attesa, std::chrono::seconds(60));
}

TEST_F(TransportSettings, EverySettingIsTaken) {
  variabili.Imposta("NEXARO_SSH_PORTA", "2222");
  variabili.Imposta("NEXARO_SSH_UTENTE", "contabile");
  variabili.Imposta("NEXARO_SSH_CHIAVE", "/chiavi/host");
  variabili.Imposta("NEXARO_SSH_NOTI", "/chiavi/noti");
  variabili.Imposta("NEXARO_PROGRAMMI", "/opt/contabile/");
  variabili.Imposta("NEXARO_CODIFICA", "ISO-8859-15");
  variabili.Imposta("NEXARO_ATTESA", "5");
  const auto valori = nexaro::LeggiImpostazioniSsh();
  EXPECT_EQ(valori.porta, 2222U);
  EXPECT_EQ(valori.utente, "contabile");
  EXPECT_EQ(valori.chiave, "/chiavi/host");
  EXPECT_EQ(valori.noti, "/chiavi/noti");
  EXPECT_EQ(valori.programmi, "/opt/contabile");
  EXPECT_EQ(valori.codifica.Nome(), "ISO-8859-15");
  EXPECT_EQ(valori.attesa, std::chrono::seconds(5));
}

TEST_F(TransportSettings, PortIsANumberOfAPort) {
  for (const auto* porta : {"0", "65536", "-1", "22a", " 22", "ssh"}) {
    variabili.Imposta("NEXARO_SSH_PORTA", porta);
    EXPECT_THAT(Rifiuto(), HasSubstr("NEXARO_SSH_PORTA")) << porta;
  }
}

TEST_F(TransportSettings, PathsAreAbsolute) {
  for (const auto* nome : {"NEXARO_SSH_CHIAVE", "NEXARO_SSH_NOTI", "NEXARO_PROGRAMMI"}) {
    prove::VariabiliProvvisorie una;
    una.Imposta(nome, "~/chiave");
    EXPECT_THAT(Rifiuto(), HasSubstr(std::string(nome) + " deve essere un percorso assoluto"));
  }
}

TEST_F(TransportSettings, KnownHostsFileIsTheOneThatIsNamed) {
  // To the library the sign begins something that it replaces.
  for (const auto* nome : {"NEXARO_SSH_NOTI", "HOME"}) {
    prove::VariabiliProvvisorie una;
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
