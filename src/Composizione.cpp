// The composition root: wires the adapters to the component when the library is loaded.

#include "common/ProvaNota.hpp"
#include "database/ProvaBaseDati.hpp"
#include "entry/Blocchi.hpp"
#include "entry/InSospeso.hpp"
#include "lumoscad/Host.hpp"
#include "platform/RuntimeError.hpp"
#include "platform/Services.hpp"
#include "platform/Turn.hpp"
#include "platform/nexaro/Nexaro.hpp"
#include "platform/nexaro/OperationsTrial.hpp"
#include "platform/nexaro/SigpipeBlock.hpp"
#include "platform/nexaro/ssh/HostKey.hpp"
#include "platform/nexaro/ssh/SshSettings.hpp"
#include "platform/qt/QtDesktop.hpp"

namespace lumoscad {
namespace {

// The services are made on first use and never destroyed: the program that loaded the component may have torn down
// its own windows by the time statics go.
Desktop& UnicoDesktop() {
  static Desktop& unico = *qt::CreateDesktop().release();
  return unico;
}

nexaro::HostLink& UnicoHostLink() {
  static nexaro::HostLink& unico = *nexaro::CreateHostLink().release();
  return unico;
}

const nexaro::Environment& UnicoAmbiente() {
  static const nexaro::Environment Unico = nexaro::ReadEnvironment();
  return Unico;
}

nexaro::ProcessLock& UnicaEsclusione() {
  static nexaro::ProcessLock& unica = *nexaro::CreateProcessLock().release();
  return unica;
}

/// What `azione` gives, or why it could not run, as the text of an empty one.
template <typename Esito, typename Azione> Esito AlSuoTurno(Azione azione) {
  Esito esito;
  const Turn turno(Turn::Who::Administrator);
  if (turno.How() == Turn::Outcome::Taken) {
    try {
      return azione();
    } catch (...) {
      esito.testo = CurrentError().Text();
    }
  } else {
    esito.testo = turno.Reason();
  }
  esito.testo += "\n";
  return esito;
}

[[maybe_unused]] const bool Installati = [] {
  ActiveServices() = {UnicoDesktop, UnicoHostLink,          UnicoAmbiente,  SystemTime,
                      nullptr,      qt::WhereTheWindowsAre, UnicaEsclusione};
  return true;
}();

} // namespace

ChiavePresentata ChiediChiaveHost(std::string_view host) noexcept {
  ChiavePresentata presentata;
  try {
    const auto impostazioni = nexaro::ReadSshSettings();
    const auto chiave = nexaro::AskHostKey(impostazioni, std::string(host));
    presentata = {{},          chiave.state == nexaro::KeyState::Note,
                  chiave.type, chiave.fingerprint,
                  chiave.line, impostazioni.knownHosts};
    if (!presentata.nota && chiave.state != nexaro::KeyState::Unknown) {
      presentata.errore = nexaro::RefusalReason(chiave, std::string(host), impostazioni.knownHosts);
    }
  } catch (...) {
    presentata.errore = CurrentError().Text();
  }
  return presentata;
}

std::string RegistraChiaveHost(const ChiavePresentata& chiave) noexcept {
  try {
    nexaro::AddLine(chiave.riga, chiave.file);
    return {};
  } catch (...) {
    return CurrentError().Text();
  }
}

bool ProvaHost(std::string_view host, std::string_view programma,
               const std::function<void(const PassoProva&)>& mostra) noexcept try {
  const Turn turno(Turn::Who::Administrator);
  if (turno.How() != Turn::Outcome::Taken) {
    mostra({"Impostazioni", false, std::string(turno.Reason())});
    return false;
  }
  try {
    auto& collegamento = UnicoHostLink();
    const auto& ambiente = UnicoAmbiente();
    // Where nobody reads any more what `mostra` writes, the lock is freed all the same.
    const nexaro::SigpipeBlock segnale;
    const bool riuscita = nexaro::TryOperations(collegamento, std::string(host), std::string(programma), ambiente,
                                                [&mostra](const nexaro::StepOutcome& passo) {
                                                  mostra({passo.operation, passo.succeeded, passo.detail});
                                                });
    const bool blocco = ProvaBlocco(host, mostra);
    PassoProva nota{"NotaLocale", false, {}};
    try {
      nota.dettaglio = ProvaNota(ambiente.CartellaLocale, ambiente.CodicePostazione);
      nota.riuscito = true;
    } catch (...) {
      nota.dettaglio = CurrentError().Text();
    }
    mostra(nota);
    return nota.riuscito && blocco && riuscita;
  } catch (...) {
    mostra({"Impostazioni", false, CurrentError().Text()});
    return false;
  }
} catch (...) {
  // What `mostra` itself raised: there is nobody else to tell.
  return false;
}

bool ProvaBaseDati(std::string_view comando, const std::function<void(const PassoProva&)>& mostra) noexcept try {
  const Turn turno(Turn::Who::Administrator);
  if (turno.How() != Turn::Outcome::Taken) {
    mostra({"Impostazioni", false, std::string(turno.Reason())});
    return false;
  }
  return GuardaBaseDati(comando, [&mostra](const EsitoDelPasso& passo) {
    mostra({passo.operazione, passo.riuscito, passo.dettaglio});
  });
} catch (...) {
  // What `mostra` itself raised: there is nobody else to tell.
  return false;
}

std::vector<BloccoLista> LeggiBlocchi(std::string_view host) noexcept try {
  const Turn turno(Turn::Who::Administrator);
  if (turno.How() != Turn::Outcome::Taken) {
    return {{{}, false, {}, {}, {}, std::string(turno.Reason())}};
  }
  return GuardaBlocchi(host);
} catch (...) {
  return {};
}

BloccoLista LeggiBlocco(std::string_view host, std::string_view lista) noexcept {
  BloccoLista blocco;
  try {
    const Turn turno(Turn::Who::Administrator);
    if (turno.How() == Turn::Outcome::Taken) {
      return GuardaBlocco(host, lista);
    }
    blocco.lista = lista;
    blocco.errore = turno.Reason();
  } catch (...) {
    blocco.errore = CurrentError().Text();
  }
  return blocco;
}

EsitoBlocco TogliBlocco(std::string_view host, const BloccoLista& visto) noexcept {
  try {
    const Turn turno(Turn::Who::Administrator);
    if (turno.How() == Turn::Outcome::Taken) {
      return TogliBloccoVisto(host, visto);
    }
    return {false, std::string(turno.Reason())};
  } catch (...) {
    return {false, CurrentError().Text()};
  }
}

ElencoInSospeso LeggiInSospeso(std::string_view comando) noexcept try {
  return AlSuoTurno<ElencoInSospeso>([&] { return GuardaInSospeso(comando); });
} catch (...) {
  return {};
}

NotaInSospeso LeggiNotaInSospeso(std::string_view nome, std::string_view comando) noexcept try {
  auto nota = AlSuoTurno<NotaInSospeso>([&] { return GuardaNota(nome, comando); });
  if (nota.nome.empty()) {
    nota.errore = nota.testo;
  }
  return nota;
} catch (...) {
  NotaInSospeso nota;
  nota.errore = "Senza memoria"; // short enough to need none
  return nota;
}

EsitoInSospeso RiallineaInSospeso(const NotaInSospeso& vista, std::string_view comando) noexcept try {
  return AlSuoTurno<EsitoInSospeso>([&] { return RiallineaVista(vista, comando); });
} catch (...) {
  return {};
}

EsitoInSospeso ArchiviaInSospeso(std::string_view nome, std::string_view motivo) noexcept try {
  return AlSuoTurno<EsitoInSospeso>([&] { return Archivia(nome, motivo); });
} catch (...) {
  return {};
}

} // namespace lumoscad
