#include "platform/xml/BuonaForma.hpp"

#include "platform/base/AsciiCase.hpp"
#include "platform/base/Utf8.hpp"

#include <array>
#include <charconv>
#include <cstdint>
#include <optional>
#include <set>
#include <unordered_map>
#include <utility>
#include <vector>

namespace lumoscad::xml {

namespace {

bool CarattereAmmesso(std::uint32_t codice) {
  return codice == 0x9 || codice == 0xA || codice == 0xD || (codice >= 0x20 && codice <= 0xD7FF) ||
         (codice >= 0xE000 && codice <= 0xFFFD) || (codice >= 0x10000 && codice <= 0x10FFFF);
}

/// `nome` is what stands between "&" and ";".
bool RiferimentoValido(std::string_view nome) {
  static constexpr std::array<std::string_view, 5> predefiniti{"amp", "lt", "gt", "quot", "apos"};
  for (const auto& predefinito : predefiniti) {
    if (nome == predefinito) {
      return true;
    }
  }
  if (!nome.starts_with('#')) {
    return false;
  }
  const bool esadecimale = nome.starts_with("#x");
  const auto cifre = nome.substr(esadecimale ? 2 : 1);
  std::uint32_t codice = 0;
  const auto* fine = cifre.data() + cifre.size();
  const auto [arrivo, errore] = std::from_chars(cifre.data(), fine, codice, esadecimale ? 16 : 10);
  return errore == std::errc() && arrivo == fine && CarattereAmmesso(codice);
}

constexpr std::string_view carattereNonAmmesso = "contiene un carattere o un riferimento non ammesso";
constexpr std::string_view bianchi = " \t\r\n";

/// A comment that begins at `posizione`, which moves past it. "--" may only end it.
std::string_view SaltaCommento(std::string_view testo, std::size_t& posizione) {
  static constexpr std::string_view Inizio = "<!--";
  const auto trattini = testo.find("--", posizione + Inizio.size());
  if (trattini == std::string_view::npos || testo.substr(trattini + 2, 1) != ">") {
    return "contiene «--» dentro un commento";
  }
  posizione = trattini + 3;
  return {};
}

/// An instruction that begins at `posizione`, which moves past it. The name "xml" belongs to the declaration, which
/// stands before everything else.
std::string_view SaltaIstruzione(std::string_view testo, std::size_t& posizione) {
  const auto fine = testo.find("?>", posizione);
  const auto corpo = testo.substr(posizione + 2, fine == std::string_view::npos ? fine : fine - posizione - 2);
  const auto nome = corpo.substr(0, corpo.find_first_of(bianchi));
  if (base::SameButForCase(nome, "xml") && (posizione != 0 || nome != "xml")) {
    return "contiene una dichiarazione XML fuori posto";
  }
  posizione = fine == std::string_view::npos ? testo.size() : fine + 2;
  return {};
}

/// The converter of encodings lets values pass that are no characters.
bool SoloCaratteriAmmessi(std::string_view testo) {
  while (!testo.empty()) {
    const auto carattere = base::FirstCharacter(testo);
    if (carattere.length == 0 || !CarattereAmmesso(carattere.code)) {
      return false;
    }
    testo.remove_prefix(carattere.length);
  }
  return true;
}

/// `posizione` stands on a "&" and moves past its reference; false where none is written there.
bool SaltaRiferimento(std::string_view testo, std::size_t& posizione) {
  static constexpr std::size_t LunghezzaMassima = 16;
  const auto fine = testo.substr(posizione, LunghezzaMassima).find(';');
  if (fine == std::string_view::npos || !RiferimentoValido(testo.substr(posizione + 1, fine - 1))) {
    return false;
  }
  posizione += fine + 1;
  return true;
}

/// `posizione` stands on the quote that opens a value and moves past the one that closes it. A "<" may not stand
/// between them: the parser lets it pass, and what follows it would be taken for a section here.
bool SaltaValore(std::string_view testo, std::size_t& posizione) {
  const std::string_view arresti = testo[posizione] == '"' ? "\"<&" : "'<&";
  ++posizione;
  while ((posizione = testo.find_first_of(arresti, posizione)) != std::string_view::npos) {
    if (testo[posizione] == '<') {
      return false;
    }
    if (testo[posizione] != '&') {
      ++posizione;
      return true;
    }
    if (!SaltaRiferimento(testo, posizione)) {
      return false;
    }
  }
  return false;
}

/// `posizione` stands on the "<" of a tag and moves past its ">".
bool SaltaEtichetta(std::string_view testo, std::size_t& posizione) {
  ++posizione;
  while ((posizione = testo.find_first_of("'\"<>&", posizione)) != std::string_view::npos) {
    if (testo[posizione] == '>') {
      ++posizione;
      return true;
    }
    if (testo[posizione] == '<' || testo[posizione] == '&' || !SaltaValore(testo, posizione)) {
      return false;
    }
  }
  return false;
}

/// What begins with the "<" at `posizione`, which moves past it.
std::string_view SaltaMarcatura(std::string_view testo, std::size_t& posizione) {
  static constexpr std::string_view InizioLetterale = "<![CDATA[";
  const auto resto = testo.substr(posizione);
  if (resto.starts_with("<!--")) {
    return SaltaCommento(testo, posizione);
  }
  if (resto.starts_with("<?")) {
    return SaltaIstruzione(testo, posizione);
  }
  if (resto.starts_with(InizioLetterale)) {
    const auto fine = testo.find("]]>", posizione + InizioLetterale.size());
    posizione = fine == std::string_view::npos ? testo.size() : fine + 3;
    return {};
  }
  return SaltaEtichetta(testo, posizione) ? std::string_view() : carattereNonAmmesso;
}

constexpr std::string_view prefissoSenzaDichiarazione = "usa un prefisso che non dichiara";

/// The namespaces of each prefix that are declared at a place of the tree, the innermost last. A document may declare
/// as many as it has room for, and use each of them everywhere.
using Dichiarazioni = std::unordered_map<std::string_view, std::vector<std::string_view>>;

std::string_view Prefisso(std::string_view nome) {
  const auto dueparti = nome.find(':');
  return dueparti == std::string_view::npos ? std::string_view() : nome.substr(0, dueparti);
}

/// The namespace of a prefix; none where nothing declares it.
std::optional<std::string_view> Spazio(const Dichiarazioni& dichiarazioni, std::string_view prefisso) {
  const auto trovata = dichiarazioni.find(prefisso);
  return trovata == dichiarazioni.end() || trovata->second.empty() ? std::nullopt
                                                                   : std::optional(trovata->second.back());
}

std::string_view DifettoDegliAttributi(const pugi::xml_node& elemento, const Dichiarazioni& dichiarazioni) {
  std::set<std::string_view> nomi;
  std::set<std::pair<std::string_view, std::string_view>> conSpazio;
  for (const auto& attributo : elemento.attributes()) {
    const std::string_view nome = attributo.name();
    if (!nomi.insert(nome).second) {
      return "contiene due volte lo stesso attributo";
    }
    const auto prefisso = Prefisso(nome);
    if (prefisso.empty() || prefisso == "xmlns") {
      continue;
    }
    const auto spazio = Spazio(dichiarazioni, prefisso);
    if (!spazio) {
      return prefissoSenzaDichiarazione;
    }
    if (!conSpazio.emplace(*spazio, nome.substr(prefisso.size() + 1)).second) {
      return "contiene due volte lo stesso attributo";
    }
  }
  return {};
}

std::string_view DifettoDellElemento(const pugi::xml_node& elemento, Dichiarazioni& dichiarazioni) {
  std::vector<std::string_view> dichiarati;
  for (const auto& attributo : elemento.attributes()) {
    const std::string_view nome = attributo.name();
    if (Prefisso(nome) == "xmlns") {
      dichiarati.push_back(nome.substr(sizeof "xmlns"));
      dichiarazioni[dichiarati.back()].emplace_back(attributo.value());
    }
  }
  std::string_view difetto = DifettoDegliAttributi(elemento, dichiarazioni);
  const auto prefisso = Prefisso(elemento.name());
  if (difetto.empty() && !prefisso.empty() && !Spazio(dichiarazioni, prefisso)) {
    difetto = prefissoSenzaDichiarazione;
  }
  for (auto figlio = elemento.first_child(); figlio && difetto.empty(); figlio = figlio.next_sibling()) {
    if (figlio.type() == pugi::node_element) {
      difetto = DifettoDellElemento(figlio, dichiarazioni);
    }
  }
  for (const auto dichiarato : dichiarati) {
    dichiarazioni[dichiarato].pop_back();
  }
  return difetto;
}

} // namespace

std::string_view DifettoDelTesto(std::string_view testo) {
  if (!SoloCaratteriAmmessi(testo)) {
    return carattereNonAmmesso;
  }
  std::size_t posizione = 0;
  while ((posizione = testo.find_first_of("<&]", posizione)) != std::string_view::npos) {
    std::string_view difetto;
    if (testo[posizione] == '<') {
      difetto = SaltaMarcatura(testo, posizione);
    } else if (testo[posizione] == '&') {
      difetto = SaltaRiferimento(testo, posizione) ? difetto : carattereNonAmmesso;
    } else if (testo.substr(posizione).starts_with("]]>")) {
      difetto = "contiene «]]>» in un testo";
    } else {
      ++posizione;
    }
    if (!difetto.empty()) {
      return difetto;
    }
  }
  return {};
}

std::string_view DifettoDeiNomi(const pugi::xml_node& documento) {
  Dichiarazioni dichiarazioni{{"xml", {"http://www.w3.org/XML/1998/namespace"}}};
  return DifettoDellElemento(documento, dichiarazioni);
}

} // namespace lumoscad::xml
