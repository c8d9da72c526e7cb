#include "AscoltoOdbc.hpp"

#include "support/DriverManager.hpp"

#include <sql.h>
#include <sqlext.h>

namespace lumoscad::test {
namespace {

AscoltoOdbc* listening = nullptr;

std::string_view Testo(const SQLCHAR* testo, long lunghezza) {
  const auto* inizio = reinterpret_cast<const char*>(testo); // NOLINT: bytes
  return lunghezza < 0 ? std::string_view(inizio) : std::string_view(inizio, static_cast<std::size_t>(lunghezza));
}

/// The connection text without the secret in it.
std::string SenzaParola(std::string_view connessione) {
  std::string testo(connessione);
  const auto inizio = testo.find("PWD=");
  if (inizio != std::string::npos) {
    testo.replace(inizio + 4, testo.find(';', inizio) - inizio - 4, "{parola}");
  }
  return testo;
}

} // namespace

AscoltoOdbc::AscoltoOdbc(Registro& registro) : registro_(registro) {
  listening = this;
}

AscoltoOdbc::~AscoltoOdbc() {
  listening = nullptr;
}

AscoltoOdbc::Pausa::Pausa() : interrotto_(listening) {
  listening = nullptr;
}

AscoltoOdbc::Pausa::~Pausa() {
  listening = interrotto_;
}

void AscoltoOdbc::Annunciata(std::string_view testo) {
  if (listening != nullptr) {
    listening->annunciata_ = testo;
  }
}

void AscoltoOdbc::Apre(std::string_view connessione) {
  registro_.Annota("base dati: si apre");
  registro_.AnnotaStrato("apre " + SenzaParola(connessione));
}

void AscoltoOdbc::Chiude() {
  registro_.Annota("base dati: si chiude");
  registro_.AnnotaStrato("chiude");
}

void AscoltoOdbc::Preparata(const void* istruzione, std::string_view testo) {
  istruzioni_[istruzione] = {std::string(testo), {}, false};
}

void AscoltoOdbc::Assegnato(const void* istruzione, unsigned posto, Valore valore) {
  istruzioni_[istruzione].valori[posto] = valore;
}

void AscoltoOdbc::SenzaValori(const void* istruzione) {
  istruzioni_[istruzione].valori.clear();
}

void AscoltoOdbc::Eseguita(const void* istruzione, std::string_view testo) {
  istruzioni_[istruzione].testo = testo;
  Eseguita(istruzione);
}

void AscoltoOdbc::Liberata(const void* istruzione) {
  istruzioni_.erase(istruzione);
}

void AscoltoOdbc::Eseguita(const void* istruzione) {
  Istruzione& questa = istruzioni_[istruzione];
  questa.delComponente = !annunciata_.empty() && annunciata_ == questa.testo;
  annunciata_.clear();
  Annota(questa, "istruzione " + questa.testo);
  for (const auto& [posto, valore] : questa.valori) {
    const bool manca = valore.lunghezza != nullptr && *valore.lunghezza < 0;
    const auto testo = manca ? std::string("NULL")
                             : Cita(valore.lunghezza == nullptr
                                        ? std::string_view(valore.dati)
                                        : std::string_view(valore.dati, static_cast<std::size_t>(*valore.lunghezza)));
    Annota(questa, "  valore " + std::to_string(posto) + " " + testo);
  }
}

void AscoltoOdbc::Toccate(const void* istruzione, long righe) {
  const Istruzione& questa = istruzioni_[istruzione];
  if (!questa.testo.starts_with("SELECT")) {
    Annota(questa, "  righe toccate: " + std::to_string(righe));
  }
}

void AscoltoOdbc::Fallita(const void* istruzione) {
  Annota(istruzioni_[istruzione], "  non riuscita");
}

void AscoltoOdbc::Fine(bool conferma) {
  registro_.Annota(conferma ? "base dati: COMMIT" : "base dati: ROLLBACK");
  registro_.AnnotaStrato(conferma ? "COMMIT" : "ROLLBACK");
}

void AscoltoOdbc::Conferme(bool automatiche) {
  if (!automatiche) {
    registro_.Annota("base dati: inizia la transazione");
  }
  registro_.AnnotaStrato(automatiche ? "conferme automatiche" : "conferme a richiesta");
}

void AscoltoOdbc::FineFallita() {
  registro_.Annota("  non riuscito");
}

void AscoltoOdbc::Annota(const Istruzione& istruzione, const std::string& riga) {
  istruzione.delComponente ? registro_.Annota(riga) : registro_.AnnotaStrato(riga);
}

} // namespace lumoscad::test

// The parameters have the names of the driver manager's header.

using lumoscad::test::listening;
using lumoscad::test::RealFunction;
using lumoscad::test::Testo;

SQLRETURN SQL_API SQLDriverConnect(SQLHDBC hdbc, SQLHWND hwnd, SQLCHAR* szConnStrIn, SQLSMALLINT cbConnStrIn,
                                   SQLCHAR* szConnStrOut, SQLSMALLINT cbConnStrOutMax, SQLSMALLINT* pcbConnStrOut,
                                   SQLUSMALLINT fDriverCompletion) {
  static auto* const Originale = RealFunction<SQLRETURN(SQLHDBC, SQLHWND, SQLCHAR*, SQLSMALLINT, SQLCHAR*, SQLSMALLINT,
                                                        SQLSMALLINT*, SQLUSMALLINT)>("SQLDriverConnect");
  if (listening != nullptr) {
    listening->Apre(Testo(szConnStrIn, cbConnStrIn));
  }
  const auto esito =
      Originale(hdbc, hwnd, szConnStrIn, cbConnStrIn, szConnStrOut, cbConnStrOutMax, pcbConnStrOut, fDriverCompletion);
  if (listening != nullptr && !SQL_SUCCEEDED(esito)) {
    listening->FineFallita();
  }
  return esito;
}

SQLRETURN SQL_API SQLDisconnect(SQLHDBC connectionHandle) {
  static auto* const Originale = RealFunction<SQLRETURN(SQLHDBC)>("SQLDisconnect");
  if (listening != nullptr) {
    listening->Chiude();
  }
  return Originale(connectionHandle);
}

SQLRETURN SQL_API SQLPrepare(SQLHSTMT statementHandle, SQLCHAR* statementText, SQLINTEGER textLength) {
  static auto* const Originale = RealFunction<SQLRETURN(SQLHSTMT, SQLCHAR*, SQLINTEGER)>("SQLPrepare");
  if (listening != nullptr) {
    listening->Preparata(statementHandle, Testo(statementText, textLength));
  }
  return Originale(statementHandle, statementText, textLength);
}

SQLRETURN SQL_API SQLBindParameter(SQLHSTMT hstmt, SQLUSMALLINT ipar, SQLSMALLINT fParamType, SQLSMALLINT fCType,
                                   SQLSMALLINT fSqlType, SQLULEN cbColDef, SQLSMALLINT ibScale, SQLPOINTER rgbValue,
                                   SQLLEN cbValueMax, SQLLEN* pcbValue) {
  static auto* const Originale =
      RealFunction<SQLRETURN(SQLHSTMT, SQLUSMALLINT, SQLSMALLINT, SQLSMALLINT, SQLSMALLINT, SQLULEN, SQLSMALLINT,
                             SQLPOINTER, SQLLEN, SQLLEN*)>("SQLBindParameter");
  if (listening != nullptr) {
    listening->Assegnato(hstmt, ipar, {static_cast<const char*>(rgbValue), pcbValue});
  }
  return Originale(hstmt, ipar, fParamType, fCType, fSqlType, cbColDef, ibScale, rgbValue, cbValueMax, pcbValue);
}

SQLRETURN SQL_API SQLFreeStmt(SQLHSTMT statementHandle, SQLUSMALLINT option) {
  static auto* const Originale = RealFunction<SQLRETURN(SQLHSTMT, SQLUSMALLINT)>("SQLFreeStmt");
  if (listening != nullptr && option == SQL_RESET_PARAMS) {
    listening->SenzaValori(statementHandle);
  }
  return Originale(statementHandle, option);
}

SQLRETURN SQL_API SQLFreeHandle(SQLSMALLINT handleType, SQLHANDLE handle) {
  static auto* const Originale = RealFunction<SQLRETURN(SQLSMALLINT, SQLHANDLE)>("SQLFreeHandle");
  if (listening != nullptr) {
    listening->Liberata(handle);
  }
  return Originale(handleType, handle);
}

SQLRETURN SQL_API SQLExecute(SQLHSTMT statementHandle) {
  static auto* const Originale = RealFunction<SQLRETURN(SQLHSTMT)>("SQLExecute");
  if (listening != nullptr) {
    listening->Eseguita(statementHandle);
  }
  const auto esito = Originale(statementHandle);
  if (listening != nullptr && !SQL_SUCCEEDED(esito) && esito != SQL_NO_DATA) {
    listening->Fallita(statementHandle);
  }
  return esito;
}

SQLRETURN SQL_API SQLExecDirect(SQLHSTMT statementHandle, SQLCHAR* statementText, SQLINTEGER textLength) {
  static auto* const Originale = RealFunction<SQLRETURN(SQLHSTMT, SQLCHAR*, SQLINTEGER)>("SQLExecDirect");
  if (listening != nullptr) {
    listening->Eseguita(statementHandle, Testo(statementText, textLength));
  }
  const auto esito = Originale(statementHandle, statementText, textLength);
  if (listening != nullptr && !SQL_SUCCEEDED(esito) && esito != SQL_NO_DATA) {
    listening->Fallita(statementHandle);
  }
  return esito;
}

SQLRETURN SQL_API SQLRowCount(SQLHSTMT statementHandle, SQLLEN* rowCount) {
  static auto* const Originale = RealFunction<SQLRETURN(SQLHSTMT, SQLLEN*)>("SQLRowCount");
  const auto esito = Originale(statementHandle, rowCount);
  if (listening != nullptr && SQL_SUCCEEDED(esito)) {
    listening->Toccate(statementHandle, *rowCount);
  }
  return esito;
}

SQLRETURN SQL_API SQLEndTran(SQLSMALLINT handleType, SQLHANDLE handle, SQLSMALLINT completionType) {
  static auto* const Originale = RealFunction<SQLRETURN(SQLSMALLINT, SQLHANDLE, SQLSMALLINT)>("SQLEndTran");
  if (listening != nullptr) {
    listening->Fine(completionType == SQL_COMMIT);
  }
  const auto esito = Originale(handleType, handle, completionType);
  if (listening != nullptr && !SQL_SUCCEEDED(esito)) {
    listening->FineFallita();
  }
  return esito;
}

SQLRETURN SQL_API SQLSetConnectAttr(SQLHDBC connectionHandle, SQLINTEGER attribute, SQLPOINTER Value,
                                    SQLINTEGER stringLength) {
  static auto* const Originale =
      RealFunction<SQLRETURN(SQLHDBC, SQLINTEGER, SQLPOINTER, SQLINTEGER)>("SQLSetConnectAttr");
  if (listening != nullptr && attribute == SQL_ATTR_AUTOCOMMIT) {
    listening->Conferme(reinterpret_cast<SQLULEN>(Value) == SQL_AUTOCOMMIT_ON); // NOLINT: how the value travels
  }
  return Originale(connectionHandle, attribute, Value, stringLength);
}
