#include "RichiestaFile.hpp"

#include <array>
#include <chrono>
#include <vector>

namespace lumoscad::demo {

namespace {

constexpr std::string_view nessuno = "#null#";

bool SoloCifre(std::string_view testo) {
  return !testo.empty() && testo.find_first_not_of("0123456789") == std::string_view::npos;
}

bool DataReale(std::string_view testo) {
  const auto numero = [testo](std::size_t inizio, std::size_t lunghezza) {
    return std::stoi(std::string(testo.substr(inizio, lunghezza)));
  };
  return std::chrono::year_month_day(std::chrono::year(numero(0, 4)),
                                     std::chrono::month(static_cast<unsigned>(numero(4, 2))),
                                     std::chrono::day(static_cast<unsigned>(numero(6, 2))))
      .ok();
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
  return DataReale(testo) ? "" : "è una data inesistente";
}

std::string BancaFacoltativa(std::string_view testo) {
  if (testo.empty() || testo == nessuno) {
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

struct Campo {
  const char* nome;
  std::string (*controllo)(std::string_view);
};

constexpr std::array<Campo, 11> campiCanalizzazione{{{"CodiceConto", Obbligatorio},
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

std::string Riga(std::size_t numero) {
  return "Riga " + std::to_string(numero);
}

[[noreturn]] void RifiutaCampo(std::size_t riga, std::size_t campo, std::string_view valore,
                               const std::string& motivo) {
  throw Rifiuto(Riga(riga) + ", campo " + std::to_string(campo + 1) + " (" + campiCanalizzazione.at(campo).nome +
                "): «" + std::string(valore) + "» " + motivo + ".");
}

std::vector<std::string_view> Dividi(std::string_view riga) {
  std::vector<std::string_view> campi;
  for (;;) {
    const auto virgola = riga.find(',');
    campi.push_back(riga.substr(0, virgola));
    if (virgola == std::string_view::npos) {
      return campi;
    }
    riga.remove_prefix(virgola + 1);
  }
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

void ControllaRiga(std::string_view riga, std::size_t numero, const std::set<std::string>& contiBloccati) {
  static constexpr std::size_t NuovaScadenza = 7;
  static constexpr std::size_t NuovaBanca = 9;
  const auto campi = Dividi(riga);
  if (campi.size() != campiCanalizzazione.size()) {
    throw Rifiuto(Riga(numero) + ": " + std::to_string(campi.size()) + " campi invece di " +
                  std::to_string(campiCanalizzazione.size()) + ".");
  }
  for (std::size_t indice = 0; indice < campi.size(); ++indice) {
    const auto motivo = HaControlli(campi[indice]) ? "contiene un carattere di controllo"
                                                   : campiCanalizzazione.at(indice).controllo(campi[indice]);
    if (!motivo.empty()) {
      RifiutaCampo(numero, indice, HaControlli(campi[indice]) ? std::string_view() : campi[indice], motivo);
    }
  }
  if (contiBloccati.contains(std::string(campi.front()))) {
    RifiutaCampo(numero, 0, campi.front(), "è un conto bloccato");
  }
  if (campi[NuovaScadenza].empty() && campi[NuovaBanca].empty()) {
    throw Rifiuto(Riga(numero) + ": nessuna variazione, i campi 8 (NuovaScadenza) e 10 (NuovaBanca) sono vuoti.");
  }
}

} // namespace

std::size_t ControllaCanalizzazione(std::string_view contenuto, const std::set<std::string>& contiBloccati) {
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
    ControllaRiga(contenuto.substr(0, fine - 1), righe, contiBloccati);
    contenuto.remove_prefix(fine + 1);
  }
  return righe;
}

} // namespace lumoscad::demo
