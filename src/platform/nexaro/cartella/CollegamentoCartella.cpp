#include "platform/nexaro/cartella/CollegamentoCartella.hpp"

#include "platform/nexaro/Chiamata.hpp"
#include "platform/nexaro/ErroriLink.hpp"
#include "platform/nexaro/File.hpp"
#include "platform/nexaro/Testi.hpp"
#include "platform/nexaro/cartella/Processo.hpp"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace lumoscad::nexaro {

namespace {

/// The lock file is shared by the terminals, whose users differ.
constexpr mode_t ModoRemoto = 0666;
constexpr mode_t ModoLocale = 0600;

std::string RadiceAssoluta(const std::string& radice) {
  const std::string operazione = "Apertura della cartella dell'host (NEXARO_RADICE) " + radice;
  const std::unique_ptr<char, decltype(&std::free)> assoluta(::realpath(radice.c_str(), nullptr), &std::free);
  struct stat stato {};
  if (!assoluta || ::stat(assoluta.get(), &stato) != 0) {
    throw ErroreSistema(operazione, errno);
  }
  if (!S_ISDIR(stato.st_mode)) {
    throw ErroreSistema(operazione, ENOTDIR);
  }
  return assoluta.get();
}

/// Raises the error of a program that did not end by itself.
void VerificaFine(const EsitoProcesso& esito, const std::string& soggetto, const std::string& coda,
                  std::chrono::milliseconds attesa) {
  switch (esito.fine) {
  case FineProcesso::NonAvviato:
    throw ErroreSistema(soggetto + " non è stato avviato", esito.stato).ConEsito(EsitoTransazione::NonApplicata);
  case FineProcesso::Scaduto:
    throw ErroreDopoAvvio(soggetto + " non ha risposto entro " + Secondi(attesa) + " ed è stato interrotto", coda);
  case FineProcesso::UscitaEccessiva:
    throw ErroreDopoAvvio(soggetto + " ha dato una risposta di oltre 16 MiB ed è stato interrotto", coda);
  case FineProcesso::Segnale:
    throw ErroreDopoAvvio(soggetto + " è stato terminato dal segnale " + std::to_string(esito.stato), coda);
  case FineProcesso::Uscito:
    VerificaStato(esito.stato, soggetto, coda);
  }
}

} // namespace

CollegamentoCartella::CollegamentoCartella(const std::string& radice, std::chrono::milliseconds attesa)
    : radice_(RadiceAssoluta(radice)), attesa_(attesa) {}

std::string CollegamentoCartella::PercorsoRemoto(std::string_view remoto) const {
  VerificaPercorso(remoto);
  return radice_ + std::string(remoto);
}

void CollegamentoCartella::EseguiProgramma(std::string_view host, std::string_view programma,
                                           const std::vector<std::string>& parametri, XMLParser& risposta) {
  const auto soggetto = SoggettoProgramma(programma, host);
  VerificaChiamata(programma, parametri, soggetto);
  const Processo processo{radice_ + "/programmi/" + std::string(programma),
                          parametri,
                          {"NEXARO_RADICE=" + radice_},
                          radice_,
                          attesa_,
                          xml::DimensioneMassima,
                          MassimoErroriMostrati,
                          RispostaCompleta,
                          &risposta.Avviato};
  const auto esito = Esegui(processo);
  const auto coda = CodaMessaggio(esito.errori);
  VerificaFine(esito, soggetto, coda, attesa_);
  risposta.Consegna(LeggiRisposta(esito.uscita, soggetto, coda));
}

void CollegamentoCartella::RiceviFile(std::string_view host, std::string_view remoto, std::string_view locale,
                                      std::string& testo) {
  Ricevi(host, remoto, locale, {MassimoRicevuto, false}, testo);
}

void CollegamentoCartella::RiceviInizio(std::string_view host, std::string_view remoto, std::string_view locale,
                                        std::size_t massimo, std::string& testo) {
  Ricevi(host, remoto, locale, {massimo, true}, testo);
}

void CollegamentoCartella::Ricevi(std::string_view host, std::string_view remoto, std::string_view locale,
                                  const Misura& misura, std::string& testo) const {
  const auto operazione = "Ricezione del file " + Cita(remoto) + SullHost(host) + " in " + Cita(locale);
  testo.clear();
  CopiaFile(PercorsoRemoto(remoto), std::string(locale), ModoLocale, operazione, misura, attesa_);
}

void CollegamentoCartella::InviaFile(std::string_view host, std::string_view locale, std::string_view remoto) {
  const auto operazione = "Invio del file " + Cita(locale) + " come " + Cita(remoto) + SullHost(host);
  CopiaFile(std::string(locale), PercorsoRemoto(remoto), ModoRemoto, operazione);
}

void CollegamentoCartella::RinominaFile(std::string_view host, std::string_view remoto, std::string_view nuovo,
                                        std::string& testo) {
  testo.clear();
  if (std::rename(PercorsoRemoto(remoto).c_str(), PercorsoRemoto(nuovo).c_str()) != 0) {
    throw ErroreSistema("Cambio di nome del file " + Cita(remoto) + " in " + Cita(nuovo) + SullHost(host), errno);
  }
}

void CollegamentoCartella::CancellaFile(std::string_view host, std::string_view remoto) {
  if (::unlink(PercorsoRemoto(remoto).c_str()) != 0 && errno != ENOENT) {
    throw ErroreSistema("Cancellazione del file " + Cita(remoto) + SullHost(host), errno);
  }
}

std::string CollegamentoCartella::CercaProgramma(std::string_view host, std::string_view programma) {
  const auto soggetto = SoggettoProgramma(programma, host);
  VerificaChiamata(programma, {}, soggetto);
  auto percorso = radice_ + "/programmi/" + std::string(programma);
  struct stat stato {};
  if (::stat(percorso.c_str(), &stato) != 0 || ::access(percorso.c_str(), X_OK) != 0) {
    throw ErroreSistema(soggetto + " non può essere avviato", errno);
  }
  if (!S_ISREG(stato.st_mode)) {
    throw ErroreSistema(soggetto + " non può essere avviato", EINVAL);
  }
  return percorso;
}

} // namespace lumoscad::nexaro
