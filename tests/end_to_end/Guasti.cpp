#include "Guasti.hpp"
#include "platform/nexaro/Nexaro.hpp"
#include "screens/frmLumoScadenzeBanche.hpp"

#include "lumoscad/LumoScadenze.hpp"

#include <cstdlib>

namespace lumoscad::test {
namespace {

constexpr int TestataScadenza = 5;
constexpr int BancaAniene = 3; ///< place in the list of banks, which is in order of name

void Spunta(ListWindow& finestra, int riga, int colonna) {
  int sinistra = 0;
  for (int precedente = 0; precedente < colonna; ++precedente) {
    sinistra += finestra.Description().columns[static_cast<std::size_t>(precedente)].width;
  }
  const int alto = riga * 240;
  finestra.Seleziona(riga);
  finestra.LVScadenze_MouseDown(sinistra + 1, alto + 1);
  finestra.LVScadenze_Click(alto);
}

} // namespace

Guasti::Guasti(Trasporto trasporto)
    : demo(trasporto),
      servizi_({[this]() -> Desktop& { return desktop; }, [this]() -> nexaro::HostLink& { return Host(); },
                [this]() -> const nexaro::Environment& { return Ambiente(); },
                [] { return DateTime{2026, 3, 5, 14, 7, 9}; },
                [this](std::string_view istruzione) {
                  istruzioni.emplace_back(istruzione);
                  if (allaIstruzione) {
                    allaIstruzione(istruzione);
                  }
                }}) {
  for (const auto& voce : demo.Ambiente()) {
    const auto segno = voce.find('=');
    ::setenv(voce.substr(0, segno).c_str(), voce.substr(segno + 1).c_str(), 1);
  }
  ::unsetenv("NEXARO_ATTESA");
}

std::unique_ptr<nexaro::HostLink> Guasti::CreaHost() {
  return nexaro::CreateHostLink();
}

nexaro::HostLink& Guasti::Host() {
  if (!host_) {
    host_ = CreaHost();
  }
  return *host_;
}

const nexaro::Environment& Guasti::Ambiente() {
  if (!ambiente_) {
    ambiente_ = std::make_unique<nexaro::Environment>(nexaro::ReadEnvironment());
  }
  return *ambiente_;
}

std::string Guasti::Esegui() {
  return Esegui("-DB2SOURCE " + demo.Sorgente() + " -DB2SCHEMA main");
}

std::string Guasti::Esegui(const std::string& opzioniDatabase) {
  return LumoScadenze().EseguiLumoScad("-T BANCA /CREDITI -D 01 -H " + demo.Indirizzo() + " -C 20100023 " +
                                       opzioniDatabase);
}

void Guasti::Conferma(const std::function<void()>& primaDiConfermare) {
  desktop.scripts.emplace_back([primaDiConfermare](ListWindow& finestra) {
    ASSERT_EQ(finestra.RowCount(), 11U);
    finestra.TLwTestata_Click(TestataScadenza);
    finestra.TextScadenza_Change("15/04/26");
    finestra.cmbBanche_Click(BancaAniene);
    Spunta(finestra, 1, frmLumoScadenzeBanche::Radio1);
    Spunta(finestra, 4, frmLumoScadenzeBanche::Radio2);
    if (primaDiConfermare) {
      primaDiConfermare();
    }
    finestra.PictureOk_Click();
  });
}

void Guasti::VerificaRifiuto(const std::string& risultato, const Righe& box, const Righe& rimasti) {
  EXPECT_EQ(risultato, "error");
  EXPECT_EQ(desktop.box, box);
  EXPECT_THAT(desktop.titles, testing::Each("LumoScad"));
  EXPECT_EQ(Contenuto(demo.Tmp()), rimasti);
  EXPECT_FALSE(std::filesystem::exists(demo.Locale() / Richiesta));
  EXPECT_THAT(Differenze(prima, demo.Stato()), testing::IsEmpty());
}

} // namespace lumoscad::test
