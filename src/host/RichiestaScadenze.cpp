#include "host/RichiestaScadenze.hpp"

#include "common/Stato.hpp"
#include "common/Testo.hpp"
#include "common/Utilities.hpp"
#include "database/procedureLumoDB2.hpp"
#include "host/ChiamataDiretta.hpp"
#include "host/RigaRichiesta.hpp"
#include "host/Risposte.hpp"
#include "platform/Errore.hpp"
#include "platform/FileLocale.hpp"
#include "platform/Servizi.hpp"

#include <algorithm>
#include <filesystem>

namespace lumoscad {
namespace {

constexpr std::size_t LimiteSuperiore = 100;
constexpr std::size_t UltimoFisso = 4;

void Scrivi(std::vector<std::string>& lista, std::size_t indice, std::string valore) {
  if (indice >= lista.size()) {
    throw ErroreRuntime(errori::IndiceNonValido,
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
    ScriviFileLocale(nomi.locale, "");
  }
  return "";
}

} // namespace

std::string ScriviRichiestaScadenze(const std::vector<RigaScadenze>& righe) {
  stato().andamento.Azzera();
  if (std::none_of(righe.begin(), righe.end(), ConNuovaScadenza)) {
    return SenzaRighe();
  }
  const TurnoRichiesta turno(Puntatore::Predefinito);
  const NomiRichiesta& nomi = turno.Nomi();
  std::vector<std::string> chiamata(LimiteSuperiore + 1);
  chiamata[0] = stato().Azienda;
  chiamata[1] = "SCRIVISCADENZE";
  chiamata[2] = stato().TipoComando;
  chiamata[3] = servizi().ambiente().CodicePostazione;
  chiamata[4] = nomi.Completo();
  std::vector<std::string> database(LimiteSuperiore + 1);
  database[0] = stato().Azienda;
  database[1] = "SCRIVISCADENZE";
  database[2] = stato().ContoScadenze;
  database[3] = stato().PartitaScadenze;
  database[4] = stato().TipoComando;
  std::size_t k = UltimoFisso;
  std::string contenuto;
  for (const RigaScadenze& riga : righe) {
    if (!ConNuovaScadenza(riga)) {
      continue;
    }
    const std::string nuova = Utilities::DataPerHost(riga.nuovaScadenza);
    contenuto += RigaRichiesta({riga.conto, riga.partita, Utilities::DataPerHost(riga.scadenzaOrig), nuova});
    Scrivi(database, k + 1, "1");
    Scrivi(database, k + 2, Utilities::DataPerHost(riga.scadenza));
    Scrivi(database, k + 3, nuova);
    k += 3;
  }
  ScriviFileLocale(nomi.locale, contenuto);
  stato().Risposta = std::make_shared<MsgAnnulla>();
  stato().RispostaPartita = std::make_shared<Partita>();
  stato().andamento.Comincia(procedureLumoDB2::NomeOggetto(database));
  return ChiamataDiretta({stato().HostIP, nomi, chiamata, database}, stato().RispostaPartita->XMLParser);
}

} // namespace lumoscad
