// Sequences of gestures at random, against the plainest model that there is: rows as structures, steps as copies of all
// of them.

#include "SchermataDiProva.hpp"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <random>
#include <set>

namespace lumoscad {
namespace {

using Tabella = frmLumoScadenzeBanche;

constexpr std::array<const char*, 2> Banche{"BANCA ALFA", "BANCA BETA"};
constexpr std::array<const char*, 2> Codici{"B06", "B02"};

/// A row as a person sees it.
struct RigaModello {
  std::string scadenza;
  std::string banca; ///< the present bank's code
  std::string nuova;
  std::string codice; ///< of the new bank
  std::string testo;
  std::string testoBanca; ///< the present bank's text
  bool data = false;
  bool conBanca = false; ///< ticked

  [[nodiscard]] bool operator==(const RigaModello&) const = default;
  [[nodiscard]] bool Variata() const {
    return (nuova != scadenza && !nuova.empty() && nuova != " ") ||
           (!codice.empty() && codice != banca && !(codice == "#null#" && banca.empty()));
  }
};

struct StatoModello {
  std::vector<RigaModello> righe;
  std::string inAlto;
  int bancaInAlto = 0;

  [[nodiscard]] bool operator==(const StatoModello&) const = default;
};

class Confronto : public test::GrigliaDiProva {
 protected:
  void TestBody() override {}

 public:
  explicit Confronto(unsigned seme) : generatore_(seme) {
    griglia.cmbBanche = griglia.cmbBanche2 = {{" ", Banche[0], Banche[1]}, {Codici[0], Codici[1]}};
    const std::size_t quante = 3 + Fino(12);
    for (std::size_t i = 0; i < quante; ++i) {
      const bool conBanca = Fino(1) == 1;
      const std::string scadenza = "1" + std::to_string(Fino(9)) + "/0" + std::to_string(1 + Fino(8)) + "/2006";
      Aggiungi(Conti[Fino(Conti.size() - 1)], scadenza, conBanca ? Banche[0] : "");
      ora_.righe.push_back({scadenza, conBanca ? Codici[0] : "", scadenza, "", conBanca ? Banche[0] : "",
                            conBanca ? Banche[0] : "", false, false});
    }
    griglia.Resize();
    scelte_ = {griglia.RigaVisibile(0)};
  }

  void Gesto() {
    if (griglia.Visibili() == 0) {
      Filtra(0);
    }
    switch (Fino(11)) {
    case 0:
      Seleziona(Posto());
      break;
    case 1:
    case 2:
      Estendi(Posto());
      break;
    case 3:
      griglia.Gestures()->ScegliVisibili();
      ScegliInVista(0, griglia.Visibili() - 1);
      break;
    case 4:
      Spunta(Posto(), 0);
      break;
    case 5:
      Spunta(Posto(), 1);
      break;
    case 6:
      Data(Posto());
      break;
    case 7:
      Banca(Posto());
      break;
    case 8:
      Filtra(Fino(3));
      break;
    case 9:
      griglia.TLwTestata_Click(std::array{1, 2, 5, 6}[Fino(3)]);
      break;
    case 10:
      Fino(1) == 0 ? Annulla() : Rifai();
      break;
    default:
      InAlto();
    }
  }

  void Confronta() const {
    for (std::size_t riga = 0; riga < ora_.righe.size(); ++riga) {
      const RigaModello& attesa = ora_.righe[riga];
      EXPECT_EQ(griglia.righe.Testo(riga, Tabella::NuovaScadenza), attesa.nuova) << riga;
      EXPECT_EQ(griglia.righe.Testo(riga, Tabella::NuovaBanca), attesa.testo) << riga;
      EXPECT_EQ(griglia.righe.Tag(riga, Tabella::NuovaBanca), attesa.codice) << riga;
      EXPECT_EQ(griglia.righe.Spuntata(riga, 0), attesa.data) << riga;
      EXPECT_EQ(griglia.righe.Spuntata(riga, 1), attesa.conBanca) << riga;
      EXPECT_EQ(griglia.Variata(riga), attesa.Variata()) << riga;
      EXPECT_EQ(griglia.Selezione().Contiene(riga), scelte_.count(riga) > 0) << riga;
    }
    EXPECT_EQ(griglia.Stato().dueDateText, ora_.inAlto);
    EXPECT_EQ(griglia.Stato().bankIndex, ora_.bancaInAlto);
    std::vector<std::size_t> variate;
    for (std::size_t riga = 0; riga < ora_.righe.size(); ++riga) {
      if (ora_.righe[riga].Variata()) {
        variate.push_back(riga);
      }
    }
    EXPECT_EQ(griglia.ElencoVariate(), variate);
  }

 private:
  static constexpr std::array<const char*, 3> Conti{"ALBA", "BRUNI", "CORTI"};

  [[nodiscard]] std::size_t Fino(std::size_t massimo) {
    return std::uniform_int_distribution<std::size_t>(0, massimo)(generatore_);
  }
  [[nodiscard]] std::size_t Posto() { return Fino(griglia.Visibili() - 1); }

  /// The rows that a gesture at this place means, from top to bottom.
  [[nodiscard]] std::vector<std::size_t> Del(std::size_t posto) const {
    std::vector<std::size_t> righe;
    if (scelte_.count(griglia.RigaVisibile(posto)) > 0) {
      for (std::size_t altro = 0; altro < griglia.Visibili(); ++altro) {
        if (scelte_.count(griglia.RigaVisibile(altro)) > 0) {
          righe.push_back(griglia.RigaVisibile(altro));
        }
      }
      return righe;
    }
    return {griglia.RigaVisibile(posto)};
  }

  /// A step from the rows as they were; one that changed nothing is none.
  void Passo(const StatoModello& prima) {
    if (!(prima == ora_)) {
      indietro_.push_back(prima);
      avanti_.clear();
    }
  }

  void Premi(std::size_t posto, int colonna) {
    const std::size_t riga = griglia.RigaVisibile(posto);
    const RowPress esito = griglia.Gestures()->Premi(posto, Mezzo(colonna), {});
    if (esito == RowPress::Plain) {
      griglia.Seleziona(static_cast<std::ptrdiff_t>(posto));
      scelte_ = {riga};
    }
    griglia.LVScadenze_MouseDown(Mezzo(colonna), 5);
    griglia.LVScadenze_Click(240);
  }

  void Seleziona(std::size_t posto) {
    scelte_ = {griglia.RigaVisibile(posto)};
    griglia.Seleziona(static_cast<std::ptrdiff_t>(posto));
  }

  void Estendi(std::size_t posto) {
    const std::size_t da = Posto();
    const std::size_t prima = griglia.RigaVisibile(da);
    const std::size_t ultima = griglia.RigaVisibile(posto);
    griglia.Seleziona(static_cast<std::ptrdiff_t>(da));
    // An edited row may have gone with the selection, and the last with it.
    for (std::size_t altro = 0; altro < griglia.Visibili(); ++altro) {
      if (griglia.RigaVisibile(altro) == ultima) {
        griglia.Gestures()->Vai(altro, {true, false});
        ScegliInVista(DoveSta(prima), altro);
        return;
      }
    }
    scelte_ = {prima};
  }

  [[nodiscard]] std::size_t DoveSta(std::size_t riga) const {
    std::size_t posto = 0;
    while (griglia.RigaVisibile(posto) != riga) {
      ++posto;
    }
    return posto;
  }

  void ScegliInVista(std::size_t primo, std::size_t ultimo) {
    scelte_.clear();
    for (std::size_t posto = std::min(primo, ultimo); posto <= std::max(primo, ultimo); ++posto) {
      scelte_.insert(griglia.RigaVisibile(posto));
    }
  }

  void Spunta(std::size_t posto, int quale) {
    const auto righe = Del(posto);
    const RigaModello& premuta = ora_.righe[griglia.RigaVisibile(posto)];
    const bool spunta = quale == 0 ? !premuta.data : !premuta.conBanca;
    const StatoModello prima = ora_;
    const bool vuota = ora_.inAlto.empty();
    for (const std::size_t riga : righe) {
      RigaModello& r = ora_.righe[riga];
      if (quale == 0 && r.data != spunta && (!spunta || !vuota)) {
        ora_.inAlto = spunta ? "20/01/2027" : ora_.inAlto;
        r.nuova = spunta ? "20/01/2027" : r.scadenza;
        r.data = spunta;
      } else if (quale == 1 && r.conBanca != spunta) {
        spunta ? Assegna(r, ora_.bancaInAlto) : Togli(r);
        r.conBanca = spunta;
      }
    }
    Premi(posto, quale == 0 ? Tabella::Radio1 : Tabella::Radio2);
    Passo(prima);
  }

  static void Togli(RigaModello& riga) {
    riga.codice.clear();
    riga.testo = riga.testoBanca;
  }
  static void Assegna(RigaModello& riga, int indice) {
    if (indice > 0) {
      riga.codice = Codici[static_cast<std::size_t>(indice) - 1];
      riga.testo = Banche[static_cast<std::size_t>(indice) - 1];
    } else if (riga.banca.empty()) {
      Togli(riga);
    } else {
      riga.codice = "#null#";
      riga.testo = "ANNULLA";
    }
  }

  void Data(std::size_t posto) {
    const auto righe = Del(posto);
    const StatoModello prima = ora_;
    const std::size_t quale = Fino(3);
    const std::array<std::string, 4> scritte{"150327", "", "310227", "160327"};
    Premi(posto, Tabella::NuovaScadenza);
    griglia.TextScad_Change(scritte[quale]);
    griglia.TextScad_KeyPress(13);
    for (const std::size_t riga : righe) {
      RigaModello& r = ora_.righe[riga];
      // A refused date leaves a blank in the cell of one row, and nothing in those of several.
      r.nuova = quale == 1                       ? r.scadenza
                : quale == 2 && righe.size() > 1 ? r.nuova
                : quale == 2                     ? " "
                : quale == 0                     ? "15/03/2027"
                                                 : "16/03/2027";
    }
    Passo(prima);
  }

  void Banca(std::size_t posto) {
    const auto righe = Del(posto);
    const StatoModello prima = ora_;
    const int indice = static_cast<int>(Fino(2));
    Premi(posto, Tabella::NuovaBanca);
    griglia.cmbBanche2_Click(indice);
    griglia.cmbBanche2_LostFocus();
    for (const std::size_t riga : righe) {
      Assegna(ora_.righe[riga], indice);
      ora_.righe[riga].conBanca = true;
    }
    Passo(prima);
  }

  void InAlto() {
    const StatoModello prima = ora_;
    if (Fino(1) == 0) {
      const std::string testo = Fino(2) == 0 ? "" : "200127";
      // Two texts without anything between them are one step.
      const bool unita = dataInAlto_ && !indietro_.empty() && avanti_.empty() && indietro_.size() == passiAllora_;
      griglia.TextScadenza_Change(testo);
      ora_.inAlto = testo;
      if (!unita) {
        Passo(prima);
      } else if (!(prima == ora_)) {
        avanti_.clear();
      }
      dataInAlto_ = !(prima == ora_) || unita;
      passiAllora_ = indietro_.size();
    } else {
      const int indice = static_cast<int>(Fino(2));
      griglia.cmbBanche_Click(indice);
      ora_.bancaInAlto = indice;
      for (RigaModello& riga : ora_.righe) {
        riga.conBanca = false;
      }
      Passo(prima);
    }
  }

  void Filtra(std::size_t quale) {
    const std::array<ListFilter, 4> filtri{ListFilter{}, ListFilter{"bruni"}, ListFilter{"", true, false},
                                           ListFilter{"", false, true}};
    const bool nuovo = !(griglia.Gestures()->Filtro() == filtri[quale]);
    griglia.Gestures()->Filtra(filtri[quale]);
    if (!nuovo) {
      return;
    }
    std::set<std::size_t> attese;
    for (std::size_t riga = 0; riga < ora_.righe.size(); ++riga) {
      const RigaModello& r = ora_.righe[riga];
      if (quale == 0 || (quale == 1 && griglia.righe.Testo(riga, Tabella::Conto) == "BRUNI") ||
          (quale == 2 && r.Variata()) || (quale == 3 && (r.data || r.conBanca))) {
        attese.insert(riga);
      }
    }
    std::set<std::size_t> inVista;
    for (std::size_t posto = 0; posto < griglia.Visibili(); ++posto) {
      inVista.insert(griglia.RigaVisibile(posto));
    }
    EXPECT_EQ(inVista, attese);
    if (scelte_.size() < 2 && griglia.RigaSelezionata()) {
      scelte_ = {*griglia.RigaSelezionata()};
    }
  }

  void Annulla() {
    griglia.Gestures()->Annulla();
    if (!indietro_.empty()) {
      avanti_.push_back(std::exchange(ora_, indietro_.back()));
      indietro_.pop_back();
      dataInAlto_ = false;
    }
  }
  void Rifai() {
    griglia.Gestures()->Rifai();
    if (!avanti_.empty()) {
      indietro_.push_back(std::exchange(ora_, avanti_.back()));
      avanti_.pop_back();
      dataInAlto_ = false;
    }
  }

  std::mt19937 generatore_;
  StatoModello ora_;
  std::vector<StatoModello> indietro_;
  std::vector<StatoModello> avanti_;
  std::set<std::size_t> scelte_;
  bool dataInAlto_ = false; ///< the last step is the text at the top
  std::size_t passiAllora_ = 0;
};

TEST(GesturesAtRandom, LeaveWhatTheModelLeaves) {
  const unsigned sequenze = std::getenv("LUMOSCAD_PER_INTERO") != nullptr ? 10000 : 300;
  for (unsigned seme = 1; seme <= sequenze && !testing::Test::HasFailure(); ++seme) {
    Confronto confronto(seme);
    for (int gesto = 0; gesto < 40 && !testing::Test::HasFailure(); ++gesto) {
      SCOPED_TRACE("sequence " + std::to_string(seme) + ", gesture " + std::to_string(gesto));
      confronto.Gesto();
      confronto.Confronta();
    }
  }
}

} // namespace
} // namespace lumoscad
