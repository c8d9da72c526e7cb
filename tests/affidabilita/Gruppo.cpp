#include "Gruppo.hpp"

#include "support/Files.hpp"
#include "support/MariaDbProgram.hpp"
#include "support/Paths.hpp"
#include "support/PostgresProgram.hpp"
#include "support/ServerProcess.hpp"

#include <algorithm>
#include <system_error>
#include <unistd.h>

namespace lumoscad::test {
namespace {

constexpr const char* Base = "contabilita";
constexpr const char* Locale = "127.0.0.1";

/// A proxy on a port of four digits: PostgreSQL's driver cuts the list of two ports off after nine characters.
std::unique_ptr<ByteProxy> PassaggioCorto(const DatabaseServer& server) {
  constexpr int Prima = 2000;
  constexpr int Ultima = 9999;
  // Tests that run side by side begin at different places.
  for (int porta = Prima + ::getpid() % (Ultima - Prima); porta <= Ultima; ++porta) {
    try {
      return std::make_unique<ByteProxy>(server.Port(), server.Host(), porta);
    } catch (const std::system_error&) {
      continue;
    }
  }
  throw std::runtime_error("no port of four digits is free");
}

} // namespace

Coppia::Coppia(bool passaggi) : coppia_(ServerDirectory("pair")) {
  if (passaggi) {
    passaggi_.push_back(PassaggioCorto(coppia_.First()));
    passaggi_.push_back(PassaggioCorto(coppia_.Second()));
  }
}

std::unique_ptr<TestDatabase> Coppia::Apri(const Misura& misura, const Testi&) {
  coppia_.CreateDatabase(Base, FileText(SourcePath("demo/schema.sql")) + Righe(misura) + Sorveglianza());
  auto database = std::make_unique<DatabaseWithSource>();
  database->user = coppia_.First().User();
  database->password = coppia_.First().Password();
  database->schema = "public";
  if (passaggi_.empty()) {
    database->source = coppia_.AddSource(Base);
    return database;
  }
  OdbcConfiguration::Settings voci{
      {PostgresNames.host, std::string(Locale) + "," + Locale},
      {PostgresNames.port, std::to_string(passaggi_[0]->Port()) + "," + std::to_string(passaggi_[1]->Port())},
      {PostgresNames.database, Base}};
  const auto altre = WrittenTo();
  voci.insert(voci.end(), altre.begin(), altre.end());
  database->source = OdbcConfiguration::Instance().AddSource(PostgresNames.kind, PostgresNames.library, voci);
  return database;
}

void Coppia::Perdi() {
  coppia_.First().KillAll();
  if (!passaggi_.empty()) {
    passaggi_.at(attivo_)->Refuse(true);
  }
  coppia_.Promote();
  attivo_ = 1 - attivo_;
}

void Coppia::Ripara() {
  coppia_.Replace();
  if (!passaggi_.empty()) {
    passaggi_.at(1 - attivo_)->Refuse(false);
  }
}

TreNodi::TreNodi(bool passaggi) : nodi_(ServerDirectory("galera")) {
  for (std::size_t quale = 0; passaggi && quale < GaleraCluster::Size; ++quale) {
    passaggi_.push_back(std::make_unique<ByteProxy>(nodi_.Node(quale).Port()));
  }
}

std::unique_ptr<TestDatabase> TreNodi::Apri(const Misura& misura, const Testi& utenti) {
  nodi_.CreateDatabase(Base, FileText(SourcePath("demo/schema.sql")) + Righe(misura));
  std::string passaggi;
  for (const auto& passaggio : passaggi_) {
    passaggi += (passaggi.empty() ? "" : ",") + (Locale + (":" + std::to_string(passaggio->Port())));
  }
  auto database = std::make_unique<DatabaseWithSource>();
  database->source = OdbcConfiguration::Instance().AddSource(
      MariaDbNames.kind, MariaDbNames.library,
      {{"SERVER", passaggi.empty() ? nodi_.Hosts() : passaggi}, {"DATABASE", Base}});
  database->user = nodi_.Node(0).User();
  database->password = nodi_.Node(0).Password();
  database->schema = Base;
  ado::Connection connessione;
  connessione.ConnectionString = database->ConnectionText();
  connessione.Open();
  for (const std::string& istruzione : SorveglianzaMariaDb()) {
    connessione.Execute(istruzione);
  }
  for (const std::string& utente : utenti) {
    connessione.Execute("GRANT ALL ON *.* TO " + utente + "@'%' IDENTIFIED BY '" + database->password + "'");
  }
  return database;
}

void TreNodi::Perdi() {
  nodi_.Node(0).Kill();
  if (!passaggi_.empty()) {
    passaggi_[0]->Refuse(true);
  }
  perduto_ = true;
  Await("the others go on", [&] { return nodi_.Node(1).Sees(2) && nodi_.Node(2).Sees(2); });
}

void TreNodi::Ripara() {
  nodi_.Replace(0);
  if (!passaggi_.empty()) {
    passaggi_[0]->LeadTo(nodi_.Node(0).Port());
    passaggi_[0]->Refuse(false);
  }
  perduto_ = false;
}

void DaiNomi(std::vector<Conferma>& conferme, const std::vector<Eseguito>& comandi) {
  for (Conferma& conferma : conferme) {
    const auto suo = std::find_if(comandi.begin(), comandi.end(), [&](const Eseguito& comando) {
      return comando.nome.starts_with(conferma.comando + ".") && comando.inizio <= conferma.ora &&
             conferma.ora <= comando.fine;
    });
    if (suo != comandi.end()) {
      conferma.comando = suo->nome;
    }
  }
}

} // namespace lumoscad::test
