#include "support/KeptConnection.hpp"

#include "platform/RuntimeError.hpp"
#include "platform/ado/Ado.hpp"
#include "support/OdbcConfiguration.hpp"

namespace lumoscad::test {

namespace {

bool Answers(ado::Connection& connection) {
  try {
    return FirstValue(connection, "SELECT 1") == "1";
  } catch (const RuntimeError&) {
    return false;
  }
}

} // namespace

KeptConnection::KeptConnection() = default;
KeptConnection::~KeptConnection() = default;

ado::Connection& KeptConnection::To(const std::string& connectionText) {
  if (!connection_ || !Answers(*connection_)) {
    connection_ = std::make_unique<ado::Connection>();
    connection_->ConnectionString = connectionText;
    connection_->Open();
  }
  return *connection_;
}

} // namespace lumoscad::test
