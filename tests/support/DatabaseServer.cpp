#include "support/DatabaseServer.hpp"

#include <system_error>
#include <utility>

namespace lumoscad::test {

DatabaseServer::DatabaseServer(std::filesystem::path directory, const DriverNames& driver)
    : directory_(std::move(directory)), driver_(driver) {}

DatabaseServer::~DatabaseServer() {
  server_.Stop();
  std::error_code ignored;
  std::filesystem::remove_all(directory_, ignored);
}

std::string DatabaseServer::AddSource(std::string_view database, int port,
                                      const OdbcConfiguration::Settings& more) const {
  const bool direct = port == 0 && !hosts_.empty();
  OdbcConfiguration::Settings settings{{driver_.host, direct ? hosts_ : host_},
                                       {driver_.port, std::to_string(port == 0 ? port_ : port)},
                                       {driver_.database, std::string(database)}};
  if (direct) {
    settings.insert(settings.end(), ofSeveral_.begin(), ofSeveral_.end());
  }
  settings.insert(settings.end(), more.begin(), more.end());
  return OdbcConfiguration::Instance().AddSource(driver_.kind, driver_.library, settings);
}

void DatabaseServer::LeadTo(std::string hosts, OdbcConfiguration::Settings more) {
  hosts_ = std::move(hosts);
  ofSeveral_ = std::move(more);
}

void DatabaseServer::AwaitAnswer(std::string_view database, const char* question) {
  OdbcConfiguration::Instance().RemoveSource(system_);
  system_ = AddSource(database);
  const std::string text = ConnectionText(system_);
  WaitUntilReady(server_, [&] { CheckDataDirectory(text, question, directory_ / "data"); });
}

} // namespace lumoscad::test
