// The sftp subsystem of a test's host: sees a directory as the root of the host, and stands still where it is told to.
//
//   sftp_radice [-f BYTE] [-o CARTELLA] RADICE
//
// -f bounds the size of the files that are written, as a full disk would. With -o the file CARTELLA/ordine, "OPERATION
// MOMENT", is obeyed once: OPERATION is apri, leggi, scrivi, chiudi, rinomina, cancella, stato or sincronizza, MOMENT
// is prima (the request is not carried out) or dopo (it is carried out, its answer is kept). Then the file
// CARTELLA/fermo appears, and nothing is answered any more until the connection ends.

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <linux/capability.h>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

constexpr const char* Server = "/usr/lib/openssh/sftp-server";

/// The requests of the protocol, version 3, that hold a path (draft-ietf-secsh-filexfer-02, 3 and 6).
enum Type : unsigned char {
  Open = 3,
  Close = 4,
  Read = 5,
  Write = 6,
  StateOfLink = 7,
  StateOfHandle = 8,
  ImpostaStato = 9,
  OpenDirectory = 11,
  Erase = 13,
  Rename = 18,
  Status = 17,
  CreateLink = 20,
  Extended = 200
};

struct Options {
  std::string root;
  fs::path orders;
  long maximum = 0;
};

struct Order {
  std::string operation;
  bool after = false;
};

std::uint32_t Number(std::string_view text, std::size_t place) {
  std::uint32_t number = 0;
  for (std::size_t index = place; index < place + 4 && index < text.size(); ++index) {
    number = number << 8U | static_cast<unsigned char>(text[index]);
  }
  return number;
}

std::string Octets(std::size_t number) {
  std::string text;
  for (int scan = 24; scan >= 0; scan -= 8) {
    text += static_cast<char>(number >> static_cast<unsigned>(scan) & 0xFFU);
  }
  return text;
}

bool ReadAll(int file, char* where, std::size_t howMany) {
  while (howMany > 0) {
    const auto got = ::read(file, where, howMany);
    if (got < 0 && errno == EINTR) {
      continue;
    }
    if (got <= 0) {
      return false;
    }
    where += got;
    howMany -= static_cast<std::size_t>(got);
  }
  return true;
}

bool WriteAll(int file, std::string_view text) {
  while (!text.empty()) {
    const auto written = ::write(file, text.data(), text.size());
    if (written < 0 && errno == EINTR) {
      continue;
    }
    if (written <= 0) {
      return false;
    }
    text.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

/// A packet without its length: type, number of the request, the rest.
std::optional<std::string> ReadPacket(int file) {
  std::array<char, 4> head{};
  if (!ReadAll(file, head.data(), head.size())) {
    return std::nullopt;
  }
  std::string packet(Number(std::string_view(head.data(), head.size()), 0), '\0');
  if (packet.empty() || !ReadAll(file, packet.data(), packet.size())) {
    return std::nullopt;
  }
  return packet;
}

bool WritePacket(int file, const std::string& packet) {
  return WriteAll(file, Octets(packet.size()) + packet);
}

constexpr std::size_t AfterNumber = 5;

std::string Text(const std::string& packet, std::size_t place) {
  return place + 4 <= packet.size() ? packet.substr(place + 4, Number(packet, place)) : "";
}

std::string Extension(const std::string& packet) {
  return static_cast<unsigned char>(packet[0]) == Extended ? Text(packet, AfterNumber) : "";
}

/// Puts the root before the path that stands at `place`; the place behind it.
std::size_t PrependRoot(std::string& packet, std::size_t place, const std::string& root) {
  const auto path = Text(packet, place);
  const auto newName = path.starts_with('/') ? root + path : path;
  packet.replace(place, 4 + path.size(), Octets(newName.size()) + newName);
  return place + 4 + newName.size();
}

void PrependRoots(std::string& packet, const std::string& root) {
  const auto type = static_cast<unsigned char>(packet[0]);
  const auto extension = Extension(packet);
  const bool ofFile = type == Open || type == StateOfLink || type == ImpostaStato || type == OpenDirectory ||
                      (type >= Erase && type <= CreateLink);
  if (ofFile || extension == "posix-rename@openssh.com" || extension == "statvfs@openssh.com" ||
      extension == "hardlink@openssh.com" || extension == "lsetstat@openssh.com") {
    const bool two = type == Rename || type == CreateLink || extension == "posix-rename@openssh.com" ||
                     extension == "hardlink@openssh.com";
    const auto after = PrependRoot(packet, extension.empty() ? AfterNumber : AfterNumber + 4 + extension.size(), root);
    if (two) {
      PrependRoot(packet, after, root);
    }
  }
}

std::string Operation(const std::string& packet) {
  static const std::map<unsigned char, std::string> Nomi{
      {Open, "apri"},      {Close, "chiudi"}, {Read, "leggi"},        {Write, "scrivi"},       {Rename, "rinomina"},
      {Erase, "cancella"}, {Status, "stato"}, {StateOfLink, "stato"}, {StateOfHandle, "stato"}};
  const auto extension = Extension(packet);
  if (extension == "posix-rename@openssh.com") {
    return "rinomina";
  }
  if (extension == "fsync@openssh.com") {
    return "sincronizza";
  }
  const auto name = Nomi.find(static_cast<unsigned char>(packet[0]));
  return name == Nomi.end() ? "" : name->second;
}

/// The order, where there is one for this request; it is obeyed once.
std::optional<Order> ReadOrder(const Options& options, const std::string& packet) {
  if (options.orders.empty()) {
    return std::nullopt;
  }
  std::ifstream file(options.orders / "ordine");
  Order order;
  std::string moment;
  if (!(file >> order.operation >> moment) || order.operation != Operation(packet)) {
    return std::nullopt;
  }
  order.after = moment == "dopo";
  fs::remove(options.orders / "ordine");
  return order;
}

/// Says that the place is reached, and takes in what still comes.
[[noreturn]] void StopHere(const Options& options) {
  std::ofstream(options.orders / "fermo") << '\n';
  std::array<char, 4096> ignored{};
  while (::read(STDIN_FILENO, ignored.data(), ignored.size()) > 0) {
  }
  std::_Exit(0);
}

struct Pipes {
  int toServer = -1;
  int fromServer = -1;
};

/// Root's files would be open to it whatever their permissions say; the host's user is no such one.
void ObeyPermissions() {
  if (::geteuid() == 0) {
    ::prctl(PR_CAPBSET_DROP, CAP_DAC_OVERRIDE);
    ::prctl(PR_CAPBSET_DROP, CAP_DAC_READ_SEARCH);
  }
}

Pipes StartServer(const Options& options) {
  std::array<int, 2> requests{};
  std::array<int, 2> replies{};
  if (::pipe(requests.data()) != 0 || ::pipe(replies.data()) != 0) {
    throw std::system_error(errno, std::generic_category(), "pipe");
  }
  const pid_t child = ::fork();
  if (child == 0) {
    ::dup2(requests[0], STDIN_FILENO);
    ::dup2(replies[1], STDOUT_FILENO);
    for (const int file : {requests[0], requests[1], replies[0], replies[1]}) {
      ::close(file);
    }
    if (options.maximum > 0) {
      const rlimit limit{static_cast<rlim_t>(options.maximum), static_cast<rlim_t>(options.maximum)};
      ::setrlimit(RLIMIT_FSIZE, &limit);
      // The write is to fail, not the server to die.
      ::signal(SIGXFSZ, SIG_IGN);
    }
    ObeyPermissions();
    ::execl(Server, Server, nullptr);
    ::_exit(127);
  }
  ::close(requests[0]);
  ::close(replies[1]);
  return {requests[1], replies[0]};
}

/// Carries the answers; stands still at the one that is to be kept.
void ReplyPort(const Options& options, int fromServer, const std::atomic<std::int64_t>& held) {
  while (const auto packet = ReadPacket(fromServer)) {
    if (packet->size() >= AfterNumber && held == static_cast<std::int64_t>(Number(*packet, 1))) {
      std::ofstream(options.orders / "fermo") << '\n';
      return;
    }
    if (!WritePacket(STDOUT_FILENO, *packet)) {
      return;
    }
  }
  std::_Exit(0);
}

[[noreturn]] void Serve(const Options& options) {
  ::signal(SIGPIPE, SIG_IGN);
  const auto pipes = StartServer(options);
  std::atomic<std::int64_t> held{-1};
  const std::thread replies([&] { ReplyPort(options, pipes.fromServer, held); });
  while (auto packet = ReadPacket(STDIN_FILENO)) {
    const auto order = ReadOrder(options, *packet);
    if (order && !order->after) {
      StopHere(options);
    }
    if (order) {
      held = Number(*packet, 1);
    }
    PrependRoots(*packet, options.root);
    if (!WritePacket(pipes.toServer, *packet)) {
      break;
    }
  }
  // What is still being answered goes with the connection, and the server with its pipes.
  std::_Exit(0);
}

} // namespace

int main(int number, char** arguments) {
  Options options;
  for (int letter = 0; (letter = ::getopt(number, arguments, "f:o:")) != -1;) {
    if (letter == 'f') {
      options.maximum = std::strtol(optarg, nullptr, 10);
    } else if (letter == 'o') {
      options.orders = optarg;
    } else {
      return 2;
    }
  }
  if (optind + 1 != number) {
    std::fputs("uso: sftp_radice [-f BYTE] [-o CARTELLA] RADICE\n", stderr);
    return 2;
  }
  options.root = arguments[optind];
  Serve(options);
}
