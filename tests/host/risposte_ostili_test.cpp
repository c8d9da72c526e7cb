#include "Banco.hpp"
#include "platform/nexaro/cartella/DirectoryLink.hpp"
#include "platform/xml/Nodo.hpp"

#include <array>
#include <chrono>
#include <gmock/gmock.h>

namespace lumoscad {
namespace {

using test::ErroreDi;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

std::string Rifiuto(const std::string& documento) {
  return ErroreDi([&] { static_cast<void>(xml::Read(documento)); }).Description();
}

std::string Dichiarato(const std::string& codifica, const std::string& corpo = "<A>x</A>") {
  return "<?xml version='1.0' encoding='" + codifica + "'?>" + corpo;
}

TEST(HostileReply, CannotMakeAFewLinesGrowIntoAGigabyte) {
  std::string documento = "<?xml version='1.0'?><!DOCTYPE r [<!ENTITY a0 'ah'>";
  for (int livello = 1; livello < 30; ++livello) {
    const std::string sotto = "&a" + std::to_string(livello - 1) + ";";
    documento += "<!ENTITY a" + std::to_string(livello) + " '" + sotto + sotto + sotto + "'>";
  }
  EXPECT_THAT(Rifiuto(documento + "]><r>&a29;</r>"), HasSubstr("DOCTYPE"));
  EXPECT_THAT(Rifiuto("<r>&a29;</r>"), HasSubstr("riferimento non ammesso"));
}

TEST(HostileReply, CannotMakeItsReaderOpenAFile) {
  for (const auto* esterna :
       {"<!DOCTYPE r SYSTEM 'file:///etc/passwd'><r/>", "<!DOCTYPE r PUBLIC 'x' 'http://h/x'><r/>",
        "<!DOCTYPE r [<!ENTITY e SYSTEM '/etc/passwd'>]><r>&e;</r>", "<!doctype r><r/>", "<r><!DOCTYPE a></r>",
        "<r/><!DOCTYPE a>"}) {
    EXPECT_THAT(Rifiuto(esterna), AllOf(HasSubstr("Documento XML non valido"), Not(HasSubstr("root:")))) << esterna;
  }
}

TEST(HostileReply, CannotExhaustTheStackByNesting) {
  std::string aperti;
  for (int livello = 0; livello < 1'000'000; ++livello) {
    aperti += "<a>";
  }
  EXPECT_THAT(Rifiuto(aperti), HasSubstr("Documento XML non valido"));
}

TEST(HostileReply, CannotSmuggleTextThatIsNotUtf8) {
  // Overlong, a lone surrogate, beyond Unicode, cut short, a byte that begins nothing, two codes that are no
  // characters.
  for (const auto* testo :
       {"\xC0\xBC", "\xE0\x80\xBC", "\xF0\x80\x80\xBC", "\xED\xA0\x80", "\xED\xBF\xBF", "\xF4\x90\x80\x80",
        "\xF6\xBA\xB1\xA5", "\xFB\xBF\xBF\xBF\xBF", "\xE2\x82", "\x80", "\xFF", "\xEF\xBF\xBE", "\xEF\xBF\xBF"}) {
    EXPECT_THAT(Rifiuto("<A>" + std::string(testo) + "</A>"), HasSubstr("non")) << testo;
    EXPECT_THAT(Rifiuto("<A b='" + std::string(testo) + "'/>"), HasSubstr("non")) << testo;
  }
}

TEST(HostileReply, CannotHaveAControlCharacterInAnyForm) {
  for (const auto& documento :
       {std::string("<A>\0</A>", 8), std::string("<A\0/>", 5), std::string("<A/>\0<B/>", 9),
        std::string("<A>\x1B[31m</A>"), std::string("<A>&#0;</A>"), std::string("<A>&#x1B;</A>"),
        std::string("<A>&#xD800;</A>"), std::string("<A>&#xFFFF;</A>"), std::string("<A>&#99999999999;</A>"),
        std::string("<A>&#-1;</A>")}) {
    EXPECT_THAT(Rifiuto(documento), HasSubstr("Documento XML non valido")) << documento;
  }
}

TEST(HostileReply, CannotHideASurrogateInTheOtherEncodings) {
  EXPECT_THAT(Rifiuto(std::string("\xFF\xFE<\0A\0>\0\0\xD8<\0/\0A\0>\0", 18)), HasSubstr("caratteri non validi"));
  EXPECT_THAT(Rifiuto(std::string("\xFE\xFF\0<\0A\0>\xDC\0\0<\0/\0A\0>", 18)), HasSubstr("caratteri non validi"));
  EXPECT_THAT(Rifiuto(std::string("\xFF\xFE<\0A\0/\0>", 9)), HasSubstr("caratteri non validi"));
}

TEST(HostileReply, CannotCallUponAnEncodingOfItsChoice) {
  for (const auto* codifica : {"UTF-7", "ISO-2022-JP", "ISO-2022-KR", "HZ", "EUC-KR", "IBM1364", "BIG5-HKSCS", "UTF-32",
                               "ISO-8859-1//TRANSLIT", "../../x", "", "utf-8 ", "CP1252x", "ISO-8859-111"}) {
    EXPECT_THAT(Rifiuto(Dichiarato(codifica)), HasSubstr("codifica")) << codifica;
  }
  EXPECT_THAT(Rifiuto("<?xml encoding=?><A/>"), HasSubstr("codifica"));
  EXPECT_THAT(Rifiuto("<?xml encoding='UTF-8"), HasSubstr("codifica"));
}

TEST(HostileReply, KeepsTheEncodingsOfWesternHosts) {
  for (const auto* codifica :
       {"utf-8", "UTF-8", "us-ascii", "ISO-8859-1", "iso-8859-15", "Windows-1252", "CP1252", "IBM850", "latin1"}) {
    EXPECT_EQ(xml::Read(Dichiarato(codifica)).value, "x") << codifica;
  }
}

TEST(HostileReply, AnErrorStaysShortWhateverTheReplyHolds) {
  const std::string lungo(100'000, 'Z');
  for (const auto& documento : {"<" + lungo, "<A>&" + lungo + ";</A>", Dichiarato(lungo), "<!DOCTYPE " + lungo + ">",
                                lungo, "<A " + lungo + "='"}) {
    const std::string testo = Rifiuto(documento);
    EXPECT_LT(testo.size(), 200U);
    EXPECT_THAT(testo, HasSubstr("Documento XML"));
  }
}

TEST(HostileReply, IsReadInTimeThatGrowsWithItsSizeOnly) {
  // Many siblings, many attributes, many references: each megabyte within seconds even under the sanitizers.
  const auto ripeti = [](const std::string& pezzo, std::size_t byte) {
    std::string testo;
    while (testo.size() < byte) {
      testo += pezzo;
    }
    return testo;
  };
  const auto inizio = std::chrono::steady_clock::now();
  for (const auto* pezzo : {"<b/>", "&amp;", "<!---->", "<![CDATA[]]>", "<?a?>", "&", "<", "]]>"}) {
    try {
      static_cast<void>(xml::Read("<A>" + ripeti(pezzo, 1'000'000) + "</A>"));
    } catch (const RuntimeError& errore) {
      EXPECT_THAT(errore.Description(), HasSubstr("Documento XML non valido"));
    }
  }
  EXPECT_LT(std::chrono::steady_clock::now() - inizio, std::chrono::seconds(60));
}

} // namespace
} // namespace lumoscad
