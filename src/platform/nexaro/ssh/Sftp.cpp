#include "platform/nexaro/ssh/Sftp.hpp"

#include "platform/nexaro/Call.hpp"
#include "platform/nexaro/Texts.hpp"

#include <sys/stat.h>

namespace lumoscad::nexaro {

namespace {

/// The packet types (draft-ietf-secsh-filexfer-02, section 3).
enum Type : std::uint8_t {
  Introduction = 1,
  Version = 2,
  Opening = 3,
  Closing = 4,
  Reading = 5,
  Writing = 6,
  AttributesNotFollowing = 7,
  AttributesOfHandle = 8,
  RemovalRequest = 13,
  RealPath = 16,
  AttributesFollowing = 17,
  RenameRequest = 18,
  State = 101,
  Handle = 102,
  Data = 103,
  Attributes = 105,
  Extension = 200,
  ExtendedReply = 201
};

constexpr std::uint32_t SpokenVersion = 3;
constexpr std::uint32_t WithSize = 0x01;
constexpr std::uint32_t WithUser = 0x02;
constexpr std::uint32_t WithPermissions = 0x04;
constexpr std::uint32_t WithTimes = 0x08;
/// A server's packets are no longer than this: blocks of 256 KiB and their frame.
constexpr std::uint32_t LargestPacket = (256U + 16U) * 1024U;
/// No handle is longer than this (section 6.2): every later request carries it.
constexpr std::size_t LongestHandle = 256;
/// More than all the answers that are ever due at once.
constexpr std::size_t MaxIncoming = std::size_t{32} * 1024 * 1024;

// Extensions of the OpenSSH server (OpenSSH, file PROTOCOL, section 4).
constexpr const char* RenameReplacingRequest = "posix-rename@openssh.com";
constexpr const char* Flush = "fsync@openssh.com";
constexpr const char* FileSystemStatus = "statvfs@openssh.com";

[[noreturn]] void UnexpectedReply() {
  throw ConnectionLost("il servizio SFTP dell'host ha dato una risposta inattesa");
}

std::string UsualReason(std::uint32_t code, std::string_view message) {
  switch (code) {
  case sftpStatus::NoSuchFile:
    return "file inesistente";
  case sftpStatus::PermissionDenied:
    return "permesso negato";
  case sftpStatus::NotSupported:
    return "operazione non offerta dall'host";
  default:
    return "l'host non ha potuto eseguire l'operazione (" +
           (message.empty() ? "errore SFTP " + std::to_string(code) : ForeignText(message)) +
           "); avvertire l'amministratore dell'host";
  }
}

/// Raises the error of a status answer, unless it tells of success.
void CheckSftpStatus(const Sftp::Reply& reply) {
  if (reply.type != State) {
    UnexpectedReply();
  }
  SftpReader reader(reply.body);
  const auto code = reader.U32();
  if (code != sftpStatus::Ok) {
    throw SftpError(code, reader.Finished() ? std::string_view() : reader.Text());
  }
}

SftpAttributes ReadAttributes(const Sftp::Reply& reply) {
  if (reply.type != Attributes) {
    CheckSftpStatus(reply);
    UnexpectedReply();
  }
  SftpReader reader(reply.body);
  SftpAttributes attributes;
  const auto presentOnes = reader.U32();
  if ((presentOnes & WithSize) != 0) {
    attributes.size = reader.U64();
  }
  if ((presentOnes & WithUser) != 0) {
    reader.U64();
  }
  if ((presentOnes & WithPermissions) != 0) {
    attributes.permissions = reader.U32();
  }
  // Needed by nobody who moves files: a server that forgets them is none the worse for it.
  if ((presentOnes & WithTimes) != 0 && !reader.Finished()) {
    reader.U32();
    attributes.writtenAt = reader.U32();
  }
  return attributes;
}

} // namespace

SftpError::SftpError(std::uint32_t code, std::string_view message, std::string reason)
    : code_(code), reason_(reason.empty() ? UsualReason(code, message) : std::move(reason)) {}

bool SftpAttributes::Directory() const {
  return permissions && S_ISDIR(*permissions);
}

bool SftpAttributes::Ordinary() const {
  return !permissions || (*permissions & S_IFMT) == 0 || S_ISREG(*permissions);
}

Sftp::Sftp(Session& session) : channel_(session, MaxIncoming, MaxErrorsShown) {
  channel_.AwaitOpening(session.NewDeadline());
  channel_.StartSubsystem("sftp");
  IntroduceYourself();
}

void Sftp::IntroduceYourself() {
  SftpBody body;
  body.U32(5);
  try {
    channel_.Write(body.Bytes() + static_cast<char>(Introduction) + SftpBody().U32(SpokenVersion).Bytes());
  } catch (const ConnectionLost&) {
    // A service that ended before it was greeted is none, as one that ends a moment later; the connection stands.
    if (channel_.closed && channel_.ItsSession().Alive()) {
      throw RequestRefused();
    }
    throw;
  }
  const auto deadline = channel_.ItsSession().NewDeadline();
  std::optional<Reply> reply;
  while (!(reply = TakePacket())) {
    if (channel_.eof) {
      throw RequestRefused();
    }
    channel_.HandleEvents(deadline);
  }
  SftpReader reader(reply->body);
  if (reply->type != Version || reader.U32() < SpokenVersion) {
    throw RequestRefused();
  }
  while (!reader.Finished()) {
    extensions_.emplace(reader.Text());
    reader.Text();
  }
}

/// Takes the next whole packet off the channel's stream.
std::optional<Sftp::Reply> Sftp::TakePacket() {
  static constexpr std::size_t Header = 4;
  auto& stream = channel_.output;
  const auto rest = std::string_view(stream).substr(consumed_);
  if (rest.size() >= Header) {
    const auto length = SftpReader(rest).U32();
    if (length == 0 || length > LargestPacket || channel_.excessiveOutput) {
      UnexpectedReply();
    }
    if (rest.size() >= Header + length) {
      consumed_ += Header + length;
      return Reply{static_cast<std::uint8_t>(rest[Header]), std::string(rest.substr(Header + 1, length - 1))};
    }
  }
  stream.erase(0, consumed_);
  consumed_ = 0;
  return std::nullopt;
}

void Sftp::Dispatch() {
  while (auto packet = TakePacket()) {
    const auto number = SftpReader(packet->body).U32();
    if (pending_.erase(number) == 0) {
      UnexpectedReply();
    }
    packet->body.erase(0, 4);
    arrived_.emplace(number, std::move(*packet));
    lastReply_ = Clock::now();
  }
}

std::uint32_t Sftp::Request(std::uint8_t type, const SftpBody& body, std::string_view data) {
  lookedAt_.clear();
  const auto number = ++last_;
  const auto length = 5 + body.Bytes().size() + data.size();
  auto packet = SftpBody().U32(static_cast<std::uint32_t>(length)).Bytes();
  packet.reserve(4 + length);
  packet += static_cast<char>(type);
  packet += SftpBody().U32(number).Bytes();
  packet += body.Bytes();
  packet += data;
  pending_.insert(number);
  channel_.Write(packet, shared_);
  return number;
}

Sftp::Reply Sftp::Wait(std::uint32_t number, Deadline deadline) {
  for (;;) {
    Dispatch();
    if (auto node = arrived_.extract(number)) {
      return std::move(node.mapped());
    }
    if (channel_.eof) {
      throw ConnectionLost("il servizio SFTP dell'host si è chiuso");
    }
    HandleEvents(deadline);
  }
}

void Sftp::HandleEvents(Deadline deadline) {
  if (channel_.HandleEventsUntil(deadline)) {
    return;
  }
  const auto timeout = channel_.ItsSession().Timeout();
  throw ConnectionLost(shared_ && lastReply_ > begin_ ? TooSlowReason(timeout)
                                                      : "nessuna risposta entro " + Seconds(timeout));
}

Deadline Sftp::NextDeadline() const {
  return shared_.value_or(channel_.ItsSession().NewDeadline());
}

Sftp::Reply Sftp::Wait(std::uint32_t number) {
  return Wait(number, NextDeadline());
}

std::string Sftp::Open(std::string_view path, std::uint32_t openMode, std::uint32_t mode) {
  const auto reply = Wait(Request(Opening, SftpBody().Text(path).U32(openMode).U32(WithPermissions).U32(mode)));
  if (reply.type != Handle) {
    CheckSftpStatus(reply);
    UnexpectedReply();
  }
  auto handle = std::string(SftpReader(reply.body).Text());
  if (handle.size() > LongestHandle) {
    UnexpectedReply();
  }
  return handle;
}

void Sftp::Close(std::string_view handle) {
  AwaitStatus(RequestClose(handle));
}

std::optional<SftpAttributes> Sftp::Look(std::string_view path, bool followLink) {
  const bool known = followLink && !path.empty() && path == lookedAt_;
  lookedAt_.clear();
  const auto reply =
      known ? std::move(looked_)
            : Wait(Request(followLink ? AttributesFollowing : AttributesNotFollowing, SftpBody().Text(path)));
  try {
    return ReadAttributes(reply);
  } catch (const SftpError& error) {
    if (error.Code() == sftpStatus::NoSuchFile) {
      return std::nullopt;
    }
    throw;
  }
}

void Sftp::Erase(std::string_view path) {
  AwaitStatus(Request(RemovalRequest, SftpBody().Text(path)));
}

void Sftp::Rename(std::string_view path, std::string_view newName) {
  if (Offers(RenameReplacingRequest)) {
    AwaitStatus(Request(Extension, SftpBody().Text(RenameReplacingRequest).Text(path).Text(newName)));
    return;
  }
  AwaitStatus(Request(RenameRequest, SftpBody().Text(path).Text(newName)));
}

void Sftp::Greet(std::string_view path) {
  const auto deadline = channel_.ItsSession().GreetingDeadline();
  const auto number =
      path.empty() ? Request(RealPath, SftpBody().Text(".")) : Request(AttributesFollowing, SftpBody().Text(path));
  looked_ = Wait(number, deadline);
  lookedAt_ = path;
}

std::uint32_t Sftp::RequestWrite(std::string_view handle, std::uint64_t position, std::string_view data) {
  return Request(Writing, SftpBody().Text(handle).U64(position).U32(static_cast<std::uint32_t>(data.size())), data);
}

std::uint32_t Sftp::RequestRead(std::string_view handle, std::uint64_t position, std::uint32_t length) {
  return Request(Reading, SftpBody().Text(handle).U64(position).U32(length));
}

std::uint32_t Sftp::RequestAttributes(std::string_view handle) {
  return Request(AttributesOfHandle, SftpBody().Text(handle));
}

std::uint32_t Sftp::RequestClose(std::string_view handle) {
  return Request(Closing, SftpBody().Text(handle));
}

std::optional<std::uint32_t> Sftp::RequestFlush(std::string_view handle) {
  if (!Offers(Flush)) {
    return std::nullopt;
  }
  return Request(Extension, SftpBody().Text(Flush).Text(handle));
}

void Sftp::AwaitStatus(std::uint32_t number) {
  CheckSftpStatus(Wait(number));
}

SftpAttributes Sftp::AwaitAttributes(std::uint32_t number) {
  return ReadAttributes(Wait(number));
}

std::optional<std::string> Sftp::AwaitData(std::uint32_t number) {
  const auto reply = Wait(number);
  if (reply.type == Data) {
    return std::string(SftpReader(reply.body).Text());
  }
  try {
    CheckSftpStatus(reply);
  } catch (const SftpError& error) {
    if (error.Code() == sftpStatus::EndOfFile) {
      return std::nullopt;
    }
    throw;
  }
  UnexpectedReply();
}

void Sftp::AwaitAll() {
  while (!pending_.empty()) {
    static_cast<void>(Wait(*pending_.begin()));
  }
  arrived_.clear();
}

std::optional<std::uint64_t> Sftp::FreeSpace(std::string_view path) {
  if (!Offers(FileSystemStatus)) {
    return std::nullopt;
  }
  const auto reply = Wait(Request(Extension, SftpBody().Text(FileSystemStatus).Text(path)));
  if (reply.type != ExtendedReply) {
    return std::nullopt;
  }
  // Block size, fragment size, then blocks in all, free, and free for this user.
  SftpReader reader(reply.body);
  reader.U64();
  const auto fragment = reader.U64();
  reader.U64();
  reader.U64();
  return fragment * reader.U64();
}

} // namespace lumoscad::nexaro
