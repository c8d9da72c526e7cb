#pragma once

#include "platform/xml/Nodo.hpp"

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad::nexaro {

/// The parser of one reply: raises `Parse` with the document element of the program's answer.
class XMLParser {
 public:
  std::function<void(const xml::Nodo&)> Parse;
  /// Set by the link right before the start of the program is sent: what fails from then on leaves it open whether the
  /// program has done its work, unless the failure itself says more (`ErroreRuntime::Esito`).
  bool Avviato = false;

  /// Raises `Parse` with `nodo`, when someone listens.
  void Consegna(const xml::Nodo& nodo) const {
    if (Parse) {
      Parse(nodo);
    }
  }
};

/// What a message says where the host may have done what it was asked and gave no answer to rely on.
inline constexpr std::string_view EsitoIgnoto =
    "L'esito sull'host non è noto: verificarlo prima di ripetere il comando.";

/// The two strings that the environment object supplies.
struct Ambiente {
  std::string CodicePostazione; ///< the workstation's identifier
  std::string CartellaLocale;   ///< the local work directory, without a trailing separator
};

/// The link to the host. Every operation names the host by its address and raises a run-time error with an
/// Italian description when it fails.
class HostLink {
 public:
  HostLink() = default;
  HostLink(const HostLink&) = delete;
  HostLink& operator=(const HostLink&) = delete;
  virtual ~HostLink() = default;

  /// Runs `programma` on the host with one argument an element of `parametri`, empty ones included, and hands
  /// its XML answer to `risposta`. Returns when the answer was delivered. A failure whose text says what became of the
  /// program carries that as its outcome.
  virtual void EseguiProgramma(std::string_view host, std::string_view programma,
                               const std::vector<std::string>& parametri, XMLParser& risposta) = 0;
  /// Copies the host's file `remoto` to the local path `locale`; a missing file is a failure.
  virtual void RiceviFile(std::string_view host, std::string_view remoto, std::string_view locale,
                          std::string& testo) = 0;
  /// Copies the first `massimo` bytes of the host's file `remoto`, or the whole where it is no longer, as `RiceviFile`
  /// does. A link that cannot receive a part receives the whole.
  virtual void RiceviInizio(std::string_view host, std::string_view remoto, std::string_view locale,
                            std::size_t /*massimo*/, std::string& testo) {
    RiceviFile(host, remoto, locale, testo);
  }
  /// Copies the local file `locale` to the host's path `remoto`, replacing what is there.
  virtual void InviaFile(std::string_view host, std::string_view locale, std::string_view remoto) = 0;
  /// Renames a file on the host in one step; `testo` receives the host's text, if any.
  virtual void RinominaFile(std::string_view host, std::string_view remoto, std::string_view nuovo,
                            std::string& testo) = 0;
  /// Deletes a file on the host; a file that is not there is no failure.
  virtual void CancellaFile(std::string_view host, std::string_view remoto) = 0;
};

/// Reads the environment object from `NEXARO_POSTAZIONE` and `NEXARO_CARTELLA_LOCALE` (defaults: a
/// name of machine, user and session, and a private directory of the user, which is created with mode 0700).
[[nodiscard]] Ambiente LeggiAmbiente();

/// Creates the link that `NEXARO_TRASPORTO` asks for. Raises a run-time error for an unknown or unfit setting.
[[nodiscard]] std::unique_ptr<HostLink> CreaHostLink();

} // namespace lumoscad::nexaro
