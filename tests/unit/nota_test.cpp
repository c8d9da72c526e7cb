// What is kept of a command under way, and how it is read again.

#include "common/Nota.hpp"
#include "common/NotaInCorso.hpp"
#include "common/ProvaNota.hpp"
#include "common/TestoNota.hpp"
#include "platform/LocalFile.hpp"
#include "platform/RuntimeError.hpp"
#include "support/NoLocks.hpp"
#include "support/OtherProcess.hpp"
#include "support/TestBench.hpp"

#include <filesystem>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iterator>
#include <optional>
#include <string>
#include <sys/resource.h>
#include <vector>

namespace lumoscad {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// A note of a list with every field filled, and texts that a line could break on.
Nota Esempio(ModificaChiesta::Genere genere) {
  Nota nota;
  nota.inizio = {2026, 11, 22, 17, 18, 15};
  nota.postazione = "T01";
  nota.processo = 4711;
  nota.tipoComando = "BANCA /CREDITI";
  nota.azienda = "01";
  nota.host = "10.0.0.1";
  nota.programma = "VB0001";
  nota.richiesta = "/tmp/T0120261122171815.dos";
  nota.origineDati = "CONTABILITÀ";
  nota.utente = {true, false, "anna"};
  nota.schema = {true, genere == ModificaChiesta::Genere::Azione, ""};
  nota.parametriHost = {"01", "", "una\\riga\r\ncon\ttutto\x7F=fine"};
  nota.modifica.genere = genere;
  if (genere == ModificaChiesta::Genere::Azione) {
    nota.modifica.parametri = {"01", "SOSPESOCREA", "C 01", "", "fine"};
    return nota;
  }
  if (genere == ModificaChiesta::Genere::Nessuna) {
    return nota;
  }
  nota.modifica.tipo = "CREDITI";
  if (genere == ModificaChiesta::Genere::Canalizzazione) {
    nota.modifica.canalizzazioni = {{"1", "2", "C1", "AB   1", "06", "A", "7", "#null#", "B\t2", "01/02/2026", "3",
                                     "04/05/2026", "06/07/2026", true, false},
                                    {"", "", "", "", "", "", "", "", "", "", "", "", "", false, true}};
  } else {
    nota.modifica.consegne = {{"O", -7, "C1", "OC", "06", "9", "B1", "#null#", "#null#", "x", "y\n", true, true}};
  }
  return nota;
}

std::string TestoDi(const Nota& nota) {
  return testoNota::DiNota({nota.inizio, nota.postazione, nota.processo, nota.tipoComando, nota.azienda, nota.host,
                            nota.programma, nota.richiesta, nota.origineDati, nota.parametriHost,
                            testoNota::DiModifica(nota.modifica), nota.utente, nota.schema});
}

std::string TestoFase(FaseNota fase) {
  std::string testo;
  testoNota::ComponiFase(testo, {fase, {2026, 11, 22, 17, 18, 16}, "Variate 2\r\nscadenze", "pg 1/2/3"},
                         {"riga 1", "2"});
  return testo;
}

/// What reading `testo` raises.
template <typename Lettura> std::string Errore(Lettura leggi, std::string_view testo) {
  Nota nota;
  try {
    leggi(testo, nota);
  } catch (const RuntimeError& errore) {
    return errore.Text();
  }
  return "";
}

class NoteText : public testing::TestWithParam<ModificaChiesta::Genere> {};

TEST_P(NoteText, IsReadAsItWasWritten) {
  const Nota nota = Esempio(GetParam());
  Nota letta;
  testoNota::LeggiContenuto(TestoDi(nota), letta);
  EXPECT_EQ(letta.versione, 1);
  EXPECT_EQ(letta.inizio.second, 15);
  EXPECT_EQ(letta.momentoFase.year, 2026);
  EXPECT_EQ(letta.postazione, nota.postazione);
  EXPECT_EQ(letta.processo, nota.processo);
  EXPECT_EQ(letta.tipoComando, nota.tipoComando);
  EXPECT_EQ(letta.azienda, nota.azienda);
  EXPECT_EQ(letta.host, nota.host);
  EXPECT_EQ(letta.programma, nota.programma);
  EXPECT_EQ(letta.richiesta, nota.richiesta);
  EXPECT_EQ(letta.origineDati, nota.origineDati);
  EXPECT_EQ(letta.utente.valore, "anna");
  EXPECT_TRUE(letta.utente.detto && !letta.utente.riservato && letta.schema.detto);
  EXPECT_EQ(letta.schema.riservato, nota.schema.riservato);
  EXPECT_EQ(letta.parametriHost, nota.parametriHost);
  EXPECT_EQ(letta.modifica.genere, nota.modifica.genere);
  EXPECT_EQ(letta.modifica.tipo, nota.modifica.tipo);
  EXPECT_EQ(letta.modifica.parametri, nota.modifica.parametri);
  EXPECT_EQ(letta.modifica.canalizzazioni.size(), nota.modifica.canalizzazioni.size());
  EXPECT_EQ(letta.modifica.consegne.size(), nota.modifica.consegne.size());
  EXPECT_EQ(TestoDi(letta), TestoDi(nota));
}

TEST_P(NoteText, CutAtAnyByteIsKnownAsCut) {
  const std::string testo = TestoDi(Esempio(GetParam()));
  for (std::size_t lunghezza = 0; lunghezza < testo.size(); ++lunghezza) {
    EXPECT_NE(Errore(testoNota::LeggiContenuto, testo.substr(0, lunghezza)), "") << lunghezza;
  }
  EXPECT_EQ(Errore(testoNota::LeggiContenuto, testo), "");
}

INSTANTIATE_TEST_SUITE_P(Kinds, NoteText,
                         testing::Values(ModificaChiesta::Genere::Nessuna, ModificaChiesta::Genere::Canalizzazione,
                                         ModificaChiesta::Genere::BancaPresunti, ModificaChiesta::Genere::Consegna,
                                         ModificaChiesta::Genere::Azione));

TEST(NotePhaseText, IsReadAsItWasWrittenAndKnownAsCut) {
  for (const FaseNota fase : {FaseNota::Avviata, FaseNota::Accettata, FaseNota::Rifiutata, FaseNota::ConfermaInviata,
                              FaseNota::Applicata, FaseNota::NonApplicata, FaseNota::Sconosciuta}) {
    const std::string testo = TestoFase(fase);
    Nota nota;
    testoNota::LeggiFase(testo, nota);
    EXPECT_EQ(nota.fase, fase);
    EXPECT_EQ(nota.momentoFase.second, 16);
    EXPECT_EQ(nota.rispostaHost, "Variate 2\r\nscadenze");
    EXPECT_EQ(nota.transazione, "pg 1/2/3");
    EXPECT_THAT(nota.righeRimaste, ElementsAre("riga 1", "2"));
    for (std::size_t lunghezza = 0; lunghezza < testo.size(); ++lunghezza) {
      EXPECT_NE(Errore(testoNota::LeggiFase, testo.substr(0, lunghezza)), "") << lunghezza;
    }
  }
}

// The first version, byte for byte: whatever is written later, this is read.
constexpr const char* PrimaVersione = R"(lumoscad-nota 1
inizio=2026-11-22 17:18:15
processo=4711
postazione=T01
comando=BANCA /CREDITI
azienda=01
host=10.0.0.1
programma=VB0001
richiesta=/tmp/T0120261122171815.dos
origine=CONTAB
parametro=01
parametro=
genere=canalizzazione
tipo=CREDITI
riga=BD	1	2	C1	AB   1	06	A	7	#null#	B2	01/02/2026	3	04/05/2026	06/07/2026
fine
)";

TEST(NoteVersion, TheFirstIsRead) {
  Nota nota;
  testoNota::LeggiContenuto(PrimaVersione, nota);
  EXPECT_EQ(nota.tipoComando, "BANCA /CREDITI");
  EXPECT_THAT(nota.parametriHost, ElementsAre("01", ""));
  ASSERT_EQ(nota.modifica.canalizzazioni.size(), 1U);
  const VariazioneCanalizzazione& riga = nota.modifica.canalizzazioni[0];
  EXPECT_TRUE(riga.isBancaChanged && riga.isScadenzaChanged);
  EXPECT_FALSE(nota.utente.detto || nota.schema.detto) << "they were not kept";
  EXPECT_EQ(riga.idPartitaKey, "1");
  EXPECT_EQ(riga.NumeroPartita, "AB   1");
  EXPECT_EQ(riga.NuovaBanca, "B2");
  EXPECT_EQ(riga.NuovaScadenza, "06/07/2026");
}

TEST(NoteVersion, FieldsThatAreNotKnownAreSkipped) {
  std::string testo(PrimaVersione);
  testo.insert(testo.find("azienda="), "nuovo campo=x\\y\n");
  testo.insert(testo.find("\nfine"), "\taltro\tancora");
  Nota nota;
  testoNota::LeggiContenuto(testo, nota);
  EXPECT_EQ(nota.azienda, "01");
  ASSERT_EQ(nota.modifica.canalizzazioni.size(), 1U);
  EXPECT_EQ(nota.modifica.canalizzazioni[0].NuovaScadenza, "06/07/2026");
}

TEST(NoteVersion, ALaterOneIsToldAsSuch) {
  std::string testo(PrimaVersione);
  testo[testo.find('1')] = '2';
  EXPECT_THAT(Errore(testoNota::LeggiContenuto, testo), HasSubstr("versione 2, scritta da un LumoScad più recente"));
}

TEST(TextThatIsNoNote, SaysWhy) {
  const std::string testata = "lumoscad-nota 1\n";
  EXPECT_THAT(Errore(testoNota::LeggiContenuto, "lumoscad-fase 1\nfine\n"), HasSubstr("di altro genere"));
  EXPECT_THAT(Errore(testoNota::LeggiContenuto, "lumoscad-nota x\nfine\n"), HasSubstr("un numero è guasto"));
  EXPECT_THAT(Errore(testoNota::LeggiContenuto, "lumoscad-nota 0\nfine\n"), HasSubstr("la versione non esiste"));
  EXPECT_THAT(Errore(testoNota::LeggiContenuto, testata + "senza segno\nfine\n"), HasSubstr("una riga è guasta"));
  EXPECT_THAT(Errore(testoNota::LeggiContenuto, testata + "azienda=\\q1\nfine\n"), HasSubstr("un valore è guasto"));
  EXPECT_THAT(Errore(testoNota::LeggiContenuto, testata + "azienda=\\x1\nfine\n"), HasSubstr("un valore è guasto"));
  EXPECT_THAT(Errore(testoNota::LeggiContenuto, testata + "inizio=2026-13-22 17:18:15\nfine\n"),
              HasSubstr("un momento è guasto"));
  EXPECT_THAT(Errore(testoNota::LeggiContenuto, testata + "fine\nfine\n"), HasSubstr("dopo la fine"));
  EXPECT_THAT(Errore(testoNota::LeggiContenuto, testata + "genere=altro\nfine\n"), HasSubstr("«altro» è sconosciuto"));
}

using Confronto = AccessoComando::Confronto;

TEST(DatabaseOfACommand, IsTheNotesOwnByUserAndSchema) {
  const AccessoComando comando("-db2source CONTAB;x -DB2USER altri -DB2USER anna;PWD=y -DB2PASS Segr3ta -DB2SCHEMA S1");
  EXPECT_EQ(comando.Origine(), "CONTAB");
  EXPECT_EQ(comando.Utente().valore, "anna");
  EXPECT_EQ(comando.Schema().valore, "S1");
  EXPECT_EQ(comando.ConfrontaUtente(comando.Utente()), Confronto::Uguale);
  EXPECT_EQ(comando.ConfrontaUtente({true, false, "Anna"}), Confronto::Diverso);
  EXPECT_EQ(comando.ConfrontaSchema({true, false, "s1"}), Confronto::Uguale) << "a statement finds it in either case";
  EXPECT_EQ(comando.ConfrontaSchema({true, false, "S2"}), Confronto::Diverso);
  EXPECT_EQ(comando.ConfrontaSchema({true, true, ""}), Confronto::NonSiSa);
  EXPECT_EQ(comando.ConfrontaSchema({}), Confronto::NonSiSa);
  EXPECT_EQ(comando.ConfrontaSchema({true, false, ""}), Confronto::Uguale) << "no statement has named one";
  EXPECT_EQ(comando.ConfrontaUtente({true, false, ""}), Confronto::NonSiSa) << "the source may have named one";
}

TEST(DatabaseOfACommand, IsTheNotesOwnWhereThePasswordStandsForTheSchema) {
  const AccessoComando comando("-DB2USER anna -DB2PASS Segr3ta -DB2SCHEMA");
  EXPECT_TRUE(comando.Schema().riservato);
  EXPECT_EQ(comando.Schema().valore, "");
  EXPECT_EQ(comando.ConfrontaSchema(comando.Schema()), Confronto::Uguale);
  EXPECT_EQ(comando.ConfrontaSchema({true, false, "segr3ta"}), Confronto::Uguale) << "it was another's password";
  EXPECT_EQ(comando.ConfrontaSchema({true, false, "S1"}), Confronto::Diverso);
  EXPECT_TRUE(AccessoComando("-DB2USER xSegr3ta -DB2PASS segr3ta").Utente().riservato);
  EXPECT_FALSE(AccessoComando("-DB2USER anna").Schema().riservato) << "no password stands for none";
}

class Notes : public testing::Test {
 protected:
  /// Writes a note as a command that died has left it.
  void Scrivi(const std::string& nome, std::optional<FaseNota> fase = std::nullopt) const {
    const PercorsiNota percorsi(cartella_, nome);
    WriteLocalFile(percorsi.nota, TestoDi(Esempio(ModificaChiesta::Genere::Azione)));
    if (fase) {
      WriteLocalFile(percorsi.fase, TestoFase(*fase));
    }
  }
  [[nodiscard]] std::vector<std::string> Nomi() const {
    std::vector<std::string> nomi;
    for (const Nota& nota : LeggiNote(cartella_)) {
      nomi.push_back(nota.nome);
    }
    return nomi;
  }
  [[nodiscard]] bool Vuota() const { return std::filesystem::is_empty(cartella_); }
  [[nodiscard]] bool Esiste(const std::string& file) const { return std::filesystem::exists(cartella_ + "/" + file); }

  test::TestBench banco_;
  std::string cartella_ = banco_.environment.CartellaLocale;
};

TEST_F(Notes, AreListedFromTheOldest) {
  EXPECT_THAT(Nomi(), IsEmpty());
  Scrivi("sospeso-20261122-171815-9");
  Scrivi("in-sospeso-20261122-171814-12");
  Scrivi("sospeso-20251122-171815-10");
  WriteLocalFile(cartella_ + "/T0120261122171815", "una richiesta");
  WriteLocalFile(cartella_ + "/altro.nota", "di altri");
  EXPECT_THAT(Nomi(),
              ElementsAre("sospeso-20251122-171815-10", "in-sospeso-20261122-171814-12", "sospeso-20261122-171815-9"));
}

TEST_F(Notes, OfADirectoryThatIsNotThereAreNone) {
  EXPECT_THAT(LeggiNote(cartella_ + "/assente"), IsEmpty());
  WriteLocalFile(cartella_ + "/file", "");
  EXPECT_THROW(static_cast<void>(LeggiNote(cartella_ + "/file")), RuntimeError);
}

TEST_F(Notes, HoldTheLastPhase) {
  Scrivi("sospeso-1");
  Nota nota = LeggiNota(cartella_, "sospeso-1");
  EXPECT_EQ(nota.fase, FaseNota::Avviata);
  EXPECT_EQ(nota.momentoFase.second, 15);
  Scrivi("sospeso-1", FaseNota::ConfermaInviata);
  // Cut off while the next phase was being written.
  WriteLocalFile(PercorsiNota(cartella_, "sospeso-1").parte, TestoFase(FaseNota::Applicata).substr(0, 40));
  nota = LeggiNota(cartella_, "sospeso-1");
  EXPECT_EQ(nota.fase, FaseNota::ConfermaInviata);
  EXPECT_EQ(nota.transazione, "pg 1/2/3");
  EXPECT_EQ(nota.errore, "");
}

TEST_F(Notes, ThatCannotBeReadAreListedWithTheReason) {
  const PercorsiNota percorsi(cartella_, "sospeso-1");
  WriteLocalFile(percorsi.nota, "lumoscad-nota 7\nfine\n");
  std::filesystem::create_directory(PercorsiNota(cartella_, "sospeso-2").nota);
  Scrivi("sospeso-3");
  WriteLocalFile(PercorsiNota(cartella_, "sospeso-3").fase, "lumoscad-fase 2\nfine\n");
  const std::vector<Nota> note = LeggiNote(cartella_);
  ASSERT_EQ(note.size(), 3U);
  EXPECT_THAT(note[0].errore, HasSubstr("versione 7"));
  EXPECT_THAT(note[1].errore, HasSubstr("cartella"));
  EXPECT_THAT(note[2].errore, HasSubstr("versione 2"));
  EXPECT_EQ(note[2].azienda, "01");
}

TEST_F(Notes, AreNamedByNothingButANote) {
  WriteLocalFile(cartella_ + "/T01.nota", TestoDi(Esempio(ModificaChiesta::Genere::Azione)));
  for (const char* nome : {"", "T01", "sospeso-0", "../sospeso-1", "sospeso-/../T01", "sospeso-1.nota"}) {
    EXPECT_THROW(static_cast<void>(LeggiNota(cartella_, nome)), RuntimeError) << nome;
    EXPECT_THROW(CancellaNota(cartella_, nome), RuntimeError) << nome;
    EXPECT_THROW(ArchiviaNota(cartella_, nome, "x"), RuntimeError) << nome;
  }
  EXPECT_TRUE(Esiste("T01.nota"));
}

TEST_F(Notes, OfACommandThatStillRunsAreSaidToBeSoAndLeftAlone) {
  Scrivi("sospeso-1");
  test::OtherProcess altro([&] {
    static const auto Tenuto = HeldFile::Take(PercorsiNota(cartella_, "sospeso-1").nota);
    if (!Tenuto) {
      throw RuntimeError(errors::FileAccess, "not held");
    }
  });
  ASSERT_TRUE(altro.Succeeded());
  EXPECT_TRUE(LeggiNota(cartella_, "sospeso-1").inCorso);
  EXPECT_THROW(CancellaNota(cartella_, "sospeso-1"), RuntimeError);
  EXPECT_THROW(ArchiviaNota(cartella_, "sospeso-1", "x"), RuntimeError);
  altro.Kill();
  EXPECT_FALSE(LeggiNota(cartella_, "sospeso-1").inCorso);
  CancellaNota(cartella_, "sospeso-1");
  EXPECT_TRUE(Vuota());
}

TEST_F(Notes, InTheHandsOfOnePersonAreNotGivenToAnother) {
  Scrivi("sospeso-1", FaseNota::Accettata);
  NotaPresa presa(cartella_, "sospeso-1");
  EXPECT_THROW(NotaPresa(cartella_, "sospeso-1"), RuntimeError);
  EXPECT_TRUE(LeggiNota(cartella_, "sospeso-1").inCorso);
  Nota nota = presa.Leggi();
  EXPECT_FALSE(nota.inCorso);
  nota.fase = FaseNota::Applicata;
  nota.righeRimaste = {"una"};
  presa.SegnaFase(nota);
  EXPECT_EQ(presa.Leggi().fase, FaseNota::Applicata);
  EXPECT_THAT(presa.Leggi().righeRimaste, ElementsAre("una"));
  presa.Cancella();
  EXPECT_TRUE(Vuota());
}

TEST_F(Notes, PutAsideTellTheReasonAndGoAfterNinetyDays) {
  Scrivi("sospeso-1", FaseNota::Sconosciuta);
  Scrivi("sospeso-2");
  ArchiviaNota(cartella_, "sospeso-1", "sistemata\na mano");
  const Nota nota = LeggiNota(cartella_, "sospeso-1");
  ASSERT_TRUE(nota.archiviata);
  EXPECT_EQ(nota.archiviata->motivo, "sistemata\na mano");
  EXPECT_EQ(nota.archiviata->momento.hour, 14);
  banco_.adesso = {2006, 6, 3, 0, 0, 0}; // 90 days later
  EXPECT_THAT(Nomi(), ElementsAre("sospeso-1", "sospeso-2"));
  banco_.adesso.day = 4;
  EXPECT_THAT(Nomi(), ElementsAre("sospeso-2"));
  EXPECT_FALSE(Esiste("sospeso-1.fase") || Esiste("sospeso-1.archivio"));
  banco_.adesso.year = 2036;
  EXPECT_THAT(Nomi(), ElementsAre("sospeso-2")) << "one that nobody put aside stays";
}

TEST_F(Notes, PutAsideWithoutATimeStay) {
  Scrivi("sospeso-1", FaseNota::Sconosciuta);
  WriteLocalFile(PercorsiNota(cartella_, "sospeso-1").archivio, "lumoscad-archivio 1\nmotivo=vista\nfine\n");
  EXPECT_THAT(Nomi(), ElementsAre("sospeso-1"));
  const Nota nota = LeggiNota(cartella_, "sospeso-1");
  EXPECT_FALSE(nota.archiviata);
  EXPECT_THAT(nota.errore, HasSubstr("non dice da quando è archiviata"));
}

TEST_F(Notes, AreLookedForAmongAsManyFilesAsAllowed) {
  for (int numero = 0; numero < 20; ++numero) {
    WriteLocalFile(cartella_ + "/sospeso-" + std::to_string(numero) + ".fase", TestoFase(FaseNota::Applicata));
  }
  const auto rimasti = [this] {
    return std::distance(std::filesystem::directory_iterator(cartella_), std::filesystem::directory_iterator());
  };
  TogliNoteScadute(cartella_, 5);
  EXPECT_EQ(rimasti(), 15);
  TogliNoteScadute(cartella_);
  EXPECT_EQ(rimasti(), 0);
}

/// No file that is written holds more than a few bytes, for the life of the object.
class FullDisk {
 public:
  FullDisk() {
    getrlimit(RLIMIT_FSIZE, &before_);
    const rlimit few{8, before_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &few);
  }
  FullDisk(const FullDisk&) = delete;
  FullDisk& operator=(const FullDisk&) = delete;
  ~FullDisk() { setrlimit(RLIMIT_FSIZE, &before_); }

 private:
  rlimit before_{};
};

TEST_F(Notes, SayThatCommitWasSentWhereThereIsNoRoomToWriteIt) {
  for (const bool conAccettata : {true, false}) {
    NotaInCorso nota;
    nota.Comincia("PROVA", "");
    nota.Prepara({"01", "SOSPESOCREA", "C01", "1", ""});
    nota.Avviata("10.0.0.1", "VB0001", {});
    {
      std::optional<FullDisk> piena;
      if (!conAccettata) {
        piena.emplace();
      }
      nota.Accettata("Sospesa");
      if (conAccettata) {
        piena.emplace();
      }
      nota.ConfermaInviata("sessione 12");
      nota.Registrata(TransactionOutcome::Unknown);
    }
    ASSERT_EQ(Nomi().size(), 1U);
    const std::string nome = Nomi().at(0);
    EXPECT_EQ(LeggiNota(cartella_, nome).fase, FaseNota::ConfermaInviata) << conAccettata;
    EXPECT_EQ(LeggiNota(cartella_, nome).errore, "");
    EXPECT_EQ(LeggiNota(cartella_, nome).transazione, "");
    EXPECT_EQ(LeggiNota(cartella_, nome).rispostaHost, conAccettata ? "Sospesa" : "");
    nota.Registrata(TransactionOutcome::NotApplied); // there is room again
    EXPECT_EQ(LeggiNota(cartella_, nome).fase, FaseNota::NonApplicata);
    nota.Concludi(true);
    EXPECT_TRUE(Vuota());
  }
}

TEST_F(Notes, BelieveAMarkOfCommitOverThePhaseBeforeItAlone) {
  constexpr const char* Nome = "sospeso-1";
  const PercorsiNota percorsi(cartella_, Nome);
  for (const bool perNome : {true, false}) {
    for (const FaseNota fase : {FaseNota::Avviata, FaseNota::Accettata, FaseNota::Rifiutata, FaseNota::NonApplicata}) {
      Scrivi(Nome, fase);
      if (perNome) {
        WriteLocalFile(percorsi.conferma, "");
      } else {
        auto presa = HeldFile::Take(percorsi.nota);
        ASSERT_TRUE(presa);
        presa->MarkInPlace();
      }
      const bool prima = fase == FaseNota::Avviata || fase == FaseNota::Accettata;
      const Nota nota = LeggiNota(cartella_, Nome);
      EXPECT_EQ(nota.fase, prima ? FaseNota::ConfermaInviata : fase) << perNome;
      EXPECT_EQ(nota.errore, "");
      TogliNota(percorsi);
    }
  }
}

TEST_F(Notes, WithoutLocksAreUnderWayForAsLongAsTheirProgramIsOpen) {
  const test::NoLocks nessuno;
  const auto avvia = [] {
    static NotaInCorso nota;
    nota.Comincia("PROVA", "");
    nota.Prepara({"01", "SOSPESOCREA", "C01", "1", ""});
    nota.Avviata("10.0.0.1", "VB0001", {});
  };
  test::OtherProcess altro(avvia);
  ASSERT_EQ(Nomi().size(), 1U);
  const std::string nome = Nomi().at(0);
  EXPECT_TRUE(LeggiNota(cartella_, nome).inCorso);
  for (const auto& azione : std::vector<std::function<void()>>{[&] { CancellaNota(cartella_, nome); },
                                                               [&] { ArchiviaNota(cartella_, nome, "perché"); }}) {
    try {
      azione();
      ADD_FAILURE() << "not refused";
    } catch (const RuntimeError& errore) {
      EXPECT_THAT(errore.Text(), HasSubstr("La cartella locale non ha blocchi"));
      EXPECT_THAT(errore.Text(), HasSubstr("(processo " + std::to_string(altro.Number()) + ")"));
    }
  }
  altro.Kill();
  EXPECT_FALSE(LeggiNota(cartella_, nome).inCorso);
  CancellaNota(cartella_, nome);
  EXPECT_TRUE(Vuota());
  avvia();
  ASSERT_EQ(Nomi().size(), 1U);
  EXPECT_FALSE(LeggiNota(cartella_, Nomi().at(0)).inCorso) << "this program knows that it has ended";
  CancellaNota(cartella_, Nomi().at(0));
}

TEST_F(Notes, LeaveNoFilesOfOthersBehind) {
  WriteLocalFile(cartella_ + "/sospeso-1.fase", TestoFase(FaseNota::Applicata));
  WriteLocalFile(cartella_ + "/sospeso-2.archivio", "");
  WriteLocalFile(cartella_ + "/sospeso-5.conferma", "");
  WriteLocalFile(cartella_ + "/sospeso-3.parte", "metà");
  WriteLocalFile(cartella_ + "/sospeso-4.parte", "metà");
  WriteLocalFile(cartella_ + "/sospeso-X.fase", "di altri");
  const auto prima = std::filesystem::file_time_type::clock::now() - std::chrono::hours(2);
  std::filesystem::last_write_time(cartella_ + "/sospeso-3.parte", prima);
  EXPECT_THAT(Nomi(), IsEmpty());
  EXPECT_FALSE(Esiste("sospeso-1.fase") || Esiste("sospeso-2.archivio") || Esiste("sospeso-3.parte"));
  EXPECT_FALSE(Esiste("sospeso-5.conferma"));
  EXPECT_TRUE(Esiste("sospeso-4.parte")) << "somebody may be writing it";
  EXPECT_TRUE(Esiste("sospeso-X.fase"));
}

TEST_F(Notes, AreTriedOutAndNothingStays) {
  EXPECT_EQ(ProvaNota(cartella_, "T01"), "un comando interrotto lascia una nota in «" + cartella_ + "»");
  EXPECT_TRUE(Vuota());
  EXPECT_THROW(static_cast<void>(ProvaNota(cartella_ + "/assente", "T01")), RuntimeError);
  const std::string prova = cartella_ + "/in-sospeso-prova-" + std::to_string(ProcessNumber());
  std::filesystem::create_directory(prova + ".fase");
  EXPECT_THROW(static_cast<void>(ProvaNota(cartella_, "sospeso")), RuntimeError);
  EXPECT_THAT(Nomi(), IsEmpty());
}

TEST_F(Notes, InADirectoryThatIsKeptInMemoryAreSaidToGoWithIt) {
  const std::string cartella = "/dev/shm/lumoscad-prova-" + std::to_string(ProcessNumber());
  if (!InMemory("/dev/shm") || !std::filesystem::create_directory(cartella)) {
    GTEST_SKIP() << "no directory in memory";
  }
  EXPECT_THAT(ProvaNota(cartella, "T01"), HasSubstr("», che è in memoria"));
  std::filesystem::remove(cartella);
}

TEST(NoteName, NeverBeginsLikeARequestALockOrATemporaryFile) {
  for (int codice = 0x20; codice < 0x7F; ++codice) {
    for (const std::string& postazione : {std::string(1, static_cast<char>(codice)),
                                          "  " + std::string(1, static_cast<char>(codice)) + "ospeso-20261122"}) {
      const std::string richiesta =
          postazione.substr(postazione.find_first_not_of(' ') == std::string::npos ? postazione.size()
                                                                                   : postazione.find_first_not_of(' '));
      const std::string inizio(InizioNome(postazione));
      EXPECT_TRUE(richiesta.empty() || richiesta[0] != inizio[0]) << postazione;
      EXPECT_FALSE(inizio.starts_with("V") || inizio.starts_with(".")) << postazione;
    }
  }
  EXPECT_EQ(InizioNome("T01"), "sospeso-");
  EXPECT_EQ(InizioNome("sospeso-1"), "in-sospeso-");
}

} // namespace
} // namespace lumoscad
