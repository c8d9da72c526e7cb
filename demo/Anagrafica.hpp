#pragma once

#include <array>
#include <string_view>

namespace lumoscad::demo {

/// A bank of the demonstration.
struct Banca {
  std::string_view codice;
  std::string_view descrizione;
  std::string_view tipologia;
  std::string_view blocco;
};

/// The last one is blocked and of the class whose blocked accounts are not offered.
inline constexpr std::array<Banca, 8> Banche{{{"60100001", "Banca dell'Aniene", "06", "N"},
                                              {"60100002", "Banca Orobica di Valcarsa", "06", "N"},
                                              {"60100003", "Cassa di Risparmio di Borgo Perù", "06", "N"},
                                              {"60100004", "Credito Cooperativo di Santa Fè", "06", "N"},
                                              {"60100005", "Credito Marittimo Ligustico", "06", "N"},
                                              {"60200001", "Banca Agricola del Chienti", "07", "N"},
                                              {"60200002", "Monte Pegni di Cefalà", "07", "N"},
                                              {"60200003", "Banco Fiduciario del Ticinello", "07", "S"}}};

/// The first thirty are customers, the others suppliers.
inline constexpr std::array<std::string_view, 60> Nominativi{"Alimentari Castellò S.r.l.",
                                                             "Arredamenti Bonfigli & C. S.n.c.",
                                                             "Autofficina Dall'Ò S.r.l.",
                                                             "Bar Caffè Piazzetta di Nardi Lucia",
                                                             "Bertolè Impianti S.p.A.",
                                                             "Biancheria Sangalletti S.a.s.",
                                                             "Calzaturificio Morrovalle S.r.l.",
                                                             "Cantine D'Agostini S.r.l.",
                                                             "Cartolibreria Il Calamaio",
                                                             "Centro Ottico Vedochiaro S.r.l.",
                                                             "Confezioni Marilù S.r.l.",
                                                             "Cooperativa Agricola Val d'Elce",
                                                             "Edil Nicolò S.r.l.",
                                                             "Elettroforniture Zambonin S.p.A.",
                                                             "Erboristeria La Malva",
                                                             "Farmacia Dott.ssa Quadrelli",
                                                             "Ferramenta Guidobaldi S.n.c.",
                                                             "Forno Antico di Cantù Mario",
                                                             "Garden Center Le Ortensie S.r.l.",
                                                             "Gioielleria Sant'Eligio S.r.l.",
                                                             "Hotel Bellosguardo S.p.A.",
                                                             "Idrotermica Pavanello S.r.l.",
                                                             "Lavanderia Nuvola Bianca",
                                                             "Macelleria Equa di Frisò Piero",
                                                             "Mobilificio Tre Querce S.p.A.",
                                                             "Palestra Vigor S.s.d.",
                                                             "Panificio Spadolini & Figli",
                                                             "Ristorante Da Noè S.a.s.",
                                                             "Supermercati Convenìo S.p.A.",
                                                             "Tipografia Gutierrez & Rossi S.r.l.",
                                                             "Acciaierie del Sàvena S.p.A.",
                                                             "Agrumi dell'Etna Soc. Coop.",
                                                             "Autotrasporti Ghisalberti S.r.l.",
                                                             "Cartiera di Fabrianella S.p.A.",
                                                             "Ceramiche Faentù S.r.l.",
                                                             "Chimica Industriale Bormida S.p.A.",
                                                             "Colorificio Arcobaleno S.r.l.",
                                                             "Consulenze Dott. Sbrizzolò",
                                                             "Corriere Saetta S.r.l.",
                                                             "Distillerie Monte Sorà S.p.A.",
                                                             "Energia Pulita Lucana S.r.l.",
                                                             "Filati Pratolungo S.p.A.",
                                                             "Fonderie Maniagotto S.r.l.",
                                                             "Frigoriferi Polari S.n.c.",
                                                             "Grafiche L'Inchiostro S.r.l.",
                                                             "Imballaggi Cartonpiù S.r.l.",
                                                             "Informatica Sistemi Né S.r.l.",
                                                             "Lanificio Biellotti S.p.A.",
                                                             "Legnami Cadorini S.r.l.",
                                                             "Manutenzioni Rapide di Fè Ugo",
                                                             "Marmi Apuani Corsanego S.p.A.",
                                                             "Molino Sette Fontane S.r.l.",
                                                             "Oleificio Sant'Ampelio S.r.l.",
                                                             "Plastiche Vimercatesi S.p.A.",
                                                             "Pulizie Splendor Soc. Coop.",
                                                             "Rubinetterie Valsesiane Gozzò",
                                                             "Studio Legale Avv. Mondaìno",
                                                             "Telefonia & Reti Centrali S.p.A.",
                                                             "Vetreria Muranotti S.r.l.",
                                                             "Zuccherificio Basso Pò S.p.A."};

/// A customer that comes after all of these, blocked for new documents, and its place among them.
inline constexpr std::string_view ClienteBloccato = "Cartotecnica Ruzzante S.r.l.";
inline constexpr int ContoBloccato = static_cast<int>(Nominativi.size());

/// One row of the presumed documents that are in every demonstration; a new number begins a new document.
struct RigaScelta {
  static constexpr int SenzaConsegna = -1;

  int documento;
  int conto; ///< place among the accounts, from 0
  const char* serie;
  const char* divisa;
  int banca; ///< key, 0 where none is assigned
  int giorniAllaConsegna;
  long centesimi;
  bool sospesa = false;
  bool omaggio = false;
  int rinvio = 0; ///< days by which the delivery was put off
};

inline constexpr int Cooperativa = 11;
inline constexpr int Cartiera = 33;

/// Three currencies with one bank, one date with three banks, two dates of which the later was put off, no date, a gift
/// among the rows, a suspended document, a blocked account; then a supplier's.
inline constexpr std::array<RigaScelta, 17> RigheScelte{
    {{1, Cooperativa, "OC", "EUR", 1, 20, 184000},
     {1, Cooperativa, "OC", "USD", 1, 20, 96050},
     {1, Cooperativa, "OC", "CHF", 1, 20, 41275},
     {2, Cooperativa, "OC", "EUR", 2, 27, 310000},
     {2, Cooperativa, "OC", "EUR", 4, 27, 120010},
     {2, Cooperativa, "OC", "EUR", 0, 27, 88000},
     {3, Cooperativa, "BC", "EUR", 5, 34, 256900},
     {3, Cooperativa, "BC", "GBP", 5, 41, 74320, false, false, 7},
     {4, Cooperativa, "BC", "EUR", 0, RigaScelta::SenzaConsegna, 132500},
     {5, Cooperativa, "OC", "EUR", 3, 48, 67890},
     {5, Cooperativa, "OC", "USD", 3, 48, 25000, false, true},
     {6, Cooperativa, "OC", "EUR", 3, 55, 45000, true},
     {7, ContoBloccato, "OC", "EUR", 1, 20, 99000},
     {8, Cartiera, "OF", "EUR", 6, 15, 540000},
     {8, Cartiera, "OF", "USD", 6, 22, 211000},
     {8, Cartiera, "OF", "CHF", 6, 29, 87500},
     {9, Cartiera, "BF", "EUR", 0, RigaScelta::SenzaConsegna, 305000}}};

} // namespace lumoscad::demo
