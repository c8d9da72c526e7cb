#include "screens/FiltroGriglia.hpp"

#include "platform/Services.hpp"
#include "platform/base/FoldedText.hpp"
#include "screens/GiornoDiCella.hpp"

#include <algorithm>
#include <array>
#include <compare>
#include <iterator>
#include <optional>

namespace lumoscad {
namespace {

constexpr std::uint8_t Ignoto = 0;
constexpr std::uint8_t No = 1;
constexpr std::uint8_t Si = 2;

bool Cifra(char c) {
  return c >= '0' && c <= '9';
}

bool Bianco(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

bool ContieneCifre(std::string_view testo) {
  return std::any_of(testo.begin(), testo.end(), Cifra);
}

/// The digits of an amount, or of a word that looks for one, and with `virgola` its "," too.
std::string Cifre(std::string_view testo, bool virgola) {
  std::string cifre;
  std::copy_if(testo.begin(), testo.end(), std::back_inserter(cifre),
               [virgola](char c) { return Cifra(c) || (virgola && c == ','); });
  return cifre;
}

/// An amount as typed: "1000", "1.000", "1000,5", "-1.000,50", "1000.50".
std::optional<ImportoEsatto> ImportoScritto(std::string_view testo) {
  const bool negativo = testo.starts_with('-');
  testo.remove_prefix(negativo || testo.starts_with('+') ? 1 : 0);
  auto separatore = testo.find(',');
  if (separatore == std::string_view::npos) {
    const auto punto = testo.find('.');
    const bool soloUno = punto != std::string_view::npos && punto == testo.rfind('.');
    separatore = soloUno && testo.size() - punto <= 3 ? punto : testo.size();
  }
  std::string decimali(testo.substr(std::min(separatore + 1, testo.size())));
  if (decimali.size() > 2) {
    return std::nullopt;
  }
  decimali.append(2 - decimali.size(), '0');
  return ImportoEsatto::Leggi((negativo ? "-" : "") + std::string(testo.substr(0, separatore)) + "," + decimali);
}

} // namespace

std::uint8_t& FiltroGriglia::Verdetti::Di(std::uint32_t numero) {
  const std::size_t blocco = numero / TestiUnici::PostiPerBlocco;
  if (blocco >= blocchi_.size()) {
    blocchi_.resize(blocco + 1);
  }
  if (blocchi_[blocco].empty()) {
    blocchi_[blocco].assign(TestiUnici::PostiPerBlocco, Ignoto);
  }
  return blocchi_[blocco][numero % TestiUnici::PostiPerBlocco];
}

FiltroGriglia::FiltroGriglia(std::string_view testo, const Colonne& colonne) : colonne_(colonne) {
  std::size_t i = 0;
  while (i < testo.size()) {
    if (Bianco(testo[i])) {
      ++i;
      continue;
    }
    const bool esclude = testo[i] == '-';
    i += esclude ? 1 : 0;
    const bool traVirgolette = i < testo.size() && testo[i] == '"';
    std::string parola;
    for (bool aperte = false; i < testo.size() && (aperte || !Bianco(testo[i])); ++i) {
      if (testo[i] == '"') {
        aperte = !aperte;
      } else {
        parola += testo[i];
      }
    }
    Leggi(parola, esclude, traVirgolette);
  }
}

void FiltroGriglia::Leggi(std::string_view parola, bool esclude, bool traVirgolette) {
  Condizione condizione;
  condizione.esclude = esclude;
  condizione.dove = In(colonne_.testi);
  const std::array<std::pair<std::string_view, std::vector<int>>, 4> nomi = {
      {{"conto:", {colonne_.conto}},
       {"partita:", {colonne_.partita}},
       {"ordine:", {colonne_.partita}},
       {"banca:", {colonne_.banca, colonne_.nuovaBanca}}}};
  std::string piegata = base::Folded(parola);
  if (!traVirgolette) {
    bool colonnaDetta = false;
    for (const auto& [nome, colonne] : nomi) {
      if (piegata.starts_with(nome)) {
        condizione.dove = In(colonne);
        piegata.erase(0, nome.size());
        colonnaDetta = true;
        break;
      }
    }
    if (!colonnaDetta && LeggiConfronto(parola, condizione)) {
      condizioni_.push_back(std::move(condizione));
      return;
    }
  }
  const bool soloSegni = !traVirgolette && piegata.find_first_not_of("<>=") == std::string::npos;
  if (piegata.empty() || soloSegni) {
    return;
  }
  if (piegata.find_first_not_of("0123456789.,") == std::string::npos && ContieneCifre(piegata)) {
    condizione.cifre = Cifre(piegata, true);
  }
  condizione.parola = std::move(piegata);
  condizioni_.push_back(std::move(condizione));
}

bool FiltroGriglia::LeggiConfronto(std::string_view testo, Condizione& condizione) const {
  constexpr std::array<std::pair<std::string_view, Confronto>, 5> Segni = {{{">=", Confronto::MaggioreUguale},
                                                                            {"<=", Confronto::MinoreUguale},
                                                                            {">", Confronto::Maggiore},
                                                                            {"<", Confronto::Minore},
                                                                            {"=", Confronto::Uguale}}};
  const auto* const segno =
      std::find_if(Segni.begin(), Segni.end(), [testo](const auto& s) { return testo.starts_with(s.first); });
  if (segno == Segni.end()) {
    return false;
  }
  condizione.confronto = segno->second;
  const std::string_view valore = testo.substr(segno->first.size());
  const bool data = valore.find('/') != std::string_view::npos;
  const auto giorno = data ? GiornoScritto(valore, ActiveServices().localTime().year) : std::nullopt;
  const auto importo = data ? std::nullopt : ImportoScritto(valore);
  if (giorno) {
    condizione.genere = Genere::Data;
    condizione.giorno = *giorno;
    condizione.dove = In(colonne_.date);
  } else if (importo) {
    condizione.genere = Genere::Importo;
    condizione.importo = *importo;
    condizione.dove = In(colonne_.importi);
  }
  return giorno || importo;
}

std::vector<FiltroGriglia::Dove> FiltroGriglia::In(const std::vector<int>& colonne) const {
  std::vector<Dove> dove;
  for (const int colonna : colonne) {
    if (colonna >= 0) {
      const auto& importi = colonne_.importi;
      dove.push_back({colonna, std::find(importi.begin(), importi.end(), colonna) != importi.end()});
    }
  }
  return dove;
}

bool FiltroGriglia::Confronta(Confronto confronto, std::strong_ordering ordine) {
  switch (confronto) {
  case Confronto::Maggiore:
    return std::is_gt(ordine);
  case Confronto::MaggioreUguale:
    return std::is_gteq(ordine);
  case Confronto::Minore:
    return std::is_lt(ordine);
  case Confronto::MinoreUguale:
    return std::is_lteq(ordine);
  case Confronto::Uguale:
    break;
  }
  return std::is_eq(ordine);
}

bool FiltroGriglia::Vale(const Condizione& condizione, std::string_view testo, bool importo) const {
  if (condizione.genere == Genere::Importo) {
    const auto letto = ImportoEsatto::Leggi(testo);
    return letto && Confronta(condizione.confronto, *letto <=> condizione.importo);
  }
  if (condizione.genere == Genere::Data) {
    const auto letto = GiornoDiCella(testo);
    return letto && Confronta(condizione.confronto, *letto <=> condizione.giorno);
  }
  base::Fold(testo, piegato_);
  if (piegato_.find(condizione.parola) != std::string::npos) {
    return true;
  }
  if (!importo || condizione.cifre.empty()) {
    return false;
  }
  const bool virgola = condizione.cifre.find(',') != std::string::npos;
  return Cifre(testo, virgola).find(condizione.cifre) != std::string::npos;
}

bool FiltroGriglia::ValePerRiga(const Condizione& condizione, const RigheGriglia& righe, std::size_t riga) const {
  constexpr unsigned BitDiUno = 2;
  constexpr unsigned Maschera = 3;
  for (const Dove& dove : condizione.dove) {
    std::uint8_t& verdetti = condizione.verdetti.Di(righe.NumeroTesto(riga, dove.colonna));
    const unsigned posto = dove.importo ? BitDiUno : 0;
    unsigned verdetto = verdetti >> posto & Maschera;
    if (verdetto == Ignoto) {
      verdetto = Vale(condizione, righe.Testo(riga, dove.colonna), dove.importo) ? Si : No;
      verdetti = static_cast<std::uint8_t>(verdetti | verdetto << posto);
    }
    if (verdetto == Si) {
      return true;
    }
  }
  return false;
}

bool FiltroGriglia::Passa(const RigheGriglia& righe, std::size_t riga) const {
  return std::all_of(condizioni_.begin(), condizioni_.end(), [&](const Condizione& condizione) {
    return ValePerRiga(condizione, righe, riga) != condizione.esclude;
  });
}

bool FiltroGriglia::ImplicaConfronto(const Condizione& questa, const Condizione& quella) {
  const auto ordine =
      questa.genere == Genere::Data ? questa.giorno <=> quella.giorno : questa.importo <=> quella.importo;
  const auto sopra = [](Confronto c) { return c == Confronto::Maggiore || c == Confronto::MaggioreUguale; };
  const auto sotto = [](Confronto c) { return c == Confronto::Minore || c == Confronto::MinoreUguale; };
  const bool piuStretta = questa.confronto == quella.confronto || quella.confronto == Confronto::MaggioreUguale ||
                          quella.confronto == Confronto::MinoreUguale;
  if (sopra(questa.confronto) && sopra(quella.confronto)) {
    return piuStretta ? std::is_gteq(ordine) : std::is_gt(ordine);
  }
  if (sotto(questa.confronto) && sotto(quella.confronto)) {
    return piuStretta ? std::is_lteq(ordine) : std::is_lt(ordine);
  }
  return questa.confronto == quella.confronto && std::is_eq(ordine);
}

bool FiltroGriglia::Implica(const Condizione& questa, const Condizione& quella) {
  const bool dentro = std::all_of(questa.dove.begin(), questa.dove.end(), [&](const Dove& dove) {
    return std::find(quella.dove.begin(), quella.dove.end(), dove) != quella.dove.end();
  });
  if (!dentro || questa.genere != quella.genere) {
    return false;
  }
  if (questa.genere != Genere::Parola) {
    return ImplicaConfronto(questa, quella);
  }
  // A word of digits may be found where what is not one, its "." for instance, is not written.
  return questa.parola.find(quella.parola) != std::string::npos && (questa.cifre.empty() || !quella.cifre.empty());
}

bool FiltroGriglia::Restringe(const FiltroGriglia& prima) const {
  return std::all_of(prima.condizioni_.begin(), prima.condizioni_.end(), [this](const Condizione& quella) {
    return std::any_of(condizioni_.begin(), condizioni_.end(), [&quella](const Condizione& questa) {
      return questa.esclude == quella.esclude && (questa.esclude ? Implica(quella, questa) : Implica(questa, quella));
    });
  });
}

void FiltroGriglia::Segna(const Condizione& condizione, std::string_view testo, bool importo, Tratti& tratti) {
  const auto segnaOgni = [&tratti](std::string_view dove, std::string_view che, const std::vector<std::size_t>& inizi) {
    for (auto trovato = dove.find(che); trovato != std::string_view::npos; trovato = dove.find(che, trovato + 1)) {
      std::size_t fine = trovato + che.size();
      while (inizi[fine] == inizi[fine - 1]) {
        ++fine; // of several letters that are one character in the text
      }
      tratti.emplace_back(inizi[trovato], inizi[fine]);
    }
  };
  const base::FoldedPlaces piegato = base::FoldedWithPlaces(testo);
  segnaOgni(piegato.folded, condizione.parola, piegato.begins);
  if (!importo || condizione.cifre.empty()) {
    return;
  }
  const bool virgola = condizione.cifre.find(',') != std::string::npos;
  std::string cifre;
  std::vector<std::size_t> inizi;
  for (std::size_t i = 0; i < testo.size(); ++i) {
    if (Cifra(testo[i]) || (virgola && testo[i] == ',')) {
      cifre += testo[i];
      inizi.push_back(i);
    }
  }
  for (auto trovato = cifre.find(condizione.cifre); trovato != std::string::npos;
       trovato = cifre.find(condizione.cifre, trovato + 1)) {
    tratti.emplace_back(inizi[trovato], inizi[trovato + condizione.cifre.size() - 1] + 1);
  }
}

std::vector<std::pair<std::size_t, std::size_t>> FiltroGriglia::Trovati(std::string_view testoCella,
                                                                        int colonna) const {
  Tratti tratti;
  for (const Condizione& condizione : condizioni_) {
    const auto dove = std::find_if(condizione.dove.begin(), condizione.dove.end(),
                                   [colonna](const Dove& d) { return d.colonna == colonna; });
    if (condizione.esclude || dove == condizione.dove.end()) {
      continue;
    }
    if (condizione.genere == Genere::Parola) {
      Segna(condizione, testoCella, dove->importo, tratti);
    } else if (Vale(condizione, testoCella, dove->importo)) {
      tratti.emplace_back(0, testoCella.size());
    }
  }
  std::sort(tratti.begin(), tratti.end());
  Tratti uniti;
  for (const auto& [inizio, fine] : tratti) {
    if (uniti.empty() || inizio > uniti.back().second) {
      uniti.emplace_back(inizio, fine);
    } else {
      uniti.back().second = std::max(uniti.back().second, fine);
    }
  }
  return uniti;
}

} // namespace lumoscad
