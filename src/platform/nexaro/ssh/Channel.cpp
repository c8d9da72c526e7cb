#include "platform/nexaro/ssh/Channel.hpp"

#include <algorithm>
#include <new>
#include <utility>

namespace lumoscad::nexaro {

namespace {

Channel& Own(void* self) {
  return *static_cast<Channel*>(self);
}

} // namespace

Channel::Channel(Session& session, std::size_t maxOutput, std::size_t maxErrors)
    : session_(session), maxOutput_(maxOutput), maxErrors_(maxErrors), channel_(ssh_channel_new(session.Raw())) {
  callbacks_.userdata = this;
  callbacks_.channel_data_function = OnData;
  callbacks_.channel_eof_function = OnEof;
  callbacks_.channel_close_function = OnClose;
  callbacks_.channel_exit_status_function = OnExitStatus;
  callbacks_.channel_exit_signal_function = OnSignal;
  ssh_callbacks_init(&callbacks_);
  if (!channel_ || ssh_set_channel_callbacks(channel_.get(), &callbacks_) != SSH_OK) {
    throw std::bad_alloc();
  }
  // Whatever becomes of it is said again to the one who waits.
  static_cast<void>(ssh_channel_open_session(channel_.get()));
}

Channel::~Channel() {
  // The library keeps the channel until the host has closed it as well.
  ssh_remove_channel_callbacks(channel_.get(), &callbacks_);
}

void Channel::AwaitOpening(Deadline deadline) {
  session_.Repeat(deadline, [this] { return ssh_channel_open_session(channel_.get()); });
}

bool Channel::Opening() {
  return ssh_channel_open_session(channel_.get()) == SSH_AGAIN;
}

void Channel::StartSubsystem(const char* name) {
  session_.Repeat(session_.NewDeadline(), [&] { return ssh_channel_request_subsystem(channel_.get(), name); });
}

/// The first call sends the request, and the end of the input follows at once.
void Channel::StartCommand(const std::string& line) {
  bool sent = false;
  session_.Repeat(session_.NewDeadline(), [&] {
    const int outcome = ssh_channel_request_exec(channel_.get(), line.c_str());
    if (outcome != SSH_ERROR && !std::exchange(sent, true)) {
      ssh_channel_send_eof(channel_.get());
    }
    return outcome;
  });
}

void Channel::Write(std::string_view data, std::optional<Deadline> limit) {
  auto deadline = limit.value_or(session_.NewDeadline());
  while (!data.empty()) {
    const auto length = static_cast<uint32_t>(std::min<std::size_t>(data.size(), std::size_t{1} << 20U));
    const int written = closed ? SSH_ERROR : ssh_channel_write(channel_.get(), data.data(), length);
    if (written > 0) {
      data.remove_prefix(static_cast<std::size_t>(written));
      deadline = limit.value_or(session_.NewDeadline());
      continue;
    }
    if (written != 0 && written != SSH_AGAIN) {
      throw ConnectionLost(session_.Alive() ? "il servizio sull'host si è chiuso" : session_.LossReason());
    }
    session_.HandleEvents(deadline);
  }
}

void Channel::Kill() {
  static constexpr int SendTimeout = 1000;
  if (session_.Alive() && !closed) {
    ssh_channel_request_send_signal(channel_.get(), "KILL");
    ssh_blocking_flush(session_.Raw(), SendTimeout);
  }
}

int Channel::OnData(ssh_session /*sessione*/, ssh_channel /*canale*/, void* data, uint32_t length, int isErrorStream,
                    void* self) {
  Own(self).Take({static_cast<const char*>(data), length}, isErrorStream != 0);
  return static_cast<int>(length);
}

void Channel::OnEof(ssh_session /*sessione*/, ssh_channel /*canale*/, void* self) {
  Own(self).eof = true;
}

void Channel::OnClose(ssh_session /*sessione*/, ssh_channel /*canale*/, void* self) {
  Own(self).eof = true;
  Own(self).closed = true;
}

void Channel::OnExitStatus(ssh_session /*sessione*/, ssh_channel /*canale*/, int state, void* self) {
  Own(self).state = state;
}

void Channel::OnSignal(ssh_session /*sessione*/, ssh_channel /*canale*/, const char* signal, int /*core*/,
                       const char* /*messaggio*/, const char* /*lingua*/, void* self) {
  Own(self).signal = signal != nullptr && *signal != '\0' ? signal : "sconosciuto";
}

/// The library's C code calls this: nothing may be thrown through it.
void Channel::Take(std::string_view data, bool isErrorStream) noexcept {
  try {
    if (isErrorStream) {
      errors.append(data.substr(0, maxErrors_ - errors.size()));
      return;
    }
    const auto position = maxOutput_ - std::min(maxOutput_, output.size());
    excessiveOutput = excessiveOutput || data.size() > position;
    output.append(data.substr(0, position));
  } catch (...) {
    excessiveOutput = true;
  }
}

} // namespace lumoscad::nexaro
