#include "Codifica.hpp"
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

/// A call: where it finds its files, and what it was asked.
struct Chiamata {
  std::string radice;
  Parametri parametri;
  Codifica codifica;
};

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
    conti.insert(Codifica().Leggi(conto)); // the list is the host's own, whatever a call is written in
  }
  return conti;
}

/// Reads the request file of a complete upload.
std::string LeggiRichiesta(Chiamata& chiamata, const std::string& percorso) {
  if (!percorso.starts_with("/tmp/") || percorso.find("..") != std::string::npos || !percorso.ends_with(".dos")) {
    throw Rifiuto("Parametro 5: «" + percorso + "» non è il nome di un file di richiesta completo.");
  }
  const auto contenuto = LeggiFile(chiamata.radice + chiamata.codifica.Scrivi(percorso));
  if (!contenuto) {
    throw Rifiuto("Il file della richiesta «" + percorso + "» non esiste.");
  }
  return chiamata.codifica.Leggi(*contenuto);
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

Risposta Canalizzazione(Chiamata& chiamata) {
  const Parametri& parametri = chiamata.parametri;
  static constexpr std::array<std::string_view, 3> Tipi{"CREDITI", "DEBITI", "PRESUNTI"};
  static constexpr std::size_t Compilati = 5;
  ControllaObbligatori(parametri, Compilati);
  if (std::find(Tipi.begin(), Tipi.end(), parametri[2]) == Tipi.end()) {
    throw Rifiuto("Parametro 3: «" + parametri[2] + "» non è CREDITI, DEBITI o PRESUNTI.");
  }
  auto contenuto = LeggiRichiesta(chiamata, parametri[4]);
  const auto bloccati = ContiBloccati(chiamata.radice);
  auto testo = parametri[2] == "PRESUNTI" ? Variati(ControllaBancaPresunti(contenuto, bloccati))
                                          : Variate(ControllaCanalizzazione(contenuto, bloccati));
  return {true, std::move(testo), std::move(contenuto)};
}

Risposta Consegna(Chiamata& chiamata) {
  const Parametri& parametri = chiamata.parametri;
  static constexpr std::size_t Compilati = 5;
  ControllaObbligatori(parametri, Compilati);
  if (parametri[2] != "PRESUNTI") {
    throw Rifiuto("Parametro 3: «" + parametri[2] + "» non è PRESUNTI.");
  }
  auto contenuto = LeggiRichiesta(chiamata, parametri[4]);
  const auto consegne = ControllaConsegna(contenuto, ContiBloccati(chiamata.radice));
  return {true, VariateConsegne(consegne), std::move(contenuto)};
}

Risposta Scadenze(Chiamata& chiamata) {
  const Parametri& parametri = chiamata.parametri;
  static constexpr std::size_t Compilati = 5;
  ControllaObbligatori(parametri, Compilati);
  auto contenuto = LeggiRichiesta(chiamata, parametri[4]);
  const auto scadenze = ControllaScadenze(contenuto, ContiBloccati(chiamata.radice));
  return {true, Variate(scadenze), std::move(contenuto)};
}

void ControllaConto(const Chiamata& chiamata, const std::string& conto) {
  if (ContiBloccati(chiamata.radice).contains(conto)) {
    throw Rifiuto("Parametro 3: «" + conto + "» è un conto bloccato.");
  }
}

Risposta Sospensione(Chiamata& chiamata) {
  const Parametri& parametri = chiamata.parametri;
  static constexpr std::size_t Compilati = 5;
  ControllaObbligatori(parametri, Compilati);
  ControllaConto(chiamata, parametri[2]);
  return {true, "Sospesa la partita " + parametri[3] + " del conto " + parametri[2], ""};
}

Risposta Riattivazione(Chiamata& chiamata) {
  const Parametri& parametri = chiamata.parametri;
  static constexpr std::size_t Compilati = 4;
  ControllaObbligatori(parametri, Compilati);
  ControllaConto(chiamata, parametri[2]);
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

Risposta SospensionePresunto(Chiamata& chiamata) {
  const Parametri& parametri = chiamata.parametri;
  return {true, "Sospeso il documento " + Documento(parametri), ""};
}

Risposta RiattivazionePresunto(Chiamata& chiamata) {
  const Parametri& parametri = chiamata.parametri;
  return {true, "Riattivato il documento " + Documento(parametri), ""};
}

Risposta CancellazioneExtra(Chiamata& chiamata) {
  const Parametri& parametri = chiamata.parametri;
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
  Risposta (*esegui)(Chiamata& chiamata);
};

constexpr std::array<Richiesta, 8> Richieste{{{"CANALIZZAZIONE", 11, Canalizzazione},
                                              {"CONSEGNA", 6, Consegna},
                                              {"SCRIVISCADENZE", 101, Scadenze},
                                              {"SOSPESOCREA", 6, Sospensione},
                                              {"SOSPESOCANCELLA", 5, Riattivazione},
                                              {"PRESUNTOCREA", 7, SospensionePresunto},
                                              {"PRESUNTOCANCELLA", 7, RiattivazionePresunto},
                                              {"EXTRADEL", 6, CancellazioneExtra}}};

Risposta Esegui(Chiamata& chiamata) {
  const Parametri& parametri = chiamata.parametri;
  const std::string nome = parametri.size() > 1 ? parametri[1] : "";
  for (const auto& richiesta : Richieste) {
    if (nome != richiesta.nome) {
      continue;
    }
    if (parametri.size() != richiesta.parametri) {
      throw Rifiuto("La richiesta " + nome + " ha " + std::to_string(parametri.size()) + " parametri invece di " +
                    std::to_string(richiesta.parametri) + ".");
    }
    return richiesta.esegui(chiamata);
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

/// One line a call, in its encoding: outcome, answer, number of parameters, the parameters, the accepted file.
bool Registra(const Chiamata& chiamata, const Risposta& risposta) {
  std::string riga = risposta.accettata ? "ACCETTATA" : "RIFIUTATA";
  riga += "\t" + PerRegistro(risposta.testo) + "\t" + std::to_string(chiamata.parametri.size());
  for (const auto& parametro : chiamata.parametri) {
    riga += "\t" + PerRegistro(parametro);
  }
  std::ofstream registro(chiamata.radice + "/registro/VB0001.log", std::ios::binary | std::ios::app);
  registro << chiamata.codifica.Scrivi(riga + "\t" + PerRegistro(risposta.contenuto) + "\n") << std::flush;
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
  Chiamata chiamata{radice, {}, {}};
  const Parametri ricevuti(argomenti + 1, argomenti + numero);
  for (const auto& ricevuto : ricevuti) {
    static_cast<void>(chiamata.codifica.Leggi(ricevuto)); // one of them tells the encoding of all
  }
  for (const auto& ricevuto : ricevuti) {
    chiamata.parametri.push_back(chiamata.codifica.Leggi(ricevuto));
  }
  Risposta risposta;
  try {
    risposta = Esegui(chiamata);
  } catch (const Rifiuto& rifiuto) {
    risposta.testo = rifiuto.what();
  }
  if (!Registra(chiamata, risposta)) {
    std::fputs("Il registro delle chiamate non può essere scritto.\n", stderr);
    return 1;
  }
  const std::string elemento = risposta.accettata ? "MESSAGGIO" : "ERRORE";
  const auto documento = chiamata.codifica.DichiarazioneXml() + "<RISPOSTA><" + elemento + ">" +
                         chiamata.codifica.Scrivi(PerXml(risposta.testo)) + "</" + elemento + "></RISPOSTA>\n";
  return std::fwrite(documento.data(), 1, documento.size(), stdout) == documento.size() && std::fflush(stdout) == 0 ? 0
                                                                                                                    : 1;
}
