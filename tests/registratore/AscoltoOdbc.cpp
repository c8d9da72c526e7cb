#include "AscoltoOdbc.hpp"

#include <dlfcn.h>
#include <sql.h>
#include <sqlext.h>
#include <stdexcept>

namespace lumoscad::test {
namespace {

AscoltoOdbc* listening = nullptr;

/// The driver manager's own function behind the one of that name here.
template <typename Funzione> Funzione* Real(const char* nome) {
  auto* vera = reinterpret_cast<Funzione*>(::dlsym(RTLD_NEXT, nome)); // NOLINT: how the system hands out functions
  if (vera == nullptr) {
    throw std::runtime_error(nome);
  }
  return vera;
}

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
  Preparata(istruzione, testo);
  Eseguita(istruzione);
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
using lumoscad::test::Real;
using lumoscad::test::Testo;

SQLRETURN SQL_API SQLDriverConnect(SQLHDBC hdbc, SQLHWND hwnd, SQLCHAR* szConnStrIn, SQLSMALLINT cbConnStrIn,
                                   SQLCHAR* szConnStrOut, SQLSMALLINT cbConnStrOutMax, SQLSMALLINT* pcbConnStrOut,
                                   SQLUSMALLINT fDriverCompletion) {
  static auto* const vera =
      Real<SQLRETURN(SQLHDBC, SQLHWND, SQLCHAR*, SQLSMALLINT, SQLCHAR*, SQLSMALLINT, SQLSMALLINT*, SQLUSMALLINT)>(
          "SQLDriverConnect");
  if (listening != nullptr) {
    listening->Apre(Testo(szConnStrIn, cbConnStrIn));
  }
  const auto esito =
      vera(hdbc, hwnd, szConnStrIn, cbConnStrIn, szConnStrOut, cbConnStrOutMax, pcbConnStrOut, fDriverCompletion);
  if (listening != nullptr && !SQL_SUCCEEDED(esito)) {
    listening->FineFallita();
  }
  return esito;
}

SQLRETURN SQL_API SQLDisconnect(SQLHDBC ConnectionHandle) {
  static auto* const vera = Real<SQLRETURN(SQLHDBC)>("SQLDisconnect");
  if (listening != nullptr) {
    listening->Chiude();
  }
  return vera(ConnectionHandle);
}

SQLRETURN SQL_API SQLPrepare(SQLHSTMT StatementHandle, SQLCHAR* StatementText, SQLINTEGER TextLength) {
  static auto* const vera = Real<SQLRETURN(SQLHSTMT, SQLCHAR*, SQLINTEGER)>("SQLPrepare");
  if (listening != nullptr) {
    listening->Preparata(StatementHandle, Testo(StatementText, TextLength));
  }
  return vera(StatementHandle, StatementText, TextLength);
}

SQLRETURN SQL_API SQLBindParameter(SQLHSTMT hstmt, SQLUSMALLINT ipar, SQLSMALLINT fParamType, SQLSMALLINT fCType,
                                   SQLSMALLINT fSqlType, SQLULEN cbColDef, SQLSMALLINT ibScale, SQLPOINTER rgbValue,
                                   SQLLEN cbValueMax, SQLLEN* pcbValue) {
  static auto* const vera = Real<SQLRETURN(SQLHSTMT, SQLUSMALLINT, SQLSMALLINT, SQLSMALLINT, SQLSMALLINT, SQLULEN,
                                           SQLSMALLINT, SQLPOINTER, SQLLEN, SQLLEN*)>("SQLBindParameter");
  if (listening != nullptr) {
    listening->Assegnato(hstmt, ipar, {static_cast<const char*>(rgbValue), pcbValue});
  }
  return vera(hstmt, ipar, fParamType, fCType, fSqlType, cbColDef, ibScale, rgbValue, cbValueMax, pcbValue);
}

SQLRETURN SQL_API SQLFreeStmt(SQLHSTMT StatementHandle, SQLUSMALLINT Option) {
  static auto* const vera = Real<SQLRETURN(SQLHSTMT, SQLUSMALLINT)>("SQLFreeStmt");
  if (listening != nullptr && Option == SQL_RESET_PARAMS) {
    listening->SenzaValori(StatementHandle);
  }
  return vera(StatementHandle, Option);
}

SQLRETURN SQL_API SQLExecute(SQLHSTMT StatementHandle) {
  static auto* const vera = Real<SQLRETURN(SQLHSTMT)>("SQLExecute");
  if (listening != nullptr) {
    listening->Eseguita(StatementHandle);
  }
  const auto esito = vera(StatementHandle);
  if (listening != nullptr && !SQL_SUCCEEDED(esito) && esito != SQL_NO_DATA) {
    listening->Fallita(StatementHandle);
  }
  return esito;
}

SQLRETURN SQL_API SQLExecDirect(SQLHSTMT StatementHandle, SQLCHAR* StatementText, SQLINTEGER TextLength) {
  static auto* const vera = Real<SQLRETURN(SQLHSTMT, SQLCHAR*, SQLINTEGER)>("SQLExecDirect");
  if (listening != nullptr) {
    listening->Eseguita(StatementHandle, Testo(StatementText, TextLength));
  }
  const auto esito = vera(StatementHandle, StatementText, TextLength);
  if (listening != nullptr && !SQL_SUCCEEDED(esito) && esito != SQL_NO_DATA) {
    listening->Fallita(StatementHandle);
  }
  return esito;
}

SQLRETURN SQL_API SQLRowCount(SQLHSTMT StatementHandle, SQLLEN* RowCount) {
  static auto* const vera = Real<SQLRETURN(SQLHSTMT, SQLLEN*)>("SQLRowCount");
  const auto esito = vera(StatementHandle, RowCount);
  if (listening != nullptr && SQL_SUCCEEDED(esito)) {
    listening->Toccate(StatementHandle, *RowCount);
  }
  return esito;
}

SQLRETURN SQL_API SQLEndTran(SQLSMALLINT HandleType, SQLHANDLE Handle, SQLSMALLINT CompletionType) {
  static auto* const vera = Real<SQLRETURN(SQLSMALLINT, SQLHANDLE, SQLSMALLINT)>("SQLEndTran");
  if (listening != nullptr) {
    listening->Fine(CompletionType == SQL_COMMIT);
  }
  const auto esito = vera(HandleType, Handle, CompletionType);
  if (listening != nullptr && !SQL_SUCCEEDED(esito)) {
    listening->FineFallita();
  }
  return esito;
}

SQLRETURN SQL_API SQLSetConnectAttr(SQLHDBC ConnectionHandle, SQLINTEGER Attribute, SQLPOINTER Value,
                                    SQLINTEGER StringLength) {
  static auto* const vera = Real<SQLRETURN(SQLHDBC, SQLINTEGER, SQLPOINTER, SQLINTEGER)>("SQLSetConnectAttr");
  if (listening != nullptr && Attribute == SQL_ATTR_AUTOCOMMIT) {
    listening->Conferme(reinterpret_cast<SQLULEN>(Value) == SQL_AUTOCOMMIT_ON); // NOLINT: how the value travels
  }
  return vera(ConnectionHandle, Attribute, Value, StringLength);
}
