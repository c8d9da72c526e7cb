#pragma once

#include "Registro.hpp"

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace lumoscad::test {

/// How the lock of one list fared.
struct ContoBlocco {
  std::size_t presi = 0;               ///< times that it was taken
  std::size_t rifiutati = 0;           ///< commands that it stopped
  std::size_t rimossi = 0;             ///< times that the administrator removed it after a failure
  std::size_t insieme = 0;             ///< pairs of commands that were between lock and unlock together
  std::size_t perIntervallo = 0;       ///< ... since the second read the lock before the first's was in place
  std::size_t perRilascio = 0;         ///< ... since a third one's release had taken the first's lock away
  std::size_t massimo = 0;             ///< most commands together
  std::vector<std::string> inspiegati; ///< pairs together for neither reason
};

/// The count of every list, by the name of its lock file.
[[nodiscard]] std::map<std::string, ContoBlocco> ContaBlocchi(const std::vector<Eseguito>& comandi);

} // namespace lumoscad::test
