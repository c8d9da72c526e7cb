#include "platform/xml/Nodo.hpp"

#include "platform/RuntimeError.hpp"
#include "platform/xml/Decoding.hpp"
#include "platform/xml/WellFormed.hpp"

#include <pugixml.hpp>

#include <algorithm>

namespace lumoscad::xml {

namespace {

constexpr std::string_view Blanks = " \t\r\n";

bool OnlyBlanks(std::string_view text) {
  return text.find_first_not_of(Blanks) == std::string_view::npos;
}

[[noreturn]] void Refuse(const std::string& reason) {
  throw RuntimeError(errors::Driver, "Documento XML non valido: " + reason + ".");
}

/// Measures before anything recursive walks the tree.
class DepthGauge final : public pugi::xml_tree_walker {
 public:
  bool for_each(pugi::xml_node& node) override {
    if (node.type() == pugi::node_doctype) {
      doctypeFound_ = true;
    }
    if (node.type() == pugi::node_element && depth() + 1 > GreatestDepth) {
      tooDeep_ = true;
    }
    return !doctypeFound_ && !tooDeep_;
  }

  [[nodiscard]] bool DoctypeFound() const { return doctypeFound_; }
  [[nodiscard]] bool TooDeep() const { return tooDeep_; }

 private:
  bool doctypeFound_ = false;
  bool tooDeep_ = false;
};

bool Textual(const pugi::xml_node& node) {
  return node.type() == pugi::node_pcdata || node.type() == pugi::node_cdata;
}

/// The text that begins with `first` and goes on up to the next element: comments and instructions do not part it.
/// `first` moves to its last piece.
struct Run {
  std::string text;
  bool literal = false; ///< a CDATA section is part of it
};
Run ReadRun(pugi::xml_node& first) {
  Run run;
  for (auto node = first; node && Textual(node); node = node.next_sibling()) {
    run.text += node.value();
    run.literal = run.literal || node.type() == pugi::node_cdata;
    first = node;
  }
  return run;
}

bool ContainsElements(const pugi::xml_node& node) {
  const auto children = node.children();
  return std::any_of(children.begin(), children.end(), [](const auto& f) { return f.type() == pugi::node_element; });
}

Nodo Convert(const pugi::xml_node& source) {
  Nodo node;
  node.name = source.name();
  const bool containsElements = ContainsElements(source);
  for (auto child = source.first_child(); child; child = child.next_sibling()) {
    if (Textual(child)) {
      const Run run = ReadRun(child);
      const bool blank = OnlyBlanks(run.text);
      // Blanks between elements lay the document out; blanks alone in an element are its text.
      if (!blank || run.literal || !containsElements) {
        node.value += run.text;
      }
      node.containsText = node.containsText || !blank;
    } else if (child.type() == pugi::node_element) {
      node.children.push_back(Convert(child));
      node.value += node.children.back().value;
    }
  }
  return node;
}

/// The only element at the top; anything else there but blanks, comments and instructions is refused.
pugi::xml_node RootElement(const pugi::xml_document& document) {
  pugi::xml_node root;
  for (const auto& child : document.children()) {
    if (Textual(child) && !OnlyBlanks(child.value())) {
      Refuse("testo fuori dall'elemento principale");
    }
    if (child.type() == pugi::node_element) {
      if (root) {
        Refuse("più di un elemento principale");
      }
      root = child;
    }
  }
  if (!root) {
    Refuse("manca l'elemento principale");
  }
  return root;
}

} // namespace

Nodo Read(std::string_view document) {
  if (OnlyBlanks(document)) {
    Refuse("è vuoto");
  }
  if (document.size() > LargestSize) {
    Refuse("supera i 16 MiB");
  }
  const auto text = Decode(document);
  pugi::xml_document tree;
  constexpr unsigned Options = pugi::parse_default | pugi::parse_fragment | pugi::parse_doctype | pugi::parse_ws_pcdata;
  const auto outcome = tree.load_buffer(text.data(), text.size(), Options, pugi::encoding_utf8);
  DepthGauge depthGauge;
  tree.traverse(depthGauge);
  if (depthGauge.DoctypeFound()) {
    Refuse("contiene un DOCTYPE, che non è ammesso");
  }
  if (!outcome) {
    Refuse("la sintassi è errata al carattere " + std::to_string(outcome.offset + 1));
  }
  if (depthGauge.TooDeep()) {
    Refuse("gli elementi sono annidati oltre " + std::to_string(GreatestDepth) + " livelli");
  }
  for (const auto fault : {TextFault(text), NameFault(tree)}) {
    if (!fault.empty()) {
      Refuse(std::string(fault));
    }
  }
  return Convert(RootElement(tree));
}

} // namespace lumoscad::xml
