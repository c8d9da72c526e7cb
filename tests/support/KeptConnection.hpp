#pragma once

#include <memory>
#include <string>

namespace lumoscad::ado {
class Connection;
}

namespace lumoscad::test {

/// A connection for a test's own statements. It stays open between them, since opening one costs a server a process
/// and the driver dozens of looks at its configuration, and is opened anew where the server has ended it meanwhile.
class KeptConnection {
 public:
  KeptConnection();
  KeptConnection(const KeptConnection&) = delete;
  KeptConnection& operator=(const KeptConnection&) = delete;
  ~KeptConnection();

  /// The open connection to `connectionText`, which is the same at every call. Raises where it cannot be opened.
  ado::Connection& To(const std::string& connectionText);

 private:
  std::unique_ptr<ado::Connection> connection_;
};

} // namespace lumoscad::test
