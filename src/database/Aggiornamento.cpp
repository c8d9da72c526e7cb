#include "database/Aggiornamento.hpp"

#include "common/Testo.hpp"
#include "common/Utilities.hpp"
#include "database/db2Searches.hpp"
#include "platform/Errore.hpp"

#include <algorithm>
#include <utility>

namespace lumoscad::procedureLumoDB2 {

namespace {

/// A message box must stay readable.
constexpr std::size_t RigheMostrate = 8;

std::string Riga(const VariazioneCanalizzazione& variazione) {
  const std::string scadenza =
      SenzaValore(variazione.VecchiaScadenza) ? " senza scadenza" : " del " + variazione.VecchiaScadenza;
  return "conto " + variazione.CodiceConto + " partita " + variazione.NumeroPartita + " rata " + variazione.NumeroRata +
         scadenza;
}

std::string Riga(const VariazioneConsegna& variazione) {
  return "conto " + variazione.CodiceConto + " documento " + variazione.Serie + "/" + variazione.Anno + "/" +
         variazione.Numero;
}

template <typename Variazioni> std::string ElencoRighe(const Variazioni& variazioni) {
  std::string testo;
  for (std::size_t i = 0; i < std::min(variazioni.size(), RigheMostrate); ++i) {
    testo += (i == 0 ? "" : "; ") + Riga(variazioni[i]);
  }
  if (variazioni.size() > RigheMostrate) {
    testo += "; e altre " + std::to_string(variazioni.size() - RigheMostrate);
  }
  return testo;
}

} // namespace

std::string Righe(const VariazioniCanalizzazione& variazioni) {
  return ElencoRighe(variazioni);
}

std::string Righe(const VariazioniConsegna& variazioni) {
  return ElencoRighe(variazioni);
}

std::string DataIso(const std::string& data) {
  std::string iso = Utilities::DataIsoDaTesto(data);
  if (iso.empty()) {
    throw ErroreRuntime(errori::TipoNonCorrispondente, "Data non valida: " + data);
  }
  return iso;
}

std::string UgualeData(const std::string& colonna, const std::string& data) {
  return SenzaValore(data) ? colonna + " IS NULL " : colonna + "='" + DataIso(data) + "' ";
}

std::string UgualeChiave(const std::string& colonna, const std::string& chiave) {
  return chiave.empty() ? colonna + " IS NULL " : colonna + "=" + chiave + " ";
}

std::string ValoreChiave(const std::string& chiave) {
  return (chiave.empty() ? "NULL" : chiave) + " ";
}

ado::Recordset Aggiornamento::Esegui(const std::string& istruzione, std::vector<std::string> valori) {
  istruzioni_ += "\r\n" + istruzione;
  ado::Command comando = moduloDatabase::CreaComando(*connection_, istruzione);
  comando.Parameters = std::move(valori);
  return comando.Execute();
}

void Aggiornamento::Esegui(const std::string& istruzione) {
  istruzioni_ += "\r\n" + istruzione;
  connection_->Execute(istruzione);
}

std::string Aggiornamento::ChiaveBanca(const std::string& codice) {
  return SenzaValore(codice) ? std::string() : ChiaveConto(codice);
}

std::string Aggiornamento::ChiaveConto(const std::string& codice) {
  return std::to_string(db2Searches::CercaContoContabile(*connection_, codice));
}

} // namespace lumoscad::procedureLumoDB2
