#pragma once

#include "Contabilita.hpp"
#include "Registro.hpp"
#include "Sistema.hpp"
#include "Storia.hpp"
#include "support/ByteProxy.hpp"
#include "support/GaleraCluster.hpp"
#include "support/PostgresPair.hpp"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad::test {

/// Several servers that play the database of a `Sistema`, with the accounting of `Misura` and its log of changes.
class Gruppo {
 public:
  Gruppo() = default;
  Gruppo(const Gruppo&) = delete;
  Gruppo& operator=(const Gruppo&) = delete;
  virtual ~Gruppo() = default;

  /// The database's kind, as `Sistema` names it.
  [[nodiscard]] virtual const char* Genere() const = 0;
  /// The database, for these users besides everybody's own.
  [[nodiscard]] virtual std::unique_ptr<TestDatabase> Apri(const Misura& misura, const Testi& utenti) = 0;
  /// Loses the server that is worked with; returns when the others serve.
  virtual void Perdi() = 0;
  /// Puts another in the place of the lost one; returns when all serve.
  virtual void Ripara() = 0;
  /// The connection that reads what came of it.
  virtual void Ricollega(Sistema& sistema) = 0;
  /// True where the log of changes knows a transaction by its user alone.
  [[nodiscard]] virtual bool PerUtente() const = 0;
  /// What the driver sends for a COMMIT.
  [[nodiscard]] virtual std::string_view Conferma() const = 0;
  /// What stands in front of the server that is worked with; only where the servers are reached so.
  [[nodiscard]] virtual ByteProxy& Passaggio() = 0;
};

/// A primary and its synchronous standby, which is promoted.
class Coppia final : public Gruppo {
 public:
  /// With `passaggi` a proxy stands in front of each server.
  explicit Coppia(bool passaggi = false);

  [[nodiscard]] const char* Genere() const override { return "postgres"; }
  [[nodiscard]] std::unique_ptr<TestDatabase> Apri(const Misura& misura, const Testi& utenti) override;
  void Perdi() override;
  void Ripara() override;
  void Ricollega(Sistema& sistema) override { sistema.Ricollega(); }
  [[nodiscard]] bool PerUtente() const override { return false; }
  [[nodiscard]] std::string_view Conferma() const override { return "COMMIT"; }
  [[nodiscard]] ByteProxy& Passaggio() override { return *passaggi_.at(attivo_); }

 private:
  PostgresPair coppia_;
  std::vector<std::unique_ptr<ByteProxy>> passaggi_; ///< by the servers' addresses
  std::size_t attivo_ = 0;
};

/// Three Galera nodes; the first that is there is worked with.
class TreNodi final : public Gruppo {
 public:
  explicit TreNodi(bool passaggi = false);

  [[nodiscard]] const char* Genere() const override { return "mariadb"; }
  [[nodiscard]] std::unique_ptr<TestDatabase> Apri(const Misura& misura, const Testi& utenti) override;
  void Perdi() override;
  void Ripara() override;
  void Ricollega(Sistema& sistema) override { sistema.Ricollega("SET SESSION wsrep_sync_wait=1"); }
  [[nodiscard]] bool PerUtente() const override { return true; }
  [[nodiscard]] std::string_view Conferma() const override {
    return "\x03"
           "COMMIT";
  }
  [[nodiscard]] ByteProxy& Passaggio() override { return *passaggi_.at(perduto_ ? 1 : 0); }

 private:
  GaleraCluster nodi_;
  std::vector<std::unique_ptr<ByteProxy>> passaggi_; ///< by the nodes' numbers
  bool perduto_ = false;
};

/// Gives a transaction that names its user alone the name of the command that was at work there then.
void DaiNomi(std::vector<Conferma>& conferme, const std::vector<Eseguito>& comandi);

} // namespace lumoscad::test
