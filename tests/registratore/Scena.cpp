#include "Scena.hpp"

#include "Figlio.hpp"
#include "lumoscad/LumoScadenze.hpp"
#include "platform/RuntimeError.hpp"
#include "platform/ado/Ado.hpp"
#include "platform/nexaro/Nexaro.hpp"
#include "support/OdbcConfiguration.hpp"
#include "support/Paths.hpp"

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <stdexcept>

namespace lumoscad::test {
namespace {

namespace fs = std::filesystem;

constexpr const char* Postazione = "Q7Z";

// What changes with any row: photographs are dear, and most commands change none. SQLite counts the changes of others
// for each connection; a server sums its rows up.
constexpr const char* SegnoDelFile = "PRAGMA data_version";
constexpr const char* SegnoDelServer =
    "SELECT MD5(STRING_AGG(RIGA,',' ORDER BY RIGA)) FROM (SELECT 'A'||T::TEXT AS RIGA FROM AZIENDELINEE T UNION ALL "
    "SELECT 'C'||T::TEXT FROM CONTOCONTABILE T UNION ALL SELECT 'P'||T::TEXT FROM PARTITACONTABILE T UNION ALL SELECT "
    "'M'||T::TEXT FROM MOVIMENTOCONTABILE T UNION ALL SELECT 'E'||T::TEXT FROM EVENTOCONTABILE T UNION ALL SELECT "
    "'X'||T::TEXT FROM ERRORE T) TUTTE";

/// The demonstration's tables and rows, and what the commands without a screen work on.
const std::string& DatiDellaDimostrazione() {
  static const std::string Script = [] {
    auto dati = Comando({test::ProgramPath("lumoscad-genera").string(), std::string(Dimostrazione::Giorno), "400"})
                    .value_or("");
    // The script runs in a transaction of its own.
    if (!dati.starts_with("BEGIN;\n") || !dati.ends_with("COMMIT;")) {
      throw std::runtime_error("no demonstration data");
    }
    dati = dati.substr(7, dati.size() - 14);
    return FileText(test::SourcePath("demo/schema.sql")) + dati + FileText(test::SourcePath("demo/comandi.sql"));
  }();
  return Script;
}

void Svuota(const fs::path& cartella) {
  for (const auto& voce : fs::directory_iterator(cartella)) {
    fs::remove_all(voce.path());
  }
}

} // namespace

Scena::Scena(std::string_view genere, Registro& registro, const Dimostrazione& host)
    : demo(host), registro_(registro), contesto_(test::databaseContext(genere)), servizi_(Services{}) {
  base_ = contesto_.Create(DatiDellaDimostrazione());
  if (genere == "postgres") {
    // The rows of a list without an order come as the plan has them, and the plan follows what the server knows.
    test::RunScript(base_->ConnectionText(), "ANALYZE AZIENDELINEE; ANALYZE CONTOCONTABILE; ANALYZE PARTITACONTABILE; "
                                             "ANALYZE MOVIMENTOCONTABILE; ANALYZE EVENTOCONTABILE; ANALYZE ERRORE");
  }
  fs::rename(demo.VB0001(), demo.VB0001().string() + ".vero");
  fs::copy_file(demo.VB0001().string() + ".vero", demo.VB0001());
  for (const auto& voce : demo.Ambiente()) {
    const auto segno = voce.find('=');
    ::setenv(voce.substr(0, segno).c_str(), voce.substr(segno + 1).c_str(), 1);
  }
  ::setenv("NEXARO_POSTAZIONE", Postazione, 1);
  ::unsetenv("NEXARO_ATTESA");
  registro_.Maschera(demo.Base().string(), "{demo}");
  registro_.Maschera(Postazione, "{postazione}");
  registro_.Maschera(base_->source, "{sorgente}");
  registro_.Maschera(base_->password, "{parola}");
  if (genere != "sqlite") {
    registro_.Maschera(base_->schema, "{schema}");
  }
  ApriServizi();
}

Scena::~Scena() {
  fs::rename(demo.VB0001().string() + ".vero", demo.VB0001());
  fs::remove(demo.Host() / "conti_bloccati");
  Svuota(demo.Tmp());
  Svuota(demo.Locale());
  Svuota(demo.Registro().parent_path());
}

void Scena::ApriServizi() {
  ActiveServices() = {[this]() -> Desktop& {
                        if (desktop == nullptr) {
                          throw RuntimeError(errors::Driver, "Nessuno schermo raggiungibile.");
                        }
                        if (!registrato_) {
                          registrato_ = std::make_unique<DesktopRegistrato>(registro_, *desktop);
                        }
                        return *registrato_;
                      },
                      [this]() -> nexaro::HostLink& {
                        if (!host_) {
                          host_ =
                              std::make_unique<HostRegistrante>(registro_, nexaro::CreateHostLink(), demo.Registro());
                        }
                        return *host_;
                      },
                      [this]() -> const nexaro::Environment& {
                        if (!ambiente_) {
                          ambiente_ = std::make_unique<nexaro::Environment>(nexaro::ReadEnvironment());
                        }
                        return *ambiente_;
                      },
                      [] { return DateTime{2026, 3, 5, 14, 7, 9}; },
                      [](std::string_view istruzione) { AscoltoOdbc::Annunciata(istruzione); }};
}

std::string Scena::OpzioniDatabase() const {
  std::string opzioni = "-DB2SOURCE " + base_->source;
  if (!base_->user.empty()) {
    opzioni += " -DB2USER " + base_->user + " -DB2PASS " + base_->password;
  }
  return opzioni + " -DB2SCHEMA " + base_->schema;
}

std::string Scena::Esegui(const std::string& comando) {
  return EseguiCosi(comando + " " + OpzioniHost() + " " + OpzioniDatabase());
}

std::string Scena::EseguiCosi(const std::string& comando) {
  std::string risultato;
  Registra("comando " + Cita(comando), [&] { return risultato = LumoScadenze().EseguiLumoScad(comando); });
  return risultato;
}

void Scena::Registra(const std::string& titolo, const std::function<std::string()>& azione) {
  const auto prima = FotografaBase();
  registro_.Annota(titolo);
  testing::internal::CaptureStderr();
  {
    const AscoltoOdbc ascolto(registro_);
    try {
      const auto risultato = azione();
      registro_.Annota("risultato " + Cita(risultato));
    } catch (const RuntimeError& errore) {
      registro_.Annota("errore " + std::to_string(errore.Number()) + " " + Cita(errore.Text()));
    }
  }
  AnnotaErroreStandard(testing::internal::GetCapturedStderr());
  AnnotaFine(prima);
}

void Scena::AnnotaErroreStandard(const std::string& scritto) {
  for (std::size_t inizio = 0; inizio < scritto.size();) {
    const auto fine = std::min(scritto.find('\n', inizio), scritto.size());
    const auto riga = scritto.substr(inizio, fine - inizio);
    // What the platform of windows without a screen says of itself.
    if (riga.find("plugin does not support") == std::string::npos) {
      registro_.Annota("errore standard " + Cita(riga));
    }
    inizio = fine + 1;
  }
}

void Scena::Altrove(const std::string& sql) {
  registro_.Annota("  da un altro terminale: " + sql);
  const AscoltoOdbc::Pausa pausa;
  test::RunScript(base_->ConnectionText(), sql);
}

void Scena::AltroveIntera(const std::string& sql) {
  registro_.Annota("  da un altro terminale: " + sql);
  const AscoltoOdbc::Pausa pausa;
  ado::Connection connection;
  connection.ConnectionString = base_->ConnectionText();
  connection.Open();
  connection.Execute(sql);
}

Scena::Foto Scena::FotografaBase() {
  // What fails over the connection that was kept may still do over a new one.
  for (const bool nuova : {!fotografo_, true}) {
    if (nuova) {
      fotografo_.emplace();
      foto_.reset();
    }
    try {
      ado::Connection& connection = fotografo_->To(base_->ConnectionText());
      const auto segno = test::FirstValue(connection, SuServer() ? SegnoDelServer : SegnoDelFile);
      if (!foto_ || segno != segno_) {
        foto_.reset();
        foto_ = std::make_shared<const Fotografia>(Fotografa(connection));
        segno_ = segno;
      }
      return foto_;
    } catch (const RuntimeError&) {
      continue;
    }
  }
  return nullptr;
}

void Scena::Rifiuta(const std::string& tabella, const std::string& condizione, const std::string& testo) {
  ++rifiuti_;
  for (const auto& istruzione : contesto_.RefuseUpdate(tabella, condizione, testo)) {
    AltroveIntera(test::Replaced(istruzione, "FERMA", "FERMA" + std::to_string(rifiuti_)));
  }
}

void Scena::AnnotaFine(const Foto& prima) {
  const auto elenca = [this](const char* dove, const fs::path& cartella) {
    for (const auto& nome : fs::is_directory(cartella) ? Contenuto(cartella) : Righe()) {
      // A command's note is looked at where it is tested; nothing that a play does depends on one.
      if (!nome.starts_with("sospeso-")) {
        registro_.Annota(dove + nome);
      }
    }
  };
  elenca("resta sull'host: ", demo.Tmp());
  elenca("resta in locale: ", demo.Locale());
  const auto dopo = FotografaBase();
  if (prima && dopo && prima != dopo) {
    for (const auto& riga : Differenze(*prima, *dopo)) {
      registro_.Annota("nella base dati: " + riga);
    }
  }
  registro_.Annota("");
}

} // namespace lumoscad::test
