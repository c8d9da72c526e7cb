#include "platform/nexaro/CollegamentoCartella.hpp"

#include "platform/nexaro/ErroriLink.hpp"
#include "platform/nexaro/File.hpp"
#include "platform/nexaro/Processo.hpp"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace lumoscad::nexaro {

namespace {

constexpr std::size_t MassimoErroriMostrati = 2000;
/// The lock file is shared by the terminals, whose users differ.
constexpr mode_t ModoRemoto = 0666;
constexpr mode_t ModoLocale = 0600;

std::string SullHost(std::string_view host) {
  return host.empty() ? " sull'host" : " sull'host " + std::string(host);
}

std::string Cita(std::string_view testo) {
  return "«" + std::string(testo) + "»";
}

bool HaRisalite(std::string_view percorso) {
  while (!percorso.empty()) {
    const auto barra = percorso.find('/');
    if (percorso.substr(0, barra) == "..") {
      return true;
    }
    percorso = barra == std::string_view::npos ? std::string_view() : percorso.substr(barra + 1);
  }
  return false;
}

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

/// Whole characters only: a cut in the middle of one would make the message unreadable.
std::string SenzaBianchiFinali(std::string testo) {
  if (testo.size() >= MassimoErroriMostrati) {
    while (!testo.empty() && (static_cast<unsigned char>(testo.back()) & 0xC0U) == 0x80U) {
      testo.pop_back();
    }
    if (!testo.empty() && static_cast<unsigned char>(testo.back()) >= 0xC0U) {
      testo.pop_back();
    }
  }
  testo.erase(testo.find_last_not_of(" \t\r\n") + 1);
  return testo;
}

std::string Secondi(std::chrono::milliseconds attesa) {
  const auto interi = attesa.count() / 1000;
  const auto resto = attesa.count() % 1000;
  auto testo = std::to_string(interi);
  if (resto != 0) {
    testo += "," + std::to_string(1000 + resto).substr(1);
  }
  return testo + (attesa.count() == 1000 ? " secondo" : " secondi");
}

/// Raises the error of a program that gave no usable output.
void Verifica(const EsitoProcesso& esito, const std::string& soggetto, std::chrono::milliseconds attesa) {
  const auto dettaglio = SenzaBianchiFinali(esito.errori);
  const auto coda = dettaglio.empty() ? std::string(".") : ": " + dettaglio;
  switch (esito.fine) {
  case FineProcesso::NonAvviato:
    throw ErroreSistema(soggetto + " non è stato avviato", esito.stato);
  case FineProcesso::Scaduto:
    throw ErroreLink(soggetto + " non ha risposto entro " + Secondi(attesa) + " ed è stato interrotto" + coda);
  case FineProcesso::UscitaEccessiva:
    throw ErroreLink(soggetto + " ha dato una risposta di oltre 16 MiB ed è stato interrotto" + coda);
  case FineProcesso::Segnale:
    throw ErroreLink(soggetto + " è stato terminato dal segnale " + std::to_string(esito.stato) + coda);
  case FineProcesso::Uscito:
    if (esito.stato != 0) {
      throw ErroreLink(soggetto + " è terminato con lo stato " + std::to_string(esito.stato) + coda);
    }
  }
  if (esito.uscita.empty()) {
    throw ErroreLink(soggetto + " non ha dato alcuna risposta" + coda);
  }
}

xml::Nodo LeggiRisposta(const std::string& uscita, const std::string& soggetto) {
  try {
    return xml::Leggi(uscita);
  } catch (const ErroreRuntime& errore) {
    throw ErroreRuntime(errore.Numero(), soggetto + " ha dato una risposta non valida. " + errore.Testo());
  }
}

} // namespace

CollegamentoCartella::CollegamentoCartella(const std::string& radice, std::chrono::milliseconds attesa)
    : radice_(RadiceAssoluta(radice)), attesa_(attesa) {}

std::string CollegamentoCartella::PercorsoRemoto(std::string_view remoto) const {
  if (!remoto.starts_with('/') || HaRisalite(remoto) || remoto.find('\0') != std::string_view::npos) {
    throw ErroreRuntime(errori::AccessoAlFile, "Percorso dell'host non ammesso: " + Cita(remoto) + ".");
  }
  return radice_ + std::string(remoto);
}

void CollegamentoCartella::EseguiProgramma(std::string_view host, std::string_view programma,
                                           const std::vector<std::string>& parametri, XMLParser& risposta) {
  const auto soggetto = "Il programma " + std::string(programma) + SullHost(host);
  if (programma.empty() || programma == "." || programma == ".." ||
      programma.find_first_of(std::string_view("/\0", 2)) != std::string_view::npos) {
    throw ErroreRuntime(errori::AccessoAlFile, "Nome di programma non ammesso: " + Cita(programma) + ".");
  }
  for (const auto& parametro : parametri) {
    if (parametro.find('\0') != std::string::npos) {
      throw ErroreLink(soggetto + " non può ricevere un parametro con un carattere nullo.");
    }
  }
  const Processo processo{radice_ + "/programmi/" + std::string(programma),
                          parametri,
                          {"NEXARO_RADICE=" + radice_},
                          radice_,
                          attesa_,
                          xml::DimensioneMassima,
                          MassimoErroriMostrati};
  const auto esito = Esegui(processo);
  Verifica(esito, soggetto, attesa_);
  risposta.Consegna(LeggiRisposta(esito.uscita, soggetto));
}

void CollegamentoCartella::RiceviFile(std::string_view host, std::string_view remoto, std::string_view locale,
                                      std::string& testo) {
  const auto operazione = "Ricezione del file " + Cita(remoto) + SullHost(host) + " in " + Cita(locale);
  testo.clear();
  CopiaFile(PercorsoRemoto(remoto), std::string(locale), ModoLocale, operazione);
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

} // namespace lumoscad::nexaro
