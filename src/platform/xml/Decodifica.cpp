#include "platform/xml/Decodifica.hpp"

#include "platform/Errore.hpp"

#include <array>
#include <cerrno>
#include <iconv.h>

namespace lumoscad::xml {

namespace {

class Convertitore {
 public:
  explicit Convertitore(const std::string& codifica) : descrittore_(iconv_open("UTF-8", codifica.c_str())) {}
  Convertitore(const Convertitore&) = delete;
  Convertitore& operator=(const Convertitore&) = delete;
  ~Convertitore() {
    if (Valido()) {
      iconv_close(descrittore_);
    }
  }

  [[nodiscard]] bool Valido() const { return descrittore_ != Assente(); }

  /// Converts everything; false when the bytes do not fit the encoding.
  bool Converti(std::string_view ingresso, std::string& uscita) const {
    std::string copia(ingresso);
    char* sorgente = copia.data();
    std::size_t restano = copia.size();
    std::array<char, 16384> tampone{};
    while (restano > 0) {
      char* scritto = tampone.data();
      std::size_t spazio = tampone.size();
      const auto esito = iconv(descrittore_, &sorgente, &restano, &scritto, &spazio);
      uscita.append(tampone.data(), tampone.size() - spazio);
      if (esito == static_cast<std::size_t>(-1) && errno != E2BIG) {
        return false;
      }
    }
    return true;
  }

 private:
  // The C interface reports failure with a pointer of all ones.
  static iconv_t Assente() {
    return reinterpret_cast<iconv_t>(-1); // NOLINT(performance-no-int-to-ptr)
  }

  iconv_t descrittore_;
};

bool NomeValido(std::string_view nome) {
  return !nome.empty() && nome.size() <= 40 &&
         nome.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789._-") ==
             std::string_view::npos;
}

/// The encoding that the XML declaration names, UTF-8 where it names none.
std::string CodificaDichiarata(std::string_view documento) {
  if (!documento.starts_with("<?xml")) {
    return "UTF-8";
  }
  const auto dichiarazione = documento.substr(0, documento.find("?>"));
  auto posizione = dichiarazione.find("encoding");
  if (posizione == std::string_view::npos) {
    return "UTF-8";
  }
  posizione = dichiarazione.find_first_of("\"'", posizione);
  if (posizione == std::string_view::npos) {
    return {};
  }
  const auto fine = dichiarazione.find(dichiarazione[posizione], posizione + 1);
  return std::string(dichiarazione.substr(posizione + 1, fine == std::string_view::npos ? 0 : fine - posizione - 1));
}

} // namespace

std::string Decodifica(std::string_view documento) {
  std::string codifica;
  if (documento.starts_with("\xEF\xBB\xBF")) {
    codifica = "UTF-8";
    documento.remove_prefix(3);
  } else if (documento.starts_with("\xFF\xFE")) {
    codifica = "UTF-16LE";
    documento.remove_prefix(2);
  } else if (documento.starts_with("\xFE\xFF")) {
    codifica = "UTF-16BE";
    documento.remove_prefix(2);
  } else {
    codifica = CodificaDichiarata(documento);
  }
  if (!NomeValido(codifica)) {
    throw ErroreRuntime(errori::Driver, "Documento XML con una dichiarazione di codifica non valida.");
  }
  const Convertitore convertitore(codifica);
  if (!convertitore.Valido()) {
    throw ErroreRuntime(errori::Driver, "Documento XML in una codifica sconosciuta: " + codifica + ".");
  }
  std::string testo;
  if (!convertitore.Converti(documento, testo)) {
    throw ErroreRuntime(errori::Driver, "Documento XML con caratteri non validi nella codifica " + codifica + ".");
  }
  return testo;
}

} // namespace lumoscad::xml
