#include "platform/ado/Diagnostics.hpp"
#include "platform/ado/RecordsetImpl.hpp"

namespace lumoscad::ado {

struct Command::Impl {
  std::unique_ptr<detail::Prepared> prepared;

  /// Executes on the handle that is kept, preparing it where there is none for this text on this session.
  [[nodiscard]] detail::Outcome Execute(const std::shared_ptr<detail::Session>& session, const std::string& text,
                                        const std::vector<std::string>& parameters,
                                        const std::vector<std::string>& wanted);
};

Command::Command() : impl_(std::make_unique<Impl>()) {}
Command::Command(Command&&) noexcept = default;
Command& Command::operator=(Command&&) noexcept = default;
Command::~Command() = default;

Recordset Command::Execute(std::int64_t* RecordsAffected) {
  if (ActiveConnection == nullptr) {
    throw RuntimeError(detail::numbers::ObjectClosed, "Il comando SQL non è collegato ad alcuna connessione.", "ODBC");
  }
  const auto& session = ActiveConnection->impl().Require();
  auto outcome = sentOnce ? detail::ExecuteOnce(session, CommandText, Parameters, wantedColumns)
                          : impl_->Execute(session, CommandText, Parameters, wantedColumns);
  if (RecordsAffected != nullptr) {
    *RecordsAffected = outcome.affected;
  }
  Recordset result;
  result.impl().Fill(std::move(outcome), session);
  return result;
}

detail::Outcome Command::Impl::Execute(const std::shared_ptr<detail::Session>& session, const std::string& text,
                                       const std::vector<std::string>& parameters,
                                       const std::vector<std::string>& wanted) {
  if (!prepared || !prepared->Serves(session, text)) {
    prepared.reset();
    prepared = std::make_unique<detail::Prepared>(session, text);
  }
  try {
    return prepared->Execute(parameters, wanted);
  } catch (...) {
    // What made it fail may be the plan itself, after a change of the tables.
    prepared.reset();
    throw;
  }
}

} // namespace lumoscad::ado
