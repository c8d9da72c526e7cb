// Faults of the host and of its back end.

#include "Guasti.hpp"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <linux/capability.h>
#include <sys/syscall.h>
#include <system_error>
#include <unistd.h>

namespace lumoscad::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
namespace fs = std::filesystem;

const std::string Completo = "T0120260305140709.dos";
const std::string Ignoto = "L'esito sull'host non è noto: verificarlo prima di ripetere il comando.";
const std::string Programma = "Il programma VB0001 sull'host 10.0.0.1 ";

/// Takes from the user root, for the scope, the right to write where the permissions forbid it.
class SenzaPrivilegi {
 public:
  SenzaPrivilegi() {
    Chiama(SYS_capget, prima_);
    Dati dati = prima_;
    dati[0].effective &= ~((1U << CAP_DAC_OVERRIDE) | (1U << CAP_DAC_READ_SEARCH));
    Chiama(SYS_capset, dati);
  }
  SenzaPrivilegi(const SenzaPrivilegi&) = delete;
  SenzaPrivilegi& operator=(const SenzaPrivilegi&) = delete;
  ~SenzaPrivilegi() { Chiama(SYS_capset, prima_); }

 private:
  using Dati = std::array<__user_cap_data_struct, 2>;

  static void Chiama(long operazione, Dati& dati) {
    __user_cap_header_struct testa{_LINUX_CAPABILITY_VERSION_3, 0};
    if (::syscall(operazione, &testa, dati.data()) != 0) {
      ADD_FAILURE() << std::generic_category().message(errno);
    }
  }

  Dati prima_{};
};

class HostFaults : public Guasti {
 protected:
  /// Confirms with `corpo`, a shell script, in the place of the back end.
  std::string ConfermaCon(std::string_view corpo) {
    ScriviProgramma(demo.VB0001(), corpo);
    Conferma();
    return Esegui();
  }
  void VerificaGuasto(const std::string& risultato, const std::string& testo) {
    VerificaRifiuto(risultato, {ErroreRichiesta(testo)}, {Completo, "VBCREDITI"});
  }
};

/// The same rules whichever way the host is reached.
class FaultsOverATransport : public Guasti, public testing::WithParamInterface<Trasporto> {
 protected:
  FaultsOverATransport() : Guasti(GetParam()) {}
};

INSTANTIATE_TEST_SUITE_P(Transports, FaultsOverATransport, testing::Values(Trasporto::Cartella, Trasporto::Ssh),
                         [](const auto& caso) { return NomeTrasporto(caso.param); });

TEST_P(FaultsOverATransport, WithoutAFaultTheSameGesturesChangeTwoRows) {
  const auto attesa = demo.StatoDopo("UPDATE EVENTOCONTABILE SET DATASCADENZA='2026-04-15' WHERE "
                                     "EVENTOCONTABILEKEY=111;"
                                     "UPDATE EVENTOCONTABILE SET BANCAPRESENTAZIONE_KEY=1 WHERE "
                                     "EVENTOCONTABILEKEY=291");
  Conferma();
  EXPECT_EQ(Esegui(), "");
  EXPECT_THAT(desktop.box, ElementsAre("Variate 2 scadenze"));
  EXPECT_THAT(Contenuto(demo.Tmp()), IsEmpty());
  EXPECT_THAT(Differenze(attesa, demo.Stato()), IsEmpty());
}

TEST_P(FaultsOverATransport, ARefusalOfTheBackEndIsShownAndNothingIsWritten) {
  Scrivi(demo.Host() / "conti_bloccati", "20100023\n");
  Conferma();
  VerificaRifiuto(Esegui(), {ErroreRichiesta("Riga 1, campo 1 (CodiceConto): «20100023» è un conto bloccato.")},
                  {"VBCREDITI"});
  EXPECT_THAT(FileText(demo.Registro()), testing::StartsWith("RIFIUTATA\t"));
}

TEST_F(HostFaults, AMissingBackEndIsNamed) {
  fs::remove(demo.VB0001());
  Conferma();
  VerificaGuasto(Esegui(), "53 " + Programma + "non è stato avviato: file inesistente.");
}

TEST_F(HostFaults, ABackEndThatHangsIsStoppedAfterTheWait) {
  ::setenv("NEXARO_ATTESA", "1", 1);
  VerificaGuasto(ConfermaCon("exec sleep 30"),
                 "-2147467259 " + Programma + "non ha risposto entro 1 secondo ed è stato interrotto. " + Ignoto);
}

TEST_F(HostFaults, ABackEndKilledByASignalIsAnError) {
  VerificaGuasto(ConfermaCon("echo '<RISPOSTA/>'; kill -KILL $$"),
                 "-2147467259 " + Programma + "è stato terminato dal segnale 9. " + Ignoto);
}

TEST_F(HostFaults, AnExitStatusOtherThanZeroIsAnErrorWhateverTheAnswer) {
  VerificaGuasto(ConfermaCon("echo '<RISPOSTA/>'; echo 'archivio occupato' >&2; exit 3"),
                 "-2147467259 " + Programma + "è terminato con lo stato 3: archivio occupato. " + Ignoto);
}

TEST_F(HostFaults, AnAnswerThatIsNotXmlIsAnError) {
  VerificaGuasto(
      ConfermaCon("echo 'tutto bene'"),
      "-2147467259 " + Programma +
          "ha dato una risposta non valida. Documento XML non valido: testo fuori dall'elemento principale. " + Ignoto);
}

TEST_F(HostFaults, AnAnswerThatBreaksOffIsAnError) {
  VerificaGuasto(
      ConfermaCon("echo '<RISPOSTA><MESSAGGIO>Variate 2'"),
      "-2147467259 " + Programma +
          "ha dato una risposta non valida. Documento XML non valido: la sintassi è errata al carattere 31. " + Ignoto);
}

TEST_F(HostFaults, NoAnswerIsAnError) {
  VerificaGuasto(ConfermaCon("exit 0"), "-2147467259 " + Programma + "non ha dato alcuna risposta. " + Ignoto);
}

TEST_F(HostFaults, AReadOnlyHostDirectoryRefusesTheRequest) {
  fs::permissions(demo.Tmp(), fs::perms::owner_read | fs::perms::owner_exec);
  Conferma();
  std::string risultato;
  {
    const SenzaPrivilegi senza;
    risultato = Esegui();
  }
  // The lock could not be written either, which does not stop the command.
  VerificaRifiuto(risultato,
                  {ErroreRichiesta("70 Invio del file «" + (demo.Locale() / Richiesta).string() + "» come «/tmp/" +
                                   std::string(Richiesta) + "» sull'host 10.0.0.1: permesso negato.")},
                  {});
  EXPECT_FALSE(fs::exists(demo.Registro()));
}

TEST_F(HostFaults, AHostDirectoryThatIsAFileRefusesTheRequest) {
  fs::remove(demo.Tmp());
  Scrivi(demo.Tmp(), "");
  Conferma();
  EXPECT_EQ(Esegui(), "error");
  EXPECT_THAT(desktop.box,
              ElementsAre(ErroreRichiesta("75 Invio del file «" + (demo.Locale() / Richiesta).string() +
                                          "» come «/tmp/" + std::string(Richiesta) +
                                          "» sull'host 10.0.0.1: un elemento del percorso non è una cartella.")));
  EXPECT_FALSE(fs::exists(demo.Registro()));
  EXPECT_THAT(Differenze(prima, demo.Stato()), IsEmpty());
}

TEST_P(FaultsOverATransport, AListLockedByAnotherTerminalIsNotShown) {
  const std::string altro = "Utente : T02\r\nData : 05/03/2026   Ora : 13:58\r\n";
  Scrivi(demo.Tmp() / "VBCREDITI", altro);
  Conferma();
  const auto risultato = Esegui();
  EXPECT_EQ(desktop.windows, 0U);
  EXPECT_THAT(istruzioni, IsEmpty());
  VerificaRifiuto(risultato,
                  {"Area CREDITI in manutenzione presso un altro terminale\rUtente : T02\r"
                   "Data : 05/03/2026   Ora : 13:58"},
                  {"VBCREDITI"});
  EXPECT_EQ(FileText(demo.Tmp() / "VBCREDITI"), altro);
}

TEST_P(FaultsOverATransport, TheLockOfAFailedCommandBlocksTheNextUntilItIsRemoved) {
  Scrivi(demo.Host() / "conti_bloccati", "20100023\n");
  Conferma();
  EXPECT_EQ(Esegui(), "error");
  fs::remove(demo.Host() / "conti_bloccati");
  desktop.box.clear();
  VerificaRifiuto(Esegui(),
                  {"Area CREDITI in manutenzione presso un altro terminale\rUtente : T01\r"
                   "Data : 05/03/2026   Ora : 14:07"},
                  {"VBCREDITI"});
  fs::remove(demo.Tmp() / "VBCREDITI");
  desktop.box.clear();
  Conferma();
  EXPECT_EQ(Esegui(), "");
  EXPECT_THAT(desktop.box, ElementsAre("Variate 2 scadenze"));
  EXPECT_THAT(Contenuto(demo.Tmp()), IsEmpty());
}

} // namespace
} // namespace lumoscad::test
