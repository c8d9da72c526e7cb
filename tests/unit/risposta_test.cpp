#include "common/MsgAnnulla.hpp"
#include "platform/xml/Nodo.hpp"

#include <gtest/gtest.h>
#include <string_view>

using namespace lumoscad;

namespace {

void Consegna(MsgAnnulla& risposta, std::string_view documento) {
  risposta.XMLParser.Consegna(xml::Read(documento));
}

} // namespace

TEST(Reply, BeginsEmpty) {
  const MsgAnnulla risposta;
  EXPECT_EQ(risposta.Messaggio, "");
  EXPECT_EQ(risposta.Errore, "");
}

TEST(Reply, CollectsMessageAndError) {
  MsgAnnulla risposta;
  Consegna(risposta, "<R><MESSAGGIO>fatto</MESSAGGIO><ERRORE>ma</ERRORE></R>");
  EXPECT_EQ(risposta.Messaggio, "fatto");
  EXPECT_EQ(risposta.Errore, "ma");
}

TEST(Reply, TakesAnElementsNameInAnyCase) {
  MsgAnnulla risposta;
  Consegna(risposta, "<r><messaggio>fatto</messaggio><Errore>ma</Errore></r>");
  EXPECT_EQ(risposta.Messaggio, "fatto");
  EXPECT_EQ(risposta.Errore, "ma");
}

TEST(Reply, TakesTheLastOfARepeatedElement) {
  MsgAnnulla risposta;
  Consegna(risposta, "<R><ERRORE>primo</ERRORE><MESSAGGIO>m</MESSAGGIO><errore>secondo</errore></R>");
  EXPECT_EQ(risposta.Errore, "secondo");
}

TEST(Reply, IsEmptiedByARepeatedEmptyElement) {
  MsgAnnulla risposta;
  Consegna(risposta, "<R><ERRORE>primo</ERRORE><ERRORE/></R>");
  EXPECT_EQ(risposta.Errore, "");
}

TEST(Reply, LosesItsMessageToALaterEmptyOne) {
  MsgAnnulla risposta;
  Consegna(risposta, "<R><MESSAGGIO>primo</MESSAGGIO><ERRORE>ma</ERRORE><messaggio></messaggio></R>");
  EXPECT_EQ(risposta.Messaggio, "");
  EXPECT_EQ(risposta.Errore, "ma");
}

TEST(Reply, IgnoresOtherElements) {
  MsgAnnulla risposta;
  Consegna(risposta, "<R><CONTO>1</CONTO><ERRORI>x</ERRORI><DENTRO><ERRORE>y</ERRORE></DENTRO></R>");
  EXPECT_EQ(risposta.Messaggio, "");
  EXPECT_EQ(risposta.Errore, "");
}

TEST(Reply, StaysAsItWasAtANodeWithoutChildren) {
  MsgAnnulla risposta;
  risposta.Messaggio = "prima";
  risposta.Errore = "prima";
  Consegna(risposta, "<R/>");
  Consegna(risposta, "<ERRORE>radice</ERRORE>");
  EXPECT_EQ(risposta.Messaggio, "prima");
  EXPECT_EQ(risposta.Errore, "prima");
}

TEST(Reply, HasTheTextsOfTheDescendantsInItsValue) {
  MsgAnnulla risposta;
  Consegna(risposta, "<R><MESSAGGIO>due <B>rate</B> è</MESSAGGIO></R>");
  EXPECT_EQ(risposta.Messaggio, "due rate è");
}
