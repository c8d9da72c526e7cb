#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

namespace lumoscad::test {

/// The path for the data of a server, "`name`-<process>": in the build folder, or in the temporary one where the
/// server's user could not enter that.
[[nodiscard]] std::filesystem::path ServerDirectory(std::string_view name);

/// Makes `directory` anew, empty and private to the server's user.
void PrepareDirectory(const std::filesystem::path& directory, const std::string& user);

/// A file of `text` that only the server's user may read.
void WriteSecret(const std::filesystem::path& path, std::string_view text, const std::string& user);

/// Fills `data`, which does not exist yet, with what `create` makes there. That is done once for the build and kept as
/// `kind`; later servers get a copy, which is much quicker. `kind` names all that what is made depends on.
void FreshData(const std::filesystem::path& data, std::string_view kind, const std::string& user,
               const std::function<void()>& create);

/// The part of a `kind` that tells one way of creating data from another: by the program, as it is installed, and by
/// what it is told.
[[nodiscard]] std::string DigestOfCreation(const std::filesystem::path& program, const std::vector<std::string>& words);

/// A program that runs beside the test, as `user` when we are root, with its output appended to `log`. It ends with
/// the object, or with the process.
class ServerProcess {
 public:
  ServerProcess() = default;
  /// Starts the program; `endSignal` is what asks it to end at once.
  ServerProcess(std::vector<std::string> words, const std::filesystem::path& log, const std::string& user,
                int endSignal);
  ServerProcess(const ServerProcess&) = delete;
  ServerProcess& operator=(const ServerProcess&) = delete;
  ServerProcess(ServerProcess&& other) noexcept;
  ServerProcess& operator=(ServerProcess&& other) noexcept;
  ~ServerProcess() { Stop(); }

  /// The program's process, or -1 when none runs.
  [[nodiscard]] pid_t Id() const noexcept { return process_; }
  /// False once the program has ended.
  [[nodiscard]] bool Runs();
  /// Waits for the end; true when the program reported success.
  [[nodiscard]] bool Succeeds();
  /// Asks the program to end and waits for it; kills it after five seconds.
  void Stop();
  /// Kills the program without warning, as a crash would.
  void Kill();
  /// Kills the program together with the processes that it has made, as the loss of its machine would.
  void KillAll();

 private:
  pid_t process_ = -1;
  int endSignal_ = 0;
};

/// The end of what a program wrote to `log`, for the message of its failure.
[[nodiscard]] std::string EndOf(const std::filesystem::path& log);

/// Has `start` start `server` on a loopback port that was free a moment ago. Somebody else may take the port in
/// between, so `start` is called with another one when it raises, three times at the most.
void StartOnFreePort(ServerProcess& server, const std::function<void(int port)>& start);

/// Waits until `reached`; raises after a minute, and then names `what`.
void Await(const char* what, const std::function<bool()>& reached);

/// Asks until `ask` no longer raises an RuntimeError; after a minute, or once the server has ended, stops the server
/// and lets the error out. Any other error comes out at once.
void WaitUntilReady(ServerProcess& server, const std::function<void()>& ask);

} // namespace lumoscad::test
