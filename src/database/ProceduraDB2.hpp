#pragma once

#include "common/MsgAnnulla.hpp"
#include "common/Stato.hpp"
#include "database/Riscontri.hpp"
#include "database/moduloDatabase.hpp"

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace lumoscad::procedureLumoDB2 {

/// The frame of a database procedure behind a reply: its own connection to the running command's database and one trap
/// around `corpo`, which receives the work, its connection and the settings. Returns "", or "error" with the message in
/// `msg.Errore`.
template <typename Corpo> std::string Procedura(MsgAnnulla& msg, Corpo corpo) {
  moduloDatabase::Lavoro lavoro;
  try {
    const auto parametri = moduloDatabase::LeggiParametriDB2(stato().ComandoCorrente);
    corpo(lavoro, lavoro.Apri(parametri), parametri);
    return "";
  } catch (...) {
    msg.Errore = moduloDatabase::TestoErrore(CurrentError());
    return "error";
  }
}

/// The events that an action is about: a query and its one key.
struct EventiScelti {
  std::string_view sql;
  std::int32_t chiave;
};

/// The conditions that an event meets once it was altered, and met before; both empty where nothing was altered.
struct Alterazione {
  std::string nuove;
  std::string vecchie;
};

/// Opens the events chosen for editing and hands each to `applica`, which says what it altered, in one transaction.
template <typename Applica>
void PerOgniEvento(moduloDatabase::Lavoro& lavoro, ado::Connection& connection, const EventiScelti& scelti,
                   Applica applica) {
  ado::Command comando = moduloDatabase::CreaComando(connection, scelti.sql);
  comando.Parameters = {std::to_string(scelti.chiave)};
  moduloDatabase::Transazione transazione(connection);
  ado::Recordset righe;
  righe.Open(comando, ado::CursorType::Dynamic, ado::LockType::Optimistic, {"EVENTOCONTABILE", "EVENTOCONTABILEKEY"});
  for (; !righe.Eof(); righe.MoveNext()) {
    std::string chiave(righe.Fields("EVENTOCONTABILEKEY").Value().value_or(""));
    Alterazione alterazione = applica(righe);
    if (!alterazione.nuove.empty()) {
      lavoro.Annota([chiave = std::move(chiave), alterazione = std::move(alterazione)](ado::Connection& nuova) {
        return RiscontroDiEventi(nuova, {chiave}, alterazione.nuove, alterazione.vecchie);
      });
    }
  }
  lavoro.Conferma(transazione);
}

/// Reads the same events.
[[nodiscard]] ado::Recordset LeggiEventi(ado::Connection& connection, const EventiScelti& scelti);

/// The key of the open item that a request's list names.
[[nodiscard]] std::int32_t ChiavePartita(ado::Connection& connection, const std::vector<std::string>& parametri);

/// The key of the extra movement that a request's list names.
[[nodiscard]] std::int32_t MovimentoExtra(ado::Connection& connection, const std::vector<std::string>& parametri);

} // namespace lumoscad::procedureLumoDB2
