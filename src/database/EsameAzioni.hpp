#pragma once

#include "database/EsameRighe.hpp"

#include <string>
#include <string_view>
#include <vector>

namespace lumoscad::procedureLumoDB2 {

/// What the database holds of a reply action: each beside the procedure that writes it, with its conditions. Each takes
/// the request's list and raises the driver's failure, that of a look-up, or that of a list which cannot be written.
[[nodiscard]] StatoRiga EsaminaSospensioneMovimento(ado::Connection& connection,
                                                    const std::vector<std::string>& parametri, std::string_view flag);
[[nodiscard]] StatoRiga EsaminaSospensionePartita(ado::Connection& connection,
                                                  const std::vector<std::string>& parametri, std::string_view flag);
[[nodiscard]] StatoRiga EsaminaCancellazione(ado::Connection& connection, const std::vector<std::string>& parametri,
                                             std::string_view schema);

/// The same of a list of due dates, a row a group, `oggetto` standing before its date.
[[nodiscard]] std::vector<RigaEsaminata> EsaminaScadenzePartita(ado::Connection& connection,
                                                                const std::vector<std::string>& parametri,
                                                                const std::string& oggetto);
[[nodiscard]] std::vector<RigaEsaminata> EsaminaScadenzeMovimento(ado::Connection& connection,
                                                                  const std::vector<std::string>& parametri,
                                                                  const std::string& oggetto);

} // namespace lumoscad::procedureLumoDB2
