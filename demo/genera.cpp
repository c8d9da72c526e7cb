#include "Anagrafica.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

namespace {

using namespace lumoscad::demo;
using Giorno = std::chrono::sys_days;

constexpr long RatePredefinite = 400;
constexpr long RateMassime = 1000000;
constexpr int AziendaLinea = 1;
constexpr int PrimoConto = 101;
constexpr int Clienti = 30;

/// SplitMix64: the same numbers with every compiler and library.
class Caso {
 public:
  explicit Caso(std::uint64_t seme) : stato_(seme) {}

  /// A number from `minimo` to `massimo`, both included.
  int Fra(int minimo, int massimo) {
    const auto ampiezza = static_cast<std::uint64_t>(massimo - minimo) + 1;
    return minimo + static_cast<int>(Prossimo() % ampiezza);
  }
  bool UnaSu(int quante) { return Fra(1, quante) == 1; }

 private:
  std::uint64_t Prossimo() {
    stato_ += 0x9E3779B97F4A7C15U;
    auto valore = stato_;
    valore = (valore ^ (valore >> 30U)) * 0xBF58476D1CE4E5B9U;
    valore = (valore ^ (valore >> 27U)) * 0x94D049BB133111EBU;
    return valore ^ (valore >> 31U);
  }

  std::uint64_t stato_;
};

std::string Cita(std::string_view testo) {
  std::string citato = "'";
  for (const char carattere : testo) {
    citato += carattere;
    if (carattere == '\'') {
      citato += carattere;
    }
  }
  return citato + "'";
}

std::string Data(std::optional<Giorno> giorno) {
  if (!giorno) {
    return "NULL";
  }
  const std::chrono::year_month_day data(*giorno);
  char testo[40];
  std::snprintf(testo, sizeof testo, "'%04d-%02u-%02u'", static_cast<int>(data.year()),
                static_cast<unsigned>(data.month()), static_cast<unsigned>(data.day()));
  return testo;
}

std::string Anno(Giorno giorno) {
  return std::to_string(static_cast<int>(std::chrono::year_month_day(giorno).year()));
}

std::string Importo(long centesimi) {
  char testo[40];
  std::snprintf(testo, sizeof testo, "%ld.%02ld", centesimi / 100, centesimi % 100);
  return testo;
}

/// An amount in euro at the demonstration's own fixed rates.
long InDivisa(long centesimi, const std::string& divisa) {
  const int percento = divisa == "USD" ? 108 : divisa == "CHF" ? 96 : divisa == "GBP" ? 86 : 100;
  return centesimi * percento / 100;
}

/// Writes the rows of one table, many to a statement.
class Tabella {
 public:
  explicit Tabella(std::string inizio) : inizio_("INSERT INTO " + std::move(inizio) + " VALUES\n") {}
  Tabella(const Tabella&) = delete;
  Tabella& operator=(const Tabella&) = delete;
  ~Tabella() {
    if (righe_ > 0) {
      std::fputs(";\n", stdout);
    }
  }

  void Riga(const std::string& valori) {
    static constexpr int RighePerIstruzione = 500;
    if (righe_ == RighePerIstruzione) {
      std::fputs(";\n", stdout);
      righe_ = 0;
    }
    std::fputs(righe_ == 0 ? inizio_.c_str() : ",\n", stdout);
    std::fputs(("(" + valori + ")").c_str(), stdout);
    ++righe_;
  }

 private:
  std::string inizio_;
  int righe_ = 0;
};

/// One document: a movement with its open item, or a presumed document without one.
struct Documento {
  int conto = 0;
  Giorno data;
  std::string tipoMovimento = "N";
  std::string stato = "A";
  bool presunto = false;
  std::string serie = {}; ///< of a presumed document, two characters
};

struct Evento {
  std::size_t documento = 0;
  std::string sospesa = "N";
  std::optional<Giorno> scadenza;
  std::optional<Giorno> originale;
  int rata = 0;
  int banca = 0; ///< key, 0 where none is assigned
  long centesimi = 0;
  std::string divisa = "EUR";
  bool omaggio = false; ///< nothing to invoice in the document's currency
  std::optional<Giorno> consegna;
  std::optional<Giorno> consegnaProduzione;
};

class Archivio {
 public:
  Archivio(Giorno oggi, long rate, long presunti) : oggi_(oggi) {
    while (rate > 0) {
      rate -= AggiungiFattura(rate, "N", "A", "N");
      // Now and then something that the lists leave out: closed, suspended, of another kind.
      if (caso_.UnaSu(20)) {
        AggiungiFattura(3, "N", "C", "N");
      } else if (caso_.UnaSu(25)) {
        AggiungiFattura(2, "N", "A", "S");
      } else if (caso_.UnaSu(40)) {
        AggiungiFattura(1, "X", "A", "N");
      }
      if (caso_.UnaSu(4)) {
        AggiungiPresunto();
      }
    }
    AggiungiPresuntiScelti();
    while (presunti > 0) {
      presunti -= AggiungiOrdine(presunti);
    }
  }

  void Scrivi() const {
    std::fputs("BEGIN;\n", stdout);
    ScriviConti();
    ScriviPartite();
    ScriviMovimenti();
    ScriviEventi();
    std::fputs("COMMIT;\n", stdout);
  }

 private:
  static int Banca(Caso& caso) { return caso.UnaSu(3) ? 0 : caso.Fra(1, static_cast<int>(Banche.size()) - 1); }

  long AggiungiFattura(long massimo, const std::string& tipoMovimento, const std::string& stato,
                       const std::string& sospesa) {
    const int rate = static_cast<int>(std::min<long>(massimo, caso_.Fra(1, 4)));
    const auto prima = oggi_ + std::chrono::days(caso_.Fra(-120, 150));
    const auto data = prima - std::chrono::days(30 * caso_.Fra(1, 2));
    documenti_.push_back({caso_.Fra(0, static_cast<int>(Nominativi.size()) - 1), data, tipoMovimento, stato, false});
    const long centesimi = caso_.Fra(4500, 980000);
    const int banca = Banca(caso_);
    for (int rata = 1; rata <= rate; ++rata) {
      Evento evento;
      evento.documento = documenti_.size() - 1;
      evento.sospesa = sospesa;
      evento.rata = rata;
      evento.banca = banca;
      evento.centesimi = centesimi / rate + (rata == 1 ? centesimi % rate : 0);
      evento.originale = prima + std::chrono::days(30 * (rata - 1));
      evento.scadenza = evento.originale;
      if (caso_.UnaSu(8)) {
        *evento.scadenza += std::chrono::days(15 * caso_.Fra(1, 4));
      } else if (caso_.UnaSu(12)) {
        evento.originale.reset();
      }
      eventi_.push_back(evento);
    }
    return rate;
  }

  void AggiungiPresunto() {
    documenti_.push_back({caso_.Fra(0, static_cast<int>(Nominativi.size()) - 1),
                          oggi_ - std::chrono::days(caso_.Fra(1, 60)), "N", "A", true});
    const auto consegna = oggi_ + std::chrono::days(caso_.Fra(-30, 120));
    const int righe = caso_.Fra(1, 3);
    const int banca = Banca(caso_);
    const std::string divisa = caso_.UnaSu(6) ? "USD" : caso_.UnaSu(8) ? "CHF" : "EUR";
    for (int riga = 0; riga < righe; ++riga) {
      Evento evento;
      evento.documento = documenti_.size() - 1;
      evento.banca = banca;
      evento.centesimi = caso_.Fra(9900, 450000);
      evento.divisa = divisa;
      evento.consegnaProduzione = consegna;
      evento.consegna = caso_.UnaSu(5) ? consegna + std::chrono::days(7) : consegna;
      eventi_.push_back(evento);
    }
    Varia(righe);
  }

  /// Gives the last document, of `righe` rows, what only presumed documents have. The numbers come from a sequence of
  /// their own, so that the instalments do not depend on them.
  void Varia(int righe) {
    auto& documento = documenti_.back();
    const bool cliente = documento.conto < Clienti;
    const bool bolla = varia_.UnaSu(3);
    documento.serie = std::string(bolla ? "B" : "O") + (cliente ? "C" : "F");
    const bool sospesa = varia_.UnaSu(10);
    const bool senzaConsegna = varia_.UnaSu(6);
    for (int riga = 0; riga < righe; ++riga) {
      auto& evento = eventi_[eventi_.size() - static_cast<std::size_t>(righe - riga)];
      evento.sospesa = sospesa ? "S" : "N";
      evento.omaggio = varia_.UnaSu(12);
      if (senzaConsegna) {
        evento.consegna.reset();
        evento.consegnaProduzione.reset();
      }
      if (riga > 0 && varia_.UnaSu(3)) {
        evento.banca = Banca(varia_);
      }
      if (riga > 0 && varia_.UnaSu(3)) {
        evento.divisa = varia_.UnaSu(2) ? "GBP" : "USD";
      }
    }
  }

  void AggiungiPresuntiScelti() {
    int documento = 0;
    for (const auto& scelta : RigheScelte) {
      if (scelta.documento != documento) {
        documento = scelta.documento;
        documenti_.push_back({scelta.conto, oggi_, "N", "A", true, scelta.serie});
      }
      Evento evento;
      evento.documento = documenti_.size() - 1;
      evento.sospesa = scelta.sospesa ? "S" : "N";
      evento.banca = scelta.banca;
      evento.centesimi = scelta.centesimi;
      evento.divisa = scelta.divisa;
      evento.omaggio = scelta.omaggio;
      if (scelta.giorniAllaConsegna != RigaScelta::SenzaConsegna) {
        evento.consegna = oggi_ + std::chrono::days(scelta.giorniAllaConsegna);
        evento.consegnaProduzione = *evento.consegna - std::chrono::days(scelta.rinvio);
      }
      eventi_.push_back(evento);
    }
  }

  /// A customer's order of at most `massimo` rows, each of which the lists show as a row of its own.
  long AggiungiOrdine(long massimo) {
    static constexpr std::array<const char*, 3> Divise{"EUR", "USD", "CHF"};
    const int righe = static_cast<int>(std::min<long>(massimo, varia_.Fra(1, static_cast<int>(Divise.size()))));
    documenti_.push_back({varia_.Fra(0, Clienti - 1), oggi_ - std::chrono::days(varia_.Fra(1, 60)), "N", "A", true,
                          varia_.UnaSu(3) ? "BC" : "OC"});
    const auto consegna = oggi_ + std::chrono::days(varia_.Fra(-30, 120));
    const int banca = Banca(varia_);
    for (int riga = 0; riga < righe; ++riga) {
      Evento evento;
      evento.documento = documenti_.size() - 1;
      evento.banca = banca;
      evento.centesimi = varia_.Fra(9900, 450000);
      evento.divisa = Divise.at(static_cast<std::size_t>(riga));
      evento.consegnaProduzione = consegna;
      evento.consegna = consegna;
      eventi_.push_back(evento);
    }
    return righe;
  }

  static void ScriviConti() {
    {
      Tabella aziende("AZIENDELINEE (AZIENDALINEAKEY, CODICEAZIENDA, LINEA, SOTTOLINEA)");
      aziende.Riga("1, '01', ' ', ' '");
      aziende.Riga("2, '02', ' ', ' '");
    }
    Tabella conti("CONTOCONTABILE (CONTOCONTABILE_KEY, CODICECONTO, DESCRIZIONEVOCE, TIPOLOGIACONTO, CODICEINTERNO, "
                  "BLOCCO)");
    int chiave = 0;
    for (const auto& banca : Banche) {
      conti.Riga(std::to_string(++chiave) + ", " + Cita(banca.codice) + ", " + Cita(banca.descrizione) + ", " +
                 Cita(banca.tipologia) + ", NULL, " + Cita(banca.blocco));
    }
    for (int indice = 0; indice < static_cast<int>(Nominativi.size()); ++indice) {
      const bool cliente = indice < Clienti;
      const bool secondaClasse = indice % 5 == 4;
      const auto* tipologia = cliente ? (secondaClasse ? "02" : "01") : (secondaClasse ? "04" : "03");
      const int ordine = cliente ? indice + 1 : indice - Clienti + 1;
      conti.Riga(std::to_string(PrimoConto + indice) + ", '" +
                 std::to_string((cliente ? 20100000 : 40100000) + ordine) + "', " +
                 Cita(Nominativi[static_cast<std::size_t>(indice)]) + ", '" + tipologia + "', '" +
                 (cliente ? "C" : "F") + std::to_string(1000 + ordine) + "', 'N'");
    }
    conti.Riga(std::to_string(PrimoConto + ContoBloccato) + ", '" + std::to_string(20100000 + Clienti + 1) + "', " +
               Cita(ClienteBloccato) + ", '01', 'C" + std::to_string(1000 + Clienti + 1) + "', 'S'");
  }

  [[nodiscard]] std::string Numero(std::size_t documento) const { return std::to_string(documento + 1); }

  void ScriviPartite() const {
    Tabella partite("PARTITACONTABILE (PARTITACONTABILEKEY, CONTOCONTABILE_KEY, NUMEROPARTITA, STATO)");
    for (std::size_t indice = 0; indice < documenti_.size(); ++indice) {
      const auto& documento = documenti_[indice];
      if (!documento.presunto) {
        partite.Riga(Numero(indice) + ", " + std::to_string(PrimoConto + documento.conto) + ", '" +
                     Anno(documento.data) + "/" + Numero(indice) + "', '" + documento.stato + "'");
      }
    }
  }

  void ScriviMovimenti() const {
    Tabella movimenti("MOVIMENTOCONTABILE (MOVIMENTOKEY, AZIENDALINEAKEY, TIPOMOVIMENTO, SERIE, NUMERO, ESERCIZIO, "
                      "TIPOOPERAZIONE)");
    for (std::size_t indice = 0; indice < documenti_.size(); ++indice) {
      const auto& documento = documenti_[indice];
      const bool cliente = documento.conto < Clienti || documento.conto == ContoBloccato;
      const auto anno = Anno(documento.data);
      // The number of a presumed document ends with its year.
      const std::string serie = documento.presunto ? documento.serie : cliente ? "A" : "F";
      const std::string coda = documento.presunto ? anno.substr(2) : "";
      movimenti.Riga(Numero(indice) + ", " + std::to_string(AziendaLinea) + ", '" + documento.tipoMovimento + "', '" +
                     serie + "', '" + Numero(indice) + coda + "', '" + anno + "', '" + (cliente ? "V" : "A") + "'");
    }
  }

  void ScriviEventi() const {
    Tabella eventi("EVENTOCONTABILE (EVENTOCONTABILEKEY, AZIENDALINEAKEY, MOVIMENTOKEY, PARTITACONTABILEKEY, "
                   "CONTOCONTABILE_KEY, TIPOEVENTO, SOSPESA, DATASCADENZA, DATASCADENZAORIGINALE, NUMERORATA, "
                   "BANCAPRESENTAZIONE_KEY, IMPORTOEURO, IMPORTODIVISA, CODICEDIVISA, DATACONSEGNA, "
                   "DATACONSEGNAPRODUZIONE, TITOLOIVA)");
    long chiave = 0;
    for (const auto& evento : eventi_) {
      const auto& documento = documenti_[evento.documento];
      const auto numero = Numero(evento.documento);
      const auto importo = Importo(evento.centesimi);
      const auto inDivisa = Importo(evento.omaggio ? 0 : InDivisa(evento.centesimi, evento.divisa));
      eventi.Riga(std::to_string(++chiave) + ", " + std::to_string(AziendaLinea) + ", " + numero + ", " +
                  (documento.presunto ? "NULL" : numero) + ", " + std::to_string(PrimoConto + documento.conto) + ", '" +
                  (documento.presunto ? "P" : "C") + "', '" + evento.sospesa + "', " + Data(evento.scadenza) + ", " +
                  Data(evento.originale) + ", " + (documento.presunto ? "NULL" : std::to_string(evento.rata)) + ", " +
                  (evento.banca == 0 ? "NULL" : std::to_string(evento.banca)) + ", " + importo + ", " + inDivisa +
                  ", '" + evento.divisa + "', " + Data(evento.consegna) + ", " + Data(evento.consegnaProduzione) +
                  ", 'O'");
    }
  }

  Giorno oggi_;
  Caso caso_{20060305};
  Caso varia_{20060502};
  std::vector<Documento> documenti_;
  std::vector<Evento> eventi_;
};

template <typename Numero> std::optional<Numero> LeggiNumero(std::string_view testo) {
  Numero numero{};
  const auto [arrivo, errore] = std::from_chars(testo.data(), testo.data() + testo.size(), numero);
  if (errore != std::errc() || arrivo != testo.data() + testo.size()) {
    return std::nullopt;
  }
  return numero;
}

std::optional<Giorno> LeggiData(std::string_view testo) {
  if (testo.size() != 10 || testo[4] != '-' || testo[7] != '-') {
    return std::nullopt;
  }
  const auto anno = LeggiNumero<int>(testo.substr(0, 4));
  const auto mese = LeggiNumero<unsigned>(testo.substr(5, 2));
  const auto giorno = LeggiNumero<unsigned>(testo.substr(8, 2));
  if (!anno || !mese || !giorno) {
    return std::nullopt;
  }
  const std::chrono::year_month_day data{std::chrono::year(*anno), std::chrono::month(*mese),
                                         std::chrono::day(*giorno)};
  return data.ok() ? std::optional<Giorno>(data) : std::nullopt;
}

} // namespace

int main(int numero, char** argomenti) {
  const std::vector<std::string_view> testi(argomenti + 1, argomenti + numero);
  const auto oggi = testi.empty() ? std::nullopt : LeggiData(testi[0]);
  const auto rate = testi.size() < 2 ? std::optional<long>(RatePredefinite) : LeggiNumero<long>(testi[1]);
  const auto presunti = testi.size() < 3 ? std::optional<long>(0) : LeggiNumero<long>(testi[2]);
  if (!oggi || testi.size() > 3 || !rate || *rate < 1 || *rate > RateMassime || !presunti || *presunti < 0 ||
      *presunti > RateMassime) {
    std::fputs("Uso: lumoscad-genera AAAA-MM-GG [RATE [PRESUNTI]]\n"
               "Scrive i dati dimostrativi in SQL: la data è il giorno attorno al quale cadono le scadenze,\n"
               "RATE il numero di scadenze aperte, da 1 a 1000000 (400 se manca), PRESUNTI il numero di righe di\n"
               "ordini di clienti da aggiungere ai documenti presunti, da 0 a 1000000 (nessuna se manca).\n",
               stderr);
    return 2;
  }
  Archivio(*oggi, *rate, *presunti).Scrivi();
  if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
    std::fputs("Scrittura dei dati non riuscita.\n", stderr);
    return 1;
  }
  return 0;
}
