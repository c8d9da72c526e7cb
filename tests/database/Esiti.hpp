#pragma once

#include "common/MsgAnnulla.hpp"
#include "platform/ado/Ado.hpp"
#include "support/ByteProxy.hpp"
#include "support/DatabaseContext.hpp"
#include "support/TestBench.hpp"

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad::test {

/// One of the procedures that repeat in the database what the host accepted, on the data of `DatiEsiti`.
struct ProceduraProvata {
  const char* nome;
  std::function<std::string(MsgAnnulla&)> esegui;
  std::string chiamato; ///< what the component calls that which it changes
  std::string oggetto;  ///< how the person's message must end
};

/// The three updates and the five behind the replies; each changes several rows.
[[nodiscard]] const std::vector<ProceduraProvata>& ProcedureProvate();
[[nodiscard]] const ProceduraProvata& TrovaProcedura(std::string_view nome);

/// A database of the accounting tables, which the running command reaches through a proxy where the database is a
/// server. Its own statements take the direct way and are not told to the services' listener.
class BaseEsiti {
 public:
  /// `altre` are further settings of the driver for the running command.
  explicit BaseEsiti(std::string_view genere, const test::OdbcConfiguration::Settings& altre = {});
  BaseEsiti(const BaseEsiti&) = delete;
  BaseEsiti& operator=(const BaseEsiti&) = delete;
  ~BaseEsiti();

  [[nodiscard]] const std::string& Genere() const noexcept { return genere_; }
  [[nodiscard]] bool SuPostgres() const { return genere_ == "postgres"; }
  [[nodiscard]] bool SuMariaDb() const { return genere_ == "mariadb"; }
  [[nodiscard]] ByteProxy& Proxy() { return *proxy_; }
  [[nodiscard]] int Connessioni() const { return proxy_ ? proxy_->Connections() : 0; }
  [[nodiscard]] const std::string& Opzioni() const noexcept { return opzioni_; }
  /// The connection text of the way through the proxy.
  [[nodiscard]] const std::string& TestoConnessione() const noexcept { return testo_; }
  /// Part of the text by which the component asks who is at the other end.
  [[nodiscard]] std::string_view Domanda() const { return SuPostgres() ? "SELECT pg_" : "SELECT CONNECTION_ID"; }
  /// The bytes by which a COMMIT begins on its way to the server. MariaDB's driver says "SET AUTOCOMMIT" before.
  [[nodiscard]] std::string_view Conferma() const {
    return SuPostgres() ? "COMMIT"
                        : "\x03"
                          "COMMIT";
  }
  void Esegui(std::string_view sql) const;
  /// Opens a further connection, by the direct way: another terminal.
  [[nodiscard]] std::unique_ptr<ado::Connection> AltroTerminale() const;
  /// The same without the savepoints that PostgreSQL's driver sets around every statement.
  [[nodiscard]] std::unique_ptr<ado::Connection> AltroTerminaleSenzaSavepoint() const;
  /// Every row of every table.
  [[nodiscard]] std::vector<std::string> Tutto() const;
  /// The one value that a query gives.
  [[nodiscard]] std::string Valore(std::string_view sql) const;
  /// Puts the data back as they were at first.
  void Ripristina() const;
  /// Waits until the server has no session on this database left but this object's; false after a minute.
  [[nodiscard]] bool SenzaAltreSessioni() const;
  /// Waits until a session of the server waits for another's lock; false after a minute. It asks over a connection
  /// of its own, so that any thread may wait.
  [[nodiscard]] bool QualcunoAspetta() const;
  /// Opens the direct way anew, after the server was away.
  void Riapri();

 private:
  /// A data source of PostgreSQL's on this database; `porta` is that of a proxy, 0 for none.
  [[nodiscard]] std::string SorgentePostgres(int porta, const test::OdbcConfiguration::Settings& altre) const;
  [[nodiscard]] static std::unique_ptr<ado::Connection> Apri(std::string testo);
  [[nodiscard]] static bool Entro(const std::function<bool()>& condizione);

  std::string genere_;
  std::unique_ptr<test::TestDatabase> base_;
  std::unique_ptr<ByteProxy> proxy_;
  std::unique_ptr<ado::Connection> diretta_;
  std::string sorgente_;
  std::string opzioni_;
  std::string testo_;
};

/// The setting of the statements' time limit, for the life of the object.
class LimiteIstruzioni {
 public:
  explicit LimiteIstruzioni(const char* secondi);
  LimiteIstruzioni(const LimiteIstruzioni&) = delete;
  LimiteIstruzioni& operator=(const LimiteIstruzioni&) = delete;
  ~LimiteIstruzioni();
};

/// The working place of a test: scripted services, and the running command's options lead to `base`.
class PostoEsiti {
 public:
  explicit PostoEsiti(std::string_view genere, const test::OdbcConfiguration::Settings& altre = {});

  /// Runs a procedure after the host's yes; what the person reads of its failure is in `msg` afterwards.
  std::string Esegui(const ProceduraProvata& procedura);
  std::string Esegui(std::string_view nome) { return Esegui(TrovaProcedura(nome)); }
  /// Runs a procedure while a fault lasts, which is to fail and to leave the database as it was; `causa` must stand in
  /// its message. The run goes into the register as `guasto`.
  void FallisceELasciaTutto(std::string_view nome, const char* guasto, const std::string& causa);
  /// Calls `azione` just before the statement number `quale` of the coming procedure is sent.
  void PrimaDellIstruzione(int quale, std::function<void()> azione);

  TestBench banco;
  BaseEsiti base;
  MsgAnnulla msg;
  int istruzioni = 0; ///< statements that the last procedure sent
  double secondi = 0; ///< that it took
  /// Whether it connected anew to find out what became of its transaction; not told of a database that is a file.
  bool ricercato = false;

 private:
  int quale_ = 0;
  std::function<void()> azione_;
};

} // namespace lumoscad::test
