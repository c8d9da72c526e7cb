#include "screens/IncollaGriglia.hpp"

#include "common/Testo.hpp"
#include "common/Utilities.hpp"
#include "screens/Griglia.hpp"

#include <algorithm>
#include <map>
#include <unordered_map>

namespace lumoscad {
namespace {

/// The lines of what was pasted, without the blanks at their sides; the last may end or not.
std::vector<std::string> Testi(std::string_view testo) {
  std::string senzaCr(testo);
  std::erase(senzaCr, '\r');
  std::vector<std::string> testi = Dividi(senzaCr, '\n');
  while (testi.size() > 1 && testi.back().empty()) {
    testi.pop_back();
  }
  for (std::string& riga : testi) {
    riga = std::string(SenzaSpaziAiLati(riga));
  }
  return testi;
}

/// The place of a bank among the entries, by its code; nothing for an unknown one.
int PostoBanca(const BancheCombo& banche, const std::string& codice) {
  const auto trovata = std::find(banche.codici.begin(), banche.codici.end(), codice);
  return trovata == banche.codici.end() ? -1 : static_cast<int>(trovata - banche.codici.begin()) + 1;
}

} // namespace

void IncollaGriglia::Avvisa(std::string testo) {
  griglia_.Avvisa(std::move(testo));
}

bool IncollaGriglia::SonoDate(const std::vector<std::string>& testi, int colonna) const {
  const DescrizioneGriglia& d = griglia_.Descrizione();
  if (d.data.colonna < 0 || d.banca.colonna < 0) {
    return d.data.colonna >= 0;
  }
  return colonna == d.data.colonna || (colonna != d.banca.colonna && PostoBanca(griglia_.cmbBanche, testi.front()) < 0);
}

void IncollaGriglia::Incolla(std::string_view testo, int colonna) {
  if (!griglia_.Modificabile()) {
    return;
  }
  griglia_.Form_Click();
  const std::vector<std::size_t> righe = griglia_.Selezione().InVista();
  const std::vector<std::string> testi = Testi(testo);
  if (righe.empty() || (testi.size() == 1 && testi.front().empty())) {
    Avvisa("Niente da incollare");
    return;
  }
  if (testo.find('\t') != std::string_view::npos) {
    Avvisa("Non incollato: si incolla una colonna sola");
    return;
  }
  if (testi.size() != 1 && testi.size() != righe.size()) {
    Avvisa("Non incollato: " + Migliaia(testi.size()) + " valori per " + griglia_.QuanteRighe(righe.size()));
    return;
  }
  if (SonoDate(testi, colonna)) {
    IncollaDate(righe, testi);
  } else {
    IncollaBanche(righe, testi);
  }
}

void IncollaGriglia::IncollaDate(const std::vector<std::size_t>& righe, const std::vector<std::string>& testi) {
  const GestoGriglia gesto(griglia_, griglia_.Descrizione().nomeData + " incollata");
  std::unordered_map<std::string, std::string> giudicate;
  std::vector<const std::string*> nuove;
  for (std::size_t i = 0; i < righe.size(); ++i) {
    const std::string& testo = testi[testi.size() == 1 ? 0 : i];
    if (!MaggioreDiSpazio(testo)) {
      nuove.push_back(nullptr);
      continue;
    }
    const auto [giudicata, prima] = giudicate.try_emplace(griglia_.DataEspansa(testo, righe[i]));
    if (prima) {
      giudicata->second = Utilities::ControllaDataSenzaMessaggi(giudicata->first);
    }
    if (!MaggioreDiSpazio(giudicata->second)) {
      static_cast<void>(Utilities::ControllaData(giudicata->first)); // says what is wrong with it, once for all
      Avvisa("Non incollato: «" + testo + "» non è una data");
      return;
    }
    nuove.push_back(&giudicata->second);
  }
  for (std::size_t i = 0; i < righe.size(); ++i) {
    griglia_.ScriviTesto(righe[i], griglia_.Descrizione().data.colonna,
                         nuove[i] == nullptr ? griglia_.DataTolta(righe[i]) : std::string_view(*nuove[i]));
  }
  griglia_.Cambiata();
  Riferisci(righe.size(), griglia_.Descrizione().nomeData + " incollata");
}

void IncollaGriglia::IncollaBanche(const std::vector<std::size_t>& righe, const std::vector<std::string>& testi) {
  const NuovaBancaGriglia& banca = griglia_.Descrizione().banca;
  const BancheCombo& banche = banca.codiciInAlto ? griglia_.cmbBanche : griglia_.cmbBanche2;
  const GestoGriglia gesto(griglia_, "banca incollata");
  std::unordered_map<std::string, int> giudicate;
  std::map<int, std::vector<std::size_t>> perBanca;
  std::unordered_map<std::string_view, int> deiGruppi; // rows that go together get one bank
  for (std::size_t i = 0; i < righe.size(); ++i) {
    const std::string& testo = testi[testi.size() == 1 ? 0 : i];
    const auto [giudicata, prima] = giudicate.try_emplace(testo, -1);
    if (prima) {
      giudicata->second = PostoBanca(banche, testo);
    }
    if (giudicata->second < 0) {
      Avvisa("Non incollato: «" + testo + "» non è il codice di una banca");
      return;
    }
    if (banca.gruppo >= 0) {
      const auto delGruppo =
          deiGruppi.try_emplace(griglia_.righe.Testo(righe[i], banca.gruppo), giudicata->second).first;
      if (delGruppo->second != giudicata->second) {
        Avvisa("Non incollato: banche diverse per «" + std::string(delGruppo->first) + "»");
        return;
      }
    }
    perBanca[giudicata->second].push_back(righe[i]);
  }
  for (const auto& [indice, sue] : perBanca) {
    for (const std::size_t riga : sue) {
      griglia_.ScriviSpunta(riga, banca.spunta, true);
    }
    griglia_.AssegnaBanca(sue, indice, banche);
  }
  griglia_.Cambiata();
  Riferisci(righe.size(), "banca incollata");
}

void IncollaGriglia::Riferisci(std::size_t righe, std::string_view che) {
  const InsiemeRighe& mosse = griglia_.passi_.Mosse();
  std::string avviso = griglia_.QuanteRighe(mosse.Quante()) + ": " + std::string(che);
  if (mosse.Quante() < righe) {
    avviso += "; " + Migliaia(righe - mosse.Quante()) + " già così";
  }
  Avvisa(avviso + griglia_.NonInVista(mosse));
}

} // namespace lumoscad
