#include "entry/Blocchi.hpp"
#include "handlers/Blocco.hpp"
#include "platform/RuntimeError.hpp"
#include "support/TestBench.hpp"

#include <algorithm>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <stdexcept>
#include <vector>

using namespace lumoscad;
using testing::AllOf;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

namespace {

class Locks : public testing::Test {
 protected:
  static constexpr const char* Di = "Utente : T02\r\nData : 04/03/2006   Ora : 09:00\r\n";

  /// The lines of a test, as they are shown.
  std::vector<std::string> Prova() {
    std::vector<std::string> righe;
    const bool riuscita = ProvaBlocco("10.0.0.1", [&](const PassoProva& passo) {
      righe.push_back(passo.operazione + (passo.riuscito ? " riuscito: " : " NON riuscito: ") + passo.dettaglio);
    });
    const auto falliti = std::count_if(righe.begin(), righe.end(), [](const std::string& riga) {
      return riga.find("NON riuscito") != std::string::npos;
    });
    EXPECT_EQ(riuscita, falliti == 0);
    EXPECT_THAT(righe, SizeIs(4)) << "a line a step, whatever fails";
    return righe;
  }
  /// The operation that begins so fails from its `volta`th time on.
  void Guasta(const std::string& inizio, int volta = 1) {
    banco_.host.fault = [inizio, volta](const std::string& operazione) mutable {
      if (operazione.starts_with(inizio) && --volta < 1) {
        throw RuntimeError(errors::Driver, "guasto");
      }
    };
  }
  [[nodiscard]] bool NienteInLocale() const { return std::filesystem::is_empty(banco_.environment.CartellaLocale); }
  [[nodiscard]] std::vector<std::string> Nomi() const {
    std::vector<std::string> nomi;
    for (const auto& [nome, contenuto] : banco_.host.file) {
      nomi.push_back(nome);
    }
    return nomi;
  }

  test::TestBench banco_;
};

TEST_F(Locks, AreToldWithWhoHoldsThemAndSinceWhen) {
  banco_.host.file["/tmp/VBDEBITI"] = Di;
  const auto prima = banco_.host.file;
  const auto blocchi = GuardaBlocchi("10.0.0.1");
  ASSERT_THAT(blocchi, SizeIs(3));
  EXPECT_EQ(blocchi[0].lista, "CREDITI");
  EXPECT_FALSE(blocchi[0].preso);
  EXPECT_EQ(blocchi[1].lista, "DEBITI");
  EXPECT_TRUE(blocchi[1].preso);
  EXPECT_EQ(blocchi[1].chi, "Utente : T02");
  EXPECT_EQ(blocchi[1].quando, "Data : 04/03/2006   Ora : 09:00");
  EXPECT_EQ(blocchi[2].lista, "PRESUNTI");
  EXPECT_FALSE(blocchi[2].preso);
  EXPECT_EQ(banco_.host.file, prima);
  EXPECT_THAT(banco_.host.operazioni, Each(testing::AnyOf(StartsWith("Guarda "), StartsWith("Ricevi "))));
  EXPECT_THAT(banco_.host.host, Each("10.0.0.1"));
  EXPECT_TRUE(NienteInLocale());
}

TEST_F(Locks, AreThoseThatTheCommandsTake) {
  for (const char* lista : {"CREDITI", "DEBITI", "PRESUNTI"}) {
    EXPECT_EQ(BloccaArea("h", lista), "");
    EXPECT_TRUE(GuardaBlocco("h", lista).preso) << lista;
    EXPECT_EQ(GuardaBlocco("h", lista).chi, "Utente : T01");
  }
}

TEST_F(Locks, WithoutALineThatSaysSomethingHoldNothing) {
  banco_.host.file["/tmp/VBCREDITI"] = "";
  banco_.host.file["/tmp/VBDEBITI"] = "  \r\nData : oggi\r\n";
  EXPECT_FALSE(GuardaBlocco("h", "CREDITI").preso);
  EXPECT_FALSE(GuardaBlocco("h", "DEBITI").preso);
}

TEST_F(Locks, OfSomebodyElsesMakingGiveTheTerminalNoOrders) {
  banco_.host.file["/tmp/VBCREDITI"] = "Utente : \x1b]0;x\x07\xc2\x9b" + std::string(500, 'A') + "\r\n\x1b[2J\r\n";
  const auto blocco = GuardaBlocco("h", "CREDITI");
  EXPECT_THAT(blocco.chi, AllOf(SizeIs(200), StartsWith("Utente :  ]0;x  AAA")));
  EXPECT_EQ(blocco.quando, " [2J");
}

TEST_F(Locks, ThatCannotBeReadAreNeitherFreeNorTaken) {
  Guasta("Ricevi /tmp/VBDEBITI");
  banco_.host.file["/tmp/VBDEBITI"] = Di;
  const auto blocchi = GuardaBlocchi("h");
  EXPECT_EQ(blocchi[1].errore, "guasto");
  EXPECT_FALSE(blocchi[1].preso);
  EXPECT_EQ(blocchi[2].errore, "");
}

TEST_F(Locks, OfAHostThatIsAwayAreAskedForTwiceAtMost) {
  Guasta("");
  const auto blocchi = GuardaBlocchi("h");
  ASSERT_THAT(blocchi, SizeIs(3));
  EXPECT_EQ(blocchi[1].errore, "guasto");
  EXPECT_EQ(blocchi[2].errore, "non letto, dopo gli errori di sopra");
  EXPECT_THAT(banco_.host.operazioni, SizeIs(2));
}

TEST_F(Locks, AreNotTakenForFreeWithoutALocalDirectory) {
  banco_.environment.CartellaLocale += "/manca";
  EXPECT_THAT(GuardaBlocco("h", "CREDITI").errore, HasSubstr("percorso inesistente"));
}

TEST_F(Locks, OfUnknownListsAreNotTouched) {
  for (const char* lista : {"", "credito", "../x", "PROVA", "PROVA10"}) {
    EXPECT_THAT(GuardaBlocco("h", lista).errore, StartsWith("Lista sconosciuta: «")) << lista;
    BloccoLista visto;
    visto.lista = lista;
    EXPECT_FALSE(TogliBloccoVisto("h", visto).tolto) << lista;
  }
  EXPECT_THAT(banco_.host.operazioni, IsEmpty());
}

TEST_F(Locks, AreRemovedOneByOne) {
  banco_.host.file["/tmp/VBCREDITI"] = Di;
  banco_.host.file["/tmp/VBDEBITI"] = Di;
  const auto esito = TogliBloccoVisto("h", GuardaBlocco("h", "CREDITI"));
  EXPECT_TRUE(esito.tolto);
  EXPECT_EQ(esito.dettaglio, "");
  EXPECT_THAT(Nomi(), ElementsAre("/tmp/VBDEBITI"));
}

TEST_F(Locks, ThatHaveChangedSinceTheyWereSeenStay) {
  banco_.host.file["/tmp/VBCREDITI"] = Di;
  auto visto = GuardaBlocco("h", "CREDITI");
  banco_.host.file["/tmp/VBCREDITI"] = "Utente : T03\r\nData : 05/03/2006   Ora : 14:06\r\n";
  const auto esito = TogliBloccoVisto("h", visto);
  EXPECT_FALSE(esito.tolto);
  EXPECT_EQ(esito.dettaglio, "Il blocco è cambiato nel frattempo e non è stato tolto. Ora: Utente : T03, Data : "
                             "05/03/2006   Ora : 14:06.");
  EXPECT_THAT(banco_.host.operazioni, Not(Contains("Cancella /tmp/VBCREDITI")));
  // The same words, written anew: the workstation took the list again within the minute.
  visto = GuardaBlocco("h", "CREDITI");
  banco_.host.states["/tmp/VBCREDITI"].writtenAt = 1141567600;
  EXPECT_FALSE(TogliBloccoVisto("h", visto).tolto);
  EXPECT_THAT(Nomi(), ElementsAre("/tmp/VBCREDITI"));
}

TEST_F(Locks, ThatAreGoneAlreadyAreSaidToBe) {
  banco_.host.file["/tmp/VBCREDITI"] = Di;
  const auto visto = GuardaBlocco("h", "CREDITI");
  banco_.host.file.clear();
  const auto esito = TogliBloccoVisto("h", visto);
  EXPECT_TRUE(esito.tolto);
  EXPECT_EQ(esito.dettaglio, "Il blocco non c'era già più.");
}

TEST_F(Locks, ThatTheHostDoesNotRemoveAreSaidToStay) {
  banco_.host.file["/tmp/VBCREDITI"] = Di;
  const auto visto = GuardaBlocco("h", "CREDITI");
  Guasta("Cancella");
  EXPECT_THROW(static_cast<void>(TogliBloccoVisto("h", visto)), RuntimeError);
  // A host that says yes and does nothing.
  banco_.host.fault = [&](const std::string& operazione) {
    if (operazione == "Ricevi /tmp/VBCREDITI" || operazione == "Guarda /tmp/VBCREDITI") {
      banco_.host.file["/tmp/VBCREDITI"] = Di;
    }
  };
  const auto esito = TogliBloccoVisto("h", visto);
  EXPECT_FALSE(esito.tolto);
  EXPECT_EQ(esito.dettaglio, "Il blocco /tmp/VBCREDITI è ancora sull'host.");
}

TEST_F(Locks, OfATestAreTakenReadAndFreed) {
  banco_.host.file["/tmp/VBCREDITI"] = Di;
  const auto righe = Prova();
  EXPECT_THAT(righe[0], AllOf(StartsWith("PrendiBlocco riuscito: il blocco «/tmp/VBPROVA"), EndsWith("» è sull'host")));
  EXPECT_EQ(righe[1],
            "LeggiBlocco riuscito: il blocco è tornato uguale: Utente : T01, Data : 05/03/2006   Ora : 14:07");
  EXPECT_EQ(righe[2], "PermessiBlocco riuscito: l'host non dice chi può leggere il blocco");
  EXPECT_EQ(righe[3], "LasciaBlocco riuscito: il blocco non c'è più");
  EXPECT_THAT(Nomi(), ElementsAre("/tmp/VBCREDITI"));
  EXPECT_THAT(banco_.host.operazioni, Each(Not(HasSubstr("VBCREDITI")))) << "no list is touched";
  EXPECT_TRUE(NienteInLocale());
}

TEST_F(Locks, OfATestTellWhoMayReadThem) {
  const std::map<unsigned, std::string> attesi = {
      {0666, "permessi 666: ogni utente dell'host può leggere il blocco; ogni utente può anche scriverlo"},
      {0644, "permessi 644: ogni utente dell'host può leggere il blocco"},
      {0640, "permessi 640: può leggere il blocco solo il gruppo di chi lo prende; chi accede all'host con un "
             "utente di un altro gruppo crede libera la lista"},
      {0600, "permessi 600: può leggere il blocco solo l'utente che lo prende; chi accede all'host con un altro utente "
             "crede libera la lista"}};
  for (const auto& [permessi, testo] : attesi) {
    for (char numero = '0'; numero <= '9'; ++numero) {
      banco_.host.states[std::string("/tmp/VBPROVA") + numero].permissions = permessi;
    }
    EXPECT_EQ(Prova()[2], "PermessiBlocco riuscito: " + testo);
  }
}

TEST_F(Locks, OfATestFailInALineOfTheirOwnAndLeaveNothing) {
  struct Caso {
    const char* operazione;
    int volta;
    std::size_t riga;
  };
  // Looked at three times: before it is taken, to read it, and for its permissions.
  for (const auto& [operazione, volta, riga] :
       {Caso{"Invia", 1, 0}, Caso{"Ricevi", 1, 1}, Caso{"Guarda", 3, 2}, Caso{"Guarda", 4, 3}}) {
    Guasta(operazione, volta);
    const auto righe = Prova();
    EXPECT_THAT(righe[riga], EndsWith(" NON riuscito: guasto")) << operazione << volta;
    banco_.host.fault = {};
    EXPECT_THAT(Nomi(), IsEmpty()) << operazione << volta;
    EXPECT_TRUE(NienteInLocale());
  }
}

TEST_F(Locks, OfATestThatCannotBeTakenAreNotReadEither) {
  Guasta("Guarda");
  const auto righe = Prova();
  EXPECT_EQ(righe[0], "PrendiBlocco NON riuscito: guasto");
  for (const std::size_t altra : {1U, 2U, 3U}) {
    EXPECT_THAT(righe[altra], EndsWith(" NON riuscito: non provato: nessun blocco è stato preso"));
  }
}

TEST_F(Locks, OfATestThatComeBackDifferentAreNoticed) {
  banco_.host.fault = [this](const std::string& operazione) {
    if (operazione.starts_with("Ricevi /tmp/VBPROVA")) {
      banco_.host.file[operazione.substr(7)] = "Utente : T0\r\nData\r\n";
    }
  };
  EXPECT_THAT(Prova()[1], AllOf(StartsWith("LeggiBlocco NON riuscito: Il blocco «/tmp/VBPROVA"),
                                EndsWith("» è tornato diverso da come è stato preso.")));
}

TEST_F(Locks, OfATestThatTheHostKeepsAreNoticed) {
  std::string tenuto;
  banco_.host.fault = [&](const std::string& operazione) {
    if (operazione.starts_with("Cancella ")) {
      tenuto = operazione.substr(9);
    } else if (!tenuto.empty()) {
      banco_.host.file[tenuto] = "Utente : T01\r\nData : 05/03/2006   Ora : 14:07\r\n";
    }
  };
  EXPECT_THAT(Prova()[3], AllOf(StartsWith("LasciaBlocco NON riuscito: Il blocco «/tmp/VBPROVA"),
                                EndsWith("» è ancora sull'host.")));
}

TEST_F(Locks, OfATestAreTakenWhereAnotherTestHoldsNone) {
  for (const char numero : std::string("012345678")) {
    banco_.host.file[std::string("/tmp/VBPROVA") + numero] = Di;
  }
  EXPECT_THAT(Prova()[0], HasSubstr("«/tmp/VBPROVA9»"));
  EXPECT_THAT(Nomi(), SizeIs(9));
  banco_.host.file["/tmp/VBPROVA9"] = Di;
  const auto prima = banco_.host.file;
  EXPECT_THAT(Prova()[0], StartsWith("PrendiBlocco NON riuscito: I blocchi di prova, da PROVA0 a PROVA9, sono tutti "
                                     "presi"));
  EXPECT_EQ(banco_.host.file, prima);
}

/// Before each operation, what a kill would leave on the host.
TEST_F(Locks, OfATestThatIsCutAreLeftWhereTheyAreTold) {
  std::vector<std::map<std::string, std::string>> resti;
  banco_.host.fault = [&](const std::string&) { resti.push_back(banco_.host.file); };
  Prova();
  banco_.host.fault = {};
  std::size_t lasciati = 0;
  for (const auto& resto : resti) {
    banco_.host.file = resto;
    const auto blocchi = GuardaBlocchi("h");
    EXPECT_EQ(blocchi.size(), 3 + resto.size());
    if (!resto.empty()) {
      ++lasciati;
      EXPECT_EQ(blocchi[3].chi, "Utente : T01");
      EXPECT_TRUE(TogliBloccoVisto("h", blocchi[3]).tolto);
      EXPECT_THAT(Nomi(), IsEmpty());
    }
  }
  EXPECT_GE(lasciati, 4U);
}

TEST_F(Locks, OfATestWhoseOutcomesCannotBeShownAreFreed) {
  for (const std::string muta : {"PrendiBlocco", "LeggiBlocco", "PermessiBlocco", "LasciaBlocco"}) {
    EXPECT_THROW(ProvaBlocco("h",
                             [&](const PassoProva& passo) {
                               if (passo.operazione == muta) {
                                 throw std::runtime_error("no screen");
                               }
                             }),
                 std::runtime_error);
    EXPECT_THAT(Nomi(), IsEmpty()) << muta;
    EXPECT_TRUE(NienteInLocale());
  }
}

} // namespace
