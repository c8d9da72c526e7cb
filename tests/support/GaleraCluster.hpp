#pragma once

#include "support/DatabaseServer.hpp"

#include <array>
#include <cstddef>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

namespace lumoscad::test {

/// Where a node of a cluster listens for the others: the group's messages, and what a node missed of late.
struct GroupPorts {
  int group = 0;
  int increments = 0;
};

/// One MariaDB server of a cluster.
class GaleraNode final : public DatabaseServer {
 public:
  /// Prepares the node's data in `directory`, but starts nothing. `members` is the list of all nodes' group addresses.
  GaleraNode(std::filesystem::path directory, const GroupPorts& ports, std::string members);
  ~GaleraNode() { Resume(); }

  /// Starts the node; the first one makes the cluster.
  void Start(bool first);
  /// The node stops answering, as one that is cut off.
  void Pause() const;
  void Resume() const;
  /// Whether the node sees `members` nodes, itself included, and serves.
  [[nodiscard]] bool Sees(std::size_t members);
  /// A value of the node's own status.
  [[nodiscard]] std::string Status(std::string_view name);

 private:
  void Run(bool first, const std::filesystem::path& users);
  void CreateData();

  GroupPorts ports_;
  std::string members_;
};

/// Three nodes that hold the same databases (https://galeracluster.com/library/documentation/).
class GaleraCluster {
 public:
  static constexpr std::size_t Size = 3;

  /// True where the server, the replication's library and the ODBC driver are installed.
  [[nodiscard]] static bool Available();

  /// Starts the nodes with data in folders of `directory`. Raises when one of them does not join within a minute.
  explicit GaleraCluster(const std::filesystem::path& directory);

  [[nodiscard]] GaleraNode& Node(std::size_t number) { return *nodes_.at(number); }
  /// Where all nodes are, as a data source names them.
  [[nodiscard]] std::string Hosts() const;
  /// Creates a database on every node; `script` is run in it.
  void CreateDatabase(std::string_view name, std::string_view script);
  /// Waits until every node sees all; raises after a minute.
  void AwaitWhole();
  /// Puts a new node in the place of one that was lost; returns when the cluster is whole. It has another port.
  void Replace(std::size_t number);

 private:
  void Prepare(std::size_t number);

  std::filesystem::path directory_;
  std::array<GroupPorts, Size> ports_;
  std::string members_;
  std::array<std::unique_ptr<GaleraNode>, Size> nodes_;
};

} // namespace lumoscad::test
