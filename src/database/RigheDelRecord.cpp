#include "database/RigheDelRecord.hpp"

#include "common/Testo.hpp"

#include <utility>

namespace lumoscad::procedureLumoDB2 {
namespace {

constexpr std::string_view Tabelle = "MOVIMENTOCONTABILE RIGHT JOIN EVENTOCONTABILE ON "
                                     "MOVIMENTOCONTABILE.MOVIMENTOKEY = EVENTOCONTABILE.MOVIMENTOKEY ";

std::string Numero(const VariazioneCanalizzazione& variazione) {
  return "AND " + UgualeChiave("EVENTOCONTABILE.NUMERORATA", variazione.NumeroRata);
}

std::string Originale(const VariazioneCanalizzazione& variazione) {
  return "AND " + UgualeData("EVENTOCONTABILE.DATASCADENZAORIGINALE", variazione.ScadenzaOriginale);
}

/// The rows of a document, as the lists show them.
std::string RigheDelDocumento(const std::string& altre) {
  return "EVENTOCONTABILE WHERE MOVIMENTOKEY=? AND TIPOEVENTO='P' " + altre;
}

template <typename Righe> Righe CercaBanche(Aggiornamento& aggiornamento, const VariazioneCanalizzazione& variazione) {
  std::string vecchia = aggiornamento.ChiaveBanca(variazione.VecchiaBanca);
  std::string nuova = variazione.isBancaChanged ? aggiornamento.ChiaveBanca(variazione.NuovaBanca) : std::string();
  return Righe(variazione, std::move(vecchia), std::move(nuova));
}

} // namespace

RigheScadenza::RigheScadenza(const VariazioneCanalizzazione& variazione, std::string vecchiaBanca,
                             std::string nuovaBanca)
    : variazione_(&variazione), vecchiaBanca_(std::move(vecchiaBanca)), nuovaBanca_(std::move(nuovaBanca)) {}

std::string RigheScadenza::Colpite() const {
  constexpr std::size_t LunghezzaUsuale = 640; // bytes
  std::string testo;
  testo.reserve(LunghezzaUsuale);
  testo.append(Tabelle);
  testo.append("WHERE (MOVIMENTOCONTABILE.TIPOMOVIMENTO='N') "
               "AND EVENTOCONTABILE.SOSPESA='N' "
               "AND EVENTOCONTABILE.TIPOEVENTO='C' "
               "AND EVENTOCONTABILE.PARTITACONTABILEKEY=? "
               "AND ");
  testo.append(UgualeData("EVENTOCONTABILE.DATASCADENZA", variazione_->VecchiaScadenza)).append(Numero(*variazione_));
  testo.append("AND ").append(UgualeChiave("EVENTOCONTABILE.BANCAPRESENTAZIONE_KEY", vecchiaBanca_));
  testo.append(Originale(*variazione_));
  return testo;
}

std::string RigheScadenza::Tutte() const {
  return std::string(Tabelle) +
         "WHERE MOVIMENTOCONTABILE.TIPOMOVIMENTO='N' AND EVENTOCONTABILE.TIPOEVENTO='C' "
         "AND EVENTOCONTABILE.PARTITACONTABILEKEY=? " +
         Numero(*variazione_) + Originale(*variazione_);
}

std::string RigheScadenza::Assegna() const {
  std::string assegna;
  if (variazione_->isScadenzaChanged) {
    assegna += SenzaValore(variazione_->NuovaScadenza) ? "DATASCADENZA=NULL "
                                                       : "DATASCADENZA='" + DataIso(variazione_->NuovaScadenza) + "' ";
  }
  if (variazione_->isScadenzaChanged && variazione_->isBancaChanged) {
    assegna += ",";
  }
  if (variazione_->isBancaChanged) {
    assegna += "BANCAPRESENTAZIONE_KEY=" + ValoreChiave(nuovaBanca_);
  }
  return assegna;
}

std::string RigheScadenza::ComeNuove() const {
  return Come(variazione_->NuovaScadenza, nuovaBanca_);
}

std::string RigheScadenza::ComeVecchie() const {
  return Come(variazione_->VecchiaScadenza, vecchiaBanca_);
}

std::string RigheScadenza::Come(const std::string& scadenza, const std::string& banca) const {
  std::string condizione;
  if (variazione_->isScadenzaChanged) {
    condizione = UgualeData("EVENTOCONTABILE.DATASCADENZA", scadenza);
  }
  if (variazione_->isBancaChanged) {
    condizione += condizione.empty() ? "" : "AND ";
    condizione += UgualeChiave("EVENTOCONTABILE.BANCAPRESENTAZIONE_KEY", banca);
  }
  return condizione;
}

RighePresunto::RighePresunto(const VariazioneCanalizzazione& variazione, std::string vecchiaBanca,
                             std::string nuovaBanca)
    : variazione_(&variazione), vecchiaBanca_(std::move(vecchiaBanca)), nuovaBanca_(std::move(nuovaBanca)) {
  const bool senzaMovimento = SenzaValore(variazione.idMovimentoKey);
  senzaChiavi_ = senzaMovimento && SenzaValore(variazione.idPartitaKey);
  if (senzaChiavi_) {
    chiave_ = "AND EVENTOCONTABILEKEY=-1 AND PARTITACONTABILEKEY=-1";
    return;
  }
  chiave_ = senzaMovimento ? "AND PARTITACONTABILEKEY=?" : "AND MOVIMENTOKEY=?";
  valori_ = {senzaMovimento ? variazione.idPartitaKey : variazione.idMovimentoKey};
}

std::string RighePresunto::Scadenza() const {
  return "WHERE " + UgualeData("DATASCADENZA", variazione_->VecchiaScadenza);
}

std::string RighePresunto::DoveE(const std::string& valore) const {
  return Scadenza() + "AND " + UgualeChiave("BANCAPRESENTAZIONE_KEY", valore) + "AND EVENTOCONTABILE.SOSPESA='N' " +
         chiave_;
}

std::string RighePresunto::Dove() const {
  return DoveE(vecchiaBanca_);
}

std::string RighePresunto::Scritte() const {
  return "EVENTOCONTABILE " + DoveE(nuovaBanca_);
}

std::string RighePresunto::Tutte() const {
  return "EVENTOCONTABILE " + Scadenza() + chiave_ + " ";
}

std::string RighePresunto::ComeNuove() const {
  return UgualeChiave("BANCAPRESENTAZIONE_KEY", nuovaBanca_);
}

std::string RighePresunto::Assegna() const {
  return "BANCAPRESENTAZIONE_KEY=" + ValoreChiave(nuovaBanca_);
}

RigheBanca::RigheBanca(const VariazioneConsegna& variazione, std::string vecchiaBanca, std::string nuovaBanca,
                       std::string conto)
    : variazione_(&variazione), vecchiaBanca_(std::move(vecchiaBanca)), nuovaBanca_(std::move(nuovaBanca)),
      conto_(std::move(conto)) {}

std::string RigheBanca::DoveE(const std::string& valore) const {
  return "WHERE MOVIMENTOKEY=? AND CONTOCONTABILE_KEY= " + conto_ + " " + "AND " +
         UgualeChiave("BANCAPRESENTAZIONE_KEY", valore) + "AND EVENTOCONTABILE.SOSPESA='N' ";
}

std::string RigheBanca::Dove() const {
  return DoveE(vecchiaBanca_);
}

std::string RigheBanca::Scritte() const {
  return "EVENTOCONTABILE " + DoveE(nuovaBanca_);
}

std::string RigheBanca::Tutte() const {
  return RigheDelDocumento("AND CONTOCONTABILE_KEY=" + conto_ + " ");
}

std::string RigheBanca::ComeNuove() const {
  return UgualeChiave("BANCAPRESENTAZIONE_KEY", nuovaBanca_);
}

std::string RigheBanca::Assegna() const {
  return "BANCAPRESENTAZIONE_KEY=" + ValoreChiave(nuovaBanca_);
}

RigheConsegna::RigheConsegna(const VariazioneConsegna& variazione)
    : variazione_(&variazione),
      conOrdine_(!SenzaValore(variazione.idOrdineKey)), valori_{conOrdine_
                                                                    ? variazione.idOrdineKey
                                                                    : std::to_string(variazione.idMovimentoKey)} {}

std::string RigheConsegna::DoveE(const std::string& valore) const {
  const std::string consegna =
      SenzaValore(valore) ? "AND DATACONSEGNA IS NULL " : "AND DATACONSEGNA= '" + DataIso(valore) + "' ";
  return "WHERE MOVIMENTOKEY=? " + consegna + "AND EVENTOCONTABILE.SOSPESA='N' ";
}

std::string RigheConsegna::Dove() const {
  return DoveE(variazione_->Consegna);
}

std::string RigheConsegna::Scritte() const {
  return "EVENTOCONTABILE " + DoveE(variazione_->NuovaConsegna);
}

std::string RigheConsegna::Tutte() const {
  // The rows of a document with several dates are told apart by the first one, which no change touches.
  return RigheDelDocumento("AND " + UgualeData("DATACONSEGNAPRODUZIONE", variazione_->ConsegnaOrigine));
}

std::string RigheConsegna::ComeNuove() const {
  return UgualeData("DATACONSEGNA", variazione_->NuovaConsegna);
}

std::string RigheConsegna::Assegna() const {
  const std::string nuova =
      SenzaValore(variazione_->NuovaConsegna) ? "NULL" : "'" + DataIso(variazione_->NuovaConsegna) + "'";
  return "DATACONSEGNA= " + nuova +
         ",  "
         "TITOLOIVA= ' ' ";
}

RigheScadenza CercaRigheScadenza(Aggiornamento& aggiornamento, const VariazioneCanalizzazione& variazione) {
  return CercaBanche<RigheScadenza>(aggiornamento, variazione);
}

RighePresunto CercaRighePresunto(Aggiornamento& aggiornamento, const VariazioneCanalizzazione& variazione) {
  return CercaBanche<RighePresunto>(aggiornamento, variazione);
}

RigheBanca CercaRigheBanca(Aggiornamento& aggiornamento, const VariazioneConsegna& variazione) {
  std::string vecchia = aggiornamento.ChiaveBanca(variazione.VecchiaBanca);
  std::string nuova = aggiornamento.ChiaveBanca(variazione.NuovaBanca);
  return RigheBanca(variazione, std::move(vecchia), std::move(nuova),
                    aggiornamento.ChiaveConto(variazione.CodiceConto));
}

} // namespace lumoscad::procedureLumoDB2
