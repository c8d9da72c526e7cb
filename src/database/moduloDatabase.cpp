#include "database/moduloDatabase.hpp"

#include "common/RigaComando.hpp"
#include "common/Stato.hpp"
#include "common/Testo.hpp"
#include "database/RicercaEsito.hpp"
#include "platform/ado/Aftermath.hpp"

#include <algorithm>
#include <array>
#include <cstddef>
#include <new>
#include <utility>

namespace lumoscad::moduloDatabase {
namespace {

constexpr std::string_view OrigineAssente = "IM002";

/// Whether the connection text takes a ";" of the value for an end: it does unless the value stands between quotes.
bool Spezzato(std::string_view valore) {
  const bool traVirgolette =
      valore.size() > 1 && valore.front() == valore.back() && (valore.front() == '"' || valore.front() == '\'');
  return !traVirgolette && valore.find(';') != std::string_view::npos;
}

/// What explains an opening that failed: what was said so far, and what the options of the command line tell.
std::string NotaDellApertura(const RuntimeError& errore, const ParametriConnessione& parametri) {
  std::string nota = errore.Note();
  const auto aggiungi = [&nota](const std::string& frase) { nota += (nota.empty() ? "" : "\r\n") + frase; };
  if (errore.SqlState() == OrigineAssente) {
    aggiungi("L'origine dati ODBC «" + parametri.DataSource +
             "» non è definita: -DB2SOURCE ne dà il nome come sta in odbc.ini.");
  }
  const std::array<std::pair<std::string_view, std::string_view>, 3> opzioni = {
      {{"-DB2PASS", parametri.Password}, {"-DB2USER", parametri.UserId}, {"-DB2SOURCE", parametri.DataSource}}};
  for (const auto& [opzione, valore] : opzioni) {
    if (Spezzato(valore)) {
      std::string frase = "Il valore di ";
      frase.append(opzione).append(" contiene «;», che lo divide: va scritto tra virgolette, ").append(opzione);
      aggiungi(frase + " \"...\", e ogni virgoletta che contiene va scritta due volte.");
    }
  }
  return nota;
}

} // namespace

ParametriConnessione LeggiParametriDB2(std::string_view command) {
  ParametriConnessione parametri;
  const std::array<std::pair<std::string_view, std::string*>, 4> opzioni = {{{"-DB2SOURCE", &parametri.DataSource},
                                                                             {"-DB2USER", &parametri.UserId},
                                                                             {"-DB2PASS", &parametri.Password},
                                                                             {"-DB2SCHEMA", &parametri.Schema}}};
  const RigaComando riga(command);
  riga.Percorri([&](const std::string& nome, std::size_t posto) {
    for (const auto& [opzione, valore] : opzioni) {
      if (nome == opzione) {
        const std::string* const pezzo = riga.Pezzo(posto + 1);
        *valore = pezzo != nullptr ? *pezzo : std::string();
      }
    }
  });
  if (SenzaSpaziAiLati(parametri.Schema).empty()) {
    parametri.Schema = parametri.Password;
  }
  return parametri;
}

namespace {

std::unique_ptr<ado::Connection> Apri(std::unique_ptr<ado::Connection> connection,
                                      const ParametriConnessione& parametri) {
  connection->ConnectionString = "Provider=MSDASQL.1;Persist Security Info=True;Mode=Read|Write;Connect Timeout=30"
                                 ";Password=" +
                                 parametri.Password + ";User ID=" + parametri.UserId +
                                 ";Data Source=" + parametri.DataSource;
  connection->CursorLocation = ado::CursorLocation::Client;
  try {
    connection->Open();
  } catch (RuntimeError& errore) {
    std::string nota = NotaDellApertura(errore, parametri);
    throw std::move(errore).WithNote(std::move(nota));
  }
  return connection;
}

} // namespace

std::unique_ptr<ado::Connection> ApriConnessione(const ParametriConnessione& parametri) {
  return Apri(std::make_unique<ado::Connection>(), parametri);
}

std::unique_ptr<ado::Connection> ApriPerProva(const ParametriConnessione& parametri, int durata) {
  auto connection = std::make_unique<ado::Connection>();
  connection->commandTimeout = durata;
  connection->existingOnly = true;
  return Apri(std::move(connection), parametri);
}

std::unique_ptr<ado::Connection> ApriPerEsito(const ParametriConnessione& parametri,
                                              std::chrono::steady_clock::time_point termine) {
  auto connection = std::make_unique<ado::Connection>();
  connection->deadline = termine;
  connection->existingOnly = true;
  return Apri(std::move(connection), parametri);
}

void ChiudiConnessione(ado::Connection* connection) noexcept {
  if (connection == nullptr || connection->State() != ado::State::Open) {
    return;
  }
  try {
    connection->Close();
  } catch (...) { // NOLINT(bugprone-empty-catch): the outcome of the procedure is settled before it closes
  }
}

void ChiudiRecordset(ado::Recordset& recordset) noexcept {
  if (recordset.State() != ado::State::Open) {
    return;
  }
  try {
    recordset.Close();
  } catch (...) { // NOLINT(bugprone-empty-catch): the rows were read already
  }
}

ado::Command CreaComando(ado::Connection& connection, std::string_view sql, ado::CommandType commandType) {
  ado::Command comando;
  comando.ActiveConnection = &connection;
  comando.CommandType = commandType;
  comando.CommandText = sql;
  return comando;
}

std::string TestoErrore(const RuntimeError& errore, std::string_view istruzioni) {
  std::string testo = "ERRORE: " + std::to_string(errore.Number()) + "\r\n" + errore.Text();
  return WithSentence(std::move(testo.append(istruzioni)), errore.Note());
}

namespace {

/// Takes down in the command's note that COMMIT is about to be sent, and by what its outcome can be asked for.
void SegnaConferma(const ado::TransactionMark& segno) {
  std::string testo;
  try {
    testo = segno.Text();
  } catch (const std::bad_alloc&) {
    testo.clear(); // the phase counts for more
  }
  stato().notaInCorso.ConfermaInviata(testo);
}

} // namespace

ado::Connection& Lavoro::Apri(const ParametriConnessione& parametri) {
  parametri_ = parametri;
  connection_ = ApriConnessione(parametri);
  connection_->onCommit = SegnaConferma;
  return *connection_;
}

Lavoro::Lavoro() {
  stato().notaInCorso.BaseDatiChiesta();
}

std::shared_ptr<const std::vector<std::string>> Lavoro::ChiediAllaConferma(std::string domanda) {
  auto risposta = std::make_shared<std::vector<std::string>>();
  if (!domanda.empty()) {
    domande_.push_back({std::move(domanda), risposta});
  }
  return risposta;
}

/// Asks what is to be known right before COMMIT, many questions at once.
void Lavoro::ChiediOra() {
  constexpr std::size_t Insieme = 50;
  constexpr std::size_t Colonne = 2; // of a question
  for (std::size_t inizio = 0; inizio < domande_.size(); inizio += Insieme) {
    const std::size_t fine = std::min(domande_.size(), inizio + Insieme);
    std::string testo;
    for (std::size_t posto = inizio; posto < fine; ++posto) {
      testo.append(testo.empty() ? "SELECT " : ",").append(domande_[posto].testo);
    }
    const auto detto = ado::AskAboutOutcome(*connection_, testo);
    for (std::size_t posto = inizio; posto < fine && detto.size() == (fine - inizio) * Colonne; ++posto) {
      const auto prima = detto.begin() + static_cast<std::ptrdiff_t>((posto - inizio) * Colonne);
      domande_[posto].risposta->assign(prima, prima + Colonne);
    }
  }
}

void Lavoro::Conferma(Transazione& transazione) {
  ChiediOra();
  ConfermaOCerca(transazione, *connection_, parametri_, riscontri_, esito_);
}

Lavoro::~Lavoro() {
  if (connection_) {
    stato().andamento.Registrata(esito_.value_or(connection_->Outcome()));
  }
  stato().notaInCorso.Registrata(connection_ ? esito_.value_or(connection_->Outcome())
                                             : TransactionOutcome::NotApplied);
}

Transazione::Transazione(ado::Connection& connection) : connection_(&connection) {
  connection.BeginTrans();
}

Transazione::~Transazione() {
  if (connection_ == nullptr) {
    return;
  }
  try {
    connection_->RollbackTrans();
  } catch (...) { // NOLINT(bugprone-empty-catch): the failure that led here is the one to report
  }
}

void Transazione::Conferma() {
  std::exchange(connection_, nullptr)->CommitTrans();
}

} // namespace lumoscad::moduloDatabase
