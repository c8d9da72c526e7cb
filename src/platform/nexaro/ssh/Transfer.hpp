#pragma once

#include "platform/nexaro/File.hpp"
#include "platform/nexaro/ssh/Sftp.hpp"

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>

namespace lumoscad::nexaro {

/// Fills the buffer with what comes next and returns its size; 0 at the end.
using Source = std::function<std::size_t(std::span<char>)>;
/// Takes what comes next.
using Sink = std::function<void(std::string_view)>;

/// Whether a file of our own making stands on the host.
enum class RemoteFile {
  Absent,
  Uncertain, ///< it was asked for, and the answer did not come
  Created
};

/// Writes a new file at `path` on the host, in place of what is there, with many blocks under way at once; returns
/// when the host has brought it to its disk (where it offers that) and its size is right. `file` says all along
/// what is known of it. When it fails with anything but `ConnectionLost` the half file is removed again.
void Upload(Sftp& sftp, std::string_view path, std::uint32_t mode, const Source& source, RemoteFile& file);

/// Reads the ordinary file at `path` on the host from its beginning to its end, as far as `extent` goes, with many
/// blocks under way at once and one wait for all of it. Whether a file is too long does not depend on what size the
/// host says it has.
void Download(Sftp& sftp, std::string_view path, const Extent& extent, const Sink& sink);

} // namespace lumoscad::nexaro
