#include "RichiestaFile.hpp"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <vector>

namespace {

using namespace lumoscad::demo;

using Parametri = std::vector<std::string>;

/// What a request was answered with, and what it brought.
struct Risposta {
  bool accettata = false;
  std::string testo;
  std::string contenuto; ///< the request file, empty where there was none
};

std::optional<std::string> LeggiFile(const std::string& percorso) {
  std::ifstream file(percorso, std::ios::binary);
  if (!file) {
    return std::nullopt;
  }
  return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

std::set<std::string> ContiBloccati(const std::string& radice) {
  std::set<std::string> conti{"BLOCCATO"};
  std::ifstream file(radice + "/conti_bloccati");
  for (std::string conto; std::getline(file, conto);) {
    conti.insert(conto);
  }
  return conti;
}

/// Reads the request file of a complete upload.
std::string LeggiRichiesta(const std::string& radice, const std::string& percorso) {
  if (!percorso.starts_with("/tmp/") || percorso.find("..") != std::string::npos || !percorso.ends_with(".dos")) {
    throw Rifiuto("Parametro 5: «" + percorso + "» non è il nome di un file di richiesta completo.");
  }
  auto contenuto = LeggiFile(radice + percorso);
  if (!contenuto) {
    throw Rifiuto("Il file della richiesta «" + percorso + "» non esiste.");
  }
  return std::move(*contenuto);
}

void ControllaObbligatori(const Parametri& parametri, std::size_t quanti) {
  for (std::size_t indice = 0; indice < parametri.size(); ++indice) {
    const auto posto = "Parametro " + std::to_string(indice + 1) + ": ";
    if (indice < quanti && parametri[indice].find_first_not_of(' ') == std::string::npos) {
      throw Rifiuto(posto + "manca.");
    }
    if (indice >= quanti && !parametri[indice].empty()) {
      throw Rifiuto(posto + "«" + parametri[indice] + "» dovrebbe essere vuoto.");
    }
  }
}

std::string Variate(std::size_t scadenze) {
  return scadenze == 1 ? "Variata 1 scadenza" : "Variate " + std::to_string(scadenze) + " scadenze";
}

std::string Variati(std::size_t documenti) {
  return documenti == 1 ? "Variato 1 documento" : "Variati " + std::to_string(documenti) + " documenti";
}

std::string VariateConsegne(std::size_t consegne) {
  return consegne == 1 ? "Variata 1 consegna" : "Variate " + std::to_string(consegne) + " consegne";
}

Risposta Canalizzazione(const std::string& radice, const Parametri& parametri) {
  static constexpr std::array<std::string_view, 3> tipi{"CREDITI", "DEBITI", "PRESUNTI"};
  static constexpr std::size_t Compilati = 5;
  ControllaObbligatori(parametri, Compilati);
  if (std::find(tipi.begin(), tipi.end(), parametri[2]) == tipi.end()) {
    throw Rifiuto("Parametro 3: «" + parametri[2] + "» non è CREDITI, DEBITI o PRESUNTI.");
  }
  auto contenuto = LeggiRichiesta(radice, parametri[4]);
  const auto bloccati = ContiBloccati(radice);
  auto testo = parametri[2] == "PRESUNTI" ? Variati(ControllaBancaPresunti(contenuto, bloccati))
                                          : Variate(ControllaCanalizzazione(contenuto, bloccati));
  return {true, std::move(testo), std::move(contenuto)};
}

Risposta Consegna(const std::string& radice, const Parametri& parametri) {
  static constexpr std::size_t Compilati = 5;
  ControllaObbligatori(parametri, Compilati);
  if (parametri[2] != "PRESUNTI") {
    throw Rifiuto("Parametro 3: «" + parametri[2] + "» non è PRESUNTI.");
  }
  auto contenuto = LeggiRichiesta(radice, parametri[4]);
  const auto consegne = ControllaConsegna(contenuto, ContiBloccati(radice));
  return {true, VariateConsegne(consegne), std::move(contenuto)};
}

Risposta Scadenze(const std::string& radice, const Parametri& parametri) {
  static constexpr std::size_t Compilati = 5;
  ControllaObbligatori(parametri, Compilati);
  auto contenuto = LeggiRichiesta(radice, parametri[4]);
  const auto scadenze = ControllaScadenze(contenuto, ContiBloccati(radice));
  return {true, Variate(scadenze), std::move(contenuto)};
}

void ControllaConto(const std::string& radice, const std::string& conto) {
  if (ContiBloccati(radice).contains(conto)) {
    throw Rifiuto("Parametro 3: «" + conto + "» è un conto bloccato.");
  }
}

Risposta Sospensione(const std::string& radice, const Parametri& parametri) {
  static constexpr std::size_t Compilati = 5;
  ControllaObbligatori(parametri, Compilati);
  ControllaConto(radice, parametri[2]);
  return {true, "Sospesa la partita " + parametri[3] + " del conto " + parametri[2], ""};
}

Risposta Riattivazione(const std::string& radice, const Parametri& parametri) {
  static constexpr std::size_t Compilati = 4;
  ControllaObbligatori(parametri, Compilati);
  ControllaConto(radice, parametri[2]);
  return {true, "Riattivata la partita " + parametri[3] + " del conto " + parametri[2], ""};
}

bool Cifre(const std::string& testo) {
  return !testo.empty() && testo.find_first_not_of("0123456789") == std::string::npos;
}

void ControllaNumero(const std::string& numero) {
  if (!Cifre(numero)) {
    throw Rifiuto("Parametro 5: «" + numero + "» non è il numero di un documento.");
  }
}

/// A presumed document's year may be missing, where its number says it all.
std::string Documento(const Parametri& parametri) {
  static constexpr std::size_t Compilati = 6;
  Parametri senzaAnno = parametri;
  senzaAnno[3] = parametri[3].empty() ? "-" : parametri[3];
  ControllaObbligatori(senzaAnno, Compilati);
  const auto cifre = parametri[3].size();
  if (cifre != 0 && (!Cifre(parametri[3]) || (cifre != 2 && cifre != 4))) {
    throw Rifiuto("Parametro 4: «" + parametri[3] + "» non è un anno.");
  }
  ControllaNumero(parametri[4]);
  return parametri[2] + " " + parametri[4] + (cifre == 0 ? "" : "/" + parametri[3]);
}

Risposta SospensionePresunto(const std::string& /*radice*/, const Parametri& parametri) {
  return {true, "Sospeso il documento " + Documento(parametri), ""};
}

Risposta RiattivazionePresunto(const std::string& /*radice*/, const Parametri& parametri) {
  return {true, "Riattivato il documento " + Documento(parametri), ""};
}

Risposta CancellazioneExtra(const std::string& /*radice*/, const Parametri& parametri) {
  static constexpr std::size_t Compilati = 5;
  ControllaObbligatori(parametri, Compilati);
  if (!Cifre(parametri[3]) || parametri[3].size() != 4) {
    throw Rifiuto("Parametro 4: «" + parametri[3] + "» non è un esercizio.");
  }
  ControllaNumero(parametri[4]);
  return {true, "Annullato il movimento " + parametri[2] + " " + parametri[4] + " dell'esercizio " + parametri[3], ""};
}

struct Richiesta {
  const char* nome;
  std::size_t parametri;
  Risposta (*esegui)(const std::string& radice, const Parametri& parametri);
};

constexpr std::array<Richiesta, 8> richieste{{{"CANALIZZAZIONE", 11, Canalizzazione},
                                              {"CONSEGNA", 6, Consegna},
                                              {"SCRIVISCADENZE", 101, Scadenze},
                                              {"SOSPESOCREA", 6, Sospensione},
                                              {"SOSPESOCANCELLA", 5, Riattivazione},
                                              {"PRESUNTOCREA", 7, SospensionePresunto},
                                              {"PRESUNTOCANCELLA", 7, RiattivazionePresunto},
                                              {"EXTRADEL", 6, CancellazioneExtra}}};

Risposta Esegui(const std::string& radice, const Parametri& parametri) {
  const std::string nome = parametri.size() > 1 ? parametri[1] : "";
  for (const auto& richiesta : richieste) {
    if (nome != richiesta.nome) {
      continue;
    }
    if (parametri.size() != richiesta.parametri) {
      throw Rifiuto("La richiesta " + nome + " ha " + std::to_string(parametri.size()) + " parametri invece di " +
                    std::to_string(richiesta.parametri) + ".");
    }
    return richiesta.esegui(radice, parametri);
  }
  throw Rifiuto("Richiesta sconosciuta: «" + nome + "».");
}

std::string PerRegistro(const std::string& testo) {
  std::string uscita;
  for (const char carattere : testo) {
    switch (carattere) {
    case '\\':
      uscita += "\\\\";
      break;
    case '\t':
      uscita += "\\t";
      break;
    case '\r':
      uscita += "\\r";
      break;
    case '\n':
      uscita += "\\n";
      break;
    default:
      uscita += carattere;
    }
  }
  return uscita;
}

/// One line a call: outcome, answer, number of parameters, the parameters, the accepted file.
bool Registra(const std::string& radice, const Parametri& parametri, const Risposta& risposta) {
  std::string riga = risposta.accettata ? "ACCETTATA" : "RIFIUTATA";
  riga += "\t" + PerRegistro(risposta.testo) + "\t" + std::to_string(parametri.size());
  for (const auto& parametro : parametri) {
    riga += "\t" + PerRegistro(parametro);
  }
  std::ofstream registro(radice + "/registro/VB0001.log", std::ios::binary | std::ios::app);
  registro << riga + "\t" + PerRegistro(risposta.contenuto) + "\n" << std::flush;
  return registro.good();
}

std::string PerXml(const std::string& testo) {
  std::string uscita;
  for (const char carattere : testo) {
    const auto codice = static_cast<unsigned char>(carattere);
    if (carattere == '&') {
      uscita += "&amp;";
    } else if (carattere == '<') {
      uscita += "&lt;";
    } else if (carattere == '>') {
      uscita += "&gt;";
    } else if (codice >= 0x20 || carattere == '\n' || carattere == '\t') {
      uscita += carattere;
    } else {
      uscita += '?';
    }
  }
  return uscita;
}

} // namespace

int main(int numero, char** argomenti) {
  const char* radice = std::getenv("NEXARO_RADICE");
  if (radice == nullptr || *radice == '\0') {
    std::fputs("Manca NEXARO_RADICE, la cartella dell'host.\n", stderr);
    return 2;
  }
  const Parametri parametri(argomenti + 1, argomenti + numero);
  Risposta risposta;
  try {
    risposta = Esegui(radice, parametri);
  } catch (const Rifiuto& rifiuto) {
    risposta.testo = rifiuto.what();
  }
  if (!Registra(radice, parametri, risposta)) {
    std::fputs("Il registro delle chiamate non può essere scritto.\n", stderr);
    return 1;
  }
  const std::string elemento = risposta.accettata ? "MESSAGGIO" : "ERRORE";
  std::printf("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<RISPOSTA><%s>%s</%s></RISPOSTA>\n", elemento.c_str(),
              PerXml(risposta.testo).c_str(), elemento.c_str());
  return std::fflush(stdout) == 0 ? 0 : 1;
}
