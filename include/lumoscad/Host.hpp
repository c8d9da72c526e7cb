#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace lumoscad {

// What the administrator of the link to a host needs. Everything here takes the settings of the environment, returns
// Italian texts, never throws, and may be called on any thread.

/// The key that a host on the network presents, before anything is entrusted to it.
struct ChiavePresentata {
  std::string errore;   ///< why there is no key to register; empty when all is well
  bool nota = false;    ///< the key is known already
  std::string tipo;     ///< "ssh-ed25519"
  std::string impronta; ///< "SHA256:..."
  std::string riga;     ///< the line that makes it known
  std::string file;     ///< the file of known hosts
};

/// Connects to a host and asks for its key; nobody is logged in. A key that speaks against a known one is an error.
[[nodiscard]] ChiavePresentata ChiediChiaveHost(std::string_view host) noexcept;

/// Makes a key known that `ChiediChiaveHost` gave without an error. Returns the empty text, or why it failed.
[[nodiscard]] std::string RegistraChiaveHost(const ChiavePresentata& chiave) noexcept;

/// How one operation of the link went.
struct PassoProva {
  std::string operazione; ///< the operation's name
  bool riuscito = false;
  std::string dettaglio; ///< what was seen, or why it does not work
};

/// Runs through the five operations of the link with a file of its own in the host's /tmp, which it removes again, and
/// hands each outcome to `mostra`. With an empty `programma` it looks for the back-end program without starting it;
/// otherwise it runs `programma` without parameters and expects an XML answer. True when everything works; what
/// `mostra` raises ends the test, and its file is removed all the same. It uses the link that commands use: while a
/// command or another test runs, on whatever thread, it is refused, and so is a command while it runs.
[[nodiscard]] bool ProvaHost(std::string_view host, std::string_view programma,
                             const std::function<void(const PassoProva&)>& mostra) noexcept;

} // namespace lumoscad
