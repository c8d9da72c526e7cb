// A process that runs for days keeps neither memory nor open files from one command to the next.

#include "database/BaseDati.hpp"
#include "lumoscad/LumoScadenze.hpp"
#include "support/TestBench.hpp"

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>
#include <utility>

// The notes' flushes would be most of the time that ten thousand commands take.
// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name): the C library's names are reserved
extern "C" int fdatasync(int /*descrittore*/) {
  return 0;
}
extern "C" int fsync(int /*descrittore*/) {
  return 0;
}
// NOLINTEND(readability-inconsistent-declaration-parameter-name)

namespace lumoscad::test {
namespace {

struct Risorse {
  long memoria = 0; ///< resident, in KiB
  long file = 0;    ///< open descriptors
};

Risorse Misura() {
  Risorse risorse;
  long totale = 0;
  std::ifstream("/proc/self/statm") >> totale >> risorse.memoria;
  risorse.memoria *= ::sysconf(_SC_PAGESIZE) / 1024;
  const std::filesystem::directory_iterator voci("/proc/self/fd");
  risorse.file = static_cast<long>(std::distance(begin(voci), end(voci)));
  return risorse;
}

TEST(Leaks, TenThousandCommandsLeaveNeitherMemoryNorOpenFiles) {
#ifdef LUMOSCAD_SANITIZZATO
  GTEST_SKIP() << "il rilevatore di errori tiene per sé la memoria liberata";
#endif
  static constexpr int Comandi = 10000;
  static constexpr int Avvio = 100;
  static constexpr long CrescitaMassima = 4096; // KiB; a leak of half a KiB a command would be more
  const std::string dati =
      DatiDiProva() + ("INSERT INTO MOVIMENTOCONTABILE VALUES (305,1,'N','OC','12306','2006','01');" +
                       Rata("1,1,301,201,101,'C','N','2006-03-31','2006-03-31',1,NULL,100") +
                       Rata("2,1,305,NULL,101,'P','N',NULL,NULL,NULL,NULL,100"));
  const BaseDati base("sqlite", dati);
  const std::string accettata = "<R><MESSAGGIO>Fatto</MESSAGGIO></R>";
  const std::string rifiutata = "<R><MESSAGGIO>nota</MESSAGGIO><ERRORE>no</ERRORE></R>";
  struct Caso {
    std::string comando;
    std::string risposta;
    std::string risultato;
  };
  const std::array<Caso, 10> casi{{{"-T SOSPESO /A -D 001 -H h -C C01 -P 2006   1", accettata, ""},
                                   {"-T SOSPESO /D -D 001 -H h -C C01 -P 2006   1", accettata, ""},
                                   {"-T PRESUNTO /A -S OC -A 06 -N 123 -E 2006", accettata, ""},
                                   {"-T PRESUNTO /D -S OC -A 06 -N 123 -E 2006", accettata, ""},
                                   {"-T TEST -DB2SCHEMA main", accettata, ""},
                                   {"-T EXTRA /A -S A -E 2006 -N 99", accettata, "error"},
                                   {"-T SOSPESO /A -C C01 -P 2006   1", rifiutata, "error"},
                                   {"-T SOSPESO /A -C C01 -P 2006   1", "<R>", "error"},
                                   {"-T EXTRA /A -DEMO", accettata, ""},
                                   {"-T TEST -DB2SCHEMA manca", accettata, "error"}}};
  TestBench banco;
  LumoScadenze lumo;
  Risorse prima;
  for (int i = 0; i < Comandi; ++i) {
    const Caso& caso = casi.at(static_cast<std::size_t>(i) % casi.size());
    banco.host.reply = caso.risposta;
    ASSERT_EQ(lumo.EseguiLumoScad(caso.comando + " " + base.Opzioni()), caso.risultato) << i << ": " << caso.comando;
    // What the test itself takes note of is no leak of the component.
    for (const auto& voce : std::filesystem::directory_iterator(banco.environment.CartellaLocale)) {
      std::filesystem::remove(voce.path()); // the notes of commands that failed behind the host's yes
    }
    banco.statements.clear();
    banco.host.operazioni.clear();
    banco.host.host.clear();
    banco.host.calls.clear();
    banco.desktop.box.clear();
    banco.desktop.titles.clear();
    banco.desktop.waits.clear();
    banco.desktop.intervals.clear();
    banco.desktop.pointers.clear();
    if (i + 1 == Avvio) {
      prima = Misura();
    }
  }
  const Risorse dopo = Misura();
  std::printf("memoria residente: %ld KiB dopo %d comandi, %ld KiB dopo %d\n", prima.memoria, Avvio, dopo.memoria,
              Comandi);
  std::printf("file aperti: %ld dopo %d comandi, %ld dopo %d\n", prima.file, Avvio, dopo.file, Comandi);
  EXPECT_LE(dopo.memoria - prima.memoria, CrescitaMassima);
  EXPECT_EQ(dopo.file, prima.file);
}

} // namespace
} // namespace lumoscad::test
