#include "screens/EffettoVariazioni.hpp"

#include "common/Testo.hpp"
#include "platform/base/FoldedText.hpp"
#include "screens/GiornoDiCella.hpp"
#include "screens/Griglia.hpp"

#include <algorithm>
#include <optional>
#include <tuple>
#include <utility>

namespace lumoscad {
namespace {

constexpr int PerMese = 100; ///< what a day "YYYYMMDD" is divided by

std::optional<ImportoEsatto> ImportoDiRiga(const Griglia& griglia, std::size_t riga) {
  const int colonna = griglia.Descrizione().colonnaImporto;
  return colonna < 0 ? std::nullopt : ImportoEsatto::Leggi(griglia.righe.Testo(riga, colonna));
}

} // namespace

void SommePerDivisa::Aggiungi(std::string_view divisa, const ImportoEsatto& importo) {
  auto somma = std::find_if(somme_.begin(), somme_.end(), [divisa](const auto& s) { return s.first == divisa; });
  if (somma == somme_.end()) {
    somma = somme_.emplace(std::lower_bound(somme_.begin(), somme_.end(), divisa,
                                            [](const auto& s, std::string_view d) { return s.first < d; }),
                           std::string(divisa), ImportoEsatto());
  }
  somma->second += importo;
}

std::string SommePerDivisa::Testo() const {
  std::string testo;
  for (const auto& [divisa, somma] : somme_) {
    testo.append(testo.empty() ? "" : "; ").append(ConDivisa(somma, divisa));
  }
  return testo;
}

std::string ConDivisa(const ImportoEsatto& importo, std::string_view divisa) {
  return importo.Testo() + " " + std::string(divisa.empty() ? "€" : divisa);
}

std::string_view DivisaDiRiga(const Griglia& griglia, std::size_t riga) {
  const int colonna = griglia.Descrizione().colonnaDivisa;
  return colonna < 0 ? std::string_view() : griglia.righe.Testo(riga, colonna);
}

SommePerDivisa SommaRighe(const Griglia& griglia, const std::vector<std::size_t>& righe) {
  const int colonna = griglia.Descrizione().colonnaDivisa;
  SommePerDivisa somme;
  ImportoEsatto dellaDivisa; // of rows of one currency that follow one another
  std::optional<std::size_t> prima;
  for (const std::size_t riga : righe) {
    const auto importo = ImportoDiRiga(griglia, riga);
    if (!importo) {
      continue;
    }
    if (prima && colonna >= 0 &&
        griglia.righe.NumeroTesto(*prima, colonna) != griglia.righe.NumeroTesto(riga, colonna)) {
      somme.Aggiungi(DivisaDiRiga(griglia, *prima), std::exchange(dellaDivisa, {}));
    }
    dellaDivisa += *importo;
    prima = riga;
  }
  if (prima) {
    somme.Aggiungi(DivisaDiRiga(griglia, *prima), dellaDivisa);
  }
  return somme;
}

void EffettoVariazioni::Azzera() {
  conti_.clear();
}

bool EffettoVariazioni::Riguarda(Genere genere) const {
  const DescrizioneGriglia& d = griglia_.Descrizione();
  return d.colonnaImporto >= 0 && (genere == Genere::Banca ? d.banca.colonna >= 0 : d.data.colonna >= 0);
}

std::string EffettoVariazioni::Chiave(Genere genere, std::size_t riga, bool dopo) const {
  const DescrizioneGriglia& d = griglia_.Descrizione();
  if (genere == Genere::Banca) {
    const std::string_view codice =
        griglia_.righe.Tag(riga, dopo && griglia_.BancaVariata(riga) ? d.banca.colonna : d.colonnaBanca);
    return std::string(codice == Nullo ? std::string_view() : codice);
  }
  const int colonna = dopo && griglia_.DataVariata(riga) ? d.data.colonna : d.colonnaScadenza;
  const auto giorno = GiornoDiCella(griglia_.righe.Testo(riga, colonna));
  return giorno ? ConZeri(*giorno / PerMese, 6) : std::string();
}

std::string EffettoVariazioni::Nome(Genere genere, std::size_t riga, const std::string& chiave, bool dopo) const {
  const DescrizioneGriglia& d = griglia_.Descrizione();
  if (genere == Genere::Mese) {
    return chiave.empty() ? "senza data" : chiave.substr(4) + "/" + chiave.substr(0, 4);
  }
  if (chiave.empty()) {
    return "nessuna banca";
  }
  return std::string(
      griglia_.righe.Testo(riga, dopo && griglia_.BancaVariata(riga) ? d.banca.colonna : d.colonnaBanca));
}

EffettoVariazioni::Voce& EffettoVariazioni::VoceDi(Conti& conti, Genere genere, std::size_t riga, bool dopo) const {
  std::string chiave = Chiave(genere, riga, dopo);
  std::string divisa(DivisaDiRiga(griglia_, riga));
  const auto [conto, nuovo] = conti.try_emplace({chiave, divisa});
  if (nuovo) {
    conto->second.nome = Nome(genere, riga, chiave, dopo);
    conto->second.chiave = std::move(chiave);
    conto->second.divisa = std::move(divisa);
  }
  return conto->second;
}

std::uint64_t EffettoVariazioni::Numeri(Genere genere, std::size_t riga, bool dopo) const {
  const DescrizioneGriglia& d = griglia_.Descrizione();
  const RigheGriglia& righe = griglia_.righe;
  const std::uint64_t primo = genere == Genere::Banca
                                  ? righe.NumeroTag(riga, dopo ? d.banca.colonna : d.colonnaBanca)
                                  : righe.NumeroTesto(riga, dopo ? d.data.colonna : d.colonnaScadenza);
  const std::uint64_t secondo = d.colonnaDivisa < 0 ? 0 : righe.NumeroTesto(riga, d.colonnaDivisa);
  return primo << 32U | secondo;
}

EffettoVariazioni::Voce& EffettoVariazioni::VoceNota(NumeriNoti& noti, Conti& conti, Genere genere, std::size_t riga,
                                                     bool dopo) const {
  Voce*& voce = noti[Numeri(genere, riga, dopo)];
  if (voce == nullptr) {
    voce = &VoceDi(conti, genere, riga, dopo);
  }
  return *voce;
}

void EffettoVariazioni::Conta(Genere genere) {
  Conti& conti = conti_[genere];
  NumeriNoti noti;
  for (std::size_t riga = 0; riga < griglia_.righe.Quante(); ++riga) {
    if (const auto importo = ImportoDiRiga(griglia_, riga)) {
      Voce& voce = VoceNota(noti, conti, genere, riga, false);
      voce.prima += *importo;
      ++voce.righePrima;
    }
  }
  for (auto& [chiave, voce] : conti) {
    voce.dopo = voce.prima;
    voce.righeDopo = voce.righePrima;
  }
}

std::vector<EffettoVariazioni::Voce> EffettoVariazioni::Voci(Genere genere, const std::vector<std::size_t>& variate) {
  if (!Riguarda(genere)) {
    return {};
  }
  if (!conti_.contains(genere)) {
    Conta(genere);
  }
  Conti conti = conti_[genere];
  NumeriNoti prima;
  NumeriNoti dopo;
  for (const std::size_t riga : variate) {
    const bool sposta = genere == Genere::Banca ? griglia_.BancaVariata(riga) : griglia_.DataVariata(riga);
    const auto importo = sposta ? ImportoDiRiga(griglia_, riga) : std::nullopt;
    if (importo) {
      Voce& da = VoceNota(prima, conti, genere, riga, false);
      da.dopo -= *importo;
      --da.righeDopo;
      Voce& a = VoceNota(dopo, conti, genere, riga, true);
      a.dopo += *importo;
      ++a.righeDopo;
    }
  }
  std::vector<Voce> voci;
  for (auto& [chiave, voce] : conti) {
    voci.push_back(std::move(voce));
  }
  const auto ordine = [genere](const Voce& voce) {
    return std::make_tuple(voce.chiave.empty(), genere == Genere::Mese ? voce.chiave : base::Folded(voce.nome),
                           voce.divisa);
  };
  std::stable_sort(voci.begin(), voci.end(), [&](const Voce& a, const Voce& b) { return ordine(a) < ordine(b); });
  return voci;
}

bool EffettoVariazioni::RigheDietro::Contiene(std::size_t riga) const {
  const Griglia& griglia = effetto_->griglia_;
  const auto passa = [&](bool dopo) {
    return DivisaDiRiga(griglia, riga) == divisa_ && effetto_->Chiave(genere_, riga, dopo) == chiave_;
  };
  const auto [nota, nuova] = note_.try_emplace(effetto_->Numeri(genere_, riga, false), false);
  if (nuova) {
    nota->second = passa(false);
  }
  return nota->second ||
         ((genere_ == Genere::Banca ? griglia.BancaVariata(riga) : griglia.DataVariata(riga)) && passa(true));
}

} // namespace lumoscad
