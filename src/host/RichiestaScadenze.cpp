#include "host/RichiestaScadenze.hpp"

#include "common/Stato.hpp"
#include "common/Testo.hpp"
#include "common/Utilities.hpp"
#include "database/procedureLumoDB2.hpp"
#include "host/ChiamataDiretta.hpp"
#include "host/RigaRichiesta.hpp"
#include "host/Risposte.hpp"
#include "platform/LocalFile.hpp"
#include "platform/RuntimeError.hpp"
#include "platform/Services.hpp"

#include <algorithm>
#include <filesystem>

namespace lumoscad {
namespace {

constexpr std::size_t LimiteSuperiore = 100;

void Scrivi(std::vector<std::string>& lista, std::size_t indice, std::string valore) {
  if (indice >= lista.size()) {
    throw RuntimeError(errors::SubscriptOutOfRange,
                       "Indice non incluso nell'intervallo: troppe scadenze per una richiesta");
  }
  lista[indice] = std::move(valore);
}

bool ConNuovaScadenza(const RigaScadenze& riga) {
  return MaggioreDiSpazio(riga.nuovaScadenza);
}

/// A request without rows leaves its empty local file and asks nobody. It needs no turn, and so leaves alone what
/// stands under its name: that may be another program's request of this second.
std::string SenzaRighe() {
  const NomiRichiesta nomi = TurnoRichiesta::NomiSenzaTurno();
  if (!std::filesystem::exists(nomi.locale)) {
    WriteLocalFile(nomi.locale, "");
  }
  return "";
}

} // namespace

ElenchiScadenze ComponiRichiestaScadenze(const std::vector<RigaScadenze>& righe, const std::string& completo) {
  ElenchiScadenze elenchi;
  elenchi.chiamata = {stato().azienda, "SCRIVISCADENZE", stato().tipoComando,
                      ActiveServices().environment().CodicePostazione, completo};
  elenchi.chiamata.resize(LimiteSuperiore + 1);
  elenchi.database = {stato().azienda, "SCRIVISCADENZE", stato().contoScadenze, stato().partitaScadenze,
                      stato().tipoComando};
  std::size_t k = elenchi.database.size();
  elenchi.database.resize(LimiteSuperiore + 1);
  for (const RigaScadenze& riga : righe) {
    if (!ConNuovaScadenza(riga)) {
      continue;
    }
    const std::string nuova = Utilities::DataPerHost(riga.nuovaScadenza);
    AggiungiRiga(elenchi.contenuto, {riga.conto, riga.partita, Utilities::DataPerHost(riga.scadenzaOrig), nuova});
    Scrivi(elenchi.database, k++, "1");
    Scrivi(elenchi.database, k++, Utilities::DataPerHost(riga.scadenza));
    Scrivi(elenchi.database, k++, nuova);
  }
  return elenchi;
}

std::string ScriviRichiestaScadenze(const std::vector<RigaScadenze>& righe) {
  stato().andamento.Azzera();
  if (std::none_of(righe.begin(), righe.end(), ConNuovaScadenza)) {
    return SenzaRighe();
  }
  const TurnoRichiesta turno(Pointer::Standard);
  const NomiRichiesta& nomi = turno.Nomi();
  const ElenchiScadenze elenchi = ComponiRichiestaScadenze(righe, nomi.Completo());
  WriteLocalFile(nomi.locale, elenchi.contenuto);
  const auto messaggio = std::make_shared<MsgAnnulla>();
  const auto partita = std::make_shared<Partita>();
  stato().risposta = messaggio;
  stato().rispostaPartita = partita;
  stato().andamento.Comincia(procedureLumoDB2::NomeOggetto(elenchi.database));
  stato().notaInCorso.Prepara(elenchi.database);
  stato().notaInCorso.SegnaRichiesta(nomi.Completo());
  return ChiamataDiretta({stato().HostIP, nomi, elenchi.chiamata, elenchi.database}, partita->XMLParser, *messaggio);
}

} // namespace lumoscad
