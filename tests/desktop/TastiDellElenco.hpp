#pragma once

#include "FinestraFinta.hpp"
#include "TuttiITasti.hpp"
#include "platform/qt/QtDesktop.hpp"
#include "screens/frmLumoScadenzeBanche.hpp"
#include "support/TestBench.hpp"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad::test {

/// The credits' screen, made anew for each showing: thirty rows of five customers, with two instalments of each item.
class CreditsForKeys {
 public:
  using Schermata = frmLumoScadenzeBanche;

  static constexpr int Rows = 30;

  CreditsForKeys() {
    griglia.modo = "DEBITI/CREDITI";
    griglia.cmbBanche = griglia.cmbBanche2 = {{" ", "BANCA ALFA", "BANCA BETA"}, {"B01", "B02"}};
    for (int i = 0; i < Rows; ++i) {
      const std::string conto = i < 24 ? "CLIENTE " + std::to_string(10 + i / 6) : "ZORZI";
      const std::string partita = "2006 " + std::to_string(100 + i / 2);
      const bool scaduta = i % 3 == 0;
      const std::string data = scaduta ? "31/01/2006" : "31/03/2006";
      const std::string banca = i % 5 == 0 ? "BANCA ALFA" : "";
      griglia.righe.Aggiungi({conto, partita, data, data, banca, "100,00", "", data, std::to_string(i % 2 + 1), "",
                              banca, scaduta ? "2006/01/31" : "2006/03/31"});
      const auto riga = static_cast<std::size_t>(i);
      griglia.righe.ImpostaTag(riga, Schermata::Conto, conto);
      griglia.righe.ImpostaTag(riga, Schermata::Banca, banca.empty() ? "" : "B01");
      griglia.righe.ImpostaTag(riga, Schermata::NuovaBanca, banca.empty() ? "" : "B01");
    }
    griglia.Resize();
  }

  [[nodiscard]] std::vector<std::size_t> Ticked(int which) const {
    return RowsWhere([&](std::size_t row) { return griglia.righe.Spuntata(row, which); });
  }
  [[nodiscard]] std::vector<std::size_t> WithDate(std::string_view date) const {
    return RowsWhere([&](std::size_t row) { return griglia.righe.Testo(row, Schermata::NuovaScadenza) == date; });
  }
  [[nodiscard]] std::vector<std::size_t> Selected() const {
    return RowsWhere([&](std::size_t row) { return griglia.Selezione().Contiene(row); });
  }
  /// Makes a cell the current one, its row the only one that is selected.
  static void GoTo(QDialog& window, int row, int column) {
    Lista(window).setFocus();
    Lista(window).setCurrentIndex(Lista(window).model()->index(row, column));
  }
  /// Gives one row a new date by typing it.
  static void Change(QDialog& window, int row) {
    GoTo(window, row, Schermata::NuovaScadenza);
    TypeText("200127");
    PressKey("Return");
    GoTo(window, row, 0);
  }

  Schermata schermata;
  Griglia& griglia = schermata.griglia();

 private:
  [[nodiscard]] std::vector<std::size_t> RowsWhere(const std::function<bool(std::size_t)>& holds) const {
    std::vector<std::size_t> rows;
    for (std::size_t row = 0; row < griglia.righe.Quante(); ++row) {
      if (holds(row)) {
        rows.push_back(row);
      }
    }
    return rows;
  }
};

/// What every gesture of the table does in the credits' window.
class KeysOfTheList : public testing::Test {
 protected:
  using Schermata = frmLumoScadenzeBanche;

  static constexpr int Rows = CreditsForKeys::Rows;

  KeysOfTheList() : desktop_(qt::CreateDesktop()) {
    ActiveServices().desktop = [this]() -> Desktop& { return *desktop_; };
  }

  void Show(const std::function<void(QDialog&)>& script) {
    screen_ = std::make_unique<CreditsForKeys>();
    Recita(script);
    screen_->griglia.Mostra();
  }
  void AddWindowTrials();
  void AddSelectionTrials();
  void AddListTrials();
  void AddMovementTrials();
  void AddCellTrials();
  void AddFieldTrials();
  void AddBankTrials();
  void AddCalendarTrials();
  void AddPanelTrials();
  void AddHelpTrials();
  void AddMouseTrials();
  void ExpectMoved(const Tried& tried, std::size_t from) const;
  [[nodiscard]] std::size_t Current() const { return screen_->griglia.RigaSelezionata().value_or(Rows); }
  [[nodiscard]] static QPoint Middle(QTableView& list, int row, int column) {
    return list.visualRect(list.model()->index(row, column)).center();
  }

  TestBench bench_;
  std::unique_ptr<Desktop> desktop_;
  std::unique_ptr<CreditsForKeys> screen_;
  Trials trials_;
};

} // namespace lumoscad::test
