#include "platform/nexaro/ssh/SshConnection.hpp"

#include "platform/nexaro/LinkErrors.hpp"
#include "platform/nexaro/ssh/Authentication.hpp"
#include "platform/nexaro/ssh/HostKey.hpp"
#include "platform/nexaro/ssh/RemoteProgram.hpp"

#include <utility>

namespace lumoscad::nexaro {

SshConnection::SshConnection(const SshSettings& settings, const std::string& host) : session_(settings, host) {
  const auto key = ExamineKey(session_, settings.port, settings.knownHosts);
  const auto reason = RefusalReason(key, host, settings.knownHosts);
  if (!reason.empty()) {
    throw LinkError(reason);
  }
  Authenticate(session_, settings);
  session_.Activate();
}

Sftp& SshConnection::File(std::string_view toLookAt) {
  session_.HandleEventsNow();
  if (!sftp_) {
    sftp_ = std::make_unique<Sftp>(session_);
  } else if (!session_.Alive()) {
    throw ConnectionLost(session_.LossReason());
  } else if (sftp_->Ended() || !session_.HeardLately()) {
    sftp_->Greet(toLookAt);
  } else {
    sftp_->ForgetLook();
  }
  return *sftp_;
}

void SshConnection::OpenAhead() {
  if (!ahead_) {
    ahead_ = PrepareProgram(session_);
  }
}

std::unique_ptr<Channel> SshConnection::ForProgram(bool kept) {
  session_.HandleEventsNow();
  if (!session_.Alive()) {
    throw ConnectionLost(session_.LossReason());
  }
  auto channel = std::move(ahead_);
  // What was answered long ago is no sign of life.
  if (channel && !channel->Opening() && (channel->closed || !session_.HeardLately())) {
    channel.reset();
  }
  if (!channel) {
    channel = PrepareProgram(session_);
  }
  channel->AwaitOpening(kept ? session_.GreetingDeadline() : session_.NewDeadline());
  return channel;
}

} // namespace lumoscad::nexaro
