#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace lumoscad::test {

/// Nanoseconds of the machine's clock.
using Istante = std::int64_t;
/// The time of the machine's clock.
[[nodiscard]] Istante Adesso();

/// One operation on a lock file: "LETTO", "BLOCCATO", "SBLOCCATO" by the command itself, "AMMINISTRATORE" where the
/// lock that a failed command kept was removed after it.
struct Operazione {
  std::string genere;
  std::string blocco; ///< "VBCREDITI", ...
  Istante inizio = 0;
  Istante fine = 0;
  bool riuscita = false;
};

/// What a terminal's log says of one command.
struct Eseguito {
  std::string nome; ///< terminal and number, as the database's log has it
  Istante inizio = 0;
  Istante risposto = 0; ///< when the host answered: nothing is written to the database before; else the beginning
  Istante fine = 0;
  std::string comando;
  std::string risultato;
  std::vector<std::string> box;
  std::vector<std::string> richiesta; ///< the program's parameters; none when it was not asked
  std::string contenuto;              ///< of the request file
  bool accettata = false;             ///< the host said yes
  bool morto = false;                 ///< the terminal was killed in the middle, at the time `fine`
  std::vector<Operazione> operazioni;
};

/// The commands of a terminal, in order; "MORTE" with the time stands where the test saw it dead. Raises for a command
/// that has no end.
[[nodiscard]] std::vector<Eseguito> LeggiRegistro(const std::filesystem::path& file);

} // namespace lumoscad::test
