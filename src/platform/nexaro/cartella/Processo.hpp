#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad::nexaro {

/// What is to be run. Nothing of it is interpreted by a shell.
struct Processo {
  std::string eseguibile;             ///< path of the program
  std::vector<std::string> argomenti; ///< the arguments after the program's name, empty ones included
  std::vector<std::string> ambiente;  ///< "NAME=value" entries that replace or extend the caller's environment
  std::string cartella;               ///< working directory
  std::chrono::milliseconds attesa{}; ///< the longest time that the program may take
  std::size_t massimoUscita = 0;      ///< bytes of standard output after which the program is stopped
  std::size_t massimoErrori = 0;      ///< bytes of standard error that are kept; the rest is dropped
  /// Whether the output of a program that exited with status 0 is all that is to be expected; where it is not set, any
  /// output is.
  std::function<bool(std::string_view uscita)> completa{};
  bool* avviato = nullptr; ///< where given, set right before the program is started
};

/// How a program ended.
enum class FineProcesso {
  Uscito,         ///< it exited; `stato` is its exit status
  Segnale,        ///< a signal killed it; `stato` is the signal's number
  NonAvviato,     ///< it could not be started; `stato` is the `errno`
  Scaduto,        ///< it was stopped because it took too long
  UscitaEccessiva ///< it was stopped because it wrote too much
};

/// The outcome of a program.
struct EsitoProcesso {
  FineProcesso fine = FineProcesso::Uscito;
  int stato = 0;
  std::string uscita; ///< standard output, at most `massimoUscita` bytes
  std::string errori; ///< the beginning of standard error
};

/// Runs a program with an empty standard input and waits for its end and for the end of its output. Where another
/// process holds the output open, it is enough that the program ended and that its output has been silent for `Quiete`;
/// of a program that exited with status 0 it must be complete too. A program that has to be stopped is killed with its
/// whole process group. Returns within `attesa` and twice `Proroga`. Does not depend on how the calling program treats
/// SIGCHLD and SIGPIPE, nor on its other threads' forks. Raises a run-time error when the system refuses a pipe or a
/// process.
[[nodiscard]] EsitoProcesso Esegui(const Processo& processo);

} // namespace lumoscad::nexaro
