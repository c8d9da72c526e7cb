#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace lumoscad {

/// One changed instalment of the credits/debits screen. It always carries the old values of both attributes; the
/// two flags tell which change is to be applied. "#null#" stands for no value.
struct VariazioneCanalizzazione {
  std::string idPartitaKey;      ///< key of the open item
  std::string idMovimentoKey;    ///< key of the accounting movement; empty from the credits/debits screen
  std::string CodiceConto;       ///< account code
  std::string NumeroPartita;     ///< open-item number
  std::string Anno;              ///< document year; empty from the credits/debits screen
  std::string Serie;             ///< document series; empty from the credits/debits screen
  std::string Numero;            ///< document number; empty from the credits/debits screen
  std::string VecchiaBanca;      ///< present bank's account code
  std::string NuovaBanca;        ///< new bank's account code, "#null#" to remove the bank
  std::string ScadenzaOriginale; ///< original due date, "DD/MM/YYYY"
  std::string NumeroRata;        ///< instalment number
  std::string VecchiaScadenza;   ///< present due date, "DD/MM/YYYY"
  std::string NuovaScadenza;     ///< new due date, "DD/MM/YYYY"
  bool isBancaChanged = false;
  bool isScadenzaChanged = false;
};

/// One changed presumed document: a bank change of the presumed-documents screen or a delivery-date change.
struct VariazioneConsegna {
  std::string idOrdineKey;         ///< order key; no screen fills it
  std::int32_t idMovimentoKey = 0; ///< key of the document's movement
  std::string CodiceConto;         ///< account code
  std::string Serie;               ///< document series
  std::string Anno;                ///< document year, two characters
  std::string Numero;              ///< document number
  std::string VecchiaBanca;        ///< present bank's account code, "#null#" for none
  std::string NuovaBanca;          ///< new bank's account code, "#null#" for no bank
  std::string Consegna;            ///< present planned delivery date, "#null#" when empty
  std::string ConsegnaOrigine;     ///< original planned delivery date
  std::string NuovaConsegna;       ///< new planned delivery date, "#null#" when empty
  bool isBancaChanged = false;
  bool isConsegnaChanged = false;
};

using VariazioniCanalizzazione = std::vector<VariazioneCanalizzazione>;
using VariazioniConsegna = std::vector<VariazioneConsegna>;

} // namespace lumoscad
