#include "SchermataDiProva.hpp"
#include "common/Testo.hpp"
#include "common/Utilities.hpp"
#include "host/RigaRichiesta.hpp"
#include "platform/RuntimeError.hpp"
#include "screens/RigheGriglia.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <numeric>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

using namespace lumoscad;
using namespace lumoscad::Utilities;
using testing::IsEmpty;

namespace {

/// A fixed seed: a failure comes back with every run.
class Caso {
 public:
  [[nodiscard]] std::size_t Fino(std::size_t massimo) {
    return std::uniform_int_distribution<std::size_t>(0, massimo)(generatore_);
  }
  [[nodiscard]] bool Moneta() { return Fino(1) == 1; }
  /// A text of up to `massimo` of the characters of `alfabeto`.
  [[nodiscard]] std::string Testo(std::string_view alfabeto, std::size_t massimo) {
    std::string testo(Fino(massimo), ' ');
    for (char& c : testo) {
      c = alfabeto[Fino(alfabeto.size() - 1)];
    }
    return testo;
  }

 private:
  std::mt19937 generatore_{20060305};
};

using std::chrono::sys_days;

std::string Scritta(sys_days giorno) {
  const std::chrono::year_month_day data(giorno);
  return ConZeri(static_cast<int>(static_cast<unsigned>(data.day())), 2) + "/" +
         ConZeri(static_cast<int>(static_cast<unsigned>(data.month())), 2) + "/" +
         ConZeri(static_cast<int>(data.year()), 4);
}

/// Every day of two centuries.
template <typename Prova> void OgniGiorno(Prova prova) {
  using namespace std::chrono;
  for (sys_days giorno = year(1900) / 1 / 1; giorno < sys_days(year(2100) / 1 / 1); giorno += days(1)) {
    prova(giorno, Scritta(giorno));
  }
}

class ConBanco : public testing::Test {
 protected:
  test::TestBench banco_;
};

using Date = ConBanco;
using Amounts = ConBanco;
using RandomTicks = test::GrigliaDiProva;

std::string Minuscole(std::string testo) {
  for (char& c : testo) {
    c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  }
  return testo;
}

constexpr std::string_view AlfabetoCorto = "aAbB1 ";

RigheGriglia ElencoACaso(Caso& caso, std::size_t righe, std::size_t lunghezza) {
  RigheGriglia elenco(2, {});
  for (std::size_t riga = 0; riga < righe; ++riga) {
    elenco.Aggiungi({caso.Testo(AlfabetoCorto, lunghezza), caso.Testo(AlfabetoCorto, 2)});
  }
  return elenco;
}

std::vector<std::size_t> Ordine(const RigheGriglia& elenco) {
  std::vector<std::size_t> ordine(elenco.Quante());
  for (std::size_t posto = 0; posto < ordine.size(); ++posto) {
    ordine[posto] = elenco.RigaAlPosto(posto);
  }
  return ordine;
}

/// Small letters as capitals, and the other way round.
std::string Scambiate(std::string testo) {
  for (char& c : testo) {
    const bool piccola = c >= 'a' && c <= 'z';
    c = piccola ? static_cast<char>(c - 'a' + 'A') : Minuscole(std::string(1, c)).front();
  }
  return testo;
}

/// The order that a stable sort of the texts gives, where case counts only between texts that are else the same, small
/// letters first.
std::vector<std::size_t> OrdineAtteso(const RigheGriglia& elenco, int colonna, bool crescente) {
  std::vector<std::size_t> ordine(elenco.Quante());
  std::iota(ordine.begin(), ordine.end(), std::size_t{0});
  const auto chiave = [&](std::size_t riga) {
    const std::string testo(elenco.Testo(riga, colonna));
    return std::pair(Minuscole(testo), Scambiate(testo));
  };
  std::stable_sort(ordine.begin(), ordine.end(), [&](std::size_t a, std::size_t b) {
    return crescente ? chiave(a) < chiave(b) : chiave(b) < chiave(a);
  });
  return ordine;
}

/// What the host gets for a text of whatever shape, part by part: "error 9" where there are fewer than three.
std::string ParteDopoParte(const std::string& testo) {
  if (testo.empty()) {
    return "00000000";
  }
  const auto parti = Dividi(testo, '/');
  if (parti.size() < 3) {
    return "error 9";
  }
  const auto conZero = [](const std::string& parte) { return (parte.size() == 1 ? "0" : "") + parte; };
  return (parti[2].size() == 2 ? "20" : "") + parti[2] + conZero(parti[1]) + conZero(parti[0]);
}

/// The same for the database: empty unless ten characters have three parts.
std::string IsoParteDopoParte(const std::string& testo) {
  const auto parti = Dividi(testo, '/');
  return testo.size() == 10 && parti.size() == 3 ? parti[2] + "-" + parti[1] + "-" + parti[0] : "";
}

std::string TentaPerHost(const std::string& testo) {
  try {
    return DataPerHost(testo);
  } catch (const RuntimeError& errore) {
    return "error " + std::to_string(errore.Number());
  }
}

std::string Riga(std::initializer_list<std::string_view> campi) {
  std::string riga;
  AggiungiRiga(riga, campi);
  return riga;
}

} // namespace

TEST_F(Date, OfEveryDayGoesToHostAndDatabaseAndBack) {
  OgniGiorno([](sys_days, const std::string& data) {
    const std::string compatta = DataPerHost(data);
    const std::string iso = DataIsoDaTesto(data);
    ASSERT_EQ(DataIsoDaCompatta(compatta), iso);
    ASSERT_EQ(FormattaData(iso), data);
    ASSERT_EQ(DataPerHost(FormattaData(iso)), compatta);
  });
}

TEST_F(Date, OfWhateverShapeGoesToHostAndDatabasePartByPart) {
  for (unsigned barre = 0; barre < 1U << 10; ++barre) { // every place where a text of ten characters may have a "/"
    std::string testo = "0123456789";
    for (std::size_t posto = 0; posto < testo.size(); ++posto) {
      testo[posto] = (barre >> posto & 1U) != 0 ? '/' : testo[posto];
    }
    ASSERT_EQ(TentaPerHost(testo), ParteDopoParte(testo)) << testo;
    ASSERT_EQ(DataIsoDaTesto(testo), IsoParteDopoParte(testo)) << testo;
  }
  Caso caso;
  for (int prova = 0; prova < 200000; ++prova) {
    const std::string testo = caso.Testo(caso.Moneta() ? "/0" : std::string_view("/1-. \0\xC3\xA8", 8), 13);
    ASSERT_EQ(TentaPerHost(testo), ParteDopoParte(testo)) << testo;
    ASSERT_EQ(DataIsoDaTesto(testo), IsoParteDopoParte(testo)) << testo;
  }
}

TEST_F(Date, SortsAsTextOfTheHostAsTheDaysDo) {
  std::string ieri;
  OgniGiorno([&](sys_days, const std::string& data) {
    const std::string oggi = DataPerHost(data) + FormattaDataOrdine(DataIsoDaTesto(data));
    ASSERT_LT(ieri, oggi);
    ieri = oggi;
  });
}

TEST_F(Date, OfEveryDayIsAcceptedAlikeInWhateverWayItIsWritten) {
  OgniGiorno([&](sys_days giorno, const std::string& data) {
    const std::string cifre = data.substr(0, 2) + data.substr(3, 2) + data.substr(6);
    // The leap-year test adds 1900 to four digits too: 29 February counts where that year is a leap year.
    const auto anno = std::chrono::year_month_day(giorno).year() + std::chrono::years(1900);
    const std::string atteso = data.starts_with("29/02/") && !anno.is_leap() ? " " : data;
    ASSERT_EQ(ControllaData(data), atteso) << data;
    ASSERT_EQ(ControllaData("  " + cifre + " "), atteso) << data;
  });
}

TEST_F(Date, OfTwoDigitsForTheYearLiesBetween1950And2049) {
  OgniGiorno([&](sys_days giorno, const std::string& data) {
    const int anno = static_cast<int>(std::chrono::year_month_day(giorno).year());
    if (anno < 1950 || anno >= 2050) {
      return;
    }
    const std::string breve = data.substr(0, 6) + data.substr(8);
    ASSERT_EQ(ControllaData(breve), data);
    ASSERT_EQ(FormattaDataBreve(DataIsoDaTesto(data)), breve);
  });
  EXPECT_THAT(banco_.desktop.box, IsEmpty());
}

TEST_F(Date, AtTheEndOfAMonthIsTheDayBeforeTheNextFirst) {
  OgniGiorno([](sys_days giorno, const std::string& data) {
    const auto domani = std::chrono::year_month_day(giorno + std::chrono::days(1));
    if (domani.day() == std::chrono::day(1)) {
      ASSERT_EQ(FineMese(data.substr(3, 2), data.substr(6)), DataIsoDaTesto(data));
    }
  });
}

TEST_F(Amounts, OfAnyNumberOfCentsAreWrittenAndReadBackAlike) {
  Caso caso;
  for (int prova = 0; prova < 20000; ++prova) {
    const auto centesimi = caso.Fino(prova % 2 == 0 ? 99999 : 999999999999);
    const std::string resto = ConZeri(static_cast<int>(centesimi % 100), 2);
    const std::string numero = std::to_string(centesimi / 100) + "." + resto;
    const std::string mostrato = FormattaImporto(numero);
    std::string cifre = mostrato;
    std::erase(cifre, '.');
    ASSERT_EQ(cifre, std::to_string(centesimi / 100) + "," + resto);
    std::string riletto = mostrato;
    ASSERT_FALSE(ControllaImporto(riletto, true, false));
    ASSERT_EQ(riletto, mostrato);
    ASSERT_EQ(FormattaImporto("-" + numero), centesimi == 0 ? mostrato : "-" + mostrato);
  }
}

TEST_F(Amounts, NeverChangePlacesByRounding) {
  Caso caso;
  for (int prova = 0; prova < 20000; ++prova) {
    std::size_t minore = caso.Fino(9999999);
    std::size_t maggiore = caso.Fino(9999999);
    if (minore > maggiore) {
      std::swap(minore, maggiore);
    }
    const auto centesimi = [](std::size_t millesimi) {
      std::string mostrato = FormattaImporto(std::to_string(millesimi) + "e-3");
      std::erase_if(mostrato, [](char c) { return c == '.' || c == ','; });
      return std::stoll(mostrato);
    };
    ASSERT_LE(centesimi(minore), centesimi(maggiore)) << minore << " " << maggiore;
  }
}

TEST(Lines, ThatAreWrittenDivideIntoTheirFields) {
  Caso caso;
  for (int prova = 0; prova < 20000; ++prova) {
    const std::vector<std::string> campi = {caso.Testo("aZ 9#/;'\"\t\xC3\xA8", 12), caso.Testo("0123456789", 8),
                                            caso.Testo(" ", 3), caso.Testo("#nul", 6)};
    const std::string riga = Riga({campi[0], campi[1], campi[2], campi[3]});
    ASSERT_TRUE(riga.ends_with("\r\n"));
    ASSERT_EQ(Dividi(std::string_view(riga).substr(0, riga.size() - 2), ','), campi);
  }
}

TEST(Lines, AreNeverWrittenWithAFieldThatWouldSplitThem) {
  Caso caso;
  for (int prova = 0; prova < 20000; ++prova) {
    const std::string campo = caso.Testo("ab,\r\n", 4);
    if (campo.find_first_of("\r\n") == std::string::npos) {
      ASSERT_EQ(Riga({campo}), campo + "\r\n");
    } else {
      ASSERT_THROW(static_cast<void>(Riga({"prima", campo})), RuntimeError);
    }
  }
}

TEST(Lines, AreAddedOneByOneToTheBytesOfTheFile) {
  Caso caso;
  std::string contenuto;
  std::string attesi;
  for (int prova = 0; prova < 20000; ++prova) {
    const std::vector<std::string> campi = {caso.Testo("ab\xC3\xA8", 40), caso.Testo("1,\t", 3),
                                            std::string(caso.Fino(3) == 0 ? 1 : 0, '\0'), caso.Testo("x\r\n", 2)};
    const auto cattivo = std::ranges::find_if(
        campi, [](const std::string& campo) { return campo.find_first_of("\r\n") != std::string::npos; });
    try {
      AggiungiRiga(contenuto, {campi[0], campi[1], campi[2], campi[3]});
      ASSERT_EQ(cattivo, campi.end());
      attesi += campi[0] + "," + campi[1] + "," + campi[2] + "," + campi[3] + "\r\n";
    } catch (const RuntimeError& errore) {
      ASSERT_NE(cattivo, campi.end());
      ASSERT_EQ(errore.Number(), errors::TypeMismatch);
      ASSERT_EQ(errore.Description(),
                "Il valore \"" + *cattivo + "\" contiene una fine di riga e non può essere inviato");
    }
    ASSERT_EQ(contenuto.size(), attesi.size()) << "a refused line leaves nothing behind";
  }
  EXPECT_EQ(contenuto, attesi);
}

TEST(Lines, TellTheFirstFieldThatWouldSplitThem) {
  std::string contenuto = "prima\r\n";
  try {
    AggiungiRiga(contenuto, {"a", "b\nc", "d\r", "e"});
    ADD_FAILURE() << "una fine di riga è passata";
  } catch (const RuntimeError& errore) {
    EXPECT_EQ(errore.Description(), "Il valore \"b\nc\" contiene una fine di riga e non può essere inviato");
  }
  EXPECT_EQ(contenuto, "prima\r\n");
}

TEST(Sorting, IsStableAndCompleteBothWays) {
  Caso caso;
  for (int prova = 0; prova < 1500; ++prova) {
    RigheGriglia elenco = ElencoACaso(caso, caso.Fino(60), prova % 3 == 0 ? 20 : 3);
    const int colonna = static_cast<int>(caso.Fino(1));
    const bool crescente = caso.Moneta();
    elenco.Ordina(colonna, crescente);
    ASSERT_EQ(Ordine(elenco), OrdineAtteso(elenco, colonna, crescente));
    for (std::size_t posto = 0; posto < elenco.Quante(); ++posto) {
      ASSERT_EQ(elenco.PostoDellaRiga(elenco.RigaAlPosto(posto)), posto);
    }
  }
}

TEST(Sorting, DoesNotDependOnWhatWentBefore) {
  Caso caso;
  for (int prova = 0; prova < 500; ++prova) {
    RigheGriglia elenco = ElencoACaso(caso, 40, 3);
    elenco.Ordina(0, true);
    const auto diretto = Ordine(elenco);
    elenco.Ordina(1, caso.Moneta());
    elenco.Ordina(0, false);
    elenco.Ordina(0, true);
    ASSERT_EQ(Ordine(elenco), diretto);
  }
}

TEST(Sorting, DescendingIsTheReverseAmongDifferentTexts) {
  Caso caso;
  for (int prova = 0; prova < 500; ++prova) {
    RigheGriglia elenco(1, {});
    std::set<std::string> testi;
    while (testi.size() < 30) {
      testi.insert(Minuscole(caso.Testo("abcdefgh", 18)));
    }
    std::vector<std::string> mescolati(testi.begin(), testi.end());
    for (std::size_t i = mescolati.size() - 1; i > 0; --i) {
      std::swap(mescolati[i], mescolati[caso.Fino(i)]);
    }
    for (const std::string& testo : mescolati) {
      elenco.Aggiungi({testo});
    }
    elenco.Ordina(0, true);
    auto crescente = Ordine(elenco);
    std::reverse(crescente.begin(), crescente.end());
    elenco.Ordina(0, false);
    ASSERT_EQ(Ordine(elenco), crescente);
  }
}

TEST(Sorting, IsTransitive) {
  Caso caso;
  // The order of any three texts alone is their order among all the others.
  for (int prova = 0; prova < 2000; ++prova) {
    RigheGriglia elenco = ElencoACaso(caso, 20, 18);
    elenco.Ordina(0, true);
    std::vector<std::size_t> scelte = {caso.Fino(19), caso.Fino(19), caso.Fino(19)};
    std::sort(scelte.begin(), scelte.end());
    scelte.erase(std::unique(scelte.begin(), scelte.end()), scelte.end());
    RigheGriglia poche(1, {});
    for (const std::size_t riga : scelte) {
      poche.Aggiungi({elenco.Testo(riga, 0)});
    }
    poche.Ordina(0, true);
    std::vector<std::size_t> attese = scelte;
    std::sort(attese.begin(), attese.end(),
              [&](std::size_t a, std::size_t b) { return elenco.PostoDellaRiga(a) < elenco.PostoDellaRiga(b); });
    for (std::size_t posto = 0; posto < attese.size(); ++posto) {
      ASSERT_EQ(scelte[poche.RigaAlPosto(posto)], attese[posto]);
    }
  }
}

TEST_F(RandomTicks, NeverTouchOtherRows) {
  Caso caso;
  constexpr std::size_t Righe = 30;
  std::vector<std::vector<bool>> attese(Righe, {false, false});
  for (std::size_t riga = 0; riga < Righe; ++riga) {
    Aggiungi("CLIENTE " + std::to_string(riga));
  }
  griglia.Resize();
  for (int prova = 0; prova < 5000; ++prova) {
    const auto riga = caso.Fino(Righe - 1);
    const auto quale = caso.Fino(1);
    griglia.righe.ImpostaSpunta(riga, static_cast<int>(quale), !attese[riga][quale]);
    attese[riga][quale] = !attese[riga][quale];
    if (prova % 100 == 0) {
      griglia.righe.Ordina(static_cast<int>(caso.Fino(5)), caso.Moneta());
    }
    for (std::size_t altra = 0; altra < Righe; ++altra) {
      ASSERT_EQ(griglia.righe.Spuntata(altra, 0), attese[altra][0]);
      ASSERT_EQ(griglia.righe.Spuntata(altra, 1), attese[altra][1]);
    }
  }
}

TEST_F(RandomTicks, ClickedTwiceLeaveTheRowAsItWas) {
  Caso caso;
  constexpr std::size_t Righe = 12;
  for (std::size_t riga = 0; riga < Righe; ++riga) {
    Aggiungi("CLIENTE " + std::to_string(riga), "31/03/2006", caso.Moneta() ? "ROMA" : "");
  }
  griglia.Resize();
  griglia.TextScadenza_Change("30/06/2006");
  const auto riassunto = [&](std::size_t riga) {
    std::string testi = griglia.righe.Spuntata(riga, 0) ? "S" : "-";
    for (int colonna = 0; colonna < Schermata::Colonne; ++colonna) {
      testi += "|" + std::string(griglia.righe.Testo(riga, colonna));
    }
    return testi;
  };
  std::vector<std::string> prima(Righe);
  for (std::size_t riga = 0; riga < Righe; ++riga) {
    Clic(riga, Schermata::Radio1);
    Clic(riga, Schermata::Radio1);
    prima[riga] = riassunto(riga);
  }
  for (int prova = 0; prova < 1000; ++prova) {
    const auto riga = caso.Fino(Righe - 1);
    Clic(riga, Schermata::Radio1);
    ASSERT_NE(riassunto(riga), prima[riga]) << "il clic non ha spuntato";
    Clic(riga, Schermata::Radio1);
    ASSERT_EQ(riassunto(riga), prima[riga]);
  }
  for (std::size_t riga = 0; riga < Righe; ++riga) {
    EXPECT_EQ(riassunto(riga), prima[riga]) << "un'altra riga è cambiata";
  }
}
