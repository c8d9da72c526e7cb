#include "platform/nexaro/ssh/SshConnection.hpp"

#include "platform/nexaro/LinkErrors.hpp"
#include "platform/nexaro/ssh/Authentication.hpp"
#include "platform/nexaro/ssh/HostKey.hpp"

namespace lumoscad::nexaro {

namespace {

/// A service that answered this recently is not asked whether it is still there.
constexpr std::chrono::milliseconds Fresh{100};

} // namespace

SshConnection::SshConnection(const SshSettings& settings, const std::string& host) : session_(settings, host) {
  const auto key = ExamineKey(session_, settings.port, settings.knownHosts);
  const auto reason = RefusalReason(key, host, settings.knownHosts);
  if (!reason.empty()) {
    throw LinkError(reason);
  }
  Authenticate(session_, settings);
  session_.Activate();
}

Sftp& SshConnection::File() {
  session_.HandleEventsNow();
  if (!sftp_) {
    sftp_ = std::make_unique<Sftp>(session_);
  } else if (!session_.Alive()) {
    throw ConnectionLost(session_.LossReason());
  } else if (Clock::now() - sftp_->LastReply() > Fresh) {
    sftp_->Greet();
  }
  return *sftp_;
}

} // namespace lumoscad::nexaro
