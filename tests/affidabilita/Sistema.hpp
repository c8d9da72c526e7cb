#pragma once

#include "platform/ado/Ado.hpp"
#include "support/DatabaseContext.hpp"
#include "support/SshServer.hpp"

#include <filesystem>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <sys/types.h>
#include <vector>

namespace lumoscad::test {

using Testi = std::vector<std::string>;

/// A program that runs beside the test together with all that it starts: the end of the last of them is waited for,
/// also of what the program left behind when it was killed. It ends with the object.
class Famiglia {
 public:
  Famiglia(const Testi& argomenti, const Testi& ambiente, const std::filesystem::path& ingresso,
           const std::filesystem::path& errori);
  Famiglia(const Famiglia&) = delete;
  Famiglia& operator=(const Famiglia&) = delete;
  Famiglia(Famiglia&& altra) noexcept;
  Famiglia& operator=(Famiglia&&) = delete;
  ~Famiglia();

  /// The program's exit status, 128 and the signal's number where one killed it.
  int Attendi();
  /// The same without waiting; nothing while one of them is left.
  [[nodiscard]] std::optional<int> Esito();
  /// Kills the program, and nothing that it has started; a program that has ended stays as it is.
  void Uccidi() const;

 private:
  pid_t guardiano_ = -1;
  std::optional<int> esito_;
};

/// The world of several terminals: a database, a directory that plays the host with its back end, a local directory for
/// each terminal. In a directory below the build folder, which goes with the object.
class Sistema {
 public:
  /// `genere` is the kind of database; `script` fills it after the schema.
  Sistema(std::string_view genere, const std::string& script);
  /// With a database that is there already.
  Sistema(std::string_view genere, std::unique_ptr<test::TestDatabase> database);
  Sistema(const Sistema&) = delete;
  Sistema& operator=(const Sistema&) = delete;
  ~Sistema();

  /// From here on the host is reached by a server of SSH that serves its directory, from these terminals or from all.
  SshServer& UsaSsh(std::set<std::string> postazioni = {});

  [[nodiscard]] std::filesystem::path Base() const { return base_; }
  [[nodiscard]] std::filesystem::path Host() const { return base_ / "host"; }
  [[nodiscard]] std::filesystem::path Tmp() const { return base_ / "host/tmp"; }
  [[nodiscard]] std::filesystem::path RegistroHost() const { return base_ / "host/registro/VB0001.log"; }
  [[nodiscard]] std::filesystem::path Locale(const std::string& postazione) const { return base_ / postazione; }
  [[nodiscard]] std::filesystem::path Registro(const std::string& postazione) const;
  [[nodiscard]] std::filesystem::path Passi(const std::string& postazione) const;
  /// What a terminal has written to its standard error.
  [[nodiscard]] std::filesystem::path Errori(const std::string& postazione) const;

  /// Opens the test's own connection anew, as after the loss of a server, and runs `istruzione` on it.
  void Ricollega(std::string_view istruzione = {});
  /// Runs an SQL script in one transaction.
  void Esegui(std::string_view script);
  /// The rows of a query, their columns separated by `separatore`.
  [[nodiscard]] Testi Interroga(const std::string& sql, char separatore = '|');
  /// Waits until the database has no session but the test's own, and the host none with its programs; false when one is
  /// left after thirty seconds.
  [[nodiscard]] bool SenzaSessioni();

  /// Waits until a file is there; false when it is not after thirty seconds.
  [[nodiscard]] static bool Compare(const std::filesystem::path& file);

  struct Lancio {
    std::string postazione;
    Testi comandi;               ///< each with the script of its screens behind a tab
    bool contaPassi = false;     ///< the names of the steps go to the file `Passi`
    long morte = 0;              ///< the step to die at, 0 for none
    bool amministratore = false; ///< a lock that a failed command keeps is removed after it
    Testi ambiente{};            ///< further "NAME=value" of its environment
    std::string utente{};        ///< the terminal's own user of the database; empty: everybody's
  };
  [[nodiscard]] Famiglia Avvia(const Lancio& lancio) const;
  /// Runs the program at a terminal as its administrator would, with the database's options on the standard input; as a
  /// user of the database, with further variables and an answer to what it asks, where they are given. Returns its exit
  /// status, a line end and what it says.
  [[nodiscard]] std::string Amministra(const std::string& postazione, const Testi& argomenti,
                                       const std::string& utente = {}, const Testi& ambiente = {},
                                       const std::string& risposta = {}) const;

 private:
  /// The database's options in a private file: the password stands in no list of processes.
  void ScriviOpzioni(const std::filesystem::path& file, const std::string& utente) const;
  [[nodiscard]] Testi Ambiente(const std::string& postazione) const;
  std::string genere_;
  std::filesystem::path base_;
  std::unique_ptr<SshServer> ssh_;
  std::set<std::string> conSsh_; ///< the terminals that use it; none: all
  std::unique_ptr<test::TestDatabase> database_;
  std::unique_ptr<ado::Connection> connessione_;
};

/// The names of the files in a directory, in order.
[[nodiscard]] Testi Contenuto(const std::filesystem::path& cartella);
/// The lines of a file, none where there is no file.
[[nodiscard]] Testi LeggiRighe(const std::filesystem::path& file);

} // namespace lumoscad::test
