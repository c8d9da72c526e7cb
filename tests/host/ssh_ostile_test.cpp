// What the component takes of a host that sends more than it should.

#include "BancoSsh.hpp"
#include "platform/nexaro/ErroriLink.hpp"

#include <gmock/gmock.h>
#include <unistd.h>

namespace lumoscad {
namespace {

namespace fs = std::filesystem;
using prove::ErroreDi;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr std::uintmax_t Massimo = std::uintmax_t{16} * 1024 * 1024;

class SshOstile : public prove::BancoSsh {
 protected:
  void TearDown() override { server->Cambia({}); }

  /// The host's file service is from now on one that does its harm in this way.
  void Servizio(const std::string& modo) {
    server->Cambia({"ed25519", {}, std::string(LUMOSCAD_SFTP_OSTILE) + " " + modo, {}});
  }
  /// The error of a file that is received; nothing may be left of it.
  ErroreRuntime Ricezione(const std::string& remoto) {
    auto errore = ErroreDi([&] { collegamento->RiceviFile(Host, remoto, base / "locale/VBX", testo); });
    EXPECT_THAT(NomiIn("locale"), IsEmpty());
    return errore;
  }
};

TEST_F(SshOstile, LargestFileIsReceivedAndALargerOneRefused) {
  prove::Scrivi(base / "host/VBX", "x");
  fs::resize_file(base / "host/VBX", Massimo);
  collegamento->RiceviFile(Host, base / "host/VBX", base / "locale/VBX", testo);
  EXPECT_EQ(fs::file_size(base / "locale/VBX"), Massimo);
  fs::remove(base / "locale/VBX");
  fs::resize_file(base / "host/VBX", Massimo + 1);
  const auto errore = Ricezione(base / "host/VBX");
  EXPECT_EQ(errore.Numero(), nexaro::ErroreCollegamento);
  EXPECT_EQ(errore.Descrizione(), "Ricezione del file «" + base / "host/VBX" + "» sull'host 127.0.0.1 in «" +
                                      base / "locale/VBX" + "»: il file supera i 16 MiB ammessi.");
}

TEST_F(SshOstile, FileWhoseAnnouncedSizeIsTooLargeIsNotEvenOpened) {
  Servizio("annuncio");
  EXPECT_THAT(Ricezione("/tmp/VBX").Descrizione(), HasSubstr("il file supera i 16 MiB ammessi"));
}

TEST_F(SshOstile, FileThatIsLongerThanItWasSaidToBeIsGivenUpAndTheConnectionGoesOn) {
  Servizio("fiume");
  EXPECT_THAT(Ricezione("/tmp/VBX").Descrizione(), HasSubstr("il file supera i 16 MiB ammessi"));
  const auto prima = server->Processi();
  collegamento->CancellaFile(Host, "/tmp/VBX");
  EXPECT_EQ(server->Processi(), prima);
}

TEST_F(SshOstile, AnswerOfImpossibleLengthIsNotWaitedFor) {
  Servizio("pacchetto");
  EXPECT_THAT(Ricezione("/tmp/VBX").Descrizione(),
              HasSubstr("il servizio SFTP dell'host ha dato una risposta inattesa"));
}

TEST_F(SshOstile, HandleOfImpossibleLengthIsNotSentBack) {
  Servizio("maniglia");
  EXPECT_THAT(Ricezione("/tmp/VBX").Descrizione(),
              HasSubstr("il servizio SFTP dell'host ha dato una risposta inattesa"));
}

TEST_F(SshOstile, ServiceThatWritesUnaskedWithoutEndHoldsNobodyUp) {
  Servizio("valanga '" + base.Percorso() + "'");
  collegamento->CancellaFile(Host, "/tmp/VBX");
  prove::Scrivi(base / "via", "");
  for (int giro = 0; giro < 1000 && !fs::exists(base / "piena"); ++giro) {
    ::usleep(10000);
  }
  ASSERT_TRUE(fs::exists(base / "piena"));
  // What was said unasked is no answer: the connection is given up for a new one.
  collegamento->CancellaFile(Host, "/tmp/VBX");
}

} // namespace
} // namespace lumoscad
