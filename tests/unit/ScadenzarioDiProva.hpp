#pragma once

#include "screens/FormLumoScad.hpp"
#include "support/TestBench.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace lumoscad::test {

/// The screen with three instalments; its confirmations only leave a trace.
class ScadenzarioDiProva : public testing::Test {
 protected:
  ScadenzarioDiProva() {
    for (const char* scadenza : {"31/03/2006", "30/04/2006", "31/05/2006"}) {
      form.Aggiungi(scadenza, "28/02/2006", "100,00");
    }
    form.ResizeScad();
  }

  void Clic(std::size_t riga) {
    form.griglia().Seleziona(static_cast<std::ptrdiff_t>(riga));
    form.griglia().LVScadenze_Click(static_cast<int>(riga) * 240);
  }
  void ScriviData(std::size_t riga, std::string_view testo) {
    Clic(riga);
    form.griglia().TextScad_Change(testo);
  }
  /// Types in the top field and leaves it.
  void ScriviInAlto(std::string_view testo) {
    form.griglia().TextScadenza_Change(testo);
    form.griglia().TextScadenza_LostFocus();
  }
  [[nodiscard]] std::vector<std::string> NuoveScadenze() const {
    std::vector<std::string> nuove;
    for (std::size_t riga = 0; riga < form.griglia().righe.Quante(); ++riga) {
      nuove.emplace_back(form.griglia().righe.Testo(riga, FormLumoScad::NuovaScadenza));
    }
    return nuove;
  }
  [[nodiscard]] std::vector<bool> Spunte() const {
    std::vector<bool> spunte;
    for (std::size_t riga = 0; riga < form.griglia().righe.Quante(); ++riga) {
      spunte.push_back(form.griglia().righe.Spuntata(riga, 0));
    }
    return spunte;
  }
  /// Shows the screen in mode "Scad" and plays `gesti` in its window.
  std::string Mostra(std::function<void(SingleItemWindow&)> gesti) {
    banco.desktop.itemScripts.push_back(std::move(gesti));
    return form.VisualizzaScad();
  }

  TestBench banco;
  std::vector<std::string> confermate;
  std::function<std::string()> esito = [] { return std::string(); };
  FormLumoScad form{[this] { return Confermata("Scad"); }, [this] { return Confermata("Extra"); }};

 private:
  std::string Confermata(const std::string& modo) {
    confermate.push_back(modo);
    return esito();
  }
};

} // namespace lumoscad::test
