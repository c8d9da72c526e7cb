#include "platform/nexaro/ssh/ImpostazioniSsh.hpp"

#include "platform/nexaro/ErroriLink.hpp"
#include "platform/nexaro/Impostazioni.hpp"

#include <charconv>

namespace lumoscad::nexaro {

namespace {

unsigned LeggiPorta() {
  const auto testo = Impostazione("NEXARO_SSH_PORTA");
  if (testo.empty()) {
    return 22;
  }
  unsigned porta = 0;
  const auto* fine = testo.data() + testo.size();
  const auto [arrivo, errore] = std::from_chars(testo.data(), fine, porta);
  if (errore != std::errc() || arrivo != fine || porta < 1 || porta > 65535) {
    throw ErroreLink("NEXARO_SSH_PORTA deve essere un numero da 1 a 65535: vale «" + testo + "».");
  }
  return porta;
}

/// A relative path would depend on where the calling program happens to stand.
std::string LeggiPercorsoAssoluto(const char* nome) {
  auto percorso = Impostazione(nome);
  if (!percorso.empty() && !percorso.starts_with('/')) {
    throw ErroreLink(std::string(nome) + " deve essere un percorso assoluto: vale «" + percorso + "».");
  }
  while (percorso.size() > 1 && percorso.ends_with('/')) {
    percorso.pop_back();
  }
  return percorso;
}

} // namespace

ImpostazioniSsh LeggiImpostazioniSsh() {
  const auto corrente = UtenteCorrente();
  auto casa = Impostazione("HOME");
  if (!casa.starts_with('/')) {
    casa = corrente.casa;
  }
  ImpostazioniSsh impostazioni;
  impostazioni.porta = LeggiPorta();
  impostazioni.utente = Impostazione("NEXARO_SSH_UTENTE");
  if (impostazioni.utente.empty()) {
    impostazioni.utente = corrente.nome;
  }
  if (impostazioni.utente.empty()) {
    throw ErroreLink("Manca l'impostazione NEXARO_SSH_UTENTE, l'utente sull'host.");
  }
  impostazioni.chiave = LeggiPercorsoAssoluto("NEXARO_SSH_CHIAVE");
  impostazioni.cartella = casa.empty() ? "" : casa + "/.ssh";
  impostazioni.noti = LeggiPercorsoAssoluto("NEXARO_SSH_NOTI");
  if (impostazioni.noti.empty()) {
    if (casa.empty()) {
      throw ErroreLink("Manca l'impostazione NEXARO_SSH_NOTI, il file degli host noti: l'utente non ha una cartella.");
    }
    impostazioni.noti = impostazioni.cartella + "/known_hosts";
  }
  if (impostazioni.noti.find('%') != std::string::npos) {
    throw ErroreLink(
        "Il percorso del file degli host noti (NEXARO_SSH_NOTI) non può contenere il carattere «%»: vale «" +
        impostazioni.noti + "».");
  }
  impostazioni.programmi = LeggiPercorsoAssoluto("NEXARO_PROGRAMMI");
  impostazioni.codifica = Codifica(Impostazione("NEXARO_CODIFICA"));
  impostazioni.attesa = LeggiAttesa();
  return impostazioni;
}

} // namespace lumoscad::nexaro
