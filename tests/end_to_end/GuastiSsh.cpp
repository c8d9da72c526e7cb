#include "GuastiSsh.hpp"
#include "platform/nexaro/Nexaro.hpp"

#include "Figlio.hpp"
#include "support/Paths.hpp"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <utility>

namespace lumoscad::test {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view Variazioni = "UPDATE EVENTOCONTABILE SET DATASCADENZA='2026-04-15' WHERE "
                                        "EVENTOCONTABILEKEY=111;"
                                        "UPDATE EVENTOCONTABILE SET BANCAPRESENTAZIONE_KEY=1 WHERE "
                                        "EVENTOCONTABILEKEY=291";
constexpr const char* Attesa = "10";

/// Tells the test of every operation before the real link does it.
class HostSpiato final : public nexaro::HostLink {
 public:
  HostSpiato(std::unique_ptr<nexaro::HostLink> vero, std::function<void(std::string_view)> spia)
      : vero_(std::move(vero)), spia_(std::move(spia)) {}

  void EseguiProgramma(std::string_view host, std::string_view programma, const std::vector<std::string>& parametri,
                       nexaro::XMLParser& risposta) override {
    spia_("EseguiProgramma");
    vero_->EseguiProgramma(host, programma, parametri, risposta);
  }
  void RiceviFile(std::string_view host, std::string_view remoto, std::string_view locale,
                  std::string& testo) override {
    spia_("RiceviFile");
    vero_->RiceviFile(host, remoto, locale, testo);
  }
  void InviaFile(std::string_view host, std::string_view locale, std::string_view remoto) override {
    spia_(remoto.find("/VB") == std::string_view::npos ? "InviaFile" : "BloccaArea");
    vero_->InviaFile(host, locale, remoto);
  }
  void RinominaFile(std::string_view host, std::string_view remoto, std::string_view nuovo,
                    std::string& testo) override {
    spia_("RinominaFile");
    vero_->RinominaFile(host, remoto, nuovo, testo);
  }
  void CancellaFile(std::string_view host, std::string_view remoto) override {
    spia_("CancellaFile");
    vero_->CancellaFile(host, remoto);
  }

 private:
  std::unique_ptr<nexaro::HostLink> vero_;
  std::function<void(std::string_view)> spia_;
};

void Sostituisci(std::string& testo, const std::string& cosa, const std::string& con) {
  for (auto posto = testo.find(cosa); posto != std::string::npos; posto = testo.find(cosa, posto + con.size())) {
    testo.replace(posto, cosa.size(), con);
  }
}

/// How the system names the end of a connection depends on who noticed it first.
void TogliDettaglio(std::string& testo) {
  static const std::string Inizio = "(Socket error: ";
  const auto posto = testo.find(Inizio);
  const auto fine = testo.find(')', posto == std::string::npos ? posto : posto + Inizio.size());
  if (fine != std::string::npos) {
    testo.replace(posto + Inizio.size(), fine - posto - Inizio.size(), "…");
  }
}

struct Riga {
  std::string guasto, letto, risultato, host, base;
};

/// The lines of all cases; printed and written when the last case has run.
class Tabella final : public testing::Environment {
 public:
  std::vector<Riga> righe;

  void TearDown() override {
    if (righe.empty()) {
      return;
    }
    std::string testo = "| Fault | What the person reads | Result | Left on the host | Database |\n"
                        "| ----- | --------------------- | ------ | ---------------- | -------- |\n";
    for (const auto& riga : righe) {
      testo += "| " + riga.guasto + " | " + riga.letto + " | " + riga.risultato + " | " + riga.host + " | " +
               riga.base + " |\n";
    }
    std::fputs(testo.c_str(), stdout);
    std::ofstream(test::OutputPath("end_to_end/guasti_ssh.md")) << testo;
  }
};

Tabella& LaTabella() {
  // The runner owns it.
  static auto* tabella =
      dynamic_cast<Tabella*>(testing::AddGlobalTestEnvironment(std::make_unique<Tabella>().release()));
  return *tabella;
}

} // namespace

SshFaults::SshFaults() : Guasti(Trasporto::Ssh), proxy(demo.Ssh().Port()), dopo(demo.StatoDopo(Variazioni)) {
  demo.Ssh().MakeKnown(proxy.Port());
  ::setenv("NEXARO_SSH_PORTA", std::to_string(proxy.Port()).c_str(), 1);
  ::setenv("NEXARO_ATTESA", Attesa, 1);
  ::unsetenv("NEXARO_CODIFICA");
  fs::rename(demo.VB0001(), demo.VB0001().string() + ".vero");
}

void SshFaults::TearDown() {
  for (auto& agguato : agguati_) {
    EXPECT_TRUE(agguato.get()) << "the point of the fault was not reached";
  }
}

std::unique_ptr<nexaro::HostLink> SshFaults::CreaHost() {
  return std::make_unique<HostSpiato>(nexaro::CreateHostLink(), [this](std::string_view operazione) {
    if (primaDi) {
      primaDi(operazione);
    }
  });
}

void SshFaults::Prova(const std::string& guasto) {
  ProvaCon(guasto, "vero");
}

void SshFaults::ProvaCon(const std::string& guasto, std::string_view corpo) {
  ScriviProgramma(demo.VB0001(),
                  "echo >>\"$NEXARO_RADICE/avvii\"\nvero() { \"$NEXARO_RADICE/programmi/VB0001.vero\" \"$@\"; }\n" +
                      std::string(corpo == "vero" ? "vero \"$@\"" : corpo));
  Conferma();
  risultato = Esegui();
  std::string letto;
  for (const auto& box : desktop.box) {
    letto += (letto.empty() ? "«" : "<br>«") + Anonimo(box) + "»";
  }
  const auto stato = demo.Stato();
  const char* base = Differenze(prima, stato).empty() ? "untouched" : "changed otherwise";
  LaTabella().righe.push_back({guasto, letto.empty() ? "nothing" : letto, risultato.empty() ? "done" : risultato,
                               SullHost(), Differenze(dopo, stato).empty() ? "changed as asked" : base});
}

std::string SshFaults::SullHost() const {
  std::string testo;
  for (const auto& nome : Contenuto(demo.Tmp())) {
    testo += (testo.empty() ? "" : ", ") + nome;
  }
  testo = testo.empty() ? "nothing" : testo;
  const auto avvii = Avvii();
  testo += avvii == 0 ? "; program not started" : "; program started " + std::to_string(avvii) + "×";
  const auto registro = FileText(demo.Registro());
  return testo + (registro.starts_with("ACCETTATA") ? ", request accepted" : "");
}

std::string SshFaults::Anonimo(std::string testo) const {
  Sostituisci(testo, demo.Locale().string(), "LOCALE");
  Sostituisci(testo, demo.Host().string(), "HOST");
  Sostituisci(testo, demo.Base().string(), "BASE");
  Sostituisci(testo, std::to_string(proxy.Port()), "PORTA");
  Sostituisci(testo, std::string("(porta ") + std::getenv("NEXARO_SSH_PORTA") + ")", "(porta PORTA)");
  Sostituisci(testo, demo.Ssh().Hash(), "SHA256:…");
  Sostituisci(testo, " " + demo.Ssh().User() + "@", " UTENTE@");
  Sostituisci(testo, "«" + demo.Ssh().User() + "»", "«UTENTE»");
  TogliDettaglio(testo);
  Sostituisci(testo, "\r\n", " ↵ ");
  Sostituisci(testo, "\r", " ");
  Sostituisci(testo, "\n", " ");
  Sostituisci(testo, "|", "\\|");
  return testo;
}

std::size_t SshFaults::Avvii() const {
  return FileText(demo.Host() / "avvii").size();
}

void SshFaults::VerificaErrore(const Righe& parti) const {
  ASSERT_EQ(desktop.box.size(), 1U) << testing::PrintToString(desktop.box);
  EXPECT_THAT(desktop.box[0], testing::StartsWith("-2147220905\r\n"));
  for (const auto& parte : parti) {
    EXPECT_THAT(desktop.box[0], testing::HasSubstr(parte));
  }
}

void SshFaults::VerificaFallito() const {
  EXPECT_EQ(risultato, "error");
  EXPECT_FALSE(fs::exists(demo.Locale() / Richiesta));
  EXPECT_THAT(Differenze(prima, demo.Stato()), testing::IsEmpty());
}

void SshFaults::VerificaRiuscito() const {
  EXPECT_EQ(risultato, "");
  EXPECT_EQ(desktop.box, Righe{"Variate 2 scadenze"});
  EXPECT_FALSE(fs::exists(demo.Locale() / Richiesta));
  EXPECT_THAT(Differenze(dopo, demo.Stato()), testing::IsEmpty());
}

void SshFaults::VerificaAvvii(std::size_t quanti) const {
  EXPECT_EQ(Avvii(), quanti);
}

void SshFaults::Ferma(const std::string& operazione, const std::string& ordine, const std::function<void()>& azione) {
  const auto cartella = demo.Base() / "ordini";
  fs::create_directory(cartella);
  demo.ConfiguraRadice("-o '" + cartella.string() + "'");
  primaDi = [cartella, operazione, ordine, dato = false](std::string_view adesso) mutable {
    if (adesso == operazione && !std::exchange(dato, true)) {
      Scrivi(cartella / "ordine", ordine);
    }
  };
  Agguato(cartella / "fermo", azione);
}

void SshFaults::Agguato(const fs::path& segnale, std::function<void()> azione) {
  agguati_.push_back(std::async(std::launch::async, [segnale, azione = std::move(azione)] {
    const bool giunto = Finche([&segnale] { return fs::exists(segnale); });
    if (giunto) {
      azione();
    }
    return giunto;
  }));
}

void SshFaults::Taglia(bool perSempre) {
  if (perSempre) {
    proxy.RefuseAfterStrike();
  }
  proxy.Strike(Azione::Reset);
}

} // namespace lumoscad::test
