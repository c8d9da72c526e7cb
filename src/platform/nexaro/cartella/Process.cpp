#include "platform/nexaro/cartella/Process.hpp"

#include "platform/base/Descriptor.hpp"
#include "platform/nexaro/Deadline.hpp"
#include "platform/nexaro/LinkErrors.hpp"
#include "platform/nexaro/cartella/Closing.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <string_view>
#include <sys/wait.h>

namespace lumoscad::nexaro {

namespace {

constexpr std::string_view Starting = "Avvio del programma";

/// What the supervisor reports through its pipe: one write, shorter than PIPE_BUF, hence whole.
struct Report {
  ProcessEnd finish;
  int state;
};

struct Pipe {
  base::Descriptor reading;
  base::Descriptor writing;
};

/// Takes a new descriptor and keeps clear of 0 to 2, which a calling program may have closed.
base::Descriptor AboveTwo(int number) {
  if (number < 0) {
    throw SystemError(Starting, errno);
  }
  base::Descriptor original(number);
  if (number > 2) {
    return original;
  }
  return AboveTwo(::fcntl(number, F_DUPFD_CLOEXEC, 3));
}

Pipe MakePipe() {
  std::array<int, 2> numbers{-1, -1};
  if (::pipe2(numbers.data(), O_CLOEXEC) != 0) {
    throw SystemError(Starting, errno);
  }
  Pipe pipe{base::Descriptor(numbers[0]), base::Descriptor(numbers[1])};
  pipe.reading = AboveTwo(pipe.reading.Release());
  pipe.writing = AboveTwo(pipe.writing.Release());
  return pipe;
}

std::vector<std::string> ProgramEnvironment(const std::vector<std::string>& additions) {
  std::vector<std::string> entries;
  for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
    const std::string_view text(*entry);
    const auto name = text.substr(0, text.find('='));
    bool replaced = false;
    for (const auto& addition : additions) {
      replaced = replaced || std::string_view(addition).substr(0, addition.find('=')) == name;
    }
    if (!replaced) {
      entries.emplace_back(text);
    }
  }
  entries.insert(entries.end(), additions.begin(), additions.end());
  return entries;
}

std::vector<char*> Pointers(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (auto& text : texts) {
    pointers.push_back(text.data());
  }
  pointers.push_back(nullptr);
  return pointers;
}

/// Everything that the two children need, prepared before the fork: afterwards only async-signal-safe calls are made.
struct Prepared {
  const char* executable;
  const char* directory;
  char* const* arguments;
  char* const* environment;
  int input;
  int output;
  int errors;
  int report;
  int dismissal;
  std::array<int, 5> kept; ///< the five descriptors above, in ascending order
};

void Tell(int descriptor, ProcessEnd finish, int state) {
  const Report report{finish, state};
  while (::write(descriptor, &report, sizeof report) < 0 && errno == EINTR) {
  }
}

void RestoreSignals() {
  struct sigaction standard {};
  standard.sa_handler = SIG_DFL;
  for (int signal = 1; signal < NSIG; ++signal) {
    ::sigaction(signal, &standard, nullptr);
  }
}

[[noreturn]] void BecomeProgram(const Prepared& data) {
  sigset_t nobody;
  ::sigemptyset(&nobody);
  const bool ready = ::dup2(data.input, 0) == 0 && ::dup2(data.output, 1) == 1 && ::dup2(data.errors, 2) == 2 &&
                     ::chdir(data.directory) == 0;
  if (ready) {
    ::sigprocmask(SIG_SETMASK, &nobody, nullptr);
    ::execve(data.executable, data.arguments, data.environment);
  }
  Tell(data.report, ProcessEnd::NotStarted, errno);
  ::_exit(127);
}

/// Waits for the program's end and tells how it ended.
void Wait(const Prepared& data, pid_t child) {
  int state = 0;
  while (::waitpid(child, &state, 0) < 0 && errno == EINTR) {
  }
  if (WIFEXITED(state)) {
    Tell(data.report, ProcessEnd::Exited, WEXITSTATUS(state));
  } else {
    Tell(data.report, ProcessEnd::Signal, WTERMSIG(state));
  }
}

/// The supervisor stands between caller and program, so that the program's status reaches the caller even where the
/// calling program ignores SIGCHLD or reaps every child. It leads the process group and outlives the program until the
/// caller ends it or is gone: so neither number can pass to strangers while the caller may still kill it.
[[noreturn]] void Supervise(const Prepared& data) {
  ::setpgid(0, 0);
  RestoreSignals();
  // A descriptor that the calling program left inheritable is none of the program's business, and an end of a pipe that
  // lives on in a supervisor keeps its reader waiting. The five that stay are closed by the program's start.
  CloseAllBut(data.kept);
  const auto child = ::_Fork();
  if (child == 0) {
    BecomeProgram(data);
  }
  const auto code = errno;
  ::close(data.output);
  ::close(data.errors);
  if (child < 0) {
    Tell(data.report, ProcessEnd::NotStarted, code);
  } else {
    Wait(data, child);
  }
  ::close(data.report);
  char nothing = 0;
  while (::read(data.dismissal, &nothing, 1) < 0 && errno == EINTR) {
  }
  ::_exit(0);
}

/// The caller's end of a running supervisor.
class Supervisor {
 public:
  Supervisor(pid_t pid, base::Descriptor dismissal) : pid_(pid), dismissal_(std::move(dismissal)) {}
  Supervisor(const Supervisor&) = delete;
  Supervisor& operator=(const Supervisor&) = delete;
  ~Supervisor() {
    // Its task is over, and the end of the pipe that would tell it so may live on in a process that another thread of
    // the caller has forked.
    if (!killed_) {
      ::kill(pid_, SIGKILL);
    }
    dismissal_.Close();
    Collect();
  }

  void Kill() {
    ::kill(-pid_, SIGKILL);
    ::kill(pid_, SIGKILL);
    killed_ = true;
  }

 private:
  /// Where the calling program ignores SIGCHLD or reaps by itself, the answer is ECHILD. A process that the system
  /// cannot end now, because a disk or a network does not answer it, is left to it.
  void Collect() const {
    const timespec pause{0, 500'000};
    const auto limit = Clock::now() + Grace;
    for (;;) {
      const auto collected = ::waitpid(pid_, nullptr, WNOHANG);
      if (collected > 0 || (collected < 0 && errno != EINTR) || Clock::now() >= limit) {
        return;
      }
      ::nanosleep(&pause, nullptr);
    }
  }

  pid_t pid_;
  base::Descriptor dismissal_;
  bool killed_ = false;
};

/// Reads what is there; false at the end of the stream.
template <typename Collector> bool Drain(const base::Descriptor& source, Collector collect) {
  std::array<char, 65536> buffer;
  const auto count = ::read(source.Number(), buffer.data(), buffer.size());
  if (count < 0) {
    return errno == EINTR || errno == EAGAIN;
  }
  collect(std::string_view(buffer.data(), static_cast<std::size_t>(count)));
  return count > 0;
}

/// The three streams of a running program.
struct Streams {
  base::Descriptor output;
  base::Descriptor errors;
  base::Descriptor report;
};

/// What has been heard of a program, and when to stop listening.
class Listening {
 public:
  Listening(const Process& process, Streams streams, ProcessOutcome& outcome)
      : process_(process), streams_(std::move(streams)), outcome_(outcome), deadline_(Clock::now() + process.timeout) {}

  /// Listens until the program and its output have come to their end, or have to be given up; false in that case.
  bool Run() {
    while (!Finished()) {
      const auto look = looks_.Next(deadline_);
      if (look && Look(*look)) {
        if (outcome_.output.size() > process_.maxOutput) {
          outcome_.output.resize(process_.maxOutput);
          outcome_.finish = ProcessEnd::ExcessiveOutput;
          return false;
        }
        continue;
      }
      const bool timedOut = TimeLeft(deadline_).count() == 0;
      if (Reported() && (timedOut || TimeLeft(silentAt_).count() == 0)) {
        silentAt_ = Clock::now() + Silence;
        if (Enough()) {
          break;
        }
      }
      if (timedOut) {
        outcome_.finish = ProcessEnd::TimedOut;
        return false;
      }
    }
    Conclude();
    return true;
  }

  /// The supervisor has told how the program ended, or has gone without a word.
  [[nodiscard]] bool Reported() const { return reports_.size() >= sizeof(Report) || !streams_.report.Opened(); }

 private:
  [[nodiscard]] bool Finished() const {
    return Reported() &&
           (ReadSoFar().finish == ProcessEnd::NotStarted || (!streams_.output.Opened() && !streams_.errors.Opened()));
  }

  /// Whether the end of the output can be done without.
  [[nodiscard]] bool Enough() const {
    const auto report = ReadSoFar();
    const bool succeeded = report.finish == ProcessEnd::Exited && report.state == 0;
    return !succeeded || !process_.complete || process_.complete(outcome_.output);
  }

  /// Waits at most `millis` and takes what there is; false when there is nothing.
  bool Look(int millis) {
    if (Reported()) {
      millis = std::min(millis, static_cast<int>(TimeLeft(silentAt_).count()));
    }
    std::array<pollfd, 3> polled{{{streams_.output.Number(), POLLIN, 0},
                                  {streams_.errors.Number(), POLLIN, 0},
                                  {streams_.report.Number(), POLLIN, 0}}};
    if (::poll(polled.data(), polled.size(), millis) <= 0) {
      return false;
    }
    Take(polled);
    silentAt_ = Clock::now() + Silence;
    return true;
  }

  void Take(const std::array<pollfd, 3>& polled) {
    if (polled[0].revents != 0 &&
        !Drain(streams_.output, [this](std::string_view data) { outcome_.output.append(data); })) {
      streams_.output.Close();
    }
    if (polled[1].revents != 0 && !Drain(streams_.errors, [this](std::string_view data) {
          outcome_.errors.append(data.substr(0, process_.maxErrors - outcome_.errors.size()));
        })) {
      streams_.errors.Close();
    }
    if (polled[2].revents != 0 && !Drain(streams_.report, [this](std::string_view data) { reports_.append(data); })) {
      streams_.report.Close();
    }
  }

  /// The first report counts: a program that could not start reports that before its supervisor reports its exit.
  [[nodiscard]] Report ReadSoFar() const {
    Report report{ProcessEnd::Signal, SIGKILL};
    if (reports_.size() >= sizeof report) {
      reports_.copy(reinterpret_cast<char*>(&report), sizeof report);
    }
    return report;
  }

  void Conclude() {
    const auto report = ReadSoFar();
    outcome_.finish = report.finish;
    outcome_.state = report.state;
  }

  const Process& process_;
  Streams streams_;
  ProcessOutcome& outcome_;
  std::string reports_;
  Deadline deadline_;
  Deadline silentAt_; ///< when the output of a program that has ended will have been silent for long enough
  Looks looks_;
};

/// Forks with every signal blocked, so that no handler of the calling program runs in the child.
pid_t ForkSupervisor(const Prepared& data) {
  sigset_t all;
  sigset_t previous;
  ::sigfillset(&all);
  ::pthread_sigmask(SIG_SETMASK, &all, &previous);
  const auto pid = ::fork();
  if (pid == 0) {
    Supervise(data);
  }
  const auto code = errno;
  ::pthread_sigmask(SIG_SETMASK, &previous, nullptr);
  if (pid < 0) {
    throw SystemError(Starting, code).WithOutcome(TransactionOutcome::NotApplied);
  }
  // Both sides set the group: whichever comes first, a kill finds it.
  ::setpgid(pid, pid);
  return pid;
}

} // namespace

ProcessOutcome Run(const Process& process) {
  std::vector<std::string> texts{process.executable};
  texts.insert(texts.end(), process.arguments.begin(), process.arguments.end());
  auto variables = ProgramEnvironment(process.environment);
  const auto arguments = Pointers(texts);
  const auto environment = Pointers(variables);
  auto input = AboveTwo(::open("/dev/null", O_RDONLY | O_CLOEXEC));
  auto output = MakePipe();
  auto errors = MakePipe();
  auto report = MakePipe();
  auto dismissal = MakePipe();
  Prepared data{process.executable.c_str(),
                process.directory.c_str(),
                arguments.data(),
                environment.data(),
                input.Number(),
                output.writing.Number(),
                errors.writing.Number(),
                report.writing.Number(),
                dismissal.reading.Number(),
                {}};
  data.kept = {data.input, data.output, data.errors, data.report, data.dismissal};
  std::sort(data.kept.begin(), data.kept.end());
  ProcessOutcome outcome;
  if (process.started != nullptr) {
    *process.started = true;
  }
  Supervisor supervisor(ForkSupervisor(data), std::move(dismissal.writing));
  output.writing.Close();
  errors.writing.Close();
  report.writing.Close();
  dismissal.reading.Close();
  Listening listening(process, {std::move(output.reading), std::move(errors.reading), std::move(report.reading)},
                      outcome);
  try {
    if (!listening.Run()) {
      supervisor.Kill();
    }
  } catch (...) {
    // Nobody would watch over the program any more. One that has ended has nothing but what it left behind on purpose.
    if (!listening.Reported()) {
      supervisor.Kill();
    }
    throw;
  }
  return outcome;
}

} // namespace lumoscad::nexaro
