#include "platform/ado/CharacterSet.hpp"

#include "platform/RuntimeError.hpp"
#include "platform/base/AsciiCase.hpp"

#include <clocale>
#include <cstdlib>
#include <langinfo.h>

namespace lumoscad::ado::detail {

namespace {

std::string Current() {
  const char* const name = std::setlocale(LC_CTYPE, nullptr);
  return name == nullptr ? "C" : name;
}

/// The name of the LC_CTYPE in force where a text in UTF-8 would be misread, otherwise nothing.
std::string Unsuited() {
  std::string name = Current();
  // The process' locale, whatever the calling thread has chosen for itself.
  const locale_t ofTheThread = uselocale(LC_GLOBAL_LOCALE);
  const bool suited = name == "C" || name == "POSIX" || base::SameButForCase(nl_langinfo(CODESET), "UTF-8");
  uselocale(ofTheThread);
  return suited ? std::string() : name;
}

/// The variable by which PostgreSQL's client is told another encoding, where it names one.
std::string OtherClientEncoding() {
  const char* const value = std::getenv("PGCLIENTENCODING");
  const std::string encoding = value == nullptr ? "" : value;
  const auto is = [&](const char* name) { return base::SameButForCase(encoding, name); };
  return is("") || is("UTF8") || is("UTF-8") || is("UNICODE") ? std::string() : encoding;
}

[[noreturn]] void Refuse(const std::string& setting, const char* instead) {
  throw RuntimeError(errors::Driver,
                     "Connessione rifiutata: con " + setting +
                         " il driver psqlodbc altera le lettere accentate. Il programma, e l'ambiente in cui è "
                         "avviato, devono usare UTF-8" +
                         instead + ".",
                     "ODBC");
}

} // namespace

CharacterSet::CharacterSet() : before_(Current()), unsuited_(Unsuited()) {}

CharacterSet::~CharacterSet() {
  if (Current() != before_) {
    std::setlocale(LC_CTYPE, before_.c_str());
  }
}

void CharacterSet::RequireSuited(const std::string& driver) const {
  if (!driver.starts_with("psqlodbc")) {
    return;
  }
  const std::string name = unsuited_.empty() ? Unsuited() : unsuited_;
  if (!name.empty()) {
    Refuse("LC_CTYPE=" + name, ", per esempio LC_CTYPE=it_IT.UTF-8");
  }
  if (const std::string encoding = OtherClientEncoding(); !encoding.empty()) {
    Refuse("PGCLIENTENCODING=" + encoding, ": la variabile va tolta");
  }
}

} // namespace lumoscad::ado::detail
