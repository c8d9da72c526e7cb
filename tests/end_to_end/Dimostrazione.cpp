#include "Dimostrazione.hpp"

#include "Figlio.hpp"
#include "platform/ado/Ado.hpp"
#include "support/OdbcConfiguration.hpp"
#include "support/Paths.hpp"
#include "support/SshServer.hpp"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>

namespace lumoscad::test {

namespace fs = std::filesystem;

namespace {

constexpr std::array<std::pair<const char*, const char*>, 6> Tabelle{{{"AZIENDELINEE", "AZIENDALINEAKEY"},
                                                                      {"CONTOCONTABILE", "CONTOCONTABILE_KEY"},
                                                                      {"PARTITACONTABILE", "PARTITACONTABILEKEY"},
                                                                      {"MOVIMENTOCONTABILE", "MOVIMENTOKEY"},
                                                                      {"EVENTOCONTABILE", "EVENTOCONTABILEKEY"},
                                                                      {"ERRORE", "ERROREKEY"}}};

std::string AggiungiSorgente(const fs::path& file) {
  return test::OdbcConfiguration::Instance().AddSource("dimostrazione", "libsqlite3odbc.so",
                                                       {{"Database", file.string()}, {"Timeout", "5000"}});
}

/// A server whose root is the directory `radice`; `opzioni` are those of the subsystem that makes it so.
SshServer::Options OpzioniSsh(const std::string& radice, const std::string& opzioni) {
  SshServer::Options nuove;
  nuove.environment = {"NEXARO_RADICE=" + radice};
  nuove.sftp = "'" + test::ProgramPath("sftp_radice").string() + "' " + opzioni + " '" + radice + "'";
  return nuove;
}

void Apri(ado::Connection& connection, const std::string& connessione) {
  connection.ConnectionString = connessione;
  connection.Open();
}

Righe Interroga(ado::Connection& connection, const std::string& sql) {
  ado::Command comando;
  comando.ActiveConnection = &connection;
  comando.CommandText = sql;
  ado::Recordset insieme = comando.Execute();
  Righe righe;
  for (; !insieme.Eof(); insieme.MoveNext()) {
    std::string riga;
    for (std::size_t colonna = 0; colonna < insieme.ColumnCount(); ++colonna) {
      riga += colonna == 0 ? "" : "|";
      riga += insieme.ValueAt(colonna).value_or("<NULL>");
    }
    righe.push_back(std::move(riga));
  }
  return righe;
}

} // namespace

Righe Interroga(const std::string& connessione, const std::string& sql) {
  ado::Connection connection;
  Apri(connection, connessione);
  return Interroga(connection, sql);
}

Fotografia Fotografa(const std::string& connessione) {
  ado::Connection connection;
  Apri(connection, connessione);
  return Fotografa(connection);
}

Fotografia Fotografa(ado::Connection& connection) {
  Fotografia foto;
  for (const auto& [tabella, chiave] : Tabelle) {
    foto[tabella] = Interroga(connection, std::string("SELECT * FROM ") + tabella + " ORDER BY " + chiave);
  }
  return foto;
}

Righe Differenze(const Fotografia& prima, const Fotografia& dopo) {
  Righe differenze;
  const auto solo = [&differenze](const std::string& segno, Righe queste, Righe quelle) {
    std::sort(queste.begin(), queste.end());
    std::sort(quelle.begin(), quelle.end());
    Righe sole;
    std::set_difference(queste.begin(), queste.end(), quelle.begin(), quelle.end(), std::back_inserter(sole));
    for (const auto& riga : sole) {
      differenze.push_back(segno + riga);
    }
  };
  for (const auto& [tabella, chiave] : Tabelle) {
    if (prima.at(tabella) == dopo.at(tabella)) {
      continue;
    }
    const std::string nome = std::string(" ") + tabella + " ";
    solo("-" + nome, prima.at(tabella), dopo.at(tabella));
    solo("+" + nome, dopo.at(tabella), prima.at(tabella));
  }
  return differenze;
}

Righe Contenuto(const fs::path& cartella) {
  Righe nomi;
  for (const auto& voce : fs::directory_iterator(cartella)) {
    nomi.push_back(voce.path().filename().string());
  }
  std::sort(nomi.begin(), nomi.end());
  return nomi;
}

void Scrivi(const fs::path& file, std::string_view contenuto) {
  std::ofstream(file, std::ios::binary) << contenuto;
}

void ScriviProgramma(const fs::path& file, std::string_view corpo) {
  // A new file: the one that stands there may be a program in use.
  fs::remove(file);
  Scrivi(file, "#!/bin/sh\n" + std::string(corpo) + "\n");
  fs::permissions(file, fs::perms::owner_all);
}

std::string NomeTrasporto(Trasporto trasporto) {
  return trasporto == Trasporto::Ssh ? "ssh" : "cartella";
}

Dimostrazione::Dimostrazione(Trasporto trasporto) {
  if (!Comando({test::SourcePath("demo/prepara.sh").string(), Base().string()},
               {"LUMOSCAD_BIN=" + (test::BuildFolder() / "bin").string(), "LUMOSCAD_DATA=" + std::string(Giorno)})) {
    throw std::runtime_error("the demonstration cannot be prepared");
  }
  sorgente_ = AggiungiSorgente(BaseDati());
  if (trasporto == Trasporto::Ssh) {
    AvviaSsh();
  }
}

Dimostrazione::~Dimostrazione() {
  ssh_.reset();
  test::OdbcConfiguration::Instance().RemoveSource(sorgente_);
  std::error_code ignorato;
  fs::permissions(Tmp(), fs::perms::owner_all, ignorato);
  fs::remove_all(Base(), ignorato);
}

void Dimostrazione::AvviaSsh() {
  ssh_ = std::make_unique<SshServer>(Base() / "ssh", OpzioniSsh(Host().string(), ""));
  std::ofstream file(Base() / "ambiente.sh", std::ios::app);
  for (const auto& voce : Ambiente()) {
    const auto segno = voce.find('=');
    file << "export " << voce.substr(0, segno + 1) << "'" << voce.substr(segno + 1) << "'\n";
  }
}

void Dimostrazione::ConfiguraRadice(const std::string& opzioni) const {
  ssh_->Change(OpzioniSsh(Host().string(), opzioni));
}

std::string Dimostrazione::Indirizzo() const {
  return ssh_ ? SshServer::Address() : "10.0.0.1";
}

std::vector<std::string> Dimostrazione::Ambiente(int porta) const {
  std::vector<std::string> ambiente{"NEXARO_POSTAZIONE=T01", "NEXARO_CARTELLA_LOCALE=" + Locale().string()};
  const auto collegamento =
      ssh_ ? ssh_->Environment(porta)
           : std::vector<std::string>{"NEXARO_TRASPORTO=cartella", "NEXARO_RADICE=" + Host().string()};
  ambiente.insert(ambiente.end(), collegamento.begin(), collegamento.end());
  if (ssh_) {
    ambiente.push_back("NEXARO_PROGRAMMI=" + (Host() / "programmi").string());
  }
  return ambiente;
}

std::string Dimostrazione::Connessione() const {
  return test::ConnectionText(sorgente_);
}

Fotografia Dimostrazione::StatoDopo(std::string_view istruzioni) const {
  const fs::path copia = Base() / "attesa.sqlite";
  fs::copy_file(BaseDati(), copia, fs::copy_options::overwrite_existing);
  const auto connessione = test::ConnectionText(AggiungiSorgente(copia));
  test::RunScript(connessione, istruzioni);
  return Fotografa(connessione);
}

} // namespace lumoscad::test
