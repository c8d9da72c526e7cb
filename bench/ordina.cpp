#include "Misure.hpp"
#include "screens/RigheGriglia.hpp"

#include <cstdint>
#include <cstdio>
#include <malloc.h>
#include <string>

namespace lumoscad::bench {
namespace {

constexpr int Prove = 7;
constexpr int Partita = 1;
const std::vector<int> ConTag = {0, 1, 4, 7, 10};

/// The columns that the headings sort by.
struct Ordine {
  const char* nome;
  int colonna;
};
constexpr Ordine Ordini[] = {{"Conto", 0}, {"Partita", Partita}, {"Scadenza", 11}, {"Banca", 10}};

struct Testi {
  std::string conto, codice, partita, chiave, scadenza, originale, banca, importo, rata, ordine;
};

std::string Due(std::size_t numero) {
  return (numero < 10 ? "0" : "") + std::to_string(numero);
}

/// Row `i` of an accounting as the screen shows it: few accounts and banks, an item of two or three instalments,
/// an amount of its own. The items come scattered, as a query that groups may give them.
Testi Riga(std::size_t i) {
  const std::uint64_t caso = (i + 1) * 0x9E3779B97F4A7C15U >> 20U;
  const std::string giorno = Due(caso % 28 + 1);
  const std::string mese = Due(caso / 28 % 12 + 1);
  const std::string anno = std::to_string(2005 + caso / 336 % 3);
  Testi t;
  t.conto = "Cliente numero " + std::to_string(caso % 5000) + " S.r.l.";
  t.codice = std::to_string(20100000 + caso % 5000);
  t.chiave = std::to_string(caso % (i / 2 + 1000));
  t.partita = anno + "/" + t.chiave;
  t.scadenza = giorno + "/" + mese + "/" + anno;
  t.originale = caso % 12 == 0 ? "" : t.scadenza;
  t.banca = caso % 3 == 0 ? "" : "Banca di credito numero " + std::to_string(caso % 40);
  t.importo = std::to_string(caso % 9800) + "," + Due(caso % 97);
  t.rata = std::to_string(caso % 4 + 1);
  t.ordine = anno + "/" + mese + "/" + giorno;
  return t;
}

void Riempi(RigheGriglia& righe, std::size_t quante) {
  for (std::size_t i = 0; i < quante; ++i) {
    const Testi t = Riga(i);
    const std::size_t riga = righe.Aggiungi({t.conto, t.partita, t.scadenza, t.originale, t.banca, t.importo, "",
                                             t.scadenza, t.rata, "", t.banca, t.ordine});
    righe.ImpostaTag(riga, 0, t.codice);
    righe.ImpostaTag(riga, 1, t.chiave);
    righe.ImpostaTag(riga, 4, t.banca);
  }
}

std::size_t Occupati() {
  const auto memoria = mallinfo2();
  return memoria.uordblks + memoria.hblkhd;
}

/// Medians of both sides, measured in turns so that a busy moment of the machine meets both.
struct Tempi {
  double griglia = 0;
  double libreria = 0;
};

Tempi Misura(RigheGriglia& righe, int colonna) {
  std::vector<std::string> testi;
  for (std::size_t riga = 0; riga < righe.Quante(); ++riga) {
    testi.emplace_back(righe.Testo(riga, colonna));
  }
  std::vector<double> griglia;
  std::vector<double> libreria;
  for (int prova = 0; prova < Prove; ++prova) {
    righe.Ordina(Partita, prova % 2 == 0);
    auto inizio = Orologio::now();
    righe.Ordina(colonna, true);
    griglia.push_back(Millisecondi(inizio));
    auto copia = testi;
    inizio = Orologio::now();
    std::stable_sort(copia.begin(), copia.end());
    libreria.push_back(Millisecondi(inizio));
  }
  return {Mediana(griglia), Mediana(libreria)};
}

} // namespace

void OrdineEMemoria() {
  for (const std::size_t quante : {std::size_t{100000}, std::size_t{1000000}}) {
    const std::size_t prima = Occupati();
    RigheGriglia righe(12, ConTag);
    Riempi(righe, quante);
    std::printf("Griglia di %zu righe: %.0f byte a riga\n", quante,
                static_cast<double>(Occupati() - prima) / static_cast<double>(quante));
    for (const Ordine& ordine : Ordini) {
      const Tempi tempi = Misura(righe, ordine.colonna);
      std::printf("  ordine per %-8s  griglia %7.1f ms  std::stable_sort %7.1f ms  rapporto %.2f\n", ordine.nome,
                  tempi.griglia, tempi.libreria, tempi.griglia / tempi.libreria);
    }
  }
}

} // namespace lumoscad::bench
