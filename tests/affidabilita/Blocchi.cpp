#include "Blocchi.hpp"

#include <algorithm>

namespace lumoscad::test {
namespace {

/// One command's time with a lock.
struct Presa {
  std::string comando;
  Istante letto = 0;     ///< began to look whether it is free
  Istante lettoFine = 0; ///< had looked
  Istante scritto = 0;   ///< began to put its own in place
  Istante dentro = 0;    ///< had it in place
  Istante fuori = 0;     ///< began to remove it
  Istante fuoriFine = 0; ///< had removed it
};

using Prese = std::map<std::string, std::vector<Presa>>;

void Leggi(const Eseguito& comando, Prese& prese, std::map<std::string, ContoBlocco>& conti) {
  Presa presa;
  presa.comando = comando.nome;
  for (const Operazione& operazione : comando.operazioni) {
    ContoBlocco& conto = conti[operazione.blocco];
    if (operazione.genere == "LETTO") {
      presa.letto = operazione.inizio;
      presa.lettoFine = operazione.fine;
      conto.rifiutati += operazione.riuscita ? 1U : 0U;
    } else if (operazione.genere == "BLOCCATO" && operazione.riuscita) {
      presa.scritto = operazione.inizio;
      presa.dentro = operazione.fine;
      ++conto.presi;
    } else {
      presa.fuori = operazione.inizio;
      presa.fuoriFine = operazione.fine;
      conto.rimossi += operazione.genere == "AMMINISTRATORE" ? 1U : 0U;
      prese[operazione.blocco].push_back(presa);
    }
  }
}

/// Somebody else removed the file while it was the first one's.
bool TolteDaAltri(const std::vector<Presa>& prese, const Presa& prima, const Presa& seconda) {
  return std::any_of(prese.begin(), prese.end(), [&](const Presa& altra) {
    return altra.comando != prima.comando && altra.fuori <= seconda.lettoFine && altra.fuoriFine >= prima.scritto;
  });
}

void Confronta(const std::vector<Presa>& prese, const Presa& prima, const Presa& seconda, ContoBlocco& conto) {
  if (seconda.dentro >= prima.fuori) {
    return;
  }
  ++conto.insieme;
  if (seconda.letto <= prima.dentro) {
    ++conto.perIntervallo;
  } else if (TolteDaAltri(prese, prima, seconda)) {
    ++conto.perRilascio;
  } else {
    conto.inspiegati.push_back(prima.comando + " " + seconda.comando);
  }
}

std::size_t Massimo(const std::vector<Presa>& prese) {
  std::size_t massimo = 0;
  for (const Presa& presa : prese) {
    const auto insieme = std::count_if(prese.begin(), prese.end(), [&](const Presa& altra) {
      return altra.dentro <= presa.dentro && presa.dentro < altra.fuori;
    });
    massimo = std::max(massimo, static_cast<std::size_t>(insieme));
  }
  return massimo;
}

} // namespace

std::map<std::string, ContoBlocco> ContaBlocchi(const std::vector<Eseguito>& comandi) {
  Prese tutte;
  std::map<std::string, ContoBlocco> conti;
  for (const Eseguito& comando : comandi) {
    Leggi(comando, tutte, conti);
  }
  for (auto& [blocco, prese] : tutte) {
    std::sort(prese.begin(), prese.end(), [](const Presa& a, const Presa& b) { return a.dentro < b.dentro; });
    ContoBlocco& conto = conti[blocco];
    for (std::size_t prima = 0; prima < prese.size(); ++prima) {
      for (std::size_t seconda = prima + 1; seconda < prese.size(); ++seconda) {
        Confronta(prese, prese[prima], prese[seconda], conto);
      }
    }
    conto.massimo = Massimo(prese);
  }
  return conti;
}

} // namespace lumoscad::test
