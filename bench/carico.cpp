#include "Cronometro.hpp"
#include "Nudo.hpp"
#include "common/Stato.hpp"
#include "screens/frmLumoScadenzeBanche.hpp"
#include "support/BaseGrande.hpp"
#include "support/Paths.hpp"

#include <cstdio>
#include <stdexcept>

namespace lumoscad::bench {
namespace {

constexpr long Rate = 100000;
constexpr int Prove = 9;
constexpr double Obiettivo = 1.5;

} // namespace

bool Carico() {
  if (!test::PostgresServer::available()) {
    std::puts("Carico: PostgreSQL o il suo driver ODBC non è installato, misura saltata");
    return true;
  }
  const test::BaseGrande base(test::buildFolder() / "bench/postgres", Rate);
  const StatoSostituito stato;
  lumoscad::stato().ComandoCorrente = base.command();
  DesktopCronometro desktop;
  std::string istruzione; // the list's, which is the last one sent
  const auto schermata = [&] {
    return CaricoSchermata(
        desktop, [&](std::string_view testo) { istruzione = testo; },
        [] {
          frmLumoScadenzeBanche banche;
          VariazioniCanalizzazione variazioni;
          banche.VisualizzaScadenzeBanche("01", {}, variazioni);
        });
  };
  schermata();
  const ConnessioneNuda connessione(base.connectionText());
  std::size_t lette = 0;
  const auto nudo = [&] {
    const auto inizio = Orologio::now();
    lette = ComandoNudo(connessione, istruzione).Esegui({"1"});
    return Millisecondi(inizio);
  };
  nudo();
  if (desktop.righe != static_cast<std::size_t>(Rate) || lette != static_cast<std::size_t>(Rate)) {
    throw std::runtime_error("the two sides did not read " + std::to_string(Rate) + " rows");
  }
  const Tempi esito = Confronta(Prove, schermata, nudo);
  std::printf("Carico di %ld scadenze: schermata %.0f ms  lettura nuda %.0f ms  rapporto %.2f (obiettivo %.1f)\n", Rate,
              esito.schermata, esito.nudo, esito.Rapporto(), Obiettivo);
  return esito.Rapporto() <= Obiettivo;
}

} // namespace lumoscad::bench
