#pragma once

#include "support/Files.hpp"

#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad::ado {
class Connection;
}

namespace lumoscad::test {

class SshServer;

using Righe = std::vector<std::string>;

/// Every row of every table, as text; NULL and the empty text are told apart.
using Fotografia = std::map<std::string, Righe>;

/// The result of a query over the data source of a connection text, its columns separated by "|".
[[nodiscard]] Righe Interroga(const std::string& connessione, const std::string& sql);

[[nodiscard]] Fotografia Fotografa(const std::string& connessione);
/// The same over an open connection.
[[nodiscard]] Fotografia Fotografa(ado::Connection& connection);

/// The rows that only one of two photographs has: "- TABLE row" and "+ TABLE row".
[[nodiscard]] Righe Differenze(const Fotografia& prima, const Fotografia& dopo);

/// The names of the files in a directory, in order.
[[nodiscard]] Righe Contenuto(const std::filesystem::path& cartella);

void Scrivi(const std::filesystem::path& file, std::string_view contenuto);
/// Writes a shell script that can be run.
void ScriviProgramma(const std::filesystem::path& file, std::string_view corpo);

/// How the component reaches the demonstration's host: as a directory, or over the network.
enum class Trasporto { Cartella, Ssh };

/// The name of a transport, as a test's parameter is shown.
[[nodiscard]] std::string NomeTrasporto(Trasporto trasporto);

/// A demonstration in a directory of its own below the build directory: about 400 instalments around 5 March 2026 in
/// SQLite, the host directory with the back end, the settings. It goes with the object. Over SSH the host is a server
/// of its own, whose root is the host directory.
class Dimostrazione {
 public:
  /// The day around which the due dates fall.
  static constexpr std::string_view Giorno = "2026-03-05";

  explicit Dimostrazione(Trasporto trasporto = Trasporto::Cartella);
  Dimostrazione(const Dimostrazione&) = delete;
  Dimostrazione& operator=(const Dimostrazione&) = delete;
  ~Dimostrazione();

  [[nodiscard]] std::filesystem::path Base() const { return cartella_.Path(); }
  [[nodiscard]] std::filesystem::path BaseDati() const { return Base() / "contabilita.sqlite"; }
  [[nodiscard]] std::filesystem::path Host() const { return Base() / "host"; }
  [[nodiscard]] std::filesystem::path Tmp() const { return Base() / "host/tmp"; }
  [[nodiscard]] std::filesystem::path VB0001() const { return Base() / "host/programmi/VB0001"; }
  [[nodiscard]] std::filesystem::path Registro() const { return Base() / "host/registro/VB0001.log"; }
  [[nodiscard]] std::filesystem::path Locale() const { return Base() / "locale"; }
  /// The host's address for the command line.
  [[nodiscard]] std::string Indirizzo() const;
  /// The host's server, where there is one.
  [[nodiscard]] SshServer& Ssh() const { return *ssh_; }
  /// The settings of a component that is to reach the host, "NAME=value"; over SSH through another port of the
  /// loopback address, where one is given. A program that is started with ambiente.sh has them already.
  [[nodiscard]] std::vector<std::string> Ambiente(int porta = 0) const;
  /// Over SSH, the further options of the subsystem that plays the host's root (see sftp_radice).
  void ConfiguraRadice(const std::string& opzioni) const;
  /// The database's data source and connection text in the test's own ODBC configuration.
  [[nodiscard]] const std::string& Sorgente() const noexcept { return sorgente_; }
  [[nodiscard]] std::string Connessione() const;

  [[nodiscard]] Fotografia Stato() const { return Fotografa(Connessione()); }
  /// The photograph that the database would give after `istruzioni`, which run on a copy.
  [[nodiscard]] Fotografia StatoDopo(std::string_view istruzioni) const;

 private:
  void AvviaSsh();

  TemporaryFolder cartella_;
  std::string sorgente_;
  std::unique_ptr<SshServer> ssh_;
};

} // namespace lumoscad::test
