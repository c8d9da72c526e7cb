#include "platform/nexaro/Call.hpp"

#include "platform/ControlCharacters.hpp"
#include "platform/base/Utf8.hpp"
#include "platform/nexaro/Texts.hpp"

namespace lumoscad::nexaro {

namespace {

bool Climbs(std::string_view path) {
  while (!path.empty()) {
    const auto slash = path.find('/');
    if (path.substr(0, slash) == "..") {
      return true;
    }
    path = slash == std::string_view::npos ? std::string_view() : path.substr(slash + 1);
  }
  return false;
}

/// What a shell answers when it finds no program, and when it may not run it.
constexpr int StatusNotFound = 127;
constexpr int StatusNotExecutable = 126;

} // namespace

std::string TooSlowReason(std::chrono::milliseconds timeout) {
  return "il trasferimento non è finito entro " + Seconds(timeout);
}

void CheckPath(std::string_view remote) {
  if (!remote.starts_with('/') || Climbs(remote) || remote.find('\0') != std::string_view::npos) {
    throw RuntimeError(errors::FileAccess, "Percorso dell'host non ammesso: " + Quote(remote) + ".");
  }
}

std::string ProgramSubject(std::string_view program, std::string_view host) {
  return "Il programma " + std::string(program) + OnHost(host);
}

void CheckCall(std::string_view program, const std::vector<std::string>& parameters, const std::string& subject) {
  if (program.empty() || program == "." || program == ".." ||
      program.find_first_of(std::string_view("/\0", 2)) != std::string_view::npos) {
    throw RuntimeError(errors::FileAccess, "Nome di programma non ammesso: " + Quote(program) + ".");
  }
  for (const auto& parameter : parameters) {
    if (parameter.find('\0') != std::string::npos) {
      throw LinkError(subject + " non può ricevere un parametro con un carattere nullo.");
    }
  }
}

std::string MessageEnd(std::string errors) {
  // Whole characters only: a cut in the middle of one would make the message unreadable.
  if (errors.size() >= MaxErrorsShown) {
    errors.resize(MaxErrorsShown);
    while (!errors.empty() && !base::BeginsCharacter(errors.back())) {
      errors.pop_back();
    }
    if (!errors.empty() && static_cast<unsigned char>(errors.back()) >= 0xC0U) {
      errors.pop_back();
    }
  }
  // A person's terminal must not obey what the program has written.
  errors = WithoutControls(errors, "\n");
  errors.erase(errors.find_last_not_of(" \n") + 1);
  return errors.empty() ? "." : ": " + errors;
}

RuntimeError ErrorAfterStart(const std::string& done, const std::string& tail, int number) {
  const auto text = done + tail;
  const bool finished = text.find_last_of(".!?") == text.size() - 1;
  return RuntimeError(number, text + (finished ? " " : ". ") + std::string(UnknownOutcome))
      .WithOutcome(TransactionOutcome::Unknown);
}

void CheckStatus(int state, const std::string& subject, const std::string& tail, const std::string& remedy) {
  if (state == 0) {
    return;
  }
  const auto finish = subject + " è terminato con lo stato " + std::to_string(state);
  if (state == StatusNotFound) {
    throw RuntimeError(errors::FileNotFound, finish + ", cioè non è stato trovato" + remedy + tail)
        .WithOutcome(TransactionOutcome::NotApplied);
  }
  if (state == StatusNotExecutable) {
    throw RuntimeError(PermissionError, finish + ", cioè non può essere eseguito" + tail)
        .WithOutcome(TransactionOutcome::NotApplied);
  }
  throw ErrorAfterStart(finish, tail);
}

bool ReplyIsComplete(std::string_view output) {
  try {
    static_cast<void>(xml::Read(output));
    return true;
  } catch (const RuntimeError&) {
    return false;
  }
}

xml::Nodo ReadReply(const std::string& output, const std::string& subject, const std::string& tail) {
  if (output.empty()) {
    throw ErrorAfterStart(subject + " non ha dato alcuna risposta", tail);
  }
  try {
    return xml::Read(output);
  } catch (const RuntimeError& error) {
    throw ErrorAfterStart(subject + " ha dato una risposta non valida. " + error.Text(), "", error.Number());
  }
}

} // namespace lumoscad::nexaro
