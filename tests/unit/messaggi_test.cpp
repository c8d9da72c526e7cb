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
