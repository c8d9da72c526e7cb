#include "Esiti.hpp"
#include "RegistroEsiti.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tuple>

using namespace lumoscad;
using test::ByteProxy;
using testing::AllOf;
using testing::ElementsAreArray;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace {

constexpr const char* NonRegistrata =
    "L'host ha già accettato la modifica; la base dati non ne ha registrato nulla. Da "
    "allineare: ";
constexpr const char* NonSiSa = "L'host ha già accettato la modifica; non si sa se la base dati l'ha registrata. Da "
                                "controllare prima di ripeterla: ";
constexpr const char* Niente = ""; ///< what a command says that goes on as if nothing had happened

/// A procedure on a server, whose connection a proxy breaks.
class Cuts : public testing::TestWithParam<std::tuple<const char*, const char*>> {
 protected:
  Cuts() : procedura_(test::TrovaProcedura(std::get<1>(GetParam()))), prima_(posto_.base.Tutto()) {}

  /// What the procedure makes of the data when nothing breaks; the data are put back.
  void Misura() {
    ASSERT_EQ(posto_.Esegui(procedura_), "") << posto_.msg.Errore;
    EXPECT_EQ(posto_.msg.Errore, "");
    istruzioni_ = posto_.istruzioni;
    dopo_ = posto_.base.Tutto();
    EXPECT_NE(dopo_, prima_);
    EXPECT_FALSE(posto_.ricercato);
    Annota("senza guasti", "applicata", dopo_);
    posto_.base.Ripristina();
    ASSERT_THAT(posto_.base.Tutto(), ElementsAreArray(prima_));
  }
  /// Runs the procedure with the fault that was armed, and puts the data back. The database must hold `attesa`, and
  /// the message say `frase` of it.
  void Prova(const char* punto, const char* frase, const std::vector<std::string>& attesa) {
    const std::string risultato = posto_.Esegui(procedura_);
    EXPECT_TRUE(posto_.base.Proxy().HasStruck()) << punto;
    posto_.base.Proxy().Restore();
    if (frase == Niente) {
      EXPECT_EQ(risultato, "") << punto;
      EXPECT_EQ(posto_.msg.Errore, "") << punto;
      EXPECT_EQ(stato().andamento.Frase(),
                "L'host e la base dati hanno registrato la modifica: " + procedura_.chiamato + ".")
          << punto;
    } else {
      EXPECT_EQ(risultato, "error") << punto;
      EXPECT_THAT(posto_.msg.Errore,
                  AllOf(StartsWith("ERRORE: -2147467259\r\n"), EndsWith("\r\n" + (frase + procedura_.oggetto))))
          << punto;
      EXPECT_EQ(posto_.msg.Errore.find("l'esito è sconosciuto") != std::string::npos, frase == NonSiSa) << punto;
    }
    EXPECT_TRUE(posto_.base.SenzaAltreSessioni()) << punto;
    const auto tiene = posto_.base.Tutto();
    EXPECT_THAT(tiene, ElementsAreArray(attesa)) << punto;
    Annota(punto, risultato.empty() ? "applicata" : Dice(posto_.msg.Errore), tiene);
    posto_.base.Ripristina();
  }
  void ProvaInOgniModo(const char* punto, const char* frase, const std::vector<std::string>& attesa,
                       const std::function<void(ByteProxy::Action)>& arma) {
    for (const auto azione : {ByteProxy::Action::Close, ByteProxy::Action::Reset}) {
      arma(azione);
      Prova(punto, frase, attesa);
    }
  }
  void AllaSequenza(std::string_view sequenza, ByteProxy::Moment momento, ByteProxy::Action azione, int volta = 1) {
    posto_.base.Proxy().StrikeAtSequence(sequenza, momento, azione, volta);
  }

  test::PostoEsiti posto_{std::get<0>(GetParam())};
  const test::ProceduraProvata& procedura_;
  std::vector<std::string> prima_;
  std::vector<std::string> dopo_;
  int istruzioni_ = 0;
  int ricercate_ = 0; ///< runs after whose COMMIT the component looked for the outcome

 private:
  static const char* Dice(const std::string& messaggio) {
    if (messaggio.find(NonRegistrata) != std::string::npos) {
      return "non applicata";
    }
    return messaggio.find(NonSiSa) != std::string::npos ? "sconosciuta" : "altro";
  }
  void Annota(const char* punto, const char* detto, const std::vector<std::string>& tiene) {
    ricercate_ += posto_.ricercato ? 1 : 0;
    const char* stato = tiene == prima_ ? "come prima" : tiene == dopo_ ? "tutta" : "IN PARTE";
    test::RegistroEsiti::Unico().Annota(
        {std::get<0>(GetParam()), procedura_.nome, punto, posto_.ricercato ? "sconosciuta" : detto, detto, stato});
  }
};

std::vector<const char*> Nomi() {
  std::vector<const char*> nomi;
  for (const auto& procedura : test::ProcedureProvate()) {
    nomi.push_back(procedura.nome);
  }
  return nomi;
}

INSTANTIATE_TEST_SUITE_P(Servers, Cuts,
                         testing::Combine(testing::Values("postgres", "mariadb"), testing::ValuesIn(Nomi())),
                         [](const auto& scelta) {
                           return std::string(std::get<0>(scelta.param)) + "_" + std::get<1>(scelta.param);
                         });

} // namespace

TEST_P(Cuts, NeverLeaveAChangeHalfDoneAndNeverCallDoneWhatIsNot) {
  ASSERT_NO_FATAL_FAILURE(Misura());
  ASSERT_GE(istruzioni_, 3);
  using Momento = ByteProxy::Moment;
  for (int quale = 1; quale <= istruzioni_; ++quale) {
    ProvaInOgniModo(quale == 1 ? "prima della prima istruzione" : "fra due istruzioni", NonRegistrata, prima_,
                    [&](ByteProxy::Action azione) {
                      posto_.PrimaDellIstruzione(quale, [this, azione] { posto_.base.Proxy().Strike(azione); });
                    });
  }
  ProvaInOgniModo("all'inizio della transazione", NonRegistrata, prima_, [&](ByteProxy::Action azione) {
    AllaSequenza(posto_.base.Domanda(), Momento::BeforeItPasses, azione);
  });
  ProvaInOgniModo("prima di COMMIT", NonRegistrata, prima_, [&](ByteProxy::Action azione) {
    AllaSequenza(posto_.base.Domanda(), Momento::BeforeItPasses, azione, 2);
  });
  ProvaInOgniModo("COMMIT perso per via", NonRegistrata, prima_, [&](ByteProxy::Action azione) {
    AllaSequenza(posto_.base.Conferma(), Momento::BeforeItPasses, azione);
  });
  ProvaInOgniModo("risposta a COMMIT persa", Niente, dopo_, [&](ByteProxy::Action azione) {
    AllaSequenza(posto_.base.Conferma(), Momento::BeforeTheReply, azione);
  });
  ProvaInOgniModo("dopo la risposta a COMMIT", Niente, dopo_, [&](ByteProxy::Action azione) {
    AllaSequenza(posto_.base.Domanda(), Momento::BeforeItPasses, azione, 3);
  });
  EXPECT_EQ(ricercate_, 6) << "where COMMIT was sent, and nowhere else";
}
