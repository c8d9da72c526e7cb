#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad::test {

/// What the program hands to the driver manager: a program that links this has its SQLPrepare, SQLDescribeParam,
/// SQLExecute and SQLExecDirect counted on their way, and the statement handles that it allocates and frees. From its
/// making to its end, for one thread.
class CountedStatements {
 public:
  CountedStatements();
  CountedStatements(const CountedStatements&) = delete;
  CountedStatements& operator=(const CountedStatements&) = delete;
  ~CountedStatements();

  /// How many statements that begin like this were prepared.
  [[nodiscard]] std::size_t Preparations(std::string_view begin) const;
  /// How many times such statements were executed after they had been prepared.
  [[nodiscard]] std::size_t Executions(std::string_view begin) const;
  /// How many times such statements were executed without being prepared.
  [[nodiscard]] std::size_t DirectExecutions(std::string_view begin) const;
  /// How many parameters were described, of whatever statement.
  [[nodiscard]] std::size_t Descriptions() const noexcept { return descriptions_; }

  /// How many statement handles were allocated.
  [[nodiscard]] std::size_t Allocations() const noexcept { return allocations_; }
  /// How many of these are not freed yet.
  [[nodiscard]] std::size_t Handles() const noexcept { return allocated_.size(); }

  /// The name that every server goes by from here on; empty for its own.
  std::string serverName;
  /// Told of the handle before each statement that is executed without being prepared; may be empty.
  std::function<void(void*)> beforeDirectExecution;

  // What the layer tells.
  void Prepared(const void* statement, std::string_view text);
  void Executed(const void* statement);
  void ExecutedDirectly(std::string_view text);
  void Described() noexcept { ++descriptions_; }
  void Allocated(const void* statement);
  void Freed(const void* handle) { allocated_.erase(handle); }

 private:
  struct Preparation {
    std::string text;
    std::size_t executions;
  };
  std::vector<Preparation> preparations_;
  std::vector<std::string> direct_;
  std::size_t descriptions_ = 0;
  std::size_t allocations_ = 0;
  std::set<const void*> allocated_;
  std::map<const void*, std::size_t> latest_; ///< the last preparation of each handle: handles come back
};

} // namespace lumoscad::test
