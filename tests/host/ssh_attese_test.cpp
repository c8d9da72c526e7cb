// How long the component waits for a host on the network, and what it takes before it gives up.

#include "BancoSsh.hpp"
#include "Chiamante.hpp"
#include "platform/base/Descriptor.hpp"

#include <array>
#include <chrono>
#include <cstdlib>
#include <future>
#include <gmock/gmock.h>
#include <sys/socket.h>
#include <sys/un.h>

namespace lumoscad {
namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;
using test::Chiamante;
using test::ErroreDi;
using test::Ignoto;
using testing::EndsWith;
using testing::HasSubstr;

class SshWaits : public test::BancoSsh {
 protected:
  void TearDown() override { server->Change({}); }

  /// The error of an operation, or "" where it succeeds.
  template <typename Operazione> static std::string Detto(Operazione operazione) {
    try {
      operazione();
      return "";
    } catch (const RuntimeError& errore) {
      return errore.Description();
    }
  }
  /// The text that the program answers, or the error.
  std::string Chiama() {
    std::string valore;
    const auto errore = Detto([&] { valore = Risposta()->value; });
    return errore.empty() ? valore : errore;
  }
  /// What a caller says that is stopped, for longer than it would wait, while the program works.
  std::string ChiamaFermato(const std::string& corpo) {
    Programma("touch '" + base / "partito" + "'; sleep 1; " + corpo);
    impostazioni.timeout = 2s;
    Collega();
    const Chiamante chiamante([this] { return Chiama().substr(0, 300); });
    for (int giro = 0; giro < 1000 && !fs::exists(base / "partito"); ++giro) {
      std::this_thread::sleep_for(10ms);
    }
    chiamante.Ferma(3s);
    return chiamante.Esito(20s);
  }
};

TEST_F(SshWaits, CompleteAnswerIsTakenThoughAChildHoldsTheOutput) {
  Programma("sleep 15 & echo '<A>fatto</A>'");
  const auto inizio = std::chrono::steady_clock::now();
  EXPECT_EQ(Chiama(), "fatto");
  EXPECT_LT(std::chrono::steady_clock::now() - inizio, 10s);
  const auto prima = server->Processes();
  Programma("echo '<A>ancora</A>'");
  EXPECT_EQ(Chiama(), "ancora") << "over the same connection";
}

TEST_F(SshWaits, AnswerThatAChildCompletesIsWaitedFor) {
  Programma("(sleep 3; echo 'fatto</A>'; exec sleep 15) & printf '<A>'");
  EXPECT_EQ(Chiama(), "fatto");
}

TEST_F(SshWaits, HalfAnAnswerIsNotTakenThoughTheProgramEndedWell) {
  Programma("sleep 15 & echo '<A>'");
  impostazioni.timeout = 2500ms;
  Collega();
  EXPECT_THAT(Chiama(), HasSubstr("non ha risposto entro 2,500 secondi"));
}

TEST_F(SshWaits, FailureIsSaidThoughAChildHoldsTheOutput) {
  Programma("sleep 15 & echo '<A/>'; echo pieno >&2; exit 3");
  const auto inizio = std::chrono::steady_clock::now();
  EXPECT_THAT(Chiama(), HasSubstr("lo stato 3: pieno"));
  EXPECT_LT(std::chrono::steady_clock::now() - inizio, 10s);
}

TEST_F(SshWaits, AnswerThatCameWhileTheCallerWasStoppedIsRead) {
  EXPECT_EQ(ChiamaFermato("echo '<A>fatto</A>'"), "fatto");
}

TEST_F(SshWaits, LongAnswerThatWasHeldUpWhileTheCallerWasStoppedIsReadToItsEnd) {
  // More than the connection holds: the program goes on only when somebody reads.
  EXPECT_THAT(ChiamaFermato("printf '<A>fatto'; head -c 8000000 /dev/zero | tr '\\0' ' '; echo '</A>'"),
              testing::StartsWith("fatto "));
}

TEST_F(SshWaits, ProgramThatOnlyComplainsIsGivenUpAllTheSame) {
  Programma("while :; do echo ancora >&2; sleep 0.02; done");
  impostazioni.timeout = 500ms;
  Collega();
  const auto inizio = std::chrono::steady_clock::now();
  EXPECT_THAT(Chiama(), HasSubstr("non ha risposto entro 0,500 secondi"));
  EXPECT_LT(std::chrono::steady_clock::now() - inizio, 12s);
}

/// A key agent that lists one key where it has been given one, and answers nothing else. With `fermata` it stops the
/// process that asks for the list, for so long, and lists what it has, be it nothing.
class AgenteMuto {
 public:
  AgenteMuto(const std::string& presa, std::string chiave, std::chrono::milliseconds fermata = 0ms)
      : ascolto_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)), chiave_(std::move(chiave)), fermata_(fermata) {
    sockaddr_un indirizzo{};
    indirizzo.sun_family = AF_UNIX;
    presa.copy(indirizzo.sun_path, sizeof indirizzo.sun_path - 1);
    EXPECT_EQ(::bind(ascolto_, reinterpret_cast<sockaddr*>(&indirizzo), sizeof indirizzo), 0);
    EXPECT_EQ(::listen(ascolto_, 0), 0);
    variabili_.Imposta("SSH_AUTH_SOCK", presa);
    if (!chiave_.empty() || fermata_ > 0ms) {
      // Running before the caller is forked: what a starting thread holds would stay held in the child.
      std::promise<void> parte;
      filo_ = std::thread([this, &parte] {
        parte.set_value();
        Elenca();
      });
      parte.get_future().wait();
    }
  }
  AgenteMuto(const AgenteMuto&) = delete;
  AgenteMuto& operator=(const AgenteMuto&) = delete;
  ~AgenteMuto() {
    ::shutdown(ascolto_, SHUT_RDWR);
    if (filo_.joinable()) {
      filo_.join();
    }
    ::close(ascolto_);
  }

 private:
  static std::string Numero(std::size_t valore) {
    std::string testo;
    for (const unsigned posto : {24U, 16U, 8U, 0U}) {
      testo += static_cast<char>(valore >> posto & 0xFFU);
    }
    return testo;
  }
  /// Answers the first request with the list of its one key; the second is the one for a signature.
  void Elenca() {
    const int cliente = ::accept4(ascolto_, nullptr, nullptr, SOCK_CLOEXEC);
    std::array<char, 1024> richiesta{};
    const auto corpo =
        "\x0C" + (chiave_.empty() ? Numero(0) : Numero(1) + Numero(chiave_.size()) + chiave_ + Numero(5) + "prova");
    const auto elenco = Numero(corpo.size()) + corpo;
    bool elencata = false;
    while (::recv(cliente, richiesta.data(), richiesta.size(), 0) > 0) {
      if (!elencata) {
        ucred chiede{};
        socklen_t lunghezza = sizeof chiede;
        const bool fermo = fermata_ > 0ms && ::getsockopt(cliente, SOL_SOCKET, SO_PEERCRED, &chiede, &lunghezza) == 0 &&
                           ::kill(chiede.pid, SIGSTOP) == 0;
        elencata = ::send(cliente, elenco.data(), elenco.size(), MSG_NOSIGNAL) > 0;
        if (fermo) {
          std::this_thread::sleep_for(fermata_);
          ::kill(chiede.pid, SIGCONT);
        }
      }
    }
    ::close(cliente);
  }

  int ascolto_;
  std::string chiave_;
  std::chrono::milliseconds fermata_;
  test::VariabiliProvvisorie variabili_;
  std::thread filo_;
};

class SshSilentAgent : public SshWaits {
 protected:
  void SetUp() override {
    SshWaits::SetUp();
    Programma("echo '<A>fatto</A>'");
    impostazioni.key.clear();
    impostazioni.directory = base / "ssh";
    impostazioni.timeout = 1500ms;
    Collega();
  }
  /// What comes of a call that the host answers within the limit: on a busy machine it does not always.
  template <typename Chiamata> static std::string OltreLHost(Chiamata chiamata) {
    const auto limite = std::chrono::steady_clock::now() + 60s;
    std::string esito;
    do {
      esito = chiamata();
    } while (esito.find("il servizio SSH non ha risposto") != std::string::npos &&
             std::chrono::steady_clock::now() < limite);
    return esito;
  }
  std::string ChiamaAltrove() {
    return OltreLHost([this] {
      const Chiamante chiamante([this] { return Chiama(); });
      return chiamante.Esito(15s);
    });
  }

  const std::string attesa =
      "Accesso all'host 127.0.0.1: l'agente delle chiavi (SSH_AUTH_SOCK) non ha risposto entro 1,500 secondi. "
      "Verificare se attende una conferma, o indicare la chiave con NEXARO_SSH_CHIAVE.";
};

TEST_F(SshSilentAgent, IsGivenUpInTimeAndNamedWhereItListsNoKeys) {
  const AgenteMuto agente(base / "agente", {});
  EXPECT_EQ(ChiamaAltrove(), attesa);
}

TEST_F(SshSilentAgent, IsGivenUpInTimeAndNamedWhereItTakesNoConnection) {
  const AgenteMuto agente(base / "agente", {});
  std::vector<base::Descriptor> coda;
  sockaddr_un indirizzo{};
  indirizzo.sun_family = AF_UNIX;
  (base / "agente").copy(indirizzo.sun_path, sizeof indirizzo.sun_path - 1);
  int esito = 0;
  while (esito == 0 && coda.size() < 10) {
    coda.emplace_back(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    esito = ::connect(coda.back().Number(), reinterpret_cast<sockaddr*>(&indirizzo), sizeof indirizzo);
  }
  ASSERT_EQ(errno, EAGAIN);
  EXPECT_EQ(ChiamaAltrove(), attesa);
}

TEST_F(SshSilentAgent, IsGivenUpInTimeAndNamedWhereItDoesNotSign) {
  const auto comando = "cut -d' ' -f2 '" + server->Key().string() + ".pub' | base64 -d >'" + base / "pubblica" + "'";
  ASSERT_EQ(std::system(comando.c_str()), 0);
  const AgenteMuto agente(base / "agente", test::FileText(base / "pubblica"));
  EXPECT_EQ(ChiamaAltrove(), attesa);
}

TEST_F(SshSilentAgent, CallerThatWasStoppedDuringTheLoginTakesTheAnswerAndGoesOn) {
  fs::create_directories(base / "ssh");
  fs::copy_file(server->Key(), base / "ssh/id_ed25519");
  const AgenteMuto agente(base / "agente", {}, 2500ms);
  EXPECT_EQ(ChiamaAltrove(), "fatto") << "the key file is tried after the agent, when the limit is over";
}

TEST_F(SshSilentAgent, LeavesNoDescriptorBehind) {
  const AgenteMuto agente(base / "agente", {});
  impostazioni.timeout = 300ms;
  const auto aperti = [] {
    const fs::directory_iterator elenco("/proc/self/fd");
    return std::distance(begin(elenco), end(elenco));
  };
  const auto prima = aperti();
  for (int volta = 0; volta < 3; ++volta) {
    const std::string esito = OltreLHost([this] {
      Collega();
      return Chiama();
    });
    EXPECT_THAT(esito, HasSubstr("l'agente delle chiavi"));
    EXPECT_EQ(aperti(), prima);
  }
}

} // namespace
} // namespace lumoscad
