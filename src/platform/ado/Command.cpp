#include "platform/ado/Diagnostics.hpp"
#include "platform/ado/RecordsetImpl.hpp"

namespace lumoscad::ado {

struct Command::Impl {
  std::unique_ptr<detail::Prepared> prepared;
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
  auto& prepared = impl_->prepared;
  if (!prepared || !prepared->Serves(session, CommandText)) {
    prepared.reset();
    prepared = std::make_unique<detail::Prepared>(session, CommandText);
  }
  try {
    auto outcome = prepared->Execute(Parameters);
    if (RecordsAffected != nullptr) {
      *RecordsAffected = outcome.affected;
    }
    Recordset result;
    result.impl().Fill(std::move(outcome), session);
    return result;
  } catch (...) {
    // What made it fail may be the plan itself, after a change of the tables.
    prepared.reset();
    throw;
  }
}

} // namespace lumoscad::ado
