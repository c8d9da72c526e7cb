#include "platform/ado/Advice.hpp"

#include <algorithm>
#include <array>

namespace lumoscad::ado::detail {

namespace {

constexpr long AnyNumber = 0;

/// A record matches where the state begins so, the number is the same and the text occurs; empty and 0 match all.
struct Meaning {
  std::string_view state;
  long native;
  std::string_view text;
  Advice advice;
};

// Standard states and PostgreSQL's own; the texts of its library in the languages of the calling programs; MariaDB's
// numbers, above all those of the others, whose states its driver does not keep; texts of SQLite, whose driver gives
// every failure the state HY000.
constexpr std::array<Meaning, 22> Meanings{{
    {"40001", AnyNumber, "", Advice::Deadlock},
    {"40P01", AnyNumber, "", Advice::Deadlock},
    {"HYT00", AnyNumber, "", Advice::Waited},
    {"HYT01", AnyNumber, "", Advice::Waited},
    {"55P03", AnyNumber, "", Advice::Waited},
    {"57014", AnyNumber, "", Advice::Waited},
    {"57033", AnyNumber, "", Advice::Waited},
    {"", 1969, "", Advice::Waited},
    {"", 1205, "", Advice::Waited},
    {"HY000", AnyNumber, "database is locked", Advice::Waited},
    {"HY000", AnyNumber, "database table is locked", Advice::Waited},
    {"53100", AnyNumber, "", Advice::Full},
    {"57011", AnyNumber, "", Advice::Full},
    {"", 1021, "", Advice::Full},
    {"", 1114, "", Advice::Full},
    {"HY000", AnyNumber, "No space left on device", Advice::Full},
    {"HY000", AnyNumber, "disk is full", Advice::Full},
    {"08001", AnyNumber, "session is read-only", Advice::ReadOnly},
    {"08001", AnyNumber, "la sessione è di sola lettura", Advice::ReadOnly},
    {"08S01", AnyNumber, "", Advice::ConnectionLost},
    {"57P0", AnyNumber, "", Advice::ConnectionLost},
    {"", 1927, "", Advice::ConnectionLost},
}};

} // namespace

Advice AdviceFor(std::string_view sqlstate, long native, std::string_view text) noexcept {
  const auto* const found = std::find_if(Meanings.begin(), Meanings.end(), [&](const Meaning& each) {
    return sqlstate.starts_with(each.state) && (each.native == AnyNumber || each.native == native) &&
           text.find(each.text) != std::string_view::npos;
  });
  return found == Meanings.end() ? Advice::None : found->advice;
}

std::string_view Sentence(Advice advice) noexcept {
  switch (advice) {
  case Advice::Waited:
    return "Un altro terminale tiene occupate le righe, oppure la base dati è lenta: l'attesa massima è trascorsa.";
  case Advice::Deadlock:
    return "Due terminali si sono bloccati a vicenda sulle stesse righe: la base dati ha annullato le modifiche di "
           "questo.";
  case Advice::Conflict:
    return "Un altro terminale ha modificato le stesse righe nello stesso momento: la base dati ha annullato le "
           "modifiche di questo.";
  case Advice::Full:
    return "Lo spazio della base dati è esaurito: avvisare chi amministra il sistema.";
  case Advice::ReadOnly:
    return "Della base dati risponde solo un server di riserva, che non prende modifiche: chi amministra il sistema "
           "deve promuoverlo, o riavviare quello principale.";
  case Advice::ConnectionLost:
    return "La connessione con la base dati è caduta.";
  case Advice::None:
    break;
  }
  return {};
}

} // namespace lumoscad::ado::detail
