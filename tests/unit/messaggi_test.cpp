#include "common/Messaggi.hpp"
#include "support/Prova.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace lumoscad;
using testing::ElementsAre;

TEST(Messaggio, SenzaDettaglioMostraIlTestoDaSolo) {
  prova::Banco banco;
  MostraMessaggio("A", "");
  EXPECT_THAT(banco.desktop.box, ElementsAre("A"));
}

TEST(Messaggio, UnDettaglioInBiancoContaComeNessuno) {
  prova::Banco banco;
  MostraMessaggio("A", "   ");
  EXPECT_THAT(banco.desktop.box, ElementsAre("A"));
}

TEST(Messaggio, IlDettaglioStaSullaRigaSopra) {
  prova::Banco banco;
  MostraMessaggio("A", "B");
  EXPECT_THAT(banco.desktop.box, ElementsAre("B\r\nA"));
}

TEST(Messaggio, IlDettaglioConservaISuoiSpazi) {
  prova::Banco banco;
  MostraMessaggio("A", " B ");
  EXPECT_THAT(banco.desktop.box, ElementsAre(" B \r\nA"));
}

TEST(Messaggio, PortaIlNomeDelProdotto) {
  prova::Banco banco;
  MostraMessaggio("A", "");
  EXPECT_THAT(banco.desktop.titoli, ElementsAre("LumoScad"));
}

TEST(Messaggio, UnTestoDiTrentadueKibSiVedePerIntero) {
  prova::Banco banco;
  const std::string testo(32U << 10U, 'x');
  MostraMessaggio(testo, "");
  EXPECT_THAT(banco.desktop.box, ElementsAre(testo));
}

TEST(Messaggio, DiUnTestoPiuLungoSiVedonoTrentadueKibEQuantoManca) {
  prova::Banco banco;
  const std::string testo(1U << 20U, 'x');
  MostraMessaggio(testo, "");
  EXPECT_THAT(banco.desktop.box,
              ElementsAre(testo.substr(0, 32U << 10U) + "\r\n[... mancano altri 1.015.808 caratteri]"));
}

TEST(Messaggio, IlTaglioNonDivideUnCarattereEContaICaratteri) {
  prova::Banco banco;
  std::string testo = "x";
  for (int i = 0; i < 20'000; ++i) {
    testo += "è";
  }
  MostraMessaggio(testo, "");
  EXPECT_THAT(banco.desktop.box,
              ElementsAre(testo.substr(0, (32U << 10U) - 1) + "\r\n[... mancano altri 3.617 caratteri]"));
}

TEST(Messaggio, LaFraseFinaleSiVedePerInteroAncheSottoUnTestoTagliato) {
  prova::Banco banco;
  const std::string testo(1U << 20U, 'x');
  MostraMessaggio(testo, "", "Da allineare: conto 1.");
  EXPECT_THAT(banco.desktop.box, ElementsAre(testo.substr(0, (32U << 10U) - 24) +
                                             "\r\n[... mancano altri 1.015.832 caratteri]\r\nDa allineare: conto 1."));
}

TEST(Messaggio, LaFraseFinaleStaSullaRigaSotto) {
  prova::Banco banco;
  MostraMessaggio("A", "B", "C");
  EXPECT_THAT(banco.desktop.box, ElementsAre("B\r\nA\r\nC"));
}

TEST(Messaggio, UnSoloCarattereInPiuSiDiceAlSingolare) {
  prova::Banco banco;
  MostraMessaggio(std::string((32U << 10U) + 1, 'x'), "");
  EXPECT_THAT(banco.desktop.box, ElementsAre(testing::EndsWith("x\r\n[... manca un altro carattere]")));
}

TEST(Messaggio, UnTestoCheNonEUtf8SiTagliaAncheSenzaInizioDiCarattere) {
  prova::Banco banco;
  MostraMessaggio(std::string(100'000, '\x80'), "");
  ASSERT_EQ(banco.desktop.box.size(), 1U);
  EXPECT_LT(banco.desktop.box[0].size(), 33'000U);
}
