#include "Nudo.hpp"

#include "platform/ado/ConnectionText.hpp"

#include <algorithm>
#include <stdexcept>

namespace lumoscad::bench {
namespace {

constexpr std::size_t ByteDelBlocco = std::size_t{1} << 20;
constexpr std::size_t ByteDelNumero = 64;
constexpr std::size_t ByteDelCarattere = 4;

void Esigi(SQLRETURN esito) {
  if (!SQL_SUCCEEDED(esito)) {
    throw std::runtime_error("the bare program failed");
  }
}

std::vector<std::size_t> Spazi(SQLHANDLE comando) {
  SQLSMALLINT colonne = 0;
  Esigi(SQLNumResultCols(comando, &colonne));
  std::vector<std::size_t> spazi;
  for (SQLUSMALLINT colonna = 1; colonna <= colonne; ++colonna) {
    SQLSMALLINT lungo = 0;
    SQLSMALLINT tipo = 0;
    SQLSMALLINT decimali = 0;
    SQLSMALLINT nullo = 0;
    SQLULEN caratteri = 0;
    Esigi(SQLDescribeCol(comando, colonna, nullptr, 0, &lungo, &tipo, &caratteri, &decimali, &nullo));
    const bool testo = tipo == SQL_VARCHAR || tipo == SQL_WVARCHAR || tipo == SQL_CHAR || tipo == SQL_WCHAR;
    spazi.push_back(testo ? static_cast<std::size_t>(caratteri) * ByteDelCarattere + 1 : ByteDelNumero);
  }
  return spazi;
}

} // namespace

ConnessioneNuda::ConnessioneNuda(const std::string& testoConnessione) {
  SQLSetEnvAttr(ambiente_.get(), SQL_ATTR_ODBC_VERSION, ado::interno::asPointer(SQL_OV_ODBC3), 0);
  connessione_ = ado::interno::Handle<SQL_HANDLE_DBC>(ambiente_.get());
  std::string testo = ado::TestoOdbc(ado::LeggiTestoConnessione(testoConnessione));
  Esigi(SQLDriverConnect(connessione_.get(), nullptr, reinterpret_cast<SQLCHAR*>(testo.data()),
                         static_cast<SQLSMALLINT>(testo.size()), nullptr, 0, nullptr, SQL_DRIVER_NOPROMPT));
}

ConnessioneNuda::~ConnessioneNuda() {
  SQLDisconnect(connessione_.get());
}

ComandoNudo::ComandoNudo(const ConnessioneNuda& connessione, std::string_view istruzione, std::size_t righe)
    : comando_(connessione.get()), righe_(righe) {
  std::string testo(istruzione);
  Esigi(SQLPrepare(comando_.get(), reinterpret_cast<SQLCHAR*>(testo.data()), static_cast<SQLINTEGER>(testo.size())));
}

std::size_t ComandoNudo::Esegui(std::vector<std::string> parametri, const std::function<void(std::size_t)>& riga) {
  std::vector<SQLLEN> lunghi(parametri.size());
  for (std::size_t i = 0; i < parametri.size(); ++i) {
    lunghi[i] = static_cast<SQLLEN>(parametri[i].size());
    Esigi(SQLBindParameter(comando_.get(), static_cast<SQLUSMALLINT>(i + 1), SQL_PARAM_INPUT, SQL_C_CHAR, SQL_VARCHAR,
                           std::max<SQLULEN>(parametri[i].size(), 1), 0, parametri[i].data(), lunghi[i], &lunghi[i]));
  }
  Esigi(SQLExecute(comando_.get()));
  if (colonne_.empty()) {
    Collega();
  }
  std::size_t quante = 0;
  while (SQL_SUCCEEDED(SQLFetch(comando_.get()))) {
    quante += static_cast<std::size_t>(lette_);
    for (std::size_t posto = 0; riga && posto < static_cast<std::size_t>(lette_); ++posto) {
      riga(posto);
    }
  }
  Esigi(SQLCloseCursor(comando_.get()));
  return quante;
}

void ComandoNudo::Collega() {
  spazi_ = Spazi(comando_.get());
  std::size_t larga = 0;
  for (const std::size_t spazio : spazi_) {
    larga += spazio + sizeof(SQLLEN);
  }
  const std::size_t blocco = std::clamp<std::size_t>(ByteDelBlocco / std::max<std::size_t>(larga, 1), 1, righe_);
  testi_ = std::make_unique_for_overwrite<char[]>(larga * blocco);
  righe_ = blocco;
  lunghezze_.resize(spazi_.size() * blocco);
  Esigi(SQLSetStmtAttr(comando_.get(), SQL_ATTR_ROW_ARRAY_SIZE, ado::interno::asPointer(blocco), 0));
  Esigi(SQLSetStmtAttr(comando_.get(), SQL_ATTR_ROWS_FETCHED_PTR, &lette_, 0));
  char* dove = testi_.get();
  for (std::size_t i = 0; i < spazi_.size(); ++i) {
    Esigi(SQLBindCol(comando_.get(), static_cast<SQLUSMALLINT>(i + 1), SQL_C_CHAR, dove, static_cast<SQLLEN>(spazi_[i]),
                     &lunghezze_[i * blocco]));
    colonne_.push_back(dove);
    dove += spazi_[i] * blocco;
  }
}

std::string_view ComandoNudo::Testo(std::size_t riga, std::size_t colonna) const {
  const SQLLEN lungo = lunghezze_[colonna * righe_ + riga];
  return lungo < 0 ? std::string_view()
                   : std::string_view(colonne_[colonna] + riga * spazi_[colonna], static_cast<std::size_t>(lungo));
}

} // namespace lumoscad::bench
