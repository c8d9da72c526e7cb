#include "Bersagli.hpp"

#include "platform/RuntimeError.hpp"
#include "platform/ado/ConnectionText.hpp"

#include <algorithm>
#include <array>
#include <optional>

namespace lumoscad::fuzz {
namespace {

using ado::ConnectionSettings;

/// The longest text that an ODBC connection call takes: its length is a 16-bit number.
constexpr std::size_t MassimoOdbc = 32767;

constexpr std::array<std::string_view, 10> ErroriAmmessi{
    "Testo di connessione non valido: manca il segno \"=\" dopo una parola chiave.",
    "Testo di connessione non valido: manca la parola chiave prima di un segno \"=\".",
    "Testo di connessione non valido: testo dopo le virgolette di chiusura.",
    "Testo di connessione non valido: mancano le virgolette di chiusura.",
    "Testo di connessione non valido: il tempo massimo di connessione non è un numero di secondi.",
    "Testo di connessione non valido: il nome dell'origine dati contiene un carattere non ammesso.",
    "Testo di connessione non valido: l'utente contiene un carattere non ammesso.",
    "Testo di connessione non valido: la password contiene un carattere non ammesso.",
    "Testo di connessione non valido: un valore supera i 1000 byte.",
    "Connessione alla base dati: l'origine dati ODBC non è indicata."};

/// An error is one of these texts: none repeats a piece of the connection text, which holds a password.
template <typename Lettura> auto Prova(Lettura lettura) -> std::optional<decltype(lettura())> {
  try {
    return lettura();
  } catch (const RuntimeError& errore) {
    Esigi(errore.Number() == errors::Driver, "numero d'errore sconosciuto");
    Esigi(std::find(ErroriAmmessi.begin(), ErroriAmmessi.end(), errore.Description()) != ErroriAmmessi.end(),
          "errore sconosciuto");
    return std::nullopt;
  }
}

std::string TraVirgolette(std::string_view valore, char virgolette) {
  std::string scritto(1, virgolette);
  for (const char c : valore) {
    scritto.append(c == virgolette ? 2 : 1, c);
  }
  return scritto + virgolette;
}

bool Uguali(const ConnectionSettings& a, const ConnectionSettings& b) {
  return a.DataSource == b.DataSource && a.UserId == b.UserId && a.Password == b.Password &&
         a.connectTimeout == b.connectTimeout;
}

/// Reads one value as an ODBC driver manager does, and takes it off the text with its ";".
std::string ValoreOdbc(std::string_view& resto) {
  std::string valore;
  if (!resto.starts_with('{')) {
    const auto fine = resto.find(';');
    Esigi(fine != std::string_view::npos, "un valore senza fine");
    valore = resto.substr(0, fine);
    resto.remove_prefix(fine + 1);
    return valore;
  }
  std::size_t i = 1;
  for (; i < resto.size(); ++i) {
    if (resto[i] == '}' && (i + 1 >= resto.size() || resto[i + 1] != '}')) {
      break;
    }
    valore += resto[i];
    i += resto[i] == '}' ? 1U : 0U;
  }
  Esigi(resto.substr(i, 2) == "};", "una graffa non chiusa");
  resto.remove_prefix(i + 2);
  return valore;
}

std::string DopoParola(std::string_view& resto, std::string_view parola) {
  Esigi(resto.starts_with(parola), "manca una parola chiave di ODBC");
  resto.remove_prefix(parola.size());
  return ValoreOdbc(resto);
}

void ControllaOdbc(const std::string& testo, const ConnectionSettings& impostazioni) {
  Esigi(testo.size() <= MassimoOdbc, "un testo ODBC troppo lungo per la chiamata");
  Esigi(testo.find('\0') == std::string::npos, "un carattere nullo nel testo ODBC");
  std::string_view resto = testo;
  Esigi(DopoParola(resto, "DSN=") == impostazioni.DataSource, "l'origine dati è cambiata");
  Esigi(DopoParola(resto, "UID=") == impostazioni.UserId, "l'utente è cambiato");
  Esigi(DopoParola(resto, "PWD=") == impostazioni.Password, "la password è cambiata");
  Esigi(resto.empty(), "una parola chiave di troppo nel testo ODBC");
}

} // namespace

void Connessione(Ingresso ingresso) {
  const std::string_view testo = Testo(ingresso);
  const auto impostazioni = Prova([&] { return ado::ReadConnectionText(testo); });
  if (!impostazioni) {
    return;
  }
  Esigi(impostazioni->connectTimeout >= 0, "un tempo negativo");
  for (const char virgolette : {'"', '\''}) {
    const std::string riscritto = "Ignota=x;PWD=vecchia;DSN=" + TraVirgolette(impostazioni->DataSource, virgolette) +
                                  ";UID=" + TraVirgolette(impostazioni->UserId, virgolette) +
                                  " ;Password=" + TraVirgolette(impostazioni->Password, virgolette) +
                                  ";Connect Timeout=" + std::to_string(impostazioni->connectTimeout);
    Esigi(Uguali(ado::ReadConnectionText(riscritto), *impostazioni), "il testo riscritto dà altre impostazioni");
  }
  const auto odbc = Prova([&] { return ado::OdbcText(*impostazioni); });
  if (odbc) {
    ControllaOdbc(*odbc, *impostazioni);
  }
}

} // namespace lumoscad::fuzz
