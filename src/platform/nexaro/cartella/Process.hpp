#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad::nexaro {

/// What is to be run. Nothing of it is interpreted by a shell.
struct Process {
  std::string executable;               ///< path of the program
  std::vector<std::string> arguments;   ///< the arguments after the program's name, empty ones included
  std::vector<std::string> environment; ///< "NAME=value" entries that replace or extend the caller's environment
  std::string directory;                ///< working directory
  std::chrono::milliseconds timeout{};  ///< the longest time that the program may take
  std::size_t maxOutput = 0;            ///< bytes of standard output after which the program is stopped
  std::size_t maxErrors = 0;            ///< bytes of standard error that are kept; the rest is dropped
  /// Whether the output of a program that exited with status 0 is all that is to be expected; where it is not set, any
  /// output is.
  std::function<bool(std::string_view output)> complete{};
  bool* started = nullptr; ///< where given, set right before the program is started
};

/// How a program ended.
enum class ProcessEnd {
  Exited,         ///< it exited; `state` is its exit status
  Signal,         ///< a signal killed it; `state` is the signal's number
  NotStarted,     ///< it could not be started; `state` is the `errno`
  TimedOut,       ///< it was stopped because it took too long
  ExcessiveOutput ///< it was stopped because it wrote too much
};

/// The outcome of a program.
struct ProcessOutcome {
  ProcessEnd finish = ProcessEnd::Exited;
  int state = 0;
  std::string output; ///< standard output, at most `maxOutput` bytes
  std::string errors; ///< the beginning of standard error
};

/// Runs a program with an empty standard input and waits for its end and for the end of its output. Where another
/// process holds the output open, it is enough that the program ended and that its output has been silent for
/// `Silence`; of a program that exited with status 0 it must be complete too. A program that has to be stopped is
/// killed with its whole process group. Returns within `timeout` and twice `Grace`. Does not depend on how the calling
/// program treats SIGCHLD and SIGPIPE, nor on its other threads' forks. Raises a run-time error when the system refuses
/// a pipe or a process.
[[nodiscard]] ProcessOutcome Run(const Process& process);

} // namespace lumoscad::nexaro
