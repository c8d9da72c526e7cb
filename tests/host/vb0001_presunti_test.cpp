// The two requests about presumed documents.

#include "RetroVB0001.hpp"

#include <string>
#include <utility>
#include <vector>

namespace lumoscad {
namespace {

/// A right request line, and the same with one field put wrong.
template <std::size_t Campi> class Righe {
 public:
  explicit Righe(std::vector<std::string> campi) : campi_(std::move(campi)) { EXPECT_EQ(campi_.size(), Campi); }

  [[nodiscard]] std::string Giusta() const { return Unisci(campi_); }
  /// The same with `valore` in field `campo`, counted from 1.
  [[nodiscard]] std::string Con(std::size_t campo, const std::string& valore) const {
    auto campi = campi_;
    campi.at(campo - 1) = valore;
    return Unisci(campi);
  }

 private:
  static std::string Unisci(const std::vector<std::string>& campi) {
    std::string riga;
    for (const auto& campo : campi) {
      riga += "," + campo;
    }
    return riga.substr(1) + "\r\n";
  }

  std::vector<std::string> campi_;
};

class BackEndPresumedBanks : public test::BackEndVB0001 {
 protected:
  std::string Accetta(const std::string& contenuto) { return Testo("MESSAGGIO", contenuto, presunti); }
  std::string Rifiuta(const std::string& contenuto) { return Testo("ERRORE", contenuto, presunti); }
  std::string RifiutaCampo(std::size_t campo, const std::string& valore) { return Rifiuta(riga.Con(campo, valore)); }

  const std::vector<std::string> presunti = Con(Parametri(), 2, "PRESUNTI");
  const Righe<11> riga{{"C1", "", "06", "123", "AB", "", "", "", "B1", "B2", ""}};
};

TEST_F(BackEndPresumedBanks, TellsHowManyDocumentsItTook) {
  EXPECT_EQ(riga.Giusta(), "C1,,06,123,AB,,,,B1,B2,\r\n");
  EXPECT_EQ(Accetta(riga.Giusta()), "Variato 1 documento");
  EXPECT_EQ(Accetta(riga.Con(10, "#null#") + riga.Con(9, "#null#")), "Variati 2 documenti");
  EXPECT_EQ(Accetta(riga.Con(4, "")), "Variato 1 documento") << "il numero può essere l'anno soltanto";
}

TEST_F(BackEndPresumedBanks, NamesLineAndFieldOfWhatIsWrong) {
  EXPECT_EQ(Rifiuta(riga.Giusta() + riga.Con(1, "")), "Riga 2, campo 1 (CodiceConto): «» manca.");
  EXPECT_EQ(RifiutaCampo(2, "12"), "Riga 1, campo 2 (NumeroPartita): «12» dovrebbe essere vuoto.");
  EXPECT_EQ(RifiutaCampo(3, "2006"), "Riga 1, campo 3 (Anno): «2006» non è un anno di due cifre.");
  EXPECT_EQ(RifiutaCampo(3, ""), "Riga 1, campo 3 (Anno): «» non è un anno di due cifre.");
  EXPECT_EQ(RifiutaCampo(3, "/6"), "Riga 1, campo 3 (Anno): «/6» non è un anno di due cifre.");
  EXPECT_EQ(RifiutaCampo(4, "12A"), "Riga 1, campo 4 (Numero): «12A» non è il numero di un documento.");
  EXPECT_EQ(RifiutaCampo(5, " "), "Riga 1, campo 5 (Serie): « » manca.");
  EXPECT_EQ(RifiutaCampo(6, "20260131"), "Riga 1, campo 6 (ScadenzaOriginale): «20260131» dovrebbe essere vuoto.");
  EXPECT_EQ(RifiutaCampo(7, "00000000"), "Riga 1, campo 7 (VecchiaScadenza): «00000000» dovrebbe essere vuoto.");
  EXPECT_EQ(RifiutaCampo(8, " "), "Riga 1, campo 8 (NuovaScadenza): « » dovrebbe essere vuoto.");
  EXPECT_EQ(RifiutaCampo(9, ""), "Riga 1, campo 9 (VecchiaBanca): «» manca.");
  EXPECT_EQ(RifiutaCampo(9, "#nulla#"), "Riga 1, campo 9 (VecchiaBanca): «#nulla#» non è un codice di banca.");
  EXPECT_EQ(RifiutaCampo(10, ""), "Riga 1, campo 10 (NuovaBanca): «» manca.");
  EXPECT_EQ(RifiutaCampo(10, "B 2"), "Riga 1, campo 10 (NuovaBanca): «B 2» non è un codice di banca.");
  EXPECT_EQ(RifiutaCampo(11, "1"), "Riga 1, campo 11 (NumeroRata): «1» dovrebbe essere vuoto.");
  EXPECT_EQ(RifiutaCampo(5, "A\tB"), "Riga 1, campo 5 (Serie): «» contiene un carattere di controllo.");
}

TEST_F(BackEndPresumedBanks, RefusesLinesThatChangeNothingOrHaveTheWrongShape) {
  const std::string uguali = "nessuna variazione, i campi 9 (VecchiaBanca) e 10 (NuovaBanca) sono uguali.";
  EXPECT_EQ(RifiutaCampo(10, "B1"), "Riga 1: " + uguali);
  EXPECT_EQ(Rifiuta(riga.Giusta() + "C1,,06,123,AB,,,,#null#,#null#,\r\n"), "Riga 2: " + uguali);
  EXPECT_EQ(Rifiuta("C1,,06,123,AB,,,,B1,B2\r\n"), "Riga 1: 10 campi invece di 11.");
  EXPECT_EQ(Rifiuta("C1,,06,123,AB,,,,B1,B2,\n"), "Riga 1: non termina con CR LF.");
  EXPECT_EQ(Rifiuta(""), "Il file della richiesta è vuoto.");
}

TEST_F(BackEndPresumedBanks, RefusesBlockedAccounts) {
  EXPECT_EQ(RifiutaCampo(1, "BLOCCATO"), "Riga 1, campo 1 (CodiceConto): «BLOCCATO» è un conto bloccato.");
  test::Scrivi(radice / "conti_bloccati", "C1\n");
  EXPECT_EQ(Rifiuta(riga.Giusta()), "Riga 1, campo 1 (CodiceConto): «C1» è un conto bloccato.");
}

TEST_F(BackEndPresumedBanks, RefusesTheLinesOfTheOtherKinds) {
  const std::string diPartita = "20100001,2026/12,,,,20260131,20260131,20260228,60100001,60100002,1\r\n";
  EXPECT_EQ(Rifiuta(diPartita), "Riga 1, campo 2 (NumeroPartita): «2026/12» dovrebbe essere vuoto.");
  EXPECT_EQ(Errore(riga.Giusta()), "Riga 1, campo 2 (NumeroPartita): «» manca.");
}

TEST_F(BackEndPresumedBanks, LogsTheCallWithItsElevenParameters) {
  static_cast<void>(Accetta(riga.Giusta()));
  EXPECT_EQ(test::FileText(radice / "registro/VB0001.log"),
            "ACCETTATA\tVariato 1 documento\t11\t01\tCANALIZZAZIONE\tPRESUNTI\tT01\t/tmp/T01.dos\t\t\t\t\t\t\t"
            "C1,,06,123,AB,,,,B1,B2,\\r\\n\n");
}

class BackEndDeliveries : public test::BackEndVB0001 {
 protected:
  std::string Accetta(const std::string& contenuto) { return Testo("MESSAGGIO", contenuto, consegna); }
  std::string Rifiuta(const std::string& contenuto) { return Testo("ERRORE", contenuto, consegna); }
  std::string RifiutaCampo(std::size_t campo, const std::string& valore) { return Rifiuta(riga.Con(campo, valore)); }

  const std::vector<std::string> consegna = {"01", "CONSEGNA", "PRESUNTI", "T01", "/tmp/T01.dos", ""};
  const Righe<7> riga{{"C1", "AB", "123", "06", "20060502", "20060415", "20060520"}};
};

TEST_F(BackEndDeliveries, TellsHowManyDeliveriesItTook) {
  EXPECT_EQ(Accetta(riga.Giusta()), "Variata 1 consegna");
  EXPECT_EQ(Accetta(riga.Giusta() + riga.Con(5, "00000000") + riga.Con(6, "00000000")), "Variate 3 consegne");
}

TEST_F(BackEndDeliveries, NamesLineAndFieldOfWhatIsWrong) {
  EXPECT_EQ(RifiutaCampo(1, " "), "Riga 1, campo 1 (CodiceConto): « » manca.");
  EXPECT_EQ(RifiutaCampo(2, ""), "Riga 1, campo 2 (Serie): «» manca.");
  EXPECT_EQ(RifiutaCampo(3, "B23"), "Riga 1, campo 3 (Numero): «B23» non è il numero di un documento.");
  EXPECT_EQ(RifiutaCampo(4, "006"), "Riga 1, campo 4 (Anno): «006» non è un anno di due cifre.");
  EXPECT_EQ(RifiutaCampo(5, ""), "Riga 1, campo 5 (Consegna): «» manca.");
  EXPECT_EQ(RifiutaCampo(5, "#null#"), "Riga 1, campo 5 (Consegna): «#null#» non è una data di otto cifre.");
  EXPECT_EQ(RifiutaCampo(5, "20060431"), "Riga 1, campo 5 (Consegna): «20060431» è una data inesistente.");
  EXPECT_EQ(RifiutaCampo(6, ""), "Riga 1, campo 6 (ConsegnaOrigine): «» manca.");
  EXPECT_EQ(RifiutaCampo(6, "15/04/06"), "Riga 1, campo 6 (ConsegnaOrigine): «15/04/06» non è una data di otto cifre.");
  EXPECT_EQ(RifiutaCampo(7, ""), "Riga 1, campo 7 (NuovaConsegna): «» manca.");
  EXPECT_EQ(RifiutaCampo(7, "00000000"), "Riga 1, campo 7 (NuovaConsegna): «00000000» manca.");
  EXPECT_EQ(RifiutaCampo(7, "20060229"), "Riga 1, campo 7 (NuovaConsegna): «20060229» è una data inesistente.");
  EXPECT_EQ(Rifiuta(riga.Giusta() + riga.Con(7, "2006052")),
            "Riga 2, campo 7 (NuovaConsegna): «2006052» non è una data di otto cifre.");
}

TEST_F(BackEndDeliveries, RefusesLinesThatChangeNothingOrHaveTheWrongShape) {
  EXPECT_EQ(RifiutaCampo(7, "20060502"),
            "Riga 1: nessuna variazione, i campi 5 (Consegna) e 7 (NuovaConsegna) sono uguali.");
  EXPECT_EQ(Rifiuta("C1,AB,123,06,20060502,20060520\r\n"), "Riga 1: 6 campi invece di 7.");
  EXPECT_EQ(Rifiuta("C1,AB,123,06,20060502,20060415,20060520"), "Riga 1: non termina con CR LF.");
}

TEST_F(BackEndDeliveries, RefusesBlockedAccounts) {
  EXPECT_EQ(RifiutaCampo(1, "BLOCCATO"), "Riga 1, campo 1 (CodiceConto): «BLOCCATO» è un conto bloccato.");
}

TEST_F(BackEndDeliveries, RefusesAWrongParameterList) {
  const auto errore = [this](std::size_t indice, const std::string& valore) {
    return Testo("ERRORE", riga.Giusta(), Con(consegna, indice, valore));
  };
  EXPECT_EQ(errore(0, ""), "Parametro 1: manca.");
  EXPECT_EQ(errore(2, "CREDITI"), "Parametro 3: «CREDITI» non è PRESUNTI.");
  EXPECT_EQ(errore(3, " "), "Parametro 4: manca.");
  EXPECT_EQ(errore(4, "/tmp/T01"), "Parametro 5: «/tmp/T01» non è il nome di un file di richiesta completo.");
  EXPECT_EQ(errore(5, "x"), "Parametro 6: «x» dovrebbe essere vuoto.");
  EXPECT_EQ(Testo("ERRORE", riga.Giusta(), Con(Parametri(), 1, "CONSEGNA")),
            "La richiesta CONSEGNA ha 11 parametri invece di 6.");
}

} // namespace
} // namespace lumoscad
