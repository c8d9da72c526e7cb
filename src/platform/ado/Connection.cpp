#include "platform/ado/Diagnostics.hpp"
#include "platform/ado/Session.hpp"

#include <algorithm>

namespace lumoscad::ado {

using detail::Session;
using detail::Statement;

const std::shared_ptr<Session>& Connection::Impl::Require() const {
  if (!session) {
    throw RuntimeError(detail::numbers::ObjectClosed,
                       "Operazione non consentita: la connessione alla base dati è chiusa.", "ODBC");
  }
  return session;
}

Connection::Connection() : impl_(std::make_unique<Impl>()) {}

Connection::~Connection() {
  Close();
}

void Connection::Open() {
  if (impl_->session) {
    throw RuntimeError(detail::numbers::ObjectOpen, "La connessione alla base dati è già aperta.", "ODBC");
  }
  auto limit = commandTimeout ? std::chrono::seconds(*commandTimeout) : detail::StatementTimeLimit();
  auto settings = ReadConnectionText(ConnectionString);
  settings.existingOnly = existingOnly;
  if (deadline) {
    using std::chrono::seconds;
    const auto left = std::chrono::ceil<seconds>(*deadline - std::chrono::steady_clock::now());
    limit = std::clamp(left, seconds(1), std::max(limit, seconds(1)));
    const auto opening = std::clamp(left, seconds(1), seconds(std::max(settings.connectTimeout, 1)));
    settings.connectTimeout = static_cast<int>(opening.count());
  }
  impl_->session = std::make_shared<Session>(settings, limit, deadline);
  impl_->outcome = TransactionOutcome::NotApplied;
  impl_->inDoubt.reset();
}

State Connection::State() const noexcept {
  return impl_->session ? ado::State::Open : ado::State::Closed;
}

void Connection::Close() {
  if (!impl_->session) {
    return;
  }
  impl_->outcome = impl_->session->Outcome();
  impl_->inDoubt = impl_->session->InDoubt();
  impl_->session->Close();
  impl_->session.reset();
}

void Connection::BeginTrans() {
  impl_->inDoubt.reset();
  impl_->Require()->Begin();
}

void Connection::CommitTrans() {
  const auto& session = impl_->Require();
  try {
    session->Commit(onCommit);
  } catch (...) {
    impl_->inDoubt = session->InDoubt();
    throw;
  }
}

void Connection::RollbackTrans() {
  impl_->Require()->Rollback();
}

const std::optional<TransactionMark>& Connection::InDoubt() const noexcept {
  return impl_->inDoubt;
}

TransactionOutcome Connection::Outcome() const noexcept {
  return impl_->session ? impl_->session->Outcome() : impl_->outcome;
}

std::int64_t Connection::Execute(std::string_view sql) {
  Statement statement(impl_->Require(), detail::Handles::PassedOn);
  std::string text(sql);
  detail::Announce(text);
  const SQLRETURN rc = statement.WaitFor([&] {
    return SQLExecDirect(statement.handle(), reinterpret_cast<SQLCHAR*>(text.data()),
                         static_cast<SQLINTEGER>(text.size()));
  });
  if (rc != SQL_NO_DATA) {
    statement.Require(rc, "Istruzione SQL non riuscita.");
  }
  const std::int64_t affected = detail::AffectedRows(statement, rc);
  statement.PassOn();
  return affected;
}

} // namespace lumoscad::ado
