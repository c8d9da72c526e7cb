// The sftp subsystem of a host that means ill. Speaks just enough of the protocol (draft-ietf-secsh-filexfer-02) to be
// let do its harm.
//
//   sftp_ostile MODO [CARTELLA]
//
// fiume      every file is said to be small, and never ends
// annuncio   every file is said to be of 2^62 bytes
// valanga    obeys the file CARTELLA/via once: writes without pause, and makes the file CARTELLA/piena when no more of
//            it is taken
// pacchetto  an answer is announced as one of 1 GiB
// maniglia   an opened file has a handle of 200,000 bytes
// goccia     every file is said to be small, and never ends; each piece of it takes its time
//
// The others write to CARTELLA/log, a line for each, that a file was opened, closed or removed, and do well what is not
// named here:
//
// old-version      speaks version 2 of the protocol
// short-block      gives the file CARTELLA/served, and a short block in the middle of it
// empty-block      gives a block of no bytes
// oversized-block  gives one byte more than was asked for
// stranger         answers a request that nobody made
// refused-read     refuses to read on in the middle of a file, and holds back what was asked for behind it for as long
//                  as requests come; a close among these is an "early close"
// refused-close    the same, and refuses to close the file as well
// nap              makes the file CARTELLA/asked at the first read, and answers a second later
// lost-byte        says of a written file that it is one byte short
// refused-flush    offers to bring a file to its disk, and refuses to

#include "support/Files.hpp"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <poll.h>
#include <string>
#include <string_view>
#include <unistd.h>
#include <utility>

namespace {

namespace fs = std::filesystem;

enum class Mode {
  Flood,
  Announcement,
  Avalanche,
  Packet,
  FileHandle,
  Drop,
  OldVersion,
  ShortBlock,
  EmptyBlock,
  OversizedBlock,
  Stranger,
  RefusedRead,
  RefusedClose,
  Nap,
  LostByte,
  RefusedFlush
};

enum Type : unsigned char {
  Introduction = 1,
  Version = 2,
  Opening = 3,
  Close = 4,
  Reading = 5,
  Write = 6,
  StateOfLink = 7,
  OpenFileState = 8,
  Removal = 13,
  StateFollowing = 17,
  Outcome = 101,
  Handle = 102,
  Data = 103,
  Attributes = 105,
  Extension = 200
};

enum StatusCode : unsigned char { Done = 0, EndOfFile = 1, Failure = 4 };

/// Of a block that a server is asked for.
constexpr std::size_t BlockSize = 32768;

std::string Number(std::uint64_t value, unsigned width = 4) {
  std::string text;
  for (unsigned rest = width; rest > 0; --rest) {
    text += static_cast<char>(value >> (8U * (rest - 1)) & 0xFFU);
  }
  return text;
}

std::uint64_t Number(std::string_view text) {
  std::uint64_t requestNumber = 0;
  for (const char octet : text) {
    requestNumber = requestNumber << 8U | static_cast<unsigned char>(octet);
  }
  return requestNumber;
}

std::string Text(const std::string& text) {
  return Number(text.size()) + text;
}

bool Read(std::string& where) {
  for (std::size_t place = 0; place < where.size();) {
    const auto got = ::read(STDIN_FILENO, where.data() + place, where.size() - place);
    if (got <= 0 && !(got < 0 && errno == EINTR)) {
      return false;
    }
    place += got > 0 ? static_cast<std::size_t>(got) : 0;
  }
  return true;
}

bool WriteOut(std::string_view text) {
  while (!text.empty()) {
    const auto written = ::write(STDOUT_FILENO, text.data(), text.size());
    if (written <= 0 && !(written < 0 && errno == EINTR)) {
      return false;
    }
    text.remove_prefix(written > 0 ? static_cast<std::size_t>(written) : 0);
  }
  return true;
}

/// Type, number of the request, the rest.
std::optional<std::string> ReadRequest() {
  std::string head(4, '\0');
  if (!Read(head)) {
    return std::nullopt;
  }
  std::string request(Number(head), '\0');
  if (request.empty() || !Read(request)) {
    return std::nullopt;
  }
  return request;
}

std::string Packet(Type type, const std::string& body) {
  return Text(static_cast<char>(type) + body);
}

std::string Status(const std::string& number, StatusCode code, const std::string& reason = {}) {
  return Packet(Outcome, number + Number(code) + Text(reason) + Text(""));
}

/// The service that answers in its way; what it has to remember from one request to the next.
class Service {
 public:
  Service(Mode mode, const fs::path& directory) : mode_(mode), directory_(directory) {
    if (!directory.empty()) {
      log_.open(directory / "log", std::ios::app);
      const std::string served = lumoscad::test::FileText(directory / "served");
      served_.assign(served.begin(), served.end());
    }
  }

  /// The packet, or packets, that answer; nothing while the answer is held back.
  std::string Reply(const std::string& request) {
    static constexpr std::uint32_t WithSize = 1;
    static constexpr std::uint64_t Huge = std::uint64_t{1} << 62U;
    const auto requestNumber = request.substr(1, 4);
    switch (static_cast<unsigned char>(request[0])) {
    case Introduction:
      return Packet(Version, Number(mode_ == Mode::OldVersion ? 2 : 3) +
                                 (mode_ == Mode::RefusedFlush ? Text("fsync@openssh.com") + Text("1") : ""));
    case StateOfLink:
    case StateFollowing:
      return Packet(Attributes, requestNumber + Number(WithSize) + Number(mode_ == Mode::Announcement ? Huge : 10, 8));
    case OpenFileState:
      return Packet(Attributes,
                    requestNumber + Number(WithSize) + Number(written_ - (mode_ == Mode::LostByte ? 1 : 0), 8));
    case Opening:
      Log("open");
      return Packet(Handle, requestNumber + Text(std::string(mode_ == Mode::FileHandle ? 200000 : 1, 'h')));
    case Reading:
      return Block(requestNumber, request);
    case Write:
      // Type, number, handle of one letter, place and length stand before the bytes.
      written_ += request.size() - 22;
      return Status(requestNumber, Done);
    case Close:
      Log(held_.empty() ? "close" : "early close");
      return Released() + Status(requestNumber, mode_ == Mode::RefusedClose ? Failure : Done, "handle perduto");
    case Removal:
      Log("remove");
      return Status(requestNumber, Done);
    case Extension:
      return Status(requestNumber, Failure);
    default:
      return Status(requestNumber, Done);
    }
  }

  [[nodiscard]] bool Holds() const { return !held_.empty(); }
  /// What was held back.
  std::string Released() { return std::exchange(held_, {}); }

 private:
  void Log(const char* word) { log_ << word << std::endl; }

  std::string Block(const std::string& number, const std::string& request) {
    const std::string_view end = request;
    const auto place = Number(end.substr(request.size() - 12, 8));
    const auto length = static_cast<std::size_t>(Number(end.substr(request.size() - 4)));
    switch (mode_) {
    case Mode::Drop:
      ::usleep(300000);
      break;
    case Mode::Nap:
      std::ofstream(directory_ / "asked") << '\n';
      ::sleep(1);
      break;
    case Mode::ShortBlock:
      return ServedBlock(number, place, place == 2 * BlockSize ? 1000 : length);
    case Mode::Stranger:
      return Status(Number(Number(number) + 1000), EndOfFile) + Status(number, EndOfFile);
    case Mode::RefusedRead:
    case Mode::RefusedClose:
      // By then the component has asked for many blocks more.
      if (place == 6 * BlockSize) {
        refused_ = true;
        return Status(number, Failure, "disco guasto");
      }
      if (refused_) {
        held_ += Status(number, EndOfFile);
        return {};
      }
      break;
    default:
      break;
    }
    const auto given = length + (mode_ == Mode::OversizedBlock ? 1 : 0);
    return Packet(Data, number + Text(std::string(mode_ == Mode::EmptyBlock ? 0 : given, 'x')));
  }

  [[nodiscard]] std::string ServedBlock(const std::string& number, std::uint64_t place, std::size_t length) const {
    return place >= served_.size() ? Status(number, EndOfFile)
                                   : Packet(Data, number + Text(served_.substr(place, length)));
  }

  Mode mode_;
  fs::path directory_;
  std::ofstream log_;
  std::string served_;
  std::string held_;          ///< the answers that are held back
  std::uint64_t written_ = 0; ///< bytes
  bool refused_ = false;      ///< a read was
};

/// Writes for ever; says when what lies between here and the component is full.
[[noreturn]] void Overwhelm(const fs::path& directory) {
  static constexpr int Pause = 200;
  const std::string nothing(32768, '\0');
  const int modes = ::fcntl(STDOUT_FILENO, F_GETFL);
  ::fcntl(STDOUT_FILENO, F_SETFL, modes | O_NONBLOCK);
  pollfd output{STDOUT_FILENO, POLLOUT, 0};
  while (::poll(&output, 1, Pause) > 0 && ::write(STDOUT_FILENO, nothing.data(), nothing.size()) > 0) {
  }
  ::fcntl(STDOUT_FILENO, F_SETFL, modes);
  std::ofstream(directory / "piena") << '\n';
  while (WriteOut(nothing)) {
  }
  std::_Exit(0);
}

/// Waits for the next request, or for the file that lets the avalanche loose.
void Wait(const fs::path& directory) {
  static constexpr int Step = 10;
  pollfd input{STDIN_FILENO, POLLIN, 0};
  while (::poll(&input, 1, Step) == 0) {
    if (fs::remove(directory / "via")) {
      Overwhelm(directory);
    }
  }
}

/// Whether another request comes soon.
bool MoreToCome() {
  static constexpr int Pause = 300;
  pollfd input{STDIN_FILENO, POLLIN, 0};
  return ::poll(&input, 1, Pause) != 0;
}

void Serve(Mode mode, const fs::path& directory) {
  Service service(mode, directory);
  for (bool introduced = false;; introduced = true) {
    if (mode == Mode::Avalanche) {
      Wait(directory);
    }
    if (service.Holds() && !MoreToCome() && !WriteOut(service.Released())) {
      return;
    }
    const auto request = ReadRequest();
    const bool outOfBounds = mode == Mode::Packet && introduced;
    if (!request || !WriteOut(outOfBounds ? Number(std::uint64_t{1} << 30U) : service.Reply(*request))) {
      return;
    }
  }
}

bool WantsFolder(Mode mode) {
  return mode == Mode::Avalanche || mode >= Mode::OldVersion;
}

} // namespace

int main(int requestNumber, char** arguments) {
  const std::map<std::string, Mode> modes{{"fiume", Mode::Flood},
                                          {"annuncio", Mode::Announcement},
                                          {"valanga", Mode::Avalanche},
                                          {"pacchetto", Mode::Packet},
                                          {"maniglia", Mode::FileHandle},
                                          {"goccia", Mode::Drop},
                                          {"old-version", Mode::OldVersion},
                                          {"short-block", Mode::ShortBlock},
                                          {"empty-block", Mode::EmptyBlock},
                                          {"oversized-block", Mode::OversizedBlock},
                                          {"stranger", Mode::Stranger},
                                          {"refused-read", Mode::RefusedRead},
                                          {"refused-close", Mode::RefusedClose},
                                          {"nap", Mode::Nap},
                                          {"lost-byte", Mode::LostByte},
                                          {"refused-flush", Mode::RefusedFlush}};
  const auto mode = requestNumber >= 2 ? modes.find(arguments[1]) : modes.end();
  if (mode == modes.end() || (requestNumber != 3 && WantsFolder(mode->second))) {
    std::fputs("uso: sftp_ostile MODO [CARTELLA]\n", stderr);
    return 2;
  }
  Serve(mode->second, requestNumber == 3 ? arguments[2] : "");
  return 0;
}
