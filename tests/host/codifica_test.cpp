#include "Banco.hpp"
#include "platform/nexaro/Encoding.hpp"

#include <gmock/gmock.h>

namespace lumoscad {
namespace {

using nexaro::Encoding;
using test::ErroreDi;
using testing::HasSubstr;

TEST(HostEncoding, Utf8IsTheDefaultAndPassesEveryByte) {
  for (const auto* nome : {"", "UTF-8", "utf-8", "UTF8"}) {
    const Encoding codifica(nome);
    EXPECT_TRUE(codifica.PlainUtf8()) << nome;
    EXPECT_EQ(codifica.ToHost("à€\xFF", "Il testo"), "à€\xFF");
    EXPECT_EQ(codifica.FromHost("à€\xFF"), "à€\xFF");
  }
}

TEST(HostEncoding, EveryNamedEncodingMapsItsOwnBytes) {
  EXPECT_EQ(Encoding("ISO-8859-1").ToHost("Perché", "Il testo"), "Perch\xE9");
  EXPECT_EQ(Encoding("ISO-8859-15").ToHost("5 €", "Il testo"), "5 \xA4");
  EXPECT_EQ(Encoding("Windows-1252").ToHost("5 €", "Il testo"), "5 \x80");
  EXPECT_EQ(Encoding("ISO-8859-15").FromHost("5 \xA4"), "5 €");
  EXPECT_EQ(Encoding("Windows-1252")
                .FromHost("\x93"
                          "citato\x94"),
            "“citato”");
}

TEST(HostEncoding, EveryByteOfAnEncodingComesBackAsItself) {
  for (const auto* nome : {"ISO-8859-1", "ISO-8859-15", "Windows-1252", "CP850"}) {
    const Encoding codifica(nome);
    for (int byte = 0; byte < 256; ++byte) {
      const std::string uno(1, static_cast<char>(byte));
      if (const auto testo = codifica.FromHost(uno)) {
        EXPECT_EQ(codifica.ToHost(*testo, "Il testo"), uno) << nome << " " << byte;
      }
    }
  }
}

TEST(HostEncoding, CharacterThatIsMissingIsNamed) {
  const Encoding codifica("ISO-8859-1");
  EXPECT_EQ(ErroreDi([&] { static_cast<void>(codifica.ToHost("5 €", "Il parametro 3")); }).Description(),
            "Il parametro 3 contiene il carattere «€» (U+20AC), che manca nella codifica ISO-8859-1 dell'host.");
  EXPECT_THAT(ErroreDi([&] { static_cast<void>(codifica.ToHost("a\U0001F600", "Il testo")); }).Description(),
              HasSubstr("(U+1F600)"));
}

TEST(HostEncoding, NothingIsLeftOutSilently) {
  // A decomposed accent and an invisible tag are characters too.
  for (const auto* testo : {"e\u0301", "a\U000E0041"}) {
    EXPECT_THAT(ErroreDi([&] { static_cast<void>(Encoding("ISO-8859-1").ToHost(testo, "Il testo")); }).Description(),
                HasSubstr("contiene il carattere"));
  }
}

TEST(HostEncoding, TextThatIsNoUtf8IsRefused) {
  for (const auto* testo : {"\xE9", "\xC0\x80", "\xED\xA0\x80", "\xE2\x82", "\xF5\x80\x80\x80", "\x80"}) {
    EXPECT_THAT(ErroreDi([&] { static_cast<void>(Encoding("ISO-8859-1").ToHost(testo, "Il file")); }).Description(),
                HasSubstr("Il file non è un testo UTF-8 valido"));
  }
}

TEST(HostEncoding, ByteThatIsNoCharacterIsRefusedOrReplaced) {
  const Encoding codifica("Windows-1252");
  EXPECT_EQ(codifica.FromHost("a\x81"), std::nullopt);
  EXPECT_EQ(codifica.FromHostTolerant("a\x81z"), "a\uFFFDz");
  EXPECT_EQ(Encoding().FromHostTolerant("Perch\xE9 à"), "Perch\uFFFD à");
}

TEST(HostEncoding, OnlyEncodingsThatContainAsciiByteForByteAreTaken) {
  for (const auto* nome :
       {"UTF-16", "UTF-16LE", "EBCDIC-IT", "IBM037", "SHIFT_JIS", "ISO-2022-JP", "UTF-7", "GB18030"}) {
    EXPECT_THAT(ErroreDi([&] { Encoding codifica(nome); }).Description(), HasSubstr("NEXARO_CODIFICA")) << nome;
  }
}

TEST(HostEncoding, UnknownNamesAreRefused) {
  for (const auto* nome : {"KLINGON", "ISO-8859-1//TRANSLIT", "ISO-8859-1//IGNORE", " "}) {
    EXPECT_THAT(ErroreDi([&] { Encoding codifica(nome); }).Description(), HasSubstr("sconosciuta")) << nome;
  }
}

} // namespace
} // namespace lumoscad
