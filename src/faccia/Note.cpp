#include "entry/Destinazione.hpp"
#include "entry/InSospeso.hpp"
#include "faccia/Maniglia.hpp"

#include <map>
#include <mutex>
#include <utility>

namespace lumoscad {
namespace {

/// What `azione` gives, or why it could not run, as the text of an empty one.
template <typename Esito, typename Azione> Esito AlSuoTurno(Azione azione) noexcept try {
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
} catch (...) {
  return {};
}

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
  void Mostra(const NotaInSospeso& vista) noexcept try {
    const std::scoped_lock turno(mutex_);
    mostrate_.insert_or_assign(vista.nome, vista.domanda + vista.impronta);
  } catch (...) { // NOLINT(bugprone-empty-catch): the answer then goes by what the note is at that moment
  }
  /// Whether the note is what was shown of it; also where nothing was shown. What was shown is answered then.
  [[nodiscard]] bool Uguale(const NotaInSospeso& vista) noexcept try {
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

void Metti(lumoscad_esito& esito, NotaInSospeso nota) {
  esito.Con(LUMOSCAD_CAMPO_NOME, std::move(nota.nome))
      .Con(LUMOSCAD_CAMPO_ERRORE, std::move(nota.errore))
      .Con(LUMOSCAD_CAMPO_IN_CORSO, nota.inCorso)
      .Con(LUMOSCAD_CAMPO_ARCHIVIATA, nota.archiviata)
      .Con(LUMOSCAD_CAMPO_CHI, std::move(nota.chi))
      .Con(LUMOSCAD_CAMPO_QUANDO, std::move(nota.quando))
      .Con(LUMOSCAD_CAMPO_HOST, std::move(nota.host))
      .Con(LUMOSCAD_CAMPO_BASE_DATI, std::move(nota.baseDati))
      .Con(LUMOSCAD_CAMPO_CONSIGLIO, std::move(nota.consiglio))
      .Con(LUMOSCAD_CAMPO_DOMANDA, std::move(nota.domanda))
      .Con(LUMOSCAD_CAMPO_TESTO, std::move(nota.testo))
      .Con(LUMOSCAD_CAMPO_IMPRONTA, std::move(nota.impronta));
  for (auto& riga : nota.righe) {
    esito.voci.emplace_back()
        .Con(LUMOSCAD_CAMPO_NOME, std::move(riga.riga))
        .Con(LUMOSCAD_CAMPO_STATO, std::move(riga.stato));
  }
}

/// What became of a note, whose text is told either way.
int Concludi(lumoscad_maniglia& maniglia, lumoscad_esito& esito, EsitoInSospeso concluso) {
  const int numero = maniglia.Segna(Esito(concluso.riuscito), SeNo(concluso.riuscito, concluso.testo));
  esito.Con(LUMOSCAD_CAMPO_TESTO, std::move(concluso.testo));
  return numero;
}

} // namespace
} // namespace lumoscad

extern "C" size_t lumoscad_in_sospeso(const char* opzioni, int* stato, char* testo, size_t dimensione) {
  using namespace lumoscad;
  const auto elenco = AlSuoTurno<ElencoInSospeso>([&] { return GuardaInSospeso(Letto(opzioni)); });
  Scrivi(stato, Esito(elenco.riuscito));
  return Destinazione(testo, dimensione).Aggiungi(elenco.testo);
}

extern "C" size_t lumoscad_riallinea(const char* nota, const char* opzioni, int conferma, int* stato, char* testo,
                                     size_t dimensione) {
  using namespace lumoscad;
  Destinazione destinazione(testo, dimensione);
  const auto vista = AlSuoTurno<NotaInSospeso>([&] { return GuardaNota(Letto(nota), Letto(opzioni)); });
  // Where there was no turn for it the note has no name, and the text says why.
  if (vista.nome.empty() || !vista.errore.empty() || vista.inCorso || vista.archiviata) {
    Scrivi(stato, LUMOSCAD_ERRORE);
    return destinazione.Aggiungi(vista.testo);
  }
  if (conferma == 0 || !Mostrate().Uguale(vista)) {
    Mostrate().Mostra(vista);
    Scrivi(stato, LUMOSCAD_DA_CHIEDERE);
    destinazione.Aggiungi(vista.testo);
    return destinazione.Aggiungi(vista.domanda);
  }
  const auto esito = AlSuoTurno<EsitoInSospeso>([&] { return RiallineaVista(vista, Letto(opzioni)); });
  Scrivi(stato, Esito(esito.riuscito));
  return destinazione.Aggiungi(esito.testo);
}

extern "C" size_t lumoscad_archivia(const char* nota, const char* motivo, int* stato, char* testo, size_t dimensione) {
  using namespace lumoscad;
  const auto esito = AlSuoTurno<EsitoInSospeso>([&] { return Archivia(Letto(nota), Letto(motivo)); });
  Scrivi(stato, Esito(esito.riuscito));
  return Destinazione(testo, dimensione).Aggiungi(esito.testo);
}

extern "C" int lumoscad_note(lumoscad_maniglia* maniglia, const char* opzioni, lumoscad_esito** esito) {
  using namespace lumoscad;
  return ChiamaAlSuoTurno(maniglia, {{opzioni, true}}, esito, [&](lumoscad_maniglia& sua, lumoscad_esito& trovato) {
    auto elenco = GuardaInSospeso(Letto(opzioni));
    const int numero = sua.Segna(Esito(elenco.riuscito), SeNo(elenco.riuscito, elenco.testo));
    trovato.Con(LUMOSCAD_CAMPO_TESTO, std::move(elenco.testo));
    for (auto& nota : elenco.note) {
      Metti(trovato.voci.emplace_back(), std::move(nota));
    }
    return numero;
  });
}

extern "C" int lumoscad_nota(lumoscad_maniglia* maniglia, const char* nome, const char* opzioni,
                             lumoscad_esito** esito) {
  using namespace lumoscad;
  return ChiamaAlSuoTurno(maniglia, {{nome}, {opzioni, true}}, esito,
                          [&](lumoscad_maniglia& sua, lumoscad_esito& trovato) {
                            auto nota = GuardaNota(nome, Letto(opzioni));
                            const int numero = sua.Segna(Esito(nota.errore.empty()), nota.errore);
                            Metti(trovato, std::move(nota));
                            return numero;
                          });
}

extern "C" int lumoscad_riallinea_nota(lumoscad_maniglia* maniglia, const char* nome, const char* impronta,
                                       const char* opzioni, lumoscad_esito** esito) {
  using namespace lumoscad;
  return ChiamaAlSuoTurno(maniglia, {{nome}, {impronta}, {opzioni, true}}, esito,
                          [&](lumoscad_maniglia& sua, lumoscad_esito& trovato) {
                            NotaInSospeso vista;
                            vista.nome = nome;
                            vista.impronta = impronta;
                            return Concludi(sua, trovato, RiallineaVista(vista, Letto(opzioni)));
                          });
}

extern "C" int lumoscad_archivia_nota(lumoscad_maniglia* maniglia, const char* nome, const char* motivo,
                                      lumoscad_esito** esito) {
  using namespace lumoscad;
  return ChiamaAlSuoTurno(maniglia, {{nome}, {motivo}}, esito, [&](lumoscad_maniglia& sua, lumoscad_esito& trovato) {
    return Concludi(sua, trovato, Archivia(nome, motivo));
  });
}
