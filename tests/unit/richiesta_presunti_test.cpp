#include "common/Stato.hpp"
#include "host/Richieste.hpp"
#include "platform/RuntimeError.hpp"
#include "support/TestBench.hpp"

#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

using namespace lumoscad;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

VariazioneConsegna Documento() {
  VariazioneConsegna v;
  v.idMovimentoKey = 401;
  v.CodiceConto = "C1";
  v.Serie = "AB";
  v.Anno = "06";
  v.Numero = "123";
  return v;
}

VariazioneConsegna CambioBanca() {
  VariazioneConsegna v = Documento();
  v.VecchiaBanca = "B1";
  v.NuovaBanca = "B2";
  v.isBancaChanged = true;
  return v;
}

VariazioneConsegna CambioConsegna() {
  VariazioneConsegna v = Documento();
  v.Consegna = "05/03/2006";
  v.ConsegnaOrigine = "1/3/06";
  v.NuovaConsegna = "06/03/2006";
  v.isConsegnaChanged = true;
  return v;
}

class PresumedRequest : public testing::Test {
 protected:
  std::string InviaBanca(const VariazioniConsegna& variazioni) {
    return ScriviRichiestaBancaPresunti("10.0.0.1", "12", variazioni, "PRESUNTI");
  }
  std::string InviaConsegna(const VariazioniConsegna& variazioni) {
    return ScriviRichiestaConsegna("10.0.0.1", "12", variazioni, "PRESUNTI");
  }
  /// The bytes sent last.
  [[nodiscard]] std::string Inviato() const { return banco.host.uploads.empty() ? "nulla" : banco.host.uploads.back(); }

  test::TestBench banco;
};

const std::string NomeRichiesta = "/tmp/T0120060305140709";

} // namespace

TEST_F(PresumedRequest, WithoutChangesDoesNotContactTheHost) {
  EXPECT_EQ(InviaBanca({}), "");
  EXPECT_EQ(InviaConsegna({}), "");
  EXPECT_THAT(banco.host.operazioni, IsEmpty());
  EXPECT_THAT(banco.desktop.pointers, IsEmpty());
}

TEST_F(PresumedRequest, OfABankHasTheFormatOfInstalmentsWithoutItemDatesAndNumber) {
  EXPECT_EQ(InviaBanca({CambioBanca()}), "");
  EXPECT_EQ(Inviato(), "C1,,06,123,AB,,,,B1,B2,\r\n");
  EXPECT_THAT(banco.host.calls, ElementsAre(ElementsAre("12", "CANALIZZAZIONE", "PRESUNTI", "T01",
                                                        NomeRichiesta + ".dos", "", "", "", "", "", "")));
}

TEST_F(PresumedRequest, WritesABankThatDoesNotChangeAsEmpty) {
  VariazioneConsegna v = CambioBanca();
  v.isBancaChanged = false;
  EXPECT_EQ(InviaBanca({v}), "");
  EXPECT_EQ(Inviato(), "C1,,06,123,AB,,,,B1,,\r\n");
}

TEST_F(PresumedRequest, WritesAMissingAndARemovedBankAsNull) {
  VariazioneConsegna data = CambioBanca();
  data.VecchiaBanca = "#null#";
  VariazioneConsegna tolta = CambioBanca();
  tolta.NuovaBanca = "#null#";
  EXPECT_EQ(InviaBanca({data, tolta}), "");
  EXPECT_EQ(Inviato(), "C1,,06,123,AB,,,,#null#,B2,\r\nC1,,06,123,AB,,,,B1,#null#,\r\n");
}

TEST_F(PresumedRequest, OfADeliveryHasSevenFieldsAndDatesOfEightDigits) {
  EXPECT_EQ(InviaConsegna({CambioConsegna()}), "");
  EXPECT_EQ(Inviato(), "C1,AB,123,06,20060305,20060301,20060306\r\n");
  EXPECT_THAT(banco.host.calls,
              ElementsAre(ElementsAre("12", "CONSEGNA", "PRESUNTI", "T01", NomeRichiesta + ".dos", "")));
}

TEST_F(PresumedRequest, WritesAMissingDeliveryDateInZeros) {
  VariazioneConsegna v = CambioConsegna();
  v.Consegna = "#null#";
  v.ConsegnaOrigine = "";
  EXPECT_EQ(InviaConsegna({v}), "");
  EXPECT_EQ(Inviato(), "C1,AB,123,06,00000000,00000000,20060306\r\n");
}

TEST_F(PresumedRequest, HasItsOperationsInThisOrderAndTheLocalFileGoes) {
  EXPECT_EQ(InviaConsegna({CambioConsegna()}), "");
  EXPECT_THAT(banco.host.operazioni,
              ElementsAre("Invia " + NomeRichiesta, "Rinomina " + NomeRichiesta + " " + NomeRichiesta + ".dos",
                          "Esegui VB0001", "Cancella " + NomeRichiesta, "Cancella " + NomeRichiesta + ".dos"));
  stato().notaInCorso.Concludi(true);
  EXPECT_TRUE(std::filesystem::is_empty(banco.environment.CartellaLocale));
  EXPECT_EQ(banco.desktop.pointers.front(), Pointer::Hourglass);
  EXPECT_EQ(banco.desktop.pointers.back(), Pointer::Standard);
}

TEST_F(PresumedRequest, ShowsTheProgramsMessage) {
  banco.host.reply = "<RISPOSTA><MESSAGGIO>Consegne aggiornate</MESSAGGIO></RISPOSTA>";
  EXPECT_EQ(InviaConsegna({CambioConsegna()}), "");
  EXPECT_THAT(banco.desktop.box, ElementsAre("Consegne aggiornate"));
}

TEST_F(PresumedRequest, RaisesAFaultAsATransferError) {
  banco.host.fault = [](const std::string& operazione) {
    if (operazione.starts_with("Rinomina")) {
      throw RuntimeError(errors::FileAccess, "disco pieno");
    }
  };
  for (const bool consegna : {true, false}) {
    try {
      static_cast<void>(consegna ? InviaConsegna({CambioConsegna()}) : InviaBanca({CambioBanca()}));
      ADD_FAILURE() << "la richiesta è riuscita";
    } catch (const RuntimeError& errore) {
      EXPECT_EQ(errore.Number(), -2147220905);
      EXPECT_EQ(errore.Description(), "75 disco pieno");
    }
  }
  EXPECT_TRUE(std::filesystem::is_empty(banco.environment.CartellaLocale));
}

TEST_F(PresumedRequest, StopsBeforeTheHostAtADateThatIsNone) {
  VariazioneConsegna v = CambioConsegna();
  v.NuovaConsegna = "domani";
  EXPECT_THROW(static_cast<void>(InviaConsegna({v})), RuntimeError);
  EXPECT_THAT(banco.host.operazioni, testing::Not(testing::Contains("Esegui VB0001")));
}
