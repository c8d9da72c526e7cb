// The face for programs in C, over the one for C++.

#include "lumoscad/Host.hpp"
#include "lumoscad/LumoScadenze.hpp"
#include "lumoscad/lumoscad.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <mutex>
#include <string>
#include <string_view>

namespace {

std::string_view Testo(const char* testo) noexcept {
  return testo == nullptr ? "" : testo;
}

/// The caller's place for a text.
class Destinazione {
 public:
  Destinazione(char* dove, size_t dimensione) noexcept : dove_(dove), dimensione_(dove == nullptr ? 0 : dimensione) {}

  /// Copies what fits of it, behind what was copied before, and ends it by a zero byte. Returns how long it all is.
  size_t Aggiungi(std::string_view testo) noexcept {
    if (lunghezza_ + 1 <= dimensione_) {
      const size_t copiati = std::min(testo.size(), dimensione_ - 1 - lunghezza_);
      std::memcpy(dove_ + lunghezza_, testo.data(), copiati);
      dove_[lunghezza_ + copiati] = '\0';
    }
    return lunghezza_ += testo.size();
  }

 private:
  char* dove_;
  size_t dimensione_;
  size_t lunghezza_ = 0; ///< of the whole text, copied or not
};

void Scrivi(int* stato, int esito) noexcept {
  if (stato != nullptr) {
    *stato = esito;
  }
}

int Esito(bool riuscito) noexcept {
  return riuscito ? LUMOSCAD_RIUSCITO : LUMOSCAD_ERRORE;
}

/// What was last shown of each note in this process.
class NoteMostrate {
 public:
  void Mostra(const lumoscad::NotaInSospeso& vista) noexcept try {
    const std::scoped_lock turno(mutex_);
    mostrate_.insert_or_assign(vista.nome, vista.domanda + vista.impronta);
  } catch (...) { // NOLINT(bugprone-empty-catch): the answer then goes by what the note is at that moment
  }
  /// Whether the note is what was shown of it; also where nothing was shown. What was shown is answered then.
  [[nodiscard]] bool Uguale(const lumoscad::NotaInSospeso& vista) noexcept try {
    const std::scoped_lock turno(mutex_);
    const auto mostrata = mostrate_.find(vista.nome);
    if (mostrata == mostrate_.end()) {
      return true;
    }
    const bool uguale = mostrata->second == vista.domanda + vista.impronta;
    mostrate_.erase(mostrata);
    return uguale;
  } catch (...) {
    return false;
  }

 private:
  std::mutex mutex_;
  std::map<std::string, std::string> mostrate_;
};

NoteMostrate& Mostrate() {
  static NoteMostrate uniche;
  return uniche;
}

} // namespace

extern "C" size_t lumoscad_esegui(const char* comando, char* risultato, size_t dimensione) {
  return Destinazione(risultato, dimensione).Aggiungi(lumoscad::LumoScadenze().EseguiLumoScad(Testo(comando)));
}

extern "C" size_t lumoscad_in_sospeso(const char* opzioni, int* stato, char* testo, size_t dimensione) {
  const auto elenco = lumoscad::LeggiInSospeso(Testo(opzioni));
  Scrivi(stato, Esito(elenco.riuscito));
  return Destinazione(testo, dimensione).Aggiungi(elenco.testo);
}

extern "C" size_t lumoscad_riallinea(const char* nota, const char* opzioni, int conferma, int* stato, char* testo,
                                     size_t dimensione) {
  Destinazione destinazione(testo, dimensione);
  const auto vista = lumoscad::LeggiNotaInSospeso(Testo(nota), Testo(opzioni));
  if (!vista.errore.empty() || vista.inCorso || vista.archiviata) {
    Scrivi(stato, LUMOSCAD_ERRORE);
    return destinazione.Aggiungi(vista.testo);
  }
  if (conferma == 0 || !Mostrate().Uguale(vista)) {
    Mostrate().Mostra(vista);
    Scrivi(stato, LUMOSCAD_DA_CHIEDERE);
    destinazione.Aggiungi(vista.testo);
    return destinazione.Aggiungi(vista.domanda);
  }
  const auto esito = lumoscad::RiallineaInSospeso(vista, Testo(opzioni));
  Scrivi(stato, Esito(esito.riuscito));
  return destinazione.Aggiungi(esito.testo);
}

extern "C" size_t lumoscad_archivia(const char* nota, const char* motivo, int* stato, char* testo, size_t dimensione) {
  const auto esito = lumoscad::ArchiviaInSospeso(Testo(nota), Testo(motivo));
  Scrivi(stato, Esito(esito.riuscito));
  return Destinazione(testo, dimensione).Aggiungi(esito.testo);
}
