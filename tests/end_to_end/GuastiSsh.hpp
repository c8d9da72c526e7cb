#pragma once

#include "Guasti.hpp"
#include "support/ByteProxy.hpp"
#include "support/SshServer.hpp"

#include <cstdlib>
#include <functional>
#include <future>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad::test {

/// The credits command over SSH, through a proxy. Each case is one line of the table of faults, which is printed at
/// the end and written to the file guasti_ssh.md of the build folder.
class SshFaults : public Guasti {
 protected:
  using Azione = ByteProxy::Action;

  SshFaults();
  void TearDown() override;

  /// Runs the command on the real back end; what it started, answered and left is taken down under the name `guasto`.
  void Prova(const std::string& guasto);
  /// The same with a shell script in the back end's place. It may call `vero`, the real back end, with its parameters.
  void ProvaCon(const std::string& guasto, std::string_view corpo);

  /// What the person was told holds every one of `parti`, in one box that reports a failure of the request.
  void VerificaErrore(const Righe& parti) const;
  /// The command failed and the database is as it was.
  void VerificaFallito() const;
  /// The command succeeded, and the database holds what the request asked for.
  void VerificaRiuscito() const;
  /// What the command has left in the host's directory.
  void VerificaRimasti(const Righe& nomi) const { EXPECT_EQ(Contenuto(demo.Tmp()), nomi); }
  /// How often the back end was started.
  void VerificaAvvii(std::size_t quanti) const;

  /// In the link's operation `operazione` the host's sftp subsystem is to stand still at a request (`ordine`, see
  /// sftp_radice); then `azione` is done.
  void Ferma(const std::string& operazione, const std::string& ordine, const std::function<void()>& azione);
  /// `azione` is done once the file `segnale` is there.
  void Agguato(const std::filesystem::path& segnale, std::function<void()> azione);
  /// Breaks the connection; with `perSempre` the host is not reached any more either.
  void Taglia(bool perSempre = false);

  std::unique_ptr<nexaro::HostLink> CreaHost() override;

  ByteProxy proxy;
  /// Called with the name of each operation of the link, before it is done.
  std::function<void(std::string_view operazione)> primaDi;
  Fotografia dopo; ///< the database that the request asks for
  std::string risultato;

  /// Sets how long the component waits for the host.
  static void LimitaAttesa(const char* secondi) { ::setenv("NEXARO_ATTESA", secondi, 1); }
  /// Long enough to log in on a busy machine.
  static constexpr const char* Breve = "3";

  // Names on the host: the lock's, and the request's before and after its rename.
  static inline const std::string Blocco = "VBCREDITI";
  static inline const std::string Parziale{Richiesta};
  static inline const std::string Completo = Parziale + ".dos";
  // Pieces of what the person reads.
  static inline const std::string QualeHost = " sull'host 127.0.0.1";
  static inline const std::string Ignoto = "L'esito sull'host non è noto: verificarlo prima di ripetere il comando.";
  static inline const std::string Programma = "Il programma VB0001" + QualeHost + " ";

 private:
  [[nodiscard]] std::string Anonimo(std::string testo) const;
  [[nodiscard]] std::string SullHost() const;
  [[nodiscard]] std::size_t Avvii() const;

  std::vector<std::future<bool>> agguati_;
};

} // namespace lumoscad::test
