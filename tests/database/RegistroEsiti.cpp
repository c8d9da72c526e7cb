#include "RegistroEsiti.hpp"

#include "support/Paths.hpp"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <iomanip>
#include <iostream>
#include <map>
#include <sstream>
#include <utility>

namespace lumoscad::test {
namespace {

/// Prints and keeps the tables when all tests are through.
class StampaEsiti final : public testing::Environment {
 public:
  void TearDown() override {
    const std::string tabelle = RegistroEsiti::Unico().Tabelle();
    std::cout << tabelle << '\n' << RegistroEsiti::Unico().Riassunto();
    // The second run, inside a calling program, goes on at the same time and has nothing else to tell; nor has that on
    // several servers.
    if (std::getenv("LUMOSCAD_PROVA_LOCALE") == nullptr && std::getenv("LUMOSCAD_PROVA_PIU_SERVER") == nullptr) {
      std::ofstream(test::BuildFolder() / "esiti.md") << tabelle;
    }
  }
};

[[maybe_unused]] const testing::Environment* const Stampa = testing::AddGlobalTestEnvironment(new StampaEsiti);

/// A text as one cell of a table.
std::string Cella(std::string testo) {
  for (std::size_t posto = 0; (posto = testo.find_first_of("\r\n|", posto)) != std::string::npos;) {
    testo.replace(posto, testo[posto] == '\r' ? 2 : 1, testo[posto] == '|' ? "/" : "<br>");
  }
  return testo;
}

/// One row a procedure, and for each point two columns: what was known before the component looked for the outcome, and
/// what the command said after it; a cell also says what the database held, and how many runs ended so.
void TabellaDeiTagli(std::ostream& testo, const std::vector<EsitoProvato>& esiti) {
  constexpr const char* Dopo = " dopo";
  std::vector<std::string> punti;
  std::vector<std::pair<std::string, std::string>> procedure;
  std::map<std::string, std::map<std::string, int>> celle;
  const auto aggiungi = [](auto& elenco, auto valore) {
    if (std::find(elenco.begin(), elenco.end(), valore) == elenco.end()) {
      elenco.push_back(std::move(valore));
    }
  };
  for (const EsitoProvato& esito : esiti) {
    aggiungi(punti, esito.punto);
    aggiungi(procedure, std::pair(esito.base, esito.procedura));
    const std::string prima = esito.base + esito.procedura + esito.punto;
    ++celle[prima][esito.dettoPrima + ", " + esito.tiene];
    ++celle[prima + Dopo][esito.detto + ", " + esito.tiene];
  }
  testo << "| base dati | procedura |";
  std::string riga = "|---|---|";
  for (const std::string& punto : punti) {
    testo << " " << punto << ": prima | e dopo la ricerca |";
    riga += "---|---|";
  }
  testo << "\n" << riga << "\n";
  for (const auto& [base, procedura] : procedure) {
    testo << "| " << base << " | " << procedura << " |";
    for (const std::string& punto : punti) {
      for (const char* quando : {"", Dopo}) {
        for (const auto& [esito, quanti] : celle[base + procedura + punto + quando]) {
          testo << " " << esito << " (" << quanti << ")";
        }
        testo << " |";
      }
    }
    testo << "\n";
  }
}

} // namespace

RegistroEsiti& RegistroEsiti::Unico() {
  static RegistroEsiti unico;
  return unico;
}

void RegistroEsiti::Annota(EsitoProvato esito) {
  esiti_.push_back(std::move(esito));
}

void RegistroEsiti::AnnotaGuasto(std::string base, std::string guasto, std::string messaggio, std::string tiene,
                                 double secondi) {
  guasti_.push_back({std::move(base), std::move(guasto), std::move(messaggio), std::move(tiene), secondi});
}

std::string RegistroEsiti::Riassunto() const {
  const auto quanti = [this](auto vale) { return std::to_string(std::count_if(esiti_.begin(), esiti_.end(), vale)); };
  const auto dice = [](const char* detto) { return [detto](const EsitoProvato& e) { return e.detto == detto; }; };
  const auto diceva = [](const char* detto) {
    return [detto](const EsitoProvato& e) { return e.dettoPrima == detto; };
  };
  return "esiti: " + std::to_string(esiti_.size()) + " prove, " + std::to_string(guasti_.size()) +
         " altri guasti; prima della ricerca dette applicate " + quanti(diceva("applicata")) + ", non applicate " +
         quanti(diceva("non applicata")) + ", sconosciute " + quanti(diceva("sconosciuta")) +
         "; dopo dette applicate " + quanti(dice("applicata")) + ", non applicate " + quanti(dice("non applicata")) +
         ", sconosciute " + quanti(dice("sconosciuta")) + "; a metà " +
         quanti([](const EsitoProvato& e) { return e.tiene != "come prima" && e.tiene != "tutta"; }) +
         ", dette applicate e non tenute " +
         quanti([](const EsitoProvato& e) { return e.detto == "applicata" && e.tiene != "tutta"; }) +
         ", dette non applicate e tenute " +
         quanti([](const EsitoProvato& e) { return e.detto == "non applicata" && e.tiene != "come prima"; }) + "\n";
}

std::string RegistroEsiti::Tabelle() const {
  std::ostringstream testo;
  TabellaDeiTagli(testo, esiti_);
  testo << "\n| base dati | guasto | messaggio | la base dati tiene | secondi |\n|---|---|---|---|---|\n";
  for (const Guasto& guasto : guasti_) {
    testo << "| " << guasto.base << " | " << guasto.guasto << " | " << Cella(guasto.messaggio) << " | " << guasto.tiene
          << " | " << std::fixed << std::setprecision(1) << guasto.secondi << " |\n";
  }
  return testo.str();
}

} // namespace lumoscad::test
