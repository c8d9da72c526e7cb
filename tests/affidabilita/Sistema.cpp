#include "Sistema.hpp"

#include "support/Files.hpp"
#include "support/Paths.hpp"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <utility>

namespace lumoscad::test {

namespace fs = std::filesystem;

namespace {

/// What asks a guardian to kill its program.
constexpr int Uccidilo = SIGUSR1;
/// The guardian's program while it lives: whoever is told to kill by number must not hit another.
volatile pid_t custodito = 0;

void UccidiIlCustodito(int) {
  if (const pid_t chi = custodito; chi > 0) {
    ::kill(chi, SIGKILL);
  }
}

/// `Uccidilo` waits for as long as one of these is there; it is let through in the process in which `Lascia` is called.
class UccisioneSospesa {
 public:
  UccisioneSospesa() {
    sigset_t questo{};
    ::sigemptyset(&questo);
    ::sigaddset(&questo, Uccidilo);
    ::sigprocmask(SIG_BLOCK, &questo, &prima_);
  }
  UccisioneSospesa(const UccisioneSospesa&) = delete;
  UccisioneSospesa& operator=(const UccisioneSospesa&) = delete;
  ~UccisioneSospesa() { Lascia(); }
  void Lascia() const { ::sigprocmask(SIG_SETMASK, &prima_, nullptr); }

 private:
  sigset_t prima_{};
};

/// Becomes the program's guardian: inherits whatever the program leaves behind, and ends when nothing is left.
[[noreturn]] void Custodisci(char* const* parole, const char* ingresso, const char* errori,
                             const UccisioneSospesa& sospesa) {
  // A socket that the test closes would stay open here.
  ::close_range(STDERR_FILENO + 1, ~0U, 0);
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  ::prctl(PR_SET_CHILD_SUBREAPER, 1);
  const pid_t figlio = ::fork();
  if (figlio == 0) {
    sospesa.Lascia();
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    ::dup2(::open(ingresso, O_RDONLY | O_CLOEXEC), STDIN_FILENO);
    ::dup2(::open(errori, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, S_IRUSR | S_IWUSR), STDERR_FILENO);
    ::execv(parole[0], parole);
    ::_exit(127);
  }
  custodito = figlio;
  struct sigaction azione {};
  azione.sa_handler = UccidiIlCustodito;
  ::sigaction(Uccidilo, &azione, nullptr);
  sospesa.Lascia();
  int esito = 127;
  for (;;) {
    int stato = 0;
    const pid_t finito = ::waitpid(-1, &stato, 0);
    if (finito == figlio) {
      custodito = 0;
      esito = WIFEXITED(stato) ? WEXITSTATUS(stato) : 128 + WTERMSIG(stato);
    } else if (finito < 0 && errno != EINTR) {
      ::_exit(esito);
    }
  }
}

std::vector<char*> Puntatori(Testi& testi) {
  std::vector<char*> puntatori;
  for (std::string& testo : testi) {
    puntatori.push_back(testo.data());
  }
  puntatori.push_back(nullptr);
  return puntatori;
}

fs::path PreparaCartella(const std::string& genere) {
  static int numero = 0; // a test may have two worlds of one kind
  fs::path base = test::OutputPath("affidabilita/prove") /
                  (genere + "-" + std::to_string(::getpid()) + "-" + std::to_string(++numero));
  fs::remove_all(base);
  for (const char* cartella : {"host/tmp", "host/programmi", "host/registro"}) {
    fs::create_directories(base / cartella);
  }
  fs::copy_file(test::ProgramPath("VB0001"), base / "host/programmi/VB0001");
  return base;
}

/// Waits until `condizione` holds; false when it does not within thirty seconds.
template <typename Condizione> bool Finche(Condizione condizione) {
  const auto termine = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  while (!condizione()) {
    if (std::chrono::steady_clock::now() > termine) {
      return false;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  return true;
}

} // namespace

Famiglia::Famiglia(const Testi& argomenti, const Testi& ambiente, const fs::path& ingresso, const fs::path& errori) {
  // env puts the variables in place: after the fork only async-signal-safe calls are made.
  Testi parole{"/usr/bin/env"};
  parole.insert(parole.end(), ambiente.begin(), ambiente.end());
  parole.insert(parole.end(), argomenti.begin(), argomenti.end());
  const auto puntatori = Puntatori(parole);
  const UccisioneSospesa sospesa;
  const pid_t guardiano = ::fork();
  if (guardiano < 0) {
    throw std::system_error(errno, std::generic_category(), "fork");
  }
  if (guardiano == 0) {
    Custodisci(puntatori.data(), ingresso.c_str(), errori.c_str(), sospesa);
  }
  guardiano_ = guardiano;
}

Famiglia::Famiglia(Famiglia&& altra) noexcept : guardiano_(std::exchange(altra.guardiano_, -1)), esito_(altra.esito_) {}

Famiglia::~Famiglia() {
  if (guardiano_ > 0) {
    ::kill(guardiano_, SIGKILL);
    static_cast<void>(Attendi());
  }
}

int Famiglia::Attendi() {
  int stato = 0;
  while (guardiano_ > 0 && ::waitpid(guardiano_, &stato, 0) < 0 && errno == EINTR) {
  }
  if (std::exchange(guardiano_, -1) > 0) {
    esito_ = WIFEXITED(stato) ? WEXITSTATUS(stato) : 128 + WTERMSIG(stato);
  }
  return *esito_;
}

std::optional<int> Famiglia::Esito() {
  siginfo_t finito{};
  const auto chi = static_cast<id_t>(guardiano_);
  if (guardiano_ > 0 && ::waitid(P_PID, chi, &finito, WEXITED | WNOHANG | WNOWAIT) == 0 && finito.si_pid > 0) {
    return Attendi();
  }
  return esito_;
}

void Famiglia::Uccidi() const {
  if (guardiano_ > 0) {
    ::kill(guardiano_, Uccidilo);
  }
}

Sistema::Sistema(std::string_view genere, const std::string& script)
    : Sistema(genere, test::databaseContext(genere).Create(FileText(SourcePath("demo/schema.sql")) + script)) {}

Sistema::Sistema(std::string_view genere, std::unique_ptr<test::TestDatabase> database)
    : genere_(genere), base_(PreparaCartella(genere_)), database_(std::move(database)) {
  Ricollega();
}

Sistema::~Sistema() {
  connessione_.reset();
  std::error_code ignorato;
  fs::remove_all(base_, ignorato);
}

SshServer& Sistema::UsaSsh(std::set<std::string> postazioni) {
  conSsh_ = std::move(postazioni);
  SshServer::Options opzioni;
  opzioni.environment = {"NEXARO_RADICE=" + Host().string()};
  opzioni.sftp = "'" + test::ProgramPath("sftp_radice").string() + "' '" + Host().string() + "'";
  ssh_ = std::make_unique<SshServer>(base_ / "ssh", opzioni);
  return *ssh_;
}

fs::path Sistema::Registro(const std::string& postazione) const {
  return base_ / (postazione + ".registro");
}

fs::path Sistema::Passi(const std::string& postazione) const {
  return base_ / (postazione + ".passi");
}

fs::path Sistema::Errori(const std::string& postazione) const {
  return base_ / (postazione + ".errori");
}

void Sistema::Ricollega(std::string_view istruzione) {
  connessione_ = std::make_unique<ado::Connection>();
  connessione_->ConnectionString = database_->ConnectionText();
  connessione_->Open();
  if (!istruzione.empty()) {
    connessione_->Execute(istruzione);
  }
}

void Sistema::Esegui(std::string_view script) {
  test::RunScript(database_->ConnectionText(), script);
}

Testi Sistema::Interroga(const std::string& sql, char separatore) {
  ado::Command comando;
  comando.ActiveConnection = connessione_.get();
  comando.CommandText = sql;
  ado::Recordset insieme = comando.Execute();
  Testi righe;
  for (; !insieme.Eof(); insieme.MoveNext()) {
    std::string riga;
    for (std::size_t colonna = 0; colonna < insieme.ColumnCount(); ++colonna) {
      riga += colonna == 0 ? "" : std::string(1, separatore);
      riga += insieme.ValueAt(colonna).value_or("<NULL>");
    }
    righe.push_back(std::move(riga));
  }
  return righe;
}

bool Sistema::SenzaSessioni() {
  if (ssh_ && !Finche([this] { return ssh_->Processes().size() == 1; })) {
    return false;
  }
  if (genere_ == "sqlite") {
    return true;
  }
  const std::string altre = genere_ == "mariadb"
                                ? "SELECT count(*) FROM information_schema.processlist WHERE db=DATABASE() AND "
                                  "id<>CONNECTION_ID()"
                                : "SELECT count(*) FROM pg_stat_activity WHERE datname=current_database() AND "
                                  "pid<>pg_backend_pid() AND backend_type='client backend' AND application_name<>'" +
                                      std::string(test::OwnSession) + "'";
  return Finche([&] { return Interroga(altre).at(0) == "0"; });
}

bool Sistema::Compare(const fs::path& file) {
  return Finche([&file] { return fs::exists(file); });
}

void Sistema::ScriviOpzioni(const fs::path& file, const std::string& utente) const {
  std::ofstream flusso(file, std::ios::trunc);
  fs::permissions(file, fs::perms::owner_read | fs::perms::owner_write);
  flusso << "-DB2SOURCE " << database_->source;
  if (!database_->user.empty()) {
    flusso << " -DB2USER " << (utente.empty() ? database_->user : utente) << " -DB2PASS " << database_->password;
  }
  flusso << " -DB2SCHEMA " << database_->schema << '\n';
}

Testi Sistema::Ambiente(const std::string& postazione) const {
  Testi ambiente{"NEXARO_POSTAZIONE=" + postazione, "NEXARO_CARTELLA_LOCALE=" + Locale(postazione).string()};
  Testi collegamento{"NEXARO_TRASPORTO=cartella", "NEXARO_RADICE=" + Host().string()};
  if (ssh_ && (conSsh_.empty() || conSsh_.contains(postazione))) {
    collegamento = ssh_->Environment();
    collegamento.push_back("NEXARO_PROGRAMMI=" + (Host() / "programmi").string());
  }
  ambiente.insert(ambiente.end(), collegamento.begin(), collegamento.end());
  return ambiente;
}

std::string Sistema::Amministra(const std::string& postazione, const Testi& argomenti, const std::string& utente,
                                const Testi& altro, const std::string& risposta) const {
  const fs::path ingresso = base_ / (postazione + ".opzioni");
  const fs::path uscita = base_ / (postazione + ".uscita");
  ScriviOpzioni(ingresso, utente);
  if (!risposta.empty()) {
    std::ofstream(ingresso, std::ios::app) << risposta << '\n';
  }
  Testi parole{"/bin/sh", "-c", "exec \"$@\" >\"$0\"", uscita.string(), test::ProgramPath("lumoscad").string()};
  parole.insert(parole.end(), argomenti.begin(), argomenti.end());
  Testi ambiente = Ambiente(postazione);
  ambiente.insert(ambiente.end(), altro.begin(), altro.end());
  const int stato = Famiglia(parole, ambiente, ingresso, Errori(postazione)).Attendi();
  return std::to_string(stato) + "\n" + FileText(uscita);
}

Famiglia Sistema::Avvia(const Lancio& lancio) const {
  const fs::path locale = Locale(lancio.postazione);
  fs::create_directories(locale);
  fs::permissions(locale, fs::perms::owner_all);
  const fs::path ingresso = base_ / (lancio.postazione + ".comandi");
  ScriviOpzioni(ingresso, lancio.utente);
  std::ofstream file(ingresso, std::ios::app);
  for (const std::string& comando : lancio.comandi) {
    file << comando << '\n';
  }
  file.close();
  Testi argomenti{test::ProgramPath("lumoscad_terminale").string(), Registro(lancio.postazione).string()};
  if (lancio.contaPassi || lancio.morte > 0) {
    argomenti.push_back(lancio.contaPassi ? Passi(lancio.postazione).string() : std::string());
    argomenti.push_back(std::to_string(lancio.morte));
  }
  Testi ambiente = Ambiente(lancio.postazione);
  ambiente.insert(ambiente.end(), lancio.ambiente.begin(), lancio.ambiente.end());
  if (!lancio.amministratore) {
    ambiente.emplace_back("LUMOSCAD_SENZA_AMMINISTRATORE=1");
  }
  return {argomenti, ambiente, ingresso, Errori(lancio.postazione)};
}

Testi Contenuto(const fs::path& cartella) {
  Testi nomi;
  for (const auto& voce : fs::directory_iterator(cartella)) {
    nomi.push_back(voce.path().filename().string());
  }
  std::sort(nomi.begin(), nomi.end());
  return nomi;
}

Testi LeggiRighe(const fs::path& file) {
  Testi righe;
  std::ifstream flusso(file, std::ios::binary);
  for (std::string riga; std::getline(flusso, riga);) {
    righe.push_back(std::move(riga));
  }
  return righe;
}

} // namespace lumoscad::test
