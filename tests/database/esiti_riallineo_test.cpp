#include "Esiti.hpp"
#include "ModificheDiProva.hpp"
#include "entry/InSospeso.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tuple>

using namespace lumoscad;
using test::ByteProxy;
using testing::AllOf;
using testing::ElementsAreArray;
using testing::EndsWith;
using testing::HasSubstr;
using testing::SizeIs;
using testing::StartsWith;

namespace {

/// Somebody finishes what a command left open, over a connection that a proxy breaks.
class RealigningOverALineThatBreaks
    : public testing::TestWithParam<std::tuple<const char*, ByteProxy::Moment, std::string>> {
 protected:
  RealigningOverALineThatBreaks() {
    posto_.base.Proxy().Restore();
    nota_ = test::LasciaNota(test::UnAzione({"01", "SOSPESOCREA", "C10", "AB   123", ""}), FaseNota::Accettata);
  }

  [[nodiscard]] NotaInSospeso Guarda() const { return GuardaNota(nota_, posto_.base.Opzioni()); }

  test::PostoEsiti posto_{std::get<0>(GetParam())};
  const test::LimiteIstruzioni limite_{"3"};
  const std::vector<std::string> prima_ = posto_.base.Tutto();
  std::string nota_;
};

class RealigningWhereTheServerStaysAway : public RealigningOverALineThatBreaks {};

std::string NomeDelTaglio(const testing::TestParamInfo<RealigningOverALineThatBreaks::ParamType>& caso) {
  return std::string(std::get<0>(caso.param)) +
         (std::get<1>(caso.param) == ByteProxy::Moment::BeforeItPasses ? "CommitLost" : "AnswerLost");
}

const auto CommitPerso = std::make_tuple("postgres", ByteProxy::Moment::BeforeItPasses, std::string("come prima"));
const auto RispostaPersa = std::make_tuple("mariadb", ByteProxy::Moment::BeforeTheReply, std::string("fatta"));

INSTANTIATE_TEST_SUITE_P(
    Servers, RealigningOverALineThatBreaks,
    testing::Values(CommitPerso, RispostaPersa,
                    std::make_tuple("postgres", ByteProxy::Moment::BeforeTheReply, std::string("fatta")),
                    std::make_tuple("mariadb", ByteProxy::Moment::BeforeItPasses, std::string("come prima"))),
    NomeDelTaglio);
// Each waits as long as the component looks for the server.
INSTANTIATE_TEST_SUITE_P(Servers, RealigningWhereTheServerStaysAway, testing::Values(CommitPerso, RispostaPersa),
                         NomeDelTaglio);

} // namespace

TEST_P(RealigningWhereTheServerStaysAway, KeepsTheNoteAndSaysThatTheOutcomeIsNotKnown) {
  const auto& [genere, momento, stato] = GetParam();
  const NotaInSospeso vista = Guarda();
  ASSERT_EQ(vista.errore, "");
  auto& proxy = posto_.base.Proxy();
  proxy.StrikeAtSequence(posto_.base.Conferma(), momento, ByteProxy::Action::Close);
  proxy.RefuseAfterStrike();
  const EsitoInSospeso esito = RiallineaVista(vista, posto_.base.Opzioni());
  EXPECT_TRUE(proxy.HasStruck());
  EXPECT_FALSE(esito.riuscito);
  EXPECT_THAT(esito.testo, AllOf(StartsWith("La base dati non si lascia rileggere: "), HasSubstr("\nERRORE: "),
                                 EndsWith("\nNon si sa se la base dati ha registrato le righe: guardarle ancora più "
                                          "tardi, con lumoscad --in-sospeso.\nLa nota resta.\n")));
  EXPECT_THAT(LeggiNota(CartellaNote(), nota_).transazione, StartsWith("sessione ")) << "of the realignment";
  proxy.Restore();
  proxy.Refuse(false);
  ASSERT_TRUE(posto_.base.SenzaAltreSessioni());

  const NotaInSospeso dopo = Guarda();
  EXPECT_EQ(dopo.errore, "");
  EXPECT_EQ(dopo.baseDati, posto_.base.SuPostgres()
                               ? "il comando non vi ha registrato nulla: lo dice il numero della transazione"
                               : "non si sa se il comando vi ha registrato tutto o nulla");
  ASSERT_THAT(dopo.righe, SizeIs(1));
  EXPECT_EQ(dopo.righe[0].stato, stato);
  const EsitoInSospeso ultimo = RiallineaVista(dopo, posto_.base.Opzioni());
  EXPECT_TRUE(ultimo.riuscito) << ultimo.testo;
  EXPECT_EQ(posto_.base.Valore("SELECT COUNT(*) FROM EVENTOCONTABILE WHERE PARTITACONTABILEKEY=100 AND TIPOEVENTO='C' "
                               "AND SOSPESA='S'"),
            "3");
}

TEST_P(RealigningOverALineThatBreaks, SaysWhatBecameOfItWhereTheServerIsThereAgain) {
  const auto& [genere, momento, stato] = GetParam();
  const NotaInSospeso vista = Guarda();
  posto_.base.Proxy().StrikeAtSequence(posto_.base.Conferma(), momento, ByteProxy::Action::Close);
  const EsitoInSospeso esito = RiallineaVista(vista, posto_.base.Opzioni());
  EXPECT_TRUE(posto_.base.Proxy().HasStruck());
  EXPECT_EQ(esito.riuscito, stato == "fatta") << esito.testo;
  EXPECT_THAT(esito.testo, StartsWith("    " + stato + " "));
  ASSERT_TRUE(posto_.base.SenzaAltreSessioni());
  if (esito.riuscito) {
    EXPECT_NE(Guarda().errore, "") << "there is no note any more";
    EXPECT_NE(posto_.base.Tutto(), prima_);
  } else {
    EXPECT_THAT(esito.testo, EndsWith("\nLa base dati non ha registrato nulla.\nLa nota resta.\n"));
    EXPECT_EQ(Guarda().baseDati, "il comando non vi ha registrato nulla");
    EXPECT_THAT(posto_.base.Tutto(), ElementsAreArray(prima_));
  }
}

TEST_P(RealigningOverALineThatBreaks, WritesNothingWhereItBreaksBefore) {
  const NotaInSospeso vista = Guarda();
  auto& proxy = posto_.base.Proxy();
  proxy.StrikeAtSequence("UPDATE", ByteProxy::Moment::BeforeItPasses, ByteProxy::Action::Close);
  const EsitoInSospeso esito = RiallineaVista(vista, posto_.base.Opzioni());
  EXPECT_TRUE(proxy.HasStruck());
  EXPECT_FALSE(esito.riuscito);
  EXPECT_THAT(esito.testo, AllOf(StartsWith("    come prima         partita AB   123 del conto C10\nERRORE: "),
                                 EndsWith("\nLa base dati non ha registrato nulla.\nLa nota resta.\n")));
  ASSERT_TRUE(posto_.base.SenzaAltreSessioni());
  EXPECT_THAT(posto_.base.Tutto(), ElementsAreArray(prima_));
  EXPECT_TRUE(RiallineaVista(Guarda(), posto_.base.Opzioni()).riuscito);
}
