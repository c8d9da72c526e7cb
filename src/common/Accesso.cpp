#include "common/Accesso.hpp"

#include "common/RigaComando.hpp"
#include "common/Testo.hpp"

#include <algorithm>
#include <array>
#include <utility>

namespace lumoscad {
namespace {

std::string PrimaDelPuntoEVirgola(const std::string& valore) {
  return std::string(SenzaSpaziAiLati(std::string_view(valore).substr(0, valore.find(';'))));
}

} // namespace

AccessoComando::AccessoComando(std::string_view comando) {
  const std::array<std::pair<std::string_view, std::string*>, 4> opzioni = {
      {{"-DB2SOURCE", &origine_}, {"-DB2USER", &utente_}, {"-DB2PASS", &parolaDOrdine_}, {"-DB2SCHEMA", &schema_}}};
  const RigaComando riga(comando);
  riga.Percorri([&](const std::string& nome, std::size_t posto) {
    for (const auto& [opzione, valore] : opzioni) {
      if (nome == opzione) {
        const std::string* const pezzo = riga.Pezzo(posto + 1);
        *valore = pezzo != nullptr ? *pezzo : std::string();
      }
    }
  });
  origine_.resize(std::min(origine_.size(), origine_.find(';')));
  utente_ = PrimaDelPuntoEVirgola(utente_);
  // The statements name the schema as it was given, and the password in its place where none was.
  schema_ = std::string(SenzaSpaziAiLati(schema_));
  if (schema_.empty()) {
    schema_ = SenzaSpaziAiLati(parolaDOrdine_);
  }
}

DatoAccesso AccessoComando::DaTenere(const std::string& valore) const {
  constexpr std::size_t PezzoCheDice = 4; // bytes
  const std::string segreta = Maiuscolo(SenzaSpaziAiLati(parolaDOrdine_));
  const std::string aperto = Maiuscolo(valore);
  const bool uguale = !segreta.empty() && aperto == segreta;
  if (uguale || (segreta.size() >= PezzoCheDice && aperto.find(segreta) != std::string::npos)) {
    return {true, true, {}};
  }
  return {true, false, valore};
}

std::optional<AccessoComando::Confronto> AccessoComando::SenzaTesti(const DatoAccesso& tenuto,
                                                                    const std::string& valore) const {
  if (tenuto.riservato && DaTenere(valore).riservato) {
    return Confronto::Uguale;
  }
  return !tenuto.detto || tenuto.riservato ? std::optional(Confronto::NonSiSa) : std::nullopt;
}

AccessoComando::Confronto AccessoComando::ConfrontaUtente(const DatoAccesso& tenuto) const {
  if (const auto detto = SenzaTesti(tenuto, utente_)) {
    return *detto;
  }
  if (tenuto.valore == utente_) {
    return Confronto::Uguale;
  }
  return tenuto.valore.empty() || utente_.empty() ? Confronto::NonSiSa : Confronto::Diverso;
}

AccessoComando::Confronto AccessoComando::ConfrontaSchema(const DatoAccesso& tenuto) const {
  if (const auto detto = SenzaTesti(tenuto, schema_)) {
    return *detto;
  }
  return tenuto.valore.empty() || Maiuscolo(tenuto.valore) == Maiuscolo(schema_) ? Confronto::Uguale
                                                                                 : Confronto::Diverso;
}

} // namespace lumoscad
