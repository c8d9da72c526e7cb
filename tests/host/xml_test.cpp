#include "Banco.hpp"
#include "platform/xml/Nodo.hpp"

#include <gmock/gmock.h>

namespace lumoscad {
namespace {

using test::ErroreDi;
using testing::EndsWith;
using testing::HasSubstr;

std::string RifiutoDi(const std::string& documento) {
  return ErroreDi([&] { static_cast<void>(xml::Read(documento)); }).Description();
}

std::string Annidati(int livelli) {
  std::string testo;
  for (int livello = 0; livello < livelli; ++livello) {
    testo += "<a>";
  }
  for (int livello = 0; livello < livelli; ++livello) {
    testo += "</a>";
  }
  return testo;
}

TEST(XmlDocument, KeepsElementsInDocumentOrderWithTheirNamesAsWritten) {
  const auto nodo = xml::Read("<RISPOSTA>\n <messaggio>uno</messaggio>\n <ERRORE>due</ERRORE></RISPOSTA>");
  EXPECT_EQ(nodo.name, "RISPOSTA");
  ASSERT_EQ(nodo.children.size(), 2U);
  EXPECT_EQ(nodo.children[0].name, "messaggio");
  EXPECT_EQ(nodo.children[0].value, "uno");
  EXPECT_EQ(nodo.children[1].name, "ERRORE");
  EXPECT_FALSE(nodo.containsText);
  EXPECT_TRUE(nodo.children[1].containsText);
}

TEST(XmlDocument, ValueIsTheTextOfTheElementAndItsDescendants) {
  EXPECT_EQ(xml::Read("<A>x<B>y<C>z</C></B><![CDATA[<&>]]>w</A>").value, "xyz<&>w");
}

TEST(XmlDocument, ResolvesEntitiesAndCharacterReferences) {
  EXPECT_EQ(xml::Read("<A>&lt;b&gt; &amp; &#233;&#xE8;</A>").value, "<b> & éè");
}

TEST(XmlDocument, KeepsASingleBlankAsText) {
  const auto nodo = xml::Read("<R><ERRORE> </ERRORE></R>");
  EXPECT_EQ(nodo.children.at(0).value, " ");
  EXPECT_FALSE(nodo.children.at(0).containsText);
}

TEST(XmlDocument, EmptyElementHasNeitherChildrenNorText) {
  const auto nodo = xml::Read("<R/>");
  EXPECT_TRUE(nodo.children.empty());
  EXPECT_EQ(nodo.value, "");
  EXPECT_FALSE(nodo.containsText);
}

TEST(XmlDocument, IsDecodedByTheEncodingItDeclares) {
  EXPECT_EQ(xml::Read("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><A>citt\xE0</A>").value, "città");
  EXPECT_EQ(xml::Read("<?xml version='1.0' encoding='windows-1252'?><A>\x80 5</A>").value, "€ 5");
  EXPECT_EQ(xml::Read("<?xml version=\"1.0\"?><A>città</A>").value, "città");
  EXPECT_EQ(xml::Read("\xEF\xBB\xBF<A>città</A>").value, "città");
  EXPECT_EQ(xml::Read(std::string("\xFF\xFE<\0A\0>\0\xE0\0<\0/\0A\0>\0", 18)).value, "à");
}

TEST(XmlDocument, RefusesUnknownEncodingsAndWrongBytes) {
  EXPECT_THAT(RifiutoDi("<?xml version='1.0' encoding='X-MARZIANO'?><A/>"),
              HasSubstr("codifica sconosciuta: X-MARZIANO"));
  EXPECT_THAT(RifiutoDi("<A>citt\xE0</A>"), HasSubstr("caratteri non validi nella codifica UTF-8"));
}

TEST(XmlDocument, RefusesADoctype) {
  EXPECT_THAT(RifiutoDi("<!DOCTYPE a [<!ENTITY b \"c\">]><a>&b;</a>"), HasSubstr("DOCTYPE"));
}

TEST(XmlDocument, RefusesWhatIsNotWellFormed) {
  EXPECT_THAT(RifiutoDi("ciao"), HasSubstr("testo fuori dall'elemento principale"));
  EXPECT_THAT(RifiutoDi("<A></A><B/>"), HasSubstr("più di un elemento principale"));
  EXPECT_THAT(RifiutoDi("<A/>coda"), HasSubstr("testo fuori dall'elemento principale"));
  EXPECT_THAT(RifiutoDi("<A><B></A>"), HasSubstr("sintassi"));
  EXPECT_THAT(RifiutoDi("<A>"), HasSubstr("sintassi"));
  EXPECT_THAT(RifiutoDi("<A>uno & due</A>"), HasSubstr("riferimento non ammesso"));
  EXPECT_THAT(RifiutoDi("<A>&ignota;</A>"), HasSubstr("riferimento non ammesso"));
  EXPECT_THAT(RifiutoDi("<A>&#1;</A>"), HasSubstr("riferimento non ammesso"));
  EXPECT_THAT(RifiutoDi("<A>\x01</A>"), HasSubstr("non ammesso"));
  EXPECT_THAT(RifiutoDi("<!-- nulla -->"), HasSubstr("manca l'elemento principale"));
}

TEST(XmlDocument, AnAttributesValueHidesNothingOfWhatFollowsIt) {
  EXPECT_EQ(xml::Read("<A b='>\"' c=\">'&amp;\">x<D e='/>'/></A>").value, "x");
  EXPECT_THAT(RifiutoDi("<A b='<?c'>&#8;</A>"), HasSubstr("non ammesso"));
  EXPECT_THAT(RifiutoDi("<A b=\"<!--\">&ignota;</A>"), HasSubstr("non ammesso"));
  EXPECT_THAT(RifiutoDi("<A b='>&#8;'/>"), HasSubstr("non ammesso"));
  EXPECT_THAT(RifiutoDi("<A b='&amp;\">'>&#8;</A>"), HasSubstr("non ammesso"));
}

TEST(XmlDocument, RefusesAnAttributeWrittenTwice) {
  EXPECT_THAT(RifiutoDi("<A b='1' c='2' b='3'/>"), HasSubstr("due volte lo stesso attributo"));
  EXPECT_THAT(RifiutoDi("<A><B><C d='' d=''/></B></A>"), HasSubstr("due volte lo stesso attributo"));
  EXPECT_THAT(RifiutoDi("<A xmlns:x='u' xmlns:y='u' x:b='1' y:b='2'/>"), HasSubstr("due volte lo stesso attributo"));
  EXPECT_EQ(xml::Read("<A b='1' B='2' xmlns:x='u' x:b='3'>x</A>").value, "x");
}

TEST(XmlDocument, RefusesTwoHyphensInsideAComment) {
  EXPECT_THAT(RifiutoDi("<A><!-- uno -- due -->x</A>"), HasSubstr("«--» dentro un commento"));
  EXPECT_THAT(RifiutoDi("<A><!-- uno --->x</A>"), HasSubstr("«--» dentro un commento"));
  EXPECT_THAT(RifiutoDi("<!----><!-- - --><A>--<!---->x</A><!-- -- -->"), HasSubstr("«--» dentro un commento"));
  EXPECT_EQ(xml::Read("<!----><!-- - --><A b='--'>--<!-- <&]]> -->x</A>").value, "--x");
}

TEST(XmlDocument, RefusesTheEndOfALiteralSectionInAText) {
  EXPECT_THAT(RifiutoDi("<A>x]]>y</A>"), HasSubstr("«]]>» in un testo"));
  EXPECT_THAT(RifiutoDi("<A><![CDATA[x]]>]]></A>"), HasSubstr("«]]>» in un testo"));
  EXPECT_EQ(xml::Read("<A b=']]>'>]] >]>]]&gt;<![CDATA[x]]]]></A>").value, "]] >]>]]>x]]");
}

TEST(XmlDocument, RefusesAPrefixThatNothingDeclares) {
  EXPECT_THAT(RifiutoDi("<x:A/>"), HasSubstr("prefisso che non dichiara"));
  EXPECT_THAT(RifiutoDi("<A x:b='1'/>"), HasSubstr("prefisso che non dichiara"));
  EXPECT_THAT(RifiutoDi("<A><B xmlns:x='u'/><x:C/></A>"), HasSubstr("prefisso che non dichiara"));
  EXPECT_EQ(xml::Read("<x:A xmlns:x='u' x:b='1' xml:lang='it'><x:B>y</x:B></x:A>").value, "y");
}

TEST(XmlDocument, ManyDeclarationsAreNoReasonToBeSlow) {
  std::string documento = "<A";
  for (int i = 0; i < 60000; ++i) {
    documento += " xmlns:p" + std::to_string(i) + "='u'";
  }
  documento += ">";
  for (int i = 0; i < 60000; ++i) {
    documento += "<p0:B/>";
  }
  // Looked for one by one, 3.6 thousand million times, they would outlast the runner's patience.
  EXPECT_EQ(xml::Read(documento + "</A>").children.size(), 60000U);
}

TEST(XmlDocument, RefusesADeclarationThatIsNotTheFirstThing) {
  EXPECT_THAT(RifiutoDi(" <?xml version='1.0'?><A/>"), HasSubstr("dichiarazione XML fuori posto"));
  EXPECT_THAT(RifiutoDi("<A/><?xml version='1.0'?>"), HasSubstr("dichiarazione XML fuori posto"));
  EXPECT_THAT(RifiutoDi("<A><?XML version='1.0'?></A>"), HasSubstr("dichiarazione XML fuori posto"));
  EXPECT_EQ(xml::Read("<?xml version='1.0'?><?xml-stylesheet href='a'?><A>x<?resto?></A>").value, "x");
}

TEST(XmlDocument, KeepsABlankBesideAComment) {
  EXPECT_EQ(xml::Read("<R><ERRORE> <!-- x --></ERRORE></R>").children.at(0).value, " ");
  EXPECT_EQ(xml::Read("<R><ERRORE><!-- x --> <?y?></ERRORE></R>").children.at(0).value, " ");
  EXPECT_EQ(xml::Read("<R><ERRORE>a<!-- x --> </ERRORE></R>").children.at(0).value, "a ");
  EXPECT_FALSE(xml::Read("<R><ERRORE> <!-- x --></ERRORE></R>").children.at(0).containsText);
}

TEST(XmlDocument, BlanksBetweenElementsAreNoText) {
  EXPECT_EQ(xml::Read("<A> <B>x</B> <!-- y --> <C>z</C>\n</A>").value, "xz");
  EXPECT_EQ(xml::Read("<A> <![CDATA[ ]]><B>x</B> </A>").value, "  x");
}

TEST(XmlDocument, IsReadAsUtf16ByItsDeclarationWhereTheMarkIsMissing) {
  const std::string documento = "<?xml version='1.0' encoding='UTF-16'?><A>x</A>";
  std::string piccoli;
  std::string grandi;
  for (const char c : documento) {
    piccoli.append({c, '\0'});
    grandi.append({'\0', c});
  }
  EXPECT_EQ(xml::Read(piccoli).value, "x");
  EXPECT_EQ(xml::Read(grandi).value, "x");
  EXPECT_THAT(RifiutoDi(documento), HasSubstr("si dichiara in UTF-16"));
}

TEST(XmlDocument, RefusesAnEncodingThatIsNoNameWithoutRepeatingIt) {
  for (const std::string encoding : {"UTF-16\x01\xE3", "utf-16 le", "latin1\n", ""}) {
    EXPECT_THAT(RifiutoDi("<?xml version='1.0' encoding='" + encoding + "'?><A/>"),
                EndsWith("Documento XML con una dichiarazione di codifica non valida."));
  }
}

TEST(XmlDocument, RefusesAnEmptyDocument) {
  EXPECT_THAT(RifiutoDi(""), HasSubstr("vuoto"));
  EXPECT_THAT(RifiutoDi(" \n"), HasSubstr("vuoto"));
}

TEST(XmlDocument, TakesSixtyFourLevelsAndNoMore) {
  EXPECT_EQ(xml::Read(Annidati(xml::GreatestDepth)).name, "a");
  EXPECT_THAT(RifiutoDi(Annidati(xml::GreatestDepth + 1)), HasSubstr("64 livelli"));
  EXPECT_THAT(RifiutoDi(Annidati(200000)), HasSubstr("64 livelli"));
}

TEST(XmlDocument, RefusesMoreThanSixteenMebibytes) {
  EXPECT_THAT(RifiutoDi("<A>" + std::string(xml::LargestSize, 'x') + "</A>"), HasSubstr("16 MiB"));
}

} // namespace
} // namespace lumoscad
