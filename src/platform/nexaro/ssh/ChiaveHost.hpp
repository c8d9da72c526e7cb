#pragma once

#include "platform/nexaro/ssh/Sessione.hpp"

#include <string>

namespace lumoscad::nexaro {

/// What the file of known hosts says of the key that a host presented.
enum class StatoChiave {
  Nota,        ///< the file holds this key for this host
  Sconosciuta, ///< the file holds no key for this host, or there is no file
  Cambiata,    ///< the file holds another key of the same type
  AltroTipo,   ///< the file holds keys of other types only
  Revocata,    ///< the file marks this key as revoked
  Illeggibile  ///< the file cannot be read
};

/// The key that a host presented.
struct ChiaveHost {
  StatoChiave stato = StatoChiave::Sconosciuta;
  std::string tipo;      ///< "ssh-ed25519"
  std::string impronta;  ///< "SHA256:..."
  std::string riga;      ///< the line, without its end, that would make the key known
  std::string dettaglio; ///< the line of the file that speaks against the key, or why the file cannot be read
};

/// Looks the key of a connection up in the file of known hosts `noti`.
[[nodiscard]] ChiaveHost EsaminaChiave(const Sessione& sessione, unsigned porta, const std::string& noti);

/// Connects to `host` and looks its key up; nobody is logged in. Raises a run-time error.
[[nodiscard]] ChiaveHost ChiediChiave(const ImpostazioniSsh& impostazioni, const std::string& host);

/// Why a connection with this key is refused, and what the person can do; empty for a known key.
[[nodiscard]] std::string MotivoRifiuto(const ChiaveHost& chiave, const std::string& host, const std::string& noti);

/// Adds `riga` at the end of the file of known hosts, which is created where it is missing (with mode 0600, its
/// directory with mode 0700). Raises a run-time error.
void RegistraRiga(const std::string& riga, const std::string& noti);

} // namespace lumoscad::nexaro
