#include "platform/ado/Aftermath.hpp"
#include "platform/ado/Diagnostics.hpp"
#include "platform/ado/Session.hpp"

// A pooler of transactions gives a connection whichever of the server's sessions is free, anew for every transaction.
// The settings of a connection then meet other connections' statements, and the question after COMMIT is answered by
// somebody else. One connection that is alone with the pooler cannot tell: it finds the same session every time. So
// each leaves a mark, and looks for those of others: a session on which an earlier connection's mark still stands is
// not this one's own, and neither is one on which its own mark no longer stands when a transaction begins.

namespace lumoscad::ado::detail {

namespace {

RuntimeError SharedServerSession() {
  return RuntimeError(errors::Driver,
                      "La base dati non si usa attraverso un pooler che cambia il processo del server a ogni "
                      "transazione. Nel pooler occorre pool_mode=session, con server_reset_query=DISCARD ALL; oppure "
                      "l'origine dati deve portare diritto al server.",
                      "ODBC")
      .WithState("", SharedSession);
}

} // namespace

/// Of a session that was reset there is a pooler for certain: it is asked once more, since the mark may be gone
/// already.
void Session::RequireOwnServerSession(const ServerSide& told) {
  if (told.found == "used") {
    throw SharedServerSession();
  }
  marked_ = told.marked;
  if (told.found == "reset") {
    static_cast<void>(OwnServerSession());
  }
}

/// The session's identity in an answer that the mark may stand behind. Raises when that is not this connection's own.
std::string Session::RequireOwn(const std::string& answer) const {
  if (!marked_.empty() && answer != marked_) {
    throw SharedServerSession();
  }
  return answer.substr(0, answer.find(' '));
}

/// The identity of the server's side of the connection. Raises when no answer comes, and when it is not this
/// connection's own.
std::string Session::OwnServerSession() const {
  return marked_.empty() ? ServerSession() : RequireOwn(AskExplained(dialect_->marked).at(0));
}

} // namespace lumoscad::ado::detail
