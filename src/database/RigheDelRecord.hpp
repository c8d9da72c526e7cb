#pragma once

#include "common/Variazioni.hpp"
#include "database/Aggiornamento.hpp"
#include "database/Riscontri.hpp"

#include <string>
#include <string_view>
#include <vector>

namespace lumoscad::procedureLumoDB2 {

/// The rows that a record of a list stands for, in the words of the statements that change them, and of those that look
/// whether they were changed. Each raises error 13 for a date of the record that is none.
///
/// `Colpite` names the rows that the record's change hits: the tables and a condition with the old values. `Tutte`
/// names them whatever they hold now. `ComeNuove` is the condition that they meet once changed. A record `SenzaChiavi`
/// names no row: it changes nothing, and that is no failure. `Scritte`, of a change that knows no keys of its rows,
/// names those which the condition of `Colpite` would hit if the new value were the old one. The keys of its accounts
/// are given; an empty one stands for none.

/// The instalments of a row of the credits or debits list.
class RigheScadenza {
 public:
  RigheScadenza(const VariazioneCanalizzazione& variazione, std::string vecchiaBanca, std::string nuovaBanca);

  [[nodiscard]] std::string Colpite() const;
  [[nodiscard]] std::string Tutte() const;
  [[nodiscard]] std::string ComeNuove() const;
  /// The old values of what changes, as a condition.
  [[nodiscard]] std::string ComeVecchie() const;
  /// The new values as assignments.
  [[nodiscard]] std::string Assegna() const;
  [[nodiscard]] static bool SenzaChiavi() noexcept { return false; }
  /// The values of the markers of `Colpite` and of `Tutte`.
  [[nodiscard]] std::vector<std::string> Valori() const { return {variazione_->idPartitaKey}; }

 private:
  [[nodiscard]] std::string Come(const std::string& scadenza, const std::string& banca) const;

  const VariazioneCanalizzazione* variazione_;
  std::string vecchiaBanca_;
  std::string nuovaBanca_;
};

/// The events of a presumed document, as the credits list changes their bank.
class RighePresunto {
 public:
  RighePresunto(const VariazioneCanalizzazione& variazione, std::string vecchiaBanca, std::string nuovaBanca);

  [[nodiscard]] bool SenzaChiavi() const noexcept { return senzaChiavi_; }
  [[nodiscard]] std::string Dove() const; ///< the condition of `Colpite`
  [[nodiscard]] std::string Colpite() const { return "EVENTOCONTABILE " + Dove(); }
  [[nodiscard]] std::string Scritte() const;
  [[nodiscard]] std::string Tutte() const;
  [[nodiscard]] std::string ComeNuove() const;
  [[nodiscard]] std::string Assegna() const;
  [[nodiscard]] const std::vector<std::string>& Valori() const noexcept { return valori_; }

 private:
  [[nodiscard]] std::string DoveE(const std::string& valore) const;
  [[nodiscard]] std::string Scadenza() const;

  const VariazioneCanalizzazione* variazione_;
  std::string vecchiaBanca_;
  std::string nuovaBanca_;
  bool senzaChiavi_ = false;
  std::string chiave_;
  std::vector<std::string> valori_;
};

/// The events of a presumed document whose bank changes.
class RigheBanca {
 public:
  RigheBanca(const VariazioneConsegna& variazione, std::string vecchiaBanca, std::string nuovaBanca, std::string conto);

  [[nodiscard]] bool SenzaChiavi() const noexcept { return variazione_->idMovimentoKey == 0; }
  [[nodiscard]] std::string Dove() const; ///< the condition of `Colpite`
  [[nodiscard]] std::string Colpite() const { return "EVENTOCONTABILE " + Dove(); }
  [[nodiscard]] std::string Scritte() const;
  [[nodiscard]] std::string Tutte() const;
  [[nodiscard]] std::string ComeNuove() const;
  [[nodiscard]] std::string Assegna() const;
  [[nodiscard]] std::vector<std::string> Valori() const { return {std::to_string(variazione_->idMovimentoKey)}; }

 private:
  [[nodiscard]] std::string DoveE(const std::string& valore) const;
  const VariazioneConsegna* variazione_;
  std::string vecchiaBanca_;
  std::string nuovaBanca_;
  std::string conto_;
};

/// The events of a presumed document whose delivery date changes.
class RigheConsegna {
 public:
  explicit RigheConsegna(const VariazioneConsegna& variazione);

  [[nodiscard]] bool SenzaChiavi() const noexcept { return !conOrdine_ && variazione_->idMovimentoKey == 0; }
  [[nodiscard]] std::string Dove() const; ///< the condition of `Colpite`
  [[nodiscard]] std::string Colpite() const { return "EVENTOCONTABILE " + Dove(); }
  [[nodiscard]] std::string Scritte() const;
  [[nodiscard]] std::string Tutte() const;
  [[nodiscard]] std::string ComeNuove() const;
  [[nodiscard]] std::string Assegna() const;
  [[nodiscard]] const std::vector<std::string>& Valori() const noexcept { return valori_; }

 private:
  [[nodiscard]] std::string DoveE(const std::string& valore) const;
  const VariazioneConsegna* variazione_;
  bool conOrdine_;
  std::vector<std::string> valori_;
};

/// The same with the keys of the record's accounts, which are looked up now, in this order: the old bank's, the new
/// one's, the account's own. Raise the look-up's failure.
[[nodiscard]] RigheScadenza CercaRigheScadenza(Aggiornamento& aggiornamento,
                                               const VariazioneCanalizzazione& variazione);
[[nodiscard]] RighePresunto CercaRighePresunto(Aggiornamento& aggiornamento,
                                               const VariazioneCanalizzazione& variazione);
[[nodiscard]] RigheBanca CercaRigheBanca(Aggiornamento& aggiornamento, const VariazioneConsegna& variazione);

/// Changes the rows that `righe` hits. Returns false where there were none and they do not hold the new values either:
/// somebody else had changed them, and they are left so.
template <typename Righe> bool CambiaORimane(Aggiornamento& aggiornamento, Righe righe) {
  std::string istruzione = "UPDATE EVENTOCONTABILE SET " + righe.Assegna();
  istruzione += righe.Dove();
  const bool cambiate = aggiornamento.Cambia(istruzione, righe.Valori());
  if (aggiornamento.Alterate() > 0) {
    const PrimaEDopo prima{righe.Colpite(), righe.Scritte(), righe.Valori()};
    const auto scritte = aggiornamento.ChiediAllaConferma(DomandaDelleScritte(prima));
    aggiornamento.Annota([prima, scritte, quante = aggiornamento.Alterate()](ado::Connection& connection) {
      return RiscontroPerQuante(connection, prima, quante, *scritte);
    });
    return true;
  }
  return cambiate || righe.SenzaChiavi() || aggiornamento.GiaCosi(righe.Tutte(), righe.Valori(), righe.ComeNuove());
}

} // namespace lumoscad::procedureLumoDB2
