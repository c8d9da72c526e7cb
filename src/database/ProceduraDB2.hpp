#pragma once

#include "common/MsgAnnulla.hpp"
#include "common/Stato.hpp"
#include "database/moduloDatabase.hpp"

#include <memory>
#include <string>
#include <vector>

namespace lumoscad::procedureLumoDB2 {

/// The frame of a database procedure behind a reply: its own connection to the running command's database and one trap
/// around `corpo`, which receives the connection and its settings. Returns "", or "error" with the message in
/// `msg.Errore`; `oggetto` is what the request is about, as the person knows it.
template <typename Corpo> std::string Procedura(MsgAnnulla& msg, const std::string& oggetto, Corpo corpo) {
  std::unique_ptr<ado::Connection> connection;
  try {
    const auto parametri = moduloDatabase::LeggiParametriDB2(stato().ComandoCorrente);
    connection = moduloDatabase::ApriConnessione(parametri);
    corpo(*connection, parametri);
    return "";
  } catch (...) {
    msg.Errore = moduloDatabase::TestoErroreDopoHost(ErroreCorrente(), connection.get(), oggetto);
    return "error";
  }
}

/// "partita NUMERO del conto CODICE", from a request's list.
[[nodiscard]] std::string NomePartita(const std::vector<std::string>& parametri);
/// "documento SERIE/ANNO/NUMERO dell'azienda CODICE", from a request's list.
[[nodiscard]] std::string NomeDocumento(const std::vector<std::string>& parametri);

} // namespace lumoscad::procedureLumoDB2
