#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace lumoscad {

/// How one look at the database went; `dettaglio` says what was seen, or why it will not do.
struct EsitoDelPasso {
  std::string operazione;
  bool riuscito = false;
  std::string dettaglio;
};

/// Looks at the database that the options of `comando` name, step after step, and hands each outcome to `mostra`:
/// source, driver, server, login, tables with their columns, encoding, amounts, collation, transactions, time limits,
/// replica or pooler, ten rows of a list. Nothing is written, and no text holds the password. True when everything is
/// as the commands need it.
bool GuardaBaseDati(std::string_view comando, const std::function<void(const EsitoDelPasso&)>& mostra);

} // namespace lumoscad
