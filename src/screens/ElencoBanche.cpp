#include "screens/ElencoBanche.hpp"

#include "common/Stato.hpp"
#include "common/Testo.hpp"
#include "database/moduloDatabase.hpp"
#include "database/procedureLumoDB2.hpp"
#include "platform/RuntimeError.hpp"

#include <unordered_set>

namespace lumoscad {

const std::string& BancheCombo::Codice(int indice) const {
  if (indice < 1 || static_cast<std::size_t>(indice) > codici.size()) {
    throw RuntimeError(errors::SubscriptOutOfRange,
                       "Indice non incluso nell'intervallo: banca " + std::to_string(indice));
  }
  return codici[static_cast<std::size_t>(indice) - 1];
}

BancheCombo CaricaBanche(MsgAnnulla& msg, CodiceRipetuto ripetuto) {
  BancheCombo banche;
  banche.voci.emplace_back(" ");
  try {
    const auto connection = moduloDatabase::ApriConnessione(moduloDatabase::LeggiParametriDB2(stato().ComandoCorrente));
    auto righe = procedureLumoDB2::ElencoBanche(*connection, msg);
    if (!righe) {
      return banche;
    }
    std::unordered_set<std::string> chiavi;
    for (; !righe->Eof(); righe->MoveNext()) {
      const std::string codice(righe->Fields("CODICECONTO").Value().value_or(""));
      // The keys of a collection do not tell upper from lower case.
      if (ripetuto == CodiceRipetuto::Errore && !chiavi.insert(Maiuscolo(codice)).second) {
        throw RuntimeError(errors::DuplicateKey, "Chiave già associata a un elemento dell'insieme: " + codice);
      }
      banche.codici.push_back(codice);
      banche.voci.emplace_back(righe->Fields("DESCRIZIONEVOCE").Value().value_or(""));
    }
  } catch (...) {
    msg.Errore = moduloDatabase::TestoErrore(CurrentError());
  }
  return banche;
}

} // namespace lumoscad
