#include "common/Andamento.hpp"

#include "platform/HostLink.hpp"

namespace lumoscad {
namespace {

constexpr std::string_view Rifiuto = "L'host ha rifiutato la richiesta.";

std::string Frase(std::string_view inizio, std::string_view daControllare) {
  return std::string(inizio).append(daControllare).append(".");
}

} // namespace

void Andamento::Comincia(std::string_view daControllare) {
  Azzera();
  nonApplicata_ = lumoscad::Frase(
      "L'host ha già accettato la modifica; la base dati non ne ha registrato nulla. Da allineare: ", daControllare);
  sconosciuta_ = lumoscad::Frase("L'host ha già accettato la modifica; non si sa se la base dati l'ha registrata. Da "
                                 "controllare prima di ripeterla: ",
                                 daControllare);
  applicata_ = lumoscad::Frase("L'host e la base dati hanno registrato la modifica: ", daControllare);
  applicataInParte_ = lumoscad::Frase("L'host ha registrato la modifica; nella base dati alcune di queste righe erano "
                                      "già cambiate e sono rimaste com'erano: ",
                                      daControllare);
}

void Andamento::Azzera() noexcept {
  host_ = Host::NonChiesta;
  base_ = TransactionOutcome::NotApplied;
  rimaste_ = false;
}

void Andamento::Rifiutata(std::string_view motivo) noexcept {
  host_ = Host::Rifiutata;
  try {
    rifiuto_ = "L'host ha rifiutato la richiesta: ";
    rifiuto_ += motivo;
  } catch (...) {
    rifiuto_.clear();
  }
}

std::string_view Andamento::Frase(std::optional<TransactionOutcome> detto) const noexcept {
  switch (host_) {
  case Host::NonChiesta:
    break;
  case Host::Chiesta:
    return detto ? std::string_view() : nexaro::UnknownOutcome;
  case Host::Rifiutata:
    return detto ? std::string_view() : rifiuto_.empty() ? Rifiuto : rifiuto_;
  case Host::Accettata:
    return base_ == TransactionOutcome::NotApplied ? nonApplicata_
           : base_ == TransactionOutcome::Unknown  ? sconosciuta_
           : rimaste_                              ? applicataInParte_
                                                   : applicata_;
  }
  return {};
}

} // namespace lumoscad
