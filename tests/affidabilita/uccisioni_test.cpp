// A terminal is killed at every step of every command.
//
//   LUMOSCAD_PER_INTERO=1           every step of every command; otherwise, of the few commands that the ordinary suite
//                                   has time for, the first and the last step of each line of the published tables
//   LUMOSCAD_PAGINA_UCCISIONI=FILE  the same, and writes the page of all tables instead of comparing it

#include "Contabilita.hpp"
#include "Pagina.hpp"
#include "Uccisione.hpp"
#include "support/Paths.hpp"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <memory>
#include <ostream>
#include <set>

namespace lumoscad::test {
namespace {

const Misura Misura;

/// The pages that the documentation keeps.
std::filesystem::path PaginaPubblicata() {
  return test::SourcePath("docs/uccisioni.md");
}

bool PerIntero() {
  return std::getenv("LUMOSCAD_PER_INTERO") != nullptr || std::getenv("LUMOSCAD_PAGINA_UCCISIONI") != nullptr;
}

std::vector<Vittima> Vittime(bool ssh) {
  const std::string host = ssh ? " -H " + SshServer::Address() : " -H locale";
  const std::string lista = host + " -D 01 -B X";
  const std::string presunti = lista + " -TIPOMOVIMENTI V";
  const std::string partita = host + " -D 01 -C " + ContoDellaPartita(Misura, 2) + " -P AB   2";
  const std::string documento = host + " -D 01 -S OC -A 06 -N 1 -E 2006";
  std::vector<Vittima> tutte = {
      {"BANCA /CREDITI", "-T BANCA /CREDITI" + lista + "\tdata:=AB   6:15/04/26;banca:=AB   9:3;conferma", ""},
      {"SOSPESO /A", "-T SOSPESO /A" + partita, ""},
      {"EXTRA /A", "-T EXTRA /A" + host + " -D 01 -S A -E 2006 -N 2", ""}};
  if (!PerIntero()) {
    return tutte;
  }
  const std::vector<Vittima> altre = {
      {"BANCA /DEBITI", "-T BANCA /DEBITI" + lista + "\tdata:=AB   3:15/04/26;banca:=AB   15:3;conferma", ""},
      {"BANCA /PRESUNTI", "-T BANCA /PRESUNTI" + presunti + "\tbanca:=OC2/06:2;banca:=OC4/06:4;conferma", ""},
      {"CONSEGNA /PRESUNTI", "-T CONSEGNA /PRESUNTI" + presunti + "\tdata:=OC2/06:150426;data:=OC4/06:160426;conferma",
       ""},
      {"SOSPESO /D", "-T SOSPESO /D" + partita, "UPDATE EVENTOCONTABILE SET SOSPESA='S' WHERE PARTITACONTABILEKEY=2;"},
      {"PRESUNTO /A", "-T PRESUNTO /A" + documento, ""},
      {"PRESUNTO /D", "-T PRESUNTO /D" + documento, "UPDATE EVENTOCONTABILE SET SOSPESA='S' WHERE MOVIMENTOKEY=1001;"},
      {"TEST", "-T TEST", ""}};
  tutte.insert(tutte.end(), altre.begin(), altre.end());
  return tutte;
}

/// A case: a command on a kind of database, the host in a directory or behind a server of SSH.
struct Caso {
  std::string genere;
  Vittima vittima;
  bool ssh = false;
};

void PrintTo(const Caso& caso, std::ostream* uscita) {
  *uscita << caso.vittima.nome << " on " << caso.genere << (caso.ssh ? " over SSH" : "");
}

/// Where the tables are made; the invariants hold on every database.
constexpr const char* BaseDellaPagina = "postgres";

std::vector<Caso> Casi() {
  std::vector<Caso> casi;
  for (const Vittima& vittima : Vittime(false)) {
    casi.push_back({BaseDellaPagina, vittima});
  }
  if (PerIntero()) {
    for (const char* genere : {"sqlite", "mariadb"}) {
      for (const Vittima& vittima : Vittime(false)) {
        casi.push_back({genere, vittima});
      }
    }
  }
  for (const char* genere : {"postgres", "mariadb", "sqlite"}) {
    for (const Vittima& vittima : Vittime(true)) {
      // Time for one in the ordinary suite, and the writing test asks no host.
      if (PerIntero() ? vittima.nome != "TEST" : vittima.nome == "SOSPESO /A" && genere == BaseDellaPagina) {
        casi.push_back({genere, vittima, true});
      }
    }
  }
  return casi;
}

/// The world of a case, which those that follow it share where they can, and the page that they fill.
class Scena final : public testing::Environment {
 public:
  void TearDown() override {
    sistema_.reset();
    for (const auto& [genere, conto] : conti) {
      std::printf("uccisioni: %-12s %2zu comandi, %3zu morti; host sì e base dati no dopo %3zu di queste, e la nota lo "
                  "dice dopo %3zu; riallineate %3zu; una nota resta dopo %3zu\n",
                  genere.c_str(), conto.comandi, conto.morti, conto.finestra, conto.annotate, conto.riallineate,
                  conto.note);
    }
    if (const char* file = std::getenv("LUMOSCAD_PAGINA_UCCISIONI")) {
      std::ofstream(file) << pagina;
    }
  }

  Sistema& Il(const std::string& genere, bool ssh) {
    if (nome_ != Nome(genere, ssh)) {
      // One at a time: the sessions of a server are counted.
      nome_.clear();
      sistema_.reset();
      sistema_ = std::make_unique<Sistema>(
          genere, Righe(Misura) + "CREATE TABLE EVENTI_INIZIALI AS SELECT * FROM EVENTOCONTABILE;"
                                  "CREATE TABLE MOVIMENTI_INIZIALI AS SELECT * FROM MOVIMENTOCONTABILE;");
      if (ssh) {
        sistema_->UsaSsh();
      }
      nome_ = Nome(genere, ssh);
    }
    return *sistema_;
  }

  static std::string Nome(const std::string& genere, bool ssh) { return genere + (ssh ? " ssh" : ""); }

  struct Conto {
    std::size_t comandi = 0;
    std::size_t morti = 0;
    std::size_t finestra = 0;    ///< deaths after which the host has accepted what the database does not hold
    std::size_t annotate = 0;    ///< of these, how many the note tells
    std::size_t note = 0;        ///< deaths that leave a note
    std::size_t riallineate = 0; ///< of the first, how many one `--riallinea` ends
  };
  std::map<std::string, Conto> conti;
  std::string pagina = Intestazione();

 private:
  std::string nome_;
  std::unique_ptr<Sistema> sistema_;
};

Scena& LaScena() {
  // The runner owns it.
  static auto* scena = dynamic_cast<Scena*>(testing::AddGlobalTestEnvironment(std::make_unique<Scena>().release()));
  return *scena;
}

/// Puts the environment in place before the runner starts.
const Scena& registrata = LaScena();

class Kills : public testing::TestWithParam<Caso> {};

std::size_t Posto(const Testi& passi, const std::string& nome) {
  return static_cast<std::size_t>(std::find(passi.begin(), passi.end(), nome) - passi.begin());
}

/// The step from which on the database holds the change: a server has been told, SQLite's file cannot be undone any
/// more.
std::size_t Conferma(const Testi& passi) {
  return std::min(Posto(passi, "COMMIT: sent"), Posto(passi, "COMMIT, remove the journal: done"));
}

/// The step from which on the note is there, and the one from which on it is gone.
bool ConNota(const Testi& passi, std::size_t passo) {
  return passo >= Posto(passi, "note: in its place") && passo < Posto(passi, "remove the note: done");
}

/// What the note says at a step: as many phases as were put in their places by then.
std::string NotaAttesa(const Testi& passi, std::size_t passo) {
  constexpr std::array<std::string_view, 3> Fasi = {"program started", "accepted", "COMMIT sent"};
  if (!ConNota(passi, passo)) {
    return "none";
  }
  const auto fine = passi.begin() + static_cast<std::ptrdiff_t>(passo) + 1;
  return std::string(Fasi.at(static_cast<std::size_t>(std::count(passi.begin(), fine, "note's phase: in its place"))));
}

/// Where the host and the database change sides, and that nothing lies between yes and no.
void Verifica(const Testi& passi, std::size_t passo, const Osservazione& vista) {
  SCOPED_TRACE(std::to_string(passo + 1) + " " + passi[passo]);
  const bool conHost = Posto(passi, "program: before") < passi.size();
  EXPECT_NE(vista.applicata, vista.intatta) << "the database is half changed";
  EXPECT_EQ(vista.applicata, passo >= Conferma(passi));
  if (Posto(passi, "program: started") < passi.size() || !conHost) {
    EXPECT_EQ(vista.accettata, conHost && passo >= Posto(passi, "program: started"));
  } else {
    // What was sent to a server that then loses the terminal it does, or it does not.
    EXPECT_TRUE(!vista.accettata || passo > Posto(passi, "program: before"));
    EXPECT_TRUE(vista.accettata || passo < Posto(passi, "program: answer read"));
  }
  EXPECT_TRUE(!vista.applicata || vista.accettata || !conHost) << "changed without the host's yes";
  EXPECT_EQ(vista.nota, NotaAttesa(passi, passo));
  EXPECT_TRUE(!vista.accettata || vista.applicata || vista.nota != "none") << "the host is ahead and nobody knows";
  EXPECT_TRUE(vista.nota == "none" || passo >= Posto(passi, "note: in its place")) << "a note of what was not started";
  EXPECT_EQ(vista.righe, vista.nota == "none" ? "none" : vista.applicata ? "fatta" : "come prima");
  EXPECT_TRUE(vista.chiusa) << "something is left open";
  EXPECT_TRUE(vista.pari) << "what was left open is finished, and the database is not where the host is";
  EXPECT_TRUE(vista.allineati) << "the command repeated does not bring the database to where it belongs";
  EXPECT_TRUE(vista.senzaResti) << "the repeated command leaves something behind";
  EXPECT_EQ(vista.fermato, std::any_of(vista.sullHost.begin(), vista.sullHost.end(),
                                       [](const std::string& nome) { return nome.starts_with("VB"); }));
}

Osservazione Muori(Uccisione& uccisione, const std::string& dove, std::size_t passo, bool ssh = false) {
  Scena::Conto& conto = LaScena().conti[dove];
  const auto esito = uccisione.A(static_cast<long>(passo) + 1);
  if (!esito) {
    constexpr std::size_t Differenza = 4; // messages, of the program's call over SSH
    EXPECT_TRUE(ssh && passo + Differenza >= uccisione.Passi().size())
        << "the terminal was not killed at " << uccisione.Passi()[passo];
    return {};
  }
  const Osservazione& vista = *esito;
  if (ssh) {
    // How many messages the program's call takes differs from run to run: this one's own steps tell where it died.
    Verifica(vista.passi, vista.passi.size() - 1, vista);
  } else {
    EXPECT_EQ(vista.passi.back(), uccisione.Passi()[passo]);
    Verifica(uccisione.Passi(), passo, vista);
  }
  ++conto.morti;
  const bool avanti = vista.accettata && !vista.applicata;
  conto.finestra += avanti ? 1U : 0U;
  conto.annotate += avanti && vista.nota != "none" ? 1U : 0U;
  conto.note += vista.nota != "none" ? 1U : 0U;
  conto.riallineate += avanti && vista.chiusa && vista.pari ? 1U : 0U;
  return vista;
}

/// Dies at every step, or at some of them and at all of the program's call; what is found is no page's.
void SenzaPagina(Uccisione& uccisione, const std::string& dove) {
  const Testi& passi = uccisione.Passi();
  const std::size_t salto = PerIntero() ? 1 : 8;
  for (std::size_t passo = 0; passo < passi.size(); ++passo) {
    if (passo % salto == 0 || passi[passo].starts_with("program")) {
      Muori(uccisione, dove, passo, true);
    }
  }
}

/// Dies at every step; compares the table with the published one, or adds it to the page that is being written.
void OgniPasso(Uccisione& uccisione, const std::string& genere, const std::string& titolo) {
  const Testi& passi = uccisione.Passi();
  std::vector<Osservazione> viste;
  for (std::size_t passo = 0; passo < passi.size(); ++passo) {
    viste.push_back(Muori(uccisione, genere, passo));
  }
  if (genere != BaseDellaPagina) {
    return;
  }
  const std::string sezione = "## `" + titolo + "`\n\n" + Tabella(passi, viste);
  LaScena().pagina += "\n" + sezione;
  if (std::getenv("LUMOSCAD_PAGINA_UCCISIONI") == nullptr) {
    std::string pubblicata = Sezione(PaginaPubblicata(), titolo);
    pubblicata.erase(pubblicata.find_last_not_of('\n') + 1);
    EXPECT_EQ(pubblicata + "\n", sezione) << "docs/uccisioni.md is not current";
  }
}

/// The last step of a line: the next one begins the line after it.
std::size_t Fine(const Testi& passi, std::size_t primo, const Linea& linea, const Linea* seguente) {
  if (seguente == nullptr) {
    return passi.size() - 1;
  }
  for (std::size_t passo = primo; passo + 1 < passi.size(); ++passo) {
    if (passi[passo] == linea.ultimo && passi[passo + 1] == seguente->primo) {
      return passo;
    }
  }
  return passi.size();
}

/// Dies at both ends of every line of the published table.
void OgniLinea(Uccisione& uccisione, const std::string& genere, const std::string& titolo) {
  const Testi& passi = uccisione.Passi();
  const auto linee = LeggiTabella(Sezione(PaginaPubblicata(), titolo));
  ASSERT_FALSE(linee.empty()) << "docs/uccisioni.md has no table of this command";
  std::size_t primo = 0;
  for (std::size_t i = 0; i < linee.size(); ++i) {
    const std::size_t ultimo = Fine(passi, primo, linee[i], i + 1 < linee.size() ? &linee[i + 1] : nullptr);
    ASSERT_LT(ultimo, passi.size()) << "docs/uccisioni.md is not current at " << linee[i].ultimo;
    EXPECT_EQ(linee[i].primo, passi[primo]) << "docs/uccisioni.md is not current";
    EXPECT_EQ(linee[i].ultimo, passi[ultimo]) << "docs/uccisioni.md is not current";
    for (const std::size_t passo : std::set<std::size_t>{primo, ultimo}) {
      EXPECT_EQ(linee[i].esito, Esito(Muori(uccisione, genere, passo)))
          << "docs/uccisioni.md is not current at " << passi[passo];
    }
    primo = ultimo + 1;
  }
}

TEST_P(Kills, LeaveTheDatabaseWholeAndAreMendedByTheSameCommand) {
  const auto& [genere, vittima, ssh] = GetParam();
  const std::string dove = Scena::Nome(genere, ssh);
  Uccisione uccisione(LaScena().Il(genere, ssh), vittima);
  ASSERT_LT(Conferma(uccisione.Passi()), uccisione.Passi().size());
  EXPECT_EQ(std::count_if(uccisione.Resti().begin(), uccisione.Resti().end(),
                          [](const std::string& nome) { return nome.starts_with("sospeso-"); }),
            0)
      << "a command that nothing disturbed leaves a note";
  ++LaScena().conti[dove].comandi;
  if (ssh) {
    SenzaPagina(uccisione, dove);
    return;
  }
  const std::string titolo = "-T " + vittima.nome;
  PerIntero() ? OgniPasso(uccisione, genere, titolo) : OgniLinea(uccisione, genere, titolo);
}

INSTANTIATE_TEST_SUITE_P(Commands, Kills, testing::ValuesIn(Casi()), [](const auto& caso) {
  std::string nome = caso.param.genere + (caso.param.ssh ? "ssh" : "") + caso.param.vittima.nome;
  nome.erase(std::remove_if(nome.begin(), nome.end(), [](char c) { return c == ' ' || c == '/'; }), nome.end());
  return nome;
});

} // namespace
} // namespace lumoscad::test
