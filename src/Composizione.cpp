// The composition root: wires the adapters to the component when the library is loaded.

#include "lumoscad/Host.hpp"
#include "lumoscad/LumoScadenze.hpp"
#include "lumoscad/lumoscad.h"
#include "platform/Errore.hpp"
#include "platform/Servizi.hpp"
#include "platform/Turno.hpp"
#include "platform/nexaro/Nexaro.hpp"
#include "platform/nexaro/ProvaOperazioni.hpp"
#include "platform/nexaro/ssh/ChiaveHost.hpp"
#include "platform/nexaro/ssh/ImpostazioniSsh.hpp"
#include "platform/qt/QtDesktop.hpp"

#include <algorithm>
#include <cstring>

namespace lumoscad {
namespace {

// The services are made on first use and never destroyed: the program that loaded the component may have torn down
// its own windows by the time statics go.
Desktop& UnicoDesktop() {
  static Desktop& unico = *qt::CreaDesktop().release();
  return unico;
}

nexaro::HostLink& UnicoHostLink() {
  static nexaro::HostLink& unico = *nexaro::CreaHostLink().release();
  return unico;
}

const nexaro::Ambiente& UnicoAmbiente() {
  static const nexaro::Ambiente unico = nexaro::LeggiAmbiente();
  return unico;
}

nexaro::Esclusione& UnicaEsclusione() {
  static nexaro::Esclusione& unica = *nexaro::CreaEsclusione().release();
  return unica;
}

[[maybe_unused]] const bool installati = [] {
  servizi() = {UnicoDesktop, UnicoHostLink,          UnicoAmbiente,  OraDiSistema,
               nullptr,      qt::DoveSonoLeFinestre, UnicaEsclusione};
  return true;
}();

} // namespace

ChiavePresentata ChiediChiaveHost(std::string_view host) noexcept {
  ChiavePresentata presentata;
  try {
    const auto impostazioni = nexaro::LeggiImpostazioniSsh();
    const auto chiave = nexaro::ChiediChiave(impostazioni, std::string(host));
    presentata = {
        {}, chiave.stato == nexaro::StatoChiave::Nota, chiave.tipo, chiave.impronta, chiave.riga, impostazioni.noti};
    if (!presentata.nota && chiave.stato != nexaro::StatoChiave::Sconosciuta) {
      presentata.errore = nexaro::MotivoRifiuto(chiave, std::string(host), impostazioni.noti);
    }
  } catch (...) {
    presentata.errore = ErroreCorrente().Testo();
  }
  return presentata;
}

std::string RegistraChiaveHost(const ChiavePresentata& chiave) noexcept {
  try {
    nexaro::RegistraRiga(chiave.riga, chiave.file);
    return {};
  } catch (...) {
    return ErroreCorrente().Testo();
  }
}

bool ProvaHost(std::string_view host, std::string_view programma,
               const std::function<void(const PassoProva&)>& mostra) noexcept try {
  const Turno turno(Turno::Chi::Amministratore);
  if (turno.Come() != Turno::Esito::Preso) {
    mostra({"Impostazioni", false, std::string(turno.Motivo())});
    return false;
  }
  try {
    auto& collegamento = UnicoHostLink();
    const auto& ambiente = UnicoAmbiente();
    return nexaro::ProvaOperazioni(collegamento, std::string(host), std::string(programma), ambiente,
                                   [&mostra](const nexaro::EsitoPasso& passo) {
                                     mostra({passo.operazione, passo.riuscito, passo.dettaglio});
                                   });
  } catch (...) {
    mostra({"Impostazioni", false, ErroreCorrente().Testo()});
    return false;
  }
} catch (...) {
  // What `mostra` itself raised: there is nobody else to tell.
  return false;
}

} // namespace lumoscad

extern "C" size_t lumoscad_esegui(const char* comando, char* risultato, size_t dimensione) {
  const std::string testo = lumoscad::LumoScadenze().EseguiLumoScad(comando == nullptr ? "" : comando);
  if (risultato != nullptr && dimensione > 0) {
    const std::size_t copiati = std::min(testo.size(), dimensione - 1);
    std::memcpy(risultato, testo.data(), copiati);
    risultato[copiati] = '\0';
  }
  return testo.size();
}
