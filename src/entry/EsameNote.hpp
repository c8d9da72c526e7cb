#pragma once

#include "common/Accesso.hpp"
#include "common/Nota.hpp"
#include "database/EsameRighe.hpp"
#include "database/moduloDatabase.hpp"
#include "platform/RuntimeError.hpp"
#include "platform/ado/Ado.hpp"

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad {

/// What the database holds of a note's change.
struct EsitoEsame {
  std::vector<procedureLumoDB2::RigaEsaminata> righe;
  std::optional<TransactionOutcome> esito; ///< of the command's transaction, where the server itself can tell
  std::string avvisi;                      ///< what a person must know before saying yes: lines, each with its end
};

/// Looks at notes in the database that a command line names. It is opened when it is first asked, and once.
class EsameNote {
 public:
  explicit EsameNote(std::string_view comando);

  /// Whether the command line names a database at all.
  [[nodiscard]] bool ConBaseDati() const noexcept { return conBaseDati_; }
  /// Whose the note is where it is of another database than the command line's, as "dell'origine dati «…»"; empty for
  /// the note's own, and where it cannot be told.
  [[nodiscard]] std::string DiAltri(const Nota& nota) const;
  /// What the database holds of the note. Raises the driver's failure, the same again where the opening failed, and an
  /// error while the command's transaction is under way.
  [[nodiscard]] EsitoEsame Esamina(const Nota& nota);
  /// Opens it anew when it is next asked.
  void Chiudi() noexcept;

 private:
  [[nodiscard]] ado::Connection& Aperta();
  [[nodiscard]] EsitoEsame Guarda(const Nota& nota);

  moduloDatabase::ParametriConnessione parametri_;
  AccessoComando accesso_;
  bool conBaseDati_;
  std::unique_ptr<ado::Connection> connection_;
  std::unique_ptr<RuntimeError> rifiuto_;                        ///< why it could not be opened
  std::optional<std::chrono::steady_clock::time_point> termine_; ///< of the waiting for transactions under way
};

/// How many of the rows are in a state.
[[nodiscard]] std::size_t Quante(const std::vector<procedureLumoDB2::RigaEsaminata>& righe,
                                 procedureLumoDB2::StatoRiga stato);

} // namespace lumoscad
