#include "platform/xml/Nodo.hpp"

#include "platform/Errore.hpp"
#include "platform/xml/BuonaForma.hpp"
#include "platform/xml/Decodifica.hpp"

#include <pugixml.hpp>

#include <algorithm>

namespace lumoscad::xml {

namespace {

constexpr std::string_view bianchi = " \t\r\n";

bool SoloBianchi(std::string_view testo) {
  return testo.find_first_not_of(bianchi) == std::string_view::npos;
}

[[noreturn]] void Rifiuta(const std::string& motivo) {
  throw ErroreRuntime(errori::Driver, "Documento XML non valido: " + motivo + ".");
}

/// Measures before anything recursive walks the tree.
class Profondimetro final : public pugi::xml_tree_walker {
 public:
  bool for_each(pugi::xml_node& nodo) override {
    if (nodo.type() == pugi::node_doctype) {
      haDoctype_ = true;
    }
    if (nodo.type() == pugi::node_element && depth() + 1 > ProfonditaMassima) {
      troppoProfondo_ = true;
    }
    return !haDoctype_ && !troppoProfondo_;
  }

  [[nodiscard]] bool HaDoctype() const { return haDoctype_; }
  [[nodiscard]] bool TroppoProfondo() const { return troppoProfondo_; }

 private:
  bool haDoctype_ = false;
  bool troppoProfondo_ = false;
};

bool IsTesto(const pugi::xml_node& nodo) {
  return nodo.type() == pugi::node_pcdata || nodo.type() == pugi::node_cdata;
}

/// The text that begins with `primo` and goes on up to the next element: comments and instructions do not part it.
/// `primo` moves to its last piece.
struct Tratto {
  std::string testo;
  bool letterale = false; ///< a CDATA section is part of it
};
Tratto LeggiTratto(pugi::xml_node& primo) {
  Tratto tratto;
  for (auto nodo = primo; nodo && IsTesto(nodo); nodo = nodo.next_sibling()) {
    tratto.testo += nodo.value();
    tratto.letterale = tratto.letterale || nodo.type() == pugi::node_cdata;
    primo = nodo;
  }
  return tratto;
}

bool HaElementi(const pugi::xml_node& nodo) {
  const auto figli = nodo.children();
  return std::any_of(figli.begin(), figli.end(), [](const auto& f) { return f.type() == pugi::node_element; });
}

Nodo Converti(const pugi::xml_node& sorgente) {
  Nodo nodo;
  nodo.nome = sorgente.name();
  const bool haElementi = HaElementi(sorgente);
  for (auto figlio = sorgente.first_child(); figlio; figlio = figlio.next_sibling()) {
    if (IsTesto(figlio)) {
      const Tratto tratto = LeggiTratto(figlio);
      const bool bianco = SoloBianchi(tratto.testo);
      // Blanks between elements lay the document out; blanks alone in an element are its text.
      if (!bianco || tratto.letterale || !haElementi) {
        nodo.valore += tratto.testo;
      }
      nodo.haTesto = nodo.haTesto || !bianco;
    } else if (figlio.type() == pugi::node_element) {
      nodo.figli.push_back(Converti(figlio));
      nodo.valore += nodo.figli.back().valore;
    }
  }
  return nodo;
}

/// The only element at the top; anything else there but blanks, comments and instructions is refused.
pugi::xml_node ElementoRadice(const pugi::xml_document& documento) {
  pugi::xml_node radice;
  for (const auto& figlio : documento.children()) {
    if (IsTesto(figlio) && !SoloBianchi(figlio.value())) {
      Rifiuta("testo fuori dall'elemento principale");
    }
    if (figlio.type() == pugi::node_element) {
      if (radice) {
        Rifiuta("più di un elemento principale");
      }
      radice = figlio;
    }
  }
  if (!radice) {
    Rifiuta("manca l'elemento principale");
  }
  return radice;
}

} // namespace

Nodo Leggi(std::string_view documento) {
  if (SoloBianchi(documento)) {
    Rifiuta("è vuoto");
  }
  if (documento.size() > DimensioneMassima) {
    Rifiuta("supera i 16 MiB");
  }
  const auto testo = Decodifica(documento);
  pugi::xml_document albero;
  constexpr unsigned opzioni = pugi::parse_default | pugi::parse_fragment | pugi::parse_doctype | pugi::parse_ws_pcdata;
  const auto esito = albero.load_buffer(testo.data(), testo.size(), opzioni, pugi::encoding_utf8);
  Profondimetro profondimetro;
  albero.traverse(profondimetro);
  if (profondimetro.HaDoctype()) {
    Rifiuta("contiene un DOCTYPE, che non è ammesso");
  }
  if (!esito) {
    Rifiuta("la sintassi è errata al carattere " + std::to_string(esito.offset + 1));
  }
  if (profondimetro.TroppoProfondo()) {
    Rifiuta("gli elementi sono annidati oltre " + std::to_string(ProfonditaMassima) + " livelli");
  }
  for (const auto difetto : {DifettoDelTesto(testo), DifettoDeiNomi(albero)}) {
    if (!difetto.empty()) {
      Rifiuta(std::string(difetto));
    }
  }
  return Converti(ElementoRadice(albero));
}

} // namespace lumoscad::xml
