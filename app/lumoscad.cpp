#include "Riservatezza.hpp"
#include "lumoscad/Host.hpp"
#include "lumoscad/LumoScadenze.hpp"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <iostream>
#include <iterator>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace {

constexpr int StatoErrore = 1;
constexpr int StatoUsoErrato = 2;
constexpr int StatoChiuso = 3;

constexpr const char* Uso =
    "Uso: lumoscad COMANDO...\n"
    "     lumoscad -\n"
    "     lumoscad --registra-host HOST\n"
    "     lumoscad --prova-host HOST [PROGRAMMA]\n"
    "     lumoscad --blocchi HOST\n"
    "     lumoscad --libera-blocco HOST LISTA [--si]\n"
    "     lumoscad --prova-base-dati -DB2SOURCE ORIGINE...\n"
    "     lumoscad --prova-base-dati -\n"
    "     lumoscad --in-sospeso [-DB2SOURCE ORIGINE... | -]\n"
    "     lumoscad --riallinea NOTA -DB2SOURCE ORIGINE... [--si]\n"
    "     lumoscad --riallinea NOTA - [--si]\n"
    "     lumoscad --archivia NOTA MOTIVO...\n"
    "     lumoscad --aiuto | -h | --versione\n"
    "\n"
    "Gli argomenti, uniti da uno spazio, sono la riga di comando; con - la riga è letta\n"
    "dall'ingresso standard, così che una parola d'ordine non compaia fra i processi.\n"
    "Il risultato va sull'uscita standard.\n"
    "\n"
    "--registra-host mostra l'impronta della chiave dell'host e, se si risponde sì, la\n"
    "registra fra gli host noti. --prova-host prova una per una le operazioni sull'host;\n"
    "il programma VB0001 è solo cercato, PROGRAMMA è avviato senza parametri. Prende,\n"
    "legge e lascia anche un blocco che nessuna lista usa.\n"
    "\n"
    "--blocchi dice chi tiene quali liste, e da quando. --libera-blocco mostra il blocco\n"
    "di una lista (CREDITI, DEBITI, PRESUNTI) e, se si risponde sì, lo toglie; --si\n"
    "risponde sì alla domanda.\n"
    "\n"
    "--prova-base-dati guarda la base dati che le opzioni -DB2... indicano, come in un\n"
    "comando, e non vi scrive nulla.\n"
    "\n"
    "--in-sospeso elenca le note dei comandi finiti prima che host e base dati fossero\n"
    "alla pari; con le opzioni -DB2... anche che cosa la base dati ne ha ora.\n"
    "--riallinea mostra una nota, chiede, registra nella base dati le righe rimaste come\n"
    "prima e toglie la nota se non resta nulla di aperto. --archivia la mette da parte,\n"
    "con il motivo. L'host non è interpellato. Con - le opzioni sono la prima riga\n"
    "dell'ingresso standard.\n"
    "\n"
    "Variabili d'ambiente:\n"
    "  NEXARO_TRASPORTO        come si raggiunge l'host: ssh (se manca), cartella\n"
    "  NEXARO_POSTAZIONE       l'identificativo della postazione\n"
    "  NEXARO_CARTELLA_LOCALE  la cartella di lavoro, dell'utente e chiusa agli altri\n"
    "  NEXARO_ATTESA           il limite di ogni attesa dell'host, in secondi (60)\n"
    "  NEXARO_SSH_PORTA        la porta del servizio SSH (22)\n"
    "  NEXARO_SSH_UTENTE       l'utente sull'host\n"
    "  NEXARO_SSH_CHIAVE       il file della chiave privata; senza, l'agente e ~/.ssh\n"
    "  NEXARO_SSH_NOTI         il file degli host noti (~/.ssh/known_hosts)\n"
    "  NEXARO_PROGRAMMI        la cartella dei programmi sull'host\n"
    "  NEXARO_CODIFICA         la codifica dei testi dell'host (UTF-8)\n"
    "  NEXARO_RADICE           con cartella: la cartella che fa da host\n"
    "  LUMOSCAD_ATTESA_SQL     il limite di un'istruzione alla base dati, in secondi (60)\n"
    "  SSH_AUTH_SOCK           l'agente delle chiavi\n"
    "  DISPLAY                 lo schermo X11\n"
    "  WAYLAND_DISPLAY         lo schermo Wayland\n"
    "  QT_QPA_PLATFORM         la piattaforma che Qt deve usare\n"
    "\n"
    "Stato d'uscita: 0 riuscito, 1 errore, 2 uso errato, 3 finestra chiusa senza variazioni.\n"
    "\n"
    "Esempio: lumoscad -T BANCA /CREDITI -D 01 -H 10.0.0.1 -SC SCADUTO -DB2SOURCE CONTABILITA\n";

int Stato(std::string_view risultato) {
  if (risultato.empty()) {
    return 0;
  }
  return risultato == "closed" ? StatoChiuso : StatoErrore;
}

std::string LeggiIngresso() {
  std::string comando(std::istreambuf_iterator<char>(std::cin), {});
  if (comando.ends_with('\n')) {
    comando.pop_back();
    if (comando.ends_with('\r')) {
      comando.pop_back();
    }
  }
  return comando;
}

std::string Unisci(std::span<char* const> argomenti) {
  std::string comando;
  for (std::size_t indice = 0; indice < argomenti.size(); ++indice) {
    comando += indice == 0 ? "" : " ";
    comando += argomenti[indice];
  }
  return comando;
}

/// The status says that the answer was lost when it could not be written.
int Scrivi(std::string_view testo, int stato) {
  std::cout << testo << std::flush;
  return std::cout.good() ? stato : StatoErrore;
}

int Esegui(std::string_view comando) {
  lumoscad::LumoScadenze lumoScadenze;
  auto risultato = lumoScadenze.EseguiLumoScad(comando);
  const int stato = Stato(risultato);
  if (!risultato.empty()) {
    risultato += '\n';
  }
  return Scrivi(risultato, stato);
}

/// The options of a command: those of the arguments, or of the first line of the standard input where "-" stands alone.
/// An answer may follow that line.
std::string Opzioni(std::span<char* const> argomenti) {
  if (argomenti.size() != 1 || argomenti.front() != std::string_view("-")) {
    return Unisci(argomenti);
  }
  std::string riga;
  std::getline(std::cin, riga);
  if (riga.ends_with('\r')) {
    riga.pop_back();
  }
  return riga;
}

/// Only a plain yes counts; whatever else, and no answer at all, is a no.
bool RispostaAffermativa() {
  std::string risposta;
  std::getline(std::cin, risposta);
  if (risposta.ends_with('\r')) {
    risposta.pop_back();
  }
  return risposta == "sì" || risposta == "SÌ" || risposta == "Sì" || risposta == "si" || risposta == "SI" ||
         risposta == "Si";
}

int RegistraHost(std::string_view host) {
  const auto chiave = lumoscad::ChiediChiaveHost(host);
  if (!chiave.errore.empty()) {
    return Scrivi(chiave.errore + "\n", StatoErrore);
  }
  const auto presentata =
      "L'host " + std::string(host) + " presenta la chiave " + chiave.tipo + "\n  " + chiave.impronta + "\n";
  if (chiave.nota) {
    return Scrivi(presentata + "È già fra gli host noti (" + chiave.file + ").\n", 0);
  }
  const auto domanda = "Confrontare l'impronta con quella data dall'amministratore dell'host.\n"
                       "Registrare la chiave in " +
                       chiave.file + "? (sì/no) ";
  if (Scrivi(presentata + domanda, 0) != 0) {
    return StatoErrore;
  }
  if (!RispostaAffermativa()) {
    return Scrivi("La chiave non è stata registrata.\n", StatoChiuso);
  }
  const auto errore = lumoscad::RegistraChiaveHost(chiave);
  return errore.empty() ? Scrivi("La chiave è stata registrata.\n", 0) : Scrivi(errore + "\n", StatoErrore);
}

void MostraPasso(const lumoscad::PassoProva& passo) {
  static constexpr std::size_t Larghezza = 17;
  auto riga = passo.operazione;
  riga.resize(std::max(Larghezza, riga.size()), ' ');
  std::cout << riga << (passo.riuscito ? "riuscito: " : "NON riuscito: ") << passo.dettaglio << std::endl;
}

int Concludi(bool riuscita) {
  return Scrivi(riuscita ? "Tutte le operazioni riescono.\n" : "Non tutte le operazioni riescono.\n",
                riuscita ? 0 : StatoErrore);
}

void MostraBlocco(const lumoscad::BloccoLista& blocco) {
  static constexpr std::size_t Larghezza = 10;
  auto riga = blocco.lista;
  riga.resize(std::max(Larghezza, riga.size()), ' ');
  if (!blocco.errore.empty()) {
    riga += "NON letto: " + blocco.errore;
  } else {
    riga += blocco.preso ? "presa: " + blocco.chi + ", " + blocco.quando : "libera";
  }
  std::cout << riga << std::endl;
}

int Blocchi(std::string_view host) {
  const auto blocchi = lumoscad::LeggiBlocchi(host);
  bool riuscita = !blocchi.empty();
  for (const auto& blocco : blocchi) {
    MostraBlocco(blocco);
    riuscita = riuscita && blocco.errore.empty();
  }
  return Scrivi(riuscita ? "" : "Non tutti i blocchi sono stati letti.\n", riuscita ? 0 : StatoErrore);
}

int LiberaBlocco(std::string_view host, std::string_view lista, bool si) {
  const auto blocco = lumoscad::LeggiBlocco(host, lista);
  if (!blocco.errore.empty()) {
    return Scrivi(blocco.errore + "\n", StatoErrore);
  }
  MostraBlocco(blocco);
  if (!blocco.preso) {
    return Scrivi("Non c'è un blocco da togliere.\n", 0);
  }
  const auto* const domanda = "Chi tiene la lista non ne è avvisato: accertarsi che là nessuno ci stia lavorando.\n"
                              "Togliere il blocco? (sì/no) ";
  if (!si && (Scrivi(domanda, 0) != 0 || !RispostaAffermativa())) {
    return Scrivi("Il blocco non è stato tolto.\n", StatoChiuso);
  }
  const auto esito = lumoscad::TogliBlocco(host, blocco);
  if (!esito.dettaglio.empty()) {
    return Scrivi(esito.dettaglio + "\n", esito.tolto ? 0 : StatoErrore);
  }
  return Scrivi("Il blocco è stato tolto.\n", 0);
}

int Riallinea(std::string_view nome, const std::string& opzioni, bool si) {
  const auto nota = lumoscad::LeggiNotaInSospeso(nome, opzioni);
  if (Scrivi(nota.testo, 0) != 0 || !nota.errore.empty() || nota.inCorso || nota.archiviata) {
    return StatoErrore;
  }
  if (!nota.domanda.empty() && !si && (Scrivi(nota.domanda, 0) != 0 || !RispostaAffermativa())) {
    return Scrivi("Non è cambiato nulla: la nota resta.\n", StatoChiuso);
  }
  const auto esito = lumoscad::RiallineaInSospeso(nota, opzioni);
  return Scrivi(esito.testo, esito.riuscito ? 0 : StatoErrore);
}

/// The commands for notes; nothing where it is none of them, or not their use.
std::optional<int> Note(std::span<char* const> argomenti) {
  const std::string_view primo = argomenti.front();
  if (primo == "--in-sospeso") {
    const auto elenco = lumoscad::LeggiInSospeso(Opzioni(argomenti.subspan(1)));
    return Scrivi(elenco.testo, elenco.riuscito ? 0 : StatoErrore);
  }
  if (primo == "--riallinea") {
    const bool si = argomenti.back() == std::string_view("--si");
    const auto resto = argomenti.first(argomenti.size() - (si ? 1 : 0));
    if (resto.size() > 2) {
      return Riallinea(resto[1], Opzioni(resto.subspan(2)), si);
    }
  }
  if (primo == "--archivia" && argomenti.size() > 2) {
    const auto esito = lumoscad::ArchiviaInSospeso(argomenti[1], Unisci(argomenti.subspan(2)));
    return Scrivi(esito.testo, esito.riuscito ? 0 : StatoErrore);
  }
  return std::nullopt;
}

} // namespace

int main(int numero, char** vettore) {
  lumoscad::VietaImmagineDiMemoria();
  const auto argomenti = std::span<char* const>(vettore, static_cast<std::size_t>(numero)).subspan(numero > 0 ? 1 : 0);
  const std::string_view primo = argomenti.empty() ? std::string_view() : argomenti.front();
  // -h with a value behind it is the host of a command.
  if (argomenti.size() == 1 && (primo == "--aiuto" || primo == "-h")) {
    return Scrivi(Uso, 0);
  }
  if (argomenti.size() == 1 && primo == "--versione") {
    return Scrivi("lumoscad " LUMOSCAD_VERSIONE "\n", 0);
  }
  if (argomenti.size() == 2 && primo == "--registra-host") {
    return RegistraHost(argomenti[1]);
  }
  if ((argomenti.size() == 2 || argomenti.size() == 3) && primo == "--prova-host") {
    return Concludi(lumoscad::ProvaHost(argomenti[1], argomenti.size() == 3 ? argomenti[2] : "", MostraPasso));
  }
  if (argomenti.size() > 1 && primo == "--prova-base-dati") {
    const auto opzioni = argomenti.subspan(1);
    const bool letta = opzioni.size() == 1 && opzioni.front() == std::string_view("-");
    return Concludi(lumoscad::ProvaBaseDati(letta ? LeggiIngresso() : Unisci(opzioni), MostraPasso));
  }
  if (argomenti.size() == 2 && primo == "--blocchi") {
    return Blocchi(argomenti[1]);
  }
  const bool si = argomenti.size() == 4 && argomenti[3] == std::string_view("--si");
  if ((argomenti.size() == 3 || si) && primo == "--libera-blocco") {
    return LiberaBlocco(argomenti[1], argomenti[2], si);
  }
  if (const auto stato = argomenti.empty() ? std::nullopt : Note(argomenti)) {
    return *stato;
  }
  if (argomenti.empty() || primo.starts_with("--")) {
    std::fputs(Uso, stderr);
    return StatoUsoErrato;
  }
  return Esegui(argomenti.size() == 1 && primo == "-" ? LeggiIngresso() : Unisci(argomenti));
}
