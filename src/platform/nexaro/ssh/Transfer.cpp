#include "platform/nexaro/ssh/Transfer.hpp"

#include "platform/nexaro/Call.hpp"

#include <algorithm>
#include <deque>
#include <vector>

namespace lumoscad::nexaro {

namespace {

/// Every server takes blocks of this size (draft-ietf-secsh-filexfer-02, section 3).
constexpr std::uint32_t Block = 32768;
/// As many bytes as an OpenSSH server lets a channel have under way (2 MiB).
constexpr std::size_t MaxUnderWay = 64;

/// Only a file of our own making is written: neither another user's nor whatever a symbolic link points to.
std::string Make(Sftp& sftp, std::string_view path, std::uint32_t mode, RemoteFile& file) {
  file = RemoteFile::Uncertain;
  try {
    auto handle = sftp.Open(path, sftpOpen::Writing | sftpOpen::Create | sftpOpen::Exclusive, mode);
    file = RemoteFile::Created;
    return handle;
  } catch (const SftpError&) {
    file = RemoteFile::Absent;
    throw;
  }
}

std::string OpenNew(Sftp& sftp, std::string_view path, std::uint32_t mode, RemoteFile& file) {
  try {
    return Make(sftp, path, mode, file);
  } catch (const SftpError&) {
    const auto present = sftp.Look(path, false);
    if (!present) {
      throw;
    }
    if (present->Directory()) {
      throw SftpError(sftpStatus::Failure, {}, "è una cartella");
    }
  }
  sftp.Erase(path);
  return Make(sftp, path, mode, file);
}

/// The protocol has no code for a full disk: an unexplained failure to write is looked into.
SftpError WriteError(Sftp& sftp, std::string_view path, const SftpError& error) {
  if (error.Code() != sftpStatus::Failure) {
    return error;
  }
  std::optional<std::uint64_t> freeBytes;
  try {
    freeBytes = sftp.FreeSpace(ParentDirectory(path));
  } catch (const SftpError&) {
    freeBytes.reset();
  }
  if (freeBytes && *freeBytes < Block) {
    return {error.Code(), {}, "spazio esaurito sull'host. Avvertire l'amministratore dell'host"};
  }
  return {error.Code(),
          {},
          "l'host non ha potuto scrivere il file: può essere esaurito lo spazio, o la quota dell'utente. Avvertire "
          "l'amministratore dell'host"};
}

/// A file under way to the host.
struct Sending {
  std::string handle;
  std::deque<std::uint32_t> underWay; ///< the writes without an answer
  std::uint64_t size = 0;             ///< what was handed over for writing
  bool closing = false;               ///< the handle is not to be used any more
};

void SendBlocks(Sftp& sftp, Sending& file, const Source& source) {
  std::vector<char> buffer(Block);
  for (std::size_t count = 0; (count = source(buffer)) > 0; file.size += count) {
    if (file.underWay.size() == MaxUnderWay) {
      sftp.AwaitStatus(file.underWay.front());
      file.underWay.pop_front();
    }
    file.underWay.push_back(sftp.RequestWrite(file.handle, file.size, {buffer.data(), count}));
  }
}

/// All is asked for at once: a host does one thing after the other, and each answer counts.
void Conclude(Sftp& sftp, Sending& file) {
  const auto flush = sftp.RequestFlush(file.handle);
  const auto attributes = sftp.RequestAttributes(file.handle);
  const auto closing = sftp.RequestClose(file.handle);
  file.closing = true;
  for (const auto number : file.underWay) {
    sftp.AwaitStatus(number);
  }
  if (flush) {
    sftp.AwaitStatus(*flush);
  }
  const auto size = sftp.AwaitAttributes(attributes).size;
  sftp.AwaitStatus(closing);
  if (size != file.size) {
    throw SftpError(sftpStatus::Failure, {},
                    "sull'host il file è di " + (size ? std::to_string(*size) : "un numero ignoto di") +
                        " byte invece di " + std::to_string(file.size));
  }
}

/// Closes what a failed transfer leaves open. Where the host refuses that, the failure before it is what counts.
void CloseAnyway(Sftp& sftp, std::string_view handle) {
  try {
    sftp.Close(handle);
  } catch (const SftpError&) { // NOLINT(bugprone-empty-catch): closed already
  }
}

/// Undoes as much of a failed upload as the host allows.
void RemoveFile(Sftp& sftp, const Sending& file, std::string_view path) {
  sftp.AwaitAll();
  if (!file.closing) {
    CloseAnyway(sftp, file.handle);
  }
  try {
    sftp.Erase(path);
  } catch (const SftpError&) { // NOLINT(bugprone-empty-catch): the failure of the upload is what counts
  }
}

SftpError TooLarge() {
  return {sftpStatus::Failure, {}, TooLargeReason};
}

/// Looked at first: to open a pipe would hold the host's service up.
std::string OpenOrdinary(Sftp& sftp, std::string_view path, const Extent& extent) {
  const auto present = sftp.Look(path, true);
  if (!present) {
    throw SftpError(sftpStatus::NoSuchFile, {});
  }
  if (!present->Ordinary()) {
    throw SftpError(sftpStatus::Failure, {}, present->Directory() ? "è una cartella" : "non è un file ordinario");
  }
  if (!extent.truncate && present->size.value_or(0) > extent.maximum) {
    throw TooLarge();
  }
  return sftp.Open(path, sftpOpen::Reading, 0);
}

} // namespace

void Upload(Sftp& sftp, std::string_view path, std::uint32_t mode, const Source& source, RemoteFile& file) {
  Sending sending;
  sending.handle = OpenNew(sftp, path, mode, file);
  try {
    SendBlocks(sftp, sending, source);
    Conclude(sftp, sending);
  } catch (const ConnectionLost&) {
    throw;
  } catch (const SftpError& error) {
    // The space is looked at while the half file still takes it up.
    sftp.AwaitAll();
    const auto explained = WriteError(sftp, path, error);
    RemoveFile(sftp, sending, path);
    throw explained;
  } catch (...) {
    RemoveFile(sftp, sending, path);
    throw;
  }
}

void Download(Sftp& sftp, std::string_view path, const Extent& extent, const Sink& sink) {
  const Sftp::OneWait oneWait(sftp);
  const auto handle = OpenOrdinary(sftp, path, extent);
  try {
    std::deque<std::uint32_t> underWay;
    std::size_t atOnce = 2;     // how many requests may be under way
    std::uint64_t position = 0; // of the next request
    std::uint64_t written = 0;  // what was handed on
    for (bool finished = false; !finished;) {
      for (; underWay.size() < atOnce && (!extent.truncate || position < extent.maximum); position += Block) {
        underWay.push_back(sftp.RequestRead(handle, position, Block));
      }
      const auto data = sftp.AwaitData(underWay.front());
      underWay.pop_front();
      finished = !data;
      if (data && (data->empty() || data->size() > Block)) {
        throw ConnectionLost("il servizio SFTP dell'host ha dato un blocco non valido");
      }
      if (data) {
        const auto allowed = std::min<std::uint64_t>(data->size(), extent.maximum - written);
        if (allowed < data->size() && !extent.truncate) {
          throw TooLarge();
        }
        sink(std::string_view(*data).substr(0, allowed));
        written += allowed;
        finished = extent.truncate && written == extent.maximum;
        atOnce = std::min(atOnce * 2, MaxUnderWay);
      }
      if (finished || data->size() < Block) {
        // A short block is no end of the file: what was asked for behind it is asked for again from there.
        sftp.AwaitAll();
        underWay.clear();
        position = written;
        atOnce = 1;
      }
    }
    sftp.Close(handle);
  } catch (const ConnectionLost&) {
    throw;
  } catch (...) {
    sftp.AwaitAll();
    CloseAnyway(sftp, handle);
    throw;
  }
}

} // namespace lumoscad::nexaro
