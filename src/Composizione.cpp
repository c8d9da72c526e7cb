// The composition root: wires the adapters to the component when the library is loaded.

#include "common/ProvaNota.hpp"
#include "entry/Blocchi.hpp"
#include "faccia/Amministrazione.hpp"
#include "platform/RuntimeError.hpp"
#include "platform/Services.hpp"
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

[[maybe_unused]] const bool Installati = [] {
  ActiveServices() = {UnicoDesktop, UnicoHostLink,          UnicoAmbiente,  SystemTime,
                      nullptr,      qt::WhereTheWindowsAre, UnicaEsclusione};
  return true;
}();

} // namespace

ChiavePresentata ChiediChiave(std::string_view host) {
  const auto impostazioni = nexaro::ReadSshSettings();
  const auto chiave = nexaro::AskHostKey(impostazioni, std::string(host));
  ChiavePresentata presentata = {{},          chiave.state == nexaro::KeyState::Note,
                                 chiave.type, chiave.fingerprint,
                                 chiave.line, impostazioni.knownHosts};
  if (!presentata.nota && chiave.state != nexaro::KeyState::Unknown) {
    presentata.errore = nexaro::RefusalReason(chiave, std::string(host), impostazioni.knownHosts);
  }
  return presentata;
}

void RegistraChiave(const std::string& riga, const std::string& file) {
  nexaro::AddLine(riga, file);
}

bool ProvaCollegamento(std::string_view host, std::string_view programma,
                       const std::function<void(const PassoProva&)>& mostra) {
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
}

} // namespace lumoscad
