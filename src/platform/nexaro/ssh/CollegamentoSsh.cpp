#include "platform/nexaro/ssh/CollegamentoSsh.hpp"

#include "platform/nexaro/Chiamata.hpp"
#include "platform/nexaro/ErroriLink.hpp"
#include "platform/nexaro/File.hpp"
#include "platform/nexaro/SenzaSigpipe.hpp"
#include "platform/nexaro/Testi.hpp"
#include "platform/nexaro/ssh/Citazione.hpp"
#include "platform/nexaro/ssh/ConnessioneSsh.hpp"
#include "platform/nexaro/ssh/ProgrammaRemoto.hpp"
#include "platform/nexaro/ssh/Trasferimento.hpp"

#include <algorithm>
#include <array>

namespace lumoscad::nexaro {

namespace {

/// The lock file is shared by the terminals, whose users differ.
constexpr std::uint32_t ModoRemoto = 0666;
constexpr mode_t ModoLocale = 0600;

/// A lock that the failed command has set stays on the host.
constexpr const char* Ripetizione =
    "Prima di ripetere il comando può essere necessario togliere il blocco della lista sull'host.";

constexpr const char* CosaProgrammi = "La cartella dei programmi (NEXARO_PROGRAMMI)";
constexpr const char* CosaNome = "Il nome del programma";

ErroreRuntime ErroreDaSftp(const std::string& operazione, const ErroreSftp& errore, const std::string& utente) {
  const int numero = errore.Codice() == stato_sftp::FileInesistente  ? errori::FileNonTrovato
                     : errore.Codice() == stato_sftp::PermessoNegato ? ErrorePermesso
                                                                     : ErroreCollegamento;
  const std::string rimedio =
      errore.Codice() == stato_sftp::PermessoNegato
          ? " Chiedere all'amministratore dell'host i permessi per l'utente " + Cita(utente) + "."
          : "";
  return {numero, operazione + ": " + errore.Motivo() + "." + rimedio};
}

/// The whole of a local file.
std::string LeggiTutto(const base::Descriptor& file, const std::string& operazione) {
  std::string contenuto;
  std::array<char, 65536> tampone;
  for (std::size_t letti = 0; (letti = LeggiBlocco(file, tampone, operazione)) > 0;) {
    contenuto.append(tampone.data(), letti);
  }
  return contenuto;
}

/// Hands a text out piece by piece.
Sorgente SorgenteTesto(std::string testo) {
  return [testo = std::move(testo), posto = std::size_t{0}](std::span<char> tampone) mutable {
    const auto copiati = testo.copy(tampone.data(), tampone.size(), posto);
    posto += copiati;
    return copiati;
  };
}

/// Whether the document says itself how it is encoded: by a mark, by the UTF-16 in which its declaration is written, or
/// by what that declares.
bool DichiaraCodifica(std::string_view documento) {
  for (const auto segno : {std::string_view("\xEF\xBB\xBF"), std::string_view("\xFF\xFE"), std::string_view("\xFE\xFF"),
                           std::string_view("<\0?\0", 4), std::string_view("\0<\0?", 4)}) {
    if (documento.starts_with(segno)) {
      return true;
    }
  }
  return documento.starts_with("<?xml") &&
         documento.substr(0, documento.find("?>")).find("encoding") != std::string_view::npos;
}

/// How a program ended that did not end by itself; empty where it did.
std::string FineAltrui(const EsitoRemoto& esito) {
  if (!esito.interruzione.empty()) {
    return esito.interruzione;
  }
  return esito.stato ? std::string() : " è stato terminato dal segnale " + esito.segnale;
}

/// Raises the error of a program that was given up or killed, or that failed.
void VerificaFine(const EsitoRemoto& esito, const std::string& soggetto, const std::string& coda) {
  if (const auto fine = FineAltrui(esito); !fine.empty()) {
    throw ErroreDopoAvvio(soggetto + fine, coda);
  }
  VerificaStato(*esito.stato, soggetto, coda, " (verificare NEXARO_PROGRAMMI)");
}

} // namespace

CollegamentoSsh::CollegamentoSsh(ImpostazioniSsh impostazioni) : impostazioni_(std::move(impostazioni)) {}

CollegamentoSsh::~CollegamentoSsh() {
  const SenzaSigpipe senzaSigpipe;
  connessioni_.clear();
}

ConnessioneSsh& CollegamentoSsh::Connetti(const std::string& host) {
  auto& voce = connessioni_[host];
  voce.reset();
  voce = std::make_unique<ConnessioneSsh>(impostazioni_, host);
  return *voce;
}

Sftp& CollegamentoSsh::FilePronti(const std::string& host) {
  if (const auto voce = connessioni_.find(host); voce != connessioni_.end() && voce->second) {
    try {
      return voce->second->File();
    } catch (const ConnessionePersa&) {
      voce->second.reset();
    }
  }
  return Connetti(host).File();
}

void CollegamentoSsh::ConFile(const std::string& host, const std::string& operazione, const Azione& azione,
                              const Ripiego& ripiego) {
  Sftp* file = nullptr;
  try {
    file = &FilePronti(host);
  } catch (const ConnessionePersa& persa) {
    connessioni_.erase(host);
    throw ErroreLink(operazione + ": " + persa.Motivo() + ". Verificare la rete. " + Ripetizione);
  } catch (const RichiestaRifiutata&) {
    throw ErroreLink(operazione +
                     ": l'host non offre il servizio SFTP. Chiedere all'amministratore dell'host di attivarlo.");
  }
  std::string motivo;
  try {
    azione(*file);
    return;
  } catch (const ErroreSftp& errore) {
    throw ErroreDaSftp(operazione, errore, impostazioni_.utente);
  } catch (const ConnessionePersa& persa) {
    motivo = persa.Motivo();
  }
  connessioni_.erase(host);
  ripiego(motivo);
}

std::string CollegamentoSsh::PercorsoHost(std::string_view remoto) const {
  VerificaPercorso(remoto);
  return impostazioni_.codifica.VersoHost(remoto, "Il percorso dell'host " + Cita(remoto));
}

void CollegamentoSsh::InviaFile(std::string_view host, std::string_view locale, std::string_view remoto) {
  const SenzaSigpipe senzaSigpipe;
  const auto operazione = "Invio del file " + Cita(locale) + " come " + Cita(remoto) + SullHost(host);
  const auto percorso = PercorsoHost(remoto);
  const auto file = ApriOrdinario(std::string(locale), operazione);
  Sorgente sorgente = [&](std::span<char> tampone) { return LeggiBlocco(file, tampone, operazione); };
  if (!impostazioni_.codifica.IsUtf8()) {
    sorgente = SorgenteTesto(impostazioni_.codifica.VersoHost(LeggiTutto(file, operazione), "Il file " + Cita(locale)));
  }
  const std::string indirizzo(host);
  auto stato = FileRemoto::Assente;
  ConFile(
      indirizzo, operazione, [&](Sftp& sftp) { Carica(sftp, percorso, ModoRemoto, sorgente, stato); },
      [&](const std::string& motivo) {
        bool rimosso = stato == FileRemoto::Assente;
        try {
          // What may be another's file is left alone.
          if (stato == FileRemoto::Creato) {
            FilePronti(indirizzo).Cancella(percorso);
            rimosso = true;
          }
        } catch (const std::exception&) {
          connessioni_.erase(indirizzo);
        }
        throw ErroreLink(operazione + ": " + motivo + "; il file non è stato inviato" +
                         (rimosso ? "" : " e sull'host può esserne rimasta una parte") + ". Verificare la rete. " +
                         Ripetizione);
      });
}

void CollegamentoSsh::RiceviFile(std::string_view host, std::string_view remoto, std::string_view locale,
                                 std::string& testo) {
  Ricevi(host, remoto, locale, {MassimoRicevuto, false}, testo);
}

void CollegamentoSsh::RiceviInizio(std::string_view host, std::string_view remoto, std::string_view locale,
                                   std::size_t massimo, std::string& testo) {
  Ricevi(host, remoto, locale, {massimo, true}, testo);
}

void CollegamentoSsh::Ricevi(std::string_view host, std::string_view remoto, std::string_view locale,
                             const Misura& misura, std::string& testo) {
  const SenzaSigpipe senzaSigpipe;
  const auto operazione = "Ricezione del file " + Cita(remoto) + SullHost(host) + " in " + Cita(locale);
  testo.clear();
  const auto percorso = PercorsoHost(remoto);
  const std::string destinazione(locale);
  ConFile(
      std::string(host), operazione,
      [&](Sftp& sftp) {
        FileProvvisorio copia(destinazione, ModoLocale, operazione);
        Scarica(sftp, percorso, misura, [&](std::string_view dati) {
          const auto& codifica = impostazioni_.codifica;
          copia.Scrivi(codifica.IsUtf8() ? std::string(dati) : codifica.DallHostTollerante(dati), operazione);
        });
        copia.Pubblica(destinazione, operazione);
      },
      [&](const std::string& motivo) {
        throw ErroreLink(operazione + ": " + motivo +
                         "; il file non è stato ricevuto. Verificare la rete e ripetere il comando.");
      });
}

void CollegamentoSsh::RinominaFile(std::string_view host, std::string_view remoto, std::string_view nuovo,
                                   std::string& testo) {
  const SenzaSigpipe senzaSigpipe;
  const auto operazione = "Cambio di nome del file " + Cita(remoto) + " in " + Cita(nuovo) + SullHost(host);
  testo.clear();
  const auto da = PercorsoHost(remoto);
  const auto a = PercorsoHost(nuovo);
  const std::string indirizzo(host);
  ConFile(
      indirizzo, operazione,
      [&](Sftp& sftp) {
        try {
          sftp.Rinomina(da, a);
        } catch (const ErroreSftp& errore) {
          if (errore.Codice() == stato_sftp::Fallimento && sftp.Guarda(da, false) && sftp.Guarda(a, false)) {
            throw ErroreSftp(errore.Codice(), {}, "il nuovo nome è già preso e l'host non lo sostituisce");
          }
          throw;
        }
      },
      [&](const std::string& motivo) {
        bool vecchioPresente = false;
        bool nuovoPresente = false;
        try {
          auto& sftp = FilePronti(indirizzo);
          vecchioPresente = sftp.Guarda(da, false).has_value();
          nuovoPresente = sftp.Guarda(a, false).has_value();
        } catch (const std::exception&) {
          connessioni_.erase(indirizzo);
          throw ErroreLink(operazione + ": " + motivo + ". " + std::string(EsitoIgnoto));
        }
        if (vecchioPresente) {
          throw ErroreLink(operazione + ": " + motivo + "; il file ha ancora il vecchio nome. " + Ripetizione);
        }
        if (!nuovoPresente) {
          throw ErroreLink(operazione + ": " + motivo +
                           "; sull'host non c'è più il file, né con il vecchio nome né con "
                           "il nuovo. " +
                           std::string(EsitoIgnoto));
        }
      });
}

void CollegamentoSsh::CancellaFile(std::string_view host, std::string_view remoto) {
  const SenzaSigpipe senzaSigpipe;
  const auto operazione = "Cancellazione del file " + Cita(remoto) + SullHost(host);
  const auto percorso = PercorsoHost(remoto);
  const std::string indirizzo(host);
  ConFile(
      indirizzo, operazione,
      [&](Sftp& sftp) {
        try {
          sftp.Cancella(percorso);
        } catch (const ErroreSftp& errore) {
          if (errore.Codice() != stato_sftp::FileInesistente) {
            throw;
          }
        }
      },
      [&](const std::string& motivo) {
        bool presente = true;
        try {
          presente = FilePronti(indirizzo).Guarda(percorso, false).has_value();
        } catch (const std::exception&) {
          connessioni_.erase(indirizzo);
          throw ErroreLink(operazione + ": " + motivo + ". Non si sa se il file sia ancora sull'host.");
        }
        if (presente) {
          throw ErroreLink(operazione + ": " + motivo + "; il file è ancora sull'host. " + Ripetizione);
        }
      });
}

void CollegamentoSsh::EseguiProgramma(std::string_view host, std::string_view programma,
                                      const std::vector<std::string>& parametri, XMLParser& risposta) {
  const SenzaSigpipe senzaSigpipe;
  const auto soggetto = SoggettoProgramma(programma, host);
  VerificaChiamata(programma, parametri, soggetto);
  const auto& codifica = impostazioni_.codifica;
  std::vector<std::string> convertiti;
  convertiti.reserve(parametri.size());
  for (const auto& parametro : parametri) {
    convertiti.push_back(codifica.VersoHost(parametro, "Il parametro " + std::to_string(convertiti.size() + 1) +
                                                           " di " + std::string(programma)));
  }
  const auto riga = RigaDiComando(codifica.VersoHost(impostazioni_.programmi, CosaProgrammi),
                                  codifica.VersoHost(programma, CosaNome), convertiti);
  const auto completa = [&](const std::string& uscita) {
    return RispostaCompleta(DichiaraCodifica(uscita) ? uscita : codifica.DallHostTollerante(uscita));
  };
  const auto esito = Avvia(std::string(host), riga, soggetto, completa, &risposta.Avviato);
  const auto coda = CodaMessaggio(codifica.DallHostTollerante(esito.errori));
  VerificaFine(esito, soggetto, coda);
  risposta.Consegna(LeggiRisposta(Decodifica(esito.uscita, soggetto), soggetto, coda));
}

EsitoRemoto CollegamentoSsh::Avvia(const std::string& host, const std::string& riga, const std::string& soggetto,
                                   const Completezza& completa, bool* avviato) {
  std::unique_ptr<Canale> canale;
  try {
    canale = CanalePronto(host);
  } catch (const ConnessionePersa& persa) {
    connessioni_.erase(host);
    throw ErroreLink(soggetto + " non è stato avviato: " + persa.Motivo() + ". Verificare la rete. " + Ripetizione);
  } catch (const RichiestaRifiutata&) {
    throw ErroreLink(soggetto + " non è stato avviato: l'host non ammette altri canali. Chiedere all'amministratore "
                                "dell'host di ammettere l'esecuzione di programmi.");
  }
  try {
    if (avviato != nullptr) {
      *avviato = true;
    }
    auto esito = EseguiRemoto(*canale, riga, completa);
    if (!esito.interruzione.empty()) {
      canale.reset();
      connessioni_.erase(host);
    }
    return esito;
  } catch (const RichiestaRifiutata&) {
    throw ErroreLink(soggetto +
                     " non è stato avviato: l'host non ammette l'esecuzione di programmi. Chiedere "
                     "all'amministratore dell'host di ammetterla per l'utente " +
                     Cita(impostazioni_.utente) + ".")
        .ConEsito(EsitoTransazione::NonApplicata);
  }
}

std::string CollegamentoSsh::CercaProgramma(std::string_view host, std::string_view programma) {
  const SenzaSigpipe senzaSigpipe;
  const auto soggetto = SoggettoProgramma(programma, host);
  VerificaChiamata(programma, {}, soggetto);
  const auto& codifica = impostazioni_.codifica;
  const auto percorso = RigaDiComando(codifica.VersoHost(impostazioni_.programmi, CosaProgrammi),
                                      codifica.VersoHost(programma, CosaNome), {});
  // Words of the shell itself: nothing is started.
  const auto riga = impostazioni_.programmi.empty()
                        ? "command -v " + percorso
                        : "test -f " + percorso + " && test -x " + percorso + " && printf '%s\\n' " + percorso;
  const auto ricerca = "Il controllo del programma " + std::string(programma) + SullHost(host);
  const auto esito = Avvia(std::string(host), riga, ricerca, [](const std::string&) { return true; });
  // A look that did not come to its end says nothing of the program.
  if (const auto fine = FineAltrui(esito); !fine.empty()) {
    throw ErroreLink(ricerca + fine + ".");
  }
  if (esito.stato != 0) {
    throw ErroreRuntime(errori::FileNonTrovato,
                        soggetto + (impostazioni_.programmi.empty()
                                        ? std::string(" non è fra quelli che la shell dell'utente trova. Indicare la "
                                                      "sua cartella con NEXARO_PROGRAMMI.")
                                        : " non è nella cartella " + Cita(impostazioni_.programmi) +
                                              ", o l'utente non può eseguirlo."));
  }
  return TestoAltrui(codifica.DallHostTollerante(esito.uscita));
}

/// To open a channel asks the host for an answer: it shows that the connection lives before anything is started.
std::unique_ptr<Canale> CollegamentoSsh::CanalePronto(const std::string& host) {
  if (const auto voce = connessioni_.find(host); voce != connessioni_.end() && voce->second) {
    try {
      auto& sessione = voce->second->Sua();
      sessione.ServeSubito();
      return PreparaProgramma(sessione, sessione.TermineSaluto());
    } catch (const ConnessionePersa&) {
      voce->second.reset();
    }
  }
  auto& sessione = Connetti(host).Sua();
  return PreparaProgramma(sessione, sessione.NuovoTermine());
}

/// A document that does not say how it is encoded is in the encoding of the host's texts.
std::string CollegamentoSsh::Decodifica(std::string uscita, const std::string& soggetto) const {
  const auto& codifica = impostazioni_.codifica;
  if (codifica.IsUtf8() || DichiaraCodifica(uscita)) {
    return uscita;
  }
  auto testo = codifica.DallHost(uscita);
  if (!testo) {
    throw ErroreDopoAvvio(soggetto +
                              " ha dato una risposta non valida. Contiene byte che non sono caratteri della codifica " +
                              codifica.Nome() + " (NEXARO_CODIFICA)",
                          ".");
  }
  return std::move(*testo);
}

} // namespace lumoscad::nexaro
