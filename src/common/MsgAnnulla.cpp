#include "common/MsgAnnulla.hpp"

#include "common/Testo.hpp"

namespace lumoscad {

MsgAnnulla::MsgAnnulla() {
  XMLParser.Parse = [this](const xml::Nodo& nodo) { XMLParser_Parse(nodo); };
}

void MsgAnnulla::XMLParser_Parse(const xml::Nodo& nodo) {
  for (const xml::Nodo& figlio : nodo.figli) {
    const std::string nome = Maiuscolo(figlio.nome);
    if (nome == "MESSAGGIO") {
      Messaggio = figlio.valore;
    } else if (nome == "ERRORE") {
      Errore = figlio.valore;
    }
  }
}

} // namespace lumoscad
