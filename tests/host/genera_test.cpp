#include "Banco.hpp"
#include "platform/nexaro/Processo.hpp"

#include <algorithm>
#include <gmock/gmock.h>

namespace lumoscad {
namespace {

using testing::HasSubstr;
using namespace std::chrono_literals;

nexaro::EsitoProcesso Genera(const std::vector<std::string>& argomenti) {
  return nexaro::Esegui({LUMOSCAD_GENERA, argomenti, {}, "/", 20s, 16 * 1024 * 1024, 2000});
}

TEST(DatiDimostrativi, AreTheSameForTheSameDay) {
  const auto primi = Genera({"2026-03-05"});
  ASSERT_EQ(primi.stato, 0) << primi.errori;
  EXPECT_EQ(primi.uscita, Genera({"2026-03-05", "400"}).uscita);
  EXPECT_NE(primi.uscita, Genera({"2026-03-06"}).uscita);
}

TEST(DatiDimostrativi, DoubleTheApostropheInsideATextAndKeepAccents) {
  const auto uscita = Genera({"2026-03-05"}).uscita;
  EXPECT_THAT(uscita, HasSubstr("'Autofficina Dall''Ò S.r.l.'"));
  EXPECT_THAT(uscita, HasSubstr("(1, '01', ' ', ' ')"));
}

TEST(DatiDimostrativi, GrowWithTheNumberAskedFor) {
  const auto eventi = [](const std::string& testo) {
    const auto inizio = testo.find("INSERT INTO EVENTOCONTABILE");
    return std::count(testo.begin() + static_cast<std::ptrdiff_t>(inizio), testo.end(), '(');
  };
  EXPECT_GE(eventi(Genera({"2026-03-05", "10"}).uscita), 10);
  EXPECT_GE(eventi(Genera({"2026-03-05", "5000"}).uscita), 5000);
}

TEST(DatiDimostrativi, RefuseWrongArguments) {
  for (const std::vector<std::string>& argomenti : std::vector<std::vector<std::string>>{
           {}, {"05/03/2026"}, {"2026-02-30"}, {"2026-03-05", "0"}, {"2026-03-05", "1000001"}, {"2026-03-05", "x"}}) {
    const auto esito = Genera(argomenti);
    EXPECT_EQ(esito.stato, 2);
    EXPECT_EQ(esito.uscita, "");
    EXPECT_THAT(esito.errori, HasSubstr("Uso: lumoscad-genera"));
  }
}

} // namespace
} // namespace lumoscad
