#include "platform/ado/ConnectionText.hpp"

#include "platform/RuntimeError.hpp"
#include "platform/base/AsciiCase.hpp"

#include <algorithm>
#include <charconv>

namespace lumoscad::ado {

namespace {

[[noreturn]] void Malformed(const char* why) {
  throw RuntimeError(errors::Driver, std::string("Testo di connessione non valido: ") + why, "ODBC");
}

std::string_view Trimmed(std::string_view text) {
  constexpr std::string_view Blanks = " \t\r\n";
  const auto first = text.find_first_not_of(Blanks);
  if (first == std::string_view::npos) {
    return {};
  }
  return text.substr(first, text.find_last_not_of(Blanks) - first + 1);
}

class Scanner {
 public:
  explicit Scanner(std::string_view text) : text_(text) {}

  /// Reads the next pair; false at the end of the text.
  bool Next(std::string& keyword, std::string& value) {
    at_ = std::min(text_.find_first_not_of("; \t\r\n", at_), text_.size());
    if (at_ == text_.size()) {
      return false;
    }
    const auto equals = text_.find_first_of("=;", at_);
    if (equals == std::string_view::npos || text_[equals] == ';') {
      Malformed("manca il segno \"=\" dopo una parola chiave.");
    }
    keyword = base::LowerCase(Trimmed(text_.substr(at_, equals - at_)));
    if (keyword.empty()) {
      Malformed("manca la parola chiave prima di un segno \"=\".");
    }
    at_ = equals + 1;
    value = ReadValue();
    return true;
  }

 private:
  std::string ReadValue() {
    const auto start = std::min(text_.find_first_not_of(" \t\r\n", at_), text_.size());
    if (start < text_.size() && (text_[start] == '"' || text_[start] == '\'')) {
      return ReadQuoted(start);
    }
    const auto end = std::min(text_.find(';', at_), text_.size());
    std::string value(Trimmed(text_.substr(at_, end - at_)));
    at_ = end;
    return value;
  }

  std::string ReadQuoted(std::size_t start) {
    const char quote = text_[start];
    std::string value;
    for (std::size_t i = start + 1; i < text_.size(); ++i) {
      if (text_[i] != quote) {
        value += text_[i];
      } else if (i + 1 < text_.size() && text_[i + 1] == quote) {
        value += quote;
        ++i;
      } else {
        at_ = std::min(text_.find_first_not_of(" \t\r\n", i + 1), text_.size());
        if (at_ < text_.size() && text_[at_] != ';') {
          Malformed("testo dopo le virgolette di chiusura.");
        }
        return value;
      }
    }
    Malformed("mancano le virgolette di chiusura.");
  }

  std::string_view text_;
  std::size_t at_ = 0;
};

int Seconds(const std::string& value) {
  int result = 0;
  const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), result);
  if (error != std::errc() || end != value.data() + value.size() || result < 0) {
    Malformed("il tempo massimo di connessione non è un numero di secondi.");
  }
  return result;
}

/// The driver manager and the drivers copy the values into buffers of their own, whose sizes they do not tell; and the
/// length of the whole text is a 16-bit number.
constexpr std::size_t LongestValue = 1000;

/// A value as an ODBC connection string takes it: in braces where a character would end it or open braces. "%" and
/// "+" too want braces, because PostgreSQL's driver decodes a bare value as it would an address.
std::string Carried(const std::string& value, const char* name) {
  if (value.find('\0') != std::string::npos) {
    Malformed(name);
  }
  const bool blankEnds = !value.empty() && (value.front() == ' ' || value.back() == ' ');
  if (!blankEnds && value.find_first_of("[]{}(),;?*=!@%+") == std::string::npos) {
    return value;
  }
  std::string braced = "{";
  for (const char c : value) {
    braced += c;
    if (c == '}') {
      braced += c;
    }
  }
  return braced + '}';
}

} // namespace

ConnectionSettings ReadConnectionText(std::string_view connectionText) {
  ConnectionSettings settings;
  Scanner scanner(connectionText);
  std::string keyword;
  std::string value;
  while (scanner.Next(keyword, value)) {
    if (keyword == "data source" || keyword == "dsn") {
      settings.DataSource = value;
    } else if (keyword == "user id" || keyword == "uid") {
      settings.UserId = value;
    } else if (keyword == "password" || keyword == "pwd") {
      settings.Password = value;
    } else if (keyword == "connect timeout") {
      settings.connectTimeout = Seconds(value);
    }
  }
  return settings;
}

std::string OdbcText(const ConnectionSettings& parsed) {
  if (Trimmed(parsed.DataSource).empty()) {
    throw RuntimeError(errors::Driver, "Connessione alla base dati: l'origine dati ODBC non è indicata.", "ODBC");
  }
  for (const std::string* value : {&parsed.DataSource, &parsed.UserId, &parsed.Password}) {
    if (value->size() > LongestValue) {
      Malformed("un valore supera i 1000 byte.");
    }
  }
  if (parsed.DataSource.find_first_of(std::string_view("[]{};=\0", 7)) != std::string::npos) {
    Malformed("il nome dell'origine dati contiene un carattere non ammesso.");
  }
  return "DSN=" + parsed.DataSource + ";UID=" + Carried(parsed.UserId, "l'utente contiene un carattere non ammesso.") +
         ";PWD=" + Carried(parsed.Password, "la password contiene un carattere non ammesso.") + ";";
}

} // namespace lumoscad::ado
