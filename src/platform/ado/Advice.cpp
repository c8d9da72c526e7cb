#include "platform/ado/Advice.hpp"

#include <algorithm>
#include <array>

namespace lumoscad::ado::interno {

namespace {

constexpr std::string_view waited = "Un altro terminale tiene occupate le righe, oppure la base dati è lenta: l'attesa "
                                    "massima è trascorsa.";
constexpr std::string_view deadlock = "Due terminali si sono bloccati a vicenda sulle stesse righe: la base dati ha "
                                      "annullato le modifiche di questo.";
constexpr std::string_view full = "Lo spazio della base dati è esaurito: avvisare chi amministra il sistema.";

constexpr long anyNumber = 0;

/// A record matches where the state begins so, the number is the same and the text occurs; empty and 0 match all.
struct Meaning {
  std::string_view state;
  long native;
  std::string_view text;
  std::string_view advice;
};

// Standard states and PostgreSQL's own; MariaDB's numbers, above all those of the others, whose states its driver does
// not keep; texts of SQLite, whose driver gives every failure the state HY000.
constexpr std::array<Meaning, 20> meanings{{
    {"40001", anyNumber, "", deadlock},
    {"40P01", anyNumber, "", deadlock},
    {"HYT00", anyNumber, "", waited},
    {"HYT01", anyNumber, "", waited},
    {"55P03", anyNumber, "", waited},
    {"57014", anyNumber, "", waited},
    {"57033", anyNumber, "", waited},
    {"", 1969, "", waited},
    {"", 1205, "", waited},
    {"HY000", anyNumber, "database is locked", waited},
    {"HY000", anyNumber, "database table is locked", waited},
    {"53100", anyNumber, "", full},
    {"57011", anyNumber, "", full},
    {"", 1021, "", full},
    {"", 1114, "", full},
    {"HY000", anyNumber, "No space left on device", full},
    {"HY000", anyNumber, "disk is full", full},
    {"08S01", anyNumber, "", connectionLost},
    {"57P0", anyNumber, "", connectionLost},
    {"", 1927, "", connectionLost},
}};

} // namespace

std::string_view adviceFor(std::string_view sqlstate, long native, std::string_view text) noexcept {
  const auto* const found = std::find_if(meanings.begin(), meanings.end(), [&](const Meaning& each) {
    return sqlstate.starts_with(each.state) && (each.native == anyNumber || each.native == native) &&
           text.find(each.text) != std::string_view::npos;
  });
  return found == meanings.end() ? std::string_view() : found->advice;
}

} // namespace lumoscad::ado::interno
