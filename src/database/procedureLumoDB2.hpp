#pragma once

#include "common/MsgAnnulla.hpp"
#include "common/Variazioni.hpp"
#include "platform/ado/Ado.hpp"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The queries that fill the screens, the updates that apply accepted changes, and the actions on a reply.
/// A procedure that takes a `msg` traps its failures: the text goes to `msg.Errore`.
namespace lumoscad::procedureLumoDB2 {

/// The filters of the instalment list. A blank one adds no condition; texts enter the statement between quotes
/// as given.
struct FiltroScadenze {
  std::string parModalita;      ///< "CREDITI", "DEBITI", or anything else for accounts of every class
  std::string parScad;          ///< "SCADUTO", "DASCADERE", or anything else for all
  std::string parMesiScadenze;  ///< months as "MMAAAA", separated by ","
  std::string parBancaSN;       ///< "N" without bank, "S" with bank, anything else for all
  std::string parConto;         ///< account code
  std::string parPartita;       ///< open-item number
  std::string parCodiceInterno; ///< internal code of the account
};

/// The instalments of open items with their presentation banks. On failure returns nothing.
[[nodiscard]] std::optional<ado::Recordset> ElencoScadenze(ado::Connection& connection, std::int32_t aziendaLineaKey,
                                                           const FiltroScadenze& filtro, MsgAnnulla& msg);

/// The filters of the presumed documents. A blank one adds no condition, except the kind of operation, whose condition
/// is always there; texts enter the statement between quotes as given.
struct FiltroPresunti {
  std::string parTipoMovimenti;             ///< kind of operation
  std::string parScad;                      ///< by the delivery date: "SCADUTO", "DASCADERE", anything else for all
  std::string parBancaSN;                   ///< "N" without bank, "S" with bank, anything else for all
  std::string parConto;                     ///< account code
  std::string parSerie;                     ///< series of the one document wanted; blank for all documents
  std::string parNumero;                    ///< its number without the year
  std::string parAnno;                      ///< its year, two digits
  std::string parData;                      ///< reference date: carried along, without effect on the statement
  std::vector<std::string> parSerieEscluse; ///< excluded series; a list of a single one excludes nothing, on purpose
};

/// The presumed documents with their delivery dates and banks, one row a bank, date and currency of a document. On
/// failure, also when the one document wanted does not exist, returns nothing.
[[nodiscard]] std::optional<ado::Recordset> ElencoPresunti(ado::Connection& connection, std::int32_t aziendaLineaKey,
                                                           const FiltroPresunti& filtro, MsgAnnulla& msg);

/// The accounts offered as presentation banks, by description. On failure returns nothing.
[[nodiscard]] std::optional<ado::Recordset> ElencoBanche(ado::Connection& connection, MsgAnnulla& msg);

/// Writes the confirmed bank and due-date changes in one transaction: `parModalita` is "CREDITI", "DEBITI" or
/// "PRESUNTI". Returns "" or, when nothing was kept, "error" with the message and the statements of the record
/// that failed in `msg.Errore`.
[[nodiscard]] std::string AggiornaCanalizzazione(const VariazioniCanalizzazione& variazioni, MsgAnnulla& msg,
                                                 std::string_view parModalita);

/// Writes the confirmed bank changes of presumed documents in one transaction; acts only for `parModalita` "PRESUNTI".
/// The rows of a document that carry the record's old bank change. Returns as above.
[[nodiscard]] std::string AggiornaBancaPresunti(const VariazioniConsegna& variazioni, MsgAnnulla& msg,
                                                std::string_view parModalita);

/// Writes the confirmed delivery dates in one transaction; acts only for `parModalita` "PRESUNTI". A changed delivery
/// date always sets the VAT title back to a blank. Returns as above.
[[nodiscard]] std::string AggiornaConsegna(const VariazioniConsegna& variazioni, MsgAnnulla& msg,
                                           std::string_view parModalita);

/// The list's rows as the person knows them from the screen, separated by "; ": the first eight, and how many more.
[[nodiscard]] std::string Righe(const VariazioniCanalizzazione& variazioni);
[[nodiscard]] std::string Righe(const VariazioniConsegna& variazioni);

/// The procedures behind the reply actions. Each takes the request's list (company at index 0, action at 1), works in
/// one transaction and returns "", or "error" with the message in `msg.Errore` when nothing was kept.
/// `flag` is "S" to suspend and "N" to make active again.
[[nodiscard]] std::string SospendiMovimento(const std::vector<std::string>& parametri, std::string_view flag,
                                            MsgAnnulla& msg); ///< presumed document: 2 series, 3 year, 4 number
[[nodiscard]] std::string SospendiPartita(const std::vector<std::string>& parametri, std::string_view flag,
                                          MsgAnnulla& msg); ///< open item: 2 account, 3 item number
[[nodiscard]] std::string CancellaMovimentoExtra(const std::vector<std::string>& parametri,
                                                 MsgAnnulla& msg); ///< 2 series, 3 financial year, 4 number

/// Move the due dates of an open item (2 account, 3 item number) or of an extra movement (2 series, 3 financial year,
/// 4 number) by groups of three elements from index 5 on: a mark, the date to match and the new date, "yyyymmdd". An
/// item's events are matched on their original due date, which stays; an extra movement's on the current one, and
/// both dates move. A list that ends before index 5 changes nothing.
[[nodiscard]] std::string ScriviScadenzePartita(const std::vector<std::string>& parametri, MsgAnnulla& msg);
[[nodiscard]] std::string ScriviScadenzeMovimento(const std::vector<std::string>& parametri, MsgAnnulla& msg);

/// What a request's list is about, as the person knows it: "partita NUMERO del conto CODICE", or "documento
/// SERIE/ANNO/NUMERO dell'azienda CODICE".
[[nodiscard]] std::string NomeOggetto(const std::vector<std::string>& parametri);

/// Repeats in the database what the host did for a request. `parametri` is the request's list: the action's name
/// stands at index 1. A reply with an `Errore` is answered "error" without touching the database; an action that
/// has no database side does nothing and returns "".
[[nodiscard]] std::string EseguiAzioneDB2(const std::vector<std::string>& parametri, MsgAnnulla* msg);

/// Proves that the database of a command line can be reached and written: opens it and, where the error table has
/// its test row, writes that row and keeps it. Returns "", or "error" after telling the person why.
[[nodiscard]] std::string TestDB2(std::string_view command);

} // namespace lumoscad::procedureLumoDB2
