#include "Banco.hpp"
#include "platform/nexaro/cartella/Process.hpp"
#include "platform/nexaro/ssh/Quoting.hpp"
#include "support/Files.hpp"

#include <random>

namespace lumoscad {
namespace {

using nexaro::CommandLine;
using nexaro::QuoteForShell;

/// What a shell makes of a command line: the arguments of a program, each ended by a null character.
std::string Argomenti(const std::string& riga, const std::string& shell) {
  const auto esito = nexaro::Run({shell, {"-c", riga}, {}, "/", std::chrono::seconds(20), std::size_t{1} << 22U, 2000});
  EXPECT_EQ(esito.state, 0) << esito.errors;
  return esito.output;
}

std::string Attesi(const std::vector<std::string>& parametri) {
  std::string attesi;
  for (const auto& parametro : parametri) {
    attesi += parametro + '\0';
  }
  return attesi;
}

class Quotation : public testing::TestWithParam<const char*> {
 protected:
  /// A program that writes its arguments back.
  void SetUp() override { test::ScriviProgramma(cartella / "eco", "for a; do printf '%s\\0' \"$a\"; done"); }
  test::TemporaryFolder cartella;
};

TEST(ShellQuotation, EverythingStandsInOneQuotation) {
  EXPECT_EQ(QuoteForShell(""), "''");
  EXPECT_EQ(QuoteForShell("-x $(id) `id` ; \\ \" \n"), "'-x $(id) `id` ; \\ \" \n'");
  EXPECT_EQ(QuoteForShell("l'ora"), R"('l'\''ora')");
  EXPECT_EQ(QuoteForShell("'"), R"(''\''')");
}

TEST(ShellQuotation, ProgramIsAWordLikeItsParameters) {
  EXPECT_EQ(CommandLine("", "VB0001", {}), "'VB0001'");
  EXPECT_EQ(CommandLine("/opt/back end", "VB0001", {"01", ""}), "'/opt/back end/VB0001' '01' ''");
}

TEST_P(Quotation, NoCharacterMeansAnythingToTheShell) {
  std::vector<std::string> parametri{"",        "'",        "''",     "\"",    "\\",   "\\'",     "$HOME", "$(id)",
                                     "`id`",    "; id",     "&&",     "| id",  "> /x", "* ? [a]", "~",     "#",
                                     "-rf",     "--",       "!!",     "{a,b}", "\n",   "a\nb",    "\t",    "\r\n",
                                     "à è € 😀", "\xE9\xFF", " a  b ", "\\n",   "%s",   "a='b'"};
  for (int byte = 1; byte < 256; ++byte) {
    parametri.emplace_back(1, static_cast<char>(byte));
  }
  EXPECT_EQ(Argomenti(CommandLine(cartella.Path().string(), "eco", parametri), GetParam()), Attesi(parametri));
}

TEST_P(Quotation, RandomTextsArriveAsTheyAre) {
  std::mt19937 caso(20260501);
  std::uniform_int_distribution<int> byte(1, 255);
  std::uniform_int_distribution<std::size_t> lunghezza(0, 60);
  std::vector<std::string> parametri;
  for (int numero = 0; numero < 500; ++numero) {
    std::string parametro(lunghezza(caso), '\0');
    for (auto& carattere : parametro) {
      // Half of them quotation marks and backslashes, where mistakes hide.
      const int scelta = byte(caso);
      carattere = scelta % 4 == 0 ? '\'' : scelta % 4 == 1 ? '\\' : static_cast<char>(byte(caso));
    }
    parametri.push_back(parametro);
  }
  EXPECT_EQ(Argomenti(CommandLine(cartella.Path().string(), "eco", parametri), GetParam()), Attesi(parametri));
}

INSTANTIATE_TEST_SUITE_P(Shells, Quotation, testing::Values("/bin/sh", "/bin/bash"));

} // namespace
} // namespace lumoscad
