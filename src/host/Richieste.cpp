#include "host/Richieste.hpp"

#include "common/Messaggi.hpp"
#include "common/Stato.hpp"
#include "common/Testo.hpp"
#include "common/Utilities.hpp"
#include "database/procedureLumoDB2.hpp"
#include "host/ChiamataDiretta.hpp"
#include "host/RigaRichiesta.hpp"
#include "platform/LocalFile.hpp"
#include "platform/RuntimeError.hpp"
#include "platform/Services.hpp"

#include <functional>
#include <optional>

namespace lumoscad {
namespace {

/// A date of a line; "#null#" means that there is none.
std::string Data(const std::string& data) {
  return data == Nullo ? std::string() : Utilities::DataPerHost(data);
}

template <typename Variazione> std::string_view BancaNuova(const Variazione& v) {
  return v.isBancaChanged ? std::string_view(v.NuovaBanca) : std::string_view();
}

void RigaCanalizzazione(std::string& contenuto, const VariazioneCanalizzazione& v) {
  AggiungiRiga(contenuto,
               {v.CodiceConto, v.NumeroPartita, v.Anno, v.Numero, v.Serie, Data(v.ScadenzaOriginale),
                Data(v.VecchiaScadenza), Data(v.NuovaScadenza), v.VecchiaBanca, BancaNuova(v), v.NumeroRata});
}

/// A presumed document travels in the same line; it has no item, no due dates and no instalment.
void RigaBancaPresunti(std::string& contenuto, const VariazioneConsegna& v) {
  AggiungiRiga(contenuto,
               {v.CodiceConto, "", v.Anno, v.Numero, v.Serie, "", "", "", v.VecchiaBanca, BancaNuova(v), ""});
}

/// Every date of a delivery line is written, a missing one as zeros.
std::string DataPiena(const std::string& data) {
  return Utilities::DataPerHost(data == Nullo ? std::string_view() : data);
}

void RigaConsegna(std::string& contenuto, const VariazioneConsegna& v) {
  AggiungiRiga(contenuto, {v.CodiceConto, v.Serie, v.Numero, v.Anno, DataPiena(v.Consegna),
                           DataPiena(v.ConsegnaOrigine), DataPiena(v.NuovaConsegna)});
}

/// The frame of the record writers: one list, one file, one call, one outcome.
struct RichiestaRecord {
  std::string_view hostIP;
  std::string_view azienda;
  std::string_view nome;
  std::string_view tipo;
  std::size_t limiteSuperiore; ///< upper bound of the call list
  ModificaChiesta::Genere genere;
  std::string daControllare;              ///< the rows, as the person knows them
  std::function<std::string()> contenuto; ///< the bytes of the file
};

/// What remains to be done when a request is over, however it ended; nothing that fails in it counts any more.
class Chiusura {
 public:
  Chiusura() = default;
  Chiusura(const Chiusura&) = delete;
  Chiusura& operator=(const Chiusura&) = delete;
  ~Chiusura() {
    Prova([] {
      ActiveServices().desktop().SetPointer(Pointer::Standard);
      ActiveServices().desktop().RunPendingEvents();
    });
    if (nomi) {
      Prova([this] { DeleteLocalFile(nomi->locale); });
    }
  }

  std::optional<NomiRichiesta> nomi; ///< of the request's file, once it has them

 private:
  template <typename Azione> static void Prova(Azione azione) noexcept {
    try {
      azione();
    } catch (...) { // NOLINT(bugprone-empty-catch): the outcome of the request is settled already
    }
  }
};

/// The request from its naming to its clean-up on the host. The person reads the reply after the turn: a box left open
/// must not keep others from sending theirs. `nomi` is set as soon as they are known.
std::string InviaAlSuoTurno(const RichiestaRecord& richiesta, std::optional<NomiRichiesta>& nomi,
                            MsgAnnulla& risposta) {
  const TurnoRichiesta turno(Pointer::Hourglass);
  nomi = turno.Nomi();
  std::vector<std::string> parametri(richiesta.limiteSuperiore + 1);
  parametri[0] = richiesta.azienda;
  parametri[1] = richiesta.nome;
  parametri[2] = richiesta.tipo;
  parametri[3] = SenzaSpaziAiLati(ActiveServices().environment().CodicePostazione);
  parametri[4] = nomi->Completo();
  stato().notaInCorso.SegnaRichiesta(nomi->Completo());
  WriteLocalFile(nomi->locale, richiesta.contenuto());
  return ChiamataDiretta({richiesta.hostIP, *nomi, parametri, parametri}, risposta.XMLParser, risposta);
}

std::string Invia(const RichiestaRecord& richiesta) {
  stato().andamento.Comincia(richiesta.daControllare);
  const auto risposta = std::make_shared<MsgAnnulla>();
  stato().risposta = risposta;
  Chiusura chiusura;
  try {
    ActiveServices().desktop().SetPointer(Pointer::Hourglass);
    ActiveServices().desktop().RunPendingEvents();
    std::string risultato = InviaAlSuoTurno(richiesta, chiusura.nomi, *risposta);
    if (MaggioreDiSpazio(risposta->Messaggio)) {
      ShowBox(risposta->Messaggio);
    }
    if (risposta->Errore.empty()) {
      return risultato;
    }
  } catch (...) {
    const RuntimeError errore = CurrentError();
    risposta->Errore = std::to_string(errore.Number()) + " " + errore.Text();
    throw RuntimeError(errors::TransferError, risposta->Errore).WithNote(errore.Note()).WithOutcome(errore.Outcome());
  }
  // The refusal says it all.
  throw RuntimeError(errors::TransferError, risposta->Errore).WithOutcome(TransactionOutcome::NotApplied);
}

/// Lends the running command's note a list for as long as its request lasts.
class ListaDellaNota {
 public:
  ListaDellaNota(const RichiestaRecord& richiesta, const VariazioniCanalizzazione& variazioni) noexcept {
    stato().notaInCorso.Prepara(richiesta.tipo, variazioni);
  }
  ListaDellaNota(const RichiestaRecord& richiesta, const VariazioniConsegna& variazioni) noexcept {
    stato().notaInCorso.Prepara(richiesta.genere, richiesta.tipo, variazioni);
  }
  ListaDellaNota(const ListaDellaNota&) = delete;
  ListaDellaNota& operator=(const ListaDellaNota&) = delete;
  ~ListaDellaNota() { stato().notaInCorso.Lascia(); }
};

/// Sends one line a record; nothing at all for an empty list.
template <typename Variazioni, typename Riga>
std::string InviaRighe(RichiestaRecord richiesta, const Variazioni& variazioni, Riga riga) {
  stato().andamento.Azzera();
  if (variazioni.empty()) {
    return "";
  }
  const ListaDellaNota lista(richiesta, variazioni);
  richiesta.daControllare = procedureLumoDB2::Righe(variazioni);
  richiesta.contenuto = [&] {
    constexpr std::size_t RigaUsuale = 96; // bytes: nearly every line is shorter, and any may be longer
    std::string contenuto;
    contenuto.reserve(variazioni.size() * RigaUsuale);
    for (const auto& variazione : variazioni) {
      riga(contenuto, variazione);
    }
    return contenuto;
  };
  return Invia(richiesta);
}

} // namespace

std::string ScriviRichiestaCanalizzazione(std::string_view hostIP, std::string_view azienda,
                                          const VariazioniCanalizzazione& variazioni, std::string_view tipo) {
  return InviaRighe({hostIP, azienda, "CANALIZZAZIONE", tipo, 10, ModificaChiesta::Genere::Canalizzazione, {}, {}},
                    variazioni, RigaCanalizzazione);
}

std::string ScriviRichiestaBancaPresunti(std::string_view hostIP, std::string_view azienda,
                                         const VariazioniConsegna& variazioni, std::string_view tipo) {
  return InviaRighe({hostIP, azienda, "CANALIZZAZIONE", tipo, 10, ModificaChiesta::Genere::BancaPresunti, {}, {}},
                    variazioni, RigaBancaPresunti);
}

std::string ScriviRichiestaConsegna(std::string_view hostIP, std::string_view azienda,
                                    const VariazioniConsegna& variazioni, std::string_view tipo) {
  return InviaRighe({hostIP, azienda, "CONSEGNA", tipo, 5, ModificaChiesta::Genere::Consegna, {}, {}}, variazioni,
                    RigaConsegna);
}

} // namespace lumoscad
