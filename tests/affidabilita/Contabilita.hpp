#pragma once

#include <string>
#include <vector>

namespace lumoscad::test {

/// How much of everything the accounting of these tests holds. Keys and codes follow from the numbers:
/// customers 101.. with the codes 20100001.., suppliers 201.. with 40100001.., banks 1-6; item n ("AB   n") belongs to
/// account n modulo the accounts, has 1 + n % 3 instalments and the events 10 n ..; presumed document m ("OC", number
/// m, year 06) has three events 10000 + 10 m .. that differ in bank and date where m is odd; extra movement x ("A", x,
/// 2006) has the events 20000 + 10 x and the next.
struct Misura {
  int clienti = 3;
  int fornitori = 1;
  int partite = 24;
  int documenti = 6;
  int extra = 3;
};

/// The account to which item `partita` belongs, by its code.
[[nodiscard]] std::string ContoDellaPartita(const Misura& misura, int partita);

/// The rows of such an accounting, for tables that are empty but for the row of the writing test.
[[nodiscard]] std::string Righe(const Misura& misura);

/// Tables and triggers for PostgreSQL that take down every change of a row, in VARIAZIONE, and every transaction that
/// changed one, in CONFERMA in the order of the commits; both with the command that the session belongs to. The view
/// STATO holds every row in the same form as the changes.
[[nodiscard]] std::string Sorveglianza();

/// The same for MariaDB, statement by statement. A transaction takes its place among the others at its first change and
/// keeps it until its end: they write one after the other. The session belongs to its user, who stands in the place of
/// the command.
[[nodiscard]] std::vector<std::string> SorveglianzaMariaDb();

} // namespace lumoscad::test
