// A request over SSH, from the upload to the clean-up, against the OpenSSH client doing the same.

#include "Measures.hpp"
#include "platform/nexaro/Nexaro.hpp"
#include "platform/nexaro/cartella/Process.hpp"
#include "platform/xml/Nodo.hpp"
#include "support/Paths.hpp"
#include "support/SshServer.hpp"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

namespace lumoscad::bench {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t Small = 2000;
constexpr std::size_t Large = 64U << 20U;
constexpr std::size_t LargeReply = 15U << 20U;
constexpr std::size_t MaxOutput = 32U << 20U;

void Write(const fs::path& file, const std::string& text) {
  std::ofstream(file, std::ios::binary) << text;
}

/// The host: a server, a program that answers with the file "risposta", the files of the two sides.
class Host {
 public:
  Host() : base_(test::BuildFolder() / "bench/ssh"), server_(base_ / "server") {
    for (const char* name : {"tmp", "programmi"}) {
      fs::remove_all(base_ / name);
      fs::create_directory(base_ / name);
    }
    Write(base_ / "programmi/VB0001", "#!/bin/sh\nexec cat '" + (base_ / "risposta").string() + "'\n");
    fs::permissions(base_ / "programmi/VB0001", fs::perms::owner_all);
    for (const auto& entry : server_.Environment()) {
      const auto sign = entry.find('=');
      ::setenv(entry.substr(0, sign).c_str(), entry.substr(sign + 1).c_str(), 1);
    }
    ::setenv("NEXARO_PROGRAMMI", (base_ / "programmi").c_str(), 1);
  }

  /// What the next requests send and get.
  void Prepara(std::size_t request, std::size_t reply) const {
    Write(base_ / "richiesta", std::string(request, 'r'));
    Write(base_ / "risposta", "<RISPOSTA><MESSAGGIO>" + std::string(reply, 'x') + "</MESSAGGIO></RISPOSTA>\n");
  }

  [[nodiscard]] std::string Locale() const { return (base_ / "richiesta").string(); }
  [[nodiscard]] std::string Remote() const { return (base_ / "tmp/T01").string(); }
  [[nodiscard]] std::string Program() const { return (base_ / "programmi/VB0001").string(); }
  [[nodiscard]] const fs::path& Base() const { return base_; }
  [[nodiscard]] const test::SshServer& Server() const { return server_; }

 private:
  fs::path base_;
  test::SshServer server_;
};

/// The request as the component makes it.
void Require(const Host& host, nexaro::HostLink& link) {
  const auto address = test::SshServer::Address();
  std::string text;
  std::size_t received = 0;
  nexaro::XMLParser parser;
  parser.Parse = [&received](const xml::Nodo& node) { received = node.value.size(); };
  link.InviaFile(address, host.Locale(), host.Remote());
  link.RinominaFile(address, host.Remote(), host.Remote() + ".dos", text);
  link.EseguiProgramma(address, "VB0001", {"01", "CANALIZZAZIONE", "CREDITI"}, parser);
  link.CancellaFile(address, host.Remote());
  link.CancellaFile(address, host.Remote() + ".dos");
  if (received == 0) {
    throw std::runtime_error("no reply");
  }
}

using Arguments = std::vector<std::string>;

std::string Start(const Arguments& arguments) {
  auto outcome = nexaro::Run({"/usr/bin/env", arguments, {}, "/", std::chrono::seconds(60), MaxOutput, 2000});
  if (outcome.finish != nexaro::ProcessEnd::Exited || outcome.state != 0) {
    throw std::runtime_error(arguments.front() + ": " + outcome.errors);
  }
  return std::move(outcome.output);
}

/// The OpenSSH client: a connection for each of its programs, or one that is kept and shared by them.
class Client {
 public:
  explicit Client(const Host& host) : host_(host) {
    const auto& server = host.Server();
    options_ = {"-F", "none", "-i", server.Key().string()};
    for (const auto& option :
         {"BatchMode=yes", "IdentitiesOnly=yes", "IdentityAgent=none", "GlobalKnownHostsFile=none"}) {
      options_.insert(options_.end(), {"-o", option});
    }
    options_.insert(options_.end(), {"-o", "UserKnownHostsFile=" + server.KnownHosts().string(), "-o",
                                     "Port=" + std::to_string(server.Port())});
    Write(host.Base() / "prima", "put -f " + host.Locale() + " " + host.Remote() + "\nrename " + host.Remote() + " " +
                                     host.Remote() + ".dos\n");
    Write(host.Base() / "dopo", "-rm " + host.Remote() + "\nrm " + host.Remote() + ".dos\n");
  }

  /// Opens the connection that the programs share from now on. The name of its socket has to be short.
  void Keep() {
    std::string pattern = (fs::temp_directory_path() / "lumoscad-bench-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) {
      throw std::runtime_error("mkdtemp");
    }
    socket_ = fs::path(pattern) / "presa";
    options_.insert(options_.end(), {"-o", "ControlPath=" + socket_.string()});
    auto arguments = options_;
    arguments.insert(arguments.end(), {"-M", "-N", "-f", Place()});
    std::string line = "ssh";
    for (const auto& argument : arguments) {
      line += " '" + argument + "'";
    }
    if (std::system((line + " >/dev/null 2>&1").c_str()) != 0) {
      throw std::runtime_error("ssh does not open a connection to keep");
    }
  }
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;
  ~Client() {
    if (!socket_.empty()) {
      try {
        Ssh({"-q", "-O", "exit", Place()});
      } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
      }
      std::error_code isIgnored;
      fs::remove_all(socket_.parent_path(), isIgnored);
    }
  }

  void Require() const {
    Sftp("prima");
    if (Ssh({Place(), host_.Program() + " 01 CANALIZZAZIONE CREDITI"}).empty()) {
      throw std::runtime_error("no reply to ssh");
    }
    Sftp("dopo");
  }

 private:
  [[nodiscard]] std::string Place() const { return host_.Server().User() + "@" + test::SshServer::Address(); }
  std::string Ssh(const Arguments& then) const {
    Arguments arguments{"ssh"};
    arguments.insert(arguments.end(), options_.begin(), options_.end());
    arguments.insert(arguments.end(), then.begin(), then.end());
    return Start(arguments);
  }
  void Sftp(const char* batch) const {
    Arguments arguments{"sftp", "-q", "-b", (host_.Base() / batch).string()};
    arguments.insert(arguments.end(), options_.begin(), options_.end());
    arguments.push_back(Place());
    Start(arguments);
  }

  const Host& host_;
  Arguments options_;
  fs::path socket_;
};

/// The medians of the two sides, measured in turns so that a busy moment of the machine meets both.
void Compare(const char* name, int runs, const std::function<void()>& ours, const std::function<void()>& own) {
  std::vector<double> ourOwn;
  std::vector<double> theirs;
  for (int prova = 0; prova <= runs; ++prova) {
    auto begin = Clock::now();
    ours();
    const double isOurs = Milliseconds(begin);
    begin = Clock::now();
    own();
    // The first time warms both up.
    if (prova > 0) {
      ourOwn.push_back(isOurs);
      theirs.push_back(Milliseconds(begin));
    }
  }
  std::printf("%-44s collegamento %8.1f ms  OpenSSH %8.1f ms  rapporto %.2f\n", name, Median(ourOwn), Median(theirs),
              Median(ourOwn) / Median(theirs));
}

/// The part of the component's time that goes into reading the reply, which the other side does not do.
double XmlReading(const Host& host) {
  std::ifstream file(host.Base() / "risposta", std::ios::binary);
  const std::string document{std::istreambuf_iterator<char>(file), {}};
  std::vector<double> times;
  for (int prova = 0; prova < 7; ++prova) {
    const auto begin = Clock::now();
    if (xml::Read(document).value.size() < LargeReply) {
      throw std::runtime_error("the reply is not whole");
    }
    times.push_back(Milliseconds(begin));
  }
  return Median(times);
}

void Extent() {
  const Host host;
  const auto link = nexaro::CreateHostLink();
  const auto withNew = [&host] { Require(host, *nexaro::CreateHostLink()); };
  const auto withKept = [&host, &link] { Require(host, *link); };
  Client client(host);
  const auto own = [&client] { client.Require(); };
  host.Prepara(Small, Small);
  Compare("Richiesta, connessioni nuove", 15, withNew, own);
  client.Keep();
  Compare("Richiesta, connessione mantenuta", 25, withKept, own);
  host.Prepara(Large, Small);
  Compare("File di 64 MiB, connessione mantenuta", 7, withKept, own);
  host.Prepara(Small, LargeReply);
  Compare("Risposta di 15 MiB, connessione mantenuta", 7, withKept, own);
  std::printf("  di cui lettura dell'XML %.1f ms\n", XmlReading(host));
}

} // namespace
} // namespace lumoscad::bench

int main() {
  if (!lumoscad::test::SshServer::Available()) {
    std::puts("Richiesta: OpenSSH non è installato, misura saltata");
    return 0;
  }
  try {
    lumoscad::bench::Extent();
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 2;
  }
}
