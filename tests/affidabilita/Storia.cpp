#include "Storia.hpp"

#include "common/Testo.hpp"

#include <algorithm>
#include <map>
#include <set>

namespace lumoscad::test {
namespace {

/// The changed columns of each row, as "column=value"; a row that goes is "gone". What a command does to one column
/// says nothing of the others, which somebody else may have changed meanwhile.
using Variazioni = std::map<std::string, std::set<std::string>>;

void Aggiungi(Variazioni& variazioni, const std::string& chiave, const std::optional<std::string>& prima,
              const std::optional<std::string>& dopo) {
  if (prima == dopo) {
    return;
  }
  std::set<std::string>& cambiate = variazioni[chiave];
  if (!prima || !dopo) {
    cambiate.insert(dopo ? "new" : "gone");
    return;
  }
  const auto vecchie = Dividi(*prima, '|');
  const auto nuove = Dividi(*dopo, '|');
  for (std::size_t colonna = 0; colonna < nuove.size(); ++colonna) {
    if (vecchie.at(colonna) != nuove[colonna]) {
      cambiate.insert(std::to_string(colonna) + "=" + nuove[colonna]);
    }
  }
}

/// What a transaction has made of each row: several of its statements may have changed one.
Variazioni Insieme(const std::vector<Cambio>& cambi) {
  std::map<std::string, Cambio> righe;
  for (const Cambio& cambio : cambi) {
    righe.emplace(cambio.chiave, cambio).first->second.dopo = cambio.dopo;
  }
  Variazioni variazioni;
  for (const auto& [chiave, riga] : righe) {
    Aggiungi(variazioni, chiave, riga.prima, riga.dopo);
  }
  return variazioni;
}

class Confrontatore {
 public:
  Confrontatore(const Modello& modello, const std::vector<Conferma>& conferme, const std::vector<Caduta>& cadute)
      : modello_(modello), conferme_(conferme), cadute_(cadute) {}

  Riscontro Esegui(const Stato& iniziale, const Stato& finale, const std::vector<Eseguito>& comandi) {
    Ripercorri(iniziale);
    if (stati_.back() != finale) {
      riscontro_.errori.emplace_back("the changes do not lead to the final database");
    }
    std::map<std::string, std::size_t> posti;
    for (std::size_t posto = 0; posto < conferme_.size(); ++posto) {
      if (!posti.emplace(conferme_[posto].comando, posto).second) {
        riscontro_.errori.push_back(conferme_[posto].comando + " has two transactions");
      }
    }
    for (const Eseguito& comando : comandi) {
      const auto posto = posti.find(comando.nome);
      if (posto == posti.end()) {
        SenzaTransazione(comando);
      } else {
        ConTransazione(comando, posto->second);
        posti.erase(posto);
      }
    }
    for (const auto& [comando, posto] : posti) {
      riscontro_.errori.push_back("a transaction of no command: " + comando);
    }
    return riscontro_;
  }

 private:
  /// The states that the commits lead through; a change must find the row as its log says.
  void Ripercorri(const Stato& iniziale) {
    stati_.push_back(iniziale);
    for (const Conferma& conferma : conferme_) {
      Stato stato = stati_.back();
      for (const Cambio& cambio : conferma.cambi) {
        const auto riga = stato.find(cambio.chiave);
        if ((riga == stato.end()) == cambio.prima.has_value() || (cambio.prima && riga->second != *cambio.prima)) {
          riscontro_.errori.push_back(conferma.comando +
                                      " changed another row than the one before it left: " + cambio.chiave);
        }
        Applica(stato, cambio.chiave, cambio.dopo);
      }
      stati_.push_back(std::move(stato));
    }
  }

  static void Applica(Stato& stato, const std::string& chiave, const std::optional<std::string>& dopo) {
    if (dopo) {
      stato[chiave] = *dopo;
    } else {
      stato.erase(chiave);
    }
  }

  /// A commit takes its number a little before the others see it; on a busy machine the little grows.
  static constexpr Istante Margine = 500'000'000;

  /// The number of commits that a command has certainly found.
  [[nodiscard]] std::size_t Trovate(const Eseguito& comando) const { return Prima(comando.risposto - Margine); }

  /// The number of commits before a time.
  [[nodiscard]] std::size_t Prima(Istante ora) const {
    return static_cast<std::size_t>(std::lower_bound(conferme_.begin(), conferme_.end(), ora,
                                                     [](const Conferma& c, Istante t) { return c.ora < t; }) -
                                    conferme_.begin());
  }

  /// What the command asks of each database that it may have found.
  [[nodiscard]] std::vector<Variazioni> Effetti(const Eseguito& comando, std::size_t dalla, std::size_t alla) const {
    std::vector<Variazioni> effetti;
    for (std::size_t quanti = dalla; quanti <= alla; ++quanti) {
      Variazioni variazioni;
      for (const auto& [chiave, riga] : modello_.Di(comando, stati_[quanti])) {
        Aggiungi(variazioni, chiave, stati_[quanti].at(chiave), riga);
      }
      effetti.push_back(std::move(variazioni));
    }
    return effetti;
  }

  void SenzaTransazione(const Eseguito& comando) {
    const bool scrive = comando.accettata || comando.comando == "-T TEST";
    if (!scrive) {
      return;
    }
    if (comando.risultato == "error") {
      ++riscontro_.detti;
      const bool perduto = NonTenuto(comando) || EsitoIgnoto(comando);
      riscontro_.perduti += perduto ? 1U : 0U;
      riscontro_.ignoti += EsitoIgnoto(comando) ? 1U : 0U;
      if (!perduto && !RifiutoFondato(comando)) {
        riscontro_.errori.push_back(comando.nome + " failed in silence or without a cause: " + comando.comando);
      }
      return;
    }
    const auto effetti = Effetti(comando, Trovate(comando), Prima(comando.fine));
    if (std::none_of(effetti.begin(), effetti.end(), [](const Variazioni& effetto) { return effetto.empty(); })) {
      riscontro_.errori.push_back(comando.nome + " is lost: " + comando.comando);
    }
    ++riscontro_.senzaEffetto;
    ContaLinee(comando, {}, Trovate(comando), Prima(comando.fine));
  }

  /// The database's refusal was told, and there was cause for it: what is called missing was missing, or somebody else
  /// committed while the command was at work.
  [[nodiscard]] bool RifiutoFondato(const Eseguito& comando) const {
    if (Dice(comando, "MOVIMENTO CONTABILE INESISTENTE")) {
      const auto effetti = Effetti(comando, Trovate(comando), Prima(comando.fine));
      return std::any_of(effetti.begin(), effetti.end(), [](const Variazioni& effetto) { return effetto.empty(); });
    }
    const bool conteso = Dice(comando, "da un altro terminale: la modifica non è stata registrata") ||
                         Dice(comando, "Due terminali si sono bloccati a vicenda") ||
                         Dice(comando, "Un altro terminale ha modificato le stesse righe nello stesso momento");
    return conteso && Trovate(comando) < Prima(comando.fine);
  }

  static bool Dice(const Eseguito& comando, std::string_view testo) {
    return std::any_of(comando.box.begin(), comando.box.end(),
                       [&](const std::string& box) { return box.find(testo) != std::string::npos; });
  }
  [[nodiscard]] bool DuranteUnaCaduta(const Eseguito& comando) const {
    return std::any_of(cadute_.begin(), cadute_.end(), [&](const Caduta& caduta) {
      return comando.inizio <= caduta.alla && comando.fine >= caduta.dalla;
    });
  }
  /// A command that asks nothing of the host has no sentence of what the two hold of it.
  [[nodiscard]] bool NonTenuto(const Eseguito& comando) const {
    return DuranteUnaCaduta(comando) && !EsitoIgnoto(comando) &&
           (comando.accettata ? Dice(comando, "la base dati non ne ha registrato nulla") : !comando.box.empty());
  }
  [[nodiscard]] bool EsitoIgnoto(const Eseguito& comando) const {
    return DuranteUnaCaduta(comando) &&
           Dice(comando, comando.accettata ? "non si sa se la base dati l'ha registrata" : "l'esito è sconosciuto");
  }

  void ConTransazione(const Eseguito& comando, std::size_t posto) {
    ++riscontro_.confermati;
    if (comando.risultato == "error" && EsitoIgnoto(comando)) {
      ++riscontro_.ignoti;
      ++riscontro_.ignotiTenuti;
    } else if (!comando.risultato.empty() || (!comando.accettata && comando.comando != "-T TEST")) {
      riscontro_.errori.push_back(comando.nome + " changed the database and answered \"" + comando.risultato + "\"");
    }
    const Variazioni avvenuto = Insieme(conferme_[posto].cambi);
    const std::size_t dalla = std::min(Trovate(comando), posto);
    const auto effetti = Effetti(comando, dalla, posto);
    if (effetti.back() == avvenuto) {
      ++riscontro_.inOrdine;
    } else if (Spiegato(avvenuto, effetti)) {
      ++riscontro_.sovrapposti;
    } else {
      riscontro_.errori.push_back(comando.nome + " changed what it does not ask for: " + comando.comando);
    }
    ContaLinee(comando, avvenuto, dalla, posto);
  }

  /// Every row was changed, or not, as the command asks of one of the databases that it may have found: a transaction
  /// sees what others commit between its statements.
  static bool Spiegato(const Variazioni& avvenuto, const std::vector<Variazioni>& effetti) {
    std::set<std::string> chiavi;
    const auto raccogli = [&chiavi](const Variazioni& effetto) {
      for (const auto& [chiave, colonne] : effetto) {
        chiavi.insert(chiave);
      }
    };
    raccogli(avvenuto);
    std::for_each(effetti.begin(), effetti.end(), raccogli);
    return std::all_of(chiavi.begin(), chiavi.end(), [&](const std::string& chiave) {
      const auto questa = avvenuto.find(chiave);
      return std::any_of(effetti.begin(), effetti.end(), [&](const Variazioni& effetto) {
        const auto quella = effetto.find(chiave);
        return questa == avvenuto.end() ? quella == effetto.end()
                                        : quella != effetto.end() && quella->second == questa->second;
      });
    });
  }

  /// Counts the request's lines of which nothing came to pass.
  void ContaLinee(const Eseguito& comando, const Variazioni& avvenuto, std::size_t dalla, std::size_t alla) {
    for (std::size_t inizio = 0; inizio < comando.contenuto.size();) {
      const auto fine = comando.contenuto.find("\r\n", inizio) + 2;
      Eseguito sola = comando;
      sola.contenuto = comando.contenuto.substr(inizio, fine - inizio);
      const auto effetti = Effetti(sola, dalla, alla);
      const bool riuscita = std::any_of(effetti.begin(), effetti.end(), [&](const Variazioni& effetto) {
        return std::any_of(effetto.begin(), effetto.end(),
                           [&](const auto& riga) { return avvenuto.count(riga.first) > 0; });
      });
      riscontro_.lineePerse += riuscita ? 0U : 1U;
      inizio = fine;
    }
  }

  const Modello& modello_;
  const std::vector<Conferma>& conferme_;
  const std::vector<Caduta>& cadute_;
  std::vector<Stato> stati_; ///< before the first commit and after each
  Riscontro riscontro_;
};

} // namespace

Riscontro Confronta(const Modello& modello, const Stato& iniziale, const Stato& finale,
                    const std::vector<Conferma>& conferme, const std::vector<Eseguito>& comandi,
                    const std::vector<Caduta>& cadute) {
  return Confrontatore(modello, conferme, cadute).Esegui(iniziale, finale, comandi);
}

} // namespace lumoscad::test
