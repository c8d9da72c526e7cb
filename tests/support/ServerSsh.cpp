#include "support/ServerSsh.hpp"

#include "support/Loopback.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <pwd.h>
#include <sstream>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <utility>

namespace lumoscad::prova {

namespace fs = std::filesystem;

namespace {

constexpr const char* Sshd = "/usr/sbin/sshd";
constexpr const char* SshKeygen = "/usr/bin/ssh-keygen";
/// Where the server that root runs changes its root to before a client is known; the package makes it at boot.
constexpr const char* CartellaPrivilegi = "/run/sshd";
constexpr auto Passo = std::chrono::milliseconds(10);
constexpr auto Avvio = std::chrono::seconds(30);
constexpr int PorteTentate = 20;

pid_t Lancia(std::vector<std::string> parole, const fs::path& uscita) {
  std::vector<char*> argomenti;
  argomenti.reserve(parole.size() + 1);
  for (auto& parola : parole) {
    argomenti.push_back(parola.data());
  }
  argomenti.push_back(nullptr);
  const pid_t figlio = ::fork();
  if (figlio < 0) {
    throw std::system_error(errno, std::generic_category(), "fork");
  }
  if (figlio == 0) {
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    // The runner may leave these ignored or blocked, which the server would hand on to its programs.
    ::signal(SIGPIPE, SIG_DFL);
    ::signal(SIGCHLD, SIG_DFL);
    const int scritto = ::open(uscita.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    ::dup2(::open("/dev/null", O_RDONLY | O_CLOEXEC), STDIN_FILENO);
    ::dup2(scritto, STDOUT_FILENO);
    ::dup2(scritto, STDERR_FILENO);
    ::execv(argomenti.front(), argomenti.data());
    ::_exit(127);
  }
  return figlio;
}

/// Runs a program to its end; its standard output and error go to `uscita`.
void Esegui(const std::vector<std::string>& parole, const fs::path& uscita) {
  int stato = 0;
  const pid_t figlio = Lancia(parole, uscita);
  while (::waitpid(figlio, &stato, 0) < 0 && errno == EINTR) {
  }
  if (!WIFEXITED(stato) || WEXITSTATUS(stato) != 0) {
    throw std::runtime_error(parole.front() + " failed, see " + uscita.string());
  }
}

std::string Contenuto(const fs::path& file) {
  const std::ifstream flusso(file, std::ios::binary);
  std::ostringstream testo;
  // Of a process that ends meanwhile nothing more is read, and nothing is raised.
  testo << flusso.rdbuf();
  return testo.str();
}

std::string NomeUtente() {
  const passwd* voce = ::getpwuid(::geteuid());
  if (voce == nullptr) {
    throw std::runtime_error("the user of the test has no name");
  }
  return voce->pw_name;
}

std::string FraVirgolette(const std::string& testo) {
  std::string citato = "\"";
  for (const char carattere : testo) {
    citato += carattere == '"' || carattere == '\\' ? std::string("\\") + carattere : std::string(1, carattere);
  }
  return citato + "\"";
}

/// The parent of a process; 0 where there is none any more.
pid_t Genitore(const fs::path& processo) {
  const auto stato = Contenuto(processo / "stat");
  // The name of the program stands in brackets and may hold anything.
  const auto fine = stato.rfind(')');
  if (fine == std::string::npos) {
    return 0;
  }
  std::istringstream campi(stato.substr(fine + 1));
  char lettera = 0;
  pid_t genitore = 0;
  campi >> lettera >> genitore;
  return genitore;
}

void Uccidi(const std::vector<pid_t>& processi) {
  for (const pid_t processo : processi) {
    ::kill(processo, SIGKILL);
  }
}

} // namespace

std::vector<pid_t> Discendenti(pid_t capostipite) {
  std::vector<std::pair<pid_t, pid_t>> tutti; // process, parent
  for (const auto& voce : fs::directory_iterator("/proc")) {
    const auto nome = voce.path().filename().string();
    if (nome.find_first_not_of("0123456789") == std::string::npos) {
      tutti.emplace_back(static_cast<pid_t>(std::stol(nome)), Genitore(voce.path()));
    }
  }
  std::vector<pid_t> trovati{capostipite};
  for (std::size_t indice = 0; indice < trovati.size(); ++indice) {
    for (const auto& [processo, genitore] : tutti) {
      if (genitore == trovati[indice]) {
        trovati.push_back(processo);
      }
    }
  }
  trovati.erase(trovati.begin());
  return trovati;
}

bool ServerSsh::Disponibile() {
  return fs::exists(Sshd) && fs::exists(SshKeygen);
}

ServerSsh::ServerSsh(const fs::path& cartella) : ServerSsh(cartella, Opzioni()) {}

ServerSsh::ServerSsh(const fs::path& cartella, Opzioni opzioni)
    : cartella_(fs::absolute(cartella)), opzioni_(std::move(opzioni)), utente_(NomeUtente()) {
  fs::remove_all(cartella_);
  fs::create_directories(cartella_);
  fs::permissions(cartella_, fs::perms::owner_all);
  fs::create_directory(cartella_ / "casa");
  if (::geteuid() == 0 && ::mkdir(CartellaPrivilegi, 0755) != 0 && errno != EEXIST) {
    throw std::system_error(errno, std::generic_category(), CartellaPrivilegi);
  }
  GeneraChiave(Chiave(), "ed25519");
  GeneraChiave(ChiaveEstranea(), "ed25519");
  GeneraChiave(cartella_ / "host", opzioni_.tipoHost);
  fs::copy_file(Chiave().string() + ".pub", Ammesse());
  for (int tentativo = 0; processo_ < 0 && tentativo < PorteTentate; ++tentativo) {
    porta_ = PortaLibera();
    Avvia();
  }
  if (processo_ < 0) {
    throw std::runtime_error("sshd does not start, see " + Registro().string());
  }
  RendiNoto(porta_);
}

ServerSsh::~ServerSsh() {
  Ferma();
  std::error_code ignorato;
  fs::remove_all(cartella_, ignorato);
}

void ServerSsh::GeneraChiave(const fs::path& file, const std::string& tipo) const {
  fs::remove(file);
  fs::remove(file.string() + ".pub");
  Esegui({SshKeygen, "-q", "-t", tipo, "-N", "", "-C", "prova", "-f", file.string()}, cartella_ / "ssh-keygen.log");
}

void ServerSsh::ScriviConfigurazione() const {
  std::ofstream file(cartella_ / "sshd_config");
  file << "ListenAddress " << Indirizzo() << "\nPort " << porta_ << "\nHostKey "
       << FraVirgolette((cartella_ / "host").string()) << "\nPidFile none\nAuthorizedKeysFile "
       << FraVirgolette(Ammesse().string()) << "\nAllowUsers " << utente_
       << "\nPermitRootLogin prohibit-password\nPubkeyAuthentication yes\nPasswordAuthentication no\n"
          "KbdInteractiveAuthentication no\nUsePAM no\nUseDNS no\nStrictModes no\nPrintMotd no\nPrintLastLog no\n"
          "X11Forwarding no\nMaxStartups 100\nLogLevel VERBOSE\nSubsystem sftp "
       << opzioni_.sftp << '\n';
  // Only the first line of this setting counts. What the user's own shell does at a start is left out.
  file << "SetEnv " << FraVirgolette("HOME=" + (cartella_ / "casa").string());
  for (const auto& voce : opzioni_.ambiente) {
    file << ' ' << FraVirgolette(voce);
  }
  file << '\n';
  for (const auto& riga : opzioni_.righe) {
    file << riga << '\n';
  }
}

void ServerSsh::Avvia() {
  ScriviConfigurazione();
  processo_ = Lancia({Sshd, "-D", "-e", "-f", (cartella_ / "sshd_config").string()}, Registro());
  const auto fine = std::chrono::steady_clock::now() + Avvio;
  while (!Pronto()) {
    if (::waitpid(processo_, nullptr, WNOHANG) == processo_) {
      processo_ = -1;
      return;
    }
    if (std::chrono::steady_clock::now() > fine) {
      Ferma();
      return;
    }
    std::this_thread::sleep_for(Passo);
  }
}

bool ServerSsh::Pronto() {
  const auto presa = Collega(porta_);
  std::array<char, 4> inizio{};
  return presa.Opened() &&
         ::recv(presa.Number(), inizio.data(), inizio.size(), MSG_WAITALL) == static_cast<ssize_t>(inizio.size()) &&
         std::string_view(inizio.data(), inizio.size()) == "SSH-";
}

void ServerSsh::Ferma() {
  if (processo_ <= 0) {
    return;
  }
  // The server goes first, so that no session is added to those that are found.
  ::kill(processo_, SIGSTOP);
  const auto sessioni = Discendenti(processo_);
  ::kill(processo_, SIGKILL);
  ::waitpid(processo_, nullptr, 0);
  processo_ = -1;
  Uccidi(sessioni);
}

void ServerSsh::TroncaSessioni() {
  Uccidi(Discendenti(processo_));
}

std::vector<pid_t> ServerSsh::Processi() const {
  auto processi = Discendenti(processo_);
  processi.push_back(processo_);
  return processi;
}

void ServerSsh::Riavvia() {
  Ferma();
  // Sessions that have just been killed may hold the port for a moment.
  for (int tentativo = 0; processo_ < 0 && tentativo < PorteTentate; ++tentativo) {
    Avvia();
  }
  if (processo_ < 0) {
    throw std::runtime_error("sshd does not start again, see " + Registro().string());
  }
}

void ServerSsh::CambiaChiaveHost(const std::string& tipo) {
  Ferma();
  GeneraChiave(cartella_ / "host", tipo);
  Riavvia();
}

void ServerSsh::Cambia(Opzioni opzioni) {
  opzioni_ = std::move(opzioni);
  Riavvia();
}

std::string ServerSsh::ChiavePubblicaHost() const {
  std::istringstream campi(Contenuto(cartella_ / "host.pub"));
  std::string tipo;
  std::string chiave;
  campi >> tipo >> chiave;
  return tipo + " " + chiave;
}

std::string ServerSsh::Impronta() const {
  const auto file = cartella_ / "impronta";
  fs::remove(file);
  Esegui({SshKeygen, "-l", "-E", "sha256", "-f", (cartella_ / "host.pub").string()}, file);
  std::istringstream campi(Contenuto(file));
  std::string lunghezza;
  std::string impronta;
  campi >> lunghezza >> impronta;
  return impronta;
}

void ServerSsh::RendiNoto(int porta) const {
  std::ofstream(Noti(), std::ios::app) << "[" << Indirizzo() << "]:" << porta << " " << ChiavePubblicaHost() << '\n';
}

std::vector<std::string> ServerSsh::Ambiente(int porta) const {
  return {"NEXARO_TRASPORTO=ssh", "NEXARO_SSH_PORTA=" + std::to_string(porta == 0 ? porta_ : porta),
          "NEXARO_SSH_UTENTE=" + utente_, "NEXARO_SSH_CHIAVE=" + Chiave().string(),
          "NEXARO_SSH_NOTI=" + Noti().string()};
}

} // namespace lumoscad::prova
