#include "Battito.hpp"
#include "FinestraFinta.hpp"

#include "common/Stato.hpp"
#include "common/Testo.hpp"
#include "platform/Services.hpp"
#include "platform/ado/Ado.hpp"
#include "platform/qt/QtDesktop.hpp"
#include "screens/frmLumoScadenzeBanche.hpp"
#include "support/LargeDatabase.hpp"
#include "support/Paths.hpp"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QTableView>
#include <QTest>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <optional>

namespace lumoscad::test {
namespace {

using Colonna = frmLumoScadenzeBanche::Colonna;

constexpr long Rate = 100000;

/// What a row is expected to hand back.
struct Attesa {
  std::string scadenza, banca, originale, rata; ///< as loaded
  std::optional<std::string> nuovaScadenza;     ///< a change of date
  std::optional<std::string> nuovaBanca;        ///< a change of bank: its description, "" to remove it
};

/// The expected changes by row: item number, instalment and due date together name one.
using Attese = std::map<std::string, Attesa>;

std::string Cella(const QTableView& lista, int riga, int colonna) {
  return lista.model()->index(riga, colonna).data().toString().toStdString();
}

QTableView& Lista(QDialog& finestra) {
  return Trova<QTableView>(finestra, "LVScadenzeBanche");
}

/// The person at the screen: gestures with real keys and clicks, and a note of what each must lead to.
class Persona {
 public:
  Attese attese;
  std::string primaSalita, ultimaSalita; ///< first and last text after an ascending sort by item number

  std::vector<Passo> Gesti() {
    Scorri();
    OrdinaTutto();
    ScriviDataInAlto("31/12/2030");
    for (int i = 0; i < 20; ++i) {
      SpuntaData(1 + i * 4999);
    }
    for (int i = 0; i < 10; ++i) {
      ModificaData(2 + i * 9999);
      ModificaBanca(3 + i * 9998, 1 + i % 6);
    }
    OrdinaTutto();
    for (int i = 0; i < 4; ++i) {
      ScegliBancaInAlto();
      SpuntaBanca(5 + i * 20011);
    }
    ScriviDataInAlto("30/06/2031");
    Scorri();
    Aggiungi("conferma", [](QDialog& finestra) { Premi(finestra, "PictureOk"); });
    return std::move(passi_);
  }

 private:
  static void Premi(QDialog& finestra, const char* nome) {
    QTest::mouseClick(&Trova<QAbstractButton>(finestra, nome), Qt::LeftButton);
  }

  void Aggiungi(const char* nome, std::function<void(QDialog&)> azione) { passi_.push_back({nome, std::move(azione)}); }

  void Tasto(const char* nome, Qt::Key tasto, int volte) {
    for (int i = 0; i < volte; ++i) {
      Aggiungi(nome, [tasto](QDialog& finestra) { QTest::keyClick(&Lista(finestra), tasto); });
    }
  }

  void Scorri() {
    Tasto("scorrimento", Qt::Key_PageDown, 30);
    Tasto("scorrimento", Qt::Key_Down, 10);
    Tasto("scorrimento", Qt::Key_End, 1);
    Tasto("scorrimento", Qt::Key_PageUp, 10);
    Tasto("scorrimento", Qt::Key_Home, 1);
  }

  void OrdinaTutto() {
    for (const int testata : {5, 1, 2, 6}) {
      for (int volta = 0; volta < 2; ++volta) {
        Aggiungi("ordine",
                 [testata](QDialog& finestra) { Premi(finestra, ("TLwTestata_" + std::to_string(testata)).c_str()); });
        if (testata == 2) {
          Aggiungi("lettura", [this](QDialog& finestra) { LeggiEstremi(finestra); });
        }
      }
    }
  }

  /// A sort the other way round leads to the same two ends, exchanged.
  void LeggiEstremi(QDialog& finestra) {
    QTableView& lista = Lista(finestra);
    const std::string prima = Cella(lista, 0, Colonna::Partita);
    const std::string ultima = Cella(lista, lista.model()->rowCount() - 1, Colonna::Partita);
    if (prima < ultima) {
      primaSalita = prima;
      ultimaSalita = ultima;
    } else {
      EXPECT_EQ(prima, ultimaSalita);
      EXPECT_EQ(ultima, primaSalita);
    }
  }

  /// The click on the field takes the ticks of the dates away.
  void ScriviDataInAlto(const char* data) {
    Aggiungi("deseleziona date", [](QDialog& finestra) {
      auto& campo = Trova<QLineEdit>(finestra, "TextScadenza");
      QTest::mouseClick(&campo, Qt::LeftButton);
      campo.selectAll();
    });
    Aggiungi("data in alto", [this, data](QDialog& finestra) {
      QTest::keyClicks(&Trova<QLineEdit>(finestra, "TextScadenza"), data);
      dataInAlto_ = data;
    });
  }

  void ScegliBancaInAlto() {
    Aggiungi("deseleziona banche", [this](QDialog& finestra) {
      auto& campo = Trova<QComboBox>(finestra, "cmbBanche");
      campo.setFocus();
      QTest::keyClick(&campo, Qt::Key_Down);
      bancaInAlto_ = campo.currentText().toStdString();
      for (int riga = 0; riga < 50; ++riga) {
        EXPECT_EQ(Lista(finestra).model()->index(riga, Colonna::Radio2).data(Qt::CheckStateRole).toInt(),
                  Qt::Unchecked);
      }
    });
  }

  static void Clicca(QDialog& finestra, int riga, int colonna) {
    QTableView& lista = Lista(finestra);
    const QModelIndex cella = lista.model()->index(riga, colonna);
    lista.scrollTo(cella);
    QTest::mouseClick(lista.viewport(), Qt::LeftButton, {}, lista.visualRect(cella).center());
  }

  Attesa& Riga(QDialog& finestra, int riga) {
    QTableView& lista = Lista(finestra);
    Attesa attesa{Cella(lista, riga, Colonna::Scadenza),
                  Cella(lista, riga, Colonna::Banca),
                  Cella(lista, riga, Colonna::ScadenzaOrig),
                  Cella(lista, riga, Colonna::NumeroRata),
                  {},
                  {}};
    const std::string nome = Cella(lista, riga, Colonna::Partita) + " " + attesa.rata + " " + attesa.scadenza;
    return attese.try_emplace(nome, std::move(attesa)).first->second;
  }

  void SpuntaData(int riga) {
    Aggiungi("spunta", [this, riga](QDialog& finestra) {
      Attesa& attesa = Riga(finestra, riga);
      Clicca(finestra, riga, Colonna::Radio1);
      attesa.nuovaScadenza = dataInAlto_;
      EXPECT_EQ(Cella(Lista(finestra), riga, Colonna::NuovaScadenza), dataInAlto_);
    });
  }

  void SpuntaBanca(int riga) {
    Aggiungi("spunta", [this, riga](QDialog& finestra) {
      Attesa& attesa = Riga(finestra, riga);
      Clicca(finestra, riga, Colonna::Radio2);
      if (!attesa.nuovaBanca && attesa.banca == bancaInAlto_) {
        return; // the bank it has already
      }
      attesa.nuovaBanca = bancaInAlto_;
      EXPECT_EQ(Cella(Lista(finestra), riga, Colonna::NuovaBanca), bancaInAlto_);
    });
  }

  void ModificaData(int riga) {
    Aggiungi("cella data", [riga](QDialog& finestra) { Clicca(finestra, riga, Colonna::NuovaScadenza); });
    Aggiungi("cella data", [this, riga](QDialog& finestra) {
      Attesa& attesa = Riga(finestra, riga);
      auto& editor = Trova<QLineEdit>(finestra, "TextScad");
      ASSERT_TRUE(editor.isVisible());
      editor.selectAll();
      QTest::keyClicks(&editor, "150131");
      QTest::keyClick(&editor, Qt::Key_Return);
      attesa.nuovaScadenza = "15/01/2031";
    });
  }

  void ModificaBanca(int riga, int indice) {
    Aggiungi("cella banca", [riga](QDialog& finestra) { Clicca(finestra, riga, Colonna::NuovaBanca); });
    Aggiungi("cella banca", [this, riga, indice](QDialog& finestra) {
      Attesa& attesa = Riga(finestra, riga);
      auto& editor = Trova<QComboBox>(finestra, "cmbBanche2");
      ASSERT_TRUE(editor.isVisible());
      QTest::keyClick(&editor, Qt::Key_Home);
      for (int i = 0; i < indice; ++i) {
        QTest::keyClick(&editor, Qt::Key_Down);
      }
      const std::string scelta = editor.currentText().toStdString();
      QTest::keyClick(&editor, Qt::Key_Return);
      if (scelta != attesa.banca) {
        attesa.nuovaBanca = scelta;
      }
    });
  }

  std::vector<Passo> passi_;
  std::string dataInAlto_;
  std::string bancaInAlto_;
};

/// Codes of the banks by their description, from the database itself.
std::map<std::string, std::string> CodiciBanche(const std::string& connessione) {
  ado::Connection connection;
  connection.ConnectionString = connessione;
  connection.Open();
  ado::Command comando;
  comando.ActiveConnection = &connection;
  comando.CommandText = "SELECT CODICECONTO, DESCRIZIONEVOCE FROM CONTOCONTABILE WHERE TIPOLOGIACONTO IN ('06', '07')";
  std::map<std::string, std::string> codici;
  for (auto righe = comando.Execute(); !righe.Eof(); righe.MoveNext()) {
    codici.emplace(*righe.ValueAt(1), *righe.ValueAt(0));
  }
  return codici;
}

void Controlla(const VariazioniCanalizzazione& variazioni, Attese attese, std::map<std::string, std::string> codici) {
  std::erase_if(attese, [](const auto& voce) { return !voce.second.nuovaScadenza && !voce.second.nuovaBanca; });
  EXPECT_EQ(variazioni.size(), attese.size());
  for (const VariazioneCanalizzazione& v : variazioni) {
    const auto trovata = attese.find(v.NumeroPartita + " " + v.NumeroRata + " " + v.VecchiaScadenza);
    if (trovata == attese.end()) {
      ADD_FAILURE() << "a row nobody touched: " << v.NumeroPartita;
      continue;
    }
    const Attesa& attesa = trovata->second;
    // The generator gives an item the number "year/key".
    EXPECT_EQ(v.idPartitaKey, v.NumeroPartita.substr(v.NumeroPartita.find('/') + 1));
    EXPECT_EQ(v.isScadenzaChanged, attesa.nuovaScadenza.has_value());
    EXPECT_EQ(v.NuovaScadenza, attesa.nuovaScadenza.value_or(std::string(Nullo)));
    EXPECT_EQ(v.isBancaChanged, attesa.nuovaBanca.has_value()) << v.NumeroPartita;
    EXPECT_EQ(v.NuovaBanca, attesa.nuovaBanca ? codici[*attesa.nuovaBanca] : "");
    EXPECT_EQ(v.VecchiaBanca, attesa.banca.empty() ? std::string(Nullo) : codici[attesa.banca]);
    EXPECT_EQ(v.ScadenzaOriginale, attesa.originale);
    attese.erase(trovata);
  }
  EXPECT_TRUE(attese.empty());
}

void ControllaFermi(const std::map<std::string, double>& fermi) {
  for (const auto& [gesto, fermo] : fermi) {
    std::printf("  %-20s %6.1f ms\n", gesto.c_str(), fermo);
#ifdef LUMOSCAD_TEMPI_VINCOLANTI
    EXPECT_LE(fermo, 100) << gesto << ": milliseconds without an answer";
#endif
  }
  EXPECT_THAT(fermi, testing::SizeIs(testing::Ge(9)));
}

TEST(AHundredThousandInstalments, TheOpenWindowNeverStandsStillAndHandsBackWhatWasEdited) {
  ASSERT_TRUE(test::PostgresServer::Available()) << "PostgreSQL or its ODBC driver is not installed";
  const test::LargeDatabase base(test::OutputPath("grande-postgres"), Rate);
  const std::unique_ptr<Desktop> desktop = qt::CreateDesktop();
  const StatoSostituito moduli;
  stato().ComandoCorrente = base.command();
  const ReplacedServices servizi({[&]() -> Desktop& { return *desktop; }, nullptr, nullptr,
                                  [] { return DateTime{2006, 3, 5, 14, 7, 9}; }, nullptr});

  frmLumoScadenzeBanche schermata;
  VariazioniCanalizzazione variazioni;
  Persona persona;
  Battito battito(persona.Gesti());
  schermata.VisualizzaScadenzeBanche("01", {}, variazioni);
  battito.Chiudi();

  EXPECT_TRUE(battito.Finito());
  EXPECT_EQ(schermata.MotivoChiusura(), "");
  EXPECT_EQ(schermata.griglia().righe.Quante(), static_cast<std::size_t>(Rate));
  EXPECT_LT(persona.primaSalita, persona.ultimaSalita);
  EXPECT_GE(persona.attese.size(), 40U);
  EXPECT_GE(variazioni.size(), 35U);
  Controlla(variazioni, persona.attese, CodiciBanche(base.ConnectionText()));
  ControllaFermi(battito.Fermi());
}

} // namespace
} // namespace lumoscad::test
