#include "platform/xml/Decodifica.hpp"

#include "platform/Errore.hpp"
#include "platform/base/AsciiCase.hpp"
#include "platform/base/CharacterConverter.hpp"

#include <algorithm>
#include <array>

namespace lumoscad::xml {

namespace {

bool NomeValido(std::string_view nome) {
  return !nome.empty() && nome.size() <= 40 &&
         nome.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789._-") ==
             std::string_view::npos;
}

/// Unicode and the one-byte encodings of western hosts. The system's library knows hundreds more, with state and with
/// faults of their own, which a reply must not be able to call upon.
bool Conosciuta(std::string_view codifica) {
  static constexpr std::array<std::string_view, 13> intere{"utf-8",  "utf8",     "utf-16", "utf-16le", "utf-16be",
                                                           "ascii",  "us-ascii", "latin1", "latin9",   "cp850",
                                                           "ibm850", "cp437",    "ibm437"};
  static constexpr std::array<std::string_view, 4> famiglie{"iso-8859-", "iso8859-", "windows-125", "cp125"};
  const std::string nome = base::LowerCase(codifica);
  const auto famiglia = std::any_of(famiglie.begin(), famiglie.end(), [&](std::string_view inizio) {
    return nome.starts_with(inizio) && nome.size() <= inizio.size() + 2 &&
           nome.find_first_not_of("0123456789", inizio.size()) == std::string::npos;
  });
  return famiglia || std::find(intere.begin(), intere.end(), nome) != intere.end();
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
  } else if (documento.starts_with(std::string_view("<\0?\0", 4))) {
    codifica = "UTF-16LE";
  } else if (documento.starts_with(std::string_view("\0<\0?", 4))) {
    codifica = "UTF-16BE";
  } else {
    codifica = CodificaDichiarata(documento);
    // The declaration could be read byte by byte, so that the document cannot be in what it names.
    if (base::LowerCase(codifica).starts_with("utf-16")) {
      throw ErroreRuntime(errori::Driver,
                          "Documento XML che si dichiara in " + codifica + " ma è scritto in un'altra codifica.");
    }
  }
  if (!NomeValido(codifica)) {
    throw ErroreRuntime(errori::Driver, "Documento XML con una dichiarazione di codifica non valida.");
  }
  const auto sconosciuta = [&] {
    return ErroreRuntime(errori::Driver, "Documento XML in una codifica sconosciuta: " + codifica + ".");
  };
  if (!Conosciuta(codifica)) {
    throw sconosciuta();
  }
  const base::CharacterConverter convertitore(codifica);
  if (!convertitore.Known()) {
    throw sconosciuta();
  }
  std::string testo;
  if (convertitore.Convert(documento, testo) != base::Conversion::Whole) {
    throw ErroreRuntime(errori::Driver, "Documento XML con caratteri non validi nella codifica " + codifica + ".");
  }
  return testo;
}

} // namespace lumoscad::xml
