#pragma once

#include "Misure.hpp"
#include "platform/Servizi.hpp"

#include <chrono>
#include <cstddef>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad::bench {

/// Takes the time at which a list would appear, and leaves it at once.
class DesktopCronometro final : public Desktop {
 public:
  Orologio::time_point mostrato;
  std::size_t righe = 0;

  void MostraBox(std::string_view testo, std::string_view /*titolo*/) override {
    throw std::runtime_error(std::string(testo));
  }
  void ImpostaPuntatore(Puntatore /*puntatore*/) override {}
  void EventiInAttesa() override {}
  void MostraElenco(FinestraElenco& finestra) override {
    mostrato = Orologio::now();
    righe = finestra.RowCount();
    finestra.Form_QueryUnload();
  }
  void MostraScadenzario(FinestraScadenzario& finestra) override { finestra.Elenco().Form_QueryUnload(); }
  void MostraAttesa(std::string_view /*testo*/, int /*millisecondi*/, const std::function<void()>& lavoro) override {
    lavoro();
  }
};

/// Runs `schermata` on the services of a benchmark and returns the milliseconds from the first statement on its open
/// connection (the look-up of the company) to the moment the window would be shown: sorting, layout and the end of the
/// connection are in them. `inviata` is told every statement's text.
template <typename Schermata>
double CaricoSchermata(DesktopCronometro& desktop, const std::function<void(std::string_view)>& inviata,
                       Schermata schermata) {
  Orologio::time_point inizio;
  const ServiziSostituiti servizi({[&]() -> Desktop& { return desktop; }, nullptr, nullptr,
                                   [] { return DataOra{2006, 3, 5, 14, 7, 9}; },
                                   [&](std::string_view testo) {
                                     if (testo.find("AZIENDELINEE") != std::string_view::npos) {
                                       inizio = Orologio::now();
                                     }
                                     inviata(testo);
                                   }});
  schermata();
  return std::chrono::duration<double, std::milli>(desktop.mostrato - inizio).count();
}

/// Milliseconds of the two sides of a comparison, medians.
struct Tempi {
  double schermata = 0;
  double nudo = 0;
  [[nodiscard]] double Rapporto() const { return schermata / nudo; }
};

/// Measures the two sides in turns, so that a busy moment of the machine meets both.
template <typename Schermata, typename Nudo> Tempi Confronta(int prove, Schermata schermata, Nudo nudo) {
  std::vector<double> tempiSchermata;
  std::vector<double> tempiNudi;
  for (int prova = 0; prova < prove; ++prova) {
    tempiNudi.push_back(nudo());
    tempiSchermata.push_back(schermata());
  }
  return {Mediana(tempiSchermata), Mediana(tempiNudi)};
}

} // namespace lumoscad::bench
