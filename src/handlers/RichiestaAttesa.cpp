#include "handlers/RichiestaAttesa.hpp"

#include "common/Messaggi.hpp"
#include "common/Stato.hpp"
#include "common/Testo.hpp"
#include "host/FormAspetta.hpp"
#include "host/RichiestaProgramma.hpp"
#include "platform/RuntimeError.hpp"

#include <memory>

namespace lumoscad {

std::string RichiestaAttesa(std::string_view hostIP, const std::vector<std::string>& parametri,
                            const std::vector<std::string>& parametriDB2) {
  const auto risposta = std::make_shared<MsgAnnulla>();
  stato().risposta = risposta;
  std::string risultato = FormAspetta().Visualizza(hostIP, ProgrammaHost, parametri, parametriDB2, *risposta);
  if (MaggioreDiSpazio(risposta->Errore)) {
    risultato = "error";
    // Of a refusal nothing else is to be said.
    MostraMessaggio(risposta->Errore, "", stato().andamento.Frase(TransactionOutcome::NotApplied));
  }
  if (MaggioreDiSpazio(risposta->Messaggio)) {
    MostraMessaggio(risposta->Messaggio, "");
  }
  return risultato;
}

} // namespace lumoscad
