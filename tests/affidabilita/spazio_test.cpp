// A disk that is full for real: the host's behind SSH, that of the terminal's own directory, that of a database in a
// file. Each is a small file system of the test's own.

#include "Contabilita.hpp"
#include "Lavoro.hpp"
#include "Sistema.hpp"
#include "common/Nota.hpp"
#include "support/Files.hpp"
#include "support/Paths.hpp"
#include "support/SmallDisk.hpp"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <unistd.h>
#include <vector>

namespace lumoscad::test {
namespace {

namespace fs = std::filesystem;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

const Misura Misura;
constexpr const char* T01 = "T01";
constexpr std::size_t Pagine = 16;
constexpr std::size_t Piccolo = Pagine * SmallDisk::Page;
constexpr const char* NienteRegistrato = "la base dati non ne ha registrato nulla";

/// The process gets its own mounts before it has a second thread.
class Separato final : public testing::Environment {
 public:
  void SetUp() override {
    perche = SmallDisk::Separate();
    if (!perche.empty()) {
      std::printf("spazio: il sistema non concede un disco proprio (%s): restano le scritture che iniezioni_test fa "
                  "fallire una per una e il limite di guasti_ssh_test\n",
                  perche.c_str());
    }
  }
  std::string perche;
};

const Separato& separato = *dynamic_cast<Separato*>(testing::AddGlobalTestEnvironment(new Separato));

/// A database in a file of a directory of its own.
class BaseInFile final : public DatabaseWithSource {
 public:
  BaseInFile(const fs::path& cartella, const std::string& script, const Testi& altre) {
    source = OdbcConfiguration::Instance().AddSource(
        "sqlite", "libsqlite3odbc.so",
        {{"Database", (cartella / "base.sqlite").string()}, {"Timeout", "2000"}, {"FKSupport", "1"}});
    schema = "main";
    RunScript(ConnectionText(), script);
    ado::Connection connessione;
    connessione.ConnectionString = ConnectionText();
    connessione.Open();
    for (const std::string& istruzione : altre) {
      connessione.Execute(istruzione);
    }
  }
};

class FullDisk : public testing::Test {
 protected:
  void SetUp() override {
    if (!separato.perche.empty()) {
      GTEST_SKIP() << separato.perche;
    }
  }

  static std::string Script() { return FileText(SourcePath("demo/schema.sql")) + Righe(Misura); }
  static std::string Sospende(const std::string& host) {
    return "-T SOSPESO /A -H " + host + " -D 01 -C " + ContoDellaPartita(Misura, 2) + " -P AB   2";
  }
  static std::string Lista(const std::string& host) {
    return "-T BANCA /CREDITI -H " + host + " -D 01 -B X\tdata:=AB   6:15/04/26;banca:=AB   9:3;conferma";
  }

  static Eseguito Esegui(Sistema& sistema, const std::string& comando) {
    fs::remove(sistema.Registro(T01));
    fs::remove(sistema.Passi(T01));
    Sistema::Lancio lancio{T01, {comando}, true};
    EXPECT_EQ(sistema.Avvia(lancio).Attendi(), 0);
    EXPECT_TRUE(sistema.SenzaSessioni());
    return LeggiRegistro(sistema.Registro(T01)).at(0);
  }
  static std::string Box(const Eseguito& comando) {
    std::string testo;
    for (const std::string& box : comando.box) {
      testo += box + "\n";
    }
    return testo;
  }
  static Testi RigheOra(Sistema& sistema) {
    return sistema.Interroga("SELECT * FROM EVENTOCONTABILE ORDER BY EVENTOCONTABILEKEY");
  }
  /// What stands in a directory besides the file that fills it.
  static Testi Resti(const fs::path& cartella) {
    Testi nomi = Contenuto(cartella);
    nomi.erase(std::remove(nomi.begin(), nomi.end(), ".filling"), nomi.end());
    return nomi;
  }
  static Testi AccettateOra(const Sistema& sistema) {
    return fs::exists(sistema.RegistroHost()) ? AccettateDallHost(sistema) : Testi();
  }
  static std::vector<Nota> Note(const Sistema& sistema) { return LeggiNote(sistema.Locale(T01)); }
  /// The step of a command's last run that is called so, from 1.
  static long Passo(const Sistema& sistema, const std::string& nome) {
    const auto passi = LeggiRighe(sistema.Passi(T01));
    const auto suo = std::find(passi.begin(), passi.end(), nome);
    EXPECT_NE(suo, passi.end()) << nome;
    return suo - passi.begin() + 1;
  }
  static std::string InSospeso(const Sistema& sistema) { return sistema.Amministra(T01, {"--in-sospeso", "-"}); }
};

TEST_F(FullDisk, OfTheHostBehindSshHasNoRoomForTheLock) {
  Sistema sistema("sqlite", databaseContext("sqlite").Create(Script()));
  sistema.UsaSsh();
  const SmallDisk disco(sistema.Tmp(), Piccolo);
  disco.Fill();
  const Testi prima = RigheOra(sistema);
  const Eseguito comando = Esegui(sistema, Lista(SshServer::Address()));
  EXPECT_EQ(comando.risultato, "error");
  EXPECT_THAT(Box(comando), HasSubstr("spazio esaurito sull'host"));
  EXPECT_THAT(Resti(sistema.Tmp()), IsEmpty());
  EXPECT_THAT(AccettateOra(sistema), IsEmpty());
  EXPECT_EQ(RigheOra(sistema), prima);
  EXPECT_THAT(Note(sistema), IsEmpty());
  disco.Clear();
  EXPECT_EQ(Esegui(sistema, Lista(SshServer::Address())).risultato, "");
  EXPECT_NE(RigheOra(sistema), prima);
}

TEST_F(FullDisk, OfTheHostBehindSshHasRoomForTheLockAlone) {
  Sistema sistema("sqlite", databaseContext("sqlite").Create(Script()));
  sistema.UsaSsh();
  const SmallDisk disco(sistema.Tmp(), Piccolo);
  disco.Fill(SmallDisk::Page);
  const Testi prima = RigheOra(sistema);
  const Eseguito comando = Esegui(sistema, Lista(SshServer::Address()));
  EXPECT_EQ(comando.risultato, "error");
  EXPECT_THAT(Box(comando), HasSubstr("spazio esaurito sull'host"));
  EXPECT_THAT(Resti(sistema.Tmp()), ElementsAre("VBCREDITI"));
  EXPECT_THAT(AccettateOra(sistema), IsEmpty());
  EXPECT_EQ(RigheOra(sistema), prima);
  EXPECT_THAT(Note(sistema), IsEmpty());
  disco.Clear();
  fs::remove(sistema.Tmp() / "VBCREDITI");
  EXPECT_EQ(Esegui(sistema, Lista(SshServer::Address())).risultato, "");
  EXPECT_NE(RigheOra(sistema), prima);
}

TEST_F(FullDisk, OfTheHostBehindSshLeavesItsProgramWithoutALogAndThePersonWithTheQuestion) {
  Sistema sistema("sqlite", databaseContext("sqlite").Create(Script()));
  sistema.UsaSsh();
  const SmallDisk disco(sistema.RegistroHost().parent_path(), Piccolo);
  disco.Fill();
  const Testi prima = RigheOra(sistema);
  const Eseguito comando = Esegui(sistema, Sospende(SshServer::Address()));
  EXPECT_EQ(comando.risultato, "error");
  EXPECT_THAT(Box(comando), HasSubstr("L'esito sull'host non è noto"));
  EXPECT_EQ(RigheOra(sistema), prima);
  const auto note = Note(sistema);
  ASSERT_EQ(note.size(), 1U);
  EXPECT_EQ(note[0].fase, FaseNota::Avviata);
  EXPECT_THAT(InSospeso(sistema), HasSubstr("non si sa se ha eseguito la richiesta"));
  EXPECT_THAT(sistema.Amministra(T01, {"--archivia", note[0].nome, "l'host non l'ha eseguita"}), StartsWith("0\n"));
  EXPECT_THAT(InSospeso(sistema), StartsWith("0\nNon c'è nulla in sospeso.\n"));
}

TEST_F(FullDisk, OfTheTerminalLeavesACommandWithoutItsNoteAsItIs) {
  Sistema sistema("sqlite", databaseContext("sqlite").Create(Script()));
  fs::create_directories(sistema.Locale(T01));
  const SmallDisk disco(sistema.Locale(T01), Piccolo);
  disco.Fill();
  const Testi prima = RigheOra(sistema);
  const Eseguito comando = Esegui(sistema, Sospende("locale"));
  EXPECT_EQ(comando.risultato, "");
  EXPECT_THAT(comando.box, ElementsAre(StartsWith("Sospesa la partita")));
  EXPECT_EQ(AccettateOra(sistema).size(), 1U);
  EXPECT_NE(RigheOra(sistema), prima);
  EXPECT_THAT(Resti(sistema.Locale(T01)), IsEmpty());
}

TEST_F(FullDisk, OfTheTerminalStopsAListBeforeTheHostIsAsked) {
  Sistema sistema("sqlite", databaseContext("sqlite").Create(Script()));
  fs::create_directories(sistema.Locale(T01));
  const SmallDisk disco(sistema.Locale(T01), Piccolo);
  disco.Fill();
  const Testi prima = RigheOra(sistema);
  const Eseguito comando = Esegui(sistema, Lista("locale"));
  EXPECT_EQ(comando.risultato, "error");
  EXPECT_THAT(Box(comando), HasSubstr("spazio"));
  EXPECT_THAT(AccettateOra(sistema), IsEmpty());
  EXPECT_EQ(RigheOra(sistema), prima);
  EXPECT_THAT(Note(sistema), IsEmpty());
  EXPECT_THAT(Contenuto(sistema.Tmp()), IsEmpty());
}

TEST_F(FullDisk, OfTheTerminalLeavesRoomForTheNoteToSayThatCommitWasSent) {
  const std::string iniziali = "CREATE TABLE INIZIALI AS SELECT * FROM EVENTOCONTABILE;";
  Sistema sistema("sqlite", databaseContext("sqlite").Create(Script() + iniziali));
  fs::create_directories(sistema.Locale(T01));
  const SmallDisk disco(sistema.Locale(T01), Piccolo);
  disco.Fill(SmallDisk::Page);
  const Testi prima = RigheOra(sistema);
  EXPECT_EQ(Esegui(sistema, Sospende("locale")).risultato, "");
  const Testi dopo = RigheOra(sistema);
  EXPECT_NE(dopo, prima);
  EXPECT_THAT(Resti(sistema.Locale(T01)), IsEmpty()) << "the note of a command that has ended";
  const long commit = Passo(sistema, "COMMIT: before");
  const long fatto = Passo(sistema, "COMMIT, remove the journal: done");
  constexpr int Sigkill = 128 + 9;
  for (const long passo : {commit, fatto}) {
    SCOPED_TRACE(passo);
    sistema.Esegui("DELETE FROM EVENTOCONTABILE;INSERT INTO EVENTOCONTABILE SELECT * FROM INIZIALI;");
    disco.Fill(SmallDisk::Page);
    Sistema::Lancio lancio{T01, {Sospende("locale")}};
    lancio.morte = passo;
    ASSERT_EQ(sistema.Avvia(lancio).Attendi(), Sigkill);
    EXPECT_EQ(RigheOra(sistema), passo == commit ? prima : dopo);
    const auto note = Note(sistema);
    ASSERT_EQ(note.size(), 1U);
    EXPECT_EQ(note[0].errore, "");
    EXPECT_EQ(note[0].fase, FaseNota::ConfermaInviata);
    EXPECT_THAT(InSospeso(sistema), HasSubstr(passo == commit ? "\n    come prima " : "\n    fatta "));
    const Testi riallinea{"--riallinea", note[0].nome, "-", "--si"};
    if (passo == commit) {
      // What is about to be written is told in the note first, and there is no room for that.
      const std::string detto = sistema.Amministra(T01, riallinea);
      EXPECT_THAT(detto, StartsWith("1\n"));
      EXPECT_THAT(detto, HasSubstr("La nota resta."));
      EXPECT_EQ(RigheOra(sistema), prima);
      disco.Clear();
    }
    EXPECT_THAT(sistema.Amministra(T01, riallinea), StartsWith("0\n"));
    EXPECT_EQ(RigheOra(sistema), dopo);
    EXPECT_THAT(InSospeso(sistema), StartsWith("0\nNon c'è nulla in sospeso.\n"));
  }
}

TEST_F(FullDisk, OfTheTerminalWithoutAnotherFileLeavesTheNoteToSayThatCommitWasSent) {
  Sistema sistema("sqlite", databaseContext("sqlite").Create(Script()));
  fs::create_directories(sistema.Locale(T01));
  const SmallDisk disco(sistema.Locale(T01), Piccolo);
  const Testi prima = RigheOra(sistema);
  disco.LimitFiles(1);
  Sistema::Lancio lancio{T01, {Sospende("locale")}};
  // The step at which to die is known from a run that only counts.
  EXPECT_EQ(Esegui(sistema, Sospende("locale")).risultato, "");
  const long fatto = Passo(sistema, "COMMIT, remove the journal: done");
  EXPECT_THAT(Resti(sistema.Locale(T01)), IsEmpty()) << "the note of a command that has ended";
  EXPECT_EQ(Esegui(sistema, Replaced(Sospende("locale"), " /A ", " /D ")).risultato, "");
  ASSERT_EQ(RigheOra(sistema), prima);
  lancio.morte = fatto;
  constexpr int Sigkill = 128 + 9;
  ASSERT_EQ(sistema.Avvia(lancio).Attendi(), Sigkill);
  EXPECT_NE(RigheOra(sistema), prima);
  const auto note = Note(sistema);
  ASSERT_EQ(note.size(), 1U);
  EXPECT_EQ(Resti(sistema.Locale(T01)), Testi{note[0].nome + ".nota"});
  EXPECT_EQ(note[0].errore, "");
  EXPECT_EQ(note[0].fase, FaseNota::ConfermaInviata);
  const std::string detto = InSospeso(sistema);
  EXPECT_THAT(detto, HasSubstr("non si sa se il comando vi ha registrato tutto o nulla"));
  EXPECT_THAT(detto, HasSubstr("\n    fatta "));
  EXPECT_THAT(sistema.Amministra(T01, {"--riallinea", note[0].nome, "-", "--si"}), StartsWith("0\n"));
  EXPECT_THAT(InSospeso(sistema), StartsWith("0\nNon c'è nulla in sospeso.\n"));
}

/// The database's file on a small disk.
class FullDatabase : public FullDisk {
 protected:
  /// A world whose database is a file of `cartella`; `altre` are run in it.
  static std::unique_ptr<Sistema> Con(const fs::path& cartella, const Testi& altre = {}) {
    return std::make_unique<Sistema>("sqlite", std::make_unique<BaseInFile>(cartella, Script(), altre));
  }
  static fs::path Cartella() {
    fs::path cartella = OutputPath("affidabilita/base-" + std::to_string(::getpid()));
    fs::create_directories(cartella);
    return cartella;
  }

  /// A command that the full disk fails, and all that is to be so after it.
  static void Fallisce(Sistema& sistema, const SmallDisk& disco) {
    const Testi prima = RigheOra(sistema);
    const Eseguito comando = Esegui(sistema, Sospende("locale"));
    EXPECT_EQ(comando.risultato, "error");
    EXPECT_THAT(Box(comando), HasSubstr("Lo spazio della base dati è esaurito: avvisare chi amministra il sistema."));
    EXPECT_THAT(Box(comando), HasSubstr(NienteRegistrato));
    EXPECT_EQ(AccettateOra(sistema).size(), 1U);
    EXPECT_EQ(RigheOra(sistema), prima);
    const auto note = Note(sistema);
    ASSERT_EQ(note.size(), 1U);
    EXPECT_EQ(note[0].fase, FaseNota::NonApplicata);
    const Testi riallinea{"--riallinea", note[0].nome, "-", "--si"};
    EXPECT_THAT(sistema.Amministra(T01, riallinea), HasSubstr("La base dati non ha registrato nulla.\nLa nota resta."));
    EXPECT_EQ(RigheOra(sistema), prima);
    disco.Clear();
    EXPECT_THAT(sistema.Amministra(T01, riallinea), StartsWith("0\n"));
    EXPECT_NE(RigheOra(sistema), prima);
    EXPECT_THAT(InSospeso(sistema), StartsWith("0\nNon c'è nulla in sospeso.\n"));
  }
};

TEST_F(FullDatabase, InAFileHasNoRoomForItsJournal) {
  const fs::path cartella = Cartella();
  const SmallDisk disco(cartella, 1 << 20);
  const auto sistema = Con(cartella);
  disco.Fill();
  Fallisce(*sistema, disco);
  EXPECT_THAT(LeggiRighe(sistema->Passi(T01)), Not(Contains("COMMIT: before")));
}

TEST_F(FullDatabase, InAFileHasNoRoomToGrowAtCommit) {
  const fs::path cartella = Cartella();
  const SmallDisk disco(cartella, 1 << 20);
  const auto sistema =
      Con(cartella, {"CREATE TABLE STORIA (TESTO BLOB)",
                     "CREATE TRIGGER STORIA AFTER UPDATE ON EVENTOCONTABILE BEGIN INSERT INTO STORIA VALUES "
                     "(zeroblob(100000)); END"});
  // The journal takes some pages at the first change, the new rows many at COMMIT.
  disco.Fill(Piccolo);
  Fallisce(*sistema, disco);
  EXPECT_THAT(LeggiRighe(sistema->Passi(T01)), Contains("COMMIT: before"));
}

} // namespace
} // namespace lumoscad::test
