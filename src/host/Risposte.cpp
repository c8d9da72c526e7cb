#include "host/Risposte.hpp"

#include "common/Testo.hpp"

#include <initializer_list>
#include <string_view>
#include <utility>

namespace lumoscad {
namespace {

/// Copies the values of the named child elements; `lista`, when given, receives every "SCADENZE" element.
template <typename Lista>
void Copia(const xml::Nodo& nodo, std::initializer_list<std::pair<std::string_view, std::string*>> campi, Lista lista) {
  for (const xml::Nodo& figlio : nodo.children) {
    const std::string nome = Maiuscolo(figlio.name);
    for (const auto& [campo, valore] : campi) {
      if (nome == campo) {
        *valore = figlio.value;
      }
    }
    if (nome == "SCADENZE") {
      lista(figlio);
    }
  }
}

void Copia(const xml::Nodo& nodo, std::initializer_list<std::pair<std::string_view, std::string*>> campi) {
  Copia(nodo, campi, [](const xml::Nodo&) {});
}

/// Adds one item for every child of a list element, whatever its name, and lets it read that child.
template <typename Voce> void Aggiungi(std::vector<std::unique_ptr<Voce>>& voci, const xml::Nodo& elenco) {
  for (const xml::Nodo& figlio : elenco.children) {
    voci.push_back(std::make_unique<Voce>());
    voci.back()->XMLParser.Consegna(figlio);
  }
}

} // namespace

Scadenza::Scadenza() {
  XMLParser.Parse = [this](const xml::Nodo& nodo) { XMLParser_Parse(nodo); };
}

void Scadenza::XMLParser_Parse(const xml::Nodo& nodo) {
  Copia(nodo, {{"DATASCADENZA", &DataScadenza},
               {"TIPOPAGAMENTO", &TipoPagamento},
               {"IMPORTO", &Importo},
               {"SCADENZARIALLOCATA", &ScadenzaRiallocata}});
}

Partita::Partita() {
  XMLParser.Parse = [this](const xml::Nodo& nodo) { XMLParser_Parse(nodo); };
}

void Partita::XMLParser_Parse(const xml::Nodo& nodo) {
  Copia(nodo, {{"CONTO", &Conto}, {"DESCRIZIONECONTO", &DescrizioneConto}, {"PARTITASCAD", &ContoPartita}},
        [this](const xml::Nodo& elenco) { Aggiungi(Scadenze, elenco); });
}

ExtraScadenza::ExtraScadenza() {
  XMLParser.Parse = [this](const xml::Nodo& nodo) { XMLParser_Parse(nodo); };
}

void ExtraScadenza::XMLParser_Parse(const xml::Nodo& nodo) {
  Copia(nodo, {{"DATASCADENZA", &DataScadenza}, {"IMPORTO", &Importo}});
}

ExtraMovimento::ExtraMovimento() {
  XMLParser.Parse = [this](const xml::Nodo& nodo) { XMLParser_Parse(nodo); };
}

void ExtraMovimento::XMLParser_Parse(const xml::Nodo& nodo) {
  Copia(nodo, {{"SERIE", &Serie}, {"ESERCIZIO", &Esercizio}, {"NUMERO", &Numero}},
        [this](const xml::Nodo& elenco) { Aggiungi(Scadenze, elenco); });
}

CobolPartita::CobolPartita() {
  XMLParser.Parse = [this](const xml::Nodo& nodo) { XMLParser_Parse(nodo); };
}

void CobolPartita::XMLParser_Parse(const xml::Nodo& nodo) {
  Copia(nodo, {{"SCADENZA", &Scadenza}, {"IMPORTO", &Importo}, {"SCADRIALL", &ScadRiall}});
}

} // namespace lumoscad
