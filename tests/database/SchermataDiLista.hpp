#pragma once

#include "platform/RuntimeError.hpp"
#include "screens/Griglia.hpp"
#include "support/TestBench.hpp"

#include <gmock/gmock.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace lumoscad::test {

/// A list screen over a database, by its kind: each showing plays a script of gestures on its window.
template <typename Form> class SchermataDiLista : public testing::TestWithParam<const char*> {
 protected:
  /// Has the next window play `copione`.
  void Recita(const std::function<void()>& copione) {
    banco.desktop.scripts.emplace_back([this, copione](ListWindow& aperta) {
      finestra = &aperta;
      if (copione) {
        copione();
      }
    });
  }
  /// The text with which `mostra` fails; empty when it does not.
  static std::string FallimentoDi(const std::function<void()>& mostra) {
    try {
      mostra();
    } catch (const RuntimeError& errore) {
      EXPECT_EQ(errore.Number(), -2147220954);
      return errore.Description();
    }
    return "";
  }
  void Clic(std::size_t riga, int colonna) const {
    int sinistra = 0;
    for (int i = 0; i < colonna; ++i) {
      sinistra += finestra->Description().columns[static_cast<std::size_t>(i)].width;
    }
    finestra->Seleziona(static_cast<std::ptrdiff_t>(righe.PostoDellaRiga(riga)));
    finestra->LVScadenze_MouseDown(sinistra + 1, 5);
    finestra->LVScadenze_Click(240 * static_cast<int>(righe.PostoDellaRiga(riga)));
  }
  void ScriviInCella(std::size_t riga, int colonna, const char* testo) const {
    Clic(riga, colonna);
    finestra->TextScad_Change(testo);
    finestra->TextScad_KeyPress(13);
  }
  void ScegliInCella(std::size_t riga, int colonna, int indice) const {
    Clic(riga, colonna);
    finestra->cmbBanche2_Click(indice);
    finestra->cmbBanche2_LostFocus();
  }
  /// Text, tag and tick number `spunta` of a new bank.
  [[nodiscard]] std::string BancaInCella(std::size_t riga, int colonna, int spunta) const {
    return std::string(righe.Testo(riga, colonna)) + "|" + std::string(righe.Tag(riga, colonna)) +
           (righe.Spuntata(riga, spunta) ? "|x" : "|");
  }
  [[nodiscard]] std::vector<std::string> Testi(std::size_t riga) const {
    std::vector<std::string> testi;
    for (int colonna = 0; colonna < Form::Colonne; ++colonna) {
      testi.emplace_back(righe.Testo(riga, colonna));
    }
    return testi;
  }
  [[nodiscard]] std::vector<std::string> Testate() const {
    std::vector<std::string> testate;
    for (const ListHeading& testata : finestra->Description().headings) {
      testate.push_back(testata.text);
    }
    return testate;
  }
  /// What the list said that it lists, at each statement of the showings to come.
  void AscoltaIlTag(std::vector<std::string>& durante) {
    ActiveServices().statementSent = [&](std::string_view) { durante.push_back(schermata.griglia().Tag); };
  }

  TestBench banco;
  Form schermata;
  const RigheGriglia& righe = schermata.griglia().righe;
  ListWindow* finestra = nullptr;
};

} // namespace lumoscad::test
