#include "host/Richieste.hpp"

#include "common/Messaggi.hpp"
#include "common/Stato.hpp"
#include "common/Testo.hpp"
#include "common/Utilities.hpp"
#include "host/ChiamataDiretta.hpp"
#include "host/RigaRichiesta.hpp"
#include "platform/Errore.hpp"
#include "platform/FileLocale.hpp"
#include "platform/Servizi.hpp"

#include <functional>
#include <optional>

namespace lumoscad {
namespace {

/// A date of a line; "#null#" means that there is none.
std::string Data(const std::string& data) {
  return data == Nullo ? std::string() : Utilities::DataPerHost(data);
}

std::string RigaCanalizzazione(const VariazioneCanalizzazione& v) {
  return RigaRichiesta({v.CodiceConto, v.NumeroPartita, v.Anno, v.Numero, v.Serie, Data(v.ScadenzaOriginale),
                        Data(v.VecchiaScadenza), Data(v.NuovaScadenza), v.VecchiaBanca,
                        v.isBancaChanged ? v.NuovaBanca : "", v.NumeroRata});
}

/// A presumed document travels in the same line; it has no item, no due dates and no instalment.
std::string RigaBancaPresunti(const VariazioneConsegna& v) {
  return RigaRichiesta({v.CodiceConto, "", v.Anno, v.Numero, v.Serie, "", "", "", v.VecchiaBanca,
                        v.isBancaChanged ? v.NuovaBanca : "", ""});
}

/// Every date of a delivery line is written, a missing one as zeros.
std::string DataPiena(const std::string& data) {
  return Utilities::DataPerHost(data == Nullo ? std::string_view() : data);
}

std::string RigaConsegna(const VariazioneConsegna& v) {
  return RigaRichiesta({v.CodiceConto, v.Serie, v.Numero, v.Anno, DataPiena(v.Consegna), DataPiena(v.ConsegnaOrigine),
                        DataPiena(v.NuovaConsegna)});
}

template <typename Azione> void IgnoraErrori(Azione azione) noexcept {
  try {
    azione();
  } catch (...) { // NOLINT(bugprone-empty-catch): the outcome of the request is settled already
  }
}

/// The frame of the record writers: one list, one file, one call, one outcome.
struct RichiestaRecord {
  std::string_view hostIP;
  std::string_view azienda;
  std::string_view nome;
  std::string_view tipo;
  std::size_t limiteSuperiore;            ///< upper bound of the call list
  std::function<std::string()> contenuto; ///< the bytes of the file
};

/// The request from its naming to its clean-up on the host. The person reads the reply after the turn: a box left open
/// must not keep others from sending theirs. `nomi` is set as soon as they are known.
std::string InviaAlSuoTurno(const RichiestaRecord& richiesta, std::optional<NomiRichiesta>& nomi,
                            nexaro::XMLParser& risposta) {
  const TurnoRichiesta turno(Puntatore::Clessidra);
  nomi = turno.Nomi();
  std::vector<std::string> parametri(richiesta.limiteSuperiore + 1);
  parametri[0] = richiesta.azienda;
  parametri[1] = richiesta.nome;
  parametri[2] = richiesta.tipo;
  parametri[3] = SenzaSpaziAiLati(servizi().ambiente().CodicePostazione);
  parametri[4] = nomi->Completo();
  ScriviFileLocale(nomi->locale, richiesta.contenuto());
  return ChiamataDiretta({richiesta.hostIP, *nomi, parametri, parametri}, risposta);
}

std::string Invia(const RichiestaRecord& richiesta) {
  std::string risultato = "error";
  const auto risposta = std::make_shared<MsgAnnulla>();
  std::optional<NomiRichiesta> nomi;
  try {
    stato().Risposta = risposta;
    servizi().desktop().ImpostaPuntatore(Puntatore::Clessidra);
    servizi().desktop().EventiInAttesa();
    risultato = InviaAlSuoTurno(richiesta, nomi, risposta->XMLParser);
    if (MaggioreDiSpazio(risposta->Messaggio)) {
      servizi().desktop().MostraBox(risposta->Messaggio, NomeProdotto);
    }
  } catch (...) {
    const ErroreRuntime errore = ErroreCorrente();
    risposta->Errore = std::to_string(errore.Numero()) + " " + errore.Testo();
  }
  IgnoraErrori([] {
    servizi().desktop().ImpostaPuntatore(Puntatore::Predefinito);
    servizi().desktop().EventiInAttesa();
  });
  if (nomi) {
    IgnoraErrori([&] { CancellaFileLocale(nomi->locale); });
  }
  if (!risposta->Errore.empty()) {
    throw ErroreRuntime(errori::ErroreTrasferimento, risposta->Errore);
  }
  return risultato;
}

/// Sends one line a record; nothing at all for an empty list.
template <typename Variazioni, typename Riga>
std::string InviaRighe(RichiestaRecord richiesta, const Variazioni& variazioni, Riga riga) {
  if (variazioni.empty()) {
    return "";
  }
  richiesta.contenuto = [&] {
    std::string contenuto;
    for (const auto& variazione : variazioni) {
      contenuto += riga(variazione);
    }
    return contenuto;
  };
  return Invia(richiesta);
}

} // namespace

std::string ScriviRichiestaCanalizzazione(std::string_view hostIP, std::string_view azienda,
                                          const VariazioniCanalizzazione& variazioni, std::string_view tipo) {
  return InviaRighe({hostIP, azienda, "CANALIZZAZIONE", tipo, 10, {}}, variazioni, RigaCanalizzazione);
}

std::string ScriviRichiestaBancaPresunti(std::string_view hostIP, std::string_view azienda,
                                         const VariazioniConsegna& variazioni, std::string_view tipo) {
  return InviaRighe({hostIP, azienda, "CANALIZZAZIONE", tipo, 10, {}}, variazioni, RigaBancaPresunti);
}

std::string ScriviRichiestaConsegna(std::string_view hostIP, std::string_view azienda,
                                    const VariazioniConsegna& variazioni, std::string_view tipo) {
  return InviaRighe({hostIP, azienda, "CONSEGNA", tipo, 5, {}}, variazioni, RigaConsegna);
}

} // namespace lumoscad
