#pragma once

#include "platform/RuntimeError.hpp"

#include <optional>
#include <string>
#include <string_view>

namespace lumoscad {

/// How far a change has come, on the host and in the database, and the sentence that tells the person so after a
/// failure. What is known follows from the steps that were reached, whatever failed after them. The sentences are made
/// at the beginning: later, when the host has accepted, there may be no memory for them.
class Andamento {
 public:
  /// A change begins, of which nothing has been asked yet; `daControllare` names what it is about, as the person knows
  /// it.
  void Comincia(std::string_view daControllare);
  /// No change is under way.
  void Azzera() noexcept;
  /// The host's program was asked, and may have done its work.
  void Chiesta() noexcept { host_ = Host::Chiesta; }
  /// The host said no, for this reason.
  void Rifiutata(std::string_view motivo) noexcept;
  /// The host said yes. The database holds nothing of the change yet.
  void Accettata() noexcept { host_ = Host::Accettata; }
  /// What the database holds of it.
  void Registrata(TransactionOutcome esito) noexcept { base_ = esito; }
  /// The same, as it was taken down.
  [[nodiscard]] TransactionOutcome EsitoBaseDati() const noexcept { return base_; }
  /// Of what was applied, some rows stayed as somebody else had changed them meanwhile.
  void RigheRimaste() noexcept { rimaste_ = true; }

  /// What is known of host and database, to stand at the end of a failure's text; empty where nothing was asked yet.
  /// `detto` is what the failure's own text says already of the host.
  [[nodiscard]] std::string_view Frase(std::optional<TransactionOutcome> detto = std::nullopt) const noexcept;

 private:
  enum class Host { NonChiesta, Chiesta, Rifiutata, Accettata };

  Host host_ = Host::NonChiesta;
  TransactionOutcome base_ = TransactionOutcome::NotApplied;
  std::string rifiuto_;
  std::string nonApplicata_;
  std::string sconosciuta_;
  std::string applicata_;
  bool rimaste_ = false;
  std::string applicataInParte_;
};

} // namespace lumoscad
