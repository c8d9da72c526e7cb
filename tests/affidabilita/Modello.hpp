#pragma once

#include "Contabilita.hpp"
#include "Registro.hpp"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace lumoscad::test {

/// Every row of the database by its key ("E" events, "M" movements, "R" the row of the writing test), in the form of
/// the view STATO.
using Stato = std::map<std::string, std::string>;

/// New rows by key; nothing for a row that goes.
using Effetto = std::map<std::string, std::optional<std::string>>;

/// What the accounting's rules say that an accepted command does, from the request alone: written anew from what the
/// requests mean, without a line of the component.
class Modello {
 public:
  /// `iniziale` is the state before the first command; accounts, items and documents have the keys of `misura`.
  Modello(const Misura& misura, const Stato& iniziale);

  /// The rows that the command changes in a database that is in the state `stato`; a row that it would write as it is
  /// counts as not changed.
  [[nodiscard]] Effetto Di(const Eseguito& comando, const Stato& stato) const;

 private:
  using Riga = std::vector<std::string>;

  void Canalizzazione(const Eseguito& comando, const Stato& stato, Effetto& effetto) const;
  void BancaPresunti(const Eseguito& comando, const Stato& stato, Effetto& effetto) const;
  void Consegna(const Eseguito& comando, const Stato& stato, Effetto& effetto) const;
  void Sospensione(const Eseguito& comando, const Stato& stato, Effetto& effetto) const;
  void Cancellazione(const Eseguito& comando, const Stato& stato, Effetto& effetto) const;
  [[nodiscard]] std::string Conto(const std::string& codice) const;
  [[nodiscard]] std::string Movimento(const std::string& testo) const;

  std::map<std::string, std::string> conti_;     ///< key by code
  std::map<std::string, std::string> partite_;   ///< key by code of account and number without blanks
  std::map<std::string, std::string> movimenti_; ///< key by kind, series, number and year
};

} // namespace lumoscad::test
