#pragma once

#include <string>
#include <string_view>

/// The handlers of the commands. Each is given the whole command line.
namespace lumoscad::ModuloMain {

/// Shows the credits or debits screen (`tipo` "CREDITI" or "DEBITI"), sends what was confirmed to the host and
/// writes it to the database. Returns "" when changes were applied, "closed" when there was none, "error" when
/// another terminal holds the list. Any other failure is raised; the lock then stays taken.
[[nodiscard]] std::string ComandoBanca(std::string_view comando, std::string_view tipo);

/// Shows the presumed documents (`tipo` "PRESUNTI") for their presentation banks, with steps and results as above.
[[nodiscard]] std::string ComandoBancaPresunti(std::string_view comando, std::string_view tipo);

/// The same for their planned delivery dates. Both commands share one lock.
[[nodiscard]] std::string ComandoConsegna(std::string_view comando, std::string_view tipo);

/// Suspend an open item of an account, and make it active again. Return the reply actions' result, "error" after the
/// person was told of a refusal; a link failure is raised. "-DEMO" on the line only shows the success message.
[[nodiscard]] std::string ComandoSospendiPartita(std::string_view comando);
[[nodiscard]] std::string ComandoRiattivaPartita(std::string_view comando);

/// The requests behind them, behind the wait window: the host is given the item's compact form, the database the spaced
/// one. A suspension carries the workstation's identifier; a reactivation does not, the back end's protocol has it so.
[[nodiscard]] std::string RichiestaSospensione(std::string_view azienda, std::string_view hostIP,
                                               std::string_view conto, std::string_view partitaCompatta,
                                               std::string_view partitaSpaziata);
[[nodiscard]] std::string RichiestaRiattivazione(std::string_view azienda, std::string_view hostIP,
                                                 std::string_view conto, std::string_view partitaCompatta,
                                                 std::string_view partitaSpaziata);

/// The same for a presumed document. Once one of these commands carried "-DEMO", all later ones are demonstrations,
/// also where the line that carried it failed at a later token.
[[nodiscard]] std::string ComandoSospendiPresunto(std::string_view comando);
[[nodiscard]] std::string ComandoRiattivaPresunto(std::string_view comando);

/// Deletes the extra schedule of a movement, with results as above.
[[nodiscard]] std::string ComandoExtra(std::string_view comando);

/// Asks the host to delete the extra schedule of one movement and repeats it in the database.
[[nodiscard]] std::string CancellaExtra(std::string_view azienda, std::string_view hostIP, std::string_view serie,
                                        std::string_view esercizio, std::string_view numero);

} // namespace lumoscad::ModuloMain
