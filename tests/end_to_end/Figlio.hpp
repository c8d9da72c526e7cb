#pragma once

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <sys/types.h>
#include <thread>
#include <vector>

namespace lumoscad::test {

/// Waits until `condizione` holds; false when it does not within `limite`.
template <typename Condizione>
bool Finche(Condizione condizione, std::chrono::milliseconds limite = std::chrono::seconds(30)) {
  const auto fine = std::chrono::steady_clock::now() + limite;
  while (!condizione()) {
    if (std::chrono::steady_clock::now() > fine) {
      return false;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(15));
  }
  return true;
}

/// Runs a program found on the search path to its end and returns its standard output without the final line break;
/// nothing when it failed.
[[nodiscard]] std::optional<std::string> Comando(const std::vector<std::string>& argomenti,
                                                 const std::vector<std::string>& ambiente = {});

/// A program that runs beside the test and ends with the object, or with the test.
class Figlio {
 public:
  /// `ambiente` holds "NAME=value" entries on top of the test's own. Standard input is read from a file, standard
  /// output and standard error are written to files.
  Figlio(const std::vector<std::string>& argomenti, const std::vector<std::string>& ambiente,
         const std::filesystem::path& ingresso, const std::filesystem::path& uscita,
         const std::filesystem::path& errori);
  Figlio(const Figlio&) = delete;
  Figlio& operator=(const Figlio&) = delete;
  ~Figlio();

  [[nodiscard]] bool Vivo();
  /// The exit status once the program has ended; 128 and the signal's number where one killed it; nothing when it is
  /// still running at the end of the wait.
  [[nodiscard]] std::optional<int> Attendi(std::chrono::milliseconds limite = std::chrono::seconds(30));

 private:
  pid_t processo_ = -1;
  std::optional<int> stato_;
};

} // namespace lumoscad::test
