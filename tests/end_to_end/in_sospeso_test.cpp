// What commands left open: the real program lists it, finishes it and puts it aside.

#include "Dimostrazione.hpp"
#include "Figlio.hpp"
#include "common/Nota.hpp"
#include "common/NotaInCorso.hpp"
#include "common/Stato.hpp"
#include "platform/ado/Ado.hpp"
#include "support/DatabaseContext.hpp"
#include "support/Paths.hpp"
#include "support/TestBench.hpp"

#include <csignal>
#include <gmock/gmock.h>
#include <memory>
#include <string>
#include <vector>

namespace lumoscad::test {
namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;
namespace fs = std::filesystem;

class LeftOpen : public testing::Test {
 protected:
  LeftOpen() {
    RunScript(demo.Connessione(), FileText(SourcePath("demo/comandi.sql")));
    banco.environment.CartellaLocale = demo.Locale();
    stato().ComandoCorrente = "-DB2SOURCE " + demo.Sorgente();
    stato().azienda = "01";
  }

  /// Leaves the note of a suspension that ended in this phase; returns its name.
  std::string Lascia(FaseNota fase) {
    {
      NotaInCorso nota;
      nota.Comincia("SOSPESO", "/A");
      nota.Prepara({"01", "SOSPESOCREA", "20100001", "AB   123", ""});
      nota.Avviata("10.0.0.1", "VB0001", {"01", "SOSPESOCREA"});
    }
    std::string nome = LeggiNote(demo.Locale()).back().nome;
    const NotaPresa presa(demo.Locale(), nome);
    Nota nota = presa.Leggi();
    nota.fase = fase;
    nota.rispostaHost = fase == FaseNota::Avviata ? "" : "Sospesa la partita";
    presa.SegnaFase(nota);
    banco.adesso.minute += 1;
    return nome;
  }
  /// Runs the program with what the person types; its exit status, a line break and its standard output.
  std::string Lancia(const std::vector<std::string>& opzioni, const std::string& digitato = "") const {
    Scrivi(demo.Base() / "digitato", digitato);
    std::vector<std::string> argomenti{ProgramPath("lumoscad").string()};
    argomenti.insert(argomenti.end(), opzioni.begin(), opzioni.end());
    Figlio programma(argomenti, demo.Ambiente(), demo.Base() / "digitato", demo.Base() / "risultato",
                     demo.Base() / "errori");
    const auto stato = programma.Attendi();
    EXPECT_EQ(FileText(demo.Base() / "errori"), "");
    return (stato ? std::to_string(*stato) : "fermo") + "\n" + FileText(demo.Base() / "risultato");
  }
  [[nodiscard]] std::vector<std::string> BaseDati() const {
    return {"-DB2SOURCE", demo.Sorgente(), "-DB2SCHEMA", "main"};
  }
  /// The arguments, with the options of the database behind them.
  [[nodiscard]] std::vector<std::string> ConBaseDati(std::vector<std::string> argomenti) const {
    const auto opzioni = BaseDati();
    argomenti.insert(argomenti.end(), opzioni.begin(), opzioni.end());
    return argomenti;
  }
  [[nodiscard]] Righe Sospese() const {
    return Interroga(demo.Connessione(),
                     "SELECT SOSPESA FROM EVENTOCONTABILE WHERE EVENTOCONTABILEKEY IN (900001,900002)");
  }

  Dimostrazione demo;
  TestBench banco;
  static constexpr const char* Niente = "0\nNon c'è nulla in sospeso.\n";
  static constexpr const char* Riga = "    come prima         partita AB   123 del conto 20100001\n";
  static constexpr const char* Fatta = "    fatta              partita AB   123 del conto 20100001\n"
                                       "L'host e la base dati hanno registrato la modifica: la nota è stata tolta.\n";
};

TEST_F(LeftOpen, NothingIsSaidAsSuch) {
  EXPECT_EQ(Lancia({"--in-sospeso"}), Niente);
  EXPECT_EQ(Lancia(ConBaseDati({"--in-sospeso"})), Niente);
}

TEST_F(LeftOpen, IsListedTheOldestFirstAndLeftAsItIs) {
  const auto prima = Lascia(FaseNota::Accettata);
  const auto seconda = Lascia(FaseNota::Avviata);
  const auto foto = demo.Stato();
  const std::string a = prima + "\n"
                                "  comando    SOSPESO /A, postazione T01, azienda 01, host 10.0.0.1\n"
                                "  dal        05/03/2006 14:07:09\n"
                                "  host       ha accettato la richiesta: Sospesa la partita\n"
                                "  base dati  il comando non vi ha registrato nulla\n";
  const std::string b = "  da fare    lumoscad --riallinea " + prima + " -DB2SOURCE " + demo.Sorgente() + " ...\n" +
                        seconda +
                        "\n"
                        "  comando    SOSPESO /A, postazione T01, azienda 01, host 10.0.0.1\n"
                        "  dal        05/03/2006 14:08:09\n"
                        "  host       non si sa se ha eseguito la richiesta\n"
                        "  base dati  il comando non vi ha registrato nulla\n";
  const std::string c =
      "  da fare    guardare sull'host se la richiesta risulta eseguita. Se lo è: lumoscad --riallinea " + seconda +
      " -DB2SOURCE " + demo.Sorgente() + " ...; se non lo è: lumoscad --archivia " + seconda + " MOTIVO\n";
  EXPECT_EQ(Lancia({"--in-sospeso"}), "0\n" + a + b + c);
  EXPECT_EQ(Lancia(ConBaseDati({"--in-sospeso"})), "0\n" + a + Riga + b + Riga + c);
  EXPECT_EQ(Lancia({"--in-sospeso", "-"}, "-DB2SOURCE " + demo.Sorgente() + " -DB2SCHEMA main\n"),
            "0\n" + a + Riga + b + Riga + c);
  EXPECT_EQ(demo.Stato(), foto);
  EXPECT_THAT(Lancia({"--in-sospeso", "-DB2SOURCE", "ALTRA"}),
              AllOf(StartsWith("1\n" + a + "  NON letta  la modifica è dell'origine dati «"), Not(HasSubstr(Riga))));
}

TEST_F(LeftOpen, IsFinishedOnAYesAlone) {
  const auto nota = Lascia(FaseNota::Accettata);
  const auto foto = demo.Stato();
  const auto domanda = AllOf(HasSubstr(Riga), HasSubstr("Registrare nella base dati le righe «come prima», 1 in tutto? "
                                                        "(sì/no) "));
  for (const char* risposta : {"no\n", "", "s\n", "yes\n"}) {
    EXPECT_THAT(Lancia(ConBaseDati({"--riallinea", nota}), risposta),
                AllOf(StartsWith("3\n"), domanda, EndsWith("Non è cambiato nulla: la nota resta.\n")));
  }
  EXPECT_EQ(demo.Stato(), foto);
  EXPECT_THAT(Lancia(ConBaseDati({"--riallinea", nota}), "sì\n"), AllOf(StartsWith("0\n"), domanda, EndsWith(Fatta)));
  EXPECT_EQ(Sospese(), (Righe{"S", "S"}));
  EXPECT_THAT(Contenuto(demo.Locale()), IsEmpty());
  EXPECT_FALSE(fs::exists(demo.Registro())) << "the host is not asked";
  EXPECT_EQ(Lancia(ConBaseDati({"--riallinea", nota, "--si"})), "1\n" + nota +
                                                                    "\n  NON letta  Non c'è nessuna nota di "
                                                                    "nome «" +
                                                                    nota + "».\n");
}

TEST_F(LeftOpen, IsFinishedWithoutAQuestionWhereItIsAnsweredBeforehand) {
  const auto nota = Lascia(FaseNota::Avviata);
  auto argomenti = ConBaseDati({"--riallinea", nota});
  argomenti.emplace_back("--si");
  EXPECT_THAT(Lancia(argomenti), AllOf(StartsWith("0\n"), Not(HasSubstr("(sì/no)")), EndsWith(Fatta)));
  EXPECT_EQ(Sospese(), (Righe{"S", "S"}));
}

TEST_F(LeftOpen, IsFinishedWithOptionsOfTheStandardInputAndTheAnswerBehindThem) {
  const auto nota = Lascia(FaseNota::Avviata);
  const auto opzioni = "-DB2SOURCE " + demo.Sorgente() + " -DB2SCHEMA main\n";
  EXPECT_THAT(Lancia({"--riallinea", nota, "-"}, opzioni + "no\n"),
              AllOf(StartsWith("3\n"), HasSubstr("Non si sa se l'host ha eseguito la richiesta: rispondere sì solo se "
                                                 "risulta che l'ha eseguita.\n")));
  EXPECT_THAT(Lancia({"--riallinea", nota, "-"}, opzioni + "sì\n"), AllOf(StartsWith("0\n"), EndsWith(Fatta)));
  Lascia(FaseNota::Accettata);
  EXPECT_THAT(Lancia({"--riallinea", LeggiNote(demo.Locale()).at(0).nome, "-", "--si"}, opzioni), StartsWith("0\n"));
}

TEST_F(LeftOpen, IsPutAsideWithAReasonAndToldApart) {
  const auto nota = Lascia(FaseNota::Avviata);
  EXPECT_EQ(Lancia({"--archivia", nota, " "}), "1\nManca il motivo per cui la nota si archivia.\n");
  EXPECT_EQ(Lancia({"--archivia", nota, "l'host", "non l'ha eseguita"}), "0\nLa nota è stata archiviata.\n");
  EXPECT_THAT(Lancia({"--in-sospeso"}),
              AllOf(StartsWith("0\nNon c'è nulla in sospeso.\nArchiviate:\n" + nota + "  archiviata il "),
                    EndsWith(": l'host non l'ha eseguita\n")));
  EXPECT_THAT(Lancia(ConBaseDati({"--riallinea", nota})), StartsWith("1\n" + nota + "  archiviata il "));
  EXPECT_EQ(Sospese(), (Righe{"N", "N"}));
}

TEST_F(LeftOpen, WhatCannotBeReadIsListedWithItsReason) {
  const auto guasta = Lascia(FaseNota::Accettata);
  const auto file = demo.Locale() / (guasta + ".nota");
  const auto testo = FileText(file);
  Scrivi(file, testo.substr(0, testo.size() / 2));
  EXPECT_THAT(Lancia(ConBaseDati({"--in-sospeso"})),
              AllOf(StartsWith("1\n" + guasta + "\n  NON letta  La nota non è leggibile: "),
                    EndsWith("  da fare    guardare il file, e poi: lumoscad --archivia " + guasta + " MOTIVO\n")));
  EXPECT_THAT(Lancia(ConBaseDati({"--riallinea", guasta})), StartsWith("1\n"));
  auto futura = testo;
  futura.replace(futura.find(" 1"), 2, " 2");
  Scrivi(file, futura);
  EXPECT_THAT(Lancia({"--in-sospeso"}), HasSubstr("  NON letta  La nota è della versione 2, scritta da un LumoScad più "
                                                  "recente di questo"));
  EXPECT_EQ(Sospese(), (Righe{"N", "N"}));
  EXPECT_THAT(Lancia({"--archivia", guasta, "guasta"}), StartsWith("0\n"));
  EXPECT_THAT(Lancia({"--in-sospeso"}), AllOf(StartsWith("0\nNon c'è nulla in sospeso.\n"), EndsWith(": guasta\n")));
}

TEST_F(LeftOpen, NamesThatAreNoNotesLeadNowhere) {
  const auto nota = Lascia(FaseNota::Accettata);
  fs::create_directory(demo.Locale() / "sospeso-sotto");
  fs::rename(demo.Locale() / (nota + ".nota"), demo.Locale() / "sospeso-sotto" / (nota + ".nota"));
  for (const std::string& nome : std::vector<std::string>{"", ".", "../locale/" + nota, "sospeso-sotto/" + nota,
                                                          "/etc/passwd", nota + ".nota", "sospeso-*", "--si"}) {
    EXPECT_THAT(Lancia(ConBaseDati({"--riallinea", nome})), AllOf(StartsWith("1\n"), HasSubstr("Non c'è nessuna nota")))
        << nome;
    EXPECT_THAT(Lancia({"--archivia", nome, "motivo"}), StartsWith("1\nNon c'è nessuna nota di nome «" + nome)) << nome;
  }
  EXPECT_THAT(Contenuto(demo.Locale() / "sospeso-sotto"), testing::ElementsAre(nota + ".nota"));
}

/// Another terminal's transaction, which keeps the database from being written.
class OccupiedDatabase {
 public:
  explicit OccupiedDatabase(const Dimostrazione& demo) {
    connection_.ConnectionString = demo.Connessione();
    connection_.Open();
    connection_.BeginTrans();
    connection_.Execute("UPDATE ERRORE SET FILEXML=FILEXML WHERE ERROREKEY=100");
  }
  OccupiedDatabase(const OccupiedDatabase&) = delete;
  OccupiedDatabase& operator=(const OccupiedDatabase&) = delete;
  ~OccupiedDatabase() { connection_.RollbackTrans(); }

 private:
  ado::Connection connection_;
};

TEST_F(LeftOpen, StaysWhereWhoFinishesItIsKilled) {
  const auto nota = Lascia(FaseNota::Accettata);
  const auto foto = demo.Stato();
  {
    const OccupiedDatabase occupata(demo);
    Scrivi(demo.Base() / "opzioni", "-DB2SOURCE " + demo.Sorgente() + " -DB2SCHEMA main\n");
    Figlio chi({"sh", "-c", "echo $$ > \"$1\"; exec \"$2\" --riallinea \"$3\" - --si", "sh",
                (demo.Base() / "numero").string(), ProgramPath("lumoscad").string(), nota},
               demo.Ambiente(), demo.Base() / "opzioni", demo.Base() / "uscita", demo.Base() / "errori");
    ASSERT_TRUE(Finche([&] { return LeggiNota(demo.Locale(), nota).inCorso; }));
    EXPECT_THAT(Lancia({"--in-sospeso"}), HasSubstr("attendere: il comando è ancora in corso, o qualcuno sta "
                                                    "riallineando la nota"));
    EXPECT_THAT(Lancia({"--archivia", nota, "in due"}), StartsWith("1\n"));
    ASSERT_EQ(::kill(std::stoi(FileText(demo.Base() / "numero")), SIGKILL), 0);
    EXPECT_EQ(chi.Attendi(), 128 + SIGKILL);
  }
  EXPECT_EQ(demo.Stato(), foto);
  EXPECT_THAT(Lancia(ConBaseDati({"--in-sospeso"})), AllOf(StartsWith("0\n" + nota), HasSubstr(Riga)));
  EXPECT_THAT(Lancia(ConBaseDati({"--riallinea", nota}), "sì\n"), EndsWith(Fatta));
}

TEST_F(LeftOpen, IsFinishedOnceWhereManyTryAtTheSameTime) {
  constexpr int Quanti = 4;
  const auto nota = Lascia(FaseNota::Accettata);
  Scrivi(demo.Base() / "opzioni", "-DB2SOURCE " + demo.Sorgente() + " -DB2SCHEMA main\n");
  std::vector<std::unique_ptr<Figlio>> tutti;
  tutti.reserve(Quanti);
  for (int numero = 0; numero < Quanti; ++numero) {
    tutti.push_back(std::make_unique<Figlio>(
        std::vector<std::string>{ProgramPath("lumoscad").string(), "--riallinea", nota, "-", "--si"}, demo.Ambiente(),
        demo.Base() / "opzioni", demo.Base() / ("uscita" + std::to_string(numero)), demo.Base() / "errori"));
  }
  int riusciti = 0;
  for (int numero = 0; numero < Quanti; ++numero) {
    const bool riuscito = tutti[static_cast<std::size_t>(numero)]->Attendi() == 0;
    riusciti += riuscito ? 1 : 0;
    EXPECT_THAT(FileText(demo.Base() / ("uscita" + std::to_string(numero))),
                riuscito ? testing::Matcher<std::string>(EndsWith(Fatta))
                         : testing::AnyOf(HasSubstr("Non c'è nessuna nota di nome «" + nota + "»."),
                                          HasSubstr("o qualcuno sta riallineando la nota"),
                                          HasSubstr("o qualcuno ci sta già lavorando."),
                                          HasSubstr("Nel frattempo è cambiata")));
  }
  EXPECT_EQ(riusciti, 1);
  EXPECT_EQ(Sospese(), (Righe{"S", "S"}));
  EXPECT_THAT(Contenuto(demo.Locale()), IsEmpty());
}

/// The command itself, killed: whichever way the host is reached.
class KilledCommand : public testing::TestWithParam<Trasporto> {};

TEST_P(KilledCommand, IsFinishedSoThatDatabaseAndHostAgree) {
  const Dimostrazione demo(GetParam());
  RunScript(demo.Connessione(), FileText(SourcePath("demo/comandi.sql")));
  const auto foto = demo.Stato();
  const auto attesa =
      demo.StatoDopo("UPDATE EVENTOCONTABILE SET SOSPESA='S' WHERE EVENTOCONTABILEKEY IN (900001,900002)");
  const std::string opzioni = " -DB2SOURCE " + demo.Sorgente() + " -DB2SCHEMA main\n";
  auto ambiente = demo.Ambiente();
  ambiente.emplace_back("QT_QPA_PLATFORM=offscreen");
  const auto lancia = [&](const std::vector<std::string>& argomenti, const std::string& ingresso) {
    Scrivi(demo.Base() / "digitato", ingresso);
    std::vector<std::string> tutti{ProgramPath("lumoscad").string()};
    tutti.insert(tutti.end(), argomenti.begin(), argomenti.end());
    Figlio programma(tutti, ambiente, demo.Base() / "digitato", demo.Base() / "risultato", demo.Base() / "errori");
    const auto stato = programma.Attendi();
    return (stato ? std::to_string(*stato) : "fermo") + "\n" + FileText(demo.Base() / "risultato");
  };
  std::string nota;
  {
    const OccupiedDatabase occupata(demo);
    Scrivi(demo.Base() / "comando",
           "-T SOSPESO /A -C 20100001 -P AB   123 -H " + demo.Indirizzo() + " -D 01" + opzioni);
    Figlio comando({ProgramPath("lumoscad").string(), "-"}, ambiente, demo.Base() / "comando", demo.Base() / "uscita",
                   demo.Base() / "errori");
    const auto accettata = [&] {
      const auto note = LeggiNote(demo.Locale());
      return note.size() == 1 && note[0].fase == FaseNota::Accettata && note[0].inCorso;
    };
    ASSERT_TRUE(Finche(accettata)) << FileText(demo.Base() / "errori");
    const auto note = LeggiNote(demo.Locale());
    nota = note.at(0).nome;
    EXPECT_THAT(lancia({"--in-sospeso"}, ""), AllOf(StartsWith("0\n" + nota), HasSubstr("attendere: ")));
    ASSERT_EQ(::kill(static_cast<pid_t>(note.at(0).processo), SIGKILL), 0);
    EXPECT_EQ(comando.Attendi(), 128 + SIGKILL);
  }
  EXPECT_EQ(demo.Stato(), foto);
  EXPECT_THAT(FileText(demo.Registro()), StartsWith("ACCETTATA\t")) << "the host is ahead";
  const auto registro = FileText(demo.Registro());

  EXPECT_THAT(lancia({"--in-sospeso", "-"}, opzioni),
              AllOf(StartsWith("0\n" + nota + "\n  comando    SOSPESO /A, postazione "),
                    HasSubstr("  host       ha accettato la richiesta: Sospesa la partita AB123 del conto 20100001\n"
                              "  base dati  il comando non vi ha registrato nulla\n"
                              "    come prima         partita AB   123 del conto 20100001\n")));
  EXPECT_THAT(lancia({"--riallinea", nota, "-", "--si"}, opzioni),
              AllOf(StartsWith("0\n"), HasSubstr("    fatta              partita AB   123 del conto 20100001\n")));
  EXPECT_THAT(Differenze(attesa, demo.Stato()), IsEmpty());
  EXPECT_EQ(FileText(demo.Registro()), registro) << "the host was not asked again";
  EXPECT_EQ(lancia({"--in-sospeso"}, ""), "0\nNon c'è nulla in sospeso.\n");
  EXPECT_THAT(lancia({"--riallinea", nota, "-", "--si"}, opzioni),
              AllOf(StartsWith("1\n"), HasSubstr("Non c'è nessuna nota di nome «" + nota + "».")));
  EXPECT_THAT(Differenze(attesa, demo.Stato()), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Transports, KilledCommand, testing::Values(Trasporto::Cartella, Trasporto::Ssh),
                         [](const auto& caso) { return NomeTrasporto(caso.param); });

} // namespace
} // namespace lumoscad::test
