// The password of the database stays where it belongs, whatever fails and whatever it looks like.

#include "BaseDati.hpp"
#include "common/MsgAnnulla.hpp"
#include "database/moduloDatabase.hpp"
#include "database/procedureLumoDB2.hpp"
#include "lumoscad/LumoScadenze.hpp"
#include "platform/ado/Diagnostics.hpp"
#include "support/TestBench.hpp"

#include <cctype>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace lumoscad;
using ado::detail::WithoutPassword;
using testing::Each;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

namespace {

/// Whether a piece of four characters of the password stands in the text, in any case.
bool Rivela(std::string_view testo, std::string_view password) {
  const auto uguale = [](char a, char b) {
    return std::tolower(static_cast<unsigned char>(a)) == std::tolower(static_cast<unsigned char>(b));
  };
  for (std::size_t i = 0; i + 4 <= password.size(); ++i) {
    const auto pezzo = password.substr(i, 4);
    if (std::search(testo.begin(), testo.end(), pezzo.begin(), pezzo.end(), uguale) != testo.end()) {
      return true;
    }
  }
  return false;
}

class PasswordAsSchema : public testing::TestWithParam<const char*> {};

/// Passwords that a server takes apart when they stand in a statement: a number before letters, marks, quotes, capital
/// letters with accents, more letters than a name may have.
INSTANTIATE_TEST_SUITE_P(Password, PasswordAsSchema,
                         testing::Values("Segr3taXy9", "12qwxyz99", "Qwx!zyx+kj", "qw'xyzkj", "qw\"xyzkj", "QWÈXÀZK",
                                         "qwx;zyx;kj", "qwxz.zykj.x", "(qwxzykj)", "qwx--zykj", "$qwxzykj$",
                                         "{qwx}zykj",
                                         "Qwxzykjqwxzykjqwxzykjqwxzykjqwxzykjqwxzykjqwxzykjqwxzykjqwxzykjqwxzykj"));

} // namespace

TEST_P(PasswordAsSchema, AppearsInNoMessage) {
  const std::string password = GetParam();
  const test::BaseDati base("sqlite", "");
  test::TestBench banco;
  banco.host.reply = "<R><MESSAGGIO>Fatto</MESSAGGIO></R>";
  const std::string opzioni = base.Opzioni() + " -DB2USER ada -DB2PASS " + password;
  ASSERT_EQ(moduloDatabase::LeggiParametriDB2(opzioni).Schema, password);
  EXPECT_EQ(LumoScadenze().EseguiLumoScad("-T TEST " + opzioni), "error");
  EXPECT_EQ(LumoScadenze().EseguiLumoScad("-T EXTRA /A -D 01 -S A -E 2006 -N 1 -H h " + opzioni), "error");
  ASSERT_THAT(banco.desktop.box, Not(IsEmpty()));
  for (const std::string& box : banco.desktop.box) {
    EXPECT_FALSE(Rivela(box, password)) << box;
  }
  for (const auto& parametri : banco.host.calls) {
    EXPECT_THAT(parametri, Each(Not(HasSubstr(password))));
  }
  EXPECT_THAT(banco.host.operazioni, Each(Not(HasSubstr(password))));
}

TEST(Password, OfAServerDoesNotAppearWhereItServesAsSchema) {
  const test::BaseDati base("postgres", "");
  const test::TestBench banco;
  const auto parametri = moduloDatabase::LeggiParametriDB2(base.Opzioni());
  EXPECT_EQ(LumoScadenze().EseguiLumoScad("-T TEST " + base.Opzioni()), "error");
  ASSERT_THAT(banco.desktop.box, SizeIs(1));
  EXPECT_FALSE(Rivela(banco.desktop.box.front(), parametri.Password));
}

TEST(Password, IsBlottedOutWholeAndInPieces) {
  EXPECT_EQ(WithoutPassword("relation \"segreta9.errore\" does not exist", "Segreta9"),
            "relation \"***.errore\" does not exist");
  EXPECT_EQ(WithoutPassword("at or near \"eta9\"", "12segreta9"), "at or near \"***\"");
  EXPECT_EQ(WithoutPassword("SEGRETA9SEGRETA9", "segreta9"), "******");
  EXPECT_EQ(WithoutPassword("x abc y", "abc"), "x *** y") << "una password breve si cancella intera";
  EXPECT_EQ(WithoutPassword("x ab y", "abc"), "x ab y");
  EXPECT_EQ(WithoutPassword("niente di segreto qui", "Zz91kk"), "niente di segreto qui");
  EXPECT_EQ(WithoutPassword("testo", ""), "testo");
  EXPECT_EQ(WithoutPassword("", "Segreta9"), "");
}

TEST(Password, OfOneLetterIsNotBlottedOut) {
  EXPECT_EQ(WithoutPassword("la data della base dati", "a"), "la data della base dati");
  EXPECT_EQ(WithoutPassword("così è, perché è", "è"), "così è, perché è");
  EXPECT_EQ(WithoutPassword("la password ab di prima", "ab"), "la password *** di prima");
}

TEST(Password, WithAccentsIsBlottedOutInAnyCaseAndLeavesWholeCharacters) {
  EXPECT_EQ(WithoutPassword("schema PERCHÉ99 assente", "perché99"), "schema *** assente");
  // The characters share their first byte: what is left begins and ends with whole ones.
  EXPECT_EQ(WithoutPassword("abcdè", "abcdé"), "***è");
  EXPECT_EQ(WithoutPassword("éabcd", "èabcd"), "é***");
}
