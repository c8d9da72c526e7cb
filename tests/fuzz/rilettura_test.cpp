// What the screens can ask for reaches the host program as it was asked: the fuzzer's rules alone would hold for a
// program that refuses everything.

#include "RichiestaFile.hpp"
#include "common/Testo.hpp"
#include "host/RichiestaScadenze.hpp"
#include "host/Richieste.hpp"
#include "support/TestBench.hpp"

#include <gtest/gtest.h>

#include <functional>
#include <random>

using namespace lumoscad;

namespace {

constexpr int Prove = 500;

/// Requests as the screens make them, from a fixed seed.
class ReadBack : public testing::Test {
 protected:
  int Fino(int massimo) { return static_cast<int>(caso_() % static_cast<unsigned>(massimo + 1)); }
  std::string Giorno() {
    return ConZeri(1 + Fino(27), 2) + "/" + ConZeri(1 + Fino(11), 2) + "/" + std::to_string(1990 + Fino(90));
  }
  std::string GiornoONessuno() { return Fino(4) == 0 ? std::string(Nullo) : Giorno(); }
  std::string Conto() { return Fino(3) == 0 ? "C PERÙ " + std::to_string(Fino(9)) : std::to_string(Fino(99999999)); }
  std::string Banca() { return "6010" + std::to_string(Fino(9)); }
  /// Two banks, or a bank and none, but never the same.
  void Banche(std::string& vecchia, std::string& nuova) {
    vecchia = Fino(2) == 0 ? std::string(Nullo) : Banca();
    nuova = vecchia == Nullo || Fino(2) != 0 ? "7" + Banca() : std::string(Nullo);
  }

  VariazioneCanalizzazione Rata() {
    VariazioneCanalizzazione v;
    v.CodiceConto = Conto();
    v.NumeroPartita = "AB   " + std::to_string(Fino(999));
    v.NumeroRata = std::to_string(1 + Fino(11));
    v.ScadenzaOriginale = GiornoONessuno();
    v.VecchiaScadenza = GiornoONessuno();
    v.isScadenzaChanged = Fino(1) == 0;
    v.NuovaScadenza = v.isScadenzaChanged ? Giorno() : std::string(Nullo);
    v.isBancaChanged = !v.isScadenzaChanged || Fino(1) == 0;
    Banche(v.VecchiaBanca, v.NuovaBanca);
    return v;
  }
  VariazioneConsegna Documento() {
    VariazioneConsegna v;
    v.CodiceConto = Conto();
    v.Serie = Fino(1) == 0 ? "OC" : "À";
    v.Anno = ConZeri(Fino(99), 2);
    v.Numero = Fino(5) == 0 ? "" : std::to_string(Fino(99999));
    v.Consegna = GiornoONessuno();
    v.ConsegnaOrigine = GiornoONessuno();
    v.NuovaConsegna = Giorno();
    v.isBancaChanged = true;
    Banche(v.VecchiaBanca, v.NuovaBanca);
    return v;
  }

  /// Makes lists of one to thirty-two records, sends each, and has the host program read what was uploaded.
  template <typename Voce>
  void OgniRichiesta(const std::function<Voce()>& voce,
                     const std::function<void(const std::vector<Voce>&, std::size_t)>& spedisci) {
    for (int prova = 0; prova < Prove; ++prova) {
      std::vector<Voce> voci(static_cast<std::size_t>(1 + Fino(31)));
      for (Voce& una : voci) {
        una = voce();
      }
      banco_.host.uploads.clear();
      spedisci(voci, voci.size());
    }
  }
  [[nodiscard]] const std::string& Inviato() const { return banco_.host.uploads.at(0); }

  test::TestBench banco_;

 private:
  std::mt19937 caso_{20060305};
};

} // namespace

TEST_F(ReadBack, EveryCanalizzazioneOfTheScreensIsReadBackWhole) {
  OgniRichiesta<VariazioneCanalizzazione>([this] { return Rata(); },
                                          [this](const auto& rate, std::size_t quante) {
                                            ASSERT_EQ(ScriviRichiestaCanalizzazione("h", "01", rate, "CREDITI"), "");
                                            ASSERT_EQ(demo::ControllaCanalizzazione(Inviato(), {}), quante);
                                          });
}

TEST_F(ReadBack, EveryBankOfPresumedDocumentsIsReadBackWhole) {
  OgniRichiesta<VariazioneConsegna>([this] { return Documento(); },
                                    [this](const auto& documenti, std::size_t quanti) {
                                      ASSERT_EQ(ScriviRichiestaBancaPresunti("h", "01", documenti, "PRESUNTI"), "");
                                      ASSERT_EQ(demo::ControllaBancaPresunti(Inviato(), {}), quanti);
                                    });
}

TEST_F(ReadBack, EveryDeliveryIsReadBackWhole) {
  const auto voce = [this] {
    VariazioneConsegna v = Documento();
    while (v.NuovaConsegna == v.Consegna) {
      v.NuovaConsegna = Giorno();
    }
    return v;
  };
  OgniRichiesta<VariazioneConsegna>(voce, [this](const auto& documenti, std::size_t quanti) {
    ASSERT_EQ(ScriviRichiestaConsegna("h", "01", documenti, "PRESUNTI"), "");
    ASSERT_EQ(demo::ControllaConsegna(Inviato(), {}), quanti);
  });
}

TEST_F(ReadBack, EveryRequestOfDueDatesIsReadBackWhole) {
  const auto voce = [this] { return RigaScadenze{Conto(), "AB   1", Giorno(), Giorno(), Giorno()}; };
  OgniRichiesta<RigaScadenze>(voce, [this](const auto& righe, std::size_t quante) {
    // The reply action finds no database.
    ASSERT_EQ(ScriviRichiestaScadenze(righe), "error");
    ASSERT_EQ(demo::ControllaScadenze(Inviato(), {}), quante);
  });
}

TEST_F(ReadBack, ARequestWithoutAChangeIsNotReadBack) {
  VariazioneConsegna v = Documento();
  v.NuovaConsegna = v.Consegna = "01/02/2006";
  ASSERT_EQ(ScriviRichiestaConsegna("h", "01", {v}, "PRESUNTI"), "");
  EXPECT_THROW(static_cast<void>(demo::ControllaConsegna(Inviato(), {})), demo::Rifiuto);
}

TEST_F(ReadBack, ACommaInAFieldIsSentAndTheHostRefusesTheLine) {
  VariazioneCanalizzazione rata = Rata();
  rata.NumeroPartita = "15,16";
  ASSERT_EQ(ScriviRichiestaCanalizzazione("h", "01", {Rata(), rata}, "CREDITI"), "");
  try {
    static_cast<void>(demo::ControllaCanalizzazione(Inviato(), {}));
    FAIL() << "the line was taken";
  } catch (const demo::Rifiuto& rifiuto) {
    EXPECT_TRUE(std::string_view(rifiuto.what()).starts_with("Riga 2: ")) << rifiuto.what();
  }
}
