#include "Cronometro.hpp"
#include "Nudo.hpp"
#include "common/Stato.hpp"
#include "screens/FormPresunti.hpp"
#include "support/BaseGrande.hpp"
#include "support/Paths.hpp"

#include <cstdio>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>

namespace lumoscad::bench {
namespace {

constexpr long Righe = 20000;
constexpr int Prove = 9;
constexpr double Obiettivo = 1.3;

/// The statements of the screen: the list, then the look-up of a document's movement.
struct Istruzioni {
  std::string elenco;
  std::string movimento;
  std::size_t ricerche = 0; ///< how often the look-up was sent

  void Inviata(std::string_view testo) {
    if (testo.starts_with("SELECT MOVIMENTOKEY ")) {
      movimento = testo;
      ++ricerche;
    } else {
      elenco = testo;
    }
  }
};

/// A plain program with a prepared statement for the list and another, kept, for the look-ups: it reads the whole list,
/// then looks every document up once.
struct LetturaNuda {
  std::size_t righe = 0;
  std::size_t documenti = 0;

  double Misura(const ConnessioneNuda& connessione, const Istruzioni& istruzioni) {
    static constexpr std::size_t Serie = 1; // columns of the list
    static constexpr std::size_t Numero = 2;
    const auto inizio = Orologio::now();
    ComandoNudo elenco(connessione, istruzioni.elenco);
    std::vector<std::pair<std::string, std::string>> letti;
    righe = elenco.Esegui(
        {"1"}, [&](std::size_t riga) { letti.emplace_back(elenco.Testo(riga, Serie), elenco.Testo(riga, Numero)); });
    ComandoNudo movimento(connessione, istruzioni.movimento, 1);
    std::set<std::pair<std::string, std::string>> cercati;
    for (const auto& [serie, numero] : letti) {
      if (cercati.emplace(serie, numero).second && movimento.Esegui({"1", "N", serie, numero}) != 1) {
        throw std::runtime_error("the movement of a document was not found");
      }
    }
    documenti = cercati.size();
    return Millisecondi(inizio);
  }
};

} // namespace

bool CaricoPresunti() {
  if (!test::PostgresServer::available()) {
    std::puts("Carico dei presunti: PostgreSQL o il suo driver ODBC non è installato, misura saltata");
    return true;
  }
  const test::BaseGrande base(test::buildFolder() / "bench/postgres", 1, Righe);
  const StatoSostituito stato;
  lumoscad::stato().ComandoCorrente = base.command();
  DesktopCronometro desktop;
  Istruzioni istruzioni;
  procedureLumoDB2::FiltroPresunti filtro;
  filtro.parTipoMovimenti = "V";
  const auto schermata = [&] {
    istruzioni.ricerche = 0;
    return CaricoSchermata(
        desktop, [&](std::string_view testo) { istruzioni.Inviata(testo); },
        [&] {
          FormPresunti presunti;
          VariazioniConsegna variazioni;
          presunti.elaboraPresunti("01", filtro, variazioni);
        });
  };
  schermata();
  const ConnessioneNuda connessione(base.connectionText());
  LetturaNuda lettura;
  const auto nudo = [&] { return lettura.Misura(connessione, istruzioni); };
  nudo();
  if (desktop.righe < static_cast<std::size_t>(Righe) || lettura.righe < desktop.righe ||
      lettura.documenti != istruzioni.ricerche) {
    throw std::runtime_error("the two sides did not read the same documents");
  }
  const Tempi esito = Confronta(Prove, schermata, nudo);
  std::printf("Carico di %zu righe di %zu documenti presunti: schermata %.0f ms  programma nudo %.0f ms  rapporto %.2f "
              "(obiettivo %.1f)\n",
              desktop.righe, lettura.documenti, esito.schermata, esito.nudo, esito.Rapporto(), Obiettivo);
  return esito.Rapporto() <= Obiettivo;
}

} // namespace lumoscad::bench
