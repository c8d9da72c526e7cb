#include "RichiestaFile.hpp"

#include <array>
#include <chrono>
#include <span>
#include <vector>

namespace lumoscad::demo {

namespace {

constexpr std::string_view Nessuno = "#null#";

bool SoloCifre(std::string_view testo) {
  return !testo.empty() && testo.find_first_not_of("0123456789") == std::string_view::npos;
}

/// A calendar day, from its year, month and day in digits.
bool GiornoReale(std::string_view anno, std::string_view mese, std::string_view giorno) {
  const auto numero = [](std::string_view cifre) { return std::stoi(std::string(cifre)); };
  return std::chrono::year_month_day(std::chrono::year(numero(anno)),
                                     std::chrono::month(static_cast<unsigned>(numero(mese))),
                                     std::chrono::day(static_cast<unsigned>(numero(giorno))))
      .ok();
}

std::vector<std::string_view> Dividi(std::string_view riga, char separatore) {
  std::vector<std::string_view> campi;
  for (;;) {
    const auto fine = riga.find(separatore);
    campi.push_back(riga.substr(0, fine));
    if (fine == std::string_view::npos) {
      return campi;
    }
    riga.remove_prefix(fine + 1);
  }
}

// Each check gives the reason for a refusal, an empty text where the field is right.

std::string Obbligatorio(std::string_view testo) {
  return testo.find_first_not_of(' ') == std::string_view::npos ? "manca" : "";
}

std::string Libero(std::string_view /*testo*/) {
  return "";
}

std::string AnnoFacoltativo(std::string_view testo) {
  return testo.empty() || (testo.size() == 4 && SoloCifre(testo)) ? "" : "non è un anno di quattro cifre";
}

std::string DataFacoltativa(std::string_view testo) {
  if (testo.empty() || testo == "00000000") {
    return "";
  }
  if (testo.size() != 8 || !SoloCifre(testo)) {
    return "non è una data di otto cifre";
  }
  return GiornoReale(testo.substr(0, 4), testo.substr(4, 2), testo.substr(6)) ? "" : "è una data inesistente";
}

std::string BancaFacoltativa(std::string_view testo) {
  if (testo.empty() || testo == Nessuno) {
    return "";
  }
  if (testo.find(' ') != std::string_view::npos || testo.starts_with('#')) {
    return "non è un codice di banca";
  }
  return "";
}

std::string NumeroDiRata(std::string_view testo) {
  return SoloCifre(testo) && testo.size() <= 9 ? "" : "non è un numero di rata";
}

std::string Vuoto(std::string_view testo) {
  return testo.empty() ? "" : "dovrebbe essere vuoto";
}

std::string AnnoDiDocumento(std::string_view testo) {
  return testo.size() == 2 && SoloCifre(testo) ? "" : "non è un anno di due cifre";
}

/// A document whose number is its year alone has an empty one.
std::string NumeroDiDocumento(std::string_view testo) {
  return testo.empty() || SoloCifre(testo) ? "" : "non è il numero di un documento";
}

/// A bank, or the word for none where a document has none or is to lose its own.
std::string BancaONessuna(std::string_view testo) {
  return testo.empty() ? "manca" : BancaFacoltativa(testo);
}

std::string DataONessuna(std::string_view testo) {
  return testo.empty() ? "manca" : DataFacoltativa(testo);
}

std::string DataObbligatoria(std::string_view testo) {
  return testo.empty() || testo == "00000000" ? "manca" : DataFacoltativa(testo);
}

struct Campo {
  const char* nome;
  std::string (*controllo)(std::string_view);
};

constexpr std::array<Campo, 11> CampiCanalizzazione{{{"CodiceConto", Obbligatorio},
                                                     {"NumeroPartita", Obbligatorio},
                                                     {"Anno", AnnoFacoltativo},
                                                     {"Numero", Libero},
                                                     {"Serie", Libero},
                                                     {"ScadenzaOriginale", DataFacoltativa},
                                                     {"VecchiaScadenza", DataFacoltativa},
                                                     {"NuovaScadenza", DataFacoltativa},
                                                     {"VecchiaBanca", BancaFacoltativa},
                                                     {"NuovaBanca", BancaFacoltativa},
                                                     {"NumeroRata", NumeroDiRata}}};

// A presumed document is named by series, number and year; it has no item and no instalments.
constexpr std::array<Campo, 11> CampiBancaPresunti{{{"CodiceConto", Obbligatorio},
                                                    {"NumeroPartita", Vuoto},
                                                    {"Anno", AnnoDiDocumento},
                                                    {"Numero", NumeroDiDocumento},
                                                    {"Serie", Obbligatorio},
                                                    {"ScadenzaOriginale", Vuoto},
                                                    {"VecchiaScadenza", Vuoto},
                                                    {"NuovaScadenza", Vuoto},
                                                    {"VecchiaBanca", BancaONessuna},
                                                    {"NuovaBanca", BancaONessuna},
                                                    {"NumeroRata", Vuoto}}};

constexpr std::array<Campo, 7> CampiConsegna{{{"CodiceConto", Obbligatorio},
                                              {"Serie", Obbligatorio},
                                              {"Numero", NumeroDiDocumento},
                                              {"Anno", AnnoDiDocumento},
                                              {"Consegna", DataONessuna},
                                              {"ConsegnaOrigine", DataONessuna},
                                              {"NuovaConsegna", DataObbligatoria}}};

constexpr std::array<Campo, 4> CampiScadenze{{{"CodiceConto", Obbligatorio},
                                              {"NumeroPartita", Obbligatorio},
                                              {"ScadenzaOriginale", DataONessuna},
                                              {"NuovaScadenza", DataObbligatoria}}};

std::string Riga(std::size_t numero) {
  return "Riga " + std::to_string(numero);
}

[[noreturn]] void RifiutaCampo(std::size_t riga, std::size_t campo, const Campo& nome, std::string_view valore,
                               const std::string& motivo) {
  throw Rifiuto(Riga(riga) + ", campo " + std::to_string(campo + 1) + " (" + nome.nome + "): «" + std::string(valore) +
                "» " + motivo + ".");
}

bool HaControlli(std::string_view testo) {
  for (const char carattere : testo) {
    const auto codice = static_cast<unsigned char>(carattere);
    if (codice < 0x20 || codice == 0x7F) {
      return true;
    }
  }
  return false;
}

/// Checks every field of a line, the first of which is an account code, and returns the fields.
std::vector<std::string_view> ControllaCampi(std::string_view riga, std::size_t numero, std::span<const Campo> attesi,
                                             const std::set<std::string>& contiBloccati) {
  auto campi = Dividi(riga, ',');
  if (campi.size() != attesi.size()) {
    throw Rifiuto(Riga(numero) + ": " + std::to_string(campi.size()) + " campi invece di " +
                  std::to_string(attesi.size()) + ".");
  }
  for (std::size_t indice = 0; indice < campi.size(); ++indice) {
    const auto motivo =
        HaControlli(campi[indice]) ? "contiene un carattere di controllo" : attesi[indice].controllo(campi[indice]);
    if (!motivo.empty()) {
      RifiutaCampo(numero, indice, attesi[indice], HaControlli(campi[indice]) ? std::string_view() : campi[indice],
                   motivo);
    }
  }
  if (contiBloccati.contains(std::string(campi.front()))) {
    RifiutaCampo(numero, 0, attesi[0], campi.front(), "è un conto bloccato");
  }
  return campi;
}

/// Hands every line to `controlla` with its number and returns how many there are.
template <typename Controlla> std::size_t OgniRiga(std::string_view contenuto, Controlla controlla) {
  if (contenuto.empty()) {
    throw Rifiuto("Il file della richiesta è vuoto.");
  }
  std::size_t righe = 0;
  while (!contenuto.empty()) {
    ++righe;
    const auto fine = contenuto.find('\n');
    if (fine == std::string_view::npos || fine == 0 || contenuto[fine - 1] != '\r') {
      throw Rifiuto(Riga(righe) + ": non termina con CR LF.");
    }
    controlla(contenuto.substr(0, fine - 1), righe);
    contenuto.remove_prefix(fine + 1);
  }
  return righe;
}

} // namespace

std::size_t ControllaCanalizzazione(std::string_view contenuto, const std::set<std::string>& contiBloccati) {
  static constexpr std::size_t NuovaScadenza = 7;
  static constexpr std::size_t NuovaBanca = 9;
  return OgniRiga(contenuto, [&](std::string_view riga, std::size_t numero) {
    const auto campi = ControllaCampi(riga, numero, CampiCanalizzazione, contiBloccati);
    if (campi[NuovaScadenza].empty() && campi[NuovaBanca].empty()) {
      throw Rifiuto(Riga(numero) + ": nessuna variazione, i campi 8 (NuovaScadenza) e 10 (NuovaBanca) sono vuoti.");
    }
  });
}

std::size_t ControllaBancaPresunti(std::string_view contenuto, const std::set<std::string>& contiBloccati) {
  static constexpr std::size_t VecchiaBanca = 8;
  static constexpr std::size_t NuovaBanca = 9;
  return OgniRiga(contenuto, [&](std::string_view riga, std::size_t numero) {
    const auto campi = ControllaCampi(riga, numero, CampiBancaPresunti, contiBloccati);
    if (campi[VecchiaBanca] == campi[NuovaBanca]) {
      throw Rifiuto(Riga(numero) + ": nessuna variazione, i campi 9 (VecchiaBanca) e 10 (NuovaBanca) sono uguali.");
    }
  });
}

std::size_t ControllaConsegna(std::string_view contenuto, const std::set<std::string>& contiBloccati) {
  static constexpr std::size_t Consegna = 4;
  static constexpr std::size_t NuovaConsegna = 6;
  return OgniRiga(contenuto, [&](std::string_view riga, std::size_t numero) {
    const auto campi = ControllaCampi(riga, numero, CampiConsegna, contiBloccati);
    if (campi[Consegna] == campi[NuovaConsegna]) {
      throw Rifiuto(Riga(numero) + ": nessuna variazione, i campi 5 (Consegna) e 7 (NuovaConsegna) sono uguali.");
    }
  });
}

std::size_t ControllaScadenze(std::string_view contenuto, const std::set<std::string>& contiBloccati) {
  return OgniRiga(contenuto, [&](std::string_view riga, std::size_t numero) {
    static_cast<void>(ControllaCampi(riga, numero, CampiScadenze, contiBloccati));
  });
}

} // namespace lumoscad::demo
