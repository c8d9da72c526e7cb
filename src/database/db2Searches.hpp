#pragma once

#include "common/MsgAnnulla.hpp"
#include "platform/ado/Ado.hpp"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

/// Look-ups of surrogate keys by business codes, on a connection that the caller holds. Each raises error
/// -2147220990 when it does not find exactly one row; the failure's source says what is missing.
namespace lumoscad::db2Searches {

/// The key of a company line.
[[nodiscard]] std::int32_t CercaAziendaLinea(ado::Connection& connection, std::string_view codiceAzienda,
                                             std::string_view linea, std::string_view sottolinea);

/// The key of a movement of a company line by kind, series and number; `esercizio` "#null#" means any year.
[[nodiscard]] std::int32_t CercaMovimento(ado::Connection& connection, std::string_view aziendaLineaKey,
                                          std::string_view tipoMovimento, std::string_view esercizio,
                                          std::string_view serie, std::string_view numero);

/// How many movements of `tabella` such a search finds.
[[nodiscard]] std::size_t ContaMovimenti(ado::Connection& connection, std::string_view tabella,
                                         std::string_view aziendaLineaKey, std::string_view tipoMovimento,
                                         std::string_view esercizio, std::string_view serie, std::string_view numero);

/// `CercaMovimento` over all years for the documents of a list: one prepared statement, sent once a document however
/// many rows the document has. Used on the connection it was made for, while that is open.
class RicercaMovimenti {
 public:
  RicercaMovimenti(ado::Connection& connection, std::string_view aziendaLineaKey, std::string_view tipoMovimento);

  [[nodiscard]] std::int32_t Cerca(std::string_view serie, std::string_view numero);

 private:
  ado::Command comando_;
  std::string aziendaLineaKey_;
  std::string tipoMovimento_;
  std::unordered_map<std::string, std::int32_t> chiavi_; ///< by series and number
};

/// The key of an account by its code.
[[nodiscard]] std::int32_t CercaContoContabile(ado::Connection& connection, std::string_view codiceConto);

/// `CercaContoContabile` for the records of a list: one prepared statement, sent every time, as another terminal may
/// change the accounts meanwhile. Used on the connection it was made for, while that is open.
class RicercaConti {
 public:
  explicit RicercaConti(ado::Connection& connection);

  [[nodiscard]] std::int32_t Cerca(std::string_view codiceConto);

 private:
  ado::Command comando_;
};

/// The key of an open item by its account's key and its number.
[[nodiscard]] std::int32_t CercaPartitaContabile(ado::Connection& connection, std::string_view contoContabileKey,
                                                 std::string_view numeroPartita);

/// The description of an account, on a connection of its own. On failure stores the message in `msg.Errore` and
/// returns "error".
[[nodiscard]] std::string DescrizioneConto(std::string_view codiceConto, MsgAnnulla& msg);

} // namespace lumoscad::db2Searches
