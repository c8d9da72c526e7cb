#pragma once

#include "FinestraFinta.hpp"
#include "screens/FormLumoScad.hpp"
#include "support/TestBench.hpp"

#include <QTableView>
#include <QTimer>

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace lumoscad::test {

/// The single-item screen in its real window, with four instalments; its confirmations only leave a trace, and its
/// message boxes are answered with Enter.
class ScadenzarioAperto : public testing::Test {
 protected:
  ScadenzarioAperto();

  /// Shows the open item's window, runs `copione` on it once it is active and closes it if it is still open.
  std::string Mostra(const std::function<void(QDialog&)>& copione);
  std::string MostraExtra(const std::function<void(QDialog&)>& copione);

  [[nodiscard]] static QTableView& ListaScad(QDialog& finestra);
  /// A key or a text to whatever has the focus.
  static void Tasto(Qt::Key tasto, Qt::KeyboardModifiers con = {});
  static void Scrivi(const QString& testo);
  /// A click in the middle of the widget called `nome`.
  static void Premi(QDialog& finestra, const char* nome);
  [[nodiscard]] std::string Nuova(std::size_t riga) const;
  [[nodiscard]] int Spuntate() const;

  /// The window's columns.
  static constexpr int Casella = FormLumoScad::Casella;
  static constexpr int ColonnaScadenza = FormLumoScad::Scadenza;
  static constexpr int ColonnaNuova = FormLumoScad::NuovaScadenza;

  TestBench banco;
  std::unique_ptr<Desktop> desktop;
  std::vector<std::string> confermate;
  std::vector<std::string> box; ///< the texts of the message boxes
  std::function<void()> alBox;  ///< runs before a message box is answered
  std::function<std::string()> esito = [] { return std::string(); };
  FormLumoScad form{[this] { return Confermata("Scad"); }, [this] { return Confermata("Extra"); }};

 private:
  std::string Confermata(const std::string& modo);
  void RispondiAlBox();

  QTimer risponditore_;
};

} // namespace lumoscad::test
