#include "database/Aggiornamento.hpp"

#include "common/Testo.hpp"
#include "common/Utilities.hpp"
#include "database/procedureLumoDB2.hpp"
#include "platform/RuntimeError.hpp"

#include <utility>

namespace lumoscad::procedureLumoDB2 {

namespace {

/// A message box must stay readable.
constexpr std::size_t RigheMostrate = 8;

template <typename Variazioni> std::string ElencoRighe(const Variazioni& variazioni) {
  return Elenca(variazioni.size(), RigheMostrate, [&](std::size_t posto) { return Riga(variazioni[posto]); });
}

} // namespace

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

std::string Righe(const VariazioniCanalizzazione& variazioni) {
  return ElencoRighe(variazioni);
}

std::string Righe(const VariazioniConsegna& variazioni) {
  return ElencoRighe(variazioni);
}

std::string DataIso(const std::string& data) {
  std::string iso = Utilities::DataIsoDaTesto(data);
  if (iso.empty()) {
    throw RuntimeError(errors::TypeMismatch, "Data non valida: " + data);
  }
  return iso;
}

std::string UgualeData(std::string_view colonna, const std::string& data) {
  std::string condizione(colonna);
  return SenzaValore(data) ? condizione.append(" IS NULL ")
                           : condizione.append("='").append(DataIso(data)).append("' ");
}

std::string UgualeChiave(std::string_view colonna, const std::string& chiave) {
  std::string condizione(colonna);
  return chiave.empty() ? condizione.append(" IS NULL ") : condizione.append("=").append(chiave).append(" ");
}

std::string ValoreChiave(const std::string& chiave) {
  return (chiave.empty() ? "NULL" : chiave) + " ";
}

ado::Recordset Aggiornamento::Leggi(const std::string& istruzione, std::vector<std::string> valori,
                                    std::string colonna) {
  istruzioni_.append("\r\n").append(istruzione);
  ado::Command comando = moduloDatabase::CreaComando(*connection_, istruzione);
  comando.sentOnce = true;
  if (!colonna.empty()) {
    comando.wantedColumns.push_back(std::move(colonna));
  }
  comando.Parameters = std::move(valori);
  return comando.Execute();
}

std::int64_t Aggiornamento::Esegui(const std::string& istruzione, std::vector<std::string> valori) {
  istruzioni_.append("\r\n").append(istruzione);
  ado::Command comando = moduloDatabase::CreaComando(*connection_, istruzione);
  comando.sentOnce = true;
  comando.Parameters = std::move(valori);
  std::int64_t righe = -1;
  comando.Execute(&righe);
  alterate_ = righe < 0 ? 1 : righe;
  return righe;
}

std::int64_t Aggiornamento::Esegui(const std::string& istruzione) {
  istruzioni_.append("\r\n").append(istruzione);
  const std::int64_t righe = connection_->Execute(istruzione);
  alterate_ = righe < 0 ? 1 : righe;
  return righe;
}

bool Aggiornamento::Cambia(const std::string& istruzione, const std::vector<std::string>& valori) {
  Modifica modifica;
  for (const std::string& valore : valori) {
    modifica.Aggiungi(valore);
  }
  modifica.Aggiungi(istruzione);
  if (Esegui(istruzione, valori) == 0) {
    return Fatta(modifica);
  }
  SegnaFatta(std::move(modifica));
  return true;
}

Aggiornamento::Conto Aggiornamento::Conta(const std::string& daDove, std::vector<std::string> valori,
                                          const std::string& nuovo) {
  const ado::Recordset righe =
      Leggi("SELECT COUNT(*), COUNT(CASE WHEN " + nuovo + "THEN 1 END) FROM " + daDove, std::move(valori));
  return {Intero(righe.ValueAt(0).value_or("0")), Intero(righe.ValueAt(1).value_or("0"))};
}

bool Aggiornamento::GiaCosi(const std::string& daDove, std::vector<std::string> valori, const std::string& nuovo) {
  const std::string attive = "CASE WHEN EVENTOCONTABILE.SOSPESA='N' THEN 1 ELSE 0 END";
  const ado::Recordset gruppi = Leggi("SELECT COUNT(*), COUNT(CASE WHEN " + nuovo + "THEN 1 END) FROM " + daDove +
                                          "GROUP BY " + attive + " ORDER BY " + attive + " DESC",
                                      std::move(valori));
  // The active ones come first, as the lists show no others; suspended ones count where there are no active ones.
  return !gruppi.Eof() && gruppi.ValueAt(0) == gruppi.ValueAt(1);
}

void Aggiornamento::RifiutaScarto(const std::string& dove) {
  const ado::Recordset righe = Leggi("SELECT COUNT(*) FROM EVENTOCONTABILE WHERE " + dove, {});
  if (!righe.Eof() && righe.ValueAt(0) != "0") {
    ado::RefuseDroppedChange();
  }
}

std::string Aggiornamento::ChiaveBanca(const std::string& codice) {
  return SenzaValore(codice) ? std::string() : ChiaveConto(codice);
}

std::string Aggiornamento::ChiaveConto(const std::string& codice) {
  return std::to_string(conti_.Cerca(codice));
}

} // namespace lumoscad::procedureLumoDB2
