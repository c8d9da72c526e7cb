#include "platform/nexaro/ssh/ConnessioneSsh.hpp"

#include "platform/nexaro/ErroriLink.hpp"
#include "platform/nexaro/ssh/Autenticazione.hpp"
#include "platform/nexaro/ssh/ChiaveHost.hpp"

namespace lumoscad::nexaro {

namespace {

/// A service that answered this recently is not asked whether it is still there.
constexpr std::chrono::milliseconds Fresca{100};

} // namespace

ConnessioneSsh::ConnessioneSsh(const ImpostazioniSsh& impostazioni, const std::string& host)
    : sessione_(impostazioni, host) {
  const auto chiave = EsaminaChiave(sessione_, impostazioni.porta, impostazioni.noti);
  const auto motivo = MotivoRifiuto(chiave, host, impostazioni.noti);
  if (!motivo.empty()) {
    throw ErroreLink(motivo);
  }
  Autentica(sessione_, impostazioni);
  sessione_.Attiva();
}

Sftp& ConnessioneSsh::File() {
  sessione_.ServeSubito();
  if (!sftp_) {
    sftp_ = std::make_unique<Sftp>(sessione_);
  } else if (!sessione_.Viva()) {
    throw ConnessionePersa(sessione_.MotivoPerdita());
  } else if (Orologio::now() - sftp_->UltimaRisposta() > Fresca) {
    sftp_->Saluta();
  }
  return *sftp_;
}

} // namespace lumoscad::nexaro
