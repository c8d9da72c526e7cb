#include "database/ProvaBaseDati.hpp"
#include "entry/Blocchi.hpp"
#include "faccia/Amministrazione.hpp"
#include "faccia/Maniglia.hpp"

#include <functional>
#include <utility>

namespace lumoscad {
namespace {

/// What the caller's own function asks for, or raises.
struct Interruzione {};

/// Hands outcomes to the caller's own function.
class Mostrati {
 public:
  Mostrati(lumoscad_mostra mostra, void* utente) : mostra_(mostra), utente_(utente) {}

  void Uno(const std::string& operazione, bool riuscito, const std::string& dettaglio) const {
    if (mostra_ == nullptr) {
      return;
    }
    int risposta = 1;
    try {
      risposta = mostra_(utente_, operazione.c_str(), riuscito ? 1 : 0, dettaglio.c_str());
    } catch (...) { // NOLINT(bugprone-empty-catch): it ends the test, as an answer does
    }
    if (risposta != 0) {
      throw Interruzione();
    }
  }

 private:
  lumoscad_mostra mostra_;
  void* utente_;
};

constexpr const char* Interrotta = "La prova è stata interrotta dal programma chiamante.";

/// A test of which `mostra` is told; `prova` gives whether everything works.
template <class Prova>
int EseguiProva(lumoscad_maniglia* maniglia, std::initializer_list<Argomento> argomenti, const Mostrati& mostrati,
                Prova prova) noexcept {
  return Chiama(maniglia, argomenti, nullptr, [&](lumoscad_maniglia& sua, lumoscad_esito&) {
    try {
      const Turn turno(Turn::Who::Administrator);
      if (turno.How() != Turn::Outcome::Taken) {
        mostrati.Uno("Impostazioni", false, std::string(turno.Reason()));
        return sua.Segna(LUMOSCAD_RIFIUTATO, turno.Reason());
      }
      try {
        return prova() ? sua.Segna(LUMOSCAD_RIUSCITO) : sua.Segna(LUMOSCAD_ERRORE, "Non tutte le operazioni riescono.");
      } catch (const Interruzione&) {
        throw;
      } catch (...) {
        const std::string perche = CurrentError().Text();
        mostrati.Uno("Impostazioni", false, perche);
        return sua.Segna(LUMOSCAD_ERRORE, perche);
      }
    } catch (const Interruzione&) {
      return sua.Segna(LUMOSCAD_INTERROTTO, Interrotta);
    }
  });
}

void Metti(lumoscad_esito& esito, BloccoLista blocco) {
  esito.Con(LUMOSCAD_CAMPO_NOME, std::move(blocco.lista))
      .Con(LUMOSCAD_CAMPO_PRESO, blocco.preso)
      .Con(LUMOSCAD_CAMPO_CHI, std::move(blocco.chi))
      .Con(LUMOSCAD_CAMPO_QUANDO, std::move(blocco.quando))
      .Con(LUMOSCAD_CAMPO_IMPRONTA, std::move(blocco.impronta))
      .Con(LUMOSCAD_CAMPO_ERRORE, std::move(blocco.errore));
}

} // namespace
} // namespace lumoscad

extern "C" int lumoscad_chiave_host(lumoscad_maniglia* maniglia, const char* host, lumoscad_esito** esito) {
  return lumoscad::Chiama(maniglia, {{host}}, esito, [host](lumoscad_maniglia& sua, lumoscad_esito& trovato) {
    auto chiave = lumoscad::ChiediChiave(host);
    const int numero = sua.Segna(chiave.errore.empty() ? LUMOSCAD_RIUSCITO : LUMOSCAD_ERRORE, chiave.errore);
    trovato.Con(LUMOSCAD_CAMPO_ERRORE, std::move(chiave.errore))
        .Con(LUMOSCAD_CAMPO_NOTA, chiave.nota)
        .Con(LUMOSCAD_CAMPO_TIPO, std::move(chiave.tipo))
        .Con(LUMOSCAD_CAMPO_IMPRONTA, std::move(chiave.impronta))
        .Con(LUMOSCAD_CAMPO_RIGA, std::move(chiave.riga))
        .Con(LUMOSCAD_CAMPO_FILE, std::move(chiave.file));
    return numero;
  });
}

extern "C" int lumoscad_registra_chiave(lumoscad_maniglia* maniglia, const char* riga, const char* file) {
  return lumoscad::Chiama(maniglia, {{riga}, {file}}, nullptr, [&](lumoscad_maniglia& sua, lumoscad_esito&) {
    lumoscad::RegistraChiave(riga, file);
    return sua.Segna(LUMOSCAD_RIUSCITO);
  });
}

extern "C" int lumoscad_prova_host(lumoscad_maniglia* maniglia, const char* host, const char* programma,
                                   lumoscad_mostra mostra, void* utente) {
  const lumoscad::Mostrati mostrati(mostra, utente);
  return lumoscad::EseguiProva(maniglia, {{host}, {programma, true}}, mostrati, [&] {
    return lumoscad::ProvaCollegamento(host, lumoscad::Letto(programma), [&](const lumoscad::PassoProva& passo) {
      mostrati.Uno(passo.operazione, passo.riuscito, passo.dettaglio);
    });
  });
}

extern "C" int lumoscad_prova_base_dati(lumoscad_maniglia* maniglia, const char* opzioni, lumoscad_mostra mostra,
                                        void* utente) {
  const lumoscad::Mostrati mostrati(mostra, utente);
  return lumoscad::EseguiProva(maniglia, {{opzioni}}, mostrati, [&] {
    return lumoscad::GuardaBaseDati(opzioni, [&](const lumoscad::EsitoDelPasso& passo) {
      mostrati.Uno(passo.operazione, passo.riuscito, passo.dettaglio);
    });
  });
}

extern "C" int lumoscad_blocchi(lumoscad_maniglia* maniglia, const char* host, lumoscad_esito** esito) {
  return lumoscad::ChiamaAlSuoTurno(maniglia, {{host}}, esito, [host](lumoscad_maniglia& sua, lumoscad_esito& trovato) {
    bool letti = true;
    for (auto& blocco : lumoscad::GuardaBlocchi(host)) {
      letti = letti && blocco.errore.empty();
      lumoscad::Metti(trovato.voci.emplace_back(), std::move(blocco));
    }
    return letti ? sua.Segna(LUMOSCAD_RIUSCITO) : sua.Segna(LUMOSCAD_ERRORE, "Non tutti i blocchi sono stati letti.");
  });
}

extern "C" int lumoscad_blocco(lumoscad_maniglia* maniglia, const char* host, const char* lista,
                               lumoscad_esito** esito) {
  return lumoscad::ChiamaAlSuoTurno(
      maniglia, {{host}, {lista}}, esito, [&](lumoscad_maniglia& sua, lumoscad_esito& trovato) {
        auto blocco = lumoscad::GuardaBlocco(host, lista);
        const int numero = sua.Segna(blocco.errore.empty() ? LUMOSCAD_RIUSCITO : LUMOSCAD_ERRORE, blocco.errore);
        lumoscad::Metti(trovato, std::move(blocco));
        return numero;
      });
}

extern "C" int lumoscad_libera_blocco(lumoscad_maniglia* maniglia, const char* host, const char* lista,
                                      const char* impronta, lumoscad_esito** esito) {
  return lumoscad::ChiamaAlSuoTurno(
      maniglia, {{host}, {lista}, {impronta}}, esito, [&](lumoscad_maniglia& sua, lumoscad_esito& trovato) {
        lumoscad::BloccoLista visto;
        visto.lista = lista;
        visto.impronta = impronta;
        auto tolto = lumoscad::TogliBloccoVisto(host, visto);
        sua.Segna(tolto.tolto ? LUMOSCAD_RIUSCITO : LUMOSCAD_ERRORE, lumoscad::SeNo(tolto.tolto, tolto.dettaglio));
        trovato.Con(LUMOSCAD_CAMPO_TESTO, std::move(tolto.dettaglio));
        return sua.Errore();
      });
}
