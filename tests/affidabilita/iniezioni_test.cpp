// Every call of a command fails once: input and output from its beginning, allocations from the host's yes. What the
// person then reads is compared with what host and database hold.
//
//   LUMOSCAD_PER_INTERO=1  every call of every command; otherwise a sample that the ordinary suite has time for

#include "Contabilita.hpp"
#include "Iniezione.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <ostream>
#include <string_view>

namespace lumoscad::test {
namespace {

const Misura Misura;

bool PerIntero() {
  return std::getenv("LUMOSCAD_PER_INTERO") != nullptr;
}

std::vector<Bersaglio> Bersagli() {
  const std::string lista = " -H locale -D 01 -B X";
  const std::string presunti = lista + " -TIPOMOVIMENTI V";
  const std::string partita = " -H locale -D 01 -C " + ContoDellaPartita(Misura, 2) + " -P AB   2";
  const std::string documento = " -H locale -D 01 -S OC -A 06 -N 1 -E 2006";
  std::vector<Bersaglio> tutti = {
      {"BANCA /CREDITI", "-T BANCA /CREDITI" + lista + "\tdata:=AB   6:15/04/26;banca:=AB   9:3;conferma", ""},
      {"SOSPESO /A", "-T SOSPESO /A" + partita, ""}};
  if (PerIntero()) {
    const std::vector<Bersaglio> altri = {
        {"BANCA /PRESUNTI", "-T BANCA /PRESUNTI" + presunti + "\tbanca:=OC2/06:2;banca:=OC4/06:4;conferma", ""},
        {"CONSEGNA /PRESUNTI",
         "-T CONSEGNA /PRESUNTI" + presunti + "\tdata:=OC2/06:150426;data:=OC4/06:160426;conferma", ""},
        {"PRESUNTO /A", "-T PRESUNTO /A" + documento, ""},
        {"EXTRA /A", "-T EXTRA /A -H locale -D 01 -S A -E 2006 -N 2", ""}};
    tutti.insert(tutti.end(), altri.begin(), altri.end());
  }
  return tutti;
}

/// A case: a command and a kind of failure.
struct Caso {
  Bersaglio bersaglio;
  std::string genere;
};

void PrintTo(const Caso& caso, std::ostream* uscita) {
  *uscita << caso.bersaglio.nome << ", " << caso.genere;
}

std::vector<Caso> Casi() {
  std::vector<Caso> casi;
  for (const Bersaglio& bersaglio : Bersagli()) {
    for (const char* genere : {"disco-prima", "disco-dopo", "disco-sempre", "memoria", "memoria-sempre"}) {
      casi.push_back({bersaglio, genere});
    }
  }
  return casi;
}

/// The world of all cases, and the figures. Its database is a file: there every byte goes through the calls that fail.
class Scena final : public testing::Environment {
 public:
  void TearDown() override {
    sistema_.reset();
    for (const auto& [genere, conto] : conti) {
      std::printf("iniezioni: %-14s %5zu prove; messaggi non veri o mancanti %zu; host sì e base dati no %zu, con nota "
                  "%zu\n",
                  genere.c_str(), conto.prove, conto.scorrette, conto.avanti, conto.annotate);
    }
  }

  Sistema& Il() {
    if (!sistema_) {
      sistema_ = std::make_unique<Sistema>(
          "sqlite", Righe(Misura) + "CREATE TABLE EVENTI_INIZIALI AS SELECT * FROM EVENTOCONTABILE;"
                                    "CREATE TABLE MOVIMENTI_INIZIALI AS SELECT * FROM MOVIMENTOCONTABILE;");
    }
    return *sistema_;
  }

  struct Conto {
    std::size_t prove = 0;
    std::size_t scorrette = 0;
    std::size_t avanti = 0;   ///< the host has accepted what the database does not hold
    std::size_t annotate = 0; ///< of these, how many a note tells
  };
  std::map<std::string, Conto> conti;

 private:
  std::unique_ptr<Sistema> sistema_;
};

Scena& LaScena() {
  // The runner owns it.
  static auto* scena = dynamic_cast<Scena*>(testing::AddGlobalTestEnvironment(std::make_unique<Scena>().release()));
  return *scena;
}

/// Puts the environment in place before the runner starts.
const Scena& registrata = LaScena();

class Injections : public testing::TestWithParam<Caso> {};

TEST_P(Injections, NeverLeaveTheMessageUntrueOrMissing) {
  constexpr long ProvePerCaso = 8;
  const auto& [bersaglio, genere] = GetParam();
  Iniezione iniezione(LaScena().Il(), bersaglio);
  Scena::Conto& conto = LaScena().conti[genere];
  const long chiamate = iniezione.Chiamate(genere);
  ASSERT_GT(chiamate, 20);
  // From the last call backwards: the host's yes and the database come at the end.
  const long passo = PerIntero() ? 1 : chiamate / ProvePerCaso + 1;
  for (long numero = chiamate; numero > 0; numero -= passo) {
    const Prova prova = iniezione.A(genere, numero);
    if (!prova.scattata) {
      continue;
    }
    ++conto.prove;
    const bool avanti = prova.accettata && prova.intatta;
    conto.avanti += avanti ? 1U : 0U;
    conto.annotate += avanti && prova.note == 1 ? 1U : 0U;
    // The note is written before the host's yes, from which on memory fails: it is there whatever fails then.
    EXPECT_TRUE(!avanti || prova.note == 1 || !genere.starts_with("memoria")) << genere << " " << numero;
    EXPECT_TRUE(prova.note == 0 || prova.accettata || !prova.risultato.empty()) << genere << " " << numero;
    conto.scorrette += prova.scorrettezza.empty() ? 0U : 1U;
    EXPECT_EQ(prova.scorrettezza, "") << genere << " " << numero << " (" << prova.chiamata << "), result \""
                                      << prova.risultato << "\", the person reads:\n"
                                      << prova.letto;
  }
}

/// The last calls of a command on a database that is a file are those of COMMIT.
TEST(DiskErrorAtTheCommit, IsFollowedByALookAtTheFileWhichTellsTheTruth) {
  constexpr long Ultime = 40;
  const std::string partita = " -H locale -D 01 -C " + ContoDellaPartita(Misura, 2) + " -P AB   2";
  Iniezione iniezione(LaScena().Il(), {"SOSPESO /A", "-T SOSPESO /A" + partita, ""});
  std::map<std::string, int> applicate;
  std::map<std::string, int> intatte;
  std::map<std::string, int> sconosciute;
  for (const char* genere : {"disco-prima", "disco-dopo", "disco-sempre"}) {
    const long chiamate = iniezione.Chiamate(genere);
    // A file that cannot be opened again is asked for a whole second.
    const long passo = !PerIntero() && std::string_view(genere) == "disco-sempre" ? 6 : 1;
    for (long numero = chiamate; numero > std::max(chiamate - Ultime, 0L); numero -= passo) {
      const Prova prova = iniezione.A(genere, numero);
      SCOPED_TRACE(genere + (" " + std::to_string(numero) + " ") + prova.chiamata + "\n" + prova.letto);
      EXPECT_EQ(prova.scorrettezza, "");
      const auto dice = [&](const char* testo) { return prova.letto.find(testo) != std::string::npos; };
      if (dice("Il file della base dati ha dato un errore mentre si confermavano le modifiche: ")) {
        EXPECT_TRUE(dice("disk I/O error"));
        EXPECT_EQ(dice("l'esito è sconosciuto"), dice("non si sa se la base dati l'ha registrata"));
        EXPECT_EQ(dice("un nuovo collegamento mostra"), dice("la base dati non ne ha registrato nulla"));
        (dice("l'esito è sconosciuto") ? sconosciute : intatte)[genere] += 1;
      } else if (prova.scattata && prova.risultato.empty() && prova.applicata) {
        applicate[genere] += 1;
      }
    }
    std::printf("iniezioni: COMMIT, %-12s trovate non applicate %d, rimaste sconosciute %d, dette eseguite %d\n",
                genere, intatte[genere], sconosciute[genere], applicate[genere]);
  }
  for (const char* genere : {"disco-prima", "disco-dopo"}) {
    EXPECT_GT(intatte[genere], 0) << genere;
    EXPECT_GT(applicate[genere], 0) << genere;
    EXPECT_EQ(sconosciute[genere], 0) << genere << ": the file can be opened again";
  }
  EXPECT_GT(sconosciute["disco-sempre"], 0) << "a disk that fails from then on tells nothing";
}

INSTANTIATE_TEST_SUITE_P(Commands, Injections, testing::ValuesIn(Casi()), [](const auto& caso) {
  std::string nome = caso.param.bersaglio.nome + caso.param.genere;
  nome.erase(std::remove_if(nome.begin(), nome.end(), [](char c) { return c == ' ' || c == '/' || c == '-'; }),
             nome.end());
  return nome;
});

} // namespace
} // namespace lumoscad::test
