#include "support/ServerProcess.hpp"

#include "platform/RuntimeError.hpp"
#include "support/Files.hpp"
#include "support/Loopback.hpp"
#include "support/Paths.hpp"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <exception>
#include <fcntl.h>
#include <fstream>
#include <pwd.h>
#include <stdexcept>
#include <sys/file.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <utility>

namespace lumoscad::test {

namespace fs = std::filesystem;

namespace {

void HandOver(const fs::path& path, const std::string& user) {
  if (geteuid() != 0) {
    return;
  }
  const passwd* owner = getpwnam(user.c_str());
  if (owner == nullptr || chown(path.c_str(), owner->pw_uid, owner->pw_gid) != 0) {
    throw std::runtime_error("cannot hand " + path.string() + " to the user " + user);
  }
}

std::vector<std::string> AsUser(const std::string& user, int endSignal) {
  const passwd* owner = getpwnam(user.c_str());
  if (owner == nullptr) {
    throw std::runtime_error("no such user: " + user);
  }
  return {"/usr/bin/setpriv",
          "--reuid=" + std::to_string(owner->pw_uid),
          "--regid=" + std::to_string(owner->pw_gid),
          "--clear-groups",
          std::string("--pdeathsig=") + sigabbrev_np(endSignal),
          "--"};
}

/// True when every directory on the way can be entered by everybody.
bool Open(fs::path directory) {
  std::error_code error;
  for (;; directory = directory.parent_path()) {
    if ((fs::status(directory, error).permissions() & fs::perms::others_exec) == fs::perms::none) {
      return false;
    }
    if (directory == directory.root_path()) {
      return true;
    }
  }
}

} // namespace

fs::path ServerDirectory(std::string_view name) {
  const fs::path here = OutputPath("servers");
  fs::create_directories(here);
  return (geteuid() != 0 || Open(here) ? here : fs::temp_directory_path()) /
         (std::string(name) + "-" + std::to_string(getpid()));
}

void PrepareDirectory(const fs::path& directory, const std::string& user) {
  fs::remove_all(directory);
  fs::create_directories(directory);
  fs::permissions(directory, fs::perms::owner_all);
  HandOver(directory, user);
}

void WriteSecret(const fs::path& path, std::string_view text, const std::string& user) {
  std::ofstream file(path);
  fs::permissions(path, fs::perms::owner_read | fs::perms::owner_write);
  HandOver(path, user);
  file << text;
}

void FreshData(const fs::path& data, std::string_view kind, const std::string& user,
               const std::function<void()>& create) {
  const fs::path kept = OutputPath("fresh") / kind;
  fs::create_directories(kept.parent_path());
  // It ends with the process, however that ends; whoever comes meanwhile waits.
  const int lock = ::open((kept.string() + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
  if (lock < 0 || flock(lock, LOCK_EX) != 0) {
    throw std::system_error(errno, std::generic_category(), kept.string() + ".lock");
  }
  if (!fs::exists(kept)) {
    create();
    const fs::path copy = kept.string() + ".new";
    fs::remove_all(copy);
    fs::copy(data, copy, fs::copy_options::recursive);
    fs::rename(copy, kept);
    close(lock);
    return;
  }
  close(lock);
  fs::copy(kept, data, fs::copy_options::recursive);
  HandOver(data, user);
  for (const auto& entry : fs::recursive_directory_iterator(data)) {
    HandOver(entry.path(), user);
  }
}

std::string DigestOfCreation(const fs::path& program, const std::vector<std::string>& words) {
  std::string all = std::to_string(fs::last_write_time(program).time_since_epoch().count());
  for (const std::string& word : words) {
    all += '\n' + word;
  }
  return std::to_string(std::hash<std::string>{}(all));
}

ServerProcess::ServerProcess(std::vector<std::string> words, const fs::path& log, const std::string& user,
                             int endSignal)
    : endSignal_(endSignal) {
  if (geteuid() == 0) {
    const auto prefix = AsUser(user, endSignal);
    words.insert(words.begin(), prefix.begin(), prefix.end());
  }
  std::vector<char*> arguments;
  arguments.reserve(words.size() + 1);
  for (std::string& word : words) {
    arguments.push_back(word.data());
  }
  arguments.push_back(nullptr);
  process_ = fork();
  if (process_ < 0) {
    throw std::system_error(errno, std::generic_category(), "fork");
  }
  if (process_ == 0) {
    prctl(PR_SET_PDEATHSIG, endSignal);
    const int output = ::open(log.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    dup2(output, STDOUT_FILENO);
    dup2(output, STDERR_FILENO);
    execv(arguments.front(), arguments.data());
    _exit(127);
  }
}

ServerProcess::ServerProcess(ServerProcess&& other) noexcept
    : process_(std::exchange(other.process_, -1)), endSignal_(other.endSignal_) {}

ServerProcess& ServerProcess::operator=(ServerProcess&& other) noexcept {
  std::swap(process_, other.process_);
  std::swap(endSignal_, other.endSignal_);
  return *this;
}

bool ServerProcess::Runs() {
  if (process_ > 0 && waitpid(process_, nullptr, WNOHANG) == process_) {
    process_ = -1;
  }
  return process_ > 0;
}

bool ServerProcess::Succeeds() {
  int status = 0;
  const bool ended = process_ > 0 && waitpid(std::exchange(process_, -1), &status, 0) > 0;
  return ended && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

std::string EndOf(const fs::path& log) {
  constexpr std::size_t Longest = 2000;
  const std::string text = FileText(log);
  return text.substr(text.size() - std::min(text.size(), Longest));
}

void ServerProcess::Stop() {
  if (process_ <= 0) {
    return;
  }
  ::kill(process_, endSignal_);
  const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(5);
  while (Runs() && std::chrono::steady_clock::now() < limit) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  Kill();
}

void ServerProcess::Kill() {
  if (process_ <= 0) {
    return;
  }
  ::kill(process_, SIGKILL);
  waitpid(std::exchange(process_, -1), nullptr, 0);
}

void ServerProcess::KillAll() {
  if (process_ <= 0) {
    return;
  }
  // Stopped, the program makes no more of them.
  ::kill(process_, SIGSTOP);
  const std::string id = std::to_string(process_);
  std::ifstream children("/proc/" + id + "/task/" + id + "/children");
  for (pid_t child = 0; children >> child;) {
    ::kill(child, SIGKILL);
  }
  Kill();
}

void Await(const char* what, const std::function<bool()>& reached) {
  const auto limit = std::chrono::steady_clock::now() + std::chrono::minutes(1);
  while (!reached()) {
    if (std::chrono::steady_clock::now() > limit) {
      throw std::runtime_error(std::string(what) + ": not within a minute");
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
}

void StartOnFreePort(ServerProcess& server, const std::function<void(int port)>& start) {
  for (int attempt = 1; !server.Runs(); ++attempt) {
    const int port = FreePort();
    try {
      start(port);
    } catch (const std::exception&) {
      server.Stop();
      if (attempt == 3) {
        throw;
      }
    }
  }
}

void WaitUntilReady(ServerProcess& server, const std::function<void()>& ask) {
  const auto limit = std::chrono::steady_clock::now() + std::chrono::minutes(1);
  for (;;) {
    try {
      ask();
      return;
    } catch (const RuntimeError&) {
      if (!server.Runs() || std::chrono::steady_clock::now() > limit) {
        server.Stop();
        throw;
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
  }
}

} // namespace lumoscad::test
