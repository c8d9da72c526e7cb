// Sequences of gestures at random on the presumed documents, whose rows go together and whose amounts have currencies.

#include "SequenzaACaso.hpp"

#include "screens/FormPresunti.hpp"
#include "support/TestBench.hpp"

#include <array>

namespace lumoscad {
namespace {

constexpr std::array<const char*, 2> BanchePresunti{"BANCA ALFA", "BANCA BETA"};
constexpr std::array<const char*, 2> CodiciPresunti{"B06", "B02"};
constexpr const char* BancaVecchia = "BANCA VECCHIA"; ///< of rows that have one; no entry of the boxes
constexpr const char* CodiceVecchio = "B99";

struct RigaPresunta {
  std::string conto;
  std::string documento;
  std::string consegna; ///< "YYYY/MM/DD"
  std::string divisa;
  std::int64_t centesimi = 0;
  std::string banca; ///< the present one's code
  std::string codice;
  std::string testo; ///< of the new bank
  bool conBanca = false;

  [[nodiscard]] bool operator==(const RigaPresunta&) const = default;
  [[nodiscard]] bool Spuntata() const { return conBanca; }
  [[nodiscard]] bool Variata() const {
    return !codice.empty() && codice != banca && !(codice == "#null#" && banca.empty());
  }
};

struct StatoPresunti {
  std::vector<RigaPresunta> righe;
  int bancaInAlto = 0;

  [[nodiscard]] bool operator==(const StatoPresunti&) const = default;
};

/// What a sequence is played on; it is there before the model is.
struct ListaPresunti {
  test::TestBench banco;
  FormPresunti schermata;
  Griglia& griglia = schermata.griglia();
};

class ConfrontoPresunti : private ListaPresunti, private test::SequenzaACaso<StatoPresunti> {
 public:
  explicit ConfrontoPresunti(unsigned seme) : SequenzaACaso(schermata.griglia(), seme) {
    griglia.modo = griglia.Tag = "PRESUNTI";
    griglia.cmbBanche =
        griglia.cmbBanche2 = {{" ", BanchePresunti[0], BanchePresunti[1]}, {CodiciPresunti[0], CodiciPresunti[1]}};
    const std::size_t quante = 3 + Fino(12);
    for (std::size_t i = 0; i < quante; ++i) {
      RigaPresunta riga;
      riga.conto = std::array{"ALBA", "BRUNI"}[Fino(1)];
      riga.documento = std::array{"AB  1/06", "AB  2/06", "AB  3/06", "AB  4/06", ""}[Fino(9) == 0 ? 4 : Fino(3)];
      riga.consegna = "2006/03/1" + std::to_string(Fino(9));
      riga.divisa = std::array{"EUR", "USD"}[Fino(1)];
      riga.centesimi = static_cast<std::int64_t>(Fino(99999999));
      riga.banca = std::array{"", CodiciPresunti[0], CodiceVecchio}[Fino(2)];
      const std::string giorno = riga.consegna.substr(8) + "/03/06";
      const char* const banca = riga.banca.empty()            ? ""
                                : riga.banca == CodiceVecchio ? BancaVecchia
                                                              : BanchePresunti[0];
      const std::string importo = test::ImportoAtteso(riga.centesimi);
      griglia.righe.Aggiungi({riga.conto, riga.documento, giorno, riga.divisa, importo, banca, "", "", riga.consegna});
      griglia.righe.ImpostaTag(i, FormPresunti::Conto, "C" + std::to_string(i));
      griglia.righe.ImpostaTag(i, FormPresunti::ConsegnaPrevista, "MOVIMENTO_" + std::to_string(100 + i));
      griglia.righe.ImpostaTag(i, FormPresunti::Banca, riga.banca);
      ora_.righe.push_back(std::move(riga));
    }
    griglia.Resize();
    Comincia(quante, [this](std::size_t riga) { return ora_.righe[riga].conto; });
  }

  void Gesto() {
    if (griglia.Visibili() == 0) {
      Filtra(0);
    }
    switch (Fino(9)) {
    case 0:
      Seleziona(Posto());
      break;
    case 1:
    case 2:
      Estendi(Posto());
      break;
    case 3:
      ScegliTutte();
      break;
    case 4:
      Spunta(Posto());
      break;
    case 5:
      Banca(Posto());
      break;
    case 6:
      Filtra(Fino(3));
      break;
    case 7:
      OrdinaPer(Fino(3));
      break;
    case 8:
      static_cast<void>(Fino(1) == 0 ? Annulla() : Rifai());
      break;
    default:
      Fino(1) == 0 ? Incolla() : InAlto();
    }
  }

  void Confronta() const {
    for (std::size_t riga = 0; riga < ora_.righe.size(); ++riga) {
      const RigaPresunta& attesa = ora_.righe[riga];
      EXPECT_EQ(griglia.righe.Testo(riga, FormPresunti::NuovaBanca), attesa.testo) << riga;
      EXPECT_EQ(griglia.righe.Tag(riga, FormPresunti::NuovaBanca), attesa.codice) << riga;
      EXPECT_EQ(griglia.righe.Spuntata(riga, 0), attesa.conBanca) << riga;
    }
    EXPECT_EQ(griglia.Stato().bankIndex, ora_.bancaInAlto);
    ConfrontaElenco();
    ConfrontaPiede();
  }

  /// One record a document, that of its first changed row.
  void Conferma() {
    griglia.PictureOk_Click();
    VariazioniConsegna variazioni;
    schermata.LeggiVariazioni(variazioni);
    std::set<std::string> documenti;
    for (const std::size_t riga : ordine_) {
      const RigaPresunta& attesa = ora_.righe[riga];
      if (!attesa.Variata() || !documenti.insert(attesa.documento).second) {
        continue;
      }
      ASSERT_LE(documenti.size(), variazioni.size()) << riga;
      const VariazioneConsegna& variazione = variazioni[documenti.size() - 1];
      EXPECT_EQ(variazione.CodiceConto, "C" + std::to_string(riga));
      EXPECT_EQ(variazione.idMovimentoKey, 100 + static_cast<std::int32_t>(riga));
      EXPECT_EQ(variazione.Numero, attesa.documento.empty() ? "" : attesa.documento.substr(4, 1));
      EXPECT_EQ(variazione.VecchiaBanca, attesa.banca.empty() ? "#null#" : attesa.banca);
      EXPECT_EQ(variazione.NuovaBanca, attesa.codice);
      EXPECT_TRUE(variazione.isBancaChanged);
    }
    EXPECT_EQ(variazioni.size(), documenti.size());
  }

 private:
  void Premi(std::size_t posto, int colonna) {
    int x = 0;
    while (griglia.TrovaCoordinate(x) < colonna) {
      ++x;
    }
    SequenzaACaso::Premi(posto, x + 20);
  }

  /// Gives a bank to all rows of the documents that these rows belong to.
  void Assegna(const Righe& righe, int indice) {
    for (RigaPresunta& riga : ora_.righe) {
      if (DelDocumento(righe, riga)) {
        riga.codice = indice > 0               ? CodiciPresunti[static_cast<std::size_t>(indice) - 1]
                      : riga.documento.empty() ? ""
                                               : "#null#";
        riga.testo = indice > 0               ? BanchePresunti[static_cast<std::size_t>(indice) - 1]
                     : riga.documento.empty() ? ""
                                              : "ANNULLA";
      }
    }
  }
  [[nodiscard]] bool DelDocumento(const Righe& righe, const RigaPresunta& riga) const {
    return std::any_of(righe.begin(), righe.end(),
                       [&](std::size_t altra) { return ora_.righe[altra].documento == riga.documento; });
  }

  void Spunta(std::size_t posto) {
    const bool spunta = !ora_.righe[griglia.RigaVisibile(posto)].conBanca;
    const StatoPresunti prima = ora_;
    Righe altrimenti;
    for (const std::size_t riga : Del(posto)) {
      if (ora_.righe[riga].conBanca != spunta) {
        altrimenti.push_back(riga);
      }
    }
    Premi(posto, FormPresunti::Radio);
    if (spunta) {
      Assegna(altrimenti, ora_.bancaInAlto);
      for (const std::size_t riga : altrimenti) {
        ora_.righe[riga].conBanca = true;
      }
    } else {
      for (RigaPresunta& riga : ora_.righe) {
        if (DelDocumento(altrimenti, riga)) {
          riga.codice.clear();
          riga.testo.clear();
          riga.conBanca = false;
        }
      }
    }
    Passo(prima);
  }

  void Banca(std::size_t posto) {
    const Righe righe = Del(posto);
    const StatoPresunti prima = ora_;
    const int indice = static_cast<int>(Fino(2));
    Premi(posto, FormPresunti::NuovaBanca);
    griglia.cmbBanche2_Click(indice);
    griglia.cmbBanche2_LostFocus();
    Assegna(righe, indice);
    for (const std::size_t riga : righe) {
      ora_.righe[riga].conBanca = true;
    }
    Passo(prima);
  }

  /// The bank at the top goes to the selected rows at once.
  void InAlto() {
    const StatoPresunti prima = ora_;
    const int indice = static_cast<int>(Fino(2));
    const auto corrente = griglia.RigaSelezionata();
    const Righe scelte = ScelteInVista();
    const bool molte = scelte.size() > 1 && corrente && scelte_.count(*corrente) > 0;
    griglia.cmbBanche_Click(indice);
    ora_.bancaInAlto = indice;
    if (molte) {
      Assegna(scelte, indice);
    } else if (corrente) {
      Assegna({*corrente}, indice);
    }
    Passo(prima);
  }

  void Incolla() {
    const Righe righe = ScelteInVista();
    const StatoPresunti prima = ora_;
    std::map<std::string, int> perDocumento;
    std::vector<int> indici;
    std::string testo;
    bool buone = !righe.empty();
    const int unica = static_cast<int>(Fino(1)) + 1;
    for (const std::size_t riga : righe) {
      // Mostly one bank for all; else any, which is refused where a document gets two.
      const int indice = Fino(3) == 0 ? static_cast<int>(Fino(1)) + 1 : unica;
      indici.push_back(indice);
      testo += std::string(CodiciPresunti[static_cast<std::size_t>(indice) - 1]) + "\n";
      buone = buone && perDocumento.try_emplace(ora_.righe[riga].documento, indice).first->second == indice;
    }
    griglia.Report()->Incolla(testo, FormPresunti::NuovaBanca);
    for (std::size_t i = 0; buone && i < righe.size(); ++i) {
      Assegna({righe[i]}, indici[i]);
      ora_.righe[righe[i]].conBanca = true;
    }
    Passo(prima);
  }

  void Filtra(std::size_t quale) {
    const std::array<ListFilter, 4> filtri{ListFilter{}, ListFilter{"usd"}, ListFilter{"", true, false},
                                           ListFilter{"", false, true}};
    SequenzaACaso::Filtra(filtri[quale], [&](std::size_t riga) {
      const RigaPresunta& r = ora_.righe[riga];
      return quale == 0 || (quale == 1 && r.divisa == "USD") || (quale == 2 && r.Variata()) ||
             (quale == 3 && r.Spuntata());
    });
  }

  void OrdinaPer(std::size_t quale) {
    const std::array testate{1, 2, 3, 6};
    Ordina(testate[quale], [&](std::size_t riga) {
      const RigaPresunta& r = ora_.righe[riga];
      return quale == 0 ? r.conto : quale == 1 ? r.documento : quale == 2 ? r.consegna : r.testo;
    });
  }
};

TEST(GesturesAtRandom, LeaveWhatTheModelLeavesOfPresumedDocuments) {
  test::GiocaSequenze<ConfrontoPresunti>();
}

} // namespace
} // namespace lumoscad
