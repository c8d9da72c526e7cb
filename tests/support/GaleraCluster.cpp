#include "support/GaleraCluster.hpp"

#include "platform/RuntimeError.hpp"
#include "platform/ado/Ado.hpp"
#include "support/Loopback.hpp"
#include "support/MariaDbProgram.hpp"
#include "support/Paths.hpp"

#include <csignal>
#include <stdexcept>
#include <system_error>
#include <utility>
#include <vector>

namespace lumoscad::test {

namespace fs = std::filesystem;

namespace {

const fs::path Provider = "/usr/lib/galera/libgalera_smm.so";
constexpr const char* System = "mysql";
constexpr const char* DataDirectory = "SELECT @@datadir";

std::string Address(int port) {
  return "127.0.0.1:" + std::to_string(port);
}

} // namespace

GaleraNode::GaleraNode(fs::path directory, const GroupPorts& ports, std::string members)
    : DatabaseServer(std::move(directory), MariaDbNames), ports_(ports), members_(std::move(members)) {
  PrepareMariaDb(directory_);
  fs::copy_file(SourcePath("tests/support/wsrep_sst_prova"), directory_ / "wsrep_sst_prova");
  CreateData();
}

/// All nodes begin with the same data, which know of one cluster and how far it has come: whoever joins has missed a
/// little at most, which the nodes send each other by themselves.
void GaleraNode::CreateData() {
  const fs::path data = directory_ / "data";
  FreshData(data, "galera-" + DigestOfCreation(Provider, MariaDbWords({}, 0)), MariaDbUser, [&] {
    CreateMariaDbData(directory_);
    const auto members = std::exchange(members_, "");
    const fs::path users = WriteMariaDbUsers(directory_, user_, password_);
    StartOnFreePort(server_, [&](int port) {
      port_ = port;
      Run(true, users);
    });
    fs::remove(users);
    server_.Stop();
    members_ = members;
  });
}

void GaleraNode::Run(bool first, const fs::path& users) {
  // The server looks for the program of its transfers among those of the machine.
  std::vector<std::string> words{"/usr/bin/env", "PATH=" + directory_.string() + ":/usr/bin:/bin"};
  const auto server = MariaDbWords(directory_, port_);
  words.insert(words.end(), server.begin(), server.end());
  words.insert(words.end(),
               {"--wsrep-on=ON", "--wsrep-provider=" + Provider.string(), "--wsrep-cluster-name=prova",
                "--wsrep-cluster-address=gcomm://" + members_, "--wsrep-node-address=" + Address(ports_.group),
                "--wsrep-sst-method=prova",
                "--wsrep-provider-options=gmcast.listen_addr=tcp://" + Address(ports_.group) +
                    ";ist.recv_addr=" + Address(ports_.increments) +
                    ";gcache.size=64M;evs.keepalive_period=PT0.5S;evs.suspect_timeout=PT2S;evs.inactive_timeout=PT4S",
                "--binlog-format=ROW", "--innodb-autoinc-lock-mode=2"});
  if (first) {
    words.emplace_back("--wsrep-new-cluster");
  }
  if (!users.empty()) {
    words.push_back("--init-file=" + users.string());
  }
  server_ = ServerProcess(std::move(words), directory_ / "server.log", MariaDbUser, SIGTERM);
  try {
    AwaitAnswer(System, DataDirectory);
  } catch (const RuntimeError& error) {
    throw std::runtime_error(std::string(error.what()) + "; " + EndOf(directory_ / "server.log"));
  }
}

void GaleraNode::Start(bool first) {
  StartOnFreePort(server_, [&](int port) {
    port_ = port;
    Run(first, {});
  });
}

void GaleraNode::Pause() const {
  ::kill(Process(), SIGSTOP);
}

void GaleraNode::Resume() const {
  if (Process() > 0) {
    ::kill(Process(), SIGCONT);
  }
}

std::string GaleraNode::Status(std::string_view name) {
  ado::Connection connection;
  connection.ConnectionString = ConnectionText(system_);
  connection.Open();
  ado::Command command;
  command.ActiveConnection = &connection;
  command.CommandText = "SHOW STATUS LIKE '" + std::string(name) + "'";
  ado::Recordset rows = command.Execute();
  return rows.Eof() ? std::string() : std::string(rows.ValueAt(1).value_or(""));
}

bool GaleraNode::Sees(std::size_t members) {
  try {
    return Status("wsrep_cluster_size") == std::to_string(members) && Status("wsrep_ready") == "ON" &&
           Status("wsrep_local_state_comment") == "Synced";
  } catch (const RuntimeError&) {
    return false;
  }
}

bool GaleraCluster::Available() {
  std::error_code error;
  return MariaDbInstalled() && fs::exists(Provider, error);
}

GaleraCluster::GaleraCluster(const fs::path& directory) : directory_(directory) {
  // Open together, so that no two are the same.
  std::vector<base::Descriptor> held;
  for (GroupPorts& each : ports_) {
    for (int* port : {&each.group, &each.increments}) {
      *port = PortOf(held.emplace_back(Listen()));
    }
    members_ += (members_.empty() ? "" : ",") + Address(each.group);
  }
  held.clear();
  for (std::size_t i = 0; i < Size; ++i) {
    Prepare(i);
    nodes_[i]->Start(i == 0);
    Await("a node joins", [&] { return nodes_[i]->Sees(i + 1); });
  }
}

void GaleraCluster::Prepare(std::size_t number) {
  nodes_.at(number).reset(); // its folder goes with it
  nodes_.at(number) =
      std::make_unique<GaleraNode>(directory_ / std::to_string(number + 1), ports_.at(number), members_);
}

void GaleraCluster::Replace(std::size_t number) {
  Prepare(number);
  nodes_.at(number)->Start(false);
  AwaitWhole();
}

std::string GaleraCluster::Hosts() const {
  std::string hosts;
  for (const auto& node : nodes_) {
    hosts += (hosts.empty() ? "" : ",") + Address(node->Port());
  }
  return hosts;
}

void GaleraCluster::CreateDatabase(std::string_view name, std::string_view script) {
  const std::string text(name);
  RunScript(Node(0).ConnectionText(Node(0).AddSource(System)),
            "CREATE DATABASE " + text + ";USE " + text + ";" + std::string(script));
}

void GaleraCluster::AwaitWhole() {
  for (const auto& node : nodes_) {
    Await("the cluster is whole", [&] { return node->Sees(Size); });
  }
}

} // namespace lumoscad::test
