#pragma once

#include "common/Nota.hpp"
#include "platform/RuntimeError.hpp"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad {

/// The note of the running command. It is written right before the host's program is started, told each phase as it is
/// reached, and removed as soon as host and database agree; what is then left of it says how they differ. Nothing here
/// fails: where a note cannot be written the command goes on without one, and where a phase cannot, the one before it
/// stands. A child forked meanwhile has none.
class NotaInCorso {
 public:
  /// A command begins, of the type `tipo` and with this sub-command, if any; what an earlier one left stays as it is.
  void Comincia(std::string_view tipo, std::string_view sottocomando) noexcept;
  /// What the command is about to ask of host and database: a list, or an action's list for the database. A list is
  /// read when the program is started, so that nothing is spent on it before; it must live until then, or until
  /// `Lascia`.
  void Prepara(std::string_view tipo, const VariazioniCanalizzazione& variazioni) noexcept;
  void Prepara(ModificaChiesta::Genere genere, std::string_view tipo, const VariazioniConsegna& variazioni) noexcept;
  void Prepara(const std::vector<std::string>& parametri) noexcept;
  void Lascia() noexcept;
  /// The request file's name on the host, where there is one.
  void SegnaRichiesta(std::string_view richiesta) noexcept;

  /// The host's program is about to be started.
  void Avviata(std::string_view host, std::string_view programma, const std::vector<std::string>& parametri) noexcept;
  /// The program did nothing, or said no: nothing is to be done.
  void NonAvviata() noexcept;
  void Rifiutata(std::string_view motivo) noexcept;
  /// The program may have done its work; `motivo` is why that is not known.
  void SenzaRisposta(std::string_view motivo) noexcept;
  /// The program said yes, with this message.
  void Accettata(std::string_view messaggio) noexcept;

  /// The database is to be changed.
  void BaseDatiChiesta() noexcept { conBaseDati_ = true; }
  /// COMMIT is about to be sent; `transazione` is by what the database can be asked for it later.
  void ConfermaInviata(std::string_view transazione) noexcept;
  /// There is a note already, in the hands of somebody who finishes it: `allaConferma` receives by what its transaction
  /// can be asked for, and nothing else is written.
  void Riprendi(std::function<void(std::string_view)> allaConferma) noexcept;
  /// Of what is being applied, these rows stay as somebody else had changed them.
  void RigheRimaste(const std::vector<std::string>& righe) noexcept;
  /// What the database holds.
  void Registrata(TransactionOutcome esito) noexcept;

  /// The command has ended, without a failure where `riuscito`.
  void Concludi(bool riuscito) noexcept;

 private:
  void Pubblica(std::string_view host, std::string_view programma, const std::vector<std::string>& parametri);
  [[nodiscard]] std::string TestoModifica() const;
  [[nodiscard]] bool Scritta() noexcept;
  void SegnaFase(FaseNota fase) noexcept;
  void Scrivi(FaseNota fase, std::string_view risposta, std::string_view transazione,
              const std::vector<std::string>& righe);
  void Togli(FaseNota fase) noexcept;
  void Dimentica() noexcept;

  std::string tipoComando_;
  std::string azione_; ///< the text of an action's list
  ModificaChiesta::Genere genere_ = ModificaChiesta::Genere::Nessuna;
  std::string tipo_;                                         ///< of a list
  const VariazioniCanalizzazione* canalizzazioni_ = nullptr; ///< a list of one or the other kind
  const VariazioniConsegna* consegne_ = nullptr;
  std::string richiesta_;
  std::function<void(std::string_view)> ripresa_;
  std::optional<PercorsiNota> percorsi_; ///< of the note, while it is written
  HeldFile file_;
  FaseNota fase_ = FaseNota::Avviata;
  bool conBaseDati_ = false;
  std::string risposta_;
  std::string transazione_;
  bool rimaste_ = false;
  std::vector<std::string> righeRimaste_;
  std::string testoFase_; ///< with room for a phase: where the host has accepted there may be no memory for it
};

} // namespace lumoscad
