#pragma once

#include "common/MsgAnnulla.hpp"
#include "common/Stato.hpp"
#include "database/moduloDatabase.hpp"

#include <string>

namespace lumoscad::procedureLumoDB2 {

/// The frame of a database procedure: its own connection to the running command's database and one trap around
/// `corpo`, which receives the connection and its settings. Returns "", or "error" with the message in `msg.Errore`.
template <typename Corpo> std::string Procedura(MsgAnnulla& msg, Corpo corpo) {
  try {
    const auto parametri = moduloDatabase::LeggiParametriDB2(stato().ComandoCorrente);
    const auto connection = moduloDatabase::ApriConnessione(parametri);
    corpo(*connection, parametri);
    return "";
  } catch (...) {
    msg.Errore = moduloDatabase::TestoErrore(ErroreCorrente());
    return "error";
  }
}

} // namespace lumoscad::procedureLumoDB2
