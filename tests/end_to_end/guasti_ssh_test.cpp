// Faults of the way to a host behind SSH, of its server and of the request's file there.

#include "CodaPiena.hpp"
#include "GuastiSsh.hpp"
#include "platform/RuntimeError.hpp"

#include <chrono>
#include <cstdlib>

namespace lumoscad::test {
namespace {

using Verso = ByteProxy::Direction;
namespace fs = std::filesystem;

// The way to the host.

TEST_F(SshFaults, WithoutAFaultTheSameGesturesChangeTwoRows) {
  Prova("None");
  VerificaRiuscito();
  VerificaRimasti({});
  VerificaAvvii(1);
  EXPECT_EQ(proxy.Connections(), 1);
}

TEST_F(SshFaults, ARefusedConnectionIsReported) {
  proxy.Refuse(true);
  Prova("Connection refused");
  VerificaFallito();
  VerificaErrore(
      {"host 127.0.0.1", "(porta " + std::to_string(proxy.Port()) + ")", "connessione rifiutata", "NEXARO_SSH_PORTA"});
  VerificaRimasti({});
}

TEST_F(SshFaults, AHostThatNeverAnswersIsGivenUpAfterTheWait) {
  LimitaAttesa("0.5");
  proxy.StrikeAfter(Verso::ToServer, 0, Azione::Hold);
  const auto inizio = std::chrono::steady_clock::now();
  Prova("No answer within the wait");
  // Once to read the lock, once to set it, once to send the request.
  EXPECT_LT(std::chrono::steady_clock::now() - inizio, std::chrono::seconds(10));
  VerificaFallito();
  VerificaErrore({"host 127.0.0.1", "entro 0,500 secondi"});
  VerificaRimasti({});
}

TEST_F(SshFaults, AnAddressThatTakesNoConnectionIsGivenUpAfterTheWait) {
  const CodaPiena ascolto;
  ::setenv("NEXARO_SSH_PORTA", std::to_string(ascolto.porta).c_str(), 1);
  LimitaAttesa("0.5");
  Prova("Unreachable within the wait");
  VerificaFallito();
  VerificaErrore({"host 127.0.0.1", "nessuna risposta entro 0,500 secondi"});
  VerificaRimasti({});
}

TEST_F(SshFaults, AnUnknownHostKeyIsRefused) {
  Scrivi(demo.Ssh().KnownHosts(), "");
  Prova("Host key unknown");
  VerificaFallito();
  VerificaErrore({"L'host 127.0.0.1", demo.Ssh().Hash(), "non è fra gli host noti", "--registra-host"});
  VerificaRimasti({});
}

TEST_F(SshFaults, AChangedHostKeyIsRefused) {
  demo.Ssh().ChangeHostKey("ed25519");
  Prova("Host key changed");
  VerificaFallito();
  VerificaErrore({"L'host 127.0.0.1", demo.Ssh().Hash(), "diversa da quella nota"});
  VerificaRimasti({});
}

TEST_F(SshFaults, AHostKeyOfAnotherTypeIsRefused) {
  demo.Ssh().ChangeHostKey("ecdsa");
  Prova("Host key of another type");
  VerificaFallito();
  VerificaErrore({"L'host 127.0.0.1", demo.Ssh().Hash(), "di tipo diverso da quella nota"});
  VerificaRimasti({});
}

TEST_F(SshFaults, AKnownHostsFileThatCannotBeReadLetsNobodyIn) {
  fs::remove(demo.Ssh().KnownHosts());
  fs::create_directory(demo.Ssh().KnownHosts());
  Prova("Known hosts file unreadable");
  VerificaFallito();
  VerificaErrore({"L'host 127.0.0.1", demo.Ssh().Hash(), "non può essere letto"});
  VerificaRimasti({});
}

TEST_F(SshFaults, AKeyThatTheHostDoesNotAcceptIsReported) {
  ::setenv("NEXARO_SSH_CHIAVE", demo.Ssh().ForeignKey().c_str(), 1);
  Prova("No key accepted");
  VerificaFallito();
  VerificaErrore({"host 127.0.0.1", "nessuna chiave", demo.Ssh().User(), "non accettata", "NEXARO_SSH_CHIAVE"});
  VerificaRimasti({});
}

// The request file.

TEST_F(SshFaults, ADirectoryWithoutTheRightToWriteRefusesTheRequest) {
  fs::permissions(demo.Tmp(), fs::perms::owner_read | fs::perms::owner_exec);
  Prova("Permission denied on upload");
  VerificaFallito();
  VerificaErrore({"Invio del file", "/tmp/" + Parziale, QualeHost, "permesso negato"});
  VerificaRimasti({});
}

TEST_F(SshFaults, AFullDiskRefusesTheRequest) {
  // The lock's file fits, the request does not.
  demo.ConfiguraRadice("-f 64");
  Prova("Disk full");
  VerificaFallito();
  VerificaErrore({"Invio del file", "/tmp/" + Parziale, QualeHost, "spazio"});
  VerificaRimasti({Blocco});
  VerificaAvvii(0);
}

TEST_F(SshFaults, ACutDuringTheUploadIsReported) {
  Ferma("InviaFile", "scrivi prima", [this] { Taglia(true); });
  Prova("Cut during the upload, host gone");
  VerificaFallito();
  VerificaErrore({"Invio del file", "/tmp/" + Parziale, QualeHost});
  VerificaRimasti({Parziale, Blocco});
  VerificaAvvii(0);
}

TEST_F(SshFaults, ACutDuringTheUploadIsNotMendedBehindThePersonsBack) {
  Ferma("InviaFile", "scrivi prima", [this] { Taglia(); });
  Prova("Cut during the upload, host back");
  VerificaFallito();
  VerificaErrore({"Invio del file", "/tmp/" + Parziale, QualeHost});
  VerificaRimasti({Blocco});
  VerificaAvvii(0);
}

TEST_F(SshFaults, AFileThatMayHaveBeenMadeIsLeftAloneAndSaid) {
  Ferma("InviaFile", "apri dopo", [this] { Taglia(); });
  Prova("Answer to the making of the file lost, host back");
  VerificaFallito();
  VerificaErrore({"Invio del file", "/tmp/" + Parziale, QualeHost, "può esserne rimasta una parte"});
  VerificaRimasti({Parziale, Blocco});
  VerificaAvvii(0);
}

TEST_F(SshFaults, ANetworkThatFallsSilentDuringTheUploadIsGivenUpAfterTheWait) {
  LimitaAttesa(Breve);
  Ferma("InviaFile", "scrivi prima", [this] { proxy.Strike(Azione::Hold); });
  Prova("Network silent during the upload");
  VerificaFallito();
  VerificaErrore({"Invio del file", "/tmp/" + Parziale, QualeHost, "entro 3 secondi"});
  VerificaAvvii(0);
}

TEST_F(SshFaults, ALongUploadThatBreaksOffIsReported) {
  const auto locale = demo.Locale() / "lungo";
  Scrivi(locale, std::string(4U << 20U, 'x'));
  const auto host = CreaHost();
  proxy.StrikeAfter(Verso::ToServer, 1U << 20U, Azione::Close);
  const auto invia = [&] { host->InviaFile("127.0.0.1", locale.string(), "/tmp/lungo"); };
  EXPECT_THROW(invia(), RuntimeError);
  EXPECT_TRUE(proxy.HasStruck());
  invia();
  EXPECT_EQ(fs::file_size(demo.Tmp() / "lungo"), 4U << 20U);
}

TEST_F(SshFaults, ACutBeforeTheRenameIsReported) {
  Ferma("RinominaFile", "rinomina prima", [this] { Taglia(true); });
  Prova("Cut before the rename, host gone");
  VerificaFallito();
  VerificaErrore({"Cambio di nome", Parziale, Completo, QualeHost});
  VerificaRimasti({Parziale, Blocco});
  VerificaAvvii(0);
}

TEST_F(SshFaults, ACutBeforeTheRenameIsSeenByTheNames) {
  Ferma("RinominaFile", "rinomina prima", [this] { Taglia(); });
  Prova("Cut before the rename, host back");
  VerificaFallito();
  VerificaErrore({"Cambio di nome", Parziale, Completo, QualeHost, "ha ancora il vecchio nome", "togliere il blocco"});
  VerificaRimasti({Parziale, Blocco});
  VerificaAvvii(0);
}

TEST_F(SshFaults, ALostAnswerToTheRenameIsReplacedByALookAtBothNames) {
  Ferma("RinominaFile", "rinomina dopo", [this] { Taglia(); });
  Prova("Answer to the rename lost, host back");
  VerificaRiuscito();
  VerificaRimasti({});
  VerificaAvvii(1);
}

TEST_F(SshFaults, ALostAnswerToTheRenameIsAnErrorWhereNobodyCanLook) {
  Ferma("RinominaFile", "rinomina dopo", [this] { Taglia(true); });
  Prova("Answer to the rename lost, host gone");
  VerificaFallito();
  VerificaErrore({"Cambio di nome", Parziale, Completo, QualeHost});
  VerificaRimasti({Completo, Blocco});
  VerificaAvvii(0);
}

} // namespace
} // namespace lumoscad::test
