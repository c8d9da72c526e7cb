#include "platform/nexaro/cartella/DirectoryLink.hpp"

#include "platform/nexaro/Call.hpp"
#include "platform/nexaro/File.hpp"
#include "platform/nexaro/LinkErrors.hpp"
#include "platform/nexaro/Texts.hpp"
#include "platform/nexaro/cartella/Process.hpp"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace lumoscad::nexaro {

namespace {

std::string AbsoluteRoot(const std::string& root) {
  const std::string operation = "Apertura della cartella dell'host (NEXARO_RADICE) " + root;
  const std::unique_ptr<char, decltype(&std::free)> absolute(::realpath(root.c_str(), nullptr), &std::free);
  struct stat state {};
  if (!absolute || ::stat(absolute.get(), &state) != 0) {
    throw SystemError(operation, errno);
  }
  if (!S_ISDIR(state.st_mode)) {
    throw SystemError(operation, ENOTDIR);
  }
  return absolute.get();
}

/// Raises the error of a program that did not end by itself.
void CheckEnd(const ProcessOutcome& outcome, const std::string& subject, const std::string& tail,
              std::chrono::milliseconds timeout) {
  switch (outcome.finish) {
  case ProcessEnd::NotStarted:
    throw SystemError(subject + " non è stato avviato", outcome.state).WithOutcome(TransactionOutcome::NotApplied);
  case ProcessEnd::TimedOut:
    throw ErrorAfterStart(subject + " non ha risposto entro " + Seconds(timeout) + " ed è stato interrotto", tail);
  case ProcessEnd::ExcessiveOutput:
    throw ErrorAfterStart(subject + " ha dato una risposta di oltre 16 MiB ed è stato interrotto", tail);
  case ProcessEnd::Signal:
    throw ErrorAfterStart(subject + " è stato terminato dal segnale " + std::to_string(outcome.state), tail);
  case ProcessEnd::Exited:
    CheckStatus(outcome.state, subject, tail);
  }
}

} // namespace

DirectoryLink::DirectoryLink(const std::string& root, std::chrono::milliseconds timeout)
    : root_(AbsoluteRoot(root)), timeout_(timeout) {}

std::string DirectoryLink::RemotePath(std::string_view remote) const {
  CheckPath(remote);
  return root_ + std::string(remote);
}

void DirectoryLink::EseguiProgramma(std::string_view host, std::string_view program,
                                    const std::vector<std::string>& parameters, XMLParser& reply) {
  const auto subject = ProgramSubject(program, host);
  CheckCall(program, parameters, subject);
  const Process process{root_ + "/programmi/" + std::string(program),
                        parameters,
                        {"NEXARO_RADICE=" + root_},
                        root_,
                        timeout_,
                        xml::LargestSize,
                        MaxErrorsShown,
                        ReplyIsComplete,
                        &reply.started};
  const auto outcome = Run(process);
  const auto tail = MessageEnd(outcome.errors);
  reply.answered = !outcome.output.empty();
  CheckEnd(outcome, subject, tail, timeout_);
  reply.Consegna(ReadReply(outcome.output, subject, tail));
}

void DirectoryLink::RiceviFile(std::string_view host, std::string_view remote, std::string_view locale,
                               std::string& text) {
  Receive(host, remote, locale, {MaxReceived, false}, text);
}

void DirectoryLink::ReceiveBeginning(std::string_view host, std::string_view remote, std::string_view locale,
                                     std::size_t maximum, std::string& text) {
  Receive(host, remote, locale, {maximum, true}, text);
}

void DirectoryLink::Receive(std::string_view host, std::string_view remote, std::string_view locale,
                            const Extent& extent, std::string& text) const {
  const auto operation = "Ricezione del file " + Quote(remote) + OnHost(host) + " in " + Quote(locale);
  text.clear();
  CopyFile(RemotePath(remote), std::string(locale), LocalMode, operation, extent, timeout_);
}

void DirectoryLink::InviaFile(std::string_view host, std::string_view locale, std::string_view remote) {
  const auto operation = "Invio del file " + Quote(locale) + " come " + Quote(remote) + OnHost(host);
  CopyFile(std::string(locale), RemotePath(remote), RemoteMode, operation);
}

void DirectoryLink::RinominaFile(std::string_view host, std::string_view remote, std::string_view newName,
                                 std::string& text) {
  text.clear();
  if (std::rename(RemotePath(remote).c_str(), RemotePath(newName).c_str()) != 0) {
    throw SystemError("Cambio di nome del file " + Quote(remote) + " in " + Quote(newName) + OnHost(host), errno);
  }
}

void DirectoryLink::CancellaFile(std::string_view host, std::string_view remote) {
  if (::unlink(RemotePath(remote).c_str()) != 0 && errno != ENOENT) {
    throw SystemError("Cancellazione del file " + Quote(remote) + OnHost(host), errno);
  }
}

FileState DirectoryLink::LookAt(std::string_view host, std::string_view remote) {
  static constexpr std::int64_t Nanoseconds = 1'000'000'000;
  struct stat state {};
  if (::stat(RemotePath(remote).c_str(), &state) != 0) {
    throw SystemError("Lettura dei permessi del file " + Quote(remote) + OnHost(host), errno);
  }
  return {state.st_mode & (S_IRWXU | S_IRWXG | S_IRWXO), state.st_mtim.tv_sec * Nanoseconds + state.st_mtim.tv_nsec};
}

std::string DirectoryLink::FindProgram(std::string_view host, std::string_view program) {
  const auto subject = ProgramSubject(program, host);
  CheckCall(program, {}, subject);
  auto path = root_ + "/programmi/" + std::string(program);
  struct stat state {};
  if (::stat(path.c_str(), &state) != 0 || ::access(path.c_str(), X_OK) != 0) {
    throw SystemError(subject + " non può essere avviato", errno);
  }
  if (!S_ISREG(state.st_mode)) {
    throw SystemError(subject + " non può essere avviato", EINVAL);
  }
  return path;
}

} // namespace lumoscad::nexaro
