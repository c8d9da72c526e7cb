#include "platform/nexaro/ssh/ProgrammaRemoto.hpp"

#include "platform/nexaro/Chiamata.hpp"
#include "platform/nexaro/Testi.hpp"

#include <algorithm>

namespace lumoscad::nexaro {

namespace {

bool Congedato(const Canale& canale) {
  return canale.stato || !canale.segnale.empty();
}

bool Terminato(const Canale& canale) {
  return canale.chiuso || (canale.finita && Congedato(canale));
}

/// One wait for a program.
class Attesa {
 public:
  Attesa(Canale& canale, const Completezza& completa)
      : canale_(canale), completa_(completa), termine_(canale.SuaSessione().NuovoTermine()) {}

  /// Why the program has to be given up; empty while it need not be.
  std::string Esegui() {
    while (!Terminato(canale_) && !canale_.uscitaEccessiva) {
      const bool arrivato = canale_.ServeEntro(Limite());
      const bool scaduto = !arrivato && TempoRestante(termine_).count() == 0;
      if (Congedato(canale_) && (scaduto || Silenziosa())) {
        if (Basta()) {
          return {};
        }
        quiete_ = Orologio::now() + Quiete;
      }
      if (scaduto && !Terminato(canale_)) {
        canale_.Uccidi();
        return " non ha risposto entro " + Secondi(canale_.SuaSessione().Attesa()) +
               " e ne è stata chiesta l'interruzione";
      }
    }
    if (canale_.uscitaEccessiva) {
      canale_.Uccidi();
      return " ha dato una risposta di oltre 16 MiB e ne è stata chiesta l'interruzione";
    }
    return {};
  }

 private:
  /// Until when to wait for whatever comes next.
  [[nodiscard]] Termine Limite() {
    if (!Congedato(canale_)) {
      return termine_;
    }
    if (quiete_ == Termine()) {
      quiete_ = Orologio::now() + Quiete;
    }
    return std::min(termine_, quiete_);
  }

  /// Whether the output has been silent for long enough; what comes for the connection's own sake is no output.
  [[nodiscard]] bool Silenziosa() {
    const auto letti = canale_.uscita.size() + canale_.errori.size();
    if (letti != letti_) {
      letti_ = letti;
      quiete_ = Orologio::now() + Quiete;
    }
    return quiete_ != Termine() && TempoRestante(quiete_).count() == 0;
  }

  /// Whether the end of the output can be done without.
  [[nodiscard]] bool Basta() const {
    return !canale_.segnale.empty() || canale_.stato != 0 || completa_(canale_.uscita);
  }

  Canale& canale_;
  const Completezza& completa_;
  Termine termine_;
  Termine quiete_; ///< when the output of a program that has ended will have been silent for long enough
  std::size_t letti_ = 0;
};

} // namespace

std::unique_ptr<Canale> PreparaProgramma(Sessione& sessione, Termine termine) {
  return std::make_unique<Canale>(sessione, termine, xml::DimensioneMassima, MassimoErroriMostrati);
}

EsitoRemoto EseguiRemoto(Canale& canale, const std::string& riga, const Completezza& completa) {
  EsitoRemoto esito;
  try {
    canale.AvviaComando(riga);
    canale.ChiudiIngresso();
    esito.interruzione = Attesa(canale, completa).Esegui();
  } catch (const ConnessionePersa& persa) {
    esito.interruzione = " è stato richiesto, ma " + persa.Motivo();
  }
  if (esito.interruzione.empty() && !canale.stato && canale.segnale.empty()) {
    esito.interruzione = " è finito senza che l'host ne dicesse l'esito";
  }
  esito.uscita = std::move(canale.uscita);
  esito.errori = std::move(canale.errori);
  if (canale.segnale.empty()) {
    esito.stato = canale.stato;
  }
  esito.segnale = canale.segnale;
  return esito;
}

} // namespace lumoscad::nexaro
