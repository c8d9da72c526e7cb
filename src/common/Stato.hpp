#pragma once

#include "common/Andamento.hpp"
#include "common/MsgAnnulla.hpp"
#include "common/NotaInCorso.hpp"

#include <memory>
#include <string>

namespace lumoscad {

class FormPresunti;
class frmLumoScadenzeBanche;
class Partita;

/// The module-level values of the component. Options overwrite them when a command carries them; nothing resets
/// them between commands, and a command that omits an option sees the value of an earlier one.
struct Stato {
  std::string ComandoCorrente; ///< the whole command line of the running command
  std::string azienda;         ///< "-D", the company code
  std::string HostIP;          ///< "-H", the host's address
  std::string tipoComando;     ///< "-T" of the suspension commands (upper case) and of the extra command (as typed)
  std::string Serie;           ///< "-S" of the extra command
  std::string Esercizio;       ///< "-E" of the extra command
  std::string Numero;          ///< "-N" of the extra command
  bool demoPresunti = false; ///< a presumed-document command carried "-DEMO": from then on they all are demonstrations
  std::string contoScadenze; ///< account code of the due-date request's database list, set by the calling screen
  std::string partitaScadenze;                           ///< spaced item number of that list, set by the calling screen
  Andamento andamento;                                   ///< how far the last change has come
  NotaInCorso notaInCorso;                               ///< the running command's note
  std::shared_ptr<MsgAnnulla> risposta;                  ///< the reply object of the last request
  std::shared_ptr<Partita> rispostaPartita;              ///< the reply object of the last due-date request
  std::shared_ptr<frmLumoScadenzeBanche> scadenzeBanche; ///< the credits/debits screen, created on first use
  std::shared_ptr<FormPresunti> presunti;                ///< the presumed-documents screen, created on first use
};

/// The one set of module-level values of the process.
[[nodiscard]] Stato& stato();

/// Gives fresh module-level values for the life of the object and puts the old ones back: to a test, and to what is
/// done beside the commands, which must not change what the next of them finds.
class StatoSostituito {
 public:
  StatoSostituito();
  StatoSostituito(const StatoSostituito&) = delete;
  StatoSostituito& operator=(const StatoSostituito&) = delete;
  ~StatoSostituito();

 private:
  Stato precedente_;
};

} // namespace lumoscad
