// Sequences of gestures at random on the credits, against the plainest model that there is: rows as structures, steps
// as copies of all of them.

#include "SchermataDiProva.hpp"
#include "SequenzaACaso.hpp"

#include <array>

namespace lumoscad {
namespace {

using Tabella = frmLumoScadenzeBanche;

constexpr std::array<const char*, 2> Banche{"BANCA ALFA", "BANCA BETA"};
constexpr std::array<const char*, 2> Codici{"B06", "B02"};

/// A row as a person sees it.
struct RigaModello {
  std::string conto;
  std::int64_t centesimi = 0;
  std::string divisa; ///< this list has one
  std::string scadenza;
  std::string banca; ///< the present bank's code
  std::string nuova;
  std::string codice; ///< of the new bank
  std::string testo;
  std::string testoBanca; ///< the present bank's text
  bool data = false;
  bool conBanca = false; ///< ticked

  [[nodiscard]] bool operator==(const RigaModello&) const = default;
  [[nodiscard]] bool Spuntata() const { return data || conBanca; }
  [[nodiscard]] bool DataVariata() const { return nuova != scadenza && !nuova.empty() && nuova != " "; }
  [[nodiscard]] bool BancaVariata() const {
    return !codice.empty() && codice != banca && !(codice == "#null#" && banca.empty());
  }
  [[nodiscard]] bool Variata() const { return DataVariata() || BancaVariata(); }
  /// "YYYY/MM/DD", by which the list is sorted by date.
  [[nodiscard]] std::string Ordina() const {
    return scadenza.substr(6) + "/" + scadenza.substr(3, 2) + "/" + scadenza.substr(0, 2);
  }
};

struct StatoModello {
  std::vector<RigaModello> righe;
  std::string inAlto;
  int bancaInAlto = 0;

  [[nodiscard]] bool operator==(const StatoModello&) const = default;
};

class ConfrontoScadenze : public test::GrigliaDiProva, private test::SequenzaACaso<StatoModello> {
 protected:
  void TestBody() override {}

 public:
  explicit ConfrontoScadenze(unsigned seme) : SequenzaACaso(schermata.griglia(), seme) {
    griglia.cmbBanche = griglia.cmbBanche2 = {{" ", Banche[0], Banche[1]}, {Codici[0], Codici[1]}};
    const std::size_t quante = 3 + Fino(12);
    for (std::size_t i = 0; i < quante; ++i) {
      const bool conBanca = Fino(1) == 1;
      RigaModello riga;
      riga.scadenza = riga.nuova = "1" + std::to_string(Fino(9)) + "/0" + std::to_string(1 + Fino(8)) + "/2006";
      riga.conto = Conti[Fino(Conti.size() - 1)];
      riga.banca = conBanca ? Codici[0] : "";
      riga.testo = riga.testoBanca = conBanca ? Banche[0] : "";
      riga.centesimi = static_cast<std::int64_t>(Fino(999999999));
      griglia.righe.ImpostaTesto(Aggiungi(riga.conto, riga.scadenza, riga.testoBanca), Tabella::Importo,
                                 test::ImportoAtteso(riga.centesimi));
      ora_.righe.push_back(std::move(riga));
    }
    griglia.Resize();
    Comincia(quante, [this](std::size_t riga) { return ora_.righe[riga].conto; });
  }

  void Gesto() {
    if (griglia.Visibili() == 0) {
      Filtra(0);
    }
    switch (Fino(13)) {
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
      OrdinaPer(Fino(3));
      break;
    case 10:
      dataInAlto_ = !(Fino(1) == 0 ? Annulla() : Rifai()) && dataInAlto_;
      break;
    case 11:
      IncollaDate();
      break;
    case 12:
      IncollaBanche();
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
    }
    EXPECT_EQ(griglia.Stato().dueDateText, ora_.inAlto);
    EXPECT_EQ(griglia.Stato().bankIndex, ora_.bancaInAlto);
    ConfrontaElenco();
    ConfrontaPiede();
  }

  /// The records are those of the changed rows, as they show.
  void Conferma() {
    griglia.PictureOk_Click();
    VariazioniCanalizzazione variazioni;
    schermata.LeggiVariazioni(variazioni);
    std::size_t quale = 0;
    for (const std::size_t riga : ordine_) {
      const RigaModello& attesa = ora_.righe[riga];
      if (!attesa.Variata()) {
        continue;
      }
      ASSERT_LT(quale, variazioni.size()) << riga;
      const VariazioneCanalizzazione& variazione = variazioni[quale++];
      EXPECT_EQ(variazione.CodiceConto, "C" + std::to_string(riga));
      EXPECT_EQ(variazione.VecchiaScadenza, attesa.scadenza);
      EXPECT_EQ(variazione.isScadenzaChanged, attesa.DataVariata());
      EXPECT_EQ(variazione.NuovaScadenza, attesa.DataVariata() ? attesa.nuova : "#null#");
      EXPECT_EQ(variazione.isBancaChanged, attesa.BancaVariata());
      EXPECT_EQ(variazione.VecchiaBanca, attesa.banca.empty() ? "#null#" : attesa.banca);
      EXPECT_EQ(variazione.NuovaBanca, attesa.codice);
    }
    EXPECT_EQ(variazioni.size(), quale);
  }

 private:
  static constexpr std::array<const char*, 3> Conti{"ALBA", "BRUNI", "CORTI"};

  void Premi(std::size_t posto, int colonna) { SequenzaACaso::Premi(posto, Mezzo(colonna)); }

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

  /// Texts of `scritte` for the selected rows, now and then for one row too many, joined to a column; the number of
  /// each.
  std::string Colonna(const std::vector<std::string>& scritte, std::vector<std::size_t>& quali, bool& troppi) {
    const std::size_t righe = ScelteInVista().size();
    quali.resize(Fino(2) == 0 ? 1 : righe);
    troppi = quali.size() == righe && Fino(9) == 0;
    std::string testo;
    for (std::size_t& quale : quali) {
      // The last one is bad, and seldom.
      quale = Fino(14) == 0 ? scritte.size() - 1 : Fino(scritte.size() - 2);
      testo += scritte[quale] + "\r\n";
    }
    return troppi ? testo + scritte.front() + "\r\n" : testo;
  }

  void IncollaDate() {
    const std::vector<std::string> scritte{"150327", " ", "16/03/2027", "31/02/2027"};
    const std::vector<std::string> lette{"15/03/2027", "", "16/03/2027"};
    const auto righe = ScelteInVista();
    const StatoModello prima = ora_;
    std::vector<std::size_t> quali;
    bool troppi = false;
    const std::string testo = Colonna(scritte, quali, troppi);
    griglia.Report()->Incolla(testo, Tabella::NuovaScadenza);
    const bool niente = quali.size() == 1 && !troppi && quali.front() == 1;
    const bool cattive = std::count(quali.begin(), quali.end(), scritte.size() - 1) > 0;
    if (righe.empty() || niente || cattive || troppi) {
      return;
    }
    for (std::size_t i = 0; i < righe.size(); ++i) {
      RigaModello& r = ora_.righe[righe[i]];
      const std::size_t quale = quali[quali.size() == 1 ? 0 : i];
      r.nuova = quale == 1 ? r.scadenza : lette[quale];
    }
    Passo(prima);
  }

  void IncollaBanche() {
    const std::vector<std::string> scritte{"B06", "B02", "B99"};
    const auto righe = ScelteInVista();
    const StatoModello prima = ora_;
    std::vector<std::size_t> quali;
    bool troppi = false;
    const std::string testo = Colonna(scritte, quali, troppi);
    griglia.Report()->Incolla(testo, Tabella::NuovaBanca);
    const bool cattive = std::count(quali.begin(), quali.end(), scritte.size() - 1) > 0;
    if (righe.empty() || cattive || troppi) {
      return;
    }
    for (std::size_t i = 0; i < righe.size(); ++i) {
      RigaModello& r = ora_.righe[righe[i]];
      Assegna(r, static_cast<int>(quali[quali.size() == 1 ? 0 : i]) + 1);
      r.conBanca = true;
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
    SequenzaACaso::Filtra(filtri[quale], [&](std::size_t riga) {
      const RigaModello& r = ora_.righe[riga];
      return quale == 0 || (quale == 1 && r.conto == "BRUNI") || (quale == 2 && r.Variata()) ||
             (quale == 3 && r.Spuntata());
    });
  }

  void OrdinaPer(std::size_t quale) {
    const std::array testate{1, 2, 5, 6};
    Ordina(testate[quale], [&](std::size_t riga) {
      const RigaModello& r = ora_.righe[riga];
      return quale == 0 ? r.conto : quale == 1 ? std::string("2006 1") : quale == 2 ? r.Ordina() : r.testo;
    });
  }

  bool dataInAlto_ = false; ///< the last step is the text at the top
  std::size_t passiAllora_ = 0;
};

TEST(GesturesAtRandom, LeaveWhatTheModelLeaves) {
  test::GiocaSequenze<ConfrontoScadenze>({4519});
}

} // namespace
} // namespace lumoscad
