#include "platform/nexaro/ssh/SshLink.hpp"

#include "platform/nexaro/Call.hpp"
#include "platform/nexaro/File.hpp"
#include "platform/nexaro/LinkErrors.hpp"
#include "platform/nexaro/SigpipeBlock.hpp"
#include "platform/nexaro/Texts.hpp"
#include "platform/nexaro/ssh/Quoting.hpp"
#include "platform/nexaro/ssh/RemoteProgram.hpp"
#include "platform/nexaro/ssh/SshConnection.hpp"
#include "platform/nexaro/ssh/Transfer.hpp"

#include <algorithm>
#include <array>

namespace lumoscad::nexaro {

namespace {

/// A lock that the failed command has set stays on the host.
constexpr const char* Repetition =
    "Prima di ripetere il comando può essere necessario togliere il blocco della lista sull'host.";

constexpr const char* WhatPrograms = "La cartella dei programmi (NEXARO_PROGRAMMI)";
constexpr const char* WhatName = "Il nome del programma";

RuntimeError ErrorOfSftp(const std::string& operation, const SftpError& error, const std::string& user) {
  const int number = error.Code() == sftpStatus::NoSuchFile         ? errors::FileNotFound
                     : error.Code() == sftpStatus::PermissionDenied ? PermissionError
                                                                    : LinkFailure;
  const std::string remedy = error.Code() == sftpStatus::PermissionDenied
                                 ? " Chiedere all'amministratore dell'host i permessi per l'utente " + Quote(user) + "."
                                 : "";
  return {number, operation + ": " + error.Reason() + "." + remedy};
}

/// The whole of a local file.
std::string ReadAll(const base::Descriptor& file, const std::string& operation) {
  std::string content;
  std::array<char, 65536> buffer;
  for (std::size_t count = 0; (count = ReadBlock(file, buffer, operation)) > 0;) {
    content.append(buffer.data(), count);
  }
  return content;
}

/// Hands a text out piece by piece.
Source SourceText(std::string text) {
  return [text = std::move(text), position = std::size_t{0}](std::span<char> buffer) mutable {
    const auto copied = text.copy(buffer.data(), buffer.size(), position);
    position += copied;
    return copied;
  };
}

/// Whether the document says itself how it is encoded: by a mark, by the UTF-16 in which its declaration is written, or
/// by what that declares.
bool DeclaresEncoding(std::string_view document) {
  for (const auto sign : {std::string_view("\xEF\xBB\xBF"), std::string_view("\xFF\xFE"), std::string_view("\xFE\xFF"),
                          std::string_view("<\0?\0", 4), std::string_view("\0<\0?", 4)}) {
    if (document.starts_with(sign)) {
      return true;
    }
  }
  return document.starts_with("<?xml") &&
         document.substr(0, document.find("?>")).find("encoding") != std::string_view::npos;
}

/// How a program ended that did not end by itself; empty where it did.
std::string ForeignEnd(const RemoteOutcome& outcome) {
  if (!outcome.interruption.empty()) {
    return outcome.interruption;
  }
  return outcome.state ? std::string() : " è stato terminato dal segnale " + outcome.signal;
}

/// Raises the error of a program that was given up or killed, or that failed.
void CheckEnd(const RemoteOutcome& outcome, const std::string& subject, const std::string& tail) {
  if (const auto finish = ForeignEnd(outcome); !finish.empty()) {
    throw ErrorAfterStart(subject + finish, tail);
  }
  CheckStatus(*outcome.state, subject, tail, " (verificare NEXARO_PROGRAMMI)");
}

} // namespace

SshLink::SshLink(SshSettings settings) : settings_(std::move(settings)) {}

SshLink::~SshLink() {
  const SigpipeBlock sigpipeBlock;
  connections_.clear();
}

SshConnection& SshLink::Connected(const std::string& host) {
  auto& entry = connections_[host];
  entry.reset();
  entry = std::make_unique<SshConnection>(settings_, host);
  return *entry;
}

Sftp& SshLink::ReadyFiles(const std::string& host, std::string_view toLookAt) {
  if (const auto entry = connections_.find(host); entry != connections_.end() && entry->second) {
    try {
      return entry->second->File(toLookAt);
    } catch (const ConnectionLost&) {
      entry->second.reset();
    }
  }
  return Connected(host).File();
}

void SshLink::WithFiles(const std::string& host, const std::string& operation, const Action& action,
                        const Fallback& fallback, std::string_view toLookAt) {
  Sftp* file = nullptr;
  try {
    file = &ReadyFiles(host, toLookAt);
  } catch (const ConnectionLost& lost) {
    connections_.erase(host);
    throw LinkError(operation + ": " + lost.Reason() + ". Verificare la rete. " + Repetition);
  } catch (const RequestRefused&) {
    throw LinkError(operation +
                    ": l'host non offre il servizio SFTP. Chiedere all'amministratore dell'host di attivarlo.");
  }
  std::string reason;
  try {
    action(*file);
    return;
  } catch (const SftpError& error) {
    throw ErrorOfSftp(operation, error, settings_.user);
  } catch (const ConnectionLost& lost) {
    reason = lost.Reason();
  }
  connections_.erase(host);
  fallback(reason);
}

std::string SshLink::HostPath(std::string_view remote) const {
  CheckPath(remote);
  return settings_.encoding.ToHost(remote, "Il percorso dell'host " + Quote(remote));
}

void SshLink::InviaFile(std::string_view host, std::string_view locale, std::string_view remote) {
  const SigpipeBlock sigpipeBlock;
  const auto operation = "Invio del file " + Quote(locale) + " come " + Quote(remote) + OnHost(host);
  const auto path = HostPath(remote);
  const auto file = OpenOrdinary(std::string(locale), operation);
  Source source = [&](std::span<char> buffer) { return ReadBlock(file, buffer, operation); };
  if (!settings_.encoding.PlainUtf8()) {
    source = SourceText(settings_.encoding.ToHost(ReadAll(file, operation), "Il file " + Quote(locale)));
  }
  const std::string address(host);
  auto state = RemoteFile::Absent;
  WithFiles(
      address, operation, [&](Sftp& sftp) { Upload(sftp, path, RemoteMode, source, state); },
      [&](const std::string& reason) {
        bool removed = state == RemoteFile::Absent;
        try {
          // What may be another's file is left alone.
          if (state == RemoteFile::Created) {
            ReadyFiles(address).Erase(path);
            removed = true;
          }
        } catch (const std::exception&) {
          connections_.erase(address);
        }
        throw LinkError(operation + ": " + reason + "; il file non è stato inviato" +
                        (removed ? "" : " e sull'host può esserne rimasta una parte") + ". Verificare la rete. " +
                        Repetition);
      });
}

void SshLink::RiceviFile(std::string_view host, std::string_view remote, std::string_view locale, std::string& text) {
  Receive(host, remote, locale, {MaxReceived, false}, text);
}

void SshLink::ReceiveBeginning(std::string_view host, std::string_view remote, std::string_view locale,
                               std::size_t maximum, std::string& text) {
  Receive(host, remote, locale, {maximum, true}, text);
}

void SshLink::Receive(std::string_view host, std::string_view remote, std::string_view locale, const Extent& extent,
                      std::string& text) {
  const SigpipeBlock sigpipeBlock;
  const auto operation = "Ricezione del file " + Quote(remote) + OnHost(host) + " in " + Quote(locale);
  text.clear();
  const auto path = HostPath(remote);
  const std::string destination(locale);
  WithFiles(
      std::string(host), operation,
      [&](Sftp& sftp) {
        TemporaryFile copy(destination, LocalMode, operation);
        Download(sftp, path, extent, [&](std::string_view data) {
          const auto& encoding = settings_.encoding;
          copy.Write(encoding.PlainUtf8() ? std::string(data) : encoding.FromHostTolerant(data), operation);
        });
        copy.Publish(destination, operation);
      },
      [&](const std::string& reason) {
        throw LinkError(operation + ": " + reason +
                        "; il file non è stato ricevuto. Verificare la rete e ripetere il comando.");
      },
      path);
}

void SshLink::RinominaFile(std::string_view host, std::string_view remote, std::string_view newName,
                           std::string& text) {
  const SigpipeBlock sigpipeBlock;
  const auto operation = "Cambio di nome del file " + Quote(remote) + " in " + Quote(newName) + OnHost(host);
  text.clear();
  const auto from = HostPath(remote);
  const auto a = HostPath(newName);
  const std::string address(host);
  WithFiles(
      address, operation,
      [&](Sftp& sftp) {
        // What gets its final name is a request that is ready: a program is called for it next.
        connections_.at(address)->OpenAhead();
        try {
          sftp.Rename(from, a);
        } catch (const SftpError& error) {
          if (error.Code() == sftpStatus::Failure && sftp.Look(from, false) && sftp.Look(a, false)) {
            throw SftpError(error.Code(), {}, "il nuovo nome è già preso e l'host non lo sostituisce");
          }
          throw;
        }
      },
      [&](const std::string& reason) {
        bool oldIsThere = false;
        bool newIsThere = false;
        try {
          auto& sftp = ReadyFiles(address);
          oldIsThere = sftp.Look(from, false).has_value();
          newIsThere = sftp.Look(a, false).has_value();
        } catch (const std::exception&) {
          connections_.erase(address);
          throw LinkError(operation + ": " + reason + ". " + std::string(UnknownOutcome));
        }
        if (oldIsThere) {
          throw LinkError(operation + ": " + reason + "; il file ha ancora il vecchio nome. " + Repetition);
        }
        if (!newIsThere) {
          throw LinkError(operation + ": " + reason +
                          "; sull'host non c'è più il file, né con il vecchio nome né con "
                          "il nuovo. " +
                          std::string(UnknownOutcome));
        }
      });
}

void SshLink::CancellaFile(std::string_view host, std::string_view remote) {
  const SigpipeBlock sigpipeBlock;
  const auto operation = "Cancellazione del file " + Quote(remote) + OnHost(host);
  const auto path = HostPath(remote);
  const std::string address(host);
  WithFiles(
      address, operation,
      [&](Sftp& sftp) {
        try {
          sftp.Erase(path);
        } catch (const SftpError& error) {
          if (error.Code() != sftpStatus::NoSuchFile) {
            throw;
          }
        }
      },
      [&](const std::string& reason) {
        bool present = true;
        try {
          present = ReadyFiles(address).Look(path, false).has_value();
        } catch (const std::exception&) {
          connections_.erase(address);
          throw LinkError(operation + ": " + reason + ". Non si sa se il file sia ancora sull'host.");
        }
        if (present) {
          throw LinkError(operation + ": " + reason + "; il file è ancora sull'host. " + Repetition);
        }
      });
}

FileState SshLink::LookAt(std::string_view host, std::string_view remote) {
  static constexpr unsigned PermissionBits = 0777;
  const SigpipeBlock sigpipeBlock;
  const auto operation = "Lettura dei permessi del file " + Quote(remote) + OnHost(host);
  const auto path = HostPath(remote);
  FileState state;
  WithFiles(
      std::string(host), operation,
      [&](Sftp& sftp) {
        const auto attributes = sftp.Look(path, true);
        if (!attributes) {
          throw SftpError(sftpStatus::NoSuchFile, {});
        }
        if (attributes->permissions) {
          state.permissions = *attributes->permissions & PermissionBits;
        }
        state.writtenAt = attributes->writtenAt;
      },
      [&](const std::string& reason) {
        throw LinkError(operation + ": " + reason + ". Verificare la rete e ripetere il comando.");
      });
  return state;
}

void SshLink::EseguiProgramma(std::string_view host, std::string_view program,
                              const std::vector<std::string>& parameters, XMLParser& reply) {
  const SigpipeBlock sigpipeBlock;
  const auto subject = ProgramSubject(program, host);
  CheckCall(program, parameters, subject);
  const auto& encoding = settings_.encoding;
  std::vector<std::string> converted;
  converted.reserve(parameters.size());
  for (const auto& parameter : parameters) {
    converted.push_back(encoding.ToHost(parameter, "Il parametro " + std::to_string(converted.size() + 1) + " di " +
                                                       std::string(program)));
  }
  const auto line =
      CommandLine(encoding.ToHost(settings_.programs, WhatPrograms), encoding.ToHost(program, WhatName), converted);
  const auto complete = [&](const std::string& output) {
    return ReplyIsComplete(DeclaresEncoding(output) ? output : encoding.FromHostTolerant(output));
  };
  const auto outcome = Start(std::string(host), line, subject, complete, &reply.started);
  const auto tail = MessageEnd(encoding.FromHostTolerant(outcome.errors));
  reply.answered = !outcome.output.empty();
  CheckEnd(outcome, subject, tail);
  reply.Consegna(ReadReply(Decode(outcome.output, subject), subject, tail));
}

RemoteOutcome SshLink::Start(const std::string& host, const std::string& line, const std::string& subject,
                             const Completeness& complete, bool* started) {
  std::unique_ptr<Channel> channel;
  try {
    channel = ReadyChannel(host);
  } catch (const ConnectionLost& lost) {
    connections_.erase(host);
    throw LinkError(subject + " non è stato avviato: " + lost.Reason() + ". Verificare la rete. " + Repetition);
  } catch (const RequestRefused&) {
    throw LinkError(subject + " non è stato avviato: l'host non ammette altri canali. Chiedere all'amministratore "
                              "dell'host di ammettere l'esecuzione di programmi.");
  }
  try {
    if (started != nullptr) {
      *started = true;
    }
    auto outcome = RunRemotely(*channel, line, complete);
    if (!outcome.interruption.empty()) {
      channel.reset();
      connections_.erase(host);
    }
    return outcome;
  } catch (const RequestRefused&) {
    throw LinkError(subject +
                    " non è stato avviato: l'host non ammette l'esecuzione di programmi. Chiedere "
                    "all'amministratore dell'host di ammetterla per l'utente " +
                    Quote(settings_.user) + ".")
        .WithOutcome(TransactionOutcome::NotApplied);
  }
}

std::string SshLink::FindProgram(std::string_view host, std::string_view program) {
  const SigpipeBlock sigpipeBlock;
  const auto subject = ProgramSubject(program, host);
  CheckCall(program, {}, subject);
  const auto& encoding = settings_.encoding;
  const auto path =
      CommandLine(encoding.ToHost(settings_.programs, WhatPrograms), encoding.ToHost(program, WhatName), {});
  // Words of the shell itself: nothing is started.
  const auto line = settings_.programs.empty()
                        ? "command -v " + path
                        : "test -f " + path + " && test -x " + path + " && printf '%s\\n' " + path;
  const auto lookUp = "Il controllo del programma " + std::string(program) + OnHost(host);
  const auto outcome = Start(std::string(host), line, lookUp, [](const std::string&) { return true; });
  // A look that did not come to its end says nothing of the program.
  if (const auto finish = ForeignEnd(outcome); !finish.empty()) {
    throw LinkError(lookUp + finish + ".");
  }
  if (outcome.state != 0) {
    throw RuntimeError(
        errors::FileNotFound,
        subject + (settings_.programs.empty()
                       ? std::string(" non è fra quelli che la shell dell'utente trova. Indicare la "
                                     "sua cartella con NEXARO_PROGRAMMI.")
                       : " non è nella cartella " + Quote(settings_.programs) + ", o l'utente non può eseguirlo."));
  }
  return ForeignText(encoding.FromHostTolerant(outcome.output));
}

/// To open a channel asks the host for an answer: it shows that the connection lives before anything is started.
std::unique_ptr<Channel> SshLink::ReadyChannel(const std::string& host) {
  if (const auto entry = connections_.find(host); entry != connections_.end() && entry->second) {
    try {
      return entry->second->ForProgram(true);
    } catch (const ConnectionLost&) {
      entry->second.reset();
    }
  }
  return Connected(host).ForProgram(false);
}

/// A document that does not say how it is encoded is in the encoding of the host's texts.
std::string SshLink::Decode(std::string output, const std::string& subject) const {
  const auto& encoding = settings_.encoding;
  if (encoding.PlainUtf8() || DeclaresEncoding(output)) {
    return output;
  }
  auto text = encoding.FromHost(output);
  if (!text) {
    throw ErrorAfterStart(subject +
                              " ha dato una risposta non valida. Contiene byte che non sono caratteri della codifica " +
                              encoding.Name() + " (NEXARO_CODIFICA)",
                          ".");
  }
  return std::move(*text);
}

} // namespace lumoscad::nexaro
