#include "Misure.hpp"
#include "common/Stato.hpp"
#include "platform/Servizi.hpp"
#include "platform/ado/ConnectionText.hpp"
#include "platform/ado/Handles.hpp"
#include "screens/frmLumoScadenzeBanche.hpp"
#include "support/BaseGrande.hpp"

#include <cstdint>
#include <cstdio>
#include <stdexcept>

namespace lumoscad::bench {
namespace {

constexpr long Rate = 100000;
constexpr int Prove = 9;
constexpr double Obiettivo = 1.5;

/// Takes the time at which the list would appear, and leaves it at once.
class DesktopCronometro final : public Desktop {
 public:
  Orologio::time_point mostrato;
  std::size_t righe = 0;

  void MostraBox(std::string_view testo, std::string_view /*titolo*/) override {
    throw std::runtime_error(std::string(testo));
  }
  void ImpostaPuntatore(Puntatore /*puntatore*/) override {}
  void EventiInAttesa() override {}
  void MostraElenco(FinestraElenco& finestra) override {
    mostrato = Orologio::now();
    righe = finestra.righe();
    finestra.chiudi();
  }
  void MostraScadenzario(FinestraScadenzario& finestra) override { finestra.elenco.chiudi(); }
  void MostraAttesa(std::string_view /*testo*/, int /*millisecondi*/, const std::function<void()>& lavoro) override {
    lavoro();
  }
};

/// The time of the screen's load, from the first statement on its open connection (the look-up of the company) to
/// the moment the window would be shown, so sorting, layout and the end of the connection are in it.
struct CaricoSchermata {
  DesktopCronometro desktop;
  Orologio::time_point inizio;
  std::string istruzione; ///< the list's statement as sent

  double Misura() {
    const ServiziSostituiti servizi({[this]() -> Desktop& { return desktop; }, nullptr, nullptr,
                                     [] { return DataOra{2006, 3, 5, 14, 7, 9}; },
                                     [this](std::string_view testo) { Inviata(testo); }});
    frmLumoScadenzeBanche schermata;
    VariazioniCanalizzazione variazioni;
    schermata.VisualizzaScadenzeBanche("01", {}, variazioni);
    return std::chrono::duration<double, std::milli>(desktop.mostrato - inizio).count();
  }

  void Inviata(std::string_view testo) {
    if (testo.find("AZIENDELINEE") != std::string_view::npos) {
      inizio = Orologio::now();
    }
    istruzione = testo;
  }
};

void Esigi(SQLRETURN esito) {
  if (!SQL_SUCCEEDED(esito)) {
    throw std::runtime_error("the bare fetch failed");
  }
}

/// A plain program's way to read the query: columns bound as text, rows fetched in blocks, nothing kept.
class LetturaNuda {
 public:
  LetturaNuda(const std::string& testoConnessione, std::string istruzione) : istruzione_(std::move(istruzione)) {
    SQLSetEnvAttr(ambiente_.get(), SQL_ATTR_ODBC_VERSION, ado::interno::asPointer(SQL_OV_ODBC3), 0);
    connessione_ = ado::interno::Handle<SQL_HANDLE_DBC>(ambiente_.get());
    std::string testo = ado::TestoOdbc(ado::LeggiTestoConnessione(testoConnessione));
    Esigi(SQLDriverConnect(connessione_.get(), nullptr, reinterpret_cast<SQLCHAR*>(testo.data()),
                           static_cast<SQLSMALLINT>(testo.size()), nullptr, 0, nullptr, SQL_DRIVER_NOPROMPT));
  }
  LetturaNuda(const LetturaNuda&) = delete;
  LetturaNuda& operator=(const LetturaNuda&) = delete;
  ~LetturaNuda() { SQLDisconnect(connessione_.get()); }

  std::size_t righe = 0;

  double Misura() {
    const auto inizio = Orologio::now();
    const ado::interno::Handle<SQL_HANDLE_STMT> comando(connessione_.get());
    Esigi(SQLPrepare(comando.get(), reinterpret_cast<SQLCHAR*>(istruzione_.data()),
                     static_cast<SQLINTEGER>(istruzione_.size())));
    char azienda[] = "1";
    SQLLEN lunga = 1;
    Esigi(SQLBindParameter(comando.get(), 1, SQL_PARAM_INPUT, SQL_C_CHAR, SQL_VARCHAR, 1, 0, azienda, 1, &lunga));
    Esigi(SQLExecute(comando.get()));
    Leggi(comando.get());
    return Millisecondi(inizio);
  }

 private:
  /// The same buffers as the component: four bytes a character, and the same rows in a block.
  static std::vector<std::size_t> Spazi(SQLHANDLE comando) {
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
      spazi.push_back(testo ? static_cast<std::size_t>(caratteri) * 4 + 1 : 64);
    }
    return spazi;
  }

  void Leggi(SQLHANDLE comando) {
    const std::vector<std::size_t> spazi = Spazi(comando);
    std::size_t riga = 0;
    for (const std::size_t spazio : spazi) {
      riga += spazio + sizeof(SQLLEN);
    }
    const std::size_t blocco = std::clamp<std::size_t>((std::size_t{1} << 20) / riga, 1, 1024);
    const auto testi = std::make_unique_for_overwrite<char[]>(riga * blocco);
    std::vector<SQLLEN> lunghezze(spazi.size() * blocco);
    SQLULEN lette = 0;
    Esigi(SQLSetStmtAttr(comando, SQL_ATTR_ROW_ARRAY_SIZE, ado::interno::asPointer(blocco), 0));
    Esigi(SQLSetStmtAttr(comando, SQL_ATTR_ROWS_FETCHED_PTR, &lette, 0));
    char* dove = testi.get();
    for (std::size_t i = 0; i < spazi.size(); ++i) {
      Esigi(SQLBindCol(comando, static_cast<SQLUSMALLINT>(i + 1), SQL_C_CHAR, dove, static_cast<SQLLEN>(spazi[i]),
                       &lunghezze[i * blocco]));
      dove += spazi[i] * blocco;
    }
    righe = 0;
    while (SQL_SUCCEEDED(SQLFetch(comando))) {
      righe += static_cast<std::size_t>(lette);
    }
  }

  std::string istruzione_;
  ado::interno::Handle<SQL_HANDLE_ENV> ambiente_{SQLHANDLE{nullptr}};
  ado::interno::Handle<SQL_HANDLE_DBC> connessione_;
};

} // namespace

bool Carico() {
  if (!test::PostgresServer::available()) {
    std::puts("Carico: PostgreSQL o il suo driver ODBC non è installato, misura saltata");
    return true;
  }
  const test::BaseGrande base(LUMOSCAD_BASE, Rate);
  const StatoSostituito stato;
  lumoscad::stato().ComandoCorrente = base.command();
  CaricoSchermata schermata;
  schermata.Misura();
  LetturaNuda nuda(base.connectionText(), schermata.istruzione);
  nuda.Misura();
  if (schermata.desktop.righe != static_cast<std::size_t>(Rate) || nuda.righe != static_cast<std::size_t>(Rate)) {
    throw std::runtime_error("the two sides did not read " + std::to_string(Rate) + " rows");
  }
  std::vector<double> tempiSchermata;
  std::vector<double> tempiNudi;
  for (int prova = 0; prova < Prove; ++prova) {
    tempiNudi.push_back(nuda.Misura());
    tempiSchermata.push_back(schermata.Misura());
  }
  const double rapporto = Mediana(tempiSchermata) / Mediana(tempiNudi);
  std::printf("Carico di %ld scadenze: schermata %.0f ms  lettura nuda %.0f ms  rapporto %.2f (obiettivo %.1f)\n", Rate,
              Mediana(tempiSchermata), Mediana(tempiNudi), rapporto, Obiettivo);
  return rapporto <= Obiettivo;
}

} // namespace lumoscad::bench
