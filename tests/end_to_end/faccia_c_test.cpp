#include "FacciaC.hpp"
#include "lumoscad/Host.hpp"
#include "lumoscad/lumoscad.h"

#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace lumoscad::test {
namespace {

TEST_F(CFace, GivesTheResultAndItsLength) {
  EXPECT_EQ(lumoscad_esegui("-T", risultato.data(), risultato.size()), 5U);
  EXPECT_STREQ(risultato.data(), "error");
}

TEST_F(CFace, AnUnknownTypeGivesAnEmptyResult) {
  EXPECT_EQ(lumoscad_esegui("-T FOO", risultato.data(), risultato.size()), 0U);
  EXPECT_STREQ(risultato.data(), "");
}

TEST_F(CFace, AShortBufferGetsWhatFitsAndTheWholeLength) {
  EXPECT_EQ(lumoscad_esegui("-T", risultato.data(), 3), 5U);
  EXPECT_STREQ(risultato.data(), "er");
  EXPECT_EQ(std::string(risultato.data() + 3, 5), "?????") << "nothing is written behind it";
}

TEST_F(CFace, WithoutABufferOnlyTheLengthIsTold) {
  EXPECT_EQ(lumoscad_esegui("-T", nullptr, 8), 5U);
  EXPECT_EQ(lumoscad_esegui("-T", risultato.data(), 0), 5U);
  EXPECT_EQ(risultato[0], '?');
}

TEST_F(CFace, WithoutADisplayTheErrorOutputTellsEachReasonOnce) {
  const auto volte = [](std::string_view comando, std::string_view testo, std::size_t lunghezza = 5) {
    testing::internal::CaptureStderr();
    EXPECT_EQ(lumoscad_esegui(std::string(comando).c_str(), nullptr, 0), lunghezza);
    const std::string scritto = testing::internal::GetCapturedStderr();
    int quante = 0;
    for (auto dove = scritto.find(testo); dove != std::string::npos; dove = scritto.find(testo, dove + 1)) {
      ++quante;
    }
    return quante;
  };
  EXPECT_EQ(volte("-T", "manca il valore di -T"), 1);
  EXPECT_EQ(volte("-T", "nessuno schermo raggiungibile"), 1) << "why it stands there and not in a box";
  EXPECT_EQ(volte("-T SOSPESO /A -DEMO", "nessuno schermo raggiungibile", 0), 1);
  EXPECT_EQ(volte("-T SOSPESO /A -DEMO", "La partita è stata sospesa", 0), 1);
  EXPECT_EQ(volte("-T SOSPESO /A -C 1 -P 2 3", "nessuno schermo raggiungibile"), 1) << "no wait window, no request";
}

TEST_F(CFace, ANullCommandIsAnEmptyLine) {
  EXPECT_EQ(lumoscad_esegui(nullptr, risultato.data(), risultato.size()), 0U);
  EXPECT_STREQ(risultato.data(), "");
}

TEST_F(CFace, TheTestOfAHostAndACommandDoNotRunAtOnce) {
  UsaCartella();
  testing::internal::CaptureStderr();
  std::vector<std::string> interne;
  std::size_t daUnTimer = 0;
  std::size_t daUnThread = 0;
  const auto esegui = [](std::size_t& lunghezza) { lunghezza = lumoscad_esegui("-T FOO", nullptr, 0); };
  static_cast<void>(lumoscad::ProvaHost("10.0.0.1", "", [&](const lumoscad::PassoProva&) {
    if (!interne.empty()) {
      return;
    }
    EXPECT_FALSE(lumoscad::ProvaHost("10.0.0.2", "", [&](const lumoscad::PassoProva& interno) {
      EXPECT_FALSE(interno.riuscito);
      interne.push_back(interno.dettaglio);
    }));
    esegui(daUnTimer);
    std::thread([&] { esegui(daUnThread); }).join();
  }));
  const std::string scritto = testing::internal::GetCapturedStderr();
  ASSERT_EQ(interne.size(), 1U);
  EXPECT_EQ(interne[0], "Comando rifiutato: ne è già in corso un altro, che va prima portato a termine.");
  EXPECT_EQ(daUnTimer, 5U);
  EXPECT_EQ(daUnThread, 5U);
  EXPECT_EQ(lumoscad_esegui("-T FOO", nullptr, 0), 0U) << "the turn is free again";
}

TEST_F(CFace, OutcomesThatCannotBeShownEndTheTestOfAHostAndNotTheProgram) {
  UsaCartella();
  EXPECT_FALSE(
      lumoscad::ProvaHost("10.0.0.1", "", [](const lumoscad::PassoProva&) { throw std::runtime_error("no screen"); }));
}

TEST_F(CFace, ListsWhatIsLeftOpen) {
  EXPECT_EQ(lumoscad_in_sospeso(nullptr, &stato, letto.data(), letto.size()), 27U);
  EXPECT_EQ(stato, LUMOSCAD_RIUSCITO);
  EXPECT_STREQ(letto.data(), "Non c'è nulla in sospeso.\n");
  EXPECT_EQ(lumoscad_in_sospeso("", nullptr, nullptr, 0), 27U);
  Lascia("sospeso-1", "rifiutata");
  Scrivi("sospeso-2.nota", "altro");
  const auto lunghezza = lumoscad_in_sospeso("-DB2SOURCE ALTRA", &stato, letto.data(), letto.size());
  EXPECT_EQ(stato, LUMOSCAD_ERRORE) << "one of them cannot be read";
  EXPECT_EQ(std::string_view(letto.data()).size(), lunghezza);
  EXPECT_EQ(std::string_view(letto.data()).substr(0, std::string_view(letto.data()).find("  da fare")),
            "sospeso-1\n"
            "  comando    SOSPESO /A, postazione T01, azienda 01, host 10.0.0.1\n"
            "  dal        05/03/2026 14:07:09\n"
            "  host       ha rifiutato la richiesta: conto bloccato\n"
            "  base dati  il comando non vi ha registrato nulla\n");
  EXPECT_EQ(lumoscad_in_sospeso(nullptr, &stato, letto.data(), 10), lumoscad_in_sospeso(nullptr, nullptr, nullptr, 0));
  EXPECT_STREQ(letto.data(), "sospeso-1");
}

TEST_F(CFace, TellsWhatARealignmentWouldDoBeforeItIsConfirmed) {
  Lascia("sospeso-1", "rifiutata");
  EXPECT_GT(lumoscad_riallinea("sospeso-1", "-DB2SOURCE CONTAB", 0, &stato, letto.data(), letto.size()), 0U);
  EXPECT_EQ(stato, LUMOSCAD_DA_CHIEDERE);
  EXPECT_TRUE(std::filesystem::exists(Locale() / "sospeso-1.nota"));
  EXPECT_GT(lumoscad_riallinea("sospeso-1", "-DB2SOURCE CONTAB", 1, &stato, letto.data(), letto.size()), 0U);
  EXPECT_EQ(stato, LUMOSCAD_RIUSCITO);
  EXPECT_STREQ(letto.data(), "L'host aveva rifiutato la richiesta e nulla è cambiato: la nota è stata tolta.\n");
  EXPECT_TRUE(std::filesystem::is_empty(Locale().Path()));
  lumoscad_riallinea("sospeso-1", nullptr, 1, &stato, letto.data(), letto.size());
  EXPECT_EQ(stato, LUMOSCAD_ERRORE);
}

TEST_F(CFace, ActsOnAYesToWhatItToldAlone) {
  Lascia("sospeso-1", "accettata");
  lumoscad_riallinea("sospeso-1", nullptr, 0, &stato, letto.data(), letto.size());
  EXPECT_EQ(stato, LUMOSCAD_DA_CHIEDERE);
  Lascia("sospeso-1", "rifiutata");
  lumoscad_riallinea("sospeso-1", nullptr, 1, &stato, letto.data(), letto.size());
  EXPECT_EQ(stato, LUMOSCAD_DA_CHIEDERE) << "it has changed since";
  EXPECT_NE(std::string_view(letto.data()).find("ha rifiutato la richiesta"), std::string_view::npos);
  EXPECT_TRUE(std::filesystem::exists(Locale() / "sospeso-1.nota"));
  lumoscad_riallinea("sospeso-1", nullptr, 1, &stato, letto.data(), letto.size());
  EXPECT_EQ(stato, LUMOSCAD_RIUSCITO);
  EXPECT_TRUE(std::filesystem::is_empty(Locale().Path()));
}

TEST_F(CFace, KeepsTheNoteWhoseDatabaseCannotBeReached) {
  Lascia("sospeso-1", "accettata");
  for (const int conferma : {0, 1}) {
    lumoscad_riallinea("sospeso-1", "-DB2SOURCE CONTAB", conferma, &stato, letto.data(), letto.size());
    EXPECT_EQ(stato, LUMOSCAD_ERRORE);
    EXPECT_NE(std::string_view(letto.data()).find("NON letta  la base dati: "), std::string_view::npos);
  }
  EXPECT_TRUE(std::filesystem::exists(Locale() / "sospeso-1.nota"));
}

TEST_F(CFace, PutsANoteAsideWithItsReason) {
  Lascia("sospeso-1", "accettata");
  lumoscad_archivia("sospeso-1", nullptr, &stato, letto.data(), letto.size());
  EXPECT_EQ(stato, LUMOSCAD_ERRORE);
  lumoscad_archivia(nullptr, "vista", &stato, letto.data(), letto.size());
  EXPECT_EQ(stato, LUMOSCAD_ERRORE);
  EXPECT_EQ(lumoscad_archivia("sospeso-1", "vista", &stato, letto.data(), letto.size()), 29U);
  EXPECT_EQ(stato, LUMOSCAD_RIUSCITO);
  EXPECT_STREQ(letto.data(), "La nota è stata archiviata.\n");
  lumoscad_in_sospeso(nullptr, &stato, letto.data(), letto.size());
  EXPECT_NE(std::string_view(letto.data()).find("Non c'è nulla in sospeso.\nArchiviate:\nsospeso-1  archiviata il "),
            std::string_view::npos);
  lumoscad_riallinea("sospeso-1", nullptr, 1, &stato, nullptr, 0);
  EXPECT_EQ(stato, LUMOSCAD_ERRORE);
}

TEST_F(CFace, NotesWaitForTheRunningCallToo) {
  UsaCartella();
  Lascia("sospeso-1", "rifiutata");
  static_cast<void>(lumoscad::ProvaHost("10.0.0.1", "", [&](const lumoscad::PassoProva&) {
    lumoscad_in_sospeso(nullptr, &stato, letto.data(), letto.size());
    EXPECT_EQ(stato, LUMOSCAD_ERRORE);
    EXPECT_STREQ(letto.data(), "Comando rifiutato: ne è già in corso un altro, che va prima portato a termine.\n");
    lumoscad_riallinea("sospeso-1", nullptr, 1, &stato, nullptr, 0);
    EXPECT_EQ(stato, LUMOSCAD_ERRORE);
    lumoscad_archivia("sospeso-1", "vista", &stato, nullptr, 0);
    EXPECT_EQ(stato, LUMOSCAD_ERRORE);
  }));
  EXPECT_TRUE(std::filesystem::exists(Locale() / "sospeso-1.nota"));
  EXPECT_FALSE(std::filesystem::exists(Locale() / "sospeso-1.archivio"));
}

} // namespace
} // namespace lumoscad::test
