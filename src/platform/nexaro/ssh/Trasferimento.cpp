#include "platform/nexaro/ssh/Trasferimento.hpp"

#include "platform/nexaro/Chiamata.hpp"

#include <algorithm>
#include <deque>
#include <vector>

namespace lumoscad::nexaro {

namespace {

/// Every server takes blocks of this size (draft-ietf-secsh-filexfer-02, section 3).
constexpr std::uint32_t Blocco = 32768;
/// As many bytes as an OpenSSH server lets a channel have under way (2 MiB).
constexpr std::size_t MassimoInViaggio = 64;

/// Only a file of our own making is written: neither another user's nor whatever a symbolic link points to.
std::string Crea(Sftp& sftp, std::string_view percorso, std::uint32_t modo, FileRemoto& file) {
  file = FileRemoto::Forse;
  try {
    auto handle =
        sftp.Apri(percorso, apertura_sftp::Scrittura | apertura_sftp::Creazione | apertura_sftp::SoloNuovo, modo);
    file = FileRemoto::Creato;
    return handle;
  } catch (const ErroreSftp&) {
    file = FileRemoto::Assente;
    throw;
  }
}

std::string ApriNuovo(Sftp& sftp, std::string_view percorso, std::uint32_t modo, FileRemoto& file) {
  try {
    return Crea(sftp, percorso, modo, file);
  } catch (const ErroreSftp&) {
    const auto presente = sftp.Guarda(percorso, false);
    if (!presente) {
      throw;
    }
    if (presente->IsCartella()) {
      throw ErroreSftp(stato_sftp::Fallimento, {}, "è una cartella");
    }
  }
  sftp.Cancella(percorso);
  return Crea(sftp, percorso, modo, file);
}

/// The protocol has no code for a full disk: an unexplained failure to write is looked into.
ErroreSftp ErroreScrittura(Sftp& sftp, std::string_view percorso, const ErroreSftp& errore) {
  if (errore.Codice() != stato_sftp::Fallimento) {
    return errore;
  }
  std::optional<std::uint64_t> libero;
  try {
    libero = sftp.SpazioLibero(ParentDirectory(percorso));
  } catch (const ErroreSftp&) {
    libero.reset();
  }
  if (libero && *libero < Blocco) {
    return {errore.Codice(), {}, "spazio esaurito sull'host. Avvertire l'amministratore dell'host"};
  }
  return {errore.Codice(),
          {},
          "l'host non ha potuto scrivere il file: può essere esaurito lo spazio, o la quota dell'utente. Avvertire "
          "l'amministratore dell'host"};
}

std::uint64_t InviaBlocchi(Sftp& sftp, std::string_view handle, const Sorgente& sorgente) {
  std::vector<char> tampone(Blocco);
  std::deque<std::uint32_t> inViaggio;
  std::uint64_t posto = 0;
  for (std::size_t letti = 0; (letti = sorgente(tampone)) > 0; posto += letti) {
    if (inViaggio.size() == MassimoInViaggio) {
      sftp.AttendiEsito(inViaggio.front());
      inViaggio.pop_front();
    }
    inViaggio.push_back(sftp.ChiediScrittura(handle, posto, {tampone.data(), letti}));
  }
  for (const auto numero : inViaggio) {
    sftp.AttendiEsito(numero);
  }
  return posto;
}

void Concludi(Sftp& sftp, std::string_view handle, std::uint64_t attesi) {
  const auto scarico = sftp.ChiediScaricoSuDisco(handle);
  const auto attributi = sftp.ChiediAttributi(handle);
  const auto chiusura = sftp.ChiediChiusura(handle);
  if (scarico) {
    sftp.AttendiEsito(*scarico);
  }
  const auto dimensione = sftp.AttendiAttributi(attributi).dimensione;
  sftp.AttendiEsito(chiusura);
  if (dimensione != attesi) {
    throw ErroreSftp(stato_sftp::Fallimento, {},
                     "sull'host il file è di " + (dimensione ? std::to_string(*dimensione) : "un numero ignoto di") +
                         " byte invece di " + std::to_string(attesi));
  }
}

/// Closes what a failed transfer leaves open. Where the host refuses that, the failure before it is what counts.
void CloseAnyway(Sftp& sftp, std::string_view handle) {
  try {
    sftp.Chiudi(handle);
  } catch (const ErroreSftp&) { // NOLINT(bugprone-empty-catch): closed already
  }
}

/// Undoes as much of a failed upload as the host allows.
void Rimuovi(Sftp& sftp, std::string_view handle, std::string_view percorso) {
  sftp.AttendiTutte();
  CloseAnyway(sftp, handle);
  try {
    sftp.Cancella(percorso);
  } catch (const ErroreSftp&) { // NOLINT(bugprone-empty-catch): the failure of the upload is what counts
  }
}

ErroreSftp TroppoGrande() {
  return {stato_sftp::Fallimento, {}, MotivoTroppoGrande};
}

/// Looked at first: to open a pipe would hold the host's service up.
std::string ApriOrdinario(Sftp& sftp, std::string_view percorso, const Misura& misura) {
  const auto presente = sftp.Guarda(percorso, true);
  if (!presente) {
    throw ErroreSftp(stato_sftp::FileInesistente, {});
  }
  if (!presente->IsOrdinario()) {
    throw ErroreSftp(stato_sftp::Fallimento, {}, presente->IsCartella() ? "è una cartella" : "non è un file ordinario");
  }
  if (!misura.tronca && presente->dimensione.value_or(0) > misura.massimo) {
    throw TroppoGrande();
  }
  return sftp.Apri(percorso, apertura_sftp::Lettura, 0);
}

} // namespace

void Carica(Sftp& sftp, std::string_view percorso, std::uint32_t modo, const Sorgente& sorgente, FileRemoto& file) {
  const auto handle = ApriNuovo(sftp, percorso, modo, file);
  try {
    Concludi(sftp, handle, InviaBlocchi(sftp, handle, sorgente));
  } catch (const ConnessionePersa&) {
    throw;
  } catch (const ErroreSftp& errore) {
    // The space is looked at while the half file still takes it up.
    sftp.AttendiTutte();
    const auto spiegato = ErroreScrittura(sftp, percorso, errore);
    Rimuovi(sftp, handle, percorso);
    throw spiegato;
  } catch (...) {
    Rimuovi(sftp, handle, percorso);
    throw;
  }
}

void Scarica(Sftp& sftp, std::string_view percorso, const Misura& misura, const Deposito& deposito) {
  const Sftp::UnaAttesa unaAttesa(sftp);
  const auto handle = ApriOrdinario(sftp, percorso, misura);
  try {
    std::deque<std::uint32_t> inViaggio;
    std::size_t insieme = 2;   // how many requests may be under way
    std::uint64_t posto = 0;   // of the next request
    std::uint64_t scritti = 0; // what was handed on
    for (bool finito = false; !finito;) {
      for (; inViaggio.size() < insieme && (!misura.tronca || posto < misura.massimo); posto += Blocco) {
        inViaggio.push_back(sftp.ChiediLettura(handle, posto, Blocco));
      }
      const auto dati = sftp.AttendiDati(inViaggio.front());
      inViaggio.pop_front();
      finito = !dati;
      if (dati && (dati->empty() || dati->size() > Blocco)) {
        throw ConnessionePersa("il servizio SFTP dell'host ha dato un blocco non valido");
      }
      if (dati) {
        const auto ammessi = std::min<std::uint64_t>(dati->size(), misura.massimo - scritti);
        if (ammessi < dati->size() && !misura.tronca) {
          throw TroppoGrande();
        }
        deposito(std::string_view(*dati).substr(0, ammessi));
        scritti += ammessi;
        finito = misura.tronca && scritti == misura.massimo;
        insieme = std::min(insieme * 2, MassimoInViaggio);
      }
      if (finito || dati->size() < Blocco) {
        // A short block is no end of the file: what was asked for behind it is asked for again from there.
        sftp.AttendiTutte();
        inViaggio.clear();
        posto = scritti;
        insieme = 1;
      }
    }
    sftp.Chiudi(handle);
  } catch (const ConnessionePersa&) {
    throw;
  } catch (...) {
    sftp.AttendiTutte();
    CloseAnyway(sftp, handle);
    throw;
  }
}

} // namespace lumoscad::nexaro
