#include "common/TestoNota.hpp"

#include "platform/RuntimeError.hpp"

#include <array>
#include <charconv>
#include <functional>
#include <span>
#include <utility>

namespace lumoscad::testoNota {
namespace {

using Genere = ModificaChiesta::Genere;

constexpr std::string_view TestataNota = "lumoscad-nota ";
constexpr std::string_view TestataFase = "lumoscad-fase ";
constexpr std::string_view TestataArchivio = "lumoscad-archivio ";
constexpr std::string_view Chiusura = "fine";

constexpr auto Generi = std::to_array<std::pair<Genere, std::string_view>>({{Genere::Nessuna, "nessuna"},
                                                                            {Genere::Canalizzazione, "canalizzazione"},
                                                                            {Genere::BancaPresunti, "bancaPresunti"},
                                                                            {Genere::Consegna, "consegna"},
                                                                            {Genere::Azione, "azione"}});

constexpr auto Fasi = std::to_array<std::pair<FaseNota, std::string_view>>({{FaseNota::Avviata, "avviata"},
                                                                            {FaseNota::Accettata, "accettata"},
                                                                            {FaseNota::Rifiutata, "rifiutata"},
                                                                            {FaseNota::ConfermaInviata, "conferma"},
                                                                            {FaseNota::Applicata, "applicata"},
                                                                            {FaseNota::NonApplicata, "nonApplicata"},
                                                                            {FaseNota::Sconosciuta, "sconosciuta"}});

template <typename Valore, std::size_t Quanti>
std::string_view NomeDi(const std::array<std::pair<Valore, std::string_view>, Quanti>& nomi, Valore valore) {
  for (const auto& [elemento, nome] : nomi) {
    if (elemento == valore) {
      return nome;
    }
  }
  return {};
}

[[noreturn]] void NonLeggibile(std::string_view perche) {
  throw RuntimeError(errors::TypeMismatch, "La nota non è leggibile: " + std::string(perche));
}

/// A value keeps its line and its field: "\" begins what stands for another character.
void AggiungiValore(std::string& testo, std::string_view valore) {
  constexpr std::string_view Cifre = "0123456789abcdef";
  for (const char carattere : valore) {
    const auto codice = static_cast<unsigned char>(carattere);
    if (carattere == '\\') {
      testo += "\\\\";
    } else if (codice < 0x20 || codice == 0x7F) {
      testo += "\\x";
      testo += Cifre[codice >> 4U];
      testo += Cifre[codice & 0xFU];
    } else {
      testo += carattere;
    }
  }
}

void AggiungiRiga(std::string& testo, std::string_view nome, std::string_view valore) {
  testo += nome;
  testo += '=';
  AggiungiValore(testo, valore);
  testo += '\n';
}

void AggiungiNumero(std::string& testo, long numero, int posti) {
  std::array<char, 24> cifre{};
  const auto fine = std::to_chars(cifre.data(), cifre.data() + cifre.size(), numero).ptr;
  const auto lunghezza = static_cast<int>(fine - cifre.data());
  if (lunghezza < posti) {
    testo.append(static_cast<std::size_t>(posti - lunghezza), '0');
  }
  testo.append(cifre.data(), fine);
}

void AggiungiMomento(std::string& testo, std::string_view nome, const DateTime& momento) {
  testo += nome;
  testo += '=';
  AggiungiNumero(testo, momento.year, 4);
  for (const auto& [separatore, numero] : {std::pair{'-', momento.month},
                                           {'-', momento.day},
                                           {' ', momento.hour},
                                           {':', momento.minute},
                                           {':', momento.second}}) {
    testo += separatore;
    AggiungiNumero(testo, numero, 2);
  }
  testo += '\n';
}

void AggiungiTestata(std::string& testo, std::string_view testata) {
  testo += testata;
  AggiungiNumero(testo, Versione, 1);
  testo += '\n';
}

void AggiungiFine(std::string& testo) {
  testo += Chiusura;
  testo += '\n';
}

/// The texts of a record in the order of its line. New ones are added at the end: those who read an older version skip
/// them.
template <typename Variazione> auto TestiDi(Variazione& v) requires requires {
  v.NumeroPartita;
}
{
  return std::to_array({&v.idPartitaKey, &v.idMovimentoKey, &v.CodiceConto, &v.NumeroPartita, &v.Anno, &v.Serie,
                        &v.Numero, &v.VecchiaBanca, &v.NuovaBanca, &v.ScadenzaOriginale, &v.NumeroRata,
                        &v.VecchiaScadenza, &v.NuovaScadenza});
}

template <typename Variazione> auto TestiDi(Variazione& v) requires requires {
  v.Consegna;
}
{
  return std::to_array({&v.idOrdineKey, &v.CodiceConto, &v.Serie, &v.Anno, &v.Numero, &v.VecchiaBanca, &v.NuovaBanca,
                        &v.Consegna, &v.ConsegnaOrigine, &v.NuovaConsegna});
}

/// The second change that a record may tell, beside that of the bank.
bool Altra(const VariazioneCanalizzazione& v) {
  return v.isScadenzaChanged;
}
bool Altra(const VariazioneConsegna& v) {
  return v.isConsegnaChanged;
}

template <typename Variazione> void AggiungiRecord(std::string& testo, const Variazione& v) {
  testo += "riga=";
  testo += v.isBancaChanged ? 'B' : '-';
  testo += Altra(v) ? 'D' : '-';
  if constexpr (requires { v.Consegna; }) {
    testo += '\t';
    AggiungiNumero(testo, v.idMovimentoKey, 1);
  }
  for (const std::string* campo : TestiDi(v)) {
    testo += '\t';
    AggiungiValore(testo, *campo);
  }
  testo += '\n';
}

template <typename Variazioni> std::string Lista(Genere genere, std::string_view tipo, const Variazioni& variazioni) {
  constexpr std::size_t RigaUsuale = 160; // bytes
  std::string testo;
  testo.reserve((variazioni.size() + 1) * RigaUsuale);
  AggiungiRiga(testo, "genere", NomeDi(Generi, genere));
  AggiungiRiga(testo, "tipo", tipo);
  for (const auto& variazione : variazioni) {
    AggiungiRecord(testo, variazione);
  }
  return testo;
}

int Cifra(char carattere) {
  if (carattere >= '0' && carattere <= '9') {
    return carattere - '0';
  }
  return carattere >= 'a' && carattere <= 'f' ? carattere - 'a' + 10 : -1;
}

std::string Valore(std::string_view valori) {
  std::string valore;
  valore.reserve(valori.size());
  for (std::size_t posto = 0; posto < valori.size(); ++posto) {
    if (valori[posto] != '\\') {
      valore += valori[posto];
      continue;
    }
    const std::string_view resto = valori.substr(posto + 1);
    if (resto.starts_with('\\')) {
      valore += '\\';
      ++posto;
      continue;
    }
    const int prima = resto.size() > 2 && resto[0] == 'x' ? Cifra(resto[1]) : -1;
    const int altra = prima >= 0 ? Cifra(resto[2]) : -1;
    if (altra < 0) {
      NonLeggibile("un valore è guasto.");
    }
    valore += static_cast<char>(prima * 16 + altra);
    posto += 3;
  }
  return valore;
}

template <typename Numero> Numero NumeroDi(std::string_view testo) {
  Numero numero = 0;
  const auto [fine, errore] = std::from_chars(testo.data(), testo.data() + testo.size(), numero);
  if (errore != std::errc() || fine != testo.data() + testo.size()) {
    NonLeggibile("un numero è guasto.");
  }
  return numero;
}

DateTime MomentoDi(std::string_view testo) {
  constexpr std::string_view Forma = "0000-00-00 00:00:00";
  bool valido = testo.size() == Forma.size();
  for (std::size_t posto = 0; valido && posto < Forma.size(); ++posto) {
    const bool cifra = testo[posto] >= '0' && testo[posto] <= '9';
    valido = Forma[posto] == '0' ? cifra : testo[posto] == Forma[posto];
  }
  if (!valido) {
    NonLeggibile("un momento è guasto.");
  }
  const auto numero = [&](std::size_t posto, std::size_t cifre) { return NumeroDi<int>(testo.substr(posto, cifre)); };
  const DateTime momento{numero(0, 4), numero(5, 2), numero(8, 2), numero(11, 2), numero(14, 2), numero(17, 2)};
  if (momento.month < 1 || momento.month > 12 || momento.day < 1 || momento.day > 31 || momento.hour > 23 ||
      momento.minute > 59 || momento.second > 60) {
    NonLeggibile("un momento è guasto.");
  }
  return momento;
}

template <typename Variazione> Variazione RecordDi(std::string_view riga) {
  Variazione variazione;
  const auto campo = [&riga] {
    const std::string_view pezzo = riga.substr(0, riga.find('\t'));
    riga.remove_prefix(pezzo.size() < riga.size() ? pezzo.size() + 1 : riga.size());
    return pezzo;
  };
  const std::string_view gruppo = campo();
  if (gruppo.size() < 2) {
    NonLeggibile("una riga è guasta.");
  }
  variazione.isBancaChanged = gruppo[0] == 'B';
  if constexpr (requires { variazione.Consegna; }) {
    variazione.isConsegnaChanged = gruppo[1] == 'D';
    variazione.idMovimentoKey = NumeroDi<std::int32_t>(campo());
  } else {
    variazione.isScadenzaChanged = gruppo[1] == 'D';
  }
  for (std::string* testo : TestiDi(variazione)) {
    *testo = Valore(campo());
  }
  return variazione;
}

/// Hands each line between the first and the last to `riga(nome, valore)`, after a look at both.
void PerOgniRiga(std::string_view testo, std::string_view testata, Nota& nota,
                 const std::function<void(std::string_view, std::string_view)>& riga) {
  const auto leggiLinea = [&testo] {
    const auto fine = testo.find('\n');
    if (fine == std::string_view::npos) {
      NonLeggibile("è stata tagliata.");
    }
    const std::string_view linea = testo.substr(0, fine);
    testo.remove_prefix(fine + 1);
    return linea;
  };
  const std::string_view prima = leggiLinea();
  if (!prima.starts_with(testata)) {
    NonLeggibile("il file è di altro genere.");
  }
  nota.versione = NumeroDi<int>(prima.substr(testata.size()));
  if (nota.versione > Versione) {
    throw RuntimeError(errors::TypeMismatch,
                       "La nota è della versione " + std::to_string(nota.versione) +
                           ", scritta da un LumoScad più recente di questo, che legge fino alla " +
                           std::to_string(Versione) + ".");
  }
  if (nota.versione < 1) {
    NonLeggibile("la versione non esiste.");
  }
  for (std::string_view linea = leggiLinea(); linea != Chiusura; linea = leggiLinea()) {
    const auto segno = linea.find('=');
    if (segno == std::string_view::npos) {
      NonLeggibile("una riga è guasta.");
    }
    riga(linea.substr(0, segno), linea.substr(segno + 1));
  }
  if (!testo.empty()) {
    NonLeggibile("dopo la fine c'è altro.");
  }
}

template <typename Scelta, std::size_t Quanti>
Scelta SceltaDi(const std::array<std::pair<Scelta, std::string_view>, Quanti>& nomi, std::string_view nome) {
  for (const auto& [scelta, suo] : nomi) {
    if (suo == nome) {
      return scelta;
    }
  }
  NonLeggibile("«" + std::string(nome) + "» è sconosciuto.");
}

/// The texts that a line each holds.
struct CampoTesto {
  std::string_view nome;
  std::string Nota::*dove;
};
constexpr auto CampiTesto = std::to_array<CampoTesto>({{"postazione", &Nota::postazione},
                                                       {"comando", &Nota::tipoComando},
                                                       {"azienda", &Nota::azienda},
                                                       {"host", &Nota::host},
                                                       {"programma", &Nota::programma},
                                                       {"richiesta", &Nota::richiesta},
                                                       {"origine", &Nota::origineDati}});

constexpr std::string_view CampoRiservato = "riservato";
constexpr auto CampiAccesso = std::to_array<std::pair<std::string_view, DatoAccesso Nota::*>>(
    {{"utente", &Nota::utente}, {"schema", &Nota::schema}});

void AggiungiAccesso(std::string& testo, std::string_view nome, const DatoAccesso& dato) {
  if (dato.riservato) {
    AggiungiRiga(testo, CampoRiservato, nome);
  } else if (dato.detto) {
    AggiungiRiga(testo, nome, dato.valore);
  }
}

void LeggiAccesso(std::string_view nome, std::string_view valore, Nota& nota) {
  for (const auto& [campo, dove] : CampiAccesso) {
    if (nome == campo) {
      nota.*dove = {true, false, Valore(valore)};
    } else if (nome == CampoRiservato && valore == campo) {
      nota.*dove = {true, true, {}};
    }
  }
}

/// Stores a line of the change. A line comes behind that of the kind, which tells what it is.
void LeggiModifica(std::string_view nome, std::string_view valore, ModificaChiesta& modifica) {
  if (nome == "genere") {
    modifica.genere = SceltaDi(Generi, valore);
  } else if (nome == "tipo") {
    modifica.tipo = Valore(valore);
  } else if (nome == "elemento") {
    modifica.parametri.push_back(Valore(valore));
  } else if (nome == "riga" && modifica.genere == Genere::Canalizzazione) {
    modifica.canalizzazioni.push_back(RecordDi<VariazioneCanalizzazione>(valore));
  } else if (nome == "riga" && (modifica.genere == Genere::BancaPresunti || modifica.genere == Genere::Consegna)) {
    modifica.consegne.push_back(RecordDi<VariazioneConsegna>(valore));
  }
}

} // namespace

std::string DiModifica(std::string_view tipo, const VariazioniCanalizzazione& variazioni) {
  return Lista(Genere::Canalizzazione, tipo, variazioni);
}

std::string DiModifica(Genere genere, std::string_view tipo, const VariazioniConsegna& variazioni) {
  return Lista(genere, tipo, variazioni);
}

std::string DiModifica(const std::vector<std::string>& parametri) {
  std::string testo;
  AggiungiRiga(testo, "genere", NomeDi(Generi, Genere::Azione));
  for (const std::string& elemento : parametri) {
    AggiungiRiga(testo, "elemento", elemento);
  }
  return testo;
}

std::string DiModifica(const ModificaChiesta& modifica) {
  switch (modifica.genere) {
  case Genere::Nessuna:
    break;
  case Genere::Canalizzazione:
    return DiModifica(modifica.tipo, modifica.canalizzazioni);
  case Genere::BancaPresunti:
  case Genere::Consegna:
    return DiModifica(modifica.genere, modifica.tipo, modifica.consegne);
  case Genere::Azione:
    return DiModifica(modifica.parametri);
  }
  return {};
}

std::string DiNota(const Contenuto& contenuto) {
  constexpr std::size_t Resto = 2048; // bytes: nearly always enough for what is not the change
  std::string testo;
  testo.reserve(contenuto.modifica.size() + Resto);
  AggiungiTestata(testo, TestataNota);
  AggiungiMomento(testo, "inizio", contenuto.inizio);
  testo += "processo=";
  AggiungiNumero(testo, contenuto.processo, 1);
  testo += '\n';
  AggiungiRiga(testo, "postazione", contenuto.postazione);
  AggiungiRiga(testo, "comando", contenuto.tipoComando);
  AggiungiRiga(testo, "azienda", contenuto.azienda);
  AggiungiRiga(testo, "host", contenuto.host);
  AggiungiRiga(testo, "programma", contenuto.programma);
  AggiungiRiga(testo, "richiesta", contenuto.richiesta);
  AggiungiRiga(testo, "origine", contenuto.origineDati);
  AggiungiAccesso(testo, "utente", contenuto.utente);
  AggiungiAccesso(testo, "schema", contenuto.schema);
  for (const std::string& parametro : contenuto.parametriHost) {
    AggiungiRiga(testo, "parametro", parametro);
  }
  testo += contenuto.modifica;
  AggiungiFine(testo);
  return testo;
}

void ComponiFase(std::string& testo, const Fase& fase, const std::vector<std::string>& righeRimaste) {
  AggiungiTestata(testo, TestataFase);
  AggiungiRiga(testo, "fase", NomeDi(Fasi, fase.fase));
  AggiungiMomento(testo, "momento", fase.momento);
  AggiungiRiga(testo, "risposta", fase.rispostaHost);
  AggiungiRiga(testo, "transazione", fase.transazione);
  for (const std::string& riga : righeRimaste) {
    AggiungiRiga(testo, "rimasta", riga);
  }
  AggiungiFine(testo);
}

std::string DiArchivio(const ArchivioNota& archivio) {
  std::string testo;
  AggiungiTestata(testo, TestataArchivio);
  AggiungiMomento(testo, "momento", archivio.momento);
  AggiungiRiga(testo, "motivo", archivio.motivo);
  AggiungiFine(testo);
  return testo;
}

void LeggiContenuto(std::string_view testo, Nota& nota) {
  PerOgniRiga(testo, TestataNota, nota, [&nota](std::string_view nome, std::string_view valore) {
    for (const CampoTesto& campo : CampiTesto) {
      if (campo.nome == nome) {
        nota.*campo.dove = Valore(valore);
      }
    }
    LeggiAccesso(nome, valore, nota);
    if (nome == "inizio") {
      nota.inizio = MomentoDi(valore);
      nota.momentoFase = nota.inizio;
    } else if (nome == "processo") {
      nota.processo = NumeroDi<long>(valore);
    } else if (nome == "parametro") {
      nota.parametriHost.push_back(Valore(valore));
    } else {
      LeggiModifica(nome, valore, nota.modifica);
    }
  });
}

void LeggiFase(std::string_view testo, Nota& nota) {
  Nota letta;
  PerOgniRiga(testo, TestataFase, letta, [&letta](std::string_view nome, std::string_view valore) {
    if (nome == "fase") {
      letta.fase = SceltaDi(Fasi, valore);
    } else if (nome == "momento") {
      letta.momentoFase = MomentoDi(valore);
    } else if (nome == "risposta") {
      letta.rispostaHost = Valore(valore);
    } else if (nome == "transazione") {
      letta.transazione = Valore(valore);
    } else if (nome == "rimasta") {
      letta.righeRimaste.push_back(Valore(valore));
    }
  });
  nota.fase = letta.fase;
  nota.momentoFase = letta.momentoFase;
  nota.rispostaHost = std::move(letta.rispostaHost);
  nota.transazione = std::move(letta.transazione);
  nota.righeRimaste = std::move(letta.righeRimaste);
}

void LeggiArchivio(std::string_view testo, Nota& nota) {
  Nota letta;
  ArchivioNota archivio;
  bool conMomento = false;
  PerOgniRiga(testo, TestataArchivio, letta, [&](std::string_view nome, std::string_view valore) {
    if (nome == "momento") {
      archivio.momento = MomentoDi(valore);
      conMomento = true;
    } else if (nome == "motivo") {
      archivio.motivo = Valore(valore);
    }
  });
  // It would have been put aside longer ago than any, and go at once.
  if (!conMomento) {
    NonLeggibile("non dice da quando è archiviata.");
  }
  nota.archiviata = std::move(archivio);
}

} // namespace lumoscad::testoNota
