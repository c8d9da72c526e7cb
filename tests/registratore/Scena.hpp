#pragma once

#include "AscoltoOdbc.hpp"
#include "DesktopRegistrato.hpp"
#include "Dimostrazione.hpp"
#include "HostRegistrante.hpp"
#include "Registro.hpp"

#include "common/Stato.hpp"
#include "platform/Services.hpp"
#include "support/DatabaseContext.hpp"
#include "support/KeptConnection.hpp"
#include "support/TestBench.hpp"

#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

namespace lumoscad::test {

/// One play: the demonstration's data in a new database, its host as `prepara.sh` leaves it, fresh module-level values,
/// the clock at 5 March 2026, 14:07:09, and everything written into a record.
class Scena {
 public:
  /// `host` is left as it was found; its own database is not used.
  Scena(std::string_view genere, Registro& registro, const Dimostrazione& host);
  Scena(const Scena&) = delete;
  Scena& operator=(const Scena&) = delete;
  ~Scena();

  /// Runs a command line as it is.
  std::string EseguiCosi(const std::string& comando);
  /// Runs a command line with the host, the company and the database of the play.
  std::string Esegui(const std::string& comando);
  [[nodiscard]] std::string OpzioniHost() const { return "-H " + demo.Indirizzo() + " -D 01"; }
  [[nodiscard]] std::string OpzioniDatabase() const;
  /// What the person does in the next list window.
  void Recita(ScriptedDesktop::Script copione) { recitato.scripts.push_back(std::move(copione)); }
  /// Runs `azione` as a command's inside is run: recorded, its failure too.
  void Registra(const std::string& titolo, const std::function<std::string()>& azione);
  void Annota(const std::string& riga) { registro_.Annota(riga); }
  void AnnotaUnaVolta(const std::vector<std::string>& righe) { registro_.AnnotaUnaVolta(righe); }
  /// True on a database that is a server.
  [[nodiscard]] bool SuServer() const { return !base_->user.empty(); }
  /// Makes every UPDATE of a row of `tabella` that meets `condizione` fail and say `testo`.
  void Rifiuta(const std::string& tabella, const std::string& condizione, const std::string& testo);
  /// Another terminal's statement: not recorded as the component's.
  void Altrove(const std::string& sql);
  /// The same of one statement with others inside.
  void AltroveIntera(const std::string& sql);
  /// Replaces the host's program by a shell script.
  void Programma(std::string_view corpo) const { ScriviProgramma(demo.VB0001(), corpo); }

  const Dimostrazione& demo;
  ScriptedDesktop recitato;
  /// The desktop that is shown; the scripted one unless a play brings its own before its first command. None: there is
  /// no screen.
  Desktop* desktop = &recitato;

 private:
  using Foto = std::shared_ptr<const Fotografia>;

  void ApriServizi();
  /// The database as it is, the same photograph as long as nobody writes; nothing while a table is away.
  [[nodiscard]] Foto FotografaBase();
  void AnnotaErroreStandard(const std::string& scritto);
  void AnnotaFine(const Foto& prima);

  Registro& registro_;
  test::DatabaseContext& contesto_;
  std::unique_ptr<test::TestDatabase> base_;
  std::optional<KeptConnection> fotografo_;
  Foto foto_;
  std::string segno_; ///< the database's mark when the photograph was taken
  std::unique_ptr<DesktopRegistrato> registrato_;
  std::unique_ptr<nexaro::HostLink> host_;
  std::unique_ptr<nexaro::Environment> ambiente_;
  int rifiuti_ = 0;
  StatoSostituito stato_;
  ReplacedServices servizi_;
};

/// A play under its title.
struct Scenetta {
  std::string titolo;
  std::function<void(Scena&)> azione;
};

/// The plays of one page of the record.
struct Pagina {
  const char* nome;
  std::vector<Scenetta> (*recite)();
  Trasporto trasporto = Trasporto::Cartella;

  friend void PrintTo(const Pagina& pagina, std::ostream* uscita) { *uscita << pagina.nome; }
};

} // namespace lumoscad::test
