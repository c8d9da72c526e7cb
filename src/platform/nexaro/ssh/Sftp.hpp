#pragma once

#include "platform/nexaro/ssh/Channel.hpp"
#include "platform/nexaro/ssh/SftpPacket.hpp"

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>

namespace lumoscad::nexaro {

/// The status codes of the protocol (draft-ietf-secsh-filexfer-02, section 7).
namespace sftpStatus {
inline constexpr std::uint32_t Ok = 0;
inline constexpr std::uint32_t EndOfFile = 1;
inline constexpr std::uint32_t NoSuchFile = 2;
inline constexpr std::uint32_t PermissionDenied = 3;
inline constexpr std::uint32_t Failure = 4;
inline constexpr std::uint32_t NotSupported = 8;
} // namespace sftpStatus

/// How a file is opened (section 6.3).
namespace sftpOpen {
inline constexpr std::uint32_t Reading = 0x01;
inline constexpr std::uint32_t Writing = 0x02;
inline constexpr std::uint32_t Create = 0x08;
inline constexpr std::uint32_t Exclusive = 0x20;
} // namespace sftpOpen

/// An operation that the host refused. Stays inside the link.
class SftpError final : public std::exception {
 public:
  /// `reason` is Italian and fits behind a colon; the usual one of the code where it is empty.
  SftpError(std::uint32_t code, std::string_view message, std::string reason = {});
  [[nodiscard]] std::uint32_t Code() const noexcept { return code_; }
  [[nodiscard]] const std::string& Reason() const noexcept { return reason_; }
  [[nodiscard]] const char* what() const noexcept override { return reason_.c_str(); }

 private:
  std::uint32_t code_;
  std::string reason_;
};

/// What the host says of a file; nothing for what it does not say.
struct SftpAttributes {
  std::optional<std::uint64_t> size;
  std::optional<std::uint32_t> permissions;
  std::optional<std::uint32_t> writtenAt; ///< seconds since 1970

  [[nodiscard]] bool Directory() const;
  /// An ordinary file, as far as the host says.
  [[nodiscard]] bool Ordinary() const;
};

/// The client of the file transfer protocol on a channel of its own. Requests may be sent ahead of the answers to those
/// before. Every operation raises `SftpError` when the host refuses and `ConnectionLost` when it does not answer.
class Sftp {
 public:
  /// Starts the service on the host. Raises `RequestRefused` where there is none.
  explicit Sftp(Session& session);

  /// While it lives, whatever is asked and answered shares one wait, which begins with it.
  class OneWait {
   public:
    explicit OneWait(Sftp& sftp) : sftp_(sftp) {
      sftp_.begin_ = Clock::now();
      sftp_.shared_ = sftp_.channel_.ItsSession().NewDeadline();
    }
    OneWait(const OneWait&) = delete;
    OneWait& operator=(const OneWait&) = delete;
    ~OneWait() { sftp_.shared_.reset(); }

   private:
    Sftp& sftp_;
  };

  /// One answer: the type of its packet and what follows the request's number.
  struct Reply {
    std::uint8_t type = 0;
    std::string body;
  };

  /// The handle of the opened file. `mode` holds the permissions of a new file before the host's umask.
  [[nodiscard]] std::string Open(std::string_view path, std::uint32_t openMode, std::uint32_t mode);
  void Close(std::string_view handle);
  /// The attributes of what stands at `path` (of a symbolic link's target where `followLink`); nothing where nothing
  /// stands there.
  [[nodiscard]] std::optional<SftpAttributes> Look(std::string_view path, bool followLink);
  void Erase(std::string_view path);
  /// Puts `newName` in the place of whatever has that name, in one step. Where the host cannot do that, a name that is
  /// taken is refused.
  void Rename(std::string_view path, std::string_view newName);
  /// Asks for a sign of life. With a `path` it is the answer to a look at that, following links, which the very next
  /// look is then spared.
  void Greet(std::string_view path = {});
  /// The look of an earlier greeting spares none any more.
  void ForgetLook() noexcept { lookedAt_.clear(); }

  // The requests of a transfer, whose answers are fetched later with the returned number.
  [[nodiscard]] std::uint32_t RequestWrite(std::string_view handle, std::uint64_t position, std::string_view data);
  [[nodiscard]] std::uint32_t RequestRead(std::string_view handle, std::uint64_t position, std::uint32_t length);
  [[nodiscard]] std::uint32_t RequestAttributes(std::string_view handle);
  [[nodiscard]] std::uint32_t RequestClose(std::string_view handle);
  /// Nothing where the host does not offer to bring a file to its disk.
  [[nodiscard]] std::optional<std::uint32_t> RequestFlush(std::string_view handle);

  /// The answers, with the wait beginning anew.
  void AwaitStatus(std::uint32_t number);
  [[nodiscard]] SftpAttributes AwaitAttributes(std::uint32_t number);
  /// The data that were read; nothing at the end of the file.
  [[nodiscard]] std::optional<std::string> AwaitData(std::uint32_t number);
  /// Fetches every answer that is still due, and forgets it.
  void AwaitAll();

  /// Whether the host has ended the service.
  [[nodiscard]] bool Ended() const { return channel_.eof; }

  /// The free bytes where `path` stands; nothing where the host does not tell.
  [[nodiscard]] std::optional<std::uint64_t> FreeSpace(std::string_view path);

 private:
  [[nodiscard]] bool Offers(const std::string& extension) const { return extensions_.contains(extension); }
  [[nodiscard]] std::uint32_t Request(std::uint8_t type, const SftpBody& body, std::string_view data = {});
  [[nodiscard]] Reply Wait(std::uint32_t number, Deadline deadline);
  [[nodiscard]] Reply Wait(std::uint32_t number);
  [[nodiscard]] std::optional<Reply> TakePacket();
  void Dispatch();
  void IntroduceYourself();

  void HandleEvents(Deadline deadline);
  [[nodiscard]] Deadline NextDeadline() const;

  Channel channel_;
  std::optional<Deadline> shared_; ///< the end of the wait that everything shares
  Clock::time_point begin_;        ///< when that began
  std::size_t consumed_ = 0;       ///< how much of the channel's stream was taken apart
  std::uint32_t last_ = 0;
  std::set<std::uint32_t> pending_;        ///< the numbers of the requests without an answer
  std::map<std::uint32_t, Reply> arrived_; ///< the answers that nobody has fetched
  std::set<std::string, std::less<>> extensions_;
  Clock::time_point lastReply_;
  std::string lookedAt_; ///< the path of the last greeting, as long as nothing was asked since
  Reply looked_;         ///< the answer
};

} // namespace lumoscad::nexaro
