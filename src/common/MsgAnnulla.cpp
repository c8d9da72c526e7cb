#include "common/MsgAnnulla.hpp"

#include "common/Testo.hpp"

namespace lumoscad {

MsgAnnulla::MsgAnnulla() {
  XMLParser.Parse = [this](const xml::Nodo& nodo) { XMLParser_Parse(nodo); };
}

void MsgAnnulla::XMLParser_Parse(const xml::Nodo& nodo) {
  for (const xml::Nodo& figlio : nodo.children) {
    const std::string nome = Maiuscolo(figlio.name);
    if (nome == "MESSAGGIO") {
      Messaggio = figlio.value;
    } else if (nome == "ERRORE") {
      Errore = figlio.value;
    }
  }
}

} // namespace lumoscad
