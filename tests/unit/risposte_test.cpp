#include "host/Risposte.hpp"
#include "platform/xml/Nodo.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <vector>

using namespace lumoscad;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

template <typename Classe> void Consegna(Classe& risposta, std::string_view documento) {
  risposta.XMLParser.Consegna(xml::Read(documento));
}

std::vector<std::string> Testi(const Scadenza& s) {
  return {s.DataScadenza, s.TipoPagamento, s.Importo, s.ScadenzaRiallocata};
}
std::vector<std::string> Testi(const ExtraScadenza& s) {
  return {s.DataScadenza, s.Importo};
}
std::vector<std::string> Testi(const CobolPartita& s) {
  return {s.Scadenza, s.Importo, s.ScadRiall};
}
std::vector<std::string> Testi(const Partita& s) {
  return {s.Conto, s.DescrizioneConto, s.ContoPartita};
}
std::vector<std::string> Testi(const ExtraMovimento& s) {
  return {s.Serie, s.Esercizio, s.Numero};
}

/// The texts of every item of a list, in order.
template <typename Voci> std::vector<std::vector<std::string>> Elenco(const Voci& voci) {
  std::vector<std::vector<std::string>> testi;
  testi.reserve(voci.size());
  for (const auto& voce : voci) {
    testi.push_back(Testi(*voce));
  }
  return testi;
}

} // namespace

TEST(InstalmentReply, CollectsItsElements) {
  Scadenza s;
  Consegna(s, "<R><DATASCADENZA>20060305</DATASCADENZA><TIPOPAGAMENTO>RB</TIPOPAGAMENTO><IMPORTO>1,50</IMPORTO>"
              "<SCADENZARIALLOCATA>S</SCADENZARIALLOCATA></R>");
  EXPECT_THAT(Testi(s), ElementsAre("20060305", "RB", "1,50", "S"));
}

TEST(InstalmentReply, TakesLowerCaseAndRepeatedElementsAndIgnoresUnknownOnes) {
  Scadenza s;
  Consegna(s, "<R><datascadenza>1</datascadenza><Importo>2</Importo><DATASCADENZA>3</DATASCADENZA><ALTRO>x</ALTRO>"
              "<DATASCADENZE>y</DATASCADENZE></R>");
  EXPECT_THAT(Testi(s), ElementsAre("3", "", "2", ""));
}

TEST(ExtraInstalmentReply, CollectsItsElements) {
  ExtraScadenza s;
  Consegna(s, "<R><importo>9</importo><DataScadenza>20060305</DataScadenza><IMPORTO>10</IMPORTO>"
              "<TIPOPAGAMENTO>RB</TIPOPAGAMENTO></R>");
  EXPECT_THAT(Testi(s), ElementsAre("20060305", "10"));
}

TEST(CobolItemReply, CollectsItsElements) {
  CobolPartita s;
  Consegna(s, "<R><scadenza>1</scadenza><IMPORTO>5</IMPORTO><ScadRiall>N</ScadRiall><SCADENZA>2</SCADENZA>"
              "<SCADENZE><SCADENZA>3</SCADENZA></SCADENZE></R>");
  EXPECT_THAT(Testi(s), ElementsAre("2", "5", "N"));
}

TEST(ItemReply, CollectsItsElements) {
  Partita p;
  Consegna(p, "<R><CONTO>C10</CONTO><DescrizioneConto>Alfa è</DescrizioneConto><conto>C11</conto>"
              "<PARTITASCAD>AB   123</PARTITASCAD><SERIE>A</SERIE></R>");
  EXPECT_THAT(Testi(p), ElementsAre("C11", "Alfa è", "AB   123"));
  EXPECT_THAT(p.Scadenze, IsEmpty());
}

TEST(ItemReply, TakesEachChildOfTheListForAnInstalmentWhateverItsName) {
  Partita p;
  Consegna(p, "<R><Scadenze><A><DATASCADENZA>1</DATASCADENZA><IMPORTO>10</IMPORTO></A><B/>"
              "<CONTO><datascadenza>3</datascadenza><datascadenza>4</datascadenza></CONTO></Scadenze></R>");
  EXPECT_THAT(Elenco(p.Scadenze),
              ElementsAre(ElementsAre("1", "", "10", ""), ElementsAre("", "", "", ""), ElementsAre("4", "", "", "")));
  EXPECT_EQ(p.Conto, "") << "i figli dell'elenco non sono elementi della partita";
}

TEST(ItemReply, AddsARepeatedList) {
  Partita p;
  Consegna(p, "<R><SCADENZE><A><IMPORTO>1</IMPORTO></A></SCADENZE><SCADENZE/>"
              "<SCADENZE><A><IMPORTO>2</IMPORTO></A></SCADENZE></R>");
  EXPECT_THAT(Elenco(p.Scadenze), ElementsAre(ElementsAre("", "", "1", ""), ElementsAre("", "", "2", "")));
}

TEST(ItemReply, HasNoInstalmentsFromAnEmptyList) {
  Partita p;
  Consegna(p, "<R><SCADENZE></SCADENZE></R>");
  EXPECT_THAT(p.Scadenze, IsEmpty());
}

TEST(ExtraMovementReply, CollectsElementsAndList) {
  ExtraMovimento m;
  Consegna(m, "<R><serie>B</serie><SERIE>A</SERIE><Esercizio>2006</Esercizio><NUMERO>15</NUMERO><CONTO>no</CONTO>"
              "<SCADENZE><X><IMPORTO>1</IMPORTO></X><X><DATASCADENZA>2</DATASCADENZA></X><Y/></SCADENZE></R>");
  EXPECT_THAT(Testi(m), ElementsAre("A", "2006", "15"));
  EXPECT_THAT(Elenco(m.Scadenze), ElementsAre(ElementsAre("", "1"), ElementsAre("2", ""), ElementsAre("", "")));
}

TEST(ExtraMovementReply, HasNoInstalmentsFromAnEmptyList) {
  ExtraMovimento m;
  Consegna(m, "<R><SCADENZE/></R>");
  EXPECT_THAT(m.Scadenze, IsEmpty());
}

template <typename Classe> class EveryReply : public testing::Test {};
using Classi = testing::Types<Scadenza, ExtraScadenza, CobolPartita, Partita, ExtraMovimento>;
TYPED_TEST_SUITE(EveryReply, Classi);

TYPED_TEST(EveryReply, StaysAsItWasAtANodeWithoutChildren) {
  TypeParam risposta;
  const std::string_view piena = "<R><CONTO>a</CONTO><SERIE>b</SERIE><DATASCADENZA>c</DATASCADENZA><IMPORTO>d</IMPORTO>"
                                 "<SCADENZA>e</SCADENZA></R>";
  Consegna(risposta, piena);
  const auto prima = Testi(risposta);
  EXPECT_THAT(prima, testing::Contains(testing::Not("")));
  Consegna(risposta, "<R/>");
  Consegna(risposta, "<CONTO>solo testo</CONTO>");
  EXPECT_EQ(Testi(risposta), prima);
}

TYPED_TEST(EveryReply, IsEmptiedByARepeatedEmptyElement) {
  TypeParam risposta;
  Consegna(risposta, "<R><CONTO>a</CONTO><SERIE>b</SERIE><DATASCADENZA>c</DATASCADENZA><SCADENZA>e</SCADENZA>"
                     "<conto/><serie/><datascadenza/><scadenza/></R>");
  EXPECT_THAT(Testi(risposta), testing::Each(""));
}

TYPED_TEST(EveryReply, IgnoresDeeperElements) {
  TypeParam risposta;
  Consegna(risposta, "<R><D><CONTO>a</CONTO><SERIE>b</SERIE><DATASCADENZA>c</DATASCADENZA><IMPORTO>d</IMPORTO>"
                     "<SCADENZA>e</SCADENZA></D></R>");
  EXPECT_THAT(Testi(risposta), testing::Each(""));
}
