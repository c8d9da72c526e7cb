#pragma once

#include "platform/ado/Execution.hpp"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad::ado::detail {

/// A prepared statement of one session.
class Prepared {
 public:
  Prepared(std::shared_ptr<Session> session, std::string text);

  /// True while it can serve `text` on `session`.
  [[nodiscard]] bool Serves(const std::shared_ptr<Session>& session, std::string_view text) const noexcept;
  /// Executes with one text a marker and reads the whole result, in the columns `wanted`, or in all.
  [[nodiscard]] Outcome Execute(const std::vector<std::string>& parameters,
                                const std::vector<std::string>& wanted = {});

 private:
  void DescribeParameters();

  std::shared_ptr<Session> session_;
  std::string text_;
  Statement statement_;
  std::vector<ParameterType> types_;
};

} // namespace lumoscad::ado::detail
