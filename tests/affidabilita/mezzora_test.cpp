// Half an hour of whatever may happen: eight terminals on a database of several servers and one host, some of them over
// SSH, while terminals are killed, connections are cut and servers are lost. Then the notes are worked off, and host,
// database and log must agree.
//
//   LUMOSCAD_PER_INTERO=1    half an hour, from a new seed; otherwise a few seconds of the kept ones
//   LUMOSCAD_PROVA_MINUTI=N  N minutes in the place of half an hour
//   LUMOSCAD_PROVA_SEME=N    this seed, for half an hour or a few seconds
//   LUMOSCAD_PROVA_GRUPPO=X  "postgres" or "galera"; otherwise the seed decides, even or odd

#include "Campi.hpp"
#include "Lavoro.hpp"
#include "Modello.hpp"
#include "Tempesta.hpp"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace lumoscad::test {
namespace {

using std::chrono::milliseconds;
using testing::IsEmpty;

const Misura Dimensioni{6, 3, 60, 24, 80};

/// What the gate plays: a seed that has found something stays.
constexpr unsigned Conservati[] = {20260802};

std::string Variabile(const char* nome) {
  const char* const valore = std::getenv(nome);
  return valore == nullptr ? "" : valore;
}

std::optional<unsigned> Seme() {
  const std::string seme = Variabile("LUMOSCAD_PROVA_SEME");
  return seme.empty() ? std::nullopt : std::optional(static_cast<unsigned>(std::stoul(seme)));
}

Previsione PerIntero() {
  const std::string minuti = Variabile("LUMOSCAD_PROVA_MINUTI");
  Previsione previsione;
  previsione.durata = std::chrono::seconds(static_cast<long>((minuti.empty() ? 30.0 : std::stod(minuti)) * 60));
  previsione.pausa = milliseconds(2000);
  previsione.vita = std::chrono::seconds(40);
  previsione.calma = milliseconds(6000);
  previsione.fraPerdite = std::min<milliseconds>(std::chrono::minutes(2), previsione.durata / 2);
  previsione.seme = Seme().value_or(static_cast<unsigned>(Adesso() / 1'000'000'000));
  return previsione;
}

Previsione InBreve(unsigned seme) {
  Previsione previsione;
  previsione.seme = seme;
  previsione.durata = milliseconds(4000);
  previsione.proroga = milliseconds(60000);
  previsione.pausa = milliseconds(500);
  previsione.vita = milliseconds(3000);
  previsione.calma = milliseconds(800);
  previsione.fraPerdite = milliseconds(4000);
  return previsione;
}

/// The commands, the host's log and the database's, side by side.
class Conti {
 public:
  Conti(Sistema& sistema, Gruppo& gruppo, Tempesta& tempesta, Stato iniziale)
      : sistema_(sistema), gruppo_(gruppo), tempesta_(tempesta), iniziale_(std::move(iniziale)) {
    for (int quale = 1; quale <= Tempesta::Terminali; ++quale) {
      LeggiComandi(sistema_, Postazione(quale), comandi);
    }
  }

  /// Works off the notes and compares.
  void Chiudi() {
    const auto prima = Conferme();
    const auto accettati = AccettatiSenzaSaperlo(prima);
    for (int quale = 1; quale <= Tempesta::Terminali; ++quale) {
      tempesta_.sgombero.Tutto(Postazione(quale), accettati);
    }
    const auto conferme = Conferme();
    const auto spiegati = DaSpiegare(conferme);
    riscontro = Confronta(Modello(Dimensioni, iniziale_), iniziale_, LeggiStato(sistema_), conferme, spiegati,
                          tempesta_.cadute);
  }

  /// All that the logs say of the commands that the errors name.
  void Racconta() const {
    std::vector<Eseguito> tutti = comandi;
    tutti.insert(tutti.end(), tempesta_.sgombero.riallinei.begin(), tempesta_.sgombero.riallinei.end());
    for (const Eseguito& comando : tutti) {
      const auto suo = [&](const std::string& errore) { return errore.starts_with(comando.nome + " "); };
      if (std::none_of(riscontro.errori.begin(), riscontro.errori.end(), suo) &&
          std::none_of(errori.begin(), errori.end(), suo)) {
        continue;
      }
      Testi campi{comando.nome,
                  comando.morto ? "morto" : comando.risultato,
                  std::to_string(comando.inizio),
                  std::to_string(comando.risposto),
                  std::to_string(comando.fine),
                  comando.accettata ? "accettata" : "non accettata",
                  tempesta_.sgombero.chiusi.contains(comando.nome) ? "con nota" : "senza nota",
                  comando.contenuto};
      campi.insert(campi.end(), comando.richiesta.begin(), comando.richiesta.end());
      campi.insert(campi.end(), comando.box.begin(), comando.box.end());
      std::printf("%s\n", Unisci(campi).c_str());
    }
  }

  std::vector<Eseguito> comandi;
  Riscontro riscontro;
  std::vector<std::string> errori;
  std::size_t riscritti = 0;        ///< realignments of a change that was there, and undone since; nobody could know
  std::size_t accettatiDaMorti = 0; ///< commands that the host accepted, and their terminal never heard of it

 private:
  [[nodiscard]] std::vector<Conferma> Conferme() {
    auto conferme = LeggiConferme(sistema_);
    if (gruppo_.PerUtente()) {
      DaiNomi(conferme, comandi);
      DaiNomi(conferme, tempesta_.sgombero.riallinei);
    }
    return conferme;
  }

  static std::string Richiesta(const Eseguito& comando) {
    Testi campi = comando.richiesta;
    campi.push_back(comando.contenuto);
    return Unisci(campi);
  }

  /// Whether a terminal may not have heard the host's answer: it was dead, or says so.
  static bool PuoNonSapere(const Eseguito& comando) {
    return !comando.richiesta.empty() && !comando.accettata &&
           (comando.morto || Dice(comando, "L'esito sull'host non è noto"));
  }

  static bool Dice(const Eseguito& comando, std::string_view testo) {
    return std::any_of(comando.box.begin(), comando.box.end(),
                       [&](const std::string& box) { return box.find(testo) != std::string::npos; });
  }

  /// The commands of which only the host's log tells that it has accepted them. Every request of that log is some
  /// command's.
  std::set<std::string> AccettatiSenzaSaperlo(const std::vector<Conferma>& conferme) {
    std::map<std::string, long> resto;
    for (const std::string& richiesta : AccettateDallHost(sistema_)) {
      ++resto[richiesta];
    }
    for (const std::string& richiesta : AccettatePerITerminali(comandi)) {
      if (--resto[richiesta] < 0) {
        errori.push_back("a terminal saw accepted what the host does not know: " + richiesta);
      }
    }
    std::set<std::string> noti = tempesta_.sgombero.certi;
    for (const Conferma& conferma : conferme) {
      noti.insert(conferma.comando);
    }
    std::set<std::string> accettati;
    // Of two commands with the same request the one goes first of which there is another sign.
    for (const bool conSegno : {true, false}) {
      for (const Eseguito& comando : comandi) {
        if (PuoNonSapere(comando) && (noti.contains(comando.nome) || !conSegno) && !accettati.contains(comando.nome) &&
            resto[Richiesta(comando)] > 0) {
          --resto[Richiesta(comando)];
          accettati.insert(comando.nome);
        }
      }
    }
    for (const auto& [richiesta, quante] : resto) {
      if (quante > 0) {
        errori.push_back("the host has accepted what no terminal asked: " + richiesta);
      }
    }
    accettatiDaMorti = accettati.size();
    nonSapevano_ = accettati;
    return accettati;
  }

  static bool SiToccano(const std::set<std::string>& chiavi, const std::set<std::string>& altre) {
    return std::any_of(chiavi.begin(), chiavi.end(), [&](const auto& chiave) { return altre.contains(chiave); });
  }

  /// What the database's log must explain: the commands that worked to their end, the dead ones whose change is there,
  /// and for the others what was done in their place.
  std::vector<Eseguito> DaSpiegare(const std::vector<Conferma>& conferme) {
    std::map<std::string, std::set<std::string>> confermati;
    for (const Conferma& conferma : conferme) {
      for (const Cambio& cambio : conferma.cambi) {
        confermati[conferma.comando].insert(cambio.chiave);
      }
    }
    std::vector<Eseguito> spiegati;
    for (const Eseguito& comando : comandi) {
      const bool conferma = confermati.contains(comando.nome);
      const bool chiuso = tempesta_.sgombero.chiusi.contains(comando.nome);
      const bool nonSapeva = nonSapevano_.contains(comando.nome);
      Eseguito copia = comando;
      copia.accettata = comando.accettata || nonSapeva;
      if (!comando.morto && nonSapeva) {
        if (conferma || !chiuso) {
          errori.push_back(comando.nome + (conferma ? " changed the database without the host's answer"
                                                    : " did not hear the host's answer, and no note tells it"));
        }
        continue;
      }
      if (!comando.morto && comando.accettata && comando.risultato == "error" && !chiuso) {
        errori.push_back(comando.nome + " failed after the host had accepted, and no note tells it");
      }
      // A dead one without a change and without a note must have had nothing left to change.
      if (!comando.morto || conferma || (copia.accettata && !chiuso)) {
        spiegati.push_back(copia);
      }
    }
    for (const Eseguito& riallineo : tempesta_.sgombero.riallinei) {
      const bool conferma = confermati.contains(riallineo.nome);
      if (conferma && Dice(riallineo, "La base dati non ha registrato nulla")) {
        errori.push_back(riallineo.nome + " denies what the database holds");
      }
      // A row that the command itself has written is not to be written again, also where others have undone it since:
      // for as long as the server can tell it. Where it cannot, the rows alone speak, and the person was told so.
      const std::string& comando = tempesta_.sgombero.diChi.at(riallineo.nome);
      const bool gia = confermati.contains(comando);
      const bool diNuovo = conferma && gia && SiToccano(confermati.at(comando), confermati.at(riallineo.nome));
      const bool soloRighe = gruppo_.PerUtente() || Dice(riallineo, "Questo server non sa nulla della transazione");
      if (diNuovo && !soloRighe) {
        errori.push_back(riallineo.nome + " wrote what the command had written");
      }
      riscritti += diNuovo && soloRighe ? 1U : 0U;
      if (conferma || (riallineo.risultato.empty() && !gia)) {
        spiegati.push_back(riallineo);
        spiegati.back().risultato.clear();
      }
    }
    return spiegati;
  }

  Sistema& sistema_;
  Gruppo& gruppo_;
  Tempesta& tempesta_;
  Stato iniziale_;
  std::set<std::string> nonSapevano_;
};

void Stampa(const Gruppo& gruppo, const Previsione& previsione, const Tempesta& tempesta, const Conti& conti) {
  const std::string inizio = std::string("mezzora: ") + gruppo.Genere();
  const Tempesta::Conto& conto = tempesta.conto;
  std::printf(
      "%s: seme %u, %.1f minuti, %zu terminali uccisi (%zu in un comando), %zu tagli verso la base dati, %zu verso "
      "l'host, %zu server perduti\n",
      inizio.c_str(), previsione.seme, static_cast<double>(previsione.durata.count()) / 60000, conto.morti,
      conto.nelComando, conto.tagliBase, conto.tagliHost, conto.perdite);
  StampaComandi(inizio, conti.comandi);
  StampaRiscontro(inizio, conti.riscontro, conti.comandi);
  std::printf(
      "%s: accettati dall'host senza che il terminale lo sapesse %zu; note chiuse dal riallineamento %zu, rimandate "
      "%zu volte; modifiche registrate, poi riportate indietro da altri e registrate di nuovo %zu\n",
      inizio.c_str(), conti.accettatiDaMorti, tempesta.sgombero.riallineate, tempesta.sgombero.rimandate,
      conti.riscritti);
  for (const auto& [motivo, quante] : tempesta.sgombero.archiviate) {
    std::printf("%s: note archiviate da una persona, %s: %zu\n", inizio.c_str(), motivo.c_str(), quante);
  }
}

/// What the dead have left on the host: the administrator removes it.
void VerificaHost(const Sistema& sistema) {
  for (const std::string& nome : Contenuto(sistema.Tmp())) {
    EXPECT_THAT(
        nome, testing::AnyOf(testing::StartsWith("VB"), testing::StartsWith("T0"), testing::StartsWith(".lumoscad-")));
  }
}

void Infuria(Gruppo& gruppo, const Previsione& previsione) {
  SCOPED_TRACE(std::string(gruppo.Genere()) + ", seed " + std::to_string(previsione.seme));
  Sistema sistema(gruppo.Genere(), gruppo.Apri(Dimensioni, Tempesta::Utenti()));
  gruppo.Ricollega(sistema);
  const Stato iniziale = LeggiStato(sistema);
  ASSERT_THAT(iniziale, testing::SizeIs(testing::Gt(100U)));
  Tempesta tempesta(sistema, gruppo, Dimensioni, previsione);
  std::printf("mezzora: %s: seme %u\n", gruppo.Genere(), previsione.seme);
  std::fflush(stdout);
  tempesta.Infuria();
  gruppo.Ricollega(sistema);
  EXPECT_TRUE(sistema.SenzaSessioni()) << "a session, and with it a transaction, is left";
  Conti conti(sistema, gruppo, tempesta, iniziale);
  conti.Chiudi();
  EXPECT_TRUE(sistema.SenzaSessioni()) << "a session of a realignment is left";
  EXPECT_THAT(tempesta.errori, IsEmpty());
  EXPECT_THAT(tempesta.sgombero.errori, IsEmpty());
  EXPECT_THAT(conti.errori, IsEmpty());
  EXPECT_THAT(conti.riscontro.errori, IsEmpty());
  EXPECT_GT(conti.riscontro.inOrdine, 0U) << "hardly anything was tried";
  EXPECT_GT(tempesta.conto.morti, 0U);
  EXPECT_GT(tempesta.conto.tagliBase + tempesta.conto.tagliHost, 0U);
  EXPECT_GT(tempesta.conto.perdite, 0U);
  VerificaHost(sistema);
  Stampa(gruppo, previsione, tempesta, conti);
  conti.Racconta();
}

bool ConGalera(const Previsione& previsione) {
  const std::string gruppo = Variabile("LUMOSCAD_PROVA_GRUPPO");
  return gruppo.empty() ? previsione.seme % 2 == 1 : gruppo == "galera";
}

void Infuria(const Previsione& previsione) {
  const bool galera = ConGalera(previsione);
  ASSERT_TRUE(galera ? GaleraCluster::Available() : PostgresPair::Available()) << "PostgreSQL or galera-4 is missing";
  std::unique_ptr<Gruppo> gruppo;
  if (galera) {
    gruppo = std::make_unique<TreNodi>(true);
  } else {
    gruppo = std::make_unique<Coppia>(true);
  }
  Infuria(*gruppo, previsione);
}

TEST(Storm, LeavesHostDatabaseAndLogEqualOnceTheNotesAreWorkedOff) {
  if (!Variabile("LUMOSCAD_PER_INTERO").empty()) {
    Infuria(PerIntero());
    return;
  }
  if (const auto seme = Seme()) {
    Infuria(InBreve(*seme));
    return;
  }
  for (const unsigned seme : Conservati) {
    Infuria(InBreve(seme));
  }
}

} // namespace
} // namespace lumoscad::test
