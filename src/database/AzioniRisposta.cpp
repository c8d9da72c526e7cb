#include "common/Messaggi.hpp"
#include "common/Testo.hpp"
#include "database/ProceduraDB2.hpp"
#include "database/RicercaEsito.hpp"
#include "database/db2Searches.hpp"
#include "database/moduloDatabase.hpp"
#include "database/procedureLumoDB2.hpp"
#include "platform/RuntimeError.hpp"

namespace lumoscad::procedureLumoDB2 {
namespace {

/// A list that is too short is for the procedure to find.
std::string Parte(const std::vector<std::string>& parametri, std::size_t indice) {
  return indice < parametri.size() ? parametri[indice] : std::string();
}

constexpr std::string_view TestoDiProva = "FILEccccc";

/// Whether the one row that the writing test changes holds its text, or the one that it held before. Not every database
/// compares a text so long.
std::optional<TransactionOutcome> RiscontroDiProva(ado::Connection& connection, const ado::Command& letta,
                                                   const std::string& prima) {
  if (prima == TestoDiProva) {
    return std::nullopt;
  }
  ado::Command comando = moduloDatabase::CreaComando(connection, letta.CommandText);
  comando.Parameters = letta.Parameters;
  ado::Recordset righe = comando.Execute();
  const std::string adesso(righe.RecordCount() == 1 ? righe.Fields("FILEXML").Value().value_or("") : "");
  if (adesso == TestoDiProva) {
    return TransactionOutcome::Applied;
  }
  return adesso == prima ? TransactionOutcome::NotApplied : TransactionOutcome::Unknown;
}

} // namespace

ado::Recordset LeggiEventi(ado::Connection& connection, const EventiScelti& scelti) {
  ado::Command comando = moduloDatabase::CreaComando(connection, scelti.sql);
  comando.sentOnce = true;
  comando.Parameters = {std::to_string(scelti.chiave)};
  return comando.Execute();
}

std::int32_t ChiavePartita(ado::Connection& connection, const std::vector<std::string>& parametri) {
  const auto conto = db2Searches::CercaContoContabile(connection, Elemento(parametri, 2));
  return db2Searches::CercaPartitaContabile(connection, std::to_string(conto), Elemento(parametri, 3));
}

std::int32_t MovimentoExtra(ado::Connection& connection, const std::vector<std::string>& parametri) {
  const auto azienda = db2Searches::CercaAziendaLinea(connection, Elemento(parametri, 0), " ", " ");
  return db2Searches::CercaMovimento(connection, std::to_string(azienda), "X", Elemento(parametri, 3),
                                     Elemento(parametri, 2), Elemento(parametri, 4));
}

std::string NomeOggetto(const std::vector<std::string>& parametri) {
  const std::string azione = Parte(parametri, 1);
  if (azione == "SCRIVISCADENZE" || azione == "SOSPESOCREA" || azione == "SOSPESOCANCELLA") {
    return "partita " + Parte(parametri, 3) + " del conto " + Parte(parametri, 2);
  }
  return "documento " + Parte(parametri, 2) + "/" + Parte(parametri, 3) + "/" + Parte(parametri, 4) + " dell'azienda " +
         Parte(parametri, 0);
}

std::string EseguiAzioneDB2(const std::vector<std::string>& parametri, MsgAnnulla* msg) {
  if (msg != nullptr && !SenzaSpaziAiLati(msg->Errore).empty()) {
    return "error";
  }
  MsgAnnulla nuovo;
  MsgAnnulla& destinatario = msg != nullptr ? *msg : nuovo;
  const std::string& azione = Elemento(parametri, 1);
  if (azione == "SCRIVISCADENZE") {
    return ScriviScadenzePartita(parametri, destinatario);
  }
  if (azione == "EXTRADEL") {
    return CancellaMovimentoExtra(parametri, destinatario);
  }
  if (azione == "EXTRASCRIVISCAD") {
    return ScriviScadenzeMovimento(parametri, destinatario);
  }
  if (azione == "PRESUNTOCREA" || azione == "PRESUNTOCANCELLA") {
    return SospendiMovimento(parametri, azione == "PRESUNTOCREA" ? "S" : "N", destinatario);
  }
  if (azione == "SOSPESOCREA" || azione == "SOSPESOCANCELLA") {
    return SospendiPartita(parametri, azione == "SOSPESOCREA" ? "S" : "N", destinatario);
  }
  return "";
}

std::string TestDB2(std::string_view command) {
  try {
    const auto parametri = moduloDatabase::LeggiParametriDB2(command);
    const auto connection = moduloDatabase::ApriConnessione(parametri);
    const std::string tabella = parametri.Schema + ".ERRORE";
    ado::Command comando =
        moduloDatabase::CreaComando(*connection, "SELECT * FROM " + tabella + " WHERE " + "ERROREKEY=?");
    comando.Parameters = {"100"};
    moduloDatabase::Transazione transazione(*connection);
    ado::Recordset righe;
    righe.Open(comando, ado::CursorType::Dynamic, ado::LockType::Optimistic, {tabella, "ERROREKEY"});
    std::vector<moduloDatabase::Riscontro> riscontri;
    if (righe.RecordCount() == 1) {
      const std::string prima(righe.Fields("FILEXML").Value().value_or(""));
      righe.Fields("FILEXML").SetValue(TestoDiProva);
      righe.Update();
      riscontri.emplace_back(
          [&comando, prima](ado::Connection& nuova) { return RiscontroDiProva(nuova, comando, prima); });
    }
    std::optional<TransactionOutcome> esito;
    moduloDatabase::ConfermaOCerca(transazione, *connection, parametri, riscontri, esito);
    return "";
  } catch (...) {
    const RuntimeError errore = CurrentError();
    MostraMessaggio(WithSentence(std::to_string(errore.Number()) + "\r\n" + errore.Text(), errore.Note()),
                    "testScrittura");
    return "error";
  }
}

} // namespace lumoscad::procedureLumoDB2
