#include "entry/RigheDubbie.hpp"

#include "common/Testo.hpp"
#include "common/Utilities.hpp"

#include <initializer_list>
#include <string>
#include <string_view>
#include <unordered_set>

namespace lumoscad {
namespace {

/// What a record finds, and what it makes of it, each as one text that says all by which its rows are known.
struct Passaggio {
  std::string partenza;
  std::string arrivo;
};

/// A text as the database compares it, or more broadly: two that it takes for one must not pass for two here.
std::string Confrontabile(std::string_view testo) {
  if (SenzaValore(testo)) {
    return {};
  }
  std::string valore(SenzaSpaziAiLati(testo));
  const std::string data = Utilities::DataIsoDaTesto(valore);
  return data.empty() ? Maiuscolo(valore) : data;
}

std::string Unisci(std::initializer_list<std::string_view> testi) {
  std::string tutti;
  for (const std::string_view testo : testi) {
    const std::string valore = Confrontabile(testo);
    tutti.append(std::to_string(valore.size())).append(1, ':').append(valore);
  }
  return tutti;
}

Passaggio PassaggioDi(const VariazioneCanalizzazione& v) {
  const std::string riga = Unisci({v.idPartitaKey, v.idMovimentoKey, v.NumeroRata, v.ScadenzaOriginale});
  return {riga + Unisci({v.VecchiaScadenza, v.VecchiaBanca}),
          riga + Unisci({v.isScadenzaChanged ? v.NuovaScadenza : v.VecchiaScadenza,
                         v.isBancaChanged ? v.NuovaBanca : v.VecchiaBanca})};
}

Passaggio PassaggioDellaBanca(const VariazioneConsegna& v) {
  const std::string riga = Unisci({std::to_string(v.idMovimentoKey), v.CodiceConto});
  return {riga + Unisci({v.VecchiaBanca}), riga + Unisci({v.NuovaBanca})};
}

Passaggio PassaggioDellaConsegna(const VariazioneConsegna& v) {
  const std::string riga = SenzaValore(v.idOrdineKey) ? std::to_string(v.idMovimentoKey) : v.idOrdineKey;
  return {Unisci({riga, v.Consegna}), Unisci({riga, v.NuovaConsegna})};
}

template <typename Variazioni, typename Di> std::vector<bool> Dubbie(const Variazioni& variazioni, Di passaggioDi) {
  std::unordered_set<std::string> arrivi;
  for (const auto& variazione : variazioni) {
    Passaggio passaggio = passaggioDi(variazione);
    if (passaggio.arrivo != passaggio.partenza) {
      arrivi.insert(std::move(passaggio.arrivo));
    }
  }
  std::vector<bool> dubbie;
  dubbie.reserve(variazioni.size());
  for (const auto& variazione : variazioni) {
    dubbie.push_back(arrivi.contains(passaggioDi(variazione).partenza));
  }
  return dubbie;
}

} // namespace

std::vector<bool> RigheDubbie(const ModificaChiesta& modifica) {
  switch (modifica.genere) {
  case ModificaChiesta::Genere::Canalizzazione:
    return Dubbie(modifica.canalizzazioni, PassaggioDi);
  case ModificaChiesta::Genere::BancaPresunti:
    return Dubbie(modifica.consegne, PassaggioDellaBanca);
  case ModificaChiesta::Genere::Consegna:
    return Dubbie(modifica.consegne, PassaggioDellaConsegna);
  case ModificaChiesta::Genere::Azione:
  case ModificaChiesta::Genere::Nessuna:
    break;
  }
  return {};
}

} // namespace lumoscad
