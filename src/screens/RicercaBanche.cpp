#include "screens/RicercaBanche.hpp"

#include "common/Testo.hpp"
#include "platform/base/FoldedText.hpp"

#include <algorithm>
#include <string>
#include <vector>

namespace lumoscad {

BankMatches CercaBanche(const BancheCombo& banche, std::string_view testo) {
  const std::string cercato(SenzaSpaziAiLati(base::Folded(testo)));
  const std::vector<std::string> parole = Dividi(cercato, ' ');
  BankMatches trovate;
  bool comincia = false;
  std::string nome;
  std::string codice;
  for (std::size_t i = 0; i < banche.voci.size(); ++i) {
    base::Fold(banche.voci[i], nome);
    codice.clear();
    if (i > 0 && i <= banche.codici.size()) {
      base::Fold(banche.codici[i - 1], codice);
    }
    const bool passa = std::all_of(parole.begin(), parole.end(), [&](const std::string& parola) {
      return nome.find(parola) != std::string::npos || codice.find(parola) != std::string::npos;
    });
    if (!passa) {
      continue;
    }
    const int indice = static_cast<int>(i);
    trovate.entries.push_back(indice);
    const bool questa = !cercato.empty() && (nome.starts_with(cercato) || codice.starts_with(cercato));
    if (!cercato.empty() && (trovate.best < 0 || (questa && !comincia))) {
      trovate.best = indice;
      comincia = questa;
    }
  }
  return trovate;
}

} // namespace lumoscad
