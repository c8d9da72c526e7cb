#include "Bersagli.hpp"

#include "common/MsgAnnulla.hpp"
#include "common/Testo.hpp"
#include "host/Risposte.hpp"
#include "platform/RuntimeError.hpp"
#include "platform/xml/Nodo.hpp"

#include <optional>

namespace lumoscad::fuzz {
namespace {

std::optional<xml::Nodo> Leggi(std::string_view documento) {
  try {
    return xml::Read(documento);
  } catch (const RuntimeError& errore) {
    Esigi(errore.Number() == errors::Driver, "numero d'errore sconosciuto");
    Esigi(errore.Description().starts_with("Documento XML ") && TestoPulito(errore.Description()) &&
              errore.Description().size() < 200,
          "errore sconosciuto");
    return std::nullopt;
  }
}

/// Every text is clean; returns the depth below and including `nodo`.
int Controlla(const xml::Nodo& nodo) {
  Esigi(!nodo.name.empty() && TestoPulito(nodo.name), "un nome che non è un nome");
  Esigi(TestoPulito(nodo.value), "un testo che non è UTF-8");
  int profondita = 0;
  for (const xml::Nodo& figlio : nodo.children) {
    profondita = std::max(profondita, Controlla(figlio));
    Esigi(nodo.value.find(figlio.value) != std::string::npos, "il testo di un figlio manca nel padre");
  }
  return profondita + 1;
}

std::string Scritto(const xml::Nodo& nodo) {
  std::string testo = "<" + nodo.name + ">";
  if (nodo.children.empty()) {
    for (const char c : nodo.value) {
      testo += c == '<' || c == '>' || c == '&' || c == '\r' ? "&#" + std::to_string(c) + ";" : std::string(1, c);
    }
  }
  for (const xml::Nodo& figlio : nodo.children) {
    testo += Scritto(figlio);
  }
  return testo + "</" + nodo.name + ">";
}

/// Blanks between elements are no children: a text of blanks beside elements is not written again.
bool StessoAlbero(const xml::Nodo& a, const xml::Nodo& b) {
  if (a.name != b.name || a.children.size() != b.children.size() || (a.children.empty() && a.value != b.value)) {
    return false;
  }
  for (std::size_t i = 0; i < a.children.size(); ++i) {
    if (!StessoAlbero(a.children[i], b.children[i])) {
      return false;
    }
  }
  return true;
}

/// What a class must hold for an element: the text of its last occurrence among the children.
std::string Ultimo(const xml::Nodo& nodo, std::string_view elemento) {
  std::string ultimo;
  for (const xml::Nodo& figlio : nodo.children) {
    ultimo = Maiuscolo(figlio.name) == elemento ? figlio.value : ultimo;
  }
  return ultimo;
}

std::vector<const xml::Nodo*> Voci(const xml::Nodo& nodo) {
  std::vector<const xml::Nodo*> voci;
  for (const xml::Nodo& figlio : nodo.children) {
    if (Maiuscolo(figlio.name) == "SCADENZE") {
      for (const xml::Nodo& voce : figlio.children) {
        voci.push_back(&voce);
      }
    }
  }
  return voci;
}

void EsigiUltimo(const xml::Nodo& nodo, std::string_view elemento, const std::string& valore) {
  Esigi(valore == Ultimo(nodo, elemento), elemento);
}

void LeggiMessaggio(const xml::Nodo& nodo) {
  MsgAnnulla risposta;
  risposta.XMLParser.Consegna(nodo);
  EsigiUltimo(nodo, "MESSAGGIO", risposta.Messaggio);
  EsigiUltimo(nodo, "ERRORE", risposta.Errore);
}

void LeggiPartita(const xml::Nodo& nodo) {
  Partita risposta;
  risposta.XMLParser.Consegna(nodo);
  EsigiUltimo(nodo, "CONTO", risposta.Conto);
  EsigiUltimo(nodo, "DESCRIZIONECONTO", risposta.DescrizioneConto);
  EsigiUltimo(nodo, "PARTITASCAD", risposta.ContoPartita);
  const auto voci = Voci(nodo);
  Esigi(risposta.Scadenze.size() == voci.size(), "una scadenza per ogni figlio dell'elenco");
  for (std::size_t i = 0; i < voci.size(); ++i) {
    EsigiUltimo(*voci[i], "DATASCADENZA", risposta.Scadenze[i]->DataScadenza);
    EsigiUltimo(*voci[i], "TIPOPAGAMENTO", risposta.Scadenze[i]->TipoPagamento);
    EsigiUltimo(*voci[i], "IMPORTO", risposta.Scadenze[i]->Importo);
    EsigiUltimo(*voci[i], "SCADENZARIALLOCATA", risposta.Scadenze[i]->ScadenzaRiallocata);
  }
}

void LeggiExtra(const xml::Nodo& nodo) {
  ExtraMovimento risposta;
  risposta.XMLParser.Consegna(nodo);
  EsigiUltimo(nodo, "SERIE", risposta.Serie);
  EsigiUltimo(nodo, "ESERCIZIO", risposta.Esercizio);
  EsigiUltimo(nodo, "NUMERO", risposta.Numero);
  const auto voci = Voci(nodo);
  Esigi(risposta.Scadenze.size() == voci.size(), "una scadenza extra per ogni figlio dell'elenco");
  for (std::size_t i = 0; i < voci.size(); ++i) {
    EsigiUltimo(*voci[i], "DATASCADENZA", risposta.Scadenze[i]->DataScadenza);
    EsigiUltimo(*voci[i], "IMPORTO", risposta.Scadenze[i]->Importo);
  }
}

void LeggiCobol(const xml::Nodo& nodo) {
  CobolPartita risposta;
  risposta.XMLParser.Consegna(nodo);
  EsigiUltimo(nodo, "SCADENZA", risposta.Scadenza);
  EsigiUltimo(nodo, "IMPORTO", risposta.Importo);
  EsigiUltimo(nodo, "SCADRIALL", risposta.ScadRiall);
}

} // namespace

void Risposta(Ingresso ingresso) {
  const std::string_view documento = Testo(ingresso);
  const auto nodo = Leggi(documento);
  if (!nodo) {
    return;
  }
  // Elsewhere than between plain elements, and in other encodings, the same bytes are text.
  const bool semplice = documento.find_first_of("\xFE\xFF'\"?[-") == std::string_view::npos;
  Esigi(!semplice || documento.find("<!DOCTYPE") == std::string_view::npos, "un DOCTYPE è passato");
  Esigi(Controlla(*nodo) <= xml::GreatestDepth, "troppo profondo");
  const auto riletto = Leggi(Scritto(*nodo));
  Esigi(riletto && StessoAlbero(*nodo, *riletto), "riscritto e riletto non è più lo stesso");
  LeggiMessaggio(*nodo);
  LeggiPartita(*nodo);
  LeggiExtra(*nodo);
  LeggiCobol(*nodo);
}

} // namespace lumoscad::fuzz
