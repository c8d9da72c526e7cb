#include "support/SshServer.hpp"

#include "support/Files.hpp"
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

namespace lumoscad::test {

namespace fs = std::filesystem;

namespace {

constexpr const char* Sshd = "/usr/sbin/sshd";
constexpr const char* SshKeygen = "/usr/bin/ssh-keygen";
/// Where the server that root runs changes its root to before a client is known; the package makes it at boot.
constexpr const char* PrivilegeDirectory = "/run/sshd";
constexpr auto Step = std::chrono::milliseconds(10);
constexpr auto Starting = std::chrono::seconds(30);
constexpr int PortsTried = 20;

pid_t Launch(std::vector<std::string> words, const fs::path& output) {
  std::vector<char*> arguments;
  arguments.reserve(words.size() + 1);
  for (auto& word : words) {
    arguments.push_back(word.data());
  }
  arguments.push_back(nullptr);
  const pid_t child = ::fork();
  if (child < 0) {
    throw std::system_error(errno, std::generic_category(), "fork");
  }
  if (child == 0) {
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    // The runner may leave these ignored or blocked, which the server would hand on to its programs.
    ::signal(SIGPIPE, SIG_DFL);
    ::signal(SIGCHLD, SIG_DFL);
    const int written = ::open(output.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    ::dup2(::open("/dev/null", O_RDONLY | O_CLOEXEC), STDIN_FILENO);
    ::dup2(written, STDOUT_FILENO);
    ::dup2(written, STDERR_FILENO);
    ::execv(arguments.front(), arguments.data());
    ::_exit(127);
  }
  return child;
}

/// Runs a program to its end; its standard output and error go to `output`.
void Run(const std::vector<std::string>& words, const fs::path& output) {
  int status = 0;
  const pid_t child = Launch(words, output);
  while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
    throw std::runtime_error(words.front() + " failed, see " + output.string());
  }
}

std::string UserName() {
  const passwd* entry = ::getpwuid(::geteuid());
  if (entry == nullptr) {
    throw std::runtime_error("the user of the test has no name");
  }
  return entry->pw_name;
}

std::string InQuotes(const std::string& text) {
  std::string quoted = "\"";
  for (const char character : text) {
    quoted += character == '"' || character == '\\' ? std::string("\\") + character : std::string(1, character);
  }
  return quoted + "\"";
}

/// The parent of a process; 0 where there is none any more.
pid_t Parent(const fs::path& process) {
  const auto status = FileText(process / "stat");
  // The name of the program stands in brackets and may hold anything.
  const auto finish = status.rfind(')');
  if (finish == std::string::npos) {
    return 0;
  }
  std::istringstream fields(status.substr(finish + 1));
  char letter = 0;
  pid_t parent = 0;
  fields >> letter >> parent;
  return parent;
}

void Kill(const std::vector<pid_t>& processes) {
  for (const pid_t process : processes) {
    ::kill(process, SIGKILL);
  }
}

} // namespace

std::vector<pid_t> Descendants(pid_t ancestor) {
  std::vector<std::pair<pid_t, pid_t>> all; // process, parent
  for (const auto& entry : fs::directory_iterator("/proc")) {
    const auto name = entry.path().filename().string();
    if (name.find_first_not_of("0123456789") == std::string::npos) {
      all.emplace_back(static_cast<pid_t>(std::stol(name)), Parent(entry.path()));
    }
  }
  std::vector<pid_t> found{ancestor};
  for (std::size_t index = 0; index < found.size(); ++index) {
    for (const auto& [process, parent] : all) {
      if (parent == found[index]) {
        found.push_back(process);
      }
    }
  }
  found.erase(found.begin());
  return found;
}

bool SshServer::Available() {
  return fs::exists(Sshd) && fs::exists(SshKeygen);
}

SshServer::SshServer(const fs::path& directory) : SshServer(directory, Options()) {}

SshServer::SshServer(const fs::path& directory, Options options)
    : directory_(fs::absolute(directory)), options_(std::move(options)), user_(UserName()) {
  fs::remove_all(directory_);
  fs::create_directories(directory_);
  fs::permissions(directory_, fs::perms::owner_all);
  fs::create_directory(directory_ / "casa");
  if (::geteuid() == 0 && ::mkdir(PrivilegeDirectory, 0755) != 0 && errno != EEXIST) {
    throw std::system_error(errno, std::generic_category(), PrivilegeDirectory);
  }
  GenerateKey(Key(), "ed25519");
  GenerateKey(ForeignKey(), "ed25519");
  GenerateKey(directory_ / "host", options_.hostKeyType);
  fs::copy_file(Key().string() + ".pub", Authorized());
  for (int attempt = 0; process_ < 0 && attempt < PortsTried; ++attempt) {
    port_ = FreePort();
    Start();
  }
  if (process_ < 0) {
    throw std::runtime_error("sshd does not start, see " + Log().string());
  }
  MakeKnown(port_);
}

SshServer::~SshServer() {
  Stop();
  std::error_code isIgnored;
  fs::remove_all(directory_, isIgnored);
}

void SshServer::GenerateKey(const fs::path& file, const std::string& type) const {
  fs::remove(file);
  fs::remove(file.string() + ".pub");
  Run({SshKeygen, "-q", "-t", type, "-N", "", "-C", "prova", "-f", file.string()}, directory_ / "ssh-keygen.log");
}

void SshServer::WriteConfiguration() const {
  std::ofstream file(directory_ / "sshd_config");
  file << "ListenAddress " << Address() << "\nPort " << port_ << "\nHostKey "
       << InQuotes((directory_ / "host").string()) << "\nPidFile none\nAuthorizedKeysFile "
       << InQuotes(Authorized().string()) << "\nAllowUsers " << user_
       << "\nPermitRootLogin prohibit-password\nPubkeyAuthentication yes\nPasswordAuthentication no\n"
          "KbdInteractiveAuthentication no\nUsePAM no\nUseDNS no\nStrictModes no\nPrintMotd no\nPrintLastLog no\n"
          "X11Forwarding no\nMaxStartups 100\nLogLevel VERBOSE\nSubsystem sftp "
       << options_.sftp << '\n';
  // Only the first line of this setting counts. What the user's own shell does at a start is left out.
  file << "SetEnv " << InQuotes("HOME=" + (directory_ / "casa").string());
  for (const auto& entry : options_.environment) {
    file << ' ' << InQuotes(entry);
  }
  file << '\n';
  for (const auto& line : options_.rows) {
    file << line << '\n';
  }
}

void SshServer::Start() {
  WriteConfiguration();
  process_ = Launch({Sshd, "-D", "-e", "-f", (directory_ / "sshd_config").string()}, Log());
  const auto finish = std::chrono::steady_clock::now() + Starting;
  while (!Ready()) {
    if (::waitpid(process_, nullptr, WNOHANG) == process_) {
      process_ = -1;
      return;
    }
    if (std::chrono::steady_clock::now() > finish) {
      Stop();
      return;
    }
    std::this_thread::sleep_for(Step);
  }
}

bool SshServer::Ready() {
  const auto socket = Attach(port_);
  std::array<char, 4> begin{};
  return socket.Opened() &&
         ::recv(socket.Number(), begin.data(), begin.size(), MSG_WAITALL) == static_cast<ssize_t>(begin.size()) &&
         std::string_view(begin.data(), begin.size()) == "SSH-";
}

void SshServer::Stop() {
  if (process_ <= 0) {
    return;
  }
  // The server goes first, so that no session is added to those that are found.
  ::kill(process_, SIGSTOP);
  const auto sessions = Descendants(process_);
  ::kill(process_, SIGKILL);
  ::waitpid(process_, nullptr, 0);
  process_ = -1;
  Kill(sessions);
}

void SshServer::CutSessions() {
  Kill(Descendants(process_));
}

std::vector<pid_t> SshServer::Processes() const {
  auto processes = Descendants(process_);
  processes.push_back(process_);
  return processes;
}

void SshServer::Restart() {
  Stop();
  // Sessions that have just been killed may hold the port for a moment.
  for (int attempt = 0; process_ < 0 && attempt < PortsTried; ++attempt) {
    Start();
  }
  if (process_ < 0) {
    throw std::runtime_error("sshd does not start again, see " + Log().string());
  }
}

void SshServer::ChangeHostKey(const std::string& type) {
  Stop();
  GenerateKey(directory_ / "host", type);
  Restart();
}

void SshServer::Change(Options options) {
  options_ = std::move(options);
  Restart();
}

std::string SshServer::HostPublicKey() const {
  std::istringstream fields(FileText(directory_ / "host.pub"));
  std::string type;
  std::string key;
  fields >> type >> key;
  return type + " " + key;
}

std::string SshServer::Hash() const {
  const auto file = directory_ / "impronta";
  fs::remove(file);
  Run({SshKeygen, "-l", "-E", "sha256", "-f", (directory_ / "host.pub").string()}, file);
  std::istringstream fields(FileText(file));
  std::string length;
  std::string fingerprint;
  fields >> length >> fingerprint;
  return fingerprint;
}

void SshServer::MakeKnown(int port) const {
  std::ofstream(KnownHosts(), std::ios::app) << "[" << Address() << "]:" << port << " " << HostPublicKey() << '\n';
}

std::vector<std::string> SshServer::Environment(int port) const {
  return {"NEXARO_TRASPORTO=ssh", "NEXARO_SSH_PORTA=" + std::to_string(port == 0 ? port_ : port),
          "NEXARO_SSH_UTENTE=" + user_, "NEXARO_SSH_CHIAVE=" + Key().string(),
          "NEXARO_SSH_NOTI=" + KnownHosts().string()};
}

} // namespace lumoscad::test
