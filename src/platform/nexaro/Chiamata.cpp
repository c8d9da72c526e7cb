#include "platform/nexaro/Chiamata.hpp"

#include "platform/Controlli.hpp"
#include "platform/base/Utf8.hpp"
#include "platform/nexaro/Testi.hpp"

namespace lumoscad::nexaro {

namespace {

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

/// What a shell answers when it finds no program, and when it may not run it.
constexpr int StatoNonTrovato = 127;
constexpr int StatoNonEseguibile = 126;

} // namespace

std::string MotivoTroppoLento(std::chrono::milliseconds attesa) {
  return "il trasferimento non è finito entro " + Secondi(attesa);
}

void VerificaPercorso(std::string_view remoto) {
  if (!remoto.starts_with('/') || HaRisalite(remoto) || remoto.find('\0') != std::string_view::npos) {
    throw ErroreRuntime(errori::AccessoAlFile, "Percorso dell'host non ammesso: " + Cita(remoto) + ".");
  }
}

std::string SoggettoProgramma(std::string_view programma, std::string_view host) {
  return "Il programma " + std::string(programma) + SullHost(host);
}

void VerificaChiamata(std::string_view programma, const std::vector<std::string>& parametri,
                      const std::string& soggetto) {
  if (programma.empty() || programma == "." || programma == ".." ||
      programma.find_first_of(std::string_view("/\0", 2)) != std::string_view::npos) {
    throw ErroreRuntime(errori::AccessoAlFile, "Nome di programma non ammesso: " + Cita(programma) + ".");
  }
  for (const auto& parametro : parametri) {
    if (parametro.find('\0') != std::string::npos) {
      throw ErroreLink(soggetto + " non può ricevere un parametro con un carattere nullo.");
    }
  }
}

std::string CodaMessaggio(std::string errori) {
  // Whole characters only: a cut in the middle of one would make the message unreadable.
  if (errori.size() >= MassimoErroriMostrati) {
    errori.resize(MassimoErroriMostrati);
    while (!errori.empty() && !base::BeginsCharacter(errori.back())) {
      errori.pop_back();
    }
    if (!errori.empty() && static_cast<unsigned char>(errori.back()) >= 0xC0U) {
      errori.pop_back();
    }
  }
  // A person's terminal must not obey what the program has written.
  errori = SenzaControlli(errori, "\n");
  errori.erase(errori.find_last_not_of(" \n") + 1);
  return errori.empty() ? "." : ": " + errori;
}

ErroreRuntime ErroreDopoAvvio(const std::string& fatto, const std::string& coda, int numero) {
  const auto testo = fatto + coda;
  const bool finito = testo.find_last_of(".!?") == testo.size() - 1;
  return ErroreRuntime(numero, testo + (finito ? " " : ". ") + std::string(EsitoIgnoto))
      .ConEsito(EsitoTransazione::Sconosciuta);
}

void VerificaStato(int stato, const std::string& soggetto, const std::string& coda, const std::string& rimedio) {
  if (stato == 0) {
    return;
  }
  const auto fine = soggetto + " è terminato con lo stato " + std::to_string(stato);
  if (stato == StatoNonTrovato) {
    throw ErroreRuntime(errori::FileNonTrovato, fine + ", cioè non è stato trovato" + rimedio + coda)
        .ConEsito(EsitoTransazione::NonApplicata);
  }
  if (stato == StatoNonEseguibile) {
    throw ErroreRuntime(ErrorePermesso, fine + ", cioè non può essere eseguito" + coda)
        .ConEsito(EsitoTransazione::NonApplicata);
  }
  throw ErroreDopoAvvio(fine, coda);
}

bool RispostaCompleta(std::string_view uscita) {
  try {
    static_cast<void>(xml::Leggi(uscita));
    return true;
  } catch (const ErroreRuntime&) {
    return false;
  }
}

xml::Nodo LeggiRisposta(const std::string& uscita, const std::string& soggetto, const std::string& coda) {
  if (uscita.empty()) {
    throw ErroreDopoAvvio(soggetto + " non ha dato alcuna risposta", coda);
  }
  try {
    return xml::Leggi(uscita);
  } catch (const ErroreRuntime& errore) {
    throw ErroreDopoAvvio(soggetto + " ha dato una risposta non valida. " + errore.Testo(), "", errore.Numero());
  }
}

} // namespace lumoscad::nexaro
