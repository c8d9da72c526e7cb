#include "Tempesta.hpp"

#include "Campi.hpp"
#include "Lavoro.hpp"
#include "support/Files.hpp"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <thread>
#include <utility>

namespace lumoscad::test {

namespace fs = std::filesystem;
using std::chrono::milliseconds;

namespace {

constexpr int UnaVita = 200; // commands, more than a terminal lives for

/// The last line of a log, without the rest of the file being read.
std::string UltimaRiga(const fs::path& file) {
  constexpr std::streamoff Coda = 4096;
  std::ifstream flusso(file, std::ios::binary | std::ios::ate);
  const std::streamoff lungo = flusso.tellg();
  if (lungo <= 0) {
    return "";
  }
  flusso.seekg(std::max<std::streamoff>(0, lungo - Coda));
  std::string ultima;
  for (std::string riga; std::getline(flusso, riga);) {
    ultima = std::move(riga);
  }
  return ultima;
}

} // namespace

Testi Tempesta::Utenti() {
  Testi utenti;
  for (int quale = 1; quale <= Terminali; ++quale) {
    utenti.push_back(Postazione(quale));
  }
  return utenti;
}

Tempesta::Tempesta(Sistema& sistema, Gruppo& gruppo, const Misura& misura, const Previsione& previsione)
    : sgombero(sistema, gruppo.PerUtente()), sistema_(sistema), gruppo_(gruppo), previsione_(previsione),
      caso_(previsione.seme) {
  std::set<std::string> conSsh;
  for (int quale = 1; quale <= Terminali; ++quale) {
    terminali_.emplace_back(Postazione(quale), misura, static_cast<unsigned>(caso_()));
    if (ConSsh(terminali_.back())) {
      conSsh.insert(Postazione(quale));
    }
  }
  const SshServer& server = sistema_.UsaSsh(conSsh);
  passaggioHost_ = std::make_unique<ByteProxy>(server.Port());
  server.MakeKnown(passaggioHost_->Port());
}

bool Tempesta::ConSsh(const Terminale& terminale) const {
  return (&terminale - terminali_.data()) % 2 == 1;
}

int Tempesta::Fra(int minimo, int massimo) {
  return minimo + static_cast<int>(caso_() % static_cast<unsigned>(massimo - minimo + 1));
}

milliseconds Tempesta::FinoA(milliseconds massimo) {
  return milliseconds(Fra(1, static_cast<int>(massimo.count())));
}

std::string Tempesta::Comando(Terminale& terminale) {
  for (;;) {
    std::string comando = terminale.persona.Prossimo();
    if (!comando.starts_with("-T EXTRA") || ++estratti_[comando] <= 2) {
      return ConSsh(terminale) ? Replaced(comando, " -H locale", " -H " + SshServer::Address()) : comando;
    }
  }
}

void Tempesta::Parti(Terminale& terminale) {
  constexpr int UltimoPasso = 1500;
  const auto righe = LeggiRighe(sistema_.Registro(terminale.postazione));
  const auto fatti =
      std::count_if(righe.begin(), righe.end(), [](const auto& riga) { return riga.starts_with("INIZIO\t"); });
  Sistema::Lancio lancio{terminale.postazione, {"#numero " + std::to_string(fatti + 1)}};
  for (int quanti = 0; quanti < UnaVita; ++quanti) {
    lancio.comandi.push_back("#pausa " + std::to_string(FinoA(previsione_.pausa).count()));
    lancio.comandi.push_back(Comando(terminale));
  }
  // Half of them die at a step of their own, the others when they are told to.
  lancio.morte = Fra(0, 1) == 0 ? Fra(1, UltimoPasso) : 0;
  lancio.amministratore = true;
  lancio.utente = gruppo_.PerUtente() ? terminale.postazione : "";
  lancio.ambiente = {"LUMOSCAD_ATTESA_SQL=5", "NEXARO_ATTESA=20", "NEXARO_RADICE=" + sistema_.Host().string()};
  if (ConSsh(terminale)) {
    lancio.ambiente.push_back("NEXARO_SSH_PORTA=" + std::to_string(passaggioHost_->Port()));
  }
  terminale.famiglia.emplace(sistema_.Avvia(lancio));
  terminale.morte = Orologio::now() + FinoA(previsione_.vita);
  terminale.colto = false;
}

void Tempesta::Finisce(Terminale& terminale) {
  constexpr int Sigkill = 128 + 9;
  const int esito = terminale.famiglia->Attendi();
  terminale.famiglia.reset();
  if (esito == 0) {
    return;
  }
  if (esito != Sigkill) {
    errori.push_back(terminale.postazione + " ended with " + std::to_string(esito));
  }
  ++conto.morti;
  const fs::path registro = sistema_.Registro(terminale.postazione);
  if (!UltimaRiga(registro).empty()) {
    conto.nelComando += InComando(terminale) ? 1U : 0U;
    std::ofstream(registro, std::ios::app) << Unisci({"MORTE", std::to_string(Adesso())}) << '\n';
  }
  TogliBlocchi(terminale.postazione);
}

bool Tempesta::InComando(const Terminale& terminale) const {
  const std::string ultima = UltimaRiga(sistema_.Registro(terminale.postazione));
  return !ultima.empty() && !ultima.starts_with("FINE\t") && !ultima.starts_with("AMMINISTRATORE\t") &&
         !ultima.starts_with("MORTE\t");
}

void Tempesta::Uccidi(Terminale& terminale) {
  constexpr milliseconds DurataDiUnComando(150);
  if (!terminale.colto) {
    // It spends most of its time between two commands, where there is nothing to lose.
    terminale.colto = InComando(terminale);
    terminale.morte += terminale.colto ? FinoA(DurataDiUnComando) : milliseconds(0);
    return;
  }
  terminale.famiglia->Uccidi();
  Finisce(terminale);
}

/// The administrator takes away what a dead terminal has locked, and what has been locked for long.
void Tempesta::TogliBlocchi(const std::string& postazione) {
  constexpr std::chrono::seconds Troppo(20);
  for (const std::string& nome : Contenuto(sistema_.Tmp())) {
    const fs::path file = sistema_.Tmp() / nome;
    std::error_code errore;
    const auto quando = fs::last_write_time(file, errore);
    if (nome.starts_with("VB") && !errore &&
        (FileText(file).find(postazione) != std::string::npos || fs::file_time_type::clock::now() - quando > Troppo)) {
      conto.blocchi += fs::remove(file, errore) ? 1U : 0U;
    }
  }
}

void Tempesta::Arma() {
  constexpr int Lontano = 6000; // bytes
  constexpr std::chrono::seconds Pazienza(3);
  const bool base = Fra(1, 3) > 1;
  taglio_ = Taglio{base ? &gruppo_.Passaggio() : passaggioHost_.get(), base, Orologio::now() + Pazienza};
  const auto azione = Fra(0, 1) == 0 ? ByteProxy::Action::Close : ByteProxy::Action::Reset;
  const int come = Fra(1, base ? 4 : 2);
  if (come == 1) {
    taglio_->passaggio->Strike(azione);
  } else if (come == 2) {
    const auto verso = Fra(0, 1) == 0 ? ByteProxy::Direction::ToServer : ByteProxy::Direction::ToClient;
    taglio_->passaggio->StrikeAfter(verso, static_cast<std::uint64_t>(Fra(1, Lontano)), azione);
  } else {
    taglio_->passaggio->StrikeAtSequence(
        gruppo_.Conferma(), come == 3 ? ByteProxy::Moment::BeforeItPasses : ByteProxy::Moment::BeforeTheReply, azione);
  }
}

void Tempesta::GuardaTaglio() {
  // A cut may strike, and a command end by it, between the look and whatever is done next.
  const Istante prima = std::exchange(guardato_, Adesso());
  if (!taglio_) {
    if (Orologio::now() >= prossimoTaglio_) {
      Arma();
    }
    return;
  }
  if (taglio_->passaggio->HasStruck()) {
    cadute.push_back({prima, Adesso()});
    ++(taglio_->base ? conto.tagliBase : conto.tagliHost);
    taglio_.reset();
    prossimoTaglio_ = Orologio::now() + FinoA(previsione_.calma);
  } else if (Orologio::now() > taglio_->scadenza) {
    Disarma();
  }
}

void Tempesta::Disarma() {
  if (taglio_) {
    // It may have struck since it was looked at.
    taglio_->passaggio->Restore();
    cadute.push_back({guardato_, Adesso()});
    taglio_.reset();
  }
  prossimoTaglio_ = Orologio::now() + FinoA(previsione_.calma);
}

void Tempesta::Perdi() {
  constexpr milliseconds SenzaUno(8000);
  Disarma();
  Caduta caduta{Adesso(), 0};
  gruppo_.Perdi();
  caduta.alla = Adesso();
  cadute.push_back(caduta);
  ++conto.perdite;
  riparazione_ = Orologio::now() + FinoA(SenzaUno);
  prossimaPerdita_ = Orologio::now() + previsione_.fraPerdite / 2 + FinoA(previsione_.fraPerdite / 2);
}

void Tempesta::Giro() {
  for (Terminale& terminale : terminali_) {
    if (terminale.famiglia->Esito()) {
      Finisce(terminale);
    } else if (Orologio::now() >= terminale.morte) {
      Uccidi(terminale);
    }
    if (!terminale.famiglia) {
      if (Fra(0, 1) == 0) {
        sgombero.Presto(terminale.postazione);
      }
      Parti(terminale);
    }
  }
  GuardaTaglio();
  if (riparazione_ && Orologio::now() >= *riparazione_) {
    Disarma();
    // While a node joins, those that bring it up to date may refuse.
    const Istante inizio = Adesso();
    gruppo_.Ripara();
    cadute.push_back({inizio, Adesso()});
    riparazione_.reset();
  } else if (!riparazione_ && Orologio::now() >= prossimaPerdita_) {
    Perdi();
  }
}

/// On a busy machine a short storm is over before it has begun.
bool Tempesta::MancaQualcosa() const {
  return conto.morti == 0 || conto.tagliBase + conto.tagliHost == 0 || conto.perdite == 0;
}

void Tempesta::Infuria() {
  constexpr milliseconds Passo(5);
  const auto fine = Orologio::now() + previsione_.durata;
  prossimoTaglio_ = Orologio::now() + FinoA(previsione_.calma);
  prossimaPerdita_ = Orologio::now() + previsione_.fraPerdite / 2;
  guardato_ = Adesso();
  for (Terminale& terminale : terminali_) {
    Parti(terminale);
  }
  while (Orologio::now() < fine || (MancaQualcosa() && Orologio::now() < fine + previsione_.proroga)) {
    Giro();
    std::this_thread::sleep_for(Passo);
  }
  Disarma();
  for (const Terminale& terminale : terminali_) {
    terminale.famiglia->Uccidi();
  }
  for (Terminale& terminale : terminali_) {
    Finisce(terminale);
  }
  if (riparazione_) {
    gruppo_.Ripara();
  }
}

} // namespace lumoscad::test
