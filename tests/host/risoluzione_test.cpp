// What becomes of a connection when the name service of this machine takes its time, or for ever.

#include "Banco.hpp"
#include "Chiamante.hpp"
#include "ChiamateRifiutate.hpp"
#include "platform/nexaro/ssh/AddressLookup.hpp"
#include "platform/nexaro/ssh/Socket.hpp"
#include "platform/nexaro/ssh/SshLink.hpp"
#include "support/Files.hpp"
#include "support/Loopback.hpp"

#include <atomic>
#include <cstddef>
#include <cstdio>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

namespace lumoscad {
namespace {

using namespace std::chrono_literals;
using nexaro::Clock;
using nexaro::OpenSocket;
using test::ErroreDi;

/// Every name that is in no file is asked for over a socket. From now on this process, and every thread that it starts,
/// is held up when it opens one, until somebody lets it go on through the descriptor that this returns.
int TrattieniLePrese() {
  sock_filter regole[] = {
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_socket, 0, 1),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_USER_NOTIF),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
  };
  sock_fprog programma{static_cast<unsigned short>(std::size(regole)), regole};
  if (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0) {
    throw std::runtime_error("prctl");
  }
  const auto ascolto = ::syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, SECCOMP_FILTER_FLAG_NEW_LISTENER, &programma);
  if (ascolto < 0) {
    throw std::runtime_error("seccomp");
  }
  return static_cast<int>(ascolto);
}

/// Lets those who open a socket go on, the first of them after `ritardo`.
void LasciaAndare(int ascolto, std::chrono::milliseconds ritardo) {
  for (;;) {
    seccomp_notif avviso{};
    if (::ioctl(ascolto, SECCOMP_IOCTL_NOTIF_RECV, &avviso) != 0) {
      return;
    }
    std::this_thread::sleep_for(ritardo);
    ritardo = 0ms;
    seccomp_notif_resp risposta{};
    risposta.id = avviso.id;
    risposta.flags = SECCOMP_USER_NOTIF_FLAG_CONTINUE;
    ::ioctl(ascolto, SECCOMP_IOCTL_NOTIF_SEND, &risposta);
  }
}

[[noreturn]] void Racconta(const std::string& testo) {
  std::fputs(testo.c_str(), stderr);
  std::fflush(stderr);
  ::_exit(0);
}

std::string SecondiDa(Clock::time_point inizio) {
  return Clock::now() - inizio < 10s ? " presto" : " tardi";
}

/// Each case runs in a new program: the name service's threads belong to the whole process.
class NameLookUp : public testing::Test {
 protected:
  void SetUp() override { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

[[noreturn]] void SenzaRisposta() {
  ::alarm(30);
  TrattieniLePrese();
  const auto inizio = Clock::now();
  const auto errore =
      ErroreDi([] { static_cast<void>(OpenSocket("contabile.invalid", 22, Clock::now() + 1500ms, 1500ms)); });
  Racconta(errore.Description() + SecondiDa(inizio));
}

TEST_F(NameLookUp, NameServiceThatNeverAnswersIsGivenUpInTimeAndNamed) {
  EXPECT_EXIT(SenzaRisposta(), testing::ExitedWithCode(0),
              "Collegamento all'host contabile.invalid \\(porta 22\\): il servizio dei nomi di questa macchina non ha "
              "risposto entro 1,500 secondi.*\\(-H\\)\\. presto");
}

[[noreturn]] void PiuVolte() {
  ::alarm(60);
  TrattieniLePrese();
  std::string tutte;
  for (int volta = 0; volta < 25; ++volta) {
    tutte = ErroreDi([] {
              static_cast<void>(OpenSocket("contabile.invalid", 22, Clock::now() + 100ms, 100ms));
            }).Description();
  }
  Racconta(tutte);
}

TEST_F(NameLookUp, NameServiceThatNeverAnswersMayBeAskedAgainAndAgain) {
  EXPECT_EXIT(PiuVolte(), testing::ExitedWithCode(0), "il servizio dei nomi di questa macchina non ha risposto");
}

[[noreturn]] void PerNumero() {
  ::alarm(30);
  const auto muta = test::Listen();
  const auto porta = static_cast<unsigned>(test::PortOf(muta));
  // Only the connection's own socket is let through: whoever asks the name service first is held up.
  const int ascolto = TrattieniLePrese();
  std::atomic<int> aperte{0};
  std::thread([&aperte, ascolto] {
    seccomp_notif avviso{};
    if (::ioctl(ascolto, SECCOMP_IOCTL_NOTIF_RECV, &avviso) == 0 && ++aperte > 0) {
      seccomp_notif_resp risposta{};
      risposta.id = avviso.id;
      risposta.flags = SECCOMP_USER_NOTIF_FLAG_CONTINUE;
      ::ioctl(ascolto, SECCOMP_IOCTL_NOTIF_SEND, &risposta);
    }
  }).detach();
  const auto collegata = OpenSocket("127.0.0.1", porta, Clock::now() + 5s, 5s);
  Racconta(collegata.Opened() && aperte == 1 ? "collegata" : "no");
}

TEST_F(NameLookUp, AddressInNumbersAsksNobody) {
  EXPECT_EXIT(PerNumero(), testing::ExitedWithCode(0), "collegata");
}

/// What is said where the name is asked for once `avversa` has worked against this process.
template <typename Avversa> [[noreturn]] void Avversato(Avversa avversa) {
  ::alarm(30);
  avversa();
  const auto errore = ErroreDi([] { static_cast<void>(OpenSocket("contabile.invalid", 22, Clock::now() + 5s, 5s)); });
  rlimit limite{};
  ::getrlimit(RLIMIT_NOFILE, &limite);
  // The sanitizers open pipes for their own checks.
  limite.rlim_cur = limite.rlim_max;
  ::setrlimit(RLIMIT_NOFILE, &limite);
  Racconta(errore.Description());
}

TEST_F(NameLookUp, ErrorOfTheNameServiceIsNotTakenForAWantOfThreads) {
  const auto senzaDescrittori = [] {
    // What the look-up needs for good is read by then.
    static_cast<void>(ErroreDi([] { static_cast<void>(OpenSocket("altro.invalid", 22, Clock::now() + 5s, 5s)); }));
    rlimit limite{};
    ::getrlimit(RLIMIT_NOFILE, &limite);
    limite.rlim_cur = 3;
    ::setrlimit(RLIMIT_NOFILE, &limite);
  };
  EXPECT_EXIT(Avversato(senzaDescrittori), testing::ExitedWithCode(0),
              "Collegamento all'host contabile.invalid \\(porta 22\\): il servizio dei nomi di questa macchina ha dato "
              "un errore\\. Verificare la rete di questa macchina, o indicare l'host con il suo indirizzo numerico "
              "\\(-H\\)\\.");
}

TEST_F(NameLookUp, WantOfThreadsIsSaid) {
  EXPECT_EXIT(Avversato([] { test::Rifiuta(SYS_clone3, SYS_clone, EAGAIN); }), testing::ExitedWithCode(0),
              "Collegamento all'host contabile.invalid \\(porta 22\\): risorse del sistema esaurite\\.");
}

TEST_F(NameLookUp, NameServiceThatFailedDoesNotSayThatTheNameIsNotThere) {
  for (const int esito : {EAI_AGAIN, EAI_FAIL}) {
    EXPECT_EQ(nexaro::LookUpError(esito, 5s, "Ricerca").Description(),
              "Ricerca: il servizio dei nomi non risponde. Verificare la rete di questa macchina.");
  }
  EXPECT_EQ(nexaro::LookUpError(EAI_NONAME, 5s, "Ricerca").Description(),
            "Ricerca: l'indirizzo non esiste. Verificare l'indirizzo dell'host (-H).");
}

TEST_F(NameLookUp, NameIsFoundInAProcessForkedFromOneThatHasLookedNamesUp) {
  const auto cerca = [] {
    return ErroreDi([] { static_cast<void>(OpenSocket("localhost", 1, Clock::now() + 3s, 3s)); }).Description();
  };
  const auto qui = cerca();
  EXPECT_THAT(qui, testing::HasSubstr("localhost (porta 1)"));
  const test::Chiamante figlio(cerca);
  EXPECT_EQ(figlio.Esito(2s), qui);
}

[[noreturn]] void Lenta(const std::string& cartella) {
  ::alarm(30);
  const auto muta = test::Listen();
  const auto porta = static_cast<unsigned>(test::PortOf(muta));
  nexaro::SshSettings impostazioni;
  impostazioni.port = porta;
  impostazioni.user = "prova";
  impostazioni.knownHosts = cartella + "/noti";
  impostazioni.timeout = 3s;
  const int ascolto = TrattieniLePrese();
  std::thread([ascolto] { LasciaAndare(ascolto, 1200ms); }).detach();
  nexaro::SshLink collegamento(impostazioni);
  Racconta(ErroreDi([&] { collegamento.CancellaFile("localhost", "/tmp/x"); }).Description());
}

TEST_F(NameLookUp, NameServiceThatTookMuchOfTheWaitIsNamedWhereTheRestWasNotEnough) {
  const test::TemporaryFolder cartella;
  EXPECT_EXIT(Lenta(cartella.Path().string()), testing::ExitedWithCode(0),
              "il servizio SSH non ha risposto entro 3 secondi\\. Verificare che l'host sia in funzione\\. Di questo "
              "tempo 1,[0-9]* secondi sono andati nella ricerca dell'indirizzo: verificare anche il servizio dei nomi "
              "di questa macchina\\.");
}

} // namespace
} // namespace lumoscad
