// Handles, results and errors of the interface for C.

#include "FacciaC.hpp"
#include "lumoscad/Host.hpp"
#include "lumoscad/LumoScadenze.hpp"

#include <functional>
#include <gmock/gmock.h>
#include <memory>
#include <stdexcept>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

namespace lumoscad::test {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

constexpr const char* NonUtf8 = "citt\xe0";

struct Chiudi {
  void operator()(lumoscad_maniglia* maniglia) const { lumoscad_chiudi(maniglia); }
};

class CHandle : public CFace {
 protected:
  CHandle() { UsaCartella(); }

  static std::unique_ptr<lumoscad_maniglia, Chiudi> Apri() {
    lumoscad_maniglia* aperta = nullptr;
    EXPECT_EQ(lumoscad_apri(&aperta), LUMOSCAD_RIUSCITO);
    return std::unique_ptr<lumoscad_maniglia, Chiudi>(aperta);
  }
  [[nodiscard]] std::string Campo(int campo) const { return lumoscad_campo(esito, campo, nullptr); }
  [[nodiscard]] std::string Errore() const { return lumoscad_errore_testo(maniglia.get()); }
  /// Frees what a call gave before the next one gives another.
  lumoscad_esito** Nuovo() {
    lumoscad_libera(std::exchange(esito, nullptr));
    return &esito;
  }
  void TearDown() override { lumoscad_libera(esito); }

  std::unique_ptr<lumoscad_maniglia, Chiudi> maniglia = Apri();
  lumoscad_esito* esito = nullptr;
};

int Chiama(void* utente, const char* operazione, int riuscito, const char* /*dettaglio*/) {
  return (*static_cast<std::function<int(const std::string&, bool)>*>(utente))(operazione, riuscito != 0);
}

TEST_F(CHandle, TellsItsVersionAsTextAndNumber) {
  unsigned maggiore = 0;
  unsigned minore = 0;
  unsigned terzo = 0;
  ASSERT_EQ(std::sscanf(lumoscad_versione(), "%u.%u.%u", &maggiore, &minore, &terzo), 3);
  EXPECT_EQ(lumoscad_versione_numero(), maggiore * 10000 + minore * 100 + terzo);
  EXPECT_GE(maggiore, 1U);
}

TEST_F(CHandle, RunsALineAndGivesAResultToBeFreed) {
  EXPECT_EQ(lumoscad_errore(maniglia.get()), LUMOSCAD_RIUSCITO);
  EXPECT_EQ(Errore(), "");
  EXPECT_EQ(lumoscad_esegui_riga(maniglia.get(), "-T FOO", Nuovo()), LUMOSCAD_RIUSCITO);
  ASSERT_NE(esito, nullptr);
  EXPECT_EQ(Campo(LUMOSCAD_CAMPO_TESTO), "");
  EXPECT_EQ(lumoscad_esegui_riga(maniglia.get(), "-T SOSPESO /A -DEMO", Nuovo()), LUMOSCAD_RIUSCITO);
  EXPECT_EQ(Campo(LUMOSCAD_CAMPO_MESSAGGIO), "La partita è stata sospesa");
  EXPECT_EQ(lumoscad_esegui_riga(maniglia.get(), "-T FOO", nullptr), LUMOSCAD_RIUSCITO);
}

TEST_F(CHandle, KeepsWhatThePersonWasToldOfAFailure) {
  EXPECT_EQ(lumoscad_esegui_riga(maniglia.get(), "-T", Nuovo()), LUMOSCAD_ERRORE);
  EXPECT_EQ(Campo(LUMOSCAD_CAMPO_TESTO), "error");
  EXPECT_EQ(lumoscad_errore(maniglia.get()), LUMOSCAD_ERRORE);
  EXPECT_THAT(Errore(), HasSubstr("manca il valore di -T"));
  EXPECT_EQ(Campo(LUMOSCAD_CAMPO_MESSAGGIO), Errore());
  const auto altra = Apri();
  EXPECT_EQ(lumoscad_errore(altra.get()), LUMOSCAD_RIUSCITO) << "it is the handle's own";
  lumoscad_esegui_riga(maniglia.get(), "-T FOO", nullptr);
  EXPECT_EQ(Errore(), "") << "the last call went well";
}

TEST_F(CHandle, ResultsOutliveTheHandle) {
  lumoscad_esegui_riga(maniglia.get(), "-T", Nuovo());
  maniglia.reset();
  EXPECT_EQ(Campo(LUMOSCAD_CAMPO_TESTO), "error");
}

TEST_F(CHandle, RefusesEveryNullThatIsNotAllowed) {
  auto* const m = maniglia.get();
  const std::vector<std::function<int()>> senza = {
      [&] { return lumoscad_esegui_riga(m, nullptr, &esito); },
      [&] { return lumoscad_chiave_host(m, nullptr, &esito); },
      [&] { return lumoscad_registra_chiave(m, nullptr, "file"); },
      [&] { return lumoscad_registra_chiave(m, "riga", nullptr); },
      [&] { return lumoscad_prova_host(m, nullptr, "", nullptr, nullptr); },
      [&] { return lumoscad_prova_base_dati(m, nullptr, nullptr, nullptr); },
      [&] { return lumoscad_blocchi(m, nullptr, &esito); },
      [&] { return lumoscad_blocco(m, "h", nullptr, &esito); },
      [&] { return lumoscad_libera_blocco(m, "h", "CREDITI", nullptr, &esito); },
      [&] { return lumoscad_nota(m, nullptr, nullptr, &esito); },
      [&] { return lumoscad_riallinea_nota(m, "n", nullptr, nullptr, &esito); },
      [&] { return lumoscad_archivia_nota(m, "n", nullptr, &esito); }};
  for (std::size_t quale = 0; quale < senza.size(); ++quale) {
    EXPECT_EQ(senza[quale](), LUMOSCAD_ARGOMENTO) << quale;
    EXPECT_EQ(lumoscad_errore(m), LUMOSCAD_ARGOMENTO) << quale;
    EXPECT_EQ(Errore(), "Il programma chiamante non ha dato un argomento che serve.") << quale;
    EXPECT_EQ(esito, nullptr) << quale;
  }
}

TEST_F(CHandle, WithoutAHandleNothingIsDone) {
  EXPECT_EQ(lumoscad_apri(nullptr), LUMOSCAD_ARGOMENTO);
  EXPECT_EQ(lumoscad_esegui_riga(nullptr, "-T FOO", &esito), LUMOSCAD_ARGOMENTO);
  EXPECT_EQ(lumoscad_note(nullptr, nullptr, &esito), LUMOSCAD_ARGOMENTO);
  EXPECT_EQ(lumoscad_finestra_madre(nullptr, 1), LUMOSCAD_ARGOMENTO);
  EXPECT_EQ(lumoscad_controlla_testi(nullptr, 1), LUMOSCAD_ARGOMENTO);
  EXPECT_EQ(lumoscad_errore(nullptr), LUMOSCAD_ARGOMENTO);
  EXPECT_STREQ(lumoscad_errore_testo(nullptr), "");
  EXPECT_STREQ(lumoscad_campo(nullptr, LUMOSCAD_CAMPO_TESTO, nullptr), "");
  EXPECT_EQ(lumoscad_campo_vero(nullptr, LUMOSCAD_CAMPO_PRESO), 0);
  EXPECT_EQ(lumoscad_voci(nullptr), 0U);
  EXPECT_EQ(lumoscad_voce(nullptr, 0), nullptr);
  lumoscad_chiudi(nullptr);
  lumoscad_libera(nullptr);
}

TEST_F(CHandle, AnUnknownFieldIsTheEmptyText) {
  lumoscad_esegui_riga(maniglia.get(), "-T", Nuovo());
  std::size_t lunghezza = 9;
  for (const int campo : {-1, 0, 1000, LUMOSCAD_CAMPO_DOMANDA}) {
    EXPECT_STREQ(lumoscad_campo(esito, campo, &lunghezza), "") << campo;
    EXPECT_EQ(lunghezza, 0U);
  }
  EXPECT_EQ(lumoscad_campo(esito, LUMOSCAD_CAMPO_TESTO, &lunghezza), Campo(LUMOSCAD_CAMPO_TESTO));
  EXPECT_EQ(lunghezza, 5U);
}

TEST_F(CHandle, TextsThatAreNotUtf8AreRefusedUnlessTheCallerWantsThem) {
  auto* const m = maniglia.get();
  EXPECT_EQ(lumoscad_esegui_riga(m, NonUtf8, Nuovo()), LUMOSCAD_NON_UTF8);
  EXPECT_EQ(esito, nullptr);
  EXPECT_EQ(Errore(), "Il programma chiamante ha dato un testo che non è UTF-8.");
  EXPECT_EQ(lumoscad_note(m, NonUtf8, Nuovo()), LUMOSCAD_NON_UTF8);
  EXPECT_EQ(lumoscad_prova_host(m, "h", NonUtf8, nullptr, nullptr), LUMOSCAD_NON_UTF8);
  EXPECT_EQ(lumoscad_controlla_testi(m, 0), LUMOSCAD_RIUSCITO);
  EXPECT_EQ(lumoscad_esegui_riga(m, NonUtf8, Nuovo()), LUMOSCAD_RIUSCITO);
  EXPECT_EQ(lumoscad_controlla_testi(m, 1), LUMOSCAD_RIUSCITO);
  EXPECT_EQ(lumoscad_esegui_riga(m, "-T FOO città", Nuovo()), LUMOSCAD_RIUSCITO);
}

TEST_F(CHandle, TellsALineThatIsRefusedFromOneThatFails) {
  lumoscad_esegui_riga(maniglia.get(), "-T FOO", nullptr); // from now on this thread has the windows
  testing::internal::CaptureStderr();
  std::thread([&] {
    const auto altra = Apri();
    EXPECT_EQ(lumoscad_esegui_riga(altra.get(), "-T FOO", Nuovo()), LUMOSCAD_RIFIUTATO);
    EXPECT_EQ(esito, nullptr);
    EXPECT_THAT(lumoscad_errore_testo(altra.get()), StartsWith("Comando rifiutato: va dato dal thread"));
  }).join();
  EXPECT_THAT(testing::internal::GetCapturedStderr(), HasSubstr("Comando rifiutato"));
}

TEST_F(CHandle, SharesTheOneTurnWithEveryOther) {
  const auto altra = Apri();
  int volte = 0;
  std::function<int(const std::string&, bool)> mostra = [&](const std::string&, bool) {
    ++volte;
    EXPECT_EQ(lumoscad_note(altra.get(), nullptr, Nuovo()), LUMOSCAD_RIFIUTATO);
    EXPECT_EQ(lumoscad_blocchi(altra.get(), "h", Nuovo()), LUMOSCAD_RIFIUTATO);
    EXPECT_EQ(esito, nullptr);
    std::vector<std::string> interne;
    std::function<int(const std::string&, bool)> interna = [&](const std::string& operazione, bool riuscito) {
      interne.push_back(operazione + (riuscito ? " sì" : " no"));
      return 0;
    };
    EXPECT_EQ(lumoscad_prova_host(altra.get(), "h", nullptr, Chiama, &interna), LUMOSCAD_RIFIUTATO);
    EXPECT_EQ(interne, std::vector<std::string>{"Impostazioni no"});
    return 1;
  };
  EXPECT_EQ(lumoscad_prova_host(maniglia.get(), "h", nullptr, Chiama, &mostra), LUMOSCAD_INTERROTTO);
  EXPECT_EQ(volte, 1);
  EXPECT_EQ(lumoscad_note(altra.get(), nullptr, Nuovo()), LUMOSCAD_RIUSCITO) << "the turn is free again";
}

TEST_F(CHandle, WhatTheCallersFunctionThrowsGoesNoFurtherAndLeavesNothingBehind) {
  int volte = 0;
  std::function<int(const std::string&, bool)> mostra = [&](const std::string&, bool) -> int {
    if (++volte == 3) {
      throw std::runtime_error("of the caller");
    }
    return 0;
  };
  EXPECT_EQ(lumoscad_prova_host(maniglia.get(), "h", nullptr, Chiama, &mostra), LUMOSCAD_INTERROTTO);
  EXPECT_EQ(volte, 3) << "it is not asked again";
  EXPECT_EQ(Errore(), "La prova è stata interrotta dal programma chiamante.");
  EXPECT_TRUE(std::filesystem::is_empty(Radice() / "tmp")) << "the test's file and lock are gone";
}

TEST_F(CHandle, ReadsAndFreesALock) {
  EXPECT_EQ(lumoscad_blocchi(maniglia.get(), "h", Nuovo()), LUMOSCAD_RIUSCITO);
  ASSERT_EQ(lumoscad_voci(esito), 3U);
  EXPECT_STREQ(lumoscad_campo(lumoscad_voce(esito, 0), LUMOSCAD_CAMPO_NOME, nullptr), "CREDITI");
  EXPECT_EQ(lumoscad_voce(esito, 3), nullptr);
  std::ofstream(Radice() / "tmp/VBCREDITI") << "Utente : T01\r\nData : 05/03/2026 14:07:09\r\n";
  EXPECT_EQ(lumoscad_blocco(maniglia.get(), "h", "CREDITI", Nuovo()), LUMOSCAD_RIUSCITO);
  EXPECT_EQ(lumoscad_campo_vero(esito, LUMOSCAD_CAMPO_PRESO), 1);
  EXPECT_EQ(Campo(LUMOSCAD_CAMPO_CHI), "Utente : T01");
  const std::string impronta = Campo(LUMOSCAD_CAMPO_IMPRONTA);
  EXPECT_EQ(lumoscad_libera_blocco(maniglia.get(), "h", "CREDITI", "altra", Nuovo()), LUMOSCAD_ERRORE);
  EXPECT_THAT(Errore(), StartsWith("Il blocco è cambiato nel frattempo"));
  EXPECT_EQ(lumoscad_libera_blocco(maniglia.get(), "h", "CREDITI", impronta.c_str(), Nuovo()), LUMOSCAD_RIUSCITO);
  EXPECT_FALSE(std::filesystem::exists(Radice() / "tmp/VBCREDITI"));
  EXPECT_EQ(lumoscad_blocco(maniglia.get(), "h", "ALTRO", Nuovo()), LUMOSCAD_ERRORE);
  EXPECT_EQ(Campo(LUMOSCAD_CAMPO_ERRORE), Errore());
}

TEST_F(CHandle, ReadsAndSettlesANote) {
  Lascia("sospeso-1", "rifiutata");
  EXPECT_EQ(lumoscad_note(maniglia.get(), nullptr, Nuovo()), LUMOSCAD_RIUSCITO);
  ASSERT_EQ(lumoscad_voci(esito), 1U);
  EXPECT_STREQ(lumoscad_campo(lumoscad_voce(esito, 0), LUMOSCAD_CAMPO_NOME, nullptr), "sospeso-1");
  EXPECT_THAT(Campo(LUMOSCAD_CAMPO_TESTO), StartsWith("sospeso-1\n"));
  EXPECT_EQ(lumoscad_nota(maniglia.get(), "sospeso-1", nullptr, Nuovo()), LUMOSCAD_RIUSCITO);
  EXPECT_EQ(Campo(LUMOSCAD_CAMPO_HOST), "ha rifiutato la richiesta: conto bloccato");
  const std::string impronta = Campo(LUMOSCAD_CAMPO_IMPRONTA);
  EXPECT_EQ(lumoscad_riallinea_nota(maniglia.get(), "sospeso-1", impronta.c_str(), nullptr, Nuovo()),
            LUMOSCAD_RIUSCITO);
  EXPECT_THAT(Campo(LUMOSCAD_CAMPO_TESTO), HasSubstr("la nota è stata tolta"));
  EXPECT_EQ(lumoscad_nota(maniglia.get(), "sospeso-1", nullptr, Nuovo()), LUMOSCAD_ERRORE);
  Lascia("sospeso-2", "accettata");
  EXPECT_EQ(lumoscad_archivia_nota(maniglia.get(), "sospeso-2", " ", Nuovo()), LUMOSCAD_ERRORE);
  EXPECT_EQ(Campo(LUMOSCAD_CAMPO_TESTO), Errore());
  EXPECT_EQ(lumoscad_archivia_nota(maniglia.get(), "sospeso-2", "vista", Nuovo()), LUMOSCAD_RIUSCITO);
  EXPECT_EQ(Campo(LUMOSCAD_CAMPO_TESTO), "La nota è stata archiviata.\n");
}

TEST_F(CHandle, LineWithAZeroByteIsRunWholeWhereItsLengthIsGiven) {
  using namespace std::string_view_literals;
  EXPECT_EQ(LumoScadenze().EseguiLumoScad("-T FOO\0 -T"sv), "error") << "what is behind the zero byte counts";
  EXPECT_EQ(lumoscad_esegui("-T FOO\0 -T", nullptr, 0), 0U);
}

TEST_F(CHandle, NoTextOfTheCppFaceIsCutAtAZeroByte) {
  using namespace std::string_view_literals;
  constexpr const char* Perche = "Un testo contiene un byte zero.";
  EXPECT_EQ(ChiediChiaveHost("h\0x"sv).errore, Perche);
  EXPECT_EQ(LeggiBlocco("h\0x"sv, "CREDITI").errore, Perche);
  EXPECT_EQ(LeggiBlocchi("h\0x"sv).at(0).errore, Perche);
  EXPECT_EQ(LeggiInSospeso("-D\0x"sv).testo, std::string(Perche) + "\n");
  EXPECT_EQ(ArchiviaInSospeso("n\0x"sv, "vista").testo, std::string(Perche) + "\n");
  std::vector<std::string> detti;
  EXPECT_FALSE(ProvaHost("h\0x"sv, "", [&](const PassoProva& passo) { detti.push_back(passo.dettaglio); }));
  EXPECT_EQ(detti, std::vector<std::string>{Perche});
}

} // namespace
} // namespace lumoscad::test
